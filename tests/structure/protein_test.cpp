// The PDB reader on literal record lines: residue boundaries, the atoms kept and skipped, where
// reading stops, and the designed failures.
#include <gtest/gtest.h>

#include <cstdio>
#include <string>

#include "run/fatal.h"
#include "structure/pdb_names.h"
#include "structure/protein.h"
#include "support/test_support.h"

namespace {

// An ATOM record with every column in its PDB place; `name` is the four-column field 13-16.
std::string AtomLine(int serial, const char* name, const char* resName, char chain, int resSeq,
                     char iCode, double x, double y, double z) {
  return Format("ATOM  %5d %-4s %3s %c%4d%c   %8.3f%8.3f%8.3f%6.2f%6.2f\n", serial, name,
                resName, chain, resSeq, iCode, x, y, z, 1.0, 10.0);
}

// Writes the text to a file in `dir` and reads it as the run would.
void ReadText(const TempDir& dir, const std::string& text) {
  TemplateName = dir.File("input.pdb");
  WriteFile(TemplateName, text);
  GetProtein();
}

// `residues` residues of `perResidue` atoms each (N, CA, C, O, then side-chain atoms).
std::string Chain(int residues, int perResidue) {
  static const char* const kNames[] = {" N  ", " CA ", " C  ", " O  "};
  std::string text;
  int serial = 1;
  for (int r = 0; r < residues; ++r) {
    for (int a = 0; a < perResidue; ++a) {
      const char* name = a < 4 ? kNames[a] : " CB ";
      text += AtomLine(serial++, name, "ALA", 'A', r + 1, ' ', 3.8 * r, 0.1 * a, 0.0);
    }
  }
  return text;
}

const char kMixedRecords[] =
    "HEADER    TEST ENTRY\n"
    "ATOM      1  N   ALA A  10      11.104   6.134  -6.504  1.00 10.00\n"
    "ATOM      2  CA  ALA A  10      11.639   6.071  -5.147  0.50 10.00\n"
    "ATOM      3  C   ALA A  10      13.140   5.820  -5.255  1.00 10.00\n"
    "ATOM      4  O   ALA A  10      13.750   5.990  -6.310  1.00 10.00\n"
    "ATOM      5  H   ALA A  10      10.500   6.000  -6.900  1.00 10.00\n"
    "ATOM      6  CB  ALA A  10      11.300   7.400  -4.500  1.00 10.00\n"
    "ATOM      7  N   GLY A  10A     13.700   5.450  -4.100  1.00 10.00\n"
    "ATOM      8  CA  GLY A  10A     15.130   5.180  -4.000  1.00 10.00\n"
    "ATOM      9  HA2 GLY A  10A     15.500   4.200  -4.300  1.00 10.00\n"
    "ATOM     10 HG21 GLY A  10A     15.600   6.100  -3.500  1.00 10.00\n"
    "ATOM     11  C   GLY A  10A     15.460   4.830  -2.560  1.00 10.00\n"
    "ATOM     12  O   GLY A  10A     14.650   4.300  -1.800  1.00 10.00\n"
    "TER      13      GLY A  10A\n"
    "HETATM   14 SE   MSE A  11      16.000   5.000  -1.000  1.00 10.00\n"
    "ATOM     15  N   SER B  10A     16.700   5.100  -2.200  1.00 10.00\n"
    "ATOM     16  CA  SER B  -3      17.100   4.800  -0.850  1.00 10.00\n"
    "ATOM     17  C   SER B  -3      18.600   4.600  -0.800  1.00 10.00\n"
    "ATOM     18  O   SER B  -3      19.200   4.900   0.230  1.00 10.00\n"
    "ATOM     19  OG  SER B  -3      16.500   3.600  -0.300  1.00 10.00\n"
    "END\n"
    "ATOM     20  N   LYS B  -2      20.000   4.000  -1.800  1.00 10.00\n";

TEST(GetProtein, ReadsResidueAndAtomFields) {
  StartCleanRun();
  TempDir dir;
  ReadText(dir, kMixedRecords);

  ASSERT_EQ(ProteinSize, 3);
  const Residue& ala = Protein[0];
  EXPECT_EQ(ala.index, 0);
  EXPECT_EQ(ala.merged, 0);
  EXPECT_EQ(ala.domain, 0);
  EXPECT_EQ(ala.chain, 'A');
  EXPECT_EQ(ala.resnum, 10);
  EXPECT_EQ(ala.icode, ' ');
  EXPECT_STREQ(ala.resname, "ALA");
  EXPECT_FLOAT_EQ(ala.cutscore[0], 999.9f);
  EXPECT_EQ(ala.cutscore[1], 0.0f);
  EXPECT_EQ(ala.cutscore[2], 0.0f);
  ASSERT_EQ(ala.natoms, 5);  // the hydrogen H is not stored
  const char* names[] = {"N  ", "CA ", "C  ", "O  ", "CB "};
  int backbone[] = {1, 1, 1, 1, 0};
  int serial[] = {1, 2, 3, 4, 6};
  for (int a = 0; a < 5; ++a) {
    EXPECT_STREQ(ala.atoms[a].name, names[a]);
    EXPECT_EQ(ala.atoms[a].backbone, backbone[a]);
    EXPECT_EQ(ala.atoms[a].serial, serial[a]);
  }
  EXPECT_EQ(ala.atoms[1].x, 11.639);
  EXPECT_EQ(ala.atoms[1].y, 6.071);
  EXPECT_EQ(ala.atoms[1].z, -5.147);
  EXPECT_EQ(ala.atoms[1].occupancy, 0.5);
  EXPECT_EQ(ala.ca[0], 11.639);
  EXPECT_EQ(ala.ca[1], 6.071);
  EXPECT_EQ(ala.ca[2], -5.147);

  // Same number with insertion code A: a residue of its own. The SER line of chain B with the
  // same number and code follows it directly, and the chain is not compared: it joins.
  const Residue& gly = Protein[1];
  EXPECT_EQ(gly.index, 1);
  EXPECT_EQ(gly.resnum, 10);
  EXPECT_EQ(gly.icode, 'A');
  EXPECT_EQ(gly.chain, 'A');
  ASSERT_EQ(gly.natoms, 6);
  EXPECT_STREQ(gly.atoms[2].name, "G21");  // HG21 has 'G' in column 14 and is kept
  EXPECT_EQ(gly.atoms[2].backbone, 0);
  EXPECT_EQ(gly.atoms[5].serial, 15);  // the HETATM line between them is skipped

  const Residue& ser = Protein[2];
  EXPECT_EQ(ser.resnum, -3);
  EXPECT_EQ(ser.chain, 'B');
  EXPECT_EQ(ser.natoms, 4);  // reading stops at END: the LYS line after it is not read
  EXPECT_EQ(ser.ca[0], 17.1);

  // Every residue's atoms lie in AtomPool, one residue after the other.
  ASSERT_EQ(AtomPool.size(), 15u);
  EXPECT_EQ(Protein[0].atoms, AtomPool.data());
  EXPECT_EQ(Protein[1].atoms, AtomPool.data() + 5);
  EXPECT_EQ(Protein[2].atoms, AtomPool.data() + 11);
}

TEST(GetProtein, EndmdlEndsTheFirstModel) {
  StartCleanRun();
  TempDir dir;
  std::string model = Chain(2, 4);
  ReadText(dir, "MODEL        1\n" + model + "ENDMDL\nMODEL        2\n" + model + "ENDMDL\nEND\n");
  EXPECT_EQ(ProteinSize, 2);
  EXPECT_EQ(AtomPool.size(), 8u);
}

TEST(GetProtein, RepresentativePoint) {
  StartCleanRun();
  TempDir dir;
  std::string text;
  // A nucleotide: its phosphorus stands for it.
  text += AtomLine(1, " P  ", " DA", 'B', 1, ' ', 1.0, 2.0, 3.0);
  text += AtomLine(2, " OP1", " DA", 'B', 1, ' ', 1.5, 2.0, 3.0);
  text += AtomLine(3, " OP2", " DA", 'B', 1, ' ', 0.5, 2.0, 3.0);
  text += AtomLine(4, " O5'", " DA", 'B', 1, ' ', 1.0, 3.0, 3.0);
  // No CA at all: the residue keeps the marker coordinates.
  text += AtomLine(5, " N  ", "GLY", 'A', 2, ' ', 5.0, 0.0, 0.0);
  text += AtomLine(6, " C  ", "GLY", 'A', 2, ' ', 6.0, 0.0, 0.0);
  text += AtomLine(7, " O  ", "GLY", 'A', 2, ' ', 7.0, 0.0, 0.0);
  text += AtomLine(8, " OXT", "GLY", 'A', 2, ' ', 8.0, 0.0, 0.0);
  // Two alternate CA atoms: both are stored and the last one wins.
  text += AtomLine(9, " N  ", "SER", 'A', 3, ' ', 9.0, 0.0, 0.0);
  text += AtomLine(10, " CA ", "SER", 'A', 3, ' ', 10.0, 0.0, 0.0);
  text += AtomLine(11, " CA ", "SER", 'A', 3, ' ', 10.5, 0.5, 0.0);
  text += AtomLine(12, " C  ", "SER", 'A', 3, ' ', 11.0, 0.0, 0.0);
  ReadText(dir, text);

  ASSERT_EQ(ProteinSize, 3);
  EXPECT_EQ(Protein[0].ca[0], 1.0);
  EXPECT_EQ(Protein[0].ca[1], 2.0);
  EXPECT_EQ(Protein[0].ca[2], 3.0);
  for (double c : Protein[1].ca) EXPECT_EQ(c, kNoCoordinate);
  EXPECT_EQ(Protein[2].natoms, 4);
  EXPECT_EQ(Protein[2].ca[0], 10.5);
  EXPECT_EQ(Protein[2].ca[1], 0.5);
}

// The first atom opens a residue even when its number equals the "no residue yet" mark.
TEST(GetProtein, FirstResidueNumberedMinus999) {
  StartCleanRun();
  TempDir dir;
  std::string text;
  for (int a = 0; a < 4; ++a) text += AtomLine(a + 1, " CA ", "ALA", 'A', -999, ' ', a, 0, 0);
  for (int a = 0; a < 4; ++a) text += AtomLine(a + 5, " CA ", "GLY", 'A', -998, ' ', a, 5, 0);
  ReadText(dir, text);
  ASSERT_EQ(ProteinSize, 2);
  EXPECT_EQ(Protein[0].resnum, -999);
  EXPECT_EQ(Protein[0].natoms, 4);
  EXPECT_EQ(Protein[1].natoms, 4);
}

TEST(GetProtein, AResidueMayHoldMoreThanAHundredAtoms) {
  StartCleanRun();
  TempDir dir;
  std::string text = Chain(1, 150) + Chain(2, 4);
  ReadText(dir, text);
  // Chain() numbers from 1 each time: the second call's residue 1 follows residue 1 directly
  // and joins it.
  ASSERT_EQ(ProteinSize, 2);
  EXPECT_EQ(Protein[0].natoms, 154);
  EXPECT_EQ(Protein[1].natoms, 4);
  EXPECT_EQ(Protein[1].atoms, AtomPool.data() + 154);
  EXPECT_EQ(Protein[0].atoms[153].serial, 4);
}

TEST(GetProtein, FourAtomsPerResidueOnAverage) {
  StartCleanRun();
  TempDir dir;
  // 100 residues with 400 atoms pass.
  ReadText(dir, Chain(100, 4));
  EXPECT_EQ(ProteinSize, 100);

  // One atom fewer fails, on standard error.
  StartCleanRun();
  std::string text = Chain(100, 4);
  size_t lastLine = text.rfind("ATOM  ");
  text.erase(lastLine);
  try {
    ReadText(dir, text);
    FAIL() << "399 atoms in 100 residues were accepted";
  } catch (const FatalError& error) {
    EXPECT_EQ(error.status, 100);
    EXPECT_EQ(error.stream, Stream::kStderr);
    EXPECT_EQ(error.text, "Missing sidechain atoms for " + dir.File("input.pdb") +
                              "\n(399 atoms in 100 residues), Quit!\n");
  }
}

TEST(GetProtein, CaOnlyModelFails) {
  StartCleanRun();
  TempDir dir;
  std::string text;
  for (int r = 1; r <= 3; ++r) text += AtomLine(r, " CA ", "ALA", 'A', r, ' ', 3.8 * r, 0, 0);
  try {
    ReadText(dir, text);
    FAIL() << "a CA-only model was accepted";
  } catch (const FatalError& error) {
    EXPECT_EQ(error.status, 100);
    EXPECT_NE(error.text.find("(3 atoms in 3 residues)"), std::string::npos);
  }
}

TEST(GetProtein, MissingFile) {
  StartCleanRun();
  TemplateName = "/nonexistent/quarnel/1abc.pdb";
  try {
    GetProtein();
    FAIL() << "a missing file was read";
  } catch (const FatalError& error) {
    EXPECT_EQ(error.status, 5);
    EXPECT_EQ(error.stream, Stream::kStdout);
    EXPECT_EQ(error.text, "INPUT /nonexistent/quarnel/1abc.pdb OPEN ERROR: QUIT\n");
  }
}

TEST(GetProtein, FileWithoutAtomRecords) {
  StartCleanRun();
  TempDir dir;
  testing::internal::CaptureStdout();
  testing::internal::CaptureStderr();
  ReadText(dir,
           "HEADER    NOTHING\n"
           "HETATM    1  O   HOH A 101       1.000   2.000   3.000  1.00 10.00\n"
           "END\n");
  EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
  EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
  EXPECT_EQ(ProteinSize, 0);
  EXPECT_TRUE(Protein.empty());
}

// A record with a long tail comes back from the 300-byte buffer in pieces; the tail pieces
// are not records and the record itself is read whole.
TEST(GetProtein, OverlongLineKeepsItsRecord) {
  StartCleanRun();
  TempDir dir;
  std::string text = Chain(2, 4);
  size_t firstEnd = text.find('\n');
  text.insert(firstEnd, std::string(700, 'x'));
  ReadText(dir, text);
  EXPECT_EQ(ProteinSize, 2);
  EXPECT_EQ(AtomPool.size(), 8u);
  EXPECT_EQ(Protein[0].atoms[0].serial, 1);
}

}  // namespace
