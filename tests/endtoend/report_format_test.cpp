// The report line on a real chain whose residue numbers are negative and carry insertion codes
// at segment ends. Residue numbers only label a run without DSSP: the cuts come from contacts
// and residue order, so a renumbered copy must be cut alike and reported under its new labels.
#include <gtest/gtest.h>

#include <cstdio>
#include <set>
#include <string>
#include <vector>

#include "endtoend_support.h"

namespace {

constexpr char kStructure[] = "1rmd.pdb";
constexpr int kFirstNumber = -3;

// New labels along the chain: numbers count up from kFirstNumber, except that a residue in
// `inserted` keeps the number of the residue before it and takes the next insertion code
// (52, 52A, 52B ...), as antibody-style numbering does.
std::vector<ResidueLabel> Renumbered(const std::vector<ResidueLabel>& residues,
                                     const std::set<size_t>& inserted) {
  std::vector<ResidueLabel> labels;
  for (size_t p = 0; p < residues.size(); ++p) {
    ResidueLabel label{residues[p].chain, kFirstNumber, ' '};
    if (p > 0) {
      const ResidueLabel& before = labels.back();
      if (inserted.count(p) != 0) {
        label.number = before.number;
        label.icode = before.icode == ' ' ? 'A' : static_cast<char>(before.icode + 1);
      } else {
        label.number = before.number + 1;
      }
    }
    labels.push_back(label);
  }
  return labels;
}

// Rewrites columns 23-27 (resSeq, iCode) of every ATOM record of the first model; residues are
// told apart as the reader tells them apart, by a change of those columns.
std::string Relabel(const std::string& pdb, const std::vector<ResidueLabel>& labels) {
  std::string out;
  int position = -1;
  std::string lastKey;
  bool done = false;
  for (std::string line : SplitLines(pdb)) {
    if (line.compare(0, 3, "END") == 0) done = true;
    if (!done && line.compare(0, 6, "ATOM  ") == 0 && line.size() > 27) {
      std::string key = line.substr(22, 5);
      if (position < 0 || key != lastKey) ++position;
      lastKey = key;
      const ResidueLabel& label = labels.at(static_cast<size_t>(position));
      char field[8];
      std::snprintf(field, sizeof field, "%4d%c", label.number, label.icode);
      line.replace(22, 5, field);
    }
    out += line;
  }
  return out;
}

TEST(ReportFormat, RenumberedChainIsCutAlikeAndReportedUnderItsNewLabels) {
  TempDir dir;
  CopyStructure(kStructure, dir, "original.pdb");
  const std::vector<ResidueLabel> residues = ResiduesOf(kStructure);

  ToolRun first = RunTool({"-noss", "-md", "3", "original.pdb"}, dir.path());
  ASSERT_EQ(first.status, 0) << first.out;
  Report report = CheckReport(first.out, residues);
  std::vector<int> domainOf = DomainsAlongChain(report, residues);
  ASSERT_FALSE(domainOf.empty());

  // Segments along the chain, as first and last positions.
  std::vector<std::pair<size_t, size_t>> runs;
  for (size_t p = 0; p < domainOf.size(); ++p) {
    if (p == 0 || domainOf[p] != domainOf[p - 1]) runs.emplace_back(p, p);
    runs.back().second = p;
  }
  ASSERT_GE(runs.size(), 4u) << "the label checks need four segments: " << first.out;
  ASSERT_GE(report.domains, 2);
  bool twoSegmentsInADomain = false;
  for (const auto& segments : report.segments) twoSegmentsInADomain |= segments.size() > 1;
  EXPECT_TRUE(twoSegmentsInADomain) << first.out;

  // Insertion codes on the end of the first segment, on both ends of the second and on the start
  // of the last: the report's four label forms (none, end only, both, start only) all occur.
  std::set<size_t> inserted = {runs[0].second, runs[1].first, runs[1].second, runs.back().first};
  std::vector<ResidueLabel> labels = Renumbered(residues, inserted);
  for (const auto& run : runs) {
    ASSERT_NE(labels[run.first].number, labels[run.second].number)
        << "a segment whose ends share a number is reported with its ends in number order";
  }
  std::string renumbered = Relabel(ReadFile(DataPath(kStructure)), labels);
  WriteFile(dir.File("renumbered.pdb"), renumbered);
  const std::vector<ResidueLabel> reread = ListResidues(renumbered);
  ASSERT_EQ(reread.size(), labels.size());
  for (size_t p = 0; p < labels.size(); ++p) {
    ASSERT_EQ(reread[p].number, labels[p].number);
    ASSERT_EQ(reread[p].icode, labels[p].icode);
  }

  ToolRun second = RunTool({"-noss", "-md", "3", "renumbered.pdb"}, dir.path());
  ASSERT_EQ(second.status, 0) << second.out;
  std::string expected = ExpectedReport("renumbered", domainOf, labels);
  EXPECT_EQ(second.out, expected) << FirstDifference(expected, second.out);
  EXPECT_NE(expected.find("(-3-"), std::string::npos) << "the chain's first label is negative";
}

}  // namespace
