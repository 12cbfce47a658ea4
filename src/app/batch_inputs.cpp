// Input names of batch runs turned into structure files: folders searched, codes looked up,
// list files read, and the names results and pictures give each file.
#include "app/batch_inputs.h"

#include <algorithm>
#include <cctype>
#include <cerrno>
#include <cstring>
#include <map>

#include "app/code_lookup.h"
#include "base/files.h"
#include "base/status.h"

namespace quarnel {

namespace {

constexpr size_t kCodeLength = 4;
constexpr size_t kCodeWithChainLength = 5;
// What results call a structure read from standard input.
constexpr char kStandardInputEntry[] = "stdin";

std::string Lower(std::string text) {
  for (char& c : text) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
  return text;
}

bool EndsWith(const std::string& text, const std::string& end) {
  return text.size() >= end.size() && text.compare(text.size() - end.size(), end.size(), end) == 0;
}

constexpr char kStructureSuffixes[][8] = {".pdb", ".ent", ".cif", ".mmcif"};

bool LooksLikeCode(const std::string& name) {
  if (name.size() != kCodeLength && name.size() != kCodeWithChainLength) return false;
  return std::all_of(name.begin(), name.begin() + kCodeLength,
                     [](char c) { return std::isalnum(static_cast<unsigned char>(c)) != 0; });
}

Input FileInput(const std::string& path) {
  Input input;
  input.name = input.path = path;
  input.entry = EntryOf(path);
  return input;
}

Input FolderError(const std::string& folder, int error) {
  Input input;
  input.name = folder;
  input.error = std::string("cannot read the folder: ") + std::strerror(error);
  return input;
}

// The structure files under `folder`, and every folder below it that cannot be read, which is
// reported as an input of its own rather than passed over. Links to folders are not followed
// (no loops); links to files are.
void WalkFolder(const std::string& folder, std::vector<Input>& found) {
  std::vector<FolderEntry> entries;
  if (!ListFolder(folder, entries)) return found.push_back(FolderError(folder, errno));
  for (const FolderEntry& entry : entries) {
    if (entry.folder) {
      WalkFolder(entry.path, found);
    } else if (entry.file && StructureName(BaseName(entry.path))) {
      found.push_back(FileInput(entry.path));
    }
  }
}

void AddFolder(const std::string& folder, std::vector<Input>& inputs) {
  std::vector<Input> found;
  WalkFolder(folder, found);
  std::sort(found.begin(), found.end(), [](const Input& a, const Input& b) { return a.name < b.name; });
  for (Input& input : found) inputs.push_back(std::move(input));
}

void AddCode(const std::string& name, const BatchOptions& options, std::vector<Input>& inputs) {
  Input input;
  input.name = input.entry = name;
  input.code = true;
  if (!LooksLikeCode(name)) {
    input.error = "no such file, and not a PDB code";
  } else {
    const std::string code = name.substr(0, kCodeLength);
    const std::string classic = options.pdbPath + code + ".pdb";
    input.path = CanRead(classic) ? classic : FindCodeFile(options.pdbPath, code);
    if (input.path.empty()) input.error = "no file for this code under " + options.pdbPath;
    if (name.size() == kCodeWithChainLength)
      input.codeChain = std::string(1, static_cast<char>(std::toupper(static_cast<unsigned char>(name[4]))));
  }
  inputs.push_back(input);
}

void AddInput(const std::string& name, const BatchOptions& options, std::vector<Input>& inputs) {
  if (name == kStandardInput) {
    Input input;
    input.name = input.path = name;
    input.standardInput = true;
    input.entry = kStandardInputEntry;
    return inputs.push_back(input);
  }
  if (IsDirectory(name)) return AddFolder(name, inputs);
  if (Exists(name)) return inputs.push_back(FileInput(name));
  AddCode(name, options, inputs);
}

// Every line of the file, the last one also without a newline.
std::vector<std::string> LinesOf(std::FILE* file) {
  std::vector<std::string> lines;
  std::string line;
  bool open = false;
  for (int c; (c = std::fgetc(file)) != EOF;) {
    if (c == '\n') {
      lines.push_back(line);
      line.clear();
      open = false;
    } else {
      line += static_cast<char>(c);
      open = true;
    }
  }
  if (open) lines.push_back(line);
  return lines;
}

std::vector<std::string> ListNames(const std::string& listFile, std::FILE* standardInput) {
  std::FILE* file = standardInput;
  if (listFile != kStandardInput) {
    file = std::fopen(listFile.c_str(), "r");
    if (file == nullptr)
      Fail(Status::kBadOption, Stream::kStderr, "quarnel: cannot read the list " + listFile + "\n");
  }
  const std::vector<std::string> lines = LinesOf(file);
  if (file != standardInput) std::fclose(file);
  std::vector<std::string> names;
  for (std::string line : lines) {
    while (!line.empty() && std::isspace(static_cast<unsigned char>(line.back()))) line.pop_back();
    const size_t start = line.find_first_not_of(" \t");
    if (start == std::string::npos || line[start] == '#') continue;
    names.push_back(line.substr(start));
  }
  return names;
}

// A path as a file name stem: its folders joined by '_', without the compression suffix.
std::string PathStem(std::string path) {
  if (EndsWith(Lower(path), ".gz")) path.resize(path.size() - 3);
  while (path.rfind("./", 0) == 0) path.erase(0, 2);
  while (!path.empty() && path.front() == '/') path.erase(0, 1);
  for (char& c : path)
    if (c == '/') c = '_';
  return path;
}

// Inputs of one run with the same entry (a/x.pdb and b/x.pdb) would write their pictures
// under one name; their picture files are named after their paths instead.
void NamePictureStems(std::vector<Input>& inputs) {
  std::map<std::string, int> uses;
  for (const Input& input : inputs) ++uses[input.entry];
  for (Input& input : inputs)
    input.fileStem = uses[input.entry] > 1 && !input.code ? PathStem(input.path) : input.entry;
}

}  // namespace

bool StructureName(const std::string& name) {
  std::string lower = Lower(name);
  if (EndsWith(lower, ".gz")) lower.resize(lower.size() - 3);
  for (const char* suffix : kStructureSuffixes)
    if (EndsWith(lower, suffix)) return true;
  return false;
}

std::string EntryOf(const std::string& path) {
  std::string name = BaseName(path);
  std::string lower = Lower(name);
  if (EndsWith(lower, ".gz")) {
    name.resize(name.size() - 3);
    lower.resize(lower.size() - 3);
  }
  for (const char* suffix : kStructureSuffixes) {
    if (EndsWith(lower, suffix)) {
      name.resize(name.size() - std::string(suffix).size());
      if (std::string(suffix) == ".ent" && lower.rfind("pdb", 0) == 0 && name.size() == 7)
        name = name.substr(3);
      break;
    }
  }
  return name;
}

std::vector<Input> ExpandInputs(const BatchOptions& options, std::FILE* standardInput) {
  std::vector<std::string> names = options.inputs;
  if (!options.listFile.empty()) {
    const std::vector<std::string> listed = ListNames(options.listFile, standardInput);
    names.insert(names.end(), listed.begin(), listed.end());
  }
  const bool listFromInput = options.listFile == kStandardInput;
  if (std::count(names.begin(), names.end(), kStandardInput) + (listFromInput ? 1 : 0) > 1)
    Fail(Status::kBadOption, Stream::kStderr,
         "quarnel: standard input (-) can be read once: name it as one input or as the list\n");
  std::vector<Input> inputs;
  for (const std::string& name : names) AddInput(name, options, inputs);
  NamePictureStems(inputs);
  return inputs;
}

}  // namespace quarnel
