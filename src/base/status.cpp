// What each exit status means, as --help and README's table say it.
#include "base/status.h"

namespace quarnel {

namespace {

using S = Status;

constexpr StatusMeaning kMeanings[] = {
    {S::kCompleted, {}, "done (also: no argument, which prints the usage lines)"},
    {S::kDsspPathUnset, {}, "DSSP_PATH not set for a classic run that needs DSSP; or a run needs DSSP's library and "
                            "quarnel-full cannot be run"},
    {S::kBadOption, {}, "a bad option or option value; --out naming an input; --resume onto a file that does not "
                        "hold results of the same format made with the same options"},
    {S::kSomeInputsFailed, {}, "a batch run in which some inputs or chains failed (each named on standard error: "
                               "files and folders that cannot be read, chains refused or not judged, pictures not "
                               "written)"},
    {S::kProfileReopen, {}, "the structure file could not be read again for the confidence assessment"},
    {S::kInputOpen, {}, "the structure file or the DSSP output could not be opened"},
    {S::kWriteFailed, {}, "a batch run could not write a results file, picture or domain file, or a run could not "
                          "write standard output (the file and the system's reason on standard error)"},
    {S::kChainCopyCreate, {}, "the chain copy could not be written"},
    {S::kCodeFileOpen, {}, "the PDB file of a code could not be opened"},
    {S::kEngineFault, {}, "the -ex residues are not in the chain, or an internal limit was met"},
    {S::kSegmentsAlloc, {}, "domain records could not be allocated"},
    {S::kNoProfileResidue, {}, "no residue of a domain in the file read again (a multi-chain file read whole, or a "
                               "code without chain letter: name the chain)"},
    {S::kBottleneck, S::kQueueOverflow, "internal consistency failures of the flow search"},
    {S::kAllocation, {}, "out of memory"},
    {S::kTooFewAtoms, {}, "too few atoms per residue (a CA-only model)"},
    {S::kInterrupted, S::kTerminated, "a batch run stopped by SIGINT or SIGTERM (128 + the signal), its temporary "
                                      "files removed"},
};

}  // namespace

const StatusMeaning* StatusMeanings(size_t& count) {
  count = sizeof kMeanings / sizeof kMeanings[0];
  return kMeanings;
}

}  // namespace quarnel
