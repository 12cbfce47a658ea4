// Reader of DSSP's classic residue table: secondary structure, bridge partners, and the fixed
// contact weights of strand neighbours and bridge partners.
#pragma once

#include <string>

constexpr int kStrandWeight = 1000;
constexpr int kBridgeWeight = 12;

void ProcessDSSP(const std::string& path);
