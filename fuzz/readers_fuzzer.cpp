// Fuzz target: the three readers on one fuzzed text held in memory. The PDB reader reads it;
// the DSSP reader matches it to the residues found (or to three fixed ones); the profile reader
// takes a domain of residues -50 to 50 of the first residue's chain. Only designed failures may
// stop a reader, and what they return must hold together.
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <initializer_list>

#include "base/status.h"
#include "confidence/profile.h"
#include "formats/pdb_records.h"
#include "secondary/dssp_table.h"
#include "structure/protein.h"

namespace {

using quarnel::Failure;

[[noreturn]] void Broken(const char* what) {
  std::fprintf(stderr, "readers fuzz check failed: %s\n", what);
  std::abort();
}

void Check(bool holds, const char* what) {
  if (!holds) Broken(what);
}

void Designed(const Failure& failure, std::initializer_list<int> statuses) {
  for (int status : statuses)
    if (failure.exit_status() == status) return;
  std::fprintf(stderr, "status %d: %s", failure.exit_status(), failure.what());
  Broken("undesigned failure");
}

void CheckStructure(const quarnel::Structure& s) {
  int32_t index = 0, firstAtom = 0;
  for (const quarnel::Residue& r : s.residues) {
    Check(r.index == index++, "residue index is not its position");
    Check(r.firstAtom == firstAtom && r.natoms >= 1, "atoms are not residue after residue");
    firstAtom += r.natoms;
  }
  Check(firstAtom == static_cast<int32_t>(s.atoms.size()), "atoms of no residue");
  Check(4 * static_cast<int64_t>(s.size()) <= firstAtom, "too few atoms passed the sufficiency check");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  const quarnel::TextSource text("fuzz.pdb", std::string(reinterpret_cast<const char*>(data), size));
  const quarnel::PdbLineRecords records(text);
  quarnel::Structure structure;
  try {
    structure = quarnel::ReadStructure(records);
    CheckStructure(structure);
  } catch (const Failure& failure) {
    Designed(failure, {5, 100});  // refused format, too few atoms
  }

  std::vector<quarnel::Residue> residues = structure.residues;
  if (residues.empty()) {
    residues.resize(3);
    for (int i = 0; i < 3; ++i) residues[i].index = i, residues[i].resnum = i + 1, residues[i].icode = ' ';
  }
  const quarnel::SecondaryStructure table = quarnel::ReadDsspTable(text, residues);
  Check(table.ss.size() == residues.size() && table.bridge1.size() == residues.size() &&
            table.bridge2.size() == residues.size(), "table size");
  const int32_t n = static_cast<int32_t>(residues.size());
  for (int32_t i = 0; i < n; ++i) {
    Check(table.bridge1[i] >= -1 && table.bridge1[i] < n && table.bridge2[i] >= -1 && table.bridge2[i] < n,
          "bridge partner outside the chain");
    Check(table.ss[i] != ' ', "a blank secondary-structure letter");
  }

  const char chain = structure.size() > 0 ? structure.residues[0].chain : 'A';
  const quarnel::ProfileSource source{&records, chain, "fuzz.pdb", structure.size()};
  std::vector<quarnel::Message> messages;
  try {
    const quarnel::Profile profile = quarnel::ProcessPDB(source, {{-50, ' ', 50, ' '}}, 50, messages);
    Check(profile.NumOfAA >= 1, "an empty profile");
    Check(static_cast<size_t>(profile.NumOfAA) < profile.residue.size(), "profile size");
    for (int i = 1; i <= profile.NumOfAA; ++i) {
      const quarnel::ProfileResidue& r = profile.residue[static_cast<size_t>(i)];
      Check(r.resnum >= -50 && r.resnum <= 50, "a residue outside the domain");
      Check(!(r.dist < 0.0), "a negative distance");
    }
  } catch (const Failure& failure) {
    Designed(failure, {15});  // no residue of the domain
  }
  return 0;
}
