// Which components lie on the source side of every minimum cut, which on the sink side, and
// the enumeration of selections of the free ones. The selections come out as a base-two
// counter over the free components in topological order; the counter stops after
// kMaxClosureRows rows, so a flow problem never lists more than 100 candidates however many
// free components it has.
#include <new>

#include "base/status.h"
#include "base/text.h"
#include "partition/components.h"

namespace quarnel {

namespace {

void DFSLabeling(ComponentGraph& graph, int32_t component) {
  graph.dag[component].mark = kMustIn;
  const ComponentLists& lists = graph.successors;
  for (int32_t e = lists.first[component]; e < lists.first[component + 1]; ++e) {
    if (graph.dag[lists.entries[e]].mark == kFree) DFSLabeling(graph, lists.entries[e]);
  }
}

void DFSLabeling1(ComponentGraph& graph, int32_t component) {
  graph.dag[component].mark = kMustOut;
  const ComponentLists& lists = graph.predecessors;
  for (int32_t e = lists.first[component]; e < lists.first[component + 1]; ++e) {
    if (graph.dag[lists.entries[e]].mark == kFree) DFSLabeling1(graph, lists.entries[e]);
  }
}

void DFSVisit(ComponentGraph& graph, int32_t component, std::vector<TopoEntry>& order, int* next) {
  graph.dag[component].mark = kVisiting;
  const ComponentLists& lists = graph.successors;
  for (int32_t e = lists.first[component]; e < lists.first[component + 1]; ++e) {
    const int32_t successor = lists.entries[e];
    if (graph.dag[successor].mark == kUnsorted) {
      graph.dag[successor].parent = component;
      DFSVisit(graph, successor, order, next);
    }
  }
  graph.dag[component].mark = kVisited;
  order[*next].index = component;
  *next -= 1;
}

void TopologicalSort(ComponentGraph& graph, std::vector<TopoEntry>& order, int* size) {
  int count = 0;
  for (int32_t p = 0; p < graph.k; ++p) {
    if (graph.dag[p].mark == kFree) {
      graph.dag[p].mark = kUnsorted;
      ++count;
    }
    graph.dag[p].parent = kNoParent;
  }
  *size = count;
  int next = count - 1;
  for (int32_t p = 0; p < graph.k; ++p) {
    if (graph.dag[p].mark == kUnsorted) DFSVisit(graph, p, order, &next);
  }
}

void CalcBoundary(const ComponentGraph& graph, std::vector<TopoEntry>& order, int size) {
  for (int i = 0; i < size; ++i) order[i].boundary = order[i].inflag == 1 ? 1 : 0;
  // A selected component whose search-forest ancestor is also selected is not on the boundary.
  for (int i = 0; i < size; ++i) {
    if (order[i].inflag != 1) continue;
    for (int32_t a = graph.dag[order[i].index].parent; a != kNoParent; a = graph.dag[a].parent) {
      for (int j = 0; j < size; ++j) {
        if (order[j].index == a && order[j].inflag == 1) order[j].boundary = 0;
      }
    }
  }
}

// The entry past the last free component is never selected, so the scan always ends there.
int FindNextHeader(const std::vector<TopoEntry>& order, int position, int size) {
  for (int i = position + 1; i <= size; ++i) {
    if (order[i].inflag == 0) return i;
  }
  return size;
}

void CopyIndices(const std::vector<TopoEntry>& order, std::vector<ClosureEntry>& row, int size) {
  row.resize(static_cast<size_t>(size));
  for (int i = 0; i < size; ++i) row[i] = ClosureEntry{order[i].index, order[i].inflag};
}

}  // namespace

void MarkMustInOuts(ComponentGraph& graph, int32_t source, int32_t sink) {
  for (int32_t p = 0; p < graph.k; ++p) graph.dag[p].mark = kFree;
  DFSLabeling(graph, graph.inverse[source]);
  DFSLabeling1(graph, graph.inverse[sink]);
}

void EnumerateClosures(ComponentGraph& graph, IndVector& closures, int* size, int* count) {
  std::vector<TopoEntry> order(static_cast<size_t>(graph.k) + 1, TopoEntry{0, 0, 0});
  TopologicalSort(graph, order, size);
  closures.clear();
  int cur = 0;
  *count = 0;
  while (cur < *size && *count < kMaxClosureRows) {
    order[cur].inflag = 1;
    CalcBoundary(graph, order, *size);
    int next = FindNextHeader(order, cur, *size);
    for (int j = cur - 1; j >= 0; --j) {
      if (order[j].inflag == 1 && order[j].boundary == 1) {
        order[j].inflag = 0;
        next = j;
      }
    }
    cur = next;
    try {
      closures.emplace_back();
      CopyIndices(order, closures.back(), *size);
    } catch (const std::bad_alloc&) {
      Fail(Status::kEngineFault, Stream::kStdout,
           Format("Allocation failed for IndVector (ndx=%d).\n", *count));
    }
    *count += 1;
  }
}

}  // namespace quarnel
