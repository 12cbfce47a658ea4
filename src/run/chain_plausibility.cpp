// Counting residues as the reader does, and looking for CA atoms that lie on one another.
#include "run/chain_plausibility.h"

#include <cmath>
#include <cstdint>
#include <cstring>
#include <unordered_map>
#include <vector>

#include "base/text.h"

namespace quarnel {

namespace {

// Two CA atoms of one real chain are never closer than about 2.8 Å (a cis peptide); closer
// than this, they are copies of one residue.
constexpr double kSameSpot = 0.5;
// Refused when at least this share of residues (and this many) lie on another residue.
constexpr int kSuperposedShareDivisor = 10;
constexpr int kMinSuperposed = 3;

struct Point {
  double x, y, z;
};

constexpr int64_t kSpan = 1 << 20;  // cells per axis: every coordinate a PDB column holds fits

int64_t CellKey(int64_t x, int64_t y, int64_t z) {
  return ((x + kSpan / 2) * kSpan + (y + kSpan / 2)) * kSpan + (z + kSpan / 2);
}

// Coordinates past the span (mmCIF has no columns to bound them) share the cells at its edges:
// the distance between the atoms of a cell still decides.
int64_t Cell(double value) {
  constexpr double kLow = -kSpan / 2 + 1, kHigh = kSpan / 2 - 2;
  const double cell = std::floor(value / kSameSpot);
  if (!(cell >= kLow)) return static_cast<int64_t>(kLow);
  return static_cast<int64_t>(std::min(cell, kHigh));
}

// Residues whose CA lies within kSameSpot of an earlier residue's CA.
int SuperposedResidues(const std::vector<Point>& cas) {
  std::unordered_map<int64_t, std::vector<Point>> cells;
  int superposed = 0;
  for (const Point& p : cas) {
    bool near = false;
    for (int64_t dx = -1; dx <= 1 && !near; ++dx)
      for (int64_t dy = -1; dy <= 1 && !near; ++dy)
        for (int64_t dz = -1; dz <= 1 && !near; ++dz) {
          auto it = cells.find(CellKey(Cell(p.x) + dx, Cell(p.y) + dy, Cell(p.z) + dz));
          if (it == cells.end()) continue;
          for (const Point& q : it->second)
            near = near || std::hypot(p.x - q.x, p.y - q.y, p.z - q.z) < kSameSpot;
        }
    superposed += near ? 1 : 0;
    cells[CellKey(Cell(p.x), Cell(p.y), Cell(p.z))].push_back(p);
  }
  return superposed;
}

}  // namespace

std::string ImplausibleChain(const std::vector<AtomRecord>& records) {
  std::vector<Point> cas;
  ReaderResidues read;
  for (const AtomRecord& record : records) {
    if (record.IsEnd()) break;
    if (!ReaderResidues::Read(record)) continue;
    if (read.Begins(record) && read.count() > kMaxChainResidues)
      return Format("more than %d residues read as one chain, more than any real chain has: "
                    "superposed copies, or models without MODEL records? (name one chain or "
                    "split the file)", kMaxChainResidues);
    if (std::strcmp(record.name, " CA ") == 0 && static_cast<int>(cas.size()) < read.count())
      cas.push_back(Point{record.x, record.y, record.z});
  }
  const int residues = read.count();
  const int superposed = SuperposedResidues(cas);
  if (superposed >= kMinSuperposed && superposed * kSuperposedShareDivisor >= residues)
    return Format("%d of its %d residues lie on another residue (CA atoms within %.1f A): "
                  "superposed copies of a chain, such as models without MODEL records; split "
                  "them into models or files", superposed, residues, kSameSpot);
  return std::string();
}

}  // namespace quarnel
