// Fuzz target: what a batch run does with one file, in memory. The input's first byte sets the
// pLDDT threshold; the rest is a structure file of any kind (PDB, mmCIF, gzip). Each of its
// first chains is split out, filtered by pLDDT, checked for plausibility, judged without DSSP
// when small enough, and written in every result format and picture. Only the structure-file
// front end's refusals (std::runtime_error) and designed failures may stop a chain, and what is
// written must read back: the TSV row has its columns, a results file resumes to the chain.
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>

#include "base/status.h"
#include "formats/structure_file.h"
#include "report/pictures.h"
#include "report/results.h"
#include "report/resume.h"
#include "run/chain_plausibility.h"
#include "run/plddt_filter.h"

namespace {

constexpr size_t kMaxChains = 3;
// Bounds that keep one chain to a fraction of a second: residues judged, samples per level.
constexpr int32_t kMaxJudgedResidues = 400;
constexpr int32_t kMaxSamples = 10;

[[noreturn]] void Broken(const std::string& what) {
  std::fprintf(stderr, "batch fuzz check failed: %s\n", what.c_str());
  std::abort();
}

int32_t Residues(const quarnel::AtomRecords& records) {
  try {
    return quarnel::StructureOf(records.records, "fuzz").size();
  } catch (const quarnel::Failure&) {
    return -1;
  }
}

void CheckWriters(quarnel::ChainOutcome& outcome) {
  using quarnel::ResultFormat;
  const std::string row = quarnel::FormatResult(ResultFormat::kTsv, outcome);
  size_t tabs = 0, columnTabs = 0;
  for (char c : row) tabs += c == '\t';
  for (const char* c = quarnel::kTsvColumns; *c != '\0'; ++c) columnTabs += *c == '\t';
  if (tabs != columnTabs || row.find('\n') != row.size() - 1) Broken("a TSV row of the wrong shape: " + row);
  for (ResultFormat format : {ResultFormat::kTsv, ResultFormat::kJson}) {
    const std::string file = quarnel::ResultHeader(format, "-noss") + quarnel::FormatResult(format, outcome);
    const quarnel::ResumeState state = quarnel::ReadResume(file, format);
    if (!state.recorded || state.options != "-noss" ||
        state.done.count(quarnel::KeyOf(format, outcome.input, outcome.chainId)) != 1)
      Broken("a results file that does not resume to its chain");
  }
  (void)quarnel::FormatResult(ResultFormat::kClassic, outcome);
  (void)quarnel::ContactSvg(outcome);
  (void)quarnel::PymolScript(outcome, quarnel::SafeFileName(outcome.entry) + ".pdb");
  (void)quarnel::ChimeraxScript(outcome, quarnel::SafeFileName(outcome.entry) + ".pdb");
  const size_t domains = quarnel::ChainDomains(outcome).size();
  for (size_t place = 0; place < domains; ++place) (void)quarnel::DomainPdb(outcome, static_cast<int>(place));
}

void JudgeChain(const quarnel::StructureFile& file, const quarnel::ChainInfo& chain, double threshold,
                quarnel::DecisionMode mode) {
  quarnel::ChainOutcome outcome;
  outcome.input = outcome.file = "fuzz\t\xff.cif";
  outcome.chainId = chain.id;
  outcome.entry = "fuzz" + chain.id;
  outcome.mode = quarnel::DecisionModeName(mode);
  quarnel::ConfidentRecords kept = quarnel::LeaveOutLowConfidence(file.ChainRecords(chain.id), threshold);
  if (kept.leftOut > static_cast<int>(kept.marks.size())) Broken("more residues left out than there are");
  outcome.records = std::move(kept.records);
  (void)quarnel::LooksLikePlddt(outcome.records.records);
  if (!quarnel::ImplausibleChain(outcome.records.records).empty() || Residues(outcome.records) > kMaxJudgedResidues)
    return;
  quarnel::Params params;
  params.FlagSS = 0;
  params.NumSamplePoints = kMaxSamples;
  const quarnel::HeldRecords records("fuzz", outcome.records);
  const quarnel::ChainInput input{&records, outcome.entry, static_cast<unsigned char>(chain.text_id), "fuzz"};
  quarnel::RunContext context;
  try {
    outcome.result = quarnel::RunChainIn(mode, input, params, nullptr, context);
  } catch (const quarnel::Failure& failure) {
    for (int status : {5, 100, 15}) // refused format, too few atoms, no residue of a domain
      if (failure.exit_status() == status) return;
    Broken("undesigned failure " + std::to_string(failure.exit_status()) + ": " + failure.what());
  }
  outcome.ok = true;
  outcome.leftOut = kept.leftOut;
  outcome.gapBefore = quarnel::GapsBefore(outcome.result.structure.residues, kept.marks);
  quarnel::SplitAtGaps(outcome.result, outcome.gapBefore, outcome.entry);
  CheckWriters(outcome);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  if (size < 1) return 0;
  // The first byte chooses the pLDDT threshold and, in its top bit, the way domains are decided.
  const double threshold = (data[0] & 0x7f) % 101;
  const quarnel::DecisionMode mode = (data[0] & 0x80) != 0 ? quarnel::DecisionMode::kCath : quarnel::DecisionMode::kClassic;
  const std::string bytes(reinterpret_cast<const char*>(data) + 1, size - 1);
  try {
    const quarnel::StructureFile file = quarnel::StructureFile::FromBytes("fuzz", bytes);
    for (size_t c = 0; c < file.chains().size() && c < kMaxChains; ++c) {
      try {
        JudgeChain(file, file.chains()[c], threshold, mode);
      } catch (const std::runtime_error&) {
        // a chain whose atoms cannot be records (names past their columns): refused with its reason
      }
    }
  } catch (const std::runtime_error&) {
    // not a structure file: refused with its reason
  }
  return 0;
}
