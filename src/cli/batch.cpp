// The batch run: inputs expanded into structure files, each file read once (PDB or mmCIF, gzip
// or not) and its chains judged in memory, several files at once; results written in input
// order as soon as every earlier input is done, so that an interrupted run keeps a clean prefix.
#include "cli/batch.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>

#include "base/workers.h"
#include "cli/batch_chains.h"
#include "cli/external_dssp.h"
#include "cli/interrupts.h"
#include "cli/result_sink.h"
#include "cli/results_file.h"

namespace quarnel {

namespace {

int Cores() { return WorkerPool::DefaultThreads(); }

void SayWaiting(const std::string& path) {
  std::fprintf(stderr, "quarnel: %s is being written by another quarnel run; waiting for it to end\n",
               path.c_str());
}

void SayNothing(const std::string&) {}

int Summary(const ResultSink& sink) {
  if (!sink.writeFailure().empty()) {
    std::fprintf(stderr, "quarnel: %s\n", sink.writeFailure().c_str());
    return static_cast<int>(Status::kWriteFailed);
  }
  if (sink.failures() > 0) {
    std::fprintf(stderr, "quarnel: %d of %d chain%s failed\n", sink.failures(), sink.chains(),
                 sink.chains() == 1 ? "" : "s");
    return kSomeInputsFailed;
  }
  return 0;
}

}  // namespace

bool UsesDsspLibrary(const BatchOptions& options) {
  return options.params.FlagSS == 1 && !UsesExternalDssp(options);
}

int RunBatch(const BatchOptions& options) {
  // Before any thread starts: every thread of the run leaves the stopping signals to the guard.
  TemporaryFiles temporaries;
  const InterruptGuard guard(temporaries);
  const std::vector<Input> inputs = ExpandInputs(options);
  const DsspLibrary dssp;
  const char* dsspPath = std::getenv("DSSP_PATH");
  const bool external = UsesExternalDssp(options);
  if (external && dsspPath == nullptr)
    Fail(Status::kBadOption, Stream::kStderr, "quarnel: --dssp external needs DSSP_PATH\n");
  if (external) RemoveAbandonedFolders();

  // Chains at once, and each chain's engine threads, sharing the machine's cores.
  const int jobs = std::max(1, std::min<int>(options.jobs > 0 ? options.jobs : Cores(),
                                             static_cast<int>(std::max<size_t>(inputs.size(), 1))));
  ResultsFile file(options, inputs, options.quiet ? SayNothing : SayWaiting);
  BatchContext batch{options, dssp, external ? dsspPath : nullptr, std::max(1, Cores() / jobs),
                     file.done(), &temporaries};
  ResultSink sink(options, file, inputs.size(), batch.stop);
  WorkerPool pool(jobs);
  pool.ParallelFor(static_cast<int>(inputs.size()), [&](int index, int) {
    InputResult result;
    try {
      result = RunInput(batch, inputs[static_cast<size_t>(index)]);
    } catch (const std::exception& error) {
      result.chains.push_back(FailedOutcome(inputs[static_cast<size_t>(index)], "", error.what()));
    }
    sink.Done(static_cast<size_t>(index), std::move(result));
  });
  sink.Finish();
  return Summary(sink);
}

}  // namespace quarnel
