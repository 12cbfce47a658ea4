// quarnel as a library: protein chains split into structural domains from a program of your own.
//
//   #include <quarnel/quarnel.h>
//
//   quarnel::Chopper chopper;  // quarnel::Options: the command line's, with its defaults
//   for (const quarnel::Result& chain : chopper.ChopFile("2yex.pdb"))
//     std::cout << chain.entry << '\t' << chain.chopping << '\n';
//
// A result is exactly what the command line gives for the same input and options (its TSV row,
// its JSON line), as plain values. A Chopper keeps no state between calls and may be used from
// several threads at once. Failures to read an input throw quarnel::Error carrying the status
// the command line would end with; a chain of an input that could not be judged comes back as
// a result with its error, so that the other chains are not lost.
//
// Build with CMake (find_package(quarnel) and target quarnel::quarnel) or pkg-config
// (pkg-config --cflags --libs quarnel).
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

namespace quarnel {

// How domains are decided: by the classic cut criteria and confidence network, or by the model
// trained on CATH choppings over a deeper candidate search (the command line's --mode cath).
enum class Mode { kClassic, kCath };

// A run's settings: the command line's options, with its defaults. Values go through the same
// conversions as the command line's (max_beta_pairs n allows n pairs, and so on).
struct Options {
  Mode mode = Mode::kClassic;
  // The classic criteria (-md, -ml, -ms, -sp, -mloop, -mterm, -mbpass, -mbpair, -mt, -mg, -mi,
  // -bw, -rs, -ca, -noss). A max_domains other than 100 makes the run relaxed, as on the command
  // line: the cut criteria are loosened and the domains are not judged. The accuracy mode
  // refuses a relaxed run.
  int max_domains = 100;
  int min_domain_size = 35;
  int min_segment_residues = 35;
  int sample_points = 20;
  int max_loop = 12;
  int max_terminal = 12;
  int max_beta_passes = 1;
  int max_beta_pairs = 2;
  float max_interface = 0.4f;
  float min_compactness = 0.52f;
  float max_interaction = 0.56f;
  float backbone_weight = 5.0f;
  double residue_separation = 3.0;
  bool ca_contacts = false;
  bool secondary_structure = true;  // false: -noss
  // --min-plddt: residues whose CA B-factor (a predicted model's pLDDT) is below this are left
  // out of the domains.
  std::optional<double> min_plddt;
  // False: a file is judged whole, as one chain, as the classic command line reads it.
  bool each_chain = true;
  // Threads for one chain's search; 0: one per core. Results do not depend on it.
  int threads = 0;
};

// A residue as the structure numbers it: author number and insertion code.
struct ResidueId {
  int32_t number = 0;
  char insertion = ' ';  // blank when none
  // "52", "52A", "-3": as results write it.
  std::string Label() const;
};

// Residues first to last of the chain, both included.
struct Range {
  ResidueId first, last;
};

struct Domain {
  std::string id;               // the entry and the domain's place in chain order: 2yexA01
  std::vector<Range> segments;  // in chain order
  int residues = 0;
  // The probability that it is one domain (the classic network's confidence, or the accuracy
  // mode's model), as a fraction; none where the domains are not judged (a relaxed run).
  std::optional<double> confidence;
};

// A cut of the classic search, in the order made: the domain it divided and the new one, with
// their compactness and interaction after the cut, and the interface between them.
struct Cut {
  int parent = 0, new_domain = 0;
  float parent_compactness = 0, new_compactness = 0;
  float parent_interaction = 0, new_interaction = 0;
  float interface = 0;
};

// The accuracy mode: where the chain passes from one domain to another, and the probability
// that the two sides belong to different CATH domains.
struct DomainBoundary {
  ResidueId after, before;
  double probability = 0.0;
};

struct Note {
  enum class Kind {
    kSkipped,         // a chain of the input that is not a protein chain
    kLeftOut,         // residues left out below min_plddt
    kPredictedModel,  // the B-factors look like pLDDT and min_plddt was not given
    kOther,
  };
  Kind kind = Kind::kOther;
  std::string text;
};

// One residue of the chain and its domain.
struct ResidueDomain {
  ResidueId residue;
  std::string name;  // ALA, GLY, ...
  int domain = 0;    // 1, 2, ...: its domain's place in chain order; 0 in none
};

struct Result {
  std::string input;   // the input as named (a path, or the name given with bytes or atoms)
  std::string chain;   // the chain id; empty when the input was judged as one chain
  std::string entry;   // the name results give: 2yexA
  Mode mode = Mode::kClassic;
  // Empty when the chain was judged; else why not, and the status the command line gives it.
  std::string error;
  int status = 0;

  int residues = 0;
  std::string sequence_md5;  // of the one-letter sequence read, X for a non-standard residue
  std::string verdict;       // "accepted at first", "rejected", "no cut", "model", ...
  std::vector<Domain> domains;             // in chain order
  std::string chopping;                    // "6-39_94-192,41-90": the TSV's chopping
  std::optional<double> confidence;        // the least confident domain's
  std::vector<Cut> cuts;                   // classic mode
  std::vector<DomainBoundary> boundaries;  // accuracy mode
  // Every residue read, in chain order, with its domain; residues left out below min_plddt in
  // their place, in none: the rows of --format residues.
  std::vector<ResidueDomain> labels;
  std::vector<Note> notes;                 // of the input this chain came from
  int left_out = 0;                        // residues below min_plddt
  double seconds = 0.0;                    // wall time of the chain's run

  bool ok() const { return error.empty(); }
  // The command line's TSV row for this chain (--format tsv), newline included; its JSON line
  // (--format json). Empty for a chain that was not judged.
  std::string tsv_row;
  std::string json_line;
};

// One atom: the fields of a PDB ATOM or HETATM record.
struct PdbAtom {
  bool hetatm = false;
  std::string name;         // " CA ", "HB12": columns 13-16 as written (a bare "CA" is aligned)
  char altloc = ' ';
  std::string residue_name;  // "ALA"
  char chain = 'A';
  ResidueId residue;
  double x = 0, y = 0, z = 0;
  double occupancy = 1.0;
  double b_factor = 0.0;
  std::string element;  // "C", "FE"
};

// Secondary structure given by the caller instead of DSSP's library: DSSP's residue table.
struct SecondaryRow {
  int number = 0;       // DSSP's own sequential number
  ResidueId residue;
  char amino_acid = ' ';  // one-letter code; 'X' for a residue DSSP does not know
  char structure = ' ';   // H, B, E, G, I, T, S or blank
  int partner1 = 0;     // bridge partners by DSSP number; 0: none
  int partner2 = 0;
  bool chain_break = false;  // a '!' row
};
using SecondaryTable = std::vector<SecondaryRow>;

// The residue table of DSSP's classic output (mkdssp --output-format dssp). Throws Error when
// the text has none.
SecondaryTable ReadDsspOutput(const std::string& text);

class Error : public std::runtime_error {
 public:
  Error(int status, const std::string& what) : std::runtime_error(what), status_(status) {}
  // The status the command line ends with for the same failure.
  int status() const { return status_; }

 private:
  int status_;
};

class Chopper {
 public:
  // Throws Error (status 2) for options that do not go together.
  explicit Chopper(const Options& options = {});
  ~Chopper();
  Chopper(Chopper&&) noexcept;
  Chopper& operator=(Chopper&&) noexcept;

  const Options& options() const;

  // Every protein chain of a structure file (PDB or mmCIF, gzip or not), or only `chain`.
  std::vector<Result> ChopFile(const std::string& path, const std::string& chain = "") const;
  // The same of a file's bytes already in memory; `name` stands for the file in results.
  std::vector<Result> ChopBytes(const std::string& bytes, const std::string& name,
                                const std::string& chain = "") const;
  // One chain given as atoms (first model only; waters and ligands may be left in). With
  // `secondary`, its secondary structure is the caller's rather than DSSP's.
  Result ChopAtoms(const std::vector<PdbAtom>& atoms, const std::string& name,
                   const SecondaryTable* secondary = nullptr) const;
  // Every protein chain of every file, `jobs` files at once (0: one per core), results in the
  // order of the files. A file that cannot be read gives one result with its error.
  std::vector<Result> ChopAll(const std::vector<std::string>& paths, int jobs = 0) const;

 private:
  struct Impl;
  std::unique_ptr<Impl> impl_;
  friend void SetDsspHelper(Chopper& chopper, const std::string& program);  // quarnel's own bindings
};

}  // namespace quarnel
