// Boosted trees walked as the training library walks them: a feature equal to a threshold goes
// left, anything not at most the threshold (a value that is not a number included) goes right,
// and the trees' outputs add to the initial log-odds.
#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "cath/boosted_trees.h"

namespace quarnel {
namespace {

// Two trees: the first splits on feature 0 at 0.5, the second on feature 1 at -2, then on
// feature 0 at 3 on its left.
constexpr TreeNode kNodes[] = {
    {0, 1, 2, 0.5, 0.0},   {kLeaf, 0, 0, 0.0, -1.0}, {kLeaf, 0, 0, 0.0, 2.0},
    {1, 4, 5, 0.0 - 2.0, 0.0}, {0, 6, 7, 3.0, 0.0}, {kLeaf, 0, 0, 0.0, 0.25},
    {kLeaf, 0, 0, 0.0, 0.5}, {kLeaf, 0, 0, 0.0, 4.0},
};
constexpr int32_t kRoots[] = {0, 3};

TEST(BoostedTrees, SumsTheLeavesEachFeatureVectorReaches) {
  const BoostedModel both = {0, 2, 0.125};
  const BoostedModel second = {1, 1, 0.0};
  const float nan = std::numeric_limits<float>::quiet_NaN();
  struct Case {
    float features[2];
    double both, second;
  };
  const Case cases[] = {
      {{0.0f, 0.0f}, 0.125 - 1.0 + 0.25, 0.25},
      {{0.5f, -2.0f}, 0.125 - 1.0 + 0.5, 0.5},   // equal to the threshold: left, twice
      {{0.50001f, -3.0f}, 0.125 + 2.0 + 0.5, 0.5},
      {{3.5f, -2.5f}, 0.125 + 2.0 + 4.0, 4.0},
      {{nan, nan}, 0.125 + 2.0 + 0.25, 0.25},   // not a number: right
  };
  for (const Case& c : cases) {
    EXPECT_EQ(LogOdds(both, kNodes, kRoots, c.features), c.both) << c.features[0] << " " << c.features[1];
    EXPECT_EQ(LogOdds(second, kNodes, kRoots, c.features), c.second);
  }
}

// A single-precision feature is compared as the double it is, not as the decimal it prints as:
// 0.1f lies above the double 0.1.
TEST(BoostedTrees, ComparesSinglePrecisionFeaturesExactly) {
  const TreeNode nodes[] = {{0, 1, 2, 0.1, 0.0}, {kLeaf, 0, 0, 0.0, -1.0}, {kLeaf, 0, 0, 0.0, 1.0}};
  const int32_t roots[] = {0};
  const float above[1] = {0.1f};
  EXPECT_EQ(LogOdds(BoostedModel{0, 1, 0.0}, nodes, roots, above), 1.0);
}

}  // namespace
}  // namespace quarnel
