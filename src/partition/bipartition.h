// Candidate bipartitions of one flow problem: listed from the cut enumeration, tidied into
// segments, judged, and the best written into the residues.
#pragma once

#include "partition/components.h"
#include "partition/partition.h"

namespace quarnel {

// The best candidate cut of one solved network: its score (kRejectedScore when none was
// accepted) and scores record; on acceptance the slice is left in index order labelled with it.
float GenerateAllBiPartition(const Params& params, const ContactMap& contacts, FlowNetwork& network,
                             Residue* slice, CutScores* scores);

// Segment merging: short loops and tails take their neighbours' label.
void MergeSegments(const Params& params, Residue* slice, int n);

// Acceptance and score of one candidate, the slice ordered by part with the split residues of
// part 0 first.
float GoodDomainCut(const Params& params, const ContactMap& contacts, Residue* slice, int split,
                    int n, CutScores* scores);

}  // namespace quarnel
