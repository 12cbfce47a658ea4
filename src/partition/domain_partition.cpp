// Recursive bisection of the chain. Each level searches its slice for the best acceptable cut,
// gives the first side a new domain number, records the cut and divides both sides again,
// the larger first. Domain numbers, and the random draws of the searches, follow this
// depth-first, larger-side-first order.
#include <cstdlib>

#include "contacts/contacts.h"
#include "partition/multicut.h"
#include "partition/partition.h"
#include "run/parameters.h"
#include "run/sort.h"
#include "structure/protein.h"

int compare3(const void* a, const void* b) {
  return static_cast<const Residue*>(a)->index - static_cast<const Residue*>(b)->index;
}

int compare2(const void* a, const void* b) {
  return static_cast<const Residue*>(a)->part - static_cast<const Residue*>(b)->part;
}

namespace {

// The level's own copy of the weights and CA distances of its residues, by slice position.
Contact** SubMatrix(const Residue* slice, int n) {
  Contact** sub = ContactMalloc(n, n);
  for (int r = 0; r < n; ++r) {
    const Contact* row = ContactMatrix[slice[r].index];
    for (int c = 0; c < n; ++c) {
      const Contact& cell = row[slice[c].index];
      sub[r][c].weight = cell.weight;
      sub[r][c].count = 0;
      sub[r][c].dist2 = cell.dist2;
    }
  }
  return sub;
}

void RecordCut(int32_t newDomain, int32_t parent, const CutScores& s) {
  size_t record = static_cast<size_t>(newDomain - 1);
  if (cut_history.size() <= record) cut_history.resize(record + 1, kEmptyCutRecord);
  cut_history[record] = CutRecord{newDomain, parent, newDomain, s.compact2, s.compact1,
                                  s.inter2, s.inter1, s.interface};
}

}  // namespace

void DomainParition(Residue* slice, int n) {
  SortRecords(slice, static_cast<size_t>(n), sizeof(Residue), compare3);
  if (static_cast<int64_t>(n) < 2 * static_cast<int64_t>(MinDomainSize)) return;
  if (DomainNumber >= MaxNumDom) return;

  Contact** sub = SubMatrix(slice, n);
  int split = 0;
  CutScores scores = kRejectedCutScores;
  int found = 0;
  try {
    found = MultiCut(slice, sub, n, &split, &scores);
  } catch (...) {
    FreeContacts(sub, n);
    throw;
  }
  FreeContacts(sub, n);

  // Without an acceptable cut the slice stays one domain, whether or not -noeva was given:
  // the search then provides neither a split nor scores to record.
  if (!found) return;

  const int32_t d = DomainNumber;
  for (int i = 0; i < split; ++i) {
    slice[i].domain = d;
    slice[i].cutscore[0] = scores.compact1;
    slice[i].cutscore[1] = scores.inter1;
    slice[i].cutscore[2] = scores.interface;
  }
  RecordCut(d, slice[split].domain, scores);
  for (int i = split; i < n; ++i) {
    slice[i].cutscore[0] = scores.compact2;
    slice[i].cutscore[1] = scores.inter2;
    slice[i].cutscore[2] = scores.interface;
  }
  DomainNumber += 1;

  if (n / 2 < split) {
    DomainParition(slice, split);
    DomainParition(slice + split, n - split);
  } else {
    DomainParition(slice + split, n - split);
    DomainParition(slice, split);
  }
}
