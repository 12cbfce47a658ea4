// DSSP's residue table: its rows as values, read from DSSP's classic text or given by DSSP's
// library, and matched to the residues read as each residue's secondary-structure letter and
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

// One row of the table, the values the reader takes from its columns.
struct DsspRow {
  int number = 0;            // 1-5: DSSP's own sequential number
  int resnum = 0;            // 6-10
  char icode = ' ';          // 11
  char aa = ' ';             // 14: the one-letter code, 'X' for an unknown residue
  char ss = ' ';             // 17: the secondary-structure letter, blank for none
  int partner1 = 0;          // 26-29: the first bridge partner's DSSP number (0: none)
  int partner2 = 0;          // 30-33
  bool chainBreak = false;   // 14 is '!': a break in the chain, numbered as a residue
};

// Where a run's secondary structure comes from.
class SecondaryStructureSource {
 public:
  virtual ~SecondaryStructureSource() = default;
  // The table for the structure just read. A source that cannot make one may note why in
  // `messages` and give no rows: the run then goes on without secondary structure. Designed
  // failures are thrown.
  virtual SecondaryStructure Read(const Structure& structure, std::vector<Message>& messages) = 0;
};

// Every residue in coil, no partners: the table of a run without DSSP.
SecondaryStructure DefaultSecondaryStructure(int32_t residues);

// The rows of DSSP's classic output, as its reader scans each table line: a line whose fields
// do not all scan keeps the values of the line before for the rest. Text without the table
// header has none. Fails with the designed open message when the output cannot be opened or read.
std::vector<DsspRow> ReadDsspRows(const LineSource& source);

// Matches the rows to the residues (in file order) by residue number and insertion code,
// moving forward only; partners translated from DSSP numbers to residue indices.
SecondaryStructure MatchDsspRows(const std::vector<DsspRow>& rows, const std::vector<Residue>& residues);

// Both: DSSP's classic output read as the table of the residues.
SecondaryStructure ReadDsspTable(const LineSource& source, const std::vector<Residue>& residues);

}  // namespace quarnel
