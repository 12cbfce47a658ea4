// Hydrophobic-moment and shape features of one domain's profile.
#pragma once

#include <cstdint>
#include <vector>

#include "confidence/profile.h"
#include "output/domains.h"

namespace quarnel {

struct TabRow {
  int32_t radius;
  int32_t count;
  double moment0;
  double moment2;
};

struct ProfileFeatures {
  float radiusRatio;
  int32_t NumOfAA;
  int32_t Fragnum;
  int32_t positiveRows;
  int32_t OUTcount;
  int32_t crossings;
};

// The hydrophobicity statistics of one profile.
struct HydroStats {
  double Totalh = 0.0;
  double Avgh = 0.0;
  double NormH = 0.0;
  int32_t OUTcount = 0;
  double Maxd = 0.0;
};

// Reads the domain's profile and derives its six features.
ProfileFeatures GetProfileData(const ProfileSource& source, const DomainDetail& record,
                               std::vector<Message>& messages);

// The six features of a profile read by any means; `fragments` is the domain's segment count.
ProfileFeatures FeaturesOfProfile(const Profile& profile, int32_t fragments);

void TotalHydro(const Profile& profile, HydroStats& stats);
void NormalizeH(const Profile& profile, HydroStats& stats);
void NormalizeD(const Profile& profile, HydroStats& stats);
std::vector<TabRow> CalculateH(const Profile& profile, const HydroStats& stats);
ProfileFeatures Processtab(const std::vector<TabRow>& Tabdata, int32_t NumOfAA, int32_t Fragnum,
                           int32_t OUTcount);

}  // namespace quarnel
