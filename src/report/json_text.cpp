// JSON text for the results: escaping, numbers, and reading back a line's leading string.
#include "report/json_text.h"

#include <charconv>
#include <cmath>
#include <cstdint>

#include "base/text.h"

namespace quarnel {

namespace {

constexpr char kReplacement[] = "\\ufffd";
constexpr unsigned char kFirstPrintable = 0x20;
constexpr unsigned kSurrogateFirst = 0xD800;
constexpr unsigned kSurrogateLast = 0xDFFF;
constexpr unsigned kLowSurrogateFirst = 0xDC00;
constexpr unsigned kFirstSupplementary = 0x10000;

// Length of the well-formed UTF-8 sequence at `at` (1 to 4), or 0 when the bytes there are not
// one: overlong forms and surrogates included, as the standard rejects them.
size_t Utf8Length(const std::string& text, size_t at) {
  const auto byte = [&](size_t k) { return static_cast<unsigned char>(text[at + k]); };
  const unsigned char lead = byte(0);
  if (lead < 0x80) return 1;
  size_t length = lead >= 0xF0 ? 4 : lead >= 0xE0 ? 3 : lead >= 0xC2 ? 2 : 0;
  if (length == 0 || lead > 0xF4 || at + length > text.size()) return 0;
  for (size_t k = 1; k < length; ++k)
    if ((byte(k) & 0xC0) != 0x80) return 0;
  if (lead == 0xE0 && byte(1) < 0xA0) return 0;  // overlong
  if (lead == 0xED && byte(1) >= 0xA0) return 0; // surrogate
  if (lead == 0xF0 && byte(1) < 0x90) return 0;  // overlong
  if (lead == 0xF4 && byte(1) >= 0x90) return 0; // past U+10FFFF
  return length;
}

const char* ShortEscape(char c) {
  switch (c) {
    case '"': return "\\\"";
    case '\\': return "\\\\";
    case '\n': return "\\n";
    case '\r': return "\\r";
    case '\t': return "\\t";
    default: return nullptr;
  }
}

void AppendUtf8(std::string& out, unsigned code) {
  if (code < 0x80) {
    out += static_cast<char>(code);
  } else if (code < 0x800) {
    out += static_cast<char>(0xC0 | (code >> 6));
    out += static_cast<char>(0x80 | (code & 0x3F));
  } else if (code < kFirstSupplementary) {
    out += static_cast<char>(0xE0 | (code >> 12));
    out += static_cast<char>(0x80 | ((code >> 6) & 0x3F));
    out += static_cast<char>(0x80 | (code & 0x3F));
  } else {
    out += static_cast<char>(0xF0 | (code >> 18));
    out += static_cast<char>(0x80 | ((code >> 12) & 0x3F));
    out += static_cast<char>(0x80 | ((code >> 6) & 0x3F));
    out += static_cast<char>(0x80 | (code & 0x3F));
  }
}

// Four hex digits at `at`; false when they are not there.
bool ReadHex4(const std::string& text, size_t at, unsigned& code) {
  if (at + 4 > text.size()) return false;
  const char* first = text.data() + at;
  auto [end, error] = std::from_chars(first, first + 4, code, 16);
  return error == std::errc() && end == first + 4;
}

// A \uXXXX escape at `at` (just past the backslash and 'u'), a surrogate pair taken whole.
bool ReadUnicodeEscape(const std::string& text, size_t& at, std::string& out) {
  unsigned code = 0;
  if (!ReadHex4(text, at, code)) return false;
  at += 4;
  if (code >= kSurrogateFirst && code < kLowSurrogateFirst) {
    unsigned low = 0;
    if (text.compare(at, 2, "\\u") != 0 || !ReadHex4(text, at + 2, low) ||
        low < kLowSurrogateFirst || low > kSurrogateLast)
      return false;
    at += 6;
    code = kFirstSupplementary + ((code - kSurrogateFirst) << 10) + (low - kLowSurrogateFirst);
  }
  AppendUtf8(out, code);
  return true;
}

char SimpleUnescape(char c) {
  switch (c) {
    case 'b': return '\b';
    case 'f': return '\f';
    case 'n': return '\n';
    case 'r': return '\r';
    case 't': return '\t';
    default: return c;  // " \ /
  }
}

}  // namespace

std::string JsonString(const std::string& text) {
  std::string out = "\"";
  for (size_t at = 0; at < text.size();) {
    const char c = text[at];
    if (const char* escape = ShortEscape(c)) {
      out += escape;
      ++at;
    } else if (static_cast<unsigned char>(c) < kFirstPrintable) {
      out += Format("\\u%04x", static_cast<unsigned>(c));
      ++at;
    } else if (const size_t length = Utf8Length(text, at)) {
      out.append(text, at, length);
      at += length;
    } else {
      out += kReplacement;
      ++at;
    }
  }
  return out + "\"";
}

std::string JsonNumber(float value) {
  if (!std::isfinite(value)) return kJsonNull;
  char buffer[32];
  const auto result = std::to_chars(buffer, buffer + sizeof buffer, value);
  return std::string(buffer, result.ptr);
}

void JsonFields::Add(const std::string& key, const std::string& json) {
  if (!members_.empty()) members_ += ",";
  members_ += JsonString(key) + ":" + json;
}

void JsonList::Push(const std::string& json) {
  if (!items_.empty()) items_ += ",";
  items_ += json;
}

namespace {

// The JSON string starting at `at` (its opening quote), decoded; false when it is not one.
bool ReadString(const std::string& line, size_t& at, std::string& value) {
  if (at >= line.size() || line[at] != '"') return false;
  value.clear();
  for (++at; at < line.size();) {
    const char c = line[at++];
    if (c == '"') return true;
    if (c != '\\') {
      value += c;
    } else if (at < line.size() && line[at] == 'u') {
      ++at;
      if (!ReadUnicodeEscape(line, at, value)) return false;
    } else if (at < line.size()) {
      value += SimpleUnescape(line[at++]);
    }
  }
  return false;  // no closing quote
}

bool Skip(const std::string& line, size_t& at, const std::string& text) {
  if (line.compare(at, text.size(), text) != 0) return false;
  at += text.size();
  return true;
}

}  // namespace

bool JsonLeadingStrings(const std::string& line, const std::vector<std::string>& keys,
                        std::vector<std::string>& values) {
  values.assign(keys.size(), std::string());
  size_t at = 0;
  if (!Skip(line, at, "{")) return false;
  for (size_t k = 0; k < keys.size(); ++k) {
    if (k > 0 && !Skip(line, at, ",")) return false;
    if (!Skip(line, at, JsonString(keys[k]) + ":")) return false;
    if (!Skip(line, at, kJsonNull) && !ReadString(line, at, values[k])) return false;
  }
  return true;
}

std::string JsonRoundTrip(const std::string& text) {
  std::string value;
  const std::string json = JsonString(text);
  size_t at = 0;
  return ReadString(json, at, value) ? value : text;
}

}  // namespace quarnel
