// The candidate cuts of the accuracy mode: the chain divided again and again by the same flow
// search as the classic partition, with loose criteria, down to parts too small to divide, so
// that the true domain boundaries are among the cuts. Which cuts stand is for a model to say.
#pragma once

#include <cstdint>
#include <vector>

#include "base/params.h"
#include "contacts/contacts.h"
#include "partition/context.h"
#include "partition/partition.h"
#include "structure/protein.h"

namespace quarnel {

constexpr int kNoNode = -1;

// One way of dividing a part, and how the samples of the search agree with it: a true boundary
// is found from many anchors.
struct CandidateCut {
  std::vector<int32_t> sides[2];      // chain indices, ascending
  CutScores scores = kRejectedCutScores;
  float score = kRejectedScore;       // the loose criteria's score, lower being better
  bool bySequence = false;            // a long part divided where the chain's contacts are fewest
  int samples = 0;                    // samples that judged candidates
  int acceptable = 0;                 // samples that found an acceptable cut
  float agreement = 0.0f;             // mean share of residues each such cut sides as this one does
  float agreeing = 0.0f;              // share of such cuts that side 90% of residues as this one
  float rivalScore = kRejectedScore;  // the best score of a sample's cut unlike this one
};

// One part of the chain.
struct CandidateNode {
  std::vector<int32_t> residues;  // chain indices, ascending
  int parent = kNoNode;
  int depth = 0;
  std::vector<CandidateCut> cuts;        // distinct cuts the search found, best score first
  int children[2] = {kNoNode, kNoNode};  // the sides of cuts[0]; the part is searched no further
                                         // than that cut
  bool hasCut() const { return !cuts.empty(); }
};

// The criteria of the candidate search, loosened from the run's own.
Params CandidateParams(const Params& params);

// Parts longer than this are divided by sequence before any flow search: the search's scans
// grow with the square of a part's length, sequence cuts with its length.
constexpr int32_t kLongestSearchedPart = 1200;

// At most this many distinct cuts are kept of a part: the model decides on the best one alone
// (weighing the others as well gave no better calls on the training chains).
constexpr size_t kCutsKept = 1;

// Divides the chain (residues in index order, secondary structure applied) from the whole chain
// down, each part by its best cut. Every node's search draws from a random stream of its own,
// seeded by the node's residues, so a node's cuts depend on nothing but its residues. Node 0 is
// the whole chain; children come after their parent.
std::vector<CandidateNode> SearchCandidates(const Structure& structure, const ContactMap& contacts,
                                            const Params& loose, RunContext& context);

}  // namespace quarnel
