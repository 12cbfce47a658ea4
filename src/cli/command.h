// Which kind of run a command line asks for, and the options of runs beyond the designed one:
// several inputs, inputs of other kinds, chains of multi-chain files, result files, pictures.
#pragma once

#include <string>
#include <vector>

#include "base/params.h"
#include "cli/result_formats.h"

namespace quarnel {

enum class RunKind {
  kDesigned,  // designed options and at most one input: the designed run, exactly
  kBatch,     // a long option, -j, or several inputs
  kHelp,
  kVersion,
};

RunKind ClassifyCommandLine(int argc, const char* const* argv);

enum class DsspChoice { kAuto, kBuiltin, kExternal };

struct BatchOptions {
  Params params;                    // the designed options apply to every chain
  Params given;                     // the same before relaxed mode rewrote the criteria
  std::string pdbPath = "./";       // -pdbpath: where codes are looked up
  std::vector<std::string> inputs;  // files, folders and codes, in the order given
  std::string listFile;             // --list: one more input per line
  std::string chain;                // --chain: that chain of every file
  bool eachChain = false;           // --each-chain: every protein chain (what runs do anyway)
  bool wholeFile = false;           // a classic command line handed over, or with --dssp added:
                                    // the file read whole, as the classic run reads it
  bool filterPlddt = false;         // --min-plddt given
  double minPlddt = 0.0;
  ResultFormat format = ResultFormat::kClassic;
  std::string out;                  // --out: results there instead of standard output
  bool resume = false;              // --resume: chains already in --out are skipped
  int jobs = 0;                     // -j: chains at once; 0 means the machine's cores
  std::string pymolDir;
  std::string chimeraxDir;
  std::string saveDomainsDir;
  std::string svgDir;
  DsspChoice dssp = DsspChoice::kAuto;  // --dssp: auto is external when DSSP_PATH is set
  bool quiet = false;               // --quiet: standard error keeps to failures
  DecisionMode mode = DecisionMode::kClassic;  // --mode: how the domains are decided
  std::string featuresFile;         // --features: the accuracy mode's candidate cuts, for training
};

// Whether secondary structure comes from the DSSP program of DSSP_PATH (--dssp external, or
// DSSP_PATH set and no --dssp).
bool UsesExternalDssp(const BatchOptions& options);

// Parses a batch command line; an unknown or malformed option fails with status 2 and a hint.
BatchOptions ParseBatchOptions(int argc, const char* const* argv);

// The text of --help and of --version, and the version number alone.
std::string HelpText();
std::string VersionText();
const char* VersionNumber();

}  // namespace quarnel
