// The pieces every picture writer uses.
#include "report/picture_parts.h"

#include "base/text.h"
#include "report/palette.h"

namespace quarnel {
namespace {

// PyMOL cuts command lines at 1024 characters; a colour command carries at most this many
// residue runs, which keeps it far shorter whatever the numbers.
constexpr size_t kRunsPerCommand = 40;

bool Extends(const ResidueRun& run, const Residue& r) {
  return r.chain == run.chain && run.icode == kNoInsertion && r.icode == kNoInsertion &&
         r.resnum == static_cast<int64_t>(run.last) + 1;
}

}  // namespace

std::string CommentSafe(std::string text) {
  for (char& c : text)
    if (static_cast<unsigned char>(c) < ' ' || c == ';') c = '?';
  return text;
}

std::string Provenance(const ChainOutcome& outcome) {
  return CommentSafe(outcome.file +
                     (outcome.chainId.empty() ? ", whole file" : ", chain " + outcome.chainId));
}

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

}  // namespace quarnel
