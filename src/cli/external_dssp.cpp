// DSSP_PATH run in a private temporary folder named after the process, so that the folders of
// killed runs can be told apart and removed.
#include "cli/external_dssp.h"

#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>

#include "base/text.h"
#include "cli/inputs.h"

extern char** environ;

namespace quarnel {

namespace {

constexpr char kFolderPrefix[] = "quarnel.";

std::string TemporaryRoot() {
  const char* root = std::getenv("TMPDIR");
  return root != nullptr && *root != '\0' ? root : "/tmp";
}

// A folder of our own, quarnel.<pid>.XXXXXX, removed with everything in it when done.
class PrivateFolder {
 public:
  explicit PrivateFolder(TemporaryFiles* temporaries) : temporaries_(temporaries) {
    std::string pattern = TemporaryRoot() + "/" + kFolderPrefix + std::to_string(::getpid()) + ".XXXXXX";
    if (mkdtemp(pattern.data()) == nullptr) return;
    path_ = pattern;
    if (temporaries_ != nullptr) temporaries_->Add(path_);
  }
  ~PrivateFolder() {
    if (path_.empty()) return;
    std::error_code ignored;
    std::filesystem::remove_all(path_, ignored);
    if (temporaries_ != nullptr) temporaries_->Forget(path_);
  }
  PrivateFolder(const PrivateFolder&) = delete;
  PrivateFolder& operator=(const PrivateFolder&) = delete;
  const std::string& path() const { return path_; }

 private:
  TemporaryFiles* temporaries_;
  std::string path_;
};

std::string ReadAll(const std::string& path) {
  std::ifstream in(path, std::ios::binary);
  std::ostringstream text;
  text << in.rdbuf();
  return text.str();
}

bool HasTable(const std::string& text) {
  return text.rfind("  #  RESID", 0) == 0 || text.find("\n  #  RESID") != std::string::npos;
}

// The process id in a private folder's name; 0 when the name is not one.
long FolderOwner(const std::string& name) {
  if (name.rfind(kFolderPrefix, 0) != 0) return 0;
  char* end = nullptr;
  const long pid = std::strtol(name.c_str() + sizeof kFolderPrefix - 1, &end, 10);
  return *end == '.' ? pid : 0;
}

}  // namespace

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

void RemoveAbandonedFolders() {
  std::error_code error;
  for (std::filesystem::directory_iterator it(TemporaryRoot(), error), end; !error && it != end;
       it.increment(error)) {
    const long owner = FolderOwner(it->path().filename().string());
    if (owner <= 0 || ::kill(static_cast<pid_t>(owner), 0) == 0 || errno != ESRCH) continue;
    std::error_code ignored;
    std::filesystem::remove_all(it->path(), ignored);
  }
}

std::unique_ptr<LineSource> ExternalDssp::DsspOutput(const Structure& /*structure*/,
                                                     std::vector<Message>& messages) {
  auto without = [&](const std::string& reason) {
    messages.push_back(Message{Stream::kStderr,
                               Format("quarnel: %s: DSSP failed (%s); going on without secondary structure\n",
                                      name_.c_str(), reason.c_str())});
    return std::make_unique<TextSource>(name_ + " (no DSSP)", std::string());
  };
  const PrivateFolder folder(temporaries_);
  if (folder.path().empty()) return without("no temporary folder");
  const std::string structure = folder.path() + "/structure.pdb";
  const std::string output = folder.path() + "/structure.dssp";
  const std::string log = folder.path() + "/dssp.log";
  {
    std::ofstream out(structure, std::ios::binary);
    out << text_;
    out.close();
    if (!out) return without("cannot write its input");
  }
  const int status = RunCommand(program_ + " " + ShellFileWord(structure) + " > " +
                                ShellFileWord(output) + " 2> " + ShellFileWord(log));
  std::string table = ReadAll(output);
  if (!HasTable(table)) {
    std::string reason = ReadAll(log);
    reason = reason.substr(0, reason.find('\n'));
    if (reason.empty()) reason = Format("status %d, no residue table", status);
    return without(reason);
  }
  return std::make_unique<TextSource>(name_ + ".dssp", std::move(table));
}

}  // namespace quarnel
