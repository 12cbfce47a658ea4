// Batch runs against classic runs over the test data: a batch of codes prints, line for line,
// what the classic run of each code prints; every TSV and JSON row of a folder holds the classic
// report's residues and domains, and its residue rows, grouped by label, the TSV's. Without secondary structure, and with it: DSSP through the
// shell (mkdssp, as the reference was made) for the classic run, DSSP's library for the batch.
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <algorithm>
#include <map>

#include "formats/structure_file.h"
#include "support.h"

namespace quarnel::test {
namespace {

// The test data's PDB files under codes of their own.
const std::pair<const char*, const char*> kFiles[] = {
    {"1a8o.pdb", "1a8o"}, {"1aki.pdb", "1aki"}, {"1crn.pdb", "1crn"}, {"1crn_alternates.pdb", "9alt"},
    {"1cuk.pdb", "1cuk"}, {"1dk8.pdb", "1dk8"}, {"1isu.pdb", "1isu"}, {"1kqf_sec.pdb", "9sec"},
    {"1lcd.pdb", "1lcd"}, {"1orc.pdb", "1orc"}, {"1p3c.pdb", "1p3c"}, {"1rmd.pdb", "1rmd"},
    {"1rmd_icode.pdb", "9ico"}, {"1ubi.pdb", "1ubi"}, {"2efj.pdb", "2efj"}, {"2yex.pdb", "2yex"},
};

std::vector<std::string> Lines(const std::string& text) {
  std::vector<std::string> lines;
  std::istringstream in(text);
  for (std::string line; std::getline(in, line);) lines.push_back(line);
  return lines;
}

std::vector<std::string> Split(const std::string& text, char separator) {
  std::vector<std::string> parts;
  std::string part;
  std::istringstream in(text);
  while (std::getline(in, part, separator)) parts.push_back(part);
  return parts;
}

// Residues, domain count and the domains as sets of segments, whatever order they are listed in.
struct Domains {
  std::string residues, count;
  std::vector<std::vector<std::string>> sets;
  bool operator==(const Domains& o) const { return residues == o.residues && count == o.count && sets == o.sets; }
};

std::ostream& operator<<(std::ostream& out, const Domains& d) {
  out << d.residues << " residues, " << d.count << " domains:";
  for (const auto& set : d.sets) {
    out << " (";
    for (const std::string& s : set) out << s << " ";
    out << ")";
  }
  return out;
}

Domains Sorted(Domains d) {
  for (auto& set : d.sets) std::sort(set.begin(), set.end());
  std::sort(d.sets.begin(), d.sets.end());
  return d;
}

Domains OfReport(std::string line) {
  while (!line.empty() && line.back() == '\n') line.pop_back();
  const std::vector<std::string> fields = Split(line, '\t');
  Domains d{fields.at(1), fields.at(2), {}};
  if (d.count != "1") {
    for (size_t open = line.find('('); open != std::string::npos; open = line.find('(', open + 1))
      d.sets.push_back(Split(line.substr(open + 1, line.find(')', open) - open - 1), ';'));
  }
  return Sorted(d);
}

Domains OfChopping(const std::string& residues, const std::string& count, const std::string& chopping) {
  Domains d{residues, count, {}};
  if (count != "1")
    for (const std::string& domain : Split(chopping, ',')) d.sets.push_back(Split(domain, '_'));
  return Sorted(d);
}

std::string JsonField(const std::string& line, const std::string& key) {
  const std::string name = "\"" + key + "\":";
  const size_t at = line.find(name);
  if (at == std::string::npos) return "(none)";
  const size_t start = at + name.size();
  if (line[start] == '"') return line.substr(start + 1, line.find('"', start + 1) - start - 1);
  return line.substr(start, line.find_first_of(",}", start) - start);
}

struct Setting {
  const char* name;
  std::vector<std::string> options;
  bool dssp;
};

void PrintTo(const Setting& setting, std::ostream* out) { *out << setting.name; }

class BatchRows : public ::testing::TestWithParam<Setting> {
 protected:
  void SetUp() override {
    if (GetParam().dssp && std::system("command -v mkdssp >/dev/null 2>&1") != 0)
      GTEST_SKIP() << "no mkdssp on PATH: the classic run needs DSSP (apt-get install dssp)";
    ASSERT_EQ(mkdir((work_ / "pdb").c_str(), 0755), 0);
    for (const auto& [file, code] : kFiles) {
      const std::string text = ReadFile(DataFile(file));
      WriteFile(work_ / ("pdb/" + std::string(code) + ".pdb"), text);
      const StructureFile structure = StructureFile::FromBytes(file, text);
      for (const ChainInfo& chain : structure.chains())
        if (chain.protein && chain.residues > 0) codes_.push_back(code + chain.id);
    }
  }

  // The classic run of each code, as a pipeline of single runs would print it.
  std::map<std::string, std::string> ClassicReports() {
    const std::string adapter = SourceDir() + "/tools/quarnel-dssp";
    std::map<std::string, std::string> reports;
    for (const std::string& code : codes_) {
      std::vector<std::string> args = GetParam().options;
      args.insert(args.end(), {"-pdbpath", "pdb/", code});
      const ToolRun run = RunTool(work_.path(), args, GetParam().dssp ? adapter.c_str() : nullptr);
      EXPECT_EQ(run.status, 0) << code << ": " << run.err;
      EXPECT_EQ(run.err, "") << code;
      reports[code] = run.out;
    }
    return reports;
  }

  ToolRun Batch(std::vector<std::string> more) {
    std::vector<std::string> args = GetParam().options;
    args.insert(args.end(), more.begin(), more.end());
    return RunTool(work_.path(), args);
  }

  Scratch work_;
  std::vector<std::string> codes_;
};

TEST_P(BatchRows, BatchOfCodesPrintsTheClassicReports) {
  const std::map<std::string, std::string> classic = ClassicReports();
  std::vector<std::string> args = {"-pdbpath", "pdb/"};
  args.insert(args.end(), codes_.begin(), codes_.end());
  const ToolRun batch = Batch(args);
  EXPECT_EQ(batch.status, 0) << batch.err;
  std::string expected;
  for (const std::string& code : codes_) expected += classic.at(code);
  EXPECT_EQ(batch.out, expected);
}

TEST_P(BatchRows, TsvAndJsonRowsHoldTheClassicDomains) {
  const std::map<std::string, std::string> classic = ClassicReports();
  const ToolRun tsv = Batch({"--format", "tsv", "pdb"});
  const ToolRun json = Batch({"--format", "json", "pdb"});
  ASSERT_EQ(tsv.status, 0) << tsv.err;
  ASSERT_EQ(json.status, 0) << json.err;
  const std::vector<std::string> rows = Lines(tsv.out), objects = Lines(json.out);
  ASSERT_EQ(rows.size(), codes_.size() + 2);  // the options, the column names, one row per chain
  ASSERT_EQ(objects.size(), codes_.size() + 1);
  std::vector<std::string> sortedCodes = codes_;
  std::sort(sortedCodes.begin(), sortedCodes.end());  // a folder is read in path order
  for (size_t i = 0; i < sortedCodes.size(); ++i) {
    const std::vector<std::string> row = Split(rows[i + 2], '\t');
    const std::string& object = objects[i + 1];
    SCOPED_TRACE(sortedCodes[i]);
    ASSERT_EQ(row.at(0), sortedCodes[i]);
    const Domains expected = OfReport(classic.at(sortedCodes[i]));
    EXPECT_EQ(OfChopping(row.at(2), row.at(3), row.at(4)), expected);
    EXPECT_EQ(JsonField(object, "chain_id"), row.at(0));
    EXPECT_EQ(JsonField(object, "sequence_md5"), row.at(1));
    EXPECT_EQ(OfChopping(JsonField(object, "nres"), JsonField(object, "ndom"), JsonField(object, "chopping")),
              expected);
    EXPECT_EQ(JsonField(object, "confidence"), row.at(5) == "NULL" ? "null" : row.at(5));
    EXPECT_EQ(JsonField(object, "verdict"), row.at(7));
  }
}

// One chain's residue rows: the count its block line gives, and each row's residue and label.
struct ResidueBlock {
  std::string entry, count;
  std::vector<std::pair<std::string, std::string>> rows;
};

std::vector<ResidueBlock> ResidueBlocks(const std::string& text) {
  std::vector<ResidueBlock> blocks;
  const std::vector<std::string> lines = Lines(text);
  for (size_t i = 2; i < lines.size(); ++i) {
    const std::vector<std::string> fields = Split(lines[i], '\t');
    if (lines[i].rfind("# chain_id ", 0) == 0) {
      blocks.push_back({fields.at(0).substr(11), fields.at(3).substr(9), {}});
    } else if (!blocks.empty() && fields.size() == 5 && fields[0] == blocks.back().entry) {
      blocks.back().rows.emplace_back(fields[2], fields[4]);
    } else {
      ADD_FAILURE() << "not a residue row of the chain above: " << lines[i];
    }
  }
  return blocks;
}

// The domains the labels make: each run of residues with one label a segment; the labels 1, 2,
// ... in the order of the domains' first residues, as the chopping lists them.
Domains OfLabels(const ResidueBlock& block) {
  std::vector<std::vector<std::string>> sets;
  const auto& rows = block.rows;
  for (size_t i = 0; i < rows.size(); ++i) {
    const int label = std::stoi(rows[i].second);
    if (label == 0) continue;
    if (label == static_cast<int>(sets.size()) + 1) sets.emplace_back();
    EXPECT_LE(label, static_cast<int>(sets.size())) << "label " << label << " before its turn at " << rows[i].first;
    if (label > static_cast<int>(sets.size())) break;
    if (i > 0 && rows[i - 1].second == rows[i].second) {
      std::string& segment = sets[label - 1].back();
      segment = segment.substr(0, segment.rfind('-', segment.size() - 1)) + "-" + rows[i].first;
    } else {
      sets[label - 1].push_back(rows[i].first + "-" + rows[i].first);
    }
  }
  const std::string count = std::to_string(std::max<size_t>(sets.size(), 1));
  return Sorted(Domains{std::to_string(rows.size()), count, count == "1" ? decltype(sets)() : sets});
}

// Up to four domains, most chains cut in a relaxed run: domains of several segments, listed in
// another order than the partition numbered them.
TEST_P(BatchRows, ResidueRowsGroupedByLabelAreTheTsvDomains) {
  const ToolRun tsv = Batch({"-md", "4", "--format", "tsv", "pdb"});
  const ToolRun residues = Batch({"-md", "4", "--format", "residues", "pdb"});
  ASSERT_EQ(tsv.status, 0) << tsv.err;
  ASSERT_EQ(residues.status, 0) << residues.err;
  const std::vector<std::string> rows = Lines(tsv.out);
  const std::vector<ResidueBlock> blocks = ResidueBlocks(residues.out);
  ASSERT_EQ(blocks.size() + 2, rows.size());
  for (size_t i = 0; i < blocks.size(); ++i) {
    const std::vector<std::string> row = Split(rows[i + 2], '\t');
    SCOPED_TRACE(row.at(0));
    EXPECT_EQ(blocks[i].entry, row.at(0));
    EXPECT_EQ(blocks[i].count, row.at(2));
    EXPECT_EQ(OfLabels(blocks[i]), OfChopping(row.at(2), row.at(3), row.at(4)));
  }
}

INSTANTIATE_TEST_SUITE_P(Modes, BatchRows,
                         ::testing::Values(Setting{"WithoutSecondaryStructure", {"-noss"}, false},
                                           Setting{"WithDssp", {}, true}),
                         [](const ::testing::TestParamInfo<Setting>& setting) { return setting.param.name; });

}  // namespace
}  // namespace quarnel::test
