// The record rules of quarnel's PDB reader and chain copy, applied to text in memory.
#include "formats/pdb_records.h"

#include <cstdlib>

namespace quarnel {
namespace {

constexpr int kChainColumn = 22;
constexpr int kHydrogenColumn = 14;
constexpr int kResnumFirst = 23;
constexpr int kResnumLast = 26;
constexpr int kIcodeColumn = 27;

size_t ContentLength(std::string_view record) {
  return !record.empty() && record.back() == '\n' ? record.size() - 1 : record.size();
}

}  // namespace

bool RecordStartsWith(std::string_view record, std::string_view prefix) {
  return record.substr(0, prefix.size()) == prefix;
}

char RecordColumn(std::string_view record, int column) {
  if (column < 1 || static_cast<size_t>(column) > ContentLength(record)) return ' ';
  return record[static_cast<size_t>(column - 1)];
}

std::string RecordField(std::string_view record, int first, int last) {
  size_t length = ContentLength(record);
  if (first < 1 || last < first || static_cast<size_t>(first) > length) return std::string();
  size_t begin = static_cast<size_t>(first - 1);
  size_t end = std::min(length, static_cast<size_t>(last));
  return std::string(record.substr(begin, end - begin));
}

void AppendRecord(std::string& out, std::string_view record) {
  out.append(record);
  if (record.empty() || record.back() != '\n') out += '\n';
}

std::map<char, std::string> AtomRecordsByChain(std::string_view text) {
  std::map<char, std::string> chains;
  ForEachRecord(text, [&chains](std::string_view record) {
    if (RecordStartsWith(record, "ATOM  "))
      AppendRecord(chains[RecordColumn(record, kChainColumn)], record);
    return !RecordStartsWith(record, "END");
  });
  return chains;
}

int CountReaderResidues(std::string_view text) {
  int residues = 0;
  int previousResnum = 0;
  char previousIcode = ' ';
  ForEachRecord(text, [&](std::string_view record) {
    if (RecordStartsWith(record, "END")) return false;
    if (!RecordStartsWith(record, "ATOM  ")) return true;
    if (RecordColumn(record, kHydrogenColumn) == 'H') return true;
    int resnum = std::atoi(RecordField(record, kResnumFirst, kResnumLast).c_str());
    char icode = RecordColumn(record, kIcodeColumn);
    if (residues == 0 || resnum != previousResnum || icode != previousIcode) {
      ++residues;
      previousResnum = resnum;
      previousIcode = icode;
    }
    return true;
  });
  return residues;
}

}  // namespace quarnel
