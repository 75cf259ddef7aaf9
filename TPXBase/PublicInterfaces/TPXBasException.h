/// @file TPXBasException.h
/// The base of the library's exceptions and its three general-purpose
/// concrete classes (assertion, execution and pattern failures).
#ifndef TPXBASEXCEPTION_H
#define TPXBASEXCEPTION_H

#include "KLDTPXBasExport.h"
#include "TPXBasStringMode.h"
#include "atr_String.h"
#include "mem_AllocationOperators.h"

/// Base of every exception of the library: the source file and line it was thrown from, a
/// fixed numeric code, a translatable report and the means to copy and rethrow itself as its
/// concrete type. Exceptions are values owned by the thread that throws or catches them.
///
/// Throw(file, line) records the place, pushes the caller's call stack on the platform's error
/// stack when that is active, and throws a copy of the object as its concrete type, so a
/// handler may catch the concrete class or TPXBasException. A plain `throw` keeps file null
/// and line 0 and records nothing.
class KLDTPXBAS_API TPXBasException : public mem_AllocationOperators {
 public:
  virtual ~TPXBasException();
  /// "Exception: <user report> in file <file> at line <line>", translated, in mode's encoding.
  virtual atr_String DeveloperReport(TPXBasStringMode mode) const;
  /// AsString(mode): UTF-8 whatever the mode.
  virtual atr_String UserReport(TPXBasStringMode mode) const;
  /// The translated message of the concrete class, always UTF-8.
  virtual atr_String AsString(TPXBasStringMode mode) const = 0;
  /// Throws a copy of this object as its concrete type.
  [[noreturn]] virtual void Propagate() const = 0;
  /// A heap copy (delete it; it shares its strings with this object); null for the base.
  virtual TPXBasException* Clone() const;
  /// The fixed code of the concrete class (300 and up).
  virtual int GetCode() const = 0;

  /// Records file and line (file is not copied: pass a text that lives for the process), the
  /// call stack when the error stack is active, then Propagate(). Never returns.
  [[noreturn]] void Throw(const char* file, int line);

  /// The place recorded by Throw: null and 0 until then.
  const char* GetFile() const { return m_file; }
  /// The line recorded by Throw: 0 until then.
  int GetLine() const { return m_line; }

 protected:
  TPXBasException() = default;
  /// @{
  /// Copies the recorded place.
  TPXBasException(const TPXBasException& other) = default;
  TPXBasException& operator=(const TPXBasException& other) = default;
  /// @}

 private:
  const char* m_file = nullptr;
  int m_line = 0;
};

/// A failed condition that the caller reports as an exception rather than a fatal error.
/// Code 300; "Assertion Failure: %s" with the condition.
class KLDTPXBAS_API TPXBasAssertException : public TPXBasException {
 public:
  /// The condition is the text formatted through "%s" (null gives "").
  explicit TPXBasAssertException(const char* condition);
  /// A copy sharing the texts of other.
  TPXBasAssertException(const TPXBasAssertException& other);
  ~TPXBasAssertException() override;
  atr_String AsString(TPXBasStringMode mode) const override;
  [[noreturn]] void Propagate() const override;
  TPXBasException* Clone() const override;
  /// 300.
  int GetCode() const override;
  /// The condition text.
  const char* GetCondition() const { return m_condition.CStr(); }

 private:
  atr_String m_condition;
};

/// A pattern matcher's execution failure. Code 301; "rgx_match: exec error: %d".
class KLDTPXBAS_API TPXBasExecException : public TPXBasException {
 public:
  /// The failure of execution with the matcher's error code count.
  explicit TPXBasExecException(int count);
  /// A copy sharing the texts of other.
  TPXBasExecException(const TPXBasExecException& other);
  ~TPXBasExecException() override;
  atr_String AsString(TPXBasStringMode mode) const override;
  [[noreturn]] void Propagate() const override;
  TPXBasException* Clone() const override;
  /// 301.
  int GetCode() const override;
  /// The matcher's error code.
  int GetCount() const { return m_count; }

 private:
  int m_count;
};

/// A pattern that does not compile. Code 302;
/// "rgx_match: error in regex at offset %d: %s" with the offset and the message.
class KLDTPXBAS_API TPXBasPatternException : public TPXBasException {
 public:
  /// The message is the text formatted through "%s" (null gives "").
  TPXBasPatternException(int offset, const char* message);
  /// A copy sharing the texts of other.
  TPXBasPatternException(const TPXBasPatternException& other);
  ~TPXBasPatternException() override;
  atr_String AsString(TPXBasStringMode mode) const override;
  [[noreturn]] void Propagate() const override;
  TPXBasException* Clone() const override;
  /// 302.
  int GetCode() const override;
  /// The offset in the pattern where compiling failed.
  int GetOffset() const { return m_offset; }
  /// The matcher's message.
  const char* GetMsg() const { return m_msg.CStr(); }

 private:
  int m_offset;
  atr_String m_msg;
};

#endif  // TPXBASEXCEPTION_H
