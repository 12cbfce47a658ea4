// The option table: the classic scan (every option, values read without skipping them, atoi/atof
// conversions, relaxed mode applied last, exact and case-sensitive names, the last argument as
// the input), the record of the options results depend on, and README's option tables against
// the rows.
#include <gtest/gtest.h>

#include <cctype>
#include <map>
#include <set>
#include <sstream>

#include "base/status.h"
#include "base/text.h"
#include "cli/options.h"
#include "report/result_options.h"
#include "support.h"

namespace quarnel {
namespace {

std::string Describe(const CommandLine& c) {
  const Params& p = c.params;
  return Format(
      "md %d ml %d mg %.9g mi %.9g mt %.9g ms %.9g mbpair %d mbpass %d mloop %d mterm %d rs %d "
      "bw %.9g sp %d extremes %d anchors %d ex %d %d ca %d ss %d eva %d relaxed %d pdbpath '%s' "
      "chainpath '%s' input '%s'",
      p.MaxNumDom, p.MinDomainSize, p.MinGlobularity, p.MaxInteraction, p.MaxTime, p.MinSegRes,
      p.MaxBetaPair, p.MaxBetaPass, p.MaxLoop, p.MaxTerm, p.ResSep, p.BBWeight, p.NumSamplePoints,
      p.NumExtremes, p.FlagExtremes, p.Extreme1, p.Extreme2, p.FlagCa, p.FlagSS, p.FlagEva,
      p.Relaxed(), c.pdbPath.c_str(), c.chainPath.c_str(), c.input.c_str());
}

CommandLine Parse(const std::vector<const char*>& argv) {
  return ParseClassic(static_cast<int>(argv.size()), argv.data());
}

void Relaxed(Params& p, int32_t maxNumDom) {
  p.MaxNumDom = maxNumDom;
  ApplyRelaxedMode(p);
}

TEST(ParseOptions, EveryOptionAndTheScanRules) {
  const struct {
    std::vector<const char*> argv;
    void (*expect)(CommandLine&);  // changes to the defaults
  } rows[] = {
      {{"quarnel", "x.pdb"}, [](CommandLine&) {}},
      {{"quarnel", "-ca", "x.pdb"}, [](CommandLine& c) { c.params.FlagCa = 1; }},
      {{"quarnel", "-md", "100", "x.pdb"}, [](CommandLine&) {}},
      {{"quarnel", "-md", "3", "x.pdb"}, [](CommandLine& c) { Relaxed(c.params, 3); }},
      // Relaxed mode overrides what the command line said, wherever it said it.
      {{"quarnel", "-mg", "0.7", "-mi", "0.1", "-md", "4", "-ml", "50", "x.pdb"},
       [](CommandLine& c) { Relaxed(c.params, 4); }},
      {{"quarnel", "-md", "3", "-md", "100", "x.pdb"}, [](CommandLine&) {}},
      {{"quarnel", "-ml", "20", "-sp", "7", "-mloop", "5", "-mterm", "6", "x.pdb"},
       [](CommandLine& c) {
         c.params.MinDomainSize = 20;
         c.params.NumSamplePoints = 7;
         c.params.MaxLoop = 5;
         c.params.MaxTerm = 6;
       }},
      // -ms keeps an integer value; -rs truncates a real one toward zero.
      {{"quarnel", "-ms", "20.9", "-rs", "4.7", "x.pdb"},
       [](CommandLine& c) { c.params.MinSegRes = 20.0f, c.params.ResSep = 4; }},
      {{"quarnel", "-rs", "-4.7", "-bw", "2.5", "x.pdb"},
       [](CommandLine& c) { c.params.ResSep = -4, c.params.BBWeight = 2.5f; }},
      // n allowed pairings or passages: a bound of n + 1.
      {{"quarnel", "-mbpair", "2", "-mbpass", "0", "x.pdb"},
       [](CommandLine& c) { c.params.MaxBetaPair = 3, c.params.MaxBetaPass = 1; }},
      // atof: exponents, a numeric prefix, nothing numeric at all.
      {{"quarnel", "-mt", "1e-1", "-mg", ".6x", "-mi", "abc", "x.pdb"},
       [](CommandLine& c) { c.params.MaxTime = 0.1f, c.params.MinGlobularity = 0.6f, c.params.MaxInteraction = 0; }},
      // atoi: leading blanks, a sign, a numeric prefix.
      {{"quarnel", "-ml", " 7", "-sp", "+3x", "-mloop", "-2", "x.pdb"},
       [](CommandLine& c) { c.params.MinDomainSize = 7, c.params.NumSamplePoints = 3, c.params.MaxLoop = -2; }},
      {{"quarnel", "-el", "-noss", "-nodssp", "-noeva", "x.pdb"},
       [](CommandLine& c) { c.params.FlagSS = 0, c.params.FlagEva = 0; }},
      {{"quarnel", "-ex", "10", "120", "x.pdb"},
       [](CommandLine& c) { c.params.FlagExtremes = 1, c.params.Extreme1 = 10, c.params.Extreme2 = 120, Relaxed(c.params, 2); }},
      {{"quarnel", "-ex", "10", "120", "-el", "x.pdb"},
       [](CommandLine& c) { c.params.Extreme1 = 10, c.params.Extreme2 = 120, Relaxed(c.params, 2); }},
      {{"quarnel", "-ex", "10", "120", "-md", "100", "x.pdb"},
       [](CommandLine& c) { c.params.FlagExtremes = 1, c.params.Extreme1 = 10, c.params.Extreme2 = 120; }},
      // A value may be the input name itself.
      {{"quarnel", "-ex", "10", "x.pdb"},
       [](CommandLine& c) { c.params.FlagExtremes = 1, c.params.Extreme1 = 10, Relaxed(c.params, 2); }},
      {{"quarnel", "-md", "x.pdb"}, [](CommandLine& c) { Relaxed(c.params, 0); }},
      // Values are scanned as options too; the program's own name is scanned.
      {{"quarnel", "-pdbpath", "-ca", "x.pdb"}, [](CommandLine& c) { c.pdbPath = "-ca", c.params.FlagCa = 1; }},
      {{"-noss", "x.pdb"}, [](CommandLine& c) { c.params.FlagSS = 0; }},
      // Exact, case-sensitive names; unknown words are ignored.
      {{"quarnel", "-MD", "3", "--md", "3", "-md3", "-Noss", "md", "x.pdb"}, [](CommandLine&) {}},
      // The last argument is the input, never an option.
      {{"quarnel", "-md"}, [](CommandLine& c) { c.input = "-md"; }},
      {{"quarnel", "x.pdb", "-noss"}, [](CommandLine& c) { c.input = "-noss"; }},
  };
  for (const auto& row : rows) {
    CommandLine expected;
    expected.input = row.argv.back();
    row.expect(expected);
    EXPECT_EQ(Describe(Parse(row.argv)), Describe(expected));
  }
}

TEST(ParseOptions, DesignedFailures) {
  const struct {
    std::vector<const char*> argv;
    int status;
    Stream stream;
    const char* text;
  } rows[] = {
      {{"quarnel"}, 0, Stream::kStdout, "Usage: quarnel [-md n] [-ex r1 r2] ... file-name\n  e.g., quarnel 16pk.pdb\n"},
      {{"quarnel", "-ex", "x.pdb"}, 2, Stream::kStderr, "quarnel: option -ex needs two values before the input name\n"},
  };
  for (const auto& row : rows) {
    try {
      Parse(row.argv);
      ADD_FAILURE() << "no failure for " << row.argv.size() << " arguments";
    } catch (const Failure& failure) {
      EXPECT_EQ(failure.exit_status(), row.status);
      EXPECT_EQ(failure.stream(), row.stream);
      EXPECT_STREQ(failure.what(), row.text);
    }
  }
}

BatchOptions Parsed(std::vector<const char*> args) {
  args.insert(args.begin(), "quarnel");
  args.push_back("x.pdb");
  return ParseBatch(static_cast<int>(args.size()), args.data());
}

// Options that give the same results record the same text; values as the run reads them.
TEST(ResultOptions, RecordedAsTheRunReadsThem) {
  const std::pair<std::vector<const char*>, const char*> cases[] = {
      {{"--format", "tsv"}, ""},
      {{"-noss", "-md", "2", "-ml", "30"}, "-md 2 -ml 30 -noss"},  // not the criteria relaxed mode sets
      {{"-ex", "5", "40"}, "-ex 5 40"},
      {{"-ms", "2.5", "-rs", "3.9", "-mbpass", "0", "-mt", "0.40"}, "-ms 2 -mbpass 0"},
      {{"-el", "-noeva", "-nodssp", "-pdbpath", "p/", "--chain", "A"}, ""},
      {{"--min-plddt", "70.0", "--dssp", "builtin", "-ca"}, "-ca --min-plddt 70"},
      {{"--mode=cath", "-noss"}, "-noss --mode cath"},
  };
  for (const auto& [args, recorded] : cases) EXPECT_EQ(RecordedOptions(SettingsOf(Parsed(args))), recorded);
}

// ---- README's tables against the rows ----

struct ReadmeOption {
  std::string values;    // "n", "r1 r2", "" for a switch
  std::string fallback;  // the Default column of the classic table
  OptionKind kind;
};

// The backticked options of the first column of every row of a table, after `heading` in README.
void ReadTable(const std::string& readme, const std::string& heading, OptionKind kind,
               std::map<std::string, ReadmeOption>& options) {
  std::istringstream in(readme.substr(readme.find(heading)));
  std::string line;
  while (std::getline(in, line) && line.rfind("| Option", 0) != 0) {
  }
  std::getline(in, line);  // |---|---|

  while (std::getline(in, line) && line.rfind("|", 0) == 0) {
    const size_t second = line.find('|', 1), third = line.find('|', second + 1);
    const std::string first = line.substr(1, second - 1);
    std::string fallback = line.substr(second + 1, third - second - 1);
    fallback.erase(0, fallback.find_first_not_of(" `"));
    fallback.erase(fallback.find_last_not_of(" `") + 1);
    // Each `name values` between backticks.
    for (size_t open = first.find('`'); open != std::string::npos; open = first.find('`', open + 1)) {
      const size_t close = first.find('`', open + 1);
      const std::string token = first.substr(open + 1, close - open - 1);
      const size_t blank = token.find(' ');
      const std::string values = blank == std::string::npos ? "" : token.substr(blank + 1);
      options[token.substr(0, blank)] = ReadmeOption{values, kind == OptionKind::kClassic ? fallback : "", kind};
      open = close;
    }
  }
}

TEST(OptionTable, ReadmeTablesListEveryRow) {
  const std::string readme = test::ReadFile(test::SourceDir() + "/README.md");
  std::map<std::string, ReadmeOption> listed;
  ReadTable(readme, "The first table holds the options of the classic run", OptionKind::kClassic, listed);
  ReadTable(readme, "Options of batch runs", OptionKind::kBatch, listed);
  size_t count = 0;
  const OptionRow* rows = OptionRows(count);
  std::set<std::string> names;
  for (size_t k = 0; k < count; ++k) {
    const OptionRow& row = rows[k];
    SCOPED_TRACE(row.name);
    names.insert(row.name);
    const auto found = listed.find(row.name);
    ASSERT_NE(found, listed.end()) << "not in README's tables";
    EXPECT_EQ(found->second.values, row.values);
    EXPECT_EQ(found->second.kind == OptionKind::kClassic, row.kind == OptionKind::kClassic);
    if (row.kind == OptionKind::kClassic) {
      EXPECT_EQ(found->second.fallback, row.fallback);
    }
  }
  for (const auto& [name, option] : listed) EXPECT_EQ(names.count(name), 1u) << name << " is in README, not in the table";
}

// --help lists every row under its name and values, with its help line.
TEST(OptionTable, HelpListsEveryRow) {
  const std::string help = HelpText();
  size_t count = 0;
  const OptionRow* rows = OptionRows(count);
  for (size_t k = 0; k < count; ++k) {
    const std::string name = rows[k].values[0] == '\0' ? rows[k].name : std::string(rows[k].name) + " " + rows[k].values;
    EXPECT_TRUE(help.find(" " + name + " ") != std::string::npos || help.find(" " + name + ", ") != std::string::npos)
        << name;
  }
  EXPECT_NE(help.find("\n  130, 143  a batch run stopped by SIGINT"), std::string::npos) << help;
}

// README's table of exit statuses holds the same statuses as --help's.
TEST(OptionTable, ReadmeStatusesAreHelpStatuses) {
  const std::string readme = test::ReadFile(test::SourceDir() + "/README.md");
  std::istringstream in(readme.substr(readme.find("## Exit statuses")));
  std::string line, fromReadme;
  while (std::getline(in, line))
    if (line.size() > 2 && line.compare(0, 2, "| ") == 0 && std::isdigit(static_cast<unsigned char>(line[2])))
      fromReadme += line.substr(2, line.find(" |", 2) - 2) + ";";
  std::string fromHelp;
  const std::string help = HelpText();
  std::istringstream lines(help.substr(help.find("Exit status:")));
  while (std::getline(lines, line))
    if (line.size() > 2 && line.compare(0, 2, "  ") == 0 && std::isdigit(static_cast<unsigned char>(line[2]))) {
      std::string numbers = line.substr(2, line.find("  ", 2) - 2);
      fromHelp += numbers + ";";
    }
  EXPECT_EQ(fromReadme, fromHelp);
}

}  // namespace
}  // namespace quarnel
