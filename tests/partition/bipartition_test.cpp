// Listing of the candidate cuts of one flow problem and the choice among them: candidate order,
// ties, rejection of every candidate, merge marks of the winner, and one-label candidates.
#include <gtest/gtest.h>

#include <algorithm>
#include <vector>

#include "contacts/contacts.h"
#include "partition/bipartition.h"
#include "partition/components.h"
#include "partition/flow.h"
#include "partition_fixtures.h"
#include "run/parameters.h"
#include "support/test_support.h"

using partition_test::LabelledSlice;
using partition_test::MakeGlobalMatrix;
using partition_test::SetContact;

namespace {

// A selection of free components in TopoOrder order: (component, selected).
using Row = std::vector<ClosureEntry>;

class ListingTest : public ::testing::Test {
 protected:
  void SetUp() override { StartCleanRun(); }

  void Chain(int n) {
    slice_ = LabelledSlice(std::vector<int>(n, 0));
    MakeGlobalMatrix(n);
  }

  // Contacts of `count` between i and i + 10 for every such pair inside [first, last].
  void Ladder(int first, int last, int count) {
    for (int i = first; i + 10 <= last; ++i) SetContact(i, i + 10, count, count);
  }

  // Lists the candidates of hand-made components. componentOf gives the component of each
  // residue; the source is added to sourceComponent and the sink to sinkComponent; marks are
  // the final marks of the enumeration (must-in, must-out, or visited for free components).
  float List(const std::vector<int>& componentOf, int sourceComponent, int sinkComponent,
             const std::vector<int>& marks, const std::vector<Row>& rows, int size) {
    int n = static_cast<int>(slice_.size());
    int nodes = n + 2;
    Source = nodes - 2;
    Sink = nodes - 1;
    std::vector<int> nodeComponent = componentOf;
    nodeComponent.push_back(sourceComponent);
    nodeComponent.push_back(sinkComponent);
    int k = static_cast<int>(marks.size());
    Mapping.clear();
    Mapptr.assign(k, MappingRange{0, -1});
    InverseMapping = std::vector<int32_t>(nodeComponent.begin(), nodeComponent.end());
    for (int p = 0; p < k; ++p) {
      Mapptr[p].first = static_cast<int32_t>(Mapping.size());
      for (int v = 0; v < nodes; ++v) {
        if (nodeComponent[v] == p) Mapping.push_back(MappingEntry{v, p});
      }
      Mapptr[p].last = static_cast<int32_t>(Mapping.size()) - 1;
    }
    std::vector<DagNode> dag(k);
    for (int p = 0; p < k; ++p) dag[p] = DagNode{p, kNoParent, marks[p]};
    flowNodes_.assign(nodes, FlowNode{0, 0});
    for (int v = 0; v < nodes; ++v) flowNodes_[v].id = v;
    IndVector closures(rows.begin(), rows.end());
    scores_ = CutScores{-1.0f, -1.0f, -1.0f, -1.0f, -1.0f};
    return ListBiPartitions(slice_.data(), flowNodes_.data(), n, dag.data(), k, closures, size,
                            static_cast<int>(rows.size()), &scores_);
  }

  void ExpectScores(float compact1, float compact2, float inter1, float inter2, float interface) {
    EXPECT_FLOAT_EQ(scores_.compact1, compact1);
    EXPECT_FLOAT_EQ(scores_.compact2, compact2);
    EXPECT_FLOAT_EQ(scores_.inter1, inter1);
    EXPECT_FLOAT_EQ(scores_.inter2, inter2);
    EXPECT_FLOAT_EQ(scores_.interface, interface);
  }

  // Parts and merge marks in index order; the slice must be in index order as well.
  void ExpectLabels(const std::vector<int>& parts, const std::vector<int>& merged) {
    ASSERT_EQ(slice_.size(), parts.size());
    for (size_t i = 0; i < slice_.size(); ++i) {
      EXPECT_EQ(slice_[i].index, static_cast<int>(i));
      EXPECT_EQ(slice_[i].part, parts[i]) << "index " << i;
      EXPECT_EQ(slice_[i].merged, merged[i]) << "index " << i;
    }
  }

  // Four blocks of 20: A (0-19), B (20-39), C (40-59), D (60-79); A+B have 150 contacts,
  // C+D 120, and one contact (count 10, weight 20) joins B and C.
  void FourBlocks() {
    Chain(80);
    Ladder(0, 39, 5);
    Ladder(40, 79, 4);
    SetContact(30, 50, 10, 20);
  }

  // Components: 0 = sink + D (must-out), 1 = C and 2 = B (free), 3 = source + A (must-in).
  float ListFourBlocks() {
    std::vector<int> componentOf;
    for (int i = 0; i < 80; ++i) componentOf.push_back(3 - i / 20);
    std::vector<Row> rows = {{{2, 1}, {1, 0}}, {{2, 0}, {1, 1}}, {{2, 1}, {1, 1}}};
    return List(componentOf, 3, 0, {kMustOut, kVisited, kVisited, kMustIn}, rows, 2);
  }

  std::vector<Residue> slice_;
  std::vector<FlowNode> flowNodes_;
  CutScores scores_{};
};

std::vector<int> Blocks(const std::vector<std::pair<int, int>>& runs) {
  return partition_test::Runs(runs);
}

float ProductScore(int interW, int atoms1, int atoms2, int res1, int res2, int intra1,
                   int intra2) {
  float wnorm = static_cast<float>(interW) * static_cast<float>(atoms1 + atoms2) /
                static_cast<float>(atoms1) / static_cast<float>(atoms2);
  float f = (1.0f / static_cast<float>(res1) / static_cast<float>(res2)) *
            (static_cast<float>(atoms1) * static_cast<float>(atoms2) /
             static_cast<float>(intra1) / static_cast<float>(intra2));
  return wnorm * f * f;
}

TEST_F(ListingTest, OnlyTheBalancedCandidateIsAcceptedAndWins) {
  FourBlocks();
  float score = ListFourBlocks();
  float expected = ProductScore(20, 200, 200, 40, 40, 120, 150);
  EXPECT_NEAR(score, expected, expected * 1e-5f);
  ExpectScores(0.6f, 0.75f, 10.0f / 120.0f, 10.0f / 150.0f, 0.1f);
  ExpectLabels(Blocks({{40, 1}, {40, 0}}), std::vector<int>(80, 0));
}

TEST_F(ListingTest, AllCandidatesRejectedGiveTheRejectedScoreAndDefaultRecord) {
  FourBlocks();
  MinDomainSize = 41;
  EXPECT_EQ(ListFourBlocks(), kRejectedScore);
  ExpectScores(0.0f, 0.0f, 100.0f, 100.0f, 500.0f);
}

TEST_F(ListingTest, NoFreeComponentListsTheMustInSideAlone) {
  FourBlocks();
  std::vector<int> componentOf;
  for (int i = 0; i < 80; ++i) componentOf.push_back(i < 40 ? 1 : 0);
  float score = List(componentOf, 1, 0, {kMustOut, kMustIn}, {}, 0);
  float expected = ProductScore(20, 200, 200, 40, 40, 120, 150);
  EXPECT_NEAR(score, expected, expected * 1e-5f);
  ExpectLabels(Blocks({{40, 1}, {40, 0}}), std::vector<int>(80, 0));
}

TEST_F(ListingTest, EqualLowestScoresKeepTheFirstCandidate) {
  // Four unconnected blocks: every candidate scores -1000000.0; candidate 0 (A alone) wins.
  Chain(80);
  for (int b = 0; b < 4; ++b) Ladder(20 * b, 20 * b + 19, 6);
  MinDomainSize = 20;
  MinSegRes = 0.0f;
  EXPECT_EQ(ListFourBlocks(), kNoContactScore);
  ExpectScores(0.6f, 0.6f, 0.0f, 0.0f, 0.0f);
  ExpectLabels(Blocks({{20, 1}, {60, 0}}), std::vector<int>(80, 0));
}

TEST_F(ListingTest, TerminalRelabelComesBackAsMergedOne) {
  // Source side 10-49; the tail 0-9 joins it as a short terminal segment.
  Chain(90);
  Ladder(0, 49, 4);
  Ladder(50, 89, 4);
  std::vector<int> componentOf;
  for (int i = 0; i < 90; ++i) componentOf.push_back(i >= 10 && i < 50 ? 1 : 0);
  EXPECT_EQ(List(componentOf, 1, 0, {kMustOut, kMustIn}, {}, 0), kNoContactScore);
  ExpectScores(0.6f, 0.64f, 0.0f, 0.0f, 0.0f);
  ExpectLabels(Blocks({{50, 1}, {40, 0}}), Blocks({{10, 1}, {80, 0}}));
}

// Criteria of a relaxed run: only the one-label rule can reject a candidate.
void Relax() {
  MinDomainSize = 0;
  MinGlobularity = 0.0f;
  MaxInteraction = 3000.0f;
  MaxTime = 3000.0f;
  MinSegRes = 0.0f;
  MaxBetaPair = 3000;
  MaxBetaPass = 3000;
}

TEST_F(ListingTest, CandidateLeftWithOneLabelIsRejected) {
  Chain(90);
  Ladder(0, 49, 4);
  Ladder(50, 89, 4);
  Relax();
  // The source side is a 10-residue tail, which merging gives back to the sink side.
  std::vector<int> componentOf;
  for (int i = 0; i < 90; ++i) componentOf.push_back(i < 10 ? 1 : 0);
  EXPECT_EQ(List(componentOf, 1, 0, {kMustOut, kMustIn}, {}, 0), kRejectedScore);
  ExpectScores(0.0f, 0.0f, 100.0f, 100.0f, 500.0f);
}

TEST_F(ListingTest, OneLabelCandidateDoesNotWinTheTie) {
  Chain(90);
  Ladder(0, 49, 4);
  Ladder(50, 89, 4);
  Relax();
  // Candidate 0: 0-9 alone (one label after merging). Candidate 1 adds the free 50-89, and
  // merging hands 0-9 to the sink side with mark 2.
  std::vector<int> componentOf;
  for (int i = 0; i < 90; ++i) componentOf.push_back(i < 10 ? 2 : (i < 50 ? 0 : 1));
  std::vector<Row> rows = {{{1, 1}}};
  EXPECT_EQ(List(componentOf, 2, 0, {kMustOut, kVisited, kMustIn}, rows, 1), kNoContactScore);
  ExpectLabels(Blocks({{50, 0}, {40, 1}}), Blocks({{10, 1}, {80, 0}}));
}

// A real flow problem over three unconnected blobs: source set in the first, sink set in the
// second, the third free.
class GenerateTest : public ::testing::Test {
 protected:
  void SetUp() override {
    StartCleanRun();
    partition_test::BuildBlobChain({{40, 0.0}, {40, 60.0}, {40, 120.0}});
  }

  float Generate() {
    const int n = ProteinSize;
    const int nodes = n + 2;
    Contact** sub = partition_test::SubMatrixOf(Protein.data(), n);
    std::vector<AnchorPair> anchors;
    for (int k = 0; k < 30; ++k) anchors.push_back(AnchorPair{k, 40 + k});
    NumExtremes = 30;
    std::vector<FlowNode> flowNodes(nodes);
    AdjacencyList list;
    list.head.assign(nodes, nullptr);
    GenerateGraph(sub, nodes, anchors.data(), flowNodes.data(), list);
    EXPECT_EQ(DomainBiPartition(flowNodes.data(), list, nodes), 0);
    scores_ = CutScores{-1.0f, -1.0f, -1.0f, -1.0f, -1.0f};
    float score = GenerateAllBiPartition(flowNodes.data(), list, Protein.data(), nodes, &scores_);
    FreeContacts(sub, n);
    return score;
  }

  CutScores scores_{};
};

TEST_F(GenerateTest, FirstOfTheEquallyScoredCutsLabelsTheResidues) {
  EXPECT_EQ(Generate(), kNoContactScore);
  float blob = static_cast<float>(partition_test::BlobIntraCount(40));
  EXPECT_FLOAT_EQ(scores_.compact1, 2.0f * blob / 640.0f);
  EXPECT_FLOAT_EQ(scores_.compact2, blob / 320.0f);
  EXPECT_FLOAT_EQ(scores_.inter1, 0.0f);
  EXPECT_FLOAT_EQ(scores_.inter2, 0.0f);
  EXPECT_FLOAT_EQ(scores_.interface, 0.0f);
  for (int i = 0; i < ProteinSize; ++i) {
    EXPECT_EQ(Protein[i].index, i);
    EXPECT_EQ(Protein[i].part, i < 40 ? 1 : 0) << "index " << i;
    EXPECT_EQ(Protein[i].merged, 0);
  }
}

TEST_F(GenerateTest, NoAcceptableCandidateGivesTheRejectedScore) {
  MinDomainSize = 50;
  EXPECT_EQ(Generate(), kRejectedScore);
  EXPECT_FLOAT_EQ(scores_.compact1, 0.0f);
  EXPECT_FLOAT_EQ(scores_.compact2, 0.0f);
  EXPECT_FLOAT_EQ(scores_.inter1, 100.0f);
  EXPECT_FLOAT_EQ(scores_.inter2, 100.0f);
  EXPECT_FLOAT_EQ(scores_.interface, 500.0f);
}

}  // namespace
