// The structure reader on literal record lines, read by the classic reader's rules.
#include <gtest/gtest.h>

#include <cstring>

#include "base/status.h"
#include "formats/pdb_records.h"
#include "structure/protein.h"

namespace quarnel {
namespace {

// One text with the cases real entries bring: a first residue numbered -999 (the reader's own
// "no residue yet" number), a hydrogen, a HETATM selenomethionine, two CA alternate locations,
// a four-letter hydrogen name starting in column 13, a line cut after z, a TER between chains
// that meet with the same residue number, an insertion code, a nucleotide, ENDMDL.
const char kStructure[] =
    "HEADER    TEST\n"
    "ATOM      1  N   GLY A-999      10.000  10.000  10.000  1.00  0.00           N\n"
    "ATOM      2  CA  GLY A-999      11.000  10.000  10.000  1.00  0.00           C\n"
    "ATOM      3  C   GLY A-999      12.000  10.000  10.000  1.00  0.00           C\n"
    "ATOM      4  O   GLY A-999      13.000  10.000  10.000  1.00  0.00           O\n"
    "ATOM      5  H   GLY A-999       9.000  10.000  10.000  1.00  0.00           H\n"
    "HETATM    6 SE   MSE A   1       5.000   5.000   5.000  1.00  0.00          SE\n"
    "ATOM      7  N   THR A   1      20.000  10.000  10.000  1.00  0.00           N\n"
    "ATOM      8  CA ATHR A   1      21.000  10.000  10.000  0.50  0.00           C\n"
    "ATOM      9  CA BTHR A   1      21.500  10.000  10.000  0.50  0.00           C\n"
    "ATOM     10 HG21 THR A   1      22.000  11.000  10.000\n"
    "TER      11      THR A   1\n"
    "ATOM     12  N   ALA B   1      30.000  10.000  10.000  1.00  0.00           N\n"
    "ATOM     13  N   ALA B   1A     40.000  10.000  10.000  1.00  0.00           N\n"
    "ATOM     14  CA  ALA B   1A     41.000  10.000  10.000  1.00  0.00           C\n"
    "ATOM     15  C   ALA B   1A     42.000  10.000  10.000  1.00  0.00           C\n"
    "ATOM     16  O   ALA B   1A     43.000  10.000  10.000  1.00  0.00           O\n"
    "ATOM     17  P    DG B   2      50.000  10.000  10.000  1.00  0.00           P\n"
    "ATOM     18  O5'  DG B   2      51.000  10.000  10.000  1.00  0.00           O\n"
    "ATOM     19  C5'  DG B   2      52.000  10.000  10.000  1.00  0.00           C\n"
    "ATOM     20  C4'  DG B   2      53.000  10.000  10.000  1.00  0.00           C\n"
    "ENDMDL\n"
    "ATOM     21  N   LYS B   3      60.000  10.000  10.000  1.00  0.00           N\n";

Structure Read(const std::string& name, const std::string& text) {
  const TextSource lines(name, text);
  return ReadStructure(PdbLineRecords(lines));
}

std::string Describe(const Structure& s) {
  std::string text;
  for (const Residue& r : s.residues) {
    text += Format("%d %c %d%c %s %d ca=%.1f:", r.index, r.chain, r.resnum, r.icode, r.resname,
                   r.natoms, r.ca[0]);
    for (int a = 0; a < r.natoms; ++a) text += Format(" %s", s.AtomsOf(r)[a].name);
    text += "\n";
  }
  return text;
}

TEST(PdbReader, ResiduesOfTheFirstModelWithoutHydrogensOrHetatm) {
  const char kExpected[] =
      "0 A -999  GLY 4 ca=11.0: N   CA  C   O  \n"
      "1 A 1  THR 5 ca=21.5: N   CA  CA  G21 N  \n"  // chain B's residue 1 joins it
      "2 B 1A ALA 4 ca=41.0: N   CA  C   O  \n"
      "3 B 2   DG 4 ca=50.0: P   O5' C5' C4'\n";
  EXPECT_EQ(Describe(Read("s.pdb", kStructure)), kExpected);
  // Files written on Windows (2yex is one) read the same.
  std::string crlf;
  for (const char* c = kStructure; *c != '\0'; ++c) crlf += *c == '\n' ? "\r\n" : std::string(1, *c);
  EXPECT_EQ(Describe(Read("s.pdb", crlf)), kExpected);
  EXPECT_EQ(Read("empty.pdb", "").size(), 0);
}

// Four stored atoms per residue on average are needed: a CA-only model fails.
TEST(PdbReader, SufficiencyCheckAtFourAtomsPerResidue) {
  const std::string first(kStructure, std::strstr(kStructure, "ATOM      5"));
  const std::string fourth = "ATOM     16  O   ALA B   1A     43.000  10.000  10.000\n";
  const std::string three =
      "ATOM     13  N   ALA B   1A     40.000  10.000  10.000\n"
      "ATOM     14  CA  ALA B   1A     41.000  10.000  10.000\n"
      "ATOM     15  C   ALA B   1A     42.000  10.000  10.000\n";
  EXPECT_EQ(Read("ok.pdb", first + three + fourth).size(), 2);
  try {
    Read("few.pdb", first + three);
    ADD_FAILURE() << "7 atoms in 2 residues were accepted";
  } catch (const Failure& failure) {
    EXPECT_EQ(failure.exit_status(), 100);
    EXPECT_EQ(failure.stream(), Stream::kStderr);
    EXPECT_STREQ(failure.what(), "Missing sidechain atoms for few.pdb\n(7 atoms in 2 residues), Quit!\n");
  }
}

// Gzip data and mmCIF read by PDB columns would give nonsense that looks real: refused, with
// what the text is; an mmCIF data block after a residue's atom is only a line.
TEST(PdbReader, RefusesGzipAndMmcif) {
  const std::string atom = "ATOM      1  CA  GLY A   1      11.000  10.000  10.000\n";
  const struct {
    std::string text;
    int status;
    const char* hint;
  } cases[] = {
      {"\x1f\x8b\x08rest\n" + atom, 5, "quarnel: t.pdb is gzip-compressed; quarnel reads PDB-format files"},
      {"# comment\ndata_1abc\n" + atom, 5, "quarnel: t.pdb is an mmCIF file; quarnel reads PDB-format files"},
      {"ATOM      1  H   GLY A   1      11.000  10.000  10.000\ndata_1abc\n" + atom, 5,
       "quarnel: t.pdb is an mmCIF file; quarnel reads PDB-format files"},  // a hydrogen is no residue yet
      {atom + "data_1abc\n", 100, ""},
  };
  for (const auto& c : cases) {
    try {
      Read("t.pdb", c.text);
      ADD_FAILURE() << "read: " << c.text;
    } catch (const Failure& failure) {
      EXPECT_EQ(failure.exit_status(), c.status) << c.text;
      EXPECT_EQ(failure.hint(), c.hint) << c.text;
    }
  }
}

}  // namespace
}  // namespace quarnel
