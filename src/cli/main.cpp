// quarnel: splits protein chains into structural domains. A command line of the designed
// options and one input is the classic run, exactly; long options, -j and several inputs make
// a batch run; inputs the classic run would refuse or misread (mmCIF, gzip, codes kept under
// other names) are read through the structure-file front end.
#include <malloc.h>

#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <memory>
#include <new>

#include "cli/batch.h"
#include "cli/batch_inputs.h"
#include "cli/command.h"
#include "cli/inputs.h"
#include "cli/lookup.h"
#include "cli/options.h"
#include "cli/shell_dssp.h"
#include "formats/structure_file.h"
#include "run/chain.h"
#include "secondary/dssp_library.h"

namespace quarnel {

namespace {

constexpr int kMaxThreads = 1024;
// The exit status when a run needs DSSP's library and the program holding it cannot be run.
constexpr int kNoDsspLibrary = 1;

void Print(const Message& message) {
  std::fputs(message.text.c_str(), message.stream == Stream::kStderr ? stderr : stdout);
}

void PrintAll(const std::vector<Message>& messages) {
  for (const Message& message : messages) Print(message);
}

int PrintFailure(const Failure& failure) {
  Print(Message{failure.stream(), failure.what()});
  std::fflush(stdout);
  if (!failure.hint().empty()) std::fprintf(stderr, "%s\n", failure.hint().c_str());
  return failure.exit_status();
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

// The chains a structure file holds, for hints.
std::string ChainsOf(const std::string& path) {
  try {
    const StructureFile file(path);
    std::string list;
    for (const ChainInfo& chain : file.chains()) {
      if (!chain.protein) continue;
      if (!list.empty()) list += ", ";
      list += chain.id.empty() ? std::string("(blank)") : chain.id;
    }
    return list;
  } catch (const std::exception&) {
    return std::string();
  }
}

// Lines that end in CR alone (classic Mac OS) read as one long line, cut into pieces that are
// almost never ATOM records: the run then fails as a CA-only model would.
bool CrOnlyLineEnds(const std::string& path) {
  std::FILE* file = std::fopen(path.c_str(), "rb");
  if (file == nullptr) return false;
  char head[1 << 16];
  const size_t read = std::fread(head, 1, sizeof head, file);
  std::fclose(file);
  const std::string text(head, read);
  return text.find('\r') != std::string::npos && text.find('\n') == std::string::npos;
}

// A designed failure may carry one more stderr line saying what to do about it.
std::string HintFor(const Failure& failure, const CommandLine& line, const ResolvedInput& input,
                    const ShellDssp* dssp) {
  switch (failure.status()) {
    case Status::kInputOpen:
      return dssp != nullptr ? dssp->unreadableHint() : std::string();
    case Status::kTooFewAtoms:
      if (!CrOnlyLineEnds(input.templateName)) return std::string();
      return Format("quarnel: %s ends its lines with CR alone (old Mac OS line ends), which reads as "
                    "one long line: convert them first (tr '\\r' '\\n')",
                    input.templateName.c_str());
    case Status::kDsspPathUnset:
      return "quarnel: DSSP is built into quarnel: add --dssp builtin to use it, or set "
             "DSSP_PATH to a DSSP program";
    case Status::kCodeFileOpen:
      return Format("quarnel: no file for code %s under %s, also looked for as .cif, .cif.gz, "
                    ".pdb.gz, .ent.gz and pdb<code>.ent.gz, in any letter case and in the "
                    "archive's divided layout",
                    line.input.substr(0, 4).c_str(), line.pdbPath.c_str());
    case Status::kNoProfileResidue: {
      const std::string chains = ChainsOf(input.namedFile ? input.templateName : input.pdbName);
      if (chains.empty()) return std::string();
      if (input.namedFile)
        return Format("quarnel: %s holds chains %s and is judged as one chain: name one chain "
                      "as a code with its letter (-pdbpath <folder>/ 1abcA), or use --chain ID "
                      "or --each-chain",
                      line.input.c_str(), chains.c_str());
      return Format("quarnel: %s names no chain of %s, which holds chains %s: name one with its "
                    "letter (%sA), or use --chain ID or --each-chain",
                    line.input.c_str(), input.pdbName.c_str(), chains.c_str(),
                    line.input.substr(0, 4).c_str());
    }
    default:
      return std::string();
  }
}

// The classic run of one input, as designed.
int RunDesigned(const CommandLine& line) {
  // Held until the DSSP output is removed: runs side by side that share a file wait.
  DesignedLocks locks;
  ResolvedInput input;
  RunContext context;
  std::unique_ptr<ShellDssp> dssp;
  try {
    input = ResolveInput(line, locks);
    PrintAll(input.messages);

    const FileSource lines(input.templateName);
    const ChainInput chain{&lines, input.entry, input.chain, input.pdbName};
    // An earlier DSSP output is reused only for a code, never beside a named file.
    dssp = std::make_unique<ShellDssp>(input.templateName, input.base + ".dssp", !input.namedFile, locks);
    WorkerPool workers(EngineThreads());
    context.workers = &workers;
    const ChainResult result = RunChain(chain, line.params, dssp.get(), context);
    PrintAll(context.messages);
    std::fputs(result.report.c_str(), stdout);
  } catch (const Failure& failure) {
    PrintAll(context.messages);
    throw Failure(failure.status(), failure.stream(), failure.what(),
                  failure.hint().empty() ? HintFor(failure, line, input, dssp.get()) : failure.hint());
  }
  // The DSSP output of this run is removed; a run without DSSP (-noss) has none, and must not
  // remove a file of that name that it never wrote or read.
  if (line.params.FlagSS == 1) RunShell("rm " + ShellFileWord(input.entry + ".dssp"));
  return 0;
}

bool GzipOrMmcif(const std::string& path) {
  std::FILE* file = std::fopen(path.c_str(), "rb");
  if (file == nullptr) return false;
  char head[512];
  const size_t read = std::fread(head, 1, sizeof(head), file);
  std::fclose(file);
  if (read >= 2 && static_cast<unsigned char>(head[0]) == 0x1f && static_cast<unsigned char>(head[1]) == 0x8b)
    return true;
  const std::string text(head, read);
  const size_t start = text.find_first_not_of(" \t\r\n");
  return start != std::string::npos && text.compare(start, 5, "data_") == 0;
}

// A classic command line whose input the classic run would refuse or misread: an mmCIF or
// gzip file, or a code whose file is kept under another name. It is read through the
// structure-file front end and reported as the classic run reports it.
bool FrontEndInput(const CommandLine& line, BatchOptions& batch) {
  const std::string& name = line.input;
  if (CanRead(name)) {
    if (!GzipOrMmcif(name)) return false;
  } else if (name == kStandardInput) {
    if (CanRead(line.pdbPath + name + ".pdb")) return false;  // "-" as the code of a file "-.pdb"
  } else {
    const std::string code = name.substr(0, 4);
    if (CanRead(line.pdbPath + code + ".pdb") || FindCodeFile(line.pdbPath, code).empty()) return false;
  }
  batch.params = line.params;
  batch.given = line.params;
  batch.pdbPath = line.pdbPath;
  batch.inputs = {name};
  batch.jobs = 1;
  batch.wholeFile = true;
  return true;
}

// The program built with DSSP's library, beside this one.
constexpr char kFullProgram[] = "quarnel-full";

// Runs a batch here; or, when the batch needs DSSP's library and this program was built without
// it, has the program built with it run the batch: the same command line, the same environment,
// in this process's place.
int RunBatchOrHandOff(const BatchOptions& batch, const char* const* argv) {
  if (DsspLibrary::Linked() || !UsesDsspLibrary(batch)) return RunBatch(batch);
  std::string path = kFullProgram;
  std::error_code error;
  const std::filesystem::path self = std::filesystem::read_symlink("/proc/self/exe", error);
  if (!error) path = (self.parent_path() / kFullProgram).string();
  std::fflush(stdout);
  std::fflush(stderr);
  execv(path.c_str(), const_cast<char* const*>(argv));
  std::fprintf(stderr, "quarnel: DSSP's library is in %s, which cannot be run (%s); set DSSP_PATH "
               "to a DSSP program, or add -noss\n", path.c_str(), std::strerror(errno));
  return kNoDsspLibrary;
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
      return RunBatchOrHandOff(ParseBatchOptions(argc, argv), argv);
    case RunKind::kDesigned:
      break;
  }
  const CommandLine line = ParseOptions(argc, argv);
  BatchOptions batch;
  if (FrontEndInput(line, batch)) return RunBatchOrHandOff(batch, argv);
  return RunDesigned(line);
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
    return quarnel::PrintFailure(quarnel::Failure(quarnel::Status::kAllocation,
                                                  quarnel::Stream::kStdout,
                                                  quarnel::kAllocationFailedText));
  }
}
