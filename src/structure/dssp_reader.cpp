// Reads DSSP's classic residue table into a secondary-structure table: letters matched to the
// residues in one forward pass, bridge partners translated from DSSP numbers to residue indices.
#include "structure/dssp_reader.h"

#include <algorithm>
#include <cstdio>

#include "base/status.h"

namespace quarnel {

namespace {

constexpr int kChainBreakColumn = 14;  // '!' in the amino-acid column

// The values of one table line as the scan format splits them. They outlive the line: a
// chain-break line scans no further than its sequential number and keeps the rest of the line
// before.
struct DsspScan {
  int number = 0;
  int resnum = 0;
  char icode = ' ';
  char aa = ' ';
  char ss = ' ';
};

void ScanTableLine(const std::string& line, DsspScan& scan) {
  std::sscanf(line.c_str(), "%5d%5d%c%*c%*c%c%*c%*c%c", &scan.number, &scan.resnum, &scan.icode,
              &scan.aa, &scan.ss);
}

// DSSP sequential number -> index of the residue its line was matched to; kNoPartner where no
// line was matched. The map grows with the numbers the file uses.
class NumberMap {
 public:
  void Set(int number, int index) {
    if (number < 0) return;
    size_t slot = static_cast<size_t>(number);
    if (slot >= map_.size()) map_.resize(slot + 1, kNoPartner);
    map_[slot] = index;
  }
  int Get(int number) const {
    if (number < 0 || static_cast<size_t>(number) >= map_.size()) return kNoPartner;
    return map_[static_cast<size_t>(number)];
  }

 private:
  std::vector<int> map_;
};

struct TableReader {
  const std::vector<Residue>& residues;
  SecondaryStructure& table;
  NumberMap map;
  DsspScan scan;
  int k = 0;  // forward-only cursor; every line past the last residue applies to the last one

  void Apply(const std::string& line) {
    ScanTableLine(line, scan);
    if (Column(line, kChainBreakColumn) == '!') {
      // A chain break belongs to the residue before it; as the very first table line it has
      // no residue before it and is passed over.
      if (k != 0) map.Set(scan.number, k - 1);
      return;
    }
    if (scan.aa == 'X') {
      map.Set(scan.number, k - 1);
      return;
    }

    const int last = static_cast<int>(residues.size()) - 1;
    while (k < last && !(residues[k].resnum == scan.resnum && residues[k].icode == scan.icode)) ++k;
    const int target = std::min(k, last);
    if (scan.ss != ' ') table.ss[target] = scan.ss;
    if (table.ss[target] == 'E') {
      table.bridge1[target] = AtoiField(Columns(line, 26, 29));  // BP1
      table.bridge2[target] = AtoiField(Columns(line, 30, 33));  // BP2
    }
    map.Set(scan.number, target);
    k = target + 1;
  }
};

int TranslatePartner(int number, const NumberMap& map) {
  if (number == kNoPartner || number == 0) return kNoPartner;
  return map.Get(number);
}

[[noreturn]] void OpenError(const LineSource& source) {
  Fail(Status::kInputOpen, Stream::kStdout,
       Format("INPUT %s OPEN ERROR: QUIT\n", source.name().c_str()));
}

}  // namespace

SecondaryStructure DefaultSecondaryStructure(int32_t residues) {
  size_t n = static_cast<size_t>(std::max(residues, 0));
  return SecondaryStructure{std::vector<char>(n, 'L'), std::vector<int32_t>(n, kNoPartner),
                            std::vector<int32_t>(n, kNoPartner)};
}

SecondaryStructure ReadDsspTable(const LineSource& source, const std::vector<Residue>& residues) {
  SecondaryStructure table = DefaultSecondaryStructure(static_cast<int32_t>(residues.size()));
  std::unique_ptr<LineReader> reader = source.Open();
  if (reader == nullptr) OpenError(source);
  if (residues.empty()) return table;

  TableReader tableReader{residues, table, {}, {}, 0};
  bool inTable = false;
  std::string line;
  while (reader->Next(line)) {
    if (!inTable) {
      inTable = StartsWith(line, "  #  RESID");
      continue;
    }
    tableReader.Apply(line);
  }
  if (reader->Failed()) OpenError(source);

  for (size_t i = 0; i < residues.size(); ++i) {
    table.bridge1[i] = TranslatePartner(table.bridge1[i], tableReader.map);
    table.bridge2[i] = TranslatePartner(table.bridge2[i], tableReader.map);
  }
  return table;
}

}  // namespace quarnel
