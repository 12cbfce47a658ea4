// Maximum flow on small hand-built networks: values, residual state, final labels and the order
// in which arcs sit in their lists (the cut enumeration's tie-breaks depend on it).
#include <gtest/gtest.h>

#include <utility>
#include <vector>

#include "contacts/contacts.h"
#include "partition/flow.h"
#include "partition_fixtures.h"
#include "run/parameters.h"
#include "support/test_support.h"

using partition_test::SetWeight;
using partition_test::ZeroedMatrix;

namespace {

// One flow problem over n residues; the anchor lists pair the k-th source and sink members.
class Network {
 public:
  explicit Network(int n) : n_(n), nodes_(n + 2), sub_(ZeroedMatrix(n)), flowNodes_(n + 2) {
    list_.head.assign(nodes_, nullptr);
  }
  ~Network() { FreeContacts(sub_, n_); }
  Network(const Network&) = delete;
  Network& operator=(const Network&) = delete;

  void Weight(int i, int j, int weight) { SetWeight(sub_, i, j, weight); }

  void Build(const std::vector<AnchorPair>& anchors) {
    NumExtremes = static_cast<int32_t>(anchors.size());
    GenerateGraph(sub_, nodes_, anchors.data(), flowNodes_.data(), list_);
  }

  int32_t Solve(const std::vector<AnchorPair>& anchors) {
    Build(anchors);
    return DomainBiPartition(flowNodes_.data(), list_, nodes_);
  }

  // (head, capacity) of the arcs leaving a node, in list order.
  std::vector<std::pair<int, int>> ArcsOf(int node) const {
    std::vector<std::pair<int, int>> arcs;
    for (FlowArc* arc = list_.head[node]; arc != nullptr; arc = arc->next) {
      arcs.emplace_back(arc->head, arc->capacity);
    }
    return arcs;
  }

  FlowArc* Arc(int tail, int head) const {
    for (FlowArc* arc = list_.head[tail]; arc != nullptr; arc = arc->next) {
      if (arc->head == head) return arc;
    }
    return nullptr;
  }

  std::vector<int> Labels() const {
    std::vector<int> labels;
    for (const FlowNode& node : flowNodes_) labels.push_back(node.label);
    return labels;
  }

  int nodes() const { return nodes_; }
  FlowNode* flowNodes() { return flowNodes_.data(); }
  AdjacencyList& list() { return list_; }

 private:
  int n_;
  int nodes_;
  Contact** sub_;
  std::vector<FlowNode> flowNodes_;
  AdjacencyList list_;
};

class FlowTest : public ::testing::Test {
 protected:
  void SetUp() override { StartCleanRun(); }
};

TEST_F(FlowTest, TwoUnitContactsInSeriesCarryOne) {
  Network net(3);
  net.Weight(0, 1, 1);
  net.Weight(1, 2, 1);
  EXPECT_EQ(net.Solve({{0, 2}}), 1);
  // Both contacts are minimum cuts; the labels mark the one nearest the source.
  EXPECT_EQ(net.Labels(), (std::vector<int>{1, 0, 0, 1, 0}));
  EXPECT_EQ(net.Arc(0, 1)->flow, 1);
  EXPECT_EQ(net.Arc(0, 1)->residual, 0);
  EXPECT_EQ(net.Arc(1, 0)->flow, -1);
  EXPECT_EQ(net.Arc(1, 0)->residual, 2);
  EXPECT_EQ(net.Arc(Source, 0)->residual, kAnchorCapacity - 1);
  EXPECT_EQ(net.Arc(2, Sink)->flow, 1);
}

TEST_F(FlowTest, TwoUnitPathsInParallelCarryTwo) {
  Network net(4);
  net.Weight(0, 1, 1);
  net.Weight(1, 3, 1);
  net.Weight(0, 2, 1);
  net.Weight(2, 3, 1);
  EXPECT_EQ(net.Solve({{0, 3}}), 2);
  EXPECT_EQ(net.Labels(), (std::vector<int>{1, 0, 0, 0, 1, 0}));
}

TEST_F(FlowTest, AugmentationCancelsFlowOfAnEarlierPath) {
  // The first shortest path runs 0-3-2-5; the second must send its unit back over 2->3
  // (0-1-2-3-4-6-5), which leaves both arcs of the 2-3 contact at flow 0 and residual 1.
  Network net(7);
  net.Weight(0, 3, 1);
  net.Weight(3, 2, 1);
  net.Weight(2, 5, 1);
  net.Weight(0, 1, 1);
  net.Weight(1, 2, 1);
  net.Weight(3, 4, 1);
  net.Weight(4, 6, 1);
  net.Weight(6, 5, 1);
  // Every search scans all it queues: no consistency warning.
  ::testing::internal::CaptureStdout();
  int32_t flow = net.Solve({{0, 5}});
  EXPECT_EQ(::testing::internal::GetCapturedStdout(), "");
  EXPECT_EQ(flow, 2);
  EXPECT_EQ(net.Arc(3, 2)->flow, 0);
  EXPECT_EQ(net.Arc(3, 2)->residual, 1);
  EXPECT_EQ(net.Arc(2, 3)->flow, 0);
  EXPECT_EQ(net.Arc(2, 3)->residual, 1);
  EXPECT_EQ(net.Arc(6, 5)->flow, 1);
  EXPECT_EQ(net.Arc(5, 6)->residual, 2);
  EXPECT_EQ(net.Labels(), (std::vector<int>{1, 0, 0, 0, 0, 0, 0, 1, 0}));
}

TEST_F(FlowTest, ResidueInBothAnchorSetsAddsOneMillion) {
  Network net(3);
  net.Weight(0, 1, 1);
  net.Weight(1, 2, 1);
  // Residue 1 is in both sets: Source-1-Sink carries 1000000, and 0-1-2 one more unit.
  EXPECT_EQ(net.Solve({{0, 2}, {1, 1}}), kAnchorCapacity + 1);
}

TEST_F(FlowTest, EachSharedResidueAddsOneMillion) {
  Network net(2);
  net.Weight(0, 1, 7);
  EXPECT_EQ(net.Solve({{0, 1}, {1, 0}}), 2 * kAnchorCapacity);
}

TEST_F(FlowTest, NoPathGivesZeroAndLabelsExactlyTheReachableNodes) {
  Network net(5);
  net.Weight(0, 1, 3);
  net.Weight(2, 3, 2);
  // Residue 4 has no contact: reachable only because it is in the source set.
  EXPECT_EQ(net.Solve({{0, 3}, {4, 2}}), 0);
  EXPECT_EQ(net.ArcsOf(4), (std::vector<std::pair<int, int>>{}));
  EXPECT_EQ(net.Labels(), (std::vector<int>{1, 1, 0, 0, 1, 1, 0}));
}

TEST_F(FlowTest, ResidueWithoutContactOutsideTheSourceSetIsNotReached) {
  Network net(4);
  net.Weight(0, 1, 3);
  EXPECT_EQ(net.Solve({{0, 2}}), 0);
  EXPECT_EQ(net.Labels(), (std::vector<int>{1, 1, 0, 0, 1, 0}));
}

TEST_F(FlowTest, ArcListsHoldSinkArcFirstThenResiduesByDescendingPosition) {
  Network net(4);
  net.Weight(0, 1, 1);
  net.Weight(0, 2, 2);
  net.Weight(0, 3, 3);
  net.Weight(1, 2, 4);
  net.Weight(1, 3, 5);
  net.Weight(2, 3, 6);
  net.Build({{2, 1}, {0, 3}});
  using Arcs = std::vector<std::pair<int, int>>;

  EXPECT_EQ(Source, 4);
  EXPECT_EQ(Sink, 5);
  for (int v = 0; v < net.nodes(); ++v) EXPECT_EQ(net.flowNodes()[v].id, v);
  // The source set was listed as 2, 0: the source's list holds it reversed.
  EXPECT_EQ(net.ArcsOf(Source), (Arcs{{0, kAnchorCapacity}, {2, kAnchorCapacity}}));
  EXPECT_EQ(net.ArcsOf(0), (Arcs{{3, 3}, {2, 2}, {1, 1}}));
  EXPECT_EQ(net.ArcsOf(1), (Arcs{{Sink, kAnchorCapacity}, {3, 5}, {2, 4}, {0, 1}}));
  EXPECT_EQ(net.ArcsOf(2), (Arcs{{3, 6}, {1, 4}, {0, 2}}));
  EXPECT_EQ(net.ArcsOf(3), (Arcs{{Sink, kAnchorCapacity}, {2, 6}, {1, 5}, {0, 3}}));
  EXPECT_EQ(net.ArcsOf(Sink), Arcs{});
}

TEST_F(FlowTest, NewArcsStartEmptyAndOnlyResidueArcsHavePartners) {
  Network net(3);
  net.Weight(0, 2, 9);
  net.Build({{0, 2}});
  FlowArc* forward = net.Arc(0, 2);
  FlowArc* backward = net.Arc(2, 0);
  ASSERT_NE(forward, nullptr);
  ASSERT_NE(backward, nullptr);
  EXPECT_EQ(forward->reverse, backward);
  EXPECT_EQ(backward->reverse, forward);
  EXPECT_EQ(forward->flow, 0);
  EXPECT_EQ(forward->capacity, 9);
  EXPECT_EQ(forward->residual, 9);
  FlowArc* fromSource = net.Arc(Source, 0);
  FlowArc* intoSink = net.Arc(2, Sink);
  ASSERT_NE(fromSource, nullptr);
  ASSERT_NE(intoSink, nullptr);
  EXPECT_EQ(fromSource->reverse, nullptr);
  EXPECT_EQ(intoSink->reverse, nullptr);
  EXPECT_EQ(fromSource->flow, 0);
  EXPECT_EQ(fromSource->residual, kAnchorCapacity);
}

TEST_F(FlowTest, AugmentingPathIsAShortestPathStoredByDistance) {
  Network net(4);
  net.Weight(0, 1, 1);
  net.Weight(1, 3, 1);
  net.Weight(0, 2, 1);
  net.Weight(2, 3, 1);
  net.Build({{0, 3}});
  std::vector<FlowArc*> path(net.nodes(), nullptr);
  int length = -1;
  int found = -1;
  FindAugmentingPath(net.flowNodes(), net.list(), net.nodes(), path, &length, &found);
  ASSERT_EQ(found, 1);
  ASSERT_EQ(length, 4);
  EXPECT_EQ(path[0], net.Arc(Source, 0));
  // Breadth-first over 0's list (2 before 1) reaches 3 first through 2.
  EXPECT_EQ(path[1], net.Arc(0, 2));
  EXPECT_EQ(path[2], net.Arc(2, 3));
  EXPECT_EQ(path[3], net.Arc(3, Sink));
}

TEST_F(FlowTest, QueueAppendsAtTheWritePositionAndAdvancesTheReadPosition) {
  Queue queue{0, 0, std::vector<int32_t>(16, -1)};
  EnQueue(queue, 5);
  EnQueue(queue, 7);
  EXPECT_EQ(queue.write, 2);
  EXPECT_EQ(queue.slots[0], 5);
  EXPECT_EQ(queue.slots[1], 7);
  DeQueue(queue);
  EXPECT_EQ(queue.read, 1);
}

TEST_F(FlowTest, NetworkOfMoreThan3000NodesCompletes) {
  // A chain of 3000 residues: every search queues all 3002 nodes, past the old fixed queue.
  const int n = 3000;
  Network net(n);
  for (int i = 0; i + 1 < n; ++i) net.Weight(i, i + 1, 2);
  EXPECT_EQ(net.Solve({{0, n - 1}}), 2);
}

}  // namespace
