// Fuzz target: strnatcmp is an order (antisymmetric, reflexive, transitive on every triple)
// and gives what a literal step-by-step walk gives, which re-compares the rest of equal digit
// runs at every later position instead of skipping them.
#include "KLDTPXBasCoreUtils.h"

#include <cstdint>
#include <cstdlib>
#include <string>

namespace {

void Check(bool ok) {
  if (!ok) std::abort();
}

bool Digit(char c) { return c >= '0' && c <= '9'; }

int RightAligned(const char* a, const char* b) {
  int bias = 0;
  for (;; ++a, ++b) {
    if (!Digit(*a) && !Digit(*b)) return bias;
    if (!Digit(*a)) return -1;
    if (!Digit(*b)) return 1;
    if (bias == 0 && *a != *b) bias = *a < *b ? -1 : 1;
  }
}

int LeftAligned(const char* a, const char* b) {
  for (;; ++a, ++b) {
    if (!Digit(*a) && !Digit(*b)) return 0;
    if (!Digit(*a)) return -1;
    if (!Digit(*b)) return 1;
    if (*a != *b) return *a < *b ? -1 : 1;
  }
}

int Reference(const char* a, const char* b) {
  for (std::size_t i = 0;; ++i) {
    const signed char ca = static_cast<signed char>(a[i]);
    const signed char cb = static_cast<signed char>(b[i]);
    if (Digit(ca) && Digit(cb)) {
      int r = (ca == '0' || cb == '0') ? LeftAligned(a + i, b + i) : RightAligned(a + i, b + i);
      if (r != 0) return r;
    }
    if (ca == 0 && cb == 0) return 0;
    if (ca < cb) return -1;
    if (ca > cb) return 1;
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  // Three texts separated by zero bytes (missing ones are empty).
  std::string t[3];
  int k = 0;
  for (std::size_t i = 0; i < size && k < 3; ++i) {
    if (data[i] == 0)
      ++k;
    else
      t[k] += static_cast<char>(data[i]);
  }
  int r[3][3];
  for (int i = 0; i < 3; ++i)
    for (int j = 0; j < 3; ++j) {
      r[i][j] = strnatcmp(t[i].c_str(), t[j].c_str());
      Check(r[i][j] >= -1 && r[i][j] <= 1);
      Check(r[i][j] == Reference(t[i].c_str(), t[j].c_str()));
    }
  for (int i = 0; i < 3; ++i) {
    Check(r[i][i] == 0);
    for (int j = 0; j < 3; ++j) {
      Check(r[i][j] == -r[j][i]);
      for (int l = 0; l < 3; ++l) {
        if (r[i][j] <= 0 && r[j][l] <= 0) Check(r[i][l] <= 0);
        if (r[i][j] == 0 && r[j][l] == 0) Check(r[i][l] == 0);
      }
    }
  }
  return 0;
}
