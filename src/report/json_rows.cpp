// A JSON line per chain: the chain, its domains in chain order with their segments and
// confidences, the cuts as the partition made them, the partition as found; and the line a
// JSON Lines results file opens with.
#include <algorithm>

#include "base/text.h"
#include "base/version.h"
#include "report/cath_results.h"
#include "report/json_text.h"
#include "report/results.h"

namespace quarnel {

namespace {

constexpr char kNoInsertion = ' ';
constexpr double kPercent = 100.0;

// Confidences are fractions, as Chainsaw writes its one: 0.941 for 94.1%.
std::string Fraction(double value) { return Format("%.3f", value); }

std::string ConfidenceJson(const ChainDomain& domain) {
  return domain.judged ? Fraction(static_cast<double>(domain.confidence) / kPercent) : kJsonNull;
}

std::string IcodeText(char icode) {
  return icode == kNoInsertion ? std::string() : std::string(1, icode);
}

std::string SegmentJson(const DomainSegment& segment) {
  JsonFields item;
  item.Add("start", JsonString(ResidueLabel(segment.start, segment.startIns)));
  item.Add("end", JsonString(ResidueLabel(segment.end, segment.endIns)));
  item.Add("start_resnum", std::to_string(segment.start));
  item.Add("start_icode", JsonString(IcodeText(segment.startIns)));
  item.Add("end_resnum", std::to_string(segment.end));
  item.Add("end_icode", JsonString(IcodeText(segment.endIns)));
  return item.Text();
}

std::string DomainJson(const std::string& id, const ChainDomain& domain) {
  JsonList segments;
  for (const DomainSegment& segment : domain.segments) segments.Push(SegmentJson(segment));
  JsonFields item;
  item.Add("id", JsonString(id));
  item.Add("chopping", JsonString(SegmentsText(domain.segments)));
  item.Add("segments", segments.Text());
  item.Add("nres", std::to_string(domain.residues));
  item.Add("confidence", ConfidenceJson(domain));
  item.Add("score", domain.judged ? JsonNumber(domain.score) : kJsonNull);
  return item.Text();
}

std::string DomainsJson(const std::string& entry, const std::vector<ChainDomain>& domains) {
  JsonList list;
  for (size_t place = 0; place < domains.size(); ++place)
    list.Push(DomainJson(DomainId(entry, static_cast<int>(place)), domains[place]));
  return list.Text();
}

std::string PairJson(float parent, float created) {
  JsonFields pair;
  pair.Add("parent", JsonNumber(parent));
  pair.Add("new", JsonNumber(created));
  return pair.Text();
}

// The cuts in the order made; their domain numbers are the partition's own, which index the
// found domains' list.
std::string CutsJson(const Partition& partition) {
  JsonList list;
  const size_t made = static_cast<size_t>(std::max(partition.domainCount - 1, 0));
  for (size_t k = 0; k < made && k < partition.cuts.size(); ++k) {
    const CutRecord& cut = partition.cuts[k];
    JsonFields item;
    item.Add("parent", std::to_string(cut.parent));
    item.Add("new_domain", std::to_string(cut.newDomain));
    item.Add("compactness", PairJson(cut.parentCompact, cut.newCompact));
    item.Add("interaction", PairJson(cut.parentInter, cut.newInter));
    item.Add("interface", JsonNumber(cut.interface));
    list.Push(item.Text());
  }
  return list.Text();
}

std::string FoundJson(const ChainResult& result) {
  JsonList numbered;
  for (const DomainDetail& record : result.found) numbered.Push(JsonString(SegmentsText(record.segments)));
  JsonFields found;
  found.Add("ndom", std::to_string(std::max<size_t>(result.found.size(), 1)));
  found.Add("chopping", JsonString(FoundChopping(result)));
  found.Add("by_number", numbered.Text());
  return found.Text();
}

std::string JsonOrNull(const std::string& text) {
  return text.empty() ? kJsonNull : JsonString(text);
}

}  // namespace

std::string JsonRow(const ChainOutcome& outcome) {
  const ChainResult& result = outcome.result;
  const std::vector<ChainDomain> domains = ChainDomains(outcome);
  double confidence = 0.0;
  // The input and the chain come first: resuming reads them from the start of the line.
  JsonFields row;
  row.Add("input", JsonString(outcome.input));
  row.Add("chain", JsonOrNull(outcome.chainId));
  row.Add("chain_id", JsonString(outcome.entry));
  row.Add("file", JsonString(outcome.file));
  row.Add("nres", std::to_string(result.structure.size()));
  row.Add("sequence_md5", JsonString(SequenceMd5(result.structure)));
  row.Add("ndom", std::to_string(domains.size()));
  row.Add("chopping", JsonString(Chopping(domains)));
  row.Add("confidence", ChainConfidence(domains, confidence) ? Fraction(confidence) : kJsonNull);
  row.Add("verdict", JsonString(VerdictName(result.verdict)));
  row.Add("domains", DomainsJson(outcome.entry, domains));
  row.Add("cuts", CutsJson(result.partition));
  row.Add("boundaries", BoundariesJson(outcome));
  row.Add("found", FoundJson(result));
  row.Add("left_out", std::to_string(outcome.leftOut));
  row.Add("time_sec", Format("%.3f", outcome.seconds));
  row.Add("mode", JsonString(outcome.mode));
  return row.Text() + "\n";
}

std::string JsonRecord(const std::string& options) {
  JsonFields record;
  record.Add(kJsonRecordKey, JsonString(VersionNumber()));
  record.Add("results", JsonString("json"));
  record.Add("options", JsonString(options.empty() ? kDefaultOptions : options));
  return record.Text() + "\n";
}

}  // namespace quarnel
