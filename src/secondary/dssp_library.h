// DSSP run inside the process on atoms already read, giving the same residue table as mkdssp 4.2
// gives through tools/quarnel-dssp, as values, without writing PDB text or starting a program.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "formats/atom_records.h"
#include "secondary/dssp_table.h"

namespace quarnel {

// One row of DSSP's table as mkdssp prints it (columns 1-34, up to the sheet label): the
// values quarnel reads, and the columns printed around them.
struct DsspResidue {
  DsspRow row;                        // a chain break: its number and the flag alone
  char chain = ' ';                   // 12
  char helix[4] = {' ', ' ', ' ', ' '};  // 18-21: polyproline, 3-10, alpha and pi helix flags
  char bend = ' ';                    // 22
  char chirality = ' ';               // 23
  char ladder[2] = {' ', ' '};        // 24-25: the bridge partners' ladder labels
  char sheet = ' ';                   // 34
  bool newChain = false;              // a chain break where a new chain begins ('*')
};

// DSSP's classic output of the rows: the header line "  #  RESIDUE AA STRUCTURE BP1 BP2" and a
// line per row, as mkdssp 4.2 prints columns 1-34 (what its comparison with mkdssp and DSSP's
// text reader read).
std::string ClassicDsspTable(const std::vector<DsspResidue>& residues);

// DSSP's library, ready to run: the dictionary its data blocks need is read once, when the
// object is made (under a millisecond), and only read afterwards, so one object serves any
// number of threads at once.
class DsspLibrary {
 public:
  DsspLibrary();
  ~DsspLibrary();
  DsspLibrary(const DsspLibrary&) = delete;
  DsspLibrary& operator=(const DsspLibrary&) = delete;

  // DSSP's table for these atoms: one row per residue and per chain break, the values of
  // columns 1-34 (up to the sheet label) as mkdssp 4.2 prints them. Accessibility and the
  // columns after it are not computed. The atoms are taken as mkdssp takes the ATOM records of
  // a PDB file without SEQRES: residues whose name is not one of libcifpp's amino acids (SEC,
  // UNK, nucleotides, water) and residues written under two names are left out; a chain's
  // residues are kept together; of alternate locations DSSP uses the last after sorting (B over
  // A). Only the first model is meant: give no atoms past the first ENDMDL. Throws
  // std::runtime_error with a one-line reason when DSSP fails or finds no residue with a
  // complete backbone.
  std::vector<DsspResidue> Residues(const std::vector<AtomRecord>& atoms) const;

  // False in a program built without DSSP's library (see dssp_library_absent.cpp), where
  // Residues always throws.
  static bool Linked();

 private:
  struct Dictionary;
  std::unique_ptr<Dictionary> dictionary_;
};

}  // namespace quarnel
