// A host built against the installed package: the umbrella header is its only include.
#include <KLDTPXBasCoreUtils.h>
#include <cstdio>

int main() {
  DllMain(nullptr, 0, nullptr);  // undo the load-time initialise to see a fresh one
  int tally = 0;
  TPXBasCoreUtils_initialize(tally);
  std::printf("consumer: tally %d\n", tally);
  TPXBasCoreUtils_finalize(tally);
  DllMain(nullptr, 1, nullptr);
  return tally == 0 ? 0 : 1;
}
