// The assessment's residue profile of one domain: the domain's ATOM records read again, one
// entry per residue with its CA, side-chain centre, distance from the domain's centre and
// hydrophobicity.
#include "confidence/profile.h"

#include <cmath>
#include <cstring>
#include <memory>

#include "base/text.h"

namespace quarnel {

namespace {

const char kNoResidueMessage[] =
    "Something is wrong!!! please check the following:\n"
    " Is the pdb file name in the xxxx.pdb format?\n"
    " Have you specified the chain name if the protein has multiple chains?\n";

// The last ATOM record seen before the first one.
constexpr int kNoResidueSeen = -100;
constexpr int32_t kResetResnum = -999;

// Side-chain atoms are known by the first two characters of their name (CD1, OE2 and NH1
// join their families); backbone atoms and everything else stay out of the centre.
constexpr char kSideChainNames[][3] = {"CB", "CG", "CD", "CE", "CZ", "CH", "SG", "SD",
                                       "ND", "NE", "NZ", "NH", "OG", "OD", "OE", "OH"};

struct NameCode {
  char name[4];
  char code;
};

// Tried in this order; the first match wins. Selenomethionine and UNK stay unknown.
constexpr NameCode kResidueCodes[] = {
    {"GLY", 'G'}, {"Gly", 'G'}, {"ALA", 'A'}, {"Ala", 'A'}, {"VAL", 'V'}, {"Val", 'V'},
    {"LEU", 'L'}, {"Leu", 'L'}, {"ILE", 'I'}, {"Ile", 'I'}, {"SER", 'S'}, {"Ser", 'S'},
    {"THR", 'T'}, {"Thr", 'T'}, {"CYS", 'C'}, {"Cys", 'C'}, {"MET", 'M'}, {"Met", 'M'},
    {"MSE", 'X'}, {"PRO", 'P'}, {"Pro", 'P'}, {"UNK", 'X'}, {"ASP", 'D'}, {"Asp", 'D'},
    {"ASN", 'N'}, {"Asn", 'N'}, {"ASX", 'B'}, {"Asx", 'B'}, {"GLU", 'E'}, {"Glu", 'E'},
    {"GLN", 'Q'}, {"Gln", 'Q'}, {"GLX", 'Z'}, {"Glx", 'Z'}, {"LYS", 'K'}, {"Lys", 'K'},
    {"ARG", 'R'}, {"Arg", 'R'}, {"HIS", 'H'}, {"His", 'H'}, {"HSD", 'H'}, {"Hsd", 'H'},
    {"PHE", 'F'}, {"Phe", 'F'}, {"TYR", 'Y'}, {"Tyr", 'Y'}, {"TRP", 'W'}, {"Trp", 'W'},
};

struct Hydrophobicity {
  char code;
  double value;
};

constexpr Hydrophobicity kHydrophobicity[] = {
    {'A', 0.25},  {'B', -0.68}, {'C', 0.04},  {'D', -0.72}, {'E', -0.62}, {'F', 0.61},
    {'G', 0.16},  {'H', -0.40}, {'I', 0.73},  {'K', -1.10}, {'L', 0.53},  {'M', 0.26},
    {'N', -0.64}, {'P', -0.07}, {'Q', -0.69}, {'R', -1.76}, {'S', -0.26}, {'T', -0.18},
    {'V', 0.54},  {'W', 0.37},  {'Y', 0.02},  {'Z', -0.66},
};

constexpr char kUnknownCode = 'X';
constexpr char kGlycine = 'G';

// The profile's fields of an ATOM record: the name's columns 14-15, the residue name's three
// columns (a blank for each past the end of a short line).
ProfileAtom ProfileFields(const AtomRecord& record) {
  ProfileAtom atom{};
  const size_t nameLength = strnlen(record.name, sizeof(record.name));
  for (size_t k = 1; k < 3 && k < nameLength; ++k) atom.name[k - 1] = record.name[k];
  const size_t resnameLength = strnlen(record.resname, sizeof(record.resname));
  for (size_t k = 0; k < 3; ++k) atom.resname[k] = k < resnameLength ? record.resname[k] : ' ';
  atom.chain = record.chain;
  atom.resnum = record.resnum;
  atom.xyz[0] = record.x;
  atom.xyz[1] = record.y;
  atom.xyz[2] = record.z;
  return atom;
}

bool IsSideChainAtom(const char* name) {
  for (const char* sideChain : kSideChainNames)
    if (std::strcmp(name, sideChain) == 0) return true;
  return false;
}

ProfileResidue BlankProfileResidue() {
  ProfileResidue blank{};
  blank.code = ' ';
  blank.resnum = kResetResnum;
  return blank;
}

// The reading of one domain: the table being filled, the residue open in it and the sums of
// its side-chain atoms.
struct ProfileReading {
  Profile& profile;
  std::vector<Message>& messages;
  bool open = false;
  int resnum = 0;
  double sums[3] = {0.0, 0.0, 0.0};
  int count = 0;

  ProfileResidue& Current() { return profile.residue[static_cast<size_t>(profile.NumOfAA)]; }

  void Complete() {
    ProfileResidue& r = Current();
    for (int k = 0; k < 3; ++k)
      r.center[k] = (r.code == kGlycine || count == 0) ? r.ca[k] : sums[k] / count;
  }

  void Start(const ProfileAtom& atom) {
    if (open) Complete();
    open = true;
    resnum = atom.resnum;
    sums[0] = sums[1] = sums[2] = 0.0;
    count = 0;

    ++profile.NumOfAA;
    // The table has a record for every residue of the chain; a text holding more residues than
    // the chain reader kept (it tells insertion codes apart, this reader does not) still fits.
    while (profile.residue.size() <= static_cast<size_t>(profile.NumOfAA))
      profile.residue.push_back(BlankProfileResidue());
    // A residue without a CA keeps (0, 0, 0), whatever the record held before.
    ProfileResidue& r = Current();
    r = BlankProfileResidue();
    r.code = res_convert(atom.resname);
    r.resnum = atom.resnum;
    r.hydro = r.code == kUnknownCode ? 0.0 : AssignH(r.code, messages);
  }

  void Add(const ProfileAtom& atom) {
    ProfileResidue& r = Current();
    if (std::strcmp(atom.name, "CA") == 0) {
      for (int k = 0; k < 3; ++k) r.ca[k] = atom.xyz[k];
    } else if (IsSideChainAtom(atom.name)) {
      for (int k = 0; k < 3; ++k) sums[k] += atom.xyz[k];
      ++count;
    }
  }
};

void SetDistancesFromCentre(Profile& profile) {
  double centre[3] = {0.0, 0.0, 0.0};
  for (int i = 1; i <= profile.NumOfAA; ++i)
    for (int k = 0; k < 3; ++k) centre[k] += profile.residue[static_cast<size_t>(i)].center[k];
  for (int k = 0; k < 3; ++k) centre[k] /= profile.NumOfAA;
  for (int i = 1; i <= profile.NumOfAA; ++i) {
    ProfileResidue& r = profile.residue[static_cast<size_t>(i)];
    r.dist = cal_distance(centre[0], centre[1], centre[2], r.center[0], r.center[1], r.center[2]);
  }
}

[[noreturn]] void ReopenFailed(const ProfileSource& source) {
  Fail(Status::kProfileReopen, Stream::kStdout,
       Format("INPUT %s OPEN ERROR: QUIT\n", source.name.c_str()));
}

}  // namespace

std::shared_ptr<const AtomRecords> ReadProfileRecords(const ProfileSource& source) {
  std::shared_ptr<const AtomRecords> records = source.records->Read();
  if (records == nullptr) ReopenFailed(source);
  return records;
}

Profile ProcessPDB(const ProfileSource& source, const std::vector<DomainSegment>& segments,
                   int32_t ENDNUM, std::vector<Message>& messages) {
  std::shared_ptr<const AtomRecords> own;
  if (source.held == nullptr) own = ReadProfileRecords(source);
  const AtomRecords& records = source.held != nullptr ? *source.held : *own;

  Profile profile;
  profile.residue.assign(static_cast<size_t>(std::max(source.chainResidues, 0)) + 1,
                         BlankProfileResidue());
  ProfileReading reading{profile, messages};
  int lastResnum = kNoResidueSeen;
  char lastChain = ' ';
  // The stop rules are tested at every record before its type, END also ending the first model
  // (ENDMDL); the reading leaves one record after it has passed the domain's last residue in the
  // chain.
  for (const AtomRecord& record : records.records) {
    if (record.IsEnd()) break;
    if (record.kind == AtomRecord::kTer && lastChain == source.chain) break;
    if (lastResnum > ENDNUM && lastChain == source.chain) break;
    if (record.kind != AtomRecord::kAtom) continue;
    const ProfileAtom atom = ProfileFields(record);
    lastResnum = atom.resnum;
    lastChain = atom.chain;
    if (!Isindomain(segments, atom.resnum) || atom.chain != source.chain) continue;
    // Residues are told apart by number alone: 52 and 52A feed one residue.
    if (!reading.open || atom.resnum != reading.resnum) reading.Start(atom);
    reading.Add(atom);
  }
  if (reading.open) reading.Complete();
  if (profile.NumOfAA == 0) Fail(Status::kNoProfileResidue, Stream::kStdout, kNoResidueMessage);
  SetDistancesFromCentre(profile);
  return profile;
}

Profile ProfileOfResidues(const Structure& structure, const std::vector<int32_t>& members,
                          std::vector<Message>& messages) {
  Profile profile;
  profile.residue.assign(members.size() + 1, BlankProfileResidue());
  ProfileReading reading{profile, messages};
  for (int32_t index : members) {
    const Residue& residue = structure.residues[static_cast<size_t>(index)];
    const Atom* atoms = structure.AtomsOf(residue);
    ProfileAtom atom{};
    std::memcpy(atom.resname, residue.resname, sizeof(atom.resname));
    atom.chain = residue.chain;
    atom.resnum = residue.resnum;
    reading.Start(atom);
    for (int a = 0; a < residue.natoms; ++a) {
      std::strncpy(atom.name, atoms[a].name, sizeof(atom.name) - 1);
      atom.xyz[0] = atoms[a].x;
      atom.xyz[1] = atoms[a].y;
      atom.xyz[2] = atoms[a].z;
      reading.Add(atom);
    }
  }
  if (reading.open) reading.Complete();
  if (profile.NumOfAA > 0) SetDistancesFromCentre(profile);
  return profile;
}

int Isindomain(const std::vector<DomainSegment>& segments, int resnum) {
  for (const DomainSegment& segment : segments) {
    if (segment.start <= resnum && resnum <= segment.end) return 1;
  }
  return 0;
}

char res_convert(const char name[3]) {
  for (const NameCode& entry : kResidueCodes)
    if (std::strncmp(name, entry.name, 3) == 0) return entry.code;
  return kUnknownCode;
}

double AssignH(char code, std::vector<Message>& messages) {
  for (const Hydrophobicity& entry : kHydrophobicity)
    if (entry.code == code) return entry.value;
  messages.push_back(Message{Stream::kStdout, "Uncommon Char\n"});
  return 0.0;
}

double cal_distance(double x1, double y1, double z1, double x2, double y2, double z2) {
  double dx = x1 - x2;
  double dy = y1 - y2;
  double dz = z1 - z2;
  return std::sqrt(dx * dx + dy * dy + dz * dz);
}

}  // namespace quarnel
