// The search of one partition level: anchor residues, sampled source/sink pairs, one flow
// problem per sample, and the best acceptable cut over all samples.
#pragma once

#include <cstdint>
#include <vector>

#include "partition/partition.h"

struct Residue;
struct Contact;

struct DistanceEntry {
  int32_t position;
  float key;  // dist2 from the chosen residue
};

struct Point3f {
  float x, y, z;
};

struct PointPair {
  int32_t first, second;  // positions, first < second
  float distance;
};

int compare1(const void* a, const void* b);
int comparepair(const void* a, const void* b);

// Returns 1 and fills split and scores when the level has an acceptable cut, else 0.
int MultiCut(Residue* slice, Contact** sub, int n, int* split, CutScores* scores);

void SelectNewPoints(const Point3f* coords, int n, Point3f a, Point3f b,
                     std::vector<PointPair>& pairs, int* count);
int WithinBoundary(Point3f p, Point3f q, float d, Point3f a, Point3f b, float s, float bigD);
