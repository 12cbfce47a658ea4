// What the picture writers share: comment text, the words that name a chain's input, the
// summary line of its domains, and its domains as runs of residue numbers.
#pragma once

#include <string>
#include <vector>

#include "report/outcome.h"

namespace quarnel {

inline constexpr char kNoChain = ' ';
inline constexpr char kNoInsertion = ' ';

// Text for a comment line of any of the files: one line, and no ';', which PyMOL and ChimeraX
// take for the end of a command even in a comment.
std::string CommentSafe(std::string text);

// The words that name the input in a file's first line: they make it this chain's file.
std::string Provenance(const ChainOutcome& outcome);

// "1abcA: 120 residues, 2 domains (accepted at first), 1abcA01 1-60 #0072B2, ...".
std::string DomainSummary(const ChainOutcome& outcome, const std::vector<ChainDomain>& domains);

struct ResidueRun {
  char chain;
  int32_t first, last;  // numbers; a run with an insertion code is a single residue
  char icode;
};

// The residues of one domain as runs of consecutive numbers in one chain, in chain order.
std::vector<ResidueRun> DomainRuns(const ChainResult& result, const std::vector<int>& places, int place);

// Runs of one chain, a command's worth at a time.
std::vector<std::vector<ResidueRun>> CommandGroups(const std::vector<ResidueRun>& runs);

}  // namespace quarnel
