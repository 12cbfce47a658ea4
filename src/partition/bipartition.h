// Candidate bipartitions of one flow problem: listed from the cut enumeration, tidied into
// segments, judged, and the best written into the residues.
#pragma once

#include "partition/components.h"
#include "partition/partition.h"

struct Residue;

float GenerateAllBiPartition(FlowNode* flowNodes, AdjacencyList& list, Residue* slice, int nodes,
                             CutScores* scores);
float ListBiPartitions(Residue* slice, FlowNode* flowNodes, int n, DagNode* dag, int k,
                       IndVector& closures, int size, int count, CutScores* scores);
void InitializePartition(FlowNode* flowNodes, int nodes, DagNode* dag, int k);
void AssignPartition(FlowNode* flowNodes, const std::vector<ClosureEntry>& row, int size);

// Segment merging: short loops and tails take their neighbours' label.
void MergeSegments(Residue* slice, int n);

// Acceptance and score of one candidate, the slice ordered by part with split residues of
// part 0 first.
float GoodDomainCut(Residue* slice, int split, int n, CutScores* scores);
