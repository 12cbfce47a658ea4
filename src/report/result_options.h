// The options that change what a chain's result is, recorded in every results file so that a
// resumed run appends only to results made the same way.
#pragma once

#include <string>

#include "base/params.h"
#include "run/chain.h"

namespace quarnel {

// What decides a chain's result besides its structure.
struct ResultSettings {
  Params given;                  // the classic options as given: relaxed mode rewrites the
                                 // criteria afterwards, whatever was given
  bool filterPlddt = false;      // --min-plddt
  double minPlddt = 0.0;
  bool externalDssp = false;     // secondary structure from the program of DSSP_PATH
  DecisionMode mode = DecisionMode::kClassic;
};

// The result-affecting options that differ from their defaults, as option words in one fixed
// order ("-noss -md 2 --min-plddt 70"); empty when every one has its default. Values are
// written as the run reads them (-ms 2.5 counts as 2, so it is recorded as -ms 2), so two
// command lines that give the same results record the same text.
std::string RecordedOptions(const ResultSettings& settings);

}  // namespace quarnel
