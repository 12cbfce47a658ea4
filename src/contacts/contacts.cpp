// The residue contact map, and the fixed weights that secondary structure gives it.
#include "contacts/contacts.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "base/text.h"

namespace quarnel {

namespace {

float CaDistance2(const Residue& a, const Residue& b) { return quarnel::CaDistance2(a.ca, b.ca); }

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

}  // namespace

ContactMap::ContactMap(int32_t n)
    : ca_(static_cast<size_t>(n > 0 ? n : 0), CaPoint{{kNoCoordinate, kNoCoordinate, kNoCoordinate}}),
      first_(ca_.size() + 1, 0) {}

// Taking the pairs in order appends each row's partners in ascending order: those below the row
// come from earlier pairs, those above it from the row's own.
ContactMap::ContactMap(const std::vector<Residue>& residues, const std::vector<ContactPair>& pairs) {
  const size_t n = residues.size();
  ca_.resize(n);
  for (size_t r = 0; r < n; ++r) ca_[r] = CaPoint{{residues[r].ca[0], residues[r].ca[1], residues[r].ca[2]}};
  first_.assign(n + 1, 0);
  for (const ContactPair& pair : pairs) {
    ++first_[static_cast<size_t>(pair.i) + 1];
    ++first_[static_cast<size_t>(pair.j) + 1];
  }
  for (size_t r = 0; r < n; ++r) first_[r + 1] += first_[r];
  entries_.resize(first_[n]);
  std::vector<size_t> next(first_.begin(), first_.end() - 1);
  for (const ContactPair& pair : pairs) {
    entries_[next[pair.i]++] = ContactEntry{pair.j, pair.weight, pair.count};
    entries_[next[pair.j]++] = ContactEntry{pair.i, pair.weight, pair.count};
  }
}

size_t ContactMap::Find(int32_t i, int32_t j) const {
  const ContactEntry* found = std::lower_bound(
      begin(i), end(i), j, [](const ContactEntry& e, int32_t partner) { return e.partner < partner; });
  return static_cast<size_t>(found - entries_.data());
}

Contact ContactMap::at(int32_t i, int32_t j) const {
  Contact cell{0, 0, dist2(i, j)};
  const size_t at = Find(i, j);
  if (at < first_[i + 1] && entries_[at].partner == j) {
    cell.weight = entries_[at].weight;
    cell.count = entries_[at].count;
  }
  return cell;
}

ContactEntry& ContactMap::Slot(int32_t i, int32_t j) {
  const size_t at = Find(i, j);
  if (at < first_[i + 1] && entries_[at].partner == j) return entries_[at];
  entries_.insert(entries_.begin() + static_cast<std::ptrdiff_t>(at), ContactEntry{j, 0, 0});
  for (size_t r = static_cast<size_t>(i) + 1; r < first_.size(); ++r) ++first_[r];
  return entries_[at];
}

void ContactMap::SetWeight(int32_t i, int32_t j, int32_t weight) {
  Slot(i, j).weight = weight;
  Slot(j, i).weight = weight;
}

void ContactMap::SetContact(int32_t i, int32_t j, int32_t weight, int32_t count) {
  Slot(i, j) = ContactEntry{j, weight, count};
  Slot(j, i) = ContactEntry{i, weight, count};
}

ContactMap CalcContacts(const Structure& structure, const Params& params, WorkerPool* workers) {
  const int32_t n = structure.size();
  const std::vector<Residue>& residues = structure.residues;
  const bool caOnly = params.FlagCa == 1;
  std::vector<Sphere> spheres;
  if (!caOnly) {
    spheres.reserve(static_cast<size_t>(n));
    for (const Residue& r : residues) spheres.push_back(BoundingSphere(structure.AtomsOf(r), r.natoms));
  }

  // Row i lists its pairs (i, j), j > i, with any contact; the rows joined in order are sorted.
  const std::vector<ContactPair> pairs = CollectRows<ContactPair>(workers, n, [&](int i, std::vector<ContactPair>& row) {
    for (int32_t j = i + 1; j < n; ++j) {
      Contact cell{0, 0, 0.0f};
      if (caOnly) {
        int32_t contact = CaDistance2(residues[i], residues[j]) < kCaContactDistance2 ? 1 : 0;
        cell.weight = contact;
        cell.count = contact;
      } else if (!Apart(spheres[i], spheres[j])) {
        AtomContacts(structure.AtomsOf(residues[i]), residues[i].natoms,
                     structure.AtomsOf(residues[j]), residues[j].natoms, params.BBWeight, cell);
      }
      if (cell.weight != 0 || cell.count != 0) row.push_back(ContactPair{i, j, cell.weight, cell.count});
    }
  });
  return ContactMap(residues, pairs);
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
    if (residues[i - 1].ss == 'E' && residues[i].ss == 'E') contacts.SetWeight(i - 1, i, kStrandWeight);
  }
  // Every pair i < j in which either residue lists the other gets the bridge weight; visiting
  // each residue's own partners reaches exactly those pairs, after the strand weights.
  for (int32_t i = 0; i < n; ++i) {
    for (int32_t partner : {residues[i].bridge1, residues[i].bridge2}) {
      if (partner != kNoPartner && partner != i) contacts.SetWeight(i, partner, kBridgeWeight);
    }
  }
}

}  // namespace quarnel
