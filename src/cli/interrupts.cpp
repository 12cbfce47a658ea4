// The signal thread: sigwait on the blocked signals, clean up, then die of the signal itself.
#include "cli/interrupts.h"

#include <signal.h>
#include <unistd.h>

namespace quarnel {

namespace {

// SIGUSR1 only wakes the thread when the guard goes away.
constexpr int kWakeSignal = SIGUSR1;
constexpr int kStopSignals[] = {SIGINT, SIGTERM, SIGHUP};

sigset_t WaitedSignals() {
  sigset_t set;
  sigemptyset(&set);
  for (int signal : kStopSignals) sigaddset(&set, signal);
  sigaddset(&set, kWakeSignal);
  return set;
}

[[noreturn]] void DieOf(int signal) {
  ::signal(signal, SIG_DFL);
  sigset_t only;
  sigemptyset(&only);
  sigaddset(&only, signal);
  pthread_sigmask(SIG_UNBLOCK, &only, nullptr);
  raise(signal);
  _exit(128 + signal);  // not reached: the default action ends the process
}

}  // namespace

InterruptGuard::InterruptGuard(TemporaryFiles& files) : files_(files) {
  const sigset_t set = WaitedSignals();
  pthread_sigmask(SIG_BLOCK, &set, nullptr);
  started_ = pthread_create(&thread_, nullptr, [](void* self) -> void* {
    static_cast<InterruptGuard*>(self)->Wait();
    return nullptr;
  }, this) == 0;
}

InterruptGuard::~InterruptGuard() {
  if (started_) {
    stopping_ = true;
    pthread_kill(thread_, kWakeSignal);
    pthread_join(thread_, nullptr);
  }
  const sigset_t set = WaitedSignals();
  pthread_sigmask(SIG_UNBLOCK, &set, nullptr);
}

void InterruptGuard::Wait() {
  const sigset_t set = WaitedSignals();
  int signal = 0;
  while (sigwait(&set, &signal) == 0) {
    if (signal == kWakeSignal) {
      if (stopping_) return;
      continue;  // someone else's SIGUSR1: the run has no use for it
    }
    files_.RemoveAll();
    DieOf(signal);
  }
}

}  // namespace quarnel
