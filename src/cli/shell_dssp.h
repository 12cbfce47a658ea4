// Secondary structure from an external DSSP program named by DSSP_PATH, run through the shell on
// the file the run reads; an earlier DSSP output of a code is reused.
#pragma once

#include <string>

#include "run/chain.h"

namespace quarnel {

class ShellDssp final : public SecondaryStructureSource {
 public:
  // `structureFile` is given to DSSP, whose output goes to `dsspFile`; an existing `dsspFile`
  // is read without running DSSP when `mayReuse`.
  ShellDssp(std::string structureFile, std::string dsspFile, bool mayReuse)
      : structureFile_(std::move(structureFile)), dsspFile_(std::move(dsspFile)), mayReuse_(mayReuse) {}

  std::unique_ptr<LineSource> DsspOutput(const Structure& structure,
                                         std::vector<Message>& messages) override;

 private:
  std::string structureFile_;
  std::string dsspFile_;
  bool mayReuse_;
};

// Runs a command through the shell; neither its status nor its output changes the run.
void RunShell(const std::string& command);

}  // namespace quarnel
