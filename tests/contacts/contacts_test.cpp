// The contact map at its distance bounds, the backbone weight's truncation, and the fixed
// weights of strand neighbours and bridge partners.
#include <gtest/gtest.h>

#include <cstdio>

#include "contacts/contacts.h"

namespace quarnel {
namespace {

Atom MakeAtom(int32_t backbone, const char* name, const double* xyz) {
  Atom atom{};
  atom.backbone = backbone;
  std::snprintf(atom.name, sizeof atom.name, "%s", name);
  atom.x = xyz[0];
  atom.y = xyz[1];
  atom.z = xyz[2];
  return atom;
}

// Five residues of a CA and a CB each (residue 4 has no CA): CA 0-1 and CB 0-1 exactly 4 A
// apart, CA 0-2 exactly 11 A, CA 0-3 just under 11 A, CB 0-4 exactly 4 A.
Structure Probe() {
  const double ca[5][3] = {{0, 0, 0}, {4, 0, 0}, {11, 0, 0}, {0, 10.999, 0}, {999.9, 999.9, 999.9}};
  const double cb[5][3] = {{0, 0, -10}, {0, 0, -14}, {30, 0, 0}, {0, 30, 0}, {0, 0, -6}};
  Structure s;
  for (int r = 0; r < 5; ++r) {
    Residue residue{};
    residue.index = r;
    residue.firstAtom = static_cast<int32_t>(s.atoms.size());
    for (int k = 0; k < 3; ++k) residue.ca[k] = ca[r][k];
    if (r != 4) s.atoms.push_back(MakeAtom(1, "CA ", ca[r]));
    s.atoms.push_back(MakeAtom(0, "CB ", cb[r]));
    residue.natoms = static_cast<int32_t>(s.atoms.size()) - residue.firstAtom;
    s.residues.push_back(residue);
  }
  return s;
}

TEST(ContactMap, DistanceBoundsAndBackboneWeight) {
  struct Row {
    int32_t flagCa;
    float bbWeight;
    int j;  // the cell (0, j)
    int32_t weight, count;
    float dist2;
  };
  const Row rows[] = {
      {0, 5.0f, 1, 6, 2, 16.0f},      // backbone pair counts BBWeight, side chains 1
      {0, 2.5f, 1, 3, 2, 16.0f},      // the fraction is lost at every addition
      {0, 0.5f, 1, 1, 2, 16.0f},      // below 1 a backbone contact adds nothing but its count
      {0, 5.0f, 2, 0, 0, 121.0f},
      {0, 5.0f, 4, 1, 1, 9999.0f},    // no CA: no distance, but its atoms touch
      {1, 5.0f, 1, 1, 1, 16.0f},      // CA-only: one contact closer than 11 A
      {1, 5.0f, 2, 0, 0, 121.0f},     // exactly 11 A is none
      {1, 5.0f, 3, 1, 1, 120.978f},
      {1, 5.0f, 4, 0, 0, 9999.0f},
  };
  const Structure probe = Probe();
  for (const Row& row : rows) {
    Params params;
    params.FlagCa = row.flagCa;
    params.BBWeight = row.bbWeight;
    const ContactMap map = CalcContacts(probe, params);
    const Contact cell = map.at(0, row.j);
    const Contact mirror = map.at(row.j, 0);
    SCOPED_TRACE(testing::Message() << "-ca " << row.flagCa << " -bw " << row.bbWeight << " j " << row.j);
    EXPECT_EQ(cell.weight, row.weight);
    EXPECT_EQ(cell.count, row.count);
    EXPECT_FLOAT_EQ(cell.dist2, row.dist2);
    EXPECT_EQ(mirror.weight, cell.weight);
    EXPECT_EQ(mirror.count, cell.count);
    EXPECT_EQ(mirror.dist2, cell.dist2);
    EXPECT_EQ(map.at(row.j, row.j).weight + map.at(row.j, row.j).count, 0);
  }
}

// Strand neighbours get 1000, then bridge partners 12, so a neighbour that is also a partner
// ends at 12. Counts and distances stay.
TEST(ContactMap, StrandAndBridgeWeights) {
  Structure probe = Probe();
  ContactMap map = CalcContacts(probe, Params());
  SecondaryStructure table = DefaultSecondaryStructure(5);
  table.ss = {'E', 'E', 'L', 'E', 'E'};
  table.bridge1[1] = 0;
  table.bridge2[4] = 2;
  ApplySecondaryStructure(table, probe.residues, map);
  EXPECT_EQ(map.at(0, 1).weight, 12);
  EXPECT_EQ(map.at(1, 0).weight, 12);
  EXPECT_EQ(map.at(0, 1).count, 2);
  EXPECT_EQ(map.at(3, 4).weight, 1000);
  EXPECT_EQ(map.at(4, 3).weight, 1000);
  EXPECT_EQ(map.at(2, 4).weight, 12);
  EXPECT_EQ(map.at(4, 2).weight, 12);
  EXPECT_EQ(map.at(1, 2).weight, 0);
  EXPECT_EQ(probe.residues[4].bridge2, 2);
  EXPECT_EQ(probe.residues[3].ss, 'E');
}

}  // namespace
}  // namespace quarnel
