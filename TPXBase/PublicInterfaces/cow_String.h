/// @file cow_String.h
/// The smallest public form of the copy-on-write byte string.
#ifndef COW_STRING_H
#define COW_STRING_H

#include "KLDTPXBasExport.h"
#include "atr_StringBase.h"

/// A byte string that holds a copy of n bytes of a text and gives it back; nothing more.
class KLDTPXBAS_API cow_String : public atr_StringBase {
 public:
  /// Copies exactly n bytes (zero bytes included); always has storage, also for n 0.
  cow_String(const char* text, int n) : atr_StringBase(text, n) {}
  ~cow_String() = default;
  /// The bytes held, followed by a terminating zero.
  const char* CStr() const { return atr_StringBase::CStr(); }
};

#endif  // COW_STRING_H
