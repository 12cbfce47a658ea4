// The assessment's residue profile of one domain: the domain's ATOM records read again from the
// PDB file, one record per residue with its CA, side-chain centre, distance and hydrophobicity.
#include "confidence/profile.h"

#include <cmath>
#include <cstdio>
#include <cstring>
#include <string>

#include "run/fatal.h"
#include "run/textio.h"
#include "structure/pdb_names.h"

namespace {

constexpr int kOpenFailed = 4;
constexpr int kNoResidue = 15;
const char* const kNoResidueMessage =
    "Something is wrong!!! please check the following:\n"
    " Is the pdb file name in the xxxx.pdb format?\n"
    " Have you specified the chain name if the protein has multiple chains?\n";

// The last ATOM record seen before the first one.
constexpr int kNoResidueSeen = -100;

// Side-chain atoms are known by the first two characters of their name (CD1, OE2 and NH1
// join their families); backbone atoms and everything else stay out of the centre.
const char* const kSideChainNames[] = {"CB", "CG", "CD", "CE", "CZ", "CH", "SG", "SD",
                                       "ND", "NE", "NZ", "NH", "OG", "OD", "OE", "OH"};

struct NameCode {
  const char* name;
  char code;
};

// Tried in this order; the first match wins. Selenomethionine and UNK stay unknown.
const NameCode kResidueCodes[] = {
    {"GLY", 'G'}, {"Gly", 'G'}, {"ALA", 'A'}, {"Ala", 'A'}, {"VAL", 'V'}, {"Val", 'V'},
    {"LEU", 'L'}, {"Leu", 'L'}, {"ILE", 'I'}, {"Ile", 'I'}, {"SER", 'S'}, {"Ser", 'S'},
    {"THR", 'T'}, {"Thr", 'T'}, {"CYS", 'C'}, {"Cys", 'C'}, {"MET", 'M'}, {"Met", 'M'},
    {"MSE", 'X'}, {"PRO", 'P'}, {"Pro", 'P'}, {"UNK", 'X'}, {"ASP", 'D'}, {"Asp", 'D'},
    {"ASN", 'N'}, {"Asn", 'N'}, {"ASX", 'B'}, {"Asx", 'B'}, {"GLU", 'E'}, {"Glu", 'E'},
    {"GLN", 'Q'}, {"Gln", 'Q'}, {"GLX", 'Z'}, {"Glx", 'Z'}, {"LYS", 'K'}, {"Lys", 'K'},
    {"ARG", 'R'}, {"Arg", 'R'}, {"HIS", 'H'}, {"His", 'H'}, {"HSD", 'H'}, {"Hsd", 'H'},
    {"PHE", 'F'}, {"Phe", 'F'}, {"TYR", 'Y'}, {"Tyr", 'Y'}, {"TRP", 'W'}, {"Trp", 'W'},
};

constexpr char kUnknownCode = 'X';
constexpr char kGlycine = 'G';

// The fields of one ATOM record that the profile uses.
struct AtomRecord {
  std::string name;  // the first two characters of the atom name
  char resname[3];
  char chain;
  int resnum;
  double xyz[3];
};

AtomRecord ParseAtom(const std::string& line) {
  AtomRecord atom;
  atom.name = Columns(line, 14, 15);  // atom name, first two characters
  for (int k = 0; k < 3; ++k) atom.resname[k] = Column(line, 18 + k);  // resName
  atom.chain = Column(line, 22);                                      // chainID
  atom.resnum = AtoiField(Columns(line, 23, 26));                     // resSeq
  atom.xyz[0] = AtofField(Columns(line, 31, 38));                     // x
  atom.xyz[1] = AtofField(Columns(line, 39, 46));                     // y
  atom.xyz[2] = AtofField(Columns(line, 47, 54));                     // z
  return atom;
}

bool IsSideChainAtom(const std::string& name) {
  for (const char* sideChain : kSideChainNames)
    if (name == sideChain) return true;
  return false;
}

ProfileResidue BlankProfileResidue() {
  ProfileResidue blank{};
  blank.code = ' ';
  blank.resnum = -999;
  return blank;
}

// The residue being filled and the sums of its side-chain atoms.
struct OpenResidue {
  bool any = false;
  int resnum = 0;
  double sums[3] = {0.0, 0.0, 0.0};
  int count = 0;
};

void CompleteResidue(const OpenResidue& open) {
  ProfileResidue& r = residue[static_cast<size_t>(NumOfAA)];
  for (int k = 0; k < 3; ++k)
    r.center[k] = (r.code == kGlycine || open.count == 0) ? r.ca[k] : open.sums[k] / open.count;
}

void StartResidue(OpenResidue& open, const AtomRecord& atom) {
  if (open.any) CompleteResidue(open);
  open.any = true;
  open.resnum = atom.resnum;
  open.sums[0] = open.sums[1] = open.sums[2] = 0.0;
  open.count = 0;

  ++NumOfAA;
  // The table has a record for every residue of the chain; a file holding more residues than
  // the chain reader kept (it tells insertion codes apart, this reader does not) still fits.
  while (residue.size() <= static_cast<size_t>(NumOfAA)) residue.push_back(BlankProfileResidue());
  // A residue without a CA keeps (0, 0, 0), whatever the record held before.
  ProfileResidue& r = residue[static_cast<size_t>(NumOfAA)];
  r = BlankProfileResidue();
  r.code = res_convert(atom.resname);
  r.resnum = atom.resnum;
  r.hydro = r.code == kUnknownCode ? 0.0 : AssignH(r.code);
}

void AddAtom(OpenResidue& open, const AtomRecord& atom) {
  ProfileResidue& r = residue[static_cast<size_t>(NumOfAA)];
  if (atom.name == "CA") {
    for (int k = 0; k < 3; ++k) r.ca[k] = atom.xyz[k];
  } else if (IsSideChainAtom(atom.name)) {
    for (int k = 0; k < 3; ++k) open.sums[k] += atom.xyz[k];
    ++open.count;
  }
}

// The stop rules are tested before the record type: END also ends the first model (ENDMDL),
// and the reader leaves one line after it has passed the domain's last residue in the chain.
bool StopsReading(const std::string& line, int lastResnum, char lastChain) {
  if (StartsWith(line, "END")) return true;
  if (StartsWith(line, "TER") && lastChain == CHAIN) return true;
  return lastResnum > ENDNUM && lastChain == CHAIN;
}

void ReadDomainResidues(std::FILE* file) {
  int lastResnum = kNoResidueSeen;
  char lastChain = ' ';
  OpenResidue open;
  std::string line;
  while (ReadLine(file, line)) {
    if (StopsReading(line, lastResnum, lastChain)) break;
    if (!StartsWith(line, "ATOM  ")) continue;
    AtomRecord atom = ParseAtom(line);
    lastResnum = atom.resnum;
    lastChain = atom.chain;
    if (!Isindomain(atom.resnum) || atom.chain != CHAIN) continue;
    // Residues are told apart by number alone: 52 and 52A feed one residue.
    if (!open.any || atom.resnum != open.resnum) StartResidue(open, atom);
    AddAtom(open, atom);
  }
  if (open.any) CompleteResidue(open);
}

void SetDistancesFromCentre() {
  double centre[3] = {0.0, 0.0, 0.0};
  for (int i = 1; i <= NumOfAA; ++i)
    for (int k = 0; k < 3; ++k) centre[k] += residue[static_cast<size_t>(i)].center[k];
  for (int k = 0; k < 3; ++k) centre[k] /= NumOfAA;
  for (int i = 1; i <= NumOfAA; ++i) {
    ProfileResidue& r = residue[static_cast<size_t>(i)];
    r.dist = cal_distance(centre[0], centre[1], centre[2], r.center[0], r.center[1], r.center[2]);
  }
}

}  // namespace

void ProcessPDB() {
  std::FILE* file = std::fopen(TemplateName.c_str(), "r");
  if (file == nullptr)
    Fatal(kOpenFailed, Stream::kStdout, Format("INPUT %s OPEN ERROR: QUIT\n", PDBName.c_str()));
  try {
    ReadDomainResidues(file);
  } catch (...) {
    std::fclose(file);
    throw;
  }
  bool unreadable = std::ferror(file) != 0;
  std::fclose(file);
  if (unreadable)
    Fatal(kOpenFailed, Stream::kStdout, Format("INPUT %s OPEN ERROR: QUIT\n", PDBName.c_str()));
  if (NumOfAA == 0) Fatal(kNoResidue, Stream::kStdout, kNoResidueMessage);
  SetDistancesFromCentre();
}

int Isindomain(int resnum) {
  for (int s = 0; s < Fragnum && static_cast<size_t>(s) < Domdata.size(); ++s) {
    const DomainSegment& segment = Domdata[static_cast<size_t>(s)];
    if (segment.start <= resnum && resnum <= segment.end) return 1;
  }
  return 0;
}

char res_convert(const char name[3]) {
  for (const NameCode& entry : kResidueCodes)
    if (std::strncmp(name, entry.name, 3) == 0) return entry.code;
  return kUnknownCode;
}

double AssignH(char code) {
  switch (code) {
    case 'A': return 0.25;
    case 'B': return -0.68;
    case 'C': return 0.04;
    case 'D': return -0.72;
    case 'E': return -0.62;
    case 'F': return 0.61;
    case 'G': return 0.16;
    case 'H': return -0.40;
    case 'I': return 0.73;
    case 'K': return -1.10;
    case 'L': return 0.53;
    case 'M': return 0.26;
    case 'N': return -0.64;
    case 'P': return -0.07;
    case 'Q': return -0.69;
    case 'R': return -1.76;
    case 'S': return -0.26;
    case 'T': return -0.18;
    case 'V': return 0.54;
    case 'W': return 0.37;
    case 'Y': return 0.02;
    case 'Z': return -0.66;
    default:
      std::printf("Uncommon Char\n");
      return 0.0;
  }
}

double cal_distance(double x1, double y1, double z1, double x2, double y2, double z2) {
  double dx = x1 - x2;
  double dy = y1 - y2;
  double dz = z1 - z2;
  return std::sqrt(dx * dx + dy * dy + dz * dz);
}
