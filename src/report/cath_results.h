// What the accuracy mode adds to a chain's results: the probability of each boundary between
// domains, and the candidate cuts with their features for training its model (--features).
#pragma once

#include <string>

#include "report/outcome.h"

namespace quarnel {

// The boundaries in chain order, "86|87:0.974,200|201:0.881" (the residues on either side and
// the probability that the boundary separates two CATH domains); NULL outside the accuracy mode
// and where the chain is one domain.
std::string BoundariesField(const ChainOutcome& outcome);

// The same as a JSON list of {"after", "before", "probability"} objects; null outside the
// accuracy mode.
std::string BoundariesJson(const ChainOutcome& outcome);

// One JSON line: the chain's residues and every candidate cut of the accuracy mode, each part
// with its residues (index ranges into the residue list), its parent and children, and the
// features the model reads of its cut.
std::string CandidatesJson(const ChainOutcome& outcome);

}  // namespace quarnel
