// Real entries from the test data folder: residue counts against the data manifest, and DSSP
// output of real entries checked against the table read independently here.
#include <gtest/gtest.h>

#include <fstream>
#include <sstream>
#include <string>
#include <vector>

#include "contacts/contacts.h"
#include "run/parameters.h"
#include "structure/dssp.h"
#include "structure/pdb_names.h"
#include "structure/protein.h"
#include "support/test_support.h"

namespace {

std::vector<std::string> Split(const std::string& text, char separator) {
  std::vector<std::string> parts;
  std::stringstream stream(text);
  std::string part;
  while (std::getline(stream, part, separator)) parts.push_back(part);
  return parts;
}

struct ManifestEntry {
  std::string file;  // base name in the data folder
  std::vector<std::string> chains;
  int firstChainResidues = 0;
};

// MANIFEST.tsv: file, source, chains, residues_per_chain ("A:46,B:62"), models, notes.
std::vector<ManifestEntry> ReadManifest() {
  std::ifstream in(DataPath("MANIFEST.tsv"));
  std::vector<ManifestEntry> entries;
  std::string line;
  std::getline(in, line);  // header
  while (std::getline(in, line)) {
    std::vector<std::string> fields = Split(line, '\t');
    if (fields.size() < 4) continue;
    ManifestEntry entry;
    entry.file = fields[0].substr(fields[0].rfind('/') + 1);
    entry.chains = Split(fields[2], ',');
    std::string first = Split(fields[3], ',')[0];
    entry.firstChainResidues = std::stoi(first.substr(first.find(':') + 1));
    entries.push_back(entry);
  }
  return entries;
}

// A file of one chain is read whole; the first chain of a file of several is selected the way a
// PDB code with a chain letter selects it.
TEST(RealStructures, ResidueCountsMatchTheManifest) {
  std::vector<ManifestEntry> entries = ReadManifest();
  ASSERT_GE(entries.size(), 10u);
  for (const ManifestEntry& entry : entries) {
    StartCleanRun();
    TempDir dir;
    if (entry.chains.size() == 1) {
      TemplateName = DataPath(entry.file);
    } else {
      PDBPATH = DataPath("");
      CHAINPATH = dir.path() + "/";
      std::string name = entry.file.substr(0, 4) + entry.chains[0];
      PassName(name);
      CleanPDB();
    }
    GetProtein();
    EXPECT_EQ(ProteinSize, entry.firstChainResidues) << entry.file << " chain " << entry.chains[0];
    for (int i = 0; i < ProteinSize; ++i) ASSERT_EQ(Protein[i].index, i);
  }
}

// One line of DSSP's residue table, cut by column here independently of the reader.
struct TableLine {
  int number;
  int resnum;
  bool chainBreak;
  char ss;
  int bp1, bp2;
};

std::vector<TableLine> ReadTable(const std::string& path) {
  std::ifstream in(path);
  std::vector<TableLine> table;
  std::string line;
  bool inTable = false;
  while (std::getline(in, line)) {
    if (!inTable) {
      inTable = line.compare(0, 10, "  #  RESID") == 0;
      continue;
    }
    TableLine row;
    row.number = std::stoi(line.substr(0, 5));
    row.chainBreak = line[13] == '!';
    row.resnum = row.chainBreak ? 0 : std::stoi(line.substr(5, 5));
    row.ss = line[16] == ' ' ? 'L' : line[16];
    row.bp1 = std::stoi(line.substr(25, 4));
    row.bp2 = std::stoi(line.substr(29, 4));
    table.push_back(row);
  }
  return table;
}

// Reads the entry with its contacts, keeps a copy of the weights, then reads its DSSP output and
// checks every residue and every cell against the table: the residues follow the table lines
// that are not chain breaks, one for one, and the weights follow the all-pairs rule.
void CheckDssp(const std::string& entry) {
  StartCleanRun();
  TemplateName = DataPath(entry + ".pdb");
  GetProtein();
  ContactMatrix = ContactMalloc(ProteinSize, ProteinSize);
  ContactMatrixRows = ProteinSize;
  CalcContacts(Protein.data(), ProteinSize, ContactMatrix);
  std::vector<std::vector<int>> weight(ProteinSize, std::vector<int>(ProteinSize));
  for (int i = 0; i < ProteinSize; ++i) {
    for (int j = 0; j < ProteinSize; ++j) weight[i][j] = ContactMatrix[i][j].weight;
  }
  for (Residue& r : Protein) {
    r.ss = 'L';
    r.bridge1 = -1;
    r.bridge2 = -1;
  }
  ProcessDSSP(DataPath(entry + ".dssp"));

  std::vector<TableLine> table = ReadTable(DataPath(entry + ".dssp"));
  std::vector<int> residueOf(table.size() + 1, -1);
  std::vector<int> partner1(ProteinSize, -1), partner2(ProteinSize, -1);
  int k = 0;
  int strands = 0;
  for (const TableLine& row : table) {
    if (row.chainBreak) {
      residueOf[row.number] = k - 1;
      continue;
    }
    ASSERT_LT(k, ProteinSize) << entry;
    EXPECT_EQ(Protein[k].resnum, row.resnum) << entry << " line " << row.number;
    EXPECT_EQ(Protein[k].ss, row.ss) << entry << " line " << row.number;
    if (row.ss == 'E') {
      partner1[k] = row.bp1;
      partner2[k] = row.bp2;
      ++strands;
    }
    residueOf[row.number] = k++;
  }
  ASSERT_EQ(k, ProteinSize) << entry;
  ASSERT_GT(strands, 0) << entry;

  for (int i = 0; i < ProteinSize; ++i) {
    int expected1 = partner1[i] > 0 ? residueOf[partner1[i]] : -1;
    int expected2 = partner2[i] > 0 ? residueOf[partner2[i]] : -1;
    EXPECT_EQ(Protein[i].bridge1, expected1) << entry << " residue " << i;
    EXPECT_EQ(Protein[i].bridge2, expected2) << entry << " residue " << i;
  }
  for (int i = 1; i < ProteinSize; ++i) {
    if (Protein[i - 1].ss == 'E' && Protein[i].ss == 'E') weight[i - 1][i] = weight[i][i - 1] = 1000;
  }
  for (int i = 0; i < ProteinSize; ++i) {
    for (int j = i + 1; j < ProteinSize; ++j) {
      const Residue& a = Protein[i];
      const Residue& b = Protein[j];
      if (a.bridge1 == j || a.bridge2 == j || b.bridge1 == i || b.bridge2 == i)
        weight[i][j] = weight[j][i] = 12;
    }
  }
  for (int i = 0; i < ProteinSize; ++i) {
    for (int j = 0; j < ProteinSize; ++j)
      ASSERT_EQ(ContactMatrix[i][j].weight, weight[i][j]) << entry << " cell " << i << "," << j;
  }
}

TEST(RealStructures, CrambinDssp) { CheckDssp("1crn"); }

// Two chains read as one array, with DSSP's chain-break line between them.
TEST(RealStructures, TwoChainDsspWithBreak) { CheckDssp("1isu"); }

}  // namespace
