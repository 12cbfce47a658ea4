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
  std::string pdbPath = "./";       // -pdbpath: where codes are looked up
  std::vector<std::string> inputs;  // files, folders and codes, in the order given
  std::string listFile;             // --list: one more input per line
  std::string chain;                // --chain: that chain of every file
  bool eachChain = false;           // --each-chain: every protein chain of every file
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
};

// Parses a batch command line; an unknown or malformed option fails with status 2 and a hint.
BatchOptions ParseBatchOptions(int argc, const char* const* argv);

// The text of --help and of --version.
std::string HelpText();
std::string VersionText();

}  // namespace quarnel
