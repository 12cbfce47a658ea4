// The classic run's input name. A name that opens as a file is read as it is; any other name is
// a PDB code: the code and chain letter become the path of the PDB file, and the chain (or
// first-model) copy that the run reads is written.
#include "app/classic_input.h"

#include <unistd.h>

#include <cctype>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <memory>

#include "base/files.h"
#include "base/text.h"

namespace quarnel {

namespace {

constexpr size_t kCodeLength = 4;
constexpr size_t kCodeWithChainLength = 5;
constexpr int kChainColumn = 22;
constexpr char kNoChain = ' ';

char ToLower(char c) { return static_cast<char>(std::tolower(static_cast<unsigned char>(c))); }
char ToUpper(char c) { return static_cast<char>(std::toupper(static_cast<unsigned char>(c))); }

struct FileCloser {
  void operator()(std::FILE* file) const { std::fclose(file); }
};
using File = std::unique_ptr<std::FILE, FileCloser>;

File OpenFile(const std::string& path, const char* mode) { return File(std::fopen(path.c_str(), mode)); }

// The copy, opened for writing under its lock (runs side by side that write the same copy
// take turns); opened as always where it cannot be locked.
File OpenCopy(const std::string& path, ClassicLocks& locks) {
  bool created = false;
  const int fd = locks.Lock(path, created);
  if (fd < 0) return OpenFile(path, "w");
  const int writer = ::dup(fd);
  if (writer < 0 || ::ftruncate(fd, 0) != 0) {
    if (writer >= 0) ::close(writer);
    return OpenFile(path, "w");
  }
  File file(::fdopen(writer, "w"));
  if (file == nullptr) ::close(writer);
  return file;
}

// Closes the copy; on a failed write (a full disk) the part written is removed and the
// system's reason returned, else empty.
std::string CloseCopy(File file, const std::string& path) {
  std::FILE* raw = file.release();
  const bool written = std::ferror(raw) == 0;
  const int reason = errno;
  const bool closed = std::fclose(raw) == 0;
  if (written && closed) return "";
  std::remove(path.c_str());
  return std::strerror(written ? errno : reason);
}

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

[[noreturn]] void CodeFileUnreadable(const ResolvedInput& input) {
  Fail(Status::kCodeFileOpen, Stream::kStdout,
       Format("Unable to open %s. QUIT ...\n", input.pdbName.c_str()));
}

[[noreturn]] void ChainCopyFailed(const ResolvedInput& input, const std::string& reason = {}) {
  Fail(Status::kChainCopyCreate, Stream::kStdout,
       Format("Unable to open %s: Quit!\n", input.templateName.c_str()),
       reason.empty() ? std::string()
                      : Format("quarnel: cannot write %s: %s", input.templateName.c_str(), reason.c_str()));
}

// The ATOM records of the requested chain, up to the first END or ENDMDL, read in the pieces the
// readers take.
void CleanChain(const CommandLine& line, char chain, LineReader& pdb, ResolvedInput& input, ClassicLocks& locks) {
  input.templateName = line.chainPath + input.templateName + ".pdb";
  File out = OpenCopy(input.templateName, locks);
  if (out == nullptr) ChainCopyFailed(input);
  std::string record;
  while (pdb.Next(record)) {
    if (StartsWith(record, "ATOM  ") && Column(record, kChainColumn) == chain)
      WriteRecord(out.get(), record);
    if (StartsWith(record, "END")) break;
  }
  WriteClosingRecords(out.get());
  if (pdb.Failed()) CodeFileUnreadable(input);
  // A copy cut short by a full disk would be judged as if it were the chain.
  const std::string failed = CloseCopy(std::move(out), input.templateName);
  if (!failed.empty()) ChainCopyFailed(input, failed);
}

bool HasModelRecord(LineReader& in) {
  std::string record;
  while (in.Next(record)) {
    if (StartsWith(record, "MODEL")) return true;
  }
  return false;
}

// A multi-model file is read through a copy of its first model, every chain.
void CleanModels(std::unique_ptr<LineReader> pdb, ResolvedInput& input, ClassicLocks& locks) {
  const bool multiModel = HasModelRecord(*pdb);
  const bool unreadable = pdb->Failed();
  pdb.reset();
  if (unreadable) CodeFileUnreadable(input);
  if (!multiModel) {
    input.templateName = input.pdbName;
    return;
  }

  input.templateName = input.templateName + "_nmr.pdb";
  std::unique_ptr<LineReader> in = FileSource(input.pdbName).Open();
  if (in == nullptr)
    Fail(Status::kModelCopyReopen, Stream::kStdout,
         Format("Quit: Unable to open %s.\n", input.pdbName.c_str()));
  File out = OpenCopy(input.templateName, locks);
  // The copy cannot be written here (read-only directory, say): the PDB file itself is read
  // instead, and the reader stops at its first ENDMDL, which gives the same first model.
  auto readFileItself = [&input] {
    input.messages.push_back(Message{
        Stream::kStdout, Format("Unable to open %s: WARNING3\n", input.templateName.c_str())});
    input.templateName = input.pdbName;
  };
  if (out == nullptr) return readFileItself();
  std::string record;
  while (in->Next(record)) {
    if (StartsWith(record, "END")) break;
    if (StartsWith(record, "ATOM  ")) WriteRecord(out.get(), record);
  }
  WriteClosingRecords(out.get());
  const std::string failed = CloseCopy(std::move(out), input.templateName);
  if (failed.empty()) return;
  input.messages.push_back(Message{
      Stream::kStderr, Format("quarnel: cannot write %s: %s\n", input.templateName.c_str(), failed.c_str())});
  readFileItself();
}

// PassName and CleanPDB: the code, its file, and the copy the run reads.
void ResolveCode(const CommandLine& line, ResolvedInput& input, ClassicLocks& locks) {
  std::string name = line.input;
  char chain = kNoChain;
  if (name.size() == kCodeWithChainLength) {
    chain = name[kCodeWithChainLength - 1];
    name[kCodeWithChainLength - 1] = ToLower(chain);
  }
  input.templateName = name;
  if (name.size() > kCodeLength) name.resize(kCodeLength);
  input.pdbName = line.pdbPath + name + ".pdb";

  std::unique_ptr<LineReader> pdb = FileSource(input.pdbName).Open();
  if (pdb == nullptr) CodeFileUnreadable(input);
  chain = ToUpper(chain);
  input.chain = static_cast<unsigned char>(chain);
  if (chain != kNoChain)
    CleanChain(line, chain, *pdb, input, locks);
  else
    CleanModels(std::move(pdb), input, locks);
}

}  // namespace

ResolvedInput ResolveInput(const CommandLine& line, ClassicLocks& locks) {
  ResolvedInput input;
  if (CanRead(line.input)) {
    // A named file: the entry is its name up to the first '.', wherever that stands.
    input.namedFile = true;
    input.templateName = line.input;
    const size_t dot = line.input.find('.');
    input.base = dot == std::string::npos ? line.input : line.input.substr(0, dot);
    input.entry = input.base;
    return input;
  }
  input.base = line.input;
  input.entry = line.input;
  ResolveCode(line, input, locks);
  return input;
}

}  // namespace quarnel
