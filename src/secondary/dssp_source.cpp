// The atoms quarnel read, as DSSP's library takes them, and its table as the DSSP reader's text.
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

DsspAtom ToDsspAtom(const Atom& atom) {
  DsspAtom d{};
  d.serial = atom.serial;
  Copy(d.name, atom.fullName);
  d.altloc = atom.altloc;
  Copy(d.resname, atom.resname);
  d.chain = atom.chain;
  d.resnum = atom.resnum;
  d.icode = atom.icode;
  d.x = atom.x;
  d.y = atom.y;
  d.z = atom.z;
  d.occupancy = atom.occupancy;
  d.bfactor = atom.bfactor;
  Copy(d.element, atom.element);
  return d;
}

}  // namespace

std::unique_ptr<LineSource> BuiltinDssp::DsspOutput(const Structure& structure,
                                                    std::vector<Message>& messages) {
  std::vector<DsspAtom> atoms;
  atoms.reserve(structure.atoms.size());
  for (const Atom& atom : structure.atoms) atoms.push_back(ToDsspAtom(atom));
  try {
    return std::make_unique<TextSource>(name_ + ".dssp", library_.ClassicTable(atoms));
  } catch (const std::runtime_error& failure) {
    messages.push_back(Message{Stream::kStderr,
                               Format("quarnel: %s: %s; going on without secondary structure\n",
                                      name_.c_str(), failure.what())});
    return std::make_unique<TextSource>(name_ + " (no DSSP)", std::string());
  }
}

}  // namespace quarnel
