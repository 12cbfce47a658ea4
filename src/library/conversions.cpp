#include "library/conversions.h"

#include <cstring>

#include "base/status.h"
#include "base/text.h"
#include "report/cath_results.h"
#include "report/results.h"
#include "run/chain_domains.h"

namespace quarnel {

namespace {

constexpr double kPercent = 100.0;

Params ParamsOf(const Options& o) {
  Params p;
  p.MaxNumDom = o.max_domains;
  p.MinDomainSize = o.min_domain_size;
  p.MinSegRes = static_cast<float>(o.min_segment_residues);
  p.NumSamplePoints = o.sample_points;
  p.MaxLoop = o.max_loop;
  p.MaxTerm = o.max_terminal;
  p.MaxBetaPass = PlusOne(o.max_beta_passes);
  p.MaxBetaPair = PlusOne(o.max_beta_pairs);
  p.MaxTime = o.max_interface;
  p.MinGlobularity = o.min_compactness;
  p.MaxInteraction = o.max_interaction;
  p.BBWeight = o.backbone_weight;
  p.ResSep = TruncToInt(o.residue_separation);
  p.FlagCa = o.ca_contacts ? 1 : 0;
  p.FlagSS = o.secondary_structure ? 1 : 0;
  return p;
}

// A failure's text as one line, without the program's name.
std::string Reason(const std::string& text) {
  std::string line = text.substr(0, text.find('\n'));
  const std::string program = "quarnel: ";
  if (line.compare(0, program.size(), program) == 0) line.erase(0, program.size());
  return line;
}

void Copy(const std::string& text, char* field, size_t size) {
  std::memset(field, 0, size);
  std::memcpy(field, text.data(), std::min(text.size(), size - 1));
}

// Columns 13-16: a four-character name fills them; a shorter one starts in column 14 unless
// its element has two letters (FE, CL), as PDB files align names.
std::string AlignedName(const PdbAtom& atom) {
  if (atom.name.size() >= 4 || (!atom.name.empty() && atom.name[0] == ' ')) return atom.name.substr(0, 4);
  const bool twoLetters = atom.element.size() == 2 && atom.element[0] != ' ';
  std::string name = twoLetters ? atom.name : " " + atom.name;
  name.resize(4, ' ');
  return name;
}

ResidueId IdOf(const Residue& residue) { return ResidueId{residue.resnum, residue.icode}; }

Note NoteOf(const std::string& text) {
  Note note;
  note.text = text;
  if (text.find(" skipped: ") != std::string::npos)
    note.kind = Note::Kind::kSkipped;
  else if (text.compare(0, 9, "left out ") == 0)
    note.kind = Note::Kind::kLeftOut;
  else if (text.find("look like pLDDT") != std::string::npos)
    note.kind = Note::Kind::kPredictedModel;
  return note;
}

std::vector<Domain> DomainsOf(const ChainOutcome& outcome, const std::vector<ChainDomain>& domains) {
  std::vector<Domain> list;
  for (size_t place = 0; place < domains.size(); ++place) {
    const ChainDomain& found = domains[place];
    Domain domain;
    domain.id = DomainId(outcome.entry, static_cast<int>(place));
    for (const DomainSegment& segment : found.segments)
      domain.segments.push_back(Range{ResidueId{segment.start, segment.startIns},
                                      ResidueId{segment.end, segment.endIns}});
    domain.residues = found.residues;
    if (found.judged) domain.confidence = static_cast<double>(found.confidence) / kPercent;
    list.push_back(std::move(domain));
  }
  return list;
}

std::vector<Cut> CutsOf(const ChainResult& result) {
  std::vector<Cut> cuts;
  if (result.mode != DecisionMode::kClassic) return cuts;
  const Partition& partition = result.partition;
  const size_t made = static_cast<size_t>(std::max(partition.domainCount - 1, 0));
  for (size_t k = 0; k < made && k < partition.cuts.size(); ++k) {
    const CutRecord& cut = partition.cuts[k];
    cuts.push_back(Cut{cut.parent, cut.newDomain, cut.parentCompact, cut.newCompact, cut.parentInter,
                       cut.newInter, cut.interface});
  }
  return cuts;
}

std::vector<DomainBoundary> BoundariesOf(const ChainResult& result) {
  std::vector<DomainBoundary> boundaries;
  if (result.mode != DecisionMode::kCath) return boundaries;
  const std::vector<Residue>& residues = result.structure.residues;
  for (const BoundaryPlace& place : BoundaryPlaces(result.calls, result.candidates, result.structure.size()))
    boundaries.push_back(DomainBoundary{IdOf(residues[static_cast<size_t>(place.before)]),
                                        IdOf(residues[static_cast<size_t>(place.after)]), place.probability});
  return boundaries;
}

std::vector<ResidueDomain> LabelsOf(const ChainOutcome& outcome) {
  std::vector<ResidueDomain> labels;
  for (const LabelledResidue& label : LabelledResidues(outcome))
    labels.push_back(ResidueDomain{ResidueId{label.resnum, label.icode}, label.resname, label.domain});
  return labels;
}

Result ResultOf(const ChainOutcome& outcome) {
  Result result;
  result.input = outcome.input;
  result.chain = outcome.chainId;
  result.entry = outcome.entry;
  result.mode = outcome.mode == "cath" ? Mode::kCath : Mode::kClassic;
  result.left_out = outcome.leftOut;
  result.seconds = outcome.seconds;
  if (!outcome.ok) {
    result.error = outcome.error.empty() ? "not judged" : outcome.error;
    result.status = StatusOf(outcome);
    return result;
  }
  const ChainResult& chain = outcome.result;
  const std::vector<ChainDomain> domains = ChainDomains(outcome);
  result.residues = chain.structure.size();
  result.sequence_md5 = SequenceMd5(chain.structure);
  result.verdict = VerdictName(chain.verdict);
  result.domains = DomainsOf(outcome, domains);
  result.chopping = Chopping(domains);
  double confidence = 0.0;
  if (ChainConfidence(domains, confidence)) result.confidence = confidence;
  result.cuts = CutsOf(chain);
  result.boundaries = BoundariesOf(chain);
  result.labels = LabelsOf(outcome);
  result.tsv_row = TsvRow(outcome);
  result.json_line = JsonRow(outcome);
  return result;
}

// Whether a note of the input speaks of this chain: its entry is the note's first word.
bool NoteOfChain(const std::string& note, const std::string& entry) {
  return note.size() > entry.size() + 2 && note.compare(0, entry.size(), entry) == 0 &&
         note.compare(entry.size(), 2, ": ") == 0;
}

}  // namespace

BatchOptions BatchOptionsOf(const Options& options) {
  BatchOptions batch;
  batch.params = ParamsOf(options);
  batch.given = batch.params;
  ApplyRelaxedMode(batch.params);
  batch.mode = options.mode == Mode::kCath ? DecisionMode::kCath : DecisionMode::kClassic;
  batch.filterPlddt = options.min_plddt.has_value();
  batch.minPlddt = options.min_plddt.value_or(0.0);
  batch.wholeFile = !options.each_chain;
  batch.format = ResultFormat::kTsv;
  batch.dssp = DsspChoice::kBuiltin;
  batch.quiet = true;
  batch.inputs = {"-"};
  try {
    CheckBatchOptions(batch);
  } catch (const Failure& failure) {
    throw Error(failure.exit_status(), Reason(failure.what()));
  }
  batch.inputs.clear();
  return batch;
}

AtomRecords RecordsOf(const std::vector<PdbAtom>& atoms) {
  AtomRecords records;
  records.records.reserve(atoms.size() + 2);
  int32_t serial = 0;
  for (const PdbAtom& atom : atoms) {
    AtomRecord record;
    record.kind = atom.hetatm ? AtomRecord::kHetatm : AtomRecord::kAtom;
    Copy(AlignedName(atom), record.name, sizeof record.name);
    record.altloc = atom.altloc;
    Copy(atom.residue_name, record.resname, sizeof record.resname);
    record.chain = atom.chain;
    record.icode = atom.residue.insertion;
    const std::string element = atom.element.size() == 1 ? " " + atom.element : atom.element;
    Copy(element, record.element, sizeof record.element);
    record.serial = ++serial;
    record.resnum = atom.residue.number;
    record.x = atom.x;
    record.y = atom.y;
    record.z = atom.z;
    record.occupancy = atom.occupancy;
    record.bfactor = atom.b_factor;
    records.records.push_back(record);
  }
  AtomRecord end;
  end.kind = AtomRecord::kTer;
  records.records.push_back(end);
  end.kind = AtomRecord::kEnd;
  records.records.push_back(end);
  return records;
}

std::vector<DsspRow> DsspRowsOf(const SecondaryTable& table) {
  std::vector<DsspRow> rows;
  rows.reserve(table.size());
  for (const SecondaryRow& row : table) {
    DsspRow dssp;
    dssp.number = row.number;
    dssp.resnum = row.residue.number;
    dssp.icode = row.residue.insertion;
    dssp.aa = row.chain_break ? '!' : row.amino_acid;
    dssp.ss = row.structure;
    dssp.partner1 = row.partner1;
    dssp.partner2 = row.partner2;
    dssp.chainBreak = row.chain_break;
    rows.push_back(dssp);
  }
  return rows;
}

int StatusOf(const ChainOutcome& outcome) {
  return outcome.status != 0 ? outcome.status : static_cast<int>(Status::kSomeInputsFailed);
}

std::vector<Result> ResultsOf(const Input& input, InputResult&& outcomes) {
  std::vector<Result> results;
  for (const ChainOutcome& outcome : outcomes.chains) {
    Result result = ResultOf(outcome);
    for (const std::string& note : outcomes.notes) {
      const std::string inputPrefix = input.name + ": ";
      if (NoteOfChain(note, outcome.entry))
        result.notes.push_back(NoteOf(note.substr(outcome.entry.size() + 2)));
      else if (note.compare(0, inputPrefix.size(), inputPrefix) == 0)
        result.notes.push_back(NoteOf(note.substr(inputPrefix.size())));
    }
    results.push_back(std::move(result));
  }
  return results;
}

}  // namespace quarnel
