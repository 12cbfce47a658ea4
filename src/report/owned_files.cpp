// The one rule for writing picture files: create or replace our own, refuse anyone else's.
#include "report/owned_files.h"

#include <fcntl.h>
#include <unistd.h>

#include <sys/stat.h>

#include <cerrno>
#include <cstdio>
#include <cstring>

#include "base/files.h"
#include "base/text.h"

namespace quarnel {

namespace {

std::string FirstLine(const std::string& text) { return text.substr(0, text.find('\n')); }

// The file's first line, without its newline; false when the file is empty or unreadable.
bool ReadFirstLine(const std::string& path, std::string& line) {
  std::FILE* file = std::fopen(path.c_str(), "rb");
  if (file == nullptr) return false;
  line.clear();
  bool any = false;
  for (int c; (c = std::fgetc(file)) != EOF && c != '\n';) {
    line += static_cast<char>(c);
    any = true;
  }
  any = (any || !std::feof(file)) && std::ferror(file) == 0;
  std::fclose(file);
  return any;
}

// Empty when `path` may be written; otherwise why not.
std::string Refusal(const std::string& path, const std::string& firstLine) {
  struct stat status;
  if (::lstat(path.c_str(), &status) != 0) return "";
  if (!S_ISREG(status.st_mode)) return path + " exists and is not a regular file; not replaced";
  std::string existing;
  if (!ReadFirstLine(path, existing) || existing != firstLine)
    return path + " exists and was not written by quarnel for this chain; left as it is";
  return "";
}

bool WriteAll(int fd, const std::string& text) {
  size_t done = 0;
  while (done < text.size()) {
    const ssize_t n = ::write(fd, text.data() + done, text.size() - done);
    if (n < 0 && errno == EINTR) continue;
    if (n <= 0) {
      if (n == 0) errno = ENOSPC;
      return false;
    }
    done += static_cast<size_t>(n);
  }
  return true;
}

// A few thousand names is far more than chains writing beside each other at once can take.
constexpr int kTemporaryNameTries = 4096;

std::string TemporaryName(const std::string& path, int k) {
  return InFolder(FolderOf(path), "." + BaseName(path)) + Format(".%ld.%d.tmp", static_cast<long>(::getpid()), k);
}

// Closes the descriptor; false, with errno set, when the close or an earlier step failed.
bool CloseAfter(int fd, bool ok) {
  const int saved = errno;
  const bool closed = ::close(fd) == 0;
  if (!ok) errno = saved;
  return ok && closed;
}

// Makes a file under a fresh temporary name beside `path` with `make(name)`, which returns
// false with errno set when it cannot; the name, or empty. The name is listed in `temporaries`
// from before it exists.
template <class Make>
std::string UnderTemporaryName(const std::string& path, TemporaryFiles* temporaries, Make make) {
  for (int k = 0; k < kTemporaryNameTries; ++k) {
    const std::string name = TemporaryName(path, k);
    if (temporaries != nullptr) temporaries->Add(name);
    if (make(name)) return name;
    const int reason = errno;
    if (temporaries != nullptr) temporaries->Forget(name);
    errno = reason;
    if (reason != EEXIST) break;
  }
  return "";
}

// The text in a complete file under a temporary name beside `path`; the name, or empty with
// errno set. Written to an unnamed file first where the file system has them, so that a run
// killed while writing leaves nothing.
std::string WriteTemporary(const std::string& path, const std::string& text, TemporaryFiles* temporaries) {
  std::string folder = FolderOf(path);
  if (folder.empty()) folder = ".";
  const int unnamed = ::open(folder.c_str(), O_TMPFILE | O_WRONLY | O_CLOEXEC, 0666);
  if (unnamed < 0) {
    if (errno != EOPNOTSUPP && errno != EISDIR && errno != EINVAL) return "";
    return UnderTemporaryName(path, temporaries, [&](const std::string& name) {
      const int fd = ::open(name.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
      if (fd < 0) return false;
      if (CloseAfter(fd, WriteAll(fd, text))) return true;
      const int reason = errno;
      ::unlink(name.c_str());
      errno = reason;
      return false;
    });
  }
  if (!WriteAll(unnamed, text)) {
    CloseAfter(unnamed, false);
    return "";
  }
  const std::string self = Format("/proc/self/fd/%d", unnamed);
  const std::string name = UnderTemporaryName(path, temporaries, [&](const std::string& candidate) {
    return ::linkat(AT_FDCWD, self.c_str(), AT_FDCWD, candidate.c_str(), AT_SYMLINK_FOLLOW) == 0;
  });
  if (!CloseAfter(unnamed, !name.empty())) {
    const int reason = errno;
    if (!name.empty()) ::unlink(name.c_str());
    errno = reason;
    return "";
  }
  return name;
}

}  // namespace

bool MakeFolder(const std::string& folder, WrittenFiles& written) {
  if (MakeFolders(folder)) return true;
  written.errors.push_back("cannot make the folder " + folder + ": " + std::strerror(errno));
  written.writeFailed = true;
  return false;
}

void WriteOwnedFile(const std::string& path, const std::string& text, WrittenFiles& written,
                    TemporaryFiles* temporaries) {
  const std::string refusal = Refusal(path, FirstLine(text));
  if (!refusal.empty()) {
    written.errors.push_back(refusal);
    return;
  }
  const std::string temporary = WriteTemporary(path, text, temporaries);
  if (temporary.empty() || std::rename(temporary.c_str(), path.c_str()) != 0) {
    const int reason = errno;
    if (!temporary.empty()) ::unlink(temporary.c_str());
    written.errors.push_back("cannot write " + path + ": " + std::strerror(reason));
    written.writeFailed = true;
  } else {
    written.paths.push_back(path);
  }
  if (!temporary.empty() && temporaries != nullptr) temporaries->Forget(temporary);
}

}  // namespace quarnel
