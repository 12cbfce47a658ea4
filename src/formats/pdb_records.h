// PDB-format text as quarnel's fixed-column readers see it: the pieces its 300-byte line buffer
// takes, the chain copy it writes and the residues it builds.
#pragma once

#include <algorithm>
#include <cstring>
#include <map>
#include <string>
#include <string_view>

namespace quarnel {

// A line buffer of 300 bytes takes at most 299 characters at a time: a longer line comes in
// pieces, each a record of its own. Text after a NUL byte is lost, as for a C string.
constexpr size_t kRecordPieceLength = 299;

// Calls visit(record) for every record of `text` in order, until it returns false.
template <class Visit>
void ForEachRecord(std::string_view text, Visit&& visit) {
  size_t position = 0;
  while (position < text.size()) {
    size_t limit = std::min(text.size(), position + kRecordPieceLength);
    const void* newline = std::memchr(text.data() + position, '\n', limit - position);
    size_t end = newline != nullptr
                     ? static_cast<size_t>(static_cast<const char*>(newline) - text.data()) + 1
                     : limit;
    std::string_view record = text.substr(position, end - position);
    record = record.substr(0, record.find('\0'));
    position = end;
    if (!visit(record)) return;
  }
}

bool RecordStartsWith(std::string_view record, std::string_view prefix);
// 1-based columns as the format tables give them; the newline is not content, and a column
// past the end reads as a blank (a field is cut short).
char RecordColumn(std::string_view record, int column);
std::string RecordField(std::string_view record, int first, int last);

// Appends the record, giving it a newline when it has none (the first piece of a long line,
// the last line of a file), so the copy keeps one record per line.
void AppendRecord(std::string& out, std::string_view record);

// What closes every chain copy.
constexpr std::string_view kChainCopyEnd = "TER\nEND\n";

// The ATOM records before the first record beginning with "END", grouped by column 22.
std::map<char, std::string> AtomRecordsByChain(std::string_view text);

// The residues quarnel's reader builds from the text: ATOM records up to the first "END",
// hydrogens (column 14 'H') left out, a new residue wherever the residue number or the
// insertion code changes.
int CountReaderResidues(std::string_view text);

}  // namespace quarnel
