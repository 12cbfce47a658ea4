// Recursive bisection of a chain into domains, and the record of every cut made.
#pragma once

#include <cstdint>
#include <vector>

#include "base/params.h"
#include "contacts/contacts.h"
#include "partition/context.h"
#include "structure/protein.h"

namespace quarnel {

// The five scores of a candidate cut; lower is better where a score is returned with them.
struct CutScores {
  float compact1, compact2;  // compactness of the first and of the second part
  float inter1, inter2;      // interaction of the first and of the second part
  float interface;           // normalised cross-contact value
};

constexpr CutScores kRejectedCutScores = {0.0f, 0.0f, 100.0f, 100.0f, 500.0f};
constexpr float kRejectedScore = 1000000.0f;
constexpr float kNoContactScore = -1000000.0f;
constexpr float kWorstAcceptedScore = 999999.0f;

// Record k-1 describes the cut that created domain k.
struct CutRecord {
  int32_t newDomain;
  int32_t parent;
  int32_t newDomainAgain;
  float parentCompact;
  float newCompact;
  float parentInter;
  float newInter;
  float interface;
};

constexpr int kInitialCutRecords = 15;
constexpr CutRecord kEmptyCutRecord = {999, 999, 999, 999.0f, 999.0f, 0.0f, 0.0f, 999.0f};

// The domains made so far: their count and the record of every cut, in the order made.
struct Partition {
  int32_t domainCount = 1;
  std::vector<CutRecord> cuts = std::vector<CutRecord>(kInitialCutRecords, kEmptyCutRecord);
};

// What every level of one run reads, and the run context it draws from.
struct Engine {
  const Params& params;
  const ContactMap& contacts;
  RunContext& context;
};

// qsort comparators on Residue records: by index (chain order) and by part.
int compare3(const void* a, const void* b);
int compare2(const void* a, const void* b);

// Puts residues in chain order. Indices are distinct, so chain order is one order whatever the
// sort: residues already in it are left as they are without sorting again.
void SortByIndex(Residue* residues, int n);

// Divides the slice of n residues recursively; every residue gets its domain number and the
// scores of the cut that made it, and `partition` every cut.
void DomainParition(const Engine& engine, Partition& partition, Residue* slice, int n);

}  // namespace quarnel
