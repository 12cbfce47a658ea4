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

namespace {

// The features by name, in the order of kCutFeatureNames.
enum Feature : size_t {
  kLogNode, kNodeShare, kLogChain, kDepth, kSmallShare, kLogSmall, kSegments, kMinSegLen,
  kCompactMin, kCompactMax, kInterMax, kInterMin, kInterface, kLogScore, kBetaPairs, kBetaPasses,
  kStrandShare, kHelixShare, kRgNode, kRgSidesMax, kSeparation, kClassicPass, kCrossPerRes,
  kCrossShare, kAcceptable, kAgreement, kAgreeing, kRivalGap, kNetworkMin, kNetworkMax,
  kRadiusMax, kFarShareMax, kBBurial, kBSideGap, kBNode, kSseSplit, kInterfaceShare,
  kCrossDensity, kExposedCore, kInterfaceBurial,
};
static_assert(kInterfaceBurial + 1 == kCutFeatureCount, "one name per feature");

// What several groups of features read: the node, its two sides and the sums over its contacts.
struct CutView {
  const ChainView& chain;
  const CandidateNode& node;
  const CandidateCut& cut;
  std::vector<int8_t> side;  // per chain index: 0, 1, or kOutside the node
  Sums sums;
  double n, na, nb;          // residues of the node and of each side
  int segA, segB;

  CutView(const ChainView& chain_, const CandidateNode& node_, const CandidateCut& cut_)
      : chain(chain_), node(node_), cut(cut_), side(static_cast<size_t>(chain_.structure.size()), kOutside) {
    for (int32_t i : cut.sides[0]) side[static_cast<size_t>(i)] = 0;
    for (int32_t i : cut.sides[1]) side[static_cast<size_t>(i)] = 1;
    sums = SumSides(chain.structure, chain.contacts, chain.params, side, node);
    n = static_cast<double>(node.residues.size());
    na = static_cast<double>(cut.sides[0].size());
    nb = static_cast<double>(cut.sides[1].size());
    segA = Segments(cut.sides[0]);
    segB = Segments(cut.sides[1]);
  }
};

void Set(CutFeatures& f, Feature feature, double value) { f[feature] = static_cast<float>(value); }

// Where the part lies in the chain, the sizes and pieces of its sides, and their shapes.
void SizesAndShapes(const CutView& v, CutFeatures& f) {
  const Structure& structure = v.chain.structure;
  const std::vector<int32_t>& a = v.cut.sides[0];
  const std::vector<int32_t>& b = v.cut.sides[1];
  Set(f, kLogNode, std::log(v.n));
  Set(f, kNodeShare, v.n / static_cast<double>(structure.size()));
  Set(f, kLogChain, std::log(static_cast<double>(structure.size())));
  Set(f, kDepth, v.node.depth);
  Set(f, kSmallShare, std::min(v.na, v.nb) / v.n);
  Set(f, kLogSmall, std::log(std::min(v.na, v.nb)));
  Set(f, kSegments, v.segA + v.segB);
  Set(f, kMinSegLen, std::min(v.na / v.segA, v.nb / v.segB));
  Set(f, kStrandShare, v.sums.strands / v.n);
  Set(f, kHelixShare, v.sums.helices / v.n);
  const Shape whole = ShapeOf(structure, v.node.residues);
  const Shape sa = ShapeOf(structure, a), sb = ShapeOf(structure, b);
  double separation = 0.0;
  for (int k = 0; k < 3; ++k) separation += (sa.centre[k] - sb.centre[k]) * (sa.centre[k] - sb.centre[k]);
  Set(f, kRgNode, Ratio(whole.rg, ExpectedRg(v.node.residues.size())));
  Set(f, kRgSidesMax, std::max(Ratio(sa.rg, ExpectedRg(a.size())), Ratio(sb.rg, ExpectedRg(b.size()))));
  Set(f, kSeparation, Ratio(std::sqrt(separation), sa.rg + sb.rg));
}

// The cut criteria's own measures: compactness, interaction, interface, the loose score, the
// sheets a cut tears, and whether the classic criteria would take the cut.
void Criteria(const CutView& v, CutFeatures& f) {
  const Sums& sums = v.sums;
  const Params& params = v.chain.params;
  const double g[2] = {Ratio(sums.intra[0], sums.atoms[0]), Ratio(sums.intra[1], sums.atoms[1])};
  const double inter[2] = {Ratio(sums.interC, sums.intra[0]), Ratio(sums.interC, sums.intra[1])};
  const double atoms = static_cast<double>(sums.atoms[0] + sums.atoms[1]);
  const double interface =
      Ratio(sums.interC * atoms, static_cast<double>(sums.atoms[0]) * static_cast<double>(sums.atoms[1]));
  const bool classic = v.na >= params.MinDomainSize && v.nb >= params.MinDomainSize &&
                       g[0] >= params.MinGlobularity && g[1] >= params.MinGlobularity &&
                       inter[0] <= params.MaxInteraction && inter[1] <= params.MaxInteraction &&
                       v.na / v.segA >= params.MinSegRes && v.nb / v.segB >= params.MinSegRes &&
                       sums.betaPairs < params.MaxBetaPair && sums.betaPasses < params.MaxBetaPass &&
                       interface <= params.MaxTime;
  Set(f, kCompactMin, std::min(g[0], g[1]));
  Set(f, kCompactMax, std::max(g[0], g[1]));
  Set(f, kInterMax, std::max(inter[0], inter[1]));
  Set(f, kInterMin, std::min(inter[0], inter[1]));
  Set(f, kInterface, interface);
  Set(f, kLogScore, std::log(std::max(static_cast<double>(v.cut.score), kLeastScore)));
  Set(f, kBetaPairs, sums.betaPairs);
  Set(f, kBetaPasses, sums.betaPasses);
  Set(f, kClassicPass, classic ? 1.0 : 0.0);
  Set(f, kCrossPerRes, Ratio(sums.interC, std::min(v.na, v.nb)));
  Set(f, kCrossShare, Ratio(sums.interC, sums.intra[0] + sums.intra[1] + sums.interC));
}

// How the search's samples agree with the cut; the rival's gap reads the cut's own log score.
void Samples(const CandidateCut& cut, CutFeatures& f) {
  Set(f, kAcceptable, Ratio(cut.acceptable, cut.samples));
  Set(f, kAgreement, cut.agreement);
  Set(f, kAgreeing, cut.agreeing);
  Set(f, kRivalGap, std::log(std::max(static_cast<double>(cut.rivalScore), kLeastScore)) - f[kLogScore]);
}

// Each side judged as the classic assessment judges a domain, and the B-factors.
void SidesAsDomains(const CutView& v, CutFeatures& f) {
  const CutScores& scores = v.cut.scores;
  const float scoresA[3] = {scores.compact1, scores.inter1, scores.interface};
  const float scoresB[3] = {scores.compact2, scores.inter2, scores.interface};
  const SideJudgement ja = JudgeSide(v.chain.structure, v.cut.sides[0], scoresA);
  const SideJudgement jb = JudgeSide(v.chain.structure, v.cut.sides[1], scoresB);
  Set(f, kNetworkMin, std::min(ja.network, jb.network));
  Set(f, kNetworkMax, std::max(ja.network, jb.network));
  Set(f, kRadiusMax, std::max(ja.radiusRatio, jb.radiusRatio));
  Set(f, kFarShareMax, std::max(ja.farShare, jb.farShare));
  Set(f, kBBurial, v.chain.bBurial);
  Set(f, kBSideGap, std::fabs(MeanOf(v.chain.bScore, v.cut.sides[0]) - MeanOf(v.chain.bScore, v.cut.sides[1])));
  Set(f, kBNode, MeanOf(v.chain.bScore, v.node.residues));
}

// The residues at the cut: elements split, how many, how tightly packed, the core laid bare.
void Packing(const CutView& v, CutFeatures& f) {
  const InterfaceStats across =
      Interface(v.chain.structure, v.chain.contacts, v.chain.params, v.side, v.node.residues);
  Set(f, kSseSplit, SplitElements(v.chain.structure, v.side, v.node.residues));
  Set(f, kInterfaceShare, Ratio(across.residues, std::min(v.na, v.nb)));
  Set(f, kCrossDensity, Ratio(static_cast<double>(across.crossContacts), across.residues));
  Set(f, kExposedCore, across.exposedCore);
  Set(f, kInterfaceBurial, Ratio(across.burial, across.nodeBurial));
}

}  // namespace

CutFeatures FeaturesOfCut(const ChainView& chain, const CandidateNode& node, const CandidateCut& cut) {
  const CutView view(chain, node, cut);
  CutFeatures f{};
  SizesAndShapes(view, f);
  Criteria(view, f);
  Samples(cut, f);
  SidesAsDomains(view, f);
  Packing(view, f);
  return f;
}

}  // namespace quarnel
