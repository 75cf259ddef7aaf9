// TPXStringTestSupport.h: helpers shared by the string tests.
#ifndef TPXSTRINGTESTSUPPORT_H
#define TPXSTRINGTESTSUPPORT_H

#include "KLDTPXBasCoreUtils.h"

#include <clocale>
#include <string>

inline std::string Text(const TPXString& s) { return s.CastToCharPtr(); }

/// Switches LC_CTYPE for the scope; ok is false when the system lacks the locale.
struct ScopedCtype {
  explicit ScopedCtype(const char* name) : old(std::setlocale(LC_CTYPE, nullptr)) {
    ok = std::setlocale(LC_CTYPE, name) != nullptr;
  }
  ~ScopedCtype() { std::setlocale(LC_CTYPE, old.c_str()); }
  std::string old;
  bool ok;
};

#endif  // TPXSTRINGTESTSUPPORT_H
