// Domain records built from the residues' domain numbers, and the report line they print.
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "output/domains.h"
#include "partition/partition.h"
#include "structure/pdb_names.h"
#include "structure/protein.h"
#include "support/test_support.h"

namespace {

struct ChainResidue {
  int resnum;
  char icode;
  int domain;
};

// Residues in chain order (index = position), stored in reverse so that the assembly has to
// put them back in chain order itself. Each residue's cut scores are its domain's, scaled.
void SetChain(const std::vector<ChainResidue>& chain, int domains) {
  StartCleanRun();
  Protein.clear();
  for (int i = static_cast<int>(chain.size()) - 1; i >= 0; --i) {
    Residue r{};
    r.index = i;
    r.resnum = chain[static_cast<size_t>(i)].resnum;
    r.icode = chain[static_cast<size_t>(i)].icode;
    r.domain = chain[static_cast<size_t>(i)].domain;
    r.cutscore[0] = 0.5f + r.domain;
    r.cutscore[1] = 0.25f + r.domain;
    r.cutscore[2] = 0.125f + r.domain;
    Protein.push_back(r);
  }
  ProteinSize = static_cast<int32_t>(chain.size());
  DomainNumber = domains;
}

void AddRange(std::vector<ChainResidue>& chain, int first, int last, int domain) {
  for (int n = first; n <= last; ++n) chain.push_back(ChainResidue{n, ' ', domain});
}

void ExpectSegment(const DomainSegment& s, int start, char startIns, int end, char endIns) {
  EXPECT_EQ(s.start, start);
  EXPECT_EQ(s.startIns, startIns);
  EXPECT_EQ(s.end, end);
  EXPECT_EQ(s.endIns, endIns);
}

std::string PrintedReport() {
  ::testing::internal::CaptureStdout();
  PrintDomain();
  return ::testing::internal::GetCapturedStdout();
}

TEST(OutputDomains, DomainsCollectTheirSegmentsInChainOrder) {
  std::vector<ChainResidue> chain;
  AddRange(chain, 1, 50, 1);
  AddRange(chain, 51, 120, 0);
  AddRange(chain, 121, 200, 1);
  SetChain(chain, 2);
  OutputDomains("sample");

  for (int i = 0; i < ProteinSize; ++i) ASSERT_EQ(Protein[static_cast<size_t>(i)].index, i);
  ASSERT_EQ(domdetail.size(), 2u);
  ASSERT_EQ(domdetail[0].nseg, 1);
  ASSERT_EQ(domdetail[0].segments.size(), 1u);
  ExpectSegment(domdetail[0].segments[0], 51, ' ', 120, ' ');
  ASSERT_EQ(domdetail[1].nseg, 2);
  ExpectSegment(domdetail[1].segments[0], 1, ' ', 50, ' ');
  ExpectSegment(domdetail[1].segments[1], 121, ' ', 200, ' ');
  EXPECT_EQ(domdetail[1].cutscore[0], 1.5f);
  EXPECT_EQ(domdetail[1].cutscore[1], 1.25f);
  EXPECT_EQ(domdetail[1].cutscore[2], 1.125f);
  EXPECT_EQ(domdetail[0].cutscore[0], 0.5f);
  EXPECT_EQ(domdetail[0].confidence, 0.0f);

  Entry = "sample";
  EXPECT_EQ(PrintedReport(), "sample\t200\t2\t (51-120) (1-50;121-200)\n");
}

TEST(OutputDomains, SingleResidueSegment) {
  std::vector<ChainResidue> chain;
  AddRange(chain, 1, 10, 0);
  chain.push_back(ChainResidue{11, 'B', 1});
  AddRange(chain, 12, 20, 0);
  SetChain(chain, 2);
  OutputDomains("x");
  ASSERT_EQ(domdetail[1].nseg, 1);
  ExpectSegment(domdetail[1].segments[0], 11, 'B', 11, 'B');
}

TEST(OutputDomains, NumberingGapsAndReversedNumbering) {
  std::vector<ChainResidue> chain;
  AddRange(chain, 1, 10, 0);
  AddRange(chain, 30, 40, 0);  // a chain break inside one segment
  for (int n = 100; n >= 91; --n) chain.push_back(ChainResidue{n, n == 100 ? 'A' : ' ', 1});
  SetChain(chain, 2);
  OutputDomains("x");
  ASSERT_EQ(domdetail[0].nseg, 1);
  ExpectSegment(domdetail[0].segments[0], 1, ' ', 40, ' ');
  ASSERT_EQ(domdetail[1].nseg, 1);
  ExpectSegment(domdetail[1].segments[0], 91, ' ', 100, 'A');
}

TEST(OutputDomains, InsertionCodesAreKept) {
  std::vector<ChainResidue> chain = {{50, ' ', 0}, {51, ' ', 0}, {52, 'A', 1}, {52, 'B', 1},
                             {53, ' ', 1}, {60, 'C', 1}, {61, ' ', 0}};
  SetChain(chain, 2);
  OutputDomains("x");
  ExpectSegment(domdetail[1].segments[0], 52, 'A', 60, 'C');
  ExpectSegment(domdetail[0].segments[1], 61, ' ', 61, ' ');
}

// Equal numbers (52 then 52A): the first is not lower, so the second is taken as the start.
TEST(OutputDomains, EqualNumbersStartFromTheLastResidue) {
  std::vector<ChainResidue> chain = {{51, ' ', 0}, {52, ' ', 1}, {52, 'A', 1}, {53, ' ', 0}};
  SetChain(chain, 2);
  OutputDomains("x");
  ExpectSegment(domdetail[1].segments[0], 52, 'A', 52, ' ');
}

TEST(OutputDomains, OneDomainLeavesTheRecordsAlone) {
  std::vector<ChainResidue> chain;
  AddRange(chain, 1, 30, 0);
  SetChain(chain, 1);
  DomainDetail sentinel{};
  sentinel.nseg = 7;
  sentinel.confidence = 12.5f;
  domdetail.assign(3, sentinel);
  OutputDomains("x");
  ASSERT_EQ(domdetail.size(), 3u);
  EXPECT_EQ(domdetail[2].nseg, 7);
  EXPECT_EQ(domdetail[2].confidence, 12.5f);
  EXPECT_EQ(Protein[0].index, 0);  // still sorted into chain order
}

TEST(OutputDomains, TablesGrowPastAHundredDomainsAndFiftySegments) {
  // Domain 0 alternates with domains 1 to 150: 150 segments of domain 0.
  std::vector<ChainResidue> chain;
  for (int d = 1; d <= 150; ++d) {
    chain.push_back(ChainResidue{2 * d - 1, ' ', 0});
    chain.push_back(ChainResidue{2 * d, ' ', d});
  }
  SetChain(chain, 151);
  OutputDomains("x");
  ASSERT_EQ(domdetail.size(), 151u);
  ASSERT_EQ(domdetail[0].nseg, 150);
  ExpectSegment(domdetail[0].segments[149], 299, ' ', 299, ' ');
  ExpectSegment(domdetail[150].segments[0], 300, ' ', 300, ' ');
  EXPECT_EQ(domdetail[150].cutscore[0], 150.5f);
}

DomainDetail Record(const std::vector<DomainSegment>& segments) {
  DomainDetail record{};
  record.segments = segments;
  record.nseg = static_cast<int32_t>(segments.size());
  return record;
}

TEST(PrintDomain, SampleEntryLine) {
  StartCleanRun();
  Entry = "sample";
  ProteinSize = 250;
  DomainNumber = 2;
  domdetail = {Record({{1, ' ', 120, ' '}, {201, ' ', 250, ' '}}), Record({{121, 'A', 200, ' '}})};
  EXPECT_EQ(PrintedReport(), "sample\t250\t2\t (1-120;201-250) (121A-200)\n");
}

TEST(PrintDomain, InsertionCodesOnEitherEndAndNegativeNumbers) {
  StartCleanRun();
  Entry = "1abcA";
  ProteinSize = 321;
  DomainNumber = 3;
  domdetail = {Record({{-3, ' ', 10, ' '}, {20, ' ', 30, 'B'}}),
               Record({{11, 'A', 19, ' '}, {31, 'C', 40, 'D'}, {41, ' ', 41, ' '}}),
               Record({{-20, 'A', -5, ' '}})};
  EXPECT_EQ(PrintedReport(), "1abcA\t321\t3\t (-3-10;20-30B) (11A-19;31C-40D;41-41) (-20A--5)\n");
}

TEST(PrintDomain, FreeAndTheOneDomainLine) {
  StartCleanRun();
  Entry = "16pk";
  ProteinSize = 415;
  DomainNumber = 2;
  domdetail = {Record({{1, ' ', 200, ' '}}), Record({{201, ' ', 415, ' '}})};
  FreeDomDetail(DomainNumber);
  EXPECT_TRUE(domdetail.empty());

  ::testing::internal::CaptureStdout();
  PrintOneDomain();
  EXPECT_EQ(::testing::internal::GetCapturedStdout(), "16pk\t415\t1\n");
}

}  // namespace
