// The batch run: inputs expanded into structure files, each file read once (PDB or mmCIF, gzip
// or not) and its chains judged in memory, several files at once; results written in input
// order as soon as every earlier input is done, so that an interrupted run keeps a clean prefix.
#include "cli/batch.h"

#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <cctype>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <mutex>
#include <set>
#include <stdexcept>

#include "base/text.h"
#include "base/workers.h"
#include "cli/external_dssp.h"
#include "cli/inputs.h"
#include "cli/lookup.h"
#include "cli/low_confidence.h"
#include "cli/outcome.h"
#include "cli/pictures.h"
#include "cli/result_formats.h"
#include "formats/structure_file.h"
#include "secondary/dssp_source.h"

namespace quarnel {

namespace {

namespace fs = std::filesystem;

constexpr size_t kCodeLength = 4;
constexpr size_t kCodeWithChainLength = 5;

// One input as the user named it, resolved to a structure file.
struct Input {
  std::string name;
  std::string path;
  bool code = false;
  std::string codeChain;  // the chain letter a code names, upper case
  std::string error;      // why the input has no file
};

std::string Lower(std::string text) {
  for (char& c : text) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
  return text;
}

bool EndsWith(const std::string& text, const std::string& end) {
  return text.size() >= end.size() && text.compare(text.size() - end.size(), end.size(), end) == 0;
}

constexpr char kStructureSuffixes[][8] = {".pdb", ".ent", ".cif", ".mmcif"};

// A structure file by its name, for folders searched: .pdb, .ent, .cif, .mmcif, each also .gz.
bool StructureName(const std::string& name) {
  std::string lower = Lower(name);
  if (EndsWith(lower, ".gz")) lower.resize(lower.size() - 3);
  for (const char* suffix : kStructureSuffixes)
    if (EndsWith(lower, suffix)) return true;
  return false;
}

// The name results give a file: its base name without .gz and the structure suffix, and
// without the archive's "pdb" before a code (pdb1abc.ent.gz is 1abc).
std::string EntryOf(const std::string& path) {
  std::string name = fs::path(path).filename().string();
  std::string lower = Lower(name);
  if (EndsWith(lower, ".gz")) {
    name.resize(name.size() - 3);
    lower.resize(lower.size() - 3);
  }
  for (const char* suffix : kStructureSuffixes) {
    if (EndsWith(lower, suffix)) {
      name.resize(name.size() - std::string(suffix).size());
      if (std::string(suffix) == ".ent" && lower.rfind("pdb", 0) == 0 && name.size() == 7)
        name = name.substr(3);
      break;
    }
  }
  return name;
}

bool LooksLikeCode(const std::string& name) {
  if (name.size() != kCodeLength && name.size() != kCodeWithChainLength) return false;
  return std::all_of(name.begin(), name.begin() + kCodeLength,
                     [](char c) { return std::isalnum(static_cast<unsigned char>(c)) != 0; });
}

void AddFolder(const std::string& folder, std::vector<Input>& inputs) {
  std::vector<std::string> files;
  std::error_code error;
  for (fs::recursive_directory_iterator it(folder, fs::directory_options::skip_permission_denied, error), end;
       it != end; it.increment(error)) {
    if (error) break;
    if (it->is_regular_file(error) && StructureName(it->path().filename().string()))
      files.push_back(it->path().string());
  }
  std::sort(files.begin(), files.end());
  for (const std::string& file : files) inputs.push_back(Input{file, file, false, "", ""});
}

void AddInput(const std::string& name, const BatchOptions& options, std::vector<Input>& inputs) {
  std::error_code error;
  if (fs::is_directory(name, error)) return AddFolder(name, inputs);
  if (CanRead(name)) return inputs.push_back(Input{name, name, false, "", ""});
  Input input{name, "", true, "", ""};
  if (!LooksLikeCode(name)) {
    input.error = "no such file, and not a PDB code";
  } else {
    const std::string code = name.substr(0, kCodeLength);
    const std::string designed = options.pdbPath + code + ".pdb";
    input.path = CanRead(designed) ? designed : FindCodeFile(options.pdbPath, code);
    if (input.path.empty()) input.error = "no file for this code under " + options.pdbPath;
    if (name.size() == kCodeWithChainLength)
      input.codeChain = std::string(1, static_cast<char>(std::toupper(static_cast<unsigned char>(name[4]))));
  }
  inputs.push_back(input);
}

std::vector<Input> ExpandInputs(const BatchOptions& options) {
  std::vector<Input> inputs;
  for (const std::string& name : options.inputs) AddInput(name, options, inputs);
  if (!options.listFile.empty()) {
    std::ifstream list(options.listFile);
    if (!list)
      Fail(Status::kBadOption, Stream::kStderr,
           "quarnel: cannot read the list " + options.listFile + "\n");
    std::string line;
    while (std::getline(list, line)) {
      while (!line.empty() && std::isspace(static_cast<unsigned char>(line.back()))) line.pop_back();
      const size_t start = line.find_first_not_of(" \t");
      if (start == std::string::npos || line[start] == '#') continue;
      AddInput(line.substr(start), options, inputs);
    }
  }
  return inputs;
}

// ---- One input ---------------------------------------------------------------------------

// The chains of a file that one input asks for: their ids ("" for the whole file).
struct ChainChoice {
  std::vector<std::string> ids;
  std::vector<std::string> notes;  // chains passed over, and why
  std::string error;
};

std::string ChainList(const StructureFile& file) {
  std::string list;
  for (const ChainInfo& chain : file.chains()) {
    if (!list.empty()) list += ", ";
    list += chain.id.empty() ? std::string("(blank)") : chain.id;
  }
  return list.empty() ? std::string("none") : list;
}

// The chain of the file named `wanted`: as written, or, when that is not one, the only chain
// whose id differs from it in letter case alone.
const ChainInfo* FindChain(const StructureFile& file, const std::string& wanted) {
  const ChainInfo* loose = nullptr;
  int looseCount = 0;
  for (const ChainInfo& chain : file.chains()) {
    if (chain.id == wanted) return &chain;
    if (Lower(chain.id) == Lower(wanted)) {
      loose = &chain;
      ++looseCount;
    }
  }
  return looseCount == 1 ? loose : nullptr;
}

ChainChoice ChooseChains(const Input& input, const StructureFile& file, const BatchOptions& options) {
  ChainChoice choice;
  const std::string wanted = !input.codeChain.empty() ? input.codeChain : options.chain;
  if (!wanted.empty()) {
    const ChainInfo* chain = FindChain(file, wanted);
    if (chain == nullptr)
      choice.error = "no chain " + wanted + " (chains: " + ChainList(file) + ")";
    else
      choice.ids.push_back(chain->id);
  } else if (options.eachChain) {
    for (const ChainInfo& chain : file.chains()) {
      const std::string label = chain.id.empty() ? std::string("(blank)") : chain.id;
      if (!chain.protein)
        choice.notes.push_back("chain " + label + " skipped: not a protein chain");
      else if (chain.residues == 0)
        choice.notes.push_back("chain " + label + " skipped: no ATOM records");
      else
        choice.ids.push_back(chain.id);
    }
    if (choice.ids.empty() && choice.notes.empty()) choice.error = "no chain";
  } else {
    choice.ids.push_back(std::string());
  }
  return choice;
}

// What every chain run of a batch shares.
struct BatchContext {
  const BatchOptions& options;
  const DsspLibrary& dssp;
  const char* dsspPath;  // DSSP_PATH when external DSSP is used, else null
  int engineThreads;
  std::set<std::string> done;  // entries already in the results file (--resume)
};

std::unique_ptr<SecondaryStructureSource> SecondarySource(const BatchContext& batch,
                                                          const std::string& text,
                                                          const std::string& name) {
  if (batch.dsspPath != nullptr) return std::make_unique<ExternalDssp>(batch.dsspPath, text, name);
  return std::make_unique<BuiltinDssp>(batch.dssp, name);
}

std::string FirstLine(const std::string& text) {
  std::string line = text.substr(0, text.find('\n'));
  return line;
}

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

void RunOneChain(const BatchContext& batch, const Input& input, const StructureFile& file,
                 const std::string& chainId, ChainOutcome& outcome, std::vector<std::string>& notes) {
  const BatchOptions& options = batch.options;
  const auto started = std::chrono::steady_clock::now();
  outcome.text = chainId.empty() ? file.WholeText() : file.ChainText(chainId);
  if (options.filterPlddt) {
    ConfidentText kept = LeaveOutLowConfidence(outcome.text, options.minPlddt);
    outcome.text = std::move(kept.text);
    outcome.leftOut = kept.leftOut;
    notes.push_back(Format("%s: left out %d residue%s below pLDDT %g", outcome.entry.c_str(),
                           kept.leftOut, kept.leftOut == 1 ? "" : "s", options.minPlddt));
  }
  int chain = kFirstResidueChain;
  if (!chainId.empty()) {
    for (const ChainInfo& info : file.chains())
      if (info.id == chainId) chain = static_cast<unsigned char>(info.text_id);
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
    outcome.result = RunChain(ChainInput{&lines, outcome.entry, chain, input.path}, options.params,
                              secondary.get(), context);
    outcome.ok = true;
  } catch (const Failure& failure) {
    outcome.status = failure.exit_status();
    outcome.error = Format("status %d: %s", outcome.status, FirstLine(failure.what()).c_str());
  } catch (const std::bad_alloc&) {
    outcome.status = static_cast<int>(Status::kAllocation);
    outcome.error = "out of memory";
  }
  NoteMessages(context.messages, outcome.entry, notes);
  outcome.seconds =
      std::chrono::duration<double>(std::chrono::steady_clock::now() - started).count();
}

// The pictures and per-domain files the options ask for; what could not be written is noted.
void WritePictures(const BatchOptions& options, const ChainOutcome& outcome,
                   std::vector<std::string>& notes) {
  using Writer = WrittenFiles (*)(const ChainOutcome&, const std::string&);
  const std::pair<const std::string*, Writer> writers[] = {
      {&options.pymolDir, WritePymol},
      {&options.chimeraxDir, WriteChimerax},
      {&options.saveDomainsDir, WriteDomainFiles},
      {&options.svgDir, WriteContactSvg},
  };
  for (const auto& [folder, write] : writers) {
    if (folder->empty()) continue;
    for (const std::string& error : write(outcome, *folder).errors) notes.push_back(error);
  }
}

// Every chain an input asks for, judged one after the other; what a failure leaves is a failed
// outcome, never an exception.
struct InputResult {
  std::vector<ChainOutcome> chains;
  std::vector<std::string> notes;  // stderr lines, in order
  int failures = 0;
};

std::string EntryFor(const Input& input, const std::string& chainId) {
  if (input.code) return input.codeChain.empty() ? input.name + chainId : input.name;
  return EntryOf(input.path) + chainId;
}

ChainOutcome FailedOutcome(const Input& input, const std::string& chainId, const std::string& error) {
  ChainOutcome outcome;
  outcome.input = input.name;
  outcome.file = input.path;
  outcome.chainId = chainId;
  outcome.entry = input.path.empty() ? input.name : EntryFor(input, chainId);
  outcome.error = error;
  return outcome;
}

InputResult RunInput(const BatchContext& batch, const Input& input) {
  InputResult result;
  auto fail = [&](const std::string& chainId, std::string error) {
    // The structure-file front end names the file itself.
    const std::string named = input.path + ": ";
    if (error.compare(0, named.size(), named) == 0) error.erase(0, named.size());
    result.chains.push_back(FailedOutcome(input, chainId, error));
    ++result.failures;
  };
  if (!input.error.empty()) {
    fail("", input.error);
    return result;
  }
  try {
    const StructureFile file(input.path);
    const ChainChoice choice = ChooseChains(input, file, batch.options);
    for (const std::string& note : choice.notes) result.notes.push_back(input.name + ": " + note);
    if (!choice.error.empty()) fail("", choice.error);
    for (const std::string& chainId : choice.ids) {
      ChainOutcome outcome;
      outcome.input = input.name;
      outcome.file = input.path;
      outcome.chainId = chainId;
      outcome.entry = EntryFor(input, chainId);
      if (batch.done.count(outcome.entry) != 0) continue;
      try {
        RunOneChain(batch, input, file, chainId, outcome, result.notes);
      } catch (const std::runtime_error& error) {
        outcome.error = error.what();
      }
      if (outcome.ok) {
        WritePictures(batch.options, outcome, result.notes);
      } else {
        ++result.failures;
      }
      // The contact map and the text are what pictures needed; results need neither.
      outcome.result.contacts = ContactMap();
      outcome.text.clear();
      result.chains.push_back(std::move(outcome));
    }
  } catch (const std::runtime_error& error) {
    fail("", error.what());
  }
  return result;
}

// ---- Results in input order --------------------------------------------------------------

class ResultSink {
 public:
  ResultSink(const BatchOptions& options, size_t inputs)
      : options_(options), pending_(inputs), ready_(inputs, false), progress_(isatty(STDERR_FILENO) != 0) {
    out_ = stdout;
    if (!options.out.empty()) {
      const bool append = options.resume;
      out_ = std::fopen(options.out.c_str(), append ? "a" : "w");
      if (out_ == nullptr)
        Fail(Status::kBadOption, Stream::kStderr, "quarnel: cannot write " + options.out + "\n");
      if (std::ftell(out_) == 0) WriteHeader();
    } else {
      WriteHeader();
    }
    started_ = std::chrono::steady_clock::now();
  }
  ~ResultSink() {
    if (out_ != stdout) std::fclose(out_);
  }
  ResultSink(const ResultSink&) = delete;
  ResultSink& operator=(const ResultSink&) = delete;

  // Keeps an input's results and writes every input whose turn has come.
  void Done(size_t index, InputResult result) {
    std::lock_guard<std::mutex> lock(mutex_);
    pending_[index] = std::move(result);
    ready_[index] = true;
    ++inputsDone_;
    while (next_ < ready_.size() && ready_[next_]) {
      Write(pending_[next_]);
      pending_[next_] = InputResult();
      ++next_;
    }
    ShowProgress();
  }

  int chains() const { return chains_; }
  int failures() const { return failures_; }

  void Finish() {
    if (progress_ && shown_) std::fputs("\n", stderr);
    std::fflush(out_);
  }

 private:
  void WriteHeader() {
    const std::string header = ResultHeader(options_.format);
    std::fputs(header.c_str(), out_);
  }

  void Write(const InputResult& result) {
    ClearProgress();
    for (const std::string& note : result.notes) std::fprintf(stderr, "quarnel: %s\n", note.c_str());
    for (const ChainOutcome& outcome : result.chains) {
      ++chains_;
      if (!outcome.ok) {
        const std::string what = outcome.chainId.empty() || outcome.input == outcome.entry
                                     ? outcome.input
                                     : outcome.input + " chain " + outcome.chainId;
        std::fprintf(stderr, "quarnel: %s: %s\n", what.c_str(), outcome.error.c_str());
        continue;
      }
      const std::string line = FormatResult(options_.format, outcome);
      std::fputs(line.c_str(), out_);
    }
    failures_ += result.failures;
    std::fflush(out_);
  }

  void ClearProgress() {
    if (progress_ && shown_) std::fputs("\r\033[K", stderr);
  }

  void ShowProgress() {
    if (!progress_) return;
    const double seconds =
        std::chrono::duration<double>(std::chrono::steady_clock::now() - started_).count();
    const double rate = seconds > 0.0 ? chains_ / seconds : 0.0;
    const double perInput = inputsDone_ > 0 ? seconds / inputsDone_ : 0.0;
    const int left = static_cast<int>(perInput * static_cast<double>(ready_.size() - inputsDone_));
    std::fprintf(stderr, "\r\033[Kquarnel: %zu/%zu inputs, %d chains, %.1f chains/s, %d:%02d left",
                 inputsDone_, ready_.size(), chains_, rate, left / 60, left % 60);
    std::fflush(stderr);
    shown_ = true;
  }

  const BatchOptions& options_;
  std::FILE* out_;
  std::mutex mutex_;
  std::vector<InputResult> pending_;
  std::vector<bool> ready_;
  size_t next_ = 0;
  size_t inputsDone_ = 0;
  int chains_ = 0;
  int failures_ = 0;
  bool progress_;
  bool shown_ = false;
  std::chrono::steady_clock::time_point started_;
};

int Cores() { return WorkerPool::DefaultThreads(); }

bool ExternalDsspChosen(const BatchOptions& options) {
  return options.dssp == DsspChoice::kExternal ||
         (options.dssp == DsspChoice::kAuto && std::getenv("DSSP_PATH") != nullptr);
}

}  // namespace

bool UsesDsspLibrary(const BatchOptions& options) {
  return options.params.FlagSS == 1 && !ExternalDsspChosen(options);
}

int RunBatch(const BatchOptions& options) {
  const std::vector<Input> inputs = ExpandInputs(options);
  const DsspLibrary dssp;
  const char* dsspPath = std::getenv("DSSP_PATH");
  const bool external = ExternalDsspChosen(options);
  if (external && dsspPath == nullptr)
    Fail(Status::kBadOption, Stream::kStderr, "quarnel: --dssp external needs DSSP_PATH\n");

  // Chains at once, and each chain's engine threads, sharing the machine's cores.
  const int jobs = std::max(1, std::min<int>(options.jobs > 0 ? options.jobs : Cores(),
                                             static_cast<int>(std::max<size_t>(inputs.size(), 1))));
  BatchContext batch{options, dssp, external ? dsspPath : nullptr, std::max(1, Cores() / jobs), {}};
  if (options.resume) {
    // A run killed while writing leaves half a line: it is cut off before new lines follow.
    const ResumeState state = ReadResumeFile(options.out);
    batch.done = state.done;
    std::error_code error;
    if (state.partialTail) fs::resize_file(options.out, state.completeBytes, error);
  }

  ResultSink sink(options, inputs.size());
  WorkerPool pool(jobs);
  pool.ParallelFor(static_cast<int>(inputs.size()), [&](int index, int) {
    InputResult result;
    try {
      result = RunInput(batch, inputs[index]);
    } catch (const std::exception& error) {
      result.chains.push_back(FailedOutcome(inputs[index], "", error.what()));
      result.failures = 1;
    }
    sink.Done(static_cast<size_t>(index), std::move(result));
  });
  sink.Finish();
  if (sink.failures() > 0) {
    std::fprintf(stderr, "quarnel: %d of %d chain%s failed\n", sink.failures(), sink.chains(),
                 sink.chains() == 1 ? "" : "s");
    return kSomeInputsFailed;
  }
  return 0;
}

}  // namespace quarnel
