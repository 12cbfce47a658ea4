// mmCIF atom sites as atom records: every field what its PDB column would read back from the
// record wwPDB writes for the site (coordinates as their %8.3f text parses), numbers past the
// columns kept whole.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "formats/atom_records.h"
#include "formats/mmcif_atoms.h"

namespace quarnel {

// One-character chain ids for the records, in the order of `ids`: a one-character id stays as
// it is (an empty one becomes a blank); a longer one takes the first of A-Z, a-z, 0-9 that no
// chain has yet. `unique` turns false when the pool runs out; the chains left over get 'A'.
std::vector<char> AssignTextIds(const std::vector<std::string>& ids, bool& unique);

struct MmcifRecords {
  std::vector<AtomRecord> records;    // the model's ATOM, HETATM and TER records, then END
  std::vector<uint32_t> chainOf;      // per record: its chain (TER: the chain it closes; END: none)
  std::vector<std::string> problems;  // per chain: why its atoms cannot be records; empty if they can
};

inline constexpr uint32_t kNoChain = UINT32_MAX;

// Serial numbers follow wwPDB files, which count TER records and mmCIF ids do not; a TER record
// follows the last site of each polymer run. An atom whose name or residue name is longer than
// its columns is a problem of its chain; a HETATM record is made anyway (the names cut), since
// quarnel's readers pass HETATM records over.
MmcifRecords RecordsOfSites(const MmcifAtoms& atoms, const std::vector<char>& textIds);

}  // namespace quarnel
