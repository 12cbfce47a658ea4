// One entry in the forms users have it in: the PDB file, gemmi's mmCIF of it, and both gzipped.
// Every form must list the same chains, give the same records of each chain and of the whole
// file, and give the same report as the classic run of the PDB file's code.
#include <gtest/gtest.h>

#include <stdexcept>

#include <cstring>

#include "base/text.h"
#include "formats/structure_file.h"
#include "gzip.h"
#include "support.h"
#include "to_mmcif.h"

namespace quarnel::test {
namespace {

// Every PDB file of the test data, by the code its copies are given in a scratch folder.
struct Entry {
  const char* file;
  const char* code;
};
const Entry kEntries[] = {
    {"1a8o.pdb", "1a8o"}, {"1aki.pdb", "1aki"}, {"1crn.pdb", "1crn"}, {"1crn_alternates.pdb", "9alt"},
    {"1cuk.pdb", "1cuk"}, {"1dk8.pdb", "1dk8"}, {"1isu.pdb", "1isu"}, {"1kqf_sec.pdb", "9sec"},
    {"1lcd.pdb", "1lcd"}, {"1orc.pdb", "1orc"}, {"1p3c.pdb", "1p3c"}, {"1rmd.pdb", "1rmd"},
    {"1rmd_icode.pdb", "9ico"}, {"1ubi.pdb", "1ubi"}, {"2efj.pdb", "2efj"}, {"2yex.pdb", "2yex"},
};

struct Form {
  const char* suffix;
  bool mmcif, gzip;
};
const Form kForms[] = {{".pdb", false, false}, {".cif", true, false}, {".pdb.gz", false, true}, {".cif.gz", true, true}};

std::string Bytes(const std::string& pdb, const Form& form, const std::string& name) {
  const std::string text = form.mmcif ? ToMmcif(pdb, name) : pdb;
  return form.gzip ? Gzip(text) : text;
}

std::string Listing(const StructureFile& file) {
  std::string text;
  for (const ChainInfo& chain : file.chains())
    text += chain.id + ":" + std::to_string(chain.residues) + (chain.protein ? "p " : "n ");
  return text;
}

// The ATOM records and TER marks, one line each, every field but the serial number (gemmi
// numbers the atoms of its mmCIF afresh) and the element where the PDB file has none (gemmi
// gives one from the atom name, which is what DSSP does without it).
std::string RecordLines(const std::vector<AtomRecord>& records, const std::vector<AtomRecord>* elementsOf = nullptr) {
  std::string out;
  size_t atom = 0;
  for (const AtomRecord& r : records) {
    if (r.kind == AtomRecord::kTer) out += "TER\n";
    if (r.kind != AtomRecord::kAtom) continue;
    bool element = true;
    if (elementsOf != nullptr) {
      while (atom < elementsOf->size() && (*elementsOf)[atom].kind != AtomRecord::kAtom) ++atom;
      element = atom < elementsOf->size() && std::strspn((*elementsOf)[atom].element, " ") != std::strlen((*elementsOf)[atom].element);
      ++atom;
    }
    out += Format("'%s' %c %s %c %d%c %.3f %.3f %.3f %.2f %.2f %s\n", r.name, r.altloc, r.resname, r.chain, r.resnum,
                  r.icode, r.x, r.y, r.z, r.occupancy, r.bfactor, element ? r.element : "-");
  }
  return out;
}

std::string FirstDifference(const std::string& expected, const std::string& actual) {
  std::istringstream a(expected), b(actual);
  std::string x, y;
  for (int line = 1;; ++line) {
    const bool more = static_cast<bool>(std::getline(a, x)), other = static_cast<bool>(std::getline(b, y));
    if (!more && !other) return "";
    if (!more || !other || x != y) return "line " + std::to_string(line) + ": " + x + " | " + y;
  }
}

TEST(Forms, EveryFormGivesTheSameChainsAndRecords) {
  for (const Entry& entry : kEntries) {
    const std::string pdb = ReadFile(DataFile(entry.file));
    const StructureFile reference = StructureFile::FromBytes(entry.file, pdb);
    for (const Form& form : kForms) {
      SCOPED_TRACE(std::string(entry.file) + " as " + form.suffix);
      const StructureFile other = StructureFile::FromBytes(entry.code + std::string(form.suffix),
                                                           Bytes(pdb, form, entry.file));
      EXPECT_EQ(Listing(other), Listing(reference));
      for (const ChainInfo& chain : reference.chains()) {
        if (chain.residues == 0) continue;
        SCOPED_TRACE("chain " + chain.id);
        const std::vector<AtomRecord> expected = reference.ChainRecords(chain.id).records;
        EXPECT_EQ(FirstDifference(RecordLines(expected, &expected),
                                  RecordLines(other.ChainRecords(chain.id).records, &expected)), "");
      }
      std::vector<AtomRecord> whole;
      for (const AtomRecord& r : reference.WholeRecords().records)
        if (r.kind == AtomRecord::kAtom) whole.push_back(r);
      std::vector<AtomRecord> otherWhole;
      for (const AtomRecord& r : other.WholeRecords().records)
        if (r.kind == AtomRecord::kAtom) otherWhole.push_back(r);
      EXPECT_EQ(FirstDifference(RecordLines(whole, &whole), RecordLines(otherWhole, &whole)), "");
    }
  }
}

// The entries whose reports are compared: insertion codes and alternate locations, models and
// nucleic acids, DOS line ends, two chains, residues written as HETATM, selenocysteine.
const char* const kReported[] = {"1a8o.pdb", "1crn_alternates.pdb", "1isu.pdb", "1kqf_sec.pdb", "1lcd.pdb",
                                 "1orc.pdb", "1rmd_icode.pdb", "2yex.pdb"};

TEST(Forms, EveryFormGivesTheClassicReportOfItsChains) {
  Scratch work;
  for (const Entry& entry : kEntries) {
    if (std::find_if(std::begin(kReported), std::end(kReported),
                     [&](const char* f) { return std::string(f) == entry.file; }) == std::end(kReported))
      continue;
    const std::string pdb = ReadFile(DataFile(entry.file));
    for (const Form& form : kForms) WriteFile(work / (entry.code + std::string(form.suffix)), Bytes(pdb, form, entry.file));
    const StructureFile structure = StructureFile::FromBytes(entry.file, pdb);
    for (const ChainInfo& chain : structure.chains()) {
      if (!chain.protein || chain.residues == 0) continue;
      const ToolRun classic = RunTool(work.path(), {"-noss", "-pdbpath", "./", entry.code + chain.id});
      ASSERT_EQ(classic.status, 0) << entry.file << " " << chain.id << ": " << classic.out << classic.err;
      for (const Form& form : kForms) {
        SCOPED_TRACE(std::string(entry.file) + " as " + form.suffix + ", chain " + chain.id);
        const ToolRun run = RunTool(work.path(), {"-noss", "--chain", chain.id, entry.code + std::string(form.suffix)});
        EXPECT_EQ(run.status, 0) << run.err;
        EXPECT_EQ(run.out, classic.out);
      }
    }
  }
}

}  // namespace
}  // namespace quarnel::test
