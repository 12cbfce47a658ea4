// The scorer seen from the tests. GoogleTest's namespace `testing` and the scorer's function of
// the same name cannot be declared in one translation unit, so the network tests reach the
// scorer through these functions, defined beside them without GoogleTest.
#pragma once

int RunNetwork(const float in[9], float out[1]);
// The same call made through the descriptor's function pointer.
int RunNetworkByDescriptor(const float in[9], float out[1]);
int DescriptorInputs();
int DescriptorOutputs();

float UnitActivation(int unit);
float UnitBias(int unit);
int UnitSourceCount(int unit);
int UnitSource(int unit, int connection);
float UnitWeight(int unit, int connection);
// Position of a unit's first weight in the table of all 80 connections.
long UnitWeightOffset(int unit);
