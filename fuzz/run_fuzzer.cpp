// Fuzz target: a whole run without DSSP. The input's first line holds option words; the rest is
// the structure. Only designed failures may stop the run, and the report must be the one the
// residues' final domain numbers give.
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <algorithm>
#include <sstream>
#include <utility>

#include "base/status.h"
#include "cli/options.h"
#include "formats/pdb_records.h"
#include "run/chain.h"

namespace {

constexpr size_t kMaxOptionWords = 10;
constexpr size_t kMaxWordLength = 40;
// Bounds that keep one run to a fraction of a second on a few hundred residues: samples per
// level, domains of a relaxed run, and the smallest domain (which decides how many levels are
// searched) of a run that is not relaxed.
constexpr int32_t kMaxSamples = 30;
constexpr int32_t kMaxRelaxedDomains = 6;
constexpr int32_t kMinDomainSizeFloor = 10;

[[noreturn]] void Broken(const std::string& what) {
  std::fprintf(stderr, "run fuzz check failed: %s\n", what.c_str());
  std::abort();
}

std::string Label(int32_t number, char icode) {
  return std::to_string(number) + (icode == ' ' ? std::string() : std::string(1, icode));
}

// The report of the domain numbers the residues (in chain order) carry: each domain's maximal
// runs, the lower residue number first.
std::string ExpectedReport(const quarnel::ChainResult& result, const std::string& entry) {
  const std::vector<quarnel::Residue>& r = result.structure.residues;
  const int32_t n = result.structure.size();
  const size_t domains = result.domains.size();
  std::string line = entry + "\t" + std::to_string(n) + "\t" + std::to_string(domains < 2 ? 1 : domains);
  if (domains < 2) return line + "\n";
  line += "\t";
  for (size_t d = 0; d < domains; ++d) {
    line += " (";
    for (int32_t i = 0, first = 1; i < n; ++i) {
      if (r[i].domain != static_cast<int32_t>(d) || (i > 0 && r[i - 1].domain == r[i].domain)) continue;
      int32_t j = i;
      while (j + 1 < n && r[j + 1].domain == r[i].domain) ++j;
      const quarnel::Residue* low = &r[i];
      const quarnel::Residue* high = &r[j];
      if (!(low->resnum < high->resnum)) std::swap(low, high);
      line += (first ? "" : ";") + Label(low->resnum, low->icode) + "-" + Label(high->resnum, high->icode);
      first = 0;
    }
    line += ")";
  }
  return line + "\n";
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  const std::string input(reinterpret_cast<const char*>(data), size);
  const size_t end = input.find('\n');
  const std::string structure = end == std::string::npos ? std::string() : input.substr(end + 1);
  const quarnel::TextSource text("fuzz.pdb", structure);
  const quarnel::PdbLineRecords records(text);

  std::vector<std::string> words = {"quarnel"};
  std::istringstream first(input.substr(0, end));
  for (std::string word; words.size() <= kMaxOptionWords && first >> word;)
    words.push_back(word.substr(0, word.find('\0')).substr(0, kMaxWordLength));  // argv ends at a NUL
  words.push_back("fuzz.pdb");
  std::vector<const char*> argv;
  for (const std::string& word : words) argv.push_back(word.c_str());

  quarnel::CommandLine line;
  try {
    line = quarnel::ParseClassic(static_cast<int>(argv.size()), argv.data());
  } catch (const quarnel::Failure& failure) {
    if (failure.exit_status() != 2) Broken("undesigned option failure: " + std::string(failure.what()));
    return 0;
  }
  quarnel::Params& params = line.params;
  params.FlagSS = 0;
  if (params.NumSamplePoints > kMaxSamples) params.NumSamplePoints = kMaxSamples;
  if (params.Relaxed() && params.MaxNumDom > kMaxRelaxedDomains) params.MaxNumDom = kMaxRelaxedDomains;
  if (!params.Relaxed() && params.MinDomainSize < kMinDomainSizeFloor)
    params.MinDomainSize = kMinDomainSizeFloor;

  const quarnel::ChainInput chain{&records, "fuzz", quarnel::kFirstResidueChain, "fuzz.pdb"};
  quarnel::RunContext context;
  quarnel::ChainResult result;
  try {
    result = quarnel::RunChain(chain, params, nullptr, context);
  } catch (const quarnel::Failure& failure) {
    // Refused format, too few atoms, user anchors missing, no residue of a domain in the profile.
    for (int status : {5, 100, 10, 15})
      if (failure.exit_status() == status) return 0;
    Broken("undesigned failure " + std::to_string(failure.exit_status()) + ": " + failure.what());
  }
  const int32_t domains = std::max(static_cast<int32_t>(result.domains.size()), 1);
  for (const quarnel::Residue& r : result.structure.residues)
    if (r.domain < 0 || r.domain >= domains) Broken("a residue outside the reported domains");
  const std::string expected = ExpectedReport(result, "fuzz");
  if (result.report != expected)
    Broken("report\n  " + result.report + "  differs from the partition\n  " + expected);
  return 0;
}
