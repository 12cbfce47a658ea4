// The command-line scan: exact option names, values read from the following arguments without
// skipping them, later options overwriting earlier ones, and relaxed mode applied last.
#include "run/options.h"

#include <cstdlib>
#include <cstring>

#include "run/fatal.h"
#include "run/parameters.h"
#include "run/textio.h"

namespace {

const char kUsage[] =
    "Usage: quarnel [-md n] [-ex r1 r2] ... file-name\n"
    "  e.g., quarnel 16pk.pdb\n";

float RealValue(const char* text) { return static_cast<float>(std::atof(text)); }

// The values of the option at position i lie at i+1 .. i+count; the last of them may be the
// input name itself, but none may lie past it.
void RequireValues(int argc, char** argv, int i, int count) {
  if (i + count > argc - 1) {
    Fatal(kBadOptionStatus, Stream::kStderr,
          Format("quarnel: option %s needs %s before the input name\n", argv[i],
                 count == 1 ? "a value" : "two values"));
  }
}

}  // namespace

void ApplyRelaxedMode() {
  RelaxedRun = MaxNumDom != kDefaultMaxNumDom;
  if (!RelaxedRun) return;
  MinGlobularity = 0.0f;
  MaxInteraction = 3000.0f;
  MaxTime = 3000.0f;
  MinSegRes = 0.0f;
  MaxBetaPair = 3000;
  MaxBetaPass = 3000;
  MinDomainSize = 0;
}

std::string ParseOptions(int argc, char** argv) {
  SetDefaultParameters();
  if (argc < 2) Fatal(0, Stream::kStdout, kUsage);

  for (int i = 0; i < argc - 1; ++i) {
    const char* arg = argv[i];
    auto is = [arg](const char* name) { return std::strcmp(arg, name) == 0; };
    auto intValue = [&](int offset) {
      RequireValues(argc, argv, i, offset);
      return std::atoi(argv[i + offset]);
    };
    auto realValue = [&](int offset) {
      RequireValues(argc, argv, i, offset);
      return RealValue(argv[i + offset]);
    };

    if (is("-ca")) {
      FlagCa = 1;
    } else if (is("-md")) {
      MaxNumDom = intValue(1);
    } else if (is("-ml")) {
      MinDomainSize = intValue(1);
    } else if (is("-sp")) {
      NumSamplePoints = intValue(1);
    } else if (is("-ms")) {
      MinSegRes = static_cast<float>(intValue(1));
    } else if (is("-mloop")) {
      MaxLoop = intValue(1);
    } else if (is("-mterm")) {
      MaxTerm = intValue(1);
    } else if (is("-mbpass")) {
      // n passages allowed means a bound of n + 1; wrap-around like the C arithmetic would
      // give is kept out of undefined behaviour by going through unsigned.
      MaxBetaPass = static_cast<int32_t>(static_cast<uint32_t>(intValue(1)) + 1u);
    } else if (is("-mbpair")) {
      MaxBetaPair = static_cast<int32_t>(static_cast<uint32_t>(intValue(1)) + 1u);
    } else if (is("-mt")) {
      MaxTime = realValue(1);
    } else if (is("-mg")) {
      MinGlobularity = realValue(1);
    } else if (is("-mi")) {
      MaxInteraction = realValue(1);
    } else if (is("-bw")) {
      BBWeight = realValue(1);
    } else if (is("-rs")) {
      RequireValues(argc, argv, i, 1);
      ResSep = TruncToInt(std::atof(argv[i + 1]));
    } else if (is("-el")) {
      FlagExtremes = 2;
    } else if (is("-noss")) {
      FlagSS = 0;
    } else if (is("-nodssp")) {
      ReadFlag = 0;
    } else if (is("-noeva")) {
      FlagEva = 0;
    } else if (is("-pdbpath")) {
      RequireValues(argc, argv, i, 1);
      PDBPATH = argv[i + 1];
    } else if (is("-ex")) {
      RequireValues(argc, argv, i, 2);
      FlagExtremes = 1;
      MaxNumDom = 2;
      Extreme1 = std::atoi(argv[i + 1]);
      Extreme2 = std::atoi(argv[i + 2]);
    }
  }

  ApplyRelaxedMode();
  return argv[argc - 1];
}
