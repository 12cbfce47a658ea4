// DSSP through the helper program: its rows are the in-process library's, for any number of
// chains and threads, and a helper that is missing, dies or answers nonsense is a reason, never
// a crash or rows of another chain.
#include "secondary/dssp_helper.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <stdexcept>
#include <thread>

#include <sys/wait.h>
#include <unistd.h>

#include "formats/pdb_records.h"
#include "support.h"

namespace quarnel::test {
namespace {

std::vector<AtomRecord> AtomsOf(const std::string& file) {
  std::vector<AtomRecord> atoms;
  const AtomRecords records = ReadPdbRecords(std::make_shared<const std::string>(ReadFile(DataFile(file))));
  for (const AtomRecord& record : records.records) {
    if (record.IsEnd()) break;
    if (record.kind == AtomRecord::kAtom) atoms.push_back(record);
  }
  return atoms;
}

bool SameRows(const std::vector<DsspRow>& a, const std::vector<DsspRow>& b) {
  if (a.size() != b.size()) return false;
  for (size_t k = 0; k < a.size(); ++k)
    if (a[k].number != b[k].number || a[k].resnum != b[k].resnum || a[k].icode != b[k].icode ||
        a[k].aa != b[k].aa || a[k].ss != b[k].ss || a[k].partner1 != b[k].partner1 ||
        a[k].partner2 != b[k].partner2 || a[k].chainBreak != b[k].chainBreak)
      return false;
  return true;
}

std::vector<DsspRow> InProcess(const std::vector<AtomRecord>& atoms) {
  std::vector<DsspRow> rows;
  for (const DsspResidue& residue : DsspLibrary().Residues(atoms)) rows.push_back(residue.row);
  return rows;
}

TEST(DsspHelper, AtomsCrossUnchanged) {
  std::vector<AtomRecord> atoms = AtomsOf("1rmd_icode.pdb");
  atoms[0].x = std::nextafter(1.0 / 3.0, 1.0);  // not a value three decimals can write
  atoms[1].bfactor = -0.0;
  const std::vector<AtomRecord> back = ReadHelperAtoms(WriteHelperAtoms(atoms));
  ASSERT_EQ(back.size(), atoms.size());
  for (size_t k = 0; k < atoms.size(); ++k) {
    EXPECT_STREQ(back[k].name, atoms[k].name);
    EXPECT_STREQ(back[k].resname, atoms[k].resname);
    EXPECT_STREQ(back[k].element, atoms[k].element);
    EXPECT_EQ(back[k].chain, atoms[k].chain);
    EXPECT_EQ(back[k].icode, atoms[k].icode);
    EXPECT_EQ(back[k].altloc, atoms[k].altloc);
    EXPECT_EQ(back[k].resnum, atoms[k].resnum);
    EXPECT_EQ(std::memcmp(&back[k].x, &atoms[k].x, sizeof(double)), 0);
    EXPECT_EQ(std::memcmp(&back[k].bfactor, &atoms[k].bfactor, sizeof(double)), 0);
  }
}

TEST(DsspHelper, AnswersThatAreNotRows) {
  const struct {
    std::string answer, reason;
  } kAnswers[] = {
      {"", "another kind"},
      {"Xrows", "another kind"},
      {"R" + std::string(sizeof(DsspRow) + 1, '\0'), "another kind"},
      {"Fno residue with a complete backbone", "no residue with a complete backbone"},
  };
  for (const auto& bad : kAnswers) {
    try {
      ReadHelperRows(bad.answer);
      ADD_FAILURE() << "accepted: " << bad.answer;
    } catch (const std::runtime_error& error) {
      EXPECT_NE(std::string(error.what()).find(bad.reason), std::string::npos) << error.what();
    }
  }
  EXPECT_THROW(ReadHelperAtoms(std::string(7, 'a')), std::runtime_error);
}

TEST(DsspHelper, RowsAreTheLibrarysOverThreads) {
  DsspHelpers helpers(QUARNEL_SECONDARY_HELPER);
  const char* const files[] = {"1crn.pdb", "1rmd_icode.pdb", "2yex.pdb", "1isu.pdb", "1ubi.pdb", "1cuk.pdb"};
  std::vector<std::thread> threads;
  std::vector<int> same(std::size(files), 0);
  for (size_t k = 0; k < std::size(files); ++k)
    threads.emplace_back([&, k] {
      const std::vector<AtomRecord> atoms = AtomsOf(files[k]);
      for (int round = 0; round < 3; ++round) same[k] += SameRows(helpers.Rows(atoms), InProcess(atoms));
    });
  for (std::thread& thread : threads) thread.join();
  for (size_t k = 0; k < std::size(files); ++k) EXPECT_EQ(same[k], 3) << files[k];
  // DSSP's own failure comes back as its reason, and the helper serves the next chain.
  EXPECT_THROW(helpers.Rows({}), std::runtime_error);
  EXPECT_TRUE(SameRows(helpers.Rows(AtomsOf("1crn.pdb")), InProcess(AtomsOf("1crn.pdb"))));
}

TEST(DsspHelper, ForkedProcessesStartHelpersOfTheirOwn) {
  DsspHelpers helpers(QUARNEL_SECONDARY_HELPER);
  const std::vector<AtomRecord> first = AtomsOf("1crn.pdb");
  ASSERT_TRUE(SameRows(helpers.Rows(first), InProcess(first)));  // a helper now waits, idle
  const char* const files[] = {"2yex.pdb", "1cuk.pdb", "1ubi.pdb", "1rmd_icode.pdb"};
  std::vector<pid_t> children;
  for (const char* file : files) {
    const pid_t child = ::fork();
    ASSERT_GE(child, 0);
    if (child == 0) {
      const std::vector<AtomRecord> atoms = AtomsOf(file);
      const std::vector<DsspRow> expected = InProcess(atoms);
      int wrong = 0;
      for (int round = 0; round < 5; ++round) {
        try {
          wrong += !SameRows(helpers.Rows(atoms), expected);
        } catch (const std::exception&) {
          ++wrong;
        }
      }
      std::_Exit(wrong);
    }
    children.push_back(child);
  }
  for (size_t k = 0; k < children.size(); ++k) {
    int status = 0;
    ASSERT_EQ(::waitpid(children[k], &status, 0), children[k]);
    EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0) << files[k] << ": " << status;
  }
  EXPECT_TRUE(SameRows(helpers.Rows(first), InProcess(first)));  // the parent's helper still serves
}

TEST(DsspHelper, HelpersThatCannotServe) {
  const struct {
    const char* program;
    const char* reason;
  } kPrograms[] = {
      {"/nonexistent/quarnel-secondary", "cannot run"},
      {"/bin/true", "broke off"},  // ends at once
      {"/bin/cat", "another kind"},  // echoes the request
  };
  const std::vector<AtomRecord> atoms = AtomsOf("1crn.pdb");
  for (const auto& helper : kPrograms) {
    DsspHelpers helpers(helper.program);
    try {
      helpers.Rows(atoms);
      ADD_FAILURE() << helper.program << " gave rows";
    } catch (const std::runtime_error& error) {
      EXPECT_NE(std::string(error.what()).find(helper.reason), std::string::npos) << error.what();
    }
  }
}

}  // namespace
}  // namespace quarnel::test
