// One input's chains, judged in memory one after the other: the text each run reads, its
// secondary structure, the checks before the engine starts, and the files the options ask for.
#include "cli/batch_chains.h"

#include <chrono>
#include <iostream>
#include <iterator>
#include <memory>
#include <stdexcept>

#include "base/text.h"
#include "base/workers.h"
#include "cli/chain_choice.h"
#include "cli/cath_results.h"
#include "cli/chain_plausibility.h"
#include "cli/external_dssp.h"
#include "cli/low_confidence.h"
#include "cli/pictures.h"
#include "cli/resume.h"
#include "secondary/dssp_source.h"

namespace quarnel {

namespace {

std::unique_ptr<SecondaryStructureSource> SecondarySource(const BatchContext& batch,
                                                          const std::string& text,
                                                          const std::string& name) {
  if (batch.dsspPath != nullptr)
    return std::make_unique<ExternalDssp>(batch.dsspPath, text, name, batch.temporaries);
  return std::make_unique<BuiltinDssp>(batch.dssp, name);
}

std::string FirstLine(const std::string& text) { return text.substr(0, text.find('\n')); }

// Lines a run printed on its way go to standard error in batch runs, where standard output
// (or the results file) holds results only.
void NoteMessages(const std::vector<Message>& messages, const std::string& entry,
                  std::vector<std::string>& notes) {
  for (const Message& message : messages) {
    std::string text = message.text;
    while (!text.empty() && text.back() == '\n') text.pop_back();
    if (text.rfind("quarnel: ", 0) == 0)
      notes.push_back(text.substr(9));
    else
      notes.push_back(entry + ": " + text);
  }
}

int JudgedChain(const StructureFile& file, const std::string& chainId) {
  for (const ChainInfo& info : file.chains())
    if (!chainId.empty() && info.id == chainId) return static_cast<unsigned char>(info.text_id);
  return kFirstResidueChain;
}

// The text the run reads: the chain (or the whole file), less the residues below --min-plddt.
void PrepareText(const BatchOptions& options, const StructureFile& file, const std::string& chainId,
                 ChainOutcome& outcome, std::vector<ResidueMark>& marks, std::vector<std::string>& notes) {
  outcome.text = chainId.empty() ? file.WholeText() : file.ChainText(chainId);
  if (!options.filterPlddt) return;
  ConfidentText kept = LeaveOutLowConfidence(outcome.text, options.minPlddt);
  outcome.text = std::move(kept.text);
  outcome.leftOut = kept.leftOut;
  marks = std::move(kept.marks);
  notes.push_back(Format("%s: left out %d of %zu residues below pLDDT %g", outcome.entry.c_str(),
                         kept.leftOut, marks.size(), options.minPlddt));
}

void RunOneChain(const BatchContext& batch, const Input& input, const StructureFile& file,
                 const std::string& chainId, ChainOutcome& outcome, std::vector<std::string>& notes) {
  const BatchOptions& options = batch.options;
  const auto started = std::chrono::steady_clock::now();
  std::vector<ResidueMark> marks;
  PrepareText(options, file, chainId, outcome, marks, notes);
  const std::string implausible = ImplausibleChain(outcome.text);
  if (!implausible.empty()) {
    outcome.error = "refused: " + implausible;
    return;
  }
  const TextSource lines(input.path, outcome.text);
  std::unique_ptr<SecondaryStructureSource> secondary = SecondarySource(batch, outcome.text, outcome.entry);
  std::unique_ptr<WorkerPool> engine;
  RunContext context;
  if (batch.engineThreads > 1) {
    engine = std::make_unique<WorkerPool>(batch.engineThreads);
    context.workers = engine.get();
  }
  try {
    outcome.result = RunChainIn(options.mode, ChainInput{&lines, outcome.entry, JudgedChain(file, chainId), input.path},
                                options.params, secondary.get(), context);
    if (!options.featuresFile.empty()) outcome.features = CandidatesJson(outcome);
    outcome.ok = true;
  } catch (const Failure& failure) {
    outcome.status = failure.exit_status();
    outcome.error = Format("status %d: %s", outcome.status, FirstLine(failure.what()).c_str());
  } catch (const std::bad_alloc&) {
    outcome.status = static_cast<int>(Status::kAllocation);
    outcome.error = "out of memory";
  }
  NoteMessages(context.messages, outcome.entry, notes);
  if (outcome.ok && outcome.leftOut > 0) {
    outcome.gapBefore = GapsBefore(outcome.result.structure.residues, marks);
    SplitAtGaps(outcome.result, outcome.gapBefore, outcome.entry);
  }
  outcome.seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - started).count();
}

// The pictures and per-domain files the options ask for. A file refused (someone else's is
// there) fails the chain; a file the system could not write stops the run.
void WritePictures(const BatchContext& batch, ChainOutcome& outcome, InputResult& result) {
  using Writer = WrittenFiles (*)(const ChainOutcome&, const std::string&, TemporaryFiles*);
  const BatchOptions& options = batch.options;
  const std::pair<const std::string*, Writer> writers[] = {
      {&options.pymolDir, WritePymol},
      {&options.chimeraxDir, WriteChimerax},
      {&options.saveDomainsDir, WriteDomainFiles},
      {&options.svgDir, WriteContactSvg},
  };
  for (const auto& [folder, write] : writers) {
    if (folder->empty()) continue;
    const WrittenFiles written = write(outcome, *folder, batch.temporaries);
    if (written.errors.empty()) continue;
    if (written.writeFailed) {
      result.writeFailure = written.errors.front();
    } else {
      outcome.error = "not all its files written: " + written.errors.front();
    }
    outcome.ok = false;
    return;
  }
}

std::string EntryFor(const Input& input, const std::string& chainId) {
  if (input.code) return input.codeChain.empty() ? input.name + chainId : input.name;
  return input.entry + chainId;
}

ChainOutcome NewOutcome(const Input& input, const std::string& chainId) {
  ChainOutcome outcome;
  outcome.input = input.name;
  outcome.file = input.path;
  outcome.chainId = chainId;
  outcome.entry = EntryFor(input, chainId);
  outcome.fileStem = input.code ? outcome.entry : input.fileStem + chainId;
  return outcome;
}

StructureFile ReadInput(const Input& input) {
  if (!input.standardInput) return StructureFile(input.path);
  std::string bytes(std::istreambuf_iterator<char>(std::cin), {});
  return StructureFile::FromBytes(input.path, bytes);
}

void NotePredictedModel(const BatchOptions& options, const Input& input, const std::string& text,
                        std::vector<std::string>& notes) {
  if (options.filterPlddt || !LooksLikePlddt(text)) return;
  notes.push_back(input.name + ": its B-factors look like pLDDT (a predicted model): --min-plddt 70 "
                  "leaves disordered residues out of the domains");
}

void RunChosenChains(BatchContext& batch, const Input& input, const StructureFile& file,
                     InputResult& result) {
  const ChainChoice choice = ChooseChains(input, file, batch.options);
  for (const std::string& note : choice.notes) result.notes.push_back(input.name + ": " + note);
  if (!choice.error.empty()) result.chains.push_back(FailedOutcome(input, "", choice.error));
  bool modelNoted = false;
  for (const std::string& chainId : choice.ids) {
    if (batch.stop) return;
    ChainOutcome outcome = NewOutcome(input, chainId);
    outcome.mode = DecisionModeName(batch.options.mode);
    if (batch.done.count(KeyOf(batch.options.format, outcome.input, chainId)) != 0) continue;
    try {
      RunOneChain(batch, input, file, chainId, outcome, result.notes);
    } catch (const std::runtime_error& error) {
      outcome.error = error.what();
    }
    if (!modelNoted && !outcome.text.empty()) {
      NotePredictedModel(batch.options, input, outcome.text, result.notes);
      modelNoted = true;
    }
    if (outcome.ok) WritePictures(batch, outcome, result);
    // The contact map and the text are what pictures needed; results need neither.
    outcome.result.contacts = ContactMap();
    outcome.text.clear();
    result.chains.push_back(std::move(outcome));
    if (!result.writeFailure.empty()) {
      batch.stop = true;
      return;
    }
  }
}

}  // namespace

ChainOutcome FailedOutcome(const Input& input, const std::string& chainId, const std::string& error) {
  ChainOutcome outcome = NewOutcome(input, chainId);
  if (input.path.empty()) outcome.entry = input.name;
  // The structure-file front end names the file itself.
  const std::string named = input.path + ": ";
  outcome.error = error.compare(0, named.size(), named) == 0 ? error.substr(named.size()) : error;
  return outcome;
}

InputResult RunInput(BatchContext& batch, const Input& input) {
  InputResult result;
  if (batch.stop) return result;
  if (!input.error.empty()) {
    result.chains.push_back(FailedOutcome(input, "", input.error));
    return result;
  }
  try {
    const StructureFile file = ReadInput(input);
    RunChosenChains(batch, input, file, result);
  } catch (const std::exception& error) {
    result.chains.push_back(FailedOutcome(input, "", error.what()));
  }
  return result;
}

}  // namespace quarnel
