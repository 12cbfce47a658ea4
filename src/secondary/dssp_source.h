// Secondary structure from DSSP's library, run inside the process on the atoms the run read.
#pragma once

#include <string>

#include "secondary/dssp_library.h"
#include "secondary/dssp_table.h"

namespace quarnel {

class BuiltinDssp final : public SecondaryStructureSource {
 public:
  // `name` is the input as messages give it.
  BuiltinDssp(const DsspLibrary& library, std::string name) : library_(library), name_(std::move(name)) {}

  // DSSP's rows matched to the residues; when DSSP fails, a note on standard error and a table
  // without secondary structure.
  SecondaryStructure Read(const Structure& structure, std::vector<Message>& messages) override;

 private:
  const DsspLibrary& library_;
  std::string name_;
};

}  // namespace quarnel
