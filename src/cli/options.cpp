// The option table and the two scans it drives: the classic run's, exactly as it always was,
// and the batch parser, which checks every option and value.
#include "cli/options.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <vector>

#include "base/files.h"
#include "base/status.h"
#include "base/text.h"

namespace quarnel {

namespace {

using K = OptionKind;
using C = OptionCheck;
using G = HelpGroup;
using I = OptionId;

constexpr OptionRow kRows[] = {
    {I::kList, "--list", "FILE", K::kBatch, C::kText, "", "", G::kInputs,
     "one more input per line (--list - reads them from standard input)"},
    {I::kStandardInput, "-", "", K::kInput, C::kNone, "", "", G::kInputs, "one structure read from standard input"},
    {I::kEndOfOptions, "--", "", K::kInput, C::kNone, "", "", G::kInputs,
     "ends the options: every later argument is an input"},
    {I::kMd, "-md", "n", K::kClassic, C::kAtoi, "", "100", G::kClassic,
     "at most n domains (any n but 100 relaxes the cut criteria and skips the confidence assessment)"},
    {I::kEx, "-ex", "r1 r2", K::kClassic, C::kAtoi, "", "off", G::kClassic,
     "two domains around residues r1 and r2 (relaxed)"},
    {I::kEl, "-el", "", K::kClassic, C::kNone, "", "on", G::kClassic, "anchor residues chosen automatically"},
    {I::kMl, "-ml", "n", K::kClassic, C::kAtoi, "", "35", G::kClassic, "smallest domain, residues"},
    {I::kMg, "-mg", "x", K::kClassic, C::kAtof, "", "0.52", G::kClassic, "least compactness of each side of a cut"},
    {I::kMi, "-mi", "x", K::kClassic, C::kAtof, "", "0.56", G::kClassic, "largest interaction ratio of each side"},
    {I::kMt, "-mt", "x", K::kClassic, C::kAtof, "", "0.4", G::kClassic, "largest normalised interface value"},
    {I::kMs, "-ms", "n", K::kClassic, C::kAtoi, "", "35", G::kClassic, "least mean segment length"},
    {I::kMbpair, "-mbpair", "n", K::kClassic, C::kAtoi, "", "2", G::kClassic, "bridge pairs a cut may split"},
    {I::kMbpass, "-mbpass", "n", K::kClassic, C::kAtoi, "", "1", G::kClassic, "strand passages a cut may split"},
    {I::kMloop, "-mloop", "n", K::kClassic, C::kAtoi, "", "12", G::kClassic,
     "longest inner segment merged into its neighbours"},
    {I::kMterm, "-mterm", "n", K::kClassic, C::kAtoi, "", "12", G::kClassic, "longest terminal segment merged"},
    {I::kRs, "-rs", "x", K::kClassic, C::kAtof, "", "3", G::kClassic,
     "sequence separation below which contacts do not count"},
    {I::kBw, "-bw", "x", K::kClassic, C::kAtof, "", "5.0", G::kClassic, "weight of a backbone-backbone atom contact"},
    {I::kSp, "-sp", "n", K::kClassic, C::kAtoi, "", "20", G::kClassic, "sampled source/sink pairs per anchor pair"},
    {I::kCa, "-ca", "", K::kClassic, C::kNone, "", "off", G::kClassic, "contacts from CA atoms only"},
    {I::kNoss, "-noss", "", K::kClassic, C::kNone, "", "off", G::kClassic, "no secondary structure"},
    {I::kNoeva, "-noeva", "", K::kClassic, C::kNone, "", "off", G::kClassic,
     "kept for compatibility; changes nothing"},
    {I::kNodssp, "-nodssp", "", K::kClassic, C::kNone, "", "off", G::kClassic,
     "kept for compatibility; changes nothing"},
    {I::kPdbpath, "-pdbpath", "dir", K::kClassic, C::kText, "", "./", G::kClassic,
     "prefix for PDB codes, used verbatim"},
    {I::kChain, "--chain", "ID", K::kBatch, C::kText, "", "", G::kChains,
     "that chain of every file (reported as <file><chain>)"},
    {I::kEachChain, "--each-chain", "", K::kBatch, C::kNone, "", "", G::kChains,
     "every protein chain of every file, one result each (what batch runs do without --chain)"},
    {I::kMinPlddt, "--min-plddt", "X", K::kBatch, C::kReal, "", "", G::kChains,
     "leave out residues whose pLDDT (the CA's B-factor) is below X"},
    {I::kMode, "--mode", "M", K::kBatch, C::kChoice, "classic|cath", "classic", G::kDecision,
     "classic (the cut criteria and the confidence network) or cath (a deeper search whose cuts a model "
     "trained on CATH choppings keeps or drops; -md and -ex do not apply)"},
    {I::kFeatures, "--features", "FILE", K::kBatch, C::kText, "", "", G::kDecision,
     "with --mode cath: every candidate cut of each chain with the features the model reads, one JSON line "
     "per chain"},
    {I::kFormat, "--format", "F", K::kBatch, C::kChoice, "classic|tsv|json|residues", "classic", G::kResults,
     "classic (the report line), tsv (a row per chain, Chainsaw's columns first), json (JSON Lines), "
     "residues (a row per residue: its domain, 0 for none)"},
    {I::kOut, "--out", "FILE", K::kBatch, C::kText, "", "", G::kResults,
     "write results to FILE instead of standard output (never an input; a second run on FILE waits)"},
    {I::kResume, "--resume", "", K::kBatch, C::kNone, "", "", G::kResults,
     "with --out and tsv, json or residues: skip chains already in FILE, append the others (same options "
     "only)"},
    {I::kJobsShort, "-j", "N", K::kBatch, C::kCount, "", "", G::kResults, ""},
    {I::kJobs, "--jobs", "N", K::kBatch, C::kCount, "", "", G::kResults,
     "chains at once (default: the machine's cores)"},
    {I::kPymol, "--pymol", "DIR", K::kBatch, C::kText, "", "", G::kResults,
     "a PyMOL script per chain colouring its domains"},
    {I::kChimerax, "--chimerax", "DIR", K::kBatch, C::kText, "", "", G::kResults,
     "a ChimeraX script per chain colouring its domains"},
    {I::kSaveDomains, "--save-domains", "DIR", K::kBatch, C::kText, "", "", G::kResults, "one PDB file per domain"},
    {I::kSvg, "--svg", "DIR", K::kBatch, C::kText, "", "", G::kResults,
     "a picture per chain: contact map, domains, secondary structure"},
    {I::kDssp, "--dssp", "MODE", K::kBatch, C::kChoice, "builtin|external", "", G::kResults,
     "builtin (DSSP's library, inside quarnel) or external (DSSP_PATH)"},
    {I::kQuiet, "--quiet", "", K::kBatch, C::kNone, "", "", G::kResults,
     "standard error keeps to failures: no notes, no progress"},
    {I::kHelpShort, "-h", "", K::kHelpAlone, C::kNone, "", "", G::kInfo, ""},
    {I::kHelp, "--help", "", K::kBatch, C::kNone, "", "", G::kInfo, "this text"},
    {I::kVersion, "--version", "", K::kBatch, C::kNone, "", "", G::kInfo, "version, build flags and DSSP"},
};

constexpr int kMaxCount = 4096;

const char kUsage[] =
    "Usage: quarnel [-md n] [-ex r1 r2] ... file-name\n"
    "  e.g., quarnel 16pk.pdb\n";

bool IsLong(const std::string& arg) { return arg.compare(0, 2, "--") == 0; }

const OptionRow* FindRow(const std::string& name, OptionKind kind) {
  for (const OptionRow& row : kRows)
    if (row.kind == kind && name == row.name) return &row;
  return nullptr;
}

// The number of values a classic option takes, or -1 when `name` is none.
int ClassicValues(const char* name) {
  const OptionRow* row = FindRow(name, OptionKind::kClassic);
  return row != nullptr ? ValueCount(*row) : -1;
}

// A classic option's values (as many as it takes), read with atoi and atof.
void ApplyClassic(OptionId id, const char* const* values, Params& p, std::string& pdbPath) {
  auto integer = [&](int k) { return std::atoi(values[k]); };
  auto real = [&](int k) { return static_cast<float>(std::atof(values[k])); };
  switch (id) {
    case I::kCa: p.FlagCa = 1; break;
    case I::kMd: p.MaxNumDom = integer(0); break;
    case I::kMl: p.MinDomainSize = integer(0); break;
    case I::kSp: p.NumSamplePoints = integer(0); break;
    case I::kMs: p.MinSegRes = static_cast<float>(integer(0)); break;
    case I::kMloop: p.MaxLoop = integer(0); break;
    case I::kMterm: p.MaxTerm = integer(0); break;
    case I::kMbpass: p.MaxBetaPass = PlusOne(integer(0)); break;
    case I::kMbpair: p.MaxBetaPair = PlusOne(integer(0)); break;
    case I::kMt: p.MaxTime = real(0); break;
    case I::kMg: p.MinGlobularity = real(0); break;
    case I::kMi: p.MaxInteraction = real(0); break;
    case I::kBw: p.BBWeight = real(0); break;
    case I::kRs: p.ResSep = TruncToInt(std::atof(values[0])); break;
    case I::kEl: p.FlagExtremes = 2; break;
    case I::kNoss: p.FlagSS = 0; break;
    case I::kNoeva: p.FlagEva = 0; break;
    case I::kPdbpath: pdbPath = values[0]; break;
    case I::kEx:
      p.FlagExtremes = 1;
      p.MaxNumDom = 2;
      p.Extreme1 = integer(0);
      p.Extreme2 = integer(1);
      break;
    default: break;  // -nodssp: the run decides by itself whether an earlier DSSP output may be reused
  }
}

}  // namespace

const OptionRow* OptionRows(size_t& count) {
  count = sizeof kRows / sizeof kRows[0];
  return kRows;
}

int ValueCount(const OptionRow& row) {
  int words = 0;
  for (const char* c = row.values; *c != '\0'; ++c)
    if (*c != ' ' && (c == row.values || c[-1] == ' ')) ++words;
  return words;
}

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
    if (const int values = ClassicValues(argv[i]); values >= 0) {
      i += values;
    } else if (argv[i][0] != '-' || i == argc - 1) {
      ++inputs;
    }
  }
  return inputs > 1 ? RunKind::kBatch : RunKind::kClassic;
}

CommandLine ParseClassic(int argc, const char* const* argv) {
  if (argc < 2) Fail(Status::kUsage, Stream::kStdout, kUsage);
  CommandLine line;
  // The program's own name is scanned too.
  for (int i = 0; i < argc - 1; ++i) {
    const OptionRow* row = FindRow(argv[i], OptionKind::kClassic);
    if (row == nullptr) continue;
    const int count = ValueCount(*row);
    // The values of the option at position i lie at i+1 .. i+count; the last of them may be the
    // input name itself, but none may lie past it.
    if (i + count > argc - 1)
      Fail(Status::kBadOption, Stream::kStderr,
           Format("quarnel: option %s needs %s before the input name\n", argv[i],
                  count == 1 ? "a value" : "two values"));
    ApplyClassic(row->id, argv + i + 1, line.params, line.pdbPath);
  }
  ApplyRelaxedMode(line.params);
  line.input = argv[argc - 1];
  return line;
}

// ---- the batch parser ----

namespace {

[[noreturn]] void BadOption(const std::string& text, const std::string& hint = {}) {
  Fail(Status::kBadOption, Stream::kStderr, "quarnel: " + text + "\n",
       hint.empty() ? "quarnel: 'quarnel --help' lists every option" : hint);
}

[[noreturn]] void UnknownOption(const std::string& name) {
  const OptionRow* nearest = nullptr;
  size_t best = 3;  // a closer match than this is taken for a typing slip
  for (const OptionRow& row : kRows) {
    if (row.kind != OptionKind::kBatch) continue;
    const size_t distance = EditDistance(name, row.name);
    if (distance < best) {
      best = distance;
      nearest = &row;
    }
  }
  BadOption("unknown option " + name,
            nearest != nullptr ? Format("quarnel: did you mean %s? ('quarnel --help' lists every option)",
                                        nearest->name)
                               : std::string());
}

// "classic, tsv or json": the words of a choice as a message gives them.
std::string ChoiceList(const char* choices) {
  std::vector<std::string> words;
  std::string word;
  for (const char* c = choices;; ++c) {
    if (*c == '|' || *c == '\0') {
      words.push_back(word);
      word.clear();
      if (*c == '\0') break;
    } else {
      word += *c;
    }
  }
  std::string list = words[0];
  for (size_t k = 1; k < words.size(); ++k) list += (k + 1 == words.size() ? " or " : ", ") + words[k];
  return list;
}

bool IsChoice(const char* choices, const std::string& value) {
  const std::string bounded = std::string("|") + choices + "|";
  return !value.empty() && value.find('|') == std::string::npos &&
         bounded.find("|" + value + "|") != std::string::npos;
}

// The value checked as the row says: a number, a count, one of the choices.
void CheckValue(const OptionRow& row, const std::string& value) {
  const std::string name = row.name;
  char* end = nullptr;
  if (row.check == C::kReal) {
    std::strtod(value.c_str(), &end);
    if (value.empty() || *end != '\0') BadOption(name + " takes a number, not '" + value + "'");
  } else if (row.check == C::kCount) {
    const long count = std::strtol(value.c_str(), &end, 10);
    if (value.empty() || *end != '\0' || count < 1 || count > kMaxCount)
      BadOption(Format("%s takes a whole number from 1 to %d, not '%s'", name.c_str(), kMaxCount, value.c_str()));
  } else if (row.check == C::kChoice && !IsChoice(row.choices, value)) {
    BadOption(name + " takes " + ChoiceList(row.choices) + ", not '" + value + "'");
  }
}

void ApplyBatch(const OptionRow& row, const std::string& value, BatchOptions& o) {
  CheckValue(row, value);
  switch (row.id) {
    case I::kChain: o.chain = value; break;
    case I::kEachChain: o.eachChain = true; break;
    case I::kMinPlddt:
      o.filterPlddt = true;
      o.minPlddt = std::strtod(value.c_str(), nullptr);
      break;
    case I::kFormat: ParseResultFormat(value, o.format); break;
    case I::kOut: o.out = value; break;
    case I::kResume: o.resume = true; break;
    case I::kList: o.listFile = value; break;
    case I::kJobs:
    case I::kJobsShort: o.jobs = std::atoi(value.c_str()); break;
    case I::kPymol: o.pymolDir = value; break;
    case I::kChimerax: o.chimeraxDir = value; break;
    case I::kSaveDomains: o.saveDomainsDir = value; break;
    case I::kSvg: o.svgDir = value; break;
    case I::kQuiet: o.quiet = true; break;
    case I::kFeatures: o.featuresFile = value; break;
    case I::kMode: ParseDecisionMode(value, o.mode); break;
    case I::kDssp: o.dssp = value == "builtin" ? DsspChoice::kBuiltin : DsspChoice::kExternal; break;
    default: break;  // --help and --version in a longer command line change nothing
  }
}

// One option and its values, from the argument at `i` on; `beyondDssp` turns true for a batch
// option other than --dssp.
void TakeOption(std::string arg, int argc, const char* const* argv, int& i, BatchOptions& options,
                bool& beyondDssp) {
  std::string inlineValue;
  const size_t equals = IsLong(arg) ? arg.find('=') : std::string::npos;
  if (equals != std::string::npos) {
    inlineValue = arg.substr(equals + 1);
    arg.resize(equals);
  }
  const OptionRow* row = FindRow(arg, OptionKind::kClassic);
  if (row == nullptr) row = FindRow(arg, OptionKind::kBatch);
  if (row == nullptr && !IsLong(arg)) BadOption("unknown option " + arg);
  if (row == nullptr) UnknownOption(arg);
  const int count = ValueCount(*row);
  std::vector<std::string> values;
  if (equals != std::string::npos) {
    if (count != 1) BadOption(arg + " takes no value");
    values.push_back(inlineValue);
  }
  while (static_cast<int>(values.size()) < count) {
    if (i + 1 >= argc) BadOption(Format("option %s needs %s", arg.c_str(), count == 1 ? "a value" : "two values"));
    values.push_back(argv[++i]);
  }
  if (row->kind == OptionKind::kClassic) {
    std::vector<const char*> texts;
    for (const std::string& value : values) texts.push_back(value.c_str());
    ApplyClassic(row->id, texts.data(), options.params, options.pdbPath);
    return;
  }
  ApplyBatch(*row, values.empty() ? std::string() : values[0], options);
  beyondDssp = beyondDssp || row->id != OptionId::kDssp;
}

}  // namespace

BatchOptions ParseBatch(int argc, const char* const* argv) {
  BatchOptions options;
  bool optionsEnded = false;  // after "--" every argument is an input
  bool beyondDssp = false;    // an option of batch runs other than --dssp
  for (int i = 1; i < argc; ++i) {
    const std::string arg = argv[i];
    if (optionsEnded || arg[0] != '-' || arg == "-") {
      options.inputs.push_back(arg);
    } else if (arg == "--") {
      optionsEnded = beyondDssp = true;
    } else {
      TakeOption(arg, argc, argv, i, options, beyondDssp);
    }
  }
  CheckBatchOptions(options);
  // The classic hint for a missing DSSP_PATH says to add --dssp builtin: the command line is then
  // still read as the classic run reads it, the file whole, with the DSSP named.
  options.wholeFile = !beyondDssp && options.inputs.size() == 1 && options.listFile.empty();
  options.given = options.params;
  ApplyRelaxedMode(options.params);
  return options;
}

}  // namespace quarnel
