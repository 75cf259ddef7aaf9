// atr_StringBaseEdit.cpp: the editing operations of the byte string.
#include "KLDTPXBasAssert.h"
#include "atr_StringBase.h"
#include "atr_StringBaseImpl.h"
#include "mem_Alloc.h"

#include <algorithm>
#include <cctype>
#include <cstdlib>
#include <cstring>

static constexpr const char kAssertPath[] = "TPXBase/TPXBasAtr.m/src/atr_StringBase";

namespace {

bool InSet(char c, const char* set) {
  return c != ATR_EOS && set != nullptr && std::strchr(set, c) != nullptr;
}

// Next byte at or after from that `wanted` accepts, stepping over characters of the process
// locale that take more than one byte; a byte mblen rejects counts as a single byte.
int NextSingleByte(const char* text, int from, int length, int (*wanted)(int)) {
  for (int i = from; i < length;) {
    const int step = std::mblen(text + i, static_cast<std::size_t>(std::min(4, length - i)));
    if (step > 1) {
      i += step;
      continue;
    }
    if (step < 0) (void)std::mblen(nullptr, 0);  // leave no shift state behind an error
    if (wanted(static_cast<unsigned char>(text[i]))) return i;
    ++i;
  }
  return length;
}

// Whether the text starts with a character of one byte (or a byte mblen rejects).
bool FirstIsSingleByte(const char* text, int length) {
  if (length == 0) return false;
  (void)std::mblen(nullptr, 0);
  return std::mblen(text, static_cast<std::size_t>(std::min(4, length))) <= 1;
}

int IsUpper(int c) { return std::isupper(c); }
int IsLower(int c) { return std::islower(c); }

}  // namespace

atr_StringBase& atr_StringBase::AppendElsewhere(const char* text, int clenIn, int startIn, int n) {
  const unsigned clen = clenIn > 0 && text != nullptr ? static_cast<unsigned>(clenIn) : 0;
  const unsigned start = static_cast<unsigned>(startIn);
  KLD_ASSERT((start <= clen) && "Append: start out of range");
  const int count = atr_Count(clen - start, n);
  if (count == 0) return *this;
  const int length = Length();
  const int newLength = atr_Sum(length, count);
  const char* source = text + start;
  // A source inside this string's own storage moves with the text when isolate replaces it.
  const std::ptrdiff_t offset = OwnsBytes(source, count) ? source - m_Buff : -1;
  isolate(newLength);
  KLD_ASSERT(m_StringRep);
  if (offset >= 0) source = m_Buff + offset;
  std::memmove(m_Buff + length, source, static_cast<std::size_t>(count));
  m_StringRep->SetLength(newLength);
  m_Buff[newLength] = ATR_EOS;
  return *this;
}

atr_StringBase& atr_StringBase::insert(int start1In, const char* text, int slenIn, int start2In,
                                       int n) {
  const unsigned oldLength = static_cast<unsigned>(Length());
  const unsigned start1 = static_cast<unsigned>(start1In);
  const unsigned slen = slenIn > 0 && text != nullptr ? static_cast<unsigned>(slenIn) : 0;
  const unsigned start2 = static_cast<unsigned>(start2In);
  KLD_ASSERT((start1 <= oldLength) && "Insert: start1 out of range");
  KLD_ASSERT((start2 <= slen) && "Insert: start2 out of range");
  return Splice(start1In, 0, text + start2, atr_Count(slen - start2, n));
}

atr_StringBase& atr_StringBase::replace(int start1In, int count1, const char* text, int slenIn,
                                        int start2In, int count2) {
  const unsigned oldLength = static_cast<unsigned>(Length());
  const unsigned start1 = static_cast<unsigned>(start1In);
  const unsigned slen = slenIn > 0 && text != nullptr ? static_cast<unsigned>(slenIn) : 0;
  const unsigned start2 = static_cast<unsigned>(start2In);
  KLD_ASSERT((start1 <= oldLength) && "Replace: start1 out of range");
  KLD_ASSERT((start2 <= slen) && "Replace: start2 out of range");
  return Splice(start1In, atr_Count(oldLength - start1, count1), text + start2,
                atr_Count(slen - start2, count2));
}

atr_StringBase& atr_StringBase::Replace(int start, int n, const atr_StringBase& other) {
  return replace(start, n, other.CStr(), other.Length(), 0, ATR_TO_END);
}

atr_StringBase& atr_StringBase::Replace(int start, int n, const char* text, int len) {
  const atr_StringBase copy(text, len);
  return replace(start, n, copy.CStr(), copy.Length(), 0, ATR_TO_END);
}

atr_StringBase& atr_StringBase::Erase(int startIn, int n) {
  const unsigned oldLength = static_cast<unsigned>(Length());
  const unsigned start = static_cast<unsigned>(startIn);
  KLD_ASSERT((start <= oldLength) && "Erase: start out of range");
  if (m_StringRep == nullptr) return *this;
  return Splice(startIn, atr_Count(oldLength - start, n), nullptr, 0);
}

atr_StringBase& atr_StringBase::Splice(int start1, int removed, const char* source, int inserted) {
  if (removed == 0 && inserted == 0) return *this;  // nothing changes: nothing is copied
  if (OwnsBytes(source, inserted)) {
    // The tail move below or the release of the old storage would overwrite the source.
    const atr_StringBase copy(source, inserted);
    return Splice(start1, removed, copy.m_Buff, inserted);
  }
  const int oldLength = Length();
  const bool hadText = m_StringRep != nullptr;
  const int newLength = atr_Sum(oldLength - removed, inserted);
  const std::size_t tail = static_cast<std::size_t>(oldLength - start1 - removed);
  char* const old = m_Buff;
  void* const spare = get(newLength);
  if (hadText) {
    if (m_Buff != old) {
      // clang-format off
      KLD_ASSERT((m_Buff < old ? m_Buff+newLength < old : old+oldLength < m_Buff));
      // clang-format on
      std::memcpy(m_Buff, old, static_cast<std::size_t>(start1));
      std::memcpy(m_Buff + start1 + inserted, old + start1 + removed, tail);
    } else {
      std::memmove(m_Buff + start1 + inserted, m_Buff + start1 + removed, tail);
    }
  }
  m_Buff[newLength] = ATR_EOS;
  if (inserted > 0) std::memcpy(m_Buff + start1, source, static_cast<std::size_t>(inserted));
  mem_Free(spare);  // only now: source may lie in the storage that get handed back
  KLD_ASSERT(m_StringRep);
  m_StringRep->SetLength(newLength);
  return *this;
}

atr_StringBase& atr_StringBase::LeftTrim(const char* set) {
  const char* const text = CStr();
  const int length = Length();
  int count = 0;
  while (count < length && InSet(text[count], set)) ++count;
  return count > 0 ? Erase(0, count) : *this;
}

atr_StringBase& atr_StringBase::RightTrim(const char* set) {
  const char* const text = CStr();
  int end = Length();
  while (end > 0 && InSet(text[end - 1], set)) --end;
  return end < Length() ? Erase(end, ATR_TO_END) : *this;
}

atr_StringBase& atr_StringBase::Trim(const char* set) {
  if (m_StringRep == nullptr) return *this;
  isolate(0);
  const int length = Length();
  int kept = 0;
  for (int i = 0; i < length; ++i)
    if (!InSet(m_Buff[i], set)) m_Buff[kept++] = m_Buff[i];
  m_Buff[kept] = ATR_EOS;
  m_StringRep->SetLength(kept);
  return *this;
}

// The first byte to change is found before isolate, so that a string with nothing to change
// keeps sharing its header.
atr_StringBase& atr_StringBase::ToLower() {
  const int length = Length();
  int i = NextSingleByte(CStr(), 0, length, IsUpper);
  if (i == length) return *this;
  isolate(0);
  for (; i < length; i = NextSingleByte(m_Buff, i + 1, length, IsUpper)) m_Buff[i] += 0x20;
  return *this;
}

atr_StringBase& atr_StringBase::ToUpper() {
  const int length = Length();
  int i = NextSingleByte(CStr(), 0, length, IsLower);
  if (i == length) return *this;
  isolate(0);
  for (; i < length; i = NextSingleByte(m_Buff, i + 1, length, IsLower)) m_Buff[i] -= 0x20;
  return *this;
}

atr_StringBase& atr_StringBase::Capitalize() {
  if (!FirstIsSingleByte(CStr(), Length()) || !IsLower(static_cast<unsigned char>(CStr()[0])))
    return *this;
  isolate(0);
  m_Buff[0] -= 0x20;
  return *this;
}

atr_StringBase& atr_StringBase::Uncapitalize() {
  if (!FirstIsSingleByte(CStr(), Length()) || !IsUpper(static_cast<unsigned char>(CStr()[0])))
    return *this;
  isolate(0);
  m_Buff[0] += 0x20;
  return *this;
}

atr_StringBase& atr_StringBase::Reverse() {
  if (m_StringRep == nullptr) return *this;
  isolate(0);
  std::reverse(m_Buff, m_Buff + Length());
  return *this;
}

atr_StringBase& atr_StringBase::Substitute(const char* from, const char* to, int count) {
  if (Empty() || from == nullptr || *from == ATR_EOS || count < 1) return *this;
  if (to == nullptr) to = "";
  const int fromLength = atr_Length32(std::strlen(from));
  const int toLength = atr_Length32(std::strlen(to));
  if (OwnsBytes(from, fromLength + 1) || OwnsBytes(to, toLength + 1)) {
    // Both are read again after the first replacement has rewritten this string's text.
    const atr_StringBase fromCopy(from, fromLength);
    const atr_StringBase toCopy(to, toLength);
    return Substitute(fromCopy.CStr(), toCopy.CStr(), count);
  }
  for (int pass = 0; pass < count; ++pass) {
    const int position = Find(from, 0);
    if (position >= Length()) break;
    Splice(position, fromLength, to, toLength);
  }
  return *this;
}
