// The DSSP adapter tools/quarnel-dssp, run through the shell the way quarnel runs DSSP_PATH: its
// output on real entries must be a residue table that the DSSP reader turns into strands,
// bridge partners and their fixed contact weights. DSSP is a real dependency, so these tests
// fail (they do not skip) where mkdssp is missing.
#include <gtest/gtest.h>
#include <sys/wait.h>

#include <cstdlib>
#include <fstream>
#include <sstream>
#include <string>

#include "contacts/contacts.h"
#include "run/textio.h"
#include "structure/dssp.h"
#include "structure/pdb_names.h"
#include "structure/protein.h"
#include "support/test_support.h"

namespace {

const char kTableHeader[] = "  #  RESIDUE";

struct AdapterRun {
  int status;
  std::string out;
  std::string err;
};

// `environment` is prepended to the command as NAME='value' words.
AdapterRun RunAdapter(const std::string& pdb, const std::string& environment = "") {
  TempDir capture;
  std::string command = environment + " " + ShellQuote(DsspAdapter()) + " " + ShellQuote(pdb) +
                        " > " + ShellQuote(capture.File("out")) + " 2> " +
                        ShellQuote(capture.File("err"));
  int raw = std::system(command.c_str());
  AdapterRun run;
  run.status = WIFEXITED(raw) ? WEXITSTATUS(raw) : 128;
  run.out = ReadFile(capture.File("out"));
  run.err = ReadFile(capture.File("err"));
  return run;
}

bool HasResidueTable(const std::string& text) {
  return text.find(std::string("\n") + kTableHeader) != std::string::npos;
}

// The number of table lines whose structure letter (column 17) is 'E', counted here
// independently of the reader.
int StrandLines(const std::string& text) {
  std::istringstream in(text);
  std::string line;
  bool inTable = false;
  int strands = 0;
  while (std::getline(in, line)) {
    if (!inTable) {
      inTable = line.compare(0, 12, kTableHeader) == 0;
      continue;
    }
    if (Column(line, 17) == 'E') ++strands;
  }
  return strands;
}

bool ArePartners(const Residue& a, int b) { return a.bridge1 == b || a.bridge2 == b; }

// Reads the structure and its contacts as a run does, then the adapter's output for it.
void ReadWithDssp(const std::string& pdb, const std::string& dsspFile) {
  StartCleanRun();
  TemplateName = pdb;
  GetProtein();
  ContactMatrix = ContactMalloc(ProteinSize, ProteinSize);
  ContactMatrixRows = ProteinSize;
  CalcContacts(Protein.data(), ProteinSize, ContactMatrix);
  for (Residue& r : Protein) {
    r.ss = 'L';
    r.bridge1 = -1;
    r.bridge2 = -1;
  }
  ProcessDSSP(dsspFile);
}

// Runs the adapter on `pdb` and checks what the reader makes of its output: every strand line
// lands on a residue, partners are real residues paired both ways, and the weights of strand
// neighbours and bridge partners are the fixed ones.
void CheckEntry(const std::string& pdb) {
  SCOPED_TRACE(pdb);
  AdapterRun run = RunAdapter(pdb);
  ASSERT_EQ(run.status, 0) << run.err;
  ASSERT_TRUE(HasResidueTable(run.out)) << run.out.substr(0, 300);

  TempDir dir;
  std::string dsspFile = dir.File("entry.dssp");
  WriteFile(dsspFile, run.out);
  ReadWithDssp(pdb, dsspFile);
  ASSERT_GT(ProteinSize, 0);

  int strands = 0, pairs = 0;
  for (int i = 0; i < ProteinSize; ++i) {
    const Residue& r = Protein[i];
    if (r.ss == 'E') ++strands;
    for (int partner : {r.bridge1, r.bridge2}) {
      if (partner == -1) continue;
      ASSERT_GE(partner, 0);
      ASSERT_LT(partner, ProteinSize);
      EXPECT_EQ(r.ss, 'E') << "residue " << i;
      // Only strand residues keep their partners: an isolated bridge ('B') partner does not
      // list the strand residue back (2yex: residue 145 with 66).
      if (Protein[partner].ss == 'E')
        EXPECT_TRUE(ArePartners(Protein[partner], i)) << "residues " << i << ", " << partner;
      else
        EXPECT_EQ(Protein[partner].ss, 'B') << "residues " << i << ", " << partner;
      EXPECT_EQ(ContactMatrix[i][partner].weight, kBridgeWeight) << i << ", " << partner;
      EXPECT_EQ(ContactMatrix[partner][i].weight, kBridgeWeight) << partner << ", " << i;
      ++pairs;
    }
  }
  EXPECT_EQ(strands, StrandLines(run.out));
  EXPECT_GT(strands, 0);
  EXPECT_GT(pairs, 0);

  int neighbours = 0;
  for (int i = 1; i < ProteinSize; ++i) {
    if (Protein[i - 1].ss != 'E' || Protein[i].ss != 'E') continue;
    if (ArePartners(Protein[i - 1], i) || ArePartners(Protein[i], i - 1)) continue;
    EXPECT_EQ(ContactMatrix[i - 1][i].weight, kStrandWeight) << "residues " << i - 1 << ", " << i;
    EXPECT_EQ(ContactMatrix[i][i - 1].weight, kStrandWeight) << "residues " << i << ", " << i - 1;
    ++neighbours;
  }
  EXPECT_GT(neighbours, 0);
}

// A chain copy as quarnel writes it: the ATOM records of one chain, exactly as read (2yex keeps
// its DOS line ends), then "TER" and "END".
std::string ChainCopy(const std::string& pdb, char chain) {
  std::ifstream in(pdb, std::ios::binary);
  std::string line, copy;
  while (std::getline(in, line)) {
    if (line.compare(0, 6, "ATOM  ") == 0 && Column(line, 22) == chain) copy += line + "\n";
  }
  return copy + "TER\nEND\n";
}

TEST(DsspAdapter, EntryWithHeader) { CheckEntry(DataPath("1crn.pdb")); }

// mkdssp 4 takes a file that does not open with HEADER for mmCIF and gives up on it.
TEST(DsspAdapter, EntryWithoutHeader) { CheckEntry(DataPath("1cuk.pdb")); }

TEST(DsspAdapter, ChainCopyWithDosLineEnds) {
  TempDir dir;
  std::string copy = dir.File("2yexa.pdb");
  WriteFile(copy, ChainCopy(DataPath("2yex.pdb"), 'A'));
  CheckEntry(copy);
}

// The residue lines of DSSP's table (chain-break lines not counted).
int TableResidues(const std::string& text) {
  std::istringstream in(text);
  std::string line;
  bool inTable = false;
  int residues = 0;
  while (std::getline(in, line)) {
    if (!inTable) {
      inTable = line.compare(0, 12, kTableHeader) == 0;
      continue;
    }
    if (Column(line, 14) != '!') ++residues;
  }
  return residues;
}

// Three NMR models, no HEADER, two DNA strands beside the protein chain A: DSSP sees the first
// model only, and of it the 51 amino acids.
TEST(DsspAdapter, NmrEntryWithoutHeader) {
  AdapterRun run = RunAdapter(DataPath("1lcd.pdb"));
  ASSERT_EQ(run.status, 0) << run.err;
  EXPECT_EQ(TableResidues(run.out), 51);
}

// File names reach the adapter as one shell word and must stay one word inside it.
TEST(DsspAdapter, PathWithBlanksQuotesAndShellSyntax) {
  TempDir dir;
  std::string odd = dir.File("my entry 'x';$(false) `false`.pdb");
  WriteFile(odd, ReadFile(DataPath("1crn.pdb")));
  AdapterRun run = RunAdapter(odd);
  EXPECT_EQ(run.status, 0) << run.err;
  EXPECT_TRUE(HasResidueTable(run.out));
}

TEST(DsspAdapter, Failures) {
  TempDir dir;
  std::string missing = dir.File("absent.pdb");
  AdapterRun run = RunAdapter(missing);
  EXPECT_NE(run.status, 0);
  EXPECT_EQ(run.out, "");
  EXPECT_NE(run.err.find(missing), std::string::npos) << run.err;

  std::string noAtoms = dir.File("ligand.pdb");
  WriteFile(noAtoms,
            "HEADER    LIGAND ONLY                             01-JAN-00   XXXX              \n"
            "HETATM    1  O   HOH A 301      10.000  10.000  10.000  1.00 20.00           O  \n"
            "END\n");
  run = RunAdapter(noAtoms);
  EXPECT_NE(run.status, 0);
  EXPECT_EQ(run.out, "");
  EXPECT_NE(run.err.find(noAtoms), std::string::npos) << run.err;

  // A CA-only model gives mkdssp nothing to work with: an empty table is no table.
  std::string caOnly = dir.File("ca_only.pdb");
  std::string text;
  std::ifstream in(DataPath("1crn.pdb"));
  std::string line;
  while (std::getline(in, line)) {
    if (line.compare(0, 6, "ATOM  ") == 0 && Columns(line, 13, 16) == " CA ") text += line + "\n";
  }
  WriteFile(caOnly, text);
  run = RunAdapter(caOnly);
  EXPECT_NE(run.status, 0);
  EXPECT_NE(run.err.find(caOnly), std::string::npos) << run.err;
}

// Stand-ins for other DSSP versions, named through QUARNEL_MKDSSP, show how the adapter calls
// each and what it makes of a DSSP that fails or prints no table.
class FakeDssp : public ::testing::Test {
 protected:
  std::string Install(const std::string& script) {
    std::string path = dir_.File("fake-dssp");
    WriteFile(path, "#!/bin/sh\n" + script);
    std::string chmod = "chmod +x " + ShellQuote(path);
    EXPECT_EQ(std::system(chmod.c_str()), 0);
    return "QUARNEL_MKDSSP=" + ShellQuote(path);
  }
  std::string Pdb() {
    std::string path = dir_.File("a.pdb");
    WriteFile(path, ReadFile(DataPath("1crn.pdb")));
    return path;
  }
  TempDir dir_;
};

const char kFakeTable[] =
    "  #  RESIDUE AA STRUCTURE BP1 BP2  ACC\n"
    "    1    1 A T              0   0   75\n";

// mkdssp 2.x and 3.x print the classic format themselves when given -i and no output file.
TEST_F(FakeDssp, OldMkdsspGetsDashI) {
  std::string env = Install(
      "if [ \"$1\" = --version ]; then echo 'mkdssp version 2.2.1'; exit 0; fi\n"
      "[ \"$1\" = -i ] && [ -s \"$2\" ] && [ $# -eq 2 ] ||\n"
      "  { echo \"bad arguments: $*\" >&2; exit 3; }\n"
      "printf '" + std::string(kFakeTable) + "'\n");
  AdapterRun run = RunAdapter(Pdb(), env);
  EXPECT_EQ(run.status, 0) << run.err;
  EXPECT_EQ(run.out, kFakeTable);
}

TEST_F(FakeDssp, CurrentMkdsspGetsTheClassicFormatOption) {
  std::string env = Install(
      "if [ \"$1\" = --version ]; then echo 'mkdssp version 4.4.0'; exit 0; fi\n"
      "[ \"$1\" = --output-format ] && [ \"$2\" = dssp ] && [ $# -eq 3 ] || exit 3\n"
      "head -n 1 \"$3\" | grep -q '^HEADER' || exit 4\n"
      "printf '" + std::string(kFakeTable) + "'\n");
  AdapterRun run = RunAdapter(Pdb(), env);
  EXPECT_EQ(run.status, 0) << run.err;
  EXPECT_EQ(run.out, kFakeTable);
}

TEST_F(FakeDssp, FailingDsspIsReportedWithItsReason) {
  std::string env = Install(
      "if [ \"$1\" = --version ]; then echo 'mkdssp version 4.2.2'; exit 0; fi\n"
      "echo 'Error parsing PDB at line 6' >&2; exit 1\n");
  std::string pdb = Pdb();
  AdapterRun run = RunAdapter(pdb, env);
  EXPECT_EQ(run.status, 1);
  EXPECT_EQ(run.out, "");
  EXPECT_NE(run.err.find(pdb), std::string::npos) << run.err;
  EXPECT_NE(run.err.find("(status 1): Error parsing PDB at line 6"), std::string::npos) << run.err;
}

TEST_F(FakeDssp, OutputWithoutTableIsAFailure) {
  std::string env = Install(
      "if [ \"$1\" = --version ]; then echo 'mkdssp version 4.2.2'; exit 0; fi\n"
      "echo 'data_XXXX'\n");
  std::string pdb = Pdb();
  AdapterRun run = RunAdapter(pdb, env);
  EXPECT_EQ(run.status, 1);
  EXPECT_EQ(run.out, "");
  EXPECT_NE(run.err.find("no residue table for '" + pdb + "'"), std::string::npos) << run.err;
}

}  // namespace
