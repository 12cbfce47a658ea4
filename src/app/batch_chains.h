// One input of a batch run: its file read once, its chains chosen and judged one after the
// other, their pictures written. Whatever goes wrong becomes part of the result, never an
// exception, so the results of other inputs are kept.
#pragma once

#include <atomic>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include <cstdio>

#include "app/batch_inputs.h"
#include "formats/structure_file.h"
#include "base/temporary_files.h"
#include "report/outcome.h"
#include "secondary/dssp_helper.h"
#include "secondary/dssp_library.h"

namespace quarnel {

// What every chain run of a batch shares.
struct BatchContext {
  const BatchOptions& options;
  const DsspLibrary& dssp;
  const char* dsspPath;  // DSSP_PATH when external DSSP is used, else null
  int engineThreads;
  std::set<std::pair<std::string, std::string>> done;  // (input, chain) on file (--resume), as
                                                       // the results format keeps them
  TemporaryFiles* temporaries;  // removed should the run be interrupted
  std::FILE* input;             // standard input, for the input "-"
  std::atomic<bool> stop{false};  // a file could not be written: no more chains are started
  // The DSSP helper programs, where this program was built without DSSP's library and the
  // library's secondary structure is asked for (quarnel's Python module); else null.
  DsspHelpers* dsspHelpers = nullptr;
  // DSSP's rows given by the caller for the one chain of the run; null when DSSP is to run.
  const std::vector<DsspRow>* givenDssp = nullptr;
};

// Every chain an input asks for, in order.
struct InputResult {
  std::vector<ChainOutcome> chains;  // judged or failed; a failed one carries its reason
  std::vector<std::string> notes;    // stderr lines that are not failures (--quiet drops them)
  std::string writeFailure;          // a file that could not be written, and why: the run stops
};

InputResult RunInput(BatchContext& batch, const Input& input);

// The chains an input asks for, of its file already read.
InputResult RunFile(BatchContext& batch, const Input& input, const StructureFile& file);

// One chain given as records rather than in a file (`judged` is the chain character its
// records carry), judged as a chain of a file is; its notes are added to `notes`.
ChainOutcome RunRecords(const BatchContext& batch, const Input& input, AtomRecords records, char judged,
                        const std::string& chainId, std::vector<std::string>& notes);

// A failed outcome for an input that could not be judged at all.
ChainOutcome FailedOutcome(const Input& input, const std::string& chainId, const std::string& error);

}  // namespace quarnel
