// DSSP run inside the process on atoms already read, giving the same residue table as mkdssp 4.2
// gives through tools/quarnel-dssp, without writing PDB text or starting a program.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace quarnel {

// One atom as quarnel's reader took it from an ATOM record (PDB columns in comments).
struct DsspAtom {
  int32_t serial;    // 7-11
  char name[5];      // 13-16, the 4 characters as written, NUL-terminated
  char altloc;       // 17
  char resname[4];   // 18-20
  char chain;        // 22
  int32_t resnum;    // 23-26
  char icode;        // 27
  double x, y, z;    // 31-54
  double occupancy;  // 55-60
  double bfactor;    // 61-66
  char element[3];   // 77-78, may be blank
};

// DSSP's library, ready to run: the dictionary its data blocks need is read once, when the
// object is made (under a millisecond), and only read afterwards, so one object serves any
// number of threads at once.
class DsspLibrary {
 public:
  DsspLibrary();
  ~DsspLibrary();
  DsspLibrary(const DsspLibrary&) = delete;
  DsspLibrary& operator=(const DsspLibrary&) = delete;

  // DSSP's classic output for these atoms: the header line "  #  RESIDUE AA STRUCTURE BP1 BP2"
  // and one row per residue and per chain break, columns 1-34 (up to the sheet label) as mkdssp
  // 4.2 prints them. Accessibility and the columns after it are not computed. The atoms are taken
  // as mkdssp takes the ATOM records of a PDB file without SEQRES: residues whose name is not one
  // of libcifpp's amino acids (SEC, UNK, nucleotides, water) and residues written under two names
  // are left out; a chain's residues are kept together; of alternate locations DSSP uses the last
  // after sorting (B over A). Only the first model is meant: give no atoms past the first ENDMDL.
  // Throws std::runtime_error with a one-line reason when DSSP fails or finds no residue with a
  // complete backbone.
  std::string ClassicTable(const std::vector<DsspAtom>& atoms) const;

  // False in a program built without DSSP's library (see dssp_library_absent.cpp), where
  // ClassicTable always throws.
  static bool Linked();

 private:
  struct Dictionary;
  std::unique_ptr<Dictionary> dictionary_;
};

}  // namespace quarnel
