// Result lines of every format, the record line results files open with, and how that line is
// read back.
#include "report/results.h"

#include "base/text.h"
#include "base/version.h"
#include "report/json_text.h"

namespace quarnel {

namespace {

constexpr char kNull[] = "NULL";
// What follows the version on the record line: which rows the file holds. Residue rows are named
// apart, so that neither kind of file is resumed as the other.
constexpr char kTsvRecordOptions[] = " results; options: ";
constexpr char kResidueRecordOptions[] = " residues; options: ";

std::string RecordLine(const char* rows, const std::string& recorded, const char* columns) {
  return kTsvRecordStart + std::string(VersionNumber()) + rows + recorded + "\n" + columns;
}

bool ReadRecordLine(const char* rows, const std::string& firstLine, std::string& recorded) {
  const size_t at = firstLine.find(rows);
  if (firstLine.rfind(kTsvRecordStart, 0) != 0 || at == std::string::npos) return false;
  recorded = firstLine.substr(at + std::string(rows).size());
  return true;
}

}  // namespace

bool ParseResultFormat(const std::string& name, ResultFormat& format) {
  if (name == "classic") format = ResultFormat::kClassic;
  else if (name == "tsv") format = ResultFormat::kTsv;
  else if (name == "json") format = ResultFormat::kJson;
  else if (name == "residues") format = ResultFormat::kResidues;
  else return false;
  return true;
}

const char* ResultFormatName(ResultFormat format) {
  switch (format) {
    case ResultFormat::kClassic: return "classic";
    case ResultFormat::kTsv: return "tsv";
    case ResultFormat::kJson: return "json";
    case ResultFormat::kResidues: return "residues";
  }
  return "";
}

std::string ResultHeader(ResultFormat format, const std::string& options) {
  const std::string recorded = options.empty() ? kDefaultOptions : options;
  switch (format) {
    case ResultFormat::kClassic: return "";
    case ResultFormat::kTsv: return RecordLine(kTsvRecordOptions, recorded, kTsvColumns);
    case ResultFormat::kJson: return JsonRecord(options);
    case ResultFormat::kResidues: return RecordLine(kResidueRecordOptions, recorded, kResidueColumns);
  }
  return "";
}

bool ReadRecordedOptions(ResultFormat format, const std::string& firstLine, std::string& options) {
  std::string recorded;
  if (format == ResultFormat::kTsv) {
    if (!ReadRecordLine(kTsvRecordOptions, firstLine, recorded)) return false;
  } else if (format == ResultFormat::kResidues) {
    if (!ReadRecordLine(kResidueRecordOptions, firstLine, recorded)) return false;
  } else if (format == ResultFormat::kJson) {
    std::vector<std::string> values;
    if (!JsonLeadingStrings(firstLine, {kJsonRecordKey, "results", "options"}, values) || values[1] != "json")
      return false;
    recorded = values[2];
  } else {
    return false;
  }
  options = recorded == kDefaultOptions ? std::string() : recorded;
  return true;
}

std::string FormatResult(ResultFormat format, const ChainOutcome& outcome) {
  if (!outcome.ok) return "";
  switch (format) {
    case ResultFormat::kClassic: return outcome.result.report;
    case ResultFormat::kTsv: return TsvRow(outcome);
    case ResultFormat::kJson: return JsonRow(outcome);
    case ResultFormat::kResidues: return ResidueRows(outcome);
  }
  return "";
}

std::string TsvField(const std::string& text) {
  if (text.empty()) return kNull;
  std::string field = text;
  for (char& c : field)
    if (c == '\t' || c == '\n' || c == '\r') c = ' ';
  return field;
}

}  // namespace quarnel
