// The chopper: each call a batch run of its own over the inputs it is given, with no results
// file and nothing printed, so that its results are the command line's for the same inputs.
#include <algorithm>
#include <atomic>

#include "app/batch_chains.h"
#include "app/batch_inputs.h"
#include "base/status.h"
#include "base/workers.h"
#include "secondary/dssp_helper.h"
#include "library/chopper_internal.h"
#include "library/conversions.h"
#include "quarnel/quarnel.h"

namespace quarnel {

struct Chopper::Impl {
  Options options;
  BatchOptions batch;
  DsspLibrary dssp;
  std::unique_ptr<DsspHelpers> dsspHelpers;  // none unless the bindings name the program

  // What every chain of one call shares; `jobs` inputs run at once share the cores.
  std::unique_ptr<BatchContext> Context(const BatchOptions& batchOptions, int jobs) const {
    const int cores = WorkerPool::DefaultThreads();
    const int threads = options.threads > 0 ? options.threads : std::max(1, cores / std::max(1, jobs));
    auto context = std::unique_ptr<BatchContext>(
        new BatchContext{batchOptions, dssp, nullptr, threads, {}, nullptr, nullptr, false, dsspHelpers.get(), nullptr});
    return context;
  }
};

namespace {

// The inputs as a batch run expands them; a failure to (status 2) as an Error.
std::vector<Input> Inputs(BatchOptions& options, const std::vector<std::string>& names) {
  options.inputs = names;
  try {
    return ExpandInputs(options, nullptr);
  } catch (const Failure& failure) {
    throw Error(failure.exit_status(), failure.what());
  }
}

// The results of one input, or its failure thrown when no chain of it could be judged, or when
// the one chain asked for could not.
std::vector<Result> ResultsOrError(const Input& input, InputResult&& outcomes, bool oneChain) {
  std::vector<Result> results = ResultsOf(input, std::move(outcomes));
  const bool anyJudged = std::any_of(results.begin(), results.end(), [](const Result& r) { return r.ok(); });
  if (results.empty()) throw Error(static_cast<int>(Status::kSomeInputsFailed), input.name + ": no chain judged");
  if (!anyJudged && (oneChain || results.size() == 1 || results.front().chain.empty())) {
    const Result& failed = results.front();
    const std::string what = failed.chain.empty() ? input.name : input.name + " chain " + failed.chain;
    throw Error(failed.status, what + ": " + failed.error);
  }
  return results;
}

}  // namespace

Chopper::Chopper(const Options& options) : impl_(new Impl{options, BatchOptionsOf(options), {}, {}}) {}
Chopper::~Chopper() = default;
Chopper::Chopper(Chopper&&) noexcept = default;
Chopper& Chopper::operator=(Chopper&&) noexcept = default;

const Options& Chopper::options() const { return impl_->options; }

std::vector<Result> Chopper::ChopFile(const std::string& path, const std::string& chain) const {
  BatchOptions options = impl_->batch;
  options.chain = chain;
  const std::vector<Input> inputs = Inputs(options, {path});
  std::unique_ptr<BatchContext> context = impl_->Context(options, 1);
  std::vector<Result> results;
  for (const Input& input : inputs) {
    std::vector<Result> some = ResultsOrError(input, RunInput(*context, input), !chain.empty());
    std::move(some.begin(), some.end(), std::back_inserter(results));
  }
  return results;
}

std::vector<Result> Chopper::ChopBytes(const std::string& bytes, const std::string& name,
                                       const std::string& chain) const {
  BatchOptions options = impl_->batch;
  options.chain = chain;
  Input input;
  input.name = input.path = name;
  input.entry = input.fileStem = EntryOf(name);
  std::unique_ptr<BatchContext> context = impl_->Context(options, 1);
  InputResult outcomes;
  try {
    outcomes = RunFile(*context, input, StructureFile::FromBytes(name, bytes));
  } catch (const std::exception& failure) {
    outcomes.chains.push_back(FailedOutcome(input, "", failure.what()));
  }
  return ResultsOrError(input, std::move(outcomes), !chain.empty());
}

Result Chopper::ChopAtoms(const std::vector<PdbAtom>& atoms, const std::string& name,
                          const SecondaryTable* secondary) const {
  const BatchOptions& options = impl_->batch;
  Input input;
  input.name = input.path = name;
  input.entry = input.fileStem = name;
  std::unique_ptr<BatchContext> context = impl_->Context(options, 1);
  const std::vector<DsspRow> rows = secondary != nullptr ? DsspRowsOf(*secondary) : std::vector<DsspRow>();
  if (secondary != nullptr) context->givenDssp = &rows;
  const char judged = atoms.empty() ? ' ' : atoms.front().chain;
  InputResult outcomes;
  outcomes.chains.push_back(RunRecords(*context, input, RecordsOf(atoms), judged, "", outcomes.notes));
  return ResultsOrError(input, std::move(outcomes), true).front();
}

std::vector<Result> Chopper::ChopAll(const std::vector<std::string>& paths, int jobs) const {
  BatchOptions options = impl_->batch;
  const std::vector<Input> inputs = Inputs(options, paths);
  const int threads = std::max(1, std::min<int>(jobs > 0 ? jobs : WorkerPool::DefaultThreads(),
                                                static_cast<int>(std::max<size_t>(inputs.size(), 1))));
  std::unique_ptr<BatchContext> context = impl_->Context(options, threads);
  std::vector<std::vector<Result>> each(inputs.size());
  WorkerPool pool(threads);
  pool.ParallelFor(static_cast<int>(inputs.size()), [&](int index, int) {
    const Input& input = inputs[static_cast<size_t>(index)];
    InputResult outcomes;
    try {
      outcomes = RunInput(*context, input);
    } catch (const std::exception& failure) {
      outcomes.chains.push_back(FailedOutcome(input, "", failure.what()));
    }
    each[static_cast<size_t>(index)] = ResultsOf(input, std::move(outcomes));
  });
  std::vector<Result> results;
  for (std::vector<Result>& some : each) std::move(some.begin(), some.end(), std::back_inserter(results));
  return results;
}

void SetDsspHelper(Chopper& chopper, const std::string& program) {
  chopper.impl_->dsspHelpers = program.empty() ? nullptr : std::make_unique<DsspHelpers>(program);
}

std::string ResidueId::Label() const {
  std::string label = std::to_string(number);
  if (insertion != ' ') label += insertion;
  return label;
}

}  // namespace quarnel
