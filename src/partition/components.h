// Strongly connected components of a residual network and the graph of components, the ground
// on which the minimum cuts of one flow problem are enumerated.
#pragma once

#include <cstdint>
#include <vector>

#include "partition/flow.h"

namespace quarnel {

struct DagNode {
  int32_t id;
  int32_t parent;  // kNoParent when none
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
  int32_t first, last;  // inclusive positions in `mapping`
};

// One selection of free components, by topological position.
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

// Per component, a list of components in compressed rows.
struct ComponentLists {
  std::vector<int32_t> first;  // the list of p is entries first[p] .. first[p + 1] - 1
  std::vector<int32_t> entries;
};

// The components of one flow problem, their maps to nodes, and the component graph. The
// successor list of p holds, once each, every component that a residual arc from a node of p
// enters (p itself too when an arc stays inside p); the predecessor lists are the transpose;
// both run in decreasing component order.
struct ComponentGraph {
  int32_t k = 0;                       // number of components
  std::vector<MappingEntry> mapping;   // (node, component), grouped by component
  std::vector<int32_t> inverse;        // node -> component
  std::vector<MappingRange> ranges;    // component -> its run in `mapping`
  std::vector<DagNode> dag;
  ComponentLists successors;
  ComponentLists predecessors;
};

// The cut enumeration of one solved network: components, must-in and must-out marks, and the
// closure rows of the free components; `size` free components, `count` rows.
void FindAllMinCuts(FlowNetwork& network, ComponentGraph& graph, IndVector& closures, int* size,
                    int* count);

void CalcSCC(FlowNetwork& network);
void CreateMapping(const FlowNetwork& network, ComponentGraph& graph);
void DagBuilder(const FlowNetwork& network, ComponentGraph& graph);
int comparec(const void* a, const void* b);

void MarkMustInOuts(ComponentGraph& graph, int32_t source, int32_t sink);
void EnumerateClosures(ComponentGraph& graph, IndVector& closures, int* size, int* count);

}  // namespace quarnel
