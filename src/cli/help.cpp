// --help, made from the option table and the table of exit statuses, and --version.
#include <string>

#include "base/status.h"
#include "base/version.h"
#include "cli/options.h"

#ifndef QUARNEL_BUILD_FLAGS
#define QUARNEL_BUILD_FLAGS "unknown"
#endif
#ifndef QUARNEL_DSSP_VERSION
#define QUARNEL_DSSP_VERSION "unknown"
#endif

namespace quarnel {

namespace {

constexpr size_t kWidth = 96;       // lines of --help are wrapped to this many characters
constexpr size_t kOptionColumn = 22;  // where an option's help text starts
constexpr size_t kStatusColumn = 12;  // where a status's text starts

constexpr char kHead[] = R"(quarnel: splits protein chains into structural domains.

Usage:
  quarnel [options] input              one structure, the classic report line
  quarnel [options] input input...     many structures (a batch run)
)";

constexpr char kInputs[] = R"(
Inputs:
  file.pdb, file.ent, file.cif, file.mmcif, each also .gz (recognised by content)
  folder/             every structure file in it, searched recursively
  1abc, 1abcA         a PDB code, with an optional chain letter, looked up under -pdbpath as
                      1abc.pdb (also any letter case, .cif, .cif.gz, .pdb.gz, .ent.gz,
                      pdb1abc.ent.gz and the archive's divided layout ab/)
)";

constexpr char kClassicRun[] = R"(
A command line of the classic options and one input is the classic run: it reads a file whole,
writes the chain copy of a code (1abca.pdb, 1abc_nmr.pdb) in the working folder and runs the
DSSP program named by DSSP_PATH. Any long option, -j, or several inputs make a batch run, which
judges every protein chain of each file (or the one --chain names), writes nothing in the
working folder but what you name and uses the DSSP built into quarnel unless DSSP_PATH is set
(or --dssp says otherwise). A classic command line with only --dssp added still reads its file
whole.

Environment:
  DSSP_PATH           the DSSP program of classic runs (and of batch runs, when set)
  QUARNEL_THREADS     threads for one chain's search (default: the machine's cores)
)";

struct Group {
  HelpGroup group;
  char title[48];
};

constexpr Group kGroups[] = {
    {HelpGroup::kClassic, "Classic options (the default in parentheses)"},
    {HelpGroup::kChains, "Chains and models"},
    {HelpGroup::kDecision, "How domains are decided"},
    {HelpGroup::kResults, "Results"},
    {HelpGroup::kInfo, ""},
};

// `text` after `head` (padded to `column`), wrapped to kWidth, later lines indented to `column`.
std::string Wrapped(const std::string& head, const std::string& text, size_t column) {
  std::string out = head;
  size_t length = head.size();
  if (length >= column) {
    out += "\n";
    length = 0;
  }
  out += std::string(column - length, ' ');
  length = column;
  bool first = true;
  for (size_t start = 0; start < text.size();) {
    size_t end = text.find(' ', start);
    if (end == std::string::npos) end = text.size();
    const size_t size = end - start;
    if (!first && length + 1 + size > kWidth) {
      out += "\n" + std::string(column, ' ');
      length = column;
    } else if (!first) {
      out += ' ';
      ++length;
    }
    out.append(text, start, size);
    length += size;
    first = false;
    start = end + 1;
  }
  return out + "\n";
}

std::string OptionName(const OptionRow& row) {
  return row.values[0] == '\0' ? std::string(row.name) : std::string(row.name) + " " + row.values;
}

// The rows of one group, each "  -md n   text (100)"; a row without help text is named with
// the next (-j N, --jobs N).
std::string GroupRows(HelpGroup group) {
  size_t count = 0;
  const OptionRow* rows = OptionRows(count);
  std::string text, pending;
  for (size_t k = 0; k < count; ++k) {
    const OptionRow& row = rows[k];
    if (row.group != group) continue;
    if (row.help[0] == '\0') {
      pending += OptionName(row) + ", ";
      continue;
    }
    std::string help = row.help;
    if (group == HelpGroup::kClassic && row.fallback[0] != '\0') help += std::string(" (") + row.fallback + ")";
    text += Wrapped("  " + pending + OptionName(row), help, kOptionColumn);
    pending.clear();
  }
  return text;
}

std::string StatusRows() {
  size_t count = 0;
  const StatusMeaning* meanings = StatusMeanings(count);
  std::string text;
  for (size_t k = 0; k < count; ++k) {
    std::string numbers = std::to_string(static_cast<int>(meanings[k].status));
    if (meanings[k].also != Status::kCompleted) numbers += ", " + std::to_string(static_cast<int>(meanings[k].also));
    text += Wrapped("  " + numbers, meanings[k].text, kStatusColumn);
  }
  return text;
}

}  // namespace

std::string HelpText() {
  std::string text = std::string(kHead) + kInputs + GroupRows(HelpGroup::kInputs);
  for (const Group& group : kGroups) {
    text += group.title[0] != '\0' ? std::string("\n") + group.title + ":\n" : std::string("\n");
    text += GroupRows(group.group);
  }
  return text + kClassicRun + "\nExit status:\n" + StatusRows();
}

std::string VersionText() {
  return std::string("quarnel ") + VersionNumber() + "\nbuild flags: " + QUARNEL_BUILD_FLAGS +
         "\nDSSP: built-in DSSP library " + QUARNEL_DSSP_VERSION +
         " (libdssp on libcifpp); classic runs use DSSP_PATH\n";
}

}  // namespace quarnel
