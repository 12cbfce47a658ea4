// The run of one chain, in order: residues, contacts, secondary structure, partition, domain
// records, then the report (relaxed runs) or the assessment loop.
#include "run/chain.h"

#include <algorithm>

#include "confidence/assessment.h"

namespace quarnel {

namespace {

// The chain as given, letter case included: a file's chain "a" is not its chain "A" (the
// classic run gives its code's letter in upper case already).
char JudgedChain(const ChainInput& input, const Structure& structure) {
  if (input.chain != kFirstResidueChain) return static_cast<char>(input.chain);
  return structure.size() > 0 ? structure.residues[0].chain : ' ';
}

// The scores of domain P before the cut that is being undone: from the latest earlier cut that
// mentions P, as its parent first, else as the domain it created.
bool ScoresBefore(const std::vector<CutRecord>& cuts, int n, int32_t parent, float scores[3]) {
  for (int r = n - 2; r >= 0; --r) {
    const CutRecord& earlier = cuts[static_cast<size_t>(r)];
    if (earlier.parent == parent) {
      scores[0] = earlier.parentCompact;
      scores[1] = earlier.parentInter;
      scores[2] = earlier.interface;
      return true;
    }
    if (earlier.newDomainAgain == parent) {
      scores[0] = earlier.newCompact;
      scores[1] = earlier.newInter;
      scores[2] = earlier.interface;
      return true;
    }
  }
  return false;
}

// Undoes the cut that created domain n: its residues return to their parent.
void MergeBack(const Partition& partition, int n, std::vector<Residue>& residues,
               std::vector<Message>& messages) {
  const int32_t parent = partition.cuts[static_cast<size_t>(n - 1)].parent;
  float scores[3] = {0.0f, 0.0f, 0.0f};
  if (!ScoresBefore(partition.cuts, n, parent, scores)) {
    messages.push_back(Message{Stream::kStdout, "somethong is wrong\n"});
    return;
  }
  for (Residue& r : residues) {
    if (r.domain == n || r.domain == parent) {
      r.domain = parent;
      for (int k = 0; k < 3; ++k) r.cutscore[k] = scores[k];
    }
  }
}

// Judges the partition and undoes the most recent cut for as long as the judgement rejects it.
void AssessmentLoop(const ProfileSource& source, const std::string& entry, ChainResult& result,
                    RunContext& context) {
  std::vector<Message>& messages = context.messages;
  const int32_t size = result.structure.size();
  int32_t domainCount = result.partition.domainCount;
  if (domainCount == 1) {
    result.report = FormatOneDomain(entry, size);
    return;
  }
  // Every profile of every round reads the same records: they are read again once.
  const std::shared_ptr<const AtomRecords> read = ReadProfileRecords(source);
  ProfileSource profiles = source;
  profiles.held = read.get();
  std::vector<DomainDetail> records = result.found;
  for (;;) {
    Assessment assessment = Analyze(profiles, records, messages, context.workers);
    if (assessment.accepted) {
      result.report = FormatReport(entry, size, records);
      result.domains = std::move(records);
      result.scores = std::move(assessment.scores);
      result.verdict = domainCount == result.partition.domainCount ? Verdict::kAcceptedFirst
                                                                   : Verdict::kAcceptedAfterMerging;
      return;
    }
    const int n = domainCount - 1;  // the most recently created domain
    domainCount -= 1;
    if (n == 1) {
      // Every cut undone: the residues are one domain again, as reported.
      for (Residue& residue : result.structure.residues) residue.domain = 0;
      result.report = FormatOneDomain(entry, size);
      result.verdict = Verdict::kRejected;
      return;
    }
    MergeBack(result.partition, n, result.structure.residues, messages);
    records = OutputDomains(result.structure.residues, domainCount);
  }
}

// The residues [first, last) alone, numbered from 0, with their atoms.
Structure Piece(const Structure& structure, int32_t first, int32_t last) {
  Structure piece;
  const Residue& start = structure.residues[static_cast<size_t>(first)];
  const Residue& end = structure.residues[static_cast<size_t>(last - 1)];
  piece.atoms.assign(structure.atoms.begin() + start.firstAtom,
                     structure.atoms.begin() + end.firstAtom + end.natoms);
  for (int32_t i = first; i < last; ++i) {
    Residue residue = structure.residues[static_cast<size_t>(i)];
    residue.index = i - first;
    residue.firstAtom -= start.firstAtom;
    piece.residues.push_back(residue);
  }
  return piece;
}

// Pieces overlap by this many residues on each side, so that every residue's secondary structure
// is found with its neighbours in the chain around it.
constexpr int32_t kPieceOverlap = 100;

SecondaryStructure PiecewiseSecondaryStructure(const Structure& structure, SecondaryStructureSource& source,
                                               int32_t length, std::vector<Message>& messages) {
  const int32_t n = structure.size();
  SecondaryStructure whole = DefaultSecondaryStructure(n);
  for (int32_t first = 0; first < n; first += length) {
    const int32_t last = std::min(n, first + length);
    const int32_t from = std::max(0, first - kPieceOverlap);
    const int32_t to = std::min(n, last + kPieceOverlap);
    const Structure piece = Piece(structure, from, to);
    const SecondaryStructure table = source.Read(piece, messages);
    for (int32_t i = first; i < last; ++i) {
      const size_t k = static_cast<size_t>(i - from);
      whole.ss[static_cast<size_t>(i)] = table.ss[k];
      whole.bridge1[static_cast<size_t>(i)] = table.bridge1[k] == kNoPartner ? kNoPartner : table.bridge1[k] + from;
      whole.bridge2[static_cast<size_t>(i)] = table.bridge2[k] == kNoPartner ? kNoPartner : table.bridge2[k] + from;
    }
  }
  return whole;
}

}  // namespace

const char* VerdictName(Verdict verdict) {
  switch (verdict) {
    case Verdict::kRelaxed: return "relaxed";
    case Verdict::kTooShort: return "too short";
    case Verdict::kNoCut: return "no cut";
    case Verdict::kAcceptedFirst: return "accepted at first";
    case Verdict::kAcceptedAfterMerging: return "accepted after merging";
    case Verdict::kRejected: return "rejected";
    case Verdict::kModel: return "model";
  }
  return "";
}

const char* DecisionModeName(DecisionMode mode) {
  return mode == DecisionMode::kCath ? "cath" : "classic";
}

bool ParseDecisionMode(const std::string& name, DecisionMode& mode) {
  if (name == "classic") mode = DecisionMode::kClassic;
  else if (name == "cath") mode = DecisionMode::kCath;
  else return false;
  return true;
}

void ReadChain(const ChainInput& input, const Params& params, SecondaryStructureSource* secondary,
               RunContext& context, ChainResult& result, int32_t dsspPiece) {
  context.Begin(params);
  result.structure = ReadStructure(*input.records);
  Structure& structure = result.structure;
  result.chain = JudgedChain(input, structure);
  result.contacts = CalcContacts(structure, params, context.workers);
  SetSecondaryStructureDefaults(structure.residues);
  if (params.FlagSS == 1 && secondary != nullptr) {
    const SecondaryStructure table =
        dsspPiece > 0 && structure.size() > 2 * dsspPiece
            ? PiecewiseSecondaryStructure(structure, *secondary, dsspPiece, context.messages)
            : secondary->Read(structure, context.messages);
    ApplySecondaryStructure(table, structure.residues, result.contacts);
  }
}

ChainResult RunChainIn(DecisionMode mode, const ChainInput& input, const Params& params,
                       SecondaryStructureSource* secondary, RunContext& context) {
  return mode == DecisionMode::kCath ? RunChainCath(input, params, secondary, context)
                                     : RunChain(input, params, secondary, context);
}

ChainResult RunChain(const ChainInput& input, const Params& params,
                     SecondaryStructureSource* secondary, RunContext& context) {
  ChainResult result;
  ReadChain(input, params, secondary, context, result);
  Structure& structure = result.structure;

  const Engine engine{params, result.contacts, context};
  DomainParition(engine, result.partition, structure.residues.data(), structure.size());
  result.found = OutputDomains(structure.residues, result.partition.domainCount);

  const int32_t size = structure.size();
  const bool searched = static_cast<int64_t>(size) >= 2 * static_cast<int64_t>(params.MinDomainSize) &&
                        params.MaxNumDom > 1;
  result.verdict = searched ? Verdict::kNoCut : Verdict::kTooShort;
  if (params.Relaxed()) {
    result.verdict = Verdict::kRelaxed;
    if (result.partition.domainCount == 1) {
      result.report = FormatOneDomain(input.entry, size);
    } else {
      result.report = FormatReport(input.entry, size, result.found);
      result.domains = result.found;
    }
    return result;
  }
  const ProfileSource source{input.records, result.chain, input.profileName, size};
  AssessmentLoop(source, input.entry, result, context);
  return result;
}

}  // namespace quarnel
