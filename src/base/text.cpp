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
    const std::string& text = *text_;
    if (position_ >= text.size()) {
      line.clear();
      return false;
    }
    const char* begin = text.data() + position_;
    const size_t room = std::min(text.size() - position_, static_cast<size_t>(kLineBuffer - 1));
    const char* newline = static_cast<const char*>(std::memchr(begin, '\n', room));
    const size_t end = newline != nullptr ? static_cast<size_t>(newline - begin) + 1 : room;
    const char* nul = static_cast<const char*>(std::memchr(begin, '\0', end));
    const size_t content = nul != nullptr ? static_cast<size_t>(nul - begin) : end;
    line.assign(begin, content);
    position_ += end;
    return true;
  }
  bool Failed() const override { return false; }
  size_t SizeHint() const override { return text_->size(); }

 private:
  std::shared_ptr<const std::string> text_;
  size_t position_ = 0;
};

size_t ContentLength(const std::string& line) {
  size_t length = line.size();
  if (length > 0 && line[length - 1] == '\n') --length;
  return length;
}

}  // namespace

std::unique_ptr<LineReader> FileSource::Open() const {
  std::FILE* file = std::fopen(path_.c_str(), "r");
  if (file == nullptr) return nullptr;
  return std::make_unique<FileReader>(file);
}

std::unique_ptr<LineReader> TextSource::Open() const { return std::make_unique<TextReader>(text_); }

std::string Columns(const std::string& line, int first, int last) {
  size_t length = ContentLength(line);
  if (first < 1 || last < first || static_cast<size_t>(first) > length) return std::string();
  size_t begin = static_cast<size_t>(first - 1);
  size_t end = std::min(length, static_cast<size_t>(last));
  return line.substr(begin, end - begin);
}

char Column(const std::string& line, int column) {
  if (column < 1 || static_cast<size_t>(column) > ContentLength(line)) return ' ';
  return line[static_cast<size_t>(column - 1)];
}

bool StartsWith(const std::string& line, const char* prefix) {
  return line.compare(0, std::strlen(prefix), prefix) == 0;
}

int AtoiField(const std::string& field) { return std::atoi(field.c_str()); }

// Coordinates are written with a few decimals: such a field is read as its digits divided by a
// power of ten. Both numbers are exact in double precision and the division rounds correctly,
// so the value is the one atof gives; anything else (exponents, hexadecimal, more than 15
// digits, no digit at all) goes to atof itself.
double AtofField(const std::string& field) {
  constexpr int kMaxExactDigits = 15;
  constexpr double kPowersOfTen[kMaxExactDigits + 1] = {1e0, 1e1, 1e2,  1e3,  1e4,  1e5,  1e6,  1e7,
                                                        1e8, 1e9, 1e10, 1e11, 1e12, 1e13, 1e14, 1e15};
  const char* p = field.c_str();
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
    if (count > kMaxExactDigits) return std::atof(field.c_str());
  }
  const bool hexadecimal = count == 1 && digits == 0 && decimals < 0 && (*p == 'x' || *p == 'X');
  if (count == 0 || *p == 'e' || *p == 'E' || hexadecimal) return std::atof(field.c_str());
  const double value = static_cast<double>(digits) / kPowersOfTen[decimals > 0 ? decimals : 0];
  return negative ? -value : value;
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
