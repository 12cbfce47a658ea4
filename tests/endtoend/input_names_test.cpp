// How the input name becomes the structure read, the entry reported and the files written: PDB
// codes with and without a chain letter, named files, and what is left behind after a run.
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <cstdlib>
#include <string>
#include <vector>

#include "endtoend_support.h"
#include "run/textio.h"

namespace {

// A chain copy or a first-model copy: the ATOM records up to the first END or ENDMDL line
// (only those of `chain` when one is given), exactly as read, then "TER" and "END".
std::string ExpectedCopy(const std::string& dataFile, char chain) {
  std::string copy;
  for (const std::string& line : SplitLines(ReadFile(DataPath(dataFile)))) {
    bool atom = line.compare(0, 6, "ATOM  ") == 0;
    if (atom && (chain == kAnyChain || (line.size() > 21 && line[21] == chain))) copy += line;
    if (line.compare(0, 3, "END") == 0) break;
  }
  return copy + "TER\nEND\n";
}

std::string Succeeded(const ToolRun& run) {
  EXPECT_EQ(run.status, 0) << run.out << run.err;
  EXPECT_EQ(run.err, "");
  return run.out;
}

// The line a named copy of 1rmd gives with DSSP and -md 3, and the one it gives without DSSP.
struct Reference {
  std::string withDssp;
  std::string withoutDssp;
};

Reference RelaxedReference() {
  TempDir dir;
  CopyStructure("1rmd.pdb", dir, "1rmd.pdb");
  Reference reference{Succeeded(RunWithDssp({"-md", "3", "1rmd.pdb"}, dir.path())),
                      Succeeded(RunTool({"-noss", "-md", "3", "1rmd.pdb"}, dir.path()))};
  EXPECT_NE(reference.withDssp, reference.withoutDssp)
      << "the strands of 1rmd no longer change its cuts: the DSSP checks below prove nothing";
  return reference;
}

// A stand-in for DSSP that leaves a mark when it runs and fails.
std::string MarkingDssp(const TempDir& dir) {
  std::string script = dir.File("marking-dssp");
  WriteFile(script, "#!/bin/sh\ntouch '" + dir.File("dssp-was-run") + "'\nexit 1\n");
  chmod(script.c_str(), 0755);
  return script;
}

TEST(CodePath, ChainLetterSelectsTheChainAndNamesTheEntryAsTyped) {
  Reference reference = RelaxedReference();
  for (const std::string& name : {std::string("1rmdA"), std::string("1rmda")}) {
    SCOPED_TRACE(name);
    TempDir dir;
    CopyStructure("1rmd.pdb", dir, "pdb/1rmd.pdb");
    std::string line = Succeeded(RunWithDssp({"-md", "3", "-pdbpath", "pdb/", name}, dir.path()));
    // The chain copy holds the same residues as the file: the same cuts, under the typed name.
    EXPECT_EQ(line, WithEntry(reference.withDssp, name));
    EXPECT_EQ(ReadFile(dir.File("1rmda.pdb")), ExpectedCopy("1rmd.pdb", 'A'));
    EXPECT_FALSE(FileExists(dir.File(name + ".dssp")));
    EXPECT_TRUE(FileExists(dir.File("dssp.log")));
    EXPECT_TRUE(FileExists(dir.File("pdb/1rmd.pdb")));
  }
}

TEST(CodePath, ChainLetterSelectsOneChainOfSeveral) {
  TempDir dir;
  CopyStructure("1isu.pdb", dir, "pdb/1isu.pdb");
  EXPECT_EQ(Succeeded(RunWithDssp({"-pdbpath", "pdb/", "1isuB"}, dir.path())), "1isuB\t62\t1\n");
  std::string copy = ReadFile(dir.File("1isub.pdb"));
  EXPECT_EQ(copy, ExpectedCopy("1isu.pdb", 'B'));
  EXPECT_EQ(ListResidues(copy).size(), 62u);
  for (const ResidueLabel& residue : ListResidues(copy)) EXPECT_EQ(residue.chain, 'B');
}

// 1lcd: three NMR models of a protein chain (A, 51 residues) bound to two DNA strands (B, C).
TEST(CodePath, FourCharacterCodeOfAnNmrEntryWritesTheFirstModel) {
  TempDir dir;
  CopyStructure("1lcd.pdb", dir, "pdb/1lcd.pdb");
  EXPECT_EQ(Succeeded(RunWithDssp({"-pdbpath", "pdb/", "1lcd"}, dir.path())), "1lcd\t73\t1\n");
  // The model copy is named after the input name alone, in the working directory.
  std::string copy = ReadFile(dir.File("1lcd_nmr.pdb"));
  EXPECT_EQ(copy, ExpectedCopy("1lcd.pdb", kAnyChain));
  EXPECT_EQ(ListResidues(copy).size(), 73u);
  EXPECT_FALSE(FileExists(dir.File("1lcd.dssp")));

  EXPECT_EQ(Succeeded(RunWithDssp({"-pdbpath", "pdb/", "1lcdA"}, dir.path())), "1lcdA\t51\t1\n");
  EXPECT_EQ(ReadFile(dir.File("1lcda.pdb")), ExpectedCopy("1lcd.pdb", 'A'));
}

// DSSP's output for a code may already be in the working directory (from an earlier run): it is
// read as it is, DSSP is not run and DSSP_PATH is not needed, and the file goes at the end.
TEST(CodePath, ExistingDsspOutputIsReadInsteadOfRunningDssp) {
  Reference reference = RelaxedReference();
  const std::vector<std::string> args = {"-md", "3", "-pdbpath", "pdb/", "1rmdA"};
  for (bool dsspPathSet : {true, false}) {
    SCOPED_TRACE(dsspPathSet ? "DSSP_PATH names a failing DSSP" : "DSSP_PATH unset");
    TempDir dir;
    CopyStructure("1rmd.pdb", dir, "pdb/1rmd.pdb");
    std::string command = "cd " + ShellQuote(dir.path()) + " && " + ShellQuote(DsspAdapter()) +
                          " pdb/1rmd.pdb > 1rmdA.dssp 2>/dev/null";
    ASSERT_EQ(std::system(command.c_str()), 0);

    std::vector<std::string> environment;
    if (dsspPathSet) environment.push_back("DSSP_PATH=" + MarkingDssp(dir));
    std::string line = Succeeded(RunTool(args, dir.path(), environment));
    // Only the strands of the file that was there give the DSSP result; DSSP itself never ran.
    EXPECT_EQ(line, WithEntry(reference.withDssp, "1rmdA"));
    EXPECT_FALSE(FileExists(dir.File("dssp-was-run")));
    EXPECT_FALSE(FileExists(dir.File("1rmdA.dssp")));
  }
}

TEST(CodePath, MissingPdbFileOfACode) {
  TempDir dir;
  ToolRun run = RunWithDssp({"9xyz"}, dir.path());
  EXPECT_EQ(run.status, 9);
  EXPECT_EQ(run.out, "Unable to open ./9xyz.pdb. QUIT ...\n");
  ToolRun withPath = RunWithDssp({"-pdbpath", "pdb/", "9xyzA"}, dir.path());
  EXPECT_EQ(withPath.status, 9);
  EXPECT_EQ(withPath.out, "Unable to open pdb/9xyz.pdb. QUIT ...\n");
  EXPECT_FALSE(FileExists(dir.File("9xyza.pdb")));
}

// A named file's entry is its name up to the first '.', wherever that '.' stands; DSSP's output
// is named after the entry, relative to the working directory, and removed at the end.
TEST(FilePath, EntryIsTheNameUpToItsFirstDot) {
  Reference reference = RelaxedReference();
  struct Case {
    std::string path;
    std::string entry;
  };
  for (const Case& c :
       {Case{"dir.v2/1rmd.pdb", "dir"}, Case{"./1rmd.pdb", ""}, Case{"data/1rmd", "data/1rmd"}}) {
    SCOPED_TRACE(c.path);
    TempDir dir;
    CopyStructure("1rmd.pdb", dir, c.path);
    std::string line = Succeeded(RunWithDssp({"-md", "3", c.path}, dir.path()));
    EXPECT_EQ(line, WithEntry(reference.withDssp, c.entry));
    EXPECT_FALSE(FileExists(dir.File(c.entry + ".dssp")));
    EXPECT_TRUE(FileExists(dir.File("dssp.log")));
    EXPECT_TRUE(FileExists(dir.File(c.path)));
  }
}

TEST(FilePath, EmptyEntryLineStartsWithATab) {
  TempDir dir;
  CopyStructure("1crn.pdb", dir, "1crn.pdb");
  EXPECT_EQ(Succeeded(RunWithDssp({"./1crn.pdb"}, dir.path())), "\t46\t1\n");
}

// Beside a named file, an old DSSP output is not trusted: DSSP runs again over it.
TEST(FilePath, OldDsspOutputBesideANamedFileIsOverwritten) {
  Reference reference = RelaxedReference();
  TempDir dir;
  CopyStructure("1rmd.pdb", dir, "1rmd.pdb");
  WriteFile(dir.File("1rmd.dssp"), "not a DSSP file\n");
  EXPECT_EQ(Succeeded(RunWithDssp({"-md", "3", "1rmd.pdb"}, dir.path())), reference.withDssp);
  EXPECT_FALSE(FileExists(dir.File("1rmd.dssp")));
}

// Without DSSP the run writes no DSSP output, so it removes none: a file of that name that the
// user keeps there stays.
TEST(FilePath, RunWithoutDsspLeavesAFileNamedLikeItsOutput) {
  TempDir dir;
  CopyStructure("1rmd.pdb", dir, "1rmd.pdb");
  WriteFile(dir.File("1rmd.dssp"), "kept\n");
  EXPECT_EQ(Succeeded(RunTool({"-noss", "1rmd.pdb"}, dir.path())), "1rmd\t116\t1\n");
  EXPECT_EQ(ReadFile(dir.File("1rmd.dssp")), "kept\n");
}

}  // namespace
