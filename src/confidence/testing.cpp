// The fixed, pre-trained 9-8-1 logistic network that scores one domain's nine features. Its
// weights are constants of the tool; the unit activations live only during one call.
#include "confidence/testing.h"

#include <cmath>

namespace quarnel {

namespace {

constexpr int kOutputUnit = 18;
constexpr int kConnections = kNetworkHidden * kNetworkInputs + kNetworkHidden;  // 80
// A net input this large (or one that is not a number) switches a unit off instead of
// saturating it.
constexpr double kNetCutoff = 10000.0;

// The 80 connections end to end: 9 for each hidden unit 10 to 17, then 8 for the output unit.
constexpr int32_t Sources[kConnections] = {
    1,  2,  3,  4,  5,  6,  7,  8,  9,   // unit 10
    1,  2,  3,  4,  5,  6,  7,  8,  9,   // unit 11
    1,  2,  3,  4,  5,  6,  7,  8,  9,   // unit 12
    1,  2,  3,  4,  5,  6,  7,  8,  9,   // unit 13
    1,  2,  3,  4,  5,  6,  7,  8,  9,   // unit 14
    1,  2,  3,  4,  5,  6,  7,  8,  9,   // unit 15
    1,  2,  3,  4,  5,  6,  7,  8,  9,   // unit 16
    1,  2,  3,  4,  5,  6,  7,  8,  9,   // unit 17
    10, 11, 12, 13, 14, 15, 16, 17,      // unit 18
};

// Weights in connection order, each decimal rounded directly to the nearest float.
constexpr float Weights[kConnections] = {
    // unit 10
    3.67052f, -0.02355f, 2.83912f, 0.86335f, -0.10529f, -1.24042f, -8.80781f, 26.02224f, -20.13426f,
    // unit 11
    -0.16696f, 0.00024f, 1.12993f, -0.18481f, 0.05119f, 0.54128f, -2.21761f, -16.58248f, 11.98293f,
    // unit 12
    0.87117f, -0.01327f, -0.58681f, -0.25476f, -1.28584f, 3.61477f, 3.13959f, -6.93018f, -15.29387f,
    // unit 13
    -0.5796f, 0.67898f, -0.69792f, 0.58046f, 0.76856f, 0.08722f, 0.74827f, 0.48054f, 0.89788f,
    // unit 14
    0.56844f, -0.02217f, -1.40421f, 0.10602f, -0.12592f, -0.03929f, 3.02144f, -1.15617f, -0.80988f,
    // unit 15
    -15.8832f, 0.03618f, -1.81354f, 0.06369f, 0.54469f, -5.72859f, 2.9319f, 0.01931f, -1.53109f,
    // unit 16
    155.77432f, 156.12901f, 155.06813f, 154.66736f, 154.7694f, 155.62183f, 154.58786f, 155.308f,
    156.07256f,
    // unit 17
    9.24195f, -0.06894f, 0.57421f, 0.21726f, -1.58914f, 1.22569f, -3.63845f, -19.5572f, 24.74901f,
    // unit 18
    -4.18989f, -4.00983f, 3.01283f, 0.92573f, 6.24853f, 3.0502f, -0.79266f, -3.26261f,
};

constexpr int32_t kOutputRun = kNetworkHidden * kNetworkInputs;

// Unit 0 stands for no unit; the input units have no sources, and their biases take no part in
// the computation.
constexpr Unit Units[kNetworkUnits + 1] = {
    {0.0f, 0, 0},
    {0.0f, 0, 0}, {0.0f, 0, 0}, {0.0f, 0, 0}, {0.0f, 0, 0}, {0.0f, 0, 0},
    {0.0f, 0, 0}, {0.0f, 0, 0}, {0.0f, 0, 0}, {0.0f, 0, 0},
    {-0.17064f, kNetworkInputs, 0 * kNetworkInputs},
    {-0.48859f, kNetworkInputs, 1 * kNetworkInputs},
    {7.80255f, kNetworkInputs, 2 * kNetworkInputs},
    {-0.93365f, kNetworkInputs, 3 * kNetworkInputs},
    {0.20555f, kNetworkInputs, 4 * kNetworkInputs},
    {0.09673f, kNetworkInputs, 5 * kNetworkInputs},
    {154.92741f, kNetworkInputs, 6 * kNetworkInputs},
    {0.12011f, kNetworkInputs, 7 * kNetworkInputs},
    {-0.40035f, kNetworkHidden, kOutputRun},
};

constexpr int32_t Input[kNetworkInputs] = {1, 2, 3, 4, 5, 6, 7, 8, 9};
constexpr int32_t Hidden1[kNetworkHidden] = {10, 11, 12, 13, 14, 15, 16, 17};
constexpr int32_t Output1 = kOutputUnit;

// The sum is held in single precision, each product and addition done in double and stored
// back after every connection, so the rounding is the same whatever the compiler keeps in
// registers.
void UpdateUnit(int32_t unitNumber, float activation[kNetworkUnits + 1]) {
  const Unit& unit = Units[unitNumber];
  float sum = 0.0f;
  for (int32_t s = 0; s < unit.sourceCount; ++s) {
    const int32_t connection = unit.firstConnection + s;
    double product = static_cast<double>(activation[Sources[connection]]) *
                     static_cast<double>(Weights[connection]);
    sum = static_cast<float>(static_cast<double>(sum) + product);
  }
  float net = unit.bias + sum;
  if (net < kNetCutoff)
    activation[unitNumber] = static_cast<float>(
        1.0 / (1.0 + std::exp(-static_cast<double>(sum) - static_cast<double>(unit.bias))));
  else
    activation[unitNumber] = 0.0f;
}

}  // namespace

int testing(const float in[kNetworkInputs], float out[1]) {
  float activation[kNetworkUnits + 1] = {};
  for (int k = 0; k < kNetworkInputs; ++k) activation[Input[k]] = in[k];
  for (int32_t hidden : Hidden1) UpdateUnit(hidden, activation);
  UpdateUnit(Output1, activation);
  out[0] = activation[kOutputUnit];
  return 0;
}

}  // namespace quarnel
