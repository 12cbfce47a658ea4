// The command-line scan: exact option names, values read from the following arguments without
// skipping them, later options overwriting earlier ones, and relaxed mode applied last.
#include "cli/options.h"

#include <cstdlib>
#include <cstring>

#include "base/status.h"
#include "base/text.h"

namespace quarnel {

namespace {

const char kUsage[] =
    "Usage: quarnel [-md n] [-ex r1 r2] ... file-name\n"
    "  e.g., quarnel 16pk.pdb\n";

// The values of the option at position i lie at i+1 .. i+count; the last of them may be the
// input name itself, but none may lie past it.
void RequireValues(int argc, const char* const* argv, int i, int count) {
  if (i + count > argc - 1) {
    Fail(Status::kBadOption, Stream::kStderr,
         Format("quarnel: option %s needs %s before the input name\n", argv[i],
                count == 1 ? "a value" : "two values"));
  }
}

// n allowed means a bound of n + 1; the wrap-around of 32-bit arithmetic is kept out of
// undefined behaviour by going through unsigned.
int32_t PlusOne(int value) { return static_cast<int32_t>(static_cast<uint32_t>(value) + 1u); }

}  // namespace

CommandLine ParseOptions(int argc, const char* const* argv) {
  if (argc < 2) Fail(Status::kUsage, Stream::kStdout, kUsage);
  CommandLine line;
  Params& p = line.params;

  for (int i = 0; i < argc - 1; ++i) {
    const char* arg = argv[i];
    auto is = [arg](const char* name) { return std::strcmp(arg, name) == 0; };
    auto intValue = [&](int offset) {
      RequireValues(argc, argv, i, offset);
      return std::atoi(argv[i + offset]);
    };
    auto realValue = [&](int offset) {
      RequireValues(argc, argv, i, offset);
      return static_cast<float>(std::atof(argv[i + offset]));
    };

    if (is("-ca")) {
      p.FlagCa = 1;
    } else if (is("-md")) {
      p.MaxNumDom = intValue(1);
    } else if (is("-ml")) {
      p.MinDomainSize = intValue(1);
    } else if (is("-sp")) {
      p.NumSamplePoints = intValue(1);
    } else if (is("-ms")) {
      p.MinSegRes = static_cast<float>(intValue(1));
    } else if (is("-mloop")) {
      p.MaxLoop = intValue(1);
    } else if (is("-mterm")) {
      p.MaxTerm = intValue(1);
    } else if (is("-mbpass")) {
      p.MaxBetaPass = PlusOne(intValue(1));
    } else if (is("-mbpair")) {
      p.MaxBetaPair = PlusOne(intValue(1));
    } else if (is("-mt")) {
      p.MaxTime = realValue(1);
    } else if (is("-mg")) {
      p.MinGlobularity = realValue(1);
    } else if (is("-mi")) {
      p.MaxInteraction = realValue(1);
    } else if (is("-bw")) {
      p.BBWeight = realValue(1);
    } else if (is("-rs")) {
      RequireValues(argc, argv, i, 1);
      p.ResSep = TruncToInt(std::atof(argv[i + 1]));
    } else if (is("-el")) {
      p.FlagExtremes = 2;
    } else if (is("-noss")) {
      p.FlagSS = 0;
    } else if (is("-nodssp")) {
      // The run decides by itself whether an earlier DSSP output may be reused.
    } else if (is("-noeva")) {
      p.FlagEva = 0;
    } else if (is("-pdbpath")) {
      RequireValues(argc, argv, i, 1);
      line.pdbPath = argv[i + 1];
    } else if (is("-ex")) {
      RequireValues(argc, argv, i, 2);
      p.FlagExtremes = 1;
      p.MaxNumDom = 2;
      p.Extreme1 = std::atoi(argv[i + 1]);
      p.Extreme2 = std::atoi(argv[i + 2]);
    }
  }

  ApplyRelaxedMode(p);
  line.input = argv[argc - 1];
  return line;
}

}  // namespace quarnel
