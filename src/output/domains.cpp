// Domain records: the residues' domain numbers turned into segment lists in chain order, and
// the one-line report that prints them.
#include "output/domains.h"

#include <cstdio>
#include <cstdlib>
#include <new>
#include <utility>

#include "partition/partition.h"
#include "run/fatal.h"
#include "run/sort.h"
#include "structure/pdb_names.h"
#include "structure/protein.h"

namespace {

constexpr char kNoInsertion = ' ';
const char* const kReallocFailed = "Quit: realloc failed.\n";
constexpr int kRecordsCannotGrow = 10;
constexpr int kSegmentsCannotGrow = 11;

// Chain order, the same key and difference as the partition's compare3. A copy of its own
// keeps the output library free of the partition library.
int CompareByIndex(const void* a, const void* b) {
  return static_cast<const Residue*>(a)->index - static_cast<const Residue*>(b)->index;
}

// A run of consecutive array positions of one domain.
struct SegmentRun {
  int first;
  int last;
};

void AddRun(std::vector<std::vector<SegmentRun>>& runs, int domain, int first, int last) {
  // Domain numbers come from the partition (0 to DomainNumber - 1); a negative one has no
  // record to go into.
  if (domain < 0) return;
  size_t slot = static_cast<size_t>(domain);
  if (slot >= runs.size()) runs.resize(slot + 1);
  runs[slot].push_back(SegmentRun{first, last});
}

// Maximal runs of equal domain numbers along the chain, listed per domain in chain order. A
// gap in residue numbering does not end a run: only the domain numbers do.
std::vector<std::vector<SegmentRun>> CollectRuns() {
  std::vector<std::vector<SegmentRun>> runs;
  if (ProteinSize <= 0) return runs;
  int open = 0;
  for (int i = 1; i < ProteinSize; ++i) {
    if (Protein[i].domain != Protein[i - 1].domain) {
      AddRun(runs, Protein[i - 1].domain, open, i - 1);
      open = i;
    }
  }
  AddRun(runs, Protein[ProteinSize - 1].domain, open, ProteinSize - 1);
  return runs;
}

// Unusual numbering can run downwards inside a segment; the lower number is always the start.
DomainSegment MakeSegment(const SegmentRun& run) {
  const Residue& a = Protein[run.first];
  const Residue& b = Protein[run.last];
  if (a.resnum < b.resnum) return DomainSegment{a.resnum, a.icode, b.resnum, b.icode};
  return DomainSegment{b.resnum, b.icode, a.resnum, a.icode};
}

DomainDetail MakeRecord(const std::vector<SegmentRun>& runs) {
  DomainDetail record{};
  try {
    record.segments.reserve(runs.size());
  } catch (const std::bad_alloc&) {
    Fatal(kSegmentsCannotGrow, Stream::kStdout, kReallocFailed);
  }
  for (const SegmentRun& run : runs) record.segments.push_back(MakeSegment(run));
  // Every residue of a domain carries its cut's scores; a domain left without residues has
  // no cut to speak of and keeps zeros.
  if (!runs.empty()) {
    const Residue& first = Protein[runs.back().first];
    for (int k = 0; k < 3; ++k) record.cutscore[k] = first.cutscore[k];
  }
  record.nseg = static_cast<int32_t>(runs.size());
  record.confidence = 0.0f;
  return record;
}

void PrintSegment(const DomainSegment& segment) {
  bool startCode = segment.startIns != kNoInsertion;
  bool endCode = segment.endIns != kNoInsertion;
  if (!startCode && !endCode)
    std::printf("%d-%d", segment.start, segment.end);
  else if (!startCode)
    std::printf("%d-%d%c", segment.start, segment.end, segment.endIns);
  else if (!endCode)
    std::printf("%d%c-%d", segment.start, segment.startIns, segment.end);
  else
    std::printf("%d%c-%d%c", segment.start, segment.startIns, segment.end, segment.endIns);
}

}  // namespace

void OutputDomains(const std::string& /*entry*/) {
  if (ProteinSize > 0)
    SortRecords(Protein.data(), static_cast<size_t>(ProteinSize), sizeof(Residue), CompareByIndex);
  if (DomainNumber == 1) return;

  std::vector<std::vector<SegmentRun>> runs = CollectRuns();
  const std::vector<SegmentRun> none;

  std::vector<DomainDetail> records;
  for (int d = 0; d < DomainNumber; ++d) {
    try {
      records.emplace_back();
    } catch (const std::bad_alloc&) {
      Fatal(kRecordsCannotGrow, Stream::kStdout, kReallocFailed);
    }
    size_t slot = static_cast<size_t>(d);
    records.back() = MakeRecord(slot < runs.size() ? runs[slot] : none);
  }
  domdetail = std::move(records);
}

void PrintDomain() {
  std::printf("%s\t%d\t%d\t", Entry.c_str(), ProteinSize, DomainNumber);
  for (int d = 0; d < DomainNumber && static_cast<size_t>(d) < domdetail.size(); ++d) {
    const DomainDetail& record = domdetail[static_cast<size_t>(d)];
    std::printf(" (");
    for (int s = 0; s < record.nseg && static_cast<size_t>(s) < record.segments.size(); ++s) {
      if (s > 0) std::printf(";");
      PrintSegment(record.segments[static_cast<size_t>(s)]);
    }
    std::printf(")");
  }
  std::printf("\n");
}

void FreeDomDetail(int count) {
  for (int d = 0; d < count && static_cast<size_t>(d) < domdetail.size(); ++d)
    std::vector<DomainSegment>().swap(domdetail[static_cast<size_t>(d)].segments);
  std::vector<DomainDetail>().swap(domdetail);
}

void PrintOneDomain() { std::printf("%s\t%d\t1\n", Entry.c_str(), ProteinSize); }
