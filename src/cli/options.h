// The command line: quarnel [options] input.
#pragma once

#include <string>

#include "base/params.h"

namespace quarnel {

struct CommandLine {
  Params params;
  std::string input;            // the last argument, always
  std::string pdbPath = "./";   // -pdbpath: put verbatim before a PDB code
  std::string chainPath = "./"; // where chain copies are written
};

// The number of values a designed option takes, or -1 when `name` is no designed option.
int DesignedOptionValues(const char* name);

// Applies a designed option, its values (as many as it takes) read with atoi/atof semantics.
void ApplyDesignedOption(const char* name, const char* const* values, Params& params,
                         std::string& pdbPath);

// Sets the defaults, scans the options, applies relaxed mode and takes the last argument as
// the input name. With no argument at all it fails with the usage text (status 0); an option
// whose values would lie past the input name fails with status 2.
CommandLine ParseOptions(int argc, const char* const* argv);

}  // namespace quarnel
