// The command line: quarnel [options] input.
#pragma once

#include <string>

constexpr int kBadOptionStatus = 2;  // an option whose value would lie past the argument vector

// Relaxed mode: when MaxNumDom is not 100, the cut criteria are loosened whatever the command
// line said, and the run is marked relaxed (no confidence assessment).
void ApplyRelaxedMode();

// Sets the defaults, scans the options, applies relaxed mode and returns the input name (the
// last argument). With no argument at all it raises the usage exit (status 0).
std::string ParseOptions(int argc, char** argv);
