// The six profile features of one domain: how hydrophobicity spreads from the centre outwards
// (moments by radius), how many residues lie far out, and the domain's size and segment count.
#include "confidence/features.h"

#include <algorithm>
#include <cmath>

namespace quarnel {

namespace {

constexpr char kUnknownCode = 'X';

// The far-residue threshold grows with the logarithm of the domain's size.
constexpr double kFarSlope = 12.35;
constexpr double kFarOffset = 28.0;

constexpr int32_t kFirstRadius = 4;
constexpr int32_t kMinRowCount = 3;
// No two points written in PDB coordinate columns (|x| < 10000) lie this far apart; a larger
// radius comes from malformed coordinates and would only grow the table without end.
constexpr double kMaxTableRadius = 100000.0;

// Rows holding fewer than this fraction of the profile's residues are passed over.
constexpr double kMinRowFraction = 0.08;
constexpr double kBalancedMoment = 0.0001;
constexpr double kSmallMoment = 5.0;

bool Known(const ProfileResidue& r) { return r.code != kUnknownCode; }

int32_t CountKnown(const Profile& profile) {
  int32_t count = 0;
  for (int i = 1; i <= profile.NumOfAA; ++i)
    if (Known(profile.residue[static_cast<size_t>(i)])) ++count;
  return count;
}

// True when the `depth` table rows ending at `index` all have a second moment below 5.0.
bool SmallMomentsUpTo(const std::vector<TabRow>& Tabdata, int index, int depth) {
  if (index - depth + 1 < 0) return false;
  for (int k = index - depth + 1; k <= index; ++k)
    if (!(Tabdata[static_cast<size_t>(k)].moment2 < kSmallMoment)) return false;
  return true;
}

// The scan of Processtab, condensed.
struct MomentScan {
  int negatives = 0;
  int32_t first = 0;   // F; stays 0 when no row taken has a negative second moment
  int32_t second = 0;  // S; stays 0 when there is no second negative row
  int rememberedRow = -1;
  int32_t positiveRows = 0;
  int32_t crossings = 0;
  int32_t run = 0;
  int32_t lastBalanced = 0;  // R
};

void ScanRow(MomentScan& scan, const TabRow& row, int index) {
  if (row.moment2 < 0.0 && scan.negatives == 0) {
    scan.first = row.radius;
    scan.run = 1;
    scan.negatives = 1;
  } else if (row.moment2 < 0.0 && scan.negatives == 1) {
    scan.second = row.radius;
    scan.negatives = 2;
  } else if (row.moment2 > 0.0 && scan.negatives == 1) {
    scan.rememberedRow = index;
  }
  if (row.moment2 > 0.0 && scan.negatives > 0) ++scan.positiveRows;
  if (row.moment2 > 0.0 && scan.crossings + 1 == scan.run) ++scan.crossings;
  if (row.moment2 < 0.0 && scan.run == scan.crossings && scan.crossings > 0) ++scan.run;
  if (-kBalancedMoment < row.moment0 && row.moment0 < kBalancedMoment)
    scan.lastBalanced = row.radius;
}

// The first negative radius, moved on when only a short run of weak positive rows separates
// it from the second one.
int32_t AdjustedFirstRadius(const std::vector<TabRow>& Tabdata, const MomentScan& scan) {
  int32_t gap = scan.second - scan.first;
  if (scan.positiveRows > 3) return scan.first;
  if (gap == 2 && scan.positiveRows == 1) return scan.first + 1;
  if (gap == 3 && scan.positiveRows == 2 && SmallMomentsUpTo(Tabdata, scan.rememberedRow, 2))
    return scan.first + 2;
  if (gap == 4 && scan.positiveRows == 3 && SmallMomentsUpTo(Tabdata, scan.rememberedRow, 3))
    return scan.first + 2;
  return scan.first;
}

}  // namespace

ProfileFeatures GetProfileData(const ProfileSource& source, const DomainDetail& record,
                               std::vector<Message>& messages) {
  const size_t count = std::min(record.segments.size(), static_cast<size_t>(std::max(record.nseg, 0)));
  const std::vector<DomainSegment> Domdata(record.segments.begin(),
                                           record.segments.begin() + static_cast<long>(count));
  // The largest end is a running maximum from 0, so a domain numbered entirely below zero is
  // read up to the chain's residue 0.
  int32_t ENDNUM = 0;
  for (const DomainSegment& segment : Domdata)
    if (segment.end > ENDNUM) ENDNUM = segment.end;

  return FeaturesOfProfile(ProcessPDB(source, Domdata, ENDNUM, messages), record.nseg);
}

ProfileFeatures FeaturesOfProfile(const Profile& profile, int32_t fragments) {
  HydroStats stats;
  TotalHydro(profile, stats);
  NormalizeH(profile, stats);
  NormalizeD(profile, stats);
  const std::vector<TabRow> Tabdata = CalculateH(profile, stats);
  return Processtab(Tabdata, profile.NumOfAA, fragments, stats.OUTcount);
}

void TotalHydro(const Profile& profile, HydroStats& stats) {
  stats.Totalh = 0.0;
  for (int i = 1; i <= profile.NumOfAA; ++i) {
    const ProfileResidue& r = profile.residue[static_cast<size_t>(i)];
    if (Known(r)) stats.Totalh += r.hydro;
  }
  int32_t count = CountKnown(profile);
  stats.Avgh = count > 0 ? stats.Totalh / count : 0.0;
}

void NormalizeH(const Profile& profile, HydroStats& stats) {
  double squares = 0.0;
  for (int i = 1; i <= profile.NumOfAA; ++i) {
    const ProfileResidue& r = profile.residue[static_cast<size_t>(i)];
    if (Known(r)) squares += (r.hydro - stats.Avgh) * (r.hydro - stats.Avgh);
  }
  int32_t count = CountKnown(profile);
  stats.NormH = count > 0 ? std::sqrt(squares / count) : 0.0;
}

void NormalizeD(const Profile& profile, HydroStats& stats) {
  // A distance threshold, held in single precision like the tool's other distances.
  const float threshold =
      static_cast<float>(kFarSlope * std::log(static_cast<double>(profile.NumOfAA)) - kFarOffset);
  stats.OUTcount = 0;
  double largest = 0.0;
  for (int i = 1; i <= profile.NumOfAA; ++i) {
    const ProfileResidue& r = profile.residue[static_cast<size_t>(i)];
    if (r.dist > threshold) ++stats.OUTcount;
    if (Known(r) && r.dist > largest) largest = r.dist;
  }
  stats.Maxd = largest + 1.0;
}

std::vector<TabRow> CalculateH(const Profile& profile, const HydroStats& stats) {
  std::vector<TabRow> Tabdata;
  // Residues of equal hydrophobicity leave nothing to normalise by; malformed coordinates can
  // put Maxd out of reach. Both give an empty table.
  if (!(stats.NormH > 0.0 && stats.Maxd <= kMaxTableRadius)) return Tabdata;
  for (int32_t r = kFirstRadius; r <= stats.Maxd; ++r) {
    int32_t n = 0;
    double s0 = 0.0;
    double s2 = 0.0;
    for (int i = 1; i <= profile.NumOfAA; ++i) {
      const ProfileResidue& res = profile.residue[static_cast<size_t>(i)];
      if (!Known(res) || !(res.dist <= r)) continue;
      double deviation = res.hydro - stats.Avgh;
      ++n;
      s0 += deviation;
      s2 += deviation * (res.dist * res.dist);
    }
    if (n >= kMinRowCount)
      Tabdata.push_back(TabRow{r, n, s0 / (n * stats.NormH), s2 / (n * stats.NormH)});
  }
  return Tabdata;
}

ProfileFeatures Processtab(const std::vector<TabRow>& Tabdata, int32_t NumOfAA, int32_t Fragnum,
                           int32_t OUTcount) {
  ProfileFeatures out{0.0f, NumOfAA, Fragnum, 0, OUTcount, 0};
  if (Tabdata.empty()) return out;

  MomentScan scan;
  scan.lastBalanced = Tabdata.back().radius;
  for (size_t i = 0; i < Tabdata.size(); ++i) {
    const TabRow& row = Tabdata[i];
    if (static_cast<double>(row.count) < kMinRowFraction * NumOfAA) continue;
    ScanRow(scan, row, static_cast<int>(i));
  }

  out.radiusRatio = static_cast<float>(static_cast<double>(AdjustedFirstRadius(Tabdata, scan)) /
                                       static_cast<double>(scan.lastBalanced));
  out.positiveRows = scan.positiveRows;
  out.crossings = scan.crossings;
  return out;
}

}  // namespace quarnel
