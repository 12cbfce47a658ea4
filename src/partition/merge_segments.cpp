// Tidies a candidate labelling along the chain: short loops and short tails take their
// neighbours' label, except segments rich in bridge partners, which hold beta sheets together.
#include <cstdint>
#include <vector>

#include "base/sort.h"
#include "partition/bipartition.h"

namespace quarnel {

namespace {

constexpr int32_t kProtectedLength = 100;
constexpr int32_t kMergedLoop = 1;
constexpr int32_t kMergedTerminal = 2;

struct Segment {
  int32_t start;
  int32_t end;
  int32_t length;
  int32_t bridged;  // residues with a bridge partner
};

std::vector<Segment> BuildSegments(const Residue* slice, int n) {
  std::vector<Segment> segments;
  segments.push_back(Segment{0, 0, 0, 0});
  for (int i = 1; i < n; ++i) {
    if (slice[i].part != slice[i - 1].part) {
      segments.back().end = i - 1;
      segments.push_back(Segment{i, 0, 0, 0});
    }
  }
  segments.back().end = n - 1;
  for (Segment& s : segments) s.length = s.end - s.start + 1;
  return segments;
}

void ProtectBetaSegments(const Params& params, const Residue* slice, std::vector<Segment>& segments) {
  for (Segment& s : segments) {
    for (int i = s.start; i <= s.end; ++i) {
      if (slice[i].bridge1 != kNoPartner || slice[i].bridge2 != kNoPartner) ++s.bridged;
    }
    if (static_cast<int64_t>(s.bridged) >= static_cast<int64_t>(params.MaxBetaPair) - 1)
      s.length = kProtectedLength;
  }
}

void Relabel(Residue* slice, const Segment& s, int32_t part, int32_t mark) {
  for (int i = s.start; i <= s.end; ++i) {
    slice[i].part = part;
    slice[i].merged = mark;
  }
}

// Inner segments no longer than MaxLoop, shortest first (the lower-numbered on ties), take the
// label of the residue before them and fuse with both neighbours.
void MergeInnerSegments(const Params& params, Residue* slice, std::vector<Segment>& segments,
                        int& last) {
  int32_t shortest = 0;
  while (shortest <= params.MaxLoop && last > 1) {
    int found = -1;
    for (int s = 1; s <= last - 1; ++s) {
      if (segments[s].length < kProtectedLength && (found < 0 || segments[s].length < shortest)) {
        found = s;
        shortest = segments[s].length;
      }
    }
    if (found < 0) break;
    if (shortest > params.MaxLoop) continue;

    const Segment merged = segments[found];
    Relabel(slice, merged, slice[merged.start - 1].part, kMergedLoop);
    Segment& before = segments[found - 1];
    before.end = segments[found + 1].end;
    before.length = before.end - before.start + 1;
    for (int s = found + 2; s <= last; ++s) {
      segments[s - 2].start = segments[s].start;
      segments[s - 2].end = segments[s].end;
      segments[s - 2].length = segments[s].length;
    }
    last -= 2;
  }
}

bool ShortTerminal(const Params& params, const Segment& s, bool atChainEnd) {
  return (s.length <= params.MaxTerm && atChainEnd) || (s.length <= params.MaxLoop && !atChainEnd);
}

}  // namespace

void MergeSegments(const Params& params, Residue* slice, int n) {
  SortByIndex(slice, n);
  if (n <= 0) return;

  std::vector<Segment> segments = BuildSegments(slice, n);
  int last = static_cast<int>(segments.size()) - 1;
  ProtectBetaSegments(params, slice, segments);
  MergeInnerSegments(params, slice, segments, last);

  if (last < 1) return;
  // The segment table is not rebuilt here: the last segment's test reads the residue before it
  // after the first segment may have been relabelled.
  const Segment head = segments[0];
  if (ShortTerminal(params, head, slice[0].index == 0))
    Relabel(slice, head, slice[head.end + 1].part, kMergedTerminal);
  // The slice's last residue is compared with the slice length, not with the chain's.
  const Segment tail = segments[last];
  if (ShortTerminal(params, tail, slice[n - 1].index == n - 1))
    Relabel(slice, tail, slice[tail.start - 1].part, kMergedTerminal);
}

}  // namespace quarnel
