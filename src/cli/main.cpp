// quarnel: splits protein chains into structural domains. A command line of the classic options
// and one input is the classic run, exactly; long options, -j and several inputs make a batch
// run; inputs the classic run would refuse or misread (mmCIF, gzip, codes kept under other
// names) are read through the structure-file front end. This file is the only place that prints
// and exits.
#include <malloc.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <new>

#include "app/batch.h"
#include "app/classic_run.h"
#include "app/handoff.h"
#include "cli/interrupts.h"
#include "cli/options.h"

namespace quarnel {

namespace {

// Lines go out as the run meets them, standard output buffered as before.
class StandardStreams final : public Console {
 public:
  void Print(Stream stream, const std::string& text) override {
    std::fputs(text.c_str(), stream == Stream::kStderr ? stderr : stdout);
  }
  bool ShowsProgress() const override { return isatty(STDERR_FILENO) != 0; }
};

int PrintFailure(const Failure& failure) {
  std::fputs(failure.what(), failure.stream() == Stream::kStderr ? stderr : stdout);
  std::fflush(stdout);
  if (!failure.hint().empty()) std::fprintf(stderr, "%s\n", failure.hint().c_str());
  return failure.exit_status();
}

// Runs a batch here; or, when the batch needs DSSP's library and this program was built without
// it, has the program built with it run the batch: the same command line, the same environment,
// in this process's place.
int RunBatchOrHandOver(const BatchOptions& batch, const char* const* argv) {
  if (NeedsFullProgram(batch)) {
    std::fputs(HandOver(argv).c_str(), stderr);
    return static_cast<int>(Status::kNoFullProgram);
  }
  StandardStreams console;
  // Before any thread starts: every thread of the run leaves the stopping signals to the guard.
  TemporaryFiles temporaries;
  const InterruptGuard guard(temporaries);
  BatchIo io{console, stdin, STDOUT_FILENO, temporaries};
  return RunBatch(batch, io);
}

// The status, unless what was printed on standard output could not all be written (a full disk
// under a redirection): a report lost must not end as a success.
int FlushedOutput(int status) {
  if (std::fflush(stdout) == 0 && std::ferror(stdout) == 0) return status;
  std::fprintf(stderr, "quarnel: cannot write standard output: %s\n", std::strerror(errno));
  return static_cast<int>(Status::kWriteFailed);
}

int Run(int argc, const char* const* argv) {
  switch (ClassifyCommandLine(argc, argv)) {
    case RunKind::kHelp:
      std::fputs(HelpText().c_str(), stdout);
      return 0;
    case RunKind::kVersion:
      std::fputs(VersionText().c_str(), stdout);
      return 0;
    case RunKind::kBatch:
      return RunBatchOrHandOver(ParseBatch(argc, argv), argv);
    case RunKind::kClassic:
      break;
  }
  const CommandLine line = ParseClassic(argc, argv);
  BatchOptions batch;
  if (ReadTheBatchWay(line, batch)) return RunBatchOrHandOver(batch, argv);
  StandardStreams console;
  return RunClassic(line, console);
}

}  // namespace

}  // namespace quarnel

int main(int argc, char** argv) {
  // A partition level allocates and frees the same buffers for every sample. By default the
  // allocator hands blocks of a few hundred kilobytes back to the system and maps them afresh
  // each time, and every new page costs a fault; keeping freed memory for reuse makes runs
  // about a tenth faster. Blocks of the largest chains' contact maps are still mapped apart.
  mallopt(M_MMAP_THRESHOLD, 32 << 20);
  mallopt(M_TRIM_THRESHOLD, 64 << 20);
  try {
    return quarnel::FlushedOutput(quarnel::Run(argc, argv));
  } catch (const quarnel::Failure& failure) {
    return quarnel::PrintFailure(failure);
  } catch (const std::bad_alloc&) {
    return quarnel::PrintFailure(quarnel::Failure(quarnel::Status::kAllocation, quarnel::Stream::kStdout,
                                                  quarnel::kAllocationFailedText));
  }
}
