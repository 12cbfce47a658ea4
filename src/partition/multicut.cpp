// The search of one partition level. Anchor residues far apart in space are chosen; many
// source/sink samples are drawn around them and across their axis; each sample is one flow
// problem whose candidate cuts are judged; the best acceptable cut over all samples wins.
// Every random draw happens while the sample list is built, none while the flow problems are
// solved, so a run always repeats itself.
#include "partition/multicut.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <exception>
#include <new>

#include "base/sort.h"
#include "base/text.h"
#include "partition/bipartition.h"
#include "partition/flow.h"

namespace quarnel {

namespace {

constexpr double kFarthestLimit = 998800.01;  // CA distances above this are not pairs
constexpr double kAcrossSplitLimit = 999700.01;
constexpr int kSplitMargin = 35;              // residues on each side of a tested split
constexpr float kNoSplitYet = 1000000.0f;
constexpr int32_t kMaxFlowToJudge = 1999999;  // more means shared anchor residues
constexpr double kFiveDegrees = 0.08726646111111111;  // 5 x 3.1415926 / 180

struct Sample {
  int32_t source;
  int32_t sink;
};

// What each worker keeps of the samples it evaluated. A worker takes its samples in increasing
// order, so its last judged sample and its earliest strictly lowest one are what a single pass
// over its own samples would keep; across workers, the highest last judged sample and the lowest
// score (the earlier sample on ties) are what one pass over all samples keeps. A slice copy per
// worker instead of per sample keeps a level's memory small: every page a process touches first
// costs it a fault.
struct WorkerOutcome {
  std::vector<Residue> current;     // the slice copy the worker's sample works on
  std::vector<Residue> lastJudged;  // as its last judged sample left it
  int lastJudgedSample = -1;
  std::vector<int32_t> labels;      // part, plus kMergedCode when merged, by slice position
  std::vector<int32_t> bestLabels;  // those of its best sample
  int bestSample = -1;
  float bestScore = kRejectedScore;
  CutScores bestScores = kRejectedCutScores;
};

// The slice's residues by CA distance from one residue, nearest first.
std::vector<DistanceEntry> SortedByDistance(const LevelMatrix& level, int from) {
  const int n = level.size();
  std::vector<DistanceEntry> list(static_cast<size_t>(n));
  for (int i = 0; i < n; ++i) list[i] = DistanceEntry{i, level.dist2(from, i)};
  SortRecords(list.data(), list.size(), sizeof(DistanceEntry), compare1);
  return list;
}

// The best pair (larger distance first, the earlier in scan order on ties) among the pairs
// whose first member lies in each range of rows; ranges are then taken in order, a later one
// winning only when strictly farther, which is the scan of all rows in order.
struct FarPair {
  float distance = 0.0f;
  int a = -1, b = -1;
};

template <typename Scan>
FarPair FarthestInRows(WorkerPool* workers, int rows, const Scan& scan) {
  const int chunks = ChunksFor(workers, rows);
  std::vector<FarPair> best(static_cast<size_t>(chunks));
  ForChunks(workers, rows, chunks, [&](int chunk, int first, int last) {
    for (int i = first; i < last; ++i) scan(i, best[chunk]);
  });
  FarPair overall;
  for (const FarPair& pair : best)
    if (pair.a >= 0 && pair.distance > overall.distance) overall = pair;
  return overall;
}

bool FarthestPair(WorkerPool* workers, const LevelMatrix& level, int* a, int* b) {
  const int n = level.size();
  const FarPair found = FarthestInRows(workers, n, [&](int i, FarPair& best) {
    for (int j = i + 1; j < n; ++j) {
      const float d = level.dist2(i, j);
      if (d > best.distance && static_cast<double>(d) < kFarthestLimit) best = FarPair{d, i, j};
    }
  });
  if (found.a < 0) return false;
  *a = found.a;
  *b = found.b;
  return true;
}

// The weight across a split at k, accumulated in single precision in row order (the pairs
// without contact add nothing to it).
float CrossWeightInFloat(const LevelMatrix& level, int k) {
  float sum = 0.0f;
  for (int a = 0; a < k; ++a) {
    level.ForContacts(a, [&](int b, int32_t weight, int32_t) {
      if (b >= k) sum += static_cast<float>(weight);
    });
  }
  return sum;
}

// The sequence split with the weakest weight across it per residue pair. The sums are kept
// exactly in 64 bits and updated from one k to the next; while every partial sum stays within
// the 24 bits a float holds exactly, the single-precision accumulation gives the same value,
// and only beyond that is it redone term by term. Moving residue r to the left side takes its
// weight to the residues before it off the sum and adds its weight to those after it: both
// come from r's own row (the map is symmetric), one pass per row, rows shared among threads.
int SequenceSplit(WorkerPool* workers, const LevelMatrix& level) {
  constexpr int64_t kExactInFloat = int64_t{1} << 24;
  const int n = level.size();
  int split = n / 2;
  float best = kNoSplitYet;
  const int first = kSplitMargin;
  if (first >= n - kSplitMargin) return split;

  struct Moves {
    int64_t sum = 0, magnitude = 0;  // change when the residue moves to the left side
  };
  const int movers = n - kSplitMargin - 1 - first;  // residues first .. n - kSplitMargin - 2
  std::vector<Moves> moves(static_cast<size_t>(movers > 0 ? movers : 0));
  ForChunks(workers, movers, ChunksFor(workers, movers), [&](int, int from, int to) {
    for (int m = from; m < to; ++m) {
      const int r = first + m;
      Moves change;
      level.ForContacts(r, [&](int c, int32_t w, int32_t) {
        if (c == r) return;
        const int64_t weight = w;
        change.sum += c > r ? weight : -weight;
        change.magnitude += c > r ? std::llabs(weight) : -std::llabs(weight);
      });
      moves[m] = change;
    }
  });

  int64_t sum = 0, magnitude = 0;
  for (int a = 0; a < first; ++a) {
    level.ForContacts(a, [&](int b, int32_t w, int32_t) {
      if (b < first) return;
      sum += w;
      magnitude += std::llabs(w);
    });
  }
  for (int k = first; k < n - kSplitMargin; ++k) {
    if (k > first) {
      sum += moves[k - 1 - first].sum;
      magnitude += moves[k - 1 - first].magnitude;
    }
    float cross = magnitude <= kExactInFloat ? static_cast<float>(sum) : CrossWeightInFloat(level, k);
    float value = cross / static_cast<float>(k) / static_cast<float>(n - k);
    if (value < best) {
      best = value;
      split = k;
    }
  }
  return split;
}

void FarthestAcross(WorkerPool* workers, const LevelMatrix& level, int split, int* a, int* b) {
  const int n = level.size();
  const FarPair found = FarthestInRows(workers, split, [&](int i, FarPair& best) {
    for (int j = split; j < n; ++j) {
      const float d = level.dist2(i, j);
      if (d > best.distance && static_cast<double>(d) < kAcrossSplitLimit) best = FarPair{d, i, j};
    }
  });
  if (found.a < 0) return;
  *a = found.a;
  *b = found.b;
}

int FindResidue(const Residue* slice, int n, int32_t resnum) {
  for (int i = 0; i < n; ++i) {
    if (slice[i].resnum == resnum) return i;
  }
  return -1;
}

// Samples around two anchors: the anchors themselves, then sources drawn near the first and
// then sinks drawn near the second.
void DrawAroundAnchors(const Params& params, Rand48& random, const LevelMatrix& level, int a, int b,
                       std::vector<Sample>& samples) {
  const int extremes = params.NumExtremes > 0 ? params.NumExtremes : 0;
  size_t first = samples.size();
  samples.push_back(Sample{a, b});
  std::vector<DistanceEntry> near = SortedByDistance(level, a);
  for (int s = 1; s < params.NumSamplePoints; ++s)
    samples.push_back(Sample{near[random.Pick(extremes)].position, 0});
  near = SortedByDistance(level, b);
  for (int s = 1; s < params.NumSamplePoints; ++s)
    samples[first + s].sink = near[random.Pick(extremes)].position;
}

void DrawAcrossAxis(const Params& params, RunContext& context, const std::vector<Point3f>& points,
                    int a, int b, std::vector<Sample>& samples) {
  Rand48& random = context.random;
  const int n = static_cast<int>(points.size());
  std::vector<PointPair> pairs = SelectNewPoints(points.data(), n, points[a], points[b], context.workers);
  const int count = static_cast<int>(pairs.size());
  const int m = count < params.NumSamplePoints ? count : params.NumSamplePoints;
  if (m < 1) return;
  samples.push_back(Sample{pairs[0].first, pairs[0].second});
  for (int s = 1; s < m; ++s) {
    int32_t source = pairs[random.Pick(m)].first;
    int32_t sink = pairs[random.Pick(m)].second;
    samples.push_back(Sample{source, sink});
  }
}

// Chooses the anchors of the level and draws every sample; nothing later draws a number.
// Returns false when the level has no anchors (too few residues, no farthest pair).
bool BuildSamples(const Engine& engine, const Residue* slice, const LevelMatrix& level,
                  std::vector<Sample>& samples) {
  const Params& params = engine.params;
  RunContext& context = engine.context;
  const int n = level.size();
  int a = 0, b = 0;
  const bool userAnchors = context.anchorMode == 1;
  if (userAnchors) {
    a = FindResidue(slice, n, params.Extreme1);
    b = FindResidue(slice, n, params.Extreme2);
    if (a < 0 || b < 0)
      Fail(Status::kEngineFault, Stream::kStdout,
           Format("Extremal points unfound (%d, %d). Quit!\n", params.Extreme1, params.Extreme2));
    context.anchorMode = 0;
  }
  // The source and sink sets need NumExtremes residues each.
  if (n < params.NumExtremes || params.NumSamplePoints < 1) return false;

  int acrossA = a, acrossB = b;
  if (!userAnchors) {
    if (!FarthestPair(context.workers, level, &a, &b)) return false;
    acrossA = a;
    acrossB = b;
    FarthestAcross(context.workers, level, SequenceSplit(context.workers, level), &acrossA, &acrossB);
  }

  DrawAroundAnchors(params, context.random, level, a, b, samples);
  std::vector<Point3f> points(static_cast<size_t>(n));
  for (int i = 0; i < n; ++i) {
    points[i] = Point3f{static_cast<float>(slice[i].ca[0]), static_cast<float>(slice[i].ca[1]),
                        static_cast<float>(slice[i].ca[2])};
  }
  DrawAcrossAxis(params, context, points, a, b, samples);
  if (!userAnchors && (acrossA != a || acrossB != b))
    DrawAroundAnchors(params, context.random, level, acrossA, acrossB, samples);
  return true;
}

std::vector<WeightedPair> WeightedPairs(WorkerPool* workers, const LevelMatrix& level) {
  const int n = level.size();
  return CollectRows<WeightedPair>(workers, n, [&](int i, std::vector<WeightedPair>& pairs) {
    level.ForContacts(i, [&](int j, int32_t weight, int32_t) {
      if (j > i && weight != 0) pairs.push_back(WeightedPair{i, j, weight});
    });
  });
}

// What every sample of a level shares, read-only.
struct LevelData {
  const Params& params;
  const LevelMatrix& level;
  const LevelArcs arcs;
  const CutJudge judge;
};

// One sample's flow problem and its best candidate cut, on the worker's copy of the slice.
void EvaluateSample(const LevelData& data, int index, const Sample& sample, FlowScratch& scratch,
                    WorkerOutcome& worker, SampleCut* kept) {
  const Params& params = data.params;
  const int n = data.level.size();
  std::vector<DistanceEntry> nearSource = SortedByDistance(data.level, sample.source);
  std::vector<DistanceEntry> nearSink = SortedByDistance(data.level, sample.sink);
  std::vector<AnchorPair> anchors(static_cast<size_t>(params.NumExtremes));
  for (int k = 0; k < params.NumExtremes; ++k)
    anchors[k] = AnchorPair{nearSource[k].position, nearSink[k].position};

  FlowNetwork& network = scratch.network;
  GenerateGraph(data.arcs, anchors.data(), params.NumExtremes, network);
  const int32_t flow = DomainBiPartition(network, scratch);
  if (flow > kMaxFlowToJudge && params.MaxNumDom != kDefaultMaxNumDom) return;

  Residue* slice = worker.current.data();
  CutScores scores = kRejectedCutScores;
  const float score = GenerateAllBiPartition(params, data.judge, network, slice, &scores);
  if (kept != nullptr && score < kRejectedScore) {
    kept->score = score;
    kept->scores = scores;
    kept->part.resize(static_cast<size_t>(n));
    for (int i = 0; i < n; ++i) kept->part[static_cast<size_t>(i)] = static_cast<uint8_t>(slice[i].part);
  }
  if (score < worker.bestScore) {
    worker.labels.resize(static_cast<size_t>(n));
    for (int i = 0; i < n; ++i) worker.labels[i] = LabelCode(slice[i]);
    worker.labels.swap(worker.bestLabels);
    worker.bestSample = index;
    worker.bestScore = score;
    worker.bestScores = scores;
  }
  worker.current.swap(worker.lastJudged);
  worker.lastJudgedSample = index;
}

// Every sample of the level, on as many threads as the context has, each worker on its own copy
// of the slice and its own scratch space; a designed failure is kept by sample.
std::vector<WorkerOutcome> EvaluateSamples(const Engine& engine, const LevelData& data,
                                           const std::vector<Sample>& samples,
                                           const Residue* slice,
                                           std::vector<std::exception_ptr>& failures,
                                           std::vector<SampleCut>* sampleCuts) {
  RunContext& context = engine.context;
  const int threads = context.workers != nullptr ? context.workers->threads() : 1;
  if (context.flow.size() < static_cast<size_t>(threads)) context.flow.resize(static_cast<size_t>(threads));
  const int n = data.level.size();
  std::vector<WorkerOutcome> workers(static_cast<size_t>(threads));
  failures.assign(samples.size(), nullptr);
  if (sampleCuts != nullptr) sampleCuts->assign(samples.size(), SampleCut());
  auto body = [&](int s, int w) {
    WorkerOutcome& worker = workers[w];
    try {
      worker.current.assign(slice, slice + n);
      EvaluateSample(data, s, samples[s], context.flow[w], worker,
                     sampleCuts != nullptr ? &(*sampleCuts)[static_cast<size_t>(s)] : nullptr);
    } catch (const Failure&) {
      failures[s] = std::current_exception();
    } catch (const std::bad_alloc&) {
      failures[s] = std::make_exception_ptr(
          Failure(Status::kAllocation, Stream::kStdout, kAllocationFailedText));
    }
  };
  if (context.workers != nullptr)
    context.workers->ParallelFor(static_cast<int>(samples.size()), body);
  else
    for (int s = 0; s < static_cast<int>(samples.size()); ++s) body(s, 0);
  return workers;
}

}  // namespace

LevelMatrix::LevelMatrix(const ContactMap& contacts, const Residue* slice, int n)
    : contacts_(contacts), position_(static_cast<size_t>(contacts.size()), kNotInLevel) {
  index_.reserve(static_cast<size_t>(n > 0 ? n : 0));
  ca_.reserve(index_.capacity());
  for (int r = 0; r < n; ++r) {
    const int32_t i = slice[r].index;
    index_.push_back(i);
    position_[i] = r;
    ca_.push_back(contacts.ca(i));
  }
}

int compare1(const void* a, const void* b) {
  float difference =
      static_cast<const DistanceEntry*>(a)->key - static_cast<const DistanceEntry*>(b)->key;
  return TruncToInt(difference);
}

int comparepair(const void* a, const void* b) {
  float difference =
      static_cast<const PointPair*>(b)->distance - static_cast<const PointPair*>(a)->distance;
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

std::vector<PointPair> SelectNewPoints(const Point3f* coords, int n, Point3f a, Point3f b,
                                       WorkerPool* workers) {
  const float s = static_cast<float>(std::sin(kFiveDegrees));
  const float bigD = PointDistance(a, b);
  std::vector<PointPair> pairs = CollectRows<PointPair>(workers, n, [&](int p, std::vector<PointPair>& row) {
    for (int q = p + 1; q < n; ++q) {
      const float d = PointDistance(coords[p], coords[q]);
      if (static_cast<double>(d) > 0.5 * static_cast<double>(bigD) &&
          WithinBoundary(coords[p], coords[q], d, a, b, s, bigD) == 1)
        row.push_back(PointPair{p, q, d});
    }
  });
  SortRecords(pairs.data(), pairs.size(), sizeof(PointPair), comparepair);
  return pairs;
}

int MultiCut(const Engine& engine, Residue* slice, const LevelMatrix& level, int* split,
             CutScores* scores, std::vector<SampleCut>* sampleCuts) {
  const int n = level.size();
  std::vector<Sample> samples;
  if (!BuildSamples(engine, slice, level, samples)) return 0;

  WorkerPool* workers = engine.context.workers;
  const LevelData data{engine.params, level, BuildLevelArcs(WeightedPairs(workers, level), n),
                       CutJudge(engine.params, engine.contacts, slice, n, workers)};
  std::vector<std::exception_ptr> failures;
  const std::vector<WorkerOutcome> outcomes = EvaluateSamples(engine, data, samples, slice, failures, sampleCuts);

  // A failure ends the search where one thread taking the samples in order would stop; else
  // only the earliest strictly lowest sample wins.
  for (const std::exception_ptr& failure : failures)
    if (failure) std::rethrow_exception(failure);
  const WorkerOutcome* best = nullptr;
  const WorkerOutcome* last = nullptr;
  for (const WorkerOutcome& worker : outcomes) {
    if (worker.bestSample >= 0 &&
        (best == nullptr || worker.bestScore < best->bestScore ||
         (worker.bestScore == best->bestScore && worker.bestSample < best->bestSample)))
      best = &worker;
    if (worker.lastJudgedSample >= 0 && (last == nullptr || worker.lastJudgedSample > last->lastJudgedSample))
      last = &worker;
  }
  if (best == nullptr || best->bestScore > kWorstAcceptedScore) {
    // The slice is left as the last sample that listed candidates left it.
    if (last != nullptr) std::copy(last->lastJudged.begin(), last->lastJudged.end(), slice);
    return 0;
  }

  *scores = best->bestScores;
  SortByIndex(slice, n);
  for (int i = 0; i < n; ++i) RestoreLabel(slice[i], best->bestLabels[i]);
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

}  // namespace quarnel
