// One way to fail. Every designed failure (its message, stream and exit status) is raised
// through Fatal, which main turns into exactly the output of printing on the spot and exiting;
// tests can catch the FatalError in-process instead of forking.
#pragma once

#include <string>

enum class Stream { kStdout, kStderr };

constexpr int kAllocationFailedStatus = 50;

struct FatalError {
  int status;
  Stream stream;
  std::string text;  // printed verbatim: it carries its own line end when the message has one
};

[[noreturn]] void Fatal(int status, Stream stream, const std::string& text);

// printf-style formatting into a std::string of whatever length the values need.
std::string Format(const char* format, ...) __attribute__((format(printf, 1, 2)));

// Prints a failure's text on its stream and flushes both streams.
void EmitFatal(const FatalError& error);

// Storage the run cannot do without could not be allocated: "Allocation failed.", status 50.
[[noreturn]] void AllocationFailed();

// Runs a program's body and turns a designed failure into its message and exit status; storage
// that could not grow ends the run like a failed allocation of the contact matrix.
int RunWithFatalExit(int (*body)(int argc, char** argv), int argc, char** argv);
