// One input's chains, judged in memory one after the other: the records each run reads, its
// secondary structure, the checks before the engine starts, and the files the options ask for.
#include "app/batch_chains.h"

#include <chrono>
#include <memory>
#include <stdexcept>

#include "app/chain_choice.h"
#include "base/text.h"
#include "base/workers.h"
#include "formats/pdb_writer.h"
#include "report/cath_results.h"
#include "report/pictures.h"
#include "report/resume.h"
#include "run/chain_plausibility.h"
#include "run/plddt_filter.h"
#include "secondary/dssp_helper.h"
#include "secondary/dssp_source.h"
#include "secondary/external_dssp.h"

namespace quarnel {

namespace {

// Where a chain of a run comes from: its records (the chain, or the file read whole), the
// chain character they carry, and the file's own PDB text for a DSSP program reading it whole.
struct ChainSource {
  AtomRecords records;
  int judged = kFirstResidueChain;
  const StructureFile* file = nullptr;  // none for records given without a file
};

// The DSSP program of DSSP_PATH reads a PDB file: the file's own text when it is read whole,
// else the chain's records written as the chain copy quarnel writes.
std::unique_ptr<SecondaryStructureSource> SecondarySource(const BatchContext& batch, const ChainSource& source,
                                                          const ChainOutcome& outcome) {
  if (batch.givenDssp != nullptr) return std::make_unique<GivenDssp>(*batch.givenDssp);
  if (batch.dsspPath == nullptr) {
    if (!DsspLibrary::Linked() && batch.dsspHelpers != nullptr)
      return std::make_unique<HelperDssp>(*batch.dsspHelpers, outcome.entry);
    return std::make_unique<BuiltinDssp>(batch.dssp, outcome.entry);
  }
  const std::string text = outcome.chainId.empty() && source.file != nullptr ? source.file->WholePdbText()
                                                                             : PdbText(outcome.records.records);
  return std::make_unique<ExternalDssp>(batch.dsspPath, text, outcome.entry, batch.temporaries);
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

// The records the run reads: the chain (or the whole file), less the residues below --min-plddt.
void PrepareRecords(const BatchOptions& options, AtomRecords records, ChainOutcome& outcome,
                    std::vector<ResidueMark>& marks, std::vector<std::string>& notes) {
  outcome.records = std::move(records);
  if (!options.filterPlddt) return;
  ConfidentRecords kept = LeaveOutLowConfidence(outcome.records, options.minPlddt);
  outcome.records = std::move(kept.records);
  outcome.leftOut = kept.leftOut;
  marks = std::move(kept.marks);
  notes.push_back(Format("%s: left out %d of %zu residues below pLDDT %g", outcome.entry.c_str(),
                         kept.leftOut, marks.size(), options.minPlddt));
}

void RunOneChain(const BatchContext& batch, const Input& input, ChainSource source, ChainOutcome& outcome,
                 std::vector<std::string>& notes) {
  const BatchOptions& options = batch.options;
  const auto started = std::chrono::steady_clock::now();
  std::vector<ResidueMark> marks;
  PrepareRecords(options, std::move(source.records), outcome, marks, notes);
  const std::string implausible = ImplausibleChain(outcome.records.records);
  if (!implausible.empty()) {
    outcome.error = "refused: " + implausible;
    return;
  }
  const HeldRecords records(input.path, outcome.records);
  std::unique_ptr<SecondaryStructureSource> secondary = SecondarySource(batch, source, outcome);
  std::unique_ptr<WorkerPool> engine;
  RunContext context;
  if (batch.engineThreads > 1) {
    engine = std::make_unique<WorkerPool>(batch.engineThreads);
    context.workers = engine.get();
  }
  try {
    const ChainInput chain{&records, outcome.entry, source.judged, input.path};
    outcome.result = RunChainIn(options.mode, chain, options.params, secondary.get(), context);
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
    outcome.leftOutResidues = PlaceLeftOut(outcome.result.structure.residues, marks);
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

StructureFile ReadInput(const Input& input, std::FILE* standardInput) {
  if (!input.standardInput) return StructureFile(input.path);
  std::string bytes;
  char chunk[1 << 16];
  for (size_t got; (got = std::fread(chunk, 1, sizeof chunk, standardInput)) > 0;) bytes.append(chunk, got);
  return StructureFile::FromBytes(input.path, bytes);
}

void NotePredictedModel(const BatchOptions& options, const Input& input, const AtomRecords& records,
                        std::vector<std::string>& notes) {
  if (options.filterPlddt || !LooksLikePlddt(records.records)) return;
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
      ChainSource source{chainId.empty() ? file.WholeRecords() : file.ChainRecords(chainId),
                         JudgedChain(file, chainId), &file};
      RunOneChain(batch, input, std::move(source), outcome, result.notes);
    } catch (const std::runtime_error& error) {
      outcome.error = error.what();
    }
    if (!modelNoted && !outcome.records.records.empty()) {
      NotePredictedModel(batch.options, input, outcome.records, result.notes);
      modelNoted = true;
    }
    if (outcome.ok) WritePictures(batch, outcome, result);
    // The contact map and the records are what pictures needed; results need neither.
    outcome.result.contacts = ContactMap();
    outcome.records = AtomRecords();
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
    const StructureFile file = ReadInput(input, batch.input);
    RunChosenChains(batch, input, file, result);
  } catch (const std::exception& error) {
    result.chains.push_back(FailedOutcome(input, "", error.what()));
  }
  return result;
}

InputResult RunFile(BatchContext& batch, const Input& input, const StructureFile& file) {
  InputResult result;
  try {
    RunChosenChains(batch, input, file, result);
  } catch (const std::exception& error) {
    result.chains.push_back(FailedOutcome(input, "", error.what()));
  }
  return result;
}

ChainOutcome RunRecords(const BatchContext& batch, const Input& input, AtomRecords records, char judged,
                        const std::string& chainId, std::vector<std::string>& notes) {
  ChainOutcome outcome = NewOutcome(input, chainId);
  outcome.mode = DecisionModeName(batch.options.mode);
  try {
    RunOneChain(batch, input, ChainSource{std::move(records), static_cast<unsigned char>(judged), nullptr},
                outcome, notes);
  } catch (const std::runtime_error& error) {
    outcome.error = error.what();
  }
  outcome.result.contacts = ContactMap();
  return outcome;
}

}  // namespace quarnel
