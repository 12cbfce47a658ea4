// Candidate bipartitions of one flow problem: listed from the cut enumeration, tidied into
// segments, judged, and the best written into the residues.
#pragma once

#include <cstdint>
#include <vector>

#include "partition/components.h"
#include "partition/partition.h"

namespace quarnel {

// Judges the candidate cuts of one level. What every judgement needs is prepared once for the
// level: its residues' contact counts and weights as a list of the pairs that have any (pairs
// at most ResSep apart in the chain left out), their bridge partners and strand letters. Every
// sum stays an exact integer, so the scores are those of summing over all residue pairs.
class CutJudge {
 public:
  CutJudge(const Params& params, const ContactMap& contacts, const Residue* slice, int n,
           WorkerPool* workers = nullptr);

  // Acceptance and score of one candidate, the slice ordered by part with the split residues
  // of part 0 first; the slice may be reordered within each part.
  float GoodDomainCut(Residue* slice, int split, int n, CutScores* scores) const;

 private:
  struct LevelResidue {
    int32_t index;
    int32_t bridge1;
    int32_t bridge2;
    char ss;
  };
  struct LevelPair {
    int32_t first, second;  // level positions
    int32_t weight, count;
  };
  // Sums over residue pairs, kept in 64 bits so that extreme weights stay defined.
  struct ContactSums {
    int64_t atoms1 = 0, atoms2 = 0;
    int64_t intra1 = 0, intra2 = 0;
    int64_t interW = 0, interC = 0;
  };
  // Each side's segments: runs of consecutive residues in the chain.
  struct SegmentCounts {
    int32_t first, second;
  };
  static constexpr int32_t kNotInLevel = -1;

  std::vector<uint8_t> Sides(const Residue* slice, int split, int n) const;
  SegmentCounts CountSideSegments(Residue* slice, int split, int n) const;
  float Score(const ContactSums& sums, float wnorm, int res1, int res2, SegmentCounts segments,
              int32_t betapair, int32_t betapass) const;
  ContactSums SumContacts(const Residue* slice, int split, int n,
                          const std::vector<uint8_t>& side) const;
  int32_t BetaPairs(const std::vector<uint8_t>& side) const;
  int32_t BetaPasses(const std::vector<uint8_t>& side) const;

  const Params& params_;
  std::vector<int32_t> local_;  // chain index -> level position, or kNotInLevel
  std::vector<LevelResidue> residues_;
  std::vector<LevelPair> pairs_;
};

// A residue's label as one number: its part, plus kMergedCode when merging relabelled it.
constexpr int32_t kMergedCode = 100;
int32_t LabelCode(const Residue& r);
void RestoreLabel(Residue& r, int32_t code);

// The judgement of one candidate on its own (the level prepared for it alone).
float GoodDomainCut(const Params& params, const ContactMap& contacts, Residue* slice, int split,
                    int n, CutScores* scores);

// The best candidate cut of one solved network: its score (kRejectedScore when none was
// accepted) and scores record; on acceptance the slice is left in index order labelled with it.
float GenerateAllBiPartition(const Params& params, const CutJudge& judge, FlowNetwork& network,
                             Residue* slice, CutScores* scores);

// Segment merging: short loops and tails take their neighbours' label.
void MergeSegments(const Params& params, Residue* slice, int n);

}  // namespace quarnel
