// Writing a chain's picture files: folders made, names made safe, the copy beside its script.
#include "report/pictures.h"

#include <cctype>

#include "base/files.h"
#include "report/owned_files.h"
#include "report/picture_parts.h"

namespace quarnel {

namespace {

constexpr size_t kMaxFileName = 200;  // leaves room for a suffix under the usual 255 bytes

// The name a chain's picture files share.
std::string FileStem(const ChainOutcome& outcome) {
  return SafeFileName(outcome.fileStem.empty() ? outcome.entry : outcome.fileStem);
}

WrittenFiles WriteScript(const ChainOutcome& outcome, const std::string& folder, const char* suffix,
                         std::string (*script)(const ChainOutcome&, const std::string&),
                         TemporaryFiles* temporaries) {
  WrittenFiles written;
  if (!outcome.ok || !MakeFolder(folder, written)) return written;
  const std::string name = FileStem(outcome);
  WriteOwnedFile(InFolder(folder, name + ".pdb"), StructureCopy(outcome), written, temporaries);
  if (written.errors.empty())
    WriteOwnedFile(InFolder(folder, name + suffix), script(outcome, name + ".pdb"), written, temporaries);
  return written;
}

}  // namespace

std::string SafeFileName(const std::string& entry) {
  std::string name = entry.substr(0, kMaxFileName);
  for (char& c : name)
    if (!std::isalnum(static_cast<unsigned char>(c)) && c != '.' && c != '_' && c != '-') c = '_';
  if (name.empty() || name.front() == '.' || name.front() == '-') name.insert(0, "_");
  return name;
}

WrittenFiles WritePymol(const ChainOutcome& outcome, const std::string& folder, TemporaryFiles* temporaries) {
  return WriteScript(outcome, folder, ".pml", PymolScript, temporaries);
}

WrittenFiles WriteChimerax(const ChainOutcome& outcome, const std::string& folder, TemporaryFiles* temporaries) {
  return WriteScript(outcome, folder, ".cxc", ChimeraxScript, temporaries);
}

WrittenFiles WriteDomainFiles(const ChainOutcome& outcome, const std::string& folder,
                              TemporaryFiles* temporaries) {
  WrittenFiles written;
  if (!outcome.ok || !MakeFolder(folder, written)) return written;
  const size_t count = ChainDomains(outcome).size();
  for (size_t place = 0; place < count && written.errors.empty(); ++place) {
    const int p = static_cast<int>(place);
    WriteOwnedFile(InFolder(folder, SafeFileName(DomainId(FileStem(outcome), p)) + ".pdb"),
                   DomainPdb(outcome, p), written, temporaries);
  }
  return written;
}

WrittenFiles WriteContactSvg(const ChainOutcome& outcome, const std::string& folder, TemporaryFiles* temporaries) {
  WrittenFiles written;
  if (!outcome.ok || !MakeFolder(folder, written)) return written;
  WriteOwnedFile(InFolder(folder, FileStem(outcome) + ".svg"), ContactSvg(outcome), written, temporaries);
  return written;
}

}  // namespace quarnel
