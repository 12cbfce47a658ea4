// What the test executables share: the data folder, scratch folders, and the built tool run as
// a user runs it. CTest passes the paths in; QUARNEL_DATA, QUARNEL_SOURCE and QUARNEL_BIN
// override them (QUARNEL_BIN=/path/to/other/quarnel checks another build against the tables).
#pragma once

#include <dirent.h>
#include <stdlib.h>
#include <sys/wait.h>

#include <cstdlib>
#include <fstream>
#include <set>
#include <sstream>
#include <string>
#include <vector>

namespace quarnel::test {

inline std::string Setting(const char* variable, const char* built_in) {
  const char* value = std::getenv(variable);
  return value != nullptr ? value : built_in;
}
inline std::string DataFile(const std::string& name) {
  return Setting("QUARNEL_DATA", QUARNEL_TEST_DATA) + "/" + name;
}
inline std::string SourceDir() { return Setting("QUARNEL_SOURCE", QUARNEL_SOURCE_DIR); }

inline std::string ReadFile(const std::string& path) {
  std::ifstream in(path, std::ios::binary);
  std::ostringstream text;
  text << in.rdbuf();
  return text.str();
}
inline void WriteFile(const std::string& path, const std::string& text) {
  std::ofstream(path, std::ios::binary) << text;
}

// A word the shell passes on unchanged, whatever it holds.
inline std::string Quote(const std::string& word) {
  std::string quoted = "'";
  for (char c : word) quoted += c == '\'' ? std::string("'\\''") : std::string(1, c);
  return quoted + "'";
}

// A fresh folder under the system's temporary folder, removed with everything in it.
class Scratch {
 public:
  Scratch() {
    std::string pattern = std::string(std::getenv("TMPDIR") ? std::getenv("TMPDIR") : "/tmp") +
                          "/quarnel-test.XXXXXX";
    path_ = mkdtemp(&pattern[0]) ? pattern : "";
  }
  ~Scratch() {
    if (!path_.empty()) std::system(("rm -rf " + Quote(path_)).c_str());
  }
  Scratch(const Scratch&) = delete;
  Scratch& operator=(const Scratch&) = delete;
  const std::string& path() const { return path_; }
  std::string operator/(const std::string& name) const { return path_ + "/" + name; }

  // The names in the folder, sorted, blank-separated; a folder's name ends in '/'.
  std::string Listing() const {
    std::set<std::string> names;
    if (DIR* dir = opendir(path_.c_str())) {
      while (dirent* entry = readdir(dir)) {
        std::string name = entry->d_name;
        if (name != "." && name != "..") names.insert(name + (entry->d_type == DT_DIR ? "/" : ""));
      }
      closedir(dir);
    }
    std::string listing;
    for (const std::string& name : names) listing += (listing.empty() ? "" : " ") + name;
    return listing;
  }

 private:
  std::string path_;
};

struct ToolRun {
  int status = -1;
  std::string out, err;
};

// Runs the built quarnel in `folder` with `args`. DSSP_PATH is taken away unless `dssp_path`
// is given, so that a run reaches DSSP only where a test means it to.
inline ToolRun RunTool(const std::string& folder, const std::vector<std::string>& args,
                       const char* dssp_path = nullptr) {
  std::string command = "cd " + Quote(folder) + " && " +
                        (dssp_path ? "export DSSP_PATH=" + Quote(dssp_path) : "unset DSSP_PATH") + "; " +
                        Quote(Setting("QUARNEL_BIN", QUARNEL_TOOL));
  for (const std::string& arg : args) command += " " + Quote(arg);
  // Beside the folder, not in it: the folder's listing is part of what tests compare.
  const std::string out = folder + ".stdout", err = folder + ".stderr";
  command += " >" + Quote(out) + " 2>" + Quote(err);
  ToolRun run;
  int status = std::system(command.c_str());
  run.status = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
  run.out = ReadFile(out);
  run.err = ReadFile(err);
  std::remove(out.c_str());
  std::remove(err.c_str());
  return run;
}

// The words of a blank-separated argument list.
inline std::vector<std::string> Words(const std::string& text) {
  std::istringstream in(text);
  std::vector<std::string> words;
  for (std::string word; in >> word;) words.push_back(word);
  return words;
}

}  // namespace quarnel::test
