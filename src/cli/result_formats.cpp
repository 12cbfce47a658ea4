// Result lines of a batch run: the designed report, a TSV row and a JSON line per chain, all
// made from the domains in chain order; and the reading back of a results file to resume.
#include "cli/result_formats.h"

#include <openssl/crypto.h>
#include <openssl/evp.h>

#include <algorithm>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <map>
#include <utility>

#include "base/status.h"
#include "base/text.h"
#include "cli/json_text.h"

namespace quarnel {

namespace {

constexpr char kNoInsertion = ' ';
constexpr char kNotJudged[] = "-";
constexpr char kDomainSeparator = ',';
constexpr char kSegmentSeparator = '_';
constexpr char kTsvHeader[] =
    "chain_id\tsequence_md5\tnres\tndom\tchopping\tconfidence\tverdict\ttime_s\n";

// Three-letter names of the 20 standard amino acids and their letters; anything else is 'X'.
struct AminoAcid {
  char name[4];
  char letter;
};
constexpr AminoAcid kAminoAcids[] = {
    {"ALA", 'A'}, {"ARG", 'R'}, {"ASN", 'N'}, {"ASP", 'D'}, {"CYS", 'C'},
    {"GLN", 'Q'}, {"GLU", 'E'}, {"GLY", 'G'}, {"HIS", 'H'}, {"ILE", 'I'},
    {"LEU", 'L'}, {"LYS", 'K'}, {"MET", 'M'}, {"PHE", 'F'}, {"PRO", 'P'},
    {"SER", 'S'}, {"THR", 'T'}, {"TRP", 'W'}, {"TYR", 'Y'}, {"VAL", 'V'},
};
constexpr char kUnknownResidue = 'X';

char OneLetter(const char* resname) {
  for (const AminoAcid& acid : kAminoAcids)
    if (std::strcmp(acid.name, resname) == 0) return acid.letter;
  return kUnknownResidue;
}

// The residue range of a chain reported whole, written like the records write a segment: the
// lower number first, whichever end it is at.
DomainSegment WholeChain(const std::vector<Residue>& residues) {
  const Residue& a = residues.front();
  const Residue& b = residues.back();
  if (a.resnum < b.resnum) return DomainSegment{a.resnum, a.icode, b.resnum, b.icode};
  return DomainSegment{b.resnum, b.icode, a.resnum, a.icode};
}

constexpr int kNoPosition = 1 << 30;  // past any chain: a record without residues

// Records in chain order given each one's first position; records with no position come
// last, in record order.
std::vector<int> OrderBy(const std::vector<int>& firstPosition) {
  std::vector<int> order(firstPosition.size());
  for (size_t d = 0; d < order.size(); ++d) order[d] = static_cast<int>(d);
  std::stable_sort(order.begin(), order.end(),
                   [&](int a, int b) { return firstPosition[a] < firstPosition[b]; });
  return order;
}

// The position of each reported domain's first residue, read from the residues' numbers.
std::vector<int> FirstResidues(const ChainResult& result) {
  std::vector<int> first(result.domains.size(), kNoPosition);
  const std::vector<Residue>& residues = result.structure.residues;
  for (int i = static_cast<int>(residues.size()) - 1; i >= 0; --i) {
    const int32_t d = residues[static_cast<size_t>(i)].domain;
    if (d >= 0 && static_cast<size_t>(d) < first.size()) first[static_cast<size_t>(d)] = i;
  }
  return first;
}

std::string SegmentText(const DomainSegment& segment) {
  return ResidueLabel(segment.start, segment.startIns) + "-" +
         ResidueLabel(segment.end, segment.endIns);
}

std::string SegmentsText(const std::vector<DomainSegment>& segments) {
  std::string text;
  for (const DomainSegment& segment : segments) {
    if (!text.empty()) text += kSegmentSeparator;
    text += SegmentText(segment);
  }
  return text;
}

bool Judged(const std::vector<ChainDomain>& domains) {
  return !domains.empty() && domains.front().judged;
}

std::string ConfidenceColumn(const std::vector<ChainDomain>& domains) {
  if (!Judged(domains)) return kNotJudged;
  std::string text;
  for (const ChainDomain& domain : domains) {
    if (!text.empty()) text += kDomainSeparator;
    text += Format("%.1f", static_cast<double>(domain.confidence));
  }
  return text;
}

// A TSV field holds no tab or line end; a file name that has one is written with blanks.
std::string TsvField(std::string text) {
  for (char& c : text)
    if (c == '\t' || c == '\n' || c == '\r') c = ' ';
  return text;
}

std::string TsvRow(const ChainOutcome& outcome) {
  const ChainResult& result = outcome.result;
  const std::vector<ChainDomain> domains = ChainDomains(result);
  return TsvField(outcome.entry) + "\t" + SequenceMd5(result.structure) + "\t" +
         std::to_string(result.structure.size()) + "\t" + std::to_string(domains.size()) + "\t" +
         Chopping(domains) + "\t" + ConfidenceColumn(domains) + "\t" +
         VerdictName(result.verdict) + "\t" + Format("%.3f", outcome.seconds) + "\n";
}

// ---- JSON ----

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
  item.Add("confidence", domain.judged ? JsonNumber(domain.confidence) : kJsonNull);
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

std::string JsonRow(const ChainOutcome& outcome) {
  const ChainResult& result = outcome.result;
  const std::vector<ChainDomain> domains = ChainDomains(result);
  // The entry comes first: resuming reads it from the start of the line.
  JsonFields row;
  row.Add("entry", JsonString(outcome.entry));
  row.Add("input", JsonString(outcome.input));
  row.Add("file", JsonString(outcome.file));
  row.Add("chain", JsonOrNull(outcome.chainId));
  row.Add("length", std::to_string(result.structure.size()));
  row.Add("sequence_md5", JsonString(SequenceMd5(result.structure)));
  row.Add("verdict", JsonString(VerdictName(result.verdict)));
  row.Add("ndom", std::to_string(domains.size()));
  row.Add("chopping", JsonString(Chopping(domains)));
  row.Add("domains", DomainsJson(outcome.entry, domains));
  row.Add("cuts", CutsJson(result.partition));
  row.Add("found", FoundJson(result));
  row.Add("left_out", std::to_string(outcome.leftOut));
  row.Add("time_s", Format("%.3f", outcome.seconds));
  return row.Text() + "\n";
}

// ---- resume ----

std::string EntryOfLine(const std::string& line) {
  if (!line.empty() && line.front() == '{') return JsonLeadingString(line, "entry");
  return line.substr(0, line.find('\t'));
}

}  // namespace

bool ParseResultFormat(const std::string& name, ResultFormat& format) {
  if (name == "classic") format = ResultFormat::kClassic;
  else if (name == "tsv") format = ResultFormat::kTsv;
  else if (name == "json") format = ResultFormat::kJson;
  else return false;
  return true;
}

std::string ResultHeader(ResultFormat format) {
  return format == ResultFormat::kTsv ? kTsvHeader : "";
}

std::string FormatResult(ResultFormat format, const ChainOutcome& outcome) {
  if (!outcome.ok) return "";
  switch (format) {
    case ResultFormat::kClassic: return outcome.result.report;
    case ResultFormat::kTsv: return TsvRow(outcome);
    case ResultFormat::kJson: return JsonRow(outcome);
  }
  return "";
}

std::vector<ChainDomain> ChainDomains(const ChainResult& result) {
  const std::vector<Residue>& residues = result.structure.residues;
  std::vector<ChainDomain> domains;
  if (result.domains.empty()) {
    if (residues.empty()) return domains;
    ChainDomain whole;
    whole.segments.push_back(WholeChain(residues));
    whole.residues = result.structure.size();
    domains.push_back(whole);
    return domains;
  }
  std::vector<int32_t> counts(result.domains.size(), 0);
  for (const Residue& r : residues)
    if (r.domain >= 0 && static_cast<size_t>(r.domain) < counts.size()) ++counts[r.domain];
  const bool judged = result.scores.size() == result.domains.size();
  for (int d : OrderBy(FirstResidues(result))) {
    const DomainDetail& record = result.domains[static_cast<size_t>(d)];
    ChainDomain domain;
    domain.number = d;
    domain.segments = record.segments;
    domain.residues = counts[static_cast<size_t>(d)];
    domain.judged = judged;
    domain.confidence = record.confidence;
    domain.score = judged ? result.scores[static_cast<size_t>(d)] : 0.0f;
    domains.push_back(std::move(domain));
  }
  return domains;
}

std::vector<int> DomainPlaces(const ChainResult& result) {
  const std::vector<Residue>& residues = result.structure.residues;
  if (result.domains.empty()) return std::vector<int>(residues.size(), 0);
  std::vector<int> placeOfNumber(result.domains.size(), -1);
  const std::vector<ChainDomain> domains = ChainDomains(result);
  for (size_t place = 0; place < domains.size(); ++place)
    placeOfNumber[static_cast<size_t>(domains[place].number)] = static_cast<int>(place);
  std::vector<int> places(residues.size(), -1);
  for (size_t i = 0; i < residues.size(); ++i) {
    const int32_t d = residues[i].domain;
    if (d >= 0 && static_cast<size_t>(d) < placeOfNumber.size()) places[i] = placeOfNumber[d];
  }
  return places;
}

std::string DomainId(const std::string& entry, int place) {
  return entry + Format("%02d", place + 1);
}

std::string ResidueLabel(int32_t resnum, char icode) {
  std::string label = std::to_string(resnum);
  if (icode != kNoInsertion) label += icode;
  return label;
}

std::string Chopping(const std::vector<ChainDomain>& domains) {
  std::string text;
  for (const ChainDomain& domain : domains) {
    if (!text.empty()) text += kDomainSeparator;
    text += SegmentsText(domain.segments);
  }
  return text;
}

std::string FoundChopping(const ChainResult& result) {
  const std::vector<Residue>& residues = result.structure.residues;
  if (result.found.empty()) return residues.empty() ? "" : SegmentText(WholeChain(residues));
  std::map<std::pair<int32_t, char>, int> firstAt;
  for (size_t i = 0; i < residues.size(); ++i)
    firstAt.emplace(std::make_pair(residues[i].resnum, residues[i].icode), static_cast<int>(i));
  auto at = [&](int32_t resnum, char icode) {
    auto it = firstAt.find(std::make_pair(resnum, icode));
    return it == firstAt.end() ? kNoPosition : it->second;
  };
  std::vector<int> first(result.found.size(), kNoPosition);
  for (size_t d = 0; d < first.size(); ++d)
    for (const DomainSegment& s : result.found[d].segments)
      first[d] = std::min({first[d], at(s.start, s.startIns), at(s.end, s.endIns)});
  std::string text;
  for (int d : OrderBy(first)) {
    if (!text.empty()) text += kDomainSeparator;
    text += SegmentsText(result.found[static_cast<size_t>(d)].segments);
  }
  return text;
}

// A checksum needs no configuration: libcrypto is started without reading the system's
// openssl.cnf, which could name provider modules to load (a static program must not) and costs
// a few milliseconds. Starting it twice is harmless.
std::string SequenceMd5(const Structure& structure) {
  std::string sequence;
  sequence.reserve(structure.residues.size());
  for (const Residue& r : structure.residues) sequence += OneLetter(r.resname);
  unsigned char digest[EVP_MAX_MD_SIZE];
  unsigned int length = 0;
  if (OPENSSL_init_crypto(OPENSSL_INIT_NO_LOAD_CONFIG, nullptr) != 1 ||
      EVP_Digest(sequence.data(), sequence.size(), digest, &length, EVP_md5(), nullptr) != 1)
    AllocationFailed();
  std::string hex;
  for (unsigned int k = 0; k < length; ++k) hex += Format("%02x", digest[k]);
  return hex;
}

ResumeState ReadResume(std::istream& in) {
  ResumeState state;
  std::string line;
  bool first = true;
  while (std::getline(in, line)) {
    if (in.eof()) {  // no newline after it: cut short
      state.partialTail = true;
      break;
    }
    state.completeBytes += line.size() + 1;
    const bool header = first && line + "\n" == kTsvHeader;
    first = false;
    if (header || line.empty()) continue;
    const std::string entry = EntryOfLine(line);
    if (!entry.empty()) state.done.insert(entry);
  }
  return state;
}

ResumeState ReadResumeFile(const std::string& path) {
  std::error_code error;
  if (!std::filesystem::exists(path, error) && !error) return ResumeState{};
  std::ifstream in(path, std::ios::binary);
  if (!in)
    Fail(Status::kInputOpen, Stream::kStderr,
         Format("quarnel: cannot read %s to resume from it\n", path.c_str()));
  return ReadResume(in);
}

}  // namespace quarnel
