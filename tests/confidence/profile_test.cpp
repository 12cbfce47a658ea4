// The profile reader on small literal PDB texts: which records enter a domain's profile,
// where reading stops, side-chain centres, residue codes and the two failures.
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "confidence/features.h"
#include "confidence/profile.h"
#include "run/fatal.h"
#include "structure/pdb_names.h"
#include "structure/protein.h"
#include "support/test_support.h"

namespace {

// One ATOM record with every field in its PDB column.
std::string AtomLine(const char* name, const char* resName, char chain, int resSeq, double x,
                     double y = 0.0, double z = 0.0, char iCode = ' ') {
  return Format("ATOM  %5d %-4s %3s %c%4d%c   %8.3f%8.3f%8.3f  1.00  0.00\n", 1, name, resName,
                chain, resSeq, iCode, x, y, z);
}

// A bare residue: its CA only, at (x, 0, 0).
std::string CaOnly(const char* resName, char chain, int resSeq, double x) {
  return AtomLine(" CA ", resName, chain, resSeq, x);
}

class ProfileReader : public ::testing::Test {
 protected:
  void SetUp() override {
    StartCleanRun();
    CHAIN = 'A';
    TemplateName = dir_.File("model.pdb");
    PDBName = "1abc.pdb";
  }

  void Domain(const std::vector<DomainSegment>& segments) {
    Domdata = segments;
    Fragnum = static_cast<int32_t>(segments.size());
    ENDNUM = 0;
    for (const DomainSegment& s : segments)
      if (s.end > ENDNUM) ENDNUM = s.end;
  }

  void Read(const std::string& text) {
    WriteFile(TemplateName, text);
    NumOfAA = 0;
    Initialization();
    ProcessPDB();
  }

  std::vector<int> ResidueNumbers() const {
    std::vector<int> numbers;
    for (int i = 1; i <= NumOfAA; ++i) numbers.push_back(residue[static_cast<size_t>(i)].resnum);
    return numbers;
  }

  TempDir dir_;
};

TEST_F(ProfileReader, TakesTheSegmentsOfTheRunsChainOnly) {
  Domain({{10, ' ', 20, ' '}, {40, ' ', 50, ' '}});
  std::string text;
  for (int n = 5; n <= 55; ++n) text += CaOnly("ALA", 'B', n, n);
  for (int n = 5; n <= 55; ++n) text += CaOnly("ALA", 'A', n, n);
  for (int n = 5; n <= 55; ++n) text += CaOnly("ALA", 'C', n, n);
  Read(text + "END\n");

  std::vector<int> expected;
  for (int n = 10; n <= 20; ++n) expected.push_back(n);
  for (int n = 40; n <= 50; ++n) expected.push_back(n);
  EXPECT_EQ(ResidueNumbers(), expected);
  EXPECT_EQ(NumOfAA, 22);
}

TEST_F(ProfileReader, IsindomainBoundsAreInclusive) {
  Domain({{10, ' ', 20, 'B'}, {-3, 'A', 2, ' '}});
  EXPECT_EQ(Isindomain(10), 1);
  EXPECT_EQ(Isindomain(20), 1);
  EXPECT_EQ(Isindomain(-3), 1);
  EXPECT_EQ(Isindomain(9), 0);
  EXPECT_EQ(Isindomain(21), 0);
  EXPECT_EQ(Isindomain(5), 0);
}

// The record numbered past the domain's end is read; the stop is tested on the next line.
TEST_F(ProfileReader, StopsOneLineAfterTheChainPassesTheDomainEnd) {
  Domain({{10, ' ', 12, ' '}});
  Read(CaOnly("ALA", 'A', 10, 0.0) + CaOnly("ALA", 'A', 11, 1.0) + CaOnly("ALA", 'A', 12, 2.0) +
       CaOnly("ALA", 'A', 13, 3.0) +
       AtomLine(" CB ", "ALA", 'A', 12, 9.0));  // an atom of 12 after 13: never read
  ASSERT_EQ(NumOfAA, 3);
  EXPECT_EQ(residue[3].center[0], 2.0);  // bare residue: the CA, not the late CB
}

TEST_F(ProfileReader, AnotherChainPastTheEndDoesNotStop) {
  Domain({{10, ' ', 12, ' '}});
  Read(CaOnly("ALA", 'A', 10, 0.0) + CaOnly("ALA", 'A', 12, 2.0) + CaOnly("ALA", 'B', 13, 3.0) +
       AtomLine(" CB ", "ALA", 'A', 12, 8.0));
  ASSERT_EQ(NumOfAA, 2);
  EXPECT_EQ(residue[2].center[0], 8.0);
}

TEST_F(ProfileReader, EndAndTerOfTheChainStopReading) {
  Domain({{1, ' ', 10, ' '}});
  Read(CaOnly("ALA", 'A', 1, 0.0) + "ENDMDL\n" + CaOnly("ALA", 'A', 2, 1.0));
  EXPECT_EQ(NumOfAA, 1);

  Read(CaOnly("ALA", 'A', 1, 0.0) + "TER\n" + CaOnly("ALA", 'A', 2, 1.0));
  EXPECT_EQ(NumOfAA, 1);

  // A TER that follows another chain lets reading go on.
  Read(CaOnly("ALA", 'B', 1, 0.0) + "TER\n" + CaOnly("ALA", 'A', 2, 1.0) +
       "HETATM    3  O   HOH A   3       1.000   1.000   1.000  1.00  0.00\n");
  EXPECT_EQ(ResidueNumbers(), std::vector<int>{2});
}

TEST_F(ProfileReader, InsertionCodesShareOneResidue) {
  Domain({{50, ' ', 55, ' '}});
  Read(
      "ATOM      1  CA  SER A  52       1.000   0.000   0.000  1.00  0.00           C\n"
      "ATOM      2  CB  SER A  52       2.000   0.000   0.000  1.00  0.00           C\n"
      "ATOM      3  CA  SER A  52A      5.000   0.000   0.000  1.00  0.00           C\n"
      "ATOM      4  OG  SER A  52A      4.000   6.000   0.000  1.00  0.00           O\n"
      "END\n");
  ASSERT_EQ(NumOfAA, 1);
  const ProfileResidue& r = residue[1];
  EXPECT_EQ(r.code, 'S');
  EXPECT_EQ(r.resnum, 52);
  EXPECT_EQ(r.ca[0], 5.0);  // the later CA wins
  EXPECT_EQ(r.center[0], 3.0);
  EXPECT_EQ(r.center[1], 3.0);
  EXPECT_DOUBLE_EQ(r.hydro, -0.26);
}

TEST_F(ProfileReader, SideChainCentreUsesTheListedAtomsOnly) {
  Domain({{1, ' ', 1, ' '}});
  Read(
      "ATOM      1  N   ASP A   1      10.000  10.000  10.000  1.00  0.00           N\n"
      "ATOM      2  CA  ASP A   1       0.000   0.000   0.000  1.00  0.00           C\n"
      "ATOM      3  C   ASP A   1      10.000  10.000  10.000  1.00  0.00           C\n"
      "ATOM      4  O   ASP A   1      10.000  10.000  10.000  1.00  0.00           O\n"
      "ATOM      5  CB  ASP A   1       1.000   0.000   3.000  1.00  0.00           C\n"
      "ATOM      6  CG  ASP A   1       2.000   0.000   3.000  1.00  0.00           C\n"
      "ATOM      7  OD1 ASP A   1       3.000   0.000   3.000  1.00  0.00           O\n"
      "ATOM      8  OD2 ASP A   1       6.000   0.000   3.000  1.00  0.00           O\n"
      "ATOM      9  HB2 ASP A   1      50.000  50.000  50.000  1.00  0.00           H\n"
      "ATOM     10  OXT ASP A   1      50.000  50.000  50.000  1.00  0.00           O\n");
  ASSERT_EQ(NumOfAA, 1);
  EXPECT_EQ(residue[1].center[0], 3.0);
  EXPECT_EQ(residue[1].center[1], 0.0);
  EXPECT_EQ(residue[1].center[2], 3.0);
  EXPECT_EQ(residue[1].dist, 0.0);
}

TEST_F(ProfileReader, GlycineAndBareResiduesCentreOnTheCa) {
  Domain({{1, ' ', 3, ' '}});
  Read(
      "ATOM      1  N   GLY A   1       9.000   9.000   9.000  1.00  0.00           N\n"
      "ATOM      2  CA  GLY A   1       1.000   2.000   3.000  1.00  0.00           C\n"
      "ATOM      3  CB  GLY A   1       7.000   7.000   7.000  1.00  0.00           C\n"
      "ATOM      4  N   LEU A   2       9.000   9.000   9.000  1.00  0.00           N\n"
      "ATOM      5  CA  LEU A   2      -1.000  -2.000  -3.000  1.00  0.00           C\n"
      "ATOM      6  C   LEU A   2       9.000   9.000   9.000  1.00  0.00           C\n"
      "ATOM      7  O   LEU A   2       9.000   9.000   9.000  1.00  0.00           O\n"
      "ATOM      8  CB  MET A   3       4.000   0.000   0.000  1.00  0.00           C\n");
  ASSERT_EQ(NumOfAA, 3);
  EXPECT_EQ(residue[1].center[0], 1.0);
  EXPECT_EQ(residue[1].center[2], 3.0);
  EXPECT_EQ(residue[2].center[0], -1.0);
  EXPECT_EQ(residue[2].center[1], -2.0);
  // A residue without CA keeps (0, 0, 0) there; its side chain still gives the centre.
  EXPECT_EQ(residue[3].ca[0], 0.0);
  EXPECT_EQ(residue[3].center[0], 4.0);
  // The domain's centre is (4/3, 0, 0): the mean of the three centres.
  EXPECT_DOUBLE_EQ(residue[3].dist, 4.0 - 4.0 / 3.0);
}

TEST_F(ProfileReader, FileWithoutEndCompletesTheLastResidue) {
  Domain({{1, ' ', 2, ' '}});
  Read(CaOnly("GLY", 'A', 1, 0.0) + AtomLine(" CA ", "VAL", 'A', 2, 0.0) +
       AtomLine(" CG1", "VAL", 'A', 2, 4.0) + AtomLine(" CG2", "VAL", 'A', 2, 2.0));
  ASSERT_EQ(NumOfAA, 2);
  EXPECT_EQ(residue[2].center[0], 3.0);
  EXPECT_EQ(residue[1].dist, 1.5);
  EXPECT_EQ(residue[2].dist, 1.5);
}

TEST_F(ProfileReader, LowerCaseAndNonStandardNamesGiveX) {
  Domain({{1, ' ', 4, ' '}});
  Read(CaOnly("ala", 'A', 1, 0.0) + CaOnly("Ala", 'A', 2, 1.0) + CaOnly("MSE", 'A', 3, 2.0) +
       CaOnly("HSD", 'A', 4, 3.0));
  ASSERT_EQ(NumOfAA, 4);
  EXPECT_EQ(residue[1].code, 'X');
  EXPECT_EQ(residue[1].hydro, 0.0);
  EXPECT_EQ(residue[2].code, 'A');
  EXPECT_DOUBLE_EQ(residue[2].hydro, 0.25);
  EXPECT_EQ(residue[3].code, 'X');
  EXPECT_EQ(residue[4].code, 'H');
}

TEST(ResidueTables, CodesAndHydrophobicities) {
  EXPECT_EQ(res_convert("Asx"), 'B');
  EXPECT_EQ(res_convert("GLX"), 'Z');
  EXPECT_EQ(res_convert("UNK"), 'X');
  EXPECT_EQ(res_convert("Hsd"), 'H');
  EXPECT_EQ(res_convert("TRP"), 'W');
  EXPECT_EQ(res_convert("HOH"), 'X');
  EXPECT_EQ(AssignH('R'), -1.76);
  EXPECT_EQ(AssignH('I'), 0.73);
  EXPECT_EQ(AssignH('Z'), -0.66);

  ::testing::internal::CaptureStdout();
  double value = AssignH('X');
  EXPECT_EQ(::testing::internal::GetCapturedStdout(), "Uncommon Char\n");
  EXPECT_EQ(value, 0.0);
}

TEST(ResidueTables, DistanceIsEuclidean) {
  EXPECT_EQ(cal_distance(1.0, 2.0, 3.0, 4.0, 6.0, 3.0), 5.0);
  EXPECT_EQ(cal_distance(4.0, 6.0, 3.0, 1.0, 2.0, 3.0), 5.0);
}

TEST_F(ProfileReader, MoreResiduesThanTheChainGrowsTheTable) {
  ProteinSize = 2;
  Domain({{1, ' ', 3000, ' '}});
  std::string text;
  for (int n = 1; n <= 2500; ++n) text += CaOnly("ALA", 'A', n, n % 7);
  Read(text);
  EXPECT_EQ(NumOfAA, 2500);
  EXPECT_EQ(residue[2500].resnum, 2500);
}

TEST_F(ProfileReader, UnreadableFileEndsWithStatus4) {
  Domain({{1, ' ', 3, ' '}});
  TemplateName = dir_.File("missing.pdb");
  Initialization();
  try {
    ProcessPDB();
    FAIL() << "no failure";
  } catch (const FatalError& error) {
    EXPECT_EQ(error.status, 4);
    EXPECT_EQ(error.stream, Stream::kStdout);
    EXPECT_EQ(error.text, "INPUT 1abc.pdb OPEN ERROR: QUIT\n");
  }
}

TEST_F(ProfileReader, NoResidueEndsWithStatus15) {
  Domain({{1, ' ', 3, ' '}});
  try {
    Read(CaOnly("ALA", 'B', 1, 0.0) + CaOnly("ALA", 'A', 7, 0.0));
    FAIL() << "no failure";
  } catch (const FatalError& error) {
    EXPECT_EQ(error.status, 15);
    EXPECT_EQ(error.stream, Stream::kStdout);
    EXPECT_EQ(error.text,
              "Something is wrong!!! please check the following:\n"
              " Is the pdb file name in the xxxx.pdb format?\n"
              " Have you specified the chain name if the protein has multiple chains?\n");
  }
}

}  // namespace
