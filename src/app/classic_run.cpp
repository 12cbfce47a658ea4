// The classic run of one input, as quarnel always ran it: the input resolved (a code's chain copied, locked
// against runs beside it), the chain run with DSSP through the shell, the DSSP output removed.
#include "app/classic_run.h"

#include <cstdlib>
#include <memory>

#include "app/classic_hints.h"
#include "base/text.h"
#include "base/workers.h"
#include "formats/pdb_records.h"
#include "run/chain.h"
#include "secondary/shell_command.h"
#include "secondary/shell_dssp.h"

namespace quarnel {

namespace {

constexpr int kMaxThreads = 1024;

void PrintAll(Console& console, const std::vector<Message>& messages) {
  for (const Message& message : messages) console.Print(message.stream, message.text);
}

}  // namespace

int EngineThreads(std::string& warning) {
  const char* text = std::getenv("QUARNEL_THREADS");
  if (text == nullptr || *text == '\0') return WorkerPool::DefaultThreads();
  char* end = nullptr;
  const long threads = std::strtol(text, &end, 10);
  if (*end != '\0' || threads < 1 || threads > kMaxThreads) {
    warning = Format("quarnel: QUARNEL_THREADS=%s is not a number of threads (1 to %d); using %d\n", text,
                     kMaxThreads, WorkerPool::DefaultThreads());
    return WorkerPool::DefaultThreads();
  }
  return static_cast<int>(threads);
}

int RunClassic(const CommandLine& line, Console& console) {
  // Held until the DSSP output is removed: runs side by side that share a file wait.
  ClassicLocks locks;
  ResolvedInput input;
  RunContext context;
  std::unique_ptr<ShellDssp> dssp;
  try {
    input = ResolveInput(line, locks);
    PrintAll(console, input.messages);

    const FileSource file(input.templateName);
    const PdbLineRecords records(file);
    const ChainInput chain{&records, input.entry, input.chain, input.pdbName};
    // An earlier DSSP output is reused only for a code, never beside a named file.
    dssp = std::make_unique<ShellDssp>(input.templateName, input.base + ".dssp", !input.namedFile, locks);
    std::string warning;
    WorkerPool workers(EngineThreads(warning));
    if (!warning.empty()) console.Print(Stream::kStderr, warning);
    context.workers = &workers;
    const ChainResult result = RunChain(chain, line.params, dssp.get(), context);
    PrintAll(console, context.messages);
    console.Print(Stream::kStdout, result.report);
  } catch (const Failure& failure) {
    PrintAll(console, context.messages);
    throw Failure(failure.status(), failure.stream(), failure.what(),
                  failure.hint().empty() ? HintFor(failure, line, input, dssp.get()) : failure.hint());
  }
  // The DSSP output of this run is removed; a run without DSSP (-noss) has none, and must not
  // remove a file of that name that it never wrote or read.
  if (line.params.FlagSS == 1) RunShell("rm " + ShellFileWord(input.entry + ".dssp"));
  return 0;
}

}  // namespace quarnel
