// Default runs (partition, then the confidence assessment) on the bundled structures with the
// real DSSP, compared byte for byte with tests/data/expected/default_reports.tsv.
// QUARNEL_UPDATE_GOLDEN=1 rewrites that file from the runs instead of comparing: check every
// changed line by hand (entry, length, domains, coverage) before committing it.
#include <gtest/gtest.h>

#include <cctype>
#include <cstdlib>
#include <sstream>
#include <string>
#include <vector>

#include "endtoend_support.h"

namespace {

constexpr char kGoldenFile[] = "expected/default_reports.tsv";

// One line of the golden file: where the bundled structure is put in the working directory,
// the arguments (blank-separated, the input name last) and the expected report line, which
// takes the rest of the line, its own tabs included.
struct GoldenRow {
  std::string file;
  std::string args;
  std::string expected;
};

struct GoldenFile {
  std::vector<std::string> comments;
  std::vector<GoldenRow> rows;
};

GoldenFile ReadGolden(const std::string& path) {
  GoldenFile golden;
  std::istringstream in(ReadFile(path));
  std::string line;
  while (std::getline(in, line)) {
    if (line.empty()) continue;
    if (line[0] == '#') {
      golden.comments.push_back(line);
      continue;
    }
    size_t tab1 = line.find('\t');
    size_t tab2 = tab1 == std::string::npos ? tab1 : line.find('\t', tab1 + 1);
    if (tab2 == std::string::npos) {
      ADD_FAILURE() << "malformed golden line: " << line;
      continue;
    }
    golden.rows.push_back(GoldenRow{line.substr(0, tab1), line.substr(tab1 + 1, tab2 - tab1 - 1),
                                    line.substr(tab2 + 1)});
  }
  return golden;
}

void WriteGolden(const std::string& path, const GoldenFile& golden) {
  std::string text;
  for (const std::string& comment : golden.comments) text += comment + "\n";
  for (const GoldenRow& row : golden.rows)
    text += row.file + "\t" + row.args + "\t" + row.expected + "\n";
  WriteFile(path, text);
}

std::vector<std::string> Words(const std::string& text) {
  std::vector<std::string> words;
  std::istringstream in(text);
  std::string word;
  while (in >> word) words.push_back(word);
  return words;
}

std::string BaseName(const std::string& path) {
  size_t slash = path.rfind('/');
  return slash == std::string::npos ? path : path.substr(slash + 1);
}

// What the run must have read, worked out from the arguments as a user would: a name that is a
// file is read whole (first model); any other name is a PDB code under -pdbpath, with its fifth
// character, if any, naming the chain.
struct Expectation {
  std::string entry;
  std::vector<ResidueLabel> residues;
};

Expectation WorkOut(const std::vector<std::string>& args, const TempDir& dir) {
  const std::string& name = args.back();
  if (FileExists(dir.File(name))) {
    return Expectation{name.substr(0, name.find('.')), ListResidues(ReadFile(dir.File(name)))};
  }
  std::string prefix = "./";
  for (size_t i = 0; i + 1 < args.size(); ++i)
    if (args[i] == "-pdbpath") prefix = args[i + 1];
  char chain = kAnyChain;
  if (name.size() == 5)
    chain = static_cast<char>(std::toupper(static_cast<unsigned char>(name[4])));
  std::string pdb = ReadFile(dir.File(prefix + name.substr(0, 4) + ".pdb"));
  return Expectation{name, ListResidues(pdb, chain)};
}

std::string RunRow(const GoldenRow& row) {
  TempDir dir;
  CopyStructure(BaseName(row.file), dir, row.file);
  std::vector<std::string> args = Words(row.args);
  if (args.empty()) {
    ADD_FAILURE() << "no arguments";
    return "";
  }
  ToolRun run = RunWithDssp(args, dir.path());
  EXPECT_EQ(run.status, 0) << run.out;
  EXPECT_EQ(run.err, "");

  Expectation expectation = WorkOut(args, dir);
  Report report = CheckReport(run.out, expectation.residues);
  EXPECT_EQ(report.entry, expectation.entry);
  return run.out;
}

TEST(DefaultReports, MatchTheGoldenFile) {
  const std::string path = DataPath(kGoldenFile);
  GoldenFile golden = ReadGolden(path);
  ASSERT_FALSE(golden.rows.empty()) << path;
  const char* update = std::getenv("QUARNEL_UPDATE_GOLDEN");
  bool updating = update != nullptr && std::string(update) == "1";

  for (GoldenRow& row : golden.rows) {
    SCOPED_TRACE(row.file + " " + row.args);
    std::string actual = RunRow(row);
    if (updating) {
      if (!actual.empty() && actual.back() == '\n') actual.pop_back();
      row.expected = actual;
      continue;
    }
    std::string expected = row.expected + "\n";
    EXPECT_EQ(actual, expected) << FirstDifference(expected, actual);
  }
  if (updating) WriteGolden(path, golden);
}

// A named file has no chain letter: the assessment reads the chain of the first residue read,
// whatever its letter, and a chain other than A is assessed as A would be.
TEST(DefaultReports, NamedFileIsAssessedOnItsOwnChain) {
  TempDir dir;
  CopyStructure("2yex.pdb", dir, "2yex.pdb");
  std::string relettered;
  for (std::string line : SplitLines(ReadFile(DataPath("2yex.pdb")))) {
    if ((line.compare(0, 6, "ATOM  ") == 0 || line.compare(0, 3, "TER") == 0) && line.size() > 21)
      line[21] = 'X';  // chainID
    relettered += line;
  }
  WriteFile(dir.File("chainx.pdb"), relettered);

  ToolRun original = RunWithDssp({"2yex.pdb"}, dir.path());
  ASSERT_EQ(original.status, 0) << original.out;
  Report report = CheckReport(original.out, ResiduesOf("2yex.pdb"));
  ASSERT_GE(report.domains, 2) << "2yex no longer reaches the assessment with two domains";

  ToolRun moved = RunWithDssp({"chainx.pdb"}, dir.path());
  EXPECT_EQ(moved.status, 0) << moved.out;
  EXPECT_EQ(moved.out, WithEntry(original.out, "chainx"));
}

}  // namespace
