// atr_translateParser.h: the format parser of atr_translate, for the conversion listing of
// atr_inspect.h (module only).
#ifndef ATR_TRANSLATEPARSER_H
#define ATR_TRANSLATEPARSER_H

#include "atr_translate.h"

/// Runs the parser, numbering and ordering of a message on a text of the caller's choice and
/// reads the conversions back, without a dictionary lookup and without the fatal report of
/// a "%$". The message must be empty (built from a null text).
struct atr_translateParser {
  /// Parses text into message. False when the text holds "%$": message is then empty again.
  static bool Parse(atr_translate& message, const char* text) {
    if (message.Parse(text) == atr_translate::ParseResult::Ok) return true;
    message.Clear();
    return false;
  }
  /// Numbers the unnumbered conversions and orders them by number, as construction does.
  static void NumberAndOrder(atr_translate& message) {
    message.Number();
    message.Order();
  }
  static int Count(const atr_translate& message) { return message.m_count; }
  /// The number of conversion i (order of appearance); negative while unnumbered.
  static int Number(const atr_translate& message, int i) { return message.m_args[i].m_number; }
  static const char* Format(const atr_translate& message, int i) {
    return message.m_args[i].m_format;
  }
  /// The argument that each conversion receives (after NumberAndOrder): argument[i] for
  /// conversion i in order of appearance, from 1; one pass over the conversions.
  static void Arguments(const atr_translate& message, int* argument) {
    for (int n = 0; n < message.m_count; ++n)
      argument[message.m_byNumber[n] - message.m_args] = n + 1;
  }
};

#endif  // ATR_TRANSLATEPARSER_H
