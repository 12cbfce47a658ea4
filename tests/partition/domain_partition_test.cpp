// Recursive bisection on synthetic chains of compact blobs: which slices are searched, domain
// numbering in larger-side-first order, the cut records and the cut scores of the residues.
#include <gtest/gtest.h>

#include <cstdlib>
#include <utility>
#include <vector>

#include "partition/partition.h"
#include "partition_fixtures.h"
#include "run/parameters.h"
#include "support/test_support.h"

using partition_test::Blob;
using partition_test::BlobIntraCount;
using partition_test::BuildBlobChain;
using partition_test::DomainsByIndex;
using partition_test::kBlobAtoms;

namespace {

float Compactness(int intra, int residues) {
  return static_cast<float>(intra) / static_cast<float>(residues * kBlobAtoms);
}

// Three weak contacts between two blobs of one domain, all far apart in sequence.
std::vector<std::pair<int, int>> WeakLinks(int first, int second) {
  return {{first + 5, second + 5}, {first + 10, second + 10}, {first + 20, second + 20}};
}

class DomainPartitionTest : public ::testing::Test {
 protected:
  void SetUp() override { StartCleanRun(); }

  void Partition() { DomainParition(Protein.data(), ProteinSize); }

  // True when nothing has drawn from the random sequence since the clean start.
  static bool RandomSequenceUntouched() {
    double next = drand48();
    RestartRandomSequence();
    return next == drand48();
  }

  static std::vector<int> Domains(const std::vector<std::pair<int, int>>& runs) {
    return partition_test::Runs(runs);
  }

  static void ExpectRecord(const CutRecord& record, int newDomain, int parent,
                           float parentCompact, float newCompact, float parentInter,
                           float newInter, float interface) {
    EXPECT_EQ(record.newDomain, newDomain);
    EXPECT_EQ(record.parent, parent);
    EXPECT_EQ(record.newDomainAgain, newDomain);
    EXPECT_FLOAT_EQ(record.parentCompact, parentCompact);
    EXPECT_FLOAT_EQ(record.newCompact, newCompact);
    EXPECT_FLOAT_EQ(record.parentInter, parentInter);
    EXPECT_FLOAT_EQ(record.newInter, newInter);
    EXPECT_FLOAT_EQ(record.interface, interface);
  }

  static void ExpectEmptyRecords(size_t from) {
    ASSERT_GE(cut_history.size(), static_cast<size_t>(kInitialCutRecords));
    for (size_t k = from; k < cut_history.size(); ++k) {
      ExpectRecord(cut_history[k], 999, 999, 999.0f, 999.0f, 0.0f, 0.0f, 999.0f);
    }
  }
};

TEST_F(DomainPartitionTest, TwoBlobsAreCutOnceAndTheSinkSideBecomesDomainOne) {
  BuildBlobChain({{40, 0.0}, {50, 60.0}});
  Partition();
  EXPECT_EQ(DomainNumber, 2);
  EXPECT_EQ(DomainsByIndex(), Domains({{40, 0}, {50, 1}}));
  float compact40 = Compactness(BlobIntraCount(40), 40);
  float compact50 = Compactness(BlobIntraCount(50), 50);
  ExpectRecord(cut_history[0], 1, 0, compact40, compact50, 0.0f, 0.0f, 0.0f);
  ExpectEmptyRecords(1);
  // The first side (domain 1) comes first; each side is left in chain order.
  for (int i = 0; i < ProteinSize; ++i) {
    const Residue& r = Protein[i];
    EXPECT_EQ(r.index, i < 50 ? 40 + i : i - 50) << "position " << i;
    float compact = r.domain == 1 ? compact50 : compact40;
    EXPECT_FLOAT_EQ(r.cutscore[0], compact) << "index " << r.index;
    EXPECT_FLOAT_EQ(r.cutscore[1], 0.0f);
    EXPECT_FLOAT_EQ(r.cutscore[2], 0.0f);
  }
}

TEST_F(DomainPartitionTest, ChainUnderSeventyResiduesIsNeverSearched) {
  BuildBlobChain({{35, 0.0}, {34, 60.0}});
  Partition();
  EXPECT_EQ(DomainNumber, 1);
  EXPECT_EQ(DomainsByIndex(), std::vector<int>(69, 0));
  for (const Residue& r : Protein) {
    EXPECT_FLOAT_EQ(r.cutscore[0], 999.9f);
    EXPECT_FLOAT_EQ(r.cutscore[1], 0.0f);
  }
  ExpectEmptyRecords(0);
  EXPECT_TRUE(RandomSequenceUntouched());
}

TEST_F(DomainPartitionTest, ChainOfExactlySeventyResiduesIsSearched) {
  BuildBlobChain({{35, 0.0}, {35, 60.0}});
  Partition();
  EXPECT_EQ(DomainNumber, 2);
  EXPECT_EQ(DomainsByIndex(), Domains({{35, 0}, {35, 1}}));
  float compact35 = Compactness(BlobIntraCount(35), 35);
  ExpectRecord(cut_history[0], 1, 0, compact35, compact35, 0.0f, 0.0f, 0.0f);
  EXPECT_FALSE(RandomSequenceUntouched());
}

TEST_F(DomainPartitionTest, NoSearchOnceTheDomainLimitIsReached) {
  BuildBlobChain({{40, 0.0}, {50, 60.0}});
  MaxNumDom = 1;
  Partition();
  EXPECT_EQ(DomainNumber, 1);
  EXPECT_EQ(DomainsByIndex(), std::vector<int>(90, 0));
  EXPECT_TRUE(RandomSequenceUntouched());
}

// W1 (0-39) and W2 (40-79) form one domain held by three weak contacts; Z (80-119) is apart.
void BuildWeaklyJoinedPairAndBlob() {
  BuildBlobChain({{40, 0.0}, {40, 40.0}, {40, 100.0}}, WeakLinks(0, 40));
}

TEST_F(DomainPartitionTest, TwoDomainLimitAllowsExactlyOneCut) {
  BuildWeaklyJoinedPairAndBlob();
  MaxNumDom = 2;
  Partition();
  EXPECT_EQ(DomainNumber, 2);
  EXPECT_EQ(DomainsByIndex(), Domains({{80, 0}, {40, 1}}));
  ExpectEmptyRecords(1);
}

TEST_F(DomainPartitionTest, SourceSideIsCutAgainWithTheNextNumber) {
  BuildWeaklyJoinedPairAndBlob();
  Partition();
  EXPECT_EQ(DomainNumber, 3);
  EXPECT_EQ(DomainsByIndex(), Domains({{40, 0}, {40, 2}, {40, 1}}));
  int blob = BlobIntraCount(40);
  float compactBlob = Compactness(blob, 40);
  float compactPair = Compactness(2 * blob + 3, 80);
  ExpectRecord(cut_history[0], 1, 0, compactPair, compactBlob, 0.0f, 0.0f, 0.0f);
  float inter = 3.0f / static_cast<float>(blob);
  float interface = 3.0f * 640.0f / 320.0f / 320.0f;
  ExpectRecord(cut_history[1], 2, 0, compactBlob, compactBlob, inter, inter, interface);
  ExpectEmptyRecords(2);
  for (const Residue& r : Protein) {
    if (r.domain != 1) continue;
    EXPECT_FLOAT_EQ(r.cutscore[0], compactBlob);
  }
  for (const Residue& r : Protein) {
    if (r.domain == 1) continue;
    // W1 and W2 were last divided by the second cut.
    EXPECT_FLOAT_EQ(r.cutscore[0], compactBlob) << "index " << r.index;
    EXPECT_FLOAT_EQ(r.cutscore[1], inter) << "index " << r.index;
    EXPECT_FLOAT_EQ(r.cutscore[2], interface) << "index " << r.index;
  }
}

TEST_F(DomainPartitionTest, EqualSidesAreSearchedSecondSideFirst) {
  // Cut W (0-79, source side) | Z (80-159, domain 1); equal sides: W is searched first (W2
  // becomes 2), then Z (Z2 becomes 3).
  std::vector<std::pair<int, int>> links = WeakLinks(0, 40);
  for (const auto& link : WeakLinks(80, 120)) links.push_back(link);
  BuildBlobChain({{40, 0.0}, {40, 40.0}, {40, 80.0}, {40, 120.0}}, links);
  Partition();
  EXPECT_EQ(DomainNumber, 4);
  EXPECT_EQ(DomainsByIndex(), Domains({{40, 0}, {40, 2}, {40, 1}, {40, 3}}));
  ExpectRecord(cut_history[2], 3, 1, Compactness(BlobIntraCount(40), 40),
               Compactness(BlobIntraCount(40), 40), 3.0f / BlobIntraCount(40),
               3.0f / BlobIntraCount(40), 3.0f * 640.0f / 320.0f / 320.0f);
}

TEST_F(DomainPartitionTest, LargerFirstSideIsSearchedFirst) {
  // Z (80-169, 90 residues) is the first side and larger: Z2 becomes 2, then W2 becomes 3.
  std::vector<std::pair<int, int>> links = WeakLinks(0, 40);
  for (const auto& link : WeakLinks(80, 125)) links.push_back(link);
  BuildBlobChain({{40, 0.0}, {40, 40.0}, {45, 80.0}, {45, 120.0}}, links);
  Partition();
  EXPECT_EQ(DomainNumber, 4);
  EXPECT_EQ(DomainsByIndex(), Domains({{40, 0}, {40, 3}, {45, 1}, {45, 2}}));
}

TEST_F(DomainPartitionTest, SearchWithoutAcceptableCutChangesNothing) {
  // One blob: every cut through it is rejected.
  BuildBlobChain({{75, 0.0}});
  Partition();
  EXPECT_EQ(DomainNumber, 1);
  EXPECT_EQ(DomainsByIndex(), std::vector<int>(75, 0));
  for (const Residue& r : Protein) EXPECT_FLOAT_EQ(r.cutscore[0], 999.9f);
  ExpectEmptyRecords(0);
  EXPECT_FALSE(RandomSequenceUntouched());
}

TEST_F(DomainPartitionTest, WithoutEvaluationAFailedSearchStillMakesNoCut) {
  BuildBlobChain({{75, 0.0}});
  FlagEva = 0;
  Partition();
  EXPECT_EQ(DomainNumber, 1);
  EXPECT_EQ(DomainsByIndex(), std::vector<int>(75, 0));
  ExpectEmptyRecords(0);
}

TEST_F(DomainPartitionTest, LargeSidesAreSearchedAndKeptWhole) {
  BuildBlobChain({{80, 0.0}, {90, 80.0}});
  Partition();
  EXPECT_EQ(DomainNumber, 2);
  EXPECT_EQ(DomainsByIndex(), Domains({{80, 0}, {90, 1}}));
  ExpectEmptyRecords(1);
}

TEST_F(DomainPartitionTest, MoreThanFifteenCutsGrowTheCutRecords) {
  // Seventeen separate blobs in a row: each level peels its first blob off (the source side),
  // and the rest becomes the next domain, so blob b ends as domain b.
  std::vector<Blob> blobs;
  for (int b = 0; b < 17; ++b) blobs.push_back(Blob{35, 50.0 * b});
  BuildBlobChain(blobs);
  NumSamplePoints = 1;  // one flow problem per level keeps the test fast
  Partition();
  EXPECT_EQ(DomainNumber, 17);
  std::vector<int> domains = DomainsByIndex();
  for (int i = 0; i < ProteinSize; ++i) EXPECT_EQ(domains[i], i / 35) << "index " << i;
  ASSERT_GE(cut_history.size(), 16u);
  float blobCompact = Compactness(BlobIntraCount(35), 35);
  for (int k = 0; k < 16; ++k) {
    SCOPED_TRACE(k);
    // The peeled blob keeps the parent's number; the rest (16 - k blobs) is the new domain.
    float restCompact = Compactness((16 - k) * BlobIntraCount(35), 35 * (16 - k));
    ExpectRecord(cut_history[k], k + 1, k, blobCompact, restCompact, 0.0f, 0.0f, 0.0f);
  }
  for (size_t k = 16; k < cut_history.size(); ++k) {
    ExpectRecord(cut_history[k], 999, 999, 999.0f, 999.0f, 0.0f, 0.0f, 999.0f);
  }
}

TEST_F(DomainPartitionTest, SecondRunGivesTheSamePartition) {
  std::vector<std::pair<int, int>> links = WeakLinks(0, 40);
  for (const auto& link : WeakLinks(80, 125)) links.push_back(link);
  std::vector<Blob> blobs = {{40, 0.0}, {40, 40.0}, {45, 80.0}, {45, 120.0}};
  BuildBlobChain(blobs, links);
  Partition();
  std::vector<int> domains = DomainsByIndex();
  std::vector<CutRecord> history = cut_history;
  double nextDraw = drand48();

  StartCleanRun();
  BuildBlobChain(blobs, links);
  Partition();
  EXPECT_EQ(DomainsByIndex(), domains);
  ASSERT_EQ(cut_history.size(), history.size());
  for (size_t k = 0; k < history.size(); ++k) {
    EXPECT_EQ(cut_history[k].parent, history[k].parent);
    EXPECT_EQ(cut_history[k].interface, history[k].interface);
  }
  EXPECT_EQ(drand48(), nextDraw);
}

}  // namespace
