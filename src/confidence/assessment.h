// The verdict on a partition: features, screening rule, network score, confidence.
#pragma once

// 0 when the partition stands and has been printed; DomainNumber when it is rejected.
int Analyze();
int BeforeNN(const float features[9]);
float calconf(float score);
