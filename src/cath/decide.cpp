// The model's calls on a candidate tree, made from the top: the whole chain is judged by a
// model of its own (a whole chain and its parts differ in what a good cut looks like), every
// part below by another; a part whose cut does not stand is a domain.
#include "cath/decide.h"

#include <algorithm>
#include <cmath>

#include "cath/model_tables.h"

namespace quarnel {

namespace {

double Logistic(double x) { return 1.0 / (1.0 + std::exp(-x)); }

// Log-odds beyond this add nothing to a confidence; a node that has no cut stands for a sure
// call, at the bound.
double Bounded(double logOdds) { return std::max(-kCalibrationBound, std::min(kCalibrationBound, logOdds)); }

double DomainConfidence(const CathCalls& calls, const std::vector<CandidateNode>& nodes, int node) {
  const CandidateNode& domain = nodes[static_cast<size_t>(node)];
  const double undivided = domain.hasCut() ? -Bounded(calls.logOdds[static_cast<size_t>(node)]) : kCalibrationBound;
  const double apart = domain.parent == kNoNode ? kCalibrationBound
                                                : Bounded(calls.logOdds[static_cast<size_t>(domain.parent)]);
  return Logistic(kDomainCalibration[0] + kDomainCalibration[1] * undivided + kDomainCalibration[2] * apart);
}

}  // namespace

CathCalls DecideCuts(const ChainView& chain, const std::vector<CandidateNode>& nodes) {
  CathCalls calls;
  const size_t n = nodes.size();
  calls.features.assign(n, CutFeatures{});
  calls.logOdds.assign(n, 0.0);
  calls.kept.assign(n, false);
  for (size_t k = 0; k < n; ++k) {
    if (!nodes[k].hasCut()) continue;
    calls.features[k] = FeaturesOfCut(chain, nodes[k], nodes[k].cuts[0]);
    const BoostedModel& model = k == 0 ? kWholeChainModel : kPartModel;
    calls.logOdds[k] = LogOdds(model, kCathTreeNodes, kCathTreeRoots, calls.features[k].data());
  }
  // Children come after their parents, so one pass in node order decides from the top.
  std::vector<bool> reached(n, false);
  if (n > 0) reached[0] = true;
  for (size_t k = 0; k < n; ++k) {
    if (!reached[k]) continue;
    const double threshold = k == 0 ? kWholeChainThreshold : kPartThreshold;
    if (nodes[k].hasCut() && calls.logOdds[k] >= threshold) {
      calls.kept[k] = true;
      reached[static_cast<size_t>(nodes[k].children[0])] = true;
      reached[static_cast<size_t>(nodes[k].children[1])] = true;
      calls.boundaries.push_back(
          Boundary{static_cast<int>(k), Logistic(kBoundaryCalibration[0] + kBoundaryCalibration[1] *
                                                                               Bounded(calls.logOdds[k]))});
    } else {
      calls.domains.push_back(static_cast<int>(k));
    }
  }
  std::sort(calls.domains.begin(), calls.domains.end(), [&](int a, int b) {
    return nodes[static_cast<size_t>(a)].residues.front() < nodes[static_cast<size_t>(b)].residues.front();
  });
  for (int domain : calls.domains) calls.confidence.push_back(DomainConfidence(calls, nodes, domain));
  return calls;
}

std::vector<BoundaryPlace> BoundaryPlaces(const CathCalls& calls, const std::vector<CandidateNode>& nodes,
                                          int32_t residues) {
  const std::vector<int32_t> domain = DomainOfResidues(calls, nodes, residues);
  std::vector<double> probability(nodes.size(), 0.0);
  for (const Boundary& boundary : calls.boundaries) probability[static_cast<size_t>(boundary.node)] = boundary.probability;
  // The cut that separated two domains is the one at the deepest node above both.
  auto separating = [&](int a, int b) {
    while (a != b) {
      if (nodes[static_cast<size_t>(a)].depth >= nodes[static_cast<size_t>(b)].depth)
        a = nodes[static_cast<size_t>(a)].parent;
      else
        b = nodes[static_cast<size_t>(b)].parent;
    }
    return a;
  };
  std::vector<BoundaryPlace> places;
  for (int32_t i = 1; i < residues; ++i) {
    const int32_t a = domain[static_cast<size_t>(i - 1)], b = domain[static_cast<size_t>(i)];
    if (a == b) continue;
    const int cut = separating(calls.domains[static_cast<size_t>(a)], calls.domains[static_cast<size_t>(b)]);
    places.push_back(BoundaryPlace{i - 1, i, probability[static_cast<size_t>(cut)]});
  }
  return places;
}

std::vector<int32_t> DomainOfResidues(const CathCalls& calls, const std::vector<CandidateNode>& nodes,
                                      int32_t residues) {
  std::vector<int32_t> domain(static_cast<size_t>(residues), 0);
  for (size_t d = 0; d < calls.domains.size(); ++d)
    for (int32_t i : nodes[static_cast<size_t>(calls.domains[d])].residues)
      domain[static_cast<size_t>(i)] = static_cast<int32_t>(d);
  return domain;
}

}  // namespace quarnel
