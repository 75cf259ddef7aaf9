/* A post-processor's C side hands its texts to the library through the C++ layer. */
#include "KLDTPXBasCoreUtilsC.h"

const char* kResultsWritten = "Results written to %s";
