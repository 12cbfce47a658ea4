// Chains chosen by name (matched as written first, then in another letter case) or all the
// protein chains of a file in file order.
#include "app/chain_choice.h"

#include <cctype>

namespace quarnel {

namespace {

std::string Lower(std::string text) {
  for (char& c : text) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
  return text;
}

std::string Label(const ChainInfo& chain) { return chain.id.empty() ? std::string("(blank)") : chain.id; }

void EveryProteinChain(const StructureFile& file, ChainChoice& choice) {
  for (const ChainInfo& chain : file.chains()) {
    if (!chain.protein)
      choice.notes.push_back("chain " + Label(chain) + " skipped: not a protein chain");
    else if (chain.residues == 0)
      choice.notes.push_back("chain " + Label(chain) + " skipped: no ATOM records");
    else
      choice.ids.push_back(chain.id);
  }
  if (choice.ids.empty()) choice.error = "no protein chain (chains: " + ChainList(file) + ")";
}

}  // namespace

std::string ChainList(const StructureFile& file) {
  std::string list;
  for (const ChainInfo& chain : file.chains()) list += (list.empty() ? "" : ", ") + Label(chain);
  return list.empty() ? std::string("none") : list;
}

const ChainInfo* FindChain(const StructureFile& file, const std::string& wanted) {
  const ChainInfo* loose = nullptr;
  int looseCount = 0;
  for (const ChainInfo& chain : file.chains()) {
    if (chain.id == wanted) return &chain;
    if (Lower(chain.id) == Lower(wanted)) {
      loose = &chain;
      ++looseCount;
    }
  }
  return looseCount == 1 ? loose : nullptr;
}

ChainChoice ChooseChains(const Input& input, const StructureFile& file, const BatchOptions& options) {
  ChainChoice choice;
  const std::string wanted = !input.codeChain.empty() ? input.codeChain : options.chain;
  if (!wanted.empty()) {
    const ChainInfo* chain = FindChain(file, wanted);
    if (chain == nullptr)
      choice.error = "no chain " + wanted + " (chains: " + ChainList(file) + ")";
    else
      choice.ids.push_back(chain->id);
  } else if (options.wholeFile) {
    choice.ids.push_back(std::string());
  } else {
    EveryProteinChain(file, choice);
  }
  return choice;
}

}  // namespace quarnel
