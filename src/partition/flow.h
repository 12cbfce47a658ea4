// The flow network of one sample: the level's residues plus a super-source and a super-sink,
// solved by shortest augmenting paths; the residual network is left for the cut enumeration.
#pragma once

#include <cstdint>
#include <deque>
#include <string>
#include <vector>

#include "base/status.h"

namespace quarnel {

struct FlowNode {
  int32_t id;
  int32_t label;
};

struct FlowArc {
  int32_t head;
  int32_t flow;
  int32_t capacity;
  int32_t residual;
  FlowArc* next;
  FlowArc* reverse;
};

// Per node, the first arc of its singly linked list of leaving arcs; the records themselves
// live in `arcs`, whose addresses stay put while it grows.
struct AdjacencyList {
  std::vector<FlowArc*> head;
  std::deque<FlowArc> arcs;
};

// Nodes 0 .. n-1 are the level's residues by slice position; source and sink come last.
struct FlowNetwork {
  std::vector<FlowNode> nodes;
  AdjacencyList list;
  int32_t source = 0;
  int32_t sink = 0;

  int32_t size() const { return static_cast<int32_t>(nodes.size()); }
};

// The k-th member of the source set and the k-th member of the sink set.
struct AnchorPair {
  int32_t source;
  int32_t sink;
};

// The residue pairs i < j of a level with a non-zero weight, i ascending then j ascending: the
// order in which their arcs enter the network. A level lists them once for all its samples.
struct WeightedPair {
  int32_t i, j;
  int32_t weight;
};

constexpr int32_t kAnchorCapacity = 1000000;  // arcs from the source and into the sink
constexpr int32_t kUnreachedDistance = 10000;

// The search queue: a ring of node numbers with a read and a write position.
struct Queue {
  int32_t read = 0;
  int32_t write = 0;
  std::vector<int32_t> slots;
};

// What one breadth-first search needs besides the network; reused from search to search.
struct FlowScratch {
  std::vector<int32_t> predecessor;
  std::vector<int32_t> distance;
  Queue queue;
  std::vector<FlowArc*> path;
};

// Builds the network of `nodes` nodes (residues plus source and sink) from the level's weighted
// pairs and the anchor sets (`extremes` pairs).
void GenerateGraph(const std::vector<WeightedPair>& pairs, int nodes, const AnchorPair* anchors,
                   int extremes, FlowNetwork& network);

// Pushes a maximum flow; returns its value and leaves the residual network. Consistency reports
// of the searches are appended to `messages`.
int32_t DomainBiPartition(FlowNetwork& network, FlowScratch& scratch, std::vector<Message>& messages);

// One breadth-first search for a shortest augmenting path; true when one was found, its arcs
// then in scratch.path[0 .. length).
bool FindAugmentingPath(FlowNetwork& network, FlowScratch& scratch, int* length,
                        std::vector<Message>& messages);

void EnQueue(Queue& queue, int32_t node);
void DeQueue(Queue& queue);

// Puts a new arc at the front of a node's list and returns it.
FlowArc* PushArc(AdjacencyList& list, int tail, int32_t head, int32_t capacity);

}  // namespace quarnel
