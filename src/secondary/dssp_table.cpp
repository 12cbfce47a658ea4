// DSSP's classic residue table read as rows, and rows matched to the residues in one forward
// pass, bridge partners translated from DSSP numbers to residue indices.
#include "secondary/dssp_table.h"

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

// The rows of the table's lines: the scan's values carried from line to line.
struct RowScanner {
  DsspScan scan;

  DsspRow Row(const std::string& line) {
    ScanTableLine(line, scan);
    DsspRow row;
    row.number = scan.number;
    row.resnum = scan.resnum;
    row.icode = scan.icode;
    row.aa = scan.aa;
    row.ss = scan.ss;
    row.partner1 = AtoiField(Columns(line, 26, 29));  // BP1
    row.partner2 = AtoiField(Columns(line, 30, 33));  // BP2
    row.chainBreak = Column(line, kChainBreakColumn) == '!';
    return row;
  }
};

struct TableMatcher {
  const std::vector<Residue>& residues;
  SecondaryStructure& table;
  NumberMap map;
  int k = 0;  // forward-only cursor; every row past the last residue applies to the last one

  void Apply(const DsspRow& row) {
    if (row.chainBreak) {
      // A chain break belongs to the residue before it; as the very first table line it has
      // no residue before it and is passed over.
      if (k != 0) map.Set(row.number, k - 1);
      return;
    }
    if (row.aa == 'X') {
      map.Set(row.number, k - 1);
      return;
    }
    const int last = static_cast<int>(residues.size()) - 1;
    while (k < last && !(residues[k].resnum == row.resnum && residues[k].icode == row.icode)) ++k;
    const int target = std::min(k, last);
    if (row.ss != ' ') table.ss[target] = row.ss;
    if (table.ss[target] == 'E') {
      table.bridge1[target] = row.partner1;
      table.bridge2[target] = row.partner2;
    }
    map.Set(row.number, target);
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

std::vector<DsspRow> ReadDsspRows(const LineSource& source) {
  std::unique_ptr<LineReader> reader = source.Open();
  if (reader == nullptr) OpenError(source);
  std::vector<DsspRow> rows;
  RowScanner scanner;
  bool inTable = false;
  std::string line;
  while (reader->Next(line)) {
    if (!inTable) {
      inTable = StartsWith(line, "  #  RESID");
      continue;
    }
    rows.push_back(scanner.Row(line));
  }
  if (reader->Failed()) OpenError(source);
  return rows;
}

SecondaryStructure MatchDsspRows(const std::vector<DsspRow>& rows, const std::vector<Residue>& residues) {
  SecondaryStructure table = DefaultSecondaryStructure(static_cast<int32_t>(residues.size()));
  if (residues.empty()) return table;
  TableMatcher matcher{residues, table, {}, 0};
  for (const DsspRow& row : rows) matcher.Apply(row);
  for (size_t i = 0; i < residues.size(); ++i) {
    table.bridge1[i] = TranslatePartner(table.bridge1[i], matcher.map);
    table.bridge2[i] = TranslatePartner(table.bridge2[i], matcher.map);
  }
  return table;
}

SecondaryStructure ReadDsspTable(const LineSource& source, const std::vector<Residue>& residues) {
  // With no residue to match, the output is opened and not read.
  if (residues.empty() && source.Open() == nullptr) OpenError(source);
  if (residues.empty()) return DefaultSecondaryStructure(0);
  return MatchDsspRows(ReadDsspRows(source), residues);
}

}  // namespace quarnel
