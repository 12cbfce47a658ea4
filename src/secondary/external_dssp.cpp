// DSSP_PATH run in a private temporary folder named after the process, so that the folders of
// killed runs can be told apart and removed.
#include "secondary/external_dssp.h"

#include <signal.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <memory>

#include "base/files.h"
#include "base/text.h"
#include "secondary/shell_command.h"

namespace quarnel {

namespace {

constexpr char kFolderPrefix[] = "quarnel.";

std::string TemporaryRoot() {
  const char* root = std::getenv("TMPDIR");
  return root != nullptr && *root != '\0' ? root : "/tmp";
}

// A folder of our own, quarnel.<pid>.XXXXXX, removed with everything in it when done.
class PrivateFolder {
 public:
  explicit PrivateFolder(TemporaryFiles* temporaries) : temporaries_(temporaries) {
    std::string pattern = TemporaryRoot() + "/" + kFolderPrefix + std::to_string(::getpid()) + ".XXXXXX";
    if (mkdtemp(pattern.data()) == nullptr) return;
    path_ = pattern;
    if (temporaries_ != nullptr) temporaries_->Add(path_);
  }
  ~PrivateFolder() {
    if (path_.empty()) return;
    RemoveTree(path_);
    if (temporaries_ != nullptr) temporaries_->Forget(path_);
  }
  PrivateFolder(const PrivateFolder&) = delete;
  PrivateFolder& operator=(const PrivateFolder&) = delete;
  const std::string& path() const { return path_; }

 private:
  TemporaryFiles* temporaries_;
  std::string path_;
};

std::string ReadAll(const std::string& path) {
  std::string text;
  if (!ReadWholeFile(path, text)) text.clear();
  return text;
}

bool WriteAll(const std::string& path, const std::string& text) {
  std::FILE* file = std::fopen(path.c_str(), "wb");
  if (file == nullptr) return false;
  const bool written = std::fwrite(text.data(), 1, text.size(), file) == text.size();
  return std::fclose(file) == 0 && written;
}

bool HasTable(const std::string& text) {
  return text.rfind("  #  RESID", 0) == 0 || text.find("\n  #  RESID") != std::string::npos;
}

// The process id in a private folder's name; 0 when the name is not one.
long FolderOwner(const std::string& name) {
  if (name.rfind(kFolderPrefix, 0) != 0) return 0;
  char* end = nullptr;
  const long pid = std::strtol(name.c_str() + sizeof kFolderPrefix - 1, &end, 10);
  return *end == '.' ? pid : 0;
}

}  // namespace

void RemoveAbandonedFolders() {
  std::vector<FolderEntry> entries;
  ListFolder(TemporaryRoot(), entries);
  for (const FolderEntry& entry : entries) {
    const long owner = FolderOwner(BaseName(entry.path));
    if (owner <= 0 || ::kill(static_cast<pid_t>(owner), 0) == 0 || errno != ESRCH) continue;
    RemoveTree(entry.path);
  }
}

SecondaryStructure ExternalDssp::Read(const Structure& structure, std::vector<Message>& messages) {
  auto without = [&](const std::string& reason) {
    messages.push_back(Message{Stream::kStderr,
                               Format("quarnel: %s: DSSP failed (%s); going on without secondary structure\n",
                                      name_.c_str(), reason.c_str())});
    return DefaultSecondaryStructure(structure.size());
  };
  const PrivateFolder folder(temporaries_);
  if (folder.path().empty()) return without("no temporary folder");
  const std::string input = folder.path() + "/structure.pdb";
  const std::string output = folder.path() + "/structure.dssp";
  const std::string log = folder.path() + "/dssp.log";
  if (!WriteAll(input, text_)) return without("cannot write its input");
  const int status = RunCommand(program_ + " " + ShellFileWord(input) + " > " +
                                ShellFileWord(output) + " 2> " + ShellFileWord(log));
  std::string table = ReadAll(output);
  if (!HasTable(table)) {
    std::string reason = ReadAll(log);
    reason = reason.substr(0, reason.find('\n'));
    if (reason.empty()) reason = Format("status %d, no residue table", status);
    return without(reason);
  }
  return ReadDsspTable(TextSource(name_ + ".dssp", std::move(table)), structure.residues);
}

}  // namespace quarnel
