// One chain from its structure's lines to its report: residues, contacts, secondary structure,
// partition, domain records and, unless the run is relaxed, the confidence assessment with its
// merge-back. The whole run is a value; nothing of it lives in the process.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "base/params.h"
#include "base/text.h"
#include "contacts/contacts.h"
#include "output/domains.h"
#include "partition/context.h"
#include "partition/partition.h"
#include "structure/protein.h"

namespace quarnel {

// The chain the assessment reads is either given or that of the first residue read.
constexpr int kFirstResidueChain = -1;

struct ChainInput {
  const LineSource* lines = nullptr;  // the structure's lines, read again by the assessment
  std::string entry;                  // the name the report gives
  int chain = kFirstResidueChain;     // the judged chain's identifier
  std::string profileName;            // the name given when the lines cannot be read again
};

enum class Verdict {
  kRelaxed,               // printed as partitioned, without assessment
  kTooShort,              // fewer residues than two domains need: never searched
  kNoCut,                 // searched, no acceptable cut
  kAcceptedFirst,         // the partition as found stands
  kAcceptedAfterMerging,  // stands after the latest cuts were undone
  kRejected,              // every cut undone: one domain
};

const char* VerdictName(Verdict verdict);

struct ChainResult {
  std::string report;                     // the report line, newline included
  Verdict verdict = Verdict::kNoCut;
  Structure structure;                    // residues in chain order, with domains and scores
  ContactMap contacts;
  Partition partition;                    // the cuts as the partition made them
  std::vector<DomainDetail> found;        // the records before the assessment
  std::vector<DomainDetail> domains;      // the records reported (none for one domain)
  std::vector<float> scores;              // each reported domain's network score, if judged
  char chain = ' ';                       // the judged chain
};

// Runs one chain. `context` is reset at the start, so one context can serve many runs in turn;
// lines the run prints on its way are left in context.messages, in order, also when a designed
// failure is thrown.
ChainResult RunChain(const ChainInput& input, const Params& params,
                     SecondaryStructureSource* secondary, RunContext& context);

}  // namespace quarnel
