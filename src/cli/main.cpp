// quarnel: splits a protein chain into structural domains and prints them on one line.
#include <cstdio>
#include <cstdlib>
#include <new>

#include "cli/inputs.h"
#include "cli/options.h"
#include "cli/shell_dssp.h"
#include "run/chain.h"

namespace quarnel {

namespace {

constexpr int kMaxThreads = 1024;

void Print(const Message& message) {
  std::fputs(message.text.c_str(), message.stream == Stream::kStderr ? stderr : stdout);
}

void PrintAll(const std::vector<Message>& messages) {
  for (const Message& message : messages) Print(message);
}

// QUARNEL_THREADS: threads for the samples of a partition level; the cores when not set.
int EngineThreads() {
  const char* text = std::getenv("QUARNEL_THREADS");
  if (text == nullptr || *text == '\0') return WorkerPool::DefaultThreads();
  char* end = nullptr;
  const long threads = std::strtol(text, &end, 10);
  if (*end != '\0' || threads < 1 || threads > kMaxThreads) {
    std::fprintf(stderr, "quarnel: QUARNEL_THREADS=%s is not a number of threads (1 to %d); using %d\n",
                 text, kMaxThreads, WorkerPool::DefaultThreads());
    return WorkerPool::DefaultThreads();
  }
  return static_cast<int>(threads);
}

int PrintFailure(const Failure& failure) {
  if (!failure.hint().empty()) std::fprintf(stderr, "%s\n", failure.hint().c_str());
  Print(Message{failure.stream(), failure.what()});
  return failure.exit_status();
}

// The designed run: one input, the report on standard output.
int RunDesigned(int argc, const char* const* argv) {
  const CommandLine line = ParseOptions(argc, argv);
  ResolvedInput input = ResolveInput(line);
  PrintAll(input.messages);

  const FileSource lines(input.templateName);
  const ChainInput chain{&lines, input.entry, input.chain, input.pdbName};
  // An earlier DSSP output is reused only for a code, never beside a named file.
  ShellDssp dssp(input.templateName, input.base + ".dssp", !input.namedFile);
  WorkerPool workers(EngineThreads());
  RunContext context;
  context.workers = &workers;
  ChainResult result;
  try {
    result = RunChain(chain, line.params, &dssp, context);
  } catch (const Failure&) {
    PrintAll(context.messages);
    throw;
  }
  PrintAll(context.messages);
  std::fputs(result.report.c_str(), stdout);

  // The DSSP output of this run is removed; a run without DSSP (-noss) has none, and must not
  // remove a file of that name that it never wrote or read.
  if (line.params.FlagSS == 1) RunShell("rm " + ShellFileWord(input.entry + ".dssp"));
  return 0;
}

}  // namespace

}  // namespace quarnel

int main(int argc, char** argv) {
  try {
    return quarnel::RunDesigned(argc, argv);
  } catch (const quarnel::Failure& failure) {
    return quarnel::PrintFailure(failure);
  } catch (const std::bad_alloc&) {
    return quarnel::PrintFailure(quarnel::Failure(quarnel::Status::kAllocation,
                                                  quarnel::Stream::kStdout,
                                                  quarnel::kAllocationFailedText));
  }
}
