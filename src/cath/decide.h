// Which candidate cuts stand, by the model trained on CATH choppings, and how sure it is of
// every domain and boundary it gives.
#pragma once

#include <cstdint>
#include <vector>

#include "cath/candidates.h"
#include "cath/cut_features.h"

namespace quarnel {

// A cut that stands: the node it divides and the probability that its two sides belong to
// different CATH domains.
struct Boundary {
  int node = kNoNode;
  double probability = 0.0;
};

struct CathCalls {
  std::vector<CutFeatures> features;  // per node; zeros for a node without a cut
  std::vector<double> logOdds;        // per node: the model's log-odds that the cut stands
  std::vector<bool> kept;             // per node: its cut stands
  std::vector<int> domains;           // the nodes that are domains, in chain order
  std::vector<double> confidence;     // per domain: probability that it is one CATH domain
  std::vector<Boundary> boundaries;   // the cuts that stand, in node order
};

// Decides from the whole chain down: a node's cut stands when the model's log-odds reach the
// threshold (one model and threshold for the whole chain, one for the parts below it); the
// parts of a cut that does not stand are one domain.
CathCalls DecideCuts(const ChainView& chain, const std::vector<CandidateNode>& nodes);

// A place where the chain passes from one domain to another: between two residues that follow
// each other in the chain, and the probability of the cut that separated their domains.
struct BoundaryPlace {
  int32_t before = 0;  // chain index of the last residue before the boundary
  int32_t after = 0;   // and of the first after it
  double probability = 0.0;
};

// Every such place, in chain order.
std::vector<BoundaryPlace> BoundaryPlaces(const CathCalls& calls, const std::vector<CandidateNode>& nodes,
                                          int32_t residues);

// The domain number (0 ..) of every residue of the chain, in chain order of the domains.
std::vector<int32_t> DomainOfResidues(const CathCalls& calls, const std::vector<CandidateNode>& nodes,
                                      int32_t residues);

}  // namespace quarnel
