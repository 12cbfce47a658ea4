// Strongly connected components of a residual network and the component graph, the ground on
// which the minimum cuts are enumerated.
#pragma once

#include <cstdint>
#include <vector>

#include "partition/flow.h"

struct DagNode {
  int32_t id;
  int32_t parent;  // -10 when none
  int32_t mark;    // kFree, kMustIn, kMustOut, or the topological sort's states
};

constexpr int32_t kFree = -1;
constexpr int32_t kMustIn = -100;
constexpr int32_t kMustOut = -200;
constexpr int32_t kNoParent = -10;
constexpr int32_t kUnsorted = 99;
constexpr int32_t kVisiting = 2;
constexpr int32_t kVisited = 9999;

struct MappingEntry {
  int32_t node;
  int32_t label;  // component label, then component number
};

struct MappingRange {
  int32_t first, last;  // inclusive positions in Mapping
};

extern std::vector<MappingEntry> Mapping;
extern std::vector<int32_t> InverseMapping;
extern std::vector<MappingRange> Mapptr;

// One selection of free components, by TopoOrder position.
struct ClosureEntry {
  int32_t index;   // component number
  int32_t inflag;  // 1 when selected
};
using IndVector = std::vector<std::vector<ClosureEntry>>;

struct TopoEntry {
  int32_t index;
  int32_t inflag;
  int32_t boundary;
};

constexpr int kMaxClosureRows = 99;  // with the selection of no free component, 100 candidates

int comparec(const void* a, const void* b);

void FindAllMinCuts(FlowNode* flowNodes, AdjacencyList& list, int nodes, DagNode* dag,
                    AdjacencyList& successors, AdjacencyList& predecessors, int* k,
                    IndVector& closures, int* size, int* count);
void DagConstruction(FlowNode* flowNodes, AdjacencyList& list, int nodes, DagNode* dag,
                     AdjacencyList& successors, AdjacencyList& predecessors, int* k);
void CalcSCC(FlowNode* flowNodes, AdjacencyList& list, int nodes);
void SCCLabeling(FlowNode* flowNodes, AdjacencyList& list, int v);
void CreateMapping(FlowNode* flowNodes, int nodes, int* k);
void DagBuilder(FlowNode* flowNodes, AdjacencyList& list, int nodes, DagNode* dag,
                AdjacencyList& successors, AdjacencyList& predecessors, int k);

int32_t** Short2Malloc(int rows, int cols);
void Init2Array(int32_t** matrix, int rows, int cols);
void Free2Array(int32_t** matrix, int rows);

// Minimum-cut marking and enumeration on the component graph.
void MarkMustInOuts(DagNode* dag, AdjacencyList& successors, AdjacencyList& predecessors, int k);
void CalcMustIns(DagNode* dag, AdjacencyList& successors, int k);
void DFSLabeling(DagNode* dag, AdjacencyList& successors, int component);
void DFSLabeling1(DagNode* dag, AdjacencyList& predecessors, int component);
void EnumerateClosures(DagNode* dag, AdjacencyList& successors, int k, IndVector& closures,
                       int* size, int* count);
void TopologicalSort(DagNode* dag, AdjacencyList& successors, int k,
                     std::vector<TopoEntry>& order, int* size);
void DFSVisit(int component, DagNode* dag, AdjacencyList& successors,
              std::vector<TopoEntry>& order, int* next);
void CalcBoundary(DagNode* dag, std::vector<TopoEntry>& order, int size);
int FindNextHeader(const std::vector<TopoEntry>& order, int position, int size);
void CopyIndices(const std::vector<TopoEntry>& order, std::vector<ClosureEntry>& row, int size);
