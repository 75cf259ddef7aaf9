// atr_StringLines.cpp: line breaking and the translation testing mode.
#include "atr_String.h"
#include "atr_StringBaseImpl.h"
#include "atr_utf8.h"

#include <algorithm>
#include <cctype>
#include <cstdlib>
#include <cstring>

namespace {

// The testing marker in UTF-8: U+30BD U+30FC.
constexpr char kMarkerUtf8[] = "\xE3\x82\xBD\xE3\x83\xBC";
// Bytes stepped over, and counted invisible, where the marker appears, whatever its length.
constexpr int kMarkerStep = 4;

struct TestingMode {
  bool on;
  const char* marker;
  int markerLength;
};

const TestingMode& Mode() {
  static const TestingMode mode = {atr_i18nTesting(), atr_i18nExtraCharacters(),
                                   static_cast<int>(std::strlen(atr_i18nExtraCharacters()))};
  return mode;
}

bool IsBlank(char c) {
  const unsigned char byte = static_cast<unsigned char>(c);
  return byte < 0x80 && std::isspace(byte);
}

// Bytes spanned by the word at position: a run of blanks, then a run of other characters.
// Markers of the testing mode add to invisible. Never looks at or beyond length; a zero byte
// inside the text is an ordinary visible byte.
int WordLength(const char* text, int position, int length, int& invisible) {
  const TestingMode& mode = Mode();
  const char* p = text + position;
  const char* const end = text + length;
  bool previousVisible = false;  // the byte before the word counts as blank
  while (p < end) {
    if (mode.on && mode.markerLength > 0 && end - p >= mode.markerLength &&
        std::memcmp(p, mode.marker, static_cast<std::size_t>(mode.markerLength)) == 0) {
      p += std::min<std::ptrdiff_t>(kMarkerStep, end - p);
      invisible += kMarkerStep;
      continue;
    }
    const bool blank = IsBlank(*p);
    if (previousVisible && blank) break;
    const int step = std::mblen(p, static_cast<std::size_t>(std::min<std::ptrdiff_t>(4, end - p)));
    p += step < 1 ? 1 : step;
    previousVisible = !blank;
  }
  return static_cast<int>(p - (text + position));
}

// Writes one line of length bytes broken at width columns to out, or only measures when out
// is null; gives the bytes produced.
int BreakLine(const char* text, int length, long long width, char* out) {
  (void)std::mblen(nullptr, 0);
  int produced = 0;
  const auto put = [&](const char* bytes, int count) {
    if (out != nullptr) std::memcpy(out + produced, bytes, static_cast<std::size_t>(count));
    produced += count;
  };
  int position = 0;
  while (position < length) {
    int invisible = 0;
    int taken = 0;
    while (position + taken < length) {
      taken += WordLength(text, position + taken, length, invisible);
      if (static_cast<long long>(taken) - invisible >= width) break;
    }
    if (produced > 0) put("\n", 1);
    put(text + position, taken);
    position += taken;
    if (position < length && IsBlank(text[position])) {
      const char skipped = text[position++];  // the blank becomes the line break
      if (position == length && skipped == '\n') put("\n", 1);
    }
  }
  return produced;
}

// Every line of the text (up to and including each "\n") broken on its own; a line that fits
// is copied as it is.
int BreakLines(const char* text, int length, unsigned width, char* out) {
  int produced = 0;
  for (int start = 0; start < length;) {
    const void* newline = std::memchr(text + start, '\n', static_cast<std::size_t>(length - start));
    const int end = newline != nullptr
                        ? static_cast<int>(static_cast<const char*>(newline) - text) + 1
                        : length;
    const int lineLength = end - start;
    char* const lineOut = out != nullptr ? out + produced : nullptr;
    if (static_cast<unsigned>(lineLength) <= width) {
      if (lineOut != nullptr)
        std::memcpy(lineOut, text + start, static_cast<std::size_t>(lineLength));
      produced += lineLength;
    } else {
      produced += BreakLine(text + start, lineLength, width == 0 ? 1 : width, lineOut);
    }
    start = end;
  }
  return produced;
}

}  // namespace

bool atr_i18nTesting() {
  static const bool on = std::getenv("KALDER_LANG") != nullptr &&
                         std::getenv("KLD_QA_PRINT") != nullptr &&
                         std::getenv("QFN_DICT_DIR") != nullptr;
  return on;
}

const char* atr_i18nExtraCharacters() {
  static char marker[64];
  static const bool converted = [] {
    const int length =
        atr_utf8_to_encoding(atr_EncodingLocale, static_cast<char*>(nullptr), kMarkerUtf8, '\0');
    if (length < 1 || length >= 63) return false;
    atr_utf8_to_encoding(atr_EncodingLocale, marker, kMarkerUtf8, '\0');
    return true;
  }();
  (void)converted;
  return marker;
}

atr_String atr_String::BreakLineString(const atr_String& text, unsigned int width) {
  if (text.Length() <= width) return text;
  const int length = text.atr_StringBase::Length();
  const long long columns = width == 0 ? 1 : width;
  atr_String result;
  const int size = BreakLine(text.CStr(), length, columns, nullptr);
  result.allocate(size, 0);
  BreakLine(text.CStr(), length, columns, result.m_Buff);
  result.m_Buff[size] = ATR_EOS;
  result.SetStringLength(size);
  return result;
}

atr_String atr_String::AddLineBreaks(const atr_String& text, unsigned int width, bool keepBroken) {
  if (text.Empty() || text.Length() <= width) return text;
  const int length = text.atr_StringBase::Length();
  if (keepBroken && std::memchr(text.CStr(), '\n', static_cast<std::size_t>(length)) != nullptr)
    return text;  // already broken by its author
  atr_String result;
  const int size = BreakLines(text.CStr(), length, width, nullptr);
  result.allocate(size, 0);
  BreakLines(text.CStr(), length, width, result.m_Buff);
  result.m_Buff[size] = ATR_EOS;
  result.SetStringLength(size);
  return result;
}
