// The command line: defaults, each option's conversion, relaxed mode, the scan that reads values
// without skipping them, and the failures (usage exit, -ex without its two values).
#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

#include "run/fatal.h"
#include "run/options.h"
#include "run/parameters.h"
#include "support/test_support.h"

namespace {

class OptionsTest : public ::testing::Test {
 protected:
  void SetUp() override { StartCleanRun(); }

  // Parses `quarnel` followed by the given arguments and returns the input name.
  static std::string Parse(std::vector<std::string> args, const std::string& program = "quarnel") {
    args.insert(args.begin(), program);
    std::vector<char*> argv;
    for (std::string& arg : args) argv.push_back(&arg[0]);
    argv.push_back(nullptr);
    return ParseOptions(static_cast<int>(args.size()), argv.data());
  }

  static FatalError ParseFailure(std::vector<std::string> args) {
    try {
      Parse(std::move(args));
    } catch (const FatalError& error) {
      return error;
    }
    ADD_FAILURE() << "no failure raised";
    return FatalError{-1, Stream::kStdout, ""};
  }

  static void ExpectStrictCriteria() {
    EXPECT_FALSE(RelaxedRun);
    EXPECT_EQ(MinDomainSize, 35);
    EXPECT_FLOAT_EQ(MinGlobularity, 0.52f);
    EXPECT_FLOAT_EQ(MaxInteraction, 0.56f);
    EXPECT_FLOAT_EQ(MaxTime, 0.4f);
    EXPECT_FLOAT_EQ(MinSegRes, 35.0f);
    EXPECT_EQ(MaxBetaPair, 3);
    EXPECT_EQ(MaxBetaPass, 2);
  }

  static void ExpectRelaxedCriteria() {
    EXPECT_TRUE(RelaxedRun);
    EXPECT_EQ(MinDomainSize, 0);
    EXPECT_FLOAT_EQ(MinGlobularity, 0.0f);
    EXPECT_FLOAT_EQ(MaxInteraction, 3000.0f);
    EXPECT_FLOAT_EQ(MaxTime, 3000.0f);
    EXPECT_FLOAT_EQ(MinSegRes, 0.0f);
    EXPECT_EQ(MaxBetaPair, 3000);
    EXPECT_EQ(MaxBetaPass, 3000);
  }
};

TEST_F(OptionsTest, NoArgumentPrintsUsageAndExitsWithZero) {
  FatalError error = ParseFailure({});
  EXPECT_EQ(error.status, 0);
  EXPECT_EQ(error.stream, Stream::kStdout);
  EXPECT_EQ(error.text,
            "Usage: quarnel [-md n] [-ex r1 r2] ... file-name\n"
            "  e.g., quarnel 16pk.pdb\n");
}

TEST_F(OptionsTest, InputAloneKeepsEveryDefault) {
  // Start from settings a previous parse could have left.
  MaxNumDom = 7;
  MinDomainSize = 1;
  FlagCa = 1;
  PDBPATH = "/elsewhere/";
  EXPECT_EQ(Parse({"x.pdb"}), "x.pdb");
  EXPECT_EQ(MaxNumDom, 100);
  ExpectStrictCriteria();
  EXPECT_EQ(MaxLoop, 12);
  EXPECT_EQ(MaxTerm, 12);
  EXPECT_EQ(ResSep, 3);
  EXPECT_FLOAT_EQ(BBWeight, 5.0f);
  EXPECT_EQ(NumSamplePoints, 20);
  EXPECT_EQ(NumExtremes, 30);
  EXPECT_EQ(FlagExtremes, 2);
  EXPECT_EQ(FlagCa, 0);
  EXPECT_EQ(FlagSS, 1);
  EXPECT_EQ(FlagEva, 1);
  EXPECT_EQ(ReadFlag, 1);
  EXPECT_EQ(PDBPATH, "./");
  EXPECT_EQ(CHAINPATH, "./");
}

TEST_F(OptionsTest, DomainLimitOf100IsNotRelaxed) {
  Parse({"-md", "100", "x.pdb"});
  EXPECT_EQ(MaxNumDom, 100);
  ExpectStrictCriteria();
}

TEST_F(OptionsTest, OtherDomainLimitRelaxesTheCriteria) {
  Parse({"-md", "3", "x.pdb"});
  EXPECT_EQ(MaxNumDom, 3);
  ExpectRelaxedCriteria();
}

TEST_F(OptionsTest, RelaxedModeOverridesExplicitCriteria) {
  Parse({"-mg", "0.7", "-mi", "0.3", "-mt", "0.2", "-ms", "50", "-ml", "40", "-mbpair", "1",
         "-mbpass", "1", "-md", "4", "x.pdb"});
  ExpectRelaxedCriteria();
}

TEST_F(OptionsTest, RelaxedModeKeepsTheOtherSettings) {
  Parse({"-mloop", "5", "-mterm", "6", "-rs", "2", "-bw", "3.5", "-sp", "7", "-noss", "-md",
         "3", "x.pdb"});
  ExpectRelaxedCriteria();
  EXPECT_EQ(MaxLoop, 5);
  EXPECT_EQ(MaxTerm, 6);
  EXPECT_EQ(ResSep, 2);
  EXPECT_FLOAT_EQ(BBWeight, 3.5f);
  EXPECT_EQ(NumSamplePoints, 7);
  EXPECT_EQ(FlagSS, 0);
}

TEST_F(OptionsTest, UserAnchorsSetTwoDomainsAndRelaxedMode) {
  EXPECT_EQ(Parse({"-ex", "10", "120", "x.pdb"}), "x.pdb");
  EXPECT_EQ(FlagExtremes, 1);
  EXPECT_EQ(MaxNumDom, 2);
  EXPECT_EQ(Extreme1, 10);
  EXPECT_EQ(Extreme2, 120);
  ExpectRelaxedCriteria();
}

TEST_F(OptionsTest, AutomaticAnchorsAfterUserAnchorsKeepTheDomainLimit) {
  Parse({"-ex", "10", "120", "-el", "x.pdb"});
  EXPECT_EQ(FlagExtremes, 2);
  EXPECT_EQ(MaxNumDom, 2);
  EXPECT_TRUE(RelaxedRun);
}

TEST_F(OptionsTest, LaterDomainLimitOf100UndoesRelaxedModeOfUserAnchors) {
  Parse({"-ex", "10", "120", "-md", "100", "x.pdb"});
  EXPECT_EQ(FlagExtremes, 1);
  EXPECT_EQ(MaxNumDom, 100);
  ExpectStrictCriteria();
}

TEST_F(OptionsTest, EachOptionConvertsItsValue) {
  Parse({"-mbpair", "2", "-mbpass", "0", "-rs", "4.7", "-ms", "20.9", "-ml", "20", "-mt",
         "0.25", "-mg", "0.6", "-mi", "0.7", "-bw", "2.5", "-sp", "12", "-mloop", "8",
         "-mterm", "9", "x.pdb"});
  EXPECT_EQ(MaxBetaPair, 3);
  EXPECT_EQ(MaxBetaPass, 1);
  EXPECT_EQ(ResSep, 4);
  EXPECT_FLOAT_EQ(MinSegRes, 20.0f);
  EXPECT_EQ(MinDomainSize, 20);
  EXPECT_FLOAT_EQ(MaxTime, 0.25f);
  EXPECT_FLOAT_EQ(MinGlobularity, 0.6f);
  EXPECT_FLOAT_EQ(MaxInteraction, 0.7f);
  EXPECT_FLOAT_EQ(BBWeight, 2.5f);
  EXPECT_EQ(NumSamplePoints, 12);
  EXPECT_EQ(MaxLoop, 8);
  EXPECT_EQ(MaxTerm, 9);
  EXPECT_FALSE(RelaxedRun);
}

TEST_F(OptionsTest, RealValuesAreNarrowedToSinglePrecision) {
  Parse({"-mg", "0.1", "x.pdb"});
  EXPECT_EQ(MinGlobularity, 0.1f);
}

TEST_F(OptionsTest, NumbersFollowAtoiAndAtofSemantics) {
  Parse({"-sp", " 12abc", "-ml", "abc", "-mloop", "+3", "-mterm", "-4", "-rs", "-3.9", "-ms",
         "2.5", "-bw", "1e1", "x.pdb"});
  EXPECT_EQ(NumSamplePoints, 12);
  EXPECT_EQ(MinDomainSize, 0);
  EXPECT_EQ(MaxLoop, 3);
  EXPECT_EQ(MaxTerm, -4);
  EXPECT_EQ(ResSep, -3);
  EXPECT_FLOAT_EQ(MinSegRes, 2.0f);
  EXPECT_FLOAT_EQ(BBWeight, 10.0f);
}

TEST_F(OptionsTest, FlagsAreSet) {
  Parse({"-ca", "-noss", "-nodssp", "-noeva", "x.pdb"});
  EXPECT_EQ(FlagCa, 1);
  EXPECT_EQ(FlagSS, 0);
  EXPECT_EQ(ReadFlag, 0);
  EXPECT_EQ(FlagEva, 0);
}

TEST_F(OptionsTest, OptionNamesAreCaseSensitive) {
  Parse({"-MD", "3", "-Ca", "x.pdb"});
  EXPECT_EQ(MaxNumDom, 100);
  EXPECT_EQ(FlagCa, 0);
  EXPECT_FALSE(RelaxedRun);
}

TEST_F(OptionsTest, UnknownOptionsAreIgnored) {
  EXPECT_EQ(Parse({"-foo", "3", "--md", "3", "-md3", "x.pdb"}), "x.pdb");
  EXPECT_EQ(MaxNumDom, 100);
}

TEST_F(OptionsTest, ValuesAreScannedAsOptionsToo) {
  Parse({"-pdbpath", "-ca", "x.pdb"});
  EXPECT_EQ(PDBPATH, "-ca");
  EXPECT_EQ(FlagCa, 1);
}

TEST_F(OptionsTest, DirectoryPrefixIsCopiedVerbatim) {
  Parse({"-pdbpath", "/data/pdb", "x.pdb"});
  EXPECT_EQ(PDBPATH, "/data/pdb");
}

TEST_F(OptionsTest, OptionBeforeTheInputTakesTheInputAsItsValue) {
  EXPECT_EQ(Parse({"-md", "x.pdb"}), "x.pdb");
  EXPECT_EQ(MaxNumDom, 0);
  ExpectRelaxedCriteria();
}

TEST_F(OptionsTest, UserAnchorsWithOneValueTakeTheInputAsTheSecond) {
  EXPECT_EQ(Parse({"-ex", "10", "x.pdb"}), "x.pdb");
  EXPECT_EQ(FlagExtremes, 1);
  EXPECT_EQ(Extreme1, 10);
  EXPECT_EQ(Extreme2, 0);
}

TEST_F(OptionsTest, UserAnchorsWithoutTwoValuesStopTheRun) {
  for (const std::vector<std::string>& args :
       {std::vector<std::string>{"-ex", "x.pdb"}, std::vector<std::string>{"-md", "3", "-ex", "7"}}) {
    StartCleanRun();
    FatalError error = ParseFailure(args);
    EXPECT_EQ(error.status, kBadOptionStatus);
    EXPECT_EQ(error.stream, Stream::kStderr);
    EXPECT_NE(error.text.find("-ex"), std::string::npos) << error.text;
    ASSERT_FALSE(error.text.empty());
    EXPECT_EQ(error.text.back(), '\n');
    EXPECT_EQ(error.text.find('\n'), error.text.size() - 1) << error.text;
  }
}

TEST_F(OptionsTest, LaterOptionsOverwriteEarlierOnes) {
  Parse({"-md", "3", "-sp", "10", "-md", "5", "-sp", "30", "-pdbpath", "a/", "-pdbpath", "b/",
         "x.pdb"});
  EXPECT_EQ(MaxNumDom, 5);
  EXPECT_EQ(NumSamplePoints, 30);
  EXPECT_EQ(PDBPATH, "b/");
}

TEST_F(OptionsTest, LastArgumentIsTheInputEvenWhenItLooksLikeAnOption) {
  EXPECT_EQ(Parse({"-noss", "-ca"}), "-ca");
  EXPECT_EQ(FlagSS, 0);
  EXPECT_EQ(FlagCa, 0);
  EXPECT_EQ(Parse({"x.pdb", "-md"}), "-md");
  EXPECT_EQ(MaxNumDom, 100);
}

TEST_F(OptionsTest, ProgramNameIsScannedLikeAnyArgument) {
  Parse({"x.pdb"}, "-noss");
  EXPECT_EQ(FlagSS, 0);
}

}  // namespace
