/// @file TPXBasSystemError.h
/// An operating-system error code and its message.
#ifndef TPXBASSYSTEMERROR_H
#define TPXBASSYSTEMERROR_H

#include "KLDTPXBasExport.h"
#include "TPXString.h"
#include "mem_AllocationOperators.h"

/// An errno value and the system's message for it in UTF-8 (strerror_r, converted from the
/// process locale). The message is asked for once, on the first AsString, and kept; copies
/// share it. Not a TPXBasException: a value to put into reports. One thread at a time.
class KLDTPXBAS_API TPXBasSystemError : public mem_AllocationOperators {
 public:
  /// The error of errno value code; its message is not asked for yet.
  explicit TPXBasSystemError(int code) : m_code(code) {}
  /// @{
  /// Copies the code and shares the message, if it was already asked for.
  TPXBasSystemError(const TPXBasSystemError& other) = default;
  TPXBasSystemError& operator=(const TPXBasSystemError& other) = default;
  /// @}
  ~TPXBasSystemError() = default;

  /// The message; "Internal error converting string from UTF16 to UTF8" when the system's
  /// text does not convert. Valid while this object lives and is not assigned to.
  const char* AsString() const;
  /// The errno value.
  int GetCode() const { return m_code; }

 private:
  int m_code;
  mutable TPXString m_message;
};

#endif  // TPXBASSYSTEMERROR_H
