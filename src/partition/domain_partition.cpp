// Recursive bisection of the chain. Each level searches its slice for the best acceptable cut,
// gives the first side a new domain number, records the cut and divides both sides again,
// the larger first. Domain numbers, and the random draws of the searches, follow this
// depth-first, larger-side-first order.
#include "base/sort.h"
#include "partition/multicut.h"
#include "partition/partition.h"

namespace quarnel {

int compare3(const void* a, const void* b) {
  return static_cast<const Residue*>(a)->index - static_cast<const Residue*>(b)->index;
}

int compare2(const void* a, const void* b) {
  return static_cast<const Residue*>(a)->part - static_cast<const Residue*>(b)->part;
}

void SortByIndex(Residue* residues, int n) {
  for (int i = 1; i < n; ++i) {
    if (residues[i].index < residues[i - 1].index) {
      SortRecords(residues, static_cast<size_t>(n), sizeof(Residue), compare3);
      return;
    }
  }
}

namespace {

void RecordCut(Partition& partition, int32_t newDomain, int32_t parent, const CutScores& s) {
  size_t record = static_cast<size_t>(newDomain - 1);
  if (partition.cuts.size() <= record) partition.cuts.resize(record + 1, kEmptyCutRecord);
  partition.cuts[record] = CutRecord{newDomain, parent, newDomain, s.compact2, s.compact1,
                                     s.inter2, s.inter1, s.interface};
}

}  // namespace

void DomainParition(const Engine& engine, Partition& partition, Residue* slice, int n) {
  SortByIndex(slice, n);
  if (static_cast<int64_t>(n) < 2 * static_cast<int64_t>(engine.params.MinDomainSize)) return;
  if (partition.domainCount >= engine.params.MaxNumDom) return;

  int split = 0;
  CutScores scores = kRejectedCutScores;
  int found = 0;
  {
    const LevelMatrix level(engine.contacts, slice, n);
    found = MultiCut(engine, slice, level, &split, &scores);
  }
  // Without an acceptable cut the slice stays one domain, whether or not -noeva was given:
  // the search then provides neither a split nor scores to record.
  if (!found) return;

  const int32_t d = partition.domainCount;
  for (int i = 0; i < split; ++i) {
    slice[i].domain = d;
    slice[i].cutscore[0] = scores.compact1;
    slice[i].cutscore[1] = scores.inter1;
    slice[i].cutscore[2] = scores.interface;
  }
  RecordCut(partition, d, slice[split].domain, scores);
  for (int i = split; i < n; ++i) {
    slice[i].cutscore[0] = scores.compact2;
    slice[i].cutscore[1] = scores.inter2;
    slice[i].cutscore[2] = scores.interface;
  }
  partition.domainCount += 1;

  if (n / 2 < split) {
    DomainParition(engine, partition, slice, split);
    DomainParition(engine, partition, slice + split, n - split);
  } else {
    DomainParition(engine, partition, slice + split, n - split);
    DomainParition(engine, partition, slice, split);
  }
}

}  // namespace quarnel
