// A TSV row per chain: Chainsaw's seven columns in its order, then quarnel's own.
#include "base/text.h"
#include "report/cath_results.h"
#include "report/results.h"

namespace quarnel {

namespace {

constexpr char kNull[] = "NULL";
constexpr char kDomainSeparator = ',';
constexpr double kPercent = 100.0;

// Confidences are fractions, as Chainsaw writes its one: 0.941 for 94.1%.
std::string Fraction(double value) { return Format("%.3f", value); }

std::string DomainConfidences(const std::vector<ChainDomain>& domains) {
  if (domains.empty() || !domains.front().judged) return kNull;
  std::string text;
  for (const ChainDomain& domain : domains) {
    if (!text.empty()) text += kDomainSeparator;
    text += Fraction(static_cast<double>(domain.confidence) / kPercent);
  }
  return text;
}

}  // namespace

std::string TsvRow(const ChainOutcome& outcome) {
  const ChainResult& result = outcome.result;
  const std::vector<ChainDomain> domains = ChainDomains(outcome);
  double confidence = 0.0;
  const std::string chainConfidence = ChainConfidence(domains, confidence) ? Fraction(confidence) : kNull;
  const std::string fields[] = {
      TsvField(outcome.entry), SequenceMd5(result.structure), std::to_string(result.structure.size()),
      std::to_string(domains.size()), TsvField(Chopping(domains)), chainConfidence,
      Format("%.3f", outcome.seconds), VerdictName(result.verdict), TsvField(outcome.input),
      TsvField(outcome.chainId), DomainConfidences(domains), TsvField(outcome.mode),
      BoundariesField(outcome)};
  std::string row;
  for (const std::string& field : fields) row += (row.empty() ? "" : "\t") + field;
  return row + "\n";
}

}  // namespace quarnel
