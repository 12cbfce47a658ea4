// Which chains of a structure are proteins, by gemmi's polymer heuristics.
#pragma once

#include <string>
#include <vector>

namespace gemmi {
struct Structure;
}

namespace quarnel {

struct ChainKind {
  std::string id;
  bool protein;
};

// The chains of the first model in file order. A chain the file gives in parts (its polymer,
// later its ligands and waters) is one chain, a protein when its polymer is made of amino
// acids. Residues of unknown kind (a PDB file without TER records) are sorted by gemmi first.
std::vector<ChainKind> ClassifyChains(gemmi::Structure& structure);

// One of the twenty amino acids or the standard nucleotides, by gemmi's residue table.
bool IsStandardResidue(const std::string& name);
// Water (HOH, DOD, WAT...), blanks around the name allowed, by gemmi's residue table.
bool IsWater(std::string name);
// An amino acid (standard or modified, as MSE), by gemmi's residue table.
bool IsAminoAcid(const std::string& name);

// The same for PDB text, read with gemmi's PDB reader. Only the first model's ATOM, HETATM and
// TER records are handed to it, as quarnel's reader sees them, so that header records or
// old-style columns 73-80 that quarnel never reads cannot make the file unreadable. Chain ids
// are those of column 22, trimmed (a blank one is empty). Throws
// std::runtime_error with gemmi's reason when it still cannot read them.
std::vector<ChainKind> ClassifyPdbChains(const std::string& text, const std::string& name);

}  // namespace quarnel
