// The structure-file front end: recognition by content, chain listing, and the PDB-format text
// it hands to quarnel's readers, checked against real entries in both formats.
#include <gtest/gtest.h>

#include <sstream>
#include <stdexcept>
#include <string>
#include <vector>

#include "formats/pdb_writer.h"
#include "formats/structure_file.h"
#include "gzip.h"
#include "support.h"

namespace quarnel {
namespace {

// The columns quarnel reads and the B-factor, line by line: the serial number (which a trimmed
// file cannot keep) blanked, trailing blanks dropped.
std::string Comparable(const std::string& text) {
  std::istringstream in(text);
  std::string out;
  std::string line;
  while (std::getline(in, line)) {
    if (line.compare(0, 6, "ATOM  ") == 0) line.replace(6, 5, 5, ' ');
    line.erase(line.find_last_not_of(' ') + 1);
    out += line + '\n';
  }
  return out;
}

// The records of a chain, and of the whole first model, as PDB text.
std::string ChainText(const StructureFile& file, const std::string& id) {
  return PdbText(file.ChainRecords(id).records);
}
std::string WholeText(const StructureFile& file) { return PdbText(file.WholeRecords().records); }

std::string Listing(const StructureFile& file) {
  std::string text;
  for (const ChainInfo& chain : file.chains())
    text += (text.empty() ? "" : ",") + chain.id + ":" + std::to_string(chain.residues) +
            (chain.protein ? ":protein" : "") + (chain.id == std::string(1, chain.text_id) ? "" : "=" + std::string(1, chain.text_id));
  return text;
}

std::string ErrorOf(const std::string& name, const std::string& bytes) {
  try {
    StructureFile::FromBytes(name, bytes);
  } catch (const std::runtime_error& error) {
    return error.what();
  }
  return "no error";
}

// One mmCIF atom_site row in wwPDB's column order; each entity of a chain is a label_asym_id
// of its own, as in wwPDB files.
struct Site {
  std::string group, id, element, atom, altloc, residue, entity, seq, x, occupancy, bfactor,
      chain, model;
};

std::string Mmcif(const std::vector<Site>& sites) {
  std::string text =
      "data_TEST\n#\nloop_\n_entity.id\n_entity.type\n1 polymer\n2 non-polymer\n#\nloop_\n";
  for (const char* tag : {"group_PDB", "id", "type_symbol", "label_atom_id", "label_alt_id",
                          "label_comp_id", "label_asym_id", "label_entity_id", "label_seq_id",
                          "pdbx_PDB_ins_code", "Cartn_x", "Cartn_y", "Cartn_z", "occupancy",
                          "B_iso_or_equiv", "pdbx_formal_charge", "auth_seq_id", "auth_comp_id",
                          "auth_asym_id", "auth_atom_id", "pdbx_PDB_model_num"})
    text += std::string("_atom_site.") + tag + "\n";
  for (const Site& s : sites)
    text += s.group + " " + s.id + " " + s.element + " " + s.atom + " " + s.altloc + " " +
            s.residue + " " + s.chain + s.entity + " " + s.entity + " " + s.seq + " ? " + s.x +
            " 2.000 3.000 " + s.occupancy + " " + s.bfactor + " ? " + s.seq + " " + s.residue +
            " " + s.chain + " " + s.atom + " " + s.model + "\n";
  return text + "#\n";
}

Site Atom(const std::string& id, const std::string& chain, const std::string& seq,
          const std::string& model = "1") {
  return {"ATOM", id, "C", "CA", ".", "GLY", "1", seq, "1.000", "1.00", "10.00", chain, model};
}

const char kPdbLine[] =
    "ATOM      1  CA  GLY A   1       1.000   2.000   3.000  1.00 10.00           C  \n";

TEST(StructureFile, RecognisesTheFormatByContentAndRefusesFilesWithoutAtoms) {
  const std::string pdb = test::ReadFile(test::DataFile("1crn.pdb"));
  const std::string cif = test::ReadFile(test::DataFile("formats/2w83_c.cif"));
  const std::string gzipped = test::Gzip(pdb);
  struct Case {
    const char* what;
    std::string bytes;
    bool mmcif;
    bool compressed;
    const char* error;  // nullptr when the file is read
  } cases[] = {
      {"PDB", pdb, false, false, nullptr},
      {"mmCIF", cif, true, false, nullptr},
      {"gzip PDB", gzipped, false, true, nullptr},
      {"gzip mmCIF", test::Gzip(cif), true, true, nullptr},
      {"mmCIF after comments", "# made by hand\n\n" + cif, true, false, nullptr},
      {"PDB that mentions data_ later", std::string(kPdbLine) + "data_X\n", false, false, nullptr},
      {"empty", "", false, false, "holds no atoms (empty file)"},
      {"empty gzip", test::Gzip(""), false, false, "holds no atoms (empty file)"},
      {"text", "HEADER    NOTHING HERE\nREMARK 1\n", false, false,
       "holds no atoms (no ATOM or HETATM records, no mmCIF data block)"},
      {"binary", std::string("\x7f" "ELF\x02\x01\x01\0\0\0\x03\0\x3e\0", 14), false, false,
       "holds no atoms (binary data"},
      {"truncated gzip", gzipped.substr(0, gzipped.size() / 2), false, false,
       "truncated gzip data"},
      {"corrupt gzip", std::string("\x1f\x8b\x08\0\0\0\0\0\0\x03garbage-garbage", 25), false, false,
       "corrupt gzip data"},
      {"mmCIF without atoms", "data_X\n_entry.id X\n", false, false,
       "holds no atoms (mmCIF without atom sites)"},
      {"broken mmCIF", "data_X\nloop_\n_atom_site.Cartn_x\n'1.0\n", false, false,
       "unreadable mmCIF"},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.what);
    if (c.error != nullptr) {
      std::string error = ErrorOf("in.file", c.bytes);
      EXPECT_EQ(error.rfind("in.file: ", 0), 0u) << error;
      EXPECT_NE(error.find(c.error), std::string::npos) << error;
      EXPECT_EQ(error.find('\n'), std::string::npos) << error;
      continue;
    }
    StructureFile file = StructureFile::FromBytes("in.file", c.bytes);
    EXPECT_EQ(file.format(), c.mmcif ? StructureFormat::kMmcif : StructureFormat::kPdb);
    EXPECT_EQ(file.compressed(), c.compressed);
  }
}

TEST(StructureFile, UnreadablePathsNameTheFile) {
  const test::Scratch dir;
  for (const std::string& path : {dir / "missing.pdb", dir.path()}) {
    try {
      StructureFile file(path);
      ADD_FAILURE() << "read " << path;
    } catch (const std::runtime_error& error) {
      EXPECT_EQ(std::string(error.what()).rfind(path + ": cannot ", 0), 0u) << error.what();
    }
  }
}

// Chains of the first model in file order; DNA is no protein; residues as quarnel's reader
// counts them (hydrogens, HETATM and later models left out).
TEST(StructureFile, ListsTheChainsOfTheFirstModel) {
  struct Case {
    const char* file;
    const char* listing;
  } cases[] = {
      {"1lcd.pdb", "B:11,C:11,A:51:protein"},
      {"formats/1lcd_trim.cif", "B:11,C:2,A:4:protein"},
      {"formats/2w83_c.cif", "C:8:protein"},
      {"formats/2w83_c.pdb.gz", "C:8:protein"},
      {"1a8o.pdb", "A:66:protein"},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.file);
    EXPECT_EQ(Listing(StructureFile(test::DataFile(c.file))), c.listing);
  }
}

// The same entry from wwPDB in both formats: each chain copy carries the same columns (the
// serial number aside, which trimming changed) and the PDB text is the file's own.
TEST(StructureFile, ChainTextOfMmcifMatchesThePdbChainCopy) {
  struct Case {
    const char* pdb;
    const char* other;
    const char* chain;
  } cases[] = {
      {"1lcd.pdb", "formats/1lcd_trim.cif", "B"},  // DNA, hydrogens, three models
      {"formats/2w83_c.pdb.gz", "formats/2w83_c.cif", "C"},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.other);
    StructureFile pdb(test::DataFile(c.pdb));
    StructureFile other(test::DataFile(c.other));
    std::string copy = ChainText(pdb, c.chain);
    EXPECT_EQ(Comparable(ChainText(other, c.chain)), Comparable(copy));
    EXPECT_EQ(copy.substr(copy.size() - 8), "TER\nEND\n");
  }
  // A gzip file of two members (concatenated archives) is read whole, byte for byte.
  std::string pdbText = test::ReadFile(test::DataFile("1crn.pdb"));
  size_t half = pdbText.size() / 2;
  std::string twoMembers = test::Gzip(pdbText.substr(0, half)) + test::Gzip(pdbText.substr(half));
  EXPECT_EQ(StructureFile::FromBytes("1crn.pdb.gz", twoMembers).WholePdbText(), pdbText);
}

// quarnel's chain copy: ATOM records of the chain up to the first END or ENDMDL, a long line in
// pieces of 299 characters, a missing last newline supplied.
TEST(StructureFile, PdbChainTextFollowsTheChainCopyRules) {
  const std::string atomA = kPdbLine;
  std::string atomB = atomA;
  atomB[21] = 'B';
  const std::string water =
      "HETATM    2  O   HOH A 101       1.000   2.000   3.000  1.00 10.00           O  \n";
  const std::string longA = atomA.substr(0, 80) + std::string(240, 'x') + "\n";
  StructureFile file = StructureFile::FromBytes(
      "x.pdb", "MODEL        1\n" + atomA + water + atomB + "TER\n" + longA +
                   "ENDMDL\nMODEL        2\n" + atomA + "ENDMDL\n");
  EXPECT_EQ(ChainText(file, "A"), atomA + longA.substr(0, 299) + "\n" + "TER\nEND\n");
  EXPECT_EQ(ChainText(file, "B"), atomB + "TER\nEND\n");
  EXPECT_EQ(Listing(file), "A:1:protein,B:1:protein");

  const std::string lastA = atomA.substr(0, 80);  // the file ends without a newline
  StructureFile unterminated = StructureFile::FromBytes("y.pdb", atomA + lastA);
  EXPECT_EQ(unterminated.WholePdbText(), atomA + lastA);
  EXPECT_EQ(ChainText(unterminated, "A"), atomA + lastA + "\nTER\nEND\n");
}

// wwPDB columns: names of one-letter elements from column 14, a calcium ion and four-character
// names from 13; the alternate location in 17; HETATM kept; TER after the polymer, counted in
// the serial numbers after it; occupancy, B-factor and element in their columns.
TEST(StructureFile, MmcifSitesBecomeWwpdbRecords) {
  std::vector<Site> sites = {
      {"ATOM", "1", "C", "CA", "A", "ALA", "1", "7", "-11.250", "0.50", "31.50", "A", "1"},
      {"ATOM", "2", "H", "HB12", ".", "ALA", "1", "7", "1.000", "1.00", "5.00", "A", "1"},
      {"HETATM", "3", "CA", "CA", ".", "CA", "2", "101", "1.000", "1.00", "20.00", "A", "1"},
  };
  StructureFile file = StructureFile::FromBytes("t.cif", Mmcif(sites));
  std::string pad(10, ' ');
  EXPECT_EQ(WholeText(file),
            "ATOM      1  CA AALA A   7     -11.250   2.000   3.000  0.50 31.50" + pad + " C  \n"
            "ATOM      2 HB12 ALA A   7       1.000   2.000   3.000  1.00  5.00" + pad + " H  \n"
            "TER       3      ALA A   7" + std::string(54, ' ') + "\n"
            "HETATM    4 CA    CA A 101       1.000   2.000   3.000  1.00 20.00" + pad + "CA  \n"
            "END" + std::string(77, ' ') + "\n");
  EXPECT_EQ(Listing(file), "A:1:protein");
}

TEST(StructureFile, MmcifReadsTheFirstModelOnly) {
  StructureFile file = StructureFile::FromBytes(
      "m.cif", Mmcif({Atom("1", "A", "1"), Atom("2", "B", "1", "2"), Atom("3", "A", "2", "2")}));
  EXPECT_EQ(Listing(file), "A:1:protein");
  EXPECT_EQ(ChainText(file, "A").find("ATOM      1  CA  GLY A   1"), 0u);
  EXPECT_EQ(ChainText(file, "A").find("GLY A   2"), std::string::npos);
}

// Long chain ids take free one-character ids in file order; past the pool the file can only be
// read chain by chain.
TEST(StructureFile, LongChainIdsGetFreeOneCharacterIds) {
  StructureFile file = StructureFile::FromBytes(
      "c.cif", Mmcif({Atom("1", "A", "1"), Atom("2", "AA", "1"), Atom("3", "B", "1")}));
  EXPECT_EQ(Listing(file), "A:1:protein,AA:1:protein=C,B:1:protein");
  EXPECT_EQ(ChainText(file, "AA").substr(21, 1), "C");
  EXPECT_NE(file.WholePdbText().find("GLY C   1"), std::string::npos);

  std::vector<Site> many;
  for (int i = 0; i < 63; ++i) many.push_back(Atom(std::to_string(i + 1), "c" + std::to_string(i), "1"));
  StructureFile crowded = StructureFile::FromBytes("many.cif", Mmcif(many));
  EXPECT_EQ(crowded.chains()[61].text_id, '9');
  EXPECT_EQ(crowded.chains()[62].text_id, 'A');
  EXPECT_EQ(ChainText(crowded, "c62").substr(21, 1), "A");
  EXPECT_THROW(crowded.WholeRecords(), std::runtime_error);
}

// A residue number past the four columns is read whole (its PDB text writes it in hybrid-36); an
// atom name longer than its columns spoils its own chain only.
TEST(StructureFile, NumbersPastThePdbColumnsAreReadNamesPastThemRefused) {
  Site longName = Atom("3", "C", "1");
  longName.atom = "CA123";
  StructureFile file = StructureFile::FromBytes(
      "n.cif", Mmcif({Atom("1", "A", "10000"), Atom("2", "B", "9999"), longName}));
  EXPECT_EQ(file.ChainRecords("A").records.front().resnum, 10000);
  EXPECT_EQ(ChainText(file, "A").substr(22, 4), "A000");
  EXPECT_EQ(ChainText(file, "B").substr(22, 4), "9999");
  for (auto read : {+[](const StructureFile& f) { f.ChainRecords("C"); },
                    +[](const StructureFile& f) { f.WholeRecords(); }}) {
    try {
      read(file);
      ADD_FAILURE() << "no error";
    } catch (const std::runtime_error& error) {
      EXPECT_STREQ(error.what(), "n.cif: chain C residue 1 atom CA123: atom name longer than 4 characters");
    }
  }
  try {
    file.ChainRecords("Z");
    ADD_FAILURE() << "no error";
  } catch (const std::runtime_error& error) {
    EXPECT_STREQ(error.what(), "n.cif: no chain 'Z' (chains: A, B, C)");
  }
}

}  // namespace
}  // namespace quarnel
