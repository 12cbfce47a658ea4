// Hydrophobic-moment and shape features of one domain's profile.
#pragma once

#include <cstdint>
#include <vector>

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

extern double Totalh;
extern double Avgh;
extern double NormH;
extern int32_t OUTcount;
extern double Maxd;
extern std::vector<TabRow> Tabdata;
extern int32_t Totaldnum;

void GetProfileData(int domain, ProfileFeatures* out);
void Initialization();
void TotalHydro();
void NormalizeH();
void NormalizeD();
void CalculateH();
void Processtab(ProfileFeatures* out);
