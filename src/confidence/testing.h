// The fixed 9-8-1 feed-forward network that scores one domain's features.
#pragma once

#include <cstdint>

namespace quarnel {

constexpr int kNetworkInputs = 9;
constexpr int kNetworkHidden = 8;
constexpr int kNetworkUnits = 18;  // numbered 1 to 18; 0 stands for no unit

// One unit of the network: its bias and its run of connections in the connection tables.
struct Unit {
  float bias;
  int32_t sourceCount;
  int32_t firstConnection;
};

// Scores nine features into out[0], in [0, 1]; always returns 0. Nothing of one call survives
// into the next.
int testing(const float in[kNetworkInputs], float out[1]);

}  // namespace quarnel
