// The accuracy mode's run of one chain: the chain read as every run reads it, every candidate
// cut searched, and the model's calls turned into domain records and the report.
#include "run/chain.h"

namespace quarnel {

namespace {

// Secondary structure of a chain longer than twice this comes from pieces of this length, so
// that a chain of 20,000 residues takes seconds, not minutes.
constexpr int32_t kDsspPiece = 1500;

}  // namespace

ChainResult RunChainCath(const ChainInput& input, const Params& params,
                         SecondaryStructureSource* secondary, RunContext& context) {
  ChainResult result;
  result.mode = DecisionMode::kCath;
  ReadChain(input, params, secondary, context, result, kDsspPiece);
  Structure& structure = result.structure;
  const int32_t size = structure.size();
  result.candidates = SearchCandidates(structure, result.contacts, CandidateParams(params), context);

  result.calls = DecideCuts(ChainView(structure, result.contacts, params), result.candidates);

  const std::vector<int32_t> domain = DomainOfResidues(result.calls, result.candidates, size);
  for (Residue& residue : structure.residues) residue.domain = domain[static_cast<size_t>(residue.index)];
  const int32_t count = static_cast<int32_t>(result.calls.domains.size());
  if (count > 1) {
    result.domains = OutputDomains(structure.residues, count);
    for (int32_t d = 0; d < count; ++d) {
      const double probability = result.calls.confidence[static_cast<size_t>(d)];
      result.domains[static_cast<size_t>(d)].confidence = static_cast<float>(100.0 * probability);
      result.scores.push_back(static_cast<float>(probability));
    }
    result.found = result.domains;
    result.report = FormatReport(input.entry, size, result.domains);
  } else {
    result.report = FormatOneDomain(input.entry, size);
  }
  const bool searched = !result.candidates.empty() && result.candidates[0].hasCut();
  result.verdict = searched ? Verdict::kModel
                 : size >= 2 * CandidateParams(params).MinDomainSize ? Verdict::kNoCut
                                                                     : Verdict::kTooShort;
  return result;
}

}  // namespace quarnel
