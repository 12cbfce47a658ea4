// Probe of the in-process DSSP: reads a PDB file the way quarnel's reader does (or one chain of
// it, the way quarnel's chain copy does) and prints DSSP's classic table, its timing, or
// whether threads running at once give the tables a single thread gives.
//
// Usage: dssp_library_probe [--chain C] [--repeat N] file.pdb
//        dssp_library_probe --threads T file.pdb...
// --repeat N prints on standard error the milliseconds of the first call and the median of N more.
// --threads T runs every file in T threads at once, each in its own order, and compares the
// tables with those of a single thread.
#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <iostream>
#include <string>
#include <thread>
#include <vector>

#include "secondary/dssp_library.h"

namespace {

// One library for the whole probe, as a program keeps one.
const quarnel::DsspLibrary& Library() {
  static const quarnel::DsspLibrary library;
  return library;
}

using quarnel::AtomRecord;

constexpr char kAllChains = '\0';

// 1-based inclusive columns; a field past the end of the line reads blank.
std::string Field(const std::string& line, size_t first, size_t last) {
  if (line.size() < first) return std::string(last - first + 1, ' ');
  std::string field = line.substr(first - 1, last - first + 1);
  field.resize(last - first + 1, ' ');
  return field;
}

char ColumnAt(const std::string& line, size_t column) {
  return line.size() < column ? ' ' : line[column - 1];
}

template <size_t N>
void CopyField(const std::string& field, char (&out)[N]) {
  std::memset(out, 0, N);
  std::memcpy(out, field.data(), std::min(field.size(), N - 1));
}

AtomRecord ParseAtom(const std::string& line) {
  AtomRecord atom;
  atom.serial = std::atoi(Field(line, 7, 11).c_str());
  CopyField(Field(line, 13, 16), atom.name);
  atom.altloc = ColumnAt(line, 17);
  CopyField(Field(line, 18, 20), atom.resname);
  atom.chain = ColumnAt(line, 22);
  atom.resnum = std::atoi(Field(line, 23, 26).c_str());
  atom.icode = ColumnAt(line, 27);
  atom.x = std::atof(Field(line, 31, 38).c_str());
  atom.y = std::atof(Field(line, 39, 46).c_str());
  atom.z = std::atof(Field(line, 47, 54).c_str());
  atom.occupancy = std::atof(Field(line, 55, 60).c_str());
  atom.bfactor = std::atof(Field(line, 61, 66).c_str());
  CopyField(Field(line, 77, 78), atom.element);
  return atom;
}

// quarnel's reader: ATOM records up to the first END or ENDMDL, no TER, no hydrogen named with
// 'H' in column 14; with a chain, only that chain's records (quarnel's chain copy).
std::vector<AtomRecord> ReadAtoms(const std::string& path, char chain) {
  std::ifstream in(path);
  if (!in) throw std::runtime_error("cannot read " + path);
  std::vector<AtomRecord> atoms;
  std::string line;
  while (std::getline(in, line)) {
    if (!line.empty() && line.back() == '\r') line.pop_back();
    if (line.compare(0, 3, "END") == 0) break;
    if (line.compare(0, 6, "ATOM  ") != 0) continue;
    if (chain != kAllChains && ColumnAt(line, 22) != chain) continue;
    if (ColumnAt(line, 14) == 'H') continue;
    atoms.push_back(ParseAtom(line));
  }
  return atoms;
}

double Milliseconds(const std::vector<AtomRecord>& atoms) {
  const auto start = std::chrono::steady_clock::now();
  const std::string table = quarnel::ClassicDsspTable(Library().Residues(atoms));
  const auto stop = std::chrono::steady_clock::now();
  return std::chrono::duration<double, std::milli>(stop - start).count();
}

void Time(const std::vector<AtomRecord>& atoms, int repeat) {
  const double first = Milliseconds(atoms);
  std::vector<double> runs;
  for (int i = 0; i < repeat; ++i) runs.push_back(Milliseconds(atoms));
  std::sort(runs.begin(), runs.end());
  const double median = runs.empty() ? first : runs[runs.size() / 2];
  std::fprintf(stderr, "atoms %zu first_ms %.2f median_ms %.2f\n", atoms.size(), first, median);
}

std::string TableOrError(const std::vector<AtomRecord>& atoms) {
  try {
    return quarnel::ClassicDsspTable(Library().Residues(atoms));
  } catch (const std::exception& e) {
    return std::string("error: ") + e.what();
  }
}

// The threads start before anything else has called the library, so that its one-time set-up
// runs under contention too; the single-threaded tables are computed afterwards.
int CheckThreads(const std::vector<std::string>& files, int threads) {
  std::vector<std::vector<AtomRecord>> inputs;
  for (const std::string& file : files) inputs.push_back(ReadAtoms(file, kAllChains));
  std::vector<std::vector<std::string>> results(static_cast<size_t>(threads),
                                                std::vector<std::string>(inputs.size()));
  std::vector<std::thread> pool;
  for (int t = 0; t < threads; ++t) {
    pool.emplace_back([&inputs, &results, t] {
      for (size_t k = 0; k < inputs.size(); ++k) {
        const size_t i = (k * 7 + static_cast<size_t>(t) * 13) % inputs.size();
        results[static_cast<size_t>(t)][i] = TableOrError(inputs[i]);
      }
    });
  }
  for (std::thread& thread : pool) thread.join();
  int mismatches = 0;
  for (size_t i = 0; i < inputs.size(); ++i) {
    const std::string expected = TableOrError(inputs[i]);
    for (const auto& result : results) mismatches += result[i] == expected ? 0 : 1;
  }
  std::printf("threads %d files %zu mismatches %d\n", threads, files.size(), mismatches);
  return mismatches == 0 ? 0 : 1;
}

}  // namespace

int main(int argc, char** argv) {
  char chain = kAllChains;
  int repeat = -1;
  int threads = 0;
  std::vector<std::string> files;
  for (int i = 1; i < argc; ++i) {
    const std::string arg = argv[i];
    if (arg == "--chain" && i + 1 < argc && std::strlen(argv[i + 1]) == 1) {
      chain = argv[++i][0];
    } else if (arg == "--repeat" && i + 1 < argc) {
      repeat = std::atoi(argv[++i]);
    } else if (arg == "--threads" && i + 1 < argc) {
      threads = std::atoi(argv[++i]);
    } else {
      files.push_back(arg);
    }
  }
  try {
    if (threads > 0) return CheckThreads(files, threads);
    if (files.size() != 1) {
      std::fprintf(stderr, "usage: dssp_library_probe [--chain C] [--repeat N] file.pdb\n");
      return 2;
    }
    const std::vector<AtomRecord> atoms = ReadAtoms(files[0], chain);
    if (repeat >= 0) {
      Time(atoms, repeat);
      return 0;
    }
    std::fputs(quarnel::ClassicDsspTable(Library().Residues(atoms)).c_str(), stdout);
    return 0;
  } catch (const std::exception& e) {
    std::fprintf(stderr, "dssp_library_probe: %s\n", e.what());
    return 1;
  }
}
