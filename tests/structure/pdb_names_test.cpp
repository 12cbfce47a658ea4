// Input names on the PDB-code path: the names formed from a code, and the chain and first-model
// copies written from the PDB file.
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <string>

#include "run/fatal.h"
#include "run/parameters.h"
#include "structure/pdb_names.h"
#include "structure/protein.h"
#include "support/test_support.h"

namespace {

// The model copy is written in the working directory: tests that make one run inside their
// temporary directory and come back afterwards.
class WorkingDirectory {
 public:
  explicit WorkingDirectory(const std::string& path) {
    char buffer[4096];
    if (getcwd(buffer, sizeof(buffer)) != nullptr) previous_ = buffer;
    EXPECT_EQ(chdir(path.c_str()), 0);
  }
  ~WorkingDirectory() {
    if (!previous_.empty()) {
      EXPECT_EQ(chdir(previous_.c_str()), 0);
    }
  }

 private:
  std::string previous_;
};

const char kHeader[] = "HEADER    TEST ENTRY\n";
const char kChainA1[] = "ATOM      1  N   ALA A   1      11.104   6.134  -6.504  1.00 10.00           N\n";
const char kChainA2[] = "ATOM      2  CA  ALA A   1      11.639   6.071  -5.147  1.00 10.00           C\n";
const char kChainB1[] = "ATOM      3  N   GLY B   2      13.700   5.450  -4.100  1.00 10.00           N\n";
const char kChainB2[] = "ATOM      4  CA  GLY B   2      15.130   5.180  -4.000  1.00 10.00           C\n";
const char kLowerB[] = "ATOM      5  N   SER b   3      16.700   5.100  -2.200  1.00 10.00           N\n";
const char kHetB[] = "HETATM    6 SE   MSE B   4      16.000   5.000  -1.000  1.00 10.00          SE\n";
const char kTerB[] = "TER       7      MSE B   4\n";
const char kClosing[] = "TER\nEND\n";

// The same two-chain model twice, as an NMR file holds it; each atom line `repeat` times.
std::string TwoModels(int repeat = 1) {
  std::string model;
  for (const char* line : {kChainA1, kChainA2, kChainB1, kChainB2}) {
    for (int i = 0; i < repeat; ++i) model += line;
  }
  std::string second = model;
  second.replace(second.find("11.104"), 6, "99.999");
  return std::string(kHeader) + "MODEL        1\n" + model + "ENDMDL\nMODEL        2\n" + second +
         "ENDMDL\nEND\n";
}

// Points PDBPATH and CHAINPATH into the temporary directory.
void UseDirectory(const TempDir& dir) {
  PDBPATH = dir.path() + "/";
  CHAINPATH = dir.path() + "/";
}

TEST(PassName, FourCharacterCode) {
  StartCleanRun();
  std::string name = "1ABC";
  PassName(name);
  EXPECT_EQ(name, "1ABC");
  EXPECT_EQ(ChainName, ' ');
  EXPECT_EQ(TemplateName, "1ABC");
  EXPECT_EQ(PDBBase, "1ABC");
  EXPECT_EQ(PDBName, "./1ABC.pdb");  // the code keeps its letter case
}

TEST(PassName, FifthCharacterNamesTheChain) {
  StartCleanRun();
  PDBPATH = "/data/pdb/";
  std::string name = "1abcB";
  PassName(name);
  EXPECT_EQ(name, "1abc");
  EXPECT_EQ(ChainName, 'B');
  EXPECT_EQ(TemplateName, "1abcb");
  EXPECT_EQ(PDBBase, "1abc");
  EXPECT_EQ(PDBName, "/data/pdb/1abc.pdb");
}

TEST(PassName, LongerNameIsNotSplit) {
  StartCleanRun();
  std::string name = "1abcBxyz";
  PassName(name);
  EXPECT_EQ(name, "1abc");
  EXPECT_EQ(ChainName, ' ');
  EXPECT_EQ(TemplateName, "1abcBxyz");
  EXPECT_EQ(PDBBase, "1abc");
  EXPECT_EQ(PDBName, "./1abc.pdb");
}

TEST(CleanPDB, ChainCopyHoldsTheChainOfTheFirstModel) {
  for (const char* input : {"1abcB", "1abcb"}) {
    StartCleanRun();
    TempDir dir;
    UseDirectory(dir);
    std::string pdb = std::string(kHeader) + kChainA1 + kChainB1 + kLowerB + kHetB + kTerB +
                      "END\n" + kChainB2 + "END\n";
    WriteFile(dir.File("1abc.pdb"), pdb);

    std::string name = input;
    PassName(name);
    CleanPDB();
    EXPECT_EQ(ChainName, 'B');
    EXPECT_EQ(TemplateName, dir.File("1abcb.pdb"));
    // The lower-case chain b, the HETATM and TER records, and everything after END stay out.
    EXPECT_EQ(ReadFile(TemplateName), std::string(kChainB1) + kClosing) << input;
  }
}

TEST(CleanPDB, ChainCopyOfAMultiModelFile) {
  StartCleanRun();
  TempDir dir;
  UseDirectory(dir);
  WriteFile(dir.File("1abc.pdb"), TwoModels());
  std::string name = "1abcA";
  PassName(name);
  CleanPDB();
  EXPECT_EQ(ReadFile(TemplateName), std::string(kChainA1) + kChainA2 + kClosing);
}

TEST(CleanPDB, LowerCaseChainCannotBeSelected) {
  StartCleanRun();
  TempDir dir;
  UseDirectory(dir);
  WriteFile(dir.File("1abc.pdb"), std::string(kLowerB) + kLowerB + "END\n");
  std::string name = "1abcb";
  PassName(name);
  CleanPDB();
  EXPECT_EQ(ReadFile(TemplateName), kClosing);
  GetProtein();
  EXPECT_EQ(ProteinSize, 0);
}

TEST(CleanPDB, FirstModelCopy) {
  StartCleanRun();
  TempDir dir;
  UseDirectory(dir);
  WriteFile(dir.File("1abc.pdb"), TwoModels());
  WorkingDirectory here(dir.path());
  std::string name = "1abc";
  PassName(name);
  CleanPDB();
  EXPECT_EQ(ChainName, ' ');
  EXPECT_EQ(TemplateName, "1abc_nmr.pdb");
  EXPECT_EQ(ReadFile(dir.File("1abc_nmr.pdb")),
            std::string(kChainA1) + kChainA2 + kChainB1 + kChainB2 + kClosing);

  // A name of six or more characters names the copy in full.
  name = "1abcAB";
  PassName(name);
  CleanPDB();
  EXPECT_EQ(TemplateName, "1abcAB_nmr.pdb");
  EXPECT_TRUE(FileExists(dir.File("1abcAB_nmr.pdb")));
}

TEST(CleanPDB, SingleModelFileIsReadDirectly) {
  StartCleanRun();
  TempDir dir;
  UseDirectory(dir);
  WriteFile(dir.File("1abc.pdb"), std::string(kHeader) + kChainA1 + kChainB1 + "END\n");
  WorkingDirectory here(dir.path());
  std::string name = "1abc";
  PassName(name);
  CleanPDB();
  EXPECT_EQ(TemplateName, dir.File("1abc.pdb"));
  EXPECT_FALSE(FileExists(dir.File("1abc_nmr.pdb")));
}

TEST(CleanPDB, MissingPdbFile) {
  StartCleanRun();
  TempDir dir;
  UseDirectory(dir);
  std::string name = "9xyzA";
  PassName(name);
  try {
    CleanPDB();
    FAIL() << "a missing PDB file was accepted";
  } catch (const FatalError& error) {
    EXPECT_EQ(error.status, 9);
    EXPECT_EQ(error.stream, Stream::kStdout);
    EXPECT_EQ(error.text, "Unable to open " + dir.File("9xyz.pdb") + ". QUIT ...\n");
  }
}

// Tests run as root, so a directory standing where the copy should go is what makes its
// creation fail.
TEST(CleanPDB, ChainCopyCannotBeCreated) {
  StartCleanRun();
  TempDir dir;
  UseDirectory(dir);
  WriteFile(dir.File("1abc.pdb"), std::string(kChainA1) + "END\n");
  ASSERT_EQ(mkdir(dir.File("1abca.pdb").c_str(), 0755), 0);
  std::string name = "1abcA";
  PassName(name);
  try {
    CleanPDB();
    FAIL() << "the chain copy was created over a directory";
  } catch (const FatalError& error) {
    EXPECT_EQ(error.status, 7);
    EXPECT_EQ(error.stream, Stream::kStdout);
    EXPECT_EQ(error.text, "Unable to open " + dir.File("1abca.pdb") + ": Quit!\n");
  }
}

// When the model copy cannot be written, the warning is printed and the PDB file itself is read;
// the reader's stop at the first ENDMDL gives the same first model.
TEST(CleanPDB, ModelCopyCannotBeCreated) {
  StartCleanRun();
  TempDir dir;
  UseDirectory(dir);
  WriteFile(dir.File("1abc.pdb"), TwoModels(4));  // four atoms per residue pass the reader
  WorkingDirectory here(dir.path());
  ASSERT_EQ(mkdir("1abc_nmr.pdb", 0755), 0);
  std::string name = "1abc";
  PassName(name);
  testing::internal::CaptureStdout();
  CleanPDB();
  EXPECT_EQ(testing::internal::GetCapturedStdout(), "Unable to open 1abc_nmr.pdb: WARNING3\n");
  EXPECT_EQ(TemplateName, PDBName);

  GetProtein();
  ASSERT_EQ(ProteinSize, 2);
  EXPECT_EQ(Protein[0].atoms[0].x, 11.104);  // model 2 moved this atom to 99.999
}

// A line longer than the 300-byte buffer comes in pieces; the copied first piece gets a newline
// of its own so that the copy keeps one record per line.
TEST(CleanPDB, OverlongRecordStaysOneLine) {
  StartCleanRun();
  TempDir dir;
  UseDirectory(dir);
  std::string longRecord = std::string(kChainA1);
  longRecord.insert(longRecord.size() - 1, std::string(400, ' '));
  WriteFile(dir.File("1abc.pdb"), longRecord + kChainA2 + "END\n");
  std::string name = "1abcA";
  PassName(name);
  CleanPDB();
  std::string expected = longRecord.substr(0, 299) + "\n" + kChainA2 + kClosing;
  EXPECT_EQ(ReadFile(TemplateName), expected);
}

}  // namespace
