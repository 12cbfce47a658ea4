// Programs started through the shell: DSSP_PATH as the user wrote it, with file names passed
// as single words.
#pragma once

#include <string>

namespace quarnel {

// A word for the shell, whatever characters it holds: a name with blanks, quotes, ';' or
// '$(...)' is passed on and never executed.
std::string ShellQuote(const std::string& word);
// A file name as one word, never taken for an option: a relative name beginning with '-' is
// written as ./-name.
std::string ShellFileWord(const std::string& path);

// Runs a command through the shell as system() does, after the output written so far has gone
// out; neither its status nor its output changes the run.
void RunShell(const std::string& command);

// Runs a shell command with the signal mask and dispositions of a fresh process, whatever this
// one blocks; its exit status, or -1 when it could not be started.
int RunCommand(const std::string& command);

}  // namespace quarnel
