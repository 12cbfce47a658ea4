// The accuracy mode's boundary probabilities, as results give them, and the candidate cuts as
// the training script reads them.
#include "report/cath_results.h"

#include "base/text.h"
#include "run/chain_domains.h"
#include "report/json_text.h"

namespace quarnel {

namespace {

constexpr char kNull[] = "NULL";

std::string Probability(double value) { return Format("%.3f", value); }

std::vector<BoundaryPlace> Places(const ChainResult& result) {
  return BoundaryPlaces(result.calls, result.candidates, result.structure.size());
}

std::string Label(const ChainResult& result, int32_t index) {
  const Residue& residue = result.structure.residues[static_cast<size_t>(index)];
  return ResidueLabel(residue.resnum, residue.icode);
}

// Index ranges of ascending indices: [[0,40],[77,90]].
std::string Ranges(const std::vector<int32_t>& members) {
  JsonList ranges;
  size_t k = 0;
  while (k < members.size()) {
    size_t end = k;
    while (end + 1 < members.size() && members[end + 1] == members[end] + 1) ++end;
    ranges.Push(Format("[%d,%d]", members[k], members[end]));
    k = end + 1;
  }
  return ranges.Text();
}

std::string NodeJson(const ChainResult& result, size_t k) {
  const CandidateNode& node = result.candidates[k];
  JsonFields item;
  item.Add("parent", std::to_string(node.parent));
  item.Add("depth", std::to_string(node.depth));
  item.Add("cut", node.hasCut() ? "true" : "false");
  item.Add("children", Format("[%d,%d]", node.children[0], node.children[1]));
  item.Add("residues", Ranges(node.residues));
  if (node.hasCut()) {
    JsonList features;
    // %.9g gives a float back exactly.
    for (float value : result.calls.features[k]) features.Push(Format("%.9g", static_cast<double>(value)));
    item.Add("features", features.Text());
    item.Add("log_odds", Format("%.17g", result.calls.logOdds[k]));
  }
  return item.Text();
}

}  // namespace

std::string BoundariesField(const ChainOutcome& outcome) {
  const ChainResult& result = outcome.result;
  if (result.mode != DecisionMode::kCath) return kNull;
  std::string text;
  for (const BoundaryPlace& place : Places(result)) {
    if (!text.empty()) text += ",";
    text += Label(result, place.before) + "|" + Label(result, place.after) + ":" + Probability(place.probability);
  }
  return text.empty() ? kNull : text;
}

std::string BoundariesJson(const ChainOutcome& outcome) {
  const ChainResult& result = outcome.result;
  if (result.mode != DecisionMode::kCath) return kJsonNull;
  JsonList list;
  for (const BoundaryPlace& place : Places(result)) {
    JsonFields item;
    item.Add("after", JsonString(Label(result, place.before)));
    item.Add("before", JsonString(Label(result, place.after)));
    item.Add("probability", Probability(place.probability));
    list.Push(item.Text());
  }
  return list.Text();
}

std::string CandidatesJson(const ChainOutcome& outcome) {
  const ChainResult& result = outcome.result;
  JsonList residues, names, nodes;
  for (const Residue& residue : result.structure.residues)
    residues.Push(JsonString(ResidueLabel(residue.resnum, residue.icode)));
  for (const char* name : kCutFeatureNames) names.Push(JsonString(name));
  for (size_t k = 0; k < result.candidates.size(); ++k) nodes.Push(NodeJson(result, k));
  JsonFields line;
  line.Add("file", JsonString(outcome.input));
  line.Add("chain", JsonString(outcome.chainId));
  line.Add("chain_id", JsonString(outcome.entry));
  line.Add("residues", residues.Text());
  line.Add("feature_names", names.Text());
  line.Add("nodes", nodes.Text());
  return line.Text() + "\n";
}

}  // namespace quarnel
