// DsspLibrary for the program that runs without DSSP's library. Linking libdssp brings libcifpp,
// Boost.Regex and ICU, whose loading costs about 4.5 ms at every start: half the time of a small
// chain's whole run. Classic runs never use the library, so the `quarnel` program is linked
// with this file in its place, and hands runs that need it to `quarnel-full` (app/handoff.cpp).
#include "secondary/dssp_library.h"

#include <stdexcept>

namespace quarnel {

struct DsspLibrary::Dictionary {};

DsspLibrary::DsspLibrary() = default;
DsspLibrary::~DsspLibrary() = default;

bool DsspLibrary::Linked() { return false; }

std::vector<DsspResidue> DsspLibrary::Residues(const std::vector<AtomRecord>&) const {
  throw std::runtime_error("DSSP's library is not linked into this program");
}

}  // namespace quarnel
