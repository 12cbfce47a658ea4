// The results written for each chain (the classic report line, one TSV row, one JSON line, a
// row per residue) and the line a results file opens with, which records the options that made it.
#pragma once

#include <string>

#include "report/outcome.h"

namespace quarnel {

enum class ResultFormat { kClassic, kTsv, kJson, kResidues };

// "classic", "tsv", "json" or "residues"; false for any other name.
bool ParseResultFormat(const std::string& name, ResultFormat& format);
const char* ResultFormatName(ResultFormat format);

// What a results file opens with: for TSV and residue rows a comment line recording the options
// and the column names, for JSON Lines an object recording the options; nothing for classic
// report lines.
// `options` is the recorded text of the result-affecting options (RecordedOptions).
std::string ResultHeader(ResultFormat format, const std::string& options);

// The recorded options of a results file's first line (as ResultHeader wrote them); false when
// the line is not the record line of that format.
bool ReadRecordedOptions(ResultFormat format, const std::string& firstLine, std::string& options);

// The TSV column names: Chainsaw's seven, then quarnel's own.
inline constexpr char kTsvColumns[] =
    "chain_id\tsequence_md5\tnres\tndom\tchopping\tconfidence\ttime_sec\t"
    "verdict\tinput\tchain\tdomain_confidences\tmode\tboundaries\n";
// The residue rows' column names: the labels other choppers write per residue, by these names.
inline constexpr char kResidueColumns[] = "chain_id\tchain\tresidue\tresname\tdomain\n";
// Each chain's residue rows follow a comment line naming the chain as resuming knows it and the
// number of rows, so that a resumed run tells a chain written whole from one cut short:
// "# chain_id 1abcA<tab>input in/1abc.pdb<tab>chain A<tab>residues 214".
inline constexpr char kResidueBlockStart[] = "# chain_id ";
inline constexpr char kResidueBlockInput[] = "input ";
inline constexpr char kResidueBlockChain[] = "chain ";
inline constexpr char kResidueBlockCount[] = "residues ";
// The first words of the line a TSV (or residue rows) results file opens with, and of a JSON
// Lines one.
inline constexpr char kTsvRecordStart[] = "# quarnel ";
inline constexpr char kJsonRecordKey[] = "quarnel";
// What the record line says when no result-affecting option differs from its default.
inline constexpr char kDefaultOptions[] = "(defaults)";

// One chain's lines, newline included. A failed chain writes nothing in any format: its
// reason goes to the driver's error report, and a resumed run tries it again because no
// result of it is on file.
std::string FormatResult(ResultFormat format, const ChainOutcome& outcome);

// The text a TSV field gets: no tab or line end (a file name that has one is written with
// blanks); "NULL" for a value that is absent.
std::string TsvField(const std::string& text);

// Each format's writer (tsv_rows.cpp, json_rows.cpp, residue_rows.cpp): a judged chain's lines,
// the opening line.
std::string TsvRow(const ChainOutcome& outcome);
std::string JsonRow(const ChainOutcome& outcome);
std::string JsonRecord(const std::string& options);
std::string ResidueRows(const ChainOutcome& outcome);

// Every residue of a judged chain in chain order with its domain's place (from 1), residues left
// out below --min-plddt in their place with 0: what the residue rows write, and the library's
// labels.
struct LabelledResidue {
  int32_t resnum;
  char icode;
  std::string resname;  // blanks trimmed: "DA" for " DA"
  int domain;
};
std::vector<LabelledResidue> LabelledResidues(const ChainOutcome& outcome);

}  // namespace quarnel
