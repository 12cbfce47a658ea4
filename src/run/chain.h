// One chain from its structure's records to its report: residues, contacts, secondary structure,
// partition, domain records and, unless the run is relaxed, the confidence assessment with its
// merge-back. The whole run is a value; nothing of it lives in the process.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "base/params.h"
#include "cath/candidates.h"
#include "cath/decide.h"
#include "contacts/contacts.h"
#include "formats/atom_records.h"
#include "output/domains.h"
#include "partition/context.h"
#include "partition/partition.h"
#include "secondary/dssp_table.h"
#include "structure/protein.h"

namespace quarnel {

// The chain the assessment reads is either given or that of the first residue read.
constexpr int kFirstResidueChain = -1;

struct ChainInput {
  const RecordSource* records = nullptr;  // the structure's records, read again by the assessment
  std::string entry;                  // the name the report gives
  int chain = kFirstResidueChain;     // the judged chain's identifier
  std::string profileName;            // the name given when the lines cannot be read again
};

// How the domains are decided: by the classic criteria and confidence network, or by the model
// trained on CATH choppings over a deeper candidate search (the accuracy mode).
enum class DecisionMode { kClassic, kCath };

const char* DecisionModeName(DecisionMode mode);
// "classic" or "cath"; false for any other name.
bool ParseDecisionMode(const std::string& name, DecisionMode& mode);

enum class Verdict {
  kRelaxed,               // printed as partitioned, without assessment
  kTooShort,              // fewer residues than two domains need: never searched
  kNoCut,                 // searched, no acceptable cut
  kAcceptedFirst,         // the partition as found stands
  kAcceptedAfterMerging,  // stands after the latest cuts were undone
  kRejected,              // every cut undone: one domain
  kModel,                 // the accuracy mode's model decided
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
  DecisionMode mode = DecisionMode::kClassic;
  std::vector<CandidateNode> candidates;  // the accuracy mode: every candidate cut
  CathCalls calls;                        // the accuracy mode: the model's calls on them
};

// Runs one chain. `context` is reset at the start, so one context can serve many runs in turn;
// lines the run prints on its way are left in context.messages, in order, also when a designed
// failure is thrown.
ChainResult RunChain(const ChainInput& input, const Params& params,
                     SecondaryStructureSource* secondary, RunContext& context);

// The same chain decided by the accuracy mode: the candidate search and the model, no
// confidence network; each reported record's confidence is the model's, in percent. The
// relaxed options do not apply (the caller refuses them).
ChainResult RunChainCath(const ChainInput& input, const Params& params,
                         SecondaryStructureSource* secondary, RunContext& context);

// The run of the chosen mode.
ChainResult RunChainIn(DecisionMode mode, const ChainInput& input, const Params& params,
                       SecondaryStructureSource* secondary, RunContext& context);

// Residues, contacts and secondary structure: where every run starts. With `dsspPiece`, a chain
// longer than twice that has its secondary structure found piece by piece (DSSP's library takes
// time growing with the square of a chain's length); bridges between pieces are then not seen.
void ReadChain(const ChainInput& input, const Params& params, SecondaryStructureSource* secondary,
               RunContext& context, ChainResult& result, int32_t dsspPiece = 0);

}  // namespace quarnel
