// Recognising a structure file by its content and presenting it as PDB-format text.
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
#include "formats/pdb_records.h"
#include "formats/pdb_render.h"

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
  ForEachRecord(text, [&found](std::string_view record) {
    found = RecordStartsWith(record, "ATOM  ") || RecordStartsWith(record, "HETATM");
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
  std::map<char, std::string> atoms = AtomRecordsByChain(text);
  for (const ChainKind& kind : kinds) {
    char textId = PdbTextId(kind.id);
    const std::string& records = atoms[textId];
    chains_.push_back({kind.id, kind.protein, CountReaderResidues(records), textId});
    chain_records_.push_back({records, std::string()});
  }
  whole_text_ = std::move(text);
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
  std::vector<char> textIds = AssignTextIds(ChainIds(atoms.chains), unique);
  PdbRendering rendering = RenderPdbRecords(atoms, textIds);
  for (size_t i = 0; i < atoms.chains.size(); ++i) {
    int residues = CountReaderResidues(rendering.atoms[i]);
    chains_.push_back({atoms.chains[i].id, atoms.chains[i].protein, residues, textIds[i]});
    chain_records_.push_back({std::move(rendering.atoms[i]), std::move(rendering.problems[i])});
    if (whole_problem_.empty() && !chain_records_.back().problem.empty())
      whole_problem_ = chain_records_.back().problem;
  }
  if (!unique)
    whole_problem_ = std::to_string(atoms.chains.size()) +
                     " chains, more than one-character chain ids can name: read one chain at a time";
  whole_text_ = std::move(rendering.records);
}

std::string StructureFile::WholeText() const {
  if (!whole_problem_.empty()) Fail(whole_problem_);
  return whole_text_;
}

std::string StructureFile::ChainText(const std::string& id) const {
  for (size_t i = 0; i < chains_.size(); ++i) {
    if (chains_[i].id != id) continue;
    const ChainRecords& records = chain_records_[i];
    if (!records.problem.empty()) Fail(records.problem);
    return records.atoms + std::string(kChainCopyEnd);
  }
  Fail("no chain '" + id + "' (chains: " + ChainList(chains_) + ")");
}

}  // namespace quarnel
