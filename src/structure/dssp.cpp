// Reads DSSP's classic residue table into the residues (secondary structure, bridge partners) and
// fixes the contact weights of strand neighbours and bridge partners.
#include "structure/dssp.h"

#include <algorithm>
#include <cstdio>
#include <vector>

#include "contacts/contacts.h"
#include "run/fatal.h"
#include "run/textio.h"
#include "structure/protein.h"

namespace {

constexpr int kNoPartner = -1;
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

// Applies one table line to the residues. k is the forward-only cursor; it may stand one past
// the last residue, in which case every further line applies to the last residue.
void ApplyTableLine(const std::string& line, DsspScan& scan, int& k, NumberMap& map) {
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

  int last = ProteinSize - 1;
  while (k < last && !(Protein[k].resnum == scan.resnum && Protein[k].icode == scan.icode)) ++k;
  int target = std::min(k, last);
  Residue& residue = Protein[target];
  if (scan.ss != ' ') residue.ss = scan.ss;
  if (residue.ss == 'E') {
    residue.bridge1 = AtoiField(Columns(line, 26, 29));  // BP1
    residue.bridge2 = AtoiField(Columns(line, 30, 33));  // BP2
  }
  map.Set(scan.number, target);
  k = target + 1;
}

void ReadTable(std::FILE* file, NumberMap& map) {
  bool inTable = false;
  DsspScan scan;
  int k = 0;
  std::string line;
  while (ReadLine(file, line)) {
    if (!inTable) {
      inTable = StartsWith(line, "  #  RESID");
      continue;
    }
    ApplyTableLine(line, scan, k, map);
  }
}

int TranslatePartner(int number, const NumberMap& map) {
  if (number == kNoPartner || number == 0) return kNoPartner;
  return map.Get(number);
}

void SetWeight(int i, int j, int weight) {
  ContactMatrix[i][j].weight = weight;
  ContactMatrix[j][i].weight = weight;
}

void WeightStrands() {
  for (int i = 1; i < ProteinSize; ++i) {
    if (Protein[i - 1].ss == 'E' && Protein[i].ss == 'E') SetWeight(i - 1, i, kStrandWeight);
  }
}

// Every pair i < j in which either residue lists the other gets the bridge weight; visiting each
// residue's own partners reaches exactly those pairs, without looking at every pair.
void WeightBridges() {
  for (int i = 0; i < ProteinSize; ++i) {
    for (int partner : {Protein[i].bridge1, Protein[i].bridge2}) {
      if (partner != kNoPartner && partner != i) SetWeight(i, partner, kBridgeWeight);
    }
  }
}

}  // namespace

void SetSecondaryStructureDefaults() {
  for (Residue& residue : Protein) {
    residue.ss = 'L';
    residue.bridge1 = kNoPartner;
    residue.bridge2 = kNoPartner;
  }
}

void ProcessDSSP(const std::string& path) {
  std::FILE* file = std::fopen(path.c_str(), "r");
  if (file == nullptr) Fatal(5, Stream::kStdout, Format("INPUT %s OPEN ERROR: QUIT\n", path.c_str()));
  if (ProteinSize <= 0) {
    std::fclose(file);
    return;
  }

  NumberMap map;
  ReadTable(file, map);
  bool unreadable = std::ferror(file) != 0;
  std::fclose(file);
  if (unreadable) Fatal(5, Stream::kStdout, Format("INPUT %s OPEN ERROR: QUIT\n", path.c_str()));

  for (int i = 0; i < ProteinSize; ++i) {
    Protein[i].bridge1 = TranslatePartner(Protein[i].bridge1, map);
    Protein[i].bridge2 = TranslatePartner(Protein[i].bridge2, map);
  }
  WeightStrands();
  WeightBridges();
}
