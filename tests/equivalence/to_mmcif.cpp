// gemmi's PDB reader and mmCIF writer, built into the equivalence tests only. Debian ships gemmi
// without its bundled stb_sprintf; the C library's snprintf writes the same numbers here.
#define USE_STD_SNPRINTF
#define GEMMI_WRITE_IMPLEMENTATION
#include "to_mmcif.h"

#include <gemmi/pdb.hpp>
#include <gemmi/polyheur.hpp>
#include <gemmi/to_cif.hpp>
#include <gemmi/to_mmcif.hpp>

#include <sstream>
#include <stdexcept>

namespace quarnel::test {
namespace {

// Old-style files keep an ID code and a serial number in columns 73-80, which gemmi's reader
// takes for a segment, an element and a charge, and refuses.
std::string CutAtomRecords(const std::string& text) {
  constexpr size_t kOldStyleWidth = 72;
  std::istringstream in(text);
  std::string out;
  for (std::string line; std::getline(in, line);) {
    if (line.compare(0, 6, "ATOM  ") == 0 || line.compare(0, 6, "HETATM") == 0)
      line = line.substr(0, kOldStyleWidth);
    out += line + '\n';
  }
  return out;
}

}  // namespace

std::string ToMmcif(const std::string& pdbText, const std::string& name) {
  gemmi::Structure structure;
  try {
    structure = gemmi::read_pdb_string(pdbText, name);
  } catch (const std::runtime_error&) {
    structure = gemmi::read_pdb_string(CutAtomRecords(pdbText), name);
  }
  gemmi::setup_entities(structure);
  std::ostringstream out;
  gemmi::cif::write_cif_to_stream(out, gemmi::make_mmcif_document(structure));
  return out.str();
}

}  // namespace quarnel::test
