// The verdict on a partition: each domain's features are screened by a fixed rule and scored
// by the network; the partition stands or is handed back to be merged.
#include "confidence/assessment.h"

#include <exception>

namespace quarnel {

namespace {

// Scores are single precision but the bounds are decimals: comparing in double keeps the
// float nearest 0.4 (slightly above it) out of the low class.
constexpr double kLowScore = 0.4;
constexpr float kClearedScore = 0.95f;

struct ConfidenceStep {
  double upper;
  float confidence;
};

// Each tenth closed at its upper end.
constexpr ConfidenceStep kConfidenceSteps[] = {
    {0.1, 4.7f},  {0.2, 16.0f}, {0.3, 31.9f}, {0.4, 36.3f}, {0.5, 57.6f},
    {0.6, 63.3f}, {0.7, 68.8f}, {0.8, 80.0f}, {0.9, 83.5f},
};
constexpr float kTopConfidence = 94.1f;

// Compactness at least 0.6 with interaction and interface at most 0.2, or compactness at
// least 0.52 with both at most 0.05.
constexpr double kLooseCompact = 0.6;
constexpr double kLooseContact = 0.2;
constexpr double kTightCompact = 0.52;
constexpr double kTightContact = 0.05;

void FeatureVector(const ProfileSource& source, const DomainDetail& record,
                   std::vector<Message>& messages, float vector[kNetworkInputs]) {
  const ProfileFeatures profile = GetProfileData(source, record, messages);
  vector[0] = profile.radiusRatio;
  vector[1] = static_cast<float>(profile.NumOfAA);
  vector[2] = static_cast<float>(profile.Fragnum);
  vector[3] = static_cast<float>(profile.positiveRows);
  vector[4] = static_cast<float>(profile.OUTcount);
  vector[5] = static_cast<float>(profile.crossings);
  vector[6] = record.cutscore[0];
  vector[7] = record.cutscore[1];
  vector[8] = record.cutscore[2];
}

}  // namespace

Assessment Analyze(const ProfileSource& source, std::vector<DomainDetail>& records,
                   std::vector<Message>& messages, WorkerPool* workers) {
  struct DomainFeatures {
    float vector[kNetworkInputs];
    std::vector<Message> messages;
    std::exception_ptr failure;
  };
  std::vector<DomainFeatures> features(records.size());
  ForChunks(workers, static_cast<int>(records.size()), static_cast<int>(records.size()),
            [&](int d, int, int) {
              try {
                FeatureVector(source, records[d], features[d].messages, features[d].vector);
              } catch (...) {
                features[d].failure = std::current_exception();
              }
            });

  Assessment assessment;
  int flagged = 0;
  int low = 0;
  for (size_t d = 0; d < records.size(); ++d) {
    DomainDetail& record = records[d];
    messages.insert(messages.end(), features[d].messages.begin(), features[d].messages.end());
    if (features[d].failure) std::rethrow_exception(features[d].failure);
    const float* vector = features[d].vector;
    if (BeforeNN(vector) == 1) ++flagged;
    float score[1];
    testing(vector, score);
    assessment.scores.push_back(score[0]);
    record.confidence = calconf(score[0]);
    if (static_cast<double>(score[0]) <= kLowScore) ++low;
  }

  if (flagged == 0) {
    for (DomainDetail& record : records) record.confidence = calconf(kClearedScore);
    assessment.accepted = true;
  } else {
    assessment.accepted = low == 0;
  }
  return assessment;
}

int BeforeNN(const float features[9]) {
  double u = features[6];  // compactness
  double v = features[7];  // interaction
  double w = features[8];  // interface
  if (u >= kLooseCompact && v <= kLooseContact && w <= kLooseContact) return 0;
  if (u >= kTightCompact && v <= kTightContact && w <= kTightContact) return 0;
  return 1;
}

float calconf(float score) {
  double s = score;
  // A score that is not a number gets the lowest confidence, not the highest.
  for (const ConfidenceStep& step : kConfidenceSteps)
    if (!(s > step.upper)) return step.confidence;
  return kTopConfidence;
}

}  // namespace quarnel
