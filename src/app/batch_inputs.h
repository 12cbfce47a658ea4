// The inputs of a batch run as the user named them (files, folders, codes, a list, standard
// input), expanded into structure files in the order results are written.
#pragma once

#include <cstdio>
#include <string>
#include <vector>

#include "app/batch_options.h"

namespace quarnel {

// The name standard input goes by on the command line and in --list.
inline constexpr char kStandardInput[] = "-";

// One input as the user named it, resolved to a structure file.
struct Input {
  std::string name;       // as named: a path, a folder's file, a code, "-"
  std::string path;       // the structure file read; empty when there is none
  bool code = false;      // a PDB code looked up under -pdbpath
  std::string codeChain;  // the chain letter a code names, upper case
  bool standardInput = false;  // "-": the structure is read from standard input
  std::string error;      // why the input has no file (an unreadable folder, an unknown name)
  std::string entry;      // the name results give it: the file's base name, or the code
  std::string fileStem;   // the stem of its picture files: the entry, unless another input of
                          // the run has the same entry, when the path tells them apart
};

// Every input in order: each folder's structure files sorted by path, an unreadable folder as
// an input of its own with the reason; --list - is read from `standardInput`. Fails with status
// 2 when the list cannot be read or standard input is named twice.
std::vector<Input> ExpandInputs(const BatchOptions& options, std::FILE* standardInput);

// The name results give a file: its base name without .gz and the structure suffix, and
// without the archive's "pdb" before a code (pdb1abc.ent.gz is 1abc).
std::string EntryOf(const std::string& path);

// A structure file by its name, as folders are searched: .pdb, .ent, .cif, .mmcif, each also .gz.
bool StructureName(const std::string& name);

}  // namespace quarnel
