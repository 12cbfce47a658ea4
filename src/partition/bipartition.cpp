// Lists the candidate cuts of one solved flow problem (the smallest source side, then each
// enumerated selection of free components added to it), tidies and judges each, and leaves
// the residues labelled with the best. Candidates are judged in listing order and only a
// strictly lower score replaces the best, so the first of equal candidates wins.
#include "partition/bipartition.h"

#include <vector>

#include "base/sort.h"

namespace quarnel {

namespace {

void MarkComponent(const ComponentGraph& graph, std::vector<FlowNode>& nodes, int32_t component) {
  const MappingRange& range = graph.ranges[component];
  for (int32_t m = range.first; m <= range.last; ++m) nodes[graph.mapping[m].node].label = 1;
}

// The source side starts as the must-in components.
void InitializePartition(const ComponentGraph& graph, std::vector<FlowNode>& nodes) {
  for (FlowNode& node : nodes) node.label = 0;
  for (int32_t p = 0; p < graph.k; ++p) {
    if (graph.dag[p].mark == kMustIn) MarkComponent(graph, nodes, p);
  }
}

void AssignPartition(const ComponentGraph& graph, std::vector<FlowNode>& nodes,
                     const std::vector<ClosureEntry>& row, int size) {
  for (int i = 0; i < size; ++i) {
    if (row[i].inflag == 1) MarkComponent(graph, nodes, row[i].index);
  }
}

// The first position whose part differs from the one before it; 0 when every residue carries
// one part, in which case the candidate has no cut.
int FindSplit(const Residue* slice, int n) {
  for (int i = 1; i < n; ++i) {
    if (slice[i].part != slice[i - 1].part) return i;
  }
  return 0;
}

float ListBiPartitions(const Params& params, const CutJudge& judge, Residue* slice,
                       std::vector<FlowNode>& nodes, int n, const ComponentGraph& graph,
                       const IndVector& closures, int size, int count, CutScores* scores) {
  const int candidates = count + 1;
  std::vector<std::vector<int32_t>> codes(candidates, std::vector<int32_t>(n));
  std::vector<CutScores> candidateScores(candidates, kRejectedCutScores);
  std::vector<float> score(candidates, kRejectedScore);

  for (int t = 0; t < candidates; ++t) {
    InitializePartition(graph, nodes);
    if (t > 0) AssignPartition(graph, nodes, closures[t - 1], size);

    SortByIndex(slice, n);
    for (int i = 0; i < n; ++i) {
      slice[i].part = nodes[i].label;
      slice[i].merged = 0;
    }
    MergeSegments(params, slice, n);
    for (int i = 0; i < n; ++i) codes[t][i] = LabelCode(slice[i]);

    SortRecords(slice, static_cast<size_t>(n), sizeof(Residue), compare2);
    int split = FindSplit(slice, n);
    if (split == 0) continue;  // merging left one label: no cut
    score[t] = judge.GoodDomainCut(slice, split, n, &candidateScores[t]);
  }

  int winner = -1;
  float best = kRejectedScore;
  for (int t = 0; t < candidates; ++t) {
    if (score[t] < best) {
      best = score[t];
      winner = t;
    }
  }
  if (winner < 0 || best > kWorstAcceptedScore) {
    *scores = kRejectedCutScores;
    return kRejectedScore;
  }

  *scores = candidateScores[winner];
  SortByIndex(slice, n);
  for (int i = 0; i < n; ++i) RestoreLabel(slice[i], codes[winner][i]);
  return best;
}

}  // namespace

int32_t LabelCode(const Residue& r) { return r.part + (r.merged > 0 ? kMergedCode : 0); }

void RestoreLabel(Residue& r, int32_t code) {
  r.part = code >= kMergedCode ? code - kMergedCode : code;
  r.merged = code >= kMergedCode ? 1 : 0;
}

float GenerateAllBiPartition(const Params& params, const CutJudge& judge, FlowNetwork& network,
                             Residue* slice, CutScores* scores) {
  ComponentGraph graph;
  IndVector closures;
  int size = 0, count = 0;
  FindAllMinCuts(network, graph, closures, &size, &count);
  return ListBiPartitions(params, judge, slice, network.nodes, network.size() - 2, graph,
                          closures, size, count, scores);
}

}  // namespace quarnel
