// Atom records written as PDB text: a record read from a PDB file as the line it was read from,
// a record filled from mmCIF in the fixed columns wwPDB writes.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "formats/atom_records.h"

namespace quarnel {

// What closes every chain copy: a bare TER and END, as records whose lines say so.
inline constexpr std::string_view kTerLine = "TER\n";
inline constexpr std::string_view kEndLine = "END\n";
void AppendChainEnd(std::vector<AtomRecord>& records);

// The record's line without its line end (a DOS file's CR goes too).
std::string PdbLine(const AtomRecord& record);

// The record as a line of a PDB file: its own piece, given a newline when it has none (the first
// piece of a long line, the last line of a file), or its fields in their columns.
void AppendPdbRecord(std::string& out, const AtomRecord& record);

// Every record in turn, as AppendPdbRecord writes it: the PDB text of records.
std::string PdbText(const std::vector<AtomRecord>& records);

// Hybrid-36, as wwPDB and most programs extend a field past its decimal range: upper-case
// base-36 numbers that begin with a letter. Empty when the value does not fit even so.
std::string Hybrid36(long value, int width, long minDecimal, long maxDecimal);

}  // namespace quarnel
