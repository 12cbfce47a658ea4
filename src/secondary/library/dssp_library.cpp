// DSSP through its library: the atoms become the mmCIF data block that mkdssp's PDB reader would
// make of them, DSSP runs on it, and its residues become the rows of its classic table.
#include "secondary/dssp_library.h"

#include <algorithm>
#include <charconv>
#include <cif++.hpp>
#include <cif++/dictionary_parser.hpp>
#include <cstdio>
#include <dssp.hpp>
#include <map>
#include <memory>
#include <sstream>
#include <stdexcept>
#include <string_view>
#include <tuple>

namespace quarnel {
namespace {

// mkdssp's defaults: PP helices of at least 3 residues, first model.
constexpr int kModel = 1;
constexpr int kMinPolyProlineStretch = 3;

constexpr int kPartnerModulus = 10000;  // a partner column holds four digits
constexpr int kLetters = 26;            // ladder and sheet labels cycle through the alphabet

// ---- The dictionary ----------------------------------------------------------------------
// DSSP finds a residue's atoms through the dictionary's link from atom_site to
// pdbx_poly_seq_scheme, and libcifpp refuses a data block without a dictionary. The standard
// mmcif_pdbx.dic costs ~65 ms to load and is a run-time file; these few definitions are all that
// DSSP's reading needs. The item types decide how values compare (int as numbers, ucode without
// case), as in mmcif_pdbx.dic. No value is checked against a pattern: mkdssp too reads values
// its dictionary calls invalid.

// Names held in the tables themselves: no pointer to relocate, so the tables stay read-only.
struct DictionaryItem {
  char category[24];
  char item[32];
  char type[8];
};

constexpr DictionaryItem kDictionaryItems[] = {
    {"atom_site", "id", "code"},
    {"atom_site", "type_symbol", "code"},
    {"atom_site", "label_atom_id", "atcode"},
    {"atom_site", "label_alt_id", "code"},
    {"atom_site", "label_comp_id", "ucode"},
    {"atom_site", "label_asym_id", "code"},
    {"atom_site", "label_entity_id", "code"},
    {"atom_site", "label_seq_id", "int"},
    {"atom_site", "pdbx_PDB_ins_code", "code"},
    {"atom_site", "Cartn_x", "float"},
    {"atom_site", "Cartn_y", "float"},
    {"atom_site", "Cartn_z", "float"},
    {"atom_site", "auth_seq_id", "code"},
    {"atom_site", "auth_comp_id", "code"},
    {"atom_site", "auth_asym_id", "code"},
    {"atom_site", "pdbx_PDB_model_num", "int"},
    {"pdbx_poly_seq_scheme", "asym_id", "code"},
    {"pdbx_poly_seq_scheme", "entity_id", "code"},
    {"pdbx_poly_seq_scheme", "seq_id", "int"},
    {"pdbx_poly_seq_scheme", "mon_id", "ucode"},
    {"pdbx_poly_seq_scheme", "pdb_seq_num", "code"},
    {"pdbx_poly_seq_scheme", "pdb_mon_id", "code"},
    {"pdbx_poly_seq_scheme", "pdb_strand_id", "code"},
    {"pdbx_poly_seq_scheme", "pdb_ins_code", "code"},
};

// atom_site item -> pdbx_poly_seq_scheme item: what makes an atom one of a residue's.
constexpr char kResidueLink[][2][24] = {
    {"auth_asym_id", "pdb_strand_id"}, {"auth_comp_id", "pdb_mon_id"},
    {"auth_seq_id", "pdb_seq_num"},    {"label_asym_id", "asym_id"},
    {"label_comp_id", "mon_id"},       {"label_entity_id", "entity_id"},
    {"label_seq_id", "seq_id"},        {"pdbx_PDB_ins_code", "pdb_ins_code"},
};

constexpr char kDictionaryHead[] = R"(data_quarnel_dssp.dic
_datablock.id quarnel_dssp.dic
_dictionary.title quarnel_dssp.dic
_dictionary.version 1.0
loop_
_item_type_list.code
_item_type_list.primitive_code
_item_type_list.construct
code char .*
atcode char .*
ucode uchar .*
int numb .*
float numb .*
save_atom_site
_category.id atom_site
_category.mandatory_code no
_category_key.name '_atom_site.id'
save_
save_pdbx_poly_seq_scheme
_category.id pdbx_poly_seq_scheme
_category.mandatory_code no
loop_
_category_key.name
'_pdbx_poly_seq_scheme.asym_id'
'_pdbx_poly_seq_scheme.entity_id'
'_pdbx_poly_seq_scheme.seq_id'
'_pdbx_poly_seq_scheme.mon_id'
save_
)";

std::string DictionaryText() {
  std::string text = kDictionaryHead;
  for (const DictionaryItem& d : kDictionaryItems) {
    const std::string name = std::string("_") + d.category + "." + d.item;
    text += "save_" + name + "\n_item.name '" + name + "'\n_item.category_id " + d.category +
            "\n_item.mandatory_code no\n_item_type.code " + d.type + "\nsave_\n";
  }
  text +=
      "loop_\n_pdbx_item_linked_group_list.child_category_id\n"
      "_pdbx_item_linked_group_list.link_group_id\n_pdbx_item_linked_group_list.child_name\n"
      "_pdbx_item_linked_group_list.parent_name\n"
      "_pdbx_item_linked_group_list.parent_category_id\n";
  for (const auto& link : kResidueLink) {
    text += std::string("atom_site 1 '_atom_site.") + link[0] + "' '_pdbx_poly_seq_scheme." +
            link[1] + "' pdbx_poly_seq_scheme\n";
  }
  return text;
}

cif::validator ParseDictionary() {
  std::istringstream in(DictionaryText());
  return cif::parse_dictionary("quarnel_dssp", in);
}

// ---- Residues as mkdssp's PDB reader forms them --------------------------------------------

std::string Trimmed(std::string_view text) {
  const size_t first = text.find_first_not_of(' ');
  if (first == std::string_view::npos) return std::string();
  const size_t last = text.find_last_not_of(' ');
  return std::string(text.substr(first, last - first + 1));
}

struct Residue {
  std::vector<size_t> atoms;  // in file order
  std::string name;
  bool polymer;       // one of the amino acids libcifpp knows, under one name
  size_t chainOrder;  // the chain's rank by first appearance
  size_t lastStart;   // where the residue's records last began
};

// libcifpp knows the 20 amino acids, ASX and GLX by itself; it knows others only from the
// CCD's components.cif, which no Debian package installs. mkdssp's reader makes any other
// residue a non-polymer that DSSP never sees (SEC, UNK, MSE written as ATOM), and so does a
// residue written under two names (microheterogeneity).
bool IsKnownPeptide(const std::string& name) {
  return cif::compound_factory::kAAMap.count(name) != 0;
}

using ResidueKey = std::tuple<char, int32_t, char>;  // chain, number, insertion code

ResidueKey KeyOf(const AtomRecord& atom) { return {atom.chain, atom.resnum, atom.icode}; }

// Residues as mkdssp's reader orders them: each chain's residues together, chains in order of
// first appearance; records of one residue number wherever they are make one residue, which
// stands where its records last began.
std::vector<Residue> GroupResidues(const std::vector<AtomRecord>& atoms) {
  std::map<char, size_t> chainOrder;
  std::map<ResidueKey, size_t> index;
  std::vector<Residue> residues;
  for (size_t i = 0; i < atoms.size(); ++i) {
    const AtomRecord& atom = atoms[i];
    const std::string name = Trimmed(atom.resname);
    const auto chain = chainOrder.emplace(atom.chain, chainOrder.size()).first;
    const auto found = index.emplace(KeyOf(atom), residues.size());
    if (found.second) residues.push_back({{}, name, IsKnownPeptide(name), chain->second, i});
    Residue& residue = residues[found.first->second];
    if (i > 0 && KeyOf(atoms[i - 1]) != KeyOf(atom)) residue.lastStart = i;
    if (name != residue.name) residue.polymer = false;
    residue.atoms.push_back(i);
  }
  std::sort(residues.begin(), residues.end(), [](const Residue& a, const Residue& b) {
    return std::tie(a.chainOrder, a.lastStart) < std::tie(b.chainOrder, b.lastStart);
  });
  return residues;
}

// DSSP's secondary structure, bridges and breaks come from the backbone alone; side chains only
// serve accessibility, which is not computed. Leaving them out halves DSSP's time, most of
// which goes into scanning all atom rows for each residue's atoms.
constexpr char kBackboneNames[][4] = {"N", "CA", "C", "O"};

// A residue's backbone atoms in the order mkdssp's reader lists them: alternates of one atom
// name together where the name first appears, sorted by alternate location (blank first), in
// file order for equal locations. DSSP takes the last atom of each name, so this order decides
// which alternate it uses.
std::vector<size_t> BackboneInReaderOrder(const std::vector<AtomRecord>& atoms,
                                          const Residue& residue) {
  std::vector<std::pair<size_t, std::vector<size_t>>> byName;  // first position, atoms
  for (const char* backbone : kBackboneNames) {
    std::vector<size_t> named;
    for (const size_t i : residue.atoms) {
      if (Trimmed(atoms[i].name) == backbone) named.push_back(i);
    }
    if (named.empty()) continue;
    std::stable_sort(named.begin(), named.end(),
                     [&](size_t a, size_t b) { return atoms[a].altloc < atoms[b].altloc; });
    const size_t firstPosition = *std::min_element(named.begin(), named.end());
    byName.emplace_back(firstPosition, std::move(named));
  }
  std::sort(byName.begin(), byName.end());
  std::vector<size_t> ordered;
  for (const auto& group : byName)
    ordered.insert(ordered.end(), group.second.begin(), group.second.end());
  return ordered;
}

// ---- The data block -------------------------------------------------------------------------

std::string Text(int value) {
  char buffer[16];
  const auto result = std::to_chars(buffer, buffer + sizeof(buffer), value);
  return std::string(buffer, result.ptr);
}

// The shortest text that reads back as the same double: the coordinate as the PDB file wrote it
// (8.3f), so that DSSP's float is the one mkdssp gets from the same record.
std::string Text(double value) {
  char buffer[32];
  const auto result = std::to_chars(buffer, buffer + sizeof(buffer), value);
  return std::string(buffer, result.ptr);
}

// A blank PDB column is an empty mmCIF value, written "." or "?".
std::string CharOrNull(char c, const char* null) {
  return c == ' ' || c == '\0' ? std::string(null) : std::string(1, c);
}

// The element column, or where it is blank the atom name's element part: column 14 alone when
// column 13 is blank or a digit, else columns 13-14 (FE, ZN).
std::string TypeSymbol(const AtomRecord& atom) {
  const std::string element = Trimmed(atom.element);
  if (!element.empty()) return element;
  const char first = atom.name[0];
  const char second = atom.name[1];
  if (first == ' ' || (first >= '0' && first <= '9') || first == '\0')
    return std::string(1, second);
  return std::string{first, second};
}

struct ChainIds {
  std::string asym;    // label_asym_id: A, B, ... in order of first appearance
  std::string entity;  // label_entity_id: one entity per chain is enough for DSSP
  int nextSeqId = 1;
};

struct ResidueKeys {
  std::string asym, entity, seqId, resnum, chain;
};

void AddAtomRows(cif::category& atomSite, const std::vector<AtomRecord>& atoms,
                 const Residue& residue, const ResidueKeys& keys, int& atomId) {
  for (const size_t i : BackboneInReaderOrder(atoms, residue)) {
    const AtomRecord& atom = atoms[i];
    atomSite.emplace({{"id", Text(atomId++)},
                      {"type_symbol", TypeSymbol(atom)},
                      {"label_atom_id", Trimmed(atom.name)},
                      {"label_alt_id", CharOrNull(atom.altloc, ".")},
                      {"label_comp_id", residue.name},
                      {"label_asym_id", keys.asym},
                      {"label_entity_id", keys.entity},
                      {"label_seq_id", keys.seqId},
                      {"pdbx_PDB_ins_code", CharOrNull(atom.icode, "?")},
                      {"Cartn_x", Text(atom.x)},
                      {"Cartn_y", Text(atom.y)},
                      {"Cartn_z", Text(atom.z)},
                      {"auth_seq_id", keys.resnum},
                      {"auth_comp_id", residue.name},
                      {"auth_asym_id", keys.chain},
                      {"pdbx_PDB_model_num", Text(kModel)}});
  }
}

void AddResidueRow(cif::category& scheme, const Residue& residue, const ResidueKeys& keys,
                   char icode) {
  scheme.emplace({{"asym_id", keys.asym},
                  {"entity_id", keys.entity},
                  {"seq_id", keys.seqId},
                  {"mon_id", residue.name},
                  {"pdb_seq_num", keys.resnum},
                  {"pdb_mon_id", residue.name},
                  {"pdb_strand_id", keys.chain},
                  {"pdb_ins_code", CharOrNull(icode, ".")}});
}

void FillDataBlock(cif::datablock& block, const std::vector<AtomRecord>& atoms) {
  cif::category& atomSite = block["atom_site"];
  cif::category& scheme = block["pdbx_poly_seq_scheme"];
  std::map<char, ChainIds> chains;
  int atomId = 1;
  for (const Residue& residue : GroupResidues(atoms)) {
    if (!residue.polymer) continue;
    const AtomRecord& first = atoms[residue.atoms.front()];
    auto found = chains.find(first.chain);
    if (found == chains.end()) {
      const int ordinal = static_cast<int>(chains.size());
      found =
          chains.emplace(first.chain, ChainIds{cif::cif_id_for_number(ordinal), Text(ordinal + 1)})
              .first;
    }
    ChainIds& chain = found->second;
    const ResidueKeys keys{chain.asym, chain.entity, Text(chain.nextSeqId++), Text(first.resnum),
                           CharOrNull(first.chain, "?")};
    AddResidueRow(scheme, residue, keys, first.icode);
    AddAtomRows(atomSite, atoms, residue, keys, atomId);
  }
}

// ---- The table's rows ----------------------------------------------------------------------

char FirstOr(const std::string& text, char blank) { return text.empty() ? blank : text[0]; }

char HelixFlag(const dssp::residue_info& residue, dssp::helix_type type, char middle) {
  switch (residue.helix(type)) {
    case dssp::helix_position_type::Start:
      return '>';
    case dssp::helix_position_type::End:
      return '<';
    case dssp::helix_position_type::StartAndEnd:
      return 'X';
    case dssp::helix_position_type::Middle:
      return middle;
    case dssp::helix_position_type::None:
      break;
  }
  return ' ';
}

// A partner's DSSP number as its four-digit column holds it, and its ladder label.
void BridgePartner(const dssp::residue_info& residue, int which, int& number, char& label) {
  const auto [partner, ladder, parallel] = residue.bridge_partner(which);
  if (!partner) return;
  number = partner.nr() % kPartnerModulus;
  label = static_cast<char>((parallel ? 'a' : 'A') + ladder % kLetters);
}

char Chirality(const dssp::residue_info& residue) {
  constexpr float kUndefinedAngle = 360.0f;
  const float alpha = residue.alpha();
  if (alpha == kUndefinedAngle) return ' ';
  return alpha > 0 ? '+' : '-';
}

char SheetLabel(const dssp::residue_info& residue) {
  const int sheet = residue.sheet();
  return sheet == 0 ? ' ' : static_cast<char>('A' + (sheet - 1) % kLetters);
}

DsspResidue ResidueRow(const dssp::residue_info& residue) {
  DsspResidue r;
  r.row.number = residue.nr();
  r.row.resnum = residue.pdb_seq_num();
  r.row.icode = FirstOr(residue.pdb_ins_code(), ' ');
  r.chain = FirstOr(residue.pdb_strand_id(), ' ');
  r.row.aa = residue.compound_letter();
  r.row.ss = static_cast<char>(residue.type());
  r.helix[0] = HelixFlag(residue, dssp::helix_type::pp, 'P');
  r.helix[1] = HelixFlag(residue, dssp::helix_type::_3_10, '3');
  r.helix[2] = HelixFlag(residue, dssp::helix_type::alpha, '4');
  r.helix[3] = HelixFlag(residue, dssp::helix_type::pi, '5');
  r.bend = residue.bend() ? 'S' : ' ';
  r.chirality = Chirality(residue);
  BridgePartner(residue, 0, r.row.partner1, r.ladder[0]);
  BridgePartner(residue, 1, r.row.partner2, r.ladder[1]);
  r.sheet = SheetLabel(residue);
  return r;
}

// DSSP numbers a break as if it were a residue: a gap in the numbers is where a row marks it,
// with '*' when a new chain begins there.
DsspResidue BreakRow(int number, const dssp::residue_info& next) {
  DsspResidue r;
  r.row.number = number;
  r.row.chainBreak = true;
  r.newChain = next.chain_break() == dssp::chain_break_type::NewChain;
  return r;
}

std::vector<DsspResidue> Rows(const dssp& result) {
  std::vector<DsspResidue> rows;
  int last = 0;
  for (const dssp::residue_info& residue : result) {
    if (residue.nr() != last + 1) rows.push_back(BreakRow(last + 1, residue));
    rows.push_back(ResidueRow(residue));
    last = residue.nr();
  }
  return rows;
}

std::string FirstLine(const std::string& text) { return text.substr(0, text.find('\n')); }

// Rows go in before the dictionary is attached: attached first, it checks every value as it is
// added, and filling took four times as long (all of 1aki's atoms: 3.6 ms instead of 0.9 ms).
std::vector<DsspResidue> RunDssp(const cif::validator& dictionary, const std::vector<AtomRecord>& atoms) {
  try {
    cif::datablock block("quarnel");
    FillDataBlock(block, atoms);
    block.set_validator(&dictionary);
    const dssp result(block, kModel, kMinPolyProlineStretch, false);
    return Rows(result);
  } catch (const std::exception& e) {
    throw std::runtime_error("DSSP failed: " + FirstLine(e.what()));
  }
}

}  // namespace

struct DsspLibrary::Dictionary {
  cif::validator validator = ParseDictionary();
};

DsspLibrary::DsspLibrary() : dictionary_(std::make_unique<Dictionary>()) {}
DsspLibrary::~DsspLibrary() = default;

bool DsspLibrary::Linked() { return true; }

std::vector<DsspResidue> DsspLibrary::Residues(const std::vector<AtomRecord>& atoms) const {
  if (atoms.empty()) throw std::runtime_error("DSSP: no atoms");
  std::vector<DsspResidue> rows = RunDssp(dictionary_->validator, atoms);
  if (rows.empty()) throw std::runtime_error("DSSP found no residue with a complete backbone");
  return rows;
}

}  // namespace quarnel
