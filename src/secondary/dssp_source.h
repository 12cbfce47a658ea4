// Secondary structure from DSSP's library, run inside the process on the atoms the run read.
#pragma once

#include <string>

#include "secondary/dssp_library.h"
#include "structure/dssp_reader.h"

namespace quarnel {

class BuiltinDssp final : public SecondaryStructureSource {
 public:
  // `name` is the input as messages give it.
  BuiltinDssp(const DsspLibrary& library, std::string name) : library_(library), name_(std::move(name)) {}

  // DSSP's residue table; when DSSP fails, a note on standard error and text without a table.
  std::unique_ptr<LineSource> DsspOutput(const Structure& structure,
                                         std::vector<Message>& messages) override;

 private:
  const DsspLibrary& library_;
  std::string name_;
};

}  // namespace quarnel
