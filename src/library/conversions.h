// Between the library's public values and the run's own: options into a batch's options,
// atoms into records, a judged chain into a result.
#pragma once

#include <string>
#include <vector>

#include "app/batch_chains.h"
#include "app/batch_options.h"
#include "quarnel/quarnel.h"

namespace quarnel {

// The batch options the command line would make of the same settings (relaxed mode applied).
// Throws Error with status 2 for options that do not go together.
BatchOptions BatchOptionsOf(const Options& options);

// The atoms as records of one chain, closed as a chain's copy is (TER, END).
AtomRecords RecordsOf(const std::vector<PdbAtom>& atoms);

std::vector<DsspRow> DsspRowsOf(const SecondaryTable& table);

// One result per chain of an input, with the input's notes: those of a chain to its result,
// those of the input to each of its results.
std::vector<Result> ResultsOf(const Input& input, InputResult&& outcomes);

// The status a failed chain or input ends the command line with.
int StatusOf(const ChainOutcome& outcome);

}  // namespace quarnel
