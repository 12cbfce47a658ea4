// The run, in order: input, residues, contacts, secondary structure, partition, domain
// records, then the report (relaxed runs) or the assessment loop.
#include "run/driver.h"

#include <unistd.h>

#include <cctype>
#include <cstdio>
#include <cstdlib>

#include "confidence/assessment.h"
#include "contacts/contacts.h"
#include "output/domains.h"
#include "partition/partition.h"
#include "run/fatal.h"
#include "run/options.h"
#include "run/parameters.h"
#include "run/textio.h"
#include "structure/dssp.h"
#include "structure/pdb_names.h"
#include "structure/protein.h"

namespace {

// Shell commands carry file names as single quoted words, so that a name with blanks, quotes,
// ';' or '$(...)' is passed on and never executed, and a name beginning with '-' is never read
// as an option. DSSP_PATH is used as the user wrote it: it may carry options of its own.
void RunShell(const std::string& command) {
  std::fflush(stdout);
  std::fflush(stderr);
  int ignored = std::system(command.c_str());
  (void)ignored;  // neither DSSP's, chmod's nor rm's status changes the run
}

void RunDSSP(const std::string& dsspFile) {
  const char* dssp = std::getenv("DSSP_PATH");
  if (dssp == nullptr) Fatal(1, Stream::kStdout, "DSSP excutable ($DSSP_PATH) undefined. Quit!\n");
  std::string quotedOut = ShellFileWord(dsspFile);
  RunShell(std::string(dssp) + " " + ShellFileWord(TemplateName) + " > " + quotedOut +
           " 2>dssp.log; /bin/chmod  a+rw " + quotedOut);
}

// The run holds the whole chain's contact matrix and, while the top level is searched, the
// level's copy of it: two dense n x n matrices. A chain for which they cannot fit in this
// machine's memory stops here, with the contact matrix's allocation failure, instead of being
// killed by the system halfway through.
constexpr double kUsableMemoryShare = 0.75;

void RequireMemoryForContacts(int residues) {
  long pages = sysconf(_SC_PHYS_PAGES);
  long pageSize = sysconf(_SC_PAGE_SIZE);
  if (pages <= 0 || pageSize <= 0) return;
  double physical = static_cast<double>(pages) * static_cast<double>(pageSize);
  double needed = 2.0 * static_cast<double>(residues) * static_cast<double>(residues) *
                  static_cast<double>(sizeof(Contact));
  if (needed <= kUsableMemoryShare * physical) return;
  std::fprintf(stderr,
               "quarnel: %d residues need %.1f GB for their contact matrices; this machine has "
               "%.1f GB\n",
               residues, needed / 1e9, physical / 1e9);
  AllocationFailed();
}

bool CanRead(const std::string& path) {
  std::FILE* file = std::fopen(path.c_str(), "r");
  if (file == nullptr) return false;
  std::fclose(file);
  return true;
}

}  // namespace

void CutDomainFirst(std::string& name) {
  TemplateName = name;
  std::string base;
  if (CanRead(name)) {
    // A named file: the entry is its name up to the first '.', wherever that stands.
    size_t dot = name.find('.');
    if (dot != std::string::npos) name.resize(dot);
    base = name;
    PDBBase = name;
    Entry = name;
    ReadFlag = 1;
  } else {
    base = name;
    Entry = name;
    PassName(name);
    CleanPDB();
    ReadFlag = -10;
  }

  GetProtein();

  // The assessment reads the chain that was partitioned: on the file path, that of the
  // first residue read.
  if (ReadFlag == 1)
    CHAIN = ProteinSize > 0 ? Protein[0].chain : ' ';
  else
    CHAIN = static_cast<char>(std::toupper(static_cast<unsigned char>(ChainName)));

  RequireMemoryForContacts(ProteinSize);
  ContactMatrix = ContactMalloc(ProteinSize, ProteinSize);
  ContactMatrixRows = ProteinSize;
  CalcContacts(Protein.data(), ProteinSize, ContactMatrix);

  SetSecondaryStructureDefaults();

  if (FlagSS == 1) {
    std::string dsspFile = base + ".dssp";
    if (ReadFlag != 1 && CanRead(dsspFile)) {
      // A code whose DSSP output is already here: read it without running DSSP.
    } else {
      RunDSSP(dsspFile);
    }
    ProcessDSSP(dsspFile);
  }

  DomainNumber = 1;
  DomainParition(Protein.data(), ProteinSize);
  OutputDomains(base);
}

void AssessmentLoop() {
  int n = Analyze();
  while (n != 0) {
    n = n - 1;
    DomainNumber = DomainNumber - 1;
    if (n == 1) {
      PrintOneDomain();
      FreeDomDetail(DomainNumber + 1);
      return;
    }

    const CutRecord& undone = cut_history[static_cast<size_t>(n - 1)];
    int parent = undone.parent;
    bool found = false;
    float scores[3] = {0.0f, 0.0f, 0.0f};
    for (int r = n - 2; r >= 0; --r) {
      const CutRecord& earlier = cut_history[static_cast<size_t>(r)];
      if (earlier.parent == parent) {
        scores[0] = earlier.parentCompact;
        scores[1] = earlier.parentInter;
        scores[2] = earlier.interface;
        found = true;
        break;
      }
      if (earlier.newDomainAgain == parent) {
        scores[0] = earlier.newCompact;
        scores[1] = earlier.newInter;
        scores[2] = earlier.interface;
        found = true;
        break;
      }
    }

    if (found) {
      for (Residue& r : Protein) {
        if (r.domain == n || r.domain == parent) {
          r.domain = parent;
          r.cutscore[0] = scores[0];
          r.cutscore[1] = scores[1];
          r.cutscore[2] = scores[2];
        }
      }
    } else {
      std::printf("somethong is wrong\n");
    }

    FreeDomDetail(DomainNumber + 1);
    OutputDomains(Entry);
    n = Analyze();
  }
  if (DomainNumber != 1) FreeDomDetail(DomainNumber);
}

int RunQuarnel(int argc, char** argv) {
  std::string name = ParseOptions(argc, argv);

  cut_history.assign(kInitialCutRecords, kEmptyCutRecord);
  CutDomainFirst(name);
  std::string removal = "rm " + ShellFileWord(Entry + ".dssp");

  if (RelaxedRun) {
    if (DomainNumber == 1) {
      PrintOneDomain();
    } else {
      PrintDomain();
      FreeDomDetail(DomainNumber);
    }
  } else {
    AssessmentLoop();
  }
  // The DSSP output of this run is removed; a run without DSSP (-noss) has none, and must not
  // remove a file of that name that it never wrote or read.
  if (FlagSS == 1) RunShell(removal);
  return 0;
}
