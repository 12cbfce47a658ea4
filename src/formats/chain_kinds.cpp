// Chain kinds from gemmi's structure model: polymer span and polymer type of each chain.
#include "formats/chain_kinds.h"

#include <gemmi/pdb.hpp>
#include <gemmi/polyheur.hpp>

#include <algorithm>
#include <cstdio>
#include <string_view>

#include "base/text.h"

namespace quarnel {
namespace {

// Through the element symbol (columns 77-78): the charge columns after it are where old files
// keep a serial number, which gemmi would refuse as a charge.
constexpr size_t kClassifiedWidth = 78;

constexpr size_t kChainPrefixColumn = 21;
constexpr size_t kResidueColumns = 10;    // 18-27: name, chain, number, insertion code
constexpr size_t kResidueNameColumn = 18;
constexpr size_t kResnumColumn = 23;
constexpr size_t kResnumAndCodeWidth = 5;  // columns 23-27
constexpr int kResnumModulus = 10000;     // running numbers fit columns 23-26

// gemmi's reader hashes residue numbers with a left shift, undefined for a negative number;
// the classification only needs each residue's name and atoms, so its numbers are replaced by
// running ones (columns 23-27), counted where quarnel's reader would open a residue.
class RunningResidueNumbers {
 public:
  void Renumber(std::string& line) {
    std::string residue = line.substr(kResidueNameColumn - 1, kResidueColumns);
    if (residue != previous_) ++number_;
    previous_ = residue;
    char digits[8];
    std::snprintf(digits, sizeof(digits), "%4d ", number_ % kResnumModulus);
    line.replace(kResnumColumn - 1, kResnumAndCodeWidth, digits);
  }

 private:
  std::string previous_;
  int number_ = 0;
};

// The first model's ATOM, HETATM and TER records (waters left out), atom records blank-padded or cut to one width
// (gemmi refuses an atom record too short to hold its coordinates). Column 21 is blanked: gemmi
// would read a two-character chain id from columns 21-22, quarnel's records have column 22.
std::string ClassifiedRecords(std::string_view text) {
  std::string records;
  RunningResidueNumbers numbers;
  ForEachPiece(text, [&records, &numbers](std::string_view record) {
    if (StartsWith(record, "END")) return false;
    if (StartsWith(record, "TER")) {
      records += "TER\n";
    } else if (StartsWith(record, "ATOM  ") || StartsWith(record, "HETATM")) {
      // Waters say nothing of a chain's kind, and where a file closes its chains with TER
      // after their waters (5xli), gemmi would count them into the polymer and, more
      // numerous than its amino acids, find it of no known kind.
      if (IsWater(Columns(record, kResidueNameColumn, kResidueNameColumn + 2))) return true;
      std::string line(record.substr(0, record.find_first_of("\r\n")));
      line.resize(kClassifiedWidth, ' ');
      line[kChainPrefixColumn - 1] = ' ';
      numbers.Renumber(line);
      records += line + '\n';
    }
    return true;
  });
  return records;
}

// gemmi's residue table packs a name's bytes with left shifts, undefined for a byte past ASCII
// (char is signed here); no tabulated name has one, so such bytes may as well be '?'.
std::string TableName(std::string name) {
  for (char& c : name)
    if (static_cast<unsigned char>(c) >= 0x80) c = '?';
  return name;
}

bool HasUnknownResidues(const gemmi::Chain& chain) {
  return std::any_of(chain.residues.begin(), chain.residues.end(), [](const gemmi::Residue& r) {
    return r.entity_type == gemmi::EntityType::Unknown;
  });
}

bool HoldsProtein(gemmi::Chain& chain) {
  if (HasUnknownResidues(chain)) gemmi::add_entity_types(chain, /*overwrite=*/false);
  gemmi::ResidueSpan polymer = chain.get_polymer();
  return !polymer.empty() && gemmi::is_polypeptide(gemmi::check_polymer_type(polymer));
}

}  // namespace

bool IsWater(std::string name) {
  while (!name.empty() && name.back() == ' ') name.pop_back();
  while (!name.empty() && name.front() == ' ') name.erase(0, 1);
  return gemmi::find_tabulated_residue(TableName(name)).is_water();
}

bool IsAminoAcid(const std::string& name) {
  return gemmi::find_tabulated_residue(TableName(name)).is_amino_acid();
}

bool IsStandardResidue(const std::string& name) {
  return gemmi::find_tabulated_residue(TableName(name)).is_standard();
}

std::vector<ChainKind> ClassifyChains(gemmi::Structure& structure) {
  std::vector<ChainKind> kinds;
  if (structure.models.empty()) return kinds;
  for (gemmi::Chain& part : structure.models.front().chains) {
    for (gemmi::Residue& residue : part.residues) residue.name = TableName(residue.name);
    bool protein = HoldsProtein(part);
    auto known = std::find_if(kinds.begin(), kinds.end(),
                              [&part](const ChainKind& kind) { return kind.id == part.name; });
    if (known == kinds.end())
      kinds.push_back({part.name, protein});
    else
      known->protein = known->protein || protein;
  }
  return kinds;
}

std::vector<ChainKind> ClassifyPdbChains(const std::string& text, const std::string& name) {
  std::string records = ClassifiedRecords(text);
  gemmi::Structure structure = gemmi::read_pdb_from_memory(records.data(), records.size(), name);
  return ClassifyChains(structure);
}

}  // namespace quarnel
