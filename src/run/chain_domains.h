// The domains of a chain as results and pictures give them: in chain order (by their first
// residue), with their residue ranges, residue counts and confidences; the names and labels
// every writer shares, and the sequence checksum.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "run/chain.h"

namespace quarnel {

// A reported domain in chain order (the order of its first residue in the chain).
struct ChainDomain {
  int number = 0;                         // the residues' domain number; 0 for a single domain
  std::vector<DomainSegment> segments;    // chain order
  int32_t residues = 0;
  bool judged = false;                    // confidence and score hold the assessment's values
  float confidence = 0.0f;                // percent
  float score = 0.0f;                     // the network's score
};

// The domains as reported, in chain order; a chain reported as one domain gives one domain
// spanning its first to its last residue, cut where `gapBefore` marks residues left out. Needs
// the residues in chain order carrying the domain numbers of the reported records, as RunChain
// leaves them.
std::vector<ChainDomain> ChainDomains(const ChainResult& result, const std::vector<bool>& gapBefore = {});

// The chain's one confidence: that of its least confident domain, as a fraction (a partition is
// as good as its weakest domain). False when the domains were not judged.
bool ChainConfidence(const std::vector<ChainDomain>& domains, double& confidence);

// Per residue (chain order), the place of its domain in ChainDomains, or -1 when the residue is
// in none of them.
std::vector<int> DomainPlaces(const ChainResult& result);

// "<entry>01", "<entry>02", ... for the domains in chain order; `place` counts from 0.
std::string DomainId(const std::string& entry, int place);

// 52A, -3: a residue as results write it.
std::string ResidueLabel(int32_t resnum, char icode);

// "6-39_94-192": the segments of one domain, '_' separated.
std::string SegmentsText(const std::vector<DomainSegment>& segments);

// Domains ',' separated, the segments of one '_' separated, e.g. "6-39_94-192,41-90".
std::string Chopping(const std::vector<ChainDomain>& domains);

// The chopping of the partition as found, before the assessment, in chain order. The records
// do not carry their residues, so a record is placed by the first residue in the chain whose
// number and insertion code begins or ends one of its segments.
std::string FoundChopping(const ChainResult& result);

// MD5 (lower-case hex) of the one-letter sequence of the residues as read: the 20 standard
// amino acids, 'X' for any other residue name.
std::string SequenceMd5(const Structure& structure);

}  // namespace quarnel
