// Batch runs: every chain of every input (files, folders, codes, lists), several at once,
// results in input order on standard output or in a results file, one stderr line per failure.
// Nothing is written in the working folder but what the user names.
#pragma once

#include "cli/command.h"

namespace quarnel {

// The exit status of a batch in which some inputs or chains failed.
constexpr int kSomeInputsFailed = 3;

// Returns the exit status: 0 when every chain was judged, kSomeInputsFailed when some were not.
int RunBatch(const BatchOptions& options);

// Whether the batch computes secondary structure with DSSP's library (rather than without
// secondary structure, or through the DSSP program of DSSP_PATH).
bool UsesDsspLibrary(const BatchOptions& options);

}  // namespace quarnel
