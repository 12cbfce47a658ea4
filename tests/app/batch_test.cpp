// Batch runs as a pipeline uses them: a folder of structures, every chain, a results file in
// another folder; the working folder left as it was; an interrupted results file resumed.
#include <gtest/gtest.h>
#include <sys/stat.h>

#include "support.h"

namespace quarnel::test {
namespace {

std::vector<std::string> Lines(const std::string& text) {
  std::vector<std::string> lines;
  std::istringstream in(text);
  for (std::string line; std::getline(in, line);) lines.push_back(line);
  return lines;
}

// A row without time_sec, which differs from run to run.
std::string Stable(const std::string& row) {
  size_t at = 0;
  for (int tabs = 0; tabs < 6 && at != std::string::npos; ++tabs) at = row.find('\t', at + 1);
  if (at == std::string::npos) return row;
  const size_t end = row.find('\t', at + 1);
  return row.substr(0, at) + (end == std::string::npos ? "" : row.substr(end));
}

TEST(Batch, RowsEqualSingleRunsAndNothingIsWrittenBeside) {
  Scratch work;
  ASSERT_EQ(mkdir((work / "in").c_str(), 0755), 0);
  ASSERT_EQ(mkdir((work / "out").c_str(), 0755), 0);
  for (const char* file : {"1isu.pdb", "2yex.pdb", "1rmd.pdb"})
    WriteFile(work / ("in/" + std::string(file)), ReadFile(DataFile(file)));
  const std::string before = work.Listing();
  const ToolRun batch =
      RunTool(work.path(), {"-noss", "-j", "2", "--format", "tsv", "--out", "out/all.tsv", "in"});
  ASSERT_EQ(batch.status, 0) << batch.err;
  EXPECT_EQ(work.Listing(), before);
  const std::vector<std::string> rows = Lines(ReadFile(work / "out/all.tsv"));
  ASSERT_EQ(rows.size(), 6u);  // options, columns, 1isu A and B, 1rmd A, 2yex A
  EXPECT_EQ(rows[0], "# quarnel 1.0.0 results; options: -noss");
  EXPECT_EQ(rows[1], "chain_id\tsequence_md5\tnres\tndom\tchopping\tconfidence\ttime_sec\t"
                     "verdict\tinput\tchain\tdomain_confidences\tmode\tboundaries");
  // Each chain as a single run of its own, with the chain's domains in chain order.
  const ToolRun single = RunTool(work.path(), {"-noss", "--chain", "A", "--format", "tsv", "in/2yex.pdb"});
  EXPECT_EQ(Stable(rows[5]), Stable(Lines(single.out)[2]));
  EXPECT_EQ(rows[5].substr(0, rows[5].find('\t')), "2yexA");
  EXPECT_NE(rows[5].find("\t2\t2-86,87-270\t"), std::string::npos) << rows[5];

  // A run killed while writing its fourth line, resumed: the half line is dropped, the two
  // chains on file are not judged again, the others are appended.
  const std::string cut = rows[0] + "\n" + rows[1] + "\n" + rows[2] + "\n" + rows[3] + "\n" + rows[4].substr(0, 10);
  WriteFile(work / "out/resumed.tsv", cut);
  const ToolRun resumed = RunTool(work.path(), {"-noss", "--format", "tsv", "--out",
                                                "out/resumed.tsv", "--resume", "in"});
  ASSERT_EQ(resumed.status, 0) << resumed.err;
  const std::vector<std::string> again = Lines(ReadFile(work / "out/resumed.tsv"));
  ASSERT_EQ(again.size(), rows.size());
  for (size_t i = 0; i < rows.size(); ++i) EXPECT_EQ(Stable(again[i]), Stable(rows[i]));
  EXPECT_EQ(again[2], rows[2]);  // kept as it was, time included
}

// The cluster workflow on a few bundled structures, locally: the merged table is the direct
// batch's. Skipped where Snakemake is not installed.
TEST(Batch, SnakemakeWorkflowMergesShardsIntoTheBatchTable) {
  if (std::system("command -v snakemake >/dev/null 2>&1") != 0) GTEST_SKIP() << "no snakemake";
  Scratch work;
  ASSERT_EQ(mkdir((work / "in").c_str(), 0755), 0);
  for (const char* file : {"1crn.pdb", "1isu.pdb", "2yex.pdb"})
    WriteFile(work / ("in/" + std::string(file)), ReadFile(DataFile(file)));
  const std::string tool = Setting("QUARNEL_BIN", QUARNEL_TOOL);
  const std::string command = "cd " + Quote(work.path()) + " && snakemake -q --snakefile " +
                              Quote(SourceDir() + "/workflow/Snakefile") +
                              " --cores 2 --config structures=in out=merged.tsv shards=2 quarnel=" +
                              Quote(tool) + " options=-noss >snakemake.log 2>&1";
  ASSERT_EQ(std::system(command.c_str()), 0) << ReadFile(work / "snakemake.log");
  // The workflow names its inputs by absolute path, which the rows' input column shows.
  const ToolRun direct = RunTool(work.path(), {"-noss", "--format", "tsv", work / "in"});
  const std::vector<std::string> merged = Lines(ReadFile(work / "merged.tsv"));
  const std::vector<std::string> rows = Lines(direct.out);
  ASSERT_EQ(merged.size(), rows.size());
  for (size_t i = 0; i < rows.size(); ++i) EXPECT_EQ(Stable(merged[i]), Stable(rows[i]));
}

}  // namespace
}  // namespace quarnel::test
