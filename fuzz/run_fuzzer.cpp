// Fuzz target: the command line and the whole run, in process, on a fuzzed structure without
// DSSP. The input's first line holds option words (the word @code, or @code followed by a chain
// letter, sends the structure through the PDB-code path); the rest is the structure. The report
// the run prints is checked against the partition it leaves in the residues.
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <utility>
#include <vector>

#include "fuzz_support.h"
#include "partition/partition.h"
#include "run/driver.h"
#include "run/fatal.h"
#include "run/options.h"
#include "run/parameters.h"
#include "structure/pdb_names.h"
#include "structure/protein.h"

namespace {

constexpr size_t kMaxOptionWords = 10;
constexpr size_t kMaxWordLength = 40;
constexpr char kCodeWord[] = "@code";
constexpr char kCode[] = "1fuz";

// Bounds that keep one iteration to a fraction of a second on a few hundred residues: samples
// per level, domains of a relaxed run, and the smallest domain of a run that is not relaxed
// (which decides how many levels are searched).
constexpr int32_t kMaxSamples = 30;
constexpr int32_t kMaxRelaxedDomains = 6;
constexpr int32_t kMinDomainSizeFloor = 10;

int captureFd = -1;

struct FuzzInput {
  std::vector<std::string> words;
  bool codePath = false;
  char chain = '\0';  // chain letter of the code path, none when '\0'
  std::string structure;
};

FuzzInput Split(const uint8_t* data, size_t size) {
  FuzzInput input;
  std::string text(reinterpret_cast<const char*>(data), size);
  size_t end = text.find('\n');
  std::string first = text.substr(0, end);
  input.structure = end == std::string::npos ? std::string() : text.substr(end + 1);

  size_t at = 0;
  while (input.words.size() < kMaxOptionWords) {
    at = first.find_first_not_of(" \t\r", at);
    if (at == std::string::npos) break;
    size_t stop = first.find_first_of(" \t\r", at);
    std::string word = first.substr(at, stop == std::string::npos ? std::string::npos : stop - at);
    at = stop == std::string::npos ? first.size() : stop;
    // argv strings end at a NUL byte.
    word = word.substr(0, word.find('\0')).substr(0, kMaxWordLength);
    if (word.compare(0, sizeof(kCodeWord) - 1, kCodeWord) == 0) {
      input.codePath = true;
      // A chain letter that is a path separator would name a file in a missing directory.
      if (word.size() > sizeof(kCodeWord) - 1 && word[sizeof(kCodeWord) - 1] != '/')
        input.chain = word[sizeof(kCodeWord) - 1];
      continue;
    }
    if (!word.empty()) input.words.push_back(word);
  }
  return input;
}

std::vector<std::string> Arguments(const FuzzInput& input, const std::string& name) {
  std::vector<std::string> args = {"quarnel"};
  args.insert(args.end(), input.words.begin(), input.words.end());
  args.insert(args.end(), {"-pdbpath", "pdb/", "-noss", name});
  return args;
}

// Later options overwrite earlier ones: options added just before the fixed tail bring the
// run's cost within bounds without changing anything else the words asked for.
void Bound(std::vector<std::string>& args) {
  std::vector<char*> argv;
  for (std::string& a : args) argv.push_back(&a[0]);
  try {
    ParseOptions(static_cast<int>(argv.size()), argv.data());
  } catch (const FatalError&) {
    return;  // the run itself meets the same failure
  }
  std::vector<std::string> bounds;
  if (NumSamplePoints > kMaxSamples) bounds.insert(bounds.end(), {"-sp", "30"});
  if (MaxNumDom != kDefaultMaxNumDom && MaxNumDom > kMaxRelaxedDomains)
    bounds.insert(bounds.end(), {"-md", "6"});
  if (MaxNumDom == kDefaultMaxNumDom && MinDomainSize < kMinDomainSizeFloor)
    bounds.insert(bounds.end(), {"-ml", "10"});
  args.insert(args.end() - 4, bounds.begin(), bounds.end());
}

void StartCapture() {
  std::fflush(stdout);
  if (ftruncate(captureFd, 0) != 0 || lseek(captureFd, 0, SEEK_SET) != 0)
    FuzzFailure("cannot reset the captured output");
}

std::string CapturedOutput() {
  std::fflush(stdout);
  std::string text;
  char buffer[4096];
  off_t offset = 0;
  for (;;) {
    ssize_t got = pread(captureFd, buffer, sizeof(buffer), offset);
    if (got <= 0) break;
    text.append(buffer, static_cast<size_t>(got));
    offset += got;
  }
  return text;
}

std::string Label(int32_t number, char icode) {
  std::string text = std::to_string(number);
  if (icode != ' ') text += icode;
  return text;
}

// The report of the partition the residues carry (Protein is in chain order after the run):
// each domain's maximal runs of residues, the lower residue number first.
std::string ExpectedReport(int32_t domains) {
  std::string line = Entry + "\t" + std::to_string(ProteinSize) + "\t" + std::to_string(domains);
  if (domains == 1) return line + "\n";
  line += "\t";
  for (int32_t d = 0; d < domains; ++d) {
    line += " (";
    bool first = true;
    for (int32_t i = 0; i < ProteinSize; ++i) {
      if (Protein[i].domain != d || (i > 0 && Protein[i - 1].domain == d)) continue;
      int32_t j = i;
      while (j + 1 < ProteinSize && Protein[j + 1].domain == d) ++j;
      const Residue* low = &Protein[i];
      const Residue* high = &Protein[j];
      if (!(low->resnum < high->resnum)) std::swap(low, high);
      if (!first) line += ";";
      first = false;
      line += Label(low->resnum, low->icode) + "-" + Label(high->resnum, high->icode);
    }
    line += ")";
  }
  return line + "\n";
}

bool IsDesignedWarning(const std::string& line) {
  return line == "somethong is wrong\n" || line.compare(0, 14, " WARNING: ndx=") == 0 ||
         (line.compare(0, 15, "Unable to open ") == 0 &&
          line.find(": WARNING3\n") != std::string::npos);
}

// The run printed designed warnings, then one report line that names every residue once.
void CheckReport(const std::string& output) {
  size_t lineStart = 0;
  std::string last;
  while (lineStart < output.size()) {
    size_t end = output.find('\n', lineStart);
    Require(end != std::string::npos, "output does not end with a newline");
    std::string line = output.substr(lineStart, end - lineStart + 1);
    lineStart = end + 1;
    if (lineStart < output.size()) Require(IsDesignedWarning(line), "an unexpected output line");
    last = line;
  }
  std::string head = Entry + "\t" + std::to_string(ProteinSize) + "\t";
  Require(last.compare(0, head.size(), head) == 0, "the report names another entry or size");
  int32_t domains = std::atoi(last.c_str() + head.size());
  Require(domains >= 1, "a report without domains");
  if (domains > 1) {
    std::vector<int32_t> residues(static_cast<size_t>(domains), 0);
    for (const Residue& r : Protein) {
      Require(r.domain >= 0 && r.domain < domains, "a residue outside the reported domains");
      ++residues[static_cast<size_t>(r.domain)];
    }
    for (int32_t count : residues) Require(count > 0, "a reported domain without residues");
  }
  Require(last == ExpectedReport(domains), "the report differs from the residues' partition");
}

bool IsDesignedFailure(const FatalError& error, const std::string& structure) {
  switch (error.status) {
    case 5:  // a structure in another format than PDB is refused
      return IsRefusedFormat(structure) && error.text.compare(0, 6, "INPUT ") == 0;
    case 10:
      return error.text.compare(0, 24, "Extremal points unfound ") == 0;
    case 15:   // the assessment finds no residue of a domain in the chain it reads
    case 100:  // too few atoms per residue
      return true;
    default:
      return false;
  }
}

}  // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***) {
  if (chdir(ScratchDir().c_str()) != 0) FuzzFailure("cannot enter the scratch directory");
  std::string pdb = ScratchDir() + "/pdb";
  if (mkdir(pdb.c_str(), 0755) != 0) FuzzFailure("cannot make the PDB directory");
  std::string capture = WriteScratchFile("stdout.txt", nullptr, 0);
  std::fflush(stdout);
  captureFd = open(capture.c_str(), O_RDWR);
  if (captureFd < 0 || dup2(captureFd, STDOUT_FILENO) < 0) FuzzFailure("cannot capture stdout");
  return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  StartIteration();
  FuzzInput input = Split(data, size);
  std::string name = "s.pdb";
  if (input.codePath) {
    WriteScratchFile(std::string("pdb/") + kCode + ".pdb",
                     reinterpret_cast<const uint8_t*>(input.structure.data()),
                     input.structure.size());
    name = kCode;
    if (input.chain != '\0') name += input.chain;
  } else {
    WriteScratchFile(name, reinterpret_cast<const uint8_t*>(input.structure.data()),
                     input.structure.size());
  }

  std::vector<std::string> args = Arguments(input, name);
  Bound(args);
  std::vector<char*> argv;
  for (std::string& a : args) argv.push_back(&a[0]);

  StartIteration();
  StartCapture();
  try {
    int status = RunQuarnel(static_cast<int>(argv.size()), argv.data());
    Require(status == 0, "a completed run with a status other than 0");
    CheckReport(CapturedOutput());
  } catch (const FatalError& error) {
    if (!IsDesignedFailure(error, input.structure)) {
      std::fprintf(stderr, "status %d: %s\n", error.status, error.text.c_str());
      FuzzFailure("a failure no input should reach");
    }
  }
  return 0;
}
