// The options, one table: each row's name, values, kind (classic or batch), check, default and
// help line drive the classic scan, the batch parser and --help, and README's tables are
// checked against the rows.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

#include "app/batch_options.h"
#include "app/classic_input.h"

namespace quarnel {

enum class OptionKind : uint8_t {
  kClassic,    // an option of the classic run; batch runs take it too
  kBatch,      // a long option, or -j: the command line is a batch run
  kInput,      // not an option: a word that stands for inputs ("-", "--")
  kHelpAlone,  // -h: help only as the one argument
};

// How a value is read: the classic run with atoi or atof, unchecked; batch runs checked.
enum class OptionCheck : uint8_t { kNone, kAtoi, kAtof, kText, kReal, kCount, kChoice };

// The part of --help a row is listed in.
enum class HelpGroup : uint8_t { kInputs, kClassic, kChains, kDecision, kResults, kInfo };

enum class OptionId : uint8_t {
  kCa, kMd, kMl, kSp, kMs, kMloop, kMterm, kMbpass, kMbpair, kMt, kMg, kMi, kBw, kRs, kEl, kEx,
  kNoss, kNodssp, kNoeva, kPdbpath,
  kList, kStandardInput, kEndOfOptions,
  kChain, kEachChain, kMinPlddt, kMode, kFeatures, kFormat, kOut, kResume, kJobsShort, kJobs,
  kPymol, kChimerax, kSaveDomains, kSvg, kDssp, kQuiet, kHelpShort, kHelp, kVersion,
};

// Names held in the rows themselves, not pointed to, so that the table needs no relocation at
// load time and stays in read-only memory.
struct OptionRow {
  OptionId id;
  char name[16];
  char values[8];    // the values' names, blank-separated ("n", "r1 r2"): as many values as words
  OptionKind kind;
  OptionCheck check;
  char choices[32];  // kChoice: the words accepted, '|' between them
  char fallback[8];  // the default, as README's table of the classic options gives it
  HelpGroup group;
  char help[168];    // the --help line; empty: the same as the next row's (-j and --jobs)
};

// Every option, in the order --help lists them.
const OptionRow* OptionRows(size_t& count);

// The number of values a row takes.
int ValueCount(const OptionRow& row);

enum class RunKind {
  kClassic,  // classic options and at most one input: the classic run, exactly
  kBatch,    // a long option, -j, or several inputs
  kHelp,
  kVersion,
};

RunKind ClassifyCommandLine(int argc, const char* const* argv);

// The classic scan: exact names, values read from the following arguments (which are still
// examined as options in their turn) with atoi and atof, later options overwriting earlier
// ones, relaxed mode applied last, the last argument the input. With no argument at all it
// fails with the usage text (status 0); an option whose values would lie past the input name
// fails with status 2.
CommandLine ParseClassic(int argc, const char* const* argv);

// Parses a batch command line; an unknown or malformed option fails with status 2 and a hint.
BatchOptions ParseBatch(int argc, const char* const* argv);

// The text of --help, made from the rows, and of --version.
std::string HelpText();
std::string VersionText();

}  // namespace quarnel
