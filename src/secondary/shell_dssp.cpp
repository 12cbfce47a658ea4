// The external DSSP program, started through the shell with the command line its users know.
#include "secondary/shell_dssp.h"

#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "base/files.h"
#include "base/text.h"
#include "secondary/shell_command.h"

namespace quarnel {

namespace {

constexpr char kBuiltinAdvice[] = "--dssp builtin uses the DSSP built into quarnel";

bool HasResidueTable(const std::string& path) {
  std::string text;
  if (!ReadWholeFile(path, text)) return false;
  return text.rfind("  #  RESID", 0) == 0 || text.find("\n  #  RESID") != std::string::npos;
}

}  // namespace

// File names reach the shell as single quoted words, so that a name with blanks, quotes, ';'
// or '$(...)' is passed on and never executed. DSSP_PATH is used as the user wrote it: it may
// carry options of its own.
SecondaryStructure ShellDssp::Read(const Structure& structure, std::vector<Message>& messages) {
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
      return ReadDsspTable(FileSource(dsspFile_), structure.residues);
    }
  }
  if (!HasResidueTable(dsspFile_)) {
    const std::string why = reused ? "an earlier DSSP output" : "DSSP failed (its messages are in dssp.log)";
    messages.push_back(Message{Stream::kStderr,
                               Format("quarnel: %s holds no residue table: %s; the run goes on without "
                                      "secondary structure; %s\n",
                                      dsspFile_.c_str(), why.c_str(), kBuiltinAdvice)});
  }
  return ReadDsspTable(FileSource(dsspFile_), structure.residues);
}

}  // namespace quarnel
