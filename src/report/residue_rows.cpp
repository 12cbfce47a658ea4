// A row per residue of a judged chain with the place of its domain, the one label per residue
// that other choppers' users read; residues left out below --min-plddt are rows of no domain.
#include "base/text.h"
#include "report/results.h"

namespace quarnel {

namespace {

constexpr int kNoDomain = 0;

// Residue names are right-justified in their columns (" DA"): the label holds the name alone.
std::string ResidueName(const char* resname) {
  std::string name = resname;
  const size_t first = name.find_first_not_of(' ');
  name = first == std::string::npos ? std::string() : name.substr(first);
  while (!name.empty() && name.back() == ' ') name.pop_back();
  return name;
}

std::string BlockLine(const ChainOutcome& outcome, size_t rows) {
  return kResidueBlockStart + TsvField(outcome.entry) + "\t" + kResidueBlockInput + TsvField(outcome.input) +
         "\t" + kResidueBlockChain + TsvField(outcome.chainId) + "\t" + kResidueBlockCount +
         std::to_string(rows) + "\n";
}

}  // namespace

std::vector<LabelledResidue> LabelledResidues(const ChainOutcome& outcome) {
  const std::vector<Residue>& residues = outcome.result.structure.residues;
  const std::vector<int> places = DomainPlaces(outcome.result);
  const std::vector<PlacedMark>& leftOut = outcome.leftOutResidues;
  std::vector<LabelledResidue> labels;
  labels.reserve(residues.size() + leftOut.size());
  auto addLeftOut = [&](const ResidueMark& mark) {
    labels.push_back(LabelledResidue{mark.resnum, mark.icode, ResidueName(mark.resname), kNoDomain});
  };
  size_t next = 0;  // the first residue left out not yet placed
  for (size_t i = 0; i < residues.size(); ++i) {
    for (; next < leftOut.size() && leftOut[next].before <= i; ++next) addLeftOut(leftOut[next].mark);
    const Residue& r = residues[i];
    labels.push_back(LabelledResidue{r.resnum, r.icode, ResidueName(r.resname), places[i] + 1});  // -1: none, 0
  }
  for (; next < leftOut.size(); ++next) addLeftOut(leftOut[next].mark);
  return labels;
}

std::string ResidueRows(const ChainOutcome& outcome) {
  const std::string front = TsvField(outcome.entry) + "\t" + TsvField(outcome.chainId) + "\t";
  const std::vector<LabelledResidue> labels = LabelledResidues(outcome);
  std::string rows;
  for (const LabelledResidue& label : labels)
    rows += front + TsvField(ResidueLabel(label.resnum, label.icode)) + "\t" + TsvField(label.resname) + "\t" +
            std::to_string(label.domain) + "\n";
  return BlockLine(outcome, labels.size()) + rows;
}

}  // namespace quarnel
