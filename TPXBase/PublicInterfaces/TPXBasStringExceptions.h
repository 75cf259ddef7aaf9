/// @file TPXBasStringExceptions.h
/// The exceptions of failed conversions between UTF-8, the process
/// locale and the operating system's string forms.
#ifndef TPXBASSTRINGEXCEPTIONS_H
#define TPXBASSTRINGEXCEPTIONS_H

#include "KLDTPXBasExport.h"
#include "TPXBasException.h"
#include "TPXString.h"

/// A text could not be converted to the process locale. Code 309;
/// "Trouble coverting string to current locale".
class KLDTPXBAS_API TPXBasOsStringConversion : public TPXBasException {
 public:
  TPXBasOsStringConversion();
  /// A copy sharing the texts of other.
  TPXBasOsStringConversion(const TPXBasOsStringConversion& other);
  ~TPXBasOsStringConversion() override;
  atr_String AsString(TPXBasStringMode mode) const override;
  [[noreturn]] void Propagate() const override;
  TPXBasException* Clone() const override;
  /// 309.
  int GetCode() const override;
};

/// An OS string was asked for a form it does not hold. Code 310;
/// "Attempt to access OS string using unexpected format: %s" with the expected form's name.
class KLDTPXBAS_API TPXBasOsStringCast : public TPXBasException {
 public:
  /// type names the form that was expected ("Locale", ...); copied.
  explicit TPXBasOsStringCast(const char* type);
  /// A copy sharing the texts of other.
  TPXBasOsStringCast(const TPXBasOsStringCast& other);
  ~TPXBasOsStringCast() override;
  atr_String AsString(TPXBasStringMode mode) const override;
  [[noreturn]] void Propagate() const override;
  TPXBasException* Clone() const override;
  /// 310.
  int GetCode() const override;
  /// The name of the form that was expected.
  const char* GetType() const { return m_type.CStr(); }

 private:
  atr_String m_type;
};

/// A locale text could not be converted to UTF-8. Code 311;
/// "Trouble converting string to UTF8: %s" with the text.
class KLDTPXBAS_API TPXBasToUTF8Exception : public TPXBasException {
 public:
  /// localeString is the text that did not convert; copied.
  explicit TPXBasToUTF8Exception(const char* localeString);
  /// A copy sharing the texts of other.
  TPXBasToUTF8Exception(const TPXBasToUTF8Exception& other);
  ~TPXBasToUTF8Exception() override;
  atr_String AsString(TPXBasStringMode mode) const override;
  [[noreturn]] void Propagate() const override;
  TPXBasException* Clone() const override;
  /// 311.
  int GetCode() const override;
  /// The text that did not convert, in the process locale's encoding.
  const char* GetLocaleString() const { return m_localeString.CStr(); }

 private:
  atr_String m_localeString;
};

/// A UTF-8 text could not be converted to the process locale. Code 312;
/// "Trouble converting string to current locale: %s" with the text.
class KLDTPXBAS_API TPXBasFromUTF8Exception : public TPXBasException {
 public:
  /// Shares text's representation.
  explicit TPXBasFromUTF8Exception(const TPXString& text);
  /// A copy sharing the texts of other.
  TPXBasFromUTF8Exception(const TPXBasFromUTF8Exception& other);
  ~TPXBasFromUTF8Exception() override;
  atr_String AsString(TPXBasStringMode mode) const override;
  [[noreturn]] void Propagate() const override;
  TPXBasException* Clone() const override;
  /// 312.
  int GetCode() const override;
  /// A copy sharing the text.
  TPXString GetUtfString() const { return m_utfString; }

 private:
  TPXString m_utfString;
};

#endif  // TPXBASSTRINGEXCEPTIONS_H
