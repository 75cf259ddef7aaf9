/* A C host: initialises the library with its own tally, makes, reads and releases UTF-16 OS
   strings, and finalises. The exit code says which step failed. */
#include <KLDTPXBasCoreUtilsC.h> /* declares every entry point for C callers */
#include <stdio.h>
#include <string.h>

static int SameUnits(const unsigned short* got, const unsigned short* expected) {
  for (;; ++got, ++expected) {
    if (*got != *expected) return 0;
    if (*expected == 0) return 1;
  }
}

int main(void) {
  /* 'A', e acute, an emoji beyond the 16-bit plane: one unit, one unit, a surrogate pair. */
  static const unsigned short expected[] = {0x41, 0xE9, 0xD83D, 0xDE00, 0};
  static const unsigned short empty[] = {0};
  TPXOsString* text;
  TPXOsString* none;

  if (strcmp(TPXBasCoreUtils_version(), KLDTPXBASCOREUTILS_VERSION) != 0) return 7;
  TPXBasCoreUtils_initializeC();
  text = TPXBasOsStringMake("A\xC3\xA9\xF0\x9F\x98\x80");
  if (text == NULL) return 2;
  if (!SameUnits(TPXBasOsStringToOS(text), expected)) return 3;
  TPXBasOsStringRelease(text);

  none = TPXBasOsStringMake(NULL);
  if (none == NULL || !SameUnits(TPXBasOsStringToOS(none), empty)) return 4;
  TPXBasOsStringRelease(none);

  /* Text that is not UTF-8 makes nothing; null is accepted. */
  if (TPXBasOsStringMake("\xC3\x28") != NULL) return 5;
  TPXBasOsStringRelease(NULL);
  if (TPXBasOsStringToOS(NULL) != NULL) return 6;

  TPXBasCoreUtils_finalizeC();
  printf("c consumer: ok\n");
  return 0;
}
