// system() for the classic run, posix_spawn with a clean signal state for batch runs.
#include "secondary/shell_command.h"

#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>

extern char** environ;

namespace quarnel {

std::string ShellQuote(const std::string& word) {
  std::string quoted = "'";
  for (char c : word) {
    if (c == '\'')
      quoted += "'\\''";
    else
      quoted += c;
  }
  quoted += "'";
  return quoted;
}

std::string ShellFileWord(const std::string& path) {
  return ShellQuote(!path.empty() && path[0] == '-' ? "./" + path : path);
}

void RunShell(const std::string& command) {
  std::fflush(stdout);
  std::fflush(stderr);
  int ignored = std::system(command.c_str());
  (void)ignored;
}

int RunCommand(const std::string& command) {
  std::fflush(stdout);
  std::fflush(stderr);
  posix_spawnattr_t attributes;
  posix_spawnattr_init(&attributes);
  sigset_t none, defaults;
  sigemptyset(&none);
  sigemptyset(&defaults);
  for (int signal : {SIGINT, SIGTERM, SIGHUP, SIGUSR1, SIGPIPE}) sigaddset(&defaults, signal);
  posix_spawnattr_setsigmask(&attributes, &none);
  posix_spawnattr_setsigdefault(&attributes, &defaults);
  posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETSIGDEF);
  const char* argv[] = {"sh", "-c", command.c_str(), nullptr};
  pid_t child = 0;
  const int started = posix_spawn(&child, "/bin/sh", nullptr, &attributes, const_cast<char* const*>(argv), environ);
  posix_spawnattr_destroy(&attributes);
  if (started != 0) return -1;
  int status = 0;
  while (waitpid(child, &status, 0) < 0)
    if (errno != EINTR) return -1;
  return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

}  // namespace quarnel
