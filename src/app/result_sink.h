// Results in input order: each input's results are kept until every earlier input is done,
// then written at once, so that an interrupted run leaves a clean prefix; its notes and
// failures go to standard error beside them, and on a terminal the progress.
#pragma once

#include <atomic>
#include <cstdio>
#include <chrono>
#include <mutex>
#include <string>
#include <vector>

#include "app/batch_chains.h"
#include "app/console.h"
#include "app/results_file.h"

namespace quarnel {

class ResultSink {
 public:
  // `stop` is raised when a file cannot be written, so that no more chains are started; notes,
  // failures and progress go to the console's standard error.
  ResultSink(const BatchOptions& options, ResultsFile& file, size_t inputs, std::atomic<bool>& stop,
             Console& console);
  ~ResultSink();
  ResultSink(const ResultSink&) = delete;
  ResultSink& operator=(const ResultSink&) = delete;

  // Keeps an input's results and writes every input whose turn has come.
  void Done(size_t index, InputResult result);
  // Ends the progress line and closes the results file.
  void Finish();

  int chains() const { return chains_; }
  int failures() const { return failures_; }
  // The file that could not be written, and why; empty when every write went through.
  const std::string& writeFailure() const { return writeFailure_; }

 private:
  void Write(const InputResult& result);
  void StopOn(const std::string& failure);
  bool WriteFeatures(const std::string& lines);
  void ClearProgress();
  void ShowProgress();

  const BatchOptions& options_;
  ResultsFile& file_;
  std::atomic<bool>& stop_;
  Console& console_;
  std::mutex mutex_;
  std::vector<InputResult> pending_;
  std::vector<bool> ready_;
  size_t next_ = 0;
  size_t inputsDone_ = 0;
  int chains_ = 0;
  int failures_ = 0;
  std::string writeFailure_;
  bool progress_;
  bool shown_ = false;
  std::chrono::steady_clock::time_point started_;
  std::FILE* features_ = nullptr;  // --features
};

}  // namespace quarnel
