// The residue model every subsystem works on, and the PDB reader that fills it.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

struct Atom {
  int32_t backbone;  // 1 for "CA ", "N  ", "C  ", "O  "
  int32_t serial;
  char name[4];      // columns 14-16
  double x, y, z;
  double occupancy;
};

// Kept trivially copyable: slices of Protein are reordered in place with qsort. A residue's
// identity is its index (position in the file), never its place in the array.
struct Residue {
  int32_t merged;
  int32_t index;
  char chain;
  int32_t resnum;
  char icode;
  char resname[4];
  int32_t natoms;
  Atom* atoms;       // into AtomPool
  double ca[3];      // CA (or a nucleotide's P); 999.9 each when the residue has none
  int32_t domain;
  int32_t part;
  char ss;
  int32_t bridge1;
  int32_t bridge2;
  float cutscore[3];
};

constexpr double kNoCoordinate = 999.9;

extern std::vector<Residue> Protein;
extern int32_t ProteinSize;
extern std::vector<Atom> AtomPool;  // every stored atom, residue after residue

// Reads the ATOM records of TemplateName into Protein and ProteinSize.
void GetProtein();
