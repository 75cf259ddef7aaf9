/// @file TPXBasStringMode.h
/// The encoding of the texts a caller hands in and gets back.
#ifndef TPXBASSTRINGMODE_H
#define TPXBASSTRINGMODE_H

#include "KLDTPXBasExport.h"

class atr_String;

/// One byte passed by value with every user-visible text: true means the process locale's
/// multibyte encoding, false UTF-8. Inside the library all message work is UTF-8; the two
/// conversions of TPXBasAtrStringMode translate at the edges.
class TPXBasStringMode {
 public:
  /// Explicit, so that a stray bool or pointer never passes for a mode.
  explicit TPXBasStringMode(bool isLocale) : m_isLocale(isLocale) {}
  /// True for the process locale's encoding, false for UTF-8.
  bool IsLocale() const { return m_isLocale; }

 private:
  bool m_isLocale;
};

namespace TPXBasAtrStringMode {

/// In locale mode text converted from the process locale to UTF-8 (atr_String::LocaleToUTF8);
/// in UTF-8 mode a copy sharing text's storage.
KLDTPXBAS_API atr_String ModalToUTF8(const atr_String& text, TPXBasStringMode mode);
/// In locale mode text converted from UTF-8 to the process locale (atr_String::UTF8ToLocale);
/// in UTF-8 mode a copy sharing text's storage.
KLDTPXBAS_API atr_String Utf8ToModal(const atr_String& text, TPXBasStringMode mode);

}  // namespace TPXBasAtrStringMode

#endif  // TPXBASSTRINGMODE_H
