// Boosted trees, walked as scikit-learn walks them: a single-precision feature compared, as a
// double, with a double threshold; the trees' outputs added one after the other.
#include "cath/boosted_trees.h"

namespace quarnel {

double LogOdds(const BoostedModel& model, const TreeNode* nodes, const int32_t* roots,
               const float* features) {
  double sum = model.init;
  for (int32_t t = 0; t < model.treeCount; ++t) {
    int32_t at = roots[model.firstRoot + t];
    while (nodes[at].feature != kLeaf) {
      const TreeNode& node = nodes[at];
      at = static_cast<double>(features[node.feature]) <= node.threshold ? node.left : node.right;
    }
    sum += nodes[at].value;
  }
  return sum;
}

}  // namespace quarnel
