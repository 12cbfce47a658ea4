// Strongly connected components of a residual network (path-based labelling) and the graph of
// components. Components are numbered in the order they finish, so every residual arc between
// two components runs from the higher number to the lower; the enumeration order of the
// candidate cuts, and with it the tie-breaks between equal scores, follows from this numbering.
#include "partition/components.h"

#include <algorithm>
#include <functional>
#include <new>

#include "base/sort.h"
#include "base/status.h"

namespace quarnel {

namespace {

constexpr int32_t kUnvisited = -1;

// Labelling state of one CalcSCC. Element 0 of each stack holds its entry count.
struct SccState {
  const FlowNetwork& network;
  std::vector<FlowNode>& nodes;
  std::vector<int32_t> S;
  std::vector<int32_t> B;
  int32_t btb = 0;
  int32_t gc = 0;

  void Label(int32_t v) {
    S[0] += 1;
    S[S[0]] = v;
    btb = S[0];
    nodes[v].label = btb;
    B[0] += 1;
    B[B[0]] = btb;

    ForEachArc(network, v, [&](int32_t arc, int32_t w) {
      if (network.residual[arc] <= 0) return false;
      if (nodes[w].label == kUnvisited) {
        Label(w);
      } else if (nodes[w].label < btb) {
        while (B[B[0]] > nodes[w].label) B[0] -= 1;
        btb = B[B[0]];
      }
      return false;
    });

    if (nodes[v].label == btb) {
      B[0] -= 1;
      btb = B[B[0]];
      gc += 1;
      while (S[0] >= nodes[v].label) {
        nodes[S[S[0]]].label = gc;
        S[0] -= 1;
      }
    }
  }
};

// Rows of distinct entries, each sorted in decreasing order.
ComponentLists Rows(int32_t k, const std::vector<std::vector<int32_t>>& rows) {
  ComponentLists lists;
  lists.first.assign(static_cast<size_t>(k) + 1, 0);
  for (int32_t p = 0; p < k; ++p) lists.first[p + 1] = lists.first[p] + static_cast<int32_t>(rows[p].size());
  lists.entries.reserve(static_cast<size_t>(lists.first[k]));
  for (int32_t p = 0; p < k; ++p) {
    const size_t start = lists.entries.size();
    lists.entries.insert(lists.entries.end(), rows[p].begin(), rows[p].end());
    // Entries of a row are distinct, so every sort gives the one decreasing order (the order
    // of lists built by putting each rising entry at the front).
    std::sort(lists.entries.begin() + static_cast<long>(start), lists.entries.end(), std::greater<int32_t>());
  }
  return lists;
}

}  // namespace

int comparec(const void* a, const void* b) {
  return static_cast<const MappingEntry*>(a)->label - static_cast<const MappingEntry*>(b)->label;
}

void CalcSCC(FlowNetwork& network) {
  const int nodes = network.size();
  SccState state{network, network.nodes, {}, {}, 0, nodes};
  try {
    state.S.assign(static_cast<size_t>(nodes) + 1, 0);
    state.B.assign(static_cast<size_t>(nodes) + 1, 0);
  } catch (const std::bad_alloc&) {
    Fail(Status::kLabellingStacks, Stream::kStdout, "memory allocation failed.");
  }
  for (int v = 0; v < nodes; ++v) network.nodes[v].label = kUnvisited;
  for (int v = 0; v < nodes; ++v) {
    if (network.nodes[v].label == kUnvisited) state.Label(v);
  }
}

void CreateMapping(const FlowNetwork& network, ComponentGraph& graph) {
  const int nodes = network.size();
  std::vector<MappingEntry>& mapping = graph.mapping;
  mapping.resize(static_cast<size_t>(nodes));
  for (int v = 0; v < nodes; ++v) mapping[v] = {network.nodes[v].id, network.nodes[v].label};
  SortRecords(mapping.data(), mapping.size(), sizeof(MappingEntry), comparec);

  // Renumber runs of equal labels 0, 1, 2, ... in sorted order.
  int32_t component = 0;
  int32_t previous = 0;
  for (int i = 0; i < nodes; ++i) {
    int32_t label = mapping[i].label;
    if (i > 0 && label != previous) ++component;
    previous = label;
    mapping[i].label = component;
  }
  graph.k = nodes > 0 ? component + 1 : 0;

  graph.inverse.assign(static_cast<size_t>(nodes), 0);
  for (const MappingEntry& entry : mapping) graph.inverse[entry.node] = entry.label;

  graph.ranges.assign(static_cast<size_t>(graph.k), MappingRange{0, -1});
  if (nodes == 0) return;
  int32_t current = 0;
  graph.ranges[0].first = 0;
  for (int i = 1; i < nodes; ++i) {
    if (mapping[i].label != mapping[i - 1].label) {
      graph.ranges[current].last = i - 1;
      ++current;
      graph.ranges[current].first = i;
    }
  }
  graph.ranges[current].last = nodes - 1;
}

// Each component's successors, once each, in decreasing order, and the transpose: the lists a
// k x k reachability matrix gives when scanned in increasing order with every entry put at the
// front, without the matrix.
void DagBuilder(const FlowNetwork& network, ComponentGraph& graph) {
  const int32_t k = graph.k;
  graph.dag.assign(static_cast<size_t>(k), DagNode{0, kNoParent, kFree});
  std::vector<std::vector<int32_t>> successors(static_cast<size_t>(k));
  std::vector<std::vector<int32_t>> predecessors(static_cast<size_t>(k));
  std::vector<int32_t> seenBy(static_cast<size_t>(k), -1);
  for (int32_t p = 0; p < k; ++p) {
    graph.dag[p].id = p;
    const MappingRange& range = graph.ranges[p];
    for (int32_t m = range.first; m <= range.last; ++m) {
      ForEachArc(network, graph.mapping[m].node, [&](int32_t arc, int32_t head) {
        if (network.residual[arc] <= 0) return false;
        const int32_t q = graph.inverse[head];
        if (seenBy[q] != p) {
          seenBy[q] = p;
          successors[p].push_back(q);
          predecessors[q].push_back(p);
        }
        return false;
      });
    }
  }
  graph.successors = Rows(k, successors);
  graph.predecessors = Rows(k, predecessors);
}

void FindAllMinCuts(FlowNetwork& network, ComponentGraph& graph, IndVector& closures, int* size,
                    int* count) {
  CalcSCC(network);
  CreateMapping(network, graph);
  DagBuilder(network, graph);
  MarkMustInOuts(graph, network.source, network.sink);
  EnumerateClosures(graph, closures, size, count);
}

}  // namespace quarnel
