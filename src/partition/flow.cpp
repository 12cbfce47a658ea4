// The flow network of one sample and its maximum flow by breadth-first augmenting paths.
// Which minimum cut the residual network exposes depends on the exact order of arcs in the
// lists and of the searches, so both follow one fixed discipline: arcs go to the front.
#include "partition/flow.h"

#include "base/text.h"

namespace quarnel {

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

void GenerateGraph(const std::vector<WeightedPair>& pairs, int nodes, const AnchorPair* anchors,
                   int extremes, FlowNetwork& network) {
  network.source = nodes - 2;
  network.sink = nodes - 1;
  network.nodes.resize(static_cast<size_t>(nodes));
  AdjacencyList& list = network.list;
  list.arcs.clear();
  list.head.assign(static_cast<size_t>(nodes), nullptr);
  for (int i = 0; i < nodes; ++i) network.nodes[i] = FlowNode{i, 0};

  for (int k = 0; k < extremes; ++k) PushArc(list, network.source, anchors[k].source, kAnchorCapacity);

  for (const WeightedPair& pair : pairs) {
    FlowArc* forward = PushArc(list, pair.i, pair.j, pair.weight);
    FlowArc* backward = PushArc(list, pair.j, pair.i, pair.weight);
    forward->reverse = backward;
    backward->reverse = forward;
  }

  for (int k = 0; k < extremes; ++k) PushArc(list, anchors[k].sink, network.sink, kAnchorCapacity);
}

void EnQueue(Queue& queue, int32_t node) {
  int32_t slots = static_cast<int32_t>(queue.slots.size());
  queue.slots[queue.write] = node;
  queue.write = queue.write + 1 == slots ? 0 : queue.write + 1;
  if (queue.read == queue.write + 1)
    Fail(Status::kQueueOverflow, Stream::kStdout,
         "The queue size (MAXNUMNODES) is too small. Overflow!!\n");
}

void DeQueue(Queue& queue) {
  int32_t slots = static_cast<int32_t>(queue.slots.size());
  if (queue.read == slots - 1) {
    queue.read = 0;
    Fail(Status::kQueueStop, Stream::kStdout, "stop !\n");
  }
  queue.read = queue.read + 1;
}

bool FindAugmentingPath(FlowNetwork& network, FlowScratch& scratch, int* length,
                        std::vector<Message>& messages) {
  const int nodes = network.size();
  std::vector<FlowNode>& flowNodes = network.nodes;
  // Every node is queued at most once, so a queue one slot longer than the network never wraps.
  scratch.predecessor.assign(static_cast<size_t>(nodes), kNoPredecessor);
  scratch.distance.assign(static_cast<size_t>(nodes), kUnreachedDistance);
  Queue& queue = scratch.queue;
  queue.slots.assign(static_cast<size_t>(nodes) + 2, 0);
  queue.read = 0;
  queue.write = 0;

  for (int v = 0; v < nodes; ++v) flowNodes[v].label = kNotReached;
  flowNodes[network.source].label = kQueued;
  scratch.distance[network.source] = 0;
  EnQueue(queue, network.source);

  // A node's predecessor is fixed when the node is first reached, so the path to the sink is
  // settled the moment the sink is reached: scanning on to the end of the queue, as the
  // breadth-first search is defined, could change nothing but the labels of this search. Only
  // the labels of the last, pathless search are read afterwards, and that search reaches no sink
  // and scans the whole reachable part. So a search stops as soon as it reaches the sink.
  bool reachedSink = false;
  while (queue.read != queue.write && !reachedSink) {
    int32_t u = queue.slots[queue.read];
    for (FlowArc* arc = network.list.head[u]; arc != nullptr; arc = arc->next) {
      int32_t v = arc->head;
      if (arc->residual >= 1 && flowNodes[v].label == kNotReached) {
        flowNodes[v].label = kQueued;
        scratch.distance[v] = scratch.distance[u] + 1;
        scratch.predecessor[v] = u;
        EnQueue(queue, v);
        if (v == network.sink) {
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
    int32_t sinkDistance = scratch.distance[network.sink];
    if (scratch.path.size() < static_cast<size_t>(sinkDistance))
      scratch.path.resize(static_cast<size_t>(sinkDistance));
    for (int32_t v = network.sink; v != network.source; v = scratch.predecessor[v]) {
      int32_t u = scratch.predecessor[v];
      FlowArc* arc = network.list.head[u];
      while (arc != nullptr && arc->head != v) arc = arc->next;
      if (arc == nullptr)
        Fail(Status::kEngineFault, Stream::kStdout, "Something is wrong. CHECK -2!!!\n");
      scratch.path[scratch.distance[v] - 1] = arc;
    }
    *length = sinkDistance;
    return true;
  }

  // A complete search leaves every node either unreached or scanned.
  for (int v = 0; v < nodes; ++v) {
    if (flowNodes[v].label != kNotReached && flowNodes[v].label != kScanned)
      messages.push_back(Message{Stream::kStdout, Format(" WARNING: ndx=%d, Size=%d\n", v, nodes)});
  }
  return false;
}

int32_t DomainBiPartition(FlowNetwork& network, FlowScratch& scratch, std::vector<Message>& messages) {
  int32_t total = 0;
  for (;;) {
    int length = 0;
    if (!FindAugmentingPath(network, scratch, &length, messages)) return total;
    std::vector<FlowArc*>& path = scratch.path;

    int32_t bottleneck = kAnchorCapacity;
    for (int i = 0; i < length; ++i) {
      if (path[i]->residual < bottleneck) bottleneck = path[i]->residual;
    }
    total += bottleneck;
    if (bottleneck < 1)
      Fail(Status::kBottleneck, Stream::kStdout, "Something is wrong. CHECK -1!!!\n");

    for (int i = 0; i < length; ++i) path[i]->flow += bottleneck;
    // The first arc leaves the source and the last enters the sink: neither has a partner.
    for (int i = 1; i < length - 1; ++i) path[i]->reverse->flow = -path[i]->flow;
    for (int i = 0; i < length; ++i) path[i]->residual = SaturatedSum(path[i]->capacity, -path[i]->flow);
    for (int i = 1; i < length - 1; ++i)
      path[i]->reverse->residual = SaturatedSum(path[i]->capacity, path[i]->flow);
  }
}

}  // namespace quarnel
