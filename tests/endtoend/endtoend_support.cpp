// Helpers of the end-to-end tests. Nothing here calls the tool's own code: residues and report
// lines are read back from the files and from the report format as a user would read them.
#include "endtoend_support.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <algorithm>
#include <cstdlib>
#include <sstream>

namespace {

constexpr char kBlank = ' ';

bool StartsWith(const std::string& text, const char* prefix) {
  return text.compare(0, std::char_traits<char>::length(prefix), prefix) == 0;
}

char ColumnOf(const std::string& line, size_t column) {
  return column <= line.size() ? line[column - 1] : kBlank;
}

std::string ColumnsOf(const std::string& line, size_t first, size_t last) {
  if (first > line.size()) return "";
  return line.substr(first - 1, last - first + 1);
}

bool SameLabel(const ResidueLabel& residue, int number, char icode) {
  return residue.number == number && residue.icode == icode;
}

// A signed decimal at text[*at]; false when there are no digits.
bool ReadNumber(const std::string& text, size_t* at, int* value) {
  size_t begin = *at;
  if (*at < text.size() && text[*at] == '-') ++*at;
  size_t digits = *at;
  while (*at < text.size() && text[*at] >= '0' && text[*at] <= '9') ++*at;
  if (*at == digits) return false;
  *value = std::atoi(text.substr(begin, *at - begin).c_str());
  return true;
}

// "a-b" with an optional insertion code after either number.
bool ReadSegment(const std::string& text, size_t* at, ReportSegment* segment) {
  segment->startIns = kBlank;
  segment->endIns = kBlank;
  if (!ReadNumber(text, at, &segment->start)) return false;
  if (*at < text.size() && text[*at] != '-') segment->startIns = text[(*at)++];
  if (*at >= text.size() || text[*at] != '-') return false;
  ++*at;
  if (!ReadNumber(text, at, &segment->end)) return false;
  if (*at < text.size() && text[*at] != ';' && text[*at] != ')') segment->endIns = text[(*at)++];
  return true;
}

}  // namespace

ToolRun RunWithDssp(const std::vector<std::string>& args, const std::string& directory) {
  return RunTool(args, directory, {"DSSP_PATH=" + DsspAdapter()});
}

void MakeDirectory(const std::string& path) { mkdir(path.c_str(), 0755); }

void CopyStructure(const std::string& dataFile, const TempDir& dir, const std::string& target) {
  size_t slash = target.rfind('/');
  if (slash != std::string::npos) MakeDirectory(dir.File(target.substr(0, slash)));
  std::string text = ReadFile(DataPath(dataFile));
  ASSERT_FALSE(text.empty()) << "bundled structure " << dataFile << " is missing";
  WriteFile(dir.File(target), text);
}

std::vector<std::string> SplitLines(const std::string& text) {
  std::vector<std::string> lines;
  size_t begin = 0;
  while (begin < text.size()) {
    size_t end = text.find('\n', begin);
    if (end == std::string::npos) end = text.size() - 1;
    lines.push_back(text.substr(begin, end - begin + 1));
    begin = end + 1;
  }
  return lines;
}

std::vector<ResidueLabel> ListResidues(const std::string& pdbText, char chain) {
  std::vector<ResidueLabel> residues;
  bool open = false;
  int lastNumber = 0;
  char lastIcode = kBlank;
  for (const std::string& line : SplitLines(pdbText)) {
    if (StartsWith(line, "END")) break;  // END and ENDMDL: first model only
    if (!StartsWith(line, "ATOM  ")) continue;
    if (ColumnOf(line, 14) == 'H') continue;
    char lineChain = ColumnOf(line, 22);
    if (chain != kAnyChain && lineChain != chain) continue;
    int number = std::atoi(ColumnsOf(line, 23, 26).c_str());  // resSeq
    char icode = ColumnOf(line, 27);                          // iCode
    if (!open || number != lastNumber || icode != lastIcode) {
      residues.push_back(ResidueLabel{lineChain, number, icode});
      open = true;
      lastNumber = number;
      lastIcode = icode;
    }
  }
  return residues;
}

bool ParseReport(const std::string& line, Report* report) {
  *report = Report{};
  if (line.empty() || line.back() != '\n') return false;
  std::string body = line.substr(0, line.size() - 1);
  size_t tab1 = body.find('\t');
  if (tab1 == std::string::npos) return false;
  size_t tab2 = body.find('\t', tab1 + 1);
  if (tab2 == std::string::npos) return false;
  report->entry = body.substr(0, tab1);
  size_t at = tab1 + 1;
  if (!ReadNumber(body, &at, &report->size) || at != tab2) return false;
  at = tab2 + 1;
  if (!ReadNumber(body, &at, &report->domains)) return false;
  if (at == body.size()) return report->domains == 1;
  if (body[at] != '\t' || report->domains < 2) return false;
  ++at;
  while (at < body.size()) {
    if (body.compare(at, 2, " (") != 0) return false;
    at += 2;
    std::vector<ReportSegment> domain;
    for (;;) {
      ReportSegment segment;
      if (!ReadSegment(body, &at, &segment)) return false;
      domain.push_back(segment);
      if (at < body.size() && body[at] == ';') {
        ++at;
        continue;
      }
      break;
    }
    if (at >= body.size() || body[at] != ')') return false;
    ++at;
    report->segments.push_back(domain);
  }
  return static_cast<int>(report->segments.size()) == report->domains;
}

std::vector<int> DomainsAlongChain(const Report& report,
                                   const std::vector<ResidueLabel>& residues) {
  const std::vector<int> failed;
  std::vector<int> domainOf(residues.size(), -1);
  std::vector<int> nextOfDomain(report.segments.size(), 0);

  int previousDomain = -1;
  size_t p = 0;
  while (p < residues.size()) {
    // The segment that starts here: the next unused one of some domain, whose end lies ahead.
    int domainHere = -1;
    size_t endHere = 0;
    for (size_t d = 0; d < report.segments.size() && domainHere < 0; ++d) {
      int s = nextOfDomain[d];
      if (s >= static_cast<int>(report.segments[d].size())) continue;
      const ReportSegment& segment = report.segments[d][static_cast<size_t>(s)];
      if (!SameLabel(residues[p], segment.start, segment.startIns)) continue;
      for (size_t q = p; q < residues.size(); ++q) {
        if (SameLabel(residues[q], segment.end, segment.endIns)) {
          domainHere = static_cast<int>(d);
          endHere = q;
          break;
        }
      }
    }
    if (domainHere < 0) {
      ADD_FAILURE() << "no segment (taken in chain order) covers residue "
                    << LabelText(residues[p].number, residues[p].icode) << " at position " << p;
      return failed;
    }
    if (domainHere == previousDomain) {
      ADD_FAILURE() << "two neighbouring segments of domain " << domainHere << " at position " << p;
      return failed;
    }
    for (size_t q = p; q <= endHere; ++q) domainOf[q] = domainHere;
    ++nextOfDomain[static_cast<size_t>(domainHere)];
    previousDomain = domainHere;
    p = endHere + 1;
  }
  for (size_t d = 0; d < report.segments.size(); ++d) {
    if (nextOfDomain[d] != static_cast<int>(report.segments[d].size())) {
      ADD_FAILURE() << "domain " << d << " lists segments beyond the chain's residues";
      return failed;
    }
  }
  return domainOf;
}

Report CheckReport(const std::string& line, const std::vector<ResidueLabel>& residues) {
  Report report;
  if (!ParseReport(line, &report)) {
    ADD_FAILURE() << "not a report line: \"" << line << "\"";
    return report;
  }
  EXPECT_EQ(report.size, static_cast<int>(residues.size())) << line;
  if (report.domains > 1) {
    EXPECT_FALSE(DomainsAlongChain(report, residues).empty()) << line;
  }
  return report;
}

std::vector<ResidueLabel> ResiduesOf(const std::string& dataFile, char chain) {
  return ListResidues(ReadFile(DataPath(dataFile)), chain);
}

std::string LabelText(int number, char icode) {
  std::string text = std::to_string(number);
  if (icode != kBlank) text += icode;
  return text;
}

std::string WithEntry(const std::string& line, const std::string& entry) {
  size_t tab = line.find('\t');
  if (tab == std::string::npos) return line;
  return entry + line.substr(tab);
}

std::string FirstDifference(const std::string& expected, const std::string& actual) {
  size_t at = 0;
  while (at < expected.size() && at < actual.size() && expected[at] == actual[at]) ++at;
  if (at == expected.size() && at == actual.size()) return "identical";
  auto around = [at](const std::string& text) {
    size_t from = at < 20 ? 0 : at - 20;
    std::ostringstream out;
    for (size_t i = from; i < std::min(text.size(), at + 20); ++i) {
      if (text[i] == '\t')
        out << "\\t";
      else if (text[i] == '\n')
        out << "\\n";
      else
        out << text[i];
    }
    return out.str();
  };
  std::ostringstream message;
  message << "first difference at byte " << at << ": expected \"..." << around(expected)
          << "\", got \"..." << around(actual) << "\"";
  return message.str();
}

std::string ExpectedReport(const std::string& entry, const std::vector<int>& domainOf,
                           const std::vector<ResidueLabel>& labels) {
  int domains = 0;
  for (int d : domainOf) domains = std::max(domains, d + 1);
  std::string line = entry + "\t" + std::to_string(labels.size()) + "\t" + std::to_string(domains);
  if (domains == 1) return line + "\n";
  line += "\t";
  for (int d = 0; d < domains; ++d) {
    line += " (";
    bool first = true;
    for (size_t p = 0; p < domainOf.size(); ++p) {
      if (domainOf[p] != d || (p > 0 && domainOf[p - 1] == d)) continue;
      size_t q = p;
      while (q + 1 < domainOf.size() && domainOf[q + 1] == d) ++q;
      // A segment is written with its lower residue number first, whatever the order in the file.
      ResidueLabel low = labels[p], high = labels[q];
      if (!(low.number < high.number)) std::swap(low, high);
      if (!first) line += ";";
      first = false;
      line += LabelText(low.number, low.icode) + "-" + LabelText(high.number, high.icode);
    }
    line += ")";
  }
  return line + "\n";
}
