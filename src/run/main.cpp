// quarnel: splits a protein chain into structural domains and prints them on one line.
#include "run/driver.h"
#include "run/fatal.h"

int main(int argc, char** argv) { return RunWithFatalExit(RunQuarnel, argc, argv); }
