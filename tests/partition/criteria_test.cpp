// Cut acceptance at each threshold and the score formulas, on synthetic slices whose contact
// sums are set directly; then segment merging of candidate labellings.
#include <gtest/gtest.h>

#include <algorithm>
#include <sstream>

#include "partition/bipartition.h"

namespace quarnel {
namespace {

constexpr float R = kRejectedScore;
constexpr float N = kNoContactScore;

// Runs of residues along the chain labelled 0, 1, 0, ...; part 1 of the cut is label 0. Every
// contact sum sits on one residue pair: intra on the first residue of a label and the one ten
// after it, inter on the last residue of the first run and the one `sep` after it. `pairs`
// bridges and `passes` strand passages cross the cut.
struct CutRow {
  const char* name;
  std::vector<int> runs;
  int atoms1, atoms2, intra1, intra2, interW, interC;
  int pairs, passes, sep, maxNumDom;
  float maxTime;
  float score;
  CutScores record;
};

const CutRow kCutRows[] = {
    // name                            runs        atoms   intra  W  C  pr ps sep md  mt  score
    {"accepted",                       {35, 35},     70, 70, 70, 70, 14, 7, 0, 0, 5, 100, .4f, 2.6655562e-07f, {1, 1, .1f, .1f, .2f}},
    {"first part one residue short",   {34, 36},     70, 70, 70, 70, 14, 7, 0, 0, 5, 100, .4f, R, kRejectedCutScores},
    {"second part one residue short",  {36, 34},     70, 70, 70, 70, 14, 7, 0, 0, 5, 100, .4f, R, kRejectedCutScores},
    {"compactness at the bound",       {35, 35},     50, 70, 26, 70, 14, 7, 0, 0, 5, 100, .4f, 1.1829391e-06f, {0, 0, .26923078f, .1f, .24f}},
    {"compactness just below",         {35, 35},     50, 70, 25, 70, 14, 7, 0, 0, 5, 100, .4f, R, kRejectedCutScores},
    {"compactness just above",         {35, 35},     50, 70, 27, 70, 14, 7, 0, 0, 5, 100, .4f, 1.0969367e-06f, {.54f, 1, .25925925f, .1f, .24f}},
    {"interaction at the bound",       {35, 35},     70, 70, 50, 70, 28, 28, 0, 0, 5, 100, 10, 1.044898e-06f, {.71428573f, 1, 100, 100, .8f}},
    {"interaction just above",         {35, 35},     70, 70, 50, 70, 29, 29, 0, 0, 5, 100, 10, R, {.71428573f, 1, 100, 100, 500}},
    {"interaction just below",         {35, 35},     70, 70, 50, 70, 27, 27, 0, 0, 5, 100, 10, 1.0075802e-06f, {.71428573f, 1, .54f, .38571429f, .77142859f}},
    {"segment length at the bound",    {35, 35, 35}, 140, 70, 140, 70, 14, 7, 0, 0, 5, 100, .4f, 1.9991671e-07f, {1, 1, .05f, .1f, .15f}},
    {"segment length just below",      {34, 35, 35}, 140, 70, 140, 70, 14, 7, 0, 0, 5, 100, .4f, R, {1, 1, .05f, .1f, 500}},
    {"segment length just above",      {36, 35, 35}, 140, 70, 140, 70, 14, 7, 0, 0, 5, 100, .4f, 1.943249e-07f, {1, 1, .05f, .1f, .15f}},
    {"two bridge pairs across",        {35, 35},     70, 70, 70, 70, 14, 7, 2, 0, 5, 100, .4f, 2.6655562e-07f, {1, 1, .1f, .1f, .2f}},
    {"three bridge pairs across",      {35, 35},     70, 70, 70, 70, 14, 7, 3, 0, 5, 100, .4f, R, {1, 1, .1f, .1f, 500}},
    {"one strand passage",             {35, 35, 35}, 140, 70, 140, 70, 14, 7, 0, 1, 5, 100, .4f, 1.9991671e-07f, {1, 1, .05f, .1f, .15f}},
    {"two strand passages",            {35, 35, 35}, 140, 70, 140, 70, 14, 7, 0, 2, 5, 100, .4f, R, {1, 1, .05f, .1f, 500}},
    {"interface at the bound",         {35, 35},     70, 70, 70, 70, 14, 14, 0, 0, 5, 100, .4f, 2.6655562e-07f, {1, 1, .2f, .2f, .4f}},
    {"interface just above",           {35, 35},     70, 70, 70, 70, 14, 15, 0, 0, 5, 100, .4f, R, {1, 1, .21428572f, .21428572f, 500}},
    {"interface just below",           {35, 35},     70, 70, 70, 70, 14, 13, 0, 0, 5, 100, .4f, 2.6655562e-07f, {1, 1, .18571429f, .18571429f, .37142858f}},
    {"no weighted contact across",     {35, 35},     70, 70, 70, 70, 0, 0, 0, 0, 5, 100, .4f, N, {1, 1, 0, 0, 0}},
    {"contact ResSep apart counts not", {35, 35},    70, 70, 70, 70, 14, 7, 0, 0, 3, 100, .4f, N, {1, 1, 0, 0, 0}},
    {"contact ResSep+1 apart counts",  {35, 35},     70, 70, 70, 70, 14, 7, 0, 0, 4, 100, .4f, 2.6655562e-07f, {1, 1, .1f, .1f, .2f}},
    {"two domains: logarithmic score", {35, 35},     70, 70, 70, 70, 14, 7, 0, 0, 5, 2, .4f, -15.137683f, {1, 1, .1f, .1f, .2f}},
    {"two domains: no beta penalty",   {35, 35},     70, 70, 70, 70, 14, 7, 1, 1, 5, 2, .4f, -15.137683f, {1, 1, .1f, .1f, .2f}},
    {"relaxed: beta penalties",        {35, 35},     70, 70, 70, 70, 14, 7, 1, 1, 5, 3, .4f, 2.6655562e-05f, {1, 1, .1f, .1f, .2f}},
};

void SetContact(ContactMap& map, int i, int j, int weight, int count) {
  map.SetContact(i, j, weight, count);
}

TEST(GoodDomainCut, ThresholdsAndScores) {
  for (const CutRow& row : kCutRows) {
    SCOPED_TRACE(row.name);
    std::vector<Residue> slice;
    std::vector<int> first(2, -1), size(2, 0);
    for (size_t run = 0; run < row.runs.size(); ++run) {
      for (int k = 0; k < row.runs[run]; ++k) {
        Residue r{};
        r.index = static_cast<int32_t>(slice.size());
        r.part = static_cast<int32_t>(run % 2);
        r.natoms = 1;
        r.ss = 'L';
        r.bridge1 = r.bridge2 = kNoPartner;
        if (first[r.part] < 0) first[r.part] = r.index;
        size[r.part] += 1;
        slice.push_back(r);
      }
    }
    slice[first[0]].natoms += row.atoms1 - size[0];
    slice[first[1]].natoms += row.atoms2 - size[1];
    const int n = static_cast<int>(slice.size());
    ContactMap map(n);
    SetContact(map, first[0], first[0] + 10, 0, row.intra1);
    SetContact(map, first[1], first[1] + 10, 0, row.intra2);
    const int last = row.runs[0] - 1;
    SetContact(map, last, last + row.sep, row.interW, row.interC);
    for (int m = 0; m < row.pairs; ++m) slice[last - m].bridge1 = last + row.sep + m;
    for (int b = 0, end = 0; b < row.passes; ++b) {
      end += row.runs[b];
      slice[end - 1].ss = slice[end].ss = 'E';
    }
    std::stable_sort(slice.begin(), slice.end(),
                     [](const Residue& a, const Residue& b) { return a.part < b.part; });

    Params params;
    params.MaxNumDom = row.maxNumDom;
    params.MaxTime = row.maxTime;
    ApplyRelaxedMode(params);
    CutScores got{};
    EXPECT_FLOAT_EQ(GoodDomainCut(params, map, slice.data(), size[0], n, &got), row.score);
    const float want[5] = {row.record.compact1, row.record.compact2, row.record.inter1,
                           row.record.inter2, row.record.interface};
    const float have[5] = {got.compact1, got.compact2, got.inter1, got.inter2, got.interface};
    for (int k = 0; k < 5; ++k) EXPECT_FLOAT_EQ(have[k], want[k]) << "record field " << k;
  }
}

// "0*20 1*3" is twenty residues labelled 0, then three labelled 1.
std::string Expand(const std::string& runs) {
  std::istringstream in(runs);
  std::string text;
  for (std::string run; in >> run;) text += std::string(std::stoul(run.substr(2)), run[0]);
  return text;
}

struct MergeRow {
  const char* name;
  const char* labels;
  std::vector<int> bridged;  // positions with a bridge partner
  int firstIndex, maxLoop, maxTerm;
  const char* parts;
  const char* marks;
};

const MergeRow kMergeRows[] = {
    {"one label", "0*40", {}, 0, 12, 12, "0*40", "0*40"},
    {"short loop", "0*20 1*3 0*20", {}, 0, 12, 12, "0*43", "0*20 1*3 0*20"},
    {"loop of MaxLoop residues", "0*20 1*12 0*20", {}, 0, 12, 12, "0*52", "0*20 1*12 0*20"},
    {"loop one longer", "0*20 1*13 0*20", {}, 0, 12, 12, "0*20 1*13 0*20", "0*53"},
    {"loop held by two bridged residues", "0*20 1*3 0*20", {21, 22}, 0, 12, 12, "0*20 1*3 0*20", "0*43"},
    {"loop with one bridged residue", "0*20 1*3 0*20", {21}, 0, 12, 12, "0*43", "0*20 1*3 0*20"},
    {"equal loops: the earlier first", "0*20 1*3 0*3 1*20", {}, 0, 12, 12, "0*26 1*20", "0*20 1*3 0*23"},
    {"head of MaxTerm residues", "1*12 0*40", {}, 0, 12, 12, "0*52", "2*12 0*40"},
    {"head one longer", "1*13 0*40", {}, 0, 12, 12, "1*13 0*40", "0*53"},
    {"tail of MaxTerm residues", "0*40 1*12", {}, 0, 12, 12, "0*52", "0*40 2*12"},
    {"head at the chain start: MaxTerm", "1*12 0*40", {}, 0, 5, 20, "0*52", "2*12 0*40"},
    {"head inside the chain: MaxLoop", "1*12 0*40", {}, 10, 5, 20, "1*12 0*40", "0*52"},
    {"two short segments", "1*3 0*3", {}, 0, 12, 12, "0*6", "2*6"},
};

TEST(MergeSegments, LoopsAndTails) {
  for (const MergeRow& row : kMergeRows) {
    SCOPED_TRACE(row.name);
    const std::string labels = Expand(row.labels);
    std::vector<Residue> slice(labels.size());
    for (size_t i = 0; i < labels.size(); ++i) {
      slice[i].index = row.firstIndex + static_cast<int32_t>(i);
      slice[i].part = labels[i] - '0';
      slice[i].bridge1 = slice[i].bridge2 = kNoPartner;
    }
    for (int i : row.bridged) slice[i].bridge2 = 0;
    Params params;
    params.MaxLoop = row.maxLoop;
    params.MaxTerm = row.maxTerm;
    MergeSegments(params, slice.data(), static_cast<int>(slice.size()));
    std::string parts, marks;
    for (const Residue& r : slice) {
      parts += static_cast<char>('0' + r.part);
      marks += static_cast<char>('0' + r.merged);
    }
    EXPECT_EQ(parts, Expand(row.parts));
    EXPECT_EQ(marks, Expand(row.marks));
  }
}

}  // namespace
}  // namespace quarnel
