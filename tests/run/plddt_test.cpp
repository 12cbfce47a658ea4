// What judges records before the engine sees them, on literal record lines: the pLDDT filter and
// the plausibility of a chain.
#include <gtest/gtest.h>

#include <cctype>
#include <cstdio>
#include <limits>

#include "base/text.h"
#include "formats/pdb_records.h"
#include "formats/pdb_writer.h"
#include "run/chain_plausibility.h"
#include "run/plddt_filter.h"

namespace quarnel {
namespace {

// An ATOM record of residue `resnum` with the atom name (columns 13-16), x and B-factor given.
std::string Atom(const char* name, int resnum, double x, double b, char icode = ' ') {
  return Format("ATOM      1 %-4s ALA A%4d%c   %8.3f%8.3f%8.3f  1.00%6.2f           C\n", name, resnum, icode, x,
                0.0, 0.0, b);
}

AtomRecords Records(const std::string& text) { return ReadPdbRecords(std::make_shared<const std::string>(text)); }

TEST(LowConfidence, ResiduesAsTheReaderGroupsThem) {
  const std::string anisou = "ANISOU    1  CA  ALA A   2     1000   2000   3000      0      0      0\n";
  const std::string text = Atom(" N  ", 1, 0.0, 90) + Atom(" CA ", 1, 1.0, 90) +  // kept
                           Atom(" N  ", 2, 4.0, 95) + Atom(" CA ", 2, 5.0, 30) + anisou +  // the CA decides
                           Atom(" CA ", 2, 6.0, 30, 'A') +  // an insertion code: a residue of its own
                           "HETATM    9  O   HOH A 100      9.000   0.000   0.000  1.00 10.00           O\n" +
                           Atom(" N  ", 3, 8.0, 80) +  // no CA: its first record decides
                           "END\n" + Atom(" CA ", 4, 9.0, 10);  // after END: not read, not counted
  const ConfidentRecords kept = LeaveOutLowConfidence(Records(text), 70.0);
  EXPECT_EQ(kept.leftOut, 2);
  ASSERT_EQ(kept.marks.size(), 4u);
  EXPECT_TRUE(kept.marks[0].kept && !kept.marks[1].kept && !kept.marks[2].kept && kept.marks[3].kept);
  EXPECT_EQ(PdbText(kept.records.records), Atom(" N  ", 1, 0.0, 90) + Atom(" CA ", 1, 1.0, 90) +
                           "HETATM    9  O   HOH A 100      9.000   0.000   0.000  1.00 10.00           O\n" +
                           Atom(" N  ", 3, 8.0, 80) + "END\n");

  // Residues 1 and 3 kept, with 2 and 2A left out between them.
  std::vector<Residue> residues(2);
  residues[0].resnum = 1, residues[0].icode = ' ';
  residues[1].resnum = 3, residues[1].icode = ' ';
  EXPECT_EQ(GapsBefore(residues, kept.marks), (std::vector<bool>{false, true}));
  const std::vector<PlacedMark> placed = PlaceLeftOut(residues, kept.marks);
  ASSERT_EQ(placed.size(), 2u);
  EXPECT_EQ(Format("%zu %d%c %s, %zu %d%c %s", placed[0].before, placed[0].mark.resnum, placed[0].mark.icode,
                   placed[0].mark.resname, placed[1].before, placed[1].mark.resnum, placed[1].mark.icode,
                   placed[1].mark.resname),
            "1 2  ALA, 1 2A ALA");
}

// Where residues are left out decides where their rows go: before the first residue kept, between
// two, after the last; and nothing is placed past a residue the marks do not know.
TEST(LowConfidence, LeftOutResiduesPlacedAmongThoseKept) {
  struct Case {
    const char* name;
    const char* marks;     // the file's residues by number, lower case when left out
    std::vector<int> kept;  // the residues the run read
    const char* placed;    // each residue left out: its number, then the place it comes before
  };
  const Case cases[] = {
      {"at both ends and within", "a B c d E f", {2, 5}, "1>0 3>1 4>1 6>2"},
      {"none left out", "A B", {1, 2}, ""},
      {"every one left out", "a b", {}, "1>0 2>0"},
      {"a residue the reader grouped otherwise: no more placed", "a B c D e", {2, 9, 4}, "1>0"},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.name);
    std::vector<ResidueMark> marks;
    for (const char* m = c.marks; *m != '\0'; m += m[1] == ' ' ? 2 : 1)
      marks.push_back(ResidueMark{std::tolower(*m) - 'a' + 1, ' ', std::isupper(*m) != 0, "GLY"});
    std::vector<Residue> residues(c.kept.size());
    for (size_t i = 0; i < residues.size(); ++i) residues[i].resnum = c.kept[i], residues[i].icode = ' ';
    std::string placed;
    for (const PlacedMark& p : PlaceLeftOut(residues, marks))
      placed += (placed.empty() ? "" : " ") + Format("%d>%zu", p.mark.resnum, p.before);
    EXPECT_EQ(placed, c.placed);
  }
}

TEST(LowConfidence, PlddtLooksLikeOneValuePerResidue) {
  std::string model, crystal;
  for (int r = 1; r <= 12; ++r) {
    model += Atom(" N  ", r, r, 50 + r) + Atom(" CA ", r, r + 0.5, 50 + r);
    crystal += Atom(" N  ", r, r, 20 + r) + Atom(" CA ", r, r + 0.5, 21 + r);
  }
  EXPECT_TRUE(LooksLikePlddt(Records(model).records));
  EXPECT_FALSE(LooksLikePlddt(Records(crystal).records));
}

TEST(Plausibility, SuperposedCopiesAndTooManyResidues) {
  std::string chain, twice;
  for (int r = 1; r <= 30; ++r) chain += Atom(" CA ", r, 3.8 * r, 50);
  EXPECT_EQ(ImplausibleChain(Records(chain).records), "");
  twice = chain + chain;
  EXPECT_EQ(ImplausibleChain(Records(twice).records),
            "30 of its 60 residues lie on another residue (CA atoms within 0.5 A): superposed copies of a "
            "chain, such as models without MODEL records; split them into models or files");
  std::string longest;
  for (int r = 0; r <= kMaxChainResidues; ++r) longest += Atom(" CA ", r % 9999, 3.8 * (r % 2000), 50);
  EXPECT_NE(ImplausibleChain(Records(longest).records).find(Format("more than %d residues", kMaxChainResidues)), std::string::npos);
}

// mmCIF coordinates have no columns to bound them: far or infinite ones are judged by distance
// like any other (found by the batch fuzz target).
TEST(Plausibility, CoordinatesPastThePdbColumns) {
  std::vector<AtomRecord> records;
  const double far[] = {1.8e14, 1.8e14 + 0.1, -1e300, std::numeric_limits<double>::infinity(), 2e5, 4e5};
  for (int r = 0; r < 6; ++r) {
    AtomRecord record;
    std::snprintf(record.name, sizeof record.name, " CA ");
    record.resnum = r + 1;
    record.x = far[r];
    records.push_back(record);
  }
  EXPECT_EQ(ImplausibleChain(records), "");  // one residue on another: fewer than three
  records.insert(records.end(), records.begin(), records.begin() + 2);
  for (size_t k = 6; k < records.size(); ++k) records[k].resnum = static_cast<int32_t>(k + 1);
  EXPECT_NE(ImplausibleChain(records).find("lie on another residue"), std::string::npos);
}

}  // namespace
}  // namespace quarnel
