/// @file TPXOsString.h
/// A UTF-8 text converted once into one of the operating system's forms, and
/// the process-wide converter that the allocation library uses for its own names.
#ifndef TPXOSSTRING_H
#define TPXOSSTRING_H

#include "KLDTPXBasExport.h"
#include "TPXBasOsStringC.h"
#include "TPXString.h"
#include "mem_AllocationOperators.h"

/// A TPXString converted into UTF-16 units or into the process locale's bytes, both
/// zero-terminated. The object owns the converted buffer; the pointers it gives stay valid
/// until it is destroyed. Not copyable. A text that cannot be converted (invalid UTF-8, or a
/// character the locale cannot represent) leaves the object holding no form (type 0), so
/// that asking for either form throws.
class KLDTPXBAS_API TPXOsString : public mem_AllocationOperators {
 public:
  /// The form to convert into.
  enum OsType {
    OsUTF16 = 1,  ///< zero-terminated UTF-16 units
    OsLocale = 2  ///< zero-terminated bytes in the process locale's encoding
  };

  /// Converts text into the form type; holds no form (type 0) when the conversion fails.
  TPXOsString(const TPXString& text, OsType type);
  /// The UTF-8 text is built into a TPXString first; null is the empty text.
  TPXOsString(const char* utf8, OsType type);
  ~TPXOsString();
  TPXOsString(const TPXOsString&) = delete;
  TPXOsString& operator=(const TPXOsString&) = delete;

  /// The UTF-16 units; throws TPXBasOsStringConversion when the object holds another form.
  const unsigned short* ToOS() const;
  /// The same as ToOS().
  const unsigned short* ToUTF16() const { return ToOS(); }
  /// The locale bytes; throws TPXBasOsStringCast("Locale") when the object holds another
  /// form.
  const char* ToLocale() const;
  /// The form held: OsUTF16, OsLocale, or 0 when the conversion failed.
  int GetType() const { return m_type; }

 private:
  void Convert(const TPXString& text);

  void* m_buffer = nullptr;
  int m_type;
};

/// Converts UTF-8 texts into the operating system's forms for a client that has no access to
/// the library's string classes. The library registers one instance with mem_ToOs when it is
/// first initialised; it lives until the process exits.
/// The two operations keep the first two slots of the virtual table, in this order.
class KLDTPXBAS_API TPXToOsBase : public mem_AllocationOperators {
 public:
  /// Writes the UTF-16 form of utf8 into out, which holds outBytes bytes; returns out.
  virtual const unsigned short* ToUTF16(const char* utf8, unsigned short* out, int outBytes) = 0;
  /// Writes the process locale's form of utf8 into out, which holds outBytes bytes; returns
  /// out.
  virtual const char* ToLocale(const char* utf8, char* out, int outBytes) = 0;
  virtual ~TPXToOsBase();
};

/// The library's converter. No state: any thread may use it.
class KLDTPXBAS_API TPXToOs : public TPXToOsBase {
 public:
  ~TPXToOs() override;
  /// Copies the UTF-16 units and their zero unit into out, at most outBytes bytes (a
  /// negative count is 0); returns out. Throws TPXBasOsStringConversion when utf8 is not
  /// valid UTF-8.
  const unsigned short* ToUTF16(const char* utf8, unsigned short* out, int outBytes) override;
  /// Copies the locale text into out as strncpy does with outBytes: zero-padded when
  /// shorter, not terminated when it fills out; returns out. Throws TPXBasOsStringCast
  /// ("Locale") when utf8 is not valid UTF-8 or the locale cannot represent it.
  const char* ToLocale(const char* utf8, char* out, int outBytes) override;
};

#endif  // TPXOSSTRING_H
