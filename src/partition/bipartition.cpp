// Lists the candidate cuts of one solved flow problem (the smallest source side, then each
// enumerated selection of free components added to it), tidies and judges each, and leaves
// the residues labelled with the best. Candidates are judged in listing order and only a
// strictly lower score replaces the best, so the first of equal candidates wins.
#include "partition/bipartition.h"

#include <cstdlib>
#include <vector>

#include "run/sort.h"
#include "structure/protein.h"

namespace {

constexpr int32_t kMergedCode = 100;  // a saved label of a residue relabelled by merging

int32_t LabelCode(const Residue& r) { return r.part + (r.merged > 0 ? kMergedCode : 0); }

void RestoreLabel(Residue& r, int32_t code) {
  if (code >= kMergedCode) {
    r.part = code - kMergedCode;
    r.merged = 1;
  } else {
    r.part = code;
    r.merged = 0;
  }
}

void MarkComponent(FlowNode* flowNodes, int32_t component) {
  const MappingRange& range = Mapptr[component];
  for (int32_t m = range.first; m <= range.last; ++m) flowNodes[Mapping[m].node].label = 1;
}

// The first position whose part differs from the one before it; 0 when every residue carries
// one part, in which case the candidate has no cut.
int FindSplit(const Residue* slice, int n) {
  for (int i = 1; i < n; ++i) {
    if (slice[i].part != slice[i - 1].part) return i;
  }
  return 0;
}

}  // namespace

void InitializePartition(FlowNode* flowNodes, int nodes, DagNode* dag, int k) {
  for (int v = 0; v < nodes; ++v) flowNodes[v].label = 0;
  for (int p = 0; p < k; ++p) {
    if (dag[p].mark == kMustIn) MarkComponent(flowNodes, p);
  }
}

void AssignPartition(FlowNode* flowNodes, const std::vector<ClosureEntry>& row, int size) {
  for (int i = 0; i < size; ++i) {
    if (row[i].inflag == 1) MarkComponent(flowNodes, row[i].index);
  }
}

float ListBiPartitions(Residue* slice, FlowNode* flowNodes, int n, DagNode* dag, int k,
                       IndVector& closures, int size, int count, CutScores* scores) {
  const int candidates = count + 1;
  std::vector<std::vector<int32_t>> codes(candidates, std::vector<int32_t>(n));
  std::vector<CutScores> candidateScores(candidates, kRejectedCutScores);
  std::vector<float> score(candidates, kRejectedScore);

  for (int t = 0; t < candidates; ++t) {
    InitializePartition(flowNodes, n + 2, dag, k);
    if (t > 0) AssignPartition(flowNodes, closures[t - 1], size);

    SortRecords(slice, static_cast<size_t>(n), sizeof(Residue), compare3);
    for (int i = 0; i < n; ++i) {
      slice[i].part = flowNodes[i].label;
      slice[i].merged = 0;
    }
    MergeSegments(slice, n);
    for (int i = 0; i < n; ++i) codes[t][i] = LabelCode(slice[i]);

    SortRecords(slice, static_cast<size_t>(n), sizeof(Residue), compare2);
    int split = FindSplit(slice, n);
    if (split == 0) continue;  // merging left one label: no cut
    score[t] = GoodDomainCut(slice, split, n, &candidateScores[t]);
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
  SortRecords(slice, static_cast<size_t>(n), sizeof(Residue), compare3);
  for (int i = 0; i < n; ++i) RestoreLabel(slice[i], codes[winner][i]);
  return best;
}

float GenerateAllBiPartition(FlowNode* flowNodes, AdjacencyList& list, Residue* slice, int nodes,
                             CutScores* scores) {
  IndVector closures;
  std::vector<DagNode> dag(nodes);
  AdjacencyList successors;
  AdjacencyList predecessors;
  int k = 0, size = 0, count = 0;
  FindAllMinCuts(flowNodes, list, nodes, dag.data(), successors, predecessors, &k, closures,
                 &size, &count);

  CutScores found = kRejectedCutScores;
  float score = ListBiPartitions(slice, flowNodes, nodes - 2, dag.data(), k, closures, size,
                                 count, &found);

  Mapping.clear();
  InverseMapping.clear();
  Mapptr.clear();
  *scores = found;
  return score;
}
