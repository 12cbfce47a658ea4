// What a batch run is asked to do: its inputs, the chains of them, the classic options that apply
// to every chain, results, pictures and the DSSP to use.
#pragma once

#include <string>
#include <vector>

#include "base/params.h"
#include "report/result_options.h"
#include "report/results.h"
#include "run/chain.h"

namespace quarnel {

enum class DsspChoice { kAuto, kBuiltin, kExternal };

struct BatchOptions {
  Params params;                    // the classic options apply to every chain
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

// Whether the batch computes secondary structure with DSSP's library (rather than without
// secondary structure, or through the DSSP program of DSSP_PATH).
bool UsesDsspLibrary(const BatchOptions& options);

// Fails with status 2 and a hint when options do not go together, or nothing is to be read.
void CheckBatchOptions(const BatchOptions& options);

// What of the options decides a chain's result, as results files record it.
ResultSettings SettingsOf(const BatchOptions& options);

}  // namespace quarnel
