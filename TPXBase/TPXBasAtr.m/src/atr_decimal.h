// atr_decimal.h: integers written in decimal, as the message formatting writes a plain "%d",
// "%u" or an integer given to "%s" (module only).
#ifndef ATR_DECIMAL_H
#define ATR_DECIMAL_H

namespace atr_decimal {

/// Room for the longest number: 20 digits of an unsigned 64-bit value, or a sign and 19.
constexpr int kLongest = 24;

/// Writes magnitude in decimal, with a leading "-" when negative, so that it ends at end;
/// gives where it starts.
inline char* Write(char* end, unsigned long long magnitude, bool negative) {
  char* p = end;
  do {
    *--p = static_cast<char>('0' + magnitude % 10);
    magnitude /= 10;
  } while (magnitude != 0);
  if (negative) *--p = '-';
  return p;
}

/// Writes value in decimal so that it ends at end (the most negative value included); gives
/// where it starts.
inline char* WriteSigned(char* end, long long value) {
  const unsigned long long magnitude = value < 0 ? 0ull - static_cast<unsigned long long>(value)
                                                 : static_cast<unsigned long long>(value);
  return Write(end, magnitude, value < 0);
}

}  // namespace atr_decimal

#endif  // ATR_DECIMAL_H
