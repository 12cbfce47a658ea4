// Predicted models carry their per-residue confidence (pLDDT) in the B-factor column; residues
// below a threshold, usually disordered tails and loops, can be left out before partitioning,
// and must then lie in no domain's ranges.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "formats/atom_records.h"
#include "run/chain.h"

namespace quarnel {

// A residue as the structure reader groups ATOM records: one residue number and insertion code.
struct ResidueMark {
  int32_t resnum;
  char icode;
  bool kept;
  char resname[4];  // as its first record writes it: "ALA", " DA"
};

struct ConfidentRecords {
  AtomRecords records;              // the structure's records without the residues left out
  int leftOut = 0;                  // residues left out
  std::vector<ResidueMark> marks;   // every residue in file order
};

// Leaves out every residue whose confidence is below `threshold`: the B-factor of its CA, or
// of its first ATOM record when it has no CA. A residue is a run of ATOM records with one
// number and insertion code, as the reader groups them. Other records stay as they are.
ConfidentRecords LeaveOutLowConfidence(const AtomRecords& records, double threshold);

// A residue left out, placed among the residues a run read: it comes before residues[before],
// or after the last one when `before` is their count.
struct PlacedMark {
  size_t before;
  ResidueMark mark;
};

// The residues of `marks` left out, in file order, placed among `residues` (chain order, as a run
// leaves them). Where the reader grouped residues otherwise than the marks, nothing further is
// known: the residues left out from there on are not placed.
std::vector<PlacedMark> PlaceLeftOut(const std::vector<Residue>& residues, const std::vector<ResidueMark>& marks);

// Per residue of `residues` (chain order, as a run leaves them): whether a residue left out
// lies between it and the one before.
std::vector<bool> GapsBefore(const std::vector<Residue>& residues, const std::vector<ResidueMark>& marks);

// Cuts every domain segment of the result (reported and as found) where residues were left
// out, so that no range spans them, and writes the report line again.
void SplitAtGaps(ChainResult& result, const std::vector<bool>& gapBefore, const std::string& entry);

// Whether the B-factors look like a predicted model's pLDDT: one value for all atoms of a
// residue, between 0 and 100, varying along the chain.
bool LooksLikePlddt(const std::vector<AtomRecord>& records);

}  // namespace quarnel
