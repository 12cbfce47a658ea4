// Reading fixed-column text records (PDB, DSSP) and handing names to the shell.
#pragma once

#include <cstdio>
#include <string>

// Records are read the way a 300-byte line buffer reads them: at most 299 characters at a
// time, so a longer line comes back in pieces, each taken as a line of its own. The newline,
// when the piece has one, is kept. Text after a NUL byte is dropped, as for a C string.
constexpr int kLineBuffer = 300;
bool ReadLine(std::FILE* file, std::string& line);

// Fields by 1-based column, as the PDB and DSSP format tables give them. A field reaching past
// the end of the line (the newline does not count as content) is cut short; a single column
// past the end reads as a blank.
std::string Columns(const std::string& line, int first, int last);
char Column(const std::string& line, int column);

bool StartsWith(const std::string& line, const char* prefix);

// atoi / atof semantics on a field: leading blanks skipped, the longest numeric prefix
// converted, 0 when there is none.
int AtoiField(const std::string& field);
double AtofField(const std::string& field);

// Truncation toward zero of a real value to a signed 32-bit integer, saturating outside its
// range and giving 0 for a value that is not a number (options and malformed coordinates can
// carry such values; the arithmetic must stay defined).
int TruncToInt(double value);

// A file name put into a shell command is one word, whatever characters it holds.
std::string ShellQuote(const std::string& word);

// A file name as a quoted shell word that no program takes for an option: a relative name
// beginning with '-' is written as ./-name, the same file.
std::string ShellFileWord(const std::string& path);
