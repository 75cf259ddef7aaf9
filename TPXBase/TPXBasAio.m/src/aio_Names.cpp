// aio_Names.cpp: file names between UTF-8 and the locale's encoding.
//
// For now the conversion goes through the C library: UTF-8 is decoded here into wide
// characters (UCS-4 in every glibc locale), which wcsrtombs encodes in the locale of LC_CTYPE;
// the reverse uses mbsrtowcs and a UTF-8 encoder. It is to be switched to the library's
// OS-string converter once that exists.
#include "aio_Names.h"

#include "aio_ios.h"
#include "mem_Alloc.h"

#include <cstring>
#include <cwchar>

namespace {

bool IsAscii(const char* s, size_t* length) {
  const char* p = s;
  bool ascii = true;
  for (; *p != '\0'; ++p)
    if (static_cast<unsigned char>(*p) >= 0x80) ascii = false;
  *length = static_cast<size_t>(p - s);
  return ascii;
}

char* CopyOf(const char* s, size_t length) {
  char* copy = static_cast<char*>(mem_Malloc(length + 1));
  if (copy != nullptr) std::memcpy(copy, s, length + 1);
  return copy;
}

// Strict UTF-8 decoding: no overlong forms, no surrogates, nothing above U+10FFFF. Writes at
// most one wide character per byte plus the terminator; false on invalid input.
bool DecodeUtf8(const unsigned char* s, wchar_t* out) {
  while (*s != 0) {
    unsigned c = *s++;
    int more;
    unsigned min;
    if (c < 0x80) {
      *out++ = static_cast<wchar_t>(c);
      continue;
    } else if (c >= 0xC2 && c <= 0xDF) {
      more = 1, min = 0x80, c &= 0x1F;
    } else if (c >= 0xE0 && c <= 0xEF) {
      more = 2, min = 0x800, c &= 0x0F;
    } else if (c >= 0xF0 && c <= 0xF4) {
      more = 3, min = 0x10000, c &= 0x07;
    } else {
      return false;
    }
    for (int i = 0; i < more; ++i) {
      if ((*s & 0xC0) != 0x80) return false;  // also stops at the terminator
      c = (c << 6) | (*s++ & 0x3F);
    }
    if (c < min || c > 0x10FFFF || (c >= 0xD800 && c <= 0xDFFF)) return false;
    *out++ = static_cast<wchar_t>(c);
  }
  *out = L'\0';
  return true;
}

size_t EncodeUtf8(unsigned c, char* out) {
  if (c < 0x80) {
    out[0] = static_cast<char>(c);
    return 1;
  }
  if (c < 0x800) {
    out[0] = static_cast<char>(0xC0 | (c >> 6));
    out[1] = static_cast<char>(0x80 | (c & 0x3F));
    return 2;
  }
  if (c < 0x10000) {
    out[0] = static_cast<char>(0xE0 | (c >> 12));
    out[1] = static_cast<char>(0x80 | ((c >> 6) & 0x3F));
    out[2] = static_cast<char>(0x80 | (c & 0x3F));
    return 3;
  }
  out[0] = static_cast<char>(0xF0 | (c >> 18));
  out[1] = static_cast<char>(0x80 | ((c >> 12) & 0x3F));
  out[2] = static_cast<char>(0x80 | ((c >> 6) & 0x3F));
  out[3] = static_cast<char>(0x80 | (c & 0x3F));
  return 4;
}

}  // namespace

char* kld_Utf8NameToLocale(const char* utf8) {
  size_t length = 0;
  if (IsAscii(utf8, &length)) return CopyOf(utf8, length);
  wchar_t* wide = static_cast<wchar_t*>(mem_Malloc((length + 1) * sizeof(wchar_t)));
  if (wide == nullptr) return nullptr;
  char* result = nullptr;
  if (DecodeUtf8(reinterpret_cast<const unsigned char*>(utf8), wide)) {
    std::mbstate_t state{};
    const wchar_t* src = wide;
    const size_t size = std::wcsrtombs(nullptr, &src, 0, &state);
    if (size != static_cast<size_t>(-1)) {
      result = static_cast<char*>(mem_Malloc(size + 1));
      if (result != nullptr) {
        state = std::mbstate_t{};
        src = wide;
        std::wcsrtombs(result, &src, size + 1, &state);
      }
    }
  }
  mem_Free(wide);
  return result;
}

char* kld_LocaleNameToUtf8(const char* name) {
  size_t length = 0;
  if (IsAscii(name, &length)) return CopyOf(name, length);
  wchar_t* wide = static_cast<wchar_t*>(mem_Malloc((length + 1) * sizeof(wchar_t)));
  if (wide == nullptr) return nullptr;
  char* result = nullptr;
  std::mbstate_t state{};
  const char* src = name;
  const size_t count = std::mbsrtowcs(wide, &src, length + 1, &state);
  if (count != static_cast<size_t>(-1)) {
    result = static_cast<char*>(mem_Malloc(count * 4 + 1));
    if (result != nullptr) {
      char* out = result;
      for (size_t i = 0; i < count; ++i) out += EncodeUtf8(static_cast<unsigned>(wide[i]), out);
      *out = '\0';
    }
  }
  mem_Free(wide);
  return result;
}

// The stream is left as it is apart from its state, which is set to exactly failbit, as for a
// file that cannot be opened.
void kld_ReportNameNotInLocale(aio_ios& stream) { stream.clear(aio_ios::failbit); }
