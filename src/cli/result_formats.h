// The results a batch run writes for each chain (the report line, one TSV row, one JSON line),
// the domains in chain order they are made from, and the reading of a results file to resume.
#pragma once

#include <cstdint>
#include <istream>
#include <set>
#include <string>
#include <vector>

#include "cli/outcome.h"

namespace quarnel {

enum class ResultFormat { kClassic, kTsv, kJson };

// "classic", "tsv" or "json"; false for any other name.
bool ParseResultFormat(const std::string& name, ResultFormat& format);

// The line a results file opens with: the TSV column names, nothing for the other formats.
std::string ResultHeader(ResultFormat format);

// One chain's lines, newline included. A failed chain writes nothing in any format: its
// reason goes to the driver's error report, and a resumed run tries it again because no
// result of it is on file.
std::string FormatResult(ResultFormat format, const ChainOutcome& outcome);

// A reported domain in chain order (the order of its first residue in the chain).
struct ChainDomain {
  int number = 0;                         // the residues' domain number; 0 for a single domain
  std::vector<DomainSegment> segments;    // chain order
  int32_t residues = 0;
  bool judged = false;                    // confidence and score hold the assessment's values
  float confidence = 0.0f;                // percent
  float score = 0.0f;                     // the network's score
};

// The domains as reported, in chain order; a chain reported as one domain gives one domain
// spanning its first to its last residue. Needs the residues in chain order carrying the domain
// numbers of the reported records, as RunChain leaves them.
std::vector<ChainDomain> ChainDomains(const ChainResult& result);

// Per residue (chain order), the place of its domain in ChainDomains, or -1 when the residue is
// in none of them.
std::vector<int> DomainPlaces(const ChainResult& result);

// "<entry>01", "<entry>02", ... for the domains in chain order; `place` counts from 0.
std::string DomainId(const std::string& entry, int place);

// 52A, -3: a residue as results write it.
std::string ResidueLabel(int32_t resnum, char icode);

// Domains ',' separated, the segments of one '_' separated, e.g. "6-39_94-192,41-90".
std::string Chopping(const std::vector<ChainDomain>& domains);

// The chopping of the partition as found, before the assessment, in chain order. The records
// do not carry their residues, so a record is placed by the first residue in the chain whose
// number and insertion code begins or ends one of its segments.
std::string FoundChopping(const ChainResult& result);

// MD5 (lower-case hex) of the one-letter sequence of the residues as read: the 20 standard
// amino acids, 'X' for any other residue name.
std::string SequenceMd5(const Structure& structure);

// What a results file already holds, for --resume.
struct ResumeState {
  std::set<std::string> done;       // chain ids (entries) with a complete line
  std::uintmax_t completeBytes = 0; // length of the complete lines; the driver cuts the file
                                    // back to it before appending
  bool partialTail = false;         // the last line was cut short (a run killed mid-write)
};

// Reads a TSV, classic or JSON Lines results file. A last line without its newline was being
// written when the run stopped and does not count.
ResumeState ReadResume(std::istream& in);

// The same for a file by name; a missing file resumes nothing.
ResumeState ReadResumeFile(const std::string& path);

}  // namespace quarnel
