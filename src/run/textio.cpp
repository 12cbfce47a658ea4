// Line and column helpers for the fixed-format readers.
#include "run/textio.h"

#include <cmath>
#include <cstdlib>
#include <cstring>
#include <limits>

bool ReadLine(std::FILE* file, std::string& line) {
  char buffer[kLineBuffer];
  if (std::fgets(buffer, kLineBuffer, file) == nullptr) {
    line.clear();
    return false;
  }
  line.assign(buffer, std::strlen(buffer));
  return true;
}

static size_t ContentLength(const std::string& line) {
  size_t length = line.size();
  if (length > 0 && line[length - 1] == '\n') --length;
  return length;
}

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

double AtofField(const std::string& field) { return std::atof(field.c_str()); }

int TruncToInt(double value) {
  if (std::isnan(value)) return 0;
  if (value >= 2147483647.0) return std::numeric_limits<int>::max();
  if (value <= -2147483648.0) return std::numeric_limits<int>::min();
  return static_cast<int>(value);
}

std::string ShellQuote(const std::string& word) {
  std::string quoted = "'";
  for (char c : word) {
    if (c == '\'')
      quoted += "'\\''";
    else
      quoted += c;
  }
  quoted += "'";
  return quoted;
}

std::string ShellFileWord(const std::string& path) {
  return ShellQuote(!path.empty() && path[0] == '-' ? "./" + path : path);
}
