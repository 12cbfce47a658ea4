// Secondary structure for the classic run: the DSSP program named by DSSP_PATH, run through the
// shell on the file the run reads, as the classic run always has; an earlier DSSP output of a
// code is reused.
#pragma once

#include <string>

#include "base/classic_locks.h"
#include "secondary/dssp_table.h"

namespace quarnel {

class ShellDssp final : public SecondaryStructureSource {
 public:
  // `structureFile` is given to DSSP, whose output goes to `dsspFile`; an existing `dsspFile`
  // is read without running DSSP when `mayReuse`. The output is locked in `locks` from before
  // DSSP writes it until the run ends.
  ShellDssp(std::string structureFile, std::string dsspFile, bool mayReuse, ClassicLocks& locks)
      : structureFile_(std::move(structureFile)), dsspFile_(std::move(dsspFile)), mayReuse_(mayReuse),
        locks_(locks) {}

  // DSSP's output read as the table of the residues. Where it holds no residue table (DSSP
  // failed), a hint on standard error says that the run goes on without secondary structure.
  SecondaryStructure Read(const Structure& structure, std::vector<Message>& messages) override;

  // Why DSSP's output could not be read, for the hint of that failure; empty when it could.
  const std::string& unreadableHint() const { return unreadableHint_; }

 private:
  std::string structureFile_;
  std::string dsspFile_;
  bool mayReuse_;
  ClassicLocks& locks_;
  std::string unreadableHint_;
};

}  // namespace quarnel
