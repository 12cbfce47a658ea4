// Telling the designed run from the others, and the option parser of the others. A command line
// made only of the designed options and one input is the designed run, with the designed scan
// (cli/options.cpp); long options, -j and several inputs ask for the batch run parsed here.
#include "cli/command.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>

#include "base/status.h"
#include "base/text.h"
#include "cli/inputs.h"

namespace quarnel {

namespace {

struct OptionShape {
  const char* name;
  int values;
};

// The designed options and the number of values each takes.
constexpr OptionShape kDesignedOptions[] = {
    {"-ca", 0},     {"-md", 1},     {"-ml", 1},     {"-sp", 1},     {"-ms", 1},
    {"-mloop", 1},  {"-mterm", 1},  {"-mbpass", 1}, {"-mbpair", 1}, {"-mt", 1},
    {"-mg", 1},     {"-mi", 1},     {"-bw", 1},     {"-rs", 1},     {"-el", 0},
    {"-noss", 0},   {"-nodssp", 0}, {"-noeva", 0},  {"-pdbpath", 1}, {"-ex", 2},
};

// The options of batch runs and the number of values each takes.
constexpr OptionShape kBatchOptions[] = {
    {"--chain", 1},  {"--each-chain", 0}, {"--min-plddt", 1},    {"--format", 1},
    {"--out", 1},    {"--resume", 0},     {"--list", 1},         {"--jobs", 1},
    {"-j", 1},       {"--pymol", 1},      {"--chimerax", 1},     {"--save-domains", 1},
    {"--svg", 1},    {"--dssp", 1},       {"--help", 0},         {"--version", 0},
};

const OptionShape* FindShape(const char* arg) {
  for (const OptionShape& shape : kDesignedOptions)
    if (std::strcmp(arg, shape.name) == 0) return &shape;
  return nullptr;
}

bool IsLong(const char* arg) { return std::strncmp(arg, "--", 2) == 0; }

// Levenshtein distance, to point a mistyped option to the one meant.
size_t EditDistance(const std::string& a, const std::string& b) {
  std::vector<size_t> row(b.size() + 1);
  for (size_t j = 0; j <= b.size(); ++j) row[j] = j;
  for (size_t i = 1; i <= a.size(); ++i) {
    size_t diagonal = row[0];
    row[0] = i;
    for (size_t j = 1; j <= b.size(); ++j) {
      const size_t above = row[j];
      row[j] = std::min({row[j] + 1, row[j - 1] + 1, diagonal + (a[i - 1] == b[j - 1] ? 0 : 1)});
      diagonal = above;
    }
  }
  return row[b.size()];
}

[[noreturn]] void BadOption(const std::string& text, const std::string& hint = {}) {
  Fail(Status::kBadOption, Stream::kStderr, "quarnel: " + text + "\n",
       hint.empty() ? "quarnel: 'quarnel --help' lists every option" : hint);
}

[[noreturn]] void UnknownOption(const std::string& name) {
  const OptionShape* nearest = nullptr;
  size_t best = 3;  // a closer match than this is taken for a typing slip
  for (const OptionShape& shape : kBatchOptions) {
    const size_t distance = EditDistance(name, shape.name);
    if (distance < best) {
      best = distance;
      nearest = &shape;
    }
  }
  BadOption("unknown option " + name,
            nearest != nullptr ? Format("quarnel: did you mean %s? ('quarnel --help' lists every option)",
                                        nearest->name)
                               : std::string());
}

double RealValue(const std::string& option, const std::string& text) {
  char* end = nullptr;
  const double value = std::strtod(text.c_str(), &end);
  if (text.empty() || *end != '\0') BadOption(option + " takes a number, not '" + text + "'");
  return value;
}

int CountValue(const std::string& option, const std::string& text) {
  char* end = nullptr;
  const long value = std::strtol(text.c_str(), &end, 10);
  if (text.empty() || *end != '\0' || value < 1 || value > 4096)
    BadOption(option + " takes a whole number from 1 to 4096, not '" + text + "'");
  return static_cast<int>(value);
}

// A designed option in a batch command line: the designed conversions, values skipped.
void ApplyDesigned(const std::string& name, const std::vector<std::string>& values, BatchOptions& o) {
  Params& p = o.params;
  auto integer = [&](size_t k) { return std::atoi(values[k].c_str()); };
  auto real = [&](size_t k) { return static_cast<float>(std::atof(values[k].c_str())); };
  auto plusOne = [](int value) { return static_cast<int32_t>(static_cast<uint32_t>(value) + 1u); };
  if (name == "-ca") p.FlagCa = 1;
  else if (name == "-md") p.MaxNumDom = integer(0);
  else if (name == "-ml") p.MinDomainSize = integer(0);
  else if (name == "-sp") p.NumSamplePoints = integer(0);
  else if (name == "-ms") p.MinSegRes = static_cast<float>(integer(0));
  else if (name == "-mloop") p.MaxLoop = integer(0);
  else if (name == "-mterm") p.MaxTerm = integer(0);
  else if (name == "-mbpass") p.MaxBetaPass = plusOne(integer(0));
  else if (name == "-mbpair") p.MaxBetaPair = plusOne(integer(0));
  else if (name == "-mt") p.MaxTime = real(0);
  else if (name == "-mg") p.MinGlobularity = real(0);
  else if (name == "-mi") p.MaxInteraction = real(0);
  else if (name == "-bw") p.BBWeight = real(0);
  else if (name == "-rs") p.ResSep = TruncToInt(std::atof(values[0].c_str()));
  else if (name == "-el") p.FlagExtremes = 2;
  else if (name == "-noss") p.FlagSS = 0;
  else if (name == "-noeva") p.FlagEva = 0;
  else if (name == "-pdbpath") o.pdbPath = values[0];
  else if (name == "-ex") {
    p.FlagExtremes = 1;
    p.MaxNumDom = 2;
    p.Extreme1 = integer(0);
    p.Extreme2 = integer(1);
  }
}

void ApplyBatch(const std::string& name, const std::string& value, BatchOptions& o) {
  if (name == "--chain") o.chain = value;
  else if (name == "--each-chain") o.eachChain = true;
  else if (name == "--min-plddt") {
    o.filterPlddt = true;
    o.minPlddt = RealValue(name, value);
  } else if (name == "--format") {
    if (!ParseResultFormat(value, o.format))
      BadOption("--format takes classic, tsv or json, not '" + value + "'");
  } else if (name == "--out") o.out = value;
  else if (name == "--resume") o.resume = true;
  else if (name == "--list") o.listFile = value;
  else if (name == "--jobs" || name == "-j") o.jobs = CountValue(name, value);
  else if (name == "--pymol") o.pymolDir = value;
  else if (name == "--chimerax") o.chimeraxDir = value;
  else if (name == "--save-domains") o.saveDomainsDir = value;
  else if (name == "--svg") o.svgDir = value;
  else if (name == "--dssp") {
    if (value == "builtin") o.dssp = DsspChoice::kBuiltin;
    else if (value == "external") o.dssp = DsspChoice::kExternal;
    else BadOption("--dssp takes builtin or external, not '" + value + "'");
  }
}

}  // namespace

RunKind ClassifyCommandLine(int argc, const char* const* argv) {
  if (argc == 2) {
    const std::string only = argv[1];
    if (only == "--help") return RunKind::kHelp;
    if (only == "--version") return RunKind::kVersion;
    // -h names no structure a user could have: unless a file of that name is there, it asks
    // for help.
    if (only == "-h" && !CanRead("-h") && !CanRead("./-h.pdb")) return RunKind::kHelp;
  }
  int inputs = 0;
  for (int i = 1; i < argc; ++i) {
    if (IsLong(argv[i]) || std::strcmp(argv[i], "-j") == 0) return RunKind::kBatch;
    if (const OptionShape* shape = FindShape(argv[i])) {
      i += shape->values;
    } else if (argv[i][0] != '-' || i == argc - 1) {
      ++inputs;
    }
  }
  return inputs > 1 ? RunKind::kBatch : RunKind::kDesigned;
}

BatchOptions ParseBatchOptions(int argc, const char* const* argv) {
  BatchOptions options;
  for (int i = 1; i < argc; ++i) {
    std::string arg = argv[i];
    std::string inlineValue;
    bool hasInlineValue = false;
    if (IsLong(arg.c_str())) {
      const size_t equals = arg.find('=');
      if (equals != std::string::npos) {
        inlineValue = arg.substr(equals + 1);
        arg.resize(equals);
        hasInlineValue = true;
      }
    }
    if (arg[0] != '-' || arg == "-") {
      options.inputs.push_back(arg);
      continue;
    }
    const OptionShape* designed = FindShape(arg.c_str());
    const OptionShape* shape = designed;
    for (const OptionShape& batch : kBatchOptions)
      if (shape == nullptr && arg == batch.name) shape = &batch;
    if (shape == nullptr) {
      if (!IsLong(arg.c_str())) BadOption("unknown option " + arg);
      UnknownOption(arg);
    }
    std::vector<std::string> values;
    if (hasInlineValue) {
      if (shape->values != 1) BadOption(arg + " takes no value");
      values.push_back(inlineValue);
    }
    while (static_cast<int>(values.size()) < shape->values) {
      if (i + 1 >= argc) BadOption(Format("option %s needs %s", arg.c_str(),
                                          shape->values == 1 ? "a value" : "two values"));
      values.push_back(argv[++i]);
    }
    if (designed != nullptr)
      ApplyDesigned(arg, values, options);
    else
      ApplyBatch(arg, values.empty() ? std::string() : values[0], options);
  }
  if (!options.chain.empty() && options.eachChain) BadOption("--chain and --each-chain exclude each other");
  if (options.resume && options.out.empty()) BadOption("--resume needs --out FILE");
  if (options.inputs.empty() && options.listFile.empty())
    BadOption("no input: name structure files, folders or PDB codes, or --list FILE");
  ApplyRelaxedMode(options.params);
  return options;
}

}  // namespace quarnel
