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

// Sums over residue pairs. Kept in 64 bits so that extreme weights stay defined; with any
// realistic structure they equal the 32-bit sums.
struct ContactSums {
  int64_t atoms1 = 0, atoms2 = 0;
  int64_t intra1 = 0, intra2 = 0;
  int64_t interW = 0, interC = 0;
};

ContactSums SumContacts(const Params& params, const ContactMap& contacts, const Residue* slice,
                        int split, int n) {
  ContactSums sums;
  for (int a = 0; a < n; ++a) {
    if (a < split)
      sums.atoms1 += slice[a].natoms;
    else
      sums.atoms2 += slice[a].natoms;
  }
  for (int a = 0; a < n; ++a) {
    const Contact* row = contacts.row(slice[a].index);
    for (int b = a + 1; b < n; ++b) {
      int separation = std::abs(slice[a].index - slice[b].index);
      if (separation <= params.ResSep) continue;
      const Contact& cell = row[slice[b].index];
      if (a < split && b < split) {
        sums.intra1 += cell.count;
      } else if (a >= split && b >= split) {
        sums.intra2 += cell.count;
      } else {
        sums.interW += cell.weight;
        sums.interC += cell.count;
      }
    }
  }
  return sums;
}

// Segments of one part: 1 plus the breaks in its run of index values.
int32_t CountSegments(const Residue* part, int size) {
  int32_t segments = 1;
  for (int i = 1; i < size; ++i) {
    if (part[i].index != part[i - 1].index + 1) ++segments;
  }
  return segments;
}

bool Bridged(const Residue& a, const Residue& b) {
  return a.bridge1 == b.index || a.bridge2 == b.index || b.bridge1 == a.index ||
         b.bridge2 == a.index;
}

float F(int64_t value) { return static_cast<float>(value); }

// A penalty factor applied as count x score x 10.0, the last product in double.
float Penalised(int32_t count, float score) {
  return static_cast<float>(static_cast<double>(static_cast<float>(count) * score) * 10.0);
}

}  // namespace

float GoodDomainCut(const Params& params, const ContactMap& contacts, Residue* slice, int split,
                    int n, CutScores* scores) {
  *scores = kRejectedCutScores;
  const int res1 = split;
  const int res2 = n - split;

  if (res1 < params.MinDomainSize || res2 < params.MinDomainSize) return kRejectedScore;

  const ContactSums sums = SumContacts(params, contacts, slice, split, n);

  const float g1 = F(sums.intra1) / F(sums.atoms1);
  const float g2 = F(sums.intra2) / F(sums.atoms2);
  if (g1 < params.MinGlobularity || g2 < params.MinGlobularity) return kRejectedScore;
  if (g1 > params.MinGlobularity && g2 > params.MinGlobularity) {
    scores->compact1 = g1;
    scores->compact2 = g2;
  }

  const float i1 = F(sums.interC) / F(sums.intra1);
  const float i2 = F(sums.interC) / F(sums.intra2);
  if (i1 > params.MaxInteraction || i2 > params.MaxInteraction) return kRejectedScore;
  if (i1 < params.MaxInteraction && i2 < params.MaxInteraction) {
    scores->inter1 = i1;
    scores->inter2 = i2;
  }

  SortRecords(slice, static_cast<size_t>(res1), sizeof(Residue), compare3);
  SortRecords(slice + split, static_cast<size_t>(res2), sizeof(Residue), compare3);
  const int32_t seg1 = CountSegments(slice, res1);
  const int32_t seg2 = CountSegments(slice + split, res2);
  SortRecords(slice, static_cast<size_t>(n), sizeof(Residue), compare2);
  if (F(res1) / F(seg1) < params.MinSegRes || F(res2) / F(seg2) < params.MinSegRes) return kRejectedScore;

  int32_t betapair = 0;
  int32_t betapass = 0;
  for (int a = 0; a < split; ++a) {
    for (int b = split; b < n; ++b) {
      if (Bridged(slice[a], slice[b])) ++betapair;
      if (std::abs(slice[a].index - slice[b].index) == 1 && slice[a].ss == 'E' &&
          slice[b].ss == 'E')
        ++betapass;
    }
  }
  if (betapair >= params.MaxBetaPair) return kRejectedScore;
  if (betapass >= params.MaxBetaPass) return kRejectedScore;

  if (sums.interW == 0) {
    scores->interface = 0.0f;
    return kNoContactScore;
  }

  const float atomsBoth = F(sums.atoms1 + sums.atoms2);
  const float wnorm = F(sums.interW) * atomsBoth / F(sums.atoms1) / F(sums.atoms2);
  const float cnorm = F(sums.interC) * atomsBoth / F(sums.atoms1) / F(sums.atoms2);
  if (cnorm > params.MaxTime) return kRejectedScore;
  scores->interface = cnorm;

  const float segmentRatio = F(seg1) * F(seg2) / F(res1) / F(res2);
  float score;
  if (params.MaxNumDom == 2) {
    const float intraRatio = F(sums.intra1) * F(sums.intra2) / F(sums.atoms1) / F(sums.atoms2);
    // Natural logarithms in double precision (std::log of a float would stay in float).
    score = static_cast<float>(std::log(static_cast<double>(wnorm)) +
                               2.0 * std::log(static_cast<double>(segmentRatio)) -
                               2.0 * std::log(static_cast<double>(intraRatio)));
  } else {
    const float atomRatio = F(sums.atoms1) * F(sums.atoms2) / F(sums.intra1) / F(sums.intra2);
    const float f = segmentRatio * atomRatio;
    score = wnorm * f * f;
    if (params.MaxNumDom != kDefaultMaxNumDom) {
      if (betapair > 0) score = Penalised(betapair, score);
      if (betapass > 0) score = Penalised(betapass, score);
    }
  }
  return score;
}

}  // namespace quarnel
