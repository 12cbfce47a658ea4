// Must-in/must-out marking of the component graph and the enumeration of selections of free
// components, one closure row per selection, bounded at 99 rows.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <utility>
#include <vector>

#include "contacts/contacts.h"
#include "partition/components.h"
#include "partition/flow.h"
#include "partition_fixtures.h"
#include "run/parameters.h"
#include "support/test_support.h"

namespace {

// A component graph written by hand; arcs given as (from, to) with from > to, as the numbering
// of real residual graphs guarantees.
class HandDag {
 public:
  HandDag(int k, int sourceComponent, int sinkComponent,
          const std::vector<std::pair<int, int>>& arcs)
      : k_(k), dag_(k) {
    successors_.head.assign(k, nullptr);
    predecessors_.head.assign(k, nullptr);
    std::vector<std::vector<bool>> m(k, std::vector<bool>(k, false));
    for (const auto& arc : arcs) m[arc.first][arc.second] = true;
    // Entries go to the front while q rises, so both lists end in decreasing order.
    for (int p = 0; p < k; ++p) {
      dag_[p] = DagNode{p, 0, 0};
      for (int q = 0; q < k; ++q) {
        if (m[p][q]) PushArc(successors_, p, q, 0);
        if (m[q][p]) PushArc(predecessors_, p, q, 0);
      }
    }
    Source = 0;
    Sink = 1;
    InverseMapping = {sourceComponent, sinkComponent};
  }

  void Enumerate() {
    MarkMustInOuts(dag_.data(), successors_, predecessors_, k_);
    EnumerateClosures(dag_.data(), successors_, k_, closures, &size, &count);
  }

  int Mark(int p) const { return dag_[p].mark; }
  int Parent(int p) const { return dag_[p].parent; }

  IndVector closures;
  int size = -1;
  int count = -1;

 private:
  int k_;
  std::vector<DagNode> dag_;
  AdjacencyList successors_;
  AdjacencyList predecessors_;
};

// The selection a row holds, as component numbers in row order.
std::vector<int> Selected(const std::vector<ClosureEntry>& row, int size) {
  std::vector<int> selected;
  for (int i = 0; i < size; ++i) {
    if (row[i].inflag == 1) selected.push_back(row[i].index);
  }
  return selected;
}

// Row r selects the positions whose bits are set in r + 1.
void ExpectCounterRows(const IndVector& closures, int size, int count,
                       const std::vector<int>& order) {
  ASSERT_GE(static_cast<int>(closures.size()), count);
  for (int r = 0; r < count; ++r) {
    ASSERT_EQ(static_cast<int>(closures[r].size()), size) << "row " << r;
    for (int i = 0; i < size; ++i) {
      EXPECT_EQ(closures[r][i].index, order[i]) << "row " << r << " position " << i;
      EXPECT_EQ(closures[r][i].inflag, ((r + 1) >> i) & 1) << "row " << r << " position " << i;
    }
  }
}

class ClosuresTest : public ::testing::Test {
 protected:
  void SetUp() override { StartCleanRun(); }
};

TEST_F(ClosuresTest, ThreeFreeComponentsGiveEverySelectionInCounterOrder) {
  // Must-in 8 -> 6 -> 1, must-out 5 -> 3 -> 0, free 7, 4, 2; self-entries on multi-node
  // components, free components pointing at each other and at must-in ones.
  HandDag dag(9, 8, 0,
              {{8, 6}, {6, 6}, {6, 1}, {5, 3}, {3, 0}, {0, 0}, {7, 7}, {7, 6}, {7, 4}, {2, 1}});
  dag.Enumerate();
  EXPECT_EQ(dag.size, 3);
  ASSERT_EQ(dag.count, 7);
  std::vector<std::vector<int>> rows;
  for (int r = 0; r < dag.count; ++r) rows.push_back(Selected(dag.closures[r], dag.size));
  EXPECT_EQ(rows, (std::vector<std::vector<int>>{
                      {7}, {4}, {7, 4}, {2}, {7, 2}, {4, 2}, {7, 4, 2}}));
  ExpectCounterRows(dag.closures, dag.size, dag.count, {7, 4, 2});

  for (int p : {8, 6, 1}) EXPECT_EQ(dag.Mark(p), kMustIn) << p;
  for (int p : {5, 3, 0}) EXPECT_EQ(dag.Mark(p), kMustOut) << p;
  for (int p : {7, 4, 2}) EXPECT_EQ(dag.Mark(p), kVisited) << p;
  for (int p = 0; p < 9; ++p) EXPECT_EQ(dag.Parent(p), kNoParent) << p;
}

TEST_F(ClosuresTest, NoFreeComponentWritesNoRow) {
  HandDag dag(2, 1, 0, {});
  dag.Enumerate();
  EXPECT_EQ(dag.size, 0);
  EXPECT_EQ(dag.count, 0);
  EXPECT_EQ(dag.Mark(1), kMustIn);
  // The sink's component is must-out even when nothing leads into it.
  EXPECT_EQ(dag.Mark(0), kMustOut);
}

TEST_F(ClosuresTest, OneFreeComponentGivesOneRowSelectingIt) {
  HandDag dag(3, 2, 0, {});
  dag.Enumerate();
  EXPECT_EQ(dag.size, 1);
  ASSERT_EQ(dag.count, 1);
  ASSERT_EQ(dag.closures[0].size(), 1u);
  EXPECT_EQ(dag.closures[0][0].index, 1);
  EXPECT_EQ(dag.closures[0][0].inflag, 1);
  EXPECT_EQ(dag.Mark(1), kVisited);
}

TEST_F(ClosuresTest, TwoLinkedFreeComponentsSelectTheHigherFirst) {
  HandDag dag(4, 3, 0, {{2, 1}});
  dag.Enumerate();
  ASSERT_EQ(dag.count, 3);
  EXPECT_EQ(Selected(dag.closures[0], 2), (std::vector<int>{2}));
  EXPECT_EQ(Selected(dag.closures[1], 2), (std::vector<int>{1}));
  EXPECT_EQ(Selected(dag.closures[2], 2), (std::vector<int>{2, 1}));
}

TEST_F(ClosuresTest, SevenFreeComponentsStopAt99Rows) {
  HandDag dag(9, 8, 0, {});
  dag.Enumerate();
  EXPECT_EQ(dag.size, 7);
  ASSERT_EQ(dag.count, kMaxClosureRows);
  ExpectCounterRows(dag.closures, dag.size, dag.count, {7, 6, 5, 4, 3, 2, 1});
}

TEST_F(ClosuresTest, TenFreeComponentsStopAt99Rows) {
  HandDag dag(12, 11, 0, {});
  dag.Enumerate();
  EXPECT_EQ(dag.size, 10);
  ASSERT_EQ(dag.count, kMaxClosureRows);
  ExpectCounterRows(dag.closures, dag.size, dag.count, {10, 9, 8, 7, 6, 5, 4, 3, 2, 1});
}

TEST_F(ClosuresTest, SixFreeComponentsGive63Rows) {
  HandDag dag(8, 7, 0, {});
  dag.Enumerate();
  EXPECT_EQ(dag.size, 6);
  ASSERT_EQ(dag.count, 63);
  ExpectCounterRows(dag.closures, dag.size, dag.count, {6, 5, 4, 3, 2, 1});
}

// Reachability through positive residual arcs, worked out independently of the engine.
std::vector<bool> ReachableFrom(AdjacencyList& list, int nodes, int from) {
  std::vector<bool> seen(nodes, false);
  std::vector<int> stack{from};
  seen[from] = true;
  while (!stack.empty()) {
    int u = stack.back();
    stack.pop_back();
    for (FlowArc* arc = list.head[u]; arc != nullptr; arc = arc->next) {
      if (arc->residual > 0 && !seen[arc->head]) {
        seen[arc->head] = true;
        stack.push_back(arc->head);
      }
    }
  }
  return seen;
}

TEST_F(ClosuresTest, MarksOfSolvedFlowProblemsFollowResidualReachability) {
  const int n = 30;
  const int nodes = n + 2;
  // Seed 0 is a plain path of unit contacts: every residue between the anchor sets is free.
  for (uint32_t seed = 0; seed <= 30; seed += (seed == 0 ? 11 : 1)) {
    SCOPED_TRACE(seed);
    Contact** sub = partition_test::ZeroedMatrix(n);
    uint32_t state = seed;
    for (int i = 0; i < n; ++i) {
      for (int j = i + 1; j < n; ++j) {
        state = state * 1103515245u + 12345u;
        uint32_t r = (state >> 16) & 0x7fff;
        // Short-range contacts only: a chain of bottlenecks with several minimum cuts.
        if (seed == 0 ? j == i + 1 : (j - i <= 2 && r % 3 != 0)) {
          partition_test::SetWeight(sub, i, j, seed == 0 ? 1 : 1 + static_cast<int>(r % 3));
        }
      }
    }
    std::vector<AnchorPair> anchors = {{0, n - 1}, {1, n - 2}};
    NumExtremes = 2;
    std::vector<FlowNode> flowNodes(nodes);
    AdjacencyList list;
    list.head.assign(nodes, nullptr);
    GenerateGraph(sub, nodes, anchors.data(), flowNodes.data(), list);
    DomainBiPartition(flowNodes.data(), list, nodes);

    std::vector<DagNode> dag(nodes);
    AdjacencyList successors;
    AdjacencyList predecessors;
    successors.head.assign(nodes, nullptr);
    predecessors.head.assign(nodes, nullptr);
    IndVector closures;
    int k = -1;
    int size = -1;
    int count = -1;
    FindAllMinCuts(flowNodes.data(), list, nodes, dag.data(), successors, predecessors, &k,
                   closures, &size, &count);

    std::vector<bool> fromSource = ReachableFrom(list, nodes, Source);
    std::vector<int> expectedMark(k, kVisited);
    for (int v = 0; v < nodes; ++v) {
      if (fromSource[v]) {
        expectedMark[InverseMapping[v]] = kMustIn;
      } else if (ReachableFrom(list, nodes, v)[Sink]) {
        expectedMark[InverseMapping[v]] = kMustOut;
      }
    }
    std::vector<int> freeComponents;
    for (int p = k - 1; p >= 0; --p) {
      EXPECT_EQ(dag[p].mark, expectedMark[p]) << "component " << p;
      if (expectedMark[p] == kVisited) freeComponents.push_back(p);
    }
    int expectedSize = static_cast<int>(freeComponents.size());
    EXPECT_EQ(size, expectedSize);
    int expectedCount = expectedSize >= 7 ? kMaxClosureRows : (1 << expectedSize) - 1;
    EXPECT_EQ(count, expectedCount);
    if (size == expectedSize && count == expectedCount) {
      ExpectCounterRows(closures, size, count, freeComponents);
    }
    FreeContacts(sub, n);
  }
}

}  // namespace
