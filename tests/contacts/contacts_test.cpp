// The contact matrix: contact distances at their limits, backbone weights, missing CA atoms,
// and a real structure compared against a plain all-atom comparison.
#include <gtest/gtest.h>

#include <climits>
#include <cstdio>
#include <string>
#include <vector>

#include "contacts/contacts.h"
#include "run/fatal.h"
#include "run/parameters.h"
#include "structure/pdb_names.h"
#include "structure/protein.h"
#include "support/test_support.h"

namespace {

Atom MakeAtom(const char* name, double x, double y, double z) {
  Atom atom{};
  std::snprintf(atom.name, sizeof(atom.name), "%s", name);
  std::string text = name;
  atom.backbone = text == "N  " || text == "CA " || text == "C  " || text == "O  " ? 1 : 0;
  atom.x = x;
  atom.y = y;
  atom.z = z;
  return atom;
}

// Residues built by hand; each holds its atoms in its own vector, which outlives the test body.
struct HandMadeChain {
  std::vector<std::vector<Atom>> atoms;
  std::vector<Residue> residues;

  void Add(const std::vector<Atom>& residueAtoms) { atoms.push_back(residueAtoms); }

  // Sets CA from the atom named "CA " when there is one, as the reader does.
  const Residue* Build() {
    residues.clear();
    for (size_t i = 0; i < atoms.size(); ++i) {
      Residue residue{};
      residue.index = static_cast<int32_t>(i);
      residue.natoms = static_cast<int32_t>(atoms[i].size());
      residue.atoms = atoms[i].data();
      residue.ca[0] = residue.ca[1] = residue.ca[2] = kNoCoordinate;
      for (const Atom& atom : atoms[i]) {
        if (std::string(atom.name) == "CA ") {
          residue.ca[0] = atom.x;
          residue.ca[1] = atom.y;
          residue.ca[2] = atom.z;
        }
      }
      residues.push_back(residue);
    }
    return residues.data();
  }
};

// Builds the matrix of the chain in ContactMatrix, released by the next StartCleanRun.
void Calculate(HandMadeChain& chain) {
  const Residue* residues = chain.Build();
  int n = static_cast<int>(chain.residues.size());
  ContactMatrix = ContactMalloc(n, n);
  ContactMatrixRows = n;
  CalcContacts(residues, n, ContactMatrix);
}

TEST(CalcContacts, FourAngstromIsAContact) {
  StartCleanRun();
  HandMadeChain chain;
  chain.Add({MakeAtom("CB ", 0.0, 0.0, 0.0)});
  chain.Add({MakeAtom("CB ", 4.0, 0.0, 0.0)});
  chain.Add({MakeAtom("CB ", 0.0, 0.0, 4.001)});
  chain.Add({MakeAtom("CB ", 0.0, -4.0000001, 0.0)});
  Calculate(chain);
  EXPECT_EQ(ContactMatrix[0][1].count, 1);
  EXPECT_EQ(ContactMatrix[0][1].weight, 1);
  EXPECT_EQ(ContactMatrix[0][2].count, 0);
  EXPECT_EQ(ContactMatrix[1][2].count, 0);
  // 4.0000001 A in double, but the difference rounded to single precision is 4.0: a contact.
  EXPECT_EQ(ContactMatrix[0][3].count, 1);
  EXPECT_EQ(ContactMatrix[3][0].count, 1);
  // No CA anywhere: every distance is the marker.
  EXPECT_EQ(ContactMatrix[0][1].dist2, kNoCaDistance2);
}

TEST(CalcContacts, CaOnlyModeCutsAtElevenAngstrom) {
  StartCleanRun();
  FlagCa = 1;
  HandMadeChain chain;
  chain.Add({MakeAtom("CA ", 0.0, 0.0, 0.0)});
  chain.Add({MakeAtom("CA ", 11.0, 0.0, 0.0)});
  chain.Add({MakeAtom("CA ", 0.0, 10.99, 0.0)});
  chain.Add({MakeAtom("CB ", 0.0, 0.0, 1.0)});  // no CA: no contacts, whatever its atoms
  Calculate(chain);
  EXPECT_EQ(ContactMatrix[0][1].dist2, 121.0f);
  EXPECT_EQ(ContactMatrix[0][1].weight, 0);
  EXPECT_EQ(ContactMatrix[0][1].count, 0);
  EXPECT_EQ(ContactMatrix[0][2].weight, 1);
  EXPECT_EQ(ContactMatrix[0][2].count, 1);
  EXPECT_EQ(ContactMatrix[0][3].dist2, kNoCaDistance2);
  EXPECT_EQ(ContactMatrix[0][3].weight, 0);
  EXPECT_EQ(ContactMatrix[3][0].count, 0);
}

// Two residues with two backbone-backbone contacts and one side-chain contact.
HandMadeChain BackboneContacts() {
  HandMadeChain chain;
  chain.Add({MakeAtom("N  ", 0.0, 0.0, 0.0), MakeAtom("CA ", 0.0, 1.5, 0.0),
             MakeAtom("CB ", 0.0, 1.5, 1.5)});
  chain.Add({MakeAtom("O  ", 3.0, 0.0, 0.0), MakeAtom("C  ", 0.0, 20.0, 0.0)});
  return chain;
}

TEST(CalcContacts, BackboneWeightIsTruncatedAtEveryAddition) {
  struct Case {
    float bbWeight;
    int weight;
  };
  // N-O and CA-O are backbone pairs, CB-O is not: 3 contacts in all.
  for (Case c : {Case{5.0f, 11}, Case{2.5f, 5}, Case{0.5f, 1}}) {
    StartCleanRun();
    BBWeight = c.bbWeight;
    HandMadeChain chain = BackboneContacts();
    Calculate(chain);
    EXPECT_EQ(ContactMatrix[0][1].count, 3) << c.bbWeight;
    EXPECT_EQ(ContactMatrix[0][1].weight, c.weight) << c.bbWeight;
    EXPECT_EQ(ContactMatrix[1][0].weight, c.weight) << c.bbWeight;
  }
}

TEST(CalcContacts, MissingCaKeepsAtomContacts) {
  StartCleanRun();
  HandMadeChain chain = BackboneContacts();
  chain.atoms[0][1] = MakeAtom("CG ", 0.0, 1.5, 0.0);
  Calculate(chain);
  EXPECT_EQ(ContactMatrix[0][1].dist2, kNoCaDistance2);
  EXPECT_EQ(ContactMatrix[0][1].count, 3);
  EXPECT_EQ(ContactMatrix[0][1].weight, 5 + 1 + 1);
}

TEST(CalcContacts, SingleResidueMatrixIsZero) {
  StartCleanRun();
  HandMadeChain chain;
  chain.Add({MakeAtom("CA ", 1.0, 2.0, 3.0), MakeAtom("CB ", 1.0, 2.0, 4.0)});
  Calculate(chain);
  EXPECT_EQ(ContactMatrix[0][0].weight, 0);
  EXPECT_EQ(ContactMatrix[0][0].count, 0);
  EXPECT_EQ(ContactMatrix[0][0].dist2, 0.0f);
}

// The straightforward form: every atom pair of every residue pair, with the distance rounded as
// the contact model rounds it.
Contact PlainContact(const Residue& a, const Residue& b) {
  Contact cell{0, 0, kNoCaDistance2};
  if (a.ca[0] <= 998.9 && b.ca[0] <= 998.9) {
    float dx = static_cast<float>(a.ca[0] - b.ca[0]);
    float dy = static_cast<float>(a.ca[1] - b.ca[1]);
    float dz = static_cast<float>(a.ca[2] - b.ca[2]);
    cell.dist2 = dx * dx + dy * dy + dz * dz;
  }
  for (int i = 0; i < a.natoms; ++i) {
    for (int j = 0; j < b.natoms; ++j) {
      float dx = static_cast<float>(a.atoms[i].x - b.atoms[j].x);
      float dy = static_cast<float>(a.atoms[i].y - b.atoms[j].y);
      float dz = static_cast<float>(a.atoms[i].z - b.atoms[j].z);
      if (dx * dx + dy * dy + dz * dz <= 16.0f) {
        ++cell.count;
        if (a.atoms[i].backbone == 1 && b.atoms[j].backbone == 1)
          cell.weight = static_cast<int>(static_cast<float>(cell.weight) + BBWeight);
        else
          ++cell.weight;
      }
    }
  }
  return cell;
}

// Residue pairs far apart may be passed over without comparing their atoms; the cells must be
// exactly those of the full comparison. 2efj has alternate locations, so some residues hold
// two sets of side-chain atoms.
TEST(CalcContacts, RealStructureMatchesFullComparison) {
  for (float bbWeight : {5.0f, 2.5f}) {
    StartCleanRun();
    BBWeight = bbWeight;
    TemplateName = DataPath("2efj.pdb");
    GetProtein();
    ASSERT_EQ(ProteinSize, 348);
    ContactMatrix = ContactMalloc(ProteinSize, ProteinSize);
    ContactMatrixRows = ProteinSize;
    CalcContacts(Protein.data(), ProteinSize, ContactMatrix);

    int contactPairs = 0;
    for (int i = 0; i < ProteinSize; ++i) {
      EXPECT_EQ(ContactMatrix[i][i].weight, 0);
      EXPECT_EQ(ContactMatrix[i][i].count, 0);
      EXPECT_EQ(ContactMatrix[i][i].dist2, 0.0f);
      for (int j = i + 1; j < ProteinSize; ++j) {
        Contact expected = PlainContact(Protein[i], Protein[j]);
        for (const Contact& cell : {ContactMatrix[i][j], ContactMatrix[j][i]}) {
          ASSERT_EQ(cell.weight, expected.weight) << i << "," << j;
          ASSERT_EQ(cell.count, expected.count) << i << "," << j;
          ASSERT_EQ(cell.dist2, expected.dist2) << i << "," << j;
        }
        if (expected.count > 0) ++contactPairs;
      }
    }
    // Neighbours along the chain and the packing of the fold: far more than the chain's links.
    EXPECT_GT(contactPairs, 3 * ProteinSize);
  }
}

TEST(ContactMalloc, ShapeAndRelease) {
  StartCleanRun();
  Contact** matrix = ContactMalloc(3, 5);
  for (int i = 0; i < 3; ++i) {
    for (int j = 0; j < 5; ++j) matrix[i][j] = Contact{i, j, 1.0f};
  }
  EXPECT_EQ(matrix[2][4].weight, 2);
  EXPECT_EQ(matrix[2][4].count, 4);
  FreeContacts(matrix, 3);
  FreeContacts(ContactMalloc(0, 0), 0);
}

// A row the system refuses ends the run. Whether a 25 GB row is refused depends on the machine
// (and a sanitizer's allocator would stop the process itself), so the test steps aside when the
// row is granted.
TEST(ContactMalloc, RowThatCannotBeAllocated) {
#if defined(__SANITIZE_ADDRESS__)
  GTEST_SKIP() << "the sanitizer's allocator does not return null";
#else
  StartCleanRun();
  Contact** matrix = nullptr;
  try {
    matrix = ContactMalloc(1, INT_MAX);
  } catch (const FatalError& error) {
    EXPECT_EQ(error.status, 50);
    EXPECT_EQ(error.stream, Stream::kStdout);
    EXPECT_EQ(error.text, "Allocation failed.\n");
    return;
  }
  FreeContacts(matrix, 1);
  GTEST_SKIP() << "the system granted a row of INT_MAX cells";
#endif
}

}  // namespace
