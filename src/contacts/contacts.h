// The residue-by-residue contact matrix, indexed by Residue::index.
#pragma once

#include <cstdint>

struct Residue;

struct Contact {
  int32_t weight;  // weighted atom contacts (or fixed DSSP weights)
  int32_t count;   // unweighted atom contacts
  float dist2;     // squared CA distance, kNoCaDistance2 when a CA is missing
};

constexpr float kNoCaDistance2 = 9999.0f;
constexpr float kContactDistance2 = 16.0f;  // 4 Angstrom, inclusive
constexpr float kCaContactDistance2 = 121.0f;  // 11 Angstrom, exclusive

extern Contact** ContactMatrix;
extern int32_t ContactMatrixRows;

Contact** ContactMalloc(int rows, int cols);
void FreeContacts(Contact** matrix, int rows);
void CalcContacts(const Residue* residues, int n, Contact** matrix);
