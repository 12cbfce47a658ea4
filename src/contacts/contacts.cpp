// The residue contact map, and the fixed weights that secondary structure gives it.
#include "contacts/contacts.h"

#include <sys/mman.h>
#include <unistd.h>

#include <cmath>
#include <limits>
#include <new>

#include "base/status.h"
#include "base/text.h"

namespace quarnel {

namespace {

// The reader leaves 999.9 in a CA coordinate that was never read.
constexpr double kMissingCaX = 998.9;

// Squared distance the way every contact test takes it: each difference in double, rounded to
// single precision, then squared and summed in single precision.
float Distance2(double x1, double y1, double z1, double x2, double y2, double z2) {
  float dx = static_cast<float>(x1 - x2);
  float dy = static_cast<float>(y1 - y2);
  float dz = static_cast<float>(z1 - z2);
  return dx * dx + dy * dy + dz * dz;
}

float CaDistance2(const Residue& a, const Residue& b) {
  if (a.ca[0] > kMissingCaX || b.ca[0] > kMissingCaX) return kNoCaDistance2;
  return Distance2(a.ca[0], a.ca[1], a.ca[2], b.ca[0], b.ca[1], b.ca[2]);
}

// A sphere around all atoms of a residue, used only to pass over residue pairs that are too far
// apart for any atom pair to be within 4 A. The test is done in double with a margin far larger
// than the single-precision rounding of the contact test, so skipping a pair never changes a
// cell. Residues whose coordinates are not finite or are absurdly large (a malformed file) get
// no sphere and are always compared atom by atom.
struct Sphere {
  double x = 0.0, y = 0.0, z = 0.0;
  double radius = 0.0;
  bool usable = false;
};

constexpr double kSphereMargin = 1.0;  // A, on top of the 4 A contact distance
constexpr double kContactDistance = 4.0;
constexpr double kLargestPrunedCoordinate = 1.0e6;

bool SaneCoordinate(double value) {
  return std::isfinite(value) && std::fabs(value) < kLargestPrunedCoordinate;
}

Sphere BoundingSphere(const Atom* atoms, int natoms) {
  Sphere sphere;
  if (natoms <= 0) return sphere;
  for (int a = 0; a < natoms; ++a) {
    const Atom& atom = atoms[a];
    if (!SaneCoordinate(atom.x) || !SaneCoordinate(atom.y) || !SaneCoordinate(atom.z)) return sphere;
    sphere.x += atom.x;
    sphere.y += atom.y;
    sphere.z += atom.z;
  }
  sphere.x /= natoms;
  sphere.y /= natoms;
  sphere.z /= natoms;
  double radius2 = 0.0;
  for (int a = 0; a < natoms; ++a) {
    const Atom& atom = atoms[a];
    double dx = atom.x - sphere.x, dy = atom.y - sphere.y, dz = atom.z - sphere.z;
    radius2 = std::fmax(radius2, dx * dx + dy * dy + dz * dz);
  }
  sphere.radius = std::sqrt(radius2);
  sphere.usable = true;
  return sphere;
}

bool Apart(const Sphere& a, const Sphere& b) {
  if (!a.usable || !b.usable) return false;
  double reach = a.radius + b.radius + kContactDistance + kSphereMargin;
  double dx = a.x - b.x, dy = a.y - b.y, dz = a.z - b.z;
  return dx * dx + dy * dy + dz * dz > reach * reach;
}

// One more contact. A huge -bw saturates the weight at the largest int32 (TruncToInt), and
// two residues of tens of thousands of atoms each (a file whose residue numbers never change)
// can exceed it in count: both stay there instead of wrapping around to negative values.
void AddOne(int32_t& value) {
  if (value < std::numeric_limits<int32_t>::max()) ++value;
}

// Every atom of one residue against every atom of the other, in stored order. A backbone pair
// adds BBWeight truncated toward zero at each addition, so a fractional weight loses its
// fraction every time.
void AtomContacts(const Atom* a, int na, const Atom* b, int nb, float bbWeight, Contact& cell) {
  for (int i = 0; i < na; ++i) {
    const Atom& p = a[i];
    for (int j = 0; j < nb; ++j) {
      const Atom& q = b[j];
      // Written as "at most 4 A": a malformed coordinate (NaN) then makes no contact.
      if (!(Distance2(p.x, p.y, p.z, q.x, q.y, q.z) <= kContactDistance2)) continue;
      AddOne(cell.count);
      if (p.backbone == 1 && q.backbone == 1)
        cell.weight = TruncToInt(static_cast<float>(cell.weight) + bbWeight);
      else
        AddOne(cell.weight);
    }
  }
}

// A chain whose contact map cannot fit in this machine's memory stops here, with the allocation
// failure, instead of being killed by the system halfway through.
constexpr double kUsableMemoryShare = 0.75;

void RequireMemoryForContacts(int32_t residues) {
  long pages = sysconf(_SC_PHYS_PAGES);
  long pageSize = sysconf(_SC_PAGE_SIZE);
  if (pages <= 0 || pageSize <= 0) return;
  double physical = static_cast<double>(pages) * static_cast<double>(pageSize);
  double needed = static_cast<double>(residues) * static_cast<double>(residues) *
                  static_cast<double>(sizeof(Contact));
  if (needed <= kUsableMemoryShare * physical) return;
  AllocationFailed(Format(
      "quarnel: %d residues need %.1f GB for their contact map; this machine has %.1f GB",
      residues, needed / 1e9, physical / 1e9));
}

void SetWeight(ContactMap& contacts, int32_t i, int32_t j, int32_t weight) {
  contacts.at(i, j).weight = weight;
  contacts.at(j, i).weight = weight;
}

// Every cell of the map is written, and a page first touched by a write costs a fault, which on
// some virtual machines takes several times as long as the kernel asking for the whole block at
// once (Linux 5.14 and later; elsewhere the pages are faulted in as before).
void Populate(void* block, size_t bytes) {
#ifdef MADV_POPULATE_WRITE
  const uintptr_t page = static_cast<uintptr_t>(sysconf(_SC_PAGE_SIZE));
  const uintptr_t first = (reinterpret_cast<uintptr_t>(block) + page - 1) / page * page;
  const uintptr_t last = (reinterpret_cast<uintptr_t>(block) + bytes) / page * page;
  if (last > first) madvise(reinterpret_cast<void*>(first), last - first, MADV_POPULATE_WRITE);
#else
  (void)block;
  (void)bytes;
#endif
}

}  // namespace

// All bits zero is weight 0, count 0 and distance 0.0.
ContactMap::ContactMap(int32_t n) : n_(n > 0 ? n : 0) {
  const size_t cells = static_cast<size_t>(n_) * static_cast<size_t>(n_);
  cells_.reset(static_cast<Contact*>(std::calloc(cells > 0 ? cells : 1, sizeof(Contact))));
  if (cells_ == nullptr) AllocationFailed();
  Populate(cells_.get(), cells * sizeof(Contact));
}

ContactMap CalcContacts(const Structure& structure, const Params& params, WorkerPool* workers) {
  const int32_t n = structure.size();
  RequireMemoryForContacts(n);
  ContactMap contacts(n);
  const std::vector<Residue>& residues = structure.residues;
  const bool caOnly = params.FlagCa == 1;
  std::vector<Sphere> spheres;
  if (!caOnly) {
    spheres.reserve(static_cast<size_t>(n));
    for (const Residue& r : residues) spheres.push_back(BoundingSphere(structure.AtomsOf(r), r.natoms));
  }

  // Row i writes cells (i, j) and (j, i) for j > i only: no two rows write the same cell.
  auto rows = [&](int, int first, int last) {
    for (int32_t i = first; i < last; ++i) {
      for (int32_t j = i + 1; j < n; ++j) {
        Contact cell{0, 0, CaDistance2(residues[i], residues[j])};
        if (caOnly) {
          int32_t contact = cell.dist2 < kCaContactDistance2 ? 1 : 0;
          cell.weight = contact;
          cell.count = contact;
        } else if (!Apart(spheres[i], spheres[j])) {
          AtomContacts(structure.AtomsOf(residues[i]), residues[i].natoms,
                       structure.AtomsOf(residues[j]), residues[j].natoms, params.BBWeight, cell);
        }
        contacts.at(i, j) = cell;
        contacts.at(j, i) = cell;
      }
    }
  };
  ForChunks(workers, n, ChunksFor(workers, n), rows);
  return contacts;
}

void ApplySecondaryStructure(const SecondaryStructure& table, std::vector<Residue>& residues,
                             ContactMap& contacts) {
  const int32_t n = static_cast<int32_t>(residues.size());
  for (int32_t i = 0; i < n; ++i) {
    residues[i].ss = table.ss[i];
    residues[i].bridge1 = table.bridge1[i];
    residues[i].bridge2 = table.bridge2[i];
  }
  for (int32_t i = 1; i < n; ++i) {
    if (residues[i - 1].ss == 'E' && residues[i].ss == 'E') SetWeight(contacts, i - 1, i, kStrandWeight);
  }
  // Every pair i < j in which either residue lists the other gets the bridge weight; visiting
  // each residue's own partners reaches exactly those pairs, after the strand weights.
  for (int32_t i = 0; i < n; ++i) {
    for (int32_t partner : {residues[i].bridge1, residues[i].bridge2}) {
      if (partner != kNoPartner && partner != i) SetWeight(contacts, i, partner, kBridgeWeight);
    }
  }
}

}  // namespace quarnel
