// The list of temporary paths, shared by the threads of a run.
#include "base/temporary_files.h"

#include "base/files.h"

namespace quarnel {

void TemporaryFiles::Add(const std::string& path) {
  std::lock_guard<std::mutex> lock(mutex_);
  paths_.insert(path);
}

void TemporaryFiles::Forget(const std::string& path) {
  std::lock_guard<std::mutex> lock(mutex_);
  paths_.erase(path);
}

void TemporaryFiles::RemoveAll() {
  std::lock_guard<std::mutex> lock(mutex_);
  for (const std::string& path : paths_) RemoveTree(path);
  paths_.clear();
}

}  // namespace quarnel
