// One more line on standard error for a classic run's designed failure that has a likely cause:
// what to do about it.
#pragma once

#include <string>

#include "app/classic_input.h"
#include "secondary/shell_dssp.h"

namespace quarnel {

// The hint for the failure, or empty. `dssp` is the run's DSSP when it got that far.
std::string HintFor(const Failure& failure, const CommandLine& line, const ResolvedInput& input,
                    const ShellDssp* dssp);

}  // namespace quarnel
