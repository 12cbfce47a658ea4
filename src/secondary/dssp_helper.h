// DSSP's library in a program of its own (quarnel-secondary), for code that cannot hold the
// library itself: a Python module is a shared object, and DSSP's archive is not
// position-independent. The atoms go to the program and its rows come back as text lines whose
// every value reads back as it was written, so the rows are the library's own.
#pragma once

#include <mutex>
#include <string>
#include <sys/types.h>
#include <vector>

#include "secondary/dssp_library.h"
#include "secondary/dssp_table.h"

namespace quarnel {

inline constexpr char kDsspHelperName[] = "quarnel-secondary";

// The fields of each atom DSSP reads, as bytes: the helper is this build's own program on the
// same machine, and the values must come back as they were (coordinates to the last bit).
std::string WriteHelperAtoms(const std::vector<AtomRecord>& atoms);
// Fails with std::runtime_error on text that is not whole atoms.
std::vector<AtomRecord> ReadHelperAtoms(const std::string& text);

// The rows, or DSSP's failure and its reason.
std::string WriteHelperRows(const std::vector<DsspRow>& rows);
std::string WriteHelperFailure(const std::string& reason);
// The rows; std::runtime_error with the helper's reason when DSSP failed, or when the text is
// not the helper's.
std::vector<DsspRow> ReadHelperRows(const std::string& text);

// Helper programs kept running between chains, each serving one chain at a time: starting one
// (and DSSP's dictionary in it) costs more than most chains' secondary structure. Requests and
// answers go over a socket, each a decimal byte count on a line of its own and the text; a
// helper ends when its socket is closed. Any number of threads may ask at once.
class DsspHelpers {
 public:
  explicit DsspHelpers(std::string program);
  ~DsspHelpers();
  DsspHelpers(const DsspHelpers&) = delete;
  DsspHelpers& operator=(const DsspHelpers&) = delete;

  const std::string& program() const { return program_; }
  // DSSP's rows for the atoms; std::runtime_error when DSSP fails or no helper answers (a helper
  // that broke off is replaced once).
  std::vector<DsspRow> Rows(const std::vector<AtomRecord>& atoms);

 private:
  struct Helper {
    pid_t pid = -1;
    int socket = -1;
  };
  Helper Start() const;
  static void Stop(const Helper& helper);

  std::string program_;
  std::mutex mutex_;
  std::vector<Helper> idle_;
  // The process the idle helpers serve. A process forked from it (Python's multiprocessing)
  // holds copies of their sockets; were it to use them, two processes would talk to one helper
  // at once and could read each other's rows. It starts helpers of its own instead.
  pid_t owner_;
};

// One framed message on a helper's socket (`fd`): false when it could not be written.
bool WriteHelperMessage(int fd, const std::string& text);
// The next one; false at the end of the stream or on a broken message.
bool ReadHelperMessage(int fd, std::string& text);

class HelperDssp final : public SecondaryStructureSource {
 public:
  // `name` is the input as messages give it.
  HelperDssp(DsspHelpers& helpers, std::string name) : helpers_(helpers), name_(std::move(name)) {}

  // DSSP's rows matched to the residues; when DSSP or the helper fails, a note and a table
  // without secondary structure, as the built-in DSSP does.
  SecondaryStructure Read(const Structure& structure, std::vector<Message>& messages) override;

 private:
  DsspHelpers& helpers_;
  std::string name_;
};

}  // namespace quarnel
