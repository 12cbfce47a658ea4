// Files in other formats are refused instead of being read as PDB columns.
#include <gtest/gtest.h>

#include "run/fatal.h"
#include "structure/pdb_names.h"
#include "structure/protein.h"
#include "support/test_support.h"

namespace {

void ExpectRefused(const std::string& path) {
  TemplateName = path;
  testing::internal::CaptureStderr();
  try {
    GetProtein();
    ADD_FAILURE() << "read " << path;
  } catch (const FatalError& error) {
    EXPECT_EQ(error.status, 5);
    EXPECT_EQ(error.stream, Stream::kStdout);
    EXPECT_EQ(error.text, "INPUT " + path + " OPEN ERROR: QUIT\n");
  }
  std::string err = testing::internal::GetCapturedStderr();
  EXPECT_NE(err.find(path), std::string::npos) << err;
  EXPECT_NE(err.find("quarnel reads PDB-format files"), std::string::npos) << err;
}

}  // namespace

// The atom_site rows of mmCIF begin with "ATOM" and blanks too; read by PDB columns they would
// make residues out of nothing.
TEST(InputFormat, MmcifFileIsRefused) {
  StartCleanRun();
  TempDir dir;
  WriteFile(dir.File("1abc.cif"),
            "data_1ABC\n"
            "#\n"
            "loop_\n"
            "_atom_site.group_PDB\n"
            "_atom_site.id\n"
            "ATOM   1    N N   . MET A 1 1   ? 27.340 24.430 2.614  1.00 9.67  ? 1   MET A N   1\n"
            "ATOM   2    C CA  . MET A 1 1   ? 26.266 25.413 2.842  1.00 10.38 ? 1   MET A CA  1\n");
  ExpectRefused(dir.File("1abc.cif"));
}

TEST(InputFormat, GzipCompressedFileIsRefused) {
  StartCleanRun();
  TempDir dir;
  WriteFile(dir.File("1abc.pdb.gz"), std::string("\x1f\x8b\x08\x00\x00\x00\x00\x00", 8));
  ExpectRefused(dir.File("1abc.pdb.gz"));
}

// A PDB file whose text merely mentions "data_" after its first residue is read as usual.
TEST(InputFormat, DataWordAfterTheAtomsIsNoMmcifMark) {
  StartCleanRun();
  TempDir dir;
  std::string atoms;
  for (const char* name : {" N  ", " CA ", " C  ", " O  "})
    atoms += std::string("ATOM      1 ") + name + " GLY A   1      11.000  12.000  13.000  1.00  0.00\n";
  WriteFile(dir.File("x.pdb"), atoms + "data_1ABC\nEND\n");
  TemplateName = dir.File("x.pdb");
  GetProtein();
  EXPECT_EQ(ProteinSize, 1);
}
