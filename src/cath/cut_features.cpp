// Features of one candidate cut. The contact sums follow the cut criteria (atom contacts of
// residue pairs more than ResSep apart in the chain); shape is read from the CA atoms.
#include "cath/cut_features.h"

#include "confidence/features.h"
#include "confidence/profile.h"
#include "confidence/testing.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstring>

namespace quarnel {

const char kCutFeatureNames[kCutFeatureCount][20] = {
    "log_node",     "node_share",   "log_chain",      "depth",        "small_share",
    "log_small",    "segments",     "min_seg_len",    "compact_min",  "compact_max",
    "inter_max",    "inter_min",    "interface",      "log_score",    "beta_pairs",
    "beta_passes",  "strand_share", "helix_share",    "rg_node",      "rg_sides_max",
    "separation",   "classic_pass", "cross_per_res",  "cross_share",  "acceptable",
    "agreement",    "agreeing",     "rival_gap",      "nn_min",       "nn_max",
    "radius_max",   "far_share_max", "b_burial",      "b_side_gap",   "b_node",
    "sse_split",    "interface_share", "cross_density", "exposed_core", "interface_burial",
};

namespace {

constexpr int8_t kOutside = -1;
constexpr double kLeastScore = 1e-12;  // the log of a cut with no weighted contact across

struct Shape {
  double centre[3] = {0.0, 0.0, 0.0};
  double rg = 0.0;
  int points = 0;
};

// Centre and radius of gyration of the CAs of the residues on one side (or of all).
Shape ShapeOf(const Structure& structure, const std::vector<int32_t>& members) {
  Shape shape;
  for (int32_t i : members) {
    const Residue& r = structure.residues[static_cast<size_t>(i)];
    if (r.ca[0] > kMissingCaX) continue;
    for (int k = 0; k < 3; ++k) shape.centre[k] += r.ca[k];
    ++shape.points;
  }
  if (shape.points == 0) return shape;
  for (double& c : shape.centre) c /= shape.points;
  double sum = 0.0;
  for (int32_t i : members) {
    const Residue& r = structure.residues[static_cast<size_t>(i)];
    if (r.ca[0] > kMissingCaX) continue;
    for (int k = 0; k < 3; ++k) sum += (r.ca[k] - shape.centre[k]) * (r.ca[k] - shape.centre[k]);
  }
  shape.rg = std::sqrt(sum / shape.points);
  return shape;
}

// The radius of gyration a compact globular chain of n residues has.
double ExpectedRg(size_t n) { return 2.2 * std::pow(static_cast<double>(n), 0.38); }

int Segments(const std::vector<int32_t>& members) {
  int segments = members.empty() ? 0 : 1;
  for (size_t k = 1; k < members.size(); ++k)
    if (members[k] != members[k - 1] + 1) ++segments;
  return segments;
}

struct Sums {
  int64_t atoms[2] = {0, 0};
  int64_t intra[2] = {0, 0};
  int64_t interC = 0, interW = 0;
  int betaPairs = 0, betaPasses = 0;
  int strands = 0, helices = 0;
};

Sums SumSides(const Structure& structure, const ContactMap& contacts, const Params& params,
              const std::vector<int8_t>& side, const CandidateNode& node) {
  Sums sums;
  for (int32_t i : node.residues) {
    const Residue& r = structure.residues[static_cast<size_t>(i)];
    const int s = side[static_cast<size_t>(i)];
    sums.atoms[s] += r.natoms;
    if (r.ss == 'E') ++sums.strands;
    if (r.ss == 'H' || r.ss == 'G' || r.ss == 'I') ++sums.helices;
    for (const ContactEntry* e = contacts.begin(i); e != contacts.end(i); ++e) {
      const int32_t j = e->partner;
      if (j <= i || j - i <= params.ResSep) continue;
      const int t = side[static_cast<size_t>(j)];
      if (t == kOutside) continue;
      if (s != t) {
        sums.interC += e->count;
        sums.interW += e->weight;
      } else {
        sums.intra[s] += e->count;
      }
    }
    // Strand neighbours and bridge partners on the other side.
    const size_t next = static_cast<size_t>(i) + 1;
    if (r.ss == 'E' && next < side.size() && side[next] != kOutside && side[next] != s &&
        structure.residues[next].ss == 'E')
      ++sums.betaPasses;
    for (int32_t partner : {r.bridge1, r.bridge2}) {
      if (partner <= i || static_cast<size_t>(partner) >= side.size()) continue;
      if (partner == r.bridge2 && r.bridge1 == r.bridge2) continue;
      const int t = side[static_cast<size_t>(partner)];
      if (t != kOutside && t != s) ++sums.betaPairs;
    }
  }
  return sums;
}

double Ratio(double a, double b) { return b > 0.0 ? a / b : 0.0; }

double CaBFactor(const Structure& structure, const Residue& r) {
  const Atom* atoms = structure.AtomsOf(r);
  for (int a = 0; a < r.natoms; ++a)
    if (std::strcmp(atoms[a].name, "CA ") == 0) return atoms[a].bfactor;
  return r.natoms > 0 ? atoms[0].bfactor : 0.0;
}

struct SideJudgement {
  float network = 0.0f;
  float radiusRatio = 0.0f;
  double farShare = 0.0;
};

// The classic judgement of one side as a domain: its profile features, the scores of the cut
// that made it, and the network's score of them.
SideJudgement JudgeSide(const Structure& structure, const std::vector<int32_t>& members,
                        const float scores[3]) {
  std::vector<Message> ignored;
  const ProfileFeatures profile = FeaturesOfProfile(ProfileOfResidues(structure, members, ignored),
                                                    Segments(members));
  const float vector[kNetworkInputs] = {
      profile.radiusRatio, static_cast<float>(profile.NumOfAA), static_cast<float>(profile.Fragnum),
      static_cast<float>(profile.positiveRows), static_cast<float>(profile.OUTcount),
      static_cast<float>(profile.crossings), scores[0], scores[1], scores[2]};
  SideJudgement judged;
  float out[1] = {0.0f};
  testing(vector, out);
  judged.network = out[0];
  judged.radiusRatio = profile.radiusRatio;
  judged.farShare = Ratio(profile.OUTcount, profile.NumOfAA);
  return judged;
}

// Secondary-structure elements (runs of helix or of strand letters) with residues on both sides.
int SplitElements(const Structure& structure, const std::vector<int8_t>& side,
                  const std::vector<int32_t>& members) {
  auto kind = [&](int32_t i) {
    const char ss = structure.residues[static_cast<size_t>(i)].ss;
    return ss == 'E' ? 'E' : (ss == 'H' || ss == 'G' || ss == 'I') ? 'H' : ' ';
  };
  int split = 0;
  size_t k = 0;
  while (k < members.size()) {
    const char element = kind(members[k]);
    size_t end = k;
    while (end + 1 < members.size() && members[end + 1] == members[end] + 1 && kind(members[end + 1]) == element)
      ++end;
    if (element != ' ') {
      bool both = false;
      for (size_t m = k + 1; m <= end && !both; ++m)
        both = side[static_cast<size_t>(members[m])] != side[static_cast<size_t>(members[k])];
      if (both) ++split;
    }
    k = end + 1;
  }
  return split;
}

bool Hydrophobic(const char* resname) {
  static constexpr char kNames[][4] = {"ILE", "LEU", "VAL", "PHE", "MET", "TRP"};
  for (const char* name : kNames)
    if (std::strncmp(resname, name, 3) == 0) return true;
  return false;
}

// How the residues at the cut are packed: the residues with a contact across, their contacts
// across, how buried they are, and the core residues the cut would leave exposed.
struct InterfaceStats {
  int residues = 0;
  int64_t crossContacts = 0;
  double burial = 0.0, nodeBurial = 0.0;
  double exposedCore = 0.0;  // the larger share, over the two sides
};

InterfaceStats Interface(const Structure& structure, const ContactMap& contacts, const Params& params,
                         const std::vector<int8_t>& side, const std::vector<int32_t>& members) {
  InterfaceStats stats;
  int core[2] = {0, 0}, exposed[2] = {0, 0};
  for (int32_t i : members) {
    const int s = side[static_cast<size_t>(i)];
    int64_t total = 0, across = 0;
    for (const ContactEntry* e = contacts.begin(i); e != contacts.end(i); ++e) {
      const int32_t j = e->partner;
      if (std::abs(j - i) <= params.ResSep) continue;
      const int t = side[static_cast<size_t>(j)];
      if (t == kOutside) continue;
      total += e->count;
      if (t != s) across += e->count;
    }
    stats.nodeBurial += static_cast<double>(total);
    if (across > 0) {
      ++stats.residues;
      stats.crossContacts += across;
      stats.burial += static_cast<double>(total);
    }
    if (Hydrophobic(structure.residues[static_cast<size_t>(i)].resname)) {
      ++core[s];
      if (2 * across > total) ++exposed[s];
    }
  }
  stats.nodeBurial /= static_cast<double>(members.size());
  if (stats.residues > 0) stats.burial /= stats.residues;
  stats.exposedCore = std::max(Ratio(exposed[0], core[0]), Ratio(exposed[1], core[1]));
  return stats;
}

double MeanOf(const std::vector<double>& values, const std::vector<int32_t>& members) {
  double sum = 0.0;
  for (int32_t i : members) sum += values[static_cast<size_t>(i)];
  return members.empty() ? 0.0 : sum / static_cast<double>(members.size());
}

}  // namespace

ChainView::ChainView(const Structure& structure_, const ContactMap& contacts_, const Params& params_)
    : structure(structure_), contacts(contacts_), params(params_) {
  const size_t n = static_cast<size_t>(structure.size());
  std::vector<double> b(n), burial(n);
  double meanB = 0.0, meanC = 0.0;
  for (size_t i = 0; i < n; ++i) {
    b[i] = CaBFactor(structure, structure.residues[i]);
    double count = 0.0;
    for (const ContactEntry* e = contacts.begin(static_cast<int32_t>(i)); e != contacts.end(static_cast<int32_t>(i)); ++e)
      count += e->count;
    burial[i] = count;
    meanB += b[i];
    meanC += count;
  }
  if (n == 0) return;
  meanB /= static_cast<double>(n);
  meanC /= static_cast<double>(n);
  double varB = 0.0, varC = 0.0, cov = 0.0;
  for (size_t i = 0; i < n; ++i) {
    varB += (b[i] - meanB) * (b[i] - meanB);
    varC += (burial[i] - meanC) * (burial[i] - meanC);
    cov += (b[i] - meanB) * (burial[i] - meanC);
  }
  const double sd = std::sqrt(varB / static_cast<double>(n));
  bScore.resize(n);
  for (size_t i = 0; i < n; ++i) bScore[i] = sd > 0.0 ? (b[i] - meanB) / sd : 0.0;
  bBurial = varB > 0.0 && varC > 0.0 ? cov / std::sqrt(varB * varC) : 0.0;
}

CutFeatures FeaturesOfCut(const ChainView& chain, const CandidateNode& node, const CandidateCut& cut) {
  const Structure& structure = chain.structure;
  const ContactMap& contacts = chain.contacts;
  const Params& params = chain.params;
  const std::vector<int32_t>& a = cut.sides[0];
  const std::vector<int32_t>& b = cut.sides[1];
  std::vector<int8_t> side(static_cast<size_t>(structure.size()), kOutside);
  for (int32_t i : a) side[static_cast<size_t>(i)] = 0;
  for (int32_t i : b) side[static_cast<size_t>(i)] = 1;
  const Sums sums = SumSides(structure, contacts, params, side, node);

  const double n = static_cast<double>(node.residues.size());
  const double na = static_cast<double>(a.size()), nb = static_cast<double>(b.size());
  const int segA = Segments(a), segB = Segments(b);
  const double g[2] = {Ratio(sums.intra[0], sums.atoms[0]), Ratio(sums.intra[1], sums.atoms[1])};
  const double inter[2] = {Ratio(sums.interC, sums.intra[0]), Ratio(sums.interC, sums.intra[1])};
  const double atoms = static_cast<double>(sums.atoms[0] + sums.atoms[1]);
  const double interface =
      Ratio(sums.interC * atoms, static_cast<double>(sums.atoms[0]) * static_cast<double>(sums.atoms[1]));
  const double segLen = std::min(na / segA, nb / segB);
  const Shape whole = ShapeOf(structure, node.residues);
  const Shape sa = ShapeOf(structure, a), sb = ShapeOf(structure, b);
  double separation = 0.0;
  for (int k = 0; k < 3; ++k) separation += (sa.centre[k] - sb.centre[k]) * (sa.centre[k] - sb.centre[k]);
  separation = Ratio(std::sqrt(separation), sa.rg + sb.rg);

  const bool classic = na >= params.MinDomainSize && nb >= params.MinDomainSize &&
                       g[0] >= params.MinGlobularity && g[1] >= params.MinGlobularity &&
                       inter[0] <= params.MaxInteraction && inter[1] <= params.MaxInteraction &&
                       na / segA >= params.MinSegRes && nb / segB >= params.MinSegRes &&
                       sums.betaPairs < params.MaxBetaPair && sums.betaPasses < params.MaxBetaPass &&
                       interface <= params.MaxTime;
  const double crossShare = Ratio(sums.interC, sums.intra[0] + sums.intra[1] + sums.interC);

  CutFeatures f{};
  f[0] = static_cast<float>(std::log(n));
  f[1] = static_cast<float>(n / static_cast<double>(structure.size()));
  f[2] = static_cast<float>(std::log(static_cast<double>(structure.size())));
  f[3] = static_cast<float>(node.depth);
  f[4] = static_cast<float>(std::min(na, nb) / n);
  f[5] = static_cast<float>(std::log(std::min(na, nb)));
  f[6] = static_cast<float>(segA + segB);
  f[7] = static_cast<float>(segLen);
  f[8] = static_cast<float>(std::min(g[0], g[1]));
  f[9] = static_cast<float>(std::max(g[0], g[1]));
  f[10] = static_cast<float>(std::max(inter[0], inter[1]));
  f[11] = static_cast<float>(std::min(inter[0], inter[1]));
  f[12] = static_cast<float>(interface);
  f[13] = static_cast<float>(std::log(std::max(static_cast<double>(cut.score), kLeastScore)));
  f[14] = static_cast<float>(sums.betaPairs);
  f[15] = static_cast<float>(sums.betaPasses);
  f[16] = static_cast<float>(sums.strands / n);
  f[17] = static_cast<float>(sums.helices / n);
  f[18] = static_cast<float>(Ratio(whole.rg, ExpectedRg(node.residues.size())));
  f[19] = static_cast<float>(std::max(Ratio(sa.rg, ExpectedRg(a.size())), Ratio(sb.rg, ExpectedRg(b.size()))));
  f[20] = static_cast<float>(separation);
  f[21] = static_cast<float>(classic ? 1.0 : 0.0);
  f[22] = static_cast<float>(Ratio(sums.interC, std::min(na, nb)));
  f[23] = static_cast<float>(crossShare);
  f[24] = static_cast<float>(Ratio(cut.acceptable, cut.samples));
  f[25] = static_cast<float>(cut.agreement);
  f[26] = static_cast<float>(cut.agreeing);
  f[27] = static_cast<float>(std::log(std::max(static_cast<double>(cut.rivalScore), kLeastScore)) - f[13]);
  const float scoresA[3] = {cut.scores.compact1, cut.scores.inter1, cut.scores.interface};
  const float scoresB[3] = {cut.scores.compact2, cut.scores.inter2, cut.scores.interface};
  const SideJudgement ja = JudgeSide(structure, a, scoresA), jb = JudgeSide(structure, b, scoresB);
  f[28] = static_cast<float>(std::min(ja.network, jb.network));
  f[29] = static_cast<float>(std::max(ja.network, jb.network));
  f[30] = static_cast<float>(std::max(ja.radiusRatio, jb.radiusRatio));
  f[31] = static_cast<float>(std::max(ja.farShare, jb.farShare));
  f[32] = static_cast<float>(chain.bBurial);
  f[33] = static_cast<float>(std::fabs(MeanOf(chain.bScore, a) - MeanOf(chain.bScore, b)));
  f[34] = static_cast<float>(MeanOf(chain.bScore, node.residues));
  const InterfaceStats across = Interface(structure, contacts, params, side, node.residues);
  f[35] = static_cast<float>(SplitElements(structure, side, node.residues));
  f[36] = static_cast<float>(Ratio(across.residues, std::min(na, nb)));
  f[37] = static_cast<float>(Ratio(static_cast<double>(across.crossContacts), across.residues));
  f[38] = static_cast<float>(across.exposedCore);
  f[39] = static_cast<float>(Ratio(across.burial, across.nodeBurial));
  return f;
}

}  // namespace quarnel
