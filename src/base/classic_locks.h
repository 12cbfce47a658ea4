// Classic runs side by side in one folder share the files the classic run writes there: the
// chain copy of a code (1abca.pdb) and DSSP's output (entry.dssp, "./x.pdb" and "./y.pdb" both
// naming ".dssp"). Each such file is locked (flock) from before the run writes it until the run
// is done with it, so runs that would share one wait for each other and give the serial
// results. No other file is made, nothing is printed; where a file cannot be opened to lock it,
// the run goes on as it always has.
#pragma once

#include <string>
#include <vector>

namespace quarnel {

class ClassicLocks {
 public:
  ClassicLocks() = default;
  ~ClassicLocks();
  ClassicLocks(const ClassicLocks&) = delete;
  ClassicLocks& operator=(const ClassicLocks&) = delete;

  // Opens `path` for writing, creating it when missing, and waits for the lock on it; the
  // descriptor (kept until this object goes) or -1 when the file cannot be opened. `created`
  // tells whether this call made the file. The file is locked under its name: should the run
  // holding it remove it meanwhile, the file now under that name is locked instead.
  int Lock(const std::string& path, bool& created);

 private:
  std::vector<int> held_;
};

}  // namespace quarnel
