// The flow network of one sample: residues plus a super-source and a super-sink, solved by
// shortest augmenting paths; the residual network is left for the cut enumeration.
#pragma once

#include <cstdint>
#include <deque>
#include <vector>

struct Contact;

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

// The k-th member of the source set and the k-th member of the sink set.
struct AnchorPair {
  int32_t source;
  int32_t sink;
};

constexpr int32_t kAnchorCapacity = 1000000;   // arcs from the source and into the sink
constexpr int32_t kUnreachedDistance = 10000;

extern int32_t Source;
extern int32_t Sink;

struct Queue {
  int32_t read;
  int32_t write;
  std::vector<int32_t> slots;
};

void GenerateGraph(Contact** sub, int nodes, const AnchorPair* anchors, FlowNode* flowNodes,
                   AdjacencyList& list);

// The residue pairs i < j of a level with a non-zero weight, i ascending then j ascending: the
// order in which their arcs enter the network. A level lists them once for all its samples.
struct WeightedPair {
  int32_t i, j;
  int32_t weight;
};
std::vector<WeightedPair> WeightedPairs(Contact** sub, int residues);
void GenerateGraphFromPairs(const std::vector<WeightedPair>& pairs, int nodes,
                            const AnchorPair* anchors, FlowNode* flowNodes, AdjacencyList& list);
int32_t DomainBiPartition(FlowNode* flowNodes, AdjacencyList& list, int nodes);
void FindAugmentingPath(FlowNode* flowNodes, AdjacencyList& list, int nodes,
                        std::vector<FlowArc*>& path, int* length, int* found);
void EnQueue(Queue& queue, int32_t node);
void DeQueue(Queue& queue);
void FreeAdjacencyList(AdjacencyList& list, int nodes);

// Puts a new arc at the front of a node's list and returns it.
FlowArc* PushArc(AdjacencyList& list, int tail, int32_t head, int32_t capacity);
