// flock on the files of classic runs, held by descriptors that close at the end of the run.
#include "base/classic_locks.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>

namespace quarnel {

namespace {

// Whether the descriptor still names the file at `path` (it may have been removed or replaced
// while we waited).
bool StillThere(int fd, const std::string& path) {
  struct stat opened, named;
  return ::fstat(fd, &opened) == 0 && ::stat(path.c_str(), &named) == 0 &&
         opened.st_dev == named.st_dev && opened.st_ino == named.st_ino;
}

}  // namespace

ClassicLocks::~ClassicLocks() {
  for (auto it = held_.rbegin(); it != held_.rend(); ++it) ::close(*it);
}

int ClassicLocks::Lock(const std::string& path, bool& created) {
  for (;;) {
    created = true;
    int fd = ::open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
    if (fd < 0 && errno == EEXIST) {
      created = false;
      fd = ::open(path.c_str(), O_WRONLY | O_CLOEXEC);
    }
    if (fd < 0) return -1;
    int locked;
    while ((locked = ::flock(fd, LOCK_EX)) != 0 && errno == EINTR) {
    }
    if (locked != 0 || StillThere(fd, path)) {
      held_.push_back(fd);
      return fd;
    }
    ::close(fd);  // removed by the run we waited for: lock what is there now
  }
}

}  // namespace quarnel
