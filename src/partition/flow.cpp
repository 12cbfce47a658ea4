// The maximum flow of one sample by breadth-first augmenting paths, each search scanning arcs
// in the network's fixed order, so that the same paths and the same residual network come out
// on every run.
#include "partition/flow.h"

#include <algorithm>

namespace quarnel {

namespace {

// Capacities come from contact weights, which an extreme -bw can push to the limits of 32 bits;
// the residual arithmetic saturates there instead of overflowing. Ordinary runs never get near.
int32_t SaturatedSum(int32_t a, int32_t b) {
  int64_t sum = static_cast<int64_t>(a) + static_cast<int64_t>(b);
  if (sum > INT32_MAX) return INT32_MAX;
  if (sum < INT32_MIN) return INT32_MIN;
  return static_cast<int32_t>(sum);
}

// A new search number; when the numbers wrap, every stamp is cleared once.
uint32_t NextSearch(FlowScratch& scratch) {
  if (++scratch.search == 0) {
    std::fill(scratch.stamp.begin(), scratch.stamp.end(), 0);
    scratch.search = 1;
  }
  return scratch.search;
}

void Prepare(const FlowNetwork& network, FlowScratch& scratch) {
  const size_t nodes = static_cast<size_t>(network.size());
  if (scratch.stamp.size() != nodes) {
    scratch.stamp.assign(nodes, 0);
    scratch.search = 0;
  }
  scratch.distance.resize(nodes);
  scratch.predecessor.resize(nodes);
  scratch.predecessorArc.resize(nodes);
  scratch.queue.resize(nodes);
}

// A breadth-first search from the source, scanning arcs in the fixed order and stopping when
// the sink is reached. A node's predecessor is fixed when the node is first reached, so the
// path to the sink is settled the moment the sink is reached: scanning on to the end of the
// queue, as a complete search would, could change nothing but which nodes this search reached.
// Every node nearer the source than the sink has been reached by then.
bool BreadthFirst(const FlowNetwork& network, FlowScratch& scratch) {
  Prepare(network, scratch);
  const uint32_t search = NextSearch(scratch);
  std::vector<uint32_t>& stamp = scratch.stamp;
  std::vector<int32_t>& queue = scratch.queue;
  size_t read = 0, write = 0;
  stamp[network.source] = search;
  scratch.distance[network.source] = 0;
  queue[write++] = network.source;
  while (read != write) {
    const int32_t u = queue[read++];
    const int32_t next = scratch.distance[u] + 1;
    const bool reachedSink = ForEachArc(network, u, [&](int32_t arc, int32_t v) {
      if (network.residual[arc] < 1 || stamp[v] == search) return false;
      stamp[v] = search;
      scratch.distance[v] = next;
      scratch.predecessor[v] = u;
      scratch.predecessorArc[v] = arc;
      queue[write++] = v;
      return v == network.sink;
    });
    if (reachedSink) return true;
  }
  return false;
}

void TracePath(const FlowNetwork& network, FlowScratch& scratch, int* length) {
  const int32_t sinkDistance = scratch.distance[network.sink];
  scratch.path.resize(static_cast<size_t>(sinkDistance));
  scratch.pathNodes.resize(static_cast<size_t>(sinkDistance) + 1);
  for (int32_t v = network.sink; v != network.source; v = scratch.predecessor[v]) {
    scratch.path[scratch.distance[v] - 1] = scratch.predecessorArc[v];
    scratch.pathNodes[scratch.distance[v]] = v;
  }
  scratch.pathNodes[0] = network.source;
  *length = sinkDistance;
}

int32_t Augment(FlowNetwork& network, const std::vector<int32_t>& path, int length) {
  int32_t bottleneck = kAnchorCapacity;
  for (int i = 0; i < length; ++i) bottleneck = std::min(bottleneck, network.residual[path[i]]);
  if (bottleneck < 1) Fail(Status::kBottleneck, Stream::kStdout, "Something is wrong. CHECK -1!!!\n");
  for (int i = 0; i < length; ++i) network.flow[path[i]] += bottleneck;
  // The first arc leaves the source and the last enters the sink: neither has a partner.
  for (int i = 0; i < length; ++i) {
    const int32_t arc = path[i];
    network.residual[arc] = SaturatedSum(network.capacity[arc], -network.flow[arc]);
    if (i == 0 || i == length - 1) continue;
    const int32_t partner = network.reverse[arc];
    network.flow[partner] = -network.flow[arc];
    network.residual[partner] = SaturatedSum(network.capacity[arc], network.flow[arc]);
  }
  return bottleneck;
}

// Moves the node's place on to its next arc that climbs one level, has residual left and leads
// to a node not known to be dead; false when there is none.
bool NextUsefulArc(const FlowNetwork& network, FlowScratch& scratch, int32_t u, int32_t* arc,
                   int32_t* head) {
  const int32_t* level = scratch.level.data();
  const int32_t* heads = network.head.data();
  const int32_t* residual = network.residual.data();
  const int32_t up = level[u] + 1;
  const int32_t first = network.first[u];
  const int32_t count = network.first[u + 1] - first;
  int32_t& slot = scratch.currentSlot[u];
  for (; slot < count; ++slot) {
    const int32_t a = first + slot;
    const int32_t v = heads[a];
    if (residual[a] >= 1 && level[v] == up) {
      *arc = a;
      *head = v;
      return true;
    }
  }
  return false;
}

// Every augmenting path of one round, the round of paths as long as the one the last
// breadth-first search found (its distances are the levels). Each is taken depth first, arcs
// in scan order, over arcs that climb one level: the first path so found is the one whose arcs'
// places in their scan orders, read from the source, come first, which is the path a
// breadth-first search finds. An arc found useless (dry, or leading nowhere) stays useless for
// the round, since the round only takes residual from arcs that climb; so each node keeps the
// place where its next useful arc may be.
int32_t AugmentRound(FlowNetwork& network, FlowScratch& scratch) {
  const size_t nodes = static_cast<size_t>(network.size());
  const uint32_t levelled = scratch.search;
  scratch.currentSlot.assign(nodes, 0);
  scratch.level.resize(nodes);
  for (size_t v = 0; v < nodes; ++v)
    scratch.level[v] = scratch.stamp[v] == levelled ? scratch.distance[v] : -1;
  std::vector<int32_t>& path = scratch.path;
  std::vector<int32_t>& stack = scratch.pathNodes;
  path.clear();
  stack.assign(1, network.source);
  int32_t total = 0;
  while (!stack.empty()) {
    const int32_t u = stack.back();
    if (u == network.sink) {
      const int length = static_cast<int>(path.size());
      total += Augment(network, path, length);
      // Back to the first arc that ran dry: the path up to it is where the next one starts.
      int keep = 0;
      while (keep < length && network.residual[path[keep]] >= 1) ++keep;
      path.resize(static_cast<size_t>(keep));
      stack.resize(static_cast<size_t>(keep) + 1);
      continue;
    }
    int32_t arc = kNoArc, v = 0;
    if (NextUsefulArc(network, scratch, u, &arc, &v)) {
      path.push_back(arc);
      stack.push_back(v);
      continue;
    }
    scratch.level[u] = -1;  // dead for the rest of the round
    stack.pop_back();
    if (!stack.empty()) {
      path.pop_back();
      ++scratch.currentSlot[stack.back()];
    }
  }
  return total;
}

}  // namespace

// Taking the pairs from the last to the first appends each row's arcs to higher residues in
// descending order, then its arcs to lower residues in descending order: the order of a list
// whose arcs were put at the front for pairs taken first to last.
LevelArcs BuildLevelArcs(const std::vector<WeightedPair>& pairs, int residues) {
  LevelArcs arcs;
  arcs.residues = residues;
  arcs.first.assign(static_cast<size_t>(residues) + 1, 0);
  for (const WeightedPair& pair : pairs) {
    ++arcs.first[pair.i + 1];
    ++arcs.first[pair.j + 1];
  }
  for (int v = 0; v < residues; ++v) arcs.first[v + 1] += arcs.first[v];
  const size_t total = static_cast<size_t>(arcs.first[residues]);
  arcs.head.resize(total);
  arcs.capacity.resize(total);
  arcs.reverse.resize(total);
  std::vector<int32_t> next(arcs.first.begin(), arcs.first.end() - 1);
  for (size_t p = pairs.size(); p-- > 0;) {
    const WeightedPair& pair = pairs[p];
    const int32_t forward = next[pair.i]++;
    const int32_t backward = next[pair.j]++;
    arcs.head[forward] = pair.j;
    arcs.head[backward] = pair.i;
    arcs.capacity[forward] = arcs.capacity[backward] = pair.weight;
    arcs.reverse[forward] = backward;
    arcs.reverse[backward] = forward;
  }
  return arcs;
}

void GenerateGraph(const LevelArcs& arcs, const AnchorPair* anchors, int extremes,
                   FlowNetwork& network) {
  const int residues = arcs.residues;
  const int nodes = residues + 2;
  const int32_t count = extremes > 0 ? extremes : 0;
  network.source = nodes - 2;
  network.sink = nodes - 1;
  network.nodes.resize(static_cast<size_t>(nodes));
  for (int v = 0; v < nodes; ++v) network.nodes[v] = FlowNode{v, 0};

  // Rows in node order: the residues', then the source's, then the sink's (empty).
  std::vector<uint8_t> inSinkSet(static_cast<size_t>(residues), 0);
  for (int k = 0; k < count; ++k) inSinkSet[anchors[k].sink] = 1;
  network.first.assign(static_cast<size_t>(nodes) + 1, 0);
  std::vector<int32_t> shift(static_cast<size_t>(residues));  // level arc e of row v is arc e + shift[v]
  int32_t next = 0;
  for (int v = 0; v < residues; ++v) {
    network.first[v] = next;
    next += inSinkSet[v];
    shift[v] = next - arcs.first[v];
    next += arcs.first[v + 1] - arcs.first[v];
  }
  network.first[network.source] = next;
  next += count;
  network.first[network.sink] = next;
  network.first[nodes] = next;
  const size_t arcCount = static_cast<size_t>(next);
  network.head.resize(arcCount);
  network.capacity.resize(arcCount);
  network.reverse.resize(arcCount);
  network.flow.assign(arcCount, 0);
  for (int k = 0; k < count; ++k) {
    const int32_t arc = network.first[network.source] + k;
    network.head[arc] = anchors[count - 1 - k].source;
    network.capacity[arc] = kAnchorCapacity;
    network.reverse[arc] = kNoArc;
  }
  for (int v = 0; v < residues; ++v) {
    if (inSinkSet[v] != 0) {
      const int32_t arc = network.first[v];
      network.head[arc] = network.sink;
      network.capacity[arc] = kAnchorCapacity;
      network.reverse[arc] = kNoArc;
    }
    for (int32_t e = arcs.first[v]; e < arcs.first[v + 1]; ++e) {
      const int32_t placed = e + shift[v];
      network.head[placed] = arcs.head[e];
      network.capacity[placed] = arcs.capacity[e];
      network.reverse[placed] = arcs.reverse[e] + shift[arcs.head[e]];
    }
  }
  network.residual = network.capacity;
}

void GenerateGraph(const std::vector<WeightedPair>& pairs, int nodes, const AnchorPair* anchors,
                   int extremes, FlowNetwork& network) {
  GenerateGraph(BuildLevelArcs(pairs, nodes - 2), anchors, extremes, network);
}

bool FindAugmentingPath(const FlowNetwork& network, FlowScratch& scratch, int* length) {
  if (!BreadthFirst(network, scratch)) return false;
  TracePath(network, scratch, length);
  return true;
}

// Breadth-first augmenting paths: each path is the one a breadth-first search from the source
// finds. Paths of one length are taken in rounds (see AugmentRound); when a round is over, the
// length has grown and a new search sets the next round's levels. The last search, finding no
// path, leaves the nodes the source still reaches.
int32_t DomainBiPartition(FlowNetwork& network, FlowScratch& scratch) {
  int32_t total = 0;
  while (BreadthFirst(network, scratch)) total += AugmentRound(network, scratch);
  for (FlowNode& node : network.nodes) node.label = scratch.Reached(node.id) ? 1 : 0;
  return total;
}

}  // namespace quarnel
