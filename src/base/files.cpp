// Files and folders with stat, opendir, mkdir, nftw and stdio.
#include "base/files.h"

#include <dirent.h>
#include <ftw.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <memory>

namespace quarnel {
namespace {

constexpr int kOpenFolders = 16;  // nftw's descriptors at once
constexpr size_t kReadChunk = size_t{1} << 20;

struct FileCloser {
  void operator()(std::FILE* file) const { std::fclose(file); }
};

int RemoveOne(const char* path, const struct stat*, int, struct FTW*) {
  std::remove(path);
  return 0;
}

}  // namespace

bool CanRead(const std::string& path) {
  return std::unique_ptr<std::FILE, FileCloser>(std::fopen(path.c_str(), "r")) != nullptr;
}

bool IsDirectory(const std::string& path) {
  struct stat status;
  return ::stat(path.c_str(), &status) == 0 && S_ISDIR(status.st_mode);
}

bool Exists(const std::string& path) {
  struct stat status;
  return ::stat(path.c_str(), &status) == 0;
}

std::string BaseName(const std::string& path) {
  const size_t slash = path.rfind('/');
  return slash == std::string::npos ? path : path.substr(slash + 1);
}

std::string FolderOf(const std::string& path) {
  size_t slash = path.rfind('/');
  if (slash == std::string::npos) return "";
  while (slash > 0 && path[slash - 1] == '/') --slash;
  return slash == 0 ? "/" : path.substr(0, slash);
}

std::string InFolder(const std::string& folder, const std::string& name) {
  if (folder.empty()) return name;
  return folder.back() == '/' ? folder + name : folder + "/" + name;
}

bool ListFolder(const std::string& folder, std::vector<FolderEntry>& entries) {
  DIR* dir = ::opendir(folder.c_str());
  if (dir == nullptr) return false;
  errno = 0;
  while (const dirent* entry = ::readdir(dir)) {
    const std::string name = entry->d_name;
    if (name == "." || name == "..") continue;
    const std::string path = InFolder(folder, name);
    struct stat link, target;
    const bool linked = ::lstat(path.c_str(), &link) == 0 && S_ISLNK(link.st_mode);
    const bool reached = ::stat(path.c_str(), &target) == 0;
    entries.push_back({path, reached && S_ISDIR(target.st_mode) && !linked, reached && S_ISREG(target.st_mode)});
    errno = 0;
  }
  const int error = errno;
  ::closedir(dir);
  errno = error;
  return error == 0;
}

bool MakeFolders(const std::string& folder) {
  if (folder.empty()) return true;
  if (IsDirectory(folder)) return true;
  const std::string above = FolderOf(folder);
  if (!above.empty() && above != folder && !MakeFolders(above)) return false;
  if (::mkdir(folder.c_str(), 0777) == 0) return true;
  if (errno == EEXIST) {
    if (IsDirectory(folder)) return true;
    errno = ENOTDIR;
  }
  return false;
}

void RemoveTree(const std::string& path) {
  ::nftw(path.c_str(), RemoveOne, kOpenFolders, FTW_DEPTH | FTW_PHYS);
}

bool ReadWholeFile(const std::string& path, std::string& bytes) {
  std::unique_ptr<std::FILE, FileCloser> file(std::fopen(path.c_str(), "rb"));
  if (!file) return false;
  bytes.clear();
  std::string chunk(kReadChunk, '\0');
  size_t got = 0;
  while ((got = std::fread(&chunk[0], 1, chunk.size(), file.get())) > 0) bytes.append(chunk, 0, got);
  return std::ferror(file.get()) == 0;
}

std::string LinkTarget(const std::string& path) {
  std::string target(4096, '\0');
  const ssize_t length = ::readlink(path.c_str(), &target[0], target.size());
  if (length < 0 || static_cast<size_t>(length) >= target.size()) return "";
  target.resize(static_cast<size_t>(length));
  return target;
}

}  // namespace quarnel
