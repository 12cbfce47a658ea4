// The file of a PDB code, looked for the way the archive and users keep them.
#include "app/code_lookup.h"

#include <algorithm>
#include <cctype>

#include "base/files.h"

namespace quarnel {

namespace {

constexpr char kSuffixes[][8] = {".pdb", ".cif", ".cif.gz", ".pdb.gz", ".ent.gz", ".ent"};

std::string Cased(std::string text, int (*change)(int)) {
  for (char& c : text) c = static_cast<char>(change(static_cast<unsigned char>(c)));
  return text;
}

void AddOnce(std::vector<std::string>& names, const std::string& name) {
  if (std::find(names.begin(), names.end(), name) == names.end()) names.push_back(name);
}

}  // namespace

std::vector<std::string> CodeFileCandidates(const std::string& prefix, const std::string& code) {
  std::vector<std::string> cases;
  AddOnce(cases, code);
  AddOnce(cases, Cased(code, std::tolower));
  AddOnce(cases, Cased(code, std::toupper));
  std::vector<std::string> folders = {prefix};
  if (code.size() == 4) {
    const std::string middle = code.substr(1, 2);
    AddOnce(folders, prefix + Cased(middle, std::tolower) + "/");
    AddOnce(folders, prefix + Cased(middle, std::toupper) + "/");
  }
  std::vector<std::string> names;
  for (const std::string& folder : folders) {
    for (const std::string& name : cases) {
      for (const char* suffix : kSuffixes) AddOnce(names, folder + name + suffix);
      AddOnce(names, folder + "pdb" + name + ".ent.gz");
      AddOnce(names, folder + "pdb" + name + ".ent");
    }
  }
  return names;
}

std::string FindCodeFile(const std::string& prefix, const std::string& code) {
  for (const std::string& name : CodeFileCandidates(prefix, code))
    if (CanRead(name)) return name;
  return std::string();
}

}  // namespace quarnel
