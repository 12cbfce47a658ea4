// Reading back a results file to resume a batch run: which chains are on file (by input as
// named and chain), the options the file was made with, and where its last complete line ends.
#pragma once

#include <cstdint>
#include <set>
#include <string>
#include <utility>

#include "report/results.h"

namespace quarnel {

using ResumeKey = std::pair<std::string, std::string>;  // input as named, chain id

struct ResumeState {
  bool empty = true;             // no complete line on file: the run starts the file afresh
  bool recorded = false;         // it opens with the record line and columns of the format
  std::string options;           // the options recorded there
  std::set<ResumeKey> done;      // chains with a complete line
  std::uintmax_t completeBytes = 0;  // length of the complete lines; the rest is cut off
  bool partialTail = false;      // the last line was cut short (a run killed mid-write)
};

// Reads a TSV or JSON Lines results file. A last line without its newline was being written
// when the run stopped and does not count.
ResumeState ReadResume(const std::string& text, ResultFormat format);

// The key a chain's line gives when read back: what the format keeps of the input's name and
// the chain id (a TSV field has no tab; JSON holds UTF-8 only).
ResumeKey KeyOf(ResultFormat format, const std::string& input, const std::string& chain);

}  // namespace quarnel
