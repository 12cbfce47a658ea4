// The scoring network on fixed vectors, the screening rule and the confidence steps at their
// bounds, and the profile reader's stop rules on literal record lines.
#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "confidence/assessment.h"
#include "confidence/profile.h"
#include "formats/pdb_records.h"

namespace quarnel {
namespace {

float Score(const std::vector<float>& in) {
  float out[1] = {-1.0f};
  EXPECT_EQ(testing(in.data(), out), 0);
  return out[0];
}

// Expected scores come from an independent float32 emulation of the network (Python, every
// decimal rounded straight to float32, the sum rounded after each connection), not from this
// code.
TEST(Network, FixedVectorsAgainstAnIndependentEmulation) {
  const float nan = std::numeric_limits<float>::quiet_NaN();
  const struct {
    std::vector<float> in;
    float score;
  } rows[] = {
      {{0, 0, 0, 0, 0, 0, 0, 0, 0}, 0x1.c05d24p-1f},
      {{0.6f, 120, 2, 3, 5, 1, 0.7f, 0.1f, 0.15f}, 0x1.4fe67ap-2f},
      {{0.3f, 80, 4, 6, 12, 2, 0.5f, 0.3f, 0.4f}, 0x1.1b2bacp-11f},
      {{0.45f, 35, 1, 0, 0, 0, 0.55f, 0.04f, 0.06f}, 0x1.744dc8p-1f},
      {{0.25f, 2, 1, 1, 0, 1, 0.02f, 0.01f, 0.03f}, 0x1.19be6p-9f},
      {{0.6666667f, 6, 1, 0, 6, 0, 0.6f, 0.19f, 0.15f}, 0x1.5baaaap-2f},
      {{0.6666667f, 6, 1, 0, 6, 0, 0.7f, 0.1f, 0.15f}, 0x1.cab754p-1f},
      {{0.6666667f, 6, 1, 0, 6, 0, 0.55f, 0.04f, 0.06f}, 0x1.9a6ee6p-1f},
      {{0.6666667f, 6, 1, 0, 6, 0, 0.9f, 0.1f, 0.1f}, 0x1.fd07c4p-1f},
      // Hidden unit 16's net input at exactly 10000 switches it off (activation 0, not 1)...
      {{0x1.f99b6p+5f, 0, 0, 0, 0, 0, 0, 0, 0}, 0x1.9b670ep-1f},
      // ...and at 9999 it is 1.0.
      {{0x1.f98e3ap+5f, 0, 0, 0, 0, 0, 0, 0, 0}, 0x1.4c6bbcp-1f},
      // Very negative nets give 0 through the logistic itself.
      {{-100, -100, -100, -100, -100, -100, -100, -100, -100}, 0x1.adb5b4p-1f},
      // A feature that is not a number switches every hidden unit off: the output bias alone.
      {{nan, 0, 0, 0, 0, 0, 0, 0, 0}, 0x1.9adb94p-2f},
  };
  for (const auto& row : rows) EXPECT_EQ(Score(row.in), row.score) << "input 0 = " << row.in[0];
  // Nothing of one call survives into the next.
  EXPECT_EQ(Score(rows[1].in), rows[1].score);
}

// Features and scores are single precision compared in double with decimal bounds: 0.1f, 0.2f,
// 0.3f, 0.4f and 0.6f lie above their decimals, 0.52f and 0.9f below.
TEST(Screening, BeforeNNAndConfidenceSteps) {
  const struct {
    float u, v, w;
    int flagged;
  } screens[] = {
      {0.7f, 0.1f, 0.15f, 0},   {0.6f, 0.2f - 1e-7f, 0.2f - 1e-7f, 0}, {0.7f, 0.2f, 0.1f, 1},
      {0.59f, 0.1f, 0.1f, 1},   {0.55f, 0.04f, 0.04f, 0}, {0.55f, 0.04f, 0.06f, 1},
      {0.52f, 0.04f, 0.04f, 1}, {0.53f, 0.05f, 0.05f, 1}, {0.53f, 0.049f, 0.049f, 0},
  };
  for (const auto& s : screens) {
    const float features[9] = {0, 0, 0, 0, 0, 0, s.u, s.v, s.w};
    EXPECT_EQ(BeforeNN(features), s.flagged) << s.u << " " << s.v << " " << s.w;
  }
  const struct {
    float score, confidence;
  } steps[] = {
      {0.0f, 4.7f},  {0.1f, 16.0f}, {std::nextafter(0.1f, 0.0f), 4.7f}, {0.3f, 36.3f},
      {0.4f, 57.6f}, {std::nextafter(0.4f, 0.0f), 36.3f}, {0.5f, 57.6f}, {0.75f, 80.0f},
      {0.9f, 83.5f}, {1.0f, 94.1f}, {std::numeric_limits<float>::quiet_NaN(), 4.7f},
  };
  for (const auto& s : steps) EXPECT_EQ(calconf(s.score), s.confidence) << s.score;
}

ProfileSource Source(const RecordSource& records, char chain) {
  return ProfileSource{&records, chain, "p.pdb", 10};
}

// The domain is residues 2-3 of chain A. Reading stops on the line after the first record of
// chain A numbered above the domain's last residue (ENDNUM), so the CG after residue 4 never
// reaches residue 3's centre; a TER stops it only after a record of the judged chain.
TEST(ProfileReader, StopRulesAndCentres) {
  const TextSource text("p.pdb",
                         "ATOM      1  CA  GLY A   1       1.000   0.000   0.000\n"
                         "ATOM      2  CA  GLY A   2       2.000   0.000   0.000\n"
                         "ATOM      3  CA  LEU B   9       9.000   0.000   0.000\n"
                         "TER\n"
                         "ATOM      4  CA  LEU A   3       3.000   0.000   0.000\n"
                         "ATOM      5  CB  LEU A   3       3.000   4.000   0.000\n"
                         "ATOM      6  CD1 LEU A   3       3.000   8.000   0.000\n"
                         "ATOM      7  CA  MSE A   4       4.000   0.000   0.000\n"
                         "ATOM      8  CG  LEU A   3       3.000  90.000   0.000\n"
                         "TER\n"
                         "ATOM      9  CA  GLY A   2       2.000   0.000   0.000\n");
  const PdbLineRecords lines(text);
  // With ENDNUM 99 only the TER stops the reading, after the CG. The records read once for
  // every profile of a chain read as the file read again does.
  const std::shared_ptr<const AtomRecords> records = ReadProfileRecords(Source(lines, 'A'));
  ProfileSource once = Source(lines, 'A');
  once.held = records.get();
  for (const auto& [endnum, centreY] : {std::pair<int32_t, double>{3, 6.0}, {99, 34.0}})
  for (const ProfileSource& source : {Source(lines, 'A'), once}) {
    std::vector<Message> messages;
    const Profile profile = ProcessPDB(source, {{2, ' ', 3, ' '}}, endnum, messages);
    ASSERT_EQ(profile.NumOfAA, 2) << endnum;
    const ProfileResidue& gly = profile.residue[1];
    const ProfileResidue& leu = profile.residue[2];
    EXPECT_EQ(gly.code, 'G');
    EXPECT_EQ(gly.resnum, 2);
    EXPECT_EQ(gly.center[0], 2.0);  // glycine: its CA
    EXPECT_DOUBLE_EQ(gly.hydro, 0.16);
    EXPECT_EQ(leu.code, 'L');
    EXPECT_EQ(leu.center[1], centreY) << endnum;  // the mean of its side-chain atoms
    EXPECT_DOUBLE_EQ(leu.dist, std::hypot(0.5, centreY / 2)) << endnum;
    EXPECT_TRUE(messages.empty());
  }
}

TEST(ProfileReader, DesignedFailures) {
  const TextSource otherChainText("p.pdb", "ATOM      1  CA  GLY B   2       2.000   0.000   0.000\n");
  const FileSource missingFile("/nonexistent/p.pdb");
  const PdbLineRecords otherChain(otherChainText), missing(missingFile);
  for (const auto& [lines, status] : {std::pair<const RecordSource*, int>{&otherChain, 15}, {&missing, 4}}) {
    std::vector<Message> messages;
    try {
      ProcessPDB(Source(*lines, 'A'), {{1, ' ', 5, ' '}}, 5, messages);
      ADD_FAILURE() << "no failure, status " << status << " expected";
    } catch (const Failure& failure) {
      EXPECT_EQ(failure.exit_status(), status);
    }
  }
}

}  // namespace
}  // namespace quarnel
