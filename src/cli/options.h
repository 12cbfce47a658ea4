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

// Sets the defaults, scans the options, applies relaxed mode and takes the last argument as
// the input name. With no argument at all it fails with the usage text (status 0); an option
// whose values would lie past the input name fails with status 2.
CommandLine ParseOptions(int argc, const char* const* argv);

}  // namespace quarnel
