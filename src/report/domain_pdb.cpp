// PDB files of a chain: the copy the scripts load, and one file per domain. Records read from a
// PDB file are written as they were read; records from mmCIF in wwPDB's columns.
#include "formats/pdb_writer.h"
#include "report/picture_parts.h"
#include "report/pictures.h"

namespace quarnel {
namespace {

struct AtomLine {
  std::string text;  // without its line end
  int residue;       // position in chain order
  char chain;
};

bool SameNumber(const AtomRecord& record, int32_t resnum, char icode) {
  return record.resnum == resnum && record.icode == icode;
}

// The ATOM records of the first model with the residue each belongs to, cut into residues as the
// structure reader cut them. The reader passes over hydrogens; here a hydrogen joins the
// residue next to it that has its number, and is dropped when neither has.
std::vector<AtomLine> AtomLines(const std::vector<AtomRecord>& records) {
  std::vector<AtomLine> lines;
  std::vector<const AtomRecord*> waiting;  // hydrogens before their residue's first heavy atom
  int residue = -1;
  int32_t resnum = 0;
  char icode = kNoInsertion;
  for (const AtomRecord& record : records) {
    if (record.IsEnd()) break;  // END or ENDMDL: the first model only
    if (record.kind != AtomRecord::kAtom) continue;
    if (record.IsHydrogen() && residue >= 0 && waiting.empty() && SameNumber(record, resnum, icode)) {
      lines.push_back(AtomLine{PdbLine(record), residue, record.chain});
    } else if (record.IsHydrogen()) {
      waiting.push_back(&record);
    } else {
      if (residue < 0 || !SameNumber(record, resnum, icode)) {
        ++residue;
        resnum = record.resnum;
        icode = record.icode;
      }
      for (const AtomRecord* h : waiting)
        if (SameNumber(*h, resnum, icode)) lines.push_back(AtomLine{PdbLine(*h), residue, h->chain});
      waiting.clear();
      lines.push_back(AtomLine{PdbLine(record), residue, record.chain});
    }
  }
  return lines;
}

}  // namespace

// The copy the scripts load: the records the run read up to the end of its first model (the
// model the run judged), line ends made plain, behind a line that says whose copy it is. HETATM
// records stay, so that a modified residue keeps its place in the cartoon.
std::string StructureCopy(const ChainOutcome& outcome) {
  std::string text = "REMARK 999 quarnel copy of " + Provenance(outcome) + "\n";
  for (const AtomRecord& record : outcome.records.records) {
    if (record.IsEnd()) break;
    text += PdbLine(record) + "\n";
  }
  return text + "END\n";
}

std::string DomainPdb(const ChainOutcome& outcome, int place) {
  const std::vector<ChainDomain> domains = ChainDomains(outcome);
  const std::vector<int> places = DomainPlaces(outcome.result);
  const std::string id = DomainId(outcome.entry, place);
  std::string text = "REMARK 999 quarnel domain " + id + " of " + Provenance(outcome) + "\n";
  text += "REMARK 999 " + Chopping({domains[static_cast<size_t>(place)]}) + "\n";
  char chain = 0;
  for (const AtomLine& line : AtomLines(outcome.records.records)) {
    if (line.residue >= static_cast<int>(places.size()) || places[line.residue] != place) continue;
    if (chain != 0 && line.chain != chain) text += "TER\n";
    chain = line.chain;
    text += line.text + "\n";
  }
  return text + (chain != 0 ? "TER\nEND\n" : "END\n");
}

}  // namespace quarnel
