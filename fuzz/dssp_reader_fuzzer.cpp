// Fuzz target: the DSSP reader on any text, applied to a fixed real chain (crambin, 46 residues)
// whose contact matrix has been built.
#include <cstddef>
#include <cstdint>
#include <vector>

#include "contacts/contacts.h"
#include "fuzz_support.h"
#include "run/fatal.h"
#include "structure/dssp.h"
#include "structure/pdb_names.h"
#include "structure/protein.h"

namespace {

void ReadFixedChain() {
  TemplateName = QUARNEL_FUZZ_CHAIN;
  GetProtein();
  Require(ProteinSize > 0, "the fixed chain is readable");
  ContactMatrix = ContactMalloc(ProteinSize, ProteinSize);
  ContactMatrixRows = ProteinSize;
  CalcContacts(Protein.data(), ProteinSize, ContactMatrix);
  for (Residue& r : Protein) {
    r.ss = 'L';
    r.bridge1 = -1;
    r.bridge2 = -1;
  }
}

std::vector<Contact> Snapshot() {
  std::vector<Contact> cells;
  for (int32_t i = 0; i < ProteinSize; ++i)
    for (int32_t j = 0; j < ProteinSize; ++j) cells.push_back(ContactMatrix[i][j]);
  return cells;
}

// The reader writes only strand and bridge weights, never a count or a distance, and leaves
// partners that are residue indices or none.
void RequireOnlyDesignedChanges(const std::vector<Contact>& before) {
  size_t cell = 0;
  for (int32_t i = 0; i < ProteinSize; ++i) {
    for (int32_t j = 0; j < ProteinSize; ++j, ++cell) {
      const Contact& now = ContactMatrix[i][j];
      const Contact& then = before[cell];
      Require(now.count == then.count && now.dist2 == then.dist2, "count or distance changed");
      Require(now.weight == then.weight || now.weight == kStrandWeight ||
                  now.weight == kBridgeWeight,
              "a weight other than the strand or bridge weight");
    }
  }
  for (const Residue& r : Protein) {
    for (int32_t partner : {r.bridge1, r.bridge2})
      Require(partner == -1 || (partner >= 0 && partner < ProteinSize), "partner out of range");
  }
  RequireConsistentContacts();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  StartIteration();
  ReadFixedChain();
  std::vector<Contact> before = Snapshot();
  std::string path = WriteScratchFile("chain.dssp", data, size);
  try {
    ProcessDSSP(path);
  } catch (const FatalError& error) {
    RequireDesignedStatus(error, {});  // the file is readable: no failure is designed
  }
  RequireOnlyDesignedChanges(before);
  return 0;
}
