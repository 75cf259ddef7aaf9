// atr_inspect.cpp: the conversions of a format text, read back from the formatter's own parser.
#include "atr_inspect.h"

#include "KLDTPXBasAssert.h"
#include "atr_translateParser.h"
#include "mem_Alloc.h"

#include <cstring>
#include <new>

static constexpr const char kAssertPath[] = "TPXBase/TPXBasAtr.m/src/atr_inspect";

namespace {

/// Where a "\@" note starts, or null.
const char* FindNote(const char* text) {
  for (const char* p = std::strchr(text, '\\'); p != nullptr; p = std::strchr(p + 1, '\\'))
    if (p[1] == '@') return p;
  return nullptr;
}

/// A zero-terminated copy of the first length bytes of text, from mem_Malloc.
char* CopyOf(const char* text, size_t length) {
  auto* copy = static_cast<char*>(mem_Malloc(length + 1));
  if (copy == nullptr) throw std::bad_alloc();
  std::memcpy(copy, text, length);
  copy[length] = '\0';
  return copy;
}

}  // namespace

atr_FormatConversions::atr_FormatConversions(const char* text, SourceMode source) {
  if (text == nullptr) return;
  char* cut = nullptr;
  if (source == AsFormat) {
    if (const char* note = FindNote(text)) text = cut = CopyOf(text, note - text);
  }
  // The parser fills an empty message; its texts are copied out before it goes.
  atr_translate message(nullptr, TPXBasStringMode(false));
  bool* numbered = nullptr;
  try {
    m_ok = atr_translateParser::Parse(message, text);
    int count = atr_translateParser::Count(message);
    if (m_ok && count > 0) {
      numbered = static_cast<bool*>(mem_Malloc(sizeof(bool) * static_cast<size_t>(count)));
      m_byArgument = static_cast<int*>(mem_Malloc(sizeof(int) * static_cast<size_t>(count)));
      if (numbered == nullptr || m_byArgument == nullptr) throw std::bad_alloc();
      for (int i = 0; i < count; ++i) numbered[i] = atr_translateParser::Number(message, i) >= 0;
      atr_translateParser::NumberAndOrder(message);
      // m_byArgument first holds each conversion's argument, then, inverted below, the
      // conversion of each argument.
      atr_translateParser::Arguments(message, m_byArgument);

      size_t formats = 0;
      for (int i = 0; i < count; ++i)
        formats += std::strlen(atr_translateParser::Format(message, i)) + 1;
      m_formats = static_cast<char*>(mem_Malloc(formats));
      m_conversions = static_cast<atr_FormatConversion*>(
          mem_Malloc(sizeof(atr_FormatConversion) * static_cast<size_t>(count)));
      if (m_formats == nullptr || m_conversions == nullptr) throw std::bad_alloc();
      char* out = m_formats;
      for (int i = 0; i < count; ++i) {
        const char* format = atr_translateParser::Format(message, i);
        size_t length = std::strlen(format);
        std::memcpy(out, format, length + 1);
        m_conversions[i] =
            atr_FormatConversion{m_byArgument[i], atr_translateParser::Number(message, i),
                                 numbered[i], format[length - 1], out};
        out += length + 1;
      }
      for (int i = 0; i < count; ++i) m_byArgument[m_conversions[i].m_argument - 1] = i;
      m_count = count;
    }
  } catch (...) {
    mem_Free(numbered);
    mem_Free(cut);
    mem_Free(m_formats);
    mem_Free(m_conversions);
    mem_Free(m_byArgument);
    throw;
  }
  mem_Free(numbered);
  mem_Free(cut);
}

atr_FormatConversions::~atr_FormatConversions() {
  mem_Free(m_formats);
  mem_Free(m_conversions);
  mem_Free(m_byArgument);
}

const atr_FormatConversion& atr_FormatConversions::operator[](int i) const {
  KLD_ASSERT(i >= 0 && i < m_count);
  return m_conversions[i];
}

const atr_FormatConversion* atr_FormatConversions::ForArgument(int n) const {
  return n >= 1 && n <= m_count ? &m_conversions[m_byArgument[n - 1]] : nullptr;
}
