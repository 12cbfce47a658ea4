// The search of one partition level: comparators, the perpendicular pair test, the point-pair
// list, anchor modes and the levels that cannot be searched.
#include <gtest/gtest.h>

#include <cmath>
#include <vector>

#include "contacts/contacts.h"
#include "partition/multicut.h"
#include "partition_fixtures.h"
#include "run/fatal.h"
#include "run/parameters.h"
#include "support/test_support.h"

using partition_test::BlobIntraCount;

namespace {

int Compare1(float a, float b) {
  DistanceEntry first{0, a};
  DistanceEntry second{1, b};
  return compare1(&first, &second);
}

int ComparePair(float a, float b) {
  PointPair first{0, 1, a};
  PointPair second{2, 3, b};
  return comparepair(&first, &second);
}

TEST(MultiCutComparators, DistanceKeysLessThanOneApartCompareEqual) {
  EXPECT_EQ(Compare1(2.0f, 2.9f), 0);
  EXPECT_EQ(Compare1(2.9f, 2.0f), 0);
  EXPECT_EQ(Compare1(2.0f, 3.0f), -1);
  EXPECT_EQ(Compare1(7.5f, 2.0f), 5);
  EXPECT_EQ(Compare1(2.0f, 7.5f), -5);
}

TEST(MultiCutComparators, PointPairsSortByDescendingDistance) {
  EXPECT_EQ(ComparePair(10.0f, 12.5f), 2);
  EXPECT_EQ(ComparePair(12.5f, 10.0f), -2);
  EXPECT_EQ(ComparePair(10.0f, 10.9f), 0);
  EXPECT_EQ(ComparePair(10.9f, 10.0f), 0);
}

// sin(5 degrees) as the search stores it.
const float kSin5 = static_cast<float>(std::sin(0.08726646111111111));

Point3f AtAngle(double degrees, double length) {
  double radians = degrees * 3.14159265358979 / 180.0;
  return Point3f{static_cast<float>(length * std::cos(radians)),
                 static_cast<float>(length * std::sin(radians)), 0.0f};
}

TEST(MultiCutGeometry, SegmentsWithinFiveDegreesOfPerpendicularQualify) {
  Point3f a{0.0f, 0.0f, 0.0f};
  Point3f b{10.0f, 0.0f, 0.0f};
  Point3f origin{0.0f, 0.0f, 0.0f};
  EXPECT_EQ(WithinBoundary(origin, AtAngle(90.0, 5.0), 5.0f, a, b, kSin5, 10.0f), 1);
  EXPECT_EQ(WithinBoundary(origin, AtAngle(86.0, 5.0), 5.0f, a, b, kSin5, 10.0f), 1);
  EXPECT_EQ(WithinBoundary(AtAngle(94.0, 5.0), origin, 5.0f, a, b, kSin5, 10.0f), 1);
  EXPECT_EQ(WithinBoundary(origin, AtAngle(84.0, 5.0), 5.0f, a, b, kSin5, 10.0f), 0);
  EXPECT_EQ(WithinBoundary(AtAngle(96.0, 5.0), origin, 5.0f, a, b, kSin5, 10.0f), 0);
  EXPECT_EQ(WithinBoundary(origin, AtAngle(0.0, 5.0), 5.0f, a, b, kSin5, 10.0f), 0);
}

TEST(MultiCutGeometry, LongPerpendicularPairsAreListedLongestFirst) {
  // Anchors 20 apart along x; three pairs lie across the axis, one of them too short.
  std::vector<Point3f> points = {{8, 0, 0},  {8, 0, 12}, {12, -6, 0}, {12, 8, 0},
                                 {5, 0, 0},  {5, 15, 0}, {18, 0, 0},  {18, 0, 9}};
  std::vector<PointPair> pairs;
  int count = -1;
  SelectNewPoints(points.data(), static_cast<int>(points.size()), Point3f{0, 0, 0},
                  Point3f{20, 0, 0}, pairs, &count);
  ASSERT_EQ(count, 3);
  ASSERT_GE(pairs.size(), 3u);
  EXPECT_EQ(pairs[0].first, 4);
  EXPECT_EQ(pairs[0].second, 5);
  EXPECT_FLOAT_EQ(pairs[0].distance, 15.0f);
  EXPECT_EQ(pairs[1].first, 2);
  EXPECT_EQ(pairs[1].second, 3);
  EXPECT_FLOAT_EQ(pairs[1].distance, 14.0f);
  EXPECT_EQ(pairs[2].first, 0);
  EXPECT_EQ(pairs[2].second, 1);
  EXPECT_FLOAT_EQ(pairs[2].distance, 12.0f);
}

// One level over two unconnected blobs: 0-39 near x = 0 and 40-89 near x = 60.
class MultiCutTest : public ::testing::Test {
 protected:
  void SetUp() override {
    StartCleanRun();
    partition_test::BuildBlobChain({{40, 0.0}, {50, 60.0}});
    sub_ = partition_test::SubMatrixOf(Protein.data(), ProteinSize);
  }
  void TearDown() override { FreeContacts(sub_, ProteinSize); }

  int Search() { return MultiCut(Protein.data(), sub_, ProteinSize, &split_, &scores_); }

  // The residues before the split carry part 0 and are exactly those of index [first, last].
  void ExpectFirstSide(int first, int last) {
    ASSERT_EQ(split_, last - first + 1);
    for (int i = 0; i < ProteinSize; ++i) {
      const Residue& r = Protein[i];
      bool inFirst = r.index >= first && r.index <= last;
      EXPECT_EQ(i < split_, inFirst) << "position " << i << " index " << r.index;
      EXPECT_EQ(r.part, i < split_ ? 0 : 1) << "position " << i;
      EXPECT_EQ(r.merged, 0);
    }
  }

  Contact** sub_ = nullptr;
  int split_ = -7;
  CutScores scores_{-1.0f, -1.0f, -1.0f, -1.0f, -1.0f};
};

const float kCompact40 = static_cast<float>(BlobIntraCount(40)) / (40.0f * 8.0f);
const float kCompact50 = static_cast<float>(BlobIntraCount(50)) / (50.0f * 8.0f);

TEST_F(MultiCutTest, FarthestPairPutsTheFirstAnchorsBlobOnTheSourceSide) {
  ASSERT_EQ(Search(), 1);
  // The source side gets part 1, so the sink's blob comes first.
  ExpectFirstSide(40, 89);
  EXPECT_FLOAT_EQ(scores_.compact1, kCompact50);
  EXPECT_FLOAT_EQ(scores_.compact2, kCompact40);
  EXPECT_FLOAT_EQ(scores_.inter1, 0.0f);
  EXPECT_FLOAT_EQ(scores_.inter2, 0.0f);
  EXPECT_FLOAT_EQ(scores_.interface, 0.0f);
}

TEST_F(MultiCutTest, UserAnchorsChooseTheSourceAndAreUsedOnce) {
  FlagExtremes = 1;
  Extreme1 = 61;  // resnum of index 60
  Extreme2 = 1;   // the first residue of the slice
  ASSERT_EQ(Search(), 1);
  ExpectFirstSide(0, 39);
  EXPECT_FLOAT_EQ(scores_.compact1, kCompact40);
  EXPECT_FLOAT_EQ(scores_.compact2, kCompact50);
  EXPECT_EQ(FlagExtremes, 0);
}

TEST_F(MultiCutTest, MissingUserAnchorStopsTheRun) {
  FlagExtremes = 1;
  Extreme1 = 999;
  Extreme2 = 6;
  try {
    Search();
    ADD_FAILURE() << "no failure raised";
  } catch (const FatalError& error) {
    EXPECT_EQ(error.status, 10);
    EXPECT_EQ(error.stream, Stream::kStdout);
    EXPECT_EQ(error.text, "Extremal points unfound (999, 6). Quit!\n");
  }
}

TEST_F(MultiCutTest, OtherAnchorModesSearchLikeTheAutomaticMode) {
  for (int mode : {0, 7}) {
    SCOPED_TRACE(mode);
    StartCleanRun();
    partition_test::BuildBlobChain({{40, 0.0}, {50, 60.0}});
    FlagExtremes = mode;
    ASSERT_EQ(Search(), 1);
    ExpectFirstSide(40, 89);
  }
}

TEST(MultiCutSamples, EqualScoresKeepTheEarliestSample) {
  // X and Z lie on the anchor axis, Y and W across it. The first sample (X to Z) and the
  // samples across the axis (Y to W) all find cuts without contact across, with different
  // source sides; the first sample's cut (X alone on the source side) must win.
  StartCleanRun();
  partition_test::BuildBlobChain(
      {{35, 0.0, 0.0}, {35, 50.0, 40.0}, {35, 100.0, 0.0}, {35, 50.0, -40.0}});
  Contact** sub = partition_test::SubMatrixOf(Protein.data(), ProteinSize);
  int split = -1;
  CutScores scores{};
  ASSERT_EQ(MultiCut(Protein.data(), sub, ProteinSize, &split, &scores), 1);
  EXPECT_EQ(split, 105);
  for (int i = 0; i < ProteinSize; ++i) {
    EXPECT_EQ(Protein[i].part, Protein[i].index < 35 ? 1 : 0) << "index " << Protein[i].index;
  }
  FreeContacts(sub, ProteinSize);
}

// Two blobs of 20 with anchor sets of 30: every sample's sets share 20 residues, so every
// flow is 20000000; the cut between the blobs is only found when such flows are judged.
class OverlappingSetsTest : public ::testing::Test {
 protected:
  void SetUp() override {
    StartCleanRun();
    partition_test::BuildBlobChain({{20, 0.0}, {20, 60.0}});
    sub_ = partition_test::SubMatrixOf(Protein.data(), ProteinSize);
    MinDomainSize = 20;
    MinSegRes = 20.0f;
  }
  void TearDown() override { FreeContacts(sub_, ProteinSize); }

  Contact** sub_ = nullptr;
  int split_ = -7;
  CutScores scores_{};
};

TEST_F(OverlappingSetsTest, DefaultDomainLimitJudgesHugeFlows) {
  ASSERT_EQ(MultiCut(Protein.data(), sub_, ProteinSize, &split_, &scores_), 1);
  EXPECT_EQ(split_, 20);
  for (int i = 0; i < ProteinSize; ++i) EXPECT_EQ(Protein[i].index >= 20, i < 20) << i;
}

TEST_F(OverlappingSetsTest, OtherDomainLimitsSkipFlowsOfTwoMillionOrMore) {
  MaxNumDom = 3;
  EXPECT_EQ(MultiCut(Protein.data(), sub_, ProteinSize, &split_, &scores_), 0);
  EXPECT_EQ(split_, -7);
}

TEST_F(MultiCutTest, LevelSmallerThanTheAnchorSetsHasNoCut) {
  NumExtremes = ProteinSize + 1;
  EXPECT_EQ(Search(), 0);
  EXPECT_EQ(split_, -7);
  EXPECT_FLOAT_EQ(scores_.compact1, -1.0f);
}

TEST_F(MultiCutTest, LevelWithoutAFarthestPairHasNoCut) {
  for (int r = 0; r < ProteinSize; ++r) {
    for (int c = 0; c < ProteinSize; ++c) sub_[r][c].dist2 = 0.0f;
  }
  EXPECT_EQ(Search(), 0);
  EXPECT_EQ(split_, -7);
}

TEST_F(MultiCutTest, NoSamplePointsGiveNoCut) {
  NumSamplePoints = 0;
  EXPECT_EQ(Search(), 0);
  EXPECT_EQ(split_, -7);
}

}  // namespace
