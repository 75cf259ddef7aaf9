// TPXString.cpp: the character-indexed UTF-8 string: storage, positions, searches and edits,
// and its iterator.
#include "TPXString.h"

#include "KLDTPXBasAssert.h"
#include "TPXBasException.h"
#include "atr_StringBaseImpl.h"
#include "atr_utf8.h"
#include "atr_utf8Scan.h"

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <utility>

static constexpr const char kAssertPath[] = "TPXBase/TPXBasString.m/src/TPXString";

using atr_utf8Scan::CountChars;
using atr_utf8Scan::StepLength;

namespace {

const unsigned char* Bytes(const char* p) { return reinterpret_cast<const unsigned char*>(p); }

// The character index of a long mixed text: the byte offset of every kStride-th character, so
// that a position costs one lookup and a walk of fewer than kStride characters.
//   index[0]: the number of characters; index[k], k >= 1: the byte offset of character
//   k * kStride, for every such character that exists.
// A text of n bytes has at most n characters, so the block holds at most 1 + n / kStride
// ints: 4 + n / 64 bytes, 1.5625 % of the text plus 4 bytes. With the 12 bytes by which the
// header of a long text grows to hold a pointer to it, texts of kIndexedBytes and more pay at
// most 1.5625 % + 16 / 4096 = 1.95 %. Shorter texts are walked: at most kIndexedBytes bytes.
constexpr int kStride = 256;
constexpr int kIndexedBytes = 4096;

// Byte offset of the character `ahead` characters after the one that starts at pos, in the n
// bytes of well-formed text at p: n when that is the end, -1 when the text ends first.
// Blocks of 64 bytes, then words of 8, whose characters all come before the target are passed
// by counting their lead bytes; the last few characters are stepped one by one.
int Advance(const unsigned char* p, int n, int pos, int ahead) {
  for (const int block : {64, 8}) {
    while (ahead > 0 && n - pos >= block) {
      const int starts = CountChars(p + pos, static_cast<std::size_t>(block));
      if (starts > ahead) break;
      ahead -= starts;
      pos += block;
    }
  }
  while (pos < n && (p[pos] & 0xC0) == 0x80) ++pos;  // a passed block may end inside a character
  for (; ahead > 0; --ahead) {
    if (pos >= n) return -1;
    pos += StepLength(p[pos]);
  }
  return pos;
}

// The index of the n bytes of well-formed text at p, or null when there is no memory for it
// (the callers then walk the text).
int* BuildIndex(const unsigned char* p, int n) {
  int* index =
      static_cast<int*>(mem_Malloc(sizeof(int) * (1 + static_cast<std::size_t>(n) / kStride)));
  if (index == nullptr) return nullptr;
  int pos = 0;
  int points = 0;
  for (int next; (next = Advance(p, n, pos, kStride)) >= 0 && next < n; pos = next)
    index[++points] = next;
  index[0] = points * kStride + CountChars(p + pos, static_cast<std::size_t>(n - pos));
  return index;
}

// The number of offsets stored in an index.
int Points(const int* index) { return index[0] > 0 ? (index[0] - 1) / kStride : 0; }

}  // namespace

// ---------------------------------------------------------------------------------------------
// Construction, assignment, storage.
// ---------------------------------------------------------------------------------------------

TPXString::TPXString(const char* text) { (void)BuildFromUTF8(text); }

TPXString::TPXString(BadString)
    : atr_StringBase(reinterpret_cast<const char*>(BadBuffer()), ATR_TO_END, Borrow) {}

TPXString& TPXString::operator=(const TPXString& other) {
  const bool ascii = other.m_isAscii;
  atr_StringBase::operator=(other);
  m_isAscii = ascii;
  return *this;
}

TPXString& TPXString::operator=(TPXString&& other) noexcept {
  const bool ascii = other.m_isAscii;
  atr_StringBase::operator=(static_cast<atr_StringBase&&>(other));
  m_isAscii = ascii;
  if (&other != this) other.m_isAscii = true;
  return *this;
}

TPXString& TPXString::operator=(const char* text) {
  TPXString built(text);
  return *this = std::move(built);
}

void TPXString::SetBytes(const char* bytes, int count, bool isAscii) {
  if (count <= 0) {
    Reset();
    return;
  }
  // Copied before this string lets go of its storage: bytes may lie in it.
  TPXString copy;
  copy.replicate(bytes, count, 0);
  copy.m_isAscii = isAscii;
  *this = std::move(copy);
}

void TPXString::Reset() {
  atr_StringBase::operator=(static_cast<const char*>(nullptr));
  m_isAscii = true;
}

void TPXString::ToBAD() { *this = TPXString(Bad); }

void TPXString::RefreshIsAscii() {
  const int n = ByteCount();
  const unsigned char* p = Bytes(CastToCharPtr());
  bool ascii = true;
  for (int i = 0; i < n && ascii; i += StepLength(p[i])) ascii = p[i] < 0x80;
  m_isAscii = ascii;
}

int TPXString::StepAt(int pos) const {
  if (pos < 0 || pos >= ByteCount()) return 0;
  if (m_isAscii) return 1;
  return atr_utf8_len(m_Buff + pos);
}

int TPXString::ByteOffset(int index) const { return ByteOffsetFrom(0, 0, index); }

int TPXString::ByteOffsetFrom(int pos, int index, int target) const {
  const int n = ByteCount();
  if (target < 0) return -1;
  if (m_isAscii) return target <= n ? target : -1;
  if (const int* points = CharIndex()) {
    if (target > points[0]) return -1;
    const int k = std::min(target / kStride, Points(points));
    if (k > 0 && k * kStride > index) {
      pos = points[k];
      index = k * kStride;
    }
  }
  return Advance(Bytes(m_Buff), n, pos, target - index);
}

int TPXString::CharIndexAt(int pos, int index, int at) const {
  if (m_isAscii) return at;
  if (const int* points = CharIndex()) {
    // The last indexed character at or before byte at.
    const int* const first = points + 1;
    const int k = static_cast<int>(std::upper_bound(first, first + Points(points), at) - first);
    if (k > 0 && k * kStride > index) {
      pos = points[k];
      index = k * kStride;
    }
  }
  return index + CountChars(Bytes(m_Buff + pos), static_cast<std::size_t>(at - pos));
}

const int* TPXString::CharIndex() const {
  const int n = ByteCount();
  if (m_isAscii || n < kIndexedBytes) return nullptr;
  if (const void* built = AttachedIndex()) return static_cast<const int*>(built);
  int* index = BuildIndex(Bytes(m_Buff), n);
  if (index == nullptr) return nullptr;
  return static_cast<const int*>(AttachIndex(index));
}

void TPXString::Fill(const TPXString& text, unsigned int n) {
  const TPXString piece(text);  // text may be this string
  for (; n > 0; --n) atr_StringBase::Append(piece);
  m_isAscii = piece.m_isAscii;
}

void TPXString::Fill(const TPXChar& c, unsigned int n) {
  const char* bytes = c.CastToCharPtr();
  const int len = static_cast<int>(std::strlen(bytes));
  if (n == 0 || c.ConvertToUTF32() == 0 || len == 0) return;
  if (n > static_cast<unsigned int>(ATR_TO_END) / static_cast<unsigned int>(len))
    throw std::bad_alloc();
  const int total = static_cast<int>(n) * len;
  const int old = atr_StringBase::Length();
  isolate(old + total);
  for (int i = 0; i < total; i += len)
    std::memcpy(m_Buff + old + i, bytes, static_cast<std::size_t>(len));
  m_Buff[old + total] = ATR_EOS;
  SetStringLength(old + total);
  m_isAscii = c.IsAscii();
}

// ---------------------------------------------------------------------------------------------
// Queries.
// ---------------------------------------------------------------------------------------------

int TPXString::GetLengthInChar() const {
  const int n = ByteCount();
  if (m_isAscii) return n;
  if (const int* points = CharIndex()) return points[0];
  return CountChars(Bytes(m_Buff), static_cast<std::size_t>(n));
}

TPXChar TPXString::operator[](unsigned int i) const {
  int iPos = static_cast<int>(i);
  // clang-format off
  KLD_ASSERT(iPos >=0);
  // clang-format on
  if (IsBAD()) return TPXChar();
  if (m_isAscii) {
    KLD_ASSERT(iPos <= atr_StringBase::Length());
    return iPos < atr_StringBase::Length() ? TPXChar(m_Buff[iPos]) : TPXChar();
  }
  const int pos = ByteOffset(iPos);
  if (pos < 0) KLD_ASSERT(iPos == 0);  // the text ends before character iPos
  if (pos >= ByteCount()) return TPXChar();
  return TPXChar::Make(m_Buff + pos);
}

int TPXString::Compare(const TPXString& other) const {
  const int a = ByteCount();
  const int b = other.ByteCount();
  const int common = a < b ? a : b;
  const int c = common > 0 ? std::memcmp(CastToCharPtr(), other.CastToCharPtr(),
                                         static_cast<std::size_t>(common))
                           : 0;
  if (c != 0) return c < 0 ? -1 : 1;
  return a == b ? 0 : a < b ? -1 : 1;
}

int TPXString::Compare(const char* text) const {
  if (text == nullptr) text = "";
  const std::size_t b = std::strlen(text);
  const std::size_t a = static_cast<std::size_t>(ByteCount());
  const std::size_t common = a < b ? a : b;
  const int c = common > 0 ? std::memcmp(CastToCharPtr(), text, common) : 0;
  if (c != 0) return c < 0 ? -1 : 1;
  return a == b ? 0 : a < b ? -1 : 1;
}

unsigned int TPXString::ComputeHashKey() const {
  const int n = ByteCount();
  if (n == 0) return 0;
  const signed char* p = reinterpret_cast<const signed char*>(m_Buff);
  const int step = n < 400 ? 1 : n / 64;
  unsigned int h = 0;
  for (int i = 0; i < n; i += step) h = h * 37u + static_cast<unsigned int>(p[i]);
  return h == 0 ? 1u : (h & 0x7FFFFFFFu);
}

int TPXString::FindPosition(const TPXString& pattern, int start) const {
  const int n = ByteCount();
  const int from = ByteOffset(start);
  if (from < 0 || from >= n || pattern.IsBAD()) return -1;
  const int plen = pattern.ByteCount();
  if (plen == 0) return start;
  if (plen > n - from) return -1;
  // A well-formed pattern starts with a lead byte, so every byte match in well-formed text
  // starts on a character.
  const char* hit = atr_FindBytes(m_Buff + from, static_cast<std::size_t>(n - from), pattern.m_Buff,
                                  static_cast<std::size_t>(plen));
  if (hit == nullptr) return -1;
  return CharIndexAt(from, start, static_cast<int>(hit - m_Buff));
}

TPXStringiterator TPXString::Begin() const { return TPXStringiterator(this); }

TPXStringiterator TPXString::End() const {
  return TPXStringiterator(this, ByteCount(), GetLengthInChar());
}

// ---------------------------------------------------------------------------------------------
// Concatenation.
// ---------------------------------------------------------------------------------------------

TPXString& TPXString::Append(const TPXString& text) {
  if (IsBAD()) return *this;
  if (text.IsBAD()) {
    ToBAD();
    return *this;
  }
  const bool ascii = text.m_isAscii;
  atr_StringBase::Append(text);
  m_isAscii = m_isAscii && ascii;
  return *this;
}

TPXString& TPXString::operator+=(const TPXChar& c) {
  if (IsBAD()) return *this;
  const char* bytes = c.CastToCharPtr();
  atr_StringBase::Append(bytes, static_cast<int>(std::strlen(bytes)));
  m_isAscii = m_isAscii && c.IsAscii();
  return *this;
}

TPXString& TPXString::operator+=(const char* text) { return Append(TPXString(text)); }

void TPXString::AppendFormatted(const char* text) {
  if (IsBAD()) return;
  atr_StringBase::Append(text, static_cast<int>(std::strlen(text)));
}

TPXString& TPXString::operator+=(int value) {
  char buf[16];
  std::snprintf(buf, sizeof buf, "%d", value);
  AppendFormatted(buf);
  return *this;
}

TPXString& TPXString::operator+=(unsigned int value) {
  char buf[16];
  std::snprintf(buf, sizeof buf, "%u", value);
  AppendFormatted(buf);
  return *this;
}

TPXString& TPXString::operator+=(long long value) {
  char buf[24];
  std::snprintf(buf, sizeof buf, "%lld", value);
  AppendFormatted(buf);
  return *this;
}

TPXString& TPXString::operator+=(unsigned long long value) {
  char buf[24];
  std::snprintf(buf, sizeof buf, "%llu", value);
  AppendFormatted(buf);
  return *this;
}

TPXString TPXString::operator+(const TPXString& right) const {
  TPXString result(*this);
  result.Append(right);
  return result;
}

TPXString TPXString::operator+(const char* right) const { return *this + TPXString(right); }

TPXString operator+(const char* left, const TPXString& right) { return TPXString(left) + right; }

// ---------------------------------------------------------------------------------------------
// Edits.
// ---------------------------------------------------------------------------------------------

TPXString& TPXString::ASCIIToLower() {
  const int n = ByteCount();
  int first = 0;
  while (first < n && !(m_Buff[first] >= 'A' && m_Buff[first] <= 'Z')) ++first;
  if (first == n) return *this;  // nothing to change: keep sharing
  isolate(n);
  for (int i = first; i < n; ++i)
    if (m_Buff[i] >= 'A' && m_Buff[i] <= 'Z') m_Buff[i] = static_cast<char>(m_Buff[i] + 32);
  return *this;
}

TPXString& TPXString::ASCIIToUpper() {
  const int n = ByteCount();
  int first = 0;
  while (first < n && !(m_Buff[first] >= 'a' && m_Buff[first] <= 'z')) ++first;
  if (first == n) return *this;
  isolate(n);
  for (int i = first; i < n; ++i)
    if (m_Buff[i] >= 'a' && m_Buff[i] <= 'z') m_Buff[i] = static_cast<char>(m_Buff[i] - 32);
  return *this;
}

TPXString& TPXString::ReplaceSubString(int start, int count, const TPXString& text) {
  const int n = ByteCount();
  if (n == 0 || start < 0 || count < 0 || text.IsBAD()) return *this;
  const int from = ByteOffset(start);
  if (from < 0 || from >= n) return *this;
  const long long end = static_cast<long long>(start) + count;
  const int to = end <= ATR_TO_END ? ByteOffsetFrom(from, start, static_cast<int>(end)) : -1;
  if (to < 0) return *this;  // count runs past the end
  const bool allSingle = m_isAscii || CountChars(Bytes(m_Buff + from),
                                                 static_cast<std::size_t>(to - from)) == to - from;
  const TPXString piece(text);  // keeps the text alive when it is this string
  const int len = piece.ByteCount();
  replace(from, to - from, piece.CastToCharPtr(), len, 0, len);
  if (!piece.m_isAscii)
    m_isAscii = false;
  else if (!m_isAscii && !allSingle)
    RefreshIsAscii();
  return *this;
}

TPXString& TPXString::ReplaceSubString(int start, int count, const TPXString& text, int width) {
  TPXString sized(text);
  sized.Resize(width, TPXChar(' '), 1);
  return ReplaceSubString(start, count, sized);
}

int TPXString::ReplaceSubString(const TPXString& pattern, const TPXString& replacement) {
  const int at = FindPosition(pattern, 0);
  if (at < 0) return -1;
  ReplaceSubString(at, pattern.GetLengthInChar(), replacement);
  return at;
}

TPXString& TPXString::ReplaceAll(const TPXString& pattern, const TPXString& replacement) {
  const TPXString what(pattern);  // either may be this string, which changes below
  const TPXString with(replacement);
  if (what.ByteCount() == 0) return *this;
  const int whatLength = what.GetLengthInChar();
  const int withLength = with.GetLengthInChar();
  for (int at = FindPosition(what, 0); at >= 0; at = FindPosition(what, at + withLength))
    ReplaceSubString(at, whatLength, with);
  return *this;
}

TPXString& TPXString::Insert(int position, const TPXString& text) {
  return ReplaceSubString(position, 0, text);
}

TPXString& TPXString::Remove(int start, int count) {
  return ReplaceSubString(start, count, TPXString());
}

TPXString& TPXString::Resize(int length, const TPXChar& fill, int truncate) {
  if (IsBAD()) return *this;
  const int n = GetLengthInChar();
  if (n == length) return *this;
  if (n < length) {
    const bool ascii = m_isAscii && fill.IsAscii();
    Fill(fill, static_cast<unsigned int>(length - n));
    m_isAscii = ascii;
    return *this;
  }
  if (truncate != 0) {
    const int cut = length <= 0 ? 0 : ByteOffset(length);
    if (cut == 0)
      Reset();
    else
      Erase(cut, ATR_TO_END);
  }
  if (!m_isAscii) RefreshIsAscii();
  return *this;
}

TPXString TPXString::Strip(TPXStripMode mode, const TPXChar& c) const {
  const int n = ByteCount();
  const char* strip = c.CastToCharPtr();
  const int slen = static_cast<int>(std::strlen(strip));
  if (n == 0 || slen == 0) return *this;
  auto matches = [&](int pos, int step) {
    return step == slen && std::memcmp(m_Buff + pos, strip, static_cast<std::size_t>(slen)) == 0;
  };
  TPXString result;
  if (mode == TPXStripAll) {
    int keepFrom = 0;  // copies runs of kept characters at once
    for (int pos = 0, step = StepAt(0); step != 0; pos += step, step = StepAt(pos)) {
      if (!matches(pos, step)) continue;
      if (pos > keepFrom) result.atr_StringBase::Append(m_Buff + keepFrom, pos - keepFrom);
      keepFrom = pos + step;
    }
    if (n > keepFrom) result.atr_StringBase::Append(m_Buff + keepFrom, n - keepFrom);
  } else {
    int begin = 0;
    int end = n;
    if (mode & TPXStripLeading)
      for (int step = StepAt(begin); step != 0 && matches(begin, step); step = StepAt(begin))
        begin += step;
    if (mode & TPXStripTrailing) {
      int run = -1;
      for (int pos = 0, step = StepAt(0); step != 0; pos += step, step = StepAt(pos))
        run = matches(pos, step) ? (run < 0 ? pos : run) : -1;
      if (run >= 0) end = run;
    }
    if (begin < end) result.atr_StringBase::Append(m_Buff + begin, end - begin);
  }
  result.m_isAscii = m_isAscii;
  if (!m_isAscii && !c.IsAscii()) result.RefreshIsAscii();
  return result;
}

TPXString TPXString::SubString(int start, int count) const {
  if (IsBAD()) return *this;
  const int n = ByteCount();
  if (n == 0 || start < 0 || count < 0) return TPXString();
  const TPXStringiterator at = Begin() + start;
  const int from = at.m_pos;
  const long long end = static_cast<long long>(start) + count;
  int to = end <= ATR_TO_END ? ByteOffsetFrom(from, start, static_cast<int>(end)) : -1;
  if (to < 0) to = n;  // up to the end
  const bool allSingle = m_isAscii || CountChars(Bytes(m_Buff + from),
                                                 static_cast<std::size_t>(to - from)) == to - from;
  TPXString result;
  result.SetBytes(m_Buff + from, to - from, m_isAscii || allSingle);
  return result;
}

// ---------------------------------------------------------------------------------------------
// Iterator.
// ---------------------------------------------------------------------------------------------

TPXStringiterator::TPXStringiterator(const TPXString* string)
    : m_string(string), m_pos(0), m_index(0), m_size(0) {
  SetSize();
}

TPXStringiterator::TPXStringiterator(const TPXString* string, int pos, int index)
    : m_string(string), m_pos(pos), m_index(index), m_size(0) {
  SetSize();
}

void TPXStringiterator::SetSize() { m_size = m_string->StepAt(m_pos); }

TPXStringiterator& TPXStringiterator::operator++() {
  KLD_ASSERT(NotDone());
  m_pos += m_size;
  ++m_index;
  SetSize();
  return *this;
}

TPXStringiterator& TPXStringiterator::operator--() { return *this = *this + (-1); }

TPXStringiterator TPXStringiterator::operator+(int n) const {
  TPXStringiterator temp(*this);
  if (n == 0) return temp;
  if (m_string->m_isAscii) {
    temp.m_pos += n;
    temp.m_index += n;
    // clang-format off
    KLD_ASSERT(temp.m_pos >= 0 &&temp.m_pos <= m_string->atr_StringBase::Length());
    // clang-format on
  } else if (n > 0) {
    const long long target = static_cast<long long>(temp.m_index) + n;
    const int pos =
        target <= ATR_TO_END ? m_string->ByteOffsetFrom(temp.m_pos, temp.m_index, int(target)) : -1;
    if (pos >= 0) {
      temp.m_pos = pos;
      temp.m_index = static_cast<int>(target);
    } else {
      for (; n > 0; --n) ++temp;  // runs into the end, which the step reports
    }
  } else if (-n > kStride && temp.m_index + n >= 0 && m_string->CharIndex() != nullptr) {
    // A long jump back: from the index. Short steps back stay with the previous character.
    temp.m_index += n;
    temp.m_pos = m_string->ByteOffset(temp.m_index);
  } else {
    const char* text = m_string->CastToCharPtr();
    for (; n < 0; ++n) {
      const char* prev = atr_utf8_prev(text + temp.m_pos, text);
      if (prev == nullptr) {
        TPXBasAssertException failure("prev !=0");
        failure.Throw(kAssertPath, __LINE__);
      }
      temp.m_pos = static_cast<int>(prev - text);
      KLD_ASSERT(temp.m_pos >= 0);
      --temp.m_index;
    }
  }
  temp.SetSize();
  return temp;
}

TPXStringiterator TPXStringiterator::operator-(int n) const { return *this + (-n); }

int TPXStringiterator::operator-(const TPXStringiterator& i) const {
  KLD_ASSERT(i.m_string == m_string);
  return m_index - i.m_index;
}

const char* TPXStringiterator::CodeChar() const {
  if (m_string->IsBAD()) return "";
  return m_string->CastToCharPtr() + m_pos;
}

const unsigned char* TPXStringiterator::Code() const {
  return reinterpret_cast<const unsigned char*>(CodeChar());
}

TPXChar TPXStringiterator::Char() const { return Done() ? TPXChar() : TPXChar::Make(CodeChar()); }

int TPXStringiterator::CodeAsUTF32() const {
  return Done() ? -1 : atr_utf8_to_ucs4(Code(), nullptr);
}
