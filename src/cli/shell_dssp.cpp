// The external DSSP program, started through the shell with the command line its users know.
#include "cli/shell_dssp.h"

#include <cstdio>
#include <cstdlib>

#include "cli/inputs.h"

namespace quarnel {

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
                                                  std::vector<Message>& /*messages*/) {
  if (!(mayReuse_ && CanRead(dsspFile_))) {
    const char* dssp = std::getenv("DSSP_PATH");
    if (dssp == nullptr)
      Fail(Status::kDsspPathUnset, Stream::kStdout, "DSSP excutable ($DSSP_PATH) undefined. Quit!\n");
    const std::string out = ShellFileWord(dsspFile_);
    RunShell(std::string(dssp) + " " + ShellFileWord(structureFile_) + " > " + out +
             " 2>dssp.log; /bin/chmod  a+rw " + out);
  }
  return std::make_unique<FileSource>(dsspFile_);
}

}  // namespace quarnel
