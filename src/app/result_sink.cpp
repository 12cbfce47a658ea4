// The ordered sink: one mutex, one pass over the inputs that are ready.
#include "app/result_sink.h"

#include <cerrno>
#include <cstdio>
#include <cstring>

#include "base/text.h"
#include "report/results.h"

namespace quarnel {

ResultSink::ResultSink(const BatchOptions& options, ResultsFile& file, size_t inputs,
                       std::atomic<bool>& stop, Console& console)
    : options_(options),
      file_(file),
      stop_(stop),
      console_(console),
      pending_(inputs),
      ready_(inputs, false),
      progress_(!options.quiet && console.ShowsProgress()),
      started_(std::chrono::steady_clock::now()) {
  if (options.featuresFile.empty()) return;
  features_ = std::fopen(options.featuresFile.c_str(), options.resume ? "a" : "w");
  if (features_ == nullptr)
    Fail(Status::kWriteFailed, Stream::kStderr,
         "quarnel: cannot write " + options.featuresFile + ": " + std::strerror(errno) + "\n");
}

ResultSink::~ResultSink() {
  if (features_ != nullptr) std::fclose(features_);
}

bool ResultSink::WriteFeatures(const std::string& lines) {
  if (features_ == nullptr || lines.empty()) return true;
  if (std::fwrite(lines.data(), 1, lines.size(), features_) == lines.size() && std::fflush(features_) == 0)
    return true;
  StopOn("cannot write " + options_.featuresFile + ": " + std::strerror(errno));
  return false;
}

void ResultSink::Done(size_t index, InputResult result) {
  std::lock_guard<std::mutex> lock(mutex_);
  pending_[index] = std::move(result);
  ready_[index] = true;
  ++inputsDone_;
  while (next_ < ready_.size() && ready_[next_]) {
    if (writeFailure_.empty()) Write(pending_[next_]);
    pending_[next_] = InputResult();
    ++next_;
  }
  if (writeFailure_.empty()) ShowProgress();
}

void ResultSink::Finish() {
  if (progress_ && shown_) console_.Print(Stream::kStderr, "\n");
  if (!file_.Close() && writeFailure_.empty()) writeFailure_ = file_.failure();
  if (features_ != nullptr) {
    const bool closed = std::fclose(features_) == 0;
    features_ = nullptr;
    if (!closed && writeFailure_.empty())
      writeFailure_ = "cannot write " + options_.featuresFile + ": " + std::strerror(errno);
  }
}

void ResultSink::StopOn(const std::string& failure) {
  writeFailure_ = failure;
  stop_ = true;
}

// A chain whose files could not all be written has no line: it is judged again on resuming.
void ResultSink::Write(const InputResult& result) {
  ClearProgress();
  if (!options_.quiet)
    for (const std::string& note : result.notes) console_.Print(Stream::kStderr, "quarnel: " + note + "\n");
  std::string lines, features;
  for (const ChainOutcome& outcome : result.chains) {
    ++chains_;
    if (outcome.ok) {
      lines += FormatResult(options_.format, outcome);
      features += outcome.features;
      continue;
    }
    if (!result.writeFailure.empty() && outcome.error.empty()) continue;  // reported below
    ++failures_;
    const std::string what = outcome.chainId.empty() || outcome.input == outcome.entry
                                 ? outcome.input
                                 : outcome.input + " chain " + outcome.chainId;
    console_.Print(Stream::kStderr, "quarnel: " + what + ": " + outcome.error + "\n");
  }
  if (!WriteFeatures(features)) return;
  if (!file_.Append(lines)) return StopOn(file_.failure());
  if (!result.writeFailure.empty()) StopOn(result.writeFailure);
}

void ResultSink::ClearProgress() {
  if (progress_ && shown_) console_.Print(Stream::kStderr, "\r\033[K");
}

void ResultSink::ShowProgress() {
  if (!progress_) return;
  const double seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - started_).count();
  const double rate = seconds > 0.0 ? chains_ / seconds : 0.0;
  const double perInput = inputsDone_ > 0 ? seconds / inputsDone_ : 0.0;
  const int left = static_cast<int>(perInput * static_cast<double>(ready_.size() - inputsDone_));
  console_.Print(Stream::kStderr, Format("\r\033[Kquarnel: %zu/%zu inputs, %d chains, %.1f chains/s, %d:%02d left",
                                         inputsDone_, ready_.size(), chains_, rate, left / 60, left % 60));
  shown_ = true;
}

}  // namespace quarnel
