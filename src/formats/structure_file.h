// A structure file of any accepted kind (PDB or mmCIF, gzip-compressed or not) presented as the
// PDB-format text that quarnel's fixed-column readers take, whole or one chain at a time.
#pragma once

#include <string>
#include <vector>

namespace quarnel {

enum class StructureFormat { kPdb, kMmcif };

struct ChainInfo {
  std::string id;    // PDB: column 22 (empty when blank); mmCIF: auth_asym_id
  bool protein;      // its polymer is made of amino acids (nucleic acids, ligands, waters: false)
  int residues;      // residues quarnel's reader builds from the chain's ATOM records
  char text_id;      // the chain's one-character id (column 22) in the PDB-format text
};

// Reads a PDB or mmCIF file, gzip-compressed or not; the kind is recognised by content, never
// by the name. Throws std::runtime_error on unreadable files and on files holding no atoms
// (empty, plain text, binary), the message naming the file and the reason.
//
// Chain ids of more than one character (large mmCIF entries) do not fit column 22. Such a
// chain is written with the first character of A-Z, a-z, 0-9 that no chain of the file uses
// as its own one-character id, in file order. Should those run out, WholeText() refuses and
// the chains left over are written as 'A' in their ChainText(), where they stand alone.
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

  // PDB: the file's own text (decompressed). mmCIF: the first model's atoms as PDB records,
  // TER after each polymer chain, END at the end.
  std::string WholeText() const;
  // The chain's ATOM records of the first model, then "TER" and "END": for a PDB file exactly
  // the copy quarnel writes of one chain (records whose column 22 is the chain's text_id, up
  // to the first record beginning with "END"). The id must be one of chains(); it is matched
  // as written, case included.
  std::string ChainText(const std::string& id) const;

 private:
  struct ChainRecords {
    std::string atoms;    // ATOM records, one per line
    std::string problem;  // why the chain cannot be written as PDB records; empty when it can
  };

  StructureFile(const std::string& name, const std::string& bytes);
  void LoadPdb(std::string text);
  void LoadMmcif(const std::string& text);
  [[noreturn]] void Fail(const std::string& reason) const;

  std::string name_;
  StructureFormat format_ = StructureFormat::kPdb;
  bool compressed_ = false;
  std::vector<ChainInfo> chains_;
  std::vector<ChainRecords> chain_records_;  // parallel to chains_
  std::string whole_text_;
  std::string whole_problem_;  // why WholeText() cannot be given; empty when it can
};

}  // namespace quarnel
