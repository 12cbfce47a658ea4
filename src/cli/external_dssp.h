// Secondary structure from the DSSP program named by DSSP_PATH, for runs that write nothing in
// the working folder: DSSP reads a copy of the chain in a private temporary folder, which is
// always removed, so that runs side by side never see each other's files.
#pragma once

#include <string>

#include "structure/dssp_reader.h"

namespace quarnel {

class ExternalDssp final : public SecondaryStructureSource {
 public:
  // `program` is DSSP_PATH as the user wrote it, `text` the PDB lines the run reads, `name` the
  // input as messages give it.
  ExternalDssp(std::string program, std::string text, std::string name)
      : program_(std::move(program)), text_(std::move(text)), name_(std::move(name)) {}

  // DSSP's output; when DSSP fails, a note on standard error and text without a table.
  std::unique_ptr<LineSource> DsspOutput(const Structure& structure,
                                         std::vector<Message>& messages) override;

 private:
  std::string program_;
  std::string text_;
  std::string name_;
};

}  // namespace quarnel
