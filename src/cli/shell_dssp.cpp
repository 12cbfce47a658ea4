// The external DSSP program, started through the shell with the command line its users know.
#include "cli/shell_dssp.h"

#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>

#include "base/text.h"
#include "cli/inputs.h"

namespace quarnel {

namespace {

constexpr char kBuiltinAdvice[] = "--dssp builtin uses the DSSP built into quarnel";

bool HasResidueTable(const std::string& path) {
  std::ifstream in(path, std::ios::binary);
  for (std::string line; std::getline(in, line);)
    if (line.rfind("  #  RESID", 0) == 0) return true;
  return false;
}

}  // namespace

void RunShell(const std::string& command) {
  std::fflush(stdout);
  std::fflush(stderr);
  int ignored = std::system(command.c_str());
  (void)ignored;
}

// File names reach the shell as single quoted words, so that a name with blanks, quotes, ';'
// or '$(...)' is passed on and never executed. DSSP_PATH is used as the user wrote it: it may
// carry options of its own.
std::unique_ptr<LineSource> ShellDssp::DsspOutput(const Structure& /*structure*/,
                                                  std::vector<Message>& messages) {
  bool created = false;
  const bool locked = locks_.Lock(dsspFile_, created) >= 0;
  // The file made to hold the lock is no earlier output to reuse.
  const bool earlier = locked ? !created : CanRead(dsspFile_);
  const bool reused = mayReuse_ && earlier;
  if (!reused) {
    const char* dssp = std::getenv("DSSP_PATH");
    if (dssp == nullptr) {
      if (created) ::unlink(dsspFile_.c_str());
      Fail(Status::kDsspPathUnset, Stream::kStdout, "DSSP excutable ($DSSP_PATH) undefined. Quit!\n");
    }
    const std::string out = ShellFileWord(dsspFile_);
    RunShell(std::string(dssp) + " " + ShellFileWord(structureFile_) + " > " + out +
             " 2>dssp.log; /bin/chmod  a+rw " + out);
    if (::access(dsspFile_.c_str(), R_OK) != 0) {
      unreadableHint_ = Format("quarnel: DSSP's output %s could not be written here (%s): run where "
                               "the folder is writable, or %s", dsspFile_.c_str(), std::strerror(errno),
                               kBuiltinAdvice);
      return std::make_unique<FileSource>(dsspFile_);
    }
  }
  if (!HasResidueTable(dsspFile_)) {
    const std::string why = reused ? "an earlier DSSP output" : "DSSP failed (its messages are in dssp.log)";
    messages.push_back(Message{Stream::kStderr,
                               Format("quarnel: %s holds no residue table: %s; the run goes on without "
                                      "secondary structure; %s\n",
                                      dsspFile_.c_str(), why.c_str(), kBuiltinAdvice)});
  }
  return std::make_unique<FileSource>(dsspFile_);
}

}  // namespace quarnel
