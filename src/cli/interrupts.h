// A batch run stopped by SIGINT or SIGTERM leaves nothing of its own behind: the temporary
// files and folders it has open at that moment are removed, and it ends by the same signal, so
// that its status is the usual 128 + signal.
#pragma once

#include <pthread.h>

#include <atomic>

#include "base/temporary_files.h"

namespace quarnel {

// While it lives, SIGINT, SIGTERM and SIGHUP are blocked in every thread started after it and
// taken by a thread of its own, which removes `files` and ends the process by the signal. Make
// it before any other thread of the run; processes the run starts get the signals as usual.
class InterruptGuard {
 public:
  explicit InterruptGuard(TemporaryFiles& files);
  ~InterruptGuard();
  InterruptGuard(const InterruptGuard&) = delete;
  InterruptGuard& operator=(const InterruptGuard&) = delete;

 private:
  void Wait();

  TemporaryFiles& files_;
  pthread_t thread_{};
  bool started_ = false;
  std::atomic<bool> stopping_{false};
};

}  // namespace quarnel
