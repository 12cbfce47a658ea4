// Benchmark probe: runs a quarnel command line and prints the partition as found, before the
// confidence assessment judged it. Comparing it with quarnel's own report tells whether the
// assessment accepted the partition at once, after merging cuts back, or down to one domain.
#include <cstdio>

#include "app/classic_input.h"
#include "cli/options.h"
#include "formats/pdb_records.h"
#include "run/chain.h"
#include "secondary/shell_command.h"
#include "secondary/shell_dssp.h"

int main(int argc, char** argv) {
  using namespace quarnel;
  try {
    const CommandLine line = ParseClassic(argc, argv);
    ClassicLocks locks;
    const ResolvedInput input = ResolveInput(line, locks);
    const FileSource file(input.templateName);
    const PdbLineRecords records(file);
    ShellDssp dssp(input.templateName, input.base + ".dssp", !input.namedFile, locks);
    RunContext context;
    const ChainResult result =
        RunChain(ChainInput{&records, input.entry, input.chain, input.pdbName}, line.params, &dssp, context);
    const std::string report = result.found.empty()
                                   ? FormatOneDomain(input.entry, result.structure.size())
                                   : FormatReport(input.entry, result.structure.size(), result.found);
    std::fputs(report.c_str(), stdout);
    if (line.params.FlagSS == 1) RunShell("rm " + ShellFileWord(input.entry + ".dssp"));
    return 0;
  } catch (const Failure& failure) {
    std::fputs(failure.what(), failure.stream() == Stream::kStderr ? stderr : stdout);
    return failure.exit_status();
  }
}
