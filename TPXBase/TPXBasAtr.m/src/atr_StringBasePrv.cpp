// atr_StringBasePrv.cpp: the public wrapper's forwarding operations.
#include "atr_StringBasePrv.h"

#include "atr_StringBaseImpl.h"

#include <cstring>

atr_StringBasePrv& atr_StringBasePrv::operator=(const char* text) {
  atr_StringBase::operator=(text);
  return *this;
}

atr_StringBasePrv& atr_StringBasePrv::operator=(const atr_StringBase& other) {
  atr_StringBase::operator=(other);
  return *this;
}

atr_StringBasePrv& atr_StringBasePrv::operator=(const atr_StringBasePrv& other) {
  atr_StringBase::operator=(other);
  return *this;
}

atr_StringBasePrv& atr_StringBasePrv::operator+=(const char* text) {
  if (text != nullptr) atr_StringBase::Append(text, atr_Length32(std::strlen(text)));
  return *this;
}

atr_StringBasePrv& atr_StringBasePrv::operator+=(const atr_StringBasePrv& other) {
  atr_StringBase::Append(other);
  return *this;
}

atr_StringBasePrv& atr_StringBasePrv::Append(const char* text, unsigned int n) {
  if (text == nullptr) return *this;
  const std::size_t limit = n < static_cast<unsigned>(ATR_TO_END) ? n : ATR_TO_END;
  atr_StringBase::Append(text, static_cast<int>(strnlen(text, limit)));
  return *this;
}

atr_StringBasePrv& atr_StringBasePrv::Append(const atr_StringBasePrv& other) {
  atr_StringBase::Append(other);
  return *this;
}

atr_StringBasePrv& atr_StringBasePrv::Erase() {
  atr_StringBase::Erase(0, ATR_TO_END);
  return *this;
}

atr_StringBasePrv& atr_StringBasePrv::RightTrim(const char* set) {
  atr_StringBase::RightTrim(set);
  return *this;
}

atr_StringBasePrv& atr_StringBasePrv::Substitute(const char* from, const char* to,
                                                 unsigned int count) {
  const unsigned cap = static_cast<unsigned>(ATR_TO_END);
  atr_StringBase::Substitute(from, to, static_cast<int>(count < cap ? count : cap));
  return *this;
}

void atr_StringBasePrv::AssignTo(atr_StringBase& target) const { target.operator=(*this); }
