// A program of someone else's using the installed library: the TSV row of every chain of the
// files it is given, as `quarnel --format tsv` writes them.
#include <iostream>

#include <quarnel/quarnel.h>

int main(int argc, char** argv) {
  const quarnel::Chopper chopper;
  try {
    for (int k = 1; k < argc; ++k)
      for (const quarnel::Result& chain : chopper.ChopFile(argv[k]))
        std::cout << (chain.ok() ? chain.tsv_row : chain.entry + ": " + chain.error + "\n");
  } catch (const quarnel::Error& error) {
    std::cerr << error.what() << '\n';
    return error.status();
  }
  return 0;
}
