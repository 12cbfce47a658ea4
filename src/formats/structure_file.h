// A structure file of any accepted kind (PDB or mmCIF, gzip-compressed or not) presented as the
// atom records quarnel's readers take, whole or one chain at a time.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "formats/atom_records.h"

namespace quarnel {

enum class StructureFormat { kPdb, kMmcif };

struct ChainInfo {
  std::string id;    // PDB: column 22 (empty when blank); mmCIF: auth_asym_id
  bool protein;      // its polymer is made of amino acids (nucleic acids, ligands, waters: false)
  int residues;      // residues quarnel's reader builds from the chain's ATOM records
  char text_id;      // the chain's one-character id (column 22) in its records
};

// Reads a PDB or mmCIF file, gzip-compressed or not; the kind is recognised by content, never
// by the name. Throws std::runtime_error on unreadable files and on files holding no atoms
// (empty, plain text, binary), the message naming the file and the reason.
//
// Chain ids of more than one character (large mmCIF entries) do not fit column 22. Such a
// chain's records carry the first character of A-Z, a-z, 0-9 that no chain of the file uses as
// its own one-character id, in file order. Should those run out, WholeRecords() refuses and the
// chains left over carry 'A' in their ChainRecords(), where they stand alone.
class StructureFile {
 public:
  explicit StructureFile(const std::string& path);
  // The same from bytes already in memory; `name` stands for the file in messages.
  static StructureFile FromBytes(const std::string& name, const std::string& bytes);

  const std::string& name() const { return name_; }
  StructureFormat format() const { return format_; }
  bool compressed() const { return compressed_; }
  // Every chain of the first model, in file order.
  const std::vector<ChainInfo>& chains() const { return chains_; }

  // The first model's records. PDB: the file's records up to its first END or ENDMDL. mmCIF:
  // ATOM and HETATM records, TER after each polymer chain, END at the end.
  AtomRecords WholeRecords() const;
  // The chain's ATOM records of the first model, then a bare TER and END: for a PDB file the
  // records of the copy quarnel writes of one chain (records whose column 22 is the chain's
  // text_id, up to the first record beginning with "END"). The id must be one of chains(); it
  // is matched as written, case included.
  AtomRecords ChainRecords(const std::string& id) const;
  // The first model whole as PDB text, for a program that reads PDB files (an external DSSP):
  // a PDB file's own text, mmCIF records in wwPDB's columns.
  std::string WholePdbText() const;

 private:
  StructureFile(const std::string& name, const std::string& bytes);
  void LoadPdb(std::string text);
  void LoadMmcif(const std::string& text);
  [[noreturn]] void Fail(const std::string& reason) const;
  size_t ChainIndex(const std::string& id) const;
  std::vector<AtomRecord> AtomsOf(size_t chain) const;

  std::string name_;
  StructureFormat format_ = StructureFormat::kPdb;
  bool compressed_ = false;
  std::vector<ChainInfo> chains_;
  std::shared_ptr<const std::string> text_;  // a PDB file's text, where its records' lines lie
  std::vector<AtomRecord> records_;          // the first model's, as WholeRecords() gives them
  std::vector<uint32_t> chainOf_;            // mmCIF: each record's index in the file's chains
  std::vector<uint32_t> listed_;             // mmCIF: each listed chain's index in the file's chains
  std::vector<std::string> problems_;        // per listed chain: why it has no records; empty if it has
  std::string whole_problem_;  // why WholeRecords() cannot be given; empty when it can
};

}  // namespace quarnel
