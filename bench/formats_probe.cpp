// Checks the structure-file front end against PDB files: converts a PDB file to mmCIF with gemmi,
// and compares what quarnel's reader would build from two files of the same entry.
//
//   formats_probe to-mmcif IN.pdb OUT.cif
//   formats_probe compare REFERENCE.pdb OTHER VARIANT   one TSV row (header: formats_probe header)
//   formats_probe time FILE [REPEATS]                  milliseconds per load, whole records, chains
// Debian ships gemmi without its bundled stb_sprintf; the C library's snprintf writes the same
// numbers here.
#define USE_STD_SNPRINTF
#define GEMMI_WRITE_IMPLEMENTATION
#include <gemmi/pdb.hpp>
#include <gemmi/polyheur.hpp>
#include <gemmi/to_cif.hpp>
#include <gemmi/to_mmcif.hpp>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <iostream>
#include <sstream>
#include <stdexcept>
#include <string>
#include <tuple>
#include <vector>

#include "formats/pdb_writer.h"
#include "formats/structure_file.h"

namespace {

using quarnel::ChainInfo;
using quarnel::StructureFile;

// What quarnel's reader keeps of one atom and one residue, read here by its column rules with
// no code shared with the front end.
struct ReadAtom {
  std::string name;  // columns 14-16
  double x, y, z;    // 31-38, 39-46, 47-54
  double occupancy;  // 57-60
  int serial;        // 7-12
  std::string bfactor;  // 61-66, for later use; not read by quarnel yet
};

struct ReadResidue {
  char chain;        // 22
  int resnum;        // 23-26
  char icode;        // 27
  std::string name;  // 18-20
  std::vector<ReadAtom> atoms;
};

std::string Cols(const std::string& line, size_t first, size_t last) {
  if (line.size() < first) return std::string();
  return line.substr(first - 1, last - first + 1);
}

char Col(const std::string& line, size_t column) {
  return line.size() < column ? ' ' : line[column - 1];
}

std::vector<ReadResidue> ReadRecords(const std::string& text) {
  std::vector<ReadResidue> residues;
  std::istringstream in(text);
  std::string line;
  while (std::getline(in, line)) {
    if (line.compare(0, 3, "END") == 0) break;
    if (line.compare(0, 6, "ATOM  ") != 0) continue;
    if (Col(line, 14) == 'H') continue;
    int resnum = std::atoi(Cols(line, 23, 26).c_str());
    char icode = Col(line, 27);
    if (residues.empty() || residues.back().resnum != resnum || residues.back().icode != icode)
      residues.push_back({Col(line, 22), resnum, icode, Cols(line, 18, 20), {}});
    residues.back().atoms.push_back({Cols(line, 14, 16), std::atof(Cols(line, 31, 38).c_str()),
                                     std::atof(Cols(line, 39, 46).c_str()),
                                     std::atof(Cols(line, 47, 54).c_str()),
                                     std::atof(Cols(line, 57, 60).c_str()),
                                     std::atoi(Cols(line, 7, 12).c_str()), Cols(line, 61, 66)});
  }
  return residues;
}

struct Tally {
  size_t residues = 0;
  size_t atoms = 0;
  size_t reordered_residues = 0;  // the same atoms, listed in another order
  size_t serial_differences = 0;
  size_t bfactor_differences = 0;
  std::string first_difference;  // of the records quarnel builds; empty when they agree
};

std::string Where(const ReadResidue& residue) {
  return std::string(1, residue.chain) + std::to_string(residue.resnum) +
         (residue.icode == ' ' ? "" : std::string(1, residue.icode));
}

bool SameAtom(const ReadAtom& p, const ReadAtom& q) {
  return p.name == q.name && p.x == q.x && p.y == q.y && p.z == q.z && p.occupancy == q.occupancy;
}

bool AtomBefore(const ReadAtom& p, const ReadAtom& q) {
  return std::tie(p.name, p.x, p.y, p.z, p.occupancy) < std::tie(q.name, q.x, q.y, q.z, q.occupancy);
}

std::vector<ReadAtom> Sorted(std::vector<ReadAtom> atoms) {
  std::sort(atoms.begin(), atoms.end(), AtomBefore);
  return atoms;
}

// Compares the records built from two texts; serial numbers and B-factors are counted apart,
// and so are residues whose atoms agree but come in another order.
Tally CompareRecords(const std::string& expected, const std::string& actual) {
  std::vector<ReadResidue> a = ReadRecords(expected);
  std::vector<ReadResidue> b = ReadRecords(actual);
  Tally tally;
  tally.residues = a.size();
  if (a.size() != b.size()) {
    tally.first_difference = std::to_string(a.size()) + " vs " + std::to_string(b.size()) +
                             " residues";
  }
  for (size_t i = 0; i < a.size() && i < b.size(); ++i) {
    const ReadResidue& r = a[i];
    const ReadResidue& s = b[i];
    tally.atoms += r.atoms.size();
    bool same = r.chain == s.chain && r.resnum == s.resnum && r.icode == s.icode &&
                r.name == s.name && r.atoms.size() == s.atoms.size();
    std::vector<ReadAtom> p = r.atoms;
    std::vector<ReadAtom> q = s.atoms;
    if (same && !std::equal(p.begin(), p.end(), q.begin(), q.end(), SameAtom)) {
      p = Sorted(p);
      q = Sorted(q);
      same = std::equal(p.begin(), p.end(), q.begin(), q.end(), SameAtom);
      if (same) ++tally.reordered_residues;
    }
    for (size_t k = 0; same && k < p.size(); ++k) {
      if (p[k].serial != q[k].serial) ++tally.serial_differences;
      if (p[k].bfactor != q[k].bfactor) ++tally.bfactor_differences;
    }
    if (!same && tally.first_difference.empty())
      tally.first_difference = "residue " + Where(r) + " " + r.name + " (" +
                               std::to_string(r.atoms.size()) + " atoms) vs " + Where(s) + " " +
                               s.name + " (" + std::to_string(s.atoms.size()) + " atoms)";
  }
  return tally;
}

std::string Listing(const std::vector<ChainInfo>& chains) {
  std::string text;
  for (const ChainInfo& chain : chains) {
    if (!text.empty()) text += ',';
    text += chain.id + ":" + std::to_string(chain.residues) + (chain.protein ? ":p" : ":n");
    if (chain.id.size() != 1 || chain.text_id != chain.id[0]) text += std::string("=") + chain.text_id;
  }
  return text;
}

void Header() {
  std::cout << "reference\tvariant\tformat\tchains\tlisting_agrees\tchains_equal\twhole_equal"
               "\twhole_bytes_identical\tchain_bytes_identical\tresidues\tatoms"
               "\treordered_residues\tserial_differences\tbfactor_differences\tlisting\tnote\n";
}

int Compare(const std::string& referencePath, const std::string& otherPath,
            const std::string& variant) {
  StructureFile reference(referencePath);
  StructureFile other(otherPath);
  bool listingAgrees = Listing(reference.chains()) == Listing(other.chains());
  std::string note = listingAgrees ? "" : "listing " + Listing(other.chains());
  size_t chainsEqual = 0;
  size_t chainBytesIdentical = 0;
  Tally total;
  for (const ChainInfo& chain : reference.chains()) {
    std::string expected = quarnel::PdbText(reference.ChainRecords(chain.id).records);
    std::string actual = quarnel::PdbText(other.ChainRecords(chain.id).records);
    Tally tally = CompareRecords(expected, actual);
    if (tally.first_difference.empty())
      ++chainsEqual;
    else if (note.empty())
      note = "chain " + chain.id + ": " + tally.first_difference;
    if (expected == actual) ++chainBytesIdentical;
    total.serial_differences += tally.serial_differences;
    total.bfactor_differences += tally.bfactor_differences;
  }
  std::string referenceWhole = reference.WholePdbText();
  std::string otherWhole = other.WholePdbText();
  Tally whole = CompareRecords(referenceWhole, otherWhole);
  if (!whole.first_difference.empty() && note.empty())
    note = "whole file: " + whole.first_difference;
  bool wholeBytes = referenceWhole == otherWhole;
  std::cout << referencePath << '\t' << variant << '\t'
            << (other.format() == quarnel::StructureFormat::kMmcif ? "mmcif" : "pdb")
            << (other.compressed() ? "+gz" : "") << '\t' << reference.chains().size() << '\t'
            << (listingAgrees ? "yes" : "NO") << '\t' << chainsEqual << '/'
            << reference.chains().size() << '\t' << (whole.first_difference.empty() ? "yes" : "NO")
            << '\t' << (wholeBytes ? "yes" : "no") << '\t' << chainBytesIdentical << '/'
            << reference.chains().size() << '\t' << whole.residues << '\t' << whole.atoms << '\t'
            << whole.reordered_residues << '\t' << whole.serial_differences << '\t'
            << whole.bfactor_differences << '\t'
            << Listing(reference.chains()) << '\t' << (note.empty() ? "-" : note) << '\n';
  bool ok = listingAgrees && chainsEqual == reference.chains().size() &&
            whole.first_difference.empty();
  return ok ? 0 : 1;
}

// Old-style files keep an ID code and a serial number in columns 73-80, which gemmi's reader
// takes for a segment, an element and a charge, and refuses; such records are cut to 72 columns.
std::string CutAtomRecords(const std::string& path) {
  constexpr size_t kOldStyleWidth = 72;
  std::ifstream in(path);
  std::string text;
  std::string line;
  while (std::getline(in, line)) {
    if (line.compare(0, 6, "ATOM  ") == 0 || line.compare(0, 6, "HETATM") == 0)
      line = line.substr(0, kOldStyleWidth);
    text += line + '\n';
  }
  return text;
}

// gemmi's own PDB-to-mmCIF conversion, entities set up from the TER records and SEQRES as its
// converter sets them up.
int ToMmcif(const std::string& in, const std::string& out) {
  gemmi::Structure structure;
  try {
    structure = gemmi::read_pdb_file(in);
  } catch (const std::runtime_error& error) {
    std::cerr << "formats_probe: " << in << ": " << error.what() << "; read again cut to 72 columns\n";
    structure = gemmi::read_pdb_string(CutAtomRecords(in), in);
  }
  gemmi::setup_entities(structure);
  std::ofstream file(out);
  gemmi::cif::write_cif_to_stream(file, gemmi::make_mmcif_document(structure));
  return file ? 0 : 1;
}

double Milliseconds(std::chrono::steady_clock::duration duration) {
  return std::chrono::duration<double, std::milli>(duration).count();
}

int Time(const std::string& path, int repeats) {
  using Clock = std::chrono::steady_clock;
  Clock::duration load{}, whole{}, chains{};
  size_t wholeBytes = 0;
  size_t chainBytes = 0;
  for (int i = 0; i < repeats; ++i) {
    Clock::time_point start = Clock::now();
    StructureFile file(path);
    Clock::time_point loaded = Clock::now();
    wholeBytes = file.WholeRecords().records.size();
    Clock::time_point wholeDone = Clock::now();
    chainBytes = 0;
    for (const ChainInfo& chain : file.chains()) chainBytes += file.ChainRecords(chain.id).records.size();
    Clock::time_point chainsDone = Clock::now();
    load += loaded - start;
    whole += wholeDone - loaded;
    chains += chainsDone - wholeDone;
  }
  std::printf("%s\t%.1f ms load\t%.2f ms whole records\t%.2f ms chain records\t%zu + %zu records\n",
              path.c_str(), Milliseconds(load) / repeats, Milliseconds(whole) / repeats,
              Milliseconds(chains) / repeats, wholeBytes, chainBytes);
  return 0;
}

int Usage() {
  std::cerr << "usage: formats_probe to-mmcif IN.pdb OUT.cif | compare REF OTHER VARIANT |"
               " header | time FILE [REPEATS]\n";
  return 2;
}

int Run(int argc, char** argv) {
  if (argc < 2) return Usage();
  std::string mode = argv[1];
  if (mode == "header" && argc == 2) {
    Header();
    return 0;
  }
  if (mode == "to-mmcif" && argc == 4) return ToMmcif(argv[2], argv[3]);
  if (mode == "compare" && argc == 5) return Compare(argv[2], argv[3], argv[4]);
  if (mode == "time" && (argc == 3 || argc == 4)) return Time(argv[2], argc == 4 ? std::atoi(argv[3]) : 5);
  return Usage();
}

}  // namespace

int main(int argc, char** argv) {
  try {
    return Run(argc, argv);
  } catch (const std::exception& error) {
    std::cerr << "formats_probe: " << error.what() << '\n';
    return 3;
  }
}
