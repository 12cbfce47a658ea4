// What a batch run knows of one chain once it has been judged (or has failed): the values every
// result format and every picture is made from.
#pragma once

#include <string>
#include <vector>

#include "run/chain.h"

namespace quarnel {

struct ChainOutcome {
  std::string input;     // the input as the user named it (a file, a folder entry, a code)
  std::string file;      // the structure file that was read
  std::string chainId;   // the chain judged; empty when the whole file was judged as one
  std::string entry;     // the name results give: the file's base name, plus the chain id
  std::string fileStem;  // the name its picture files take (the entry, unless two inputs of
                         // the run share it)
  std::string text;      // the PDB-format lines the run read (the chain alone, or the file)
  bool ok = false;
  int status = 0;        // a failed run's exit status
  std::string error;     // and its reason, one line
  ChainResult result;    // a successful run's values
  int leftOut = 0;       // residues left out below --min-plddt
  std::vector<bool> gapBefore;  // per residue in chain order: residues left out before it
  double seconds = 0.0;  // wall time of the run
  std::string mode;      // the partition mode the run used
  std::string features;  // --features: the candidate cuts and their features, one JSON line
};

}  // namespace quarnel
