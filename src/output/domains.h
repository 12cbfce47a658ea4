// Domain records built from the residues' domain numbers, and the report line.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

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

extern std::vector<DomainDetail> domdetail;

void OutputDomains(const std::string& entry);
void PrintDomain();
void FreeDomDetail(int count);

// The report of a single domain: entry, chain length, 1.
void PrintOneDomain();
