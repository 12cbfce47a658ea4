// Domain records built from the residues' domain numbers, and the report line.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "structure/protein.h"

namespace quarnel {

struct DomainSegment {
  int32_t start;
  char startIns;  // blank when the residue has no insertion code
  int32_t end;
  char endIns;
};

struct DomainDetail {
  std::vector<DomainSegment> segments;  // chain order
  float cutscore[3];                    // compactness, interaction, interface of its cut
  int32_t nseg;
  float confidence;
};

// Puts the residues back in chain order and, for two domains or more, builds one record per
// domain number 0 .. domainCount - 1 (none for a single domain).
std::vector<DomainDetail> OutputDomains(std::vector<Residue>& residues, int32_t domainCount);

// The report line of two domains or more, newline included.
std::string FormatReport(const std::string& entry, int32_t residues,
                         const std::vector<DomainDetail>& domains);

// The report of a single domain: entry, chain length, 1.
std::string FormatOneDomain(const std::string& entry, int32_t residues);

}  // namespace quarnel
