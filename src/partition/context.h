// The run context: everything a run changes besides its results, owned by the caller, so that
// runs are values and several can go on in one process.
#pragma once

#include <cstdint>
#include <vector>

#include "base/params.h"
#include "base/random.h"
#include "base/status.h"
#include "base/workers.h"
#include "partition/flow.h"

namespace quarnel {

struct RunContext {
  Rand48 random;           // the run's only source of random numbers
  int32_t anchorMode = 2;  // the anchor rule still to apply: 1 until the user's anchors are used
  std::vector<Message> messages;  // lines the run printed while going on, in order
  // Threads for the samples of a level; none (or a pool of one) computes them one by one.
  WorkerPool* workers = nullptr;
  std::vector<FlowScratch> flow;  // one per worker thread

  // A fresh run: the random stream from its initial state, the user's anchors pending.
  void Begin(const Params& params) {
    random = Rand48();
    anchorMode = params.FlagExtremes;
    messages.clear();
  }
};

}  // namespace quarnel
