// Domains in chain order and the labels shared by every result format and picture.
#include "run/chain_domains.h"

#include <md5.h>

#include <algorithm>
#include <cstring>
#include <map>
#include <utility>

#include "base/status.h"
#include "base/text.h"

namespace quarnel {

namespace {

constexpr char kNoInsertion = ' ';
constexpr char kDomainSeparator = ',';
constexpr char kSegmentSeparator = '_';
constexpr double kPercent = 100.0;

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

// Residues first to last as a segment, written like the records write one: the lower number
// first, whichever end it is at.
DomainSegment Span(const std::vector<Residue>& residues, size_t first, size_t last) {
  const Residue& a = residues[first];
  const Residue& b = residues[last];
  if (a.resnum < b.resnum) return DomainSegment{a.resnum, a.icode, b.resnum, b.icode};
  return DomainSegment{b.resnum, b.icode, a.resnum, a.icode};
}

DomainSegment WholeChain(const std::vector<Residue>& residues) { return Span(residues, 0, residues.size() - 1); }

// The chain reported whole, cut where residues were left out.
std::vector<DomainSegment> WholeChainPieces(const std::vector<Residue>& residues,
                                            const std::vector<bool>& gapBefore) {
  std::vector<DomainSegment> pieces;
  size_t open = 0;
  for (size_t i = 1; i < residues.size() && i < gapBefore.size(); ++i) {
    if (!gapBefore[i]) continue;
    pieces.push_back(Span(residues, open, i - 1));
    open = i;
  }
  pieces.push_back(Span(residues, open, residues.size() - 1));
  return pieces;
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

}  // namespace

std::string SegmentsText(const std::vector<DomainSegment>& segments) {
  std::string text;
  for (const DomainSegment& segment : segments) {
    if (!text.empty()) text += kSegmentSeparator;
    text += SegmentText(segment);
  }
  return text;
}

std::vector<ChainDomain> ChainDomains(const ChainResult& result, const std::vector<bool>& gapBefore) {
  const std::vector<Residue>& residues = result.structure.residues;
  std::vector<ChainDomain> domains;
  if (result.domains.empty()) {
    if (residues.empty()) return domains;
    ChainDomain whole;
    whole.segments = WholeChainPieces(residues, gapBefore);
    whole.residues = result.structure.size();
    // The accuracy mode's model judges a chain it leaves whole as well.
    if (result.mode == DecisionMode::kCath && result.calls.confidence.size() == 1) {
      whole.judged = true;
      whole.score = static_cast<float>(result.calls.confidence[0]);
      whole.confidence = static_cast<float>(kPercent * result.calls.confidence[0]);
    }
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

bool ChainConfidence(const std::vector<ChainDomain>& domains, double& confidence) {
  if (domains.empty() || !domains.front().judged) return false;
  confidence = 1.0;
  for (const ChainDomain& domain : domains)
    confidence = std::min(confidence, static_cast<double>(domain.confidence) / kPercent);
  return true;
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

// libmd's MD5 (RFC 1321): a few hundred bytes of code, where a general cryptography library
// would bring megabytes and calls into the network and the dynamic loader.
std::string SequenceMd5(const Structure& structure) {
  std::string sequence;
  sequence.reserve(structure.residues.size());
  for (const Residue& r : structure.residues) sequence += OneLetter(r.resname);
  MD5_CTX context;
  MD5Init(&context);
  MD5Update(&context, reinterpret_cast<const uint8_t*>(sequence.data()), sequence.size());
  uint8_t digest[MD5_DIGEST_LENGTH];
  MD5Final(digest, &context);
  std::string hex;
  for (uint8_t byte : digest) hex += Format("%02x", byte);
  return hex;
}

}  // namespace quarnel
