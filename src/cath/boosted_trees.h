// Inference of boosted decision trees trained with scikit-learn's GradientBoostingClassifier:
// the log-odds of the positive class, summed tree by tree in the training library's order, so
// that C++ and Python give the same number to the last bit.
#pragma once

#include <cstdint>

namespace quarnel {

// One node of a regression tree. A leaf has feature kLeaf; its value is the tree's output,
// already multiplied by the learning rate. An inner node sends a feature at most `threshold`
// to `left`, anything else (a value that is not a number included) to `right`; both are node
// numbers within the same table.
struct TreeNode {
  int32_t feature;
  int32_t left;
  int32_t right;
  double threshold;
  double value;
};

constexpr int32_t kLeaf = -1;

// A model: `treeCount` trees whose roots are listed from `firstRoot` on in a table of roots,
// all of them in one table of nodes; `init` is the log-odds before any tree.
struct BoostedModel {
  int32_t firstRoot;
  int32_t treeCount;
  double init;
};

// The model's log-odds for one feature vector. Features are single precision, as the training
// library compares them.
double LogOdds(const BoostedModel& model, const TreeNode* nodes, const int32_t* roots,
               const float* features);

}  // namespace quarnel
