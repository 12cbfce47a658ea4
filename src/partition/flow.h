// The flow network of one sample: the level's residues plus a super-source and a super-sink,
// solved by shortest augmenting paths; the residual network is left for the cut enumeration.
//
// Which minimum cut the residual network exposes depends on the exact order in which every
// search scans the arcs of a node, so that order is fixed: a residue's arc to the sink first
// (when it belongs to the sink set), then its arcs to other residues in descending order of the
// other residue; the source's arcs in reverse order of the source set. This is the order of
// lists built by putting every new arc at the front, kept here in compressed rows.
#pragma once

#include <cstdint>
#include <vector>

#include "base/status.h"

namespace quarnel {

struct FlowNode {
  int32_t id;
  int32_t label;
};

// The k-th member of the source set and the k-th member of the sink set.
struct AnchorPair {
  int32_t source;
  int32_t sink;
};

// The residue pairs i < j of a level with a non-zero weight, i ascending then j ascending.
struct WeightedPair {
  int32_t i, j;
  int32_t weight;
};

// The arcs between residues of one level, the same for all its samples: each contact gives an
// arc each way with the contact's weight as capacity, each the other's reverse.
struct LevelArcs {
  int32_t residues = 0;
  std::vector<int32_t> first;     // the arcs of residue v are first[v] .. first[v + 1] - 1
  std::vector<int32_t> head;
  std::vector<int32_t> capacity;
  std::vector<int32_t> reverse;
};

LevelArcs BuildLevelArcs(const std::vector<WeightedPair>& pairs, int residues);

constexpr int32_t kAnchorCapacity = 1000000;  // arcs from the source and into the sink
constexpr int32_t kNoArc = -1;

// One sample's network, every node's arcs in one block of compressed rows, in scan order: the
// source's arcs to its set in reverse order; a residue's arc into the sink first (when it is in
// the sink set), then its arcs to other residues, as the level lists them.
struct FlowNetwork {
  int32_t source = 0;
  int32_t sink = 0;
  std::vector<FlowNode> nodes;
  std::vector<int32_t> first;     // the arcs of node v are first[v] .. first[v + 1] - 1
  std::vector<int32_t> head;
  std::vector<int32_t> capacity;
  std::vector<int32_t> residual;
  std::vector<int32_t> flow;
  std::vector<int32_t> reverse;   // the partner arc; kNoArc for arcs of the source and sink

  int32_t size() const { return static_cast<int32_t>(nodes.size()); }
};

// Calls visit(arc, head) for every arc leaving `node`, in the fixed scan order; stops early
// when visit returns true, and then returns true.
template <typename Visit>
bool ForEachArc(const FlowNetwork& network, int32_t node, Visit&& visit) {
  for (int32_t arc = network.first[node]; arc < network.first[node + 1]; ++arc)
    if (visit(arc, network.head[arc])) return true;
  return false;
}

// The state of the searches of one flow problem, reused from search to search and from
// sample to sample. A node is reached in the current breadth-first search when its stamp is
// the search's number.
struct FlowScratch {
  std::vector<uint32_t> stamp;
  uint32_t search = 0;
  std::vector<int32_t> distance;
  std::vector<int32_t> predecessor;
  std::vector<int32_t> predecessorArc;
  std::vector<int32_t> queue;
  std::vector<int32_t> path;         // arcs of the last path found, source first
  std::vector<int32_t> pathNodes;    // its nodes, source first
  // Per node, for the current round of augmentations: the first of its arcs that may still
  // serve, and its distance from the source in the round's search, or -1 when that search did
  // not reach it or it has no path to the sink left.
  std::vector<int32_t> currentSlot;
  std::vector<int32_t> level;
  // The network of the worker's current sample, kept so that its arrays are reused.
  FlowNetwork network;

  bool Reached(int32_t v) const { return stamp[v] == search; }
};

// A sample's network over a level's residue arcs and its anchor sets (`extremes` pairs).
void GenerateGraph(const LevelArcs& arcs, const AnchorPair* anchors, int extremes,
                   FlowNetwork& network);
// The same for a network of `nodes` nodes built from its weighted pairs alone.
void GenerateGraph(const std::vector<WeightedPair>& pairs, int nodes, const AnchorPair* anchors,
                   int extremes, FlowNetwork& network);

// Pushes a maximum flow; returns its value and leaves the residual network, with label 1 on the
// nodes the source still reaches and 0 on the others.
int32_t DomainBiPartition(FlowNetwork& network, FlowScratch& scratch);

// One breadth-first search for a shortest augmenting path from scratch; true when one was
// found, its arcs then in scratch.path[0 .. length).
bool FindAugmentingPath(const FlowNetwork& network, FlowScratch& scratch, int* length);

}  // namespace quarnel
