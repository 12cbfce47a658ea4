// The PDB reader: ATOM records of one text (first model, every chain, no hydrogens) become the
// residue array, with every atom kept in one pool.
#include "structure/protein.h"

#include <cstring>
#include <new>

#include "base/memory.h"
#include "base/status.h"

namespace quarnel {

namespace {

// A structure needs on average this many stored atoms per residue; a CA-only model has fewer.
constexpr int64_t kMinAtomsPerResidue = 4;
constexpr int32_t kNoPreviousResnum = -999;
constexpr float kUnsetCutScore = 999.9f;
// Room for the atoms a text of known size may hold, reserved and its pages mapped before
// reading: a growing array copies itself into fresh pages again and again, and every page a
// process first touches costs it a page fault. An ATOM record that holds coordinates runs to
// column 54 at least, and a typical one to column 80, so the room for the atoms of a text of
// ATOM records is mapped whole; a residue has a few atoms (a CA-only model one).
constexpr size_t kShortestAtomRecord = 55;
constexpr size_t kTypicalAtomRecord = 81;
constexpr size_t kReservedResiduesPerAtom = 2;  // a residue for every second atom

template <size_t N>
void CopyName(const std::string& field, char (&name)[N]) {
  std::memset(name, 0, N);
  std::strncpy(name, field.c_str(), N - 1);
}

bool IsBackboneName(const char* name) {
  return std::strcmp(name, "CA ") == 0 || std::strcmp(name, "N  ") == 0 ||
         std::strcmp(name, "C  ") == 0 || std::strcmp(name, "O  ") == 0;
}

Atom ParseAtom(const std::string& line) {
  Atom atom{};
  CopyName(Columns(line, 14, 16), atom.name);          // atom name
  atom.backbone = IsBackboneName(atom.name) ? 1 : 0;
  atom.serial = AtoiField(Columns(line, 7, 12));        // serial
  atom.occupancy = AtofField(Columns(line, 57, 60));    // occupancy
  atom.x = AtofField(Columns(line, 31, 38));            // x
  atom.y = AtofField(Columns(line, 39, 46));            // y
  atom.z = AtofField(Columns(line, 47, 54));            // z
  CopyName(Columns(line, 13, 16), atom.fullName);       // atom name as written
  atom.altloc = Column(line, 17);                       // altLoc
  CopyName(Columns(line, 18, 20), atom.resname);        // resName
  atom.chain = Column(line, 22);                        // chainID
  atom.resnum = AtoiField(Columns(line, 23, 26));       // resSeq
  atom.icode = Column(line, 27);                        // iCode
  atom.bfactor = AtofField(Columns(line, 61, 66));      // tempFactor
  CopyName(Columns(line, 77, 78), atom.element);        // element
  return atom;
}

Residue NewResidue(const std::string& line, int32_t index, int32_t firstAtom) {
  Residue residue{};
  residue.merged = 0;
  residue.index = index;
  residue.chain = Column(line, 22);                     // chainID
  residue.resnum = AtoiField(Columns(line, 23, 26));    // resSeq
  residue.icode = Column(line, 27);                     // iCode
  CopyName(Columns(line, 18, 20), residue.resname);     // resName
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

[[noreturn]] void OpenError(const LineSource& source, std::string hint = {}) {
  Fail(Status::kInputOpen, Stream::kStdout,
       Format("INPUT %s OPEN ERROR: QUIT\n", source.name().c_str()), std::move(hint));
}

// Structures often arrive gzip-compressed or as mmCIF. Read by PDB columns, the first holds no
// ATOM record and the second's atom_site rows, which also begin with "ATOM", give nonsense
// residues: either would make a report that looks real. Such text is refused as unreadable.
[[noreturn]] void RefuseFormat(const LineSource& source, const char* format) {
  OpenError(source, Format("quarnel: %s is %s; quarnel reads PDB-format files",
                           source.name().c_str(), format));
}

bool LooksGzipped(const std::string& firstLine) {
  return firstLine.size() >= 2 && static_cast<unsigned char>(firstLine[0]) == 0x1f &&
         static_cast<unsigned char>(firstLine[1]) == 0x8b;
}

}  // namespace

Structure ReadStructure(const LineSource& source) {
  std::unique_ptr<LineReader> reader = source.Open();
  if (reader == nullptr) OpenError(source);

  Structure structure;
  try {
    const size_t atoms = reader->SizeHint() / kShortestAtomRecord;
    structure.atoms.reserve(atoms);
    structure.residues.reserve(atoms / kReservedResiduesPerAtom);
    PrefaultForWriting(structure.atoms.data(), reader->SizeHint() / kTypicalAtomRecord * sizeof(Atom));
  } catch (const std::bad_alloc&) {
    // Room is only a saving; the arrays grow as they must.
  }
  int32_t previousResnum = kNoPreviousResnum;
  char previousIcode = ' ';
  bool firstLine = true;
  std::string line;
  try {
    while (reader->Next(line)) {
      if (firstLine && LooksGzipped(line)) RefuseFormat(source, "gzip-compressed");
      firstLine = false;
      // An mmCIF file opens with its data block, before any ATOM record.
      if (structure.residues.empty() && StartsWith(line, "data_"))
        RefuseFormat(source, "an mmCIF file");
      if (StartsWith(line, "END")) break;  // END, or ENDMDL: only the first model is read
      if (StartsWith(line, "TER")) continue;
      if (!StartsWith(line, "ATOM  ")) continue;  // HETATM residues (e.g. MSE) stay out
      // Hydrogens have 'H' in column 14; a four-character name such as HG21 starts in
      // column 13 and has its second letter there, so it is kept.
      if (Column(line, 14) == 'H') continue;

      int32_t resnum = AtoiField(Columns(line, 23, 26));  // resSeq
      char icode = Column(line, 27);                       // iCode
      // The chain is not compared: two chains that meet with the same residue number and
      // insertion code make one residue. The very first atom always opens a residue, whatever
      // its number.
      if (structure.residues.empty() || resnum != previousResnum || icode != previousIcode) {
        int32_t index = structure.size();
        structure.residues.push_back(
            NewResidue(line, index, static_cast<int32_t>(structure.atoms.size())));
        previousResnum = resnum;
        previousIcode = icode;
      }

      Atom atom = ParseAtom(line);
      structure.atoms.push_back(atom);
      Residue& residue = structure.residues.back();
      residue.natoms += 1;
      // A nucleotide is represented by its phosphorus; when a residue has several such atoms
      // (alternate locations), the last one in the file wins.
      if (std::strcmp(atom.name, "P  ") == 0) SetCa(residue, atom);
      if (std::strcmp(atom.name, "CA ") == 0) SetCa(residue, atom);
    }
  } catch (const std::bad_alloc&) {
    Fail(Status::kAllocation, Stream::kStdout,
         Format("Quit: realloc failed at ProteinSize=%d!\n", structure.size()));
  }
  // A name that opens but cannot be read (a directory, an I/O error) is as unusable as one
  // that does not open.
  if (reader->Failed()) OpenError(source);

  int64_t atomTotal = static_cast<int64_t>(structure.atoms.size());
  if (kMinAtomsPerResidue * structure.size() > atomTotal)
    Fail(Status::kTooFewAtoms, Stream::kStderr,
         Format("Missing sidechain atoms for %s\n(%d atoms in %d residues), Quit!\n",
                source.name().c_str(), static_cast<int>(atomTotal), structure.size()));
  return structure;
}

void SetSecondaryStructureDefaults(std::vector<Residue>& residues) {
  for (Residue& residue : residues) {
    residue.ss = 'L';
    residue.bridge1 = kNoPartner;
    residue.bridge2 = kNoPartner;
  }
}

}  // namespace quarnel
