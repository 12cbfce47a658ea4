// The scorer's entry points and unit tables for the network tests (see network_access.h).
#include "confidence/network_access.h"

#include "confidence/testing.h"

int RunNetwork(const float in[9], float out[1]) { return testing(in, out); }
int RunNetworkByDescriptor(const float in[9], float out[1]) { return testingREC.score(in, out); }
int DescriptorInputs() { return testingREC.inputs; }
int DescriptorOutputs() { return testingREC.outputs; }

float UnitActivation(int unit) { return Units[unit].activation; }
float UnitBias(int unit) { return Units[unit].bias; }
int UnitSourceCount(int unit) { return Units[unit].sourceCount; }
int UnitSource(int unit, int connection) { return Units[unit].sources[connection]; }
float UnitWeight(int unit, int connection) { return Units[unit].weights[connection]; }
long UnitWeightOffset(int unit) {
  return static_cast<long>(Units[unit].weights - Units[10].weights);
}
