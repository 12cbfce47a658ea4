// The atoms quarnel read, as DSSP's library takes them, and its rows matched to the residues.
#include "secondary/dssp_source.h"

#include <cstring>
#include <stdexcept>

#include "base/text.h"

namespace quarnel {

namespace {

template <size_t N, size_t M>
void Copy(char (&to)[N], const char (&from)[M]) {
  static_assert(N >= M, "field too small");
  std::memcpy(to, from, M);
}

// The fields of the atom's record that DSSP reads.
AtomRecord RecordOf(const Atom& atom) {
  AtomRecord record;
  Copy(record.name, atom.fullName);
  record.altloc = atom.altloc;
  Copy(record.resname, atom.resname);
  record.chain = atom.chain;
  record.resnum = atom.resnum;
  record.icode = atom.icode;
  record.x = atom.x;
  record.y = atom.y;
  record.z = atom.z;
  record.bfactor = atom.bfactor;
  Copy(record.element, atom.element);
  return record;
}

}  // namespace

std::vector<AtomRecord> DsspAtoms(const Structure& structure) {
  std::vector<AtomRecord> atoms;
  atoms.reserve(structure.atoms.size());
  for (const Atom& atom : structure.atoms) atoms.push_back(RecordOf(atom));
  return atoms;
}

SecondaryStructure MatchedRowsOrNone(const Structure& structure, const std::string& name,
                                     std::vector<Message>& messages,
                                     const std::function<std::vector<DsspRow>()>& rows) {
  std::vector<DsspRow> found;
  try {
    found = rows();
  } catch (const std::runtime_error& failure) {
    messages.push_back(Message{Stream::kStderr, Format("quarnel: %s: %s; going on without secondary structure\n",
                                                       name.c_str(), failure.what())});
  }
  return MatchDsspRows(found, structure.residues);
}

SecondaryStructure BuiltinDssp::Read(const Structure& structure, std::vector<Message>& messages) {
  return MatchedRowsOrNone(structure, name_, messages, [&] {
    std::vector<DsspRow> rows;
    for (const DsspResidue& residue : library_.Residues(DsspAtoms(structure))) rows.push_back(residue.row);
    return rows;
  });
}

}  // namespace quarnel
