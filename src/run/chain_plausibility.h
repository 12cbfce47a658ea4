// Inputs no real chain can be: superposed copies of one chain (models written one after the
// other without MODEL records) or more residues than any chain has. Judged on them, the engine
// runs for hours on a contact map of gigabytes; they are refused before it starts.
#pragma once

#include <string>
#include <vector>

#include "formats/atom_records.h"

namespace quarnel {

// The most residues read as one chain: titin, the longest chain known, has 34,350 (its
// predicted models are chopped whole), and a file judged whole may hold a few thousand more.
inline constexpr int kMaxChainResidues = 40000;

// Why the records (read as the structure reader reads them: ATOM records of the first model,
// hydrogens left out) cannot be one real chain; empty when they can. Stops counting at the
// limit, so a file of any size costs no more memory than the limit's worth of residues.
std::string ImplausibleChain(const std::vector<AtomRecord>& records);

}  // namespace quarnel
