// Inputs no real chain can be: superposed copies of one chain (models written one after the
// other without MODEL records) or more residues than any chain has. Judged on them, the engine
// runs for hours on a contact map of gigabytes; they are refused before it starts.
#pragma once

#include <string>

namespace quarnel {

// The most residues read as one chain. The longest chains solved are about 5,000 residues; a
// whole multi-chain file judged as one may hold a few thousand more.
inline constexpr int kMaxChainResidues = 10000;

// Why the PDB-format text (read as the structure reader reads it: ATOM records of the first
// model, hydrogens left out) cannot be one real chain; empty when it can. Stops counting at
// the limit, so a file of any size costs no more memory than the limit's worth of residues.
std::string ImplausibleChain(const std::string& text);

}  // namespace quarnel
