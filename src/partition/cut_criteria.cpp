// Judges one candidate cut: size, compactness, interaction, fragmentation, beta sheets split,
// interface; an acceptable cut gets a score, lower being better. Ratios are single precision
// and compared so that a value equal to its threshold passes; a zero-over-zero ratio is not a
// number and therefore neither rejects the cut nor is stored.
#include <cmath>
#include <cstdlib>

#include "base/sort.h"
#include "partition/bipartition.h"

namespace quarnel {

namespace {

float F(int64_t value) { return static_cast<float>(value); }

// A penalty factor applied as count x score x 10.0, the last product in double.
float Penalised(int32_t count, float score) {
  return static_cast<float>(static_cast<double>(static_cast<float>(count) * score) * 10.0);
}

// Segments of one part: 1 plus the breaks in its run of index values.
int32_t CountSegments(const Residue* part, int size) {
  int32_t segments = 1;
  for (int i = 1; i < size; ++i) {
    if (part[i].index != part[i - 1].index + 1) ++segments;
  }
  return segments;
}

constexpr uint8_t kFirstPart = 0;
constexpr uint8_t kSecondPart = 1;

}  // namespace

CutJudge::CutJudge(const Params& params, const ContactMap& contacts, const Residue* slice, int n,
                   WorkerPool* workers)
    : params_(params), local_(static_cast<size_t>(contacts.size()), kNotInLevel) {
  residues_.resize(static_cast<size_t>(n));
  for (int r = 0; r < n; ++r) {
    local_[slice[r].index] = r;
    residues_[r] = LevelResidue{slice[r].index, slice[r].bridge1, slice[r].bridge2, slice[r].ss};
  }
  // Each pair of the level's residues once, lower index first, where the contact counts at all.
  // The sums over them are exact integers, so their order does not matter.
  pairs_ = CollectRows<LevelPair>(workers, n, [&](int r, std::vector<LevelPair>& pairs) {
    const int32_t i = slice[r].index;
    for (const ContactEntry* e = contacts.begin(i); e != contacts.end(i); ++e) {
      const int32_t j = e->partner;
      if (j <= i || j - i <= params.ResSep) continue;
      const int32_t c = local_[j];
      if (c == kNotInLevel) continue;
      if (e->weight != 0 || e->count != 0) pairs.push_back(LevelPair{r, c, e->weight, e->count});
    }
  });
}

std::vector<uint8_t> CutJudge::Sides(const Residue* slice, int split, int n) const {
  std::vector<uint8_t> side(residues_.size(), kFirstPart);
  for (int a = split; a < n; ++a) side[local_[slice[a].index]] = kSecondPart;
  return side;
}

CutJudge::ContactSums CutJudge::SumContacts(const Residue* slice, int split, int n,
                                            const std::vector<uint8_t>& side) const {
  ContactSums sums;
  for (int a = 0; a < n; ++a) (a < split ? sums.atoms1 : sums.atoms2) += slice[a].natoms;
  for (const LevelPair& pair : pairs_) {
    const uint8_t first = side[pair.first];
    const uint8_t second = side[pair.second];
    if (first != second) {
      sums.interW += pair.weight;
      sums.interC += pair.count;
    } else if (first == kFirstPart) {
      sums.intra1 += pair.count;
    } else {
      sums.intra2 += pair.count;
    }
  }
  return sums;
}

// Cross pairs in which either residue names the other as bridge partner, each pair once.
int32_t CutJudge::BetaPairs(const std::vector<uint8_t>& side) const {
  int32_t count = 0;
  for (size_t r = 0; r < residues_.size(); ++r) {
    const LevelResidue& x = residues_[r];
    const int32_t partners[2] = {x.bridge1, x.bridge2 == x.bridge1 ? kNoPartner : x.bridge2};
    for (int32_t partner : partners) {
      if (partner < 0 || static_cast<size_t>(partner) >= local_.size()) continue;
      const int32_t y = local_[partner];
      if (y == kNotInLevel || side[r] == side[y]) continue;
      const LevelResidue& other = residues_[y];
      // A pair named from both sides is counted from its lower index only.
      if ((other.bridge1 == x.index || other.bridge2 == x.index) && partner < x.index) continue;
      ++count;
    }
  }
  return count;
}

// Cross pairs of strand residues next to each other in the chain.
int32_t CutJudge::BetaPasses(const std::vector<uint8_t>& side) const {
  int32_t count = 0;
  for (size_t r = 0; r < residues_.size(); ++r) {
    const LevelResidue& x = residues_[r];
    const size_t next = static_cast<size_t>(x.index) + 1;
    if (x.ss != 'E' || next >= local_.size()) continue;
    const int32_t y = local_[next];
    if (y != kNotInLevel && side[r] != side[y] && residues_[y].ss == 'E') ++count;
  }
  return count;
}

float CutJudge::GoodDomainCut(Residue* slice, int split, int n, CutScores* scores) const {
  *scores = kRejectedCutScores;
  const int res1 = split;
  const int res2 = n - split;

  if (res1 < params_.MinDomainSize || res2 < params_.MinDomainSize) return kRejectedScore;

  const std::vector<uint8_t> side = Sides(slice, split, n);
  const ContactSums sums = SumContacts(slice, split, n, side);

  const float g1 = F(sums.intra1) / F(sums.atoms1);
  const float g2 = F(sums.intra2) / F(sums.atoms2);
  if (g1 < params_.MinGlobularity || g2 < params_.MinGlobularity) return kRejectedScore;
  if (g1 > params_.MinGlobularity && g2 > params_.MinGlobularity) {
    scores->compact1 = g1;
    scores->compact2 = g2;
  }

  const float i1 = F(sums.interC) / F(sums.intra1);
  const float i2 = F(sums.interC) / F(sums.intra2);
  if (i1 > params_.MaxInteraction || i2 > params_.MaxInteraction) return kRejectedScore;
  if (i1 < params_.MaxInteraction && i2 < params_.MaxInteraction) {
    scores->inter1 = i1;
    scores->inter2 = i2;
  }

  const SegmentCounts segments = CountSideSegments(slice, split, n);
  if (F(res1) / F(segments.first) < params_.MinSegRes || F(res2) / F(segments.second) < params_.MinSegRes)
    return kRejectedScore;

  const int32_t betapair = BetaPairs(side);
  const int32_t betapass = BetaPasses(side);
  if (betapair >= params_.MaxBetaPair) return kRejectedScore;
  if (betapass >= params_.MaxBetaPass) return kRejectedScore;

  if (sums.interW == 0) {
    scores->interface = 0.0f;
    return kNoContactScore;
  }

  const float atomsBoth = F(sums.atoms1 + sums.atoms2);
  const float wnorm = F(sums.interW) * atomsBoth / F(sums.atoms1) / F(sums.atoms2);
  const float cnorm = F(sums.interC) * atomsBoth / F(sums.atoms1) / F(sums.atoms2);
  if (cnorm > params_.MaxTime) return kRejectedScore;
  scores->interface = cnorm;
  return Score(sums, wnorm, res1, res2, segments, betapair, betapass);
}

// Each side ordered by chain index to count its segments, then the slice put back by part.
CutJudge::SegmentCounts CutJudge::CountSideSegments(Residue* slice, int split, int n) const {
  const int res1 = split;
  const int res2 = n - split;
  SortByIndex(slice, res1);
  SortByIndex(slice + split, res2);
  const SegmentCounts segments{CountSegments(slice, res1), CountSegments(slice + split, res2)};
  SortRecords(slice, static_cast<size_t>(n), sizeof(Residue), compare2);
  return segments;
}

// The score of a cut that met every criterion; the lower, the better.
float CutJudge::Score(const ContactSums& sums, float wnorm, int res1, int res2, SegmentCounts segments,
                      int32_t betapair, int32_t betapass) const {
  const int32_t seg1 = segments.first;
  const int32_t seg2 = segments.second;
  const float segmentRatio = F(seg1) * F(seg2) / F(res1) / F(res2);
  float score;
  if (params_.MaxNumDom == 2) {
    const float intraRatio = F(sums.intra1) * F(sums.intra2) / F(sums.atoms1) / F(sums.atoms2);
    // Natural logarithms in double precision (std::log of a float would stay in float).
    score = static_cast<float>(std::log(static_cast<double>(wnorm)) +
                               2.0 * std::log(static_cast<double>(segmentRatio)) -
                               2.0 * std::log(static_cast<double>(intraRatio)));
  } else {
    const float atomRatio = F(sums.atoms1) * F(sums.atoms2) / F(sums.intra1) / F(sums.intra2);
    const float f = segmentRatio * atomRatio;
    score = wnorm * f * f;
    if (params_.MaxNumDom != kDefaultMaxNumDom) {
      if (betapair > 0) score = Penalised(betapair, score);
      if (betapass > 0) score = Penalised(betapass, score);
    }
  }
  return score;
}

float GoodDomainCut(const Params& params, const ContactMap& contacts, Residue* slice, int split,
                    int n, CutScores* scores) {
  return CutJudge(params, contacts, slice, n).GoodDomainCut(slice, split, n, scores);
}

}  // namespace quarnel
