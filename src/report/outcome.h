// What is known of one chain once it has been judged (or has failed): the values every result
// format and every picture is made from.
#pragma once

#include <string>
#include <vector>

#include "formats/atom_records.h"
#include "run/chain.h"
#include "run/chain_domains.h"
#include "run/plddt_filter.h"

namespace quarnel {

struct ChainOutcome {
  std::string input;     // the input as the user named it (a file, a folder entry, a code)
  std::string file;      // the structure file that was read
  std::string chainId;   // the chain judged; empty when the whole file was judged as one
  std::string entry;     // the name results give: the file's base name, plus the chain id
  std::string fileStem;  // the name its picture files take (the entry, unless two inputs of
                         // the run share it)
  AtomRecords records;   // the records the run read (the chain alone, or the file)
  bool ok = false;
  int status = 0;        // a failed run's exit status
  std::string error;     // and its reason, one line
  ChainResult result;    // a successful run's values
  int leftOut = 0;       // residues left out below --min-plddt
  std::vector<bool> gapBefore;  // per residue in chain order: residues left out before it
  std::vector<PlacedMark> leftOutResidues;  // the residues left out, placed among those judged
  double seconds = 0.0;  // wall time of the run
  std::string mode;      // the partition mode the run used
  std::string features;  // --features: the candidate cuts and their features, one JSON line
};

// The domains as reported, in chain order, cut where residues were left out.
inline std::vector<ChainDomain> ChainDomains(const ChainOutcome& outcome) {
  return ChainDomains(outcome.result, outcome.gapBefore);
}

}  // namespace quarnel
