// The classic run: one input, read and reported exactly as quarnel always has: the file named
// read whole (a code's chain copied first), DSSP through the shell, the report line on
// standard output, a failure's designed message and status.
#pragma once

#include "app/classic_input.h"
#include "app/console.h"

namespace quarnel {

// Runs the classic command line; lines go to `console` as the run meets them. Returns the exit
// status; a designed failure is thrown, with a hint where it has a likely cause, after the
// lines the run printed before it.
int RunClassic(const CommandLine& line, Console& console);

// The engine's threads for one chain: QUARNEL_THREADS, or the machine's cores. `warning` is
// set when the variable holds no number of threads.
int EngineThreads(std::string& warning);

}  // namespace quarnel
