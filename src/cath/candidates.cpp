// The candidate search: each part is searched for its best cut under loose criteria and both
// sides are searched in turn, until the parts are too small to divide.
#include "cath/candidates.h"

#include <algorithm>
#include <cstdlib>

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
  if (const char* s = std::getenv("QUARNEL_RESEARCH_SEED")) hash ^= std::strtoull(s, nullptr, 10) * 0x9E3779B97F4A7C15ull;
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

// The samples' cuts weighed against the best one: how many found a cut, how alike their cuts
// are to it, and the best score of a cut unlike it. `best` sides the node's residues in index
// order.
void WeighSamples(CandidateNode& node, const std::vector<SampleCut>& cuts, const std::vector<uint8_t>& best) {
  const size_t n = best.size();
  node.samples = static_cast<int>(cuts.size());
  double sum = 0.0;
  int alike = 0;
  for (const SampleCut& cut : cuts) {
    if (cut.part.size() != n) continue;
    ++node.acceptable;
    size_t same = 0;
    for (size_t i = 0; i < n; ++i) same += cut.part[i] == best[i] ? 1 : 0;
    const double share = static_cast<double>(std::max(same, n - same)) / static_cast<double>(n);
    sum += share;
    if (share >= kAlike)
      ++alike;
    else
      node.rivalScore = std::min(node.rivalScore, cut.score);
  }
  if (node.acceptable > 0) {
    node.agreement = static_cast<float>(sum / node.acceptable);
    node.agreeing = static_cast<float>(alike) / static_cast<float>(node.acceptable);
  }
}

// The sides of a cut whose slice holds the first side before `split`.
void SidesOf(const std::vector<Residue>& slice, int split, std::vector<int32_t> sides[2]) {
  for (size_t i = 0; i < slice.size(); ++i)
    sides[static_cast<int>(i) < split ? 0 : 1].push_back(slice[i].index);
  std::sort(sides[0].begin(), sides[0].end());
  std::sort(sides[1].begin(), sides[1].end());
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

  // The node's best cut by the flow search, if any.
  bool FlowCut(int id, std::vector<int32_t> sides[2]) {
    const std::vector<int32_t>& members = node(id).residues;
    const int n = static_cast<int>(members.size());
    std::vector<Residue> slice = SliceOf(structure, members);
    context.random = NodeStream(members);
    context.anchorMode = 2;
    const Engine engine{params, contacts, context};
    int split = 0;
    CutScores scores = kRejectedCutScores;
    std::vector<SampleCut> cuts;
    int found = 0;
    {
      const LevelMatrix level(contacts, slice.data(), n);
      found = MultiCut(engine, slice.data(), level, &split, &scores, &cuts);
    }
    if (!found) return false;
    // The slice holds the first side, then the second: the score of the winning cut again.
    CutScores again = scores;
    const float score = GoodDomainCut(params, contacts, slice.data(), split, n, &again);
    SidesOf(slice, split, sides);
    std::vector<uint8_t> best(members.size(), 0);
    for (int32_t index : sides[1])
      best[static_cast<size_t>(std::lower_bound(members.begin(), members.end(), index) - members.begin())] = 1;
    CandidateNode& divided = node(id);
    divided.scores = scores;
    divided.score = score;
    WeighSamples(divided, cuts, best);
    return true;
  }

  // A long node is cut where the weight of contacts across a sequence split, per pair of
  // residues across, is least, the split kept in the middle half so that the parts shrink fast.
  void SequenceCut(int id, std::vector<int32_t> sides[2]) {
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
    CandidateNode& divided = node(id);
    divided.bySequence = true;
    divided.score = GoodDomainCut(params, contacts, slice.data(), best, n, &divided.scores);
    SidesOf(slice, best, sides);
  }

  void Divide(int id) {
    const int n = static_cast<int>(node(id).residues.size());
    if (n < 2 * params.MinDomainSize || n < params.NumExtremes) return;
    std::vector<int32_t> sides[2];
    if (n > kLongestSearchedPart)
      SequenceCut(id, sides);
    else if (!FlowCut(id, sides))
      return;
    node(id).hasCut = true;
    const int first = AddNode(std::move(sides[0]), id);
    const int second = AddNode(std::move(sides[1]), id);
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
