// Reader of DSSP's classic residue table: secondary structure, bridge partners, and the fixed
// contact weights of strand neighbours and bridge partners.
#pragma once

#include <string>

constexpr int kStrandWeight = 1000;
constexpr int kBridgeWeight = 12;

// Every residue in coil with no bridge partner: the state of a run without DSSP, and the one
// DSSP's table then refines.
void SetSecondaryStructureDefaults();

void ProcessDSSP(const std::string& path);
