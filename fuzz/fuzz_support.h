// What the fuzz targets share: a scratch directory of their own, fuzz inputs written there as
// files, a clean run at the start of every iteration, and checks that stop the fuzzer when a
// reader leaves data that later steps cannot rely on.
#pragma once

#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <string>

struct FatalError;

// A fresh directory for this fuzzing process, made on first use and removed at exit.
const std::string& ScratchDir();

// Writes the bytes to `name` inside the scratch directory and returns the file's path.
std::string WriteScratchFile(const std::string& name, const uint8_t* data, size_t size);

// The run state and the random sequence of a fresh process.
void StartIteration();

// Ends the fuzzing process as a crash, naming the broken expectation.
[[noreturn]] void FuzzFailure(const char* what);
inline void Require(bool condition, const char* what) {
  if (!condition) FuzzFailure(what);
}

// A failure is acceptable only when it is one of the designed ones of the code under test.
void RequireDesignedStatus(const FatalError& error, std::initializer_list<int> statuses);

// Whether the reader refuses these bytes as another format than PDB: gzip-compressed, or an mmCIF
// data block before the first residue.
bool IsRefusedFormat(const std::string& text);

// The structure's checks every reader caller relies on: positions equal indices, every residue
// owns at least one atom of the pool, the pool holds exactly the residues' atoms.
void RequireConsistentProtein();

// The contact matrix of the whole chain is symmetric with a zero diagonal and no negative count.
void RequireConsistentContacts();

// Output of the code under test would only slow the fuzzer down.
void SilenceStandardOutput();
