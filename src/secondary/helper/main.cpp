// quarnel-secondary: DSSP's library for programs that cannot hold it (quarnel's Python module).
// Serves requests on standard input until it ends: atoms in, DSSP's rows out, each a framed
// message (secondary/dssp_helper.h). The dictionary DSSP needs is read once, for every request.
#include <unistd.h>

#include <stdexcept>

#include "secondary/dssp_helper.h"

int main() {
  using namespace quarnel;
  const DsspLibrary library;
  std::string request;
  while (ReadHelperMessage(STDIN_FILENO, request)) {
    std::string answer;
    try {
      std::vector<DsspRow> rows;
      for (const DsspResidue& residue : library.Residues(ReadHelperAtoms(request))) rows.push_back(residue.row);
      answer = WriteHelperRows(rows);
    } catch (const std::exception& failure) {
      answer = WriteHelperFailure(failure.what());
    }
    if (!WriteHelperMessage(STDOUT_FILENO, answer)) return 1;
  }
  return 0;
}
