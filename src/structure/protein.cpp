// The structure reader: ATOM records of the first model (every chain, no hydrogens) become the
// residue array, with every atom kept in one pool.
#include "structure/protein.h"

#include <cstring>
#include <new>

#include "base/memory.h"
#include "base/status.h"
#include "base/text.h"

namespace quarnel {

namespace {

// A structure needs on average this many stored atoms per residue; a CA-only model has fewer.
constexpr int64_t kMinAtomsPerResidue = 4;
constexpr float kUnsetCutScore = 999.9f;

template <size_t N, size_t M>
void CopyName(const char (&field)[M], size_t from, char (&name)[N]) {
  std::memset(name, 0, N);
  const size_t length = strnlen(field, M);
  if (from < length) std::memcpy(name, field + from, std::min(length - from, N - 1));
}

bool IsBackboneName(const char* name) {
  return std::strcmp(name, "CA ") == 0 || std::strcmp(name, "N  ") == 0 ||
         std::strcmp(name, "C  ") == 0 || std::strcmp(name, "O  ") == 0;
}

Atom MakeAtom(const AtomRecord& record) {
  Atom atom{};
  CopyName(record.name, 1, atom.name);  // columns 14-16
  atom.backbone = IsBackboneName(atom.name) ? 1 : 0;
  atom.x = record.x;
  atom.y = record.y;
  atom.z = record.z;
  CopyName(record.name, 0, atom.fullName);
  atom.altloc = record.altloc;
  CopyName(record.resname, 0, atom.resname);
  atom.chain = record.chain;
  atom.resnum = record.resnum;
  atom.icode = record.icode;
  atom.bfactor = record.bfactor;
  CopyName(record.element, 0, atom.element);
  return atom;
}

Residue NewResidue(const AtomRecord& record, int32_t index, int32_t firstAtom) {
  Residue residue{};
  residue.merged = 0;
  residue.index = index;
  residue.chain = record.chain;
  residue.resnum = record.resnum;
  residue.icode = record.icode;
  CopyName(record.resname, 0, residue.resname);
  residue.natoms = 0;
  residue.firstAtom = firstAtom;
  residue.ca[0] = residue.ca[1] = residue.ca[2] = kNoCoordinate;
  residue.domain = 0;
  residue.part = 0;
  residue.ss = 'L';
  residue.bridge1 = kNoPartner;
  residue.bridge2 = kNoPartner;
  residue.cutscore[0] = kUnsetCutScore;
  residue.cutscore[1] = 0.0f;
  residue.cutscore[2] = 0.0f;
  return residue;
}

void SetCa(Residue& residue, const Atom& atom) {
  residue.ca[0] = atom.x;
  residue.ca[1] = atom.y;
  residue.ca[2] = atom.z;
}

[[noreturn]] void OpenError(const std::string& name, std::string hint = {}) {
  Fail(Status::kInputOpen, Stream::kStdout, Format("INPUT %s OPEN ERROR: QUIT\n", name.c_str()),
       std::move(hint));
}

// The atoms the reader keeps: ATOM records before the first END or ENDMDL, no hydrogens.
size_t CountAtoms(const std::vector<AtomRecord>& records) {
  size_t atoms = 0;
  for (const AtomRecord& record : records) {
    if (record.IsEnd()) break;
    atoms += record.kind == AtomRecord::kAtom && !record.IsHydrogen() ? 1 : 0;
  }
  return atoms;
}

void AddAtom(Structure& structure, const AtomRecord& record) {
  // The chain is not compared: two chains that meet with the same residue number and insertion
  // code make one residue. The very first atom always opens a residue, whatever its number.
  if (structure.residues.empty() || record.resnum != structure.residues.back().resnum ||
      record.icode != structure.residues.back().icode)
    structure.residues.push_back(
        NewResidue(record, structure.size(), static_cast<int32_t>(structure.atoms.size())));
  const Atom atom = MakeAtom(record);
  structure.atoms.push_back(atom);
  Residue& residue = structure.residues.back();
  residue.natoms += 1;
  // A nucleotide is represented by its phosphorus; when a residue has several such atoms
  // (alternate locations), the last one in the file wins.
  if (std::strcmp(atom.name, "P  ") == 0) SetCa(residue, atom);
  if (std::strcmp(atom.name, "CA ") == 0) SetCa(residue, atom);
}

}  // namespace

Structure StructureOf(const std::vector<AtomRecord>& records, const std::string& name) {
  Structure structure;
  try {
    // Arrays sized before they are filled: a growing array copies itself into fresh pages again
    // and again, and every page a process first touches costs it a page fault.
    const size_t atoms = CountAtoms(records);
    structure.atoms.reserve(atoms);
    structure.residues.reserve(atoms);
    PrefaultForWriting(structure.atoms.data(), atoms * sizeof(Atom));
    for (const AtomRecord& record : records) {
      if (record.IsEnd()) break;  // END, or ENDMDL: only the first model is read
      // HETATM residues (e.g. MSE) stay out, and so do hydrogens.
      if (record.kind != AtomRecord::kAtom || record.IsHydrogen()) continue;
      AddAtom(structure, record);
    }
  } catch (const std::bad_alloc&) {
    Fail(Status::kAllocation, Stream::kStdout,
         Format("Quit: realloc failed at ProteinSize=%d!\n", structure.size()));
  }
  const int64_t atomTotal = static_cast<int64_t>(structure.atoms.size());
  if (kMinAtomsPerResidue * structure.size() > atomTotal)
    Fail(Status::kTooFewAtoms, Stream::kStderr,
         Format("Missing sidechain atoms for %s\n(%d atoms in %d residues), Quit!\n", name.c_str(),
                static_cast<int>(atomTotal), structure.size()));
  return structure;
}

Structure ReadStructure(const RecordSource& source) {
  std::shared_ptr<const AtomRecords> records;
  try {
    records = source.Read();
  } catch (const std::bad_alloc&) {
    Fail(Status::kAllocation, Stream::kStdout, "Quit: realloc failed at ProteinSize=0!\n");
  }
  // A name that opens but cannot be read (a directory, an I/O error) is as unusable as one that
  // does not open.
  if (records == nullptr) OpenError(source.name());
  if (!records->notPdb.empty())
    OpenError(source.name(), Format("quarnel: %s is %s; quarnel reads PDB-format files",
                                    source.name().c_str(), records->notPdb.c_str()));
  return StructureOf(records->records, source.name());
}

void SetSecondaryStructureDefaults(std::vector<Residue>& residues) {
  for (Residue& residue : residues) {
    residue.ss = 'L';
    residue.bridge1 = kNoPartner;
    residue.bridge2 = kNoPartner;
  }
}

}  // namespace quarnel
