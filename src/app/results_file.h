// Where a batch run's results go: standard output, or the --out file, which is the user's. The
// file is never one of the run's inputs, is held by one run at a time (a second run on it
// waits), and is appended to only when it holds results of the same format made with the same
// options. Every write is checked; what could not be written whole is cut off again, so that
// the file always ends with a complete line.
#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "app/batch_inputs.h"
#include "report/resume.h"

namespace quarnel {

class ResultsFile {
 public:
  using Waiting = std::function<void(const std::string& path)>;

  // Opens the results' destination (the --out file, else the descriptor `output`, standard
  // output) and writes the opening lines where the file starts afresh. Fails with status 2 when
  // --out names an input or a file --resume may not append to, and with Status::kWriteFailed
  // when it cannot be opened or written. `waiting` is told when another run holds the file.
  ResultsFile(const BatchOptions& options, const std::vector<Input>& inputs, int output, const Waiting& waiting);
  ~ResultsFile();
  ResultsFile(const ResultsFile&) = delete;
  ResultsFile& operator=(const ResultsFile&) = delete;

  // The chains already on file (--resume).
  const std::set<ResumeKey>& done() const { return done_; }

  // Writes the text whole, or cuts the file back to where it was and returns false;
  // failure() then holds the file and the system's reason.
  bool Append(const std::string& text);
  // Closes the file, which may report a failure of its own; false when it did.
  bool Close();
  const std::string& failure() const { return failure_; }

 private:
  void Open(const BatchOptions& options, const Waiting& waiting);
  void Resume(const BatchOptions& options);
  [[noreturn]] void FailWrite(const std::string& what, int error);

  std::string name_;       // as messages give it
  int fd_ = -1;
  bool own_ = false;       // the --out file, not standard output
  bool regular_ = false;   // a regular file, which can be cut back
  std::uintmax_t committed_ = 0;  // bytes of the file known complete
  std::set<ResumeKey> done_;
  std::string failure_;
};

}  // namespace quarnel
