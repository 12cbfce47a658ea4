// The flow network of one sample and its maximum flow by breadth-first augmenting paths.
// Which minimum cut the residual network exposes depends on the exact order of arcs in the
// lists and of the searches, so both follow one fixed discipline: arcs go to the front.
#include "partition/flow.h"

#include <cstdint>
#include <cstdio>

#include "contacts/contacts.h"
#include "run/fatal.h"
#include "run/parameters.h"

namespace {

constexpr int kNoPredecessor = -1;

enum SearchLabel : int32_t { kNotReached = 0, kScanned = 1, kQueued = 2 };

// Capacities come from contact weights, which an extreme -bw can push to the limits of 32 bits;
// the residual arithmetic saturates there instead of overflowing. Ordinary runs never get near.
int32_t SaturatedSum(int32_t a, int32_t b) {
  int64_t sum = static_cast<int64_t>(a) + static_cast<int64_t>(b);
  if (sum > INT32_MAX) return INT32_MAX;
  if (sum < INT32_MIN) return INT32_MIN;
  return static_cast<int32_t>(sum);
}

}  // namespace

FlowArc* PushArc(AdjacencyList& list, int tail, int32_t head, int32_t capacity) {
  list.arcs.push_back(FlowArc{head, 0, capacity, capacity, list.head[tail], nullptr});
  FlowArc* arc = &list.arcs.back();
  list.head[tail] = arc;
  return arc;
}

std::vector<WeightedPair> WeightedPairs(Contact** sub, int residues) {
  std::vector<WeightedPair> pairs;
  for (int i = 0; i < residues; ++i) {
    for (int j = i + 1; j < residues; ++j) {
      if (sub[i][j].weight != 0) pairs.push_back(WeightedPair{i, j, sub[i][j].weight});
    }
  }
  return pairs;
}

void GenerateGraphFromPairs(const std::vector<WeightedPair>& pairs, int nodes,
                            const AnchorPair* anchors, FlowNode* flowNodes, AdjacencyList& list) {
  Source = nodes - 2;
  Sink = nodes - 1;
  list.arcs.clear();
  list.head.assign(static_cast<size_t>(nodes), nullptr);
  for (int i = 0; i < nodes; ++i) flowNodes[i].id = i;

  for (int k = 0; k < NumExtremes; ++k) PushArc(list, Source, anchors[k].source, kAnchorCapacity);

  for (const WeightedPair& pair : pairs) {
    FlowArc* forward = PushArc(list, pair.i, pair.j, pair.weight);
    FlowArc* backward = PushArc(list, pair.j, pair.i, pair.weight);
    forward->reverse = backward;
    backward->reverse = forward;
  }

  for (int k = 0; k < NumExtremes; ++k) PushArc(list, anchors[k].sink, Sink, kAnchorCapacity);
}

void GenerateGraph(Contact** sub, int nodes, const AnchorPair* anchors, FlowNode* flowNodes,
                   AdjacencyList& list) {
  GenerateGraphFromPairs(WeightedPairs(sub, nodes - 2), nodes, anchors, flowNodes, list);
}

void EnQueue(Queue& queue, int32_t node) {
  int32_t slots = static_cast<int32_t>(queue.slots.size());
  queue.slots[queue.write] = node;
  queue.write = queue.write + 1 == slots ? 0 : queue.write + 1;
  if (queue.read == queue.write + 1)
    Fatal(30, Stream::kStdout, "The queue size (MAXNUMNODES) is too small. Overflow!!\n");
}

void DeQueue(Queue& queue) {
  int32_t slots = static_cast<int32_t>(queue.slots.size());
  if (queue.read == slots - 1) {
    queue.read = 0;
    Fatal(0, Stream::kStdout, "stop !\n");
  }
  queue.read = queue.read + 1;
}

void FindAugmentingPath(FlowNode* flowNodes, AdjacencyList& list, int nodes,
                        std::vector<FlowArc*>& path, int* length, int* found) {
  // Every node is queued at most once, so a queue one slot longer than the network never wraps.
  static std::vector<int32_t> predecessor, distance;
  static Queue queue;
  predecessor.assign(static_cast<size_t>(nodes), kNoPredecessor);
  distance.assign(static_cast<size_t>(nodes), kUnreachedDistance);
  queue.slots.assign(static_cast<size_t>(nodes) + 2, 0);
  queue.read = 0;
  queue.write = 0;

  for (int v = 0; v < nodes; ++v) flowNodes[v].label = kNotReached;
  flowNodes[Source].label = kQueued;
  distance[Source] = 0;
  EnQueue(queue, Source);

  // A node's predecessor is fixed when the node is first reached, so the path to the sink is
  // settled the moment the sink is reached: scanning on to the end of the queue, as the
  // breadth-first search is defined, could change nothing but the labels of this search. Only
  // the labels of the last, pathless search are read afterwards, and that search reaches no sink
  // and scans the whole reachable part. So a search stops as soon as it reaches the sink.
  bool reachedSink = false;
  while (queue.read != queue.write && !reachedSink) {
    int32_t u = queue.slots[queue.read];
    for (FlowArc* arc = list.head[u]; arc != nullptr; arc = arc->next) {
      int32_t v = arc->head;
      if (arc->residual >= 1 && flowNodes[v].label == kNotReached) {
        flowNodes[v].label = kQueued;
        distance[v] = distance[u] + 1;
        predecessor[v] = u;
        EnQueue(queue, v);
        if (v == Sink) {
          reachedSink = true;
          break;
        }
      }
    }
    if (reachedSink) break;
    DeQueue(queue);
    flowNodes[u].label = kScanned;
  }

  if (reachedSink) {
    int32_t sinkDistance = distance[Sink];
    if (path.size() < static_cast<size_t>(sinkDistance)) path.resize(static_cast<size_t>(sinkDistance));
    for (int32_t v = Sink; v != Source; v = predecessor[v]) {
      int32_t u = predecessor[v];
      FlowArc* arc = list.head[u];
      while (arc != nullptr && arc->head != v) arc = arc->next;
      if (arc == nullptr) Fatal(10, Stream::kStdout, "Something is wrong. CHECK -2!!!\n");
      path[distance[v] - 1] = arc;
    }
    *length = sinkDistance;
    *found = 1;
    return;
  }

  *found = 0;
  // A complete search leaves every node either unreached or scanned.
  for (int v = 0; v < nodes; ++v) {
    if (flowNodes[v].label != kNotReached && flowNodes[v].label != kScanned)
      std::printf(" WARNING: ndx=%d, Size=%d\n", v, nodes);
  }
}

int32_t DomainBiPartition(FlowNode* flowNodes, AdjacencyList& list, int nodes) {
  int32_t total = 0;
  std::vector<FlowArc*> path;
  for (;;) {
    int length = 0;
    int found = 0;
    FindAugmentingPath(flowNodes, list, nodes, path, &length, &found);
    if (!found) return total;

    int32_t bottleneck = kAnchorCapacity;
    for (int i = 0; i < length; ++i) {
      if (path[i]->residual < bottleneck)
        bottleneck = path[i]->residual;
    }
    total += bottleneck;
    if (bottleneck < 1) Fatal(20, Stream::kStdout, "Something is wrong. CHECK -1!!!\n");

    for (int i = 0; i < length; ++i) path[i]->flow += bottleneck;
    // The first arc leaves the source and the last enters the sink: neither has a partner.
    for (int i = 1; i < length - 1; ++i) {
      FlowArc* arc = path[i];
      arc->reverse->flow = -arc->flow;
    }
    for (int i = 0; i < length; ++i) {
      FlowArc* arc = path[i];
      arc->residual = SaturatedSum(arc->capacity, -arc->flow);
    }
    for (int i = 1; i < length - 1; ++i) {
      FlowArc* arc = path[i];
      arc->reverse->residual = SaturatedSum(arc->capacity, arc->flow);
    }
  }
}

// The arcs of every list live in the list's own storage: releasing them all at once releases
// the lists of all `nodes` nodes.
void FreeAdjacencyList(AdjacencyList& list, int /*nodes*/) {
  list.arcs.clear();
  list.head.clear();
}
