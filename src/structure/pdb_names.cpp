// Input names on the PDB-code path: the code and chain letter become the path of the PDB file,
// and the chain (or first-model) copy that the run reads is written.
#include "structure/pdb_names.h"

#include <cctype>
#include <cstdio>

#include "run/fatal.h"
#include "run/parameters.h"
#include "run/textio.h"

namespace {

constexpr size_t kCodeLength = 4;
constexpr size_t kCodeWithChainLength = 5;
constexpr int kChainColumn = 22;

char ToLower(char c) { return static_cast<char>(std::tolower(static_cast<unsigned char>(c))); }
char ToUpper(char c) { return static_cast<char>(std::toupper(static_cast<unsigned char>(c))); }

// Writes one record. A line longer than the reader's buffer arrives in pieces and the first
// piece has no newline of its own (so may the last line of a file): it gets one, so that the
// copy keeps one record per line and the closing TER never joins an ATOM record.
void WriteRecord(std::FILE* out, const std::string& line) {
  std::fputs(line.c_str(), out);
  if (line.empty() || line.back() != '\n') std::fputc('\n', out);
}

void WriteClosingRecords(std::FILE* out) {
  std::fputs("TER\n", out);
  std::fputs("END\n", out);
}

// The ATOM records of the requested chain, up to the first END or ENDMDL.
void CopyChain(std::FILE* in, std::FILE* out) {
  std::string line;
  while (ReadLine(in, line)) {
    if (StartsWith(line, "ATOM  ") && Column(line, kChainColumn) == ChainName)
      WriteRecord(out, line);
    if (StartsWith(line, "END")) break;
  }
  WriteClosingRecords(out);
}

// The ATOM records of every chain, up to the first END or ENDMDL (the end of the first model).
void CopyFirstModel(std::FILE* in, std::FILE* out) {
  std::string line;
  while (ReadLine(in, line)) {
    if (StartsWith(line, "END")) break;
    if (StartsWith(line, "ATOM  ")) WriteRecord(out, line);
  }
  WriteClosingRecords(out);
}

bool HasModelRecord(std::FILE* in) {
  std::string line;
  while (ReadLine(in, line)) {
    if (StartsWith(line, "MODEL")) return true;
  }
  return false;
}

void CleanChain(std::FILE* pdb) {
  ChainName = ToUpper(ChainName);
  TemplateName = CHAINPATH + TemplateName + ".pdb";
  std::FILE* out = std::fopen(TemplateName.c_str(), "w");
  if (out == nullptr) {
    std::fclose(pdb);
    Fatal(7, Stream::kStdout, Format("Unable to open %s: Quit!\n", TemplateName.c_str()));
  }
  CopyChain(pdb, out);
  std::fclose(out);
  bool unreadable = std::ferror(pdb) != 0;
  std::fclose(pdb);
  if (unreadable) Fatal(9, Stream::kStdout, Format("Unable to open %s. QUIT ...\n", PDBName.c_str()));
}

void CleanModels(std::FILE* pdb) {
  bool multiModel = HasModelRecord(pdb);
  bool unreadable = std::ferror(pdb) != 0;
  std::fclose(pdb);
  if (unreadable) Fatal(9, Stream::kStdout, Format("Unable to open %s. QUIT ...\n", PDBName.c_str()));
  if (!multiModel) {
    TemplateName = PDBName;
    return;
  }

  TemplateName = TemplateName + "_nmr.pdb";
  std::FILE* in = std::fopen(PDBName.c_str(), "r");
  if (in == nullptr) Fatal(0, Stream::kStdout, Format("Quit: Unable to open %s.\n", PDBName.c_str()));
  std::FILE* out = std::fopen(TemplateName.c_str(), "w");
  if (out == nullptr) {
    // The copy cannot be written here (read-only directory, say): the PDB file itself is read
    // instead, and the reader stops at its first ENDMDL, which gives the same first model.
    std::printf("Unable to open %s: WARNING3\n", TemplateName.c_str());
    std::fclose(in);
    TemplateName = PDBName;
    return;
  }
  CopyFirstModel(in, out);
  std::fclose(out);
  std::fclose(in);
}

}  // namespace

void PassName(std::string& name) {
  if (name.size() == kCodeWithChainLength) {
    ChainName = name[kCodeWithChainLength - 1];
    name[kCodeWithChainLength - 1] = ToLower(ChainName);
  } else {
    ChainName = ' ';
  }
  TemplateName = name;
  if (name.size() > kCodeLength) name.resize(kCodeLength);
  PDBBase = name;
  PDBName = PDBPATH + name + ".pdb";
}

void CleanPDB() {
  std::FILE* pdb = std::fopen(PDBName.c_str(), "r");
  if (pdb == nullptr) Fatal(9, Stream::kStdout, Format("Unable to open %s. QUIT ...\n", PDBName.c_str()));
  if (ChainName != ' ')
    CleanChain(pdb);
  else
    CleanModels(pdb);
}
