// The residue model every part of the engine works on, and the reader that fills it from the
// ATOM records of a structure.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "formats/atom_records.h"

namespace quarnel {

struct Atom {
  int32_t backbone;  // 1 for "CA ", "N  ", "C  ", "O  "
  char name[4];      // columns 14-16
  double x, y, z;
  // The rest of the record, kept for secondary structure and for model confidence; the engine
  // reads none of it.
  char fullName[5];  // columns 13-16 as written
  char altloc;       // column 17
  char resname[4];   // columns 18-20
  char chain;        // column 22
  int32_t resnum;    // columns 23-26
  char icode;        // column 27
  double bfactor;    // columns 61-66
  char element[3];   // columns 77-78
};

// Kept trivially copyable: slices of the residue array are reordered in place with qsort. A
// residue's identity is its index (position in the file), never its place in the array.
struct Residue {
  int32_t merged;
  int32_t index;
  char chain;
  int32_t resnum;
  char icode;
  char resname[4];
  int32_t natoms;
  int32_t firstAtom;  // its atoms are Structure::atoms[firstAtom .. firstAtom + natoms)
  double ca[3];       // CA (or a nucleotide's P); kNoCoordinate each when the residue has none
  int32_t domain;
  int32_t part;
  char ss;
  int32_t bridge1;
  int32_t bridge2;
  float cutscore[3];
};

constexpr double kNoCoordinate = 999.9;
constexpr int32_t kNoPartner = -1;

struct Structure {
  std::vector<Atom> atoms;        // every stored atom, residue after residue
  std::vector<Residue> residues;  // in file order after reading

  int32_t size() const { return static_cast<int32_t>(residues.size()); }
  const Atom* AtomsOf(const Residue& residue) const { return atoms.data() + residue.firstAtom; }
};

// Reads the ATOM records of the first model, every chain, without hydrogens. Fails with the
// designed open and sufficiency messages; `source.name()` is the file name they give.
Structure ReadStructure(const RecordSource& source);

// The same from records at hand: the structure the reader builds, `name` standing for them in
// the sufficiency failure.
Structure StructureOf(const std::vector<AtomRecord>& records, const std::string& name);

// Every residue in coil with no bridge partner: the state of a run without secondary structure.
void SetSecondaryStructureDefaults(std::vector<Residue>& residues);

}  // namespace quarnel
