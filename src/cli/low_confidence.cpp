// Leaving out low-confidence residues of predicted models, residue by residue, and keeping the
// residues left out out of every domain range.
#include "cli/low_confidence.h"

#include <algorithm>

#include "base/text.h"
#include "output/domains.h"

namespace quarnel {

namespace {

// Records that describe the atom before them (anisotropic factors, their uncertainties): they
// go wherever their atom goes.
bool DescribesAtomBefore(const std::string& line) {
  return StartsWith(line, "ANISOU") || StartsWith(line, "SIGATM") || StartsWith(line, "SIGUIJ");
}

double Bfactor(const std::string& line) { return AtofField(Columns(line, 61, 66)); }  // tempFactor

struct OpenResidue {
  bool open = false;
  int32_t resnum = 0;
  char icode = ' ';
  bool hasCa = false;
  double confidence = 0.0;
  std::string lines;
};

class Filter {
 public:
  explicit Filter(double threshold) : threshold_(threshold) {}

  void Take(const std::string& line) {
    if (modelDone_) {
      kept_.text += line;
    } else if (StartsWith(line, "ATOM  ")) {
      Atom(line);
    } else if (residue_.open && DescribesAtomBefore(line)) {
      residue_.lines += line;
    } else {
      Close();
      kept_.text += line;
      modelDone_ = StartsWith(line, "END");  // END or ENDMDL: the reader reads no further
    }
  }

  ConfidentText Finish() {
    Close();
    return std::move(kept_);
  }

 private:
  void Atom(const std::string& line) {
    const int32_t resnum = AtoiField(Columns(line, 23, 26));  // resSeq
    const char icode = Column(line, 27);                       // iCode
    if (!residue_.open || resnum != residue_.resnum || icode != residue_.icode) {
      Close();
      residue_.open = true;
      residue_.resnum = resnum;
      residue_.icode = icode;
      residue_.confidence = Bfactor(line);
    }
    if (!residue_.hasCa && Columns(line, 13, 16) == " CA ") {  // atom name
      residue_.hasCa = true;
      residue_.confidence = Bfactor(line);
    }
    residue_.lines += line;
  }

  void Close() {
    if (!residue_.open) return;
    const bool keep = residue_.confidence >= threshold_;
    if (keep) kept_.text += residue_.lines;
    else ++kept_.leftOut;
    kept_.marks.push_back(ResidueMark{residue_.resnum, residue_.icode, keep});
    residue_ = OpenResidue();
  }

  double threshold_;
  bool modelDone_ = false;
  OpenResidue residue_;
  ConfidentText kept_;
};

bool SameLabel(const Residue& r, int32_t resnum, char icode) { return r.resnum == resnum && r.icode == icode; }

DomainSegment Segment(const std::vector<Residue>& residues, size_t first, size_t last) {
  const Residue& a = residues[first];
  const Residue& b = residues[last];
  if (a.resnum < b.resnum) return DomainSegment{a.resnum, a.icode, b.resnum, b.icode};
  return DomainSegment{b.resnum, b.icode, a.resnum, a.icode};
}

// The positions a segment covers: from the first residue with one of its end labels to the next
// with the other. Numbering may run downwards, so either end may come first.
bool SegmentSpan(const DomainSegment& s, const std::vector<Residue>& residues, size_t& first, size_t& last) {
  for (size_t p = 0; p < residues.size(); ++p) {
    const bool atStart = SameLabel(residues[p], s.start, s.startIns);
    if (!atStart && !SameLabel(residues[p], s.end, s.endIns)) continue;
    const int32_t otherNumber = atStart ? s.end : s.start;
    const char otherCode = atStart ? s.endIns : s.startIns;
    for (size_t q = p; q < residues.size(); ++q) {
      if (!SameLabel(residues[q], otherNumber, otherCode)) continue;
      first = p;
      last = q;
      return true;
    }
    return false;
  }
  return false;
}

std::vector<DomainSegment> SplitSegments(const std::vector<DomainSegment>& segments,
                                         const std::vector<Residue>& residues,
                                         const std::vector<bool>& gapBefore) {
  std::vector<DomainSegment> split;
  for (const DomainSegment& segment : segments) {
    size_t first = 0, last = 0;
    if (!SegmentSpan(segment, residues, first, last)) {
      split.push_back(segment);
      continue;
    }
    size_t open = first;
    for (size_t p = first + 1; p <= last; ++p) {
      if (!gapBefore[p]) continue;
      split.push_back(Segment(residues, open, p - 1));
      open = p;
    }
    split.push_back(Segment(residues, open, last));
  }
  return split;
}

void SplitRecords(std::vector<DomainDetail>& records, const std::vector<Residue>& residues,
                  const std::vector<bool>& gapBefore) {
  for (DomainDetail& record : records) {
    record.segments = SplitSegments(record.segments, residues, gapBefore);
    record.nseg = static_cast<int32_t>(record.segments.size());
  }
}

}  // namespace

ConfidentText LeaveOutLowConfidence(const std::string& text, double threshold) {
  Filter filter(threshold);
  const TextSource source("structure", text);
  std::unique_ptr<LineReader> reader = source.Open();
  std::string line;
  while (reader->Next(line)) filter.Take(line);
  return filter.Finish();
}

std::vector<bool> GapsBefore(const std::vector<Residue>& residues, const std::vector<ResidueMark>& marks) {
  std::vector<bool> gaps(residues.size(), false);
  size_t m = 0;
  for (size_t i = 0; i < residues.size(); ++i) {
    bool passedOver = false;
    while (m < marks.size() && !(marks[m].kept && SameLabel(residues[i], marks[m].resnum, marks[m].icode))) {
      passedOver = passedOver || !marks[m].kept;
      ++m;
    }
    if (m == marks.size()) break;  // the reader grouped otherwise: no more is known
    gaps[i] = i > 0 && passedOver;
    ++m;
  }
  return gaps;
}

void SplitAtGaps(ChainResult& result, const std::vector<bool>& gapBefore, const std::string& entry) {
  const std::vector<Residue>& residues = result.structure.residues;
  if (std::find(gapBefore.begin(), gapBefore.end(), true) == gapBefore.end()) return;
  SplitRecords(result.domains, residues, gapBefore);
  SplitRecords(result.found, residues, gapBefore);
  if (result.domains.size() >= 2) result.report = FormatReport(entry, result.structure.size(), result.domains);
}

bool LooksLikePlddt(const std::string& text) {
  constexpr double kMaxPlddt = 100.0;
  constexpr int kMinResidues = 10;
  int residues = 0, uniform = 0;
  double low = kMaxPlddt, high = 0.0;
  bool inRange = true;
  int32_t resnum = 0;
  char icode = ' ';
  double first = 0.0;
  bool same = true;
  const TextSource source("structure", text);
  std::unique_ptr<LineReader> reader = source.Open();
  std::string line;
  auto close = [&] { uniform += residues > 0 && same ? 1 : 0; };
  while (reader->Next(line) && !StartsWith(line, "END")) {
    if (!StartsWith(line, "ATOM  ")) continue;
    const double b = Bfactor(line);
    inRange = inRange && b >= 0.0 && b <= kMaxPlddt;
    low = std::min(low, b);
    high = std::max(high, b);
    const int32_t number = AtoiField(Columns(line, 23, 26));  // resSeq
    if (residues == 0 || number != resnum || Column(line, 27) != icode) {  // iCode
      close();
      ++residues;
      resnum = number;
      icode = Column(line, 27);
      first = b;
      same = true;
    }
    same = same && b == first;
  }
  close();
  // A few residues may disagree (a ligand written as ATOM records): nineteen in twenty suffice.
  return residues >= kMinResidues && inRange && high > low && uniform * 20 >= residues * 19;
}

}  // namespace quarnel
