// One way to fail: a run that cannot go on throws a Failure carrying the message, the stream it
// belongs on and the exit status; only the command line prints it and exits.
#pragma once

#include <cstddef>
#include <stdexcept>
#include <string>

namespace quarnel {

// Every status the program ends with. Several places end with the same status; each keeps its
// own name.
enum class Status : int {
  kCompleted = 0,
  kUsage = 0,              // no argument at all
  kQueueStop = 0,          // "stop !": the search queue's read position reached its last slot
  kLabellingStacks = 0,    // the component labelling's stacks could not be allocated
  kModelCopyReopen = 0,    // the PDB file vanished between two opens
  kDsspPathUnset = 1,      // a classic run needs DSSP and DSSP_PATH is not set
  kNoFullProgram = 1,      // a run needs DSSP's library and quarnel-full cannot be run
  kBadOption = 2,          // a bad option or value; a classic run's values past the input name
  kSomeInputsFailed = 3,   // batch runs: some inputs or chains were not judged
  kProfileReopen = 4,      // the structure cannot be read again for the assessment
  kInputOpen = 5,          // the structure file or the DSSP output cannot be opened
  kWriteFailed = 6,        // a results, picture or domain file, or standard output, not written
  kChainCopyCreate = 7,
  kCodeFileOpen = 9,
  kEngineFault = 10,       // user anchors missing, path walk-back, records or closure rows
  kSegmentsAlloc = 11,
  kNoProfileResidue = 15,
  kBottleneck = 20,
  kQueueOverflow = 30,
  kAllocation = 50,
  kTooFewAtoms = 100,
  kInterrupted = 130,      // batch runs: stopped by SIGINT (128 + the signal, which ends it)
  kTerminated = 143,       // batch runs: stopped by SIGTERM
};

// What a status means, one line per number the program ends with (two numbers where they mean
// one thing: 20 and 30, 130 and 143), in increasing order.
struct StatusMeaning {
  Status status;
  Status also;  // a second status of the same meaning; kCompleted (0) for none
  char text[200];
};
const StatusMeaning* StatusMeanings(size_t& count);

enum class Stream { kStdout, kStderr };

class Failure : public std::runtime_error {
 public:
  // `text` is printed verbatim: it carries its own line end when the message has one. `hint`,
  // when not empty, is one more line for standard error that explains a designed failure.
  Failure(Status status, Stream stream, const std::string& text, std::string hint = {})
      : std::runtime_error(text), status_(status), stream_(stream), hint_(std::move(hint)) {}

  Status status() const { return status_; }
  int exit_status() const { return static_cast<int>(status_); }
  Stream stream() const { return stream_; }
  const std::string& hint() const { return hint_; }

 private:
  Status status_;
  Stream stream_;
  std::string hint_;
};

[[noreturn]] inline void Fail(Status status, Stream stream, const std::string& text,
                              std::string hint = {}) {
  throw Failure(status, stream, text, std::move(hint));
}

// Storage a run cannot do without could not be allocated.
inline constexpr char kAllocationFailedText[] = "Allocation failed.\n";
[[noreturn]] inline void AllocationFailed(std::string hint = {}) {
  Fail(Status::kAllocation, Stream::kStdout, kAllocationFailedText, std::move(hint));
}

// A line a run prints while it goes on (a warning, a consistency report), kept in the order the
// run met it; the command line prints them before the report.
struct Message {
  Stream stream;
  std::string text;
};

}  // namespace quarnel
