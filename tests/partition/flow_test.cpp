// The qsort comparators, small flow problems, and the order in which the cut enumeration lists
// selections of free components. Networks are used only through their building, solving and
// enumeration entry points, so the tests hold whatever the arcs are stored in.
#include <gtest/gtest.h>

#include "partition/components.h"
#include "partition/multicut.h"
#include "partition/partition.h"

namespace quarnel {
namespace {

int Distances(float a, float b) {
  DistanceEntry x{0, a}, y{1, b};
  return compare1(&x, &y);
}
int PairLengths(float a, float b) {
  PointPair x{0, 1, a}, y{0, 1, b};
  return comparepair(&x, &y);
}
int Indices(int a, int b) {
  Residue x{}, y{};
  x.index = a;
  y.index = b;
  return compare3(&x, &y);
}
int Parts(int a, int b) {
  Residue x{}, y{};
  x.part = a;
  y.part = b;
  return compare2(&x, &y);
}
int Labels(int a, int b) {
  MappingEntry x{9, a}, y{3, b};
  return comparec(&x, &y);
}

// Comparators return the signed difference of their keys; real differences are truncated, so
// keys less than 1.0 apart are equal, and the platform's sort decides among them.
TEST(Comparators, SignedTruncatedDifferences) {
  const struct {
    const char* what;
    int got, want;
  } rows[] = {
      {"compare1 0.9 apart", Distances(1.9f, 1.0f), 0},
      {"compare1 0.9 apart, other way", Distances(1.0f, 1.9f), 0},
      {"compare1 one apart", Distances(2.0f, 1.0f), 1},
      {"compare1 truncates", Distances(10.9f, 1.0f), 9},
      {"compare1 truncates toward zero", Distances(1.0f, 10.9f), -9},
      {"comparepair, longest first", PairLengths(1.0f, 3.5f), 2},
      {"comparepair 0.7 apart", PairLengths(1.9f, 1.2f), 0},
      {"comparepair, shorter after", PairLengths(3.5f, 1.0f), -2},
      {"compare3 by index", Indices(5, 2), 3},
      {"compare3 by index, other way", Indices(2, 5), -3},
      {"compare2 by part", Parts(0, 1), -1},
      {"compare2 by part, other way", Parts(1, 0), 1},
      {"comparec by label", Labels(7, 2), 5},
  };
  for (const auto& row : rows) EXPECT_EQ(row.got, row.want) << row.what;
}

struct Network {
  int residues;
  std::vector<WeightedPair> pairs;
  std::vector<AnchorPair> anchors;  // k-th source-set member, k-th sink-set member
};

struct Solved {
  FlowNetwork network;
  int32_t flow;
  std::string reached;  // per node, residues first: 1 when the source reaches it at the end
};

Solved Solve(const Network& problem) {
  Solved solved;
  GenerateGraph(problem.pairs, problem.residues + 2, problem.anchors.data(),
                static_cast<int>(problem.anchors.size()), solved.network);
  FlowScratch scratch;
  solved.flow = DomainBiPartition(solved.network, scratch);
  for (const FlowNode& node : solved.network.nodes) solved.reached += static_cast<char>('0' + node.label);
  return solved;
}

TEST(MaximumFlow, SmallNetworks) {
  const struct {
    const char* name;
    Network problem;
    int32_t flow;
    const char* reached;  // residues, then source, then sink
  } rows[] = {
      {"two weight-1 contacts in series", {3, {{0, 1, 1}, {1, 2, 1}}, {{0, 2}}}, 1, "10010"},
      {"two weight-1 paths in parallel", {4, {{0, 1, 1}, {0, 2, 1}, {1, 3, 1}, {2, 3, 1}}, {{0, 3}}}, 2, "100010"},
      {"the cut nearest the source", {3, {{0, 1, 5}, {1, 2, 1}}, {{0, 2}}}, 1, "11010"},
      {"no path", {3, {}, {{0, 2}}}, 0, "10010"},
      {"a residue in both anchor sets", {2, {{0, 1, 5}}, {{0, 0}}}, 1000000, "0010"},
      {"two residues in both sets", {2, {{0, 1, 5}}, {{0, 1}, {1, 0}}}, 2000000, "0010"},
  };
  for (const auto& row : rows) {
    const Solved solved = Solve(row.problem);
    EXPECT_EQ(solved.flow, row.flow) << row.name;
    EXPECT_EQ(solved.reached, row.reached) << row.name;
    EXPECT_EQ(solved.network.source, row.problem.residues) << row.name;
    EXPECT_EQ(solved.network.sink, row.problem.residues + 1) << row.name;
  }
}

// With residue 0 the only source and residue 1 the only sink, every other residue lies in a
// free component. Components are numbered as the labelling finishes them (node order), and
// the free ones are enumerated as a binary counter over them, highest number first.
TEST(CutEnumeration, MarksAndTheOrderOfSelections) {
  const struct {
    const char* name;
    Network problem;
    int size, count;
    std::vector<std::string> rows;  // the residues each closure row selects
  } cases[] = {
      {"three isolated residues", {5, {}, {{0, 1}}}, 3, 7, {"4", "3", "43", "2", "42", "32", "432"}},
      {"a contact joins two residues", {5, {{2, 3, 4}}, {{0, 1}}}, 2, 3, {"4", "23", "423"}},
      {"eight free components: 99 rows", {10, {}, {{0, 1}}}, 8, 99, {}},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    Solved solved = Solve(c.problem);
    ComponentGraph graph;
    IndVector closures;
    int size = -1, count = -1;
    FindAllMinCuts(solved.network, graph, closures, &size, &count);
    EXPECT_EQ(size, c.size);
    ASSERT_EQ(count, c.count);
    const int32_t source = solved.network.source, sink = solved.network.sink;
    for (int32_t v = 0; v <= sink; ++v) {
      const int32_t mark = graph.dag[graph.inverse[v]].mark;
      const int32_t want = v == 0 || v == source ? kMustIn : v == 1 || v == sink ? kMustOut : kVisited;
      EXPECT_EQ(mark, want) << "node " << v;
    }
    for (size_t r = 0; r < c.rows.size(); ++r) {
      std::string selected;
      for (int i = 0; i < size; ++i) {
        if (closures[r][i].inflag != 1) continue;
        for (int32_t v = 0; v < source; ++v)
          if (graph.inverse[v] == closures[r][i].index) selected += static_cast<char>('0' + v);
      }
      EXPECT_EQ(selected, c.rows[r]) << "row " << r;
    }
  }
}

}  // namespace
}  // namespace quarnel
