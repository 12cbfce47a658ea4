// Where the file of a PDB code may be kept: the classic run's <prefix><code>.pdb, and the names and
// folders of the PDB archive and of users' downloads.
#pragma once

#include <string>
#include <vector>

namespace quarnel {

// The names a code's file is looked for under, after the classic run's: the code in its own,
// lower and upper case, as .cif, .cif.gz, .pdb.gz, .ent.gz, .ent and pdb<code>.ent.gz, directly
// under the prefix and in the archive's divided layout (<prefix><middle two letters>/).
std::vector<std::string> CodeFileCandidates(const std::string& prefix, const std::string& code);

// The first candidate that can be read; empty when none can.
std::string FindCodeFile(const std::string& prefix, const std::string& code);

}  // namespace quarnel
