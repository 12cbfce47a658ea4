// PyMOL and ChimeraX scripts that colour a chain by domain, and one PDB file per domain; the
// residues are named the way each program selects them.
#include "cli/pictures.h"

#include <cctype>
#include <filesystem>

#include "cli/json_text.h"
#include "cli/owned_files.h"
#include "cli/palette.h"
#include "cli/chain_domains.h"

namespace quarnel {

namespace {

constexpr char kNoChain = ' ';
constexpr char kNoInsertion = ' ';
constexpr size_t kMaxFileName = 200;  // leaves room for a suffix under the usual 255 bytes
// PyMOL cuts command lines at 1024 characters; a colour command carries at most this many
// residue runs, which keeps it far shorter whatever the numbers.
constexpr size_t kRunsPerCommand = 40;
constexpr double kChannelMax = 255.0;

// Text for a comment line of any of the files: one line, and no ';', which PyMOL and ChimeraX
// take for the end of a command even in a comment.
std::string CommentSafe(std::string text) {
  for (char& c : text)
    if (static_cast<unsigned char>(c) < ' ' || c == ';') c = '?';
  return text;
}

// The words that name the input in a file's first line: they make it this chain's file.
std::string Provenance(const ChainOutcome& outcome) {
  return CommentSafe(outcome.file +
                     (outcome.chainId.empty() ? ", whole file" : ", chain " + outcome.chainId));
}

std::string InFolder(const std::string& folder, const std::string& name) {
  return (std::filesystem::path(folder) / name).string();
}

// ---- residue runs ----

struct ResidueRun {
  char chain;
  int32_t first, last;  // numbers; a run with an insertion code is a single residue
  char icode;
};

bool Extends(const ResidueRun& run, const Residue& r) {
  return r.chain == run.chain && run.icode == kNoInsertion && r.icode == kNoInsertion &&
         r.resnum == run.last + 1;
}

// The residues of one domain as runs of consecutive numbers in one chain, in chain order.
std::vector<ResidueRun> DomainRuns(const ChainResult& result, const std::vector<int>& places,
                                   int place) {
  std::vector<ResidueRun> runs;
  const std::vector<Residue>& residues = result.structure.residues;
  for (size_t i = 0; i < residues.size(); ++i) {
    if (places[i] != place) continue;
    const Residue& r = residues[i];
    const bool adjacent = i > 0 && places[i - 1] == place;
    if (adjacent && !runs.empty() && Extends(runs.back(), r)) runs.back().last = r.resnum;
    else runs.push_back(ResidueRun{r.chain, r.resnum, r.resnum, r.icode});
  }
  return runs;
}

// Runs of one chain, at most kRunsPerCommand at a time.
std::vector<std::vector<ResidueRun>> CommandGroups(const std::vector<ResidueRun>& runs) {
  std::vector<std::vector<ResidueRun>> groups;
  for (const ResidueRun& run : runs) {
    if (groups.empty() || groups.back().front().chain != run.chain ||
        groups.back().size() >= kRunsPerCommand)
      groups.emplace_back();
    groups.back().push_back(run);
  }
  return groups;
}

std::string DomainSummary(const ChainOutcome& outcome, const std::vector<ChainDomain>& domains) {
  std::string text = Format("%s: %d residues, %d domain%s (%s)", outcome.entry.c_str(),
                            outcome.result.structure.size(), static_cast<int>(domains.size()),
                            domains.size() == 1 ? "" : "s", VerdictName(outcome.result.verdict));
  for (size_t place = 0; place < domains.size(); ++place)
    text += ", " + DomainId(outcome.entry, static_cast<int>(place)) + " " +
            Chopping({domains[place]}) + " " + HexColour(DomainColour(static_cast<int>(place)));
  return CommentSafe(text);
}

// ---- PyMOL ----

// PyMOL reads a leading minus as an operator unless escaped.
std::string PymolNumber(int32_t n) { return n < 0 ? "\\" + std::to_string(n) : std::to_string(n); }

std::string PymolRun(const ResidueRun& run) {
  if (run.icode != kNoInsertion) return PymolNumber(run.first) + run.icode;
  if (run.first == run.last) return PymolNumber(run.first);
  return PymolNumber(run.first) + "-" + PymolNumber(run.last);
}

// Object names keep to letters, digits and '_', which every PyMOL selection accepts. A name of
// letters alone could be a selection keyword ("all", "q"); PyMOL would load it with '_'
// appended and the script's commands would miss it, so such a name gets that '_' here.
std::string PymolObject(const std::string& entry) {
  std::string name = SafeFileName(entry);
  bool lettersOnly = true;
  for (char& c : name) {
    if (!std::isalnum(static_cast<unsigned char>(c))) c = '_';
    lettersOnly = lettersOnly && std::isalpha(static_cast<unsigned char>(c));
  }
  return lettersOnly ? name + "_" : name;
}

std::string PymolColourName(int place) {
  return Format("quarnel_%d", place < 0 ? 0 : place % kDomainColourCount + 1);
}

std::string PymolSetColour(int place) {
  const Rgb c = DomainColour(place);
  return Format("set_color %s, [%.3f, %.3f, %.3f]\n", PymolColourName(place).c_str(),
                c.r / kChannelMax, c.g / kChannelMax, c.b / kChannelMax);
}

std::string PymolColourDomain(const std::string& object, const std::vector<ResidueRun>& runs,
                              int place) {
  std::string text;
  for (const std::vector<ResidueRun>& group : CommandGroups(runs)) {
    std::string selection = object;
    if (group.front().chain != kNoChain) selection += Format(" and chain %c", group.front().chain);
    selection += " and resi ";
    for (size_t k = 0; k < group.size(); ++k) selection += (k ? "+" : "") + PymolRun(group[k]);
    text += "color " + PymolColourName(place) + ", " + selection + "\n";
  }
  return text;
}

// ---- ChimeraX ----

std::string ChimeraxRun(const ResidueRun& run) {
  if (run.icode != kNoInsertion) return std::to_string(run.first) + run.icode;
  if (run.first == run.last) return std::to_string(run.first);
  return std::to_string(run.first) + "-" + std::to_string(run.last);
}

std::string ChimeraxColourDomain(const std::vector<ResidueRun>& runs, int place) {
  std::string text;
  for (const std::vector<ResidueRun>& group : CommandGroups(runs)) {
    std::string selection = group.front().chain != kNoChain ? Format("/%c:", group.front().chain) : ":";
    for (size_t k = 0; k < group.size(); ++k) selection += (k ? "," : "") + ChimeraxRun(group[k]);
    text += "color " + selection + " " + HexColour(DomainColour(place)) + "\n";
  }
  return text;
}

// ChimeraX takes a quoted name in double or in single quotes.
std::string ChimeraxQuoted(const std::string& path) {
  return path.find('"') == std::string::npos ? "\"" + path + "\"" : "'" + path + "'";
}

// ---- PDB lines ----

struct AtomLine {
  std::string text;  // without its line end
  int residue;       // position in chain order
};

bool SameNumber(const std::string& line, int32_t resnum, char icode) {
  return AtoiField(Columns(line, 23, 26)) == resnum && Column(line, 27) == icode;  // resSeq, iCode
}

// The ATOM lines of the first model with the residue each belongs to, cut into residues as the
// structure reader cut them. The reader passes over hydrogens; here a hydrogen joins the
// residue next to it that has its number, and is dropped when neither has.
std::vector<AtomLine> AtomLines(const std::string& text) {
  std::vector<AtomLine> lines;
  std::vector<std::string> waiting;  // hydrogens before their residue's first heavy atom
  const TextSource source("", text);
  std::unique_ptr<LineReader> reader = source.Open();
  int residue = -1;
  int32_t resnum = 0;
  char icode = kNoInsertion;
  std::string line;
  while (reader->Next(line)) {
    if (StartsWith(line, "END")) break;  // END or ENDMDL: the first model only
    if (!StartsWith(line, "ATOM  ")) continue;
    while (!line.empty() && (line.back() == '\n' || line.back() == '\r')) line.pop_back();
    const bool hydrogen = Column(line, 14) == 'H';
    if (hydrogen && residue >= 0 && waiting.empty() && SameNumber(line, resnum, icode)) {
      lines.push_back(AtomLine{line, residue});
    } else if (hydrogen) {
      waiting.push_back(line);
    } else {
      if (residue < 0 || !SameNumber(line, resnum, icode)) {
        ++residue;
        resnum = AtoiField(Columns(line, 23, 26));  // resSeq
        icode = Column(line, 27);                    // iCode
      }
      for (const std::string& h : waiting)
        if (SameNumber(h, resnum, icode)) lines.push_back(AtomLine{h, residue});
      waiting.clear();
      lines.push_back(AtomLine{line, residue});
    }
  }
  return lines;
}

// ---- writers ----

// The copy the scripts load: the run's text up to the end of its first model (the model the
// run judged), line ends made plain, behind a line that says whose copy it is. HETATM records
// stay, so that a modified residue keeps its place in the cartoon.
std::string StructureCopy(const ChainOutcome& outcome) {
  std::string text = "REMARK 999 quarnel copy of " + Provenance(outcome) + "\n";
  const TextSource source("", outcome.text);
  std::unique_ptr<LineReader> reader = source.Open();
  std::string line;
  while (reader->Next(line) && !StartsWith(line, "END")) {
    while (!line.empty() && (line.back() == '\n' || line.back() == '\r')) line.pop_back();
    text += line + "\n";
  }
  return text + "END\n";
}

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

std::string PymolScript(const ChainOutcome& outcome, const std::string& structureFile) {
  const std::vector<ChainDomain> domains = ChainDomains(outcome);
  const std::vector<int> places = DomainPlaces(outcome.result);
  const std::string object = PymolObject(outcome.entry);
  std::string text = "# quarnel PyMOL script of " + Provenance(outcome) + "\n";
  text += "# " + DomainSummary(outcome, domains) + "\n";
  // PyMOL opens a relative name from its working folder, not the script's: the script finds
  // its own folder (PyMOL keeps the script being run in cmd._pymol.__script__).
  text += "python\nimport os\n";
  text += "cmd.load(os.path.join(os.path.dirname(getattr(cmd._pymol, \"__script__\", \"\") or \"\"), " +
          JsonString(structureFile) + "), \"" + object + "\")\n";
  text += "python end\n";
  text += "hide everything, " + object + "\nshow cartoon, " + object + "\n";
  text += PymolSetColour(-1) + "color " + PymolColourName(-1) + ", " + object + "\n";
  for (size_t place = 0; place < domains.size() && place < kDomainColourCount; ++place)
    text += PymolSetColour(static_cast<int>(place));
  for (size_t place = 0; place < domains.size(); ++place)
    text += PymolColourDomain(object, DomainRuns(outcome.result, places, static_cast<int>(place)),
                              static_cast<int>(place));
  return text + "orient " + object + "\n";
}

std::string ChimeraxScript(const ChainOutcome& outcome, const std::string& structureFile) {
  const std::vector<ChainDomain> domains = ChainDomains(outcome);
  const std::vector<int> places = DomainPlaces(outcome.result);
  std::string text = "# quarnel ChimeraX script of " + Provenance(outcome) + "\n";
  text += "# " + DomainSummary(outcome, domains) + "\n";
  // ChimeraX opens the names in a command file from the file's own folder.
  text += "open " + ChimeraxQuoted(structureFile) + "\n";
  text += "hide atoms\nshow cartoons\ncolor protein " + HexColour(kNoDomainColour) + "\n";
  for (size_t place = 0; place < domains.size(); ++place)
    text += ChimeraxColourDomain(DomainRuns(outcome.result, places, static_cast<int>(place)),
                                 static_cast<int>(place));
  return text + "view\n";
}

std::string DomainPdb(const ChainOutcome& outcome, int place) {
  const std::vector<ChainDomain> domains = ChainDomains(outcome);
  const std::vector<int> places = DomainPlaces(outcome.result);
  const std::string id = DomainId(outcome.entry, place);
  std::string text = "REMARK 999 quarnel domain " + id + " of " + Provenance(outcome) + "\n";
  text += "REMARK 999 " + Chopping({domains[static_cast<size_t>(place)]}) + "\n";
  char chain = 0;
  for (const AtomLine& line : AtomLines(outcome.text)) {
    if (line.residue >= static_cast<int>(places.size()) || places[line.residue] != place) continue;
    const char lineChain = Column(line.text, 22);  // chainID
    if (chain != 0 && lineChain != chain) text += "TER\n";
    chain = lineChain;
    text += line.text + "\n";
  }
  return text + (chain != 0 ? "TER\nEND\n" : "END\n");
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
