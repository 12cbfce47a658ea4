// The input name of a designed run: a structure file named directly, or a PDB code with an
// optional chain letter whose file is found under the PDB prefix and copied (one chain, or
// the first model of a multi-model file) into the file the run reads.
#pragma once

#include <string>
#include <vector>

#include "base/status.h"
#include "cli/designed_locks.h"
#include "cli/options.h"

namespace quarnel {

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
ResolvedInput ResolveInput(const CommandLine& line, DesignedLocks& locks);

bool CanRead(const std::string& path);

// A file name put into a shell command as one word, whatever characters it holds, and never
// taken for an option: a relative name beginning with '-' is written as ./-name.
std::string ShellQuote(const std::string& word);
std::string ShellFileWord(const std::string& path);

}  // namespace quarnel
