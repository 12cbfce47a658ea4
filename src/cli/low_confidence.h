// Predicted models carry their per-residue confidence (pLDDT) in the B-factor column; residues
// below a threshold, usually disordered tails and loops, can be left out before partitioning.
#pragma once

#include <string>

namespace quarnel {

struct ConfidentText {
  std::string text;  // the structure's lines without the residues left out
  int leftOut = 0;   // residues left out
};

// Leaves out the ATOM records of every residue (a run of records with one residue number and
// insertion code, as the reader groups them) whose confidence is below `threshold`: the
// B-factor of its CA, or of its first record when it has no CA. Other lines stay as they are.
ConfidentText LeaveOutLowConfidence(const std::string& text, double threshold);

}  // namespace quarnel
