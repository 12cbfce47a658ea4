// The residue-by-residue contact map: weighted and raw atom contacts within 4 A and squared CA
// distances, for every pair of residues, indexed by Residue::index.
#pragma once

#include <cstdint>
#include <cstdlib>
#include <memory>
#include <vector>

#include "base/params.h"
#include "base/workers.h"
#include "structure/dssp_reader.h"
#include "structure/protein.h"

namespace quarnel {

struct Contact {
  int32_t weight;  // weighted atom contacts (or the fixed strand and bridge weights)
  int32_t count;   // unweighted atom contacts
  float dist2;     // squared CA distance, kNoCaDistance2 when a CA is missing
};

constexpr float kNoCaDistance2 = 9999.0f;
constexpr float kContactDistance2 = 16.0f;     // 4 Angstrom, inclusive
constexpr float kCaContactDistance2 = 121.0f;  // 11 Angstrom, exclusive
constexpr int32_t kStrandWeight = 1000;
constexpr int32_t kBridgeWeight = 12;

// A square matrix held in one block, row after row, every cell zero to begin with. The block
// comes zeroed from the system, so a large map costs no pass to clear it.
class ContactMap {
 public:
  ContactMap() = default;
  explicit ContactMap(int32_t n);

  int32_t size() const { return n_; }
  Contact& at(int32_t i, int32_t j) { return cells_[Offset(i, j)]; }
  const Contact& at(int32_t i, int32_t j) const { return cells_[Offset(i, j)]; }
  const Contact* row(int32_t i) const { return cells_.get() + Offset(i, 0); }

 private:
  struct Release {
    void operator()(Contact* cells) const { std::free(cells); }
  };
  size_t Offset(int32_t i, int32_t j) const {
    return static_cast<size_t>(i) * static_cast<size_t>(n_) + static_cast<size_t>(j);
  }
  int32_t n_ = 0;
  std::unique_ptr<Contact[], Release> cells_;
};

// The contact map of the residues (in file order), its rows shared among the pool's threads
// when there is a pool. A chain whose map cannot fit in this machine's memory fails with the
// allocation failure, before any allocation is tried.
ContactMap CalcContacts(const Structure& structure, const Params& params,
                        WorkerPool* workers = nullptr);

// Stores the table's letters and partners in the residues (in file order) and gives strand
// neighbours and bridge partners their fixed weights.
void ApplySecondaryStructure(const SecondaryStructure& table, std::vector<Residue>& residues,
                             ContactMap& contacts);

}  // namespace quarnel
