// quarnel: splits a protein chain into structural domains and prints them on one line.
#include <cstdio>
#include <new>

#include "run/driver.h"
#include "run/fatal.h"

int main(int argc, char** argv) {
  try {
    return RunQuarnel(argc, argv);
  } catch (const FatalError& error) {
    EmitFatal(error);
    return error.status;
  } catch (const std::bad_alloc&) {
    // Any storage that could not grow ends the run like a failed allocation of the
    // contact matrix.
    EmitFatal(FatalError{50, Stream::kStdout, "Allocation failed.\n"});
    return 50;
  }
}
