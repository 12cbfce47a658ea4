// Files made per chain for looking at its domains: PyMOL and ChimeraX scripts, one PDB file
// per domain, and an SVG of the contact map with the domains drawn on it.
#pragma once

#include <string>
#include <vector>

#include "base/temporary_files.h"
#include "report/outcome.h"

namespace quarnel {

// What one call wrote, and what it could not. Nothing is printed: the driver reports errors.
struct WrittenFiles {
  std::vector<std::string> paths;   // files written or replaced
  std::vector<std::string> errors;  // one line each: a file refused or that could not be written
  bool writeFailed = false;         // an error is the system's (a full disk, no permission)
};

// Each writer makes `folder` when missing and writes nothing for a failed chain. File names
// come from the outcome's file stem (SafeFileName). A file already there is replaced only when
// its first line is the one about to be written, i.e. it is the same kind of file made for the
// same input and chain by an earlier run; any other file of that name is left alone and
// reported. Files being written are listed in `temporaries` (may be null) until in place.

// <name>.pml, and <name>.pdb: a copy of the records the run read, which the script loads from its
// own folder, so that the picture shows exactly what was judged (one chain of a larger file,
// the first model) whatever the input's format, and the folder can be moved or shared.
WrittenFiles WritePymol(const ChainOutcome& outcome, const std::string& folder, TemporaryFiles* temporaries);

// <name>.cxc, with the same <name>.pdb copy.
WrittenFiles WriteChimerax(const ChainOutcome& outcome, const std::string& folder, TemporaryFiles* temporaries);

// <domain id>.pdb for each domain: the ATOM lines of its residues, TER, END.
WrittenFiles WriteDomainFiles(const ChainOutcome& outcome, const std::string& folder, TemporaryFiles* temporaries);

// <name>.svg: contact map, domains, sequence and secondary-structure tracks.
WrittenFiles WriteContactSvg(const ChainOutcome& outcome, const std::string& folder, TemporaryFiles* temporaries);

// The texts the writers write; `structureFile` is the copy's name, in the script's folder.
std::string PymolScript(const ChainOutcome& outcome, const std::string& structureFile);
std::string ChimeraxScript(const ChainOutcome& outcome, const std::string& structureFile);
std::string DomainPdb(const ChainOutcome& outcome, int place);
std::string ContactSvg(const ChainOutcome& outcome);
// The copy of the chain the scripts load: its records as read, a line saying whose copy it is.
std::string StructureCopy(const ChainOutcome& outcome);

// Letters, digits, '.', '_' and '-' kept, anything else '_'; never empty, never starting with
// '.' or '-' (no hidden file, no option).
std::string SafeFileName(const std::string& entry);

}  // namespace quarnel
