// quarnel-secondary: DSSP's library for programs that cannot hold it (quarnel's Python module).
// Reads atoms on standard input, writes DSSP's rows on standard output (secondary/dssp_helper.h).
#include <cstdio>
#include <iterator>
#include <iostream>
#include <stdexcept>

#include "secondary/dssp_helper.h"

int main() {
  using namespace quarnel;
  std::string answer;
  try {
    const std::string input(std::istreambuf_iterator<char>(std::cin), {});
    std::vector<DsspRow> rows;
    const DsspLibrary library;
    for (const DsspResidue& residue : library.Residues(ReadHelperAtoms(input))) rows.push_back(residue.row);
    answer = WriteHelperRows(rows);
  } catch (const std::exception& failure) {
    answer = WriteHelperFailure(failure.what());
  }
  return std::fwrite(answer.data(), 1, answer.size(), stdout) == answer.size() && std::fflush(stdout) == 0 ? 0 : 1;
}
