// Reading the _atom_site table of an mmCIF file with gemmi's CIF parser, author numbering first,
// as wwPDB fills the PDB columns from it.
#include "formats/mmcif_atoms.h"

#include <gemmi/cif.hpp>
#include <gemmi/mmcif.hpp>

#include <algorithm>
#include <cctype>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <map>
#include <stdexcept>

namespace quarnel {
namespace {

namespace cif = gemmi::cif;
namespace pegtl = tao::pegtl;

// gemmi's grammar and actions, read with a control of our own that says where the text breaks
// the grammar as gemmi's does ("name:line:column: reason"), but with snprintf: gemmi's own
// exception type formats positions with a string stream, whose locale machinery alone would
// double the size of a static quarnel.
template <typename Input>
std::string Where(const Input& in) {
  const pegtl::position position = in.position();
  char where[64];
  std::snprintf(where, sizeof(where), ":%zu:%zu: ", position.line, position.column);
  return position.source + where;
}

template <typename Rule>
struct CifErrors : pegtl::normal<Rule> {
  template <typename Input, typename... States>
  static void raise(const Input& in, States&&...) {
    throw std::runtime_error(Where(in) + cif::error_message<Rule>());
  }
};

template <typename Rule>
struct CifActions : cif::Action<Rule> {};

template <>
struct CifActions<cif::rules::loop> {
  template <typename Input>
  static void apply(const Input& in, cif::Document& out) {
    const cif::Loop& loop = out.items_->back().loop;
    if (loop.values.size() % loop.tags.size() != 0)
      throw std::runtime_error(Where(in) + "Wrong number of values in the loop");
  }
};

cif::Document ReadCif(const std::string& text, const std::string& name) {
  cif::Document document;
  document.source = name;
  pegtl::memory_input<> in(text.data(), text.size(), name);
  pegtl::parse<cif::rules::file, CifActions, CifErrors>(in, document);
  cif::check_for_missing_values(document);
  cif::check_for_duplicates(document);
  return document;
}

// Columns of the atom_site table in the order of AtomSiteTags().
enum AtomSiteColumn {
  kX, kY, kZ, kGroup, kId, kSymbol, kLabelAtom, kAuthAtom, kAltId, kLabelComp, kAuthComp,
  kLabelAsym, kAuthAsym, kEntity, kLabelSeq, kAuthSeq, kInsCode, kOccupancy, kBfactor, kCharge,
  kModel
};

// gemmi's table lookup wants a required tag first.
std::vector<std::string> AtomSiteTags() {
  return {"Cartn_x",          "Cartn_y",           "Cartn_z",          "?group_PDB",
          "?id",              "?type_symbol",      "?label_atom_id",   "?auth_atom_id",
          "?label_alt_id",    "?label_comp_id",    "?auth_comp_id",    "?label_asym_id",
          "?auth_asym_id",    "?label_entity_id",  "?label_seq_id",    "?auth_seq_id",
          "?pdbx_PDB_ins_code", "?occupancy",      "?B_iso_or_equiv",  "?pdbx_formal_charge",
          "?pdbx_PDB_model_num"};
}

constexpr double kDefaultOccupancy = 1.0;
constexpr double kDefaultBfactor = 0.0;

using Row = cif::Table::Row;

// The value of a column, "" when the column is absent or the value is null ('?' or '.').
std::string Value(const Row& row, int column) {
  return row.has2(column) ? cif::as_string(row[column]) : std::string();
}

// The author's value, else the label one: what the PDB columns of wwPDB files show.
std::string AuthorFirst(const Row& row, int author, int label) {
  return row.has2(author) ? cif::as_string(row[author]) : Value(row, label);
}

std::string Upper(std::string text) {
  for (char& c : text) c = static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
  return text;
}

// An integer making up the whole text.
bool ParseWholeInteger(const std::string& text, long& value) {
  if (text.empty()) return false;
  char* end = nullptr;
  value = std::strtol(text.c_str(), &end, 10);
  return *end == '\0';
}

double Number(const Row& row, int column, double fallback) {
  return row.has2(column) ? cif::as_number(row[column], fallback) : fallback;
}

double Coordinate(const Row& row, int column, const std::string& id) {
  double value = Number(row, column, NAN);
  if (std::isnan(value)) throw std::runtime_error("atom site " + id + " has no coordinates");
  return value;
}

// The residue number and insertion code. Old files write the code after the number
// ("15A") and have no insertion-code column.
void ReadResidueNumber(const Row& row, AtomSite& site, const std::string& id) {
  std::string number = AuthorFirst(row, kAuthSeq, kLabelSeq);
  char* end = nullptr;
  site.resnum = std::strtol(number.c_str(), &end, 10);
  if (number.empty() || end == number.c_str())
    throw std::runtime_error("atom site " + id + " has no residue number");
  std::string code = Value(row, kInsCode);
  if (code.empty() && end[0] != '\0' && end[1] == '\0') code = end;
  site.icode = code.empty() ? ' ' : code[0];
}

bool IsPolymer(const Row& row, const std::map<std::string, bool>& polymerEntities,
               bool hetatm) {
  auto entity = polymerEntities.find(Value(row, kEntity));
  if (entity != polymerEntities.end()) return entity->second;
  return !hetatm;  // no entity to ask: the ATOM records are taken for the polymer
}

// Without group_PDB the record type follows gemmi's writer: standard residues of a polymer are
// ATOM, everything else HETATM.
bool IsHetatm(const Row& row, const std::map<std::string, bool>& polymerEntities,
              const std::string& residue) {
  std::string group = Upper(Value(row, kGroup));
  if (!group.empty()) return group == "HETATM";
  bool polymer = IsPolymer(row, polymerEntities, /*hetatm=*/false);
  return !(polymer && IsStandardResidue(residue));
}

size_t ChainIndex(std::vector<ChainKind>& chains, const std::string& id) {
  for (size_t i = 0; i < chains.size(); ++i)
    if (chains[i].id == id) return i;
  chains.push_back({id, false});
  return chains.size() - 1;
}

AtomSite ReadSite(const Row& row, const std::map<std::string, bool>& polymerEntities,
                  std::vector<ChainKind>& chains, int asymColumn) {
  AtomSite site{};
  std::string id = Value(row, kId);
  site.has_serial = ParseWholeInteger(id, site.serial);
  site.name = AuthorFirst(row, kAuthAtom, kLabelAtom);
  if (site.name.empty()) throw std::runtime_error("atom site " + id + " has no atom name");
  site.element = Upper(Value(row, kSymbol));
  std::string altloc = Value(row, kAltId);
  site.altloc = altloc.empty() ? ' ' : altloc[0];
  site.residue = AuthorFirst(row, kAuthComp, kLabelComp);
  site.chain = ChainIndex(chains, Value(row, asymColumn));
  site.subchain = Value(row, kLabelAsym);
  ReadResidueNumber(row, site, id);
  site.x = Coordinate(row, kX, id);
  site.y = Coordinate(row, kY, id);
  site.z = Coordinate(row, kZ, id);
  site.occupancy = Number(row, kOccupancy, kDefaultOccupancy);
  site.bfactor = Number(row, kBfactor, kDefaultBfactor);
  site.charge = row.has2(kCharge) ? std::atoi(row[kCharge].c_str()) : 0;
  site.hetatm = IsHetatm(row, polymerEntities, site.residue);
  site.polymer = IsPolymer(row, polymerEntities, site.hetatm);
  return site;
}

std::map<std::string, bool> PolymerEntities(cif::Block& block) {
  std::map<std::string, bool> polymer;
  for (auto row : block.find("_entity.", {"id", "type"}))
    polymer[row.str(0)] = Upper(row.str(1)) == "POLYMER";
  return polymer;
}

cif::Block* AtomBlock(cif::Document& document) {
  for (cif::Block& block : document.blocks)
    if (block.find_values("_atom_site.Cartn_x").length() > 0) return &block;
  return nullptr;
}

// gemmi gives no table when a coordinate column is missing; which one it is, in plain words.
void RequireCoordinates(cif::Block& block, const cif::Table& table) {
  if (table.ok()) return;
  for (const char* axis : {"Cartn_x", "Cartn_y", "Cartn_z"})
    if (block.find_values(std::string("_atom_site.") + axis).length() == 0)
      throw std::runtime_error(std::string("its atom table has no _atom_site.") + axis +
                               " column: atoms without coordinates cannot be placed");
  throw std::runtime_error("its atom table cannot be read");
}

// A block with atom sites but no Cartn_x column, for the message that says so.
bool HasAtomSites(cif::Document& document) {
  for (cif::Block& block : document.blocks)
    if (block.find_values("_atom_site.id").length() > 0 || block.find_values("_atom_site.group_PDB").length() > 0)
      return true;
  return false;
}

// Chains gemmi's model does not hold (a file without chain ids gives it none) are proteins when
// most of their polymer atom sites belong to amino acids.
void MarkByResidues(const std::vector<AtomSite>& sites, size_t chain, ChainKind& kind) {
  size_t amino = 0, polymer = 0;
  for (const AtomSite& site : sites) {
    if (site.chain != chain || !site.polymer) continue;
    ++polymer;
    amino += IsAminoAcid(site.residue) ? 1 : 0;
  }
  kind.protein = polymer > 0 && 2 * amino > polymer;
}

void MarkProteins(cif::Block& block, MmcifAtoms& atoms) {
  gemmi::Structure structure = gemmi::make_structure_from_block(block);
  const std::vector<ChainKind> kinds = ClassifyChains(structure);
  for (size_t i = 0; i < atoms.chains.size(); ++i) {
    ChainKind& chain = atoms.chains[i];
    auto known = std::find_if(kinds.begin(), kinds.end(), [&](const ChainKind& k) { return k.id == chain.id; });
    if (known != kinds.end()) chain.protein = known->protein;
    else MarkByResidues(atoms.sites, i, chain);
  }
}

}  // namespace

MmcifAtoms ReadMmcifAtoms(const std::string& text, const std::string& name) {
  cif::Document document = ReadCif(text, name);
  cif::Block* block = AtomBlock(document);
  if (block == nullptr && HasAtomSites(document))
    throw std::runtime_error("its atom table has no _atom_site.Cartn_x column: atoms without "
                             "coordinates cannot be placed");
  if (block == nullptr) throw NoAtomSites("holds no atoms (mmCIF without atom sites)");

  std::map<std::string, bool> polymerEntities = PolymerEntities(*block);
  cif::Table table = block->find("_atom_site.", AtomSiteTags());
  RequireCoordinates(*block, table);
  int asymColumn = table.first_of(kAuthAsym, kLabelAsym);
  MmcifAtoms atoms;
  std::string firstModel;
  bool first = true;
  for (auto row : table) {
    std::string model = Value(row, kModel);
    if (first) firstModel = model;
    first = false;
    // Models are told apart by number, not by place: rows of another model are passed over
    // wherever they stand.
    if (model != firstModel) continue;
    atoms.sites.push_back(ReadSite(row, polymerEntities, atoms.chains, asymColumn));
  }
  if (atoms.sites.empty()) throw NoAtomSites("holds no atoms (empty mmCIF atom table)");
  MarkProteins(*block, atoms);
  return atoms;
}

}  // namespace quarnel
