// Helpers of the end-to-end tests: working directories filled from the bundled structures, an
// independent reading of the residues a run must report, and a parser of the report line.
#pragma once

#include <string>
#include <vector>

#include "support/test_support.h"

// Runs the built tool in `directory` with the repository's DSSP adapter as DSSP_PATH.
ToolRun RunWithDssp(const std::vector<std::string>& args, const std::string& directory);

// Copies the bundled structure `dataFile` to `target` (relative to the working directory),
// creating the target's directory when it has one.
void CopyStructure(const std::string& dataFile, const TempDir& dir, const std::string& target);
void MakeDirectory(const std::string& path);

// A residue as the report names it: number and insertion code (blank when none).
struct ResidueLabel {
  char chain;
  int number;
  char icode;
};

constexpr char kAnyChain = '\0';

// The residues of the first model, in file order, as the ATOM records give them: a new residue
// wherever the residue number or the insertion code changes; hydrogens (H in column 14) and
// every other record type are left out. With a chain given, only that chain's records count.
std::vector<ResidueLabel> ListResidues(const std::string& pdbText, char chain = kAnyChain);

struct ReportSegment {
  int start;
  char startIns;
  int end;
  char endIns;
};

struct Report {
  std::string entry;
  int size = 0;
  int domains = 0;
  std::vector<std::vector<ReportSegment>> segments;  // per domain, in printed order
};

// Reads one report line, newline included: "entry\tN\t1\n", or the head "entry\tN\tD\t"
// followed by D groups " (a-b;c-d)" and the newline. False when the line has another shape.
bool ParseReport(const std::string& line, Report* report);

// The domain of every residue position, read back from the report. Fails the current test (and
// returns an empty list) unless the segments cover every residue exactly once, in chain order,
// each domain's segments listed in chain order and neighbouring segments in different domains.
std::vector<int> DomainsAlongChain(const Report& report, const std::vector<ResidueLabel>& residues);

// Parses a report line and checks it against the residues the run read: the chain length, and
// for two or more domains the segments' coverage (DomainsAlongChain). Fails the test otherwise.
Report CheckReport(const std::string& line, const std::vector<ResidueLabel>& residues);

// The residues of a bundled structure file (first model, every chain).
std::vector<ResidueLabel> ResiduesOf(const std::string& dataFile, char chain = kAnyChain);

// "12", "-3" or "52A": a residue number with its insertion code, as a report writes it.
std::string LabelText(int number, char icode);

// The report line with its entry field (the text before the first tab) replaced.
std::string WithEntry(const std::string& line, const std::string& entry);

// Where two texts first differ, with a little context, for failure messages.
std::string FirstDifference(const std::string& expected, const std::string& actual);

// The report line expected from a domain number per residue position, the domains printed in
// order 0, 1, ... and each as its maximal runs of positions.
std::string ExpectedReport(const std::string& entry, const std::vector<int>& domainOf,
                           const std::vector<ResidueLabel>& labels);

// Lines of a text, each with its own line end ("\n", or "\r\n" in DOS files).
std::vector<std::string> SplitLines(const std::string& text);
