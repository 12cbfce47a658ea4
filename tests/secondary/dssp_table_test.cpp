// DSSP's table: its classic text read as rows, rows matched to the residues, and the rows DSSP's
// library gives written as that text and read back.
#include <gtest/gtest.h>

#include "base/status.h"
#include "secondary/dssp_library.h"
#include "secondary/dssp_table.h"

namespace quarnel {
namespace {

std::vector<Residue> Numbered(const std::vector<std::pair<int, char>>& numbers) {
  std::vector<Residue> residues(numbers.size());
  for (size_t i = 0; i < numbers.size(); ++i) {
    residues[i].index = static_cast<int32_t>(i);
    residues[i].resnum = numbers[i].first;
    residues[i].icode = numbers[i].second;
  }
  return residues;
}

TEST(DsspReader, LettersAndPartnersMatchedForwardOnly) {
  const std::vector<Residue> residues =
      Numbered({{1, ' '}, {2, ' '}, {3, ' '}, {52, ' '}, {52, 'A'}, {53, ' '}, {54, ' '}, {60, ' '}});
  const char kTable[] =
      "    1    2 A K  E           0   0A  10\n"  // before the header: not a table line
      "  #  RESIDUE AA STRUCTURE BP1 BP2  ACC\n"
      "    1    1 A M              0   0A  10\n"  // a blank letter leaves coil
      "    2    2 A K  E           0   6A  10\n"  // BP1 0 is no partner
      "    3    3 A V  E           4   0A  10\n"  // partner on a break line: the residue before it
      "    4        !*             0   0    0\n"
      "    5   52 A X  E           0   0A  10\n"  // unknown residue: passed over
      "    6   52 A L  B           2   0A  10\n"  // an isolated bridge keeps no partner
      "    7   52AA G  E           0   2A  10\n"
      "    8   60 A S  H           0   0A  10\n"  // 53 and 54 are passed by
      "    9   53 A T  E           9   0A  10\n";  // behind the cursor: applies to the last
  const SecondaryStructure table = ReadDsspTable(TextSource("t.dssp", kTable), residues);
  EXPECT_EQ(std::string(table.ss.begin(), table.ss.end()), "LEEBELLE");
  EXPECT_EQ(table.bridge1, (std::vector<int32_t>{-1, -1, 2, -1, -1, -1, -1, 7}));
  EXPECT_EQ(table.bridge2, (std::vector<int32_t>{-1, 3, -1, -1, 1, -1, -1, -1}));

  // The empty output of a DSSP run that failed changes nothing.
  const SecondaryStructure none = ReadDsspTable(TextSource("t.dssp", ""), residues);
  EXPECT_EQ(std::string(none.ss.begin(), none.ss.end()), "LLLLLLLL");
  EXPECT_EQ(none.bridge1, std::vector<int32_t>(8, -1));
}

TEST(DsspReader, UnopenableOutputFailsWithStatus5) {
  try {
    ReadDsspTable(FileSource("/nonexistent/x.dssp"), Numbered({{1, ' '}}));
    ADD_FAILURE() << "no failure";
  } catch (const Failure& failure) {
    EXPECT_EQ(failure.exit_status(), 5);
    EXPECT_STREQ(failure.what(), "INPUT /nonexistent/x.dssp OPEN ERROR: QUIT\n");
  }
}

// What the library gives is what its classic text reads back as, field for field. (A residue
// number of five digits would run into the number before it: the text holds four, the rows hold
// any, as an mmCIF chain past 9999 needs.)
TEST(DsspRows, ClassicTextReadsBackAsTheRows) {
  std::vector<DsspResidue> rows(4);
  rows[0].row = DsspRow{1, -5, ' ', 'M', ' ', 0, 0, false};
  rows[1].row = DsspRow{2, 9999, 'A', 'K', 'E', 4, 9876, false};
  rows[1].ladder[0] = 'A';
  rows[1].helix[2] = '>';
  rows[1].sheet = 'B';
  rows[2].row = DsspRow{3, 0, ' ', ' ', ' ', 0, 0, true};
  rows[2].newChain = true;
  rows[3].row = DsspRow{4, -999, 'Z', 'X', 'H', 0, 2, false};
  const std::string text = ClassicDsspTable(rows);
  EXPECT_EQ(text.substr(0, text.find('\n')), "  #  RESIDUE AA STRUCTURE BP1 BP2");
  const std::vector<DsspRow> read = ReadDsspRows(TextSource("t.dssp", text));
  ASSERT_EQ(read.size(), rows.size());
  for (size_t k = 0; k < rows.size(); ++k) {
    SCOPED_TRACE(k);
    EXPECT_EQ(read[k].number, rows[k].row.number);
    EXPECT_EQ(read[k].chainBreak, rows[k].row.chainBreak);
    if (rows[k].row.chainBreak) continue;  // a break's other fields are the line before's
    EXPECT_EQ(read[k].resnum, rows[k].row.resnum);
    EXPECT_EQ(read[k].icode, rows[k].row.icode);
    EXPECT_EQ(read[k].aa, rows[k].row.aa);
    EXPECT_EQ(read[k].ss, rows[k].row.ss);
    EXPECT_EQ(read[k].partner1, rows[k].row.partner1);
    EXPECT_EQ(read[k].partner2, rows[k].row.partner2);
  }
}

}  // namespace
}  // namespace quarnel
