// The one rule for writing picture files: create or replace our own, refuse anyone else's.
#include "cli/owned_files.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <fstream>

#include "base/text.h"

namespace quarnel {

namespace {

namespace fs = std::filesystem;

std::string FirstLine(const std::string& text) { return text.substr(0, text.find('\n')); }

// Empty when `path` may be written; otherwise why not.
std::string Refusal(const std::string& path, const std::string& firstLine) {
  std::error_code error;
  const fs::file_status status = fs::symlink_status(path, error);
  if (!fs::exists(status)) return "";
  if (!fs::is_regular_file(status)) return path + " exists and is not a regular file; not replaced";
  std::ifstream in(path, std::ios::binary);
  std::string existing;
  std::getline(in, existing);
  if (!in || existing != firstLine)
    return path + " exists and was not written by quarnel for this chain; left as it is";
  return "";
}

bool WriteAll(int fd, const std::string& text) {
  size_t done = 0;
  while (done < text.size()) {
    const ssize_t n = ::write(fd, text.data() + done, text.size() - done);
    if (n < 0 && errno == EINTR) continue;
    if (n <= 0) return false;
    done += static_cast<size_t>(n);
  }
  return true;
}

// A few thousand names is far more than chains writing beside each other at once can take.
constexpr int kTemporaryNameTries = 4096;

// Creates a fresh file beside `path` (exclusive creation, so two writers never share one, with
// the permissions the umask gives any new file); its descriptor, or -1.
int CreateTemporary(const std::string& path, std::string& name) {
  const fs::path target(path);
  const std::string stem =
      (target.parent_path() / ("." + target.filename().string())).string() +
      Format(".%ld.", static_cast<long>(::getpid()));
  for (int k = 0; k < kTemporaryNameTries; ++k) {
    name = stem + std::to_string(k) + ".tmp";
    const int fd = ::open(name.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
    if (fd >= 0 || errno != EEXIST) return fd;
  }
  return -1;
}

// Writes the text under a temporary name beside `path`; the name, or empty on failure.
std::string WriteTemporary(const std::string& path, const std::string& text) {
  std::string name;
  const int fd = CreateTemporary(path, name);
  if (fd < 0) return "";
  const bool written = WriteAll(fd, text);
  if (::close(fd) != 0 || !written) {
    ::unlink(name.c_str());
    return "";
  }
  return name;
}

}  // namespace

bool MakeFolder(const std::string& folder, WrittenFiles& written) {
  std::error_code error;
  fs::create_directories(folder, error);
  if (!error && fs::is_directory(folder, error)) return true;
  written.errors.push_back("cannot make the folder " + folder + ": " +
                           (error ? error.message() : std::string("not a directory")));
  return false;
}

void WriteOwnedFile(const std::string& path, const std::string& text, WrittenFiles& written) {
  const std::string refusal = Refusal(path, FirstLine(text));
  if (!refusal.empty()) {
    written.errors.push_back(refusal);
    return;
  }
  const std::string temporary = WriteTemporary(path, text);
  if (temporary.empty() || std::rename(temporary.c_str(), path.c_str()) != 0) {
    const int reason = errno;
    if (!temporary.empty()) ::unlink(temporary.c_str());
    written.errors.push_back("cannot write " + path + ": " + std::strerror(reason));
    return;
  }
  written.paths.push_back(path);
}

}  // namespace quarnel
