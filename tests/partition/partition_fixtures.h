// Hand-built inputs for the partitioning tests: zeroed contact matrices, residue slices and
// synthetic chains of compact blobs whose only acceptable cuts are known in advance.
#pragma once

#include <cmath>
#include <cstdlib>
#include <utility>
#include <vector>

#include "contacts/contacts.h"
#include "partition/partition.h"
#include "structure/protein.h"

namespace partition_test {

// ContactMalloc leaves its cells uninitialised.
inline Contact** ZeroedMatrix(int n) {
  Contact** matrix = ContactMalloc(n, n);
  for (int i = 0; i < n; ++i) {
    for (int j = 0; j < n; ++j) matrix[i][j] = Contact{0, 0, 0.0f};
  }
  return matrix;
}

inline void SetWeight(Contact** matrix, int i, int j, int weight) {
  matrix[i][j].weight = weight;
  matrix[j][i].weight = weight;
}

// Both cells of the global matrix, as the contact builder leaves them.
inline void SetContact(int i, int j, int count, int weight) {
  ContactMatrix[i][j].count = count;
  ContactMatrix[j][i].count = count;
  ContactMatrix[i][j].weight = weight;
  ContactMatrix[j][i].weight = weight;
}

// A zeroed global matrix of n rows, replacing any earlier one; ResetRunState releases it.
inline void MakeGlobalMatrix(int n) {
  if (ContactMatrix != nullptr) FreeContacts(ContactMatrix, ContactMatrixRows);
  ContactMatrix = ZeroedMatrix(n);
  ContactMatrixRows = n;
}

// A residue as the driver leaves it before the partition: no secondary structure, no partner.
inline Residue PlainResidue(int index, int natoms) {
  Residue r{};
  r.merged = 0;
  r.index = index;
  r.chain = 'A';
  r.resnum = index + 1;
  r.icode = ' ';
  r.resname[0] = 'A';
  r.resname[1] = 'L';
  r.resname[2] = 'A';
  r.resname[3] = '\0';
  r.natoms = natoms;
  r.atoms = nullptr;
  r.ca[0] = r.ca[1] = r.ca[2] = kNoCoordinate;
  r.domain = 0;
  r.part = 0;
  r.ss = 'L';
  r.bridge1 = -1;
  r.bridge2 = -1;
  r.cutscore[0] = 999.9f;
  r.cutscore[1] = 0.0f;
  r.cutscore[2] = 0.0f;
  return r;
}

// Residues index first .. first+n-1 with the given part labels.
inline std::vector<Residue> LabelledSlice(const std::vector<int>& parts, int first = 0) {
  std::vector<Residue> slice;
  for (size_t i = 0; i < parts.size(); ++i) {
    Residue r = PlainResidue(first + static_cast<int>(i), 5);
    r.part = parts[i];
    slice.push_back(r);
  }
  return slice;
}

// Labels built from runs: {{20, 0}, {3, 1}} is twenty 0s then three 1s.
inline std::vector<int> Runs(const std::vector<std::pair<int, int>>& runs) {
  std::vector<int> parts;
  for (const auto& run : runs) parts.insert(parts.end(), run.first, run.second);
  return parts;
}

// Squared distance as the contact builder forms it: differences rounded to single precision.
inline float Dist2(const double* a, const double* b) {
  float dx = static_cast<float>(a[0] - b[0]);
  float dy = static_cast<float>(a[1] - b[1]);
  float dz = static_cast<float>(a[2] - b[2]);
  return dx * dx + dy * dy + dz * dz;
}

// Number of pairs of a blob of m consecutive residues whose index values differ by more than
// the default ResSep of 3: every pair of a blob is in contact once.
inline int BlobIntraCount(int m) { return m * (m - 1) / 2 - (m - 1) - (m - 2) - (m - 3); }

constexpr int kBlobAtoms = 8;   // natoms of every residue of a synthetic chain
constexpr double kGrid = 3.8;   // Calpha spacing inside a blob

struct Blob {
  int size;
  double centreX;
  double centreY = 0.0;
};

// A chain of blobs, consecutive in index. Inside a blob every residue pair makes one contact
// (count 1, weight 1), so any cut through a blob is far too interactive to accept; blobs touch
// each other only through the extra `links` (count 1, weight 1 each). Fills Protein,
// ProteinSize, ContactMatrix (weight, count, dist2) and the state the driver sets before the
// partition (DomainNumber 1, fifteen empty cut records).
inline void BuildBlobChain(const std::vector<Blob>& blobs,
                           const std::vector<std::pair<int, int>>& links = {}) {
  Protein.clear();
  std::vector<int> blobOf;
  for (size_t b = 0; b < blobs.size(); ++b) {
    for (int j = 0; j < blobs[b].size; ++j) {
      Residue r = PlainResidue(static_cast<int>(Protein.size()), kBlobAtoms);
      r.ca[0] = blobs[b].centreX + kGrid * (j % 4);
      r.ca[1] = blobs[b].centreY + kGrid * ((j / 4) % 4);
      r.ca[2] = kGrid * (j / 16);
      Protein.push_back(r);
      blobOf.push_back(static_cast<int>(b));
    }
  }
  ProteinSize = static_cast<int32_t>(Protein.size());
  MakeGlobalMatrix(ProteinSize);
  for (int i = 0; i < ProteinSize; ++i) {
    for (int j = i + 1; j < ProteinSize; ++j) {
      float d2 = Dist2(Protein[i].ca, Protein[j].ca);
      ContactMatrix[i][j].dist2 = d2;
      ContactMatrix[j][i].dist2 = d2;
      if (blobOf[i] == blobOf[j]) SetContact(i, j, 1, 1);
    }
  }
  for (const auto& link : links) SetContact(link.first, link.second, 1, 1);
  DomainNumber = 1;
  cut_history.assign(kInitialCutRecords, kEmptyCutRecord);
}

// The level's sub-matrix as the recursion builds it: weight and dist2 by slice position.
inline Contact** SubMatrixOf(const Residue* slice, int n) {
  Contact** sub = ZeroedMatrix(n);
  for (int r = 0; r < n; ++r) {
    for (int c = 0; c < n; ++c) {
      const Contact& cell = ContactMatrix[slice[r].index][slice[c].index];
      sub[r][c].weight = cell.weight;
      sub[r][c].dist2 = cell.dist2;
    }
  }
  return sub;
}

// Domain number of every residue, by index (the recursion reorders Protein).
inline std::vector<int> DomainsByIndex() {
  std::vector<int> domains(Protein.size(), -1);
  for (const Residue& r : Protein) domains[r.index] = r.domain;
  return domains;
}

}  // namespace partition_test
