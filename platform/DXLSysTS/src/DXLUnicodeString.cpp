// DXLUnicodeString.cpp: UTF-16 storage with strict UTF-8 conversion both ways.
#include "DXLUnicodeString.h"

DXLUnicodeString::DXLUnicodeString() = default;
DXLUnicodeString::DXLUnicodeString(const unsigned short* units, int count) {
  if (units != nullptr && count > 0) m_units.assign(units, units + count);
}
DXLUnicodeString::DXLUnicodeString(const DXLUnicodeString& other) = default;
DXLUnicodeString& DXLUnicodeString::operator=(const DXLUnicodeString& other) = default;
DXLUnicodeString::~DXLUnicodeString() = default;

int DXLUnicodeString::BuildFromUTF8(const char* bytes, int byteCount) {
  m_units.clear();
  if (bytes == nullptr || byteCount <= 0) return byteCount < 0 ? -1 : 0;
  const unsigned char* p = reinterpret_cast<const unsigned char*>(bytes);
  const unsigned char* end = p + byteCount;
  std::u16string out;
  while (p < end) {
    unsigned int c = *p;
    int extra;
    unsigned int least;
    if (c < 0x80) {
      extra = 0;
      least = 0;
    } else if ((c & 0xE0) == 0xC0) {
      extra = 1, c &= 0x1F, least = 0x80;
    } else if ((c & 0xF0) == 0xE0) {
      extra = 2, c &= 0x0F, least = 0x800;
    } else if ((c & 0xF8) == 0xF0) {
      extra = 3, c &= 0x07, least = 0x10000;
    } else {
      return -1;
    }
    if (end - p <= extra) return -1;
    for (int i = 1; i <= extra; ++i) {
      if ((p[i] & 0xC0) != 0x80) return -1;
      c = (c << 6) | (p[i] & 0x3F);
    }
    if (c < least || c > 0x10FFFF || (c >= 0xD800 && c <= 0xDFFF)) return -1;
    p += extra + 1;
    if (c >= 0x10000) {
      c -= 0x10000;
      out.push_back(static_cast<char16_t>(0xD800 + (c >> 10)));
      out.push_back(static_cast<char16_t>(0xDC00 + (c & 0x3FF)));
    } else {
      out.push_back(static_cast<char16_t>(c));
    }
  }
  m_units.swap(out);
  return 0;
}

int DXLUnicodeString::GetLengthInChar() const { return static_cast<int>(m_units.size()); }

int DXLUnicodeString::ConvertToUTF8(char* buffer, int& byteCount) const {
  int room = byteCount;
  int used = 0;
  byteCount = 0;
  for (std::size_t i = 0; i < m_units.size(); ++i) {
    unsigned int c = m_units[i];
    if (c >= 0xD800 && c <= 0xDBFF) {
      if (i + 1 == m_units.size() || m_units[i + 1] < 0xDC00 || m_units[i + 1] > 0xDFFF) return -1;
      c = 0x10000 + ((c - 0xD800) << 10) + (m_units[++i] - 0xDC00);
    } else if (c >= 0xDC00 && c <= 0xDFFF) {
      return -1;
    }
    int n = c < 0x80 ? 1 : c < 0x800 ? 2 : c < 0x10000 ? 3 : 4;
    if (buffer == nullptr || room - used < n) return -1;
    unsigned char* out = reinterpret_cast<unsigned char*>(buffer) + used;
    switch (n) {
      case 1:
        out[0] = static_cast<unsigned char>(c);
        break;
      case 2:
        out[0] = static_cast<unsigned char>(0xC0 | (c >> 6));
        out[1] = static_cast<unsigned char>(0x80 | (c & 0x3F));
        break;
      case 3:
        out[0] = static_cast<unsigned char>(0xE0 | (c >> 12));
        out[1] = static_cast<unsigned char>(0x80 | ((c >> 6) & 0x3F));
        out[2] = static_cast<unsigned char>(0x80 | (c & 0x3F));
        break;
      default:
        out[0] = static_cast<unsigned char>(0xF0 | (c >> 18));
        out[1] = static_cast<unsigned char>(0x80 | ((c >> 12) & 0x3F));
        out[2] = static_cast<unsigned char>(0x80 | ((c >> 6) & 0x3F));
        out[3] = static_cast<unsigned char>(0x80 | (c & 0x3F));
        break;
    }
    used += n;
  }
  byteCount = used;
  return 0;
}

const unsigned short* DXLUnicodeString::GetBuffer() const {
  return reinterpret_cast<const unsigned short*>(m_units.data());
}
