// Secondary structure from DSSP's library, run inside the process on the atoms the run read.
#pragma once

#include <functional>
#include <string>

#include "secondary/dssp_library.h"
#include "secondary/dssp_table.h"

namespace quarnel {

// The structure's atoms as DSSP's library takes them: the fields of their records it reads.
std::vector<AtomRecord> DsspAtoms(const Structure& structure);

// DSSP's rows matched to the residues. When DSSP fails (`rows` throws std::runtime_error), a note
// naming the input (`name`) and a table without secondary structure: the run goes on.
SecondaryStructure MatchedRowsOrNone(const Structure& structure, const std::string& name,
                                     std::vector<Message>& messages,
                                     const std::function<std::vector<DsspRow>()>& rows);

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

// DSSP's rows given by the caller (a library user's own DSSP run), matched to the residues read
// as the built-in DSSP's are.
class GivenDssp final : public SecondaryStructureSource {
 public:
  explicit GivenDssp(const std::vector<DsspRow>& rows) : rows_(rows) {}

  SecondaryStructure Read(const Structure& structure, std::vector<Message>&) override {
    return MatchDsspRows(rows_, structure.residues);
  }

 private:
  const std::vector<DsspRow>& rows_;
};

}  // namespace quarnel
