// Whole runs in the relaxed modes (a fixed number of domains, user anchors), with and without
// DSSP, and the failures a user meets first: no DSSP program, missing anchors, a short -ex.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "endtoend_support.h"

namespace {

// 1rmd chain A, 116 residues in one chain: its strands change where a relaxed run cuts it, so a
// run with DSSP and one without give different lines.
constexpr char kStructure[] = "1rmd.pdb";
constexpr int kResidues = 116;

const std::string kDsspUndefined = "DSSP excutable ($DSSP_PATH) undefined. Quit!\n";

class RunModes : public ::testing::Test {
 protected:
  void SetUp() override { CopyStructure(kStructure, dir_, kStructure); }
  std::string Line(const ToolRun& run) {
    EXPECT_EQ(run.status, 0) << run.out << run.err;
    EXPECT_EQ(run.err, "");
    return run.out;
  }

  TempDir dir_;
  const std::vector<ResidueLabel> residues_ = ResiduesOf(kStructure);
};

TEST_F(RunModes, MaxThreeDomainsGivesThreeDomainsCoveringTheChain) {
  ASSERT_EQ(static_cast<int>(residues_.size()), kResidues);
  Report report = CheckReport(Line(RunWithDssp({"-md", "3", kStructure}, dir_.path())), residues_);
  EXPECT_EQ(report.entry, "1rmd");
  EXPECT_EQ(report.domains, 3);
}

// The assessment reads only the chain the input named; a four-character code names the blank
// chain, which 2yex (chain A) does not have, so a run that reaches the assessment with several
// domains stops there. A relaxed run of the same input prints its domains: it is never assessed.
TEST(RelaxedRun, IsNeverAssessed) {
  TempDir dir;
  CopyStructure("2yex.pdb", dir, "pdb/2yex.pdb");
  ToolRun relaxed = RunWithDssp({"-md", "3", "-pdbpath", "pdb/", "2yex"}, dir.path());
  ASSERT_EQ(relaxed.status, 0) << relaxed.out;
  Report report = CheckReport(relaxed.out, ResiduesOf("2yex.pdb"));
  EXPECT_EQ(report.entry, "2yex");
  EXPECT_EQ(report.domains, 3);

  ToolRun assessed = RunWithDssp({"-pdbpath", "pdb/", "2yex"}, dir.path());
  EXPECT_EQ(assessed.status, 15);
  EXPECT_EQ(assessed.out,
            "Something is wrong!!! please check the following:\n"
            " Is the pdb file name in the xxxx.pdb format?\n"
            " Have you specified the chain name if the protein has multiple chains?\n");
}

// -ex fixes the first sample's source and sink; the search still draws its other samples, so
// the anchors need not end on different sides, but the cut differs from the automatic one.
TEST_F(RunModes, UserAnchorsGiveTwoDomains) {
  std::string automatic = Line(RunWithDssp({"-md", "2", kStructure}, dir_.path()));
  std::string anchored = Line(RunWithDssp({"-ex", "10", "50", kStructure}, dir_.path()));
  Report report = CheckReport(anchored, residues_);
  EXPECT_EQ(report.entry, "1rmd");
  EXPECT_EQ(report.domains, 2);
  EXPECT_NE(anchored, automatic);
}

TEST_F(RunModes, MissingAnchorsStopTheRun) {
  ToolRun run = RunWithDssp({"-ex", "500", "600", kStructure}, dir_.path());
  EXPECT_EQ(run.status, 10);
  EXPECT_EQ(run.out, "Extremal points unfound (500, 600). Quit!\n");
  EXPECT_EQ(run.err, "");
}

TEST_F(RunModes, OneDomainAllowedPrintsTheOneDomainLine) {
  EXPECT_EQ(Line(RunWithDssp({"-md", "1", kStructure}, dir_.path())), "1rmd\t116\t1\n");
  // -md right before the input name takes the name as its value: atoi("rmd.pdb") is 0.
  CopyStructure(kStructure, dir_, "rmd.pdb");
  EXPECT_EQ(Line(RunWithDssp({"-md", "rmd.pdb"}, dir_.path())), "rmd\t116\t1\n");
}

TEST_F(RunModes, NoSecondaryStructureNeedsNoDssp) {
  std::string line = Line(RunTool({"-noss", "-md", "3", kStructure}, dir_.path()));
  EXPECT_EQ(CheckReport(line, residues_).domains, 3);
  EXPECT_EQ(Line(RunTool({"-noss", kStructure}, dir_.path())), "1rmd\t116\t1\n");
  EXPECT_FALSE(FileExists(dir_.File("dssp.log")));
}

TEST_F(RunModes, DsspPathUnsetStopsARunThatNeedsDssp) {
  ToolRun run = RunTool({kStructure}, dir_.path());
  EXPECT_EQ(run.status, 1);
  EXPECT_EQ(run.out, kDsspUndefined);
  EXPECT_EQ(run.err, "");
  EXPECT_FALSE(FileExists(dir_.File("1rmd.dssp")));
}

// A DSSP that fails leaves its output empty: no strands, as if -noss had been given.
TEST_F(RunModes, FailingDsspRunsOnWithoutSecondaryStructure) {
  std::string withDssp = Line(RunWithDssp({"-md", "3", kStructure}, dir_.path()));
  std::string without = Line(RunTool({"-noss", "-md", "3", kStructure}, dir_.path()));
  ASSERT_NE(withDssp, without) << "the strands of this chain no longer change its cuts";
  std::string failed =
      Line(RunTool({"-md", "3", kStructure}, dir_.path(), {"DSSP_PATH=/bin/false"}));
  EXPECT_EQ(failed, without);
  EXPECT_FALSE(FileExists(dir_.File("1rmd.dssp")));
}

// DSSP_PATH is a command, not a file name: it may carry words of its own.
TEST_F(RunModes, DsspPathIsUsedAsWritten) {
  std::string withDssp = Line(RunWithDssp({"-md", "3", kStructure}, dir_.path()));
  std::string without = Line(RunTool({"-noss", "-md", "3", kStructure}, dir_.path()));
  ASSERT_NE(withDssp, without);
  std::string wrapped =
      Line(RunTool({"-md", "3", kStructure}, dir_.path(), {"DSSP_PATH=env " + DsspAdapter()}));
  EXPECT_EQ(wrapped, withDssp);
}

TEST_F(RunModes, AnchorValuesMayNotLiePastTheInputName) {
  ToolRun tooShort = RunWithDssp({"-ex", kStructure}, dir_.path());
  EXPECT_EQ(tooShort.status, 2);
  EXPECT_EQ(tooShort.out, "");
  ASSERT_FALSE(tooShort.err.empty());
  EXPECT_EQ(tooShort.err.find('\n'), tooShort.err.size() - 1) << "one line: " << tooShort.err;
  EXPECT_NE(tooShort.err.find("-ex"), std::string::npos) << tooShort.err;
  EXPECT_FALSE(FileExists(dir_.File("dssp.log"))) << "the run went on";

  // The input name is the last value -ex may take: atoi("1rmd.pdb") makes residue 1 an anchor.
  ToolRun run = RunWithDssp({"-ex", "7", kStructure}, dir_.path());
  EXPECT_EQ(CheckReport(Line(run), residues_).domains, 2);
}

}  // namespace
