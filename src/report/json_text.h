// Just enough JSON to write results: strings escaped as the grammar requires, numbers that
// read back as the same float, objects and arrays built from their members' text.
#pragma once

#include <string>
#include <vector>

namespace quarnel {

inline constexpr char kJsonNull[] = "null";

// A quoted JSON string. Bytes that are not UTF-8 (file names can hold any) become U+FFFD, so
// the line stays valid JSON.
std::string JsonString(const std::string& text);

// The shortest decimal that reads back as `value`; null for a value that is not finite.
std::string JsonNumber(float value);

// Members given as JSON text, written in the order added.
class JsonFields {
 public:
  void Add(const std::string& key, const std::string& json);
  std::string Text() const { return "{" + members_ + "}"; }

 private:
  std::string members_;
};

class JsonList {
 public:
  void Push(const std::string& json);
  std::string Text() const { return "[" + items_ + "]"; }

 private:
  std::string items_;
};

// The values of the line's first members when they are `keys`, in that order, each a string or
// null (read as empty): {"k1":"...","k2":null,... Decoded; false when the line does not begin so.
bool JsonLeadingStrings(const std::string& line, const std::vector<std::string>& keys,
                        std::vector<std::string>& values);

// The text as JSON gives it back after writing it (bytes that are not UTF-8 become U+FFFD).
std::string JsonRoundTrip(const std::string& text);

}  // namespace quarnel
