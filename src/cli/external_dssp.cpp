// DSSP_PATH run in a private temporary folder.
#include "cli/external_dssp.h"

#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>

#include "base/text.h"
#include "cli/inputs.h"

namespace quarnel {

namespace {

// A folder of our own under TMPDIR (or /tmp), removed with everything in it when done.
class PrivateFolder {
 public:
  PrivateFolder() {
    const char* root = std::getenv("TMPDIR");
    std::string pattern = std::string(root != nullptr && *root != '\0' ? root : "/tmp") + "/quarnel.XXXXXX";
    if (mkdtemp(pattern.data()) != nullptr) path_ = pattern;
  }
  ~PrivateFolder() {
    std::error_code ignored;
    if (!path_.empty()) std::filesystem::remove_all(path_, ignored);
  }
  PrivateFolder(const PrivateFolder&) = delete;
  PrivateFolder& operator=(const PrivateFolder&) = delete;
  const std::string& path() const { return path_; }

 private:
  std::string path_;
};

std::string ReadAll(const std::string& path) {
  std::ifstream in(path, std::ios::binary);
  std::ostringstream text;
  text << in.rdbuf();
  return text.str();
}

bool HasTable(const std::string& text) {
  return text.rfind("  #  RESID", 0) == 0 || text.find("\n  #  RESID") != std::string::npos;
}

}  // namespace

std::unique_ptr<LineSource> ExternalDssp::DsspOutput(const Structure& /*structure*/,
                                                     std::vector<Message>& messages) {
  auto without = [&](const std::string& reason) {
    messages.push_back(Message{Stream::kStderr,
                               Format("quarnel: %s: DSSP failed (%s); going on without secondary structure\n",
                                      name_.c_str(), reason.c_str())});
    return std::make_unique<TextSource>(name_ + " (no DSSP)", std::string());
  };
  const PrivateFolder folder;
  if (folder.path().empty()) return without("no temporary folder");
  const std::string structure = folder.path() + "/structure.pdb";
  const std::string output = folder.path() + "/structure.dssp";
  const std::string log = folder.path() + "/dssp.log";
  {
    std::ofstream out(structure, std::ios::binary);
    out << text_;
    if (!out) return without("cannot write its input");
  }
  const int status = std::system((program_ + " " + ShellFileWord(structure) + " > " +
                                  ShellFileWord(output) + " 2> " + ShellFileWord(log)).c_str());
  std::string table = ReadAll(output);
  if (!HasTable(table)) {
    std::string reason = ReadAll(log);
    reason = reason.substr(0, reason.find('\n'));
    if (reason.empty()) reason = Format("status %d, no residue table", status);
    return without(reason);
  }
  return std::make_unique<TextSource>(name_ + ".dssp", std::move(table));
}

}  // namespace quarnel
