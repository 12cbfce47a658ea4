// Domain features on synthetic profiles whose moments are worked out by hand in the comments,
// the moment-table scan on hand-made rows, and the whole path from a PDB file.
#include <cmath>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "confidence/features.h"
#include "confidence/profile.h"
#include "output/domains.h"
#include "run/fatal.h"
#include "structure/pdb_names.h"
#include "structure/protein.h"
#include "support/test_support.h"

namespace {

struct ProfileEntry {
  char code;
  double hydro;
  double dist;
};

void SetProfile(const std::vector<ProfileEntry>& entries) {
  residue.assign(entries.size() + 1, ProfileResidue{});
  NumOfAA = static_cast<int32_t>(entries.size());
  for (size_t i = 0; i < entries.size(); ++i) {
    ProfileResidue& r = residue[i + 1];
    r.code = entries[i].code;
    r.resnum = static_cast<int32_t>(i + 1);
    r.hydro = entries[i].hydro;
    r.dist = entries[i].dist;
  }
}

void RunFeatures(ProfileFeatures* out) {
  Totalh = 0.0;
  TotalHydro();
  NormalizeH();
  NormalizeD();
  CalculateH();
  Processtab(out);
}

// Hydrophobic residues at the centre, polar ones outside; deviations +1 and -1, so Avgh = 0
// and NormH = 1. Rows (n, s0, s2):
//   r=4: d 1,2,3            n=3 s0=3 s2=1+4+9=14          m0=1    m2=14/3
//   r=5: + d 4.5 (-1)       n=4 s0=2 s2=14-20.25=-6.25    m2=-1.5625  -> F=5
//   r=6: + d 5.5 (-1)       n=5 s0=1 s2=-6.25-30.25=-36.5 m2=-7.3     -> S=6
//   r=7: + d 6.5 (-1)       n=6 s0=0 s2=-78.75            m0=0        -> R=7
// Maxd = 6.5 + 1 = 7.5 (the X residue far out does not count), ratio 5/7.
TEST(Features, HydrophobicCentreByHand) {
  StartCleanRun();
  SetProfile({{'A', 1.0, 1.0},
              {'A', 1.0, 2.0},
              {'A', 1.0, 3.0},
              {'X', 0.0, 100.0},
              {'K', -1.0, 4.5},
              {'K', -1.0, 5.5},
              {'K', -1.0, 6.5}});
  Totalh = 0.0;
  TotalHydro();
  NormalizeH();
  NormalizeD();
  EXPECT_EQ(Avgh, 0.0);
  EXPECT_EQ(NormH, 1.0);
  EXPECT_EQ(Maxd, 7.5);
  // 12.35 ln 7 - 28 is about -3.97: every residue lies beyond it, X included.
  EXPECT_EQ(OUTcount, 7);

  CalculateH();
  ASSERT_EQ(Totaldnum, 4);
  const double m0[] = {1.0, 0.5, 0.2, 0.0};
  const double m2[] = {14.0 / 3.0, -1.5625, -7.3, -13.125};
  const int count[] = {3, 4, 5, 6};
  for (int i = 0; i < 4; ++i) {
    EXPECT_EQ(Tabdata[i].radius, 4 + i);
    EXPECT_EQ(Tabdata[i].count, count[i]);
    EXPECT_DOUBLE_EQ(Tabdata[i].moment0, m0[i]);
    EXPECT_DOUBLE_EQ(Tabdata[i].moment2, m2[i]);
  }

  ProfileFeatures out;
  Processtab(&out);
  EXPECT_EQ(out.radiusRatio, static_cast<float>(5.0 / 7.0));
  EXPECT_EQ(out.NumOfAA, 7);
  EXPECT_EQ(out.positiveRows, 0);  // the positive row comes before the first negative one
  EXPECT_EQ(out.crossings, 0);
  EXPECT_EQ(out.OUTcount, 7);
  EXPECT_TRUE(Tabdata.empty());
}

// Hydrophobicities 0.25 and -0.75 (binary fractions): Avgh = -0.25, deviations +0.5 and -0.5,
// NormH = 0.5, Maxd = 5. Both rows (r=4, r=5) hold all four residues: s0 = 0,
// s2 = 0.5(1) + 0.5(4) - 0.5(9) - 0.5(16) = -10, m2 = -10 / (4 x 0.5) = -5. F=4, S=5, R=5.
TEST(Features, SecondMomentNegativeFromTheStart) {
  StartCleanRun();
  SetProfile({{'A', 0.25, 1.0}, {'A', 0.25, 2.0}, {'K', -0.75, 3.0}, {'K', -0.75, 4.0}});
  Totalh = 0.0;
  TotalHydro();
  NormalizeH();
  NormalizeD();
  CalculateH();
  EXPECT_EQ(Avgh, -0.25);
  EXPECT_EQ(NormH, 0.5);
  ASSERT_EQ(Totaldnum, 2);
  EXPECT_EQ(Tabdata[0].count, 4);
  EXPECT_EQ(Tabdata[0].moment0, 0.0);
  EXPECT_EQ(Tabdata[0].moment2, -5.0);
  EXPECT_EQ(Tabdata[1].moment2, -5.0);
  ProfileFeatures out;
  Processtab(&out);
  EXPECT_EQ(out.radiusRatio, static_cast<float>(4.0 / 5.0));
}

TEST(Features, FarThresholdOfAHundredResidues) {
  StartCleanRun();
  std::vector<ProfileEntry> entries(100, ProfileEntry{'A', 0.25, 1.0});
  for (size_t i = 0; i < entries.size(); i += 2) entries[i].hydro = -0.25;
  entries[0].dist = 28.87;  // inside 12.35 ln 100 - 28 = 28.8739
  entries[1].dist = 28.88;
  entries[2] = ProfileEntry{'X', 0.0, 50.0};
  SetProfile(entries);
  ProfileFeatures out;
  RunFeatures(&out);
  EXPECT_EQ(OUTcount, 2);
  EXPECT_EQ(Maxd, 28.88 + 1.0);
}

// Rows for the scan; NumOfAA 10 lets every row of count 3 or more through.
void SetRows(const std::vector<TabRow>& rows, int numOfAA = 10) {
  Tabdata = rows;
  Totaldnum = static_cast<int32_t>(rows.size());
  NumOfAA = numOfAA;
}

ProfileFeatures Scan() {
  ProfileFeatures out;
  Processtab(&out);
  return out;
}

TEST(MomentScan, OnePositiveRowBetweenTwoRadiiMovesFByOne) {
  StartCleanRun();
  SetRows({{4, 5, 1.0, -1.0}, {5, 6, 1.0, 1.0}, {6, 7, 1.0, -1.0}, {7, 8, 1.0, -1.0},
           {8, 9, 0.0, -1.0}});
  ProfileFeatures out = Scan();
  EXPECT_EQ(out.radiusRatio, static_cast<float>(5.0 / 8.0));
  EXPECT_EQ(out.positiveRows, 1);
  EXPECT_EQ(out.crossings, 1);
}

TEST(MomentScan, TwoWeakPositiveRowsMoveFByTwo) {
  StartCleanRun();
  std::vector<TabRow> rows = {{4, 5, 1.0, -1.0}, {5, 6, 1.0, 2.0}, {6, 7, 1.0, 4.9},
                              {7, 8, 1.0, -1.0}, {8, 9, 0.0, -1.0}};
  SetRows(rows);
  EXPECT_EQ(Scan().radiusRatio, static_cast<float>(6.0 / 8.0));

  rows[1].moment2 = 5.0;  // not below 5.0: F stays
  SetRows(rows);
  EXPECT_EQ(Scan().radiusRatio, static_cast<float>(4.0 / 8.0));
}

TEST(MomentScan, ThreeWeakPositiveRowsAlsoMoveFByTwo) {
  StartCleanRun();
  SetRows({{4, 5, 1.0, -1.0}, {5, 6, 1.0, 1.0}, {6, 7, 1.0, 1.0}, {7, 8, 1.0, 1.0},
           {8, 9, 1.0, -1.0}, {9, 9, 0.0, -1.0}});
  ProfileFeatures out = Scan();
  EXPECT_EQ(out.radiusRatio, static_cast<float>(6.0 / 9.0));
  EXPECT_EQ(out.positiveRows, 3);
}

TEST(MomentScan, PositiveRowsAfterTheSecondNegativeCountAndCross) {
  StartCleanRun();
  // F=4, S=6; positives at 5, 7, 8, 10: four positive rows, so F stays. Crossings: 5 (run 1),
  // then the run grows at 6 and 7 crosses again; 9 grows it once more and 10 crosses.
  SetRows({{4, 5, 1.0, -1.0}, {5, 6, 1.0, 1.0}, {6, 7, 1.0, -1.0}, {7, 8, 1.0, 1.0},
           {8, 9, 1.0, 1.0}, {9, 9, 1.0, -1.0}, {10, 9, 0.00005, 1.0}, {11, 9, 1.0, 0.0}});
  ProfileFeatures out = Scan();
  EXPECT_EQ(out.positiveRows, 4);
  EXPECT_EQ(out.crossings, 3);
  // R is the radius of the last row with |moment0| below 0.0001.
  EXPECT_EQ(out.radiusRatio, static_cast<float>(4.0 / 10.0));
}

TEST(MomentScan, RowsWithFewResiduesArePassedOver) {
  StartCleanRun();
  // 0.08 x 100 = 8: the row of 7 residues is skipped, the row of 8 taken.
  SetRows({{4, 7, 0.0, -1.0}, {5, 8, 0.5, -1.0}, {6, 9, 0.5, -1.0}, {7, 10, 0.00005, -2.0},
           {8, 10, 0.001, -2.0}},
          100);
  EXPECT_EQ(Scan().radiusRatio, static_cast<float>(5.0 / 7.0));
}

TEST(MomentScan, NoNegativeRowGivesZeroRatio) {
  StartCleanRun();
  SetRows({{4, 5, 1.0, 1.0}, {5, 6, 0.0, 2.0}, {6, 7, 0.0, 0.0}});
  ProfileFeatures out = Scan();
  EXPECT_EQ(out.radiusRatio, 0.0f);
  EXPECT_EQ(out.positiveRows, 0);
  EXPECT_EQ(out.crossings, 0);
}

TEST(Features, UnusableProfilesGiveZeroShapeFeatures) {
  StartCleanRun();
  ProfileFeatures out;
  SetProfile({{'X', 0.0, 1.0}, {'X', 0.0, 2.0}, {'X', 0.0, 3.0}, {'X', 0.0, 40.0}});
  RunFeatures(&out);
  EXPECT_EQ(Avgh, 0.0);
  EXPECT_EQ(out.radiusRatio, 0.0f);
  EXPECT_EQ(out.positiveRows, 0);
  EXPECT_EQ(out.crossings, 0);
  EXPECT_EQ(out.NumOfAA, 4);
  EXPECT_EQ(out.OUTcount, 4);

  // Equal hydrophobicities: NormH is 0 and the moments have nothing to divide by.
  SetProfile({{'A', 0.25, 1.0}, {'A', 0.25, 5.0}, {'A', 0.25, 9.0}, {'A', 0.25, 2.0}});
  RunFeatures(&out);
  EXPECT_EQ(NormH, 0.0);
  EXPECT_EQ(Totaldnum, 0);
  EXPECT_EQ(out.radiusRatio, 0.0f);
  EXPECT_EQ(out.NumOfAA, 4);

  // All residues within 3 A: no row.
  SetProfile({{'A', 0.25, 1.0}, {'K', -1.1, 2.0}, {'A', 0.25, 2.5}});
  RunFeatures(&out);
  EXPECT_EQ(Totaldnum, 0);
  EXPECT_EQ(out.radiusRatio, 0.0f);
}

TEST(Features, InitializationCoversTheChain) {
  StartCleanRun();
  ProteinSize = 30;
  residue.assign(3, ProfileResidue{'A', 7, {1, 1, 1}, {1, 1, 1}, 1.0, 1.0});
  Totalh = 5.0;
  Initialization();
  ASSERT_GE(residue.size(), 31u);
  EXPECT_EQ(residue[1].code, ' ');
  EXPECT_EQ(residue[1].resnum, -999);
  EXPECT_EQ(residue[1].ca[0], 0.0);
  EXPECT_EQ(residue[1].hydro, 0.0);
  EXPECT_EQ(residue[30].resnum, -999);
  EXPECT_EQ(Totalh, 0.0);
}

// Isoleucines (0.73) at x = +-1, arginines (-1.76) at y = +-3 and z = +-5, CA only, so the
// centre is the origin and the distances are 1, 3, 5. Avgh = -0.93, deviations +1.66, -0.83;
// r=4: s2 = 2(1.66) - 2(0.83)(9) = -11.62 < 0 -> F=4; r=5 holds all, s0 = 0 -> S=5, R=5;
// r=6 (Maxd = 6) -> R=6. Ratio 4/6.
TEST(Features, GetProfileDataReadsTheDomainFromThePdbFile) {
  StartCleanRun();
  TempDir dir;
  TemplateName = dir.File("six.pdb");
  PDBName = "six.pdb";
  CHAIN = 'A';
  ProteinSize = 12;
  WriteFile(TemplateName,
            "ATOM      1  CA  ILE A   1       1.000   0.000   0.000  1.00  0.00           C\n"
            "ATOM      2  CA  ILE A   2      -1.000   0.000   0.000  1.00  0.00           C\n"
            "ATOM      3  CA  ARG A   3       0.000   3.000   0.000  1.00  0.00           C\n"
            "ATOM      4  CA  GLY A   4      20.000   0.000   0.000  1.00  0.00           C\n"
            "ATOM      5  CA  ARG A   7       0.000  -3.000   0.000  1.00  0.00           C\n"
            "ATOM      6  CA  ARG A   8       0.000   0.000   5.000  1.00  0.00           C\n"
            "ATOM      7  CA  ARG A   9       0.000   0.000  -5.000  1.00  0.00           C\n"
            "ATOM      8  CA  GLY A  10      20.000   0.000   0.000  1.00  0.00           C\n"
            "ATOM      9  CA  GLY A  11      20.000   0.000   0.000  1.00  0.00           C\n"
            "END\n");
  DomainDetail record{};
  record.segments = {{1, ' ', 3, ' '}, {7, ' ', 9, ' '}};
  record.nseg = 2;
  domdetail.push_back(record);

  ProfileFeatures out;
  GetProfileData(0, &out);
  EXPECT_EQ(Fragnum, 2);
  EXPECT_EQ(ENDNUM, 9);
  EXPECT_TRUE(Domdata.empty());
  EXPECT_DOUBLE_EQ(Avgh, -0.93);
  EXPECT_NEAR(NormH, std::sqrt((2 * 1.66 * 1.66 + 4 * 0.83 * 0.83) / 6), 1e-12);
  EXPECT_EQ(out.radiusRatio, static_cast<float>(4.0 / 6.0));
  EXPECT_EQ(out.NumOfAA, 6);
  EXPECT_EQ(out.Fragnum, 2);
  EXPECT_EQ(out.positiveRows, 0);
  EXPECT_EQ(out.OUTcount, 6);
  EXPECT_EQ(out.crossings, 0);
}

}  // namespace
