// Strongly connected components of a residual network (path-based labelling) and the graph of
// components. Components are numbered in the order they finish, so every residual arc between
// two components runs from the higher number to the lower; the enumeration order of the
// candidate cuts, and with it the tie-breaks between equal scores, follows from this numbering.
#include "partition/components.h"

#include <cstdio>
#include <cstdlib>
#include <new>

#include "run/fatal.h"
#include "run/sort.h"

namespace {

// Labelling state, alive during one CalcSCC. Element 0 of each stack holds its entry count.
std::vector<int32_t> S;
std::vector<int32_t> B;
int32_t btb;
int32_t gc;

constexpr int32_t kUnvisited = -1;

bool IsResidual(const FlowArc* arc) { return arc->residual > 0; }

}  // namespace

int comparec(const void* a, const void* b) {
  return static_cast<const MappingEntry*>(a)->label - static_cast<const MappingEntry*>(b)->label;
}

void SCCLabeling(FlowNode* flowNodes, AdjacencyList& list, int v) {
  S[0] += 1;
  S[S[0]] = v;
  btb = S[0];
  flowNodes[v].label = btb;
  B[0] += 1;
  B[B[0]] = btb;

  for (FlowArc* arc = list.head[v]; arc != nullptr; arc = arc->next) {
    if (!IsResidual(arc)) continue;
    int32_t w = arc->head;
    if (flowNodes[w].label == kUnvisited) {
      SCCLabeling(flowNodes, list, w);
    } else if (flowNodes[w].label < btb) {
      while (B[B[0]] > flowNodes[w].label) B[0] -= 1;
      btb = B[B[0]];
    }
  }

  if (flowNodes[v].label == btb) {
    B[0] -= 1;
    btb = B[B[0]];
    gc += 1;
    while (S[0] >= flowNodes[v].label) {
      flowNodes[S[S[0]]].label = gc;
      S[0] -= 1;
    }
  }
}

void CalcSCC(FlowNode* flowNodes, AdjacencyList& list, int nodes) {
  gc = nodes;
  try {
    S.assign(static_cast<size_t>(nodes) + 1, 0);
    B.assign(static_cast<size_t>(nodes) + 1, 0);
  } catch (const std::bad_alloc&) {
    Fatal(0, Stream::kStdout, "memory allocation failed.");
  }
  btb = 0;
  for (int v = 0; v < nodes; ++v) flowNodes[v].label = kUnvisited;
  for (int v = 0; v < nodes; ++v) {
    if (flowNodes[v].label == kUnvisited) SCCLabeling(flowNodes, list, v);
  }
  S.clear();
  B.clear();
}

void CreateMapping(FlowNode* flowNodes, int nodes, int* k) {
  Mapping.resize(static_cast<size_t>(nodes));
  for (int v = 0; v < nodes; ++v) Mapping[v] = {flowNodes[v].id, flowNodes[v].label};
  SortRecords(Mapping.data(), Mapping.size(), sizeof(MappingEntry), comparec);

  // Renumber runs of equal labels 0, 1, 2, ... in sorted order.
  std::vector<int32_t> labels(static_cast<size_t>(nodes));
  for (int i = 0; i < nodes; ++i) labels[i] = Mapping[i].label;
  int32_t component = 0;
  for (int i = 0; i < nodes; ++i) {
    if (i > 0 && labels[i] != labels[i - 1]) ++component;
    Mapping[i].label = component;
  }
  *k = nodes > 0 ? component + 1 : 0;

  InverseMapping.assign(static_cast<size_t>(nodes), 0);
  for (const MappingEntry& entry : Mapping)
    InverseMapping[entry.node] = entry.label;

  Mapptr.assign(static_cast<size_t>(*k), MappingRange{0, -1});
  if (nodes == 0) return;
  int32_t current = 0;
  Mapptr[0].first = 0;
  for (int i = 1; i < nodes; ++i) {
    if (Mapping[i].label != Mapping[i - 1].label) {
      Mapptr[current].last = i - 1;
      ++current;
      Mapptr[current].first = i;
    }
  }
  Mapptr[current].last = nodes - 1;
}

int32_t** Short2Malloc(int rows, int cols) {
  int32_t** matrix = static_cast<int32_t**>(std::malloc(sizeof(int32_t*) * static_cast<size_t>(rows > 0 ? rows : 1)));
  if (matrix == nullptr) AllocationFailed();
  for (int i = 0; i < rows; ++i) {
    matrix[i] = static_cast<int32_t*>(std::malloc(sizeof(int32_t) * static_cast<size_t>(cols > 0 ? cols : 1)));
    if (matrix[i] == nullptr) {
      // The matrix cannot be used without every row: stop rather than write through it.
      for (int j = 0; j < i; ++j) std::free(matrix[j]);
      std::free(matrix);
      AllocationFailed();
    }
  }
  return matrix;
}

void Init2Array(int32_t** matrix, int rows, int cols) {
  for (int i = 0; i < rows; ++i)
    for (int j = 0; j < cols; ++j) matrix[i][j] = 0;
}

void Free2Array(int32_t** matrix, int rows) {
  for (int i = 0; i < rows; ++i) std::free(matrix[i]);
  std::free(matrix);
}

void DagBuilder(FlowNode* /*flowNodes*/, AdjacencyList& list, int /*nodes*/, DagNode* dag,
                AdjacencyList& successors, AdjacencyList& predecessors, int k) {
  successors.arcs.clear();
  successors.head.assign(static_cast<size_t>(k), nullptr);
  predecessors.arcs.clear();
  predecessors.head.assign(static_cast<size_t>(k), nullptr);

  int32_t** reach = Short2Malloc(k, k);
  Init2Array(reach, k, k);
  for (int p = 0; p < k; ++p) {
    dag[p].id = p;
    successors.head[p] = nullptr;
    const MappingRange& range = Mapptr[p];
    for (int32_t m = range.first; m <= range.last; ++m) {
      int32_t node = Mapping[m].node;
      for (FlowArc* arc = list.head[node]; arc != nullptr; arc = arc->next) {
        if (IsResidual(arc)) reach[p][InverseMapping[arc->head]] = 1;
      }
    }
    for (int q = 0; q < k; ++q) {
      if (reach[p][q] == 1) PushArc(successors, p, q, 0);
    }
  }

  int32_t** transposed = Short2Malloc(k, k);
  Init2Array(transposed, k, k);
  for (int p = 0; p < k; ++p)
    for (int q = 0; q < k; ++q)
      if (reach[p][q] == 1) transposed[q][p] = 1;

  for (int p = 0; p < k; ++p) {
    predecessors.head[p] = nullptr;
    for (int q = 0; q < k; ++q) {
      if (transposed[p][q] == 1) PushArc(predecessors, p, q, 0);
    }
  }

  Free2Array(reach, k);
  Free2Array(transposed, k);
}

void DagConstruction(FlowNode* flowNodes, AdjacencyList& list, int nodes, DagNode* dag,
                     AdjacencyList& successors, AdjacencyList& predecessors, int* k) {
  CalcSCC(flowNodes, list, nodes);
  CreateMapping(flowNodes, nodes, k);
  DagBuilder(flowNodes, list, nodes, dag, successors, predecessors, *k);
}

void FindAllMinCuts(FlowNode* flowNodes, AdjacencyList& list, int nodes, DagNode* dag,
                    AdjacencyList& successors, AdjacencyList& predecessors, int* k,
                    IndVector& closures, int* size, int* count) {
  DagConstruction(flowNodes, list, nodes, dag, successors, predecessors, k);
  MarkMustInOuts(dag, successors, predecessors, *k);
  EnumerateClosures(dag, successors, *k, closures, size, count);
}
