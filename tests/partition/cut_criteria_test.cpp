// Acceptance and scoring of one candidate cut: every rejection step with the record as far as it
// was filled, thresholds met exactly, the ResSep filter, the scores and zero-over-zero ratios.
#include <gtest/gtest.h>

#include <cmath>
#include <vector>

#include "partition/bipartition.h"
#include "partition/partition.h"
#include "partition_fixtures.h"
#include "run/parameters.h"
#include "support/test_support.h"

using partition_test::MakeGlobalMatrix;
using partition_test::PlainResidue;
using partition_test::Runs;
using partition_test::SetContact;

namespace {

constexpr int kAtoms = 5;

class CutCriteriaTest : public ::testing::Test {
 protected:
  void SetUp() override { StartCleanRun(); }

  // Residue i gets part parts[i]; the global matrix starts empty.
  void Layout(const std::vector<int>& parts) {
    residues_.clear();
    for (size_t i = 0; i < parts.size(); ++i) {
      Residue r = PlainResidue(static_cast<int>(i), kAtoms);
      r.part = parts[i];
      residues_.push_back(r);
    }
    MakeGlobalMatrix(static_cast<int>(parts.size()));
  }

  // `count` contacts between member k and member k + 10 of a part (index order), for every k
  // with a partner; returns the intra-part sum this adds (all pairs lie 10 or more apart).
  int Ladder(int part, int count) {
    std::vector<int> members;
    for (const Residue& r : residues_) {
      if (r.part == part) members.push_back(r.index);
    }
    int total = 0;
    for (size_t k = 0; k + 10 < members.size(); ++k) {
      SetContact(members[k], members[k + 10], count, count);
      total += count;
    }
    return total;
  }

  // Judges the layout with the slice ordered by part. Inside each part the members are
  // interleaved (0, 10, 20, 30, 1, 11, ...): the segment count has to sort them, and contact
  // partners stand next to each other.
  float Judge() {
    std::vector<Residue> slice;
    for (int part = 0; part <= 1; ++part) {
      std::vector<Residue> members;
      for (const Residue& r : residues_) {
        if (r.part == part) members.push_back(r);
      }
      for (size_t start = 0; start < 10; ++start) {
        for (size_t k = start; k < members.size(); k += 10) slice.push_back(members[k]);
      }
    }
    int split = 0;
    while (split < static_cast<int>(slice.size()) && slice[split].part == 0) ++split;
    scores_ = CutScores{-1.0f, -1.0f, -1.0f, -1.0f, -1.0f};
    float score = GoodDomainCut(slice.data(), split, static_cast<int>(slice.size()), &scores_);
    judged_ = slice;
    return score;
  }

  void ExpectScores(float compact1, float compact2, float inter1, float inter2, float interface) {
    EXPECT_FLOAT_EQ(scores_.compact1, compact1);
    EXPECT_FLOAT_EQ(scores_.compact2, compact2);
    EXPECT_FLOAT_EQ(scores_.inter1, inter1);
    EXPECT_FLOAT_EQ(scores_.inter2, inter2);
    EXPECT_FLOAT_EQ(scores_.interface, interface);
  }

  void ExpectRejectedRecord() { ExpectScores(0.0f, 0.0f, 100.0f, 100.0f, 500.0f); }

  // Two parts of 40 residues (0-39 and 40-79); part 0 has 120 intra contacts (compactness
  // 0.6), part 1 has 150 (0.75).
  void TwoBlocks() {
    Layout(Runs({{40, 0}, {40, 1}}));
    Ladder(0, 4);
    Ladder(1, 5);
  }

  std::vector<Residue> residues_;
  std::vector<Residue> judged_;
  CutScores scores_{};
};

void ExpectRelativelyNear(float actual, float expected) {
  EXPECT_NEAR(actual, expected, std::fabs(expected) * 1e-5f) << "expected " << expected;
}

// The score for MaxNumDom other than 2, before beta penalties, in single precision.
float ProductScore(int interW, int atoms1, int atoms2, int seg1, int seg2, int res1, int res2,
                   int intra1, int intra2) {
  float wnorm = static_cast<float>(interW) * static_cast<float>(atoms1 + atoms2) /
                static_cast<float>(atoms1) / static_cast<float>(atoms2);
  float segments = static_cast<float>(seg1 * seg2) / static_cast<float>(res1) /
                   static_cast<float>(res2);
  float packing = static_cast<float>(atoms1) * static_cast<float>(atoms2) /
                  static_cast<float>(intra1) / static_cast<float>(intra2);
  float f = segments * packing;
  return wnorm * f * f;
}

float LogScore(int interW, int atoms1, int atoms2, int seg1, int seg2, int res1, int res2,
               int intra1, int intra2) {
  float wnorm = static_cast<float>(interW) * static_cast<float>(atoms1 + atoms2) /
                static_cast<float>(atoms1) / static_cast<float>(atoms2);
  float segments = static_cast<float>(seg1 * seg2) / static_cast<float>(res1) /
                   static_cast<float>(res2);
  float packing = static_cast<float>(intra1) * static_cast<float>(intra2) /
                  static_cast<float>(atoms1) / static_cast<float>(atoms2);
  return static_cast<float>(std::log(wnorm) + 2.0 * std::log(segments) -
                            2.0 * std::log(packing));
}

TEST_F(CutCriteriaTest, PartBelowMinDomainSizeIsRejectedWithTheDefaultRecord) {
  Layout(Runs({{34, 0}, {46, 1}}));
  Ladder(0, 4);
  Ladder(1, 4);
  EXPECT_EQ(Judge(), kRejectedScore);
  ExpectRejectedRecord();
  Layout(Runs({{46, 0}, {34, 1}}));
  Ladder(0, 4);
  Ladder(1, 4);
  EXPECT_EQ(Judge(), kRejectedScore);
  ExpectRejectedRecord();
}

TEST_F(CutCriteriaTest, PartsOfExactlyMinDomainSizePass) {
  TwoBlocks();
  MinDomainSize = 40;
  EXPECT_EQ(Judge(), kNoContactScore);
}

TEST_F(CutCriteriaTest, CompactnessBelowThresholdIsRejectedWithTheDefaultRecord) {
  TwoBlocks();
  MinGlobularity = 0.61f;  // part 0 has 0.6
  EXPECT_EQ(Judge(), kRejectedScore);
  ExpectRejectedRecord();
  // The second part alone below the threshold.
  Layout(Runs({{40, 0}, {40, 1}}));
  Ladder(0, 5);
  Ladder(1, 4);
  EXPECT_EQ(Judge(), kRejectedScore);
  ExpectRejectedRecord();
}

TEST_F(CutCriteriaTest, CompactnessEqualToThresholdPassesWithoutBeingStored) {
  TwoBlocks();
  MinGlobularity = 0.6f;  // 120 / 200 in single precision
  EXPECT_EQ(Judge(), kNoContactScore);
  ExpectScores(0.0f, 0.0f, 0.0f, 0.0f, 0.0f);
}

TEST_F(CutCriteriaTest, SecondPartAtTheCompactnessThresholdPassesWithoutBeingStored) {
  Layout(Runs({{40, 0}, {40, 1}}));
  Ladder(0, 5);
  Ladder(1, 4);
  MinGlobularity = 0.6f;
  EXPECT_EQ(Judge(), kNoContactScore);
  ExpectScores(0.0f, 0.0f, 0.0f, 0.0f, 0.0f);
}

TEST_F(CutCriteriaTest, InteractionAboveThresholdRejectsWithCompactnessFilled) {
  TwoBlocks();
  SetContact(10, 60, 70, 70);  // 70 / 120 > 0.56
  EXPECT_EQ(Judge(), kRejectedScore);
  ExpectScores(0.6f, 0.75f, 100.0f, 100.0f, 500.0f);
}

TEST_F(CutCriteriaTest, InteractionEqualToThresholdPassesWithoutBeingStored) {
  TwoBlocks();
  MaxInteraction = 0.3f;
  SetContact(10, 60, 36, 36);  // 36 / 120 in single precision
  float score = Judge();
  EXPECT_LT(score, kRejectedScore);
  ExpectScores(0.6f, 0.75f, 100.0f, 100.0f, 0.36f);
}

TEST_F(CutCriteriaTest, FragmentedPartIsRejectedWithRatiosFilled) {
  Layout(Runs({{20, 0}, {40, 1}, {20, 0}}));
  Ladder(0, 4);
  Ladder(1, 5);
  EXPECT_EQ(Judge(), kRejectedScore);  // 40 residues in 2 segments
  ExpectScores(0.6f, 0.75f, 0.0f, 0.0f, 500.0f);
  MinSegRes = 20.0f;
  EXPECT_EQ(Judge(), kNoContactScore);
}

TEST_F(CutCriteriaTest, MeanSegmentLengthIsAFloatingPointRatio) {
  Layout(Runs({{19, 0}, {40, 1}, {20, 0}}));  // 39 residues in 2 segments: 19.5
  Ladder(0, 4);
  Ladder(1, 5);
  MinSegRes = 19.5f;
  EXPECT_EQ(Judge(), kNoContactScore);
  MinSegRes = 19.6f;
  EXPECT_EQ(Judge(), kRejectedScore);
}

TEST_F(CutCriteriaTest, ThreeBridgePairsAcrossTheCutAreRejected) {
  TwoBlocks();
  residues_[30].bridge1 = 50;
  residues_[31].bridge2 = 51;
  residues_[52].bridge1 = 32;
  EXPECT_EQ(Judge(), kRejectedScore);
  ExpectScores(0.6f, 0.75f, 0.0f, 0.0f, 500.0f);
  residues_[52].bridge1 = -1;
  EXPECT_EQ(Judge(), kNoContactScore);
}

TEST_F(CutCriteriaTest, MutualBridgePartnersCountOnce) {
  TwoBlocks();
  MaxBetaPair = 2;
  residues_[30].bridge1 = 50;
  residues_[50].bridge2 = 30;
  EXPECT_EQ(Judge(), kNoContactScore);
}

TEST_F(CutCriteriaTest, BridgesInsideOnePartDoNotCount) {
  TwoBlocks();
  MaxBetaPair = 1;
  residues_[5].bridge1 = 15;
  residues_[15].bridge1 = 5;
  residues_[45].bridge2 = 70;
  EXPECT_EQ(Judge(), kNoContactScore);
}

TEST_F(CutCriteriaTest, BetaCountsIgnoreEveryPairInsideOnePart) {
  // Every residue but the last of part 0 is a strand residue bridged to its successor in the
  // same part.
  TwoBlocks();
  MaxBetaPair = 1;
  MaxBetaPass = 1;
  for (Residue& r : residues_) {
    if (r.index == 39) continue;
    r.ss = 'E';
    if (r.index != 79) r.bridge1 = r.index + 1;
  }
  EXPECT_EQ(Judge(), kNoContactScore);
}

TEST_F(CutCriteriaTest, TwoStrandPassagesAcrossTheCutAreRejected) {
  Layout(Runs({{20, 0}, {40, 1}, {20, 0}}));
  Ladder(0, 4);
  Ladder(1, 5);
  MinSegRes = 20.0f;
  for (int i : {19, 20, 59, 60}) residues_[i].ss = 'E';
  EXPECT_EQ(Judge(), kRejectedScore);
  ExpectScores(0.6f, 0.75f, 0.0f, 0.0f, 500.0f);
  residues_[60].ss = 'L';
  EXPECT_EQ(Judge(), kNoContactScore);
}

TEST_F(CutCriteriaTest, StrandNeighboursInOnePartAreNoPassage) {
  TwoBlocks();
  MaxBetaPass = 1;
  for (int i : {37, 38, 39, 41, 42}) residues_[i].ss = 'E';
  EXPECT_EQ(Judge(), kNoContactScore);
  residues_[40].ss = 'E';
  EXPECT_EQ(Judge(), kRejectedScore);
}

TEST_F(CutCriteriaTest, NoWeightedContactAcrossScoresMinusOneMillion) {
  TwoBlocks();
  // Pairs at most ResSep apart count nowhere, inside a part or across the cut.
  SetContact(0, 1, 100, 100);
  SetContact(0, 3, 100, 100);
  SetContact(39, 40, 50, 50);
  SetContact(38, 41, 50, 50);
  SetContact(37, 40, 50, 50);
  EXPECT_EQ(Judge(), kNoContactScore);
  ExpectScores(0.6f, 0.75f, 0.0f, 0.0f, 0.0f);
}

TEST_F(CutCriteriaTest, ContactJustBeyondResSepCounts) {
  TwoBlocks();
  SetContact(36, 40, 10, 20);
  float score = Judge();
  ExpectScores(0.6f, 0.75f, 10.0f / 120.0f, 10.0f / 150.0f, 0.1f);
  ExpectRelativelyNear(score, ProductScore(20, 200, 200, 1, 1, 40, 40, 120, 150));
  ResSep = 4;
  EXPECT_EQ(Judge(), kNoContactScore);
}

TEST_F(CutCriteriaTest, InterfaceAboveMaxTimeIsRejected) {
  TwoBlocks();
  SetContact(10, 60, 41, 41);  // 41 * 400 / 200 / 200 = 0.41
  EXPECT_EQ(Judge(), kRejectedScore);
  ExpectScores(0.6f, 0.75f, 41.0f / 120.0f, 41.0f / 150.0f, 500.0f);
}

TEST_F(CutCriteriaTest, InterfaceEqualToMaxTimePasses) {
  TwoBlocks();
  SetContact(10, 60, 40, 40);
  float score = Judge();
  EXPECT_LT(score, kRejectedScore);
  ExpectScores(0.6f, 0.75f, 40.0f / 120.0f, 40.0f / 150.0f, 0.4f);
}

// Part 0 in two segments (0-19, 60-79), part 1 (20-59) with six atoms per residue, two
// contacts across the cut.
class ScoredCutTest : public CutCriteriaTest {
 protected:
  void SetUp() override {
    CutCriteriaTest::SetUp();
    Layout(Runs({{20, 0}, {40, 1}, {20, 0}}));
    for (Residue& r : residues_) {
      if (r.part == 1) r.natoms = 6;
    }
    Ladder(0, 4);  // 120 over 200 atoms
    Ladder(1, 5);  // 150 over 240 atoms
    SetContact(10, 30, 10, 20);
    SetContact(65, 45, 3, 4);
    MinSegRes = 20.0f;
  }

  void AddBetaContacts() {
    residues_[30].bridge1 = 70;  // two bridge pairs across
    residues_[5].bridge2 = 45;
    residues_[59].ss = 'E';  // one strand passage across
    residues_[60].ss = 'E';
  }

  float Base() const { return ProductScore(24, 200, 240, 2, 1, 40, 40, 120, 150); }
};

TEST_F(ScoredCutTest, ScoreIsNormalisedWeightTimesFSquared) {
  ExpectRelativelyNear(Judge(), Base());
  ExpectScores(0.6f, 0.625f, 13.0f / 120.0f, 13.0f / 150.0f, 13.0f * 440.0f / 200.0f / 240.0f);
}

TEST_F(ScoredCutTest, TwoDomainRunsUseTheLogarithmicScoreWithoutBetaPenalties) {
  MaxNumDom = 2;
  AddBetaContacts();
  ExpectRelativelyNear(Judge(), LogScore(24, 200, 240, 2, 1, 40, 40, 120, 150));
}

TEST_F(ScoredCutTest, DefaultRunsIgnoreBetaCountsInTheScore) {
  AddBetaContacts();
  ExpectRelativelyNear(Judge(), Base());
}

TEST_F(ScoredCutTest, OtherDomainLimitsMultiplyByTenPerBetaCount) {
  MaxNumDom = 3;
  AddBetaContacts();
  ExpectRelativelyNear(Judge(), Base() * 2.0f * 10.0f * 1.0f * 10.0f);
  residues_[60].ss = 'L';
  ExpectRelativelyNear(Judge(), Base() * 2.0f * 10.0f);
  residues_[30].bridge1 = -1;
  residues_[5].bridge2 = -1;
  ExpectRelativelyNear(Judge(), Base());
}

TEST_F(CutCriteriaTest, ZeroOverZeroNeitherRejectsNorIsStored) {
  // Part 0 has no atoms and no contacts: its compactness and interaction are 0 / 0.
  Layout(Runs({{40, 0}, {40, 1}}));
  for (Residue& r : residues_) {
    if (r.part == 0) r.natoms = 0;
  }
  Ladder(1, 5);
  EXPECT_EQ(Judge(), kNoContactScore);
  ExpectScores(0.0f, 0.0f, 100.0f, 100.0f, 0.0f);
}

TEST_F(CutCriteriaTest, SliceStaysOrderedByPart) {
  TwoBlocks();
  Judge();
  for (int i = 0; i < 80; ++i) EXPECT_EQ(judged_[i].part, i < 40 ? 0 : 1) << i;
}

}  // namespace
