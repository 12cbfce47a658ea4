// A DSSP run of the caller's own, read as the classic run reads DSSP's output.
#include "base/status.h"
#include "base/text.h"
#include "quarnel/quarnel.h"
#include "secondary/dssp_table.h"

namespace quarnel {

SecondaryTable ReadDsspOutput(const std::string& text) {
  std::vector<DsspRow> rows;
  try {
    rows = ReadDsspRows(TextSource("DSSP output", text));
  } catch (const Failure& failure) {
    throw Error(failure.exit_status(), failure.what());
  }
  if (rows.empty()) throw Error(static_cast<int>(Status::kInputOpen), "DSSP output: no residue table");
  SecondaryTable table;
  table.reserve(rows.size());
  for (const DsspRow& row : rows)
    table.push_back(SecondaryRow{row.number, ResidueId{row.resnum, row.icode}, row.aa, row.ss, row.partner1, row.partner2,
                                 row.chainBreak});
  return table;
}

}  // namespace quarnel
