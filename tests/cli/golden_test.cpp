// Whole reports of the built tool on real entries, byte for byte, against the table in
// data/expected/reports.tsv. QUARNEL_REGENERATE_GOLDEN=1 writes the tool's reports into the
// table instead; a person then checks the diff before it is committed.
#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

#include <gtest/gtest.h>

#include <algorithm>

#include "support.h"

namespace quarnel::test {
namespace {

struct GoldenRow {
  size_t line;  // in the table
  std::string place, args, report;
};

std::string TablePath() { return DataFile("expected/reports.tsv"); }

std::vector<std::string> Lines(const std::string& text) {
  std::vector<std::string> lines;
  std::istringstream in(text);
  for (std::string line; std::getline(in, line);) lines.push_back(line);
  return lines;
}

// The rows that need DSSP (no -noss) or those that do not.
std::vector<GoldenRow> Rows(bool dssp) {
  std::vector<GoldenRow> rows;
  const std::vector<std::string> lines = Lines(ReadFile(TablePath()));
  for (size_t i = 0; i < lines.size(); ++i) {
    const std::string& line = lines[i];
    const size_t tab = line.find('\t'), second = line.find('\t', tab + 1);
    if (line.empty() || line[0] == '#' || second == std::string::npos) continue;
    GoldenRow row{i, line.substr(0, tab), line.substr(tab + 1, second - tab - 1),
                  line.substr(second + 1) + "\n"};
    const std::vector<std::string> words = Words(row.args);
    if ((std::find(words.begin(), words.end(), "-noss") == words.end()) == dssp) rows.push_back(row);
  }
  EXPECT_FALSE(rows.empty());
  return rows;
}

std::string FirstDifference(const std::string& expected, const std::string& actual) {
  const std::vector<std::string> want = Lines(expected), got = Lines(actual);
  for (size_t i = 0; i < std::max(want.size(), got.size()); ++i) {
    const std::string w = i < want.size() ? want[i] : "(no line)", g = i < got.size() ? got[i] : "(no line)";
    if (w != g) return "line " + std::to_string(i + 1) + "\n  expected: " + w + "\n  actual:   " + g;
  }
  return "a difference in line ends";
}

// Both tests may regenerate at once under CTest: the table is rewritten under a lock.
void Regenerate(const std::vector<GoldenRow>& rows, const std::vector<std::string>& reports) {
  const int fd = open(TablePath().c_str(), O_RDONLY);
  ASSERT_GE(fd, 0);
  flock(fd, LOCK_EX);
  std::vector<std::string> lines = Lines(ReadFile(TablePath()));
  for (size_t r = 0; r < rows.size(); ++r) {
    std::string report = reports[r];
    if (!report.empty() && report.back() == '\n') report.pop_back();
    if (report.find('\n') != std::string::npos) {  // a message besides the report: a person decides
      std::printf("table line %zu kept: the tool printed several lines\n", rows[r].line + 1);
      continue;
    }
    lines[rows[r].line] = rows[r].place + "\t" + rows[r].args + "\t" + report;
  }
  std::string text;
  for (const std::string& line : lines) text += line + "\n";
  WriteFile(TablePath(), text);
  flock(fd, LOCK_UN);
  close(fd);
  std::printf("regenerated %zu rows of %s: check the diff by hand\n", rows.size(), TablePath().c_str());
}

void CheckReports(bool dssp) {
  const std::vector<GoldenRow> rows = Rows(dssp);
  const std::string dsspPath = SourceDir() + "/tools/quarnel-dssp";
  std::vector<std::string> reports;
  for (const GoldenRow& row : rows) {
    Scratch scratch;
    const std::string from = DataFile(row.place.substr(row.place.rfind('/') + 1));
    ASSERT_EQ(std::system(("mkdir -p \"$(dirname " + Quote(scratch / row.place) + ")\" && cp " +
                           Quote(from) + " " + Quote(scratch / row.place)).c_str()), 0);
    const ToolRun run = RunTool(scratch.path(), Words(row.args), dssp ? dsspPath.c_str() : nullptr);
    reports.push_back(run.out);
    const std::string where = "table line " + std::to_string(row.line + 1) + ": " + row.args;
    EXPECT_EQ(run.status, 0) << where;
    EXPECT_EQ(run.err, "") << where;
    if (run.out != row.report) ADD_FAILURE() << where << ": " << FirstDifference(row.report, run.out);
  }
  if (std::getenv("QUARNEL_REGENERATE_GOLDEN") != nullptr) Regenerate(rows, reports);
}

TEST(GoldenReports, WithoutSecondaryStructure) { CheckReports(false); }

TEST(GoldenReports, WithDssp) {
  if (std::system("command -v mkdssp >/dev/null 2>&1") != 0)
    GTEST_SKIP() << "no mkdssp on PATH: the default-mode rows need DSSP (apt-get install dssp)";
  CheckReports(true);
}

}  // namespace
}  // namespace quarnel::test
