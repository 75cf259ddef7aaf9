/// @file atr_StringBasePrv.h
/// A public wrapper over the byte string's protected operations.
#ifndef ATR_STRINGBASEPRV_H
#define ATR_STRINGBASEPRV_H

#include "KLDTPXBasExport.h"
#include "atr_StringBase.h"

/// The byte string for client code that needs a few of its editing operations directly.
/// Copies and assignments from another string share its header, as atr_StringBase does;
/// the first edit copies. Adds no fields.
class KLDTPXBAS_API atr_StringBasePrv : public atr_StringBase {
 public:
  atr_StringBasePrv() = default;
  /// Copies the text; null gives the empty string.
  atr_StringBasePrv(const char* text) : atr_StringBase(text) {}  // NOLINT: converting by design
  /// Shares other's text.
  atr_StringBasePrv(const atr_StringBase& other) : atr_StringBase(other) {}  // NOLINT
  /// Shares other's text.
  atr_StringBasePrv(const atr_StringBasePrv& other) = default;
  ~atr_StringBasePrv() = default;

  /// Copies the text; null or "" gives the empty string.
  atr_StringBasePrv& operator=(const char* text);
  /// Shares other's text.
  atr_StringBasePrv& operator=(const atr_StringBase& other);
  /// Shares other's text.
  atr_StringBasePrv& operator=(const atr_StringBasePrv& other);
  /// Appends the zero-terminated text (null: nothing).
  atr_StringBasePrv& operator+=(const char* text);
  /// Appends other's text (which may be this string's own).
  atr_StringBasePrv& operator+=(const atr_StringBasePrv& other);

  /// Appends the text up to its terminator, at most n bytes of it.
  atr_StringBasePrv& Append(const char* text, unsigned int n);
  /// Appends other's text (which may be this string's own).
  atr_StringBasePrv& Append(const atr_StringBasePrv& other);
  /// Erases the whole text (the storage stays).
  atr_StringBasePrv& Erase();
  /// Removes the trailing bytes that occur in set.
  atr_StringBasePrv& RightTrim(const char* set);
  /// count is capped at 2147483647.
  atr_StringBasePrv& Substitute(const char* from, const char* to, unsigned int count);
  /// -1, 0 or 1 comparing unsigned bytes up to the first zero byte; null compares as "".
  int Compare(const char* text) const { return atr_StringBase::Compare(text); }
  /// Bytes of text, terminator excluded.
  unsigned int Length() const { return static_cast<unsigned int>(atr_StringBase::Length()); }
  /// The text, zero-terminated; "" for the empty string. Valid until the next edit.
  const char* CStr() const { return atr_StringBase::CStr(); }
  /// Makes target share this string's header, as assignment does.
  void AssignTo(atr_StringBase& target) const;
};

#endif  // ATR_STRINGBASEPRV_H
