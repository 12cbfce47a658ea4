// Which components lie on the source side of every minimum cut, which on the sink side, and
// the enumeration of selections of the free ones. The selections come out as a base-two
// counter over the free components in topological order; the counter stops after
// kMaxClosureRows rows, so a flow problem never lists more than 100 candidates however many
// free components it has.
#include "partition/components.h"

#include <cstdio>
#include <new>

#include "run/fatal.h"

void DFSLabeling(DagNode* dag, AdjacencyList& successors, int component) {
  dag[component].mark = kMustIn;
  for (FlowArc* entry = successors.head[component]; entry != nullptr; entry = entry->next) {
    if (dag[entry->head].mark == kFree) DFSLabeling(dag, successors, entry->head);
  }
}

void DFSLabeling1(DagNode* dag, AdjacencyList& predecessors, int component) {
  dag[component].mark = kMustOut;
  for (FlowArc* entry = predecessors.head[component]; entry != nullptr; entry = entry->next) {
    if (dag[entry->head].mark == kFree) DFSLabeling1(dag, predecessors, entry->head);
  }
}

void CalcMustIns(DagNode* dag, AdjacencyList& successors, int k) {
  for (int p = 0; p < k; ++p) dag[p].mark = kFree;
  DFSLabeling(dag, successors, InverseMapping[Source]);
}

void MarkMustInOuts(DagNode* dag, AdjacencyList& successors, AdjacencyList& predecessors, int k) {
  CalcMustIns(dag, successors, k);
  DFSLabeling1(dag, predecessors, InverseMapping[Sink]);
}

void DFSVisit(int component, DagNode* dag, AdjacencyList& successors,
              std::vector<TopoEntry>& order, int* next) {
  dag[component].mark = kVisiting;
  for (FlowArc* entry = successors.head[component]; entry != nullptr; entry = entry->next) {
    if (dag[entry->head].mark == kUnsorted) {
      dag[entry->head].parent = component;
      DFSVisit(entry->head, dag, successors, order, next);
    }
  }
  dag[component].mark = kVisited;
  order[*next].index = component;
  *next -= 1;
}

void TopologicalSort(DagNode* dag, AdjacencyList& successors, int k,
                     std::vector<TopoEntry>& order, int* size) {
  int count = 0;
  for (int p = 0; p < k; ++p) {
    if (dag[p].mark == kFree) {
      dag[p].mark = kUnsorted;
      ++count;
    }
    dag[p].parent = kNoParent;
  }
  *size = count;
  int next = count - 1;
  for (int p = 0; p < k; ++p) {
    if (dag[p].mark == kUnsorted) DFSVisit(p, dag, successors, order, &next);
  }
}

void CalcBoundary(DagNode* dag, std::vector<TopoEntry>& order, int size) {
  for (int i = 0; i < size; ++i) order[i].boundary = order[i].inflag == 1 ? 1 : 0;
  // A selected component whose search-forest ancestor is also selected is not on the boundary.
  for (int i = 0; i < size; ++i) {
    if (order[i].inflag != 1) continue;
    for (int32_t a = dag[order[i].index].parent; a != kNoParent; a = dag[a].parent) {
      for (int j = 0; j < size; ++j) {
        if (order[j].index == a && order[j].inflag == 1) order[j].boundary = 0;
      }
    }
  }
}

int FindNextHeader(const std::vector<TopoEntry>& order, int position, int size) {
  for (int i = position + 1; i <= size; ++i) {
    if (order[i].inflag == 0) return i;
  }
  std::printf("Warning: FindNextHeader failed (posn=%d, size=%d)\n", position, size);
  return size;
}

void CopyIndices(const std::vector<TopoEntry>& order, std::vector<ClosureEntry>& row, int size) {
  row.resize(size);
  for (int i = 0; i < size; ++i) row[i] = ClosureEntry{order[i].index, order[i].inflag};
}

void EnumerateClosures(DagNode* dag, AdjacencyList& successors, int k, IndVector& closures,
                       int* size, int* count) {
  // One entry beyond the free components is never selected and ends every header scan.
  std::vector<TopoEntry> order(static_cast<size_t>(k) + 1, TopoEntry{0, 0, 0});
  TopologicalSort(dag, successors, k, order, size);
  closures.clear();
  int cur = 0;
  *count = 0;
  while (cur < *size && *count < kMaxClosureRows) {
    order[cur].inflag = 1;
    CalcBoundary(dag, order, *size);
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
      Fatal(10, Stream::kStdout, Format("Allocation failed for IndVector (ndx=%d).\n", *count));
    }
    *count += 1;
  }
}
