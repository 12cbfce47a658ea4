// The atom sites of an mmCIF file's first model, taken from its _atom_site table in file order.
#pragma once

#include <stdexcept>
#include <string>
#include <vector>

#include "formats/chain_kinds.h"

namespace quarnel {

struct AtomSite {
  bool hetatm;          // group_PDB is HETATM
  bool polymer;         // in a polymer entity: a TER record follows a chain's last such site
  bool has_serial;      // _atom_site.id is an integer
  long serial;
  std::string name;     // auth_atom_id (label_atom_id when absent)
  std::string element;  // type_symbol, upper case
  char altloc;          // ' ' for none
  std::string residue;  // auth_comp_id (label_comp_id when absent)
  size_t chain;         // index into MmcifAtoms::chains
  std::string subchain; // label_asym_id: a polymer run ends where it changes
  long resnum;          // auth_seq_id (label_seq_id when absent)
  char icode;           // pdbx_PDB_ins_code, ' ' for none
  double x, y, z;
  double occupancy;
  double bfactor;
  int charge;
};

struct MmcifAtoms {
  std::vector<ChainKind> chains;  // auth_asym_id of the first model, in file order
  std::vector<AtomSite> sites;    // the first model's sites, in file order
};

// Readable mmCIF without a single atom site.
struct NoAtomSites : std::runtime_error {
  using std::runtime_error::runtime_error;
};

// Parses mmCIF text; the first data block with an _atom_site table is read. Throws NoAtomSites
// when there is none, std::runtime_error with the reason when the text is no readable mmCIF.
MmcifAtoms ReadMmcifAtoms(const std::string& text, const std::string& name);

}  // namespace quarnel
