// Secondary structure from the DSSP program named by DSSP_PATH, for runs that write nothing in
// the working folder: DSSP reads a copy of the chain in a private temporary folder, which is
// always removed, so that runs side by side never see each other's files.
#pragma once

#include <string>

#include "base/temporary_files.h"
#include "secondary/dssp_table.h"

namespace quarnel {

class ExternalDssp final : public SecondaryStructureSource {
 public:
  // `program` is DSSP_PATH as the user wrote it, `text` the PDB lines the run reads, `name` the
  // input as messages give it; the private folder is listed in `temporaries` while it exists.
  ExternalDssp(std::string program, std::string text, std::string name, TemporaryFiles* temporaries)
      : program_(std::move(program)), text_(std::move(text)), name_(std::move(name)),
        temporaries_(temporaries) {}

  // DSSP's output read as the table of the residues; when DSSP fails, a note on standard error
  // and a table without secondary structure.
  SecondaryStructure Read(const Structure& structure, std::vector<Message>& messages) override;

 private:
  std::string program_;
  std::string text_;
  std::string name_;
  TemporaryFiles* temporaries_;
};

// Removes the private folders of runs that were killed (kill -9 leaves them behind): those
// whose process no longer exists.
void RemoveAbandonedFolders();

}  // namespace quarnel
