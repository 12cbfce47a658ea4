// Regression: a huge backbone weight (-bw 1e9) saturated a contact weight at the largest int32,
// and the next side-chain contact of the same pair added 1 to it: a signed overflow, which in
// practice wrapped the weight to a large negative value and turned the flow network upside down.
#include <gtest/gtest.h>

#include <cstdint>
#include <limits>
#include <vector>

#include "contacts/contacts.h"
#include "run/parameters.h"
#include "structure/protein.h"
#include "support/test_support.h"

namespace {

constexpr int32_t kLargest = std::numeric_limits<int32_t>::max();

Atom At(int32_t backbone, double x) {
  Atom atom{};
  atom.backbone = backbone;
  atom.x = x;
  return atom;
}

Residue Holding(std::vector<Atom>& atoms, int32_t index) {
  Residue residue{};
  residue.index = index;
  residue.natoms = static_cast<int32_t>(atoms.size());
  residue.atoms = atoms.data();
  residue.ca[0] = residue.ca[1] = residue.ca[2] = kNoCoordinate;
  return residue;
}

// Residue 0: three backbone atoms, then a side-chain atom; residue 1: one backbone atom 1 A
// away. In stored order the backbone pairs saturate the weight, the side-chain pair follows.
TEST(ContactWeight, SaturatedByAHugeBackboneWeightStaysAtTheLargestValue) {
  for (float weight : {1.0e9f, 3.0e9f, std::numeric_limits<float>::infinity()}) {
    SCOPED_TRACE(weight);
    StartCleanRun();
    BBWeight = weight;
    std::vector<Atom> first = {At(1, 0.0), At(1, 0.1), At(1, 0.2), At(0, 0.5)};
    std::vector<Atom> second = {At(1, 1.0)};
    std::vector<Residue> residues = {Holding(first, 0), Holding(second, 1)};
    Contact** matrix = ContactMalloc(2, 2);
    CalcContacts(residues.data(), 2, matrix);
    EXPECT_EQ(matrix[0][1].weight, kLargest);
    EXPECT_EQ(matrix[1][0].weight, kLargest);
    EXPECT_EQ(matrix[0][1].count, 4);
    FreeContacts(matrix, 2);
  }
}

// With an ordinary weight the sums are exact.
TEST(ContactWeight, OrdinaryWeightsAreUnchanged) {
  StartCleanRun();
  std::vector<Atom> first = {At(1, 0.0), At(0, 0.5), At(0, 0.6)};
  std::vector<Atom> second = {At(1, 1.0), At(0, 1.5)};
  std::vector<Residue> residues = {Holding(first, 0), Holding(second, 1)};
  Contact** matrix = ContactMalloc(2, 2);
  CalcContacts(residues.data(), 2, matrix);
  EXPECT_EQ(matrix[0][1].weight, 5 + 5 * 1);  // one backbone pair, five other pairs
  EXPECT_EQ(matrix[0][1].count, 6);
  FreeContacts(matrix, 2);
}

}  // namespace
