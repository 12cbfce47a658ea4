// Domain records: the residues' domain numbers turned into segment lists in chain order, and
// the one-line report that prints them.
#include "output/domains.h"

#include <new>

#include "base/sort.h"
#include "base/status.h"
#include "base/text.h"

namespace quarnel {

namespace {

constexpr char kNoInsertion = ' ';
const char kReallocFailed[] = "Quit: realloc failed.\n";

// Chain order: the key and difference of the partition's compare3, kept here so that the
// records do not depend on the engine.
int CompareByIndex(const void* a, const void* b) {
  return static_cast<const Residue*>(a)->index - static_cast<const Residue*>(b)->index;
}

// A run of consecutive array positions of one domain.
struct SegmentRun {
  int first;
  int last;
};

void AddRun(std::vector<std::vector<SegmentRun>>& runs, int domain, int first, int last) {
  // Domain numbers come from the partition (0 to count - 1); a negative one has no record.
  if (domain < 0) return;
  size_t slot = static_cast<size_t>(domain);
  if (slot >= runs.size()) runs.resize(slot + 1);
  runs[slot].push_back(SegmentRun{first, last});
}

// Maximal runs of equal domain numbers along the chain, listed per domain in chain order. A
// gap in residue numbering does not end a run: only the domain numbers do.
std::vector<std::vector<SegmentRun>> CollectRuns(const std::vector<Residue>& residues) {
  std::vector<std::vector<SegmentRun>> runs;
  const int n = static_cast<int>(residues.size());
  if (n <= 0) return runs;
  int open = 0;
  for (int i = 1; i < n; ++i) {
    if (residues[i].domain != residues[i - 1].domain) {
      AddRun(runs, residues[i - 1].domain, open, i - 1);
      open = i;
    }
  }
  AddRun(runs, residues[n - 1].domain, open, n - 1);
  return runs;
}

// Unusual numbering can run downwards inside a segment; the lower number is always the start.
DomainSegment MakeSegment(const std::vector<Residue>& residues, const SegmentRun& run) {
  const Residue& a = residues[run.first];
  const Residue& b = residues[run.last];
  if (a.resnum < b.resnum) return DomainSegment{a.resnum, a.icode, b.resnum, b.icode};
  return DomainSegment{b.resnum, b.icode, a.resnum, a.icode};
}

DomainDetail MakeRecord(const std::vector<Residue>& residues, const std::vector<SegmentRun>& runs) {
  DomainDetail record{};
  try {
    record.segments.reserve(runs.size());
  } catch (const std::bad_alloc&) {
    Fail(Status::kSegmentsAlloc, Stream::kStdout, kReallocFailed);
  }
  for (const SegmentRun& run : runs) record.segments.push_back(MakeSegment(residues, run));
  // Every residue of a domain carries its cut's scores; a domain left without residues has
  // no cut to speak of and keeps zeros.
  if (!runs.empty()) {
    const Residue& first = residues[runs.back().first];
    for (int k = 0; k < 3; ++k) record.cutscore[k] = first.cutscore[k];
  }
  record.nseg = static_cast<int32_t>(runs.size());
  record.confidence = 0.0f;
  return record;
}

std::string FormatSegment(const DomainSegment& segment) {
  const bool startCode = segment.startIns != kNoInsertion;
  const bool endCode = segment.endIns != kNoInsertion;
  if (!startCode && !endCode) return Format("%d-%d", segment.start, segment.end);
  if (!startCode) return Format("%d-%d%c", segment.start, segment.end, segment.endIns);
  if (!endCode) return Format("%d%c-%d", segment.start, segment.startIns, segment.end);
  return Format("%d%c-%d%c", segment.start, segment.startIns, segment.end, segment.endIns);
}

}  // namespace

std::vector<DomainDetail> OutputDomains(std::vector<Residue>& residues, int32_t domainCount) {
  SortRecords(residues.data(), residues.size(), sizeof(Residue), CompareByIndex);
  std::vector<DomainDetail> records;
  if (domainCount == 1) return records;

  const std::vector<std::vector<SegmentRun>> runs = CollectRuns(residues);
  const std::vector<SegmentRun> none;
  for (int32_t d = 0; d < domainCount; ++d) {
    try {
      records.emplace_back();
    } catch (const std::bad_alloc&) {
      Fail(Status::kEngineFault, Stream::kStdout, kReallocFailed);
    }
    size_t slot = static_cast<size_t>(d);
    records.back() = MakeRecord(residues, slot < runs.size() ? runs[slot] : none);
  }
  return records;
}

std::string FormatReport(const std::string& entry, int32_t residues,
                         const std::vector<DomainDetail>& domains) {
  std::string line = Format("%s\t%d\t%d\t", entry.c_str(), residues, static_cast<int>(domains.size()));
  for (const DomainDetail& record : domains) {
    line += " (";
    for (int s = 0; s < record.nseg && static_cast<size_t>(s) < record.segments.size(); ++s) {
      if (s > 0) line += ";";
      line += FormatSegment(record.segments[static_cast<size_t>(s)]);
    }
    line += ")";
  }
  line += "\n";
  return line;
}

std::string FormatOneDomain(const std::string& entry, int32_t residues) {
  return Format("%s\t%d\t1\n", entry.c_str(), residues);
}

}  // namespace quarnel
