// What a batch run writes of each chain: its results in the chosen format, and the pictures
// and files asked for.
#pragma once

#include <set>
#include <string>

#include "cli/command.h"
#include "cli/outcome.h"

namespace quarnel {

// The text that opens a results file (a header line, or nothing).
std::string ResultHeader(ResultFormat format);

// One judged chain's results.
std::string FormatResult(ResultFormat format, const ChainOutcome& outcome);

// The entries a results file already holds, so that a resumed run skips them.
std::set<std::string> ReadDoneEntries(const std::string& path);

// The pictures and per-domain files the options ask for.
void WritePictures(const BatchOptions& options, const ChainOutcome& outcome);

}  // namespace quarnel
