// The texts of --help and --version.
#include <string>

#include "cli/command.h"

#ifndef QUARNEL_VERSION
#define QUARNEL_VERSION "unknown"
#endif
#ifndef QUARNEL_BUILD_FLAGS
#define QUARNEL_BUILD_FLAGS "unknown"
#endif
#ifndef QUARNEL_DSSP_VERSION
#define QUARNEL_DSSP_VERSION "unknown"
#endif

namespace quarnel {

std::string HelpText() {
  return R"(quarnel: splits protein chains into structural domains.

Usage:
  quarnel [options] input              one structure, the classic report line
  quarnel [options] input input...     many structures (a batch run)

Inputs:
  file.pdb, file.ent, file.cif, file.mmcif, each also .gz (recognised by content)
  folder/                              every structure file in it, searched recursively
  1abc, 1abcA                          a PDB code, with an optional chain letter, looked up
                                       under -pdbpath as 1abc.pdb (also any letter case,
                                       .cif, .cif.gz, .pdb.gz, .ent.gz, pdb1abc.ent.gz and
                                       the archive's divided layout ab/)
  --list FILE                          one more input per line (--list - reads them from
                                       standard input)
  -                                    one structure read from standard input
  --                                   ends the options: every later argument is an input

Partition options:
  -md n        at most n domains (any n but 100 relaxes the cut criteria and skips the
               confidence assessment)
  -ex r1 r2    two domains around residues r1 and r2 (relaxed)
  -el          anchor residues chosen automatically (the default)
  -ml n        smallest domain, residues (35)
  -mg x        least compactness of each side of a cut (0.52)
  -mi x        largest interaction ratio of each side (0.56)
  -mt x        largest normalised interface value (0.4)
  -ms n        least mean segment length (35)
  -mbpair n    bridge pairs a cut may split (2)
  -mbpass n    strand passages a cut may split (1)
  -mloop n     longest inner segment merged into its neighbours (12)
  -mterm n     longest terminal segment merged (12)
  -rs x        sequence separation below which contacts do not count (3)
  -bw x        weight of a backbone-backbone atom contact (5.0)
  -sp n        sampled source/sink pairs per anchor pair (20)
  -ca          contacts from CA atoms only
  -noss        no secondary structure
  -noeva       kept for compatibility; changes nothing
  -nodssp      kept for compatibility; changes nothing
  -pdbpath dir prefix for PDB codes, used verbatim (./)

Chains and models:
  --chain ID          that chain of every file (reported as <file><chain>)
  --each-chain        every protein chain of every file, one result each (what batch runs
                      do without --chain)
  --min-plddt X       leave out residues whose pLDDT (the CA's B-factor) is below X

How domains are decided:
  --mode M            classic (the default: the cut criteria and the confidence network) or
                      cath (a deeper search whose cuts a model trained on CATH choppings keeps
                      or drops; more multi-domain chains cut right, probabilities per domain
                      and boundary; -md and -ex do not apply)
  --features FILE     with --mode cath: every candidate cut of each chain with the features
                      the model reads, one JSON line per chain (for training the model)

Results:
  --format F          classic (the report line), tsv (one row per chain, Chainsaw's columns
                      first), json (JSON Lines)
  --out FILE          write results to FILE instead of standard output (never an input; a
                      second run on the same FILE waits for the first)
  --resume            with --out and tsv or json: skip chains (input and chain) already in FILE,
                      append the others; FILE must hold results made with the same options
  -j N, --jobs N      chains at once (default: the machine's cores)
  --pymol DIR         a PyMOL script per chain colouring its domains
  --chimerax DIR      a ChimeraX script per chain colouring its domains
  --save-domains DIR  one PDB file per domain
  --svg DIR           a picture per chain: contact map, domains, secondary structure
  --dssp MODE         builtin (DSSP's library, inside quarnel) or external (DSSP_PATH)
  --quiet             standard error keeps to failures: no notes, no progress

  -h, --help          this text
  --version           version, build flags and DSSP

A command line of the options above the line "Chains and models" and one input is the classic
run: it reads a file whole, writes the chain copy of a code (1abca.pdb, 1abc_nmr.pdb) in the
working folder and runs the DSSP program named by DSSP_PATH. Any long option, -j, or several
inputs make a batch run, which judges every protein chain of each file (or the one --chain
names), writes nothing in the working folder but what you name and uses the DSSP built into
quarnel unless DSSP_PATH is set (or --dssp says otherwise). A classic command line with only
--dssp added still reads its file whole.

Environment:
  DSSP_PATH           the DSSP program of classic runs (and of batch runs, when set)
  QUARNEL_THREADS     threads for one chain's search (default: the machine's cores)

Exit status:
  0    done (also: no argument, which prints the usage lines)
  1    DSSP_PATH not set for a classic run that needs DSSP
  2    a bad option or option value; --out naming an input; --resume onto a file that does not
       hold results of the same format made with the same options
  3    a batch run in which some inputs or chains failed (each named on standard error: files
       and folders that cannot be read, chains refused or not judged, pictures not written)
  4    the structure file could not be read again for the confidence assessment
  5    the structure file or the DSSP output could not be opened
  6    a batch run could not write a results file, picture or domain file, or a run could not
       write standard output (the file and the system's reason on standard error)
  7    the chain copy could not be written
  9    the PDB file of a code could not be opened
  10   the -ex residues are not in the chain, or an internal limit was met
  11   domain records could not be allocated
  15   no residue of a domain in the file read again (a multi-chain file read whole, or a
       code without chain letter: name the chain)
  20, 30   internal consistency failures of the flow search
  50   out of memory
  100  too few atoms per residue (a CA-only model)
  130, 143  a batch run stopped by SIGINT or SIGTERM (128 + the signal), its temporary files
       removed
)";
}

const char* VersionNumber() { return QUARNEL_VERSION; }

std::string VersionText() {
  return std::string("quarnel ") + QUARNEL_VERSION + "\nbuild flags: " + QUARNEL_BUILD_FLAGS +
         "\nDSSP: built-in DSSP library " + QUARNEL_DSSP_VERSION +
         " (libdssp on libcifpp); classic runs use DSSP_PATH\n";
}

}  // namespace quarnel
