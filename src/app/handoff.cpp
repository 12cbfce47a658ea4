// Recognising inputs the classic run cannot read, and handing runs to quarnel-full.
#include "app/handoff.h"

#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>

#include "app/batch_inputs.h"
#include "app/code_lookup.h"
#include "base/files.h"
#include "base/text.h"
#include "secondary/dssp_library.h"

namespace quarnel {

namespace {

// The program built with DSSP's library: beside this one in the build tree (or where a user
// copied the two), in the package's own folder of programs in an installed tree, where users do
// not run it by name. The build gives the installed folder relative to the folder of quarnel
// (src/CMakeLists.txt); a build that never set it finds the program beside quarnel alone.
constexpr char kFullProgram[] = "quarnel-full";
#ifdef QUARNEL_FULL_FROM_BIN
constexpr char kInstalledFolder[] = QUARNEL_FULL_FROM_BIN;
#else
constexpr char kInstalledFolder[] = "";
#endif

bool GzipOrMmcif(const std::string& path) {
  std::FILE* file = std::fopen(path.c_str(), "rb");
  if (file == nullptr) return false;
  char head[512];
  const size_t read = std::fread(head, 1, sizeof(head), file);
  std::fclose(file);
  if (read >= 2 && static_cast<unsigned char>(head[0]) == 0x1f && static_cast<unsigned char>(head[1]) == 0x8b)
    return true;
  const std::string text(head, read);
  const size_t start = text.find_first_not_of(" \t\r\n");
  return start != std::string::npos && text.compare(start, 5, "data_") == 0;
}

std::string FullProgramPath() {
  // The kernel gives this program's path with every link resolved: a link to an installed quarnel
  // (in ~/bin, say) still finds the installed tree.
  const std::string self = LinkTarget("/proc/self/exe");
  if (self.empty()) return kFullProgram;
  const std::string folder = FolderOf(self);
  const std::string beside = InFolder(folder, kFullProgram);
  if (kInstalledFolder[0] == '\0' || access(beside.c_str(), X_OK) == 0) return beside;
  const std::string installed = InFolder(InFolder(folder, kInstalledFolder), kFullProgram);
  return access(installed.c_str(), X_OK) == 0 ? installed : beside;
}

}  // namespace

bool ReadTheBatchWay(const CommandLine& line, BatchOptions& batch) {
  const std::string& name = line.input;
  if (CanRead(name)) {
    if (!GzipOrMmcif(name)) return false;
  } else if (name == kStandardInput) {
    if (CanRead(line.pdbPath + name + ".pdb")) return false;  // "-" as the code of a file "-.pdb"
  } else {
    const std::string code = name.substr(0, 4);
    if (CanRead(line.pdbPath + code + ".pdb") || FindCodeFile(line.pdbPath, code).empty()) return false;
  }
  batch.params = line.params;
  batch.given = line.params;
  batch.pdbPath = line.pdbPath;
  batch.inputs = {name};
  batch.jobs = 1;
  batch.wholeFile = true;
  return true;
}

bool NeedsFullProgram(const BatchOptions& batch) { return !DsspLibrary::Linked() && UsesDsspLibrary(batch); }

std::string HandOver(const char* const* argv) {
  const std::string path = FullProgramPath();
  std::fflush(stdout);
  std::fflush(stderr);
  execv(path.c_str(), const_cast<char* const*>(argv));
  return Format("quarnel: DSSP's library is in %s, which cannot be run (%s); set DSSP_PATH to a DSSP "
                "program, or add -noss\n", path.c_str(), std::strerror(errno));
}

}  // namespace quarnel
