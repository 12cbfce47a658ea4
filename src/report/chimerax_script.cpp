// ChimeraX scripts that colour a chain by domain, the residues named as ChimeraX selects them.
#include "base/text.h"
#include "report/palette.h"
#include "report/picture_parts.h"
#include "report/pictures.h"

namespace quarnel {
namespace {

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

}  // namespace

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

}  // namespace quarnel
