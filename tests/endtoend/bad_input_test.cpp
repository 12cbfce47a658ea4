// Whatever a pipeline hands the tool (truncated or foreign files, odd numbering, broken DSSP
// programs, odd option values, hostile or overlong names), a run ends with the report or with a
// designed message and status, and leaves only the files it is meant to leave.
#include <dirent.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cmath>
#include <cstdlib>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "endtoend_support.h"
#include "run/fatal.h"
#include "run/textio.h"

namespace {

// ---------------------------------------------------------------------------------------------
// Synthetic chains: five atoms per residue (N, CA, C, O, CB), written in their PDB columns.

struct Point {
  double x, y, z;
};

struct SyntheticAtom {
  std::string name;  // the four-column field 13-16
  Point at;
};

struct SyntheticResidue {
  int number;
  char icode;
  std::vector<SyntheticAtom> atoms;
};

using SyntheticChain = std::vector<SyntheticResidue>;

// kLine: residues 3.8 A apart on a straight line; the atoms of neighbours touch and nothing
// else does, so no residue has a contact with one more than three places away.
// kHelix: an alpha helix (100 degrees and 1.5 A per residue), whose i/i+3 and i/i+4 contacts
// give the partition something to cut.
enum class Shape { kLine, kHelix };

constexpr double kLineSpacing = 3.8;
constexpr double kHelixTurnDegrees = 100.0;
constexpr double kHelixRise = 1.5;

struct HelixAtomPlace {
  const char* name;
  double radius, degrees, rise;
};
const HelixAtomPlace kHelixAtoms[] = {{" N  ", 1.6, -28.0, -0.8},
                                      {" CA ", 2.3, 0.0, 0.0},
                                      {" C  ", 1.7, 28.0, 0.7},
                                      {" O  ", 2.0, 30.0, 1.9},
                                      {" CB ", 3.3, 0.0, -0.4}};

struct LineAtomPlace {
  const char* name;
  double dx, dy;
};
const LineAtomPlace kLineAtoms[] = {{" N  ", -1.2, 0.5},
                                    {" CA ", 0.0, 0.0},
                                    {" C  ", 1.2, 0.5},
                                    {" O  ", 1.2, 1.7},
                                    {" CB ", 0.0, -1.5}};

std::vector<SyntheticAtom> ResidueAtoms(Shape shape, int position) {
  std::vector<SyntheticAtom> atoms;
  if (shape == Shape::kLine) {
    double x = kLineSpacing * position;
    for (const LineAtomPlace& place : kLineAtoms)
      atoms.push_back({place.name, {x + place.dx, place.dy, 0.0}});
  } else {
    const double kDegree = std::acos(-1.0) / 180.0;
    double turn = kHelixTurnDegrees * position;
    for (const HelixAtomPlace& place : kHelixAtoms) {
      double angle = (turn + place.degrees) * kDegree;
      atoms.push_back({place.name,
                       {place.radius * std::cos(angle), place.radius * std::sin(angle),
                        kHelixRise * position + place.rise}});
    }
  }
  return atoms;
}

// Residues numbered first, first + step, ...
SyntheticChain MakeChain(Shape shape, int residues, int first = 1, int step = 1) {
  SyntheticChain chain;
  for (int i = 0; i < residues; ++i)
    chain.push_back({first + step * i, ' ', ResidueAtoms(shape, i)});
  return chain;
}

std::string AtomRecord(int serial, const std::string& name, int number, char icode, Point at) {
  return Format("ATOM  %5d %-4s ALA A%4d%c   %8.3f%8.3f%8.3f%6.2f%6.2f\n", serial % 100000,
                name.c_str(), number, icode, at.x, at.y, at.z, 1.0, 20.0);
}

std::string PdbText(const SyntheticChain& chain) {
  std::string text;
  int serial = 1;
  for (const SyntheticResidue& residue : chain)
    for (const SyntheticAtom& atom : residue.atoms)
      text += AtomRecord(serial++, atom.name, residue.number, residue.icode, atom.at);
  return text + "END\n";
}

// Every ATOM record rewritten by `edit` (which gets the line without its newline).
template <typename Edit>
std::string EditAtomRecords(const std::string& text, Edit edit) {
  std::string result;
  for (std::string line : SplitLines(text)) {
    if (line.compare(0, 6, "ATOM  ") == 0) {
      line.pop_back();
      line = edit(line) + "\n";
    }
    result += line;
  }
  return result;
}

// The coordinate columns 31-54 of every ATOM record, or of those of one residue number.
std::string WithCoordinates(const std::string& text, const std::string& field, int onlyResidue = 0) {
  return EditAtomRecords(text, [&](const std::string& line) {
    if (onlyResidue != 0 && std::atoi(line.substr(22, 4).c_str()) != onlyResidue) return line;
    return line.substr(0, 30) + field + field + field + line.substr(54);
  });
}

// Intra-part atom contacts per atom of residues [first, last] (positions), counting only pairs
// more than three residues apart: the compactness a cut must give each side.
double Compactness(const SyntheticChain& chain, int first, int last) {
  constexpr int kSeparation = 3;
  constexpr double kContact2 = 16.0;
  long contacts = 0;
  long atoms = 0;
  for (int a = first; a <= last; ++a) {
    atoms += static_cast<long>(chain[a].atoms.size());
    for (int b = a + kSeparation + 1; b <= last; ++b) {
      for (const SyntheticAtom& p : chain[a].atoms) {
        for (const SyntheticAtom& q : chain[b].atoms) {
          double dx = p.at.x - q.at.x, dy = p.at.y - q.at.y, dz = p.at.z - q.at.z;
          if (dx * dx + dy * dy + dz * dz <= kContact2) ++contacts;
        }
      }
    }
  }
  return static_cast<double>(contacts) / static_cast<double>(atoms);
}

// ---------------------------------------------------------------------------------------------
// Reports.

std::vector<ResidueLabel> Labels(const SyntheticChain& chain) {
  std::vector<ResidueLabel> labels;
  for (const SyntheticResidue& residue : chain) labels.push_back({'A', residue.number, residue.icode});
  return labels;
}

std::string OneDomainLine(const std::string& entry, int residues) {
  return entry + "\t" + std::to_string(residues) + "\t1\n";
}

// ---------------------------------------------------------------------------------------------

class BadInput : public ::testing::Test {
 protected:
  std::string Write(const std::string& name, const std::string& text) {
    WriteFile(dir_.File(name), text);
    return name;
  }
  ToolRun Run(const std::vector<std::string>& args, const std::vector<std::string>& env = {}) {
    return RunTool(args, dir_.path(), env);
  }
  ToolRun RunDssp(const std::vector<std::string>& args) { return RunWithDssp(args, dir_.path()); }

  // A completed run: status 0, nothing on standard error; its standard output.
  std::string Line(const ToolRun& run) {
    EXPECT_EQ(run.status, 0) << run.out << run.err;
    EXPECT_EQ(run.err, "");
    return run.out;
  }

  std::set<std::string> Files() const {
    std::set<std::string> names;
    DIR* dir = opendir(dir_.path().c_str());
    if (dir == nullptr) return names;
    while (dirent* entry = readdir(dir)) {
      std::string name = entry->d_name;
      if (name != "." && name != "..") names.insert(name);
    }
    closedir(dir);
    return names;
  }

  std::string Script(const std::string& name, const std::string& body) {
    std::string path = dir_.File(name);
    WriteFile(path, "#!/bin/sh\n" + body);
    chmod(path.c_str(), 0755);
    return path;
  }

  TempDir dir_;
};

void ExpectFailure(const ToolRun& run, int status, const std::string& out, const std::string& err) {
  EXPECT_EQ(run.status, status) << run.out << run.err;
  EXPECT_EQ(run.out, out);
  EXPECT_EQ(run.err, err);
}

// ---------------------------------------------------------------------------------------------
// Files that hold no structure.

// Nothing to read is a chain of no residues, reported as one domain; the DSSP program that
// fails on such a file changes nothing.
TEST_F(BadInput, EmptyFileIsAnEmptyChain) {
  Write("empty.pdb", "");
  EXPECT_EQ(Line(Run({"-noss", "empty.pdb"})), "empty\t0\t1\n");
  EXPECT_EQ(Files(), (std::set<std::string>{"empty.pdb"}));
  EXPECT_EQ(Line(RunDssp({"empty.pdb"})), "empty\t0\t1\n");
  EXPECT_EQ(Files(), (std::set<std::string>{"empty.pdb", "dssp.log"}));
}

// Bytes of every value, NUL and carriage return included: no line of it is an ATOM record.
TEST_F(BadInput, BinaryFileIsAnEmptyChain) {
  std::string bytes;
  for (int repeat = 0; repeat < 40; ++repeat)
    for (int b = 0; b < 256; ++b) bytes += static_cast<char>(b);
  Write("binary.pdb", bytes);
  EXPECT_EQ(Line(Run({"-noss", "binary.pdb"})), "binary\t0\t1\n");
  EXPECT_EQ(Files(), (std::set<std::string>{"binary.pdb"}));
}

TEST_F(BadInput, FileWithoutAtomRecordsIsAnEmptyChain) {
  Write("hetero.pdb",
        "HEADER    NO PROTEIN HERE\n"
        "REMARK   1 ATOM RECORDS ARE ABSENT\n"
        "HETATM    1  O   HOH A   1      10.000  10.000  10.000  1.00 20.00           O\n"
        "HETATM    2 SE   MSE A   2      11.000  10.000  10.000  1.00 20.00          SE\n"
        "ATOM\n"
        "ATOMS     3  CA  ALA A   3      12.000  10.000  10.000  1.00 20.00           C\n"
        "END\n");
  EXPECT_EQ(Line(Run({"-noss", "hetero.pdb"})), "hetero\t0\t1\n");
}

// A directory opens but cannot be read: the reader's open failure, for a named file and for the
// PDB file of a code.
TEST_F(BadInput, DirectoryAsInputStopsWithTheOpenFailure) {
  MakeDirectory(dir_.File("adir.pdb"));
  ExpectFailure(Run({"-noss", "adir.pdb"}), 5, "INPUT adir.pdb OPEN ERROR: QUIT\n", "");

  MakeDirectory(dir_.File("pdb"));
  MakeDirectory(dir_.File("pdb/9dir.pdb"));
  ExpectFailure(RunDssp({"-pdbpath", "pdb/", "9dir"}), 9, "Unable to open pdb/9dir.pdb. QUIT ...\n",
                "");
  EXPECT_EQ(Files(), (std::set<std::string>{"adir.pdb", "pdb"}));
  // A chain copy is made before the PDB file is read: it is left, holding no record.
  ExpectFailure(RunDssp({"-pdbpath", "pdb/", "9dirA"}), 9, "Unable to open pdb/9dir.pdb. QUIT ...\n",
                "");
  EXPECT_EQ(ReadFile(dir_.File("9dira.pdb")), "TER\nEND\n");
  EXPECT_EQ(Files(), (std::set<std::string>{"adir.pdb", "pdb", "9dira.pdb"}));
}

// ---------------------------------------------------------------------------------------------
// Records cut short, overlong, or holding numbers that are not coordinates.

// Lines are read 299 characters at a time: blanks after column 80 change nothing, and an ATOM
// record that starts at character 300 of a REMARK line is read as a record of its own.
TEST_F(BadInput, LongLinesAreReadInPiecesOf299Characters) {
  std::string helix = PdbText(MakeChain(Shape::kHelix, 80));
  Write("plain.pdb", helix);
  Write("padded.pdb", EditAtomRecords(helix, [](const std::string& line) {
          return line + std::string(400 - line.size(), ' ');
        }));
  std::string plain = Line(Run({"-noss", "-md", "3", "plain.pdb"}));
  ASSERT_GE(CheckReport(plain, Labels(MakeChain(Shape::kHelix, 80))).domains, 2) << plain;
  EXPECT_EQ(Line(Run({"-noss", "-md", "3", "padded.pdb"})), WithEntry(plain, "padded"));

  SyntheticChain chain = MakeChain(Shape::kLine, 41);
  std::string text = PdbText(SyntheticChain(chain.begin(), chain.end() - 1));
  text.resize(text.size() - 4);  // without END
  const std::string remark = "REMARK 999" + std::string(299 - 10, ' ');
  int serial = 1000;
  for (const SyntheticAtom& atom : chain.back().atoms)
    text += remark + AtomRecord(serial++, atom.name, 41, ' ', atom.at);
  Write("hidden.pdb", text + "END\n");
  EXPECT_EQ(Line(Run({"-noss", "hidden.pdb"})), "hidden\t41\t1\n");
}

// Fields past the end of a line read as blanks and blank numbers as 0. Records that stop inside
// the y field keep x and a partial y; records that stop before x put every atom at the origin,
// where no pair of residues is farther apart than any other and no anchors can be chosen.
TEST_F(BadInput, AtomRecordsCutShortInTheCoordinates) {
  std::string line40 = PdbText(MakeChain(Shape::kLine, 40));
  Write("cut.pdb", EditAtomRecords(line40, [](const std::string& l) { return l.substr(0, 42); }));
  EXPECT_EQ(Line(Run({"-noss", "cut.pdb"})), "cut\t40\t1\n");

  SyntheticChain helix = MakeChain(Shape::kHelix, 80);
  std::string text = PdbText(helix);
  Write("cuty.pdb", EditAtomRecords(text, [](const std::string& l) { return l.substr(0, 42); }));
  // Flattened onto a plane the helix is dense with contacts: few samples keep the run short.
  CheckReport(Line(Run({"-noss", "-md", "3", "-sp", "4", "cuty.pdb"})), Labels(helix));

  Write("nocoord.pdb", EditAtomRecords(text, [](const std::string& l) { return l.substr(0, 27); }));
  EXPECT_EQ(Line(Run({"-noss", "-md", "3", "nocoord.pdb"})), "nocoord\t80\t1\n");
}

// Coordinates that are not numbers of a sane size: the run ends with a report of every residue.
// Where every coordinate is NaN no distance compares, so no anchor pair exists and nothing is
// cut even in a relaxed run.
TEST_F(BadInput, CoordinatesThatAreNotSaneNumbers) {
  SyntheticChain helix = MakeChain(Shape::kHelix, 80);
  std::string text = PdbText(helix);
  Write("nan.pdb", WithCoordinates(text, "     nan"));
  EXPECT_EQ(Line(Run({"-noss", "-md", "3", "nan.pdb"})), "nan\t80\t1\n");

  const std::vector<ResidueLabel> rmd = ResiduesOf("1rmd.pdb");
  std::string real = ReadFile(DataPath("1rmd.pdb"));
  const std::vector<std::string> fields = {"     nan", "     inf", "    -inf", "  1e+300",
                                           " 1e99999", "xxxxxxxx", "-9999999"};
  for (const std::string& field : fields) {
    SCOPED_TRACE("coordinates \"" + field + "\"");
    Write("all.pdb", WithCoordinates(text, field));
    CheckReport(Line(Run({"-noss", "-md", "3", "all.pdb"})), Labels(helix));
    // One residue of a real chain, in a run that is assessed and in one that is not.
    Write("one.pdb", WithCoordinates(real, field, 40));
    CheckReport(Line(Run({"-noss", "one.pdb"})), rmd);
    CheckReport(Line(Run({"-noss", "-md", "3", "one.pdb"})), rmd);
  }
}

// ---------------------------------------------------------------------------------------------
// Chains of unusual size and numbering.

TEST_F(BadInput, OneResidue) {
  Write("one.pdb", PdbText(MakeChain(Shape::kHelix, 1)));
  EXPECT_EQ(Line(Run({"-noss", "one.pdb"})), "one\t1\t1\n");
  EXPECT_EQ(Line(RunDssp({"one.pdb"})), "one\t1\t1\n");
  EXPECT_EQ(Line(Run({"-noss", "-md", "3", "one.pdb"})), "one\t1\t1\n");
}

// A chain is searched from 70 residues on. With 70 or 71 residues the only cuts that leave 35
// residues on each side with one segment each are the splits at 35 (and 36): on a line no side
// has a contact between residues more than three apart, and the helix's sides stay below the
// least compactness 0.52 (checked here), so every chain is reported as one domain.
TEST_F(BadInput, ChainsAroundTheSmallestSearchedLength) {
  for (int residues : {69, 70, 71}) {
    for (Shape shape : {Shape::kLine, Shape::kHelix}) {
      SyntheticChain chain = MakeChain(shape, residues);
      std::string name = (shape == Shape::kLine ? "line" : "helix") + std::to_string(residues);
      SCOPED_TRACE(name);
      for (int split = 35; split <= residues - 35; ++split) {
        double first = Compactness(chain, 0, split - 1);
        double second = Compactness(chain, split, residues - 1);
        ASSERT_TRUE(first < 0.52 || second < 0.52) << "split " << split << ": " << first << ", "
                                                   << second;
      }
      Write(name + ".pdb", PdbText(chain));
      EXPECT_EQ(Line(Run({"-noss", name + ".pdb"})), OneDomainLine(name, residues));
    }
  }
}

// Atoms are not limited per residue: 500 atoms in one residue count as 500.
TEST_F(BadInput, ResidueWith500Atoms) {
  constexpr int kAtoms = 500;
  SyntheticChain chain = MakeChain(Shape::kHelix, 80);
  SyntheticResidue& big = chain[39];
  Point ca = big.atoms[1].at;
  for (int a = static_cast<int>(big.atoms.size()); a < kAtoms; ++a) {
    double t = 0.37 * a;
    big.atoms.push_back({" CG ", {ca.x + 1.5 * std::cos(t), ca.y + 1.5 * std::sin(t),
                                  ca.z + 0.002 * a}});
  }
  Write("big.pdb", PdbText(chain));
  CheckReport(Line(Run({"-noss", "-md", "3", "big.pdb"})), Labels(chain));
  SyntheticChain shortChain(chain.begin() + 35, chain.begin() + 45);
  Write("big10.pdb", PdbText(shortChain));
  EXPECT_EQ(Line(Run({"-noss", "big10.pdb"})), "big10\t10\t1\n");
}

// Residue numbers do not steer a relaxed run without DSSP: the same geometry numbered
// backwards, restarting, or with repeats in other places is cut at the same positions, and
// each segment is written with its lower number first.
TEST_F(BadInput, OddNumberingIsCutLikeTheSameChainNumberedInOrder) {
  constexpr int kResidues = 80;
  SyntheticChain forward = MakeChain(Shape::kHelix, kResidues);
  Write("forward.pdb", PdbText(forward));
  std::string line = Line(Run({"-noss", "-md", "3", "forward.pdb"}));
  Report report = CheckReport(line, Labels(forward));
  ASSERT_GE(report.domains, 2) << line;
  std::vector<int> domainOf = DomainsAlongChain(report, Labels(forward));
  ASSERT_EQ(domainOf.size(), static_cast<size_t>(kResidues));

  SyntheticChain backwards = MakeChain(Shape::kHelix, kResidues, kResidues, -1);
  SyntheticChain restarting = forward;
  for (int i = kResidues / 2; i < kResidues; ++i) restarting[i].number = i - kResidues / 2 + 1;
  SyntheticChain negative = MakeChain(Shape::kHelix, kResidues, -999, 7);
  SyntheticChain insertions = forward;
  for (int i = 0; i < kResidues; ++i) {
    insertions[i].number = 100 + i / 3;
    insertions[i].icode = i % 3 == 0 ? ' ' : static_cast<char>('A' + i % 3 - 1);
  }
  const std::vector<std::pair<std::string, SyntheticChain>> cases = {
      {"backwards", backwards}, {"restarting", restarting}, {"negative", negative},
      {"insertions", insertions}};
  for (const auto& [name, chain] : cases) {
    SCOPED_TRACE(name);
    Write(name + ".pdb", PdbText(chain));
    EXPECT_EQ(Line(Run({"-noss", "-md", "3", name + ".pdb"})),
              ExpectedReport(name, domainOf, Labels(chain)));
  }
}

// Consecutive records with the same number and insertion code are one residue, whatever their
// residue names; the same numbers further on start new residues.
TEST_F(BadInput, DuplicateResidueNumbers) {
  SyntheticChain chain = MakeChain(Shape::kLine, 40);
  chain[10].number = chain[9].number;
  Write("dup.pdb", PdbText(chain));
  EXPECT_EQ(Line(Run({"-noss", "dup.pdb"})), "dup\t39\t1\n");

  SyntheticChain twice = MakeChain(Shape::kLine, 60);
  for (int i = 30; i < 60; ++i) twice[i].number = twice[i - 30].number;
  Write("twice.pdb", PdbText(twice));
  EXPECT_EQ(Line(Run({"-noss", "twice.pdb"})), "twice\t60\t1\n");
}

// Fewer than four atoms per residue on average stops the run before anything is written.
TEST_F(BadInput, CaOnlyModelStopsWithTheSufficiencyMessage) {
  std::string caOnly;
  for (const std::string& record : SplitLines(PdbText(MakeChain(Shape::kHelix, 70))))
    if (record.compare(0, 3, "END") == 0 || record.compare(12, 4, " CA ") == 0) caOnly += record;
  Write("ca.pdb", caOnly);
  ExpectFailure(RunDssp({"ca.pdb"}), 100, "",
                "Missing sidechain atoms for ca.pdb\n(70 atoms in 70 residues), Quit!\n");
  EXPECT_EQ(Files(), (std::set<std::string>{"ca.pdb"}));
}

// Two dense matrices of the chain's size that cannot fit in this machine's memory stop the run
// at once, with one line of explanation, instead of the system killing it halfway.
TEST_F(BadInput, ChainTooLargeForMemoryStopsWithAllocationFailed) {
  constexpr double kContactBytes = 12.0;  // weight, count, squared distance
  constexpr double kUsableShare = 0.75;
  double physical = static_cast<double>(sysconf(_SC_PHYS_PAGES)) *
                    static_cast<double>(sysconf(_SC_PAGE_SIZE));
  ASSERT_GT(physical, 0.0);
  long residues = static_cast<long>(std::sqrt(kUsableShare * physical / (2.0 * kContactBytes))) + 2;
  std::string text;
  text.reserve(static_cast<size_t>(residues) * 4 * 67);
  for (long r = 0; r < residues; ++r) {
    for (const char* name : {" N  ", " CA ", " C  ", " O  "})
      text += AtomRecord(1, name, static_cast<int>(r % 10000), ' ', Point{1.0, 2.0, 3.0});
  }
  Write("huge.pdb", text);
  ToolRun run = Run({"-noss", "huge.pdb"});
  EXPECT_EQ(run.status, 50);
  EXPECT_EQ(run.out, "Allocation failed.\n");
  std::string head = "quarnel: " + std::to_string(residues) + " residues need ";
  EXPECT_EQ(run.err.compare(0, head.size(), head), 0) << run.err;
  EXPECT_EQ(run.err.find('\n'), run.err.size() - 1) << "one line: " << run.err;
}

// ---------------------------------------------------------------------------------------------
// DSSP programs that are missing or broken, and DSSP output beyond the usual numbers.

// 1rmd's strands change its relaxed cuts, so a DSSP run whose output is lost is told apart from
// one that worked.
class BrokenDssp : public BadInput {
 protected:
  void SetUp() override {
    CopyStructure("1rmd.pdb", dir_, "1rmd.pdb");
    withDssp_ = Line(RunDssp({"-md", "3", "1rmd.pdb"}));
    withoutDssp_ = Line(Run({"-noss", "-md", "3", "1rmd.pdb"}));
    ASSERT_NE(withDssp_, withoutDssp_) << "the strands of 1rmd no longer change its cuts";
  }
  // The run goes on as if every residue were coil, and the DSSP output is removed. Standard
  // error may only carry what the shell says about the program (`shellNote`; dash says nothing
  // on it, bash reports a crash there).
  void ExpectCoilEverywhere(const std::string& dsspPath, const std::set<std::string>& files,
                            const std::string& shellNote = "") {
    ToolRun run = Run({"-md", "3", "1rmd.pdb"}, {"DSSP_PATH=" + dsspPath});
    EXPECT_EQ(run.status, 0) << run.out << run.err;
    EXPECT_EQ(run.out, withoutDssp_);
    for (const std::string& line : SplitLines(run.err))
      EXPECT_TRUE(!shellNote.empty() && line.find(shellNote) != std::string::npos) << line;
    EXPECT_EQ(Files(), files);
  }
  std::string withDssp_;
  std::string withoutDssp_;
};

TEST_F(BrokenDssp, ProgramThatDoesNotExist) {
  ExpectCoilEverywhere(dir_.File("no-such-dssp"), {"1rmd.pdb", "dssp.log"});
  EXPECT_NE(ReadFile(dir_.File("dssp.log")).find("no-such-dssp"), std::string::npos);
}

TEST_F(BrokenDssp, ProgramThatCrashes) {
  std::string dssp = Script("segv-dssp", "kill -SEGV $$\n");
  ExpectCoilEverywhere(dssp, {"1rmd.pdb", "dssp.log", "segv-dssp"}, "Segmentation fault");
}

// Output without DSSP's table header is no table at all: here the input itself and stray bytes.
TEST_F(BrokenDssp, ProgramThatPrintsGarbage) {
  std::string dssp = Script("garbage-dssp", "cat \"$1\"\nprintf '\\001\\377 no table\\n  # RES\\n'\n");
  ExpectCoilEverywhere(dssp, {"1rmd.pdb", "dssp.log", "garbage-dssp"});
}

// DSSP output found beside a code is read instead of running DSSP, and removed at the end.
// Sequential numbers above 3000 and a chain-break line before the first residue give the same
// strands and bridges as DSSP's own numbering.
TEST_F(BadInput, ExistingDsspOutputWithLargeNumbersAndALeadingChainBreak) {
  const std::vector<std::string> args = {"-md", "3", "-pdbpath", "pdb/", "1rmdA"};
  CopyStructure("1rmd.pdb", dir_, "pdb/1rmd.pdb");
  std::string reference = Line(RunDssp(args));
  std::string withoutDssp = Line(Run({"-noss", "-md", "3", "-pdbpath", "pdb/", "1rmdA"}));
  ASSERT_NE(reference, withoutDssp);
  std::string command = "cd " + ShellQuote(dir_.path()) + " && " + ShellQuote(DsspAdapter()) +
                        " 1rmda.pdb > original.dssp 2>/dev/null";
  ASSERT_EQ(std::system(command.c_str()), 0);

  constexpr int kOffset = 3000;
  std::string renumbered;
  bool table = false;
  for (const std::string& line : SplitLines(ReadFile(dir_.File("original.dssp")))) {
    if (!table) {
      renumbered += line;
      if (line.compare(0, 10, "  #  RESID") == 0) {
        table = true;
        renumbered += Format("%5d        !*             0   0    0\n", kOffset);
      }
      continue;
    }
    ASSERT_GE(line.size(), 34u) << line;
    auto shifted = [&](int first, int width) {
      int value = std::atoi(line.substr(first - 1, width).c_str());
      return Format("%*d", width, value == 0 ? 0 : value + kOffset);
    };
    renumbered += shifted(1, 5) + line.substr(5, 20) + shifted(26, 4) + shifted(30, 4) +
                  line.substr(33);
  }
  ASSERT_TRUE(table);

  TempDir other;
  CopyStructure("1rmd.pdb", other, "pdb/1rmd.pdb");
  WriteFile(other.File("1rmdA.dssp"), renumbered);
  // No DSSP_PATH: had the run tried to run DSSP it would have stopped with status 1.
  EXPECT_EQ(Line(RunTool(args, other.path())), reference);
  EXPECT_FALSE(FileExists(other.File("1rmdA.dssp")));
  EXPECT_FALSE(FileExists(other.File("dssp.log")));
  EXPECT_TRUE(FileExists(other.File("1rmda.pdb")));
}

// ---------------------------------------------------------------------------------------------
// Files the run must not or cannot write.

TEST_F(BadInput, ChainCopyThatCannotBeCreated) {
  CopyStructure("1rmd.pdb", dir_, "pdb/1rmd.pdb");
  MakeDirectory(dir_.File("1rmda.pdb"));
  ExpectFailure(RunDssp({"-pdbpath", "pdb/", "1rmdA"}), 7, "Unable to open ./1rmda.pdb: Quit!\n",
                "");
  EXPECT_EQ(Files(), (std::set<std::string>{"pdb", "1rmda.pdb"}));
}

// ---------------------------------------------------------------------------------------------
// Option values.

TEST_F(BadInput, OptionValuesThatAreNotNumbersOrAreNegative) {
  CopyStructure("1rmd.pdb", dir_, "1rmd.pdb");
  const std::string one = "1rmd\t116\t1\n";
  std::string relaxed = Line(Run({"-noss", "-md", "3", "1rmd.pdb"}));
  ASSERT_EQ(CheckReport(relaxed, ResiduesOf("1rmd.pdb")).domains, 3);

  // No samples (0 or fewer) find no cut; a domain limit of 0 or less stops before the search.
  EXPECT_EQ(Line(Run({"-noss", "-md", "3", "-sp", "abc", "1rmd.pdb"})), one);
  EXPECT_EQ(Line(Run({"-noss", "-md", "3", "-sp", "-3", "1rmd.pdb"})), one);
  EXPECT_EQ(Line(Run({"-noss", "-md", "abc", "1rmd.pdb"})), one);
  EXPECT_EQ(Line(Run({"-noss", "-md", "-1", "1rmd.pdb"})), one);
  // Relaxed mode overwrites these criteria whatever their values.
  EXPECT_EQ(Line(Run({"-noss", "-mbpass", "-1", "-mbpair", "x", "-ms", "-5", "-mg", "nan", "-mi",
                      "-inf", "-mt", "-1", "-ml", "-5", "-md", "3", "1rmd.pdb"})),
            relaxed);
  // A backbone weight of 1e9 saturates every backbone contact, so every flow between two sets
  // of 30 residues reaches 2,000,000, and a relaxed run skips such samples.
  EXPECT_EQ(Line(Run({"-noss", "-md", "3", "-bw", "1e9", "1rmd.pdb"})), one);
  for (const std::vector<std::string>& options :
       std::vector<std::vector<std::string>>{{"-ml", "-5"},
                                             {"-ml", "0", "-sp", "5"},
                                             {"-bw", "-5", "-md", "3"},
                                             {"-bw", "nan", "-md", "3"},
                                             {"-rs", "-1e30", "-md", "3"},
                                             {"-mloop", "-7", "-mterm", "9999999", "-md", "3"},
                                             {"-mt", "nan", "-mg", "-1", "-mi", "inf"}}) {
    std::vector<std::string> args = {"-noss"};
    args.insert(args.end(), options.begin(), options.end());
    args.push_back("1rmd.pdb");
    SCOPED_TRACE(args[1] + " " + args[2]);
    CheckReport(Line(Run(args)), ResiduesOf("1rmd.pdb"));
  }
  EXPECT_EQ(Files(), (std::set<std::string>{"1rmd.pdb"}));
}

// An option right before the input takes the input as its value; -ex needs two arguments
// before the input name; an option written last is the input name.
TEST_F(BadInput, OptionValuesMissingAtTheEnd) {
  CopyStructure("1rmd.pdb", dir_, "1rmd.pdb");
  EXPECT_EQ(Line(Run({"-noss", "-md", "1rmd.pdb"})), "1rmd\t116\t1\n");
  ExpectFailure(Run({"-noss", "-ex", "1rmd.pdb"}), 2, "",
                "quarnel: option -ex needs two values before the input name\n");
  ExpectFailure(Run({"-noss", "1rmd.pdb", "-sp"}), 9, "Unable to open ./-sp.pdb. QUIT ...\n", "");
  EXPECT_EQ(Files(), (std::set<std::string>{"1rmd.pdb"}));
}

// ---------------------------------------------------------------------------------------------
// Input names.

// 300 characters as a path of components under 255 each: an ordinary file name, whose DSSP
// output goes beside it.
TEST_F(BadInput, NameOf300CharactersAsAPath) {
  CopyStructure("1rmd.pdb", dir_, "1rmd.pdb");
  std::string reference = Line(RunDssp({"-md", "3", "1rmd.pdb"}));
  const std::string part(100, 'd');
  const std::string entry = part + "/" + part + "/" + std::string(94, 'f');
  const std::string name = entry + ".pdb";
  ASSERT_EQ(name.size(), 300u);
  MakeDirectory(dir_.File(part));
  CopyStructure("1rmd.pdb", dir_, name);
  EXPECT_EQ(Line(RunDssp({"-md", "3", name})), WithEntry(reference, entry));
  EXPECT_FALSE(FileExists(dir_.File(entry + ".dssp")));
}

// 300 characters in one name cannot be a file: the name is a code whose first four characters
// name the PDB file; the entry keeps the whole name, so DSSP's output cannot be written.
TEST_F(BadInput, NameOf300CharactersInOneComponent) {
  const std::string name = "1rmd" + std::string(296, 'x');
  ExpectFailure(Run({"-noss", name}), 9, "Unable to open ./1rmd.pdb. QUIT ...\n", "");

  CopyStructure("1rmd.pdb", dir_, "1rmd.pdb");
  EXPECT_EQ(Line(Run({"-noss", name})), name + "\t116\t1\n");
  ToolRun withDssp = RunDssp({name});
  EXPECT_EQ(withDssp.status, 5);
  EXPECT_EQ(withDssp.out, "INPUT " + name + ".dssp OPEN ERROR: QUIT\n");
  // The shell's and chmod's complaints about the name, and nothing else.
  ASSERT_FALSE(withDssp.err.empty());
  for (const std::string& line : SplitLines(withDssp.err))
    EXPECT_NE(line.find("File name too long"), std::string::npos) << line;
  for (const std::string& file : Files())
    EXPECT_TRUE(file == "1rmd.pdb" || file == "dssp.log") << file;
}

// Blanks, ';' and command substitutions in a name are never executed, neither when the name is
// a file (DSSP, chmod and rm get it) nor when it is taken as a code.
TEST_F(BadInput, NameWithShellCharacters) {
  const std::string entry = "a b;touch PWNED;$(touch PWNED2)";
  const std::string name = entry + ".pdb";
  CopyStructure("1rmd.pdb", dir_, "1rmd.pdb");
  std::string reference = Line(RunDssp({"-md", "3", "1rmd.pdb"}));
  CopyStructure("1rmd.pdb", dir_, name);
  EXPECT_EQ(Line(RunDssp({"-md", "3", name})), WithEntry(reference, entry));
  EXPECT_EQ(Line(Run({"-noss", name})), entry + "\t116\t1\n");
  ExpectFailure(RunDssp({entry}), 9, "Unable to open ./a b;.pdb. QUIT ...\n", "");
  EXPECT_EQ(Files(), (std::set<std::string>{"1rmd.pdb", name, "dssp.log"}));
}

}  // namespace
