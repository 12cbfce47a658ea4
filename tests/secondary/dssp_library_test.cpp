// The in-process DSSP against mkdssp 4.2.2: tables stored in data/dssp/ were printed by mkdssp
// through tools/quarnel-dssp for the same inputs, and columns 1-34 must agree row for row.
#include "secondary/dssp_library.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <fstream>
#include <iterator>
#include <sstream>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include "support.h"

namespace {

using quarnel::AtomRecord;
using quarnel::DsspLibrary;
namespace test = quarnel::test;

std::string DsspClassicTable(const std::vector<AtomRecord>& atoms) {
  const DsspLibrary library;
  return quarnel::ClassicDsspTable(library.Residues(atoms));
}

constexpr size_t kComparedColumns = 34;  // up to the sheet label

std::string Field(const std::string& line, size_t first, size_t last) {
  std::string field =
      line.size() < first ? std::string() : line.substr(first - 1, last - first + 1);
  field.resize(last - first + 1, ' ');
  return field;
}

template <size_t N>
void CopyField(const std::string& field, char (&out)[N]) {
  std::memset(out, 0, N);
  std::memcpy(out, field.data(), std::min(field.size(), N - 1));
}

// The ATOM records as quarnel's reader keeps them: up to the first END, no hydrogen named with
// 'H' in column 14; `chain` '*' keeps every chain.
std::vector<AtomRecord> ReadAtoms(const std::string& file, char chain = '*') {
  std::ifstream in(test::DataFile(file));
  std::vector<AtomRecord> atoms;
  std::string line;
  while (std::getline(in, line)) {
    if (line.compare(0, 3, "END") == 0) break;
    if (line.compare(0, 6, "ATOM  ") != 0 || Field(line, 14, 14) == "H") continue;
    if (chain != '*' && Field(line, 22, 22)[0] != chain) continue;
    AtomRecord atom;
    atom.serial = std::stoi(Field(line, 7, 11));
    CopyField(Field(line, 13, 16), atom.name);
    atom.altloc = Field(line, 17, 17)[0];
    CopyField(Field(line, 18, 20), atom.resname);
    atom.chain = Field(line, 22, 22)[0];
    atom.resnum = std::stoi(Field(line, 23, 26));
    atom.icode = Field(line, 27, 27)[0];
    atom.x = std::stod(Field(line, 31, 38));
    atom.y = std::stod(Field(line, 39, 46));
    atom.z = std::stod(Field(line, 47, 54));
    atom.occupancy = std::stod(Field(line, 55, 60));
    atom.bfactor = std::stod(Field(line, 61, 66));
    CopyField(Field(line, 77, 78), atom.element);
    atoms.push_back(atom);
  }
  return atoms;
}

// Lines cut to the compared columns, trailing blanks dropped.
std::vector<std::string> Rows(const std::string& text) {
  std::istringstream in(text);
  std::vector<std::string> rows;
  std::string line;
  while (std::getline(in, line)) {
    line.resize(std::min(line.size(), kComparedColumns));
    line.erase(line.find_last_not_of(' ') + 1);
    rows.push_back(line);
  }
  return rows;
}

struct TableCase {
  const char* what;
  const char* input;     // in the data folder
  const char* expected;  // mkdssp's table lines, in data/dssp/
};

const TableCase kTableCases[] = {
    {"parallel and antiparallel sheet", "1ubi.pdb", "dssp/1ubi.dssp"},
    {"gaps where MSE is HETATM", "1a8o.pdb", "dssp/1a8o.dssp"},
    {"two chains, one new-chain break", "1isu.pdb", "dssp/1isu.dssp"},
    {"insertion codes 56A-56E and alternates", "1orc.pdb", "dssp/1orc.dssp"},
    // mkdssp's reader knows no SEC without the CCD: a gap in the chain, not an 'X' residue.
    {"selenocysteine left out", "1kqf_sec.pdb", "dssp/1kqf_sec.dssp"},
    // Location B comes first in the file; mkdssp's reader sorts A before B and DSSP takes the
    // last, B, whose displaced backbone breaks the chain on both sides.
    {"alternates listed B before A", "1crn_alternates.pdb", "dssp/1crn_alternates.dssp"},
};

TEST(DsspLibrary, TablesEqualMkdssp) {
  for (const TableCase& c : kTableCases) {
    const std::vector<std::string> expected = Rows(test::ReadFile(test::DataFile(c.expected)));
    ASSERT_GT(expected.size(), 1u) << c.expected;
    EXPECT_EQ(Rows(DsspClassicTable(ReadAtoms(c.input))), expected) << c.what;
  }
}

std::vector<AtomRecord> CaTrace() {
  std::vector<AtomRecord> atoms;
  for (const AtomRecord& atom : ReadAtoms("1crn.pdb")) {
    if (std::strcmp(atom.name, " CA ") == 0) atoms.push_back(atom);
  }
  return atoms;
}

struct FailureCase {
  const char* what;
  std::vector<AtomRecord> atoms;
};

TEST(DsspLibrary, UnusableAtomsThrow) {
  const FailureCase cases[] = {
      {"no atoms", {}},
      {"CA trace: no residue has a complete backbone", CaTrace()},
      {"DNA strand: no amino acid", ReadAtoms("1lcd.pdb", 'B')},
  };
  for (const FailureCase& c : cases) {
    EXPECT_THROW(DsspClassicTable(c.atoms), std::runtime_error) << c.what;
  }
}

std::vector<std::string> RowsOrError(const std::vector<AtomRecord>& atoms) {
  try {
    return Rows(DsspClassicTable(atoms));
  } catch (const std::exception& e) {
    return {e.what()};
  }
}

// quarnel runs chains in parallel threads: each thread must get mkdssp's tables, the library's
// one-time set-up included (each test runs in a fresh process).
TEST(DsspLibrary, ThreadsAtOnceGetTheSameTables) {
  constexpr size_t kThreads = 4;
  const size_t cases = std::size(kTableCases);
  std::vector<std::vector<AtomRecord>> inputs;
  for (const TableCase& c : kTableCases) inputs.push_back(ReadAtoms(c.input));
  std::vector<std::vector<std::vector<std::string>>> results(
      kThreads, std::vector<std::vector<std::string>>(cases));
  std::vector<std::thread> threads;
  for (size_t t = 0; t < kThreads; ++t) {
    threads.emplace_back([&inputs, &results, t, cases] {
      for (size_t k = 0; k < cases; ++k) {
        const size_t i = (k + t) % cases;
        results[t][i] = RowsOrError(inputs[i]);
      }
    });
  }
  for (std::thread& thread : threads) thread.join();
  for (size_t i = 0; i < cases; ++i) {
    const std::vector<std::string> expected = Rows(test::ReadFile(test::DataFile(kTableCases[i].expected)));
    for (size_t t = 0; t < kThreads; ++t) EXPECT_EQ(results[t][i], expected) << kTableCases[i].what;
  }
}

}  // namespace
