// Reader of DSSP's classic residue table: each residue's secondary-structure letter and its
// beta-bridge partners.
#pragma once

#include <cstdint>
#include <memory>
#include <vector>

#include "base/status.h"
#include "base/text.h"
#include "structure/protein.h"

namespace quarnel {

// Per residue index: the secondary-structure letter and the indices of its two bridge
// partners (kNoPartner for none).
struct SecondaryStructure {
  std::vector<char> ss;
  std::vector<int32_t> bridge1;
  std::vector<int32_t> bridge2;
};

// Where a run's secondary structure comes from.
class SecondaryStructureSource {
 public:
  virtual ~SecondaryStructureSource() = default;
  // DSSP's classic output for the structure just read. A source that cannot make it may note
  // why in `messages` and give text without a table: the run then goes on without secondary
  // structure. Designed failures are thrown.
  virtual std::unique_ptr<LineSource> DsspOutput(const Structure& structure,
                                                 std::vector<Message>& messages) = 0;
};

// Every residue in coil, no partners: the table of a run without DSSP.
SecondaryStructure DefaultSecondaryStructure(int32_t residues);

// Matches DSSP's table lines to the residues (in file order) by residue number and insertion
// code, moving forward only. Text without the table header changes nothing. Fails with the
// designed open message when the DSSP output cannot be opened or read.
SecondaryStructure ReadDsspTable(const LineSource& source, const std::vector<Residue>& residues);

}  // namespace quarnel
