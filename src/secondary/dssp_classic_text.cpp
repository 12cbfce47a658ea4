// DSSP's rows printed as mkdssp prints its classic table, columns 1-34.
#include <cstdio>

#include "secondary/dssp_library.h"

namespace quarnel {
namespace {

constexpr char kTableHeader[] = "  #  RESIDUE AA STRUCTURE BP1 BP2\n";

std::string RowLine(const DsspResidue& r) {
  char line[64];
  if (r.row.chainBreak) {
    std::snprintf(line, sizeof(line), "%5d        !%c             0   0 \n", r.row.number, r.newChain ? '*' : ' ');
    return line;
  }
  std::snprintf(line, sizeof(line), "%5d%5d%c%c %c  %c%c%c%c%c%c%c%c%c%4d%4d%c\n", r.row.number, r.row.resnum,
                r.row.icode, r.chain, r.row.aa, r.row.ss, r.helix[0], r.helix[1], r.helix[2], r.helix[3], r.bend,
                r.chirality, r.ladder[0], r.ladder[1], r.row.partner1, r.row.partner2, r.sheet);
  return line;
}

}  // namespace

std::string ClassicDsspTable(const std::vector<DsspResidue>& residues) {
  std::string table = kTableHeader;
  for (const DsspResidue& residue : residues) table += RowLine(residue);
  return table;
}

}  // namespace quarnel
