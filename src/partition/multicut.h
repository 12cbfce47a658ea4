// The search of one partition level: anchor residues, sampled source/sink pairs, one flow
// problem per sample, and the best acceptable cut over all samples.
#pragma once

#include <cstdint>
#include <vector>

#include "partition/partition.h"

namespace quarnel {

// The weights and CA distances between the residues of one level, by slice position: a view
// of the chain's contact map through the level's residue indices. The slice is in index order,
// so a residue's contacts come in position order.
class LevelMatrix {
 public:
  LevelMatrix(const ContactMap& contacts, const Residue* slice, int n);

  int size() const { return static_cast<int>(index_.size()); }
  // 0 from a residue to itself.
  float dist2(int r, int c) const { return r == c ? 0.0f : CaDistance2(ca_[r].xyz, ca_[c].xyz); }
  // visit(c, weight, count) for each residue c of the level that r has a contact with, c rising.
  template <typename Visit>
  void ForContacts(int r, const Visit& visit) const {
    const int32_t i = index_[r];
    for (const ContactEntry* e = contacts_.begin(i); e != contacts_.end(i); ++e) {
      const int32_t c = position_[e->partner];
      if (c != kNotInLevel) visit(c, e->weight, e->count);
    }
  }

 private:
  static constexpr int32_t kNotInLevel = -1;
  const ContactMap& contacts_;
  std::vector<int32_t> index_;
  std::vector<int32_t> position_;  // chain index -> level position, or kNotInLevel
  std::vector<CaPoint> ca_;        // by position, kept together for the distance scans
};

struct DistanceEntry {
  int32_t position;
  float key;  // dist2 from the chosen residue
};

struct Point3f {
  float x, y, z;
};

struct PointPair {
  int32_t first, second;  // positions, first < second
  float distance;
};

// The best candidate cut of one sample, for callers that weigh the samples' cuts against each
// other: its score (kRejectedScore when the sample had none) and each position's side.
struct SampleCut {
  float score = kRejectedScore;
  CutScores scores = kRejectedCutScores;
  std::vector<uint8_t> part;  // by slice position in index order; empty without a cut
};

int compare1(const void* a, const void* b);
int comparepair(const void* a, const void* b);

// Returns 1 and fills split and scores when the level has an acceptable cut, else 0. On 1 the
// slice holds the first side (part 0) before the split position and the second after it.
// With `sampleCuts`, every sample's best cut is kept there as well, in sample order.
int MultiCut(const Engine& engine, Residue* slice, const LevelMatrix& level, int* split,
             CutScores* scores, std::vector<SampleCut>* sampleCuts = nullptr);

// The pairs of positions whose segment is nearly perpendicular to the segment a-b and longer
// than half of it, longest first.
std::vector<PointPair> SelectNewPoints(const Point3f* coords, int n, Point3f a, Point3f b,
                                       WorkerPool* workers = nullptr);
int WithinBoundary(Point3f p, Point3f q, float d, Point3f a, Point3f b, float s, float bigD);

}  // namespace quarnel
