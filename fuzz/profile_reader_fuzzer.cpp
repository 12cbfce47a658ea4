// Fuzz target: the assessment's profile reader on any PDB text, for a fixed two-segment domain
// of chain A, followed by the features and the network score of that domain.
#include <cmath>
#include <cstddef>
#include <cstdint>

#include "confidence/assessment.h"
#include "confidence/features.h"
#include "confidence/profile.h"
#include "confidence/testing.h"
#include "fuzz_support.h"
#include "output/domains.h"
#include "partition/partition.h"
#include "run/fatal.h"
#include "structure/pdb_names.h"
#include "structure/protein.h"

namespace {

// Residues -5 to 20 and 30A to 70 of chain A, with the cut scores of an accepted cut.
void SetDomain() {
  CHAIN = 'A';
  ProteinSize = 46;
  DomainNumber = 2;
  DomainDetail record{};
  record.segments = {DomainSegment{-5, ' ', 20, ' '}, DomainSegment{30, 'A', 70, ' '}};
  record.nseg = 2;
  record.cutscore[0] = 0.7f;
  record.cutscore[1] = 0.1f;
  record.cutscore[2] = 0.1f;
  domdetail.assign(2, record);
}

void ScoreDomain() {
  ProfileFeatures profile;
  GetProfileData(0, &profile);
  Require(NumOfAA >= 1 && static_cast<size_t>(NumOfAA) < residue.size(), "profile in the table");
  float vector[kNetworkInputs] = {profile.radiusRatio,
                                  static_cast<float>(profile.NumOfAA),
                                  static_cast<float>(profile.Fragnum),
                                  static_cast<float>(profile.positiveRows),
                                  static_cast<float>(profile.OUTcount),
                                  static_cast<float>(profile.crossings),
                                  domdetail[0].cutscore[0],
                                  domdetail[0].cutscore[1],
                                  domdetail[0].cutscore[2]};
  for (float feature : vector) Require(std::isfinite(feature), "a feature that is not finite");
  float score[1];
  testing(vector, score);
  Require(std::isfinite(score[0]), "a network score that is not finite");
  float confidence = calconf(score[0]);
  Require(confidence >= 4.7f && confidence <= 94.1f, "a confidence outside the table");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  StartIteration();
  SetDomain();
  TemplateName = WriteScratchFile("domain.pdb", data, size);
  PDBName = TemplateName;
  try {
    ScoreDomain();
  } catch (const FatalError& error) {
    // The file is readable: only "no residue of the domain" (15) may stop it.
    RequireDesignedStatus(error, {15});
  }
  return 0;
}
