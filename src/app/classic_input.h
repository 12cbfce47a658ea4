// The input name of a classic run: a structure file named directly, or a PDB code with an
// optional chain letter whose file is found under the PDB prefix and copied (one chain, or the
// first model of a multi-model file) into the file the run reads.
#pragma once

#include <string>
#include <vector>

#include "base/classic_locks.h"
#include "base/params.h"
#include "base/status.h"

namespace quarnel {

// The classic command line: quarnel [options] input.
struct CommandLine {
  Params params;
  std::string input;            // the last argument, always
  std::string pdbPath = "./";   // -pdbpath: put verbatim before a PDB code
  std::string chainPath = "./"; // where chain copies are written
};

struct ResolvedInput {
  bool namedFile = false;     // the name opened as a file
  std::string templateName;   // the file the run reads and gives to DSSP
  std::string pdbName;        // the PDB file of a code (empty for a named file)
  std::string entry;          // the name the report gives
  std::string base;           // the DSSP output is named base + ".dssp"
  int chain = -1;             // the requested chain letter, upper case; -1: the first residue's
  std::vector<Message> messages;  // warnings met while copying
};

// Resolves the input; the chain or model copy it writes is locked in `locks` for the run.
ResolvedInput ResolveInput(const CommandLine& line, ClassicLocks& locks);

}  // namespace quarnel
