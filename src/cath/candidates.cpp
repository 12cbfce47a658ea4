// The candidate search: each part is searched for its best cut under loose criteria and both
// sides are searched in turn, until the parts are too small to divide.
#include "cath/candidates.h"

#include <algorithm>

#include "partition/bipartition.h"
#include "partition/multicut.h"

namespace quarnel {

namespace {

// Smallest side a candidate cut may leave; CATH's smallest domains have about 30 residues.
constexpr int32_t kCandidateMinDomain = 30;
// Least average segment length of each side: loose enough for a domain made of a few pieces.
constexpr float kCandidateMinSegRes = 15.0f;
constexpr float kNoLimit = 3000.0f;
// Two cuts are alike when they side at least this share of the residues the same way.
constexpr double kAlike = 0.9;

// A seed for the node's own stream from its residues: the same residues always draw the same
// numbers, whatever else was searched before.
Rand48 NodeStream(const std::vector<int32_t>& residues) {
  uint64_t hash = 1469598103934665603ull;  // FNV-1a over the indices
  for (int32_t index : residues) {
    hash ^= static_cast<uint32_t>(index);
    hash *= 1099511628211ull;
  }
  return Rand48(0x330E, static_cast<unsigned short>(hash), static_cast<unsigned short>(hash >> 16));
}

// The residues of a node as a slice the engine may reorder, with nothing of earlier cuts.
std::vector<Residue> SliceOf(const Structure& structure, const std::vector<int32_t>& members) {
  std::vector<Residue> slice;
  slice.reserve(members.size());
  for (int32_t index : members) {
    Residue residue = structure.residues[static_cast<size_t>(index)];
    residue.domain = 0;
    residue.part = 0;
    residue.merged = 0;
    slice.push_back(residue);
  }
  return slice;
}

// Share of residues two cuts side the same way, either way round.
double Alike(const std::vector<uint8_t>& a, const std::vector<uint8_t>& b) {
  size_t same = 0;
  for (size_t i = 0; i < a.size(); ++i) same += a[i] == b[i] ? 1 : 0;
  return static_cast<double>(std::max(same, a.size() - same)) / static_cast<double>(a.size());
}

// How the samples' cuts agree with one of them.
void WeighSamples(CandidateCut& cut, const std::vector<SampleCut>& samples, const std::vector<uint8_t>& part) {
  cut.samples = static_cast<int>(samples.size());
  double sum = 0.0;
  int alike = 0;
  for (const SampleCut& sample : samples) {
    if (sample.part.size() != part.size()) continue;
    ++cut.acceptable;
    const double share = Alike(sample.part, part);
    sum += share;
    if (share >= kAlike)
      ++alike;
    else
      cut.rivalScore = std::min(cut.rivalScore, sample.score);
  }
  if (cut.acceptable > 0) {
    cut.agreement = static_cast<float>(sum / cut.acceptable);
    cut.agreeing = static_cast<float>(alike) / static_cast<float>(cut.acceptable);
  }
}

// The distinct cuts of the samples, best score first (the earlier sample on ties, which puts the
// search's own choice first): a cut is kept when it sides the residues unlike every cut kept
// before it.
std::vector<CandidateCut> DistinctCuts(const std::vector<int32_t>& members, const std::vector<SampleCut>& samples) {
  std::vector<size_t> order;
  for (size_t s = 0; s < samples.size(); ++s)
    if (samples[s].part.size() == members.size()) order.push_back(s);
  std::stable_sort(order.begin(), order.end(),
                   [&](size_t a, size_t b) { return samples[a].score < samples[b].score; });
  std::vector<CandidateCut> cuts;
  std::vector<const std::vector<uint8_t>*> kept;
  for (size_t s : order) {
    const std::vector<uint8_t>& part = samples[s].part;
    bool unlike = true;
    for (const std::vector<uint8_t>* other : kept) unlike = unlike && Alike(part, *other) < kAlike;
    if (!unlike) continue;
    CandidateCut cut;
    for (size_t i = 0; i < members.size(); ++i) cut.sides[part[i] == 0 ? 0 : 1].push_back(members[i]);
    if (cut.sides[0].empty() || cut.sides[1].empty()) continue;
    cut.scores = samples[s].scores;
    cut.score = samples[s].score;
    WeighSamples(cut, samples, part);
    cuts.push_back(std::move(cut));
    kept.push_back(&part);
    if (cuts.size() == kCutsKept) break;
  }
  return cuts;
}

struct Search {
  const Structure& structure;
  const ContactMap& contacts;
  const Params& params;
  RunContext& context;
  std::vector<CandidateNode> nodes;

  CandidateNode& node(int id) { return nodes[static_cast<size_t>(id)]; }

  int AddNode(std::vector<int32_t> residues, int parent) {
    CandidateNode added;
    added.residues = std::move(residues);
    added.parent = parent;
    added.depth = parent == kNoNode ? 0 : node(parent).depth + 1;
    nodes.push_back(std::move(added));
    return static_cast<int>(nodes.size()) - 1;
  }

  // The node's distinct cuts by the flow search, best first; none when it has none.
  std::vector<CandidateCut> FlowCuts(int id) {
    const std::vector<int32_t>& members = node(id).residues;
    const int n = static_cast<int>(members.size());
    std::vector<Residue> slice = SliceOf(structure, members);
    context.random = NodeStream(members);
    context.anchorMode = 2;
    const Engine engine{params, contacts, context};
    int split = 0;
    CutScores scores = kRejectedCutScores;
    std::vector<SampleCut> samples;
    int found = 0;
    {
      const LevelMatrix level(contacts, slice.data(), n);
      found = MultiCut(engine, slice.data(), level, &split, &scores, &samples);
    }
    if (!found) return {};
    return DistinctCuts(members, samples);
  }

  // A long node is cut where the weight of contacts across a sequence split, per pair of
  // residues across, is least, the split kept in the middle half so that the parts shrink fast.
  CandidateCut SequenceCut(int id) {
    const std::vector<int32_t>& members = node(id).residues;
    const int n = static_cast<int>(members.size());
    // Weight added to the cut at k by each contact (a, b), a < b: it counts for a < k <= b.
    std::vector<int64_t> change(static_cast<size_t>(n) + 1, 0);
    for (int a = 0; a < n; ++a) {
      const int32_t i = members[static_cast<size_t>(a)];
      for (const ContactEntry* e = contacts.begin(i); e != contacts.end(i); ++e) {
        if (e->partner <= i) continue;
        const auto at = std::lower_bound(members.begin(), members.end(), e->partner);
        if (at == members.end() || *at != e->partner) continue;
        const int b = static_cast<int>(at - members.begin());
        change[static_cast<size_t>(a) + 1] += e->weight;
        change[static_cast<size_t>(b) + 1] -= e->weight;
      }
    }
    int best = n / 2;
    double bestValue = -1.0;
    int64_t cross = 0;
    for (int k = 1; k < n; ++k) {
      cross += change[static_cast<size_t>(k)];
      if (k < n / 4 || k > n - n / 4) continue;
      const double value = static_cast<double>(cross) / (static_cast<double>(k) * (n - k));
      if (bestValue < 0.0 || value < bestValue) {
        bestValue = value;
        best = k;
      }
    }
    std::vector<Residue> slice = SliceOf(structure, members);
    for (int a = best; a < n; ++a) slice[static_cast<size_t>(a)].part = 1;
    CandidateCut cut;
    cut.bySequence = true;
    cut.score = GoodDomainCut(params, contacts, slice.data(), best, n, &cut.scores);
    cut.sides[0].assign(members.begin(), members.begin() + best);
    cut.sides[1].assign(members.begin() + best, members.end());
    return cut;
  }

  void Divide(int id) {
    const int n = static_cast<int>(node(id).residues.size());
    if (n < 2 * params.MinDomainSize || n < params.NumExtremes) return;
    std::vector<CandidateCut> cuts;
    if (n > kLongestSearchedPart)
      cuts.push_back(SequenceCut(id));
    else
      cuts = FlowCuts(id);
    if (cuts.empty()) return;
    node(id).cuts = std::move(cuts);
    std::vector<int32_t> firstSide = node(id).cuts[0].sides[0];
    std::vector<int32_t> secondSide = node(id).cuts[0].sides[1];
    const int first = AddNode(std::move(firstSide), id);
    const int second = AddNode(std::move(secondSide), id);
    node(id).children[0] = first;
    node(id).children[1] = second;
    Divide(first);
    Divide(second);
  }
};

}  // namespace

Params CandidateParams(const Params& params) {
  Params loose = params;
  loose.MaxNumDom = kDefaultMaxNumDom;
  loose.MinDomainSize = kCandidateMinDomain;
  loose.MinGlobularity = 0.0f;
  loose.MaxInteraction = kNoLimit;
  loose.MaxTime = kNoLimit;
  loose.MinSegRes = kCandidateMinSegRes;
  loose.MaxBetaPair = static_cast<int32_t>(kNoLimit);
  loose.MaxBetaPass = static_cast<int32_t>(kNoLimit);
  loose.FlagExtremes = 2;
  return loose;
}

std::vector<CandidateNode> SearchCandidates(const Structure& structure, const ContactMap& contacts,
                                            const Params& loose, RunContext& context) {
  Search search{structure, contacts, loose, context, {}};
  std::vector<int32_t> all(static_cast<size_t>(structure.size()));
  for (int32_t i = 0; i < structure.size(); ++i) all[static_cast<size_t>(i)] = i;
  search.Divide(search.AddNode(std::move(all), kNoNode));
  return std::move(search.nodes);
}

}  // namespace quarnel
