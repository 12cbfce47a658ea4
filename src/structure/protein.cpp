// The PDB reader: ATOM records of one file (first model, every chain, no hydrogens) become the
// residue array Protein, with every atom kept in AtomPool.
#include "structure/protein.h"

#include <cstdint>
#include <cstdio>
#include <cstring>
#include <new>

#include "run/fatal.h"
#include "run/textio.h"
#include "structure/pdb_names.h"

namespace {

// A structure needs on average this many stored atoms per residue; a CA-only model has fewer.
constexpr int64_t kMinAtomsPerResidue = 4;
constexpr int32_t kNoPreviousResnum = -999;
constexpr float kUnsetCutScore = 999.9f;

// Copies a fixed-column field into a NUL-terminated char[4].
void CopyName(const std::string& field, char (&name)[4]) {
  std::memset(name, 0, sizeof(name));
  std::strncpy(name, field.c_str(), sizeof(name) - 1);
}

bool IsBackboneName(const char* name) {
  return std::strcmp(name, "CA ") == 0 || std::strcmp(name, "N  ") == 0 ||
         std::strcmp(name, "C  ") == 0 || std::strcmp(name, "O  ") == 0;
}

Atom ParseAtom(const std::string& line) {
  Atom atom{};
  CopyName(Columns(line, 14, 16), atom.name);            // atom name
  atom.backbone = IsBackboneName(atom.name) ? 1 : 0;
  atom.serial = AtoiField(Columns(line, 7, 12));          // serial
  atom.occupancy = AtofField(Columns(line, 57, 60));      // occupancy
  atom.x = AtofField(Columns(line, 31, 38));              // x
  atom.y = AtofField(Columns(line, 39, 46));              // y
  atom.z = AtofField(Columns(line, 47, 54));              // z
  return atom;
}

Residue NewResidue(const std::string& line, int32_t index) {
  Residue residue{};
  residue.merged = 0;
  residue.index = index;
  residue.chain = Column(line, 22);                      // chainID
  residue.resnum = AtoiField(Columns(line, 23, 26));     // resSeq
  residue.icode = Column(line, 27);                      // iCode
  CopyName(Columns(line, 18, 20), residue.resname);      // resName
  residue.natoms = 0;
  residue.atoms = nullptr;
  residue.ca[0] = residue.ca[1] = residue.ca[2] = kNoCoordinate;
  residue.domain = 0;
  residue.part = 0;
  // The run driver gives every residue these defaults again before reading DSSP; a residue
  // is never left with an undefined secondary structure in between.
  residue.ss = 'L';
  residue.bridge1 = -1;
  residue.bridge2 = -1;
  residue.cutscore[0] = kUnsetCutScore;
  residue.cutscore[1] = 0.0f;
  residue.cutscore[2] = 0.0f;
  return residue;
}

void AppendResidue(const std::string& line, int32_t index) {
  try {
    Protein.push_back(NewResidue(line, index));
  } catch (const std::bad_alloc&) {
    Fatal(50, Stream::kStdout, Format("Quit: realloc failed at ProteinSize=%d!\n", index));
  }
}

void SetCa(Residue& residue, const Atom& atom) {
  residue.ca[0] = atom.x;
  residue.ca[1] = atom.y;
  residue.ca[2] = atom.z;
}

// Atoms are gathered in AtomPool while reading; each residue's pointer into the pool is set only
// after the last atom is stored, when the pool no longer moves.
void AttachAtoms(const std::vector<size_t>& firstAtom) {
  for (size_t i = 0; i < Protein.size(); ++i) {
    size_t end = i + 1 < Protein.size() ? firstAtom[i + 1] : AtomPool.size();
    Protein[i].natoms = static_cast<int32_t>(end - firstAtom[i]);
    Protein[i].atoms = AtomPool.data() + firstAtom[i];
  }
}

// Structures often arrive gzip-compressed or as mmCIF. Read by PDB columns, the first holds no
// ATOM record and the second's atom_site rows, which also begin with "ATOM", give nonsense
// residues: either would make a report that looks real. Such a file is refused as unreadable,
// with a line saying why.
[[noreturn]] void RefuseFormat(const char* format) {
  std::fprintf(stderr, "quarnel: %s is %s; quarnel reads PDB-format files\n",
               TemplateName.c_str(), format);
  Fatal(5, Stream::kStdout, Format("INPUT %s OPEN ERROR: QUIT\n", TemplateName.c_str()));
}

bool IsGzip(std::FILE* file) {
  int first = std::fgetc(file);
  int second = std::fgetc(file);
  std::rewind(file);
  return first == 0x1f && second == 0x8b;
}

}  // namespace

void GetProtein() {
  std::FILE* file = std::fopen(TemplateName.c_str(), "r");
  if (file == nullptr)
    Fatal(5, Stream::kStdout, Format("INPUT %s OPEN ERROR: QUIT\n", TemplateName.c_str()));

  Protein.clear();
  AtomPool.clear();
  ProteinSize = 0;
  std::vector<size_t> firstAtom;
  int32_t previousResnum = kNoPreviousResnum;
  char previousIcode = ' ';

  std::string line;
  try {
    if (IsGzip(file)) RefuseFormat("gzip-compressed");
    while (ReadLine(file, line)) {
      // An mmCIF file opens with its data block, before any ATOM record.
      if (Protein.empty() && StartsWith(line, "data_")) RefuseFormat("an mmCIF file");
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
      if (Protein.empty() || resnum != previousResnum || icode != previousIcode) {
        AppendResidue(line, static_cast<int32_t>(Protein.size()));
        firstAtom.push_back(AtomPool.size());
        previousResnum = resnum;
        previousIcode = icode;
      }

      Atom atom = ParseAtom(line);
      AtomPool.push_back(atom);
      // A nucleotide is represented by its phosphorus; when a residue has several such atoms
      // (alternate locations), the last one in the file wins.
      if (std::strcmp(atom.name, "P  ") == 0) SetCa(Protein.back(), atom);
      if (std::strcmp(atom.name, "CA ") == 0) SetCa(Protein.back(), atom);
    }
  } catch (...) {
    std::fclose(file);
    throw;
  }
  // A name that opens but cannot be read (a directory, an I/O error) is as unusable as one
  // that does not open.
  bool unreadable = std::ferror(file) != 0;
  std::fclose(file);
  if (unreadable)
    Fatal(5, Stream::kStdout, Format("INPUT %s OPEN ERROR: QUIT\n", TemplateName.c_str()));

  AttachAtoms(firstAtom);
  ProteinSize = static_cast<int32_t>(Protein.size());

  int64_t atomTotal = static_cast<int64_t>(AtomPool.size());
  if (kMinAtomsPerResidue * ProteinSize > atomTotal)
    Fatal(100, Stream::kStderr,
          Format("Missing sidechain atoms for %s\n(%d atoms in %d residues), Quit!\n",
                 TemplateName.c_str(), static_cast<int>(atomTotal), ProteinSize));
}
