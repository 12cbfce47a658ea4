#pragma once
#include <cstdint>
#include "cath/boosted_trees.h"
namespace quarnel {
constexpr TreeNode kCathTreeNodes[] = {{-1, 0, 0, 0.0, 0.0}};
constexpr int32_t kCathTreeRoots[] = {0};
constexpr BoostedModel kWholeChainModel = {0, 1, 0.0};
constexpr BoostedModel kPartModel = {0, 1, 0.0};
constexpr double kWholeChainThreshold = 0.0;
constexpr double kPartThreshold = 0.0;
constexpr double kCalibrationBound = 8.0;
constexpr double kDomainCalibration[3] = {0.0, 0.0, 0.0};
constexpr double kBoundaryCalibration[2] = {0.0, 0.0};
}  // namespace quarnel
