// PyMOL scripts that colour a chain by domain, the residues named as PyMOL selects them.
#include <cctype>

#include "base/text.h"
#include "report/json_text.h"
#include "report/palette.h"
#include "report/picture_parts.h"
#include "report/pictures.h"

namespace quarnel {
namespace {

constexpr double kChannelMax = 255.0;

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

}  // namespace

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

}  // namespace quarnel
