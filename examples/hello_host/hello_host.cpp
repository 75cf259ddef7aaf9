// hello_host.cpp: the smallest host: initialises the library on top of its load-time
// initialisation, shows the tally, and finalises.
#include "KLDTPXBasCoreUtils.h"

#include <cstdio>

int main() {
  int tally = 0;
  TPXBasCoreUtils_initialize(tally);
  // The loader has initialised the library already, so this call only nests.
  std::printf("KLDTPXBasCoreUtils: host initialise nested on the load-time one, tally %d\n", tally);
  TPXBasCoreUtils_finalize(tally);
  std::printf("KLDTPXBasCoreUtils: host finalise done, tally %d\n", tally);

  // After the loader's finalise (the detach notification) a host initialise does the whole
  // set-up: the library, its three sibling libraries, seven modules and the specific count.
  DllMain(nullptr, 0, nullptr);
  TPXBasCoreUtils_initialize(tally);
  std::printf("KLDTPXBasCoreUtils: first initialise of a fresh library, tally %d\n", tally);
  TPXBasCoreUtils_finalize(tally);
  std::printf("KLDTPXBasCoreUtils: last finalise, tally %d\n", tally);
  DllMain(nullptr, 1, nullptr);
  return tally == 0 ? 0 : 1;
}
