// PDB text converted to mmCIF by gemmi, as a user converts a file with gemmi's own converter: the
// equivalence tests read the same entry in both formats.
#pragma once

#include <string>

namespace quarnel::test {

// The mmCIF text of the PDB text (entities set up from TER records and SEQRES). Old files whose
// columns 73-80 gemmi cannot read are converted with their atom records cut to 72 columns.
std::string ToMmcif(const std::string& pdbText, const std::string& name);

}  // namespace quarnel::test
