// Where the lines of a run go. The library prints nothing: the command line gives a console
// that writes to standard output and standard error, a library user one that keeps the lines
// or drops them.
#pragma once

#include <string>

#include "base/status.h"

namespace quarnel {

class Console {
 public:
  virtual ~Console() = default;
  // A line (or lines), newline included, on one of the two streams, in the order the run meets it.
  virtual void Print(Stream stream, const std::string& text) = 0;
  // Whether a progress line may be shown and redrawn on standard error (a terminal).
  virtual bool ShowsProgress() const { return false; }
};

}  // namespace quarnel
