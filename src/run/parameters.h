// The run's settings: process-wide globals set from the command line once, at start-up, and
// only read afterwards (FlagExtremes and ReadFlag are the two that change later).
#pragma once

#include <cstdint>
#include <string>

extern int32_t MaxNumDom;        // -md; any value but 100 makes the run relaxed
extern int32_t MinDomainSize;    // -ml
extern float MinGlobularity;     // -mg
extern float MaxInteraction;     // -mi
extern float MaxTime;            // -mt
extern float MinSegRes;          // -ms (integer value, stored as a real)
extern int32_t MaxBetaPair;      // -mbpair n stores n + 1
extern int32_t MaxBetaPass;      // -mbpass n stores n + 1
extern int32_t MaxLoop;          // -mloop
extern int32_t MaxTerm;          // -mterm
extern int32_t ResSep;           // -rs (real value truncated)
extern float BBWeight;           // -bw
extern int32_t NumSamplePoints;  // -sp
extern int32_t NumExtremes;      // fixed: residues tied to source and to sink
extern int32_t FlagExtremes;     // 2 automatic anchors (-el), 1 user anchors (-ex), 0 used up
extern int32_t Extreme1, Extreme2;
extern int32_t FlagCa;           // -ca
extern int32_t FlagSS;           // -noss sets 0
extern int32_t FlagEva;          // -noeva sets 0
extern int32_t ReadFlag;         // 1 input named a file, -10 a PDB code (-nodssp sets 0)
extern std::string PDBPATH;      // -pdbpath, used verbatim as a prefix
extern std::string CHAINPATH;

// True when the run is relaxed (MaxNumDom other than 100 after parsing): looser cut criteria
// and no confidence assessment.
extern bool RelaxedRun;

// Default values, so that every run and every test starts from the same settings.
constexpr int32_t kDefaultMaxNumDom = 100;
void SetDefaultParameters();
