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

// Names held in the table itself: no pointer to relocate, so the table stays read-only.
struct DesignedOption {
  char name[12];
  int values;
};

// In the order the designed scan compares them; names are matched whole, so only the first
// match can apply.
constexpr DesignedOption kDesignedOptions[] = {
    {"-ca", 0},     {"-md", 1},     {"-ml", 1},     {"-sp", 1},     {"-ms", 1},
    {"-mloop", 1},  {"-mterm", 1},  {"-mbpass", 1}, {"-mbpair", 1}, {"-mt", 1},
    {"-mg", 1},     {"-mi", 1},     {"-bw", 1},     {"-rs", 1},     {"-el", 0},
    {"-noss", 0},   {"-nodssp", 0}, {"-noeva", 0},  {"-pdbpath", 1}, {"-ex", 2},
};

}  // namespace

int DesignedOptionValues(const char* name) {
  for (const DesignedOption& option : kDesignedOptions)
    if (std::strcmp(name, option.name) == 0) return option.values;
  return -1;
}

void ApplyDesignedOption(const char* name, const char* const* values, Params& p,
                         std::string& pdbPath) {
  const std::string option = name;
  auto integer = [&](int k) { return std::atoi(values[k]); };
  auto real = [&](int k) { return static_cast<float>(std::atof(values[k])); };
  if (option == "-ca") p.FlagCa = 1;
  else if (option == "-md") p.MaxNumDom = integer(0);
  else if (option == "-ml") p.MinDomainSize = integer(0);
  else if (option == "-sp") p.NumSamplePoints = integer(0);
  else if (option == "-ms") p.MinSegRes = static_cast<float>(integer(0));
  else if (option == "-mloop") p.MaxLoop = integer(0);
  else if (option == "-mterm") p.MaxTerm = integer(0);
  else if (option == "-mbpass") p.MaxBetaPass = PlusOne(integer(0));
  else if (option == "-mbpair") p.MaxBetaPair = PlusOne(integer(0));
  else if (option == "-mt") p.MaxTime = real(0);
  else if (option == "-mg") p.MinGlobularity = real(0);
  else if (option == "-mi") p.MaxInteraction = real(0);
  else if (option == "-bw") p.BBWeight = real(0);
  else if (option == "-rs") p.ResSep = TruncToInt(std::atof(values[0]));
  else if (option == "-el") p.FlagExtremes = 2;
  else if (option == "-noss") p.FlagSS = 0;
  else if (option == "-noeva") p.FlagEva = 0;
  else if (option == "-pdbpath") pdbPath = values[0];
  else if (option == "-ex") {
    p.FlagExtremes = 1;
    p.MaxNumDom = 2;
    p.Extreme1 = integer(0);
    p.Extreme2 = integer(1);
  }
  // -nodssp: the run decides by itself whether an earlier DSSP output may be reused.
}

CommandLine ParseOptions(int argc, const char* const* argv) {
  if (argc < 2) Fail(Status::kUsage, Stream::kStdout, kUsage);
  CommandLine line;
  for (int i = 0; i < argc - 1; ++i) {
    const int values = DesignedOptionValues(argv[i]);
    if (values < 0) continue;
    RequireValues(argc, argv, i, values);
    ApplyDesignedOption(argv[i], argv + i + 1, line.params, line.pdbPath);
  }
  ApplyRelaxedMode(line.params);
  line.input = argv[argc - 1];
  return line;
}

}  // namespace quarnel
