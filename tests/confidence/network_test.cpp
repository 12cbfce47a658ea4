// The scoring network: fixed vectors against an independent float32 emulation, the cut-off of
// the net input at 10000, and inputs that are not numbers.
#include <cmath>
#include <limits>

#include <gtest/gtest.h>

#include "confidence/network_access.h"

namespace {

constexpr int kUnit16 = 16;

float Score(const float (&in)[9]) {
  float out[1] = {-1.0f};
  EXPECT_EQ(RunNetwork(in, out), 0);
  return out[0];
}

// Scores printed by tests/confidence/network_reference.py, which rounds every decimal straight
// to float32 and emulates the single-precision sum connection by connection.
TEST(Network, FixedVectorsMatchTheReferenceEmulation) {
  struct Case {
    float in[9];
    float score;
  };
  const Case cases[] = {
      {{0, 0, 0, 0, 0, 0, 0, 0, 0}, 0x1.c05d24p-1f},
      {{0.6f, 120, 2, 3, 5, 1, 0.7f, 0.1f, 0.15f}, 0x1.4fe67ap-2f},
      {{0.3f, 80, 4, 6, 12, 2, 0.5f, 0.3f, 0.4f}, 0x1.1b2bacp-11f},
      {{0.45f, 35, 1, 0, 0, 0, 0.55f, 0.04f, 0.06f}, 0x1.744dc8p-1f},
      {{0.25f, 2, 1, 1, 0, 1, 0.02f, 0.01f, 0.03f}, 0x1.19be6p-9f},
      {{0.6666667f, 6, 1, 0, 6, 0, 0.6f, 0.19f, 0.15f}, 0x1.5baaaap-2f},
      {{0.6666667f, 6, 1, 0, 6, 0, 0.9f, 0.1f, 0.1f}, 0x1.fd07c4p-1f},
  };
  for (const Case& c : cases) EXPECT_EQ(Score(c.in), c.score) << c.in[0] << " " << c.in[1];
}

TEST(Network, DescriptorNamesTheScorer) {
  EXPECT_EQ(DescriptorInputs(), 9);
  EXPECT_EQ(DescriptorOutputs(), 1);
  const float in[9] = {0.45f, 35, 1, 0, 0, 0, 0.55f, 0.04f, 0.06f};
  float out[1];
  EXPECT_EQ(RunNetworkByDescriptor(in, out), 0);
  EXPECT_EQ(out[0], 0x1.744dc8p-1f);
}

TEST(Network, ConnectionsFollowTheLayers) {
  for (int u = 10; u <= 17; ++u) {
    ASSERT_EQ(UnitSourceCount(u), 9);
    for (int s = 0; s < 9; ++s) EXPECT_EQ(UnitSource(u, s), s + 1);
    // The runs lie end to end in one table.
    EXPECT_EQ(UnitWeightOffset(u), 9 * (u - 10));
  }
  ASSERT_EQ(UnitSourceCount(18), 8);
  for (int s = 0; s < 8; ++s) EXPECT_EQ(UnitSource(18, s), 10 + s);
  EXPECT_EQ(UnitWeightOffset(18), 72);
  EXPECT_EQ(UnitBias(16), 154.92741f);
  EXPECT_EQ(UnitWeight(15, 0), -15.8832f);
  EXPECT_EQ(UnitWeight(18, 7), -3.26261f);
  for (int u = 1; u <= 9; ++u) EXPECT_EQ(UnitSourceCount(u), 0);
}

TEST(Network, NanInputLeavesOnlyTheOutputBias) {
  float in[9] = {std::numeric_limits<float>::quiet_NaN(), 0, 0, 0, 0, 0, 0, 0, 0};
  float score = Score(in);
  for (int u = 10; u <= 17; ++u) EXPECT_EQ(UnitActivation(u), 0.0f) << u;
  // 1 / (1 + exp(0.40035)), from network_reference.py.
  EXPECT_EQ(score, 0x1.9adb94p-2f);
  EXPECT_NEAR(score, 0.4012, 0.0001);
}

// Only input 1 is set, so unit 16's sum is the one product x * w and the float net is
// bias + that product; the two x values were found with network_reference.py.
TEST(Network, NetOfTenThousandSwitchesTheUnitOff) {
  float in[9] = {0x1.f99b6p+5f, 0, 0, 0, 0, 0, 0, 0, 0};
  const float bias = UnitBias(kUnit16);
  const float weight = UnitWeight(kUnit16, 0);
  ASSERT_EQ(bias + in[0] * weight, 10000.0f);
  Score(in);
  EXPECT_EQ(UnitActivation(kUnit16), 0.0f);

  in[0] = 0x1.f98e3ap+5f;
  ASSERT_EQ(bias + in[0] * weight, 9999.0f);
  Score(in);
  EXPECT_EQ(UnitActivation(kUnit16), 1.0f);
}

TEST(Network, VeryNegativeNetGivesZeroThroughTheLogistic) {
  float in[9] = {-100.0f, -100.0f, -100.0f, -100.0f, -100.0f, -100.0f, -100.0f, -100.0f, -100.0f};
  float score = Score(in);
  EXPECT_EQ(UnitActivation(kUnit16), 0.0f);
  EXPECT_TRUE(std::isfinite(score));
  EXPECT_GE(score, 0.0f);
  EXPECT_LE(score, 1.0f);
}

TEST(Network, SecondCallGivesTheSameScore) {
  const float in[9] = {0.6f, 120, 2, 3, 5, 1, 0.7f, 0.1f, 0.15f};
  const float other[9] = {1, 1, 1, 1, 1, 1, 1, 1, 1};
  float first = Score(in);
  Score(other);
  EXPECT_EQ(Score(in), first);
  EXPECT_EQ(Score(in), first);
}

}  // namespace
