// Paths that exist only while a run needs them (files, or folders removed with what they hold),
// listed so that a run stopped by a signal can remove them.
#pragma once

#include <mutex>
#include <set>
#include <string>

namespace quarnel {

class TemporaryFiles {
 public:
  void Add(const std::string& path);
  // The path is no longer temporary: renamed into place, or already removed.
  void Forget(const std::string& path);
  // Removes every path still listed.
  void RemoveAll();

 private:
  std::mutex mutex_;
  std::set<std::string> paths_;
};

}  // namespace quarnel
