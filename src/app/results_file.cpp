// The results file: refused when it is an input, locked with flock while the run writes it,
// checked against the run's format and options before resuming, written with write(2) so that
// the length known complete is exact.
#include "app/results_file.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

#include "base/status.h"
#include "base/text.h"
#include "report/result_options.h"

namespace quarnel {

namespace {

constexpr char kStandardOutput[] = "standard output";

bool SameFile(const struct stat& a, const std::string& path) {
  struct stat b;
  return ::stat(path.c_str(), &b) == 0 && a.st_dev == b.st_dev && a.st_ino == b.st_ino;
}

// --out must not name a file the run reads.
void RefuseInputs(const BatchOptions& options, const std::vector<Input>& inputs) {
  struct stat out;
  if (::stat(options.out.c_str(), &out) != 0) return;
  std::vector<std::string> read = {options.listFile};
  for (const Input& input : inputs)
    if (!input.path.empty() && !input.standardInput) read.push_back(input.path);
  for (const std::string& path : read) {
    if (path.empty() || !SameFile(out, path)) continue;
    Fail(Status::kBadOption, Stream::kStderr,
         Format("quarnel: --out %s is %s, which this run reads\n", options.out.c_str(), path.c_str()),
         "quarnel: results never overwrite an input: name another file for them");
  }
}

std::string ReadWhole(int fd) {
  std::string bytes;
  char buffer[1 << 16];
  for (ssize_t n; (n = ::pread(fd, buffer, sizeof buffer, static_cast<off_t>(bytes.size()))) != 0;) {
    if (n < 0 && errno == EINTR) continue;
    if (n < 0) break;
    bytes.append(buffer, static_cast<size_t>(n));
  }
  return bytes;
}

// The format another results file holds, for the message that refuses it.
std::string FormatOfFirstLine(const std::string& firstLine) {
  std::string options;
  if (ReadRecordedOptions(ResultFormat::kTsv, firstLine, options)) return "TSV results";
  if (ReadRecordedOptions(ResultFormat::kJson, firstLine, options)) return "JSON Lines results";
  if (ReadRecordedOptions(ResultFormat::kResidues, firstLine, options)) return "residue rows";
  if (firstLine.rfind("chain_id\t", 0) == 0) return "TSV results of an earlier quarnel, without its options";
  return "no quarnel results";
}

std::string Shown(const std::string& options) { return options.empty() ? "(defaults)" : options; }

}  // namespace

ResultsFile::ResultsFile(const BatchOptions& options, const std::vector<Input>& inputs, int output,
                         const Waiting& waiting) {
  if (options.out.empty()) {
    name_ = kStandardOutput;
    fd_ = output;
    if (!Append(ResultHeader(options.format, RecordedOptions(SettingsOf(options)))))
      Fail(Status::kWriteFailed, Stream::kStderr, "quarnel: " + failure_ + "\n");
    return;
  }
  RefuseInputs(options, inputs);
  name_ = options.out;
  own_ = true;
  Open(options, waiting);
}

ResultsFile::~ResultsFile() {
  if (own_ && fd_ >= 0) ::close(fd_);
}

void ResultsFile::Open(const BatchOptions& options, const Waiting& waiting) {
  fd_ = ::open(name_.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0666);
  if (fd_ < 0) FailWrite("cannot open", errno);
  // Two runs appending to one file would write every row twice: the second waits its turn,
  // then finds the first one's rows on file.
  if (::flock(fd_, LOCK_EX | LOCK_NB) != 0 && errno == EWOULDBLOCK) {
    waiting(name_);
    while (::flock(fd_, LOCK_EX) != 0 && errno == EINTR) {
    }
  }
  struct stat status;
  regular_ = ::fstat(fd_, &status) == 0 && S_ISREG(status.st_mode);
  if (options.resume) return Resume(options);
  if (regular_ && ::ftruncate(fd_, 0) != 0) FailWrite("cannot write", errno);
  if (!Append(ResultHeader(options.format, RecordedOptions(SettingsOf(options)))))
    Fail(Status::kWriteFailed, Stream::kStderr, "quarnel: " + failure_ + "\n");
}

void ResultsFile::Resume(const BatchOptions& options) {
  const std::string bytes = ReadWhole(fd_);
  const ResumeState state = ReadResume(bytes, options.format);
  const std::string recorded = RecordedOptions(SettingsOf(options));
  auto refuse = [&](const std::string& text, const std::string& hint) {
    ::close(fd_);
    fd_ = -1;
    Fail(Status::kBadOption, Stream::kStderr, "quarnel: " + text + "\n", "quarnel: " + hint);
  };
  if (!state.empty && !state.recorded)
    refuse(Format("%s holds %s; --resume appends only to %s results made with the same options",
                  name_.c_str(), FormatOfFirstLine(bytes.substr(0, bytes.find('\n'))).c_str(),
                  ResultFormatName(options.format)),
           "write to another file, or leave out --resume to start this one afresh");
  if (!state.empty && state.options != recorded)
    refuse(Format("%s holds results made with options %s; this run's are %s", name_.c_str(),
                  Shown(state.options).c_str(), Shown(recorded).c_str()),
           "resume with the options the file was made with, or write to another file");
  committed_ = state.empty ? 0 : state.completeBytes;
  // A line cut short by a run that stopped mid-write is dropped, and its chain run again.
  if (regular_ && (::ftruncate(fd_, static_cast<off_t>(committed_)) != 0 ||
                   ::lseek(fd_, static_cast<off_t>(committed_), SEEK_SET) < 0))
    FailWrite("cannot write", errno);
  done_ = state.done;
  if (state.empty && !Append(ResultHeader(options.format, recorded)))
    Fail(Status::kWriteFailed, Stream::kStderr, "quarnel: " + failure_ + "\n");
}

void ResultsFile::FailWrite(const std::string& what, int error) {
  if (fd_ >= 0) ::close(fd_);
  fd_ = -1;
  Fail(Status::kWriteFailed, Stream::kStderr,
       Format("quarnel: %s %s: %s\n", what.c_str(), name_.c_str(), std::strerror(error)));
}

bool ResultsFile::Append(const std::string& text) {
  size_t done = 0;
  while (done < text.size()) {
    const ssize_t n = ::write(fd_, text.data() + done, text.size() - done);
    if (n < 0 && errno == EINTR) continue;
    if (n <= 0) {
      const int error = n < 0 ? errno : ENOSPC;
      failure_ = Format("cannot write %s: %s", name_.c_str(), std::strerror(error));
      if (regular_ && ::ftruncate(fd_, static_cast<off_t>(committed_)) == 0)
        ::lseek(fd_, static_cast<off_t>(committed_), SEEK_SET);
      return false;
    }
    done += static_cast<size_t>(n);
  }
  committed_ += text.size();
  return true;
}

bool ResultsFile::Close() {
  if (!own_ || fd_ < 0) return true;
  const int status = ::close(fd_);
  fd_ = -1;
  if (status == 0) return true;
  failure_ = Format("cannot write %s: %s", name_.c_str(), std::strerror(errno));
  return false;
}

}  // namespace quarnel
