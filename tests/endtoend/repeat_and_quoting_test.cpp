// A run is reproducible, and the names it hands to the shell (DSSP, chmod, rm) are passed on as
// names: blanks, ';', quotes and command substitutions in them are never executed.
#include <dirent.h>
#include <gtest/gtest.h>

#include <set>
#include <string>

#include "endtoend_support.h"

namespace {

std::set<std::string> DirectoryEntries(const std::string& path) {
  std::set<std::string> names;
  DIR* dir = opendir(path.c_str());
  if (dir == nullptr) return names;
  while (dirent* entry = readdir(dir)) {
    std::string name = entry->d_name;
    if (name != "." && name != "..") names.insert(name);
  }
  closedir(dir);
  return names;
}

std::string Succeeded(const ToolRun& run) {
  EXPECT_EQ(run.status, 0) << run.out << run.err;
  EXPECT_EQ(run.err, "");
  return run.out;
}

// 2yex goes through the random sampling of three levels and one merge-back of the assessment.
TEST(Repeat, SameInputGivesTheSameLine) {
  TempDir first;
  TempDir second;
  CopyStructure("2yex.pdb", first, "2yex.pdb");
  CopyStructure("2yex.pdb", second, "2yex.pdb");
  std::string line = Succeeded(RunWithDssp({"2yex.pdb"}, first.path()));
  EXPECT_EQ(Succeeded(RunWithDssp({"2yex.pdb"}, first.path())), line);
  EXPECT_EQ(Succeeded(RunWithDssp({"2yex.pdb"}, second.path())), line);

  std::string relaxed = Succeeded(RunWithDssp({"-md", "3", "2yex.pdb"}, first.path()));
  EXPECT_EQ(Succeeded(RunWithDssp({"-md", "3", "2yex.pdb"}, second.path())), relaxed);
}

TEST(Quoting, HostileFileNameIsOnlyAName) {
  TempDir plain;
  CopyStructure("1rmd.pdb", plain, "1rmd.pdb");
  std::string reference = Succeeded(RunWithDssp({"-md", "3", "1rmd.pdb"}, plain.path()));

  const std::string entry = "a b;touch injected1;$(touch injected2)`touch injected3`'q\"";
  const std::string name = entry + ".pdb";
  TempDir dir;
  CopyStructure("1rmd.pdb", dir, name);
  // The result is the DSSP result: DSSP got the file, its output came back under the entry's
  // name and was read, then removed; nothing else was made.
  EXPECT_EQ(Succeeded(RunWithDssp({"-md", "3", name}, dir.path())), WithEntry(reference, entry));
  EXPECT_EQ(DirectoryEntries(dir.path()), (std::set<std::string>{name, "dssp.log"}));
}

// A quoted name that begins with '-' is still an option to chmod and rm: the DSSP output of
// -x.pdb must be removed all the same, without complaints on standard error.
TEST(Quoting, NameBeginningWithADashIsNotAnOption) {
  TempDir plain;
  CopyStructure("1rmd.pdb", plain, "1rmd.pdb");
  std::string reference = Succeeded(RunWithDssp({"-md", "3", "1rmd.pdb"}, plain.path()));

  TempDir dir;
  CopyStructure("1rmd.pdb", dir, "-x.pdb");
  EXPECT_EQ(Succeeded(RunWithDssp({"-md", "3", "-x.pdb"}, dir.path())), WithEntry(reference, "-x"));
  EXPECT_EQ(DirectoryEntries(dir.path()), (std::set<std::string>{"-x.pdb", "dssp.log"}));
}

}  // namespace
