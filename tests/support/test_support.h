// Helpers shared by the test executables: a clean run state, temporary directories, files
// written from literal text, the data folder and the built tool.
#pragma once

#include <string>
#include <vector>

// Brings the process-wide state back to that of a fresh process, the random sequence included.
void StartCleanRun();

// The random sequence as a fresh process sees it (glibc's drand48 starts from state 0).
void RestartRandomSequence();

// The folder of test structures and DSSP files, passed in by CTest.
std::string DataPath(const std::string& file);

// A fresh temporary directory, removed when the object goes out of scope.
class TempDir {
 public:
  TempDir();
  ~TempDir();
  TempDir(const TempDir&) = delete;
  TempDir& operator=(const TempDir&) = delete;
  const std::string& path() const { return path_; }
  std::string File(const std::string& name) const { return path_ + "/" + name; }

 private:
  std::string path_;
};

void WriteFile(const std::string& path, const std::string& text);
std::string ReadFile(const std::string& path);
bool FileExists(const std::string& path);

// The result of running the built tool as a user would.
struct ToolRun {
  int status;
  std::string out;
  std::string err;
};

// Runs the built quarnel with the given arguments in the given directory; `environment` holds
// extra NAME=value settings, and DSSP_PATH is removed from the environment unless it is set
// there.
ToolRun RunTool(const std::vector<std::string>& args, const std::string& directory,
                const std::vector<std::string>& environment = {});

// The repository's DSSP adapter, for DSSP_PATH.
std::string DsspAdapter();
