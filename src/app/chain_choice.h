// Which chains of a structure file a batch run judges: the one a code or --chain names, or
// every protein chain; the whole file only where a classic command line was handed over.
#pragma once

#include <string>
#include <vector>

#include "app/batch_inputs.h"
#include "formats/structure_file.h"

namespace quarnel {

// The chains of a file that one input asks for: their ids ("" for the whole file).
struct ChainChoice {
  std::vector<std::string> ids;
  std::vector<std::string> notes;  // chains passed over, and why
  std::string error;
};

ChainChoice ChooseChains(const Input& input, const StructureFile& file, const BatchOptions& options);

// The chain of the file named `wanted`: as written, or, when that is not one, the only chain
// whose id differs from it in letter case alone; null when there is none.
const ChainInfo* FindChain(const StructureFile& file, const std::string& wanted);

// "A, B, (blank)": the chains of the file, for messages.
std::string ChainList(const StructureFile& file);

}  // namespace quarnel
