// One list of the result-affecting options: each line gives an option's words when its value is
// not the default. A new option that changes results is a new line.
#include "report/result_options.h"

#include "base/text.h"

namespace quarnel {

namespace {

class OptionWords {
 public:
  void Add(bool differs, const std::string& words) {
    if (differs) text_ += (text_.empty() ? "" : " ") + words;
  }
  const std::string& text() const { return text_; }

 private:
  std::string text_;
};

std::string Real(const char* name, float value) { return Format("%s %g", name, static_cast<double>(value)); }
std::string Whole(const char* name, int value) { return Format("%s %d", name, value); }

}  // namespace

std::string RecordedOptions(const ResultSettings& o) {
  const Params& g = o.given;
  const Params d;
  OptionWords words;
  words.Add(g.FlagCa != d.FlagCa, "-ca");
  words.Add(g.FlagExtremes == 1, Format("-ex %d %d", g.Extreme1, g.Extreme2));  // sets -md 2
  words.Add(g.FlagExtremes != 1 && g.MaxNumDom != d.MaxNumDom, Whole("-md", g.MaxNumDom));
  words.Add(g.MinDomainSize != d.MinDomainSize, Whole("-ml", g.MinDomainSize));
  words.Add(g.NumSamplePoints != d.NumSamplePoints, Whole("-sp", g.NumSamplePoints));
  words.Add(g.MinSegRes != d.MinSegRes, Real("-ms", g.MinSegRes));
  words.Add(g.MaxLoop != d.MaxLoop, Whole("-mloop", g.MaxLoop));
  words.Add(g.MaxTerm != d.MaxTerm, Whole("-mterm", g.MaxTerm));
  words.Add(g.MaxBetaPass != d.MaxBetaPass, Whole("-mbpass", g.MaxBetaPass - 1));  // held as n + 1
  words.Add(g.MaxBetaPair != d.MaxBetaPair, Whole("-mbpair", g.MaxBetaPair - 1));
  words.Add(g.MaxTime != d.MaxTime, Real("-mt", g.MaxTime));
  words.Add(g.MinGlobularity != d.MinGlobularity, Real("-mg", g.MinGlobularity));
  words.Add(g.MaxInteraction != d.MaxInteraction, Real("-mi", g.MaxInteraction));
  words.Add(g.BBWeight != d.BBWeight, Real("-bw", g.BBWeight));
  words.Add(g.ResSep != d.ResSep, Whole("-rs", g.ResSep));
  words.Add(g.FlagSS != d.FlagSS, "-noss");
  words.Add(o.filterPlddt, Format("--min-plddt %g", o.minPlddt));
  words.Add(g.FlagSS == 1 && o.externalDssp, "--dssp external");
  words.Add(o.mode != DecisionMode::kClassic, std::string("--mode ") + DecisionModeName(o.mode));
  return words.text();
}

}  // namespace quarnel
