// The residue-by-residue contact map: weighted and raw atom contacts within 4 A and squared CA
// distances, for every pair of residues, indexed by Residue::index.
#pragma once

#include <cstdint>
#include <vector>

#include "base/params.h"
#include "base/workers.h"
#include "secondary/dssp_table.h"
#include "structure/protein.h"

namespace quarnel {

// One pair of residues as the map gives it.
struct Contact {
  int32_t weight;  // weighted atom contacts (or the fixed strand and bridge weights)
  int32_t count;   // unweighted atom contacts
  float dist2;     // squared CA distance, kNoCaDistance2 when a CA is missing
};

// One residue's contact with another, which is its partner.
struct ContactEntry {
  int32_t partner;
  int32_t weight;
  int32_t count;
};

// A pair i < j with any contact or a fixed weight.
struct ContactPair {
  int32_t i, j;
  int32_t weight, count;
};

constexpr float kNoCaDistance2 = 9999.0f;
constexpr float kContactDistance2 = 16.0f;     // 4 Angstrom, inclusive
constexpr float kCaContactDistance2 = 121.0f;  // 11 Angstrom, exclusive
constexpr int32_t kStrandWeight = 1000;
constexpr int32_t kBridgeWeight = 12;

// Squared distance the way every contact test takes it: each difference in double, rounded to
// single precision, then squared and summed in single precision.
inline float Distance2(double x1, double y1, double z1, double x2, double y2, double z2) {
  float dx = static_cast<float>(x1 - x2);
  float dy = static_cast<float>(y1 - y2);
  float dz = static_cast<float>(z1 - z2);
  return dx * dx + dy * dy + dz * dz;
}

struct CaPoint {
  double xyz[3];
};

// The reader leaves 999.9 in a CA coordinate that was never read.
constexpr double kMissingCaX = 998.9;

// The squared CA distance of two residues as the map holds it: kNoCaDistance2 when either has
// no CA.
inline float CaDistance2(const double* a, const double* b) {
  if (a[0] > kMissingCaX || b[0] > kMissingCaX) return kNoCaDistance2;
  return Distance2(a[0], a[1], a[2], b[0], b[1], b[2]);
}

// The contacts of every residue pair, indexed by Residue::index. A residue touches a few dozen
// others, so only the pairs with a contact (or a fixed weight) are kept, each residue's in
// partner order; every other pair has weight and count 0. CA distances are taken from the CAs
// when asked for. A dense matrix would cost n x n cells whose pages, each first touched at a
// fault, took a tenth of a large chain's run.
class ContactMap {
 public:
  ContactMap() = default;
  // n residues without CAs or contacts.
  explicit ContactMap(int32_t n);
  // The residues' CAs, in index order, and their pairs sorted by i then j.
  ContactMap(const std::vector<Residue>& residues, const std::vector<ContactPair>& pairs);

  int32_t size() const { return static_cast<int32_t>(ca_.size()); }
  // 0 from a residue to itself.
  float dist2(int32_t i, int32_t j) const { return i == j ? 0.0f : CaDistance2(ca_[i].xyz, ca_[j].xyz); }
  const CaPoint& ca(int32_t i) const { return ca_[i]; }
  Contact at(int32_t i, int32_t j) const;
  const ContactEntry* begin(int32_t i) const { return entries_.data() + first_[i]; }
  const ContactEntry* end(int32_t i) const { return entries_.data() + first_[i + 1]; }

  // Both ways; a pair without contacts is added with count 0.
  void SetWeight(int32_t i, int32_t j, int32_t weight);
  void SetContact(int32_t i, int32_t j, int32_t weight, int32_t count);

 private:
  // Where partner j is, or would go, in row i.
  size_t Find(int32_t i, int32_t j) const;
  ContactEntry& Slot(int32_t i, int32_t j);

  std::vector<CaPoint> ca_;
  std::vector<size_t> first_{0};  // row i is entries_[first_[i] .. first_[i + 1])
  std::vector<ContactEntry> entries_;
};

// The contact map of the residues (in file order), its rows shared among the pool's threads
// when there is a pool.
ContactMap CalcContacts(const Structure& structure, const Params& params,
                        WorkerPool* workers = nullptr);

// Stores the table's letters and partners in the residues (in file order) and gives strand
// neighbours and bridge partners their fixed weights.
void ApplySecondaryStructure(const SecondaryStructure& table, std::vector<Residue>& residues,
                             ContactMap& contacts);

}  // namespace quarnel
