// Secondary structure from the DSSP program named by DSSP_PATH, for runs that write nothing in
// the working folder: DSSP reads a copy of the chain in a private temporary folder, which is
// always removed, so that runs side by side never see each other's files.
#pragma once

#include <string>

#include "cli/interrupts.h"
#include "structure/dssp_reader.h"

namespace quarnel {

class ExternalDssp final : public SecondaryStructureSource {
 public:
  // `program` is DSSP_PATH as the user wrote it, `text` the PDB lines the run reads, `name` the
  // input as messages give it; the private folder is listed in `temporaries` while it exists.
  ExternalDssp(std::string program, std::string text, std::string name, TemporaryFiles* temporaries)
      : program_(std::move(program)), text_(std::move(text)), name_(std::move(name)),
        temporaries_(temporaries) {}

  // DSSP's output; when DSSP fails, a note on standard error and text without a table.
  std::unique_ptr<LineSource> DsspOutput(const Structure& structure,
                                         std::vector<Message>& messages) override;

 private:
  std::string program_;
  std::string text_;
  std::string name_;
  TemporaryFiles* temporaries_;
};

// Removes the private folders of runs that were killed (kill -9 leaves them behind): those
// whose process no longer exists.
void RemoveAbandonedFolders();

// Runs a shell command with the signal mask and dispositions of a fresh process, whatever this
// one blocks; its exit status, or -1 when it could not be started.
int RunCommand(const std::string& command);

}  // namespace quarnel
