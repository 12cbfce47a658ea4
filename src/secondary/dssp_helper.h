// DSSP's library in a program of its own (quarnel-secondary), for code that cannot hold the
// library itself: a Python module is a shared object, and DSSP's archive is not
// position-independent. The atoms go to the program and its rows come back as text lines whose
// every value reads back as it was written, so the rows are the library's own.
#pragma once

#include <string>
#include <vector>

#include "secondary/dssp_library.h"
#include "secondary/dssp_table.h"

namespace quarnel {

// The helper's name, and the line its output opens with when DSSP gave rows.
inline constexpr char kDsspHelperName[] = "quarnel-secondary";
inline constexpr char kDsspHelperRows[] = "rows";
inline constexpr char kDsspHelperFailed[] = "failed";

// One atom per line, the fields DSSP reads, tab-separated; coordinates and B-factors in full
// precision.
std::string WriteHelperAtoms(const std::vector<AtomRecord>& atoms);
// Fails with std::runtime_error on a line that is not one.
std::vector<AtomRecord> ReadHelperAtoms(const std::string& text);

// kDsspHelperRows and one row per line, or kDsspHelperFailed and the reason.
std::string WriteHelperRows(const std::vector<DsspRow>& rows);
std::string WriteHelperFailure(const std::string& reason);
// The rows; std::runtime_error with the helper's reason when DSSP failed, or when the text is
// not the helper's.
std::vector<DsspRow> ReadHelperRows(const std::string& text);

class HelperDssp final : public SecondaryStructureSource {
 public:
  // `program` is the helper's path, `name` the input as messages give it.
  HelperDssp(std::string program, std::string name) : program_(std::move(program)), name_(std::move(name)) {}

  // DSSP's rows matched to the residues; when DSSP or the helper fails, a note and a table
  // without secondary structure, as the built-in DSSP does.
  SecondaryStructure Read(const Structure& structure, std::vector<Message>& messages) override;

 private:
  std::string program_;
  std::string name_;
};

}  // namespace quarnel
