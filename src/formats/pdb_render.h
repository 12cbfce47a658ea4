// mmCIF atom sites written as the PDB-format records wwPDB writes for them.
#pragma once

#include <string>
#include <vector>

#include "formats/mmcif_atoms.h"

namespace quarnel {

// One-character chain ids for the PDB columns, in the order of `ids`: a one-character id stays
// as it is (an empty one becomes a blank); a longer one takes the first of A-Z, a-z, 0-9 that
// no chain has yet. `unique` turns false when the pool runs out; the chains left over get 'A'.
std::vector<char> AssignTextIds(const std::vector<std::string>& ids, bool& unique);

struct PdbRendering {
  std::string records;                // the model's ATOM, HETATM and TER records, then END
  std::vector<std::string> atoms;     // per chain: its ATOM records
  std::vector<std::string> problems;  // per chain: why it cannot be written; empty if it can
};

// Serial numbers follow wwPDB files, which count TER records and mmCIF ids do not. An ATOM
// record whose values do not fit their columns is a problem of its chain; a HETATM record is
// written anyway (numbers past the columns in hybrid-36, long names cut), since quarnel's
// reader passes HETATM records over.
PdbRendering RenderPdbRecords(const MmcifAtoms& atoms, const std::vector<char>& textIds);

}  // namespace quarnel
