// What the accuracy mode's model knows of one candidate cut: the sizes and pieces of its sides,
// their compactness and the contacts across, the secondary structure it separates, and where
// the part it divides lies in the chain.
#pragma once

#include <array>
#include <cstddef>
#include <vector>

#include "base/params.h"
#include "cath/candidates.h"


namespace quarnel {

constexpr size_t kCutFeatureCount = 40;
using CutFeatures = std::array<float, kCutFeatureCount>;  // single precision, as the model compares them

// The features' names, in order, as training files give them.
extern const char kCutFeatureNames[kCutFeatureCount][20];

// What the features of every cut of one chain read.
struct ChainView {
  ChainView(const Structure& structure, const ContactMap& contacts, const Params& params);

  const Structure& structure;
  const ContactMap& contacts;
  const Params& params;  // the run's own: the classic criteria
  std::vector<double> bScore;  // each residue's CA B-factor as a z-score within the chain
  double bBurial = 0.0;        // correlation of B-factors and contact counts over the chain
};

// The features of one of a node's cuts.
CutFeatures FeaturesOfCut(const ChainView& chain, const CandidateNode& node, const CandidateCut& cut);

}  // namespace quarnel
