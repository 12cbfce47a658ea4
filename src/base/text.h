// Sources of text lines (a file, or text held in memory) and the fixed-column field helpers of
// the PDB and DSSP readers.
#pragma once

#include <cmath>
#include <cstdio>
#include <limits>
#include <memory>
#include <string>
#include <string_view>

namespace quarnel {

// Records are read the way a 300-byte line buffer reads them: at most 299 characters at a
// time, so a longer line comes back in pieces, each taken as a line of its own. The newline,
// when the piece has one, is kept. Text after a NUL byte in a piece is dropped, as for a C
// string. Files and text in memory give exactly the same pieces.
constexpr int kLineBuffer = 300;
constexpr size_t kPieceLength = kLineBuffer - 1;

// The piece of `text` that starts at `position`, moving `position` past it: the one piece rule
// for text in memory, which gives what fgets gives from the same bytes in a file.
std::string_view NextPiece(std::string_view text, size_t& position);

// Calls visit(piece) for every piece of `text` in order, until it returns false.
template <class Visit>
void ForEachPiece(std::string_view text, Visit&& visit) {
  for (size_t position = 0; position < text.size();)
    if (!visit(NextPiece(text, position))) return;
}

class LineReader {
 public:
  virtual ~LineReader() = default;
  // The next piece; false at the end of the text.
  virtual bool Next(std::string& line) = 0;
  // True when reading stopped on an error rather than at the end (a directory, an I/O error).
  virtual bool Failed() const = 0;
  // The text's size in bytes when known before reading it, else 0.
  virtual size_t SizeHint() const { return 0; }
};

// Text that can be read from its start any number of times, by several readers at once.
class LineSource {
 public:
  virtual ~LineSource() = default;
  // A reader from the first line; nullptr when the text cannot be opened.
  virtual std::unique_ptr<LineReader> Open() const = 0;
  // The name messages give the text (a file name).
  virtual const std::string& name() const = 0;
};

class FileSource final : public LineSource {
 public:
  explicit FileSource(std::string path) : path_(std::move(path)) {}
  std::unique_ptr<LineReader> Open() const override;
  const std::string& name() const override { return path_; }

 private:
  std::string path_;
};

class TextSource final : public LineSource {
 public:
  TextSource(std::string name, std::string text)
      : name_(std::move(name)), text_(std::make_shared<const std::string>(std::move(text))) {}
  std::unique_ptr<LineReader> Open() const override;
  const std::string& name() const override { return name_; }
  const std::string& text() const { return *text_; }

 private:
  std::string name_;
  std::shared_ptr<const std::string> text_;
};

// Fields by 1-based column, as the format tables give them. A field reaching past the end of
// the line (the newline does not count as content) is cut short; a single column past the end
// reads as a blank.
std::string Columns(std::string_view line, int first, int last);
char Column(std::string_view line, int column);
// The same field as a view into the line, for readers that take many fields of many lines.
std::string_view ColumnsView(std::string_view line, int first, int last);

bool StartsWith(std::string_view line, std::string_view prefix);

// atoi / atof semantics on a field: leading blanks skipped, the longest numeric prefix
// converted, 0 when there is none.
int AtoiField(std::string_view field);
double AtofField(std::string_view field);

// Truncation toward zero of a real value to a signed 32-bit integer, saturating outside its
// range and giving 0 for a value that is not a number (options and malformed coordinates can
// carry such values; the arithmetic must stay defined). Inline: the sort comparators call it
// for every comparison.
inline int TruncToInt(double value) {
  if (std::isnan(value)) return 0;
  if (value >= 2147483647.0) return std::numeric_limits<int>::max();
  if (value <= -2147483648.0) return std::numeric_limits<int>::min();
  return static_cast<int>(value);
}

// Levenshtein distance: the fewest insertions, deletions and substitutions that turn a into b.
size_t EditDistance(const std::string& a, const std::string& b);

// printf-style formatting into a std::string of whatever length the values need.
std::string Format(const char* format, ...) __attribute__((format(printf, 1, 2)));

}  // namespace quarnel
