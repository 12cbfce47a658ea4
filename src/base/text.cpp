// Line sources and field helpers for the fixed-format readers.
#include "base/text.h"

#include <sys/stat.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstdarg>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <vector>

namespace quarnel {

namespace {

class FileReader final : public LineReader {
 public:
  explicit FileReader(std::FILE* file) : file_(file) {}
  ~FileReader() override { std::fclose(file_); }
  FileReader(const FileReader&) = delete;
  FileReader& operator=(const FileReader&) = delete;

  bool Next(std::string& line) override {
    char buffer[kLineBuffer];
    if (std::fgets(buffer, kLineBuffer, file_) == nullptr) {
      line.clear();
      return false;
    }
    line.assign(buffer, std::strlen(buffer));
    return true;
  }
  bool Failed() const override { return std::ferror(file_) != 0; }
  size_t SizeHint() const override {
    struct stat status;
    if (fstat(fileno(file_), &status) != 0 || !S_ISREG(status.st_mode) || status.st_size < 0) return 0;
    return static_cast<size_t>(status.st_size);
  }

 private:
  std::FILE* file_;
};

// The pieces fgets would return from the same bytes in a file.
class TextReader final : public LineReader {
 public:
  explicit TextReader(std::shared_ptr<const std::string> text) : text_(std::move(text)) {}

  bool Next(std::string& line) override {
    if (position_ >= text_->size()) {
      line.clear();
      return false;
    }
    line.assign(NextPiece(*text_, position_));
    return true;
  }
  bool Failed() const override { return false; }
  size_t SizeHint() const override { return text_->size(); }

 private:
  std::shared_ptr<const std::string> text_;
  size_t position_ = 0;
};

size_t ContentLength(std::string_view line) {
  size_t length = line.size();
  if (length > 0 && line[length - 1] == '\n') --length;
  return length;
}

// A NUL-terminated copy of a short field, for the C library's conversions.
class FieldText {
 public:
  explicit FieldText(std::string_view field) {
    if (field.size() < sizeof(buffer_)) {
      field.copy(buffer_, field.size());
      buffer_[field.size()] = '\0';
    } else {
      long_.assign(field);
    }
  }
  const char* c_str() const { return long_.empty() ? buffer_ : long_.c_str(); }

 private:
  char buffer_[32];
  std::string long_;
};

}  // namespace

std::string_view NextPiece(std::string_view text, size_t& position) {
  const char* begin = text.data() + position;
  const size_t room = std::min(text.size() - position, kPieceLength);
  const char* newline = static_cast<const char*>(std::memchr(begin, '\n', room));
  const size_t end = newline != nullptr ? static_cast<size_t>(newline - begin) + 1 : room;
  const char* nul = static_cast<const char*>(std::memchr(begin, '\0', end));
  position += end;
  return std::string_view(begin, nul != nullptr ? static_cast<size_t>(nul - begin) : end);
}

std::unique_ptr<LineReader> FileSource::Open() const {
  std::FILE* file = std::fopen(path_.c_str(), "r");
  if (file == nullptr) return nullptr;
  return std::make_unique<FileReader>(file);
}

std::unique_ptr<LineReader> TextSource::Open() const { return std::make_unique<TextReader>(text_); }

std::string_view ColumnsView(std::string_view line, int first, int last) {
  size_t length = ContentLength(line);
  if (first < 1 || last < first || static_cast<size_t>(first) > length) return std::string_view();
  size_t begin = static_cast<size_t>(first - 1);
  size_t end = std::min(length, static_cast<size_t>(last));
  return line.substr(begin, end - begin);
}

std::string Columns(std::string_view line, int first, int last) {
  return std::string(ColumnsView(line, first, last));
}

char Column(std::string_view line, int column) {
  if (column < 1 || static_cast<size_t>(column) > ContentLength(line)) return ' ';
  return line[static_cast<size_t>(column - 1)];
}

bool StartsWith(std::string_view line, std::string_view prefix) {
  return line.substr(0, prefix.size()) == prefix;
}

int AtoiField(std::string_view field) { return std::atoi(FieldText(field).c_str()); }

// Coordinates are written with a few decimals: such a field is read as its digits divided by a
// power of ten. Both numbers are exact in double precision and the division rounds correctly,
// so the value is the one atof gives; anything else (exponents, hexadecimal, more than 15
// digits, no digit at all) goes to atof itself.
double AtofField(std::string_view field) {
  constexpr int kMaxExactDigits = 15;
  constexpr double kPowersOfTen[kMaxExactDigits + 1] = {1e0, 1e1, 1e2,  1e3,  1e4,  1e5,  1e6,  1e7,
                                                        1e8, 1e9, 1e10, 1e11, 1e12, 1e13, 1e14, 1e15};
  const FieldText text(field);
  const char* p = text.c_str();
  while (*p == ' ' || (*p >= '\t' && *p <= '\r')) ++p;
  const bool negative = *p == '-';
  if (*p == '-' || *p == '+') ++p;
  int64_t digits = 0;
  int count = 0;
  int decimals = -1;
  for (;; ++p) {
    if (*p >= '0' && *p <= '9') {
      digits = digits * 10 + (*p - '0');
      ++count;
      if (decimals >= 0) ++decimals;
    } else if (*p == '.' && decimals < 0) {
      decimals = 0;
    } else {
      break;
    }
    if (count > kMaxExactDigits) return std::atof(text.c_str());
  }
  const bool hexadecimal = count == 1 && digits == 0 && decimals < 0 && (*p == 'x' || *p == 'X');
  if (count == 0 || *p == 'e' || *p == 'E' || hexadecimal) return std::atof(text.c_str());
  const double value = static_cast<double>(digits) / kPowersOfTen[decimals > 0 ? decimals : 0];
  return negative ? -value : value;
}

size_t EditDistance(const std::string& a, const std::string& b) {
  std::vector<size_t> row(b.size() + 1);
  for (size_t j = 0; j <= b.size(); ++j) row[j] = j;
  for (size_t i = 1; i <= a.size(); ++i) {
    size_t diagonal = row[0];
    row[0] = i;
    for (size_t j = 1; j <= b.size(); ++j) {
      const size_t above = row[j];
      row[j] = std::min({row[j] + 1, row[j - 1] + 1, diagonal + (a[i - 1] == b[j - 1] ? 0 : 1)});
      diagonal = above;
    }
  }
  return row[b.size()];
}

std::string Format(const char* format, ...) {
  va_list args;
  va_start(args, format);
  va_list again;
  va_copy(again, args);
  int length = std::vsnprintf(nullptr, 0, format, args);
  va_end(args);
  std::string result;
  if (length > 0) {
    std::vector<char> buffer(static_cast<size_t>(length) + 1);
    std::vsnprintf(buffer.data(), buffer.size(), format, again);
    result.assign(buffer.data(), static_cast<size_t>(length));
  }
  va_end(again);
  return result;
}

}  // namespace quarnel
