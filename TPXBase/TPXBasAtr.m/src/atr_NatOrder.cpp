// atr_NatOrder.cpp: natural-order comparison and the process-wide natural-order switch.
#include "atr_NatOrder.h"

#include "KLDTPXBasAssert.h"

static constexpr const char kAssertPath[] = "TPXBase/TPXBasAtr.m/src/atr_NatOrder";

namespace {

int g_naturalOrder = 0;

inline bool IsDigit(char c) { return c >= '0' && c <= '9'; }

// Both compare the digit runs starting at a and b and give -1, 0 or 1, plus, through
// runLength, the length of the runs when they are equal (0 then means "identical runs").

// Runs without a leading zero: the longer run is the larger number; between runs of equal
// length the first differing digit decides.
int CompareRight(const char* a, const char* b, int* runLength) {
  int bias = 0;
  for (int i = 0;; ++i) {
    bool da = IsDigit(a[i]);
    bool db = IsDigit(b[i]);
    if (!da && !db) {
      *runLength = i;
      return bias;
    }
    if (!da) return -1;
    if (!db) return 1;
    if (bias == 0 && a[i] != b[i]) bias = a[i] < b[i] ? -1 : 1;
  }
}

// Runs with a leading zero compare like decimal fractions: the first difference decides.
int CompareLeft(const char* a, const char* b, int* runLength) {
  for (int i = 0;; ++i) {
    bool da = IsDigit(a[i]);
    bool db = IsDigit(b[i]);
    if (!da && !db) {
      *runLength = i;
      return 0;
    }
    if (!da) return -1;
    if (!db) return 1;
    if (a[i] != b[i]) return a[i] < b[i] ? -1 : 1;
  }
}

}  // namespace

int strnatcmp(const char* a, const char* b) {
  KLD_ASSERT(a && b);
  for (;;) {
    char ca = *a;
    char cb = *b;
    if (ca == cb && !IsDigit(ca)) {
      // The common case first: equal bytes outside numbers.
      if (ca == '\0') return 0;
      ++a;
      ++b;
      continue;
    }
    if (!IsDigit(ca) || !IsDigit(cb))
      return static_cast<signed char>(ca) < static_cast<signed char>(cb) ? -1 : 1;
    int runLength = 0;
    int r =
        (ca == '0' || cb == '0') ? CompareLeft(a, b, &runLength) : CompareRight(a, b, &runLength);
    if (r != 0) return r;
    // Equal runs are identical byte for byte, so every comparison that would start inside
    // them gives 0 as well: resume after them, which keeps long digit runs linear.
    a += runLength;
    b += runLength;
  }
}

int atr_getNaturalOrder() { return g_naturalOrder; }

void atr_setNaturalOrder(int value) { g_naturalOrder = value; }
