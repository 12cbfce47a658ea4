// The assessment's own residue profile of one domain, read again from the PDB file.
#pragma once

#include <cstdint>
#include <vector>

#include "output/domains.h"

struct ProfileResidue {
  char code;        // one-letter code, 'X' for unknown and non-standard residues
  int32_t resnum;
  double ca[3];
  double center[3]; // side-chain centre (the CA for glycine and bare residues)
  double dist;      // from the domain's centre
  double hydro;
};

// Records 1 to NumOfAA hold the profile; record 0 is never part of it.
extern std::vector<ProfileResidue> residue;
extern int32_t NumOfAA;

// The domain being read: its segments, their count and its largest end residue number.
extern std::vector<DomainSegment> Domdata;
extern int32_t Fragnum;
extern int32_t ENDNUM;

void ProcessPDB();
int Isindomain(int resnum);
char res_convert(const char name[3]);
double AssignH(char code);
double cal_distance(double x1, double y1, double z1, double x2, double y2, double z2);
