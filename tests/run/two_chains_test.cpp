// Several chains run one after another in one process, with one run context, give exactly the
// reports that separate processes of the tool give (the lines of the golden table).
#include <gtest/gtest.h>

#include "formats/pdb_records.h"
#include "run/chain.h"
#include "support.h"

namespace quarnel {
namespace {

// Secondary structure from a DSSP output held in memory.
class StoredDssp final : public SecondaryStructureSource {
 public:
  explicit StoredDssp(std::string text) : text_(std::move(text)) {}
  SecondaryStructure Read(const Structure& structure, std::vector<Message>&) override {
    return ReadDsspTable(TextSource("stored.dssp", text_), structure.residues);
  }

 private:
  std::string text_;
};

TEST(RunChain, ChainsInTurnWithOneContextMatchSeparateProcesses) {
  struct Run {
    const char* entry;
    int32_t maxNumDom;
    bool dssp;
    const char* report;
  };
  const Run runs[] = {
      // The assessment judges and accepts this one.
      {"2efj", 100, false, "2efj\t348\t2\t (3-138) (139-379)\n"},
      {"1rmd", 3, true, "1rmd\t116\t3\t (34-76) (1-33;77-87) (88-116)\n"},
      {"1cuk", 3, false, "1cuk\t190\t3\t (1-93) (156-203) (94-142)\n"},
      // The first again: nothing of the runs between reaches it.
      {"2efj", 100, false, "2efj\t348\t2\t (3-138) (139-379)\n"},
  };
  StoredDssp dssp(test::ReadFile(test::DataFile("1rmd.dssp")));
  RunContext context;
  for (const Run& run : runs) {
    const FileSource file(test::DataFile(std::string(run.entry) + ".pdb"));
    const PdbLineRecords records(file);
    const ChainInput input{&records, run.entry, kFirstResidueChain, file.name()};
    Params params;
    params.MaxNumDom = run.maxNumDom;
    params.FlagSS = run.dssp ? 1 : 0;
    ApplyRelaxedMode(params);
    const ChainResult result = RunChain(input, params, &dssp, context);
    EXPECT_EQ(result.report, run.report);
    EXPECT_TRUE(context.messages.empty()) << run.entry;
  }
}

// The samples of a level and the domains of a partition spread over threads: every thread count
// gives the single thread's partition, cut for cut, and its report.
TEST(RunChain, ThreadsChangeNothing) {
  const FileSource file(test::DataFile("2yex.pdb"));
  const PdbLineRecords records(file);
  const ChainInput input{&records, "2yex", kFirstResidueChain, file.name()};
  Params params;
  params.FlagSS = 0;
  RunContext single;
  const ChainResult expected = RunChain(input, params, nullptr, single);
  for (int threads : {2, 3, 7}) {
    WorkerPool workers(threads);
    RunContext context;
    context.workers = &workers;
    const ChainResult result = RunChain(input, params, nullptr, context);
    EXPECT_EQ(result.report, expected.report) << threads;
    ASSERT_EQ(result.partition.domainCount, expected.partition.domainCount) << threads;
    for (int k = 0; k + 1 < expected.partition.domainCount; ++k) {
      EXPECT_EQ(result.partition.cuts[k].parent, expected.partition.cuts[k].parent);
      EXPECT_EQ(result.partition.cuts[k].interface, expected.partition.cuts[k].interface);
    }
  }
}

}  // namespace
}  // namespace quarnel
