// atr_inspect_fuzz.cpp: arbitrary dictionary files through the scanner, and every key and
// translation it finds through the conversion listing, checked against the formatter.
#include "KLDTPXBasCoreUtils.h"

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>

namespace {

void Check(bool condition) {
  if (!condition) __builtin_trap();
}

/// The listing of text must agree with itself and, for a program's format text, with the
/// message the formatter builds from it.
void CheckConversions(const char* text, atr_FormatConversions::SourceMode source) {
  atr_FormatConversions list(text, source);
  if (!list.Ok()) {
    Check(list.Count() == 0 && std::strstr(text, "%$") != nullptr);
    return;
  }
  const int count = list.Count();
  for (int n = 1; n <= count; ++n) {
    const atr_FormatConversion* c = list.ForArgument(n);
    Check(c != nullptr && c->m_argument == n);
    Check(c->m_format[0] == '%' && std::strchr("EXcdefgosux", c->m_letter) != nullptr);
    Check(c->m_format[std::strlen(c->m_format) - 1] == c->m_letter);
  }
  Check(list.ForArgument(count + 1) == nullptr);
  if (source == atr_FormatConversions::AsFormat && atr_trLookup(text) == nullptr) {
    atr_translate message(text, TPXBasStringMode(false));
    for (int n = 1; n <= count; ++n)
      Check(std::strcmp(message.Format(n), list.ForArgument(n)->m_format) == 0);
    Check(message.Format(count + 1) == nullptr);
  }
}

}  // namespace

// An entry written back with the dictionary writer reads back as the same key and text (or
// the writer refuses it and writes nothing).
void CheckWrittenBack(const atr_DictLine& entry) {
  char* bytes = nullptr;
  std::size_t size = 0;
  std::FILE* out = open_memstream(&bytes, &size);
  if (out == nullptr) return;
  const bool written =
      atr_DictWriteEntry(out, entry.m_key, entry.m_keyLength, entry.m_text, entry.m_textLength);
  std::fclose(out);
  Check(written || size == 0);
  if (written) {
    std::FILE* in = fmemopen(bytes, size, "rb");
    atr_DictScanner scanner(in);
    atr_DictLine back;
    Check(scanner.Next(back));
    const bool same = entry.m_keyLength == entry.m_textLength &&
                      std::memcmp(entry.m_key, entry.m_text, entry.m_textLength) == 0;
    Check(back.m_kind == (same ? atr_DictLineIdentity : atr_DictLineEntry));
    if (!same) {
      Check(back.m_keyLength == entry.m_keyLength && back.m_textLength == entry.m_textLength);
      Check(std::memcmp(back.m_key, entry.m_key, entry.m_keyLength) == 0);
      Check(std::memcmp(back.m_text, entry.m_text, entry.m_textLength) == 0);
    }
    Check(!scanner.Next(back));
    std::fclose(in);
  }
  std::free(bytes);
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size == 0) return 0;
  std::FILE* file = fmemopen(const_cast<std::uint8_t*>(data), size, "rb");
  if (file == nullptr) return 0;
  atr_DictScanner scanner(file);
  atr_DictLine line;
  int previous = 0;
  while (scanner.Next(line)) {
    // Pieces of a long line share its number; every other line has a number of its own.
    Check(line.m_piece > 1 ? line.m_number == previous : line.m_number > previous);
    previous = line.m_number;
    if (line.m_kind != atr_DictLineEntry) {
      Check(line.m_keyLength == 0 && line.m_textLength == 0);
      continue;
    }
    Check(std::strlen(line.m_key) == static_cast<size_t>(line.m_keyLength));
    Check(std::strlen(line.m_text) == static_cast<size_t>(line.m_textLength));
    Check(line.m_keyLength <= line.m_rawKeyLength && line.m_textLength <= line.m_rawTextLength);
    Check(atr_encoding_validate_sized(atr_EncodingUtf8, line.m_rawText, line.m_rawTextLength));
    CheckConversions(line.m_key, atr_FormatConversions::AsFormat);
    CheckConversions(line.m_text, atr_FormatConversions::AsTranslation);
    CheckWrittenBack(line);
  }
  std::fclose(file);
  return 0;
}
