// The fixed 9-8-1 feed-forward network that scores one domain's features.
#pragma once

#include <cstdint>

struct Unit {
  float activation;
  float bias;
  int32_t sourceCount;
  const int32_t* sources;  // unit numbers, in connection order
  const float* weights;
};

constexpr int kNetworkInputs = 9;
constexpr int kNetworkHidden = 8;
constexpr int kNetworkUnits = 18;  // numbered 1 to 18; 0 stands for no unit

struct NetworkDescriptor {
  int inputs;
  int outputs;
  int (*score)(const float* in, float* out);
};

extern Unit Units[kNetworkUnits + 1];
extern const NetworkDescriptor testingREC;

int testing(const float in[9], float out[1]);
