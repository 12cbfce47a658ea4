// The failure path shared by every subsystem.
#include "run/fatal.h"

#include <cstdarg>
#include <cstdio>
#include <new>
#include <vector>

void Fatal(int status, Stream stream, const std::string& text) {
  throw FatalError{status, stream, text};
}

std::string Format(const char* format, ...) {
  va_list args;
  va_start(args, format);
  va_list again;
  va_copy(again, args);
  int length = std::vsnprintf(nullptr, 0, format, args);
  va_end(args);
  std::string result;
  if (length > 0) {
    std::vector<char> buffer(static_cast<size_t>(length) + 1);
    std::vsnprintf(buffer.data(), buffer.size(), format, again);
    result.assign(buffer.data(), static_cast<size_t>(length));
  }
  va_end(again);
  return result;
}

namespace {
const char kAllocationFailedText[] = "Allocation failed.\n";
}

void AllocationFailed() { Fatal(kAllocationFailedStatus, Stream::kStdout, kAllocationFailedText); }

int RunWithFatalExit(int (*body)(int argc, char** argv), int argc, char** argv) {
  try {
    return body(argc, argv);
  } catch (const FatalError& error) {
    EmitFatal(error);
    return error.status;
  } catch (const std::bad_alloc&) {
    EmitFatal(FatalError{kAllocationFailedStatus, Stream::kStdout, kAllocationFailedText});
    return kAllocationFailedStatus;
  }
}

void EmitFatal(const FatalError& error) {
  std::FILE* out = error.stream == Stream::kStderr ? stderr : stdout;
  std::fputs(error.text.c_str(), out);
  std::fflush(stdout);
  std::fflush(stderr);
}
