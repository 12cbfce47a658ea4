// The candidate tree of the accuracy mode: every part divided into two that hold exactly its
// residues, the same tree whatever the number of threads, and long chains divided by sequence
// first.
#include <gtest/gtest.h>

#include <algorithm>

#include "cath/candidates.h"
#include "cath/decide.h"
#include "formats/pdb_records.h"
#include "secondary/dssp_table.h"
#include "support.h"

namespace quarnel {
namespace {

struct Chain {
  Structure structure;
  ContactMap contacts;
};

Chain ReadChain(const std::string& pdb, const std::string& dssp = "") {
  Chain chain;
  const FileSource file(test::DataFile(pdb));
  chain.structure = ReadStructure(PdbLineRecords(file));
  chain.contacts = CalcContacts(chain.structure, Params());
  SetSecondaryStructureDefaults(chain.structure.residues);
  if (!dssp.empty()) {
    const SecondaryStructure table = ReadDsspTable(FileSource(test::DataFile(dssp)), chain.structure.residues);
    ApplySecondaryStructure(table, chain.structure.residues, chain.contacts);
  }
  return chain;
}

std::vector<CandidateNode> Search(const Chain& chain, int threads = 1) {
  WorkerPool workers(threads);
  RunContext context;
  context.workers = &workers;
  return SearchCandidates(chain.structure, chain.contacts, CandidateParams(Params()), context);
}

void ExpectWellFormed(const std::vector<CandidateNode>& nodes, int32_t residues) {
  ASSERT_FALSE(nodes.empty());
  ASSERT_EQ(nodes[0].residues.size(), static_cast<size_t>(residues));
  const int32_t smallest = CandidateParams(Params()).MinDomainSize;
  for (size_t k = 0; k < nodes.size(); ++k) {
    const CandidateNode& node = nodes[k];
    EXPECT_TRUE(std::is_sorted(node.residues.begin(), node.residues.end())) << k;
    if (!node.hasCut()) {
      EXPECT_EQ(node.children[0], kNoNode);
      continue;
    }
    std::vector<int32_t> joined;
    for (int child : node.children) {
      ASSERT_GT(child, static_cast<int>(k)) << "children come after their parent";
      const CandidateNode& side = nodes[static_cast<size_t>(child)];
      EXPECT_EQ(side.parent, static_cast<int>(k));
      EXPECT_EQ(side.depth, node.depth + 1);
      EXPECT_GE(static_cast<int32_t>(side.residues.size()), smallest);
      joined.insert(joined.end(), side.residues.begin(), side.residues.end());
    }
    std::sort(joined.begin(), joined.end());
    EXPECT_EQ(joined, node.residues) << "node " << k << ": its sides hold its residues, once each";
    EXPECT_EQ(node.cuts[0].sides[0], nodes[static_cast<size_t>(node.children[0])].residues);
  }
}

TEST(CandidateSearch, EveryCutDividesItsPartExactly) {
  const struct {
    const char* pdb;
    const char* dssp;
  } chains[] = {{"2yex.pdb", ""}, {"1rmd.pdb", "1rmd.dssp"}, {"1isu.pdb", "1isu.dssp"}};
  for (const auto& entry : chains) {
    SCOPED_TRACE(entry.pdb);
    const Chain chain = ReadChain(entry.pdb, entry.dssp);
    ExpectWellFormed(Search(chain), chain.structure.size());
  }
}

TEST(CandidateSearch, ThreadsChangeNothing) {
  const Chain chain = ReadChain("2yex.pdb");
  const std::vector<CandidateNode> single = Search(chain, 1);
  for (int threads : {2, 7}) {
    const std::vector<CandidateNode> nodes = Search(chain, threads);
    ASSERT_EQ(nodes.size(), single.size()) << threads;
    for (size_t k = 0; k < nodes.size(); ++k) {
      EXPECT_EQ(nodes[k].residues, single[k].residues) << threads << " " << k;
      ASSERT_EQ(nodes[k].hasCut(), single[k].hasCut());
      if (nodes[k].hasCut()) {
        EXPECT_EQ(nodes[k].cuts[0].score, single[k].cuts[0].score);
      }
    }
  }
}

// Copies of one chain side by side, far apart, as one chain longer than any part the flow
// search takes whole: the first cuts follow the sequence, between copies, where no contact
// crosses.
TEST(CandidateSearch, LongChainsAreCutBySequenceFirst) {
  const Chain one = ReadChain("2yex.pdb");
  Chain chain;
  const int copies = 5;
  for (int c = 0; c < copies; ++c) {
    const int32_t firstAtom = static_cast<int32_t>(chain.structure.atoms.size());
    for (Atom atom : one.structure.atoms) {
      atom.x += 150.0 * c;
      chain.structure.atoms.push_back(atom);
    }
    for (Residue residue : one.structure.residues) {
      residue.index += c * one.structure.size();
      residue.firstAtom += firstAtom;
      residue.ca[0] += 150.0 * c;
      chain.structure.residues.push_back(residue);
    }
  }
  ASSERT_GT(chain.structure.size(), kLongestSearchedPart);
  chain.contacts = CalcContacts(chain.structure, Params());
  SetSecondaryStructureDefaults(chain.structure.residues);
  const std::vector<CandidateNode> nodes = Search(chain);
  ExpectWellFormed(nodes, chain.structure.size());
  ASSERT_TRUE(nodes[0].hasCut());
  EXPECT_TRUE(nodes[0].cuts[0].bySequence);
  const int32_t split = nodes[static_cast<size_t>(nodes[0].children[1])].residues.front();
  EXPECT_EQ(split % one.structure.size(), 0) << "cut between copies, at " << split;
}

// The model's calls make a partition: every residue in one domain, domains in chain order, each
// standing cut a boundary, probabilities between 0 and 1.
TEST(CathCalls, DomainsPartitionTheChain) {
  const Chain chain = ReadChain("1rmd.pdb", "1rmd.dssp");
  const std::vector<CandidateNode> nodes = Search(chain);
  const CathCalls calls = DecideCuts(ChainView(chain.structure, chain.contacts, Params()), nodes);
  ASSERT_EQ(calls.confidence.size(), calls.domains.size());
  EXPECT_EQ(calls.boundaries.size() + 1, calls.domains.size());
  std::vector<int> seen(static_cast<size_t>(chain.structure.size()), 0);
  for (int domain : calls.domains)
    for (int32_t i : nodes[static_cast<size_t>(domain)].residues) ++seen[static_cast<size_t>(i)];
  EXPECT_TRUE(std::all_of(seen.begin(), seen.end(), [](int n) { return n == 1; }));
  for (size_t d = 1; d < calls.domains.size(); ++d)
    EXPECT_LT(nodes[static_cast<size_t>(calls.domains[d - 1])].residues.front(),
              nodes[static_cast<size_t>(calls.domains[d])].residues.front());
  for (double p : calls.confidence) EXPECT_TRUE(p > 0.0 && p < 1.0) << p;
  for (const Boundary& b : calls.boundaries) EXPECT_TRUE(calls.kept[static_cast<size_t>(b.node)]);
}

}  // namespace
}  // namespace quarnel
