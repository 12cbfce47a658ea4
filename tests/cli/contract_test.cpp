// The command-line contract, one row per case: files placed in a scratch working folder, the
// arguments and DSSP_PATH, then the exit status, standard output, standard error and the files
// left in the folder. DSSP is a stand-in script that prints a stored table, so the shell path,
// the reuse of an earlier DSSP output and its removal are checked without a real DSSP.
#include <sys/stat.h>

#include <gtest/gtest.h>

#include "support.h"

namespace quarnel::test {
namespace {

// `from`: "data:<file>" copies a bundled file, "folder" makes a folder, anything else is the
// file's text (a script when it starts with "#!").
struct Place {
  std::string path, from;
};

const char kStandInDssp[] = "#!/bin/sh\n[ -f \"$1\" ] && cat stored.dssp\n";
const char kDsspUnset[] = "DSSP excutable ($DSSP_PATH) undefined. Quit!\n";
const char kDsspHint[] =
    "quarnel: DSSP is built into quarnel: add --dssp builtin to use it, or set DSSP_PATH to a "
    "DSSP program\n";
const char kNoResidue[] =
    "Something is wrong!!! please check the following:\n Is the pdb file name in the xxxx.pdb "
    "format?\n Have you specified the chain name if the protein has multiple chains?\n";
// 1rmd -md 3 with DSSP's table, and without any.
const char kWithTable[] = "1rmd\t116\t3\t (34-76) (1-33;77-87) (88-116)\n";
const char kWithoutTable[] = "1rmd\t116\t3\t (34-76) (1-33;77-88) (89-116)\n";

struct ContractRow {
  const char* name;
  std::vector<Place> place;
  std::vector<std::string> args;
  const char* dssp;  // DSSP_PATH; nullptr: not set
  int status;
  std::string out, err, left;
};

const std::vector<Place> kStandIn = {{"1rmd.pdb", "data:1rmd.pdb"}, {"stored.dssp", "data:1rmd.dssp"},
                                     {"fake-dssp", kStandInDssp}};

const ContractRow kRows[] = {
    {"no argument: usage", {}, {}, nullptr, 0,
     "Usage: quarnel [-md n] [-ex r1 r2] ... file-name\n  e.g., quarnel 16pk.pdb\n", "", ""},
    {"-ex without two values before the input", {}, {"-noss", "-ex", "1crn.pdb"}, nullptr, 2, "",
     "quarnel: option -ex needs two values before the input name\n", ""},
    {"a code whose file is missing: where else it was looked for", {}, {"-noss", "9xyz"}, nullptr, 9,
     "Unable to open ./9xyz.pdb. QUIT ...\n",
     "quarnel: no file for code 9xyz under ./, also looked for as .cif, .cif.gz, .pdb.gz, .ent.gz "
     "and pdb<code>.ent.gz, in any letter case and in the archive's divided layout\n", ""},
    {"a code without chain letter of a two-chain file: the chains named", {{"1isu.pdb", "data:1isu.pdb"}},
     {"-noss", "1isu"}, nullptr, 15, kNoResidue,
     "quarnel: 1isu names no chain of ./1isu.pdb, which holds chains A, B: name one with its letter "
     "(1isuA), or use --chain ID or --each-chain\n", "1isu.pdb"},
    {"a code with a chain: its copy is left", {{"1isu.pdb", "data:1isu.pdb"}}, {"-noss", "1isuB"}, nullptr, 0,
     "1isuB\t62\t1\n", "", "1isu.pdb 1isub.pdb"},
    {"the chain copy cannot be created", {{"1isu.pdb", "data:1isu.pdb"}, {"1isub.pdb", "folder"}},
     {"-noss", "1isuB"}, nullptr, 7, "Unable to open ./1isub.pdb: Quit!\n", "", "1isu.pdb 1isub.pdb/"},
    {"a chain that does not occur", {{"1isu.pdb", "data:1isu.pdb"}}, {"-noss", "1isuC"}, nullptr, 0,
     "1isuC\t0\t1\n", "", "1isu.pdb 1isuc.pdb"},
    {"a multi-model code: the first-model copy is left", {{"1lcd.pdb", "data:1lcd.pdb"}}, {"-noss", "1lcd"},
     nullptr, 0, "1lcd\t73\t1\n", "", "1lcd.pdb 1lcd_nmr.pdb"},
    {"the model copy cannot be created: the file itself is read",
     {{"1lcd.pdb", "data:1lcd.pdb"}, {"1lcd_nmr.pdb", "folder"}}, {"-noss", "1lcd"}, nullptr, 0,
     "Unable to open 1lcd_nmr.pdb: WARNING3\n1lcd\t73\t1\n", "", "1lcd.pdb 1lcd_nmr.pdb/"},
    {"a path is cut at its first dot", {{"1crn.pdb", "data:1crn.pdb"}}, {"-noss", "./1crn.pdb"}, nullptr, 0,
     "\t46\t1\n", "", "1crn.pdb"},
    {"too few atoms per residue", {{"ca.pdb",
      "ATOM      1  CA  GLY A   1      11.000  10.000  10.000\n"
      "ATOM      2  CA  GLY A   2      14.800  10.000  10.000\n"
      "ATOM      3  CA  GLY A   3      18.600  10.000  10.000\n"}},
     {"-noss", "ca.pdb"}, nullptr, 100, "", "Missing sidechain atoms for ca.pdb\n(3 atoms in 3 residues), Quit!\n",
     "ca.pdb"},
    {"gzip is read, nothing written", {{"2w83_c.pdb.gz", "data:formats/2w83_c.pdb.gz"}},
     {"-noss", "2w83_c.pdb.gz"}, nullptr, 0, "2w83_c\t8\t1\n", "", "2w83_c.pdb.gz"},
    {"mmCIF is read, one chain", {{"2w83_c.cif", "data:formats/2w83_c.cif"}},
     {"-noss", "--chain", "C", "2w83_c.cif"}, nullptr, 0, "2w83_cC\t8\t1\n", "", "2w83_c.cif"},
    {"a chain that is not there: the chains named, nothing written", {{"1isu.pdb", "data:1isu.pdb"}},
     {"-noss", "--chain", "Z", "1isu.pdb"}, nullptr, 3, "",
     "quarnel: 1isu.pdb: no chain Z (chains: A, B)\nquarnel: 1 of 1 chain failed\n", "1isu.pdb"},
    {"several inputs: each reported, nothing written",
     {{"1crn.pdb", "data:1crn.pdb"}, {"1isu.pdb", "data:1isu.pdb"}}, {"-noss", "1crn.pdb", "1isu.pdb"},
     nullptr, 0, "1crnA\t46\t1\n1isuA\t62\t1\n1isuB\t62\t1\n", "", "1crn.pdb 1isu.pdb"},
    {"a text file in a batch: named, with the reason", {{"notes.txt", "no atoms here\n"}},
     {"--each-chain", "notes.txt"}, nullptr, 3, "",
     "quarnel: notes.txt: holds no atoms (no ATOM or HETATM records, no mmCIF data block)\n"
     "quarnel: 1 of 1 chain failed\n", "notes.txt"},
    {"a code kept in the archive's divided layout, gzip", {{"w8/2w83.pdb.gz", "data:formats/2w83_c.pdb.gz"}},
     {"-noss", "2w83C"}, nullptr, 0, "2w83C\t8\t1\n", "", "w8/"},
    {"a predicted model: low-confidence residues left out", {{"1crn.pdb", "data:1crn.pdb"}},
     {"-noss", "--min-plddt", "5", "1crn.pdb"}, nullptr, 0, "1crnA\t28\t1\n",
     "quarnel: 1crnA: left out 18 of 46 residues below pLDDT 5\n", "1crn.pdb"},
    {"a mistyped long option: a hint", {}, {"--chian", "A", "x.pdb"}, nullptr, 2, "",
     "quarnel: unknown option --chian\nquarnel: did you mean --chain? ('quarnel --help' lists "
     "every option)\n", ""},
    {"user anchors not found", {{"1cuk.pdb", "data:1cuk.pdb"}}, {"-noss", "-ex", "5", "999", "1cuk.pdb"}, nullptr,
     10, "Extremal points unfound (5, 999). Quit!\n", "", "1cuk.pdb"},
    {"DSSP_PATH not set", {{"1rmd.pdb", "data:1rmd.pdb"}}, {"-md", "3", "1rmd.pdb"}, nullptr, 1, kDsspUnset,
     kDsspHint, "1rmd.pdb"},
    {"the built-in DSSP: the same table, nothing written", {{"1rmd.pdb", "data:1rmd.pdb"}},
     {"--dssp", "builtin", "-md", "3", "1rmd.pdb"}, nullptr, 0, kWithTable, "", "1rmd.pdb"},
    {"DSSP's table is read, then its output removed", kStandIn, {"-md", "3", "1rmd.pdb"}, "./fake-dssp", 0,
     kWithTable, "", "1rmd.pdb dssp.log fake-dssp stored.dssp"},
    {"file names reach the shell as one word",
     {{"my 1'rmd.pdb", "data:1rmd.pdb"}, {"stored.dssp", "data:1rmd.dssp"}, {"fake-dssp", kStandInDssp}},
     {"-md", "3", "my 1'rmd.pdb"}, "./fake-dssp", 0, "my 1'rmd\t116\t3\t (34-76) (1-33;77-87) (88-116)\n", "",
     "dssp.log fake-dssp my 1'rmd.pdb stored.dssp"},
    {"a DSSP that fails: no secondary structure, and a hint", {{"1rmd.pdb", "data:1rmd.pdb"}}, {"-md", "3", "1rmd.pdb"},
     "false", 0, kWithoutTable,
     "quarnel: 1rmd.dssp holds no residue table: DSSP failed (its messages are in dssp.log); the run goes on "
     "without secondary structure; --dssp builtin uses the DSSP built into quarnel\n", "1rmd.pdb dssp.log"},
    {"a DSSP output beside a named file is not reused", {{"1rmd.pdb", "data:1rmd.pdb"}, {"1rmd.dssp", "data:1rmd.dssp"}},
     {"-md", "3", "1rmd.pdb"}, nullptr, 1, kDsspUnset, kDsspHint, "1rmd.dssp 1rmd.pdb"},
    {"a code's earlier DSSP output is reused, then removed",
     {{"1rmd.pdb", "data:1rmd.pdb"}, {"1rmd.dssp", "data:1rmd.dssp"}}, {"-md", "3", "1rmd"}, nullptr, 0, kWithTable,
     "", "1rmd.pdb"},
    {"-noss removes no DSSP output it did not write",
     {{"1rmd.pdb", "data:1rmd.pdb"}, {"1rmd.dssp", "data:1rmd.dssp"}}, {"-noss", "-md", "3", "1rmd.pdb"}, nullptr, 0,
     kWithoutTable, "", "1rmd.dssp 1rmd.pdb"},
};

TEST(CommandLine, Contract) {
  for (const ContractRow& row : kRows) {
    SCOPED_TRACE(row.name);
    Scratch scratch;
    for (const Place& place : row.place) {
      const std::string path = scratch / place.path;
      const size_t slash = place.path.rfind('/');
      if (slash != std::string::npos) mkdir((scratch / place.path.substr(0, slash)).c_str(), 0755);
      if (place.from == "folder") {
        ASSERT_EQ(mkdir(path.c_str(), 0755), 0);
      } else if (place.from.rfind("data:", 0) == 0) {
        WriteFile(path, ReadFile(DataFile(place.from.substr(5))));
      } else {
        WriteFile(path, place.from);
        if (place.from.rfind("#!", 0) == 0) chmod(path.c_str(), 0755);
      }
    }
    const ToolRun run = RunTool(scratch.path(), row.args, row.dssp);
    EXPECT_EQ(run.status, row.status);
    EXPECT_EQ(run.out, row.out);
    EXPECT_EQ(run.err, row.err);
    EXPECT_EQ(scratch.Listing(), row.left);
  }
}

// quarnel alone runs every classic command; a run that needs DSSP's library, with no
// quarnel-full beside it, says where it looked and ends with status 1, writing nothing.
TEST(CommandLine, AloneWithoutTheFullProgram) {
  Scratch bin, work;
  const std::string tool = bin / "quarnel";
  WriteFile(tool, ReadFile(Setting("QUARNEL_BIN", QUARNEL_TOOL)));
  chmod(tool.c_str(), 0755);
  WriteFile(work / "1rmd.pdb", ReadFile(DataFile("1rmd.pdb")));
  const char* before = std::getenv("QUARNEL_BIN");
  const std::string saved = before != nullptr ? before : "";
  setenv("QUARNEL_BIN", tool.c_str(), 1);
  const ToolRun classic = RunTool(work.path(), {"-noss", "-md", "3", "1rmd.pdb"});
  const ToolRun builtin = RunTool(work.path(), {"--dssp", "builtin", "1rmd.pdb"});
  if (before != nullptr) setenv("QUARNEL_BIN", saved.c_str(), 1); else unsetenv("QUARNEL_BIN");
  EXPECT_EQ(classic.status, 0);
  EXPECT_EQ(classic.out, kWithoutTable);
  EXPECT_EQ(builtin.status, 1);
  EXPECT_EQ(builtin.out, "");
  EXPECT_EQ(builtin.err, "quarnel: DSSP's library is in " + (bin / "quarnel-full") +
                             ", which cannot be run (No such file or directory); set DSSP_PATH "
                             "to a DSSP program, or add -noss\n");
  EXPECT_EQ(work.Listing(), "1rmd.pdb");
}

}  // namespace
}  // namespace quarnel::test
