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
#include "cli/options.h"

namespace quarnel {

namespace {

// Names held in the table itself, not pointed to, so that the table needs no relocation at
// load time and stays in read-only memory.
struct OptionShape {
  char name[16];
  int values;
};

// The options of batch runs and the number of values each takes.
constexpr OptionShape kBatchOptions[] = {
    {"--chain", 1},  {"--each-chain", 0}, {"--min-plddt", 1},    {"--format", 1},
    {"--out", 1},    {"--resume", 0},     {"--list", 1},         {"--jobs", 1},
    {"-j", 1},       {"--pymol", 1},      {"--chimerax", 1},     {"--save-domains", 1},
    {"--svg", 1},    {"--dssp", 1},       {"--help", 0},         {"--version", 0},
    {"--quiet", 0},  {"--mode", 1},       {"--features", 1},
};

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
  else if (name == "--quiet") o.quiet = true;
  else if (name == "--features") o.featuresFile = value;
  else if (name == "--mode") {
    if (!ParseDecisionMode(value, o.mode)) BadOption("--mode takes classic or cath, not '" + value + "'");
  }
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
    if (const int values = DesignedOptionValues(argv[i]); values >= 0) {
      i += values;
    } else if (argv[i][0] != '-' || i == argc - 1) {
      ++inputs;
    }
  }
  return inputs > 1 ? RunKind::kBatch : RunKind::kDesigned;
}

BatchOptions ParseBatchOptions(int argc, const char* const* argv) {
  BatchOptions options;
  bool optionsEnded = false;  // after "--" every argument is an input
  bool beyondDssp = false;    // an option of batch runs other than --dssp
  for (int i = 1; i < argc; ++i) {
    std::string arg = argv[i];
    if (optionsEnded) {
      options.inputs.push_back(arg);
      continue;
    }
    if (arg == "--") {
      optionsEnded = beyondDssp = true;
      continue;
    }
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
    const int designed = DesignedOptionValues(arg.c_str());
    int count = designed;
    for (const OptionShape& batch : kBatchOptions)
      if (count < 0 && arg == batch.name) count = batch.values;
    if (count < 0) {
      if (!IsLong(arg.c_str())) BadOption("unknown option " + arg);
      UnknownOption(arg);
    }
    std::vector<std::string> values;
    if (hasInlineValue) {
      if (count != 1) BadOption(arg + " takes no value");
      values.push_back(inlineValue);
    }
    while (static_cast<int>(values.size()) < count) {
      if (i + 1 >= argc)
        BadOption(Format("option %s needs %s", arg.c_str(), count == 1 ? "a value" : "two values"));
      values.push_back(argv[++i]);
    }
    if (designed >= 0) {
      std::vector<const char*> texts;
      for (const std::string& value : values) texts.push_back(value.c_str());
      ApplyDesignedOption(arg.c_str(), texts.data(), options.params, options.pdbPath);
    } else {
      ApplyBatch(arg, values.empty() ? std::string() : values[0], options);
      beyondDssp = beyondDssp || arg != "--dssp";
    }
  }
  if (!options.chain.empty() && options.eachChain) BadOption("--chain and --each-chain exclude each other");
  if (options.resume && options.out.empty()) BadOption("--resume needs --out FILE");
  if (options.resume && options.format == ResultFormat::kClassic)
    BadOption("--resume needs --format tsv or json",
              "quarnel: classic report lines do not say which input and chain they came from");
  if (!options.featuresFile.empty() && options.mode != DecisionMode::kCath)
    BadOption("--features needs --mode cath", "quarnel: only the accuracy mode has candidate cuts to write");
  if (options.mode == DecisionMode::kCath && (options.params.MaxNumDom != kDefaultMaxNumDom))
    BadOption("--mode cath decides the number of domains itself: -md and -ex do not apply");
  if (options.inputs.empty() && options.listFile.empty())
    BadOption("no input: name structure files, folders or PDB codes, or --list FILE");
  // The classic hint for a missing DSSP_PATH says to add --dssp builtin: the command line is then
  // still read as the classic run reads it, the file whole, with the DSSP named.
  options.wholeFile = !beyondDssp && options.inputs.size() == 1 && options.listFile.empty();
  options.given = options.params;
  ApplyRelaxedMode(options.params);
  return options;
}

bool UsesExternalDssp(const BatchOptions& options) {
  return options.dssp == DsspChoice::kExternal ||
         (options.dssp == DsspChoice::kAuto && std::getenv("DSSP_PATH") != nullptr);
}

}  // namespace quarnel
