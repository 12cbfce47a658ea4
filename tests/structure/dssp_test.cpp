// The DSSP reader on hand-written residue tables: matching lines to residues, bridge partners,
// chain breaks, and the fixed strand and bridge weights.
#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

#include "contacts/contacts.h"
#include "run/fatal.h"
#include "structure/dssp.h"
#include "structure/protein.h"
#include "support/test_support.h"

namespace {

// Cells start with values CalcContacts could have left, so that a cell the reader must not touch
// can be told from one it set.
constexpr Contact kUntouched = {7, 3, 50.0f};

const char kHeader[] =
    "==== Secondary Structure Definition by the program DSSP, CMBI version 2.2.1 ==== DATE=2016 .\n"
    "REFERENCE W. KABSCH AND C.SANDER, BIOPOLYMERS 22 (1983) 2577-2637                        .\n"
    "    8  1  0  0  0 TOTAL NUMBER OF RESIDUES, NUMBER OF CHAINS, ...                        .\n"
    "  #  RESIDUE AA STRUCTURE BP1 BP2  ACC     N-H-->O    O-->H-N    N-H-->O    O-->H-N\n";

// Residues in file order, as the reader leaves them and the run driver prepares them for DSSP.
void MakeProtein(const std::vector<std::pair<int, char>>& ids) {
  Protein.clear();
  for (size_t i = 0; i < ids.size(); ++i) {
    Residue residue{};
    residue.index = static_cast<int32_t>(i);
    residue.resnum = ids[i].first;
    residue.icode = ids[i].second;
    residue.chain = 'A';
    residue.ss = 'L';
    residue.bridge1 = -1;
    residue.bridge2 = -1;
    Protein.push_back(residue);
  }
  ProteinSize = static_cast<int32_t>(ids.size());
  ContactMatrix = ContactMalloc(ProteinSize, ProteinSize);
  ContactMatrixRows = ProteinSize;
  for (int i = 0; i < ProteinSize; ++i) {
    for (int j = 0; j < ProteinSize; ++j) ContactMatrix[i][j] = kUntouched;
  }
}

void MakeProtein(int n) {
  std::vector<std::pair<int, char>> ids;
  for (int r = 1; r <= n; ++r) ids.push_back({r, ' '});
  MakeProtein(ids);
}

// One residue line of the table, columns as DSSP writes them.
std::string DsspLine(int number, int resnum, char icode, char aa, char ss, int bp1, int bp2) {
  return Format("%5d%5d%c%c %c  %c        %4d%4d %4d\n", number, resnum, icode, 'A', aa, ss, bp1,
                bp2, 50);
}

std::string ChainBreak(int number) {
  return Format("%5d        !*             0   0    0      0, 0.0\n", number);
}

void ProcessText(const TempDir& dir, const std::string& text) {
  std::string path = dir.File("1abc.dssp");
  WriteFile(path, text);
  ProcessDSSP(path);
}

int Weight(int i, int j) { return ContactMatrix[i][j].weight; }

// Every cell not listed keeps its value; the listed pairs have `weight` in both cells; no
// count or distance changes.
void ExpectWeights(const std::vector<std::pair<std::pair<int, int>, int>>& set) {
  for (int i = 0; i < ProteinSize; ++i) {
    for (int j = 0; j < ProteinSize; ++j) {
      int expected = kUntouched.weight;
      for (const auto& entry : set) {
        if ((entry.first.first == i && entry.first.second == j) ||
            (entry.first.first == j && entry.first.second == i))
          expected = entry.second;
      }
      EXPECT_EQ(Weight(i, j), expected) << "cell " << i << "," << j;
      EXPECT_EQ(ContactMatrix[i][j].count, kUntouched.count);
      EXPECT_EQ(ContactMatrix[i][j].dist2, kUntouched.dist2);
    }
  }
}

TEST(ProcessDSSP, SecondaryStructureAndBridgePartners) {
  StartCleanRun();
  TempDir dir;
  MakeProtein(8);
  ProcessText(dir, std::string(kHeader) +
                       "    1    1 A M              0   0  140      0, 0.0\n"
                       "    2    2 A Q  E     -a    0   7A  58      5,-2.1\n"
                       "    3    3 A I  E     -a    0   8A   8      5,-1.9\n"
                       "    4    4 A F  B     -b    7   0    0      0, 0.0\n"
                       "    5    5 A V  T  3  S+    0   0  120      0, 0.0\n"
                       "    6    6 A K  S    S-     0   0   80      0, 0.0\n"
                       "    7    7 A T  E     -ab   2   4A  30     -5,-2.1\n"
                       "    8    8 A L  E     -a    3   0A  10     -5,-1.9\n");

  std::string ss;
  for (const Residue& r : Protein) ss += r.ss;
  EXPECT_EQ(ss, "LEEBTSEE");

  // BP1 0 is no partner; BP2 7 is the residue on DSSP line 7.
  EXPECT_EQ(Protein[1].bridge1, -1);
  EXPECT_EQ(Protein[1].bridge2, 6);
  EXPECT_EQ(Protein[2].bridge2, 7);
  // An isolated bridge ('B') keeps no partners, although DSSP lists one...
  EXPECT_EQ(Protein[3].bridge1, -1);
  EXPECT_EQ(Protein[3].bridge2, -1);
  // ...but a strand residue that lists it as its partner makes the pair.
  EXPECT_EQ(Protein[6].bridge1, 1);
  EXPECT_EQ(Protein[6].bridge2, 3);
  EXPECT_EQ(Protein[7].bridge1, 2);
  EXPECT_EQ(Protein[7].bridge2, -1);

  ExpectWeights({{{1, 2}, kStrandWeight},
                 {{6, 7}, kStrandWeight},
                 {{1, 6}, kBridgeWeight},
                 {{2, 7}, kBridgeWeight},
                 {{3, 6}, kBridgeWeight}});
}

// Strand neighbours that are also bridge partners (a tight hairpin) end with the bridge weight.
TEST(ProcessDSSP, BridgeWeightOverridesStrandWeight) {
  StartCleanRun();
  TempDir dir;
  MakeProtein(3);
  ProcessText(dir, std::string(kHeader) + DsspLine(1, 1, ' ', 'V', 'E', 2, 0) +
                       DsspLine(2, 2, ' ', 'K', 'E', 1, 0) + DsspLine(3, 3, ' ', 'V', 'E', 0, 0));
  ExpectWeights({{{0, 1}, kBridgeWeight}, {{1, 2}, kStrandWeight}});
}

TEST(ProcessDSSP, ChainBreakBelongsToTheResidueBeforeIt) {
  StartCleanRun();
  TempDir dir;
  MakeProtein({{1, ' '}, {2, ' '}, {1, ' '}, {2, ' '}, {3, ' '}});
  // Strands on both sides of the break are neighbours in Protein; a partner named by the
  // break's line number resolves to the residue before the break.
  ProcessText(dir, std::string(kHeader) + DsspLine(1, 1, ' ', 'V', ' ', 0, 0) +
                       DsspLine(2, 2, ' ', 'V', 'E', 0, 0) + ChainBreak(3) +
                       DsspLine(4, 1, ' ', 'V', 'E', 0, 0) + DsspLine(5, 2, ' ', 'V', 'H', 0, 0) +
                       DsspLine(6, 3, ' ', 'V', 'E', 3, 0));
  std::string ss;
  for (const Residue& r : Protein) ss += r.ss;
  EXPECT_EQ(ss, "LEEHE");
  EXPECT_EQ(Protein[4].bridge1, 1);
  ExpectWeights({{{1, 2}, kStrandWeight}, {{1, 4}, kBridgeWeight}});
}

TEST(ProcessDSSP, ChainBreakAsFirstTableLineIsSkipped) {
  StartCleanRun();
  TempDir dir;
  MakeProtein(2);
  ProcessText(dir, std::string(kHeader) + ChainBreak(1) + DsspLine(2, 1, ' ', 'V', 'E', 0, 1) +
                       DsspLine(3, 2, ' ', 'V', 'E', 2, 0));
  EXPECT_EQ(Protein[0].ss, 'E');
  EXPECT_EQ(Protein[1].ss, 'E');
  EXPECT_EQ(Protein[0].bridge2, -1);  // line 1 belongs to no residue
  EXPECT_EQ(Protein[1].bridge1, 0);
  ExpectWeights({{{0, 1}, kBridgeWeight}});
}

// 'X' lines are passed over like breaks: the cursor stays, the line maps to the residue before.
TEST(ProcessDSSP, UnknownResidueLine) {
  StartCleanRun();
  TempDir dir;
  MakeProtein(3);
  ProcessText(dir, std::string(kHeader) + DsspLine(1, 1, ' ', 'V', 'E', 0, 0) +
                       DsspLine(2, 2, ' ', 'X', 'H', 0, 0) + DsspLine(3, 2, ' ', 'V', 'E', 2, 0) +
                       DsspLine(4, 3, ' ', 'V', 'E', 0, 0));
  std::string ss;
  for (const Residue& r : Protein) ss += r.ss;
  EXPECT_EQ(ss, "EEE");
  EXPECT_EQ(Protein[1].bridge1, 0);
}

TEST(ProcessDSSP, InsertionCodesAndNumbersAbove3000) {
  StartCleanRun();
  TempDir dir;
  MakeProtein({{56, ' '}, {56, 'A'}, {57, ' '}});
  ProcessText(dir, std::string(kHeader) + DsspLine(3100, 56, ' ', 'V', 'E', 0, 0) +
                       DsspLine(3101, 56, 'A', 'V', 'E', 0, 3102) +
                       DsspLine(3102, 57, ' ', 'V', 'H', 0, 0));
  EXPECT_EQ(Protein[1].ss, 'E');
  EXPECT_EQ(Protein[1].bridge2, 2);
  EXPECT_EQ(Protein[2].ss, 'H');
}

// Lines that match no residue drive the cursor to the last residue, and every later line then
// writes to the last residue, even one that matches an earlier residue.
TEST(ProcessDSSP, UnmatchedLinesReachTheLastResidue) {
  StartCleanRun();
  TempDir dir;
  MakeProtein(4);
  ProcessText(dir, std::string(kHeader) + DsspLine(1, 1, ' ', 'V', 'G', 0, 0) +
                       DsspLine(2, 99, ' ', 'V', 'H', 0, 0) + DsspLine(3, 2, ' ', 'V', 'E', 4, 0) +
                       DsspLine(4, 3, ' ', 'V', 'E', 1, 3) + DsspLine(5, 4, ' ', 'V', ' ', 0, 1));
  std::string ss;
  for (const Residue& r : Protein) ss += r.ss;
  EXPECT_EQ(ss, "GLLE");
  // The last line has no letter of its own, but the residue it writes to is in strand state:
  // it takes that line's partners.
  EXPECT_EQ(Protein[3].bridge1, -1);
  EXPECT_EQ(Protein[3].bridge2, 0);
  ExpectWeights({{{0, 3}, kBridgeWeight}});
}

TEST(ProcessDSSP, PartnersThatNameNoResidue) {
  StartCleanRun();
  TempDir dir;
  MakeProtein(2);
  // Line 40 was never read, -5 is no number, and a residue listing itself is no pair.
  ProcessText(dir, std::string(kHeader) + DsspLine(1, 1, ' ', 'V', 'E', 40, -5) +
                       DsspLine(2, 2, ' ', 'V', 'S', 2, 0));
  EXPECT_EQ(Protein[0].bridge1, -1);
  EXPECT_EQ(Protein[0].bridge2, -1);
  EXPECT_EQ(Protein[1].bridge1, -1);  // 'S' residues keep no partners

  StartCleanRun();
  MakeProtein(1);
  ProcessText(dir, std::string(kHeader) + DsspLine(1, 1, ' ', 'V', 'E', 1, 0));
  EXPECT_EQ(Protein[0].bridge1, 0);
  EXPECT_EQ(Weight(0, 0), kUntouched.weight);
}

TEST(ProcessDSSP, FileWithoutTableChangesNothing) {
  StartCleanRun();
  TempDir dir;
  MakeProtein(2);
  ProcessText(dir, "");
  EXPECT_EQ(Protein[0].ss, 'L');
  ExpectWeights({});

  // No residues at all: the table is read against nothing.
  StartCleanRun();
  ProteinSize = 0;
  ProcessText(dir, std::string(kHeader) + DsspLine(1, 1, ' ', 'V', 'E', 0, 0));
  EXPECT_TRUE(Protein.empty());
}

TEST(ProcessDSSP, MissingFile) {
  StartCleanRun();
  MakeProtein(1);
  try {
    ProcessDSSP("/nonexistent/1abcA.dssp");
    FAIL() << "a missing DSSP file was read";
  } catch (const FatalError& error) {
    EXPECT_EQ(error.status, 5);
    EXPECT_EQ(error.stream, Stream::kStdout);
    EXPECT_EQ(error.text, "INPUT /nonexistent/1abcA.dssp OPEN ERROR: QUIT\n");
  }
}

}  // namespace
