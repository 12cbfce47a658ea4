// Segment merging of candidate labellings: short loops and tails take their neighbours' label,
// beta-rich segments keep theirs.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <utility>
#include <vector>

#include "partition/bipartition.h"
#include "partition_fixtures.h"
#include "run/parameters.h"
#include "support/test_support.h"

using partition_test::LabelledSlice;
using partition_test::Runs;

namespace {

class MergeSegmentsTest : public ::testing::Test {
 protected:
  void SetUp() override { StartCleanRun(); }

  // Merges a slice given by label runs, starting at index `first`.
  void Merge(const std::vector<int>& parts, int first = 0) {
    slice_ = LabelledSlice(parts, first);
    for (int position : bridged_) slice_[position].bridge1 = slice_[position].index + 30;
    MergeSegments(slice_.data(), static_cast<int>(slice_.size()));
  }

  std::vector<int> Parts() const {
    std::vector<int> parts;
    for (const Residue& r : slice_) parts.push_back(r.part);
    return parts;
  }

  std::vector<int> MergedMarks() const {
    std::vector<int> marks;
    for (const Residue& r : slice_) marks.push_back(r.merged);
    return marks;
  }

  std::vector<int> bridged_;  // positions given a bridge partner
  std::vector<Residue> slice_;
};

TEST_F(MergeSegmentsTest, OneLabelThroughoutIsLeftAlone) {
  std::vector<int> parts = Runs({{40, 1}});
  Merge(parts);
  EXPECT_EQ(Parts(), parts);
  EXPECT_EQ(MergedMarks(), std::vector<int>(40, 0));
}

TEST_F(MergeSegmentsTest, ShortInnerLoopTakesTheLabelAroundIt) {
  Merge(Runs({{20, 0}, {3, 1}, {20, 0}}));
  EXPECT_EQ(Parts(), std::vector<int>(43, 0));
  EXPECT_EQ(MergedMarks(), Runs({{20, 0}, {3, 1}, {20, 0}}));
}

TEST_F(MergeSegmentsTest, LoopOfMaxLoopResiduesMergesAndOneMoreDoesNot) {
  Merge(Runs({{20, 0}, {12, 1}, {20, 0}}));
  EXPECT_EQ(Parts(), std::vector<int>(52, 0));
  std::vector<int> longer = Runs({{20, 0}, {13, 1}, {20, 0}});
  Merge(longer);
  EXPECT_EQ(Parts(), longer);
  EXPECT_EQ(MergedMarks(), std::vector<int>(53, 0));
}

TEST_F(MergeSegmentsTest, LoopWithTwoBridgedResiduesIsProtected) {
  bridged_ = {20, 22};
  std::vector<int> parts = Runs({{20, 0}, {3, 1}, {20, 0}});
  Merge(parts);
  EXPECT_EQ(Parts(), parts);
  EXPECT_EQ(MergedMarks(), std::vector<int>(43, 0));
}

TEST_F(MergeSegmentsTest, LoopWithOneBridgedResidueStillMerges) {
  bridged_ = {21};
  Merge(Runs({{20, 0}, {3, 1}, {20, 0}}));
  EXPECT_EQ(Parts(), std::vector<int>(43, 0));
}

TEST_F(MergeSegmentsTest, EquallyShortLoopsMergeTheOneNearerTheStartFirst) {
  // Merging the first short loop swallows the second into the first segment as well.
  Merge(Runs({{20, 0}, {3, 1}, {3, 0}, {20, 1}}));
  EXPECT_EQ(Parts(), Runs({{26, 0}, {20, 1}}));
  EXPECT_EQ(MergedMarks(), Runs({{20, 0}, {3, 1}, {23, 0}}));
}

TEST_F(MergeSegmentsTest, ShorterLoopMergesBeforeAnEarlierLongerOne) {
  Merge(Runs({{20, 0}, {5, 1}, {20, 0}, {2, 1}, {20, 0}}));
  EXPECT_EQ(Parts(), std::vector<int>(67, 0));
  EXPECT_EQ(MergedMarks(), Runs({{20, 0}, {5, 1}, {20, 0}, {2, 1}, {20, 0}}));
}

TEST_F(MergeSegmentsTest, FirstSegmentAtChainStartIsJudgedAgainstMaxTerm) {
  MaxTerm = 12;
  MaxLoop = 5;
  Merge(Runs({{12, 1}, {40, 0}}));
  EXPECT_EQ(Parts(), std::vector<int>(52, 0));
  EXPECT_EQ(MergedMarks(), Runs({{12, 2}, {40, 0}}));
}

TEST_F(MergeSegmentsTest, FirstSegmentInsideTheChainIsJudgedAgainstMaxLoop) {
  MaxTerm = 12;
  MaxLoop = 5;
  std::vector<int> parts = Runs({{12, 1}, {40, 0}});
  Merge(parts, 50);
  EXPECT_EQ(Parts(), parts);
  MaxTerm = 5;
  MaxLoop = 12;
  Merge(parts, 50);
  EXPECT_EQ(Parts(), std::vector<int>(52, 0));
  EXPECT_EQ(MergedMarks(), Runs({{12, 2}, {40, 0}}));
}

TEST_F(MergeSegmentsTest, LastSegmentEndingAtIndexNMinusOneIsJudgedAgainstMaxTerm) {
  MaxTerm = 12;
  MaxLoop = 5;
  Merge(Runs({{40, 0}, {12, 1}}));
  EXPECT_EQ(Parts(), std::vector<int>(52, 0));
  EXPECT_EQ(MergedMarks(), Runs({{40, 0}, {12, 2}}));
  // The same tail in a slice that starts later does not end at index n - 1.
  std::vector<int> parts = Runs({{40, 0}, {12, 1}});
  Merge(parts, 50);
  EXPECT_EQ(Parts(), parts);
}

TEST_F(MergeSegmentsTest, ProtectedLoopStaysEvenUnderAHugeLoopLimit) {
  // Only segments shorter than 100 are candidates, whatever MaxLoop allows.
  MaxLoop = 200;
  bridged_ = {20, 22};
  std::vector<int> parts = Runs({{20, 0}, {3, 1}, {20, 0}});
  Merge(parts);
  EXPECT_EQ(Parts(), parts);
  bridged_.clear();
  std::vector<int> hundred = Runs({{20, 0}, {100, 1}, {20, 0}});
  Merge(hundred);
  EXPECT_EQ(Parts(), hundred);
  Merge(Runs({{20, 0}, {99, 1}, {20, 0}}));
  EXPECT_EQ(Parts(), std::vector<int>(139, 0));
}

TEST_F(MergeSegmentsTest, ProtectedTerminalSegmentKeepsItsLabel) {
  bridged_ = {1, 3};
  std::vector<int> parts = Runs({{5, 1}, {40, 0}});
  Merge(parts);
  EXPECT_EQ(Parts(), parts);
}

TEST_F(MergeSegmentsTest, TwoShortSegmentsEndWithOneLabel) {
  // The first takes the second's label; the second then copies the (new) label before it.
  Merge(Runs({{8, 1}, {12, 0}}));
  EXPECT_EQ(Parts(), std::vector<int>(20, 0));
  EXPECT_EQ(MergedMarks(), std::vector<int>(20, 2));
}

TEST_F(MergeSegmentsTest, AbsorbingSegmentLosesItsProtection) {
  // The protected first segment absorbs the loop and the segment after it; its length is
  // recomputed (10), so it is then short enough to merge as a terminal segment.
  bridged_ = {0, 2};
  Merge(Runs({{5, 0}, {2, 1}, {3, 0}, {30, 1}}));
  EXPECT_EQ(Parts(), std::vector<int>(40, 1));
  EXPECT_EQ(MergedMarks(), Runs({{10, 2}, {30, 0}}));
}

TEST_F(MergeSegmentsTest, SliceComesBackInIndexOrder) {
  slice_ = LabelledSlice(Runs({{20, 0}, {3, 1}, {20, 0}}));
  std::reverse(slice_.begin(), slice_.end());
  MergeSegments(slice_.data(), static_cast<int>(slice_.size()));
  for (size_t i = 0; i < slice_.size(); ++i) EXPECT_EQ(slice_[i].index, static_cast<int>(i));
  EXPECT_EQ(Parts(), std::vector<int>(43, 0));
}

TEST_F(MergeSegmentsTest, MoreThanAHundredSegmentsAreAllSeen) {
  // 130 alternating segments of 13 residues; only segment 120 is short.
  std::vector<std::pair<int, int>> runs;
  for (int s = 0; s < 130; ++s) runs.emplace_back(s == 120 ? 2 : 13, s % 2);
  std::vector<int> parts = Runs(runs);
  Merge(parts);
  std::vector<int> expectedParts = parts;
  std::vector<int> expectedMarks(parts.size(), 0);
  int start = 120 * 13;
  for (int i = start; i < start + 2; ++i) {
    expectedParts[i] = 1;  // segment 119 carries label 1
    expectedMarks[i] = 1;
  }
  EXPECT_EQ(Parts(), expectedParts);
  EXPECT_EQ(MergedMarks(), expectedMarks);
}

}  // namespace
