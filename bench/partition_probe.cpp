// Benchmark probe: runs a quarnel command line up to the domain records and prints the
// partition that the confidence assessment would judge (for relaxed runs, the partition that
// quarnel prints). Comparing it with quarnel's own report tells whether the assessment accepted
// the partition at once, after merging cuts back, or down to one domain.
#include <string>

#include "output/domains.h"
#include "partition/partition.h"
#include "run/driver.h"
#include "run/fatal.h"
#include "run/options.h"

namespace {

int ProbePartition(int argc, char** argv) {
  std::string name = ParseOptions(argc, argv);
  cut_history.assign(kInitialCutRecords, kEmptyCutRecord);
  CutDomainFirst(name);
  if (DomainNumber == 1)
    PrintOneDomain();
  else
    PrintDomain();
  return 0;
}

}  // namespace

int main(int argc, char** argv) { return RunWithFatalExit(ProbePartition, argc, argv); }
