// The library against the command line: for the same inputs and options, every result is the
// command line's TSV row and JSON line; bytes, atoms and files give one result; failures carry
// the command line's status.
#include <gtest/gtest.h>

#include <algorithm>
#include <sstream>

#include "quarnel/quarnel.h"
#include "support.h"

namespace quarnel::test {
namespace {

// The TSV rows of a text, without its record line and header, time column blanked.
std::vector<std::string> Rows(const std::string& text) {
  std::vector<std::string> rows;
  std::istringstream in(text);
  for (std::string line; std::getline(in, line);) {
    if (line.empty() || line[0] == '#' || line.compare(0, 9, "chain_id\t") == 0) continue;
    std::vector<std::string> fields;
    std::istringstream cells(line);
    for (std::string cell; std::getline(cells, cell, '\t');) fields.push_back(cell);
    if (fields.size() > 6) fields[6] = "T";
    std::string row;
    for (const std::string& field : fields) row += (row.empty() ? "" : "\t") + field;
    rows.push_back(row);
  }
  return rows;
}

std::vector<std::string> Rows(const std::vector<Result>& results) {
  std::string text;
  for (const Result& result : results) text += result.tsv_row;
  return Rows(text);
}

// The residue rows of --format residues, without comment lines and header; and the same made of
// results' labels.
std::vector<std::string> ResidueRows(const std::string& text) {
  std::vector<std::string> rows;
  std::istringstream in(text);
  for (std::string line; std::getline(in, line);)
    if (!line.empty() && line[0] != '#' && line.compare(0, 9, "chain_id\t") != 0) rows.push_back(line);
  return rows;
}

std::vector<std::string> ResidueRows(const std::vector<Result>& results) {
  std::vector<std::string> rows;
  for (const Result& result : results)
    for (const ResidueDomain& label : result.labels)
      rows.push_back(result.entry + "\t" + result.chain + "\t" + label.residue.Label() + "\t" + label.name + "\t" +
                     std::to_string(label.domain));
  return rows;
}

struct OptionCase {
  const char* name;
  std::vector<std::string> args;  // the command line's
  Options options;                // the library's
};

std::vector<OptionCase> OptionCases() {
  std::vector<OptionCase> cases(7);
  cases[0] = {"defaults", {}, {}};
  cases[1] = {"noss", {"-noss"}, {}};
  cases[1].options.secondary_structure = false;
  cases[2] = {"cath", {"--mode", "cath"}, {}};
  cases[2].options.mode = Mode::kCath;
  cases[3] = {"relaxed", {"-md", "3", "-ml", "25"}, {}};
  cases[3].options.max_domains = 3;
  cases[3].options.min_domain_size = 25;
  cases[4] = {"criteria", {"-ms", "20", "-mbpair", "4", "-mt", "0.5", "-rs", "4.7", "-ca", "-bw", "3"}, {}};
  cases[4].options.min_segment_residues = 20;
  cases[4].options.max_beta_pairs = 4;
  cases[4].options.max_interface = 0.5f;
  cases[4].options.residue_separation = 4.7;
  cases[4].options.ca_contacts = true;
  cases[4].options.backbone_weight = 3.0f;
  cases[5] = {"plddt", {"--min-plddt", "20"}, {}};
  cases[5].options.min_plddt = 20.0;
  cases[6] = {"dssp builtin, noss", {"-noss", "--dssp", "builtin"}, {}};
  cases[6].options.secondary_structure = false;
  return cases;
}

const char* const kInputs[] = {"2yex.pdb", "1cuk.pdb", "1rmd_icode.pdb", "formats/2w83_c.cif",
                               "formats/2w83_c.pdb.gz", "1kqf_sec.pdb"};

TEST(Chopper, EveryResultIsTheCommandLinesRow) {
  Scratch scratch;
  const std::vector<OptionCase> cases = OptionCases();
  for (const OptionCase& c : cases) {
    std::vector<std::string> args = c.args;
    args.insert(args.end(), {"--format", "tsv", "--quiet"});
    std::vector<std::string> paths;
    for (const char* input : kInputs) paths.push_back(DataFile(input));
    args.insert(args.end(), paths.begin(), paths.end());
    const ToolRun run = RunTool(scratch.path(), args);
    const std::vector<Result> results = Chopper(c.options).ChopAll(paths, 2);
    EXPECT_EQ(Rows(results), Rows(run.out)) << c.name << "\n" << run.err;
    // Labels against residue rows where residues may be left out, and where they are not.
    if (c.options.min_plddt || &c == &cases.front()) {
      std::vector<std::string> residueArgs = args;
      residueArgs[std::find(args.begin(), args.end(), "tsv") - args.begin()] = "residues";
      EXPECT_EQ(ResidueRows(results), ResidueRows(RunTool(scratch.path(), residueArgs).out)) << c.name;
    }
    for (const Result& result : results) {
      SCOPED_TRACE(std::string(c.name) + " " + result.entry);
      ASSERT_TRUE(result.ok()) << result.error;
      // Labels: one per residue, and the residues of each domain are its segments'.
      EXPECT_EQ(static_cast<int>(result.labels.size()), result.residues + result.left_out);
      std::vector<int> counted(result.domains.size() + 1, 0);
      for (const ResidueDomain& label : result.labels) ++counted.at(static_cast<size_t>(label.domain));
      for (size_t k = 0; k < result.domains.size(); ++k) EXPECT_EQ(counted[k + 1], result.domains[k].residues);
      std::string chopping;
      for (const Domain& domain : result.domains) {
        std::string segments;
        for (const Range& range : domain.segments)
          segments += (segments.empty() ? "" : "_") + range.first.Label() + "-" + range.last.Label();
        chopping += (chopping.empty() ? "" : ",") + segments;
      }
      EXPECT_EQ(chopping, result.chopping);
      // Boundaries are the accuracy mode's, at least one between two domains; cuts the classic
      // search's.
      if (result.mode == Mode::kCath) EXPECT_GE(result.boundaries.size() + 1, result.domains.size());
      if (result.mode == Mode::kClassic) EXPECT_TRUE(result.boundaries.empty());
      if (result.mode == Mode::kCath) EXPECT_TRUE(result.cuts.empty());
    }
  }
}

TEST(Chopper, OneChainByPathBytesOrAtoms) {
  const Chopper chopper;
  const std::vector<Result> byPath = chopper.ChopFile(DataFile("2yex.pdb"), "A");
  ASSERT_EQ(byPath.size(), 1u);
  EXPECT_EQ(byPath[0].chopping, "2-86,87-270");
  EXPECT_EQ(byPath[0].verdict, "accepted after merging");
  ASSERT_TRUE(byPath[0].confidence.has_value());
  EXPECT_NEAR(*byPath[0].confidence, 0.835, 0.0005);
  EXPECT_EQ(byPath[0].cuts.size(), 2u);  // three domains found, the last cut undone

  // Bytes in memory: the file's result but for the name it goes by.
  for (const char* name : {"2yex.pdb", "formats/2w83_c.pdb.gz", "formats/1lcd_trim.cif"}) {
    const std::vector<Result> byBytes = chopper.ChopBytes(ReadFile(DataFile(name)), name);
    const std::vector<Result> fromFile = chopper.ChopFile(DataFile(name));
    ASSERT_EQ(byBytes.size(), fromFile.size()) << name;
    for (size_t k = 0; k < byBytes.size(); ++k) {
      const std::string& a = byBytes[k].json_line;
      const std::string& b = fromFile[k].json_line;
      EXPECT_EQ(a.substr(a.find("\"nres\""), a.find("\"time_sec\"") - a.find("\"nres\"")),
                b.substr(b.find("\"nres\""), b.find("\"time_sec\"") - b.find("\"nres\""))) << name;
    }
  }

  // Atoms read from the PDB text as any program would: the same chain, the same result.
  std::vector<PdbAtom> atoms;
  std::istringstream in(ReadFile(DataFile("2yex.pdb")));
  for (std::string line; std::getline(in, line);) {
    if (line.compare(0, 6, "ENDMDL") == 0) break;
    if (line.compare(0, 4, "ATOM") != 0 || line.size() < 66 || line[21] != 'A') continue;
    PdbAtom atom;
    atom.name = line.substr(12, 4);
    atom.altloc = line[16];
    atom.residue_name = line.substr(17, 3);
    atom.chain = line[21];
    atom.residue = ResidueId{std::stoi(line.substr(22, 4)), line[26]};
    atom.x = std::stod(line.substr(30, 8));
    atom.y = std::stod(line.substr(38, 8));
    atom.z = std::stod(line.substr(46, 8));
    atom.occupancy = std::stod(line.substr(54, 6));
    atom.b_factor = std::stod(line.substr(60, 6));
    atom.element = line.size() >= 78 ? line.substr(76, 2) : "";
    atom.element.erase(0, atom.element.find_first_not_of(' '));
    atoms.push_back(atom);
  }
  const Result byAtoms = chopper.ChopAtoms(atoms, "2yexA");
  EXPECT_EQ(byAtoms.chopping, byPath[0].chopping);
  EXPECT_EQ(byAtoms.sequence_md5, byPath[0].sequence_md5);
  EXPECT_EQ(byAtoms.confidence, byPath[0].confidence);
}

// 2yex with its B-factors made one value per residue, as a predicted model's pLDDT, and a DNA
// chain after it.
std::string ModelWithWater() {
  std::string text;
  std::istringstream in(ReadFile(DataFile("2yex.pdb")));
  for (std::string line; std::getline(in, line);) {
    if (line.compare(0, 4, "ATOM") != 0 || line.size() < 66) continue;
    const int residue = std::stoi(line.substr(22, 4));
    char bfactor[8];
    std::snprintf(bfactor, sizeof bfactor, "%6.2f", 30.0 + (residue * 37) % 70);
    text += line.substr(0, 60) + bfactor + (line.size() > 66 ? line.substr(66) : "") + "\n";
  }
  text += "TER\n"
          "ATOM   9000  P    DA W   1      11.104   6.134  -6.504  1.00 50.00           P\n"
          "ATOM   9001  C1'  DA W   1      12.104   6.134  -6.504  1.00 50.00           C\n"
          "ATOM   9002  P    DT W   2      15.104   6.134  -6.504  1.00 50.00           P\n"
          "TER\nEND\n";
  return text;
}

TEST(Chopper, NotesHaveTheirKinds) {
  const std::string model = ModelWithWater();
  Options filtered;
  filtered.min_plddt = 50.0;
  const struct {
    Options options;
    std::vector<Note::Kind> kinds;
  } kCases[] = {
      {Options{}, {Note::Kind::kSkipped, Note::Kind::kPredictedModel}},
      {filtered, {Note::Kind::kLeftOut, Note::Kind::kSkipped}},
  };
  for (const auto& c : kCases) {
    const std::vector<Result> results = Chopper(c.options).ChopBytes(model, "model.pdb");
    ASSERT_EQ(results.size(), 1u);
    std::vector<Note::Kind> kinds;
    for (const Note& note : results[0].notes) kinds.push_back(note.kind);
    std::sort(kinds.begin(), kinds.end());
    std::vector<Note::Kind> expected = c.kinds;
    std::sort(expected.begin(), expected.end());
    EXPECT_EQ(kinds, expected) << results[0].notes.size() << " notes, first: "
                               << (results[0].notes.empty() ? "" : results[0].notes[0].text);
  }
}

TEST(Chopper, SecondaryStructureOfTheCallersDssp) {
  const SecondaryTable table = ReadDsspOutput(ReadFile(DataFile("1crn.dssp")));
  ASSERT_EQ(table.size(), 46u);
  EXPECT_EQ(table[6].residue.number, 7);
  EXPECT_EQ(table[6].structure, 'H');
  EXPECT_THROW(ReadDsspOutput("not DSSP"), Error);
}

TEST(Chopper, FailuresCarryTheCommandLinesStatus) {
  Scratch scratch;
  WriteFile(scratch / "empty.pdb", "");
  WriteFile(scratch / "water.pdb",
            "HETATM    1  O   HOH W   1      11.104   6.134  -6.504  1.00  0.00           O\nEND\n");
  Options cathRelaxed;
  cathRelaxed.mode = Mode::kCath;
  cathRelaxed.max_domains = 2;
  try {
    Chopper refused(cathRelaxed);
    ADD_FAILURE() << "a relaxed accuracy run was accepted";
  } catch (const Error& error) {
    EXPECT_EQ(error.status(), 2);
  }
  const struct {
    std::string path, chain, reason;
  } kFailures[] = {
      {scratch / "missing.pdb", "", "missing.pdb"},
      {scratch / "empty.pdb", "", "empty.pdb"},
      {scratch / "water.pdb", "", "no protein chain"},
      {DataFile("2yex.pdb"), "Q", "no chain Q"},
  };
  const Chopper chopper;
  for (const auto& failure : kFailures) {
    SCOPED_TRACE(failure.path + " " + failure.chain);
    std::vector<std::string> args = {"--format", "tsv", failure.path};
    if (!failure.chain.empty()) args.insert(args.begin(), {"--chain", failure.chain});
    const ToolRun run = RunTool(scratch.path(), args);
    try {
      chopper.ChopFile(failure.path, failure.chain);
      ADD_FAILURE() << "no error";
    } catch (const Error& error) {
      EXPECT_NE(std::string(error.what()).find(failure.reason), std::string::npos) << error.what();
      EXPECT_EQ(error.status(), run.status) << run.err;
    }
  }
}

}  // namespace
}  // namespace quarnel::test
