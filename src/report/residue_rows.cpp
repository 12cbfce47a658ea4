// A row per residue of a judged chain with the place of its domain, the one label per residue
// that other choppers' users read; residues left out below --min-plddt are rows of no domain.
#include "base/text.h"
#include "report/results.h"

namespace quarnel {

namespace {

constexpr int kNoDomain = 0;

// Residue names are right-justified in their columns (" DA"): the field holds the name alone.
std::string ResidueName(const char* resname) {
  std::string name = resname;
  const size_t first = name.find_first_not_of(' ');
  name = first == std::string::npos ? std::string() : name.substr(first);
  while (!name.empty() && name.back() == ' ') name.pop_back();
  return TsvField(name);
}

class Rows {
 public:
  explicit Rows(const ChainOutcome& outcome)
      : front_(TsvField(outcome.entry) + "\t" + TsvField(outcome.chainId) + "\t") {}

  void Add(int32_t resnum, char icode, const char* resname, int domain) {
    text_ += front_ + TsvField(ResidueLabel(resnum, icode)) + "\t" + ResidueName(resname) + "\t" +
             std::to_string(domain) + "\n";
    ++count_;
  }
  void AddLeftOut(const ResidueMark& mark) { Add(mark.resnum, mark.icode, mark.resname, kNoDomain); }

  const std::string& text() const { return text_; }
  size_t count() const { return count_; }

 private:
  std::string front_;  // chain_id and chain, the same on every row
  std::string text_;
  size_t count_ = 0;
};

std::string BlockLine(const ChainOutcome& outcome, size_t rows) {
  return kResidueBlockStart + TsvField(outcome.entry) + "\t" + kResidueBlockInput + TsvField(outcome.input) +
         "\t" + kResidueBlockChain + TsvField(outcome.chainId) + "\t" + kResidueBlockCount +
         std::to_string(rows) + "\n";
}

}  // namespace

std::string ResidueRows(const ChainOutcome& outcome) {
  const std::vector<Residue>& residues = outcome.result.structure.residues;
  const std::vector<int> places = DomainPlaces(outcome.result);
  const std::vector<PlacedMark>& leftOut = outcome.leftOutResidues;
  Rows rows(outcome);
  size_t next = 0;  // the first residue left out not yet written
  for (size_t i = 0; i < residues.size(); ++i) {
    for (; next < leftOut.size() && leftOut[next].before <= i; ++next) rows.AddLeftOut(leftOut[next].mark);
    const Residue& r = residues[i];
    rows.Add(r.resnum, r.icode, r.resname, places[i] + 1);  // place -1, in no domain, is label 0
  }
  for (; next < leftOut.size(); ++next) rows.AddLeftOut(leftOut[next].mark);
  return BlockLine(outcome, rows.count()) + rows.text();
}

}  // namespace quarnel
