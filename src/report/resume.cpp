// Results files read back line by line: the record line, the column names, then one chain per
// complete line (per block of complete lines, for residue rows).
#include "report/resume.h"

#include <utility>
#include <vector>

#include "report/json_text.h"

namespace quarnel {

namespace {

constexpr char kNull[] = "NULL";
constexpr size_t kInputColumn = 8;  // TSV columns from 0: chain_id ... verdict, input, chain
constexpr size_t kChainColumn = 9;
constexpr size_t kMaxCountDigits = 9;  // a block's row count, far past any chain

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

// The lines that end with a newline; a last line without one was being written when the run
// stopped.
std::vector<std::string> CompleteLines(const std::string& text) {
  std::vector<std::string> lines;
  for (size_t start = 0, newline; (newline = text.find('\n', start)) != std::string::npos; start = newline + 1)
    lines.push_back(text.substr(start, newline - start));
  return lines;
}

// A file cut off within its opening lines holds no result: it is started afresh.
ResumeState Opened(ResumeState state, size_t lines, size_t openingLines, size_t textBytes) {
  if (lines < openingLines) return ResumeState();
  state.empty = false;
  state.partialTail = state.completeBytes < textBytes;
  return state;
}

// "# chain_id 1abcA<tab>input in/1abc.pdb<tab>chain A<tab>residues 214": the chain and its rows.
bool ReadBlockLine(const std::string& line, ResumeKey& key, size_t& rows) {
  const std::vector<std::string> fields = Fields(line);
  auto after = [](const std::string& field, const char* word, std::string& value) {
    if (field.rfind(word, 0) != 0) return false;
    value = field.substr(std::string(word).size());
    return true;
  };
  std::string input, chain, count;
  if (fields.size() != 4 || !after(fields[0], kResidueBlockStart, count) ||
      !after(fields[1], kResidueBlockInput, input) || !after(fields[2], kResidueBlockChain, chain) ||
      !after(fields[3], kResidueBlockCount, count) || count.empty() || count.size() > kMaxCountDigits ||
      count.find_first_not_of("0123456789") != std::string::npos)
    return false;
  key = {Absent(input), Absent(chain)};
  rows = std::stoul(count);
  return true;
}

// Residue rows come in blocks, a chain each: a chain counts once all the rows its block line
// announces are complete, and the file is cut back to the end of the last such block.
ResumeState ReadResidueResume(const std::string& text) {
  ResumeState state;
  const std::string columns = std::string(kResidueColumns).substr(0, std::string(kResidueColumns).size() - 1);
  const std::vector<std::string> lines = CompleteLines(text);
  std::uintmax_t bytes = 0;
  ResumeKey key;
  size_t missing = 0;  // rows of the open block not yet read
  for (size_t number = 0; number < lines.size(); ++number) {
    const std::string& line = lines[number];
    bytes += line.size() + 1;
    bool closes = false;  // the line completes a block
    if (number == 0) {
      state.recorded = ReadRecordedOptions(ResultFormat::kResidues, line, state.options);
    } else if (number == 1) {
      state.recorded = state.recorded && line == columns;
    } else if (missing > 0) {
      closes = --missing == 0;
    } else if (ReadBlockLine(line, key, missing)) {
      closes = missing == 0;
    }
    if (closes) state.done.insert(key);
    if (missing == 0) state.completeBytes = bytes;
  }
  return Opened(std::move(state), lines.size(), 2, text.size());
}

}  // namespace

ResumeState ReadResume(const std::string& text, ResultFormat format) {
  if (format == ResultFormat::kResidues) return ReadResidueResume(text);
  ResumeState state;
  const std::string columns = std::string(kTsvColumns).substr(0, std::string(kTsvColumns).size() - 1);
  const std::vector<std::string> lines = CompleteLines(text);
  for (size_t number = 0; number < lines.size(); ++number) {
    const std::string& line = lines[number];
    state.completeBytes += line.size() + 1;
    if (number == 0) {
      state.recorded = ReadRecordedOptions(format, line, state.options);
    } else if (number == 1 && format == ResultFormat::kTsv) {
      state.recorded = state.recorded && line == columns;
    } else if (ResumeKey key; KeyOfLine(format, line, key)) {
      state.done.insert(key);
    }
  }
  return Opened(std::move(state), lines.size(), format == ResultFormat::kTsv ? 2 : 1, text.size());
}

ResumeKey KeyOf(ResultFormat format, const std::string& input, const std::string& chain) {
  if (format == ResultFormat::kJson) return {JsonRoundTrip(input), JsonRoundTrip(chain)};
  return {Absent(TsvField(input)), Absent(TsvField(chain))};
}

}  // namespace quarnel
