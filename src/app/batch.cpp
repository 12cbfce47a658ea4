// The batch run: inputs expanded into structure files, each file read once (PDB or mmCIF, gzip
// or not) and its chains judged in memory, several files at once; results written in input
// order as soon as every earlier input is done, so that an interrupted run keeps a clean prefix.
#include "app/batch.h"

#include <algorithm>
#include <cstdlib>

#include "app/batch_chains.h"
#include "app/result_sink.h"
#include "app/results_file.h"
#include "base/text.h"
#include "base/workers.h"
#include "secondary/external_dssp.h"

namespace quarnel {

namespace {

int Cores() { return WorkerPool::DefaultThreads(); }

int Summary(const ResultSink& sink, Console& console) {
  if (!sink.writeFailure().empty()) {
    console.Print(Stream::kStderr, "quarnel: " + sink.writeFailure() + "\n");
    return static_cast<int>(Status::kWriteFailed);
  }
  if (sink.failures() > 0) {
    console.Print(Stream::kStderr, Format("quarnel: %d of %d chain%s failed\n", sink.failures(), sink.chains(),
                                          sink.chains() == 1 ? "" : "s"));
    return static_cast<int>(Status::kSomeInputsFailed);
  }
  return static_cast<int>(Status::kCompleted);
}

}  // namespace

int RunBatch(const BatchOptions& options, BatchIo& io) {
  const std::vector<Input> inputs = ExpandInputs(options, io.input);
  const DsspLibrary dssp;
  const char* dsspPath = std::getenv("DSSP_PATH");
  const bool external = UsesExternalDssp(options);
  if (external && dsspPath == nullptr)
    Fail(Status::kBadOption, Stream::kStderr, "quarnel: --dssp external needs DSSP_PATH\n");
  if (external) RemoveAbandonedFolders();

  // Chains at once, and each chain's engine threads, sharing the machine's cores.
  const int jobs = std::max(1, std::min<int>(options.jobs > 0 ? options.jobs : Cores(),
                                             static_cast<int>(std::max<size_t>(inputs.size(), 1))));
  ResultsFile file(options, inputs, io.output, [&](const std::string& path) {
    if (!options.quiet)
      io.console.Print(Stream::kStderr, "quarnel: " + path + " is being written by another quarnel run; "
                                        "waiting for it to end\n");
  });
  BatchContext batch{options, dssp, external ? dsspPath : nullptr, std::max(1, Cores() / jobs),
                     file.done(), &io.temporaries, io.input, false, nullptr, nullptr};
  ResultSink sink(options, file, inputs.size(), batch.stop, io.console);
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
  return Summary(sink, io.console);
}

}  // namespace quarnel
