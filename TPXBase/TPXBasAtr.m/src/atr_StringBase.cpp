// atr_StringBase.cpp: storage, construction, assignment and queries of the byte string.
#include "atr_StringBase.h"

#include "KLDTPXBasAssert.h"
#include "atr_Statistician.h"
#include "atr_StringBaseImpl.h"
#include "mem_Alloc.h"

#include <cstdint>
#include <cstdio>
#include <cstring>
#include <new>

static constexpr const char kAssertPath[] = "TPXBase/TPXBasAtr.m/src/atr_StringBase";

namespace {

using NumberBuffer = char[80];

template <class T>
int FormatNumber(NumberBuffer& buf, const char* format, T value) {
  const int formatted = std::snprintf(buf, sizeof(buf), format, value);
  const std::size_t len = formatted > 0 ? static_cast<std::size_t>(formatted) : 0;
  KLD_ASSERT(len < sizeof(buf));
  return static_cast<int>(len);
}

}  // namespace

// ---------------------------------------------------------------------------------------------
// Header allocation.
// ---------------------------------------------------------------------------------------------

void* atr_StringRep::operator new(std::size_t size) {
  void* block = mem_OperatorNewThrowBuiltin(size);
  if (atr_Statistician* stats = atr_Statistician::Current()) stats->Allocate(0);
  return block;
}

void* atr_StringRep::operator new(std::size_t, int n) {
  void* block = mem_OperatorNewThrowBuiltin(static_cast<std::size_t>(32 * n + 32));
  if (atr_Statistician* stats = atr_Statistician::Current()) stats->Allocate(32 * n + 20);
  return block;
}

void atr_StringRep::operator delete(void* block) { mem_Free(block); }
void atr_StringRep::operator delete(void* block, int) { mem_Free(block); }

// ---------------------------------------------------------------------------------------------
// Storage primitives.
// ---------------------------------------------------------------------------------------------

// allocate's work, inline for the primitives of this file.
inline void atr_StringBase::NewStorage(int len, int length) {
  if (len < 0) len = 0;
  if (len <= kLongestInline) {
    m_StringRep = NewBlock(len, length);
    m_Buff = m_StringRep->InlineText();
    return;
  }
  if (len >= ATR_TO_END) throw std::bad_alloc();  // no room for the terminator
  atr_StringRep* rep = new atr_StringRepAlone(len + 1, length);
  char* text;
  try {
    text = new (mem_BuiltInAlloc{}) char[static_cast<std::size_t>(len) + 1];
  } catch (...) {
    atr_ReleaseHeader(rep, length, 0);
    throw;
  }
  m_StringRep = rep;
  m_Buff = text;
}

void atr_StringBase::allocate(int len, int length) { NewStorage(len, length); }

// New storage is allocated before the old header is given up, so that an allocation failure
// leaves the string as it was. The statistics see the release first, as for an in-place swap.
void* atr_StringBase::get(int n) {
  atr_StringRep* const rep = m_StringRep;
  if (rep == nullptr) {
    NewStorage(n, 0);
    return nullptr;
  }
  if (rep->References() > 1) {
    NewStorage(n, 0);
    rep->Decrement();  // the other sharers keep the old text alive
    return nullptr;
  }
  const int capacity = rep->Capacity();
  DropIndex();  // the text is rewritten in place or moves
  if (capacity > n) return nullptr;
  char* const old = m_Buff;
  atr_Statistician* const stats = atr_Statistician::Current();
  if (IsInline()) {
    if (stats != nullptr) {
      stats->Extend();
      stats->Release(rep->Length(), capacity);
    }
    NewStorage(n, 0);
    return rep;  // the block holds the old text
  }
  if (stats != nullptr) stats->Release(rep->Length(), 0);
  NewStorage(n, 0);
  if (capacity != 0) {
    mem_Free(rep);
    return old;  // long or adopted buffer
  }
  return rep;  // a borrowed text is never freed: only its header goes
}

void atr_StringBase::isolate(int n) {
  atr_StringRep* const rep = m_StringRep;
  if (rep == nullptr) {
    NewStorage(n, 0);
    m_Buff[0] = ATR_EOS;
    return;
  }
  const int length = rep->Length();
  const int wanted = n > length ? n : length;
  char* const old = m_Buff;
  if (rep->References() > 1) {
    NewStorage(wanted, length);
    std::memcpy(m_Buff, old, static_cast<std::size_t>(length));
    m_Buff[length] = ATR_EOS;
    rep->Decrement();
    return;
  }
  const int capacity = rep->Capacity();
  DropIndex();  // the caller writes the text in place, or it moves
  if (capacity > wanted) return;
  const bool inlineStorage = IsInline();
  NewStorage(wanted, length);
  atr_Statistician* const stats = atr_Statistician::Current();
  if (inlineStorage && stats != nullptr) stats->Extend();
  std::memcpy(m_Buff, old, static_cast<std::size_t>(length));
  m_Buff[length] = ATR_EOS;
  atr_ReleaseHeader(rep, length, inlineStorage ? capacity : 0);
  if (!inlineStorage && capacity != 0) mem_Free(old);
}

bool atr_StringBase::extend(int) {
  if (atr_Statistician* stats = atr_Statistician::Current()) stats->Extend();
  return false;
}

void atr_StringBase::replicate(const char* text, int len, int n) {
  NewStorage(n != 0 ? n : len, len);
  if (len > 0) std::memcpy(m_Buff, text, static_cast<std::size_t>(len));
  m_Buff[len] = ATR_EOS;
}

void atr_StringBase::release(atr_StringRep* rep, int length, int capacity) {
  atr_ReleaseHeader(rep, length, capacity);
}

void atr_StringBase::Delete() {
  KLD_ASSERT(m_StringRep && m_StringRep->References() >= 0);
  int capacity = m_StringRep->Capacity();
  DropIndex();
  if (!IsInline() && capacity != 0) {
    mem_Free(m_Buff);
    capacity = 0;
  }
  atr_ReleaseHeader(m_StringRep, m_StringRep->Length(), capacity);
  m_StringRep = nullptr;
  m_Buff = nullptr;
}

void atr_StringBase::DropIndex() {
  if (m_StringRep == nullptr || IsInline()) return;
  auto* const alone = static_cast<atr_StringRepAlone*>(m_StringRep);
  mem_Free(alone->m_index.exchange(nullptr, std::memory_order_relaxed));
}

const void* atr_StringBase::AttachedIndex() const {
  if (m_StringRep == nullptr || IsInline()) return nullptr;
  return static_cast<const atr_StringRepAlone*>(m_StringRep)
      ->m_index.load(std::memory_order_acquire);
}

const void* atr_StringBase::AttachIndex(void* index) const {
  if (m_StringRep == nullptr || IsInline()) {
    mem_Free(index);
    return nullptr;
  }
  auto* const alone = static_cast<atr_StringRepAlone*>(m_StringRep);
  void* expected = nullptr;
  if (alone->m_index.compare_exchange_strong(expected, index, std::memory_order_acq_rel,
                                             std::memory_order_acquire))
    return index;
  mem_Free(index);  // another reader was first
  return expected;
}

void atr_StringBase::DropHeader() {
  if (m_StringRep == nullptr) return;
  if (m_StringRep->Decrement()) {
    Delete();
  } else {
    m_StringRep = nullptr;
    m_Buff = nullptr;
  }
}

bool atr_StringBase::OwnsBytes(const char* text, int count) const {
  if (m_StringRep == nullptr || text == nullptr || count <= 0) return false;
  const int capacity = m_StringRep->Capacity();
  if (capacity == 0 || m_StringRep->References() != 1) return false;
  const auto begin = reinterpret_cast<std::uintptr_t>(m_Buff);
  const auto first = reinterpret_cast<std::uintptr_t>(text);
  return first < begin + static_cast<std::uintptr_t>(capacity) &&
         begin < first + static_cast<std::uintptr_t>(count);
}

const char* atr_StringBase::EmptyText() {
  static const char empty[1] = {ATR_EOS};
  return empty;
}

bool atr_StringBase::s_statistics = false;

void atr_StringBase::CountBlock(int capacity) {
  if (atr_Statistician* stats = atr_Statistician::Current()) stats->Allocate(capacity);
}

void atr_StringBase::Initialize() {
  atr_Statistician::Start();
  s_statistics = atr_Statistician::Current() != nullptr;
}

void atr_StringBase::Finalize() {
  atr_Statistician::Stop();
  s_statistics = false;
}

// ---------------------------------------------------------------------------------------------
// Construction and assignment.
// ---------------------------------------------------------------------------------------------

atr_StringBase::atr_StringBase(const char* text) {
  if (text == nullptr || *text == ATR_EOS) return;
  replicate(text, atr_Length32(std::strlen(text)), 0);
}

atr_StringBase::atr_StringBase(const char* text, int len) {
  if (text == nullptr || len < 0) len = 0;
  replicate(text, len, 0);
}

atr_StringBase::atr_StringBase(int value) {
  NumberBuffer buf;
  FromFormatted(buf, FormatNumber(buf, "%d", value), false);
}

atr_StringBase::atr_StringBase(unsigned int value) {
  NumberBuffer buf;
  FromFormatted(buf, FormatNumber(buf, "%u", value), false);
}

atr_StringBase::atr_StringBase(float value) {
  NumberBuffer buf;
  FromFormatted(buf, FormatNumber(buf, "%g", static_cast<double>(value)), true);
}

atr_StringBase::atr_StringBase(double value) {
  NumberBuffer buf;
  FromFormatted(buf, FormatNumber(buf, "%.15g", value), true);
}

void atr_StringBase::FromFormatted(char* buf, int len, bool normalise) {
  if (len <= 0) return;
  replicate(buf, len, 0);
  if (normalise) m_StringRep->SetLength(NormaliseExponent(m_Buff, len));
}

int atr_StringBase::NormaliseExponent(char* text, int len) {
  if (len <= 3) return len;
  char* const end = text + len;
  char* digits = static_cast<char*>(std::memchr(text, 'e', static_cast<std::size_t>(len)));
  if (digits == nullptr) return len;
  ++digits;
  if (digits < end && (*digits == '+' || *digits == '-')) ++digits;
  if (end - digits != 3 || digits[0] != '0') return len;
  digits[0] = digits[1];
  digits[1] = digits[2];
  digits[2] = ATR_EOS;
  return len - 1;
}

atr_StringBase::atr_StringBase(char* buffer, int len, AdoptEnm) {
  // Ownership passes at the call: should the header fail, the buffer is not leaked.
  try {
    m_StringRep = new atr_StringRepAlone(len + 1, len);
  } catch (...) {
    mem_Free(buffer);
    throw;
  }
  m_Buff = buffer;
}

atr_StringBase::atr_StringBase(const char* text, int len, BorrowEnm)
    : m_Buff(const_cast<char*>(text)), m_StringRep(new atr_StringRepAlone(0, len)) {}

atr_StringBase::atr_StringBase(int n, PreSizeEnm) {
  allocate(n, 0);
  m_Buff[0] = ATR_EOS;
}

atr_StringBase& atr_StringBase::operator=(const atr_StringBase& other) {
  atr_StringRep* const rep = other.m_StringRep;
  char* const buff = other.m_Buff;
  if (rep != nullptr) rep->Increment();  // first, so that self-assignment is harmless
  if (m_StringRep != nullptr && m_StringRep->Decrement()) Delete();
  m_StringRep = rep;
  m_Buff = buff;
  return *this;
}

atr_StringBase& atr_StringBase::operator=(atr_StringBase&& other) noexcept {
  if (this != &other) {
    DropHeader();
    m_StringRep = other.m_StringRep;
    m_Buff = other.m_Buff;
    other.m_StringRep = nullptr;
    other.m_Buff = nullptr;
  }
  return *this;
}

atr_StringBase& atr_StringBase::operator=(const char* text) {
  if (text == nullptr || *text == ATR_EOS) {
    DropHeader();
    return *this;
  }
  const int len = atr_Length32(std::strlen(text));
  void* const spare = get(len);  // text may lie in the storage get hands back: freed below
  m_StringRep->SetLength(len);
  std::memmove(m_Buff, text, static_cast<std::size_t>(len));
  m_Buff[len] = ATR_EOS;
  mem_Free(spare);
  return *this;
}

// ---------------------------------------------------------------------------------------------
// Queries.
// ---------------------------------------------------------------------------------------------

int atr_StringBase::Compare(const char* text) const {
  const int order = std::strcmp(CStr(), text != nullptr ? text : "");
  return order < 0 ? -1 : (order > 0 ? 1 : 0);
}

int atr_StringBase::FindBytes(const char* text, std::size_t textLength, int start) const {
  const int length = Length();
  if (start < 0 || start > length) return length;
  const char* hit =
      atr_FindBytes(m_Buff + start, static_cast<std::size_t>(length - start), text, textLength);
  return hit != nullptr ? static_cast<int>(hit - m_Buff) : length;
}

int atr_StringBase::rfind(const char* text, int textLength, int limit) const {
  const int length = Length();
  if (text == nullptr || textLength <= 0 || limit == 0) return length;
  int found = length;
  for (int from = 0; from < length;) {
    const char* hit = atr_FindBytes(m_Buff + from, static_cast<std::size_t>(length - from), text,
                                    static_cast<std::size_t>(textLength));
    if (hit == nullptr) break;
    const int position = static_cast<int>(hit - m_Buff);
    if (position > limit) break;
    found = position;
    from = position + 1;
  }
  return found;
}

int atr_StringBase::Substr(int startIn, int n) const {
  const unsigned start = static_cast<unsigned>(startIn);  // a negative start fails as a huge one
  const unsigned length = static_cast<unsigned>(Length());
  KLD_ASSERT((start <= length) && "Substr: start out of range");
  return atr_Count(length - start, n);
}

char atr_StringBase::operator[](int index) const {
  const unsigned ix = static_cast<unsigned>(index);  // a negative index fails as a huge one
  const auto Length = [this] { return static_cast<unsigned>(this->Length()); };
  KLD_ASSERT(ix <= Length());
  return CStr()[ix];
}

char& atr_StringBase::operator[](int index) {
  const unsigned ix = static_cast<unsigned>(index);
  const auto Length = [this] { return static_cast<unsigned>(this->Length()); };
  KLD_ASSERT(ix < Length());
  isolate(this->Length());
  return m_Buff[ix];
}

atr_StringBase& atr_StringBase::SetStringLength(int len) {
  // The check reads the byte at len only when it lies inside the storage; any other len
  // fails it.
  struct {
    const char* text;
    int size;
    char operator[](int i) const { return i >= 0 && i < size ? text[i] : '\x01'; }
  } const m_Buff = {this->m_Buff, m_StringRep == nullptr         ? 0
                                  : m_StringRep->Capacity() != 0 ? m_StringRep->Capacity()
                                                                 : m_StringRep->Length() + 1};
  KLD_ASSERT(m_StringRep && m_Buff[len] == ATR_EOS);
  DropIndex();
  m_StringRep->SetLength(len);
  return *this;
}
