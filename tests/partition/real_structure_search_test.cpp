// The search and the recursion on real chains: how many samples a search draws, repeatability,
// domain numbering and the one-cut limit.
#include <gtest/gtest.h>

#include <cstdlib>
#include <map>
#include <vector>

#include "contacts/contacts.h"
#include "partition/multicut.h"
#include "partition/partition.h"
#include "run/options.h"
#include "run/parameters.h"
#include "structure/dssp.h"
#include "structure/pdb_names.h"
#include "structure/protein.h"
#include "support/test_support.h"

namespace {

// Reads a bundled structure and builds its contact matrix, as a run without DSSP does.
void LoadChain(const std::string& file) {
  StartCleanRun();
  TemplateName = DataPath(file);
  GetProtein();
  ContactMatrix = ContactMalloc(ProteinSize, ProteinSize);
  ContactMatrixRows = ProteinSize;
  CalcContacts(Protein.data(), ProteinSize, ContactMatrix);
  SetSecondaryStructureDefaults();
  cut_history.assign(kInitialCutRecords, kEmptyCutRecord);
  DomainNumber = 1;
}

// How many numbers the random sequence has given since it was restarted: the next number is
// looked up in a replay of the sequence from its start.
int DrawsSinceRestart() {
  double next = drand48();
  RestartRandomSequence();
  for (int k = 0; k < 100000; ++k) {
    if (drand48() == next) return k;
  }
  return -1;
}

Contact** LevelMatrix(const Residue* slice, int n) {
  Contact** sub = ContactMalloc(n, n);
  for (int r = 0; r < n; ++r)
    for (int c = 0; c < n; ++c) sub[r][c] = ContactMatrix[slice[r].index][slice[c].index];
  return sub;
}

std::vector<int> DomainsInChainOrder() {
  std::vector<int> domains(ProteinSize);
  for (const Residue& r : Protein) domains[r.index] = r.domain;
  return domains;
}

}  // namespace

// All random numbers of a search are drawn while its samples are listed: 19 sources and 19
// sinks around the farthest pair, one pair of draws for each sample after the first across the
// anchor axis, and 19 + 19 around the farthest pair across the sequence split. With the default
// 20 samples per group that is at most 114 draws, i.e. at most 60 samples.
TEST(RealStructureSearch, ADefaultSearchDrawsAtMostSixtySamples) {
  for (const char* file : {"2efj.pdb", "1rmd.pdb", "2yex.pdb"}) {
    LoadChain(file);
    std::qsort(Protein.data(), ProteinSize, sizeof(Residue), compare3);
    Contact** sub = LevelMatrix(Protein.data(), ProteinSize);
    int split = 0;
    CutScores scores;
    RestartRandomSequence();
    MultiCut(Protein.data(), sub, ProteinSize, &split, &scores);
    FreeContacts(sub, ProteinSize);

    int draws = DrawsSinceRestart();
    ASSERT_GE(draws, 38) << file;
    // Group 1 always draws 38; group 2 draws an even number; group 3 draws 38 or nothing.
    EXPECT_EQ(draws % 2, 0) << file;
    EXPECT_LE(draws, 114) << file;
  }
}

TEST(RealStructureSearch, TheSameChainIsPartitionedTheSameWayTwice) {
  LoadChain("2efj.pdb");
  DomainParition(Protein.data(), ProteinSize);
  std::vector<int> first = DomainsInChainOrder();
  std::vector<CutRecord> firstCuts(cut_history.begin(), cut_history.begin() + (DomainNumber - 1));
  int firstCount = DomainNumber;

  LoadChain("2efj.pdb");
  DomainParition(Protein.data(), ProteinSize);
  EXPECT_EQ(DomainNumber, firstCount);
  EXPECT_EQ(DomainsInChainOrder(), first);
  for (int k = 0; k < firstCount - 1; ++k) {
    EXPECT_EQ(cut_history[k].parent, firstCuts[k].parent);
    EXPECT_EQ(cut_history[k].interface, firstCuts[k].interface);
    EXPECT_EQ(cut_history[k].newCompact, firstCuts[k].newCompact);
  }
}

// Domains are numbered in the order their cuts are made, each record naming the domain that was
// divided; every number from 0 to DomainNumber - 1 is used.
TEST(RealStructureSearch, DomainsAreNumberedInTheOrderOfTheirCuts) {
  LoadChain("2efj.pdb");
  MaxNumDom = 3;  // relaxed, so that the chain is cut twice
  ApplyRelaxedMode();
  DomainParition(Protein.data(), ProteinSize);
  ASSERT_EQ(DomainNumber, 3);

  std::map<int, int> sizes;
  for (const Residue& r : Protein) ++sizes[r.domain];
  EXPECT_EQ(sizes.size(), 3u);
  for (int d = 0; d < 3; ++d) EXPECT_GT(sizes[d], 0) << d;

  EXPECT_EQ(cut_history[0].newDomain, 1);
  EXPECT_EQ(cut_history[0].parent, 0);
  EXPECT_EQ(cut_history[1].newDomain, 2);
  // The second cut divided whichever side of the first cut was searched first: the larger.
  EXPECT_TRUE(cut_history[1].parent == 0 || cut_history[1].parent == 1);
  int secondParent = cut_history[1].parent;
  int otherFirstSide = secondParent == 0 ? 1 : 0;
  EXPECT_GE(sizes[secondParent] + sizes[2], sizes[otherFirstSide]);
  // A residue carries the scores of the cut that made its domain.
  for (const Residue& r : Protein) {
    if (r.domain == 2) {
      EXPECT_EQ(r.cutscore[0], cut_history[1].newCompact);
      EXPECT_EQ(r.cutscore[2], cut_history[1].interface);
    }
  }
}

TEST(RealStructureSearch, AtMostTwoDomainsMakesExactlyOneCut) {
  LoadChain("2efj.pdb");
  MaxNumDom = 2;
  ApplyRelaxedMode();
  DomainParition(Protein.data(), ProteinSize);
  EXPECT_EQ(DomainNumber, 2);
  EXPECT_EQ(cut_history[1].newDomain, kEmptyCutRecord.newDomain);
}
