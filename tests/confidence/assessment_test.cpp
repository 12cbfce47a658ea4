// The verdict on a partition: the screening rule, the confidence steps, and Analyze on two
// six-residue domains read from a literal PDB file.
#include <cmath>
#include <string>

#include <gtest/gtest.h>

#include "confidence/assessment.h"
#include "output/domains.h"
#include "partition/partition.h"
#include "structure/pdb_names.h"
#include "structure/protein.h"
#include "support/test_support.h"

namespace {

float Below(float x) { return std::nextafter(x, 0.0f); }

TEST(Calconf, StepsAreClosedAtTheirUpperEnd) {
  EXPECT_EQ(calconf(0.0f), 4.7f);
  EXPECT_EQ(calconf(1.0f), 94.1f);
  // 0.4f is slightly above 0.4; the float just below it is not.
  EXPECT_EQ(calconf(0.4f), 57.6f);
  EXPECT_EQ(calconf(Below(0.4f)), 36.3f);
  // 0.1f, 0.2f, 0.3f and 0.6f lie above their decimals; 0.7f and 0.9f below; 0.5f is exact.
  EXPECT_EQ(calconf(0.1f), 16.0f);
  EXPECT_EQ(calconf(Below(0.1f)), 4.7f);
  EXPECT_EQ(calconf(0.2f), 31.9f);
  EXPECT_EQ(calconf(0.3f), 36.3f);
  EXPECT_EQ(calconf(0.5f), 57.6f);
  EXPECT_EQ(calconf(std::nextafter(0.5f, 1.0f)), 63.3f);
  EXPECT_EQ(calconf(0.6f), 68.8f);
  EXPECT_EQ(calconf(0.7f), 68.8f);
  EXPECT_EQ(calconf(0.75f), 80.0f);
  EXPECT_EQ(calconf(0.8f), 83.5f);
  EXPECT_EQ(calconf(0.9f), 83.5f);
  EXPECT_EQ(calconf(0.95f), 94.1f);
}

bool Flagged(float u, float v, float w) {
  const float features[9] = {0, 0, 0, 0, 0, 0, u, v, w};
  return BeforeNN(features) == 1;
}

TEST(BeforeNN, TheTwoClearingRules) {
  EXPECT_FALSE(Flagged(0.7f, 0.1f, 0.15f));   // first rule
  EXPECT_FALSE(Flagged(0.55f, 0.04f, 0.04f)); // second rule
  EXPECT_TRUE(Flagged(0.55f, 0.04f, 0.06f));
  EXPECT_TRUE(Flagged(0.5f, 0.0f, 0.0f));
}

TEST(BeforeNN, BoundsAreDecimalsComparedInDouble) {
  // 0.2f is slightly above 0.2: it fails the first rule (and is far above 0.05).
  EXPECT_TRUE(Flagged(0.7f, 0.2f, 0.1f));
  EXPECT_TRUE(Flagged(0.7f, 0.1f, 0.2f));
  // 0.6f is slightly above 0.6 and passes.
  EXPECT_FALSE(Flagged(0.6f, 0.1f, 0.1f));
  EXPECT_TRUE(Flagged(Below(0.6f), 0.1f, 0.1f));
  // 0.52f lies below 0.52 and fails the second rule; the next float up passes. 0.05f lies
  // above 0.05.
  EXPECT_TRUE(Flagged(0.52f, 0.04f, 0.04f));
  EXPECT_FALSE(Flagged(std::nextafter(0.52f, 1.0f), 0.04f, 0.04f));
  EXPECT_TRUE(Flagged(0.55f, 0.05f, 0.04f));
}

// Two domains of six CA-only residues each, the second a copy of the first moved 50 A along
// x: isoleucines at +-1 on x, arginines at +-3 on y and +-5 on z around the domain's centre.
// Both have the features (4/6, 6, 1, 0, 6, 0).
const char* const kTwoDomains =
    "ATOM      1  CA  ILE A   1       1.000   0.000   0.000  1.00  0.00           C\n"
    "ATOM      2  CA  ILE A   2      -1.000   0.000   0.000  1.00  0.00           C\n"
    "ATOM      3  CA  ARG A   3       0.000   3.000   0.000  1.00  0.00           C\n"
    "ATOM      4  CA  ARG A   4       0.000  -3.000   0.000  1.00  0.00           C\n"
    "ATOM      5  CA  ARG A   5       0.000   0.000   5.000  1.00  0.00           C\n"
    "ATOM      6  CA  ARG A   6       0.000   0.000  -5.000  1.00  0.00           C\n"
    "ATOM      7  CA  ILE A   7      51.000   0.000   0.000  1.00  0.00           C\n"
    "ATOM      8  CA  ILE A   8      49.000   0.000   0.000  1.00  0.00           C\n"
    "ATOM      9  CA  ARG A   9      50.000   3.000   0.000  1.00  0.00           C\n"
    "ATOM     10  CA  ARG A  10      50.000  -3.000   0.000  1.00  0.00           C\n"
    "ATOM     11  CA  ARG A  11      50.000   0.000   5.000  1.00  0.00           C\n"
    "ATOM     12  CA  ARG A  12      50.000   0.000  -5.000  1.00  0.00           C\n"
    "TER\n"
    "END\n";

struct CutScore3 {
  float u, v, w;
};

class AnalyzeTwoDomains : public ::testing::Test {
 protected:
  void SetUp() override {
    StartCleanRun();
    TemplateName = dir_.File("two.pdb");
    PDBName = TemplateName;
    WriteFile(TemplateName, kTwoDomains);
    Entry = "two";
    CHAIN = 'A';
    ProteinSize = 12;
    DomainNumber = 2;
  }

  void Records(CutScore3 first, CutScore3 second) {
    domdetail.assign(2, DomainDetail{});
    const CutScore3 scores[2] = {first, second};
    for (int d = 0; d < 2; ++d) {
      DomainDetail& record = domdetail[static_cast<size_t>(d)];
      record.segments = {{1 + 6 * d, ' ', 6 + 6 * d, ' '}};
      record.nseg = 1;
      record.cutscore[0] = scores[d].u;
      record.cutscore[1] = scores[d].v;
      record.cutscore[2] = scores[d].w;
    }
  }

  int AnalyzeCapturing(std::string* printed) {
    ::testing::internal::CaptureStdout();
    int verdict = Analyze();
    *printed = ::testing::internal::GetCapturedStdout();
    return verdict;
  }

  TempDir dir_;
};

TEST(Analyze, OneDomainPrintsTheShortLine) {
  StartCleanRun();
  Entry = "1abcA";
  ProteinSize = 250;
  DomainNumber = 1;
  ::testing::internal::CaptureStdout();
  EXPECT_EQ(Analyze(), 0);
  EXPECT_EQ(::testing::internal::GetCapturedStdout(), "1abcA\t250\t1\n");
}

// Network scores of the feature vectors from tests/confidence/network_reference.py:
// (0.6, 0.19, 0.15) -> 0.3395, (0.7, 0.1, 0.15) -> 0.8959, (0.55, 0.04, 0.06) -> 0.8016,
// (0.9, 0.1, 0.1) -> 0.9942.
TEST_F(AnalyzeTwoDomains, AllClearedIsPrintedWhateverTheScores) {
  Records({0.6f, 0.19f, 0.15f}, {0.7f, 0.1f, 0.15f});  // both cleared; the first scores low
  std::string printed;
  EXPECT_EQ(AnalyzeCapturing(&printed), 0);
  EXPECT_EQ(printed, "two\t12\t2\t (1-6) (7-12)\n");
  EXPECT_EQ(domdetail[0].confidence, 94.1f);
  EXPECT_EQ(domdetail[1].confidence, 94.1f);
}

TEST_F(AnalyzeTwoDomains, FlaggedDomainAndLowScoreRejects) {
  Records({0.55f, 0.04f, 0.06f}, {0.6f, 0.19f, 0.15f});  // flagged; cleared but scoring 0.34
  std::string printed;
  EXPECT_EQ(AnalyzeCapturing(&printed), 2);
  EXPECT_EQ(printed, "");
  EXPECT_EQ(domdetail[0].confidence, 83.5f);
  EXPECT_EQ(domdetail[1].confidence, 36.3f);
}

TEST_F(AnalyzeTwoDomains, FlaggedDomainWithoutLowScoresIsPrinted) {
  Records({0.55f, 0.04f, 0.06f}, {0.9f, 0.1f, 0.1f});
  std::string printed;
  EXPECT_EQ(AnalyzeCapturing(&printed), 0);
  EXPECT_EQ(printed, "two\t12\t2\t (1-6) (7-12)\n");
  EXPECT_EQ(domdetail[0].confidence, 83.5f);
  EXPECT_EQ(domdetail[1].confidence, 94.1f);
}

}  // namespace
