// Hints for the classic run's failures: the chains a file holds, where else a code's file was
// looked for, the built-in DSSP, line ends of old Mac OS files.
#include "app/classic_hints.h"

#include <cstdio>

#include "base/text.h"
#include "formats/structure_file.h"

namespace quarnel {

namespace {

// The protein chains a structure file holds, for hints.
std::string ChainsOf(const std::string& path) {
  try {
    const StructureFile file(path);
    std::string list;
    for (const ChainInfo& chain : file.chains()) {
      if (!chain.protein) continue;
      if (!list.empty()) list += ", ";
      list += chain.id.empty() ? std::string("(blank)") : chain.id;
    }
    return list;
  } catch (const std::exception&) {
    return std::string();
  }
}

// Lines that end in CR alone (classic Mac OS) read as one long line, cut into pieces that are
// almost never ATOM records: the run then fails as a CA-only model would.
bool CrOnlyLineEnds(const std::string& path) {
  std::FILE* file = std::fopen(path.c_str(), "rb");
  if (file == nullptr) return false;
  char head[1 << 16];
  const size_t read = std::fread(head, 1, sizeof head, file);
  std::fclose(file);
  const std::string text(head, read);
  return text.find('\r') != std::string::npos && text.find('\n') == std::string::npos;
}

std::string NoResidueHint(const CommandLine& line, const ResolvedInput& input) {
  const std::string chains = ChainsOf(input.namedFile ? input.templateName : input.pdbName);
  if (chains.empty()) return std::string();
  if (input.namedFile)
    return Format("quarnel: %s holds chains %s and is judged as one chain: name one chain "
                  "as a code with its letter (-pdbpath <folder>/ 1abcA), or use --chain ID "
                  "or --each-chain",
                  line.input.c_str(), chains.c_str());
  return Format("quarnel: %s names no chain of %s, which holds chains %s: name one with its "
                "letter (%sA), or use --chain ID or --each-chain",
                line.input.c_str(), input.pdbName.c_str(), chains.c_str(), line.input.substr(0, 4).c_str());
}

}  // namespace

std::string HintFor(const Failure& failure, const CommandLine& line, const ResolvedInput& input,
                    const ShellDssp* dssp) {
  switch (failure.status()) {
    case Status::kInputOpen:
      return dssp != nullptr ? dssp->unreadableHint() : std::string();
    case Status::kTooFewAtoms:
      if (!CrOnlyLineEnds(input.templateName)) return std::string();
      return Format("quarnel: %s ends its lines with CR alone (old Mac OS line ends), which reads as "
                    "one long line: convert them first (tr '\\r' '\\n')",
                    input.templateName.c_str());
    case Status::kDsspPathUnset:
      return "quarnel: DSSP is built into quarnel: add --dssp builtin to use it, or set "
             "DSSP_PATH to a DSSP program";
    case Status::kCodeFileOpen:
      return Format("quarnel: no file for code %s under %s, also looked for as .cif, .cif.gz, "
                    ".pdb.gz, .ent.gz and pdb<code>.ent.gz, in any letter case and in the "
                    "archive's divided layout",
                    line.input.substr(0, 4).c_str(), line.pdbPath.c_str());
    case Status::kNoProfileResidue:
      return NoResidueHint(line, input);
    default:
      return std::string();
  }
}

}  // namespace quarnel
