// Input names: a PDB code with an optional chain letter becomes the path of the PDB file and
// of the single-chain or first-model copy that the run reads.
#pragma once

#include <string>

extern std::string TemplateName;  // the file read by the PDB reader and given to DSSP
extern std::string PDBName;       // PDBPATH + code + ".pdb"
extern std::string PDBBase;       // the code (first four characters)
extern std::string Entry;         // the name reported and used for the DSSP file
extern char ChainName;            // requested chain letter, blank when none
extern char CHAIN;                // chain the assessment reads

void PassName(std::string& name);
void CleanPDB();
