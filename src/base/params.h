// The settings of a run, with their defaults. The command line sets them once; the engine only
// reads them (the anchor mode that a run uses up lives in the run context, not here).
#pragma once

#include <cstdint>

namespace quarnel {

constexpr int32_t kDefaultMaxNumDom = 100;

struct Params {
  int32_t MaxNumDom = kDefaultMaxNumDom;  // -md; any other value makes the run relaxed
  int32_t MinDomainSize = 35;             // -ml
  float MinGlobularity = 0.52f;           // -mg
  float MaxInteraction = 0.56f;           // -mi
  float MaxTime = 0.4f;                   // -mt
  float MinSegRes = 35.0f;                // -ms (an integer value, held as a real)
  int32_t MaxBetaPair = 3;                // -mbpair n stores n + 1
  int32_t MaxBetaPass = 2;                // -mbpass n stores n + 1
  int32_t MaxLoop = 12;                   // -mloop
  int32_t MaxTerm = 12;                   // -mterm
  int32_t ResSep = 3;                     // -rs (a real value, truncated)
  float BBWeight = 5.0f;                  // -bw
  int32_t NumSamplePoints = 20;           // -sp
  int32_t NumExtremes = 30;               // residues tied to the source and to the sink
  int32_t FlagExtremes = 2;               // 2 automatic anchors (-el), 1 the user's (-ex)
  int32_t Extreme1 = 0;                   // residue numbers of the user's anchors
  int32_t Extreme2 = 0;
  int32_t FlagCa = 0;                     // -ca: contacts from CA atoms only
  int32_t FlagSS = 1;                     // -noss sets 0: no secondary structure
  int32_t FlagEva = 1;                    // -noeva sets 0 (changes nothing in this build)

  // A relaxed run loosens the cut criteria and is printed without the confidence assessment.
  bool Relaxed() const { return MaxNumDom != kDefaultMaxNumDom; }
};

// -mbpass n and -mbpair n allow n and store the bound n + 1, wrapping as 32-bit arithmetic does
// (through unsigned, to keep the wrap defined).
inline int32_t PlusOne(int value) { return static_cast<int32_t>(static_cast<uint32_t>(value) + 1u); }

// When MaxNumDom is not 100, the cut criteria are loosened whatever the command line said.
inline void ApplyRelaxedMode(Params& params) {
  if (!params.Relaxed()) return;
  params.MinGlobularity = 0.0f;
  params.MaxInteraction = 3000.0f;
  params.MaxTime = 3000.0f;
  params.MinSegRes = 0.0f;
  params.MaxBetaPair = 3000;
  params.MaxBetaPass = 3000;
  params.MinDomainSize = 0;
}

}  // namespace quarnel
