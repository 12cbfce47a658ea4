// Results files read back line by line: the record line, the column names, then one chain per
// complete line.
#include "report/resume.h"

#include <vector>

#include "report/json_text.h"

namespace quarnel {

namespace {

constexpr char kNull[] = "NULL";
constexpr size_t kInputColumn = 8;  // TSV columns from 0: chain_id ... verdict, input, chain
constexpr size_t kChainColumn = 9;

std::vector<std::string> Fields(const std::string& line) {
  std::vector<std::string> fields;
  size_t start = 0;
  for (size_t tab; (tab = line.find('\t', start)) != std::string::npos; start = tab + 1)
    fields.push_back(line.substr(start, tab - start));
  fields.push_back(line.substr(start));
  return fields;
}

std::string Absent(const std::string& field) { return field == kNull ? std::string() : field; }

bool KeyOfLine(ResultFormat format, const std::string& line, ResumeKey& key) {
  if (format == ResultFormat::kJson) {
    std::vector<std::string> values;
    if (!JsonLeadingStrings(line, {"input", "chain"}, values)) return false;
    key = {values[0], values[1]};
    return true;
  }
  const std::vector<std::string> fields = Fields(line);
  if (fields.size() <= kChainColumn) return false;
  key = {Absent(fields[kInputColumn]), Absent(fields[kChainColumn])};
  return true;
}

}  // namespace

ResumeState ReadResume(const std::string& text, ResultFormat format) {
  ResumeState state;
  const std::string columns = std::string(kTsvColumns).substr(0, std::string(kTsvColumns).size() - 1);
  size_t number = 0;
  for (size_t start = 0; start < text.size(); ++number) {
    const size_t newline = text.find('\n', start);
    if (newline == std::string::npos) {  // no newline after it: cut short
      state.partialTail = true;
      break;
    }
    const std::string line = text.substr(start, newline - start);
    start = newline + 1;
    state.completeBytes += line.size() + 1;
    state.empty = false;
    if (number == 0) {
      state.recorded = ReadRecordedOptions(format, line, state.options);
    } else if (number == 1 && format == ResultFormat::kTsv) {
      state.recorded = state.recorded && line == columns;
    } else if (ResumeKey key; KeyOfLine(format, line, key)) {
      state.done.insert(key);
    }
  }
  // A file cut off within its opening lines holds no result: it is started afresh.
  const size_t openingLines = format == ResultFormat::kTsv ? 2 : 1;
  if (number < openingLines) state = ResumeState();
  return state;
}

ResumeKey KeyOf(ResultFormat format, const std::string& input, const std::string& chain) {
  if (format == ResultFormat::kJson) return {JsonRoundTrip(input), JsonRoundTrip(chain)};
  return {Absent(TsvField(input)), Absent(TsvField(chain))};
}

}  // namespace quarnel
