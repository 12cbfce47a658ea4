// The verdict on a partition: each domain's features are screened by a fixed rule and scored
// by the network; the partition stands or is handed back to be merged.
#pragma once

#include <vector>

#include "base/workers.h"
#include "confidence/features.h"
#include "confidence/testing.h"
#include "output/domains.h"

namespace quarnel {

struct Assessment {
  bool accepted = false;
  std::vector<float> scores;  // the network's score of each domain, in record order
};

// Judges a partition of two domains or more and stores each record's confidence. The domains'
// profiles are read on the pool's threads when there is a pool; what they note, and a failure,
// come out in domain order, as reading them one by one would give.
Assessment Analyze(const ProfileSource& source, std::vector<DomainDetail>& records,
                   std::vector<Message>& messages, WorkerPool* workers = nullptr);

// 0 when the domain is cleared by its cut scores alone, 1 when the network must judge it.
int BeforeNN(const float features[kNetworkInputs]);

// The confidence percentage of a network score.
float calconf(float score);

}  // namespace quarnel
