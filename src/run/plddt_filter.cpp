// Leaving out low-confidence residues of predicted models, residue by residue, and keeping the
// residues left out out of every domain range.
#include "run/plddt_filter.h"

#include <algorithm>

#include <cstdio>
#include <cstring>

#include "output/domains.h"

namespace quarnel {

namespace {

struct OpenResidue {
  bool open = false;
  int32_t resnum = 0;
  char icode = ' ';
  const char* resname = "";
  bool hasCa = false;
  double confidence = 0.0;
  std::vector<AtomRecord> records;
};

class Filter {
 public:
  Filter(double threshold, const AtomRecords& records) : threshold_(threshold) { kept_.records.text = records.text; }

  void Take(const AtomRecord& record) {
    if (modelDone_) {
      kept_.records.records.push_back(record);
    } else if (record.kind == AtomRecord::kAtom) {
      Atom(record);
    } else {
      Close();
      kept_.records.records.push_back(record);
      modelDone_ = record.IsEnd();  // END or ENDMDL: the reader reads no further
    }
  }

  ConfidentRecords Finish() {
    Close();
    return std::move(kept_);
  }

 private:
  void Atom(const AtomRecord& record) {
    if (!residue_.open || record.resnum != residue_.resnum || record.icode != residue_.icode) {
      Close();
      residue_.open = true;
      residue_.resnum = record.resnum;
      residue_.icode = record.icode;
      residue_.resname = record.resname;
      residue_.confidence = record.bfactor;
    }
    if (!residue_.hasCa && std::strcmp(record.name, " CA ") == 0) {
      residue_.hasCa = true;
      residue_.confidence = record.bfactor;
    }
    residue_.records.push_back(record);
  }

  void Close() {
    if (!residue_.open) return;
    const bool keep = residue_.confidence >= threshold_;
    std::vector<AtomRecord>& kept = kept_.records.records;
    if (keep) kept.insert(kept.end(), residue_.records.begin(), residue_.records.end());
    else ++kept_.leftOut;
    ResidueMark mark{residue_.resnum, residue_.icode, keep, {}};
    std::snprintf(mark.resname, sizeof mark.resname, "%s", residue_.resname);
    kept_.marks.push_back(mark);
    residue_ = OpenResidue();
  }

  double threshold_;
  bool modelDone_ = false;
  OpenResidue residue_;
  ConfidentRecords kept_;
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

ConfidentRecords LeaveOutLowConfidence(const AtomRecords& records, double threshold) {
  Filter filter(threshold, records);
  for (const AtomRecord& record : records.records) filter.Take(record);
  return filter.Finish();
}

std::vector<PlacedMark> PlaceLeftOut(const std::vector<Residue>& residues, const std::vector<ResidueMark>& marks) {
  std::vector<PlacedMark> placed;
  size_t m = 0;
  for (size_t i = 0; i < residues.size(); ++i) {
    size_t own = m;
    while (own < marks.size() && !(marks[own].kept && SameLabel(residues[i], marks[own].resnum, marks[own].icode)))
      ++own;
    if (own == marks.size()) return placed;  // the reader grouped otherwise: no more is known
    for (; m < own; ++m)
      if (!marks[m].kept) placed.push_back(PlacedMark{i, marks[m]});
    m = own + 1;
  }
  for (; m < marks.size(); ++m)
    if (!marks[m].kept) placed.push_back(PlacedMark{residues.size(), marks[m]});
  return placed;
}

std::vector<bool> GapsBefore(const std::vector<Residue>& residues, const std::vector<ResidueMark>& marks) {
  std::vector<bool> gaps(residues.size(), false);
  for (const PlacedMark& placed : PlaceLeftOut(residues, marks))
    if (placed.before > 0 && placed.before < residues.size()) gaps[placed.before] = true;
  return gaps;
}

void SplitAtGaps(ChainResult& result, const std::vector<bool>& gapBefore, const std::string& entry) {
  const std::vector<Residue>& residues = result.structure.residues;
  if (std::find(gapBefore.begin(), gapBefore.end(), true) == gapBefore.end()) return;
  SplitRecords(result.domains, residues, gapBefore);
  SplitRecords(result.found, residues, gapBefore);
  if (result.domains.size() >= 2) result.report = FormatReport(entry, result.structure.size(), result.domains);
}

bool LooksLikePlddt(const std::vector<AtomRecord>& records) {
  constexpr double kMaxPlddt = 100.0;
  constexpr int kMinResidues = 10;
  int residues = 0, uniform = 0;
  double low = kMaxPlddt, high = 0.0;
  bool inRange = true;
  int32_t resnum = 0;
  char icode = ' ';
  double first = 0.0;
  bool same = true;
  auto close = [&] { uniform += residues > 0 && same ? 1 : 0; };
  for (const AtomRecord& record : records) {
    if (record.IsEnd()) break;
    if (record.kind != AtomRecord::kAtom) continue;
    const double b = record.bfactor;
    inRange = inRange && b >= 0.0 && b <= kMaxPlddt;
    low = std::min(low, b);
    high = std::max(high, b);
    if (residues == 0 || record.resnum != resnum || record.icode != icode) {
      close();
      ++residues;
      resnum = record.resnum;
      icode = record.icode;
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
