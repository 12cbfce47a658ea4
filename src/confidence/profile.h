// The assessment's own residue profile of one domain, read again from the structure's records.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "base/status.h"
#include "formats/atom_records.h"
#include "output/domains.h"
#include "structure/protein.h"

namespace quarnel {

struct ProfileResidue {
  char code;         // one-letter code, 'X' for unknown and non-standard residues
  int32_t resnum;
  double ca[3];
  double center[3];  // side-chain centre (the CA for glycine and bare residues)
  double dist;       // from the domain's centre
  double hydro;
};

// Records 1 to NumOfAA hold the profile; record 0 is never part of it.
struct Profile {
  std::vector<ProfileResidue> residue;
  int32_t NumOfAA = 0;
};

// The fields of one atom that a profile uses.
struct ProfileAtom {
  char name[3];  // the first two characters of the atom name (columns 14-15)
  char resname[3];
  char chain;
  int resnum;
  double xyz[3];
};

// Where the assessment reads its profiles: the records the structure was read from (the
// classic run's file is read again), the chain the run judges, the file name its failure to
// read them gives and the chain's residue count. With `held`, the records read once for every
// profile of the chain.
struct ProfileSource {
  const RecordSource* records = nullptr;
  char chain = ' ';
  std::string name;
  int32_t chainResidues = 0;
  const AtomRecords* held = nullptr;
};

// The source's records read again; fails as the reading would when they cannot be read.
std::shared_ptr<const AtomRecords> ReadProfileRecords(const ProfileSource& source);

// The residues of the domain's segments (`ENDNUM` the largest end) in the run's chain.
Profile ProcessPDB(const ProfileSource& source, const std::vector<DomainSegment>& segments,
                   int32_t ENDNUM, std::vector<Message>& messages);

// The profile of residues already read (chain indices, in chain order), from their stored atoms
// rather than by reading the text again: each residue keeps its own CA and side-chain atoms,
// insertion codes apart. Residues without a CA keep (0, 0, 0).
Profile ProfileOfResidues(const Structure& structure, const std::vector<int32_t>& members,
                          std::vector<Message>& messages);

int Isindomain(const std::vector<DomainSegment>& segments, int resnum);
char res_convert(const char name[3]);
// The hydrophobicity of a one-letter code; an unexpected code notes "Uncommon Char" and gives 0.
double AssignH(char code, std::vector<Message>& messages);
double cal_distance(double x1, double y1, double z1, double x2, double y2, double z2);

}  // namespace quarnel
