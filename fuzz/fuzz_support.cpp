// Scratch files, a clean run per iteration and the consistency checks of the fuzz targets.
#include "fuzz_support.h"

#include <fcntl.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <vector>

#include "contacts/contacts.h"
#include "run/fatal.h"
#include "run/state.h"
#include "structure/protein.h"

namespace {

std::string& ScratchPath() {
  static std::string path;
  return path;
}

void RemoveScratch() {
  std::error_code ignored;
  if (!ScratchPath().empty()) std::filesystem::remove_all(ScratchPath(), ignored);
}

}  // namespace

const std::string& ScratchDir() {
  std::string& path = ScratchPath();
  if (path.empty()) {
    const char* base = std::getenv("TMPDIR");
    std::string pattern = std::string(base != nullptr ? base : "/tmp") + "/quarnel-fuzz-XXXXXX";
    std::vector<char> buffer(pattern.begin(), pattern.end());
    buffer.push_back('\0');
    if (mkdtemp(buffer.data()) == nullptr) FuzzFailure("cannot make a scratch directory");
    path = buffer.data();
    std::atexit(RemoveScratch);
  }
  return path;
}

std::string WriteScratchFile(const std::string& name, const uint8_t* data, size_t size) {
  std::string path = ScratchDir() + "/" + name;
  std::FILE* file = std::fopen(path.c_str(), "wb");
  if (file == nullptr) FuzzFailure("cannot write a scratch file");
  if (size > 0 && std::fwrite(data, 1, size, file) != size) FuzzFailure("short scratch write");
  std::fclose(file);
  return path;
}

void StartIteration() {
  ResetRunState();
  unsigned short zero[3] = {0, 0, 0};
  seed48(zero);
}

void FuzzFailure(const char* what) {
  std::fprintf(stderr, "quarnel fuzz check failed: %s\n", what);
  std::abort();
}

bool IsRefusedFormat(const std::string& text) {
  if (text.size() >= 2 && static_cast<unsigned char>(text[0]) == 0x1f &&
      static_cast<unsigned char>(text[1]) == 0x8b)
    return true;
  // Any line beginning with "data_" is reason enough here: the check only has to admit the
  // refusal, and the reader tests pin down exactly when it happens.
  return text.compare(0, 5, "data_") == 0 || text.find("\ndata_") != std::string::npos;
}

void RequireDesignedStatus(const FatalError& error, std::initializer_list<int> statuses) {
  for (int status : statuses)
    if (error.status == status) return;
  std::fprintf(stderr, "undesigned failure, status %d: %s\n", error.status, error.text.c_str());
  FuzzFailure("a failure this code does not design");
}

void RequireConsistentProtein() {
  Require(ProteinSize == static_cast<int32_t>(Protein.size()), "ProteinSize is the array size");
  size_t atoms = 0;
  for (int32_t i = 0; i < ProteinSize; ++i) {
    const Residue& r = Protein[static_cast<size_t>(i)];
    Require(r.index == i, "index equals the position in file order");
    Require(r.natoms >= 1, "every residue holds an atom");
    Require(r.atoms == AtomPool.data() + atoms, "a residue's atoms follow the previous one's");
    atoms += static_cast<size_t>(r.natoms);
  }
  Require(atoms == AtomPool.size(), "the pool holds exactly the residues' atoms");
}

void RequireConsistentContacts() {
  for (int32_t i = 0; i < ProteinSize; ++i) {
    const Contact& diagonal = ContactMatrix[i][i];
    Require(diagonal.weight == 0 && diagonal.count == 0 && diagonal.dist2 == 0.0f,
            "zero diagonal");
    for (int32_t j = i + 1; j < ProteinSize; ++j) {
      const Contact& a = ContactMatrix[i][j];
      const Contact& b = ContactMatrix[j][i];
      Require(a.weight == b.weight && a.count == b.count, "symmetric weights and counts");
      Require(a.dist2 == b.dist2 || (a.dist2 != a.dist2 && b.dist2 != b.dist2),
              "symmetric distances");
      Require(a.count >= 0, "no negative count");
    }
  }
}

void SilenceStandardOutput() {
  int null = open("/dev/null", O_WRONLY);
  if (null >= 0) {
    std::fflush(stdout);
    dup2(null, STDOUT_FILENO);
    close(null);
  }
}
