// The residue contact matrix: weighted and raw atom contacts within 4 A and squared CA distances,
// for every pair of residues.
#include "contacts/contacts.h"

#include <cmath>
#include <cstdlib>
#include <limits>
#include <vector>

#include "run/fatal.h"
#include "run/parameters.h"
#include "run/textio.h"
#include "structure/protein.h"

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

constexpr double kSphereMargin = 1.0;            // A, on top of the 4 A contact distance
constexpr double kContactDistance = 4.0;
constexpr double kLargestPrunedCoordinate = 1.0e6;

bool SaneCoordinate(double value) {
  return std::isfinite(value) && std::fabs(value) < kLargestPrunedCoordinate;
}

Sphere BoundingSphere(const Residue& residue) {
  Sphere sphere;
  if (residue.natoms <= 0) return sphere;
  for (int a = 0; a < residue.natoms; ++a) {
    const Atom& atom = residue.atoms[a];
    if (!SaneCoordinate(atom.x) || !SaneCoordinate(atom.y) || !SaneCoordinate(atom.z)) return sphere;
    sphere.x += atom.x;
    sphere.y += atom.y;
    sphere.z += atom.z;
  }
  sphere.x /= residue.natoms;
  sphere.y /= residue.natoms;
  sphere.z /= residue.natoms;
  double radius2 = 0.0;
  for (int a = 0; a < residue.natoms; ++a) {
    const Atom& atom = residue.atoms[a];
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
void AtomContacts(const Residue& a, const Residue& b, int32_t& weight, int32_t& count) {
  weight = 0;
  count = 0;
  for (int i = 0; i < a.natoms; ++i) {
    const Atom& p = a.atoms[i];
    for (int j = 0; j < b.natoms; ++j) {
      const Atom& q = b.atoms[j];
      // Written as "at most 4 A": a malformed coordinate (NaN) then makes no contact.
      if (!(Distance2(p.x, p.y, p.z, q.x, q.y, q.z) <= kContactDistance2)) continue;
      AddOne(count);
      if (p.backbone == 1 && q.backbone == 1)
        weight = TruncToInt(static_cast<float>(weight) + BBWeight);
      else
        AddOne(weight);
    }
  }
}

void SetPair(Contact** matrix, int i, int j, const Contact& cell) {
  matrix[i][j] = cell;
  matrix[j][i] = cell;
}

}  // namespace

Contact** ContactMalloc(int rows, int cols) {
  size_t rowCount = rows > 0 ? static_cast<size_t>(rows) : 0;
  size_t rowBytes = (cols > 0 ? static_cast<size_t>(cols) : 0) * sizeof(Contact);
  // At least one byte each, so that an empty matrix or row is never mistaken for a failure.
  Contact** matrix = static_cast<Contact**>(std::malloc(rowCount > 0 ? rowCount * sizeof(Contact*) : 1));
  if (matrix == nullptr) AllocationFailed();
  for (size_t i = 0; i < rowCount; ++i) {
    matrix[i] = static_cast<Contact*>(std::malloc(rowBytes > 0 ? rowBytes : 1));
    if (matrix[i] == nullptr) {
      // Every later step needs every row: the run cannot go on without one.
      FreeContacts(matrix, static_cast<int>(i));
      AllocationFailed();
    }
  }
  return matrix;
}

void FreeContacts(Contact** matrix, int rows) {
  if (matrix == nullptr) return;
  for (int i = 0; i < rows; ++i) std::free(matrix[i]);
  std::free(matrix);
}

// Protein is in file order when the matrix is built, so array position and index agree.
void CalcContacts(const Residue* residues, int n, Contact** matrix) {
  bool caOnly = FlagCa == 1;
  std::vector<Sphere> spheres;
  if (!caOnly) {
    spheres.reserve(static_cast<size_t>(n > 0 ? n : 0));
    for (int i = 0; i < n; ++i) spheres.push_back(BoundingSphere(residues[i]));
  }

  for (int i = 0; i < n; ++i) {
    for (int j = i + 1; j < n; ++j) {
      Contact cell{0, 0, CaDistance2(residues[i], residues[j])};
      if (caOnly) {
        int32_t contact = cell.dist2 < kCaContactDistance2 ? 1 : 0;
        cell.weight = contact;
        cell.count = contact;
      } else if (!Apart(spheres[i], spheres[j])) {
        AtomContacts(residues[i], residues[j], cell.weight, cell.count);
      }
      SetPair(matrix, i, j, cell);
    }
  }
  for (int i = 0; i < n; ++i) matrix[i][i] = Contact{0, 0, 0.0f};
}
