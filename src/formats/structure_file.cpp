// Recognising a structure file by its content and presenting it as atom records.
#include "formats/structure_file.h"

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <map>
#include <memory>
#include <stdexcept>
#include <string_view>

#include "formats/chain_kinds.h"
#include "formats/gzip_text.h"
#include "formats/mmcif_atoms.h"
#include "formats/mmcif_records.h"
#include "formats/pdb_records.h"
#include "formats/pdb_writer.h"

namespace quarnel {
namespace {

constexpr char kUtf8Mark[] = "\xEF\xBB\xBF";
constexpr size_t kBinarySniffLength = 4096;
constexpr size_t kReadChunk = size_t{1} << 20;

struct FileCloser {
  void operator()(std::FILE* file) const { std::fclose(file); }
};

std::string ReadBytes(const std::string& path) {
  std::unique_ptr<std::FILE, FileCloser> file(std::fopen(path.c_str(), "rb"));
  if (!file) throw std::runtime_error(path + ": cannot open: " + std::strerror(errno));
  std::string bytes;
  std::string chunk(kReadChunk, '\0');
  size_t got = 0;
  while ((got = std::fread(&chunk[0], 1, chunk.size(), file.get())) > 0) bytes.append(chunk, 0, got);
  if (std::ferror(file.get()))
    throw std::runtime_error(path + ": cannot read: " + std::strerror(errno));
  return bytes;
}

// gemmi's and the CIF parser's messages may run over several lines; a reason is one line.
std::string OneLine(std::string text) {
  for (char& c : text)
    if (c == '\n' || c == '\r') c = ' ';
  while (!text.empty() && text.back() == ' ') text.pop_back();
  return text;
}

// mmCIF opens with its first data block; only blanks and comment lines may come before it.
bool IsMmcif(std::string_view text) {
  const std::string_view mark = kUtf8Mark;
  if (text.substr(0, mark.size()) == mark) text.remove_prefix(mark.size());
  size_t i = 0;
  while (i < text.size()) {
    char c = text[i];
    if (c == '#') {
      size_t end = text.find('\n', i);
      i = end == std::string_view::npos ? text.size() : end + 1;
    } else if (c == ' ' || c == '\t' || c == '\n' || c == '\r') {
      ++i;
    } else {
      std::string_view word = text.substr(i, 5);
      return word.size() == 5 && (word[0] == 'd' || word[0] == 'D') &&
             (word[1] == 'a' || word[1] == 'A') && (word[2] == 't' || word[2] == 'T') &&
             (word[3] == 'a' || word[3] == 'A') && word[4] == '_';
    }
  }
  return false;
}

bool HasAtomRecords(std::string_view text) {
  bool found = false;
  ForEachPiece(text, [&found](std::string_view record) {
    found = StartsWith(record, "ATOM  ") || StartsWith(record, "HETATM");
    return !found;
  });
  return found;
}

bool CrOnlyLineEnds(std::string_view text) {
  const std::string_view head = text.substr(0, kBinarySniffLength);
  return head.find('\r') != std::string_view::npos && head.find('\n') == std::string_view::npos;
}

bool LooksBinary(std::string_view bytes) {
  return bytes.substr(0, kBinarySniffLength).find('\0') != std::string_view::npos;
}

std::string NoAtomsReason(std::string_view text) {
  if (text.empty()) return "holds no atoms (empty file)";
  if (LooksBinary(text)) return "holds no atoms (binary data, neither PDB nor mmCIF)";
  return "holds no atoms (no ATOM or HETATM records, no mmCIF data block)";
}

std::string ChainList(const std::vector<ChainInfo>& chains) {
  std::string list;
  for (const ChainInfo& chain : chains) list += (list.empty() ? "" : ", ") + chain.id;
  return list.empty() ? "none" : list;
}

char PdbTextId(const std::string& id) { return id.empty() ? ' ' : id[0]; }

std::vector<std::string> ChainIds(const std::vector<ChainKind>& kinds) {
  std::vector<std::string> ids;
  for (const ChainKind& kind : kinds) ids.push_back(kind.id);
  return ids;
}

// The residues of each chain as the reader builds them from its ATOM records alone.
int ChainResidues(const std::vector<AtomRecord>& records, char textId) {
  std::vector<AtomRecord> chain;
  for (const AtomRecord& record : records)
    if (record.kind == AtomRecord::kAtom && record.chain == textId) chain.push_back(record);
  return CountReaderResidues(chain);
}

// A chain of waters alone says nothing a PDB file's chain listing says (its waters are left out
// of the classification there): it is not listed.
std::vector<bool> WaterOnlyChains(const MmcifAtoms& atoms) {
  std::vector<bool> waterOnly(atoms.chains.size(), true);
  for (const AtomSite& site : atoms.sites)
    if (waterOnly[site.chain] && !IsWater(site.residue)) waterOnly[site.chain] = false;
  return waterOnly;
}

}  // namespace

StructureFile::StructureFile(const std::string& path) : StructureFile(path, ReadBytes(path)) {}

StructureFile StructureFile::FromBytes(const std::string& name, const std::string& bytes) {
  return StructureFile(name, bytes);
}

StructureFile::StructureFile(const std::string& name, const std::string& bytes) : name_(name) {
  std::string text;
  try {
    compressed_ = IsGzip(bytes);
    text = compressed_ ? Gunzip(bytes) : bytes;
  } catch (const std::exception& error) {
    Fail(OneLine(error.what()));
  }
  if (IsMmcif(text)) {
    format_ = StructureFormat::kMmcif;
    LoadMmcif(text);
  } else if (CrOnlyLineEnds(text)) {
    Fail("its lines end with CR alone (old Mac OS line ends), which read as one long line: "
         "convert them first (tr '\\r' '\\n')");
  } else if (HasAtomRecords(text)) {
    format_ = StructureFormat::kPdb;
    LoadPdb(std::move(text));
  } else {
    Fail(NoAtomsReason(text));
  }
}

void StructureFile::Fail(const std::string& reason) const {
  throw std::runtime_error(name_ + ": " + reason);
}

void StructureFile::LoadPdb(std::string text) {
  std::vector<ChainKind> kinds;
  try {
    kinds = ClassifyPdbChains(text, name_);
  } catch (const std::exception& error) {
    Fail("unreadable PDB records: " + OneLine(error.what()));
  }
  AtomRecords records = ReadPdbRecords(std::make_shared<const std::string>(std::move(text)));
  text_ = std::move(records.text);
  records_ = std::move(records.records);
  for (const ChainKind& kind : kinds) {
    const char textId = PdbTextId(kind.id);
    chains_.push_back({kind.id, kind.protein, ChainResidues(records_, textId), textId});
    problems_.emplace_back();
  }
}

void StructureFile::LoadMmcif(const std::string& text) {
  MmcifAtoms atoms;
  try {
    atoms = ReadMmcifAtoms(text, name_);
  } catch (const NoAtomSites& error) {
    Fail(error.what());
  } catch (const std::exception& error) {
    Fail("unreadable mmCIF: " + OneLine(error.what()));
  }
  bool unique = true;
  const std::vector<char> textIds = AssignTextIds(ChainIds(atoms.chains), unique);
  MmcifRecords records = RecordsOfSites(atoms, textIds);
  records_ = std::move(records.records);
  chainOf_ = std::move(records.chainOf);
  const std::vector<bool> waterOnly = WaterOnlyChains(atoms);
  for (size_t i = 0; i < atoms.chains.size(); ++i) {
    if (whole_problem_.empty()) whole_problem_ = records.problems[i];
    if (waterOnly[i]) continue;
    listed_.push_back(static_cast<uint32_t>(i));
    problems_.push_back(records.problems[i]);
    chains_.push_back({atoms.chains[i].id, atoms.chains[i].protein, 0, textIds[i]});
    chains_.back().residues = CountReaderResidues(AtomsOf(chains_.size() - 1));
  }
  if (!unique)
    whole_problem_ = std::to_string(atoms.chains.size()) +
                     " chains, more than one-character chain ids can name: read one chain at a time";
}

size_t StructureFile::ChainIndex(const std::string& id) const {
  for (size_t i = 0; i < chains_.size(); ++i)
    if (chains_[i].id == id) return i;
  Fail("no chain '" + id + "' (chains: " + ChainList(chains_) + ")");
}

AtomRecords StructureFile::WholeRecords() const {
  if (!whole_problem_.empty()) Fail(whole_problem_);
  return AtomRecords{records_, text_, std::string()};
}

std::vector<AtomRecord> StructureFile::AtomsOf(size_t chain) const {
  std::vector<AtomRecord> atoms;
  const char textId = chains_[chain].text_id;
  for (size_t i = 0; i < records_.size(); ++i) {
    const AtomRecord& record = records_[i];
    if (record.kind != AtomRecord::kAtom) continue;
    // A PDB file's chain is its column 22; an mmCIF chain is told by its records' chain, not by
    // the one-character id, which chains past the pool share.
    const bool ours = format_ == StructureFormat::kPdb ? record.chain == textId : chainOf_[i] == listed_[chain];
    if (ours) atoms.push_back(record);
  }
  return atoms;
}

AtomRecords StructureFile::ChainRecords(const std::string& id) const {
  const size_t chain = ChainIndex(id);
  if (!problems_[chain].empty()) Fail(problems_[chain]);
  AtomRecords records{AtomsOf(chain), text_, std::string()};
  AppendChainEnd(records.records);
  return records;
}

std::string StructureFile::WholePdbText() const {
  if (text_ != nullptr) return *text_;
  return PdbText(WholeRecords().records);
}

}  // namespace quarnel
