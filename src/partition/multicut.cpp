// The search of one partition level. Anchor residues far apart in space are chosen; many
// source/sink samples are drawn around them and across their axis; each sample is one flow
// problem whose candidate cuts are judged; the best acceptable cut over all samples wins.
// The random draws follow one fixed order (all draws happen while the sample list is built,
// none while the flow problems are solved), so a run always repeats itself.
#include "partition/multicut.h"

#include <cmath>
#include <cstdlib>

#include "contacts/contacts.h"
#include "partition/bipartition.h"
#include "partition/flow.h"
#include "run/fatal.h"
#include "run/parameters.h"
#include "run/sort.h"
#include "run/textio.h"
#include "structure/protein.h"

namespace {

constexpr double kFarthestLimit = 998800.01;       // CA distances above this are not pairs
constexpr double kAcrossSplitLimit = 999700.01;
constexpr int kSplitMargin = 35;                   // residues on each side of a tested split
constexpr float kNoSplitYet = 1000000.0f;
constexpr int32_t kMaxFlowToJudge = 1999999;        // more means shared anchor residues
constexpr double kFiveDegrees = 0.08726646111111111;  // 5 x 3.1415926 / 180
constexpr int32_t kMergedCode = 100;

struct Sample {
  int32_t source;
  int32_t sink;
};

// A random pick among the first m entries of a list.
int RandomPick(int m) { return static_cast<int>(drand48() * m); }

// The slice's residues by CA distance from one residue, nearest first.
std::vector<DistanceEntry> SortedByDistance(Contact** sub, int n, int from) {
  std::vector<DistanceEntry> list(n);
  for (int i = 0; i < n; ++i) list[i] = DistanceEntry{i, sub[from][i].dist2};
  SortRecords(list.data(), list.size(), sizeof(DistanceEntry), compare1);
  return list;
}

bool FarthestPair(Contact** sub, int n, int* a, int* b) {
  float best = 0.0f;
  bool found = false;
  for (int i = 0; i < n; ++i) {
    for (int j = i + 1; j < n; ++j) {
      float d = sub[i][j].dist2;
      if (d > best && static_cast<double>(d) < kFarthestLimit) {
        best = d;
        *a = i;
        *b = j;
        found = true;
      }
    }
  }
  return found;
}

// The weight across a split at k, accumulated in single precision in row order.
float CrossWeightInFloat(Contact** sub, int n, int k) {
  float sum = 0.0f;
  for (int a = 0; a < k; ++a)
    for (int b = k; b < n; ++b) sum += static_cast<float>(sub[a][b].weight);
  return sum;
}

// The sequence split with the weakest weight across it per residue pair. The sums are kept
// exactly in 64 bits and updated from one k to the next; while every partial sum stays within
// the 24 bits a float holds exactly, the single-precision accumulation gives the same value,
// and only beyond that is it redone term by term.
int SequenceSplit(Contact** sub, int n) {
  constexpr int64_t kExactInFloat = int64_t{1} << 24;
  int split = n / 2;
  float best = kNoSplitYet;
  int first = kSplitMargin;
  if (first >= n - kSplitMargin) return split;

  int64_t sum = 0, magnitude = 0;
  for (int a = 0; a < first; ++a) {
    for (int b = first; b < n; ++b) {
      sum += sub[a][b].weight;
      magnitude += std::llabs(sub[a][b].weight);
    }
  }
  for (int k = first; k < n - kSplitMargin; ++k) {
    if (k > first) {
      // Residue k-1 moves to the left side.
      for (int a = 0; a < k - 1; ++a) {
        sum -= sub[a][k - 1].weight;
        magnitude -= std::llabs(sub[a][k - 1].weight);
      }
      for (int b = k; b < n; ++b) {
        sum += sub[k - 1][b].weight;
        magnitude += std::llabs(sub[k - 1][b].weight);
      }
    }
    float cross = magnitude <= kExactInFloat ? static_cast<float>(sum)
                                             : CrossWeightInFloat(sub, n, k);
    float value = cross / static_cast<float>(k) / static_cast<float>(n - k);
    if (value < best) {
      best = value;
      split = k;
    }
  }
  return split;
}

void FarthestAcross(Contact** sub, int n, int split, int* a, int* b) {
  float best = 0.0f;
  for (int i = 0; i < split; ++i) {
    for (int j = split; j < n; ++j) {
      float d = sub[i][j].dist2;
      if (d > best && static_cast<double>(d) < kAcrossSplitLimit) {
        best = d;
        *a = i;
        *b = j;
      }
    }
  }
}

int FindResidue(const Residue* slice, int n, int32_t resnum) {
  for (int i = 0; i < n; ++i) {
    if (slice[i].resnum == resnum) return i;
  }
  return -1;
}

// Samples around two anchors: the anchors themselves, then sources drawn near the first and
// then sinks drawn near the second.
void DrawAroundAnchors(Contact** sub, int n, int a, int b, std::vector<Sample>& samples) {
  const int extremes = NumExtremes > 0 ? NumExtremes : 0;
  size_t first = samples.size();
  samples.push_back(Sample{a, b});
  std::vector<DistanceEntry> near = SortedByDistance(sub, n, a);
  for (int s = 1; s < NumSamplePoints; ++s)
    samples.push_back(Sample{near[RandomPick(extremes)].position, 0});
  near = SortedByDistance(sub, n, b);
  for (int s = 1; s < NumSamplePoints; ++s)
    samples[first + s].sink = near[RandomPick(extremes)].position;
}

void DrawAcrossAxis(const std::vector<Point3f>& points, int n, int a, int b,
                    std::vector<Sample>& samples) {
  std::vector<PointPair> pairs;
  int count = 0;
  SelectNewPoints(points.data(), n, points[a], points[b], pairs, &count);
  int m = count < NumSamplePoints ? count : NumSamplePoints;
  if (m < 1) return;
  samples.push_back(Sample{pairs[0].first, pairs[0].second});
  for (int s = 1; s < m; ++s) {
    int32_t source = pairs[RandomPick(m)].first;
    int32_t sink = pairs[RandomPick(m)].second;
    samples.push_back(Sample{source, sink});
  }
}

}  // namespace

int compare1(const void* a, const void* b) {
  float difference = static_cast<const DistanceEntry*>(a)->key -
                     static_cast<const DistanceEntry*>(b)->key;
  return TruncToInt(difference);
}

int comparepair(const void* a, const void* b) {
  float difference = static_cast<const PointPair*>(b)->distance -
                     static_cast<const PointPair*>(a)->distance;
  return TruncToInt(difference);
}

int WithinBoundary(Point3f p, Point3f q, float d, Point3f a, Point3f b, float s, float bigD) {
  float dot = (p.x - q.x) * (a.x - b.x) + (p.y - q.y) * (a.y - b.y) + (p.z - q.z) * (a.z - b.z);
  return std::fabs(dot) <= s * d * bigD ? 1 : 0;
}

static float PointDistance(Point3f p, Point3f q) {
  float dx = p.x - q.x;
  float dy = p.y - q.y;
  float dz = p.z - q.z;
  float squared = dx * dx + dy * dy + dz * dz;
  return static_cast<float>(std::sqrt(static_cast<double>(squared)));
}

void SelectNewPoints(const Point3f* coords, int n, Point3f a, Point3f b,
                     std::vector<PointPair>& pairs, int* count) {
  const float s = static_cast<float>(std::sin(kFiveDegrees));
  const float bigD = PointDistance(a, b);
  pairs.clear();
  for (int p = 0; p < n; ++p) {
    for (int q = p + 1; q < n; ++q) {
      float d = PointDistance(coords[p], coords[q]);
      if (static_cast<double>(d) > 0.5 * static_cast<double>(bigD) &&
          WithinBoundary(coords[p], coords[q], d, a, b, s, bigD) == 1)
        pairs.push_back(PointPair{p, q, d});
    }
  }
  *count = static_cast<int>(pairs.size());
  SortRecords(pairs.data(), pairs.size(), sizeof(PointPair), comparepair);
}

int MultiCut(Residue* slice, Contact** sub, int n, int* split, CutScores* scores) {
  int a = 0, b = 0;
  const bool userAnchors = FlagExtremes == 1;
  if (userAnchors) {
    a = FindResidue(slice, n, Extreme1);
    b = FindResidue(slice, n, Extreme2);
    if (a < 0 || b < 0)
      Fatal(10, Stream::kStdout,
            Format("Extremal points unfound (%d, %d). Quit!\n", Extreme1, Extreme2));
    FlagExtremes = 0;
  }
  // The source and sink sets need NumExtremes residues each.
  if (n < NumExtremes || NumSamplePoints < 1) return 0;

  int acrossA = a, acrossB = b;
  if (!userAnchors) {
    if (!FarthestPair(sub, n, &a, &b)) return 0;
    acrossA = a;
    acrossB = b;
    FarthestAcross(sub, n, SequenceSplit(sub, n), &acrossA, &acrossB);
  }

  std::vector<Sample> samples;
  DrawAroundAnchors(sub, n, a, b, samples);

  std::vector<Point3f> points(n);
  for (int i = 0; i < n; ++i) {
    points[i] = Point3f{static_cast<float>(slice[i].ca[0]), static_cast<float>(slice[i].ca[1]),
                        static_cast<float>(slice[i].ca[2])};
  }
  DrawAcrossAxis(points, n, a, b, samples);

  if (!userAnchors && (acrossA != a || acrossB != b))
    DrawAroundAnchors(sub, n, acrossA, acrossB, samples);

  const int nodes = n + 2;
  const std::vector<WeightedPair> weighted = WeightedPairs(sub, n);
  std::vector<FlowNode> flowNodes(nodes);
  AdjacencyList list;
  std::vector<AnchorPair> anchors(NumExtremes);
  std::vector<int32_t> bestLabels(n);
  CutScores bestScores = kRejectedCutScores;
  float bestScore = kRejectedScore;

  for (const Sample& sample : samples) {
    std::vector<DistanceEntry> nearSource = SortedByDistance(sub, n, sample.source);
    std::vector<DistanceEntry> nearSink = SortedByDistance(sub, n, sample.sink);
    for (int k = 0; k < NumExtremes; ++k)
      anchors[k] = AnchorPair{nearSource[k].position, nearSink[k].position};

    GenerateGraphFromPairs(weighted, nodes, anchors.data(), flowNodes.data(), list);
    int32_t flow = DomainBiPartition(flowNodes.data(), list, nodes);

    if (flow <= kMaxFlowToJudge || MaxNumDom == kDefaultMaxNumDom) {
      CutScores sampleScores;
      float score = GenerateAllBiPartition(flowNodes.data(), list, slice, nodes, &sampleScores);
      // Only the earliest strictly lowest sample can win, so only its labels are kept.
      if (score < bestScore) {
        bestScore = score;
        bestScores = sampleScores;
        for (int i = 0; i < n; ++i)
          bestLabels[i] = slice[i].part + (slice[i].merged > 0 ? kMergedCode : 0);
      }
    }
    FreeAdjacencyList(list, nodes);
  }

  if (bestScore >= kRejectedScore || bestScore > kWorstAcceptedScore) return 0;

  *scores = bestScores;
  SortRecords(slice, static_cast<size_t>(n), sizeof(Residue), compare3);
  for (int i = 0; i < n; ++i) {
    if (bestLabels[i] > kMergedCode - 1) {
      slice[i].part = bestLabels[i] - kMergedCode;
      slice[i].merged = 1;
    } else {
      slice[i].part = bestLabels[i];
      slice[i].merged = 0;
    }
  }
  SortRecords(slice, static_cast<size_t>(n), sizeof(Residue), compare2);
  *split = 0;
  for (int i = 1; i < n; ++i) {
    if (slice[i].part != slice[i - 1].part) {
      *split = i;
      break;
    }
  }
  return 1;
}
