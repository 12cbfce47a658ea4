// The run's own random stream: the 48-bit linear congruential generator of drand48, starting
// from the state of a process that never seeded it, so that every run draws the same numbers
// whatever else the process does. (The C library starts an unseeded drand48 from a zero state;
// erand48 on a state of our own applies the same multiplier and increment.)
#pragma once

#include <cstdint>
#include <cstdlib>

namespace quarnel {

class Rand48 {
 public:
  Rand48() = default;
  // A stream apart from the run's, as seed48 with these three words (low word first) would start
  // it. Only the accuracy mode makes these, one per candidate part, so that a part's cut does not
  // depend on the order or thread its part is searched in. They never draw from the run's own
  // (default) stream.
  Rand48(unsigned short low, unsigned short middle, unsigned short high) : state_{low, middle, high} {}

  // A uniform value in [0, 1), equal draw for draw to drand48() in a fresh process.
  double Next() { return erand48(state_); }

  // A random pick among the first m entries of a list.
  int Pick(int m) { return static_cast<int>(Next() * m); }

 private:
  // The state of a drand48 that was never seeded, low word first.
  unsigned short state_[3] = {0, 0, 0};
};

}  // namespace quarnel
