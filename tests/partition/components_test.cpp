// Strong components of residual networks and the component graph built over them: numbering in
// finishing order, the maps between nodes and components, and the successor/predecessor lists.
#include <gtest/gtest.h>
#include <sys/resource.h>

#include <algorithm>
#include <cstdint>
#include <fstream>
#include <set>
#include <string>
#include <vector>

#include "contacts/contacts.h"
#include "partition/components.h"
#include "partition/flow.h"
#include "partition_fixtures.h"
#include "run/fatal.h"
#include "run/parameters.h"
#include "support/test_support.h"

namespace {

// A residual network written arc by arc, plus the arrays the component graph is built into.
class ResidualNetwork {
 public:
  explicit ResidualNetwork(int nodes) : nodes_(nodes), flowNodes_(nodes), dag_(nodes) {
    for (int v = 0; v < nodes; ++v) flowNodes_[v] = FlowNode{v, 0};
    list_.head.assign(nodes, nullptr);
    successors_.head.assign(nodes, nullptr);
    predecessors_.head.assign(nodes, nullptr);
  }

  void Arc(int tail, int head, int residual) { PushArc(list_, tail, head, residual); }

  int Build() {
    int k = -1;
    DagConstruction(flowNodes_.data(), list_, nodes_, dag_.data(), successors_, predecessors_,
                    &k);
    return k;
  }

  std::vector<int> Successors(int p) const { return Entries(successors_, p); }
  std::vector<int> Predecessors(int p) const { return Entries(predecessors_, p); }

  std::vector<int> Labels() const {
    std::vector<int> labels;
    for (const FlowNode& node : flowNodes_) labels.push_back(node.label);
    return labels;
  }

  FlowNode* flowNodes() { return flowNodes_.data(); }
  AdjacencyList& list() { return list_; }
  const std::vector<DagNode>& dag() const { return dag_; }

 private:
  static std::vector<int> Entries(const AdjacencyList& lists, int p) {
    std::vector<int> heads;
    for (FlowArc* entry = lists.head[p]; entry != nullptr; entry = entry->next) {
      heads.push_back(entry->head);
    }
    return heads;
  }

  int nodes_;
  std::vector<FlowNode> flowNodes_;
  std::vector<DagNode> dag_;
  AdjacencyList list_;
  AdjacencyList successors_;
  AdjacencyList predecessors_;
};

// Nodes of component p, from the maps.
std::set<int> NodesOf(int p) {
  std::set<int> nodes;
  for (int pos = Mapptr[p].first; pos <= Mapptr[p].last; ++pos) nodes.insert(Mapping[pos].node);
  return nodes;
}

class ComponentsTest : public ::testing::Test {
 protected:
  void SetUp() override { StartCleanRun(); }
};

TEST_F(ComponentsTest, WithoutResidualArcsEveryNodeIsItsOwnComponentInNodeOrder) {
  ResidualNetwork net(5);
  // Saturated arcs (residual 0) are not residual arcs.
  net.Arc(0, 1, 0);
  net.Arc(3, 2, 0);
  net.Arc(4, 0, 0);
  ASSERT_EQ(net.Build(), 5);
  ASSERT_EQ(InverseMapping.size(), 5u);
  for (int v = 0; v < 5; ++v) {
    EXPECT_EQ(InverseMapping[v], v);
    EXPECT_EQ(Mapptr[v].first, v);
    EXPECT_EQ(Mapptr[v].last, v);
    EXPECT_EQ(Mapping[v].node, v);
    EXPECT_EQ(Mapping[v].label, v);
    EXPECT_EQ(net.dag()[v].id, v);
    EXPECT_TRUE(net.Successors(v).empty());
    EXPECT_TRUE(net.Predecessors(v).empty());
  }
}

TEST_F(ComponentsTest, LabelsCountUpFromNodesPlusOneInFinishingOrder) {
  ResidualNetwork net(3);
  net.Arc(0, 1, 1);
  net.Arc(1, 2, 1);
  CalcSCC(net.flowNodes(), net.list(), 3);
  // The depth-first walk from 0 finishes 2 first.
  EXPECT_EQ(net.Labels(), (std::vector<int>{6, 5, 4}));
  int k = -1;
  CreateMapping(net.flowNodes(), 3, &k);
  EXPECT_EQ(k, 3);
  EXPECT_EQ(InverseMapping, (std::vector<int32_t>{2, 1, 0}));
}

TEST_F(ComponentsTest, TwoWayArcsShareAComponentThatListsItself) {
  ResidualNetwork net(4);
  net.Arc(1, 2, 5);
  net.Arc(2, 1, 3);
  ASSERT_EQ(net.Build(), 3);
  EXPECT_EQ(InverseMapping, (std::vector<int32_t>{0, 1, 1, 2}));
  EXPECT_EQ(NodesOf(1), (std::set<int>{1, 2}));
  EXPECT_EQ(net.Successors(1), (std::vector<int>{1}));
  EXPECT_EQ(net.Predecessors(1), (std::vector<int>{1}));
  EXPECT_TRUE(net.Successors(0).empty());
  EXPECT_TRUE(net.Successors(2).empty());
}

TEST_F(ComponentsTest, SeveralArcsBetweenTwoComponentsGiveOneEntry) {
  ResidualNetwork net(4);
  net.Arc(1, 0, 1);
  net.Arc(1, 2, 1);
  net.Arc(2, 0, 4);
  net.Arc(2, 1, 1);
  ASSERT_EQ(net.Build(), 3);
  EXPECT_EQ(InverseMapping, (std::vector<int32_t>{0, 1, 1, 2}));
  EXPECT_EQ(net.Successors(1), (std::vector<int>{1, 0}));
  EXPECT_EQ(net.Predecessors(0), (std::vector<int>{1}));
  EXPECT_EQ(net.Predecessors(1), (std::vector<int>{1}));
  EXPECT_TRUE(net.Successors(0).empty());
  EXPECT_TRUE(net.Predecessors(2).empty());
}

// Which nodes each node reaches through arcs of positive residual, worked out independently.
std::vector<std::vector<bool>> Reachability(AdjacencyList& list, int nodes) {
  std::vector<std::vector<bool>> reach(nodes, std::vector<bool>(nodes, false));
  for (int from = 0; from < nodes; ++from) {
    std::vector<int> stack{from};
    reach[from][from] = true;
    while (!stack.empty()) {
      int u = stack.back();
      stack.pop_back();
      for (FlowArc* arc = list.head[u]; arc != nullptr; arc = arc->next) {
        if (arc->residual > 0 && !reach[from][arc->head]) {
          reach[from][arc->head] = true;
          stack.push_back(arc->head);
        }
      }
    }
  }
  return reach;
}

TEST_F(ComponentsTest, ComponentGraphOfSolvedFlowProblemsMatchesReachability) {
  const int n = 16;
  const int nodes = n + 2;
  // Seeds up to 6 give dense random contacts, later ones short-range contacts (many components).
  for (uint32_t seed = 1; seed <= 12; ++seed) {
    SCOPED_TRACE(seed);
    Contact** sub = partition_test::ZeroedMatrix(n);
    uint32_t state = seed;
    for (int i = 0; i < n; ++i) {
      for (int j = i + 1; j < n; ++j) {
        state = state * 1103515245u + 12345u;
        uint32_t r = (state >> 16) & 0x7fff;
        bool contact = seed <= 6 ? r % 3 == 0 : (j - i <= 2 && r % 3 != 0);
        if (contact) partition_test::SetWeight(sub, i, j, 1 + static_cast<int>(r % 4));
      }
    }
    std::vector<AnchorPair> anchors = {{0, n - 1}, {1, n - 2}, {2, n - 3}};
    NumExtremes = 3;
    ResidualNetwork net(nodes);
    GenerateGraph(sub, nodes, anchors.data(), net.flowNodes(), net.list());
    DomainBiPartition(net.flowNodes(), net.list(), nodes);
    int k = net.Build();
    std::vector<std::vector<bool>> reach = Reachability(net.list(), nodes);

    EXPECT_NE(InverseMapping[Source], InverseMapping[Sink]);
    // Components are exactly the classes of mutual reachability.
    for (int u = 0; u < nodes; ++u) {
      for (int v = 0; v < nodes; ++v) {
        bool same = InverseMapping[u] == InverseMapping[v];
        EXPECT_EQ(same, reach[u][v] && reach[v][u]) << u << " " << v;
      }
    }
    // The maps agree with each other and are grouped by component number.
    ASSERT_EQ(static_cast<int>(Mapptr.size()) >= k, true);
    EXPECT_EQ(Mapptr[0].first, 0);
    EXPECT_EQ(Mapptr[k - 1].last, nodes - 1);
    for (int p = 0; p < k; ++p) {
      if (p > 0) {
        EXPECT_EQ(Mapptr[p].first, Mapptr[p - 1].last + 1);
      }
      for (int pos = Mapptr[p].first; pos <= Mapptr[p].last; ++pos) {
        EXPECT_EQ(Mapping[pos].label, p);
        EXPECT_EQ(InverseMapping[Mapping[pos].node], p);
      }
      EXPECT_EQ(net.dag()[p].id, p);
    }
    // Residual arcs between components run downward, and the lists record each pair once.
    std::vector<std::set<int>> successors(k);
    for (int u = 0; u < nodes; ++u) {
      for (FlowArc* arc = net.list().head[u]; arc != nullptr; arc = arc->next) {
        if (arc->residual <= 0) continue;
        int p = InverseMapping[u];
        int q = InverseMapping[arc->head];
        EXPECT_GE(p, q);
        successors[p].insert(q);
      }
    }
    for (int p = 0; p < k; ++p) {
      std::vector<int> expected(successors[p].rbegin(), successors[p].rend());
      EXPECT_EQ(net.Successors(p), expected) << "component " << p;
      std::vector<int> expectedPredecessors;
      for (int q = k - 1; q >= 0; --q) {
        if (successors[q].count(p) > 0) expectedPredecessors.push_back(q);
      }
      EXPECT_EQ(net.Predecessors(p), expectedPredecessors) << "component " << p;
    }
    FreeContacts(sub, n);
  }
}

TEST_F(ComponentsTest, MatrixIsZeroedByInit2Array) {
  int32_t** matrix = Short2Malloc(3, 4);
  ASSERT_NE(matrix, nullptr);
  for (int r = 0; r < 3; ++r) {
    for (int c = 0; c < 4; ++c) matrix[r][c] = 7;
  }
  Init2Array(matrix, 3, 4);
  for (int r = 0; r < 3; ++r) {
    for (int c = 0; c < 4; ++c) EXPECT_EQ(matrix[r][c], 0);
  }
  Free2Array(matrix, 3);
}

// Current size of the address space, from the kernel's report.
long VirtualMemoryKiB() {
  std::ifstream status("/proc/self/status");
  std::string key;
  while (status >> key) {
    if (key == "VmSize:") {
      long kib = 0;
      status >> kib;
      return kib;
    }
  }
  return -1;
}

TEST_F(ComponentsTest, MatrixRowThatCannotBeAllocatedStopsTheRun) {
#if defined(__SANITIZE_ADDRESS__)
  GTEST_SKIP() << "the address sanitizer aborts on the allocation this test makes fail";
#endif
  long used = VirtualMemoryKiB();
  ASSERT_GT(used, 0);
  rlimit saved{};
  ASSERT_EQ(getrlimit(RLIMIT_AS, &saved), 0);
  rlimit tight = saved;
  tight.rlim_cur = static_cast<rlim_t>(used + 256 * 1024) * 1024;
  ASSERT_EQ(setrlimit(RLIMIT_AS, &tight), 0);
  bool raised = false;
  try {
    int32_t** matrix = Short2Malloc(2, 1 << 28);  // 1 GiB per row
    Free2Array(matrix, 2);
  } catch (const FatalError& error) {
    raised = true;
    EXPECT_EQ(error.status, 50);
    EXPECT_EQ(error.stream, Stream::kStdout);
    EXPECT_EQ(error.text, "Allocation failed.\n");
  } catch (...) {
    setrlimit(RLIMIT_AS, &saved);
    throw;
  }
  setrlimit(RLIMIT_AS, &saved);
  EXPECT_TRUE(raised);
}

}  // namespace
