// Batch runs: every chain of every input (files, folders, codes, lists), several at once,
// results in input order on standard output or in a results file, one stderr line per failure.
// Nothing is written in the working folder but what the user names.
#pragma once

#include <cstdio>

#include "app/batch_options.h"
#include "app/console.h"
#include "base/temporary_files.h"

namespace quarnel {

// What a batch run reads and writes besides its files, given by its caller.
struct BatchIo {
  Console& console;             // notes, failures, progress and the summary (standard error)
  std::FILE* input;             // standard input: the input "-" and --list -
  int output;                   // where results go without --out (standard output)
  TemporaryFiles& temporaries;  // the run's temporary files, listed while they exist
};

// Returns the exit status: 0 when every chain was judged, Status::kSomeInputsFailed when some
// were not, Status::kWriteFailed when a file could not be written.
int RunBatch(const BatchOptions& options, BatchIo& io);

}  // namespace quarnel
