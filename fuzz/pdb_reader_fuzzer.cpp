// Fuzz target: the PDB reader on any bytes, then the contact matrix of what it read.
#include <cstddef>
#include <cstdint>

#include "contacts/contacts.h"
#include "fuzz_support.h"
#include "run/fatal.h"
#include "structure/pdb_names.h"
#include "structure/protein.h"

namespace {

// The contact matrix is quadratic in residues; larger chains are only read.
constexpr int32_t kLargestChainForContacts = 600;

void BuildContacts() {
  ContactMatrix = ContactMalloc(ProteinSize, ProteinSize);
  ContactMatrixRows = ProteinSize;
  CalcContacts(Protein.data(), ProteinSize, ContactMatrix);
  RequireConsistentContacts();
  // With the default backbone weight of 5 every contact adds at least 1 to the weight.
  for (int32_t i = 0; i < ProteinSize; ++i)
    for (int32_t j = 0; j < ProteinSize; ++j)
      Require(ContactMatrix[i][j].weight >= ContactMatrix[i][j].count, "weight below count");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  StartIteration();
  TemplateName = WriteScratchFile("structure.pdb", data, size);
  try {
    GetProtein();
    RequireConsistentProtein();
    Require(4 * static_cast<int64_t>(ProteinSize) <= static_cast<int64_t>(AtomPool.size()),
            "the sufficiency check lets no thin structure through");
    if (ProteinSize <= kLargestChainForContacts) BuildContacts();
  } catch (const FatalError& error) {
    // The file is readable: only the sufficiency check (100) may stop it, or the refusal of a
    // file in another format (5).
    if (IsRefusedFormat(std::string(reinterpret_cast<const char*>(data), size)))
      RequireDesignedStatus(error, {5, 100});
    else
      RequireDesignedStatus(error, {100});
  }
  return 0;
}
