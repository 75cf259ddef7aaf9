/// @file atr_StringBase.h
/// Storage and editing primitives of the copy-on-write byte string.
#ifndef ATR_STRINGBASE_H
#define ATR_STRINGBASE_H

#include "KLDTPXBasExport.h"
#include "mem_Alloc.h"
#include "mem_AllocationOperators.h"

#include <cstddef>
#include <cstring>

/// The end-of-string marker: every text of a string is followed by this byte.
constexpr char ATR_EOS = '\0';
/// A count that means "up to the end of the text" (the largest signed 32-bit value).
constexpr int ATR_TO_END = 2147483647;

/// Whether the n bytes at a and b are equal. Short runs, the usual rest of a needle, are
/// compared here: a call to memcmp costs more than the comparison.
inline bool atr_SameBytes(const char* a, const char* b, std::size_t n) {
  if (n > 16) return std::memcmp(a, b, n) == 0;
  for (std::size_t k = 0; k < n; ++k)
    if (a[k] != b[k]) return false;
  return true;
}

/// Shared header of a byte string: reference count, capacity and length, 12 bytes.
///
/// A short text lives in one block with its header: `operator new(size, n)` draws 32 * n + 32
/// bytes and the text starts just behind the header, with room for 32 * n + 20 bytes (its
/// capacity, terminator included). A long, adopted or borrowed text has its header alone
/// (`operator new(size)`). Capacity 0 marks a borrowed text that the string never writes or
/// frees. Counts are plain integers: a header and its strings belong to one thread at a time.
class atr_StringRep {
 public:
  /// A header with one sharer, capacity bytes of room (0: borrowed) and length bytes of text.
  atr_StringRep(int capacity, int length) : m_count(1), m_capacity(capacity), m_length(length) {}

  /// A header alone; counted by the string statistics as a header created.
  static void* operator new(std::size_t size);
  /// A size-classed block of 32 * n + 32 bytes; counted as 32 * n + 20 bytes in use.
  static void* operator new(std::size_t size, int n);
  /// Gives back a header alone (mem_Free).
  static void operator delete(void* block);
  /// Gives back a size-classed block (mem_Free); called when a constructor placed with n throws.
  static void operator delete(void* block, int n);

  /// Counts one more sharer.
  void Increment() { ++m_count; }
  /// True when the last sharer has gone.
  bool Decrement() { return --m_count == 0; }
  /// Number of strings sharing the header.
  int References() const { return m_count; }
  /// Bytes of room, terminator included; 0 for a borrowed text.
  int Capacity() const { return m_capacity; }
  /// Bytes of text, terminator excluded.
  int Length() const { return m_length; }
  /// Records a new text length; the caller has written the text and its terminator.
  void SetLength(int length) { m_length = length; }
  /// Where the text of a size-classed block starts.
  char* InlineText() { return reinterpret_cast<char*>(this + 1); }

 private:
  int m_count;
  int m_capacity;
  int m_length;
};

static_assert(sizeof(atr_StringRep) == 12, "a size-classed block holds 32 * n + 20 text bytes");

/// Byte string whose copies share one buffer until one of them is edited.
///
/// Copying never allocates; the first edit of a shared copy gives it a buffer of its own, and a
/// text that outgrows its storage is reallocated for exactly the new length (raised to its size
/// class of 32 bytes when it is at most 238 bytes long). A string without a header is the empty
/// string. The text is always followed by ATR_EOS; it may hold zero bytes of its own when it was
/// made with an explicit length.
///
/// Positions and counts are signed 32-bit; ATR_TO_END means "to the end". A position past the
/// text is a broken invariant (fatal report through the assertion convention), never clamped.
/// Searches give the length of the string when they find nothing.
///
/// A string and every copy sharing its header must stay on one thread at a time.
/// The operations are protected: users reach them through atr_String, atr_StringBasePrv and
/// the character-indexed string, which derive from this class.
class KLDTPXBAS_API atr_StringBase : public mem_AllocationOperators {
 public:
  /// Tag of the constructor that takes ownership of a buffer.
  enum AdoptEnm { Adopt };
  /// Tag of the constructor that refers to a text without copying it.
  enum BorrowEnm { Borrow };
  /// Tag of the constructor that reserves room for a text.
  enum PreSizeEnm { PreSize };

  ~atr_StringBase() {
    atr_StringRep* const rep = m_StringRep;
    if (rep == nullptr || !rep->Decrement()) return;
    // The common end, a size-classed block with no statistics to keep, is freed here directly.
    if (m_Buff == rep->InlineText() && !s_statistics)
      mem_Free(rep);
    else
      Delete();
  }

  /// Creates the process-wide statistics collector when ATR_SUMMARY exists (any value).
  static void Initialize();
  /// Writes the statistics report to the standard error stream and drops the collector.
  static void Finalize();

 protected:
  atr_StringBase() = default;
  /// Shares other's header (counting one more sharer); never allocates.
  atr_StringBase(const atr_StringBase& other)
      : m_Buff(other.m_Buff), m_StringRep(other.m_StringRep) {
    if (m_StringRep != nullptr) m_StringRep->Increment();
  }
  /// Takes the other string's header; the other string is left empty.
  atr_StringBase(atr_StringBase&& other) noexcept
      : m_Buff(other.m_Buff), m_StringRep(other.m_StringRep) {
    other.m_Buff = nullptr;
    other.m_StringRep = nullptr;
  }
  /// Copies the zero-terminated text; null or empty gives the empty string (no header).
  explicit atr_StringBase(const char* text);
  /// Copies exactly len bytes (zero bytes included) and always has a header, also for len 0.
  /// A null text copies nothing.
  atr_StringBase(const char* text, int len);
  explicit atr_StringBase(int value);           ///< "%d"
  explicit atr_StringBase(unsigned int value);  ///< "%u"
  explicit atr_StringBase(float value);         ///< "%g" of the value widened to double
  explicit atr_StringBase(double value);        ///< "%.15g"
  /// Owns buffer from now on: len bytes of text followed by ATR_EOS, allocated through the
  /// allocation service (it is released with mem_Free).
  atr_StringBase(char* buffer, int len, AdoptEnm);
  /// Refers to text without copying; text[len] must be ATR_EOS and the text must outlive
  /// every copy that still reads it. The first edit copies; the text is never written or freed.
  atr_StringBase(const char* text, int len, BorrowEnm);
  /// An empty string with room for n bytes of text.
  atr_StringBase(int n, PreSizeEnm);

  /// Shares other's header and lets go of this string's own (self-assignment is harmless).
  atr_StringBase& operator=(const atr_StringBase& other);
  /// Takes other's header, letting go of this string's own; other is left empty.
  atr_StringBase& operator=(atr_StringBase&& other) noexcept;
  /// Null or empty drops the header.
  atr_StringBase& operator=(const char* text);

  // Queries.
  /// Bytes of text, terminator excluded.
  int Length() const { return m_StringRep != nullptr ? m_StringRep->Length() : 0; }
  /// Whether the text has no bytes.
  bool Empty() const { return Length() == 0; }
  /// The text followed by ATR_EOS; "" for the empty string. Valid until the next edit.
  const char* CStr() const { return m_StringRep != nullptr ? m_Buff : EmptyText(); }
  /// The writable buffer (see SetStringLength), or null without a header.
  char* GetBuffPtr() const { return m_StringRep != nullptr ? m_Buff : nullptr; }
  /// -1, 0 or 1 comparing unsigned bytes up to the first zero byte; null compares as "".
  int Compare(const char* text) const;
  /// Position of the first occurrence of text at or after start, or Length() (also for a
  /// start outside the text).
  int Find(const char* text, int start = 0) const {
    if (text == nullptr) return Length();
    // The length is measured here, where a literal's is known while compiling, and the first
    // candidate (the first place where text's first byte occurs) is checked here too: in most
    // searches it is the match or there is none. The library searches on from there.
    const std::size_t m = std::strlen(text);
    const int length = Length();
    if (start < 0 || start > length || m == 0 || m > static_cast<std::size_t>(length - start))
      return FindBytes(text, m, start);
    const std::size_t places = static_cast<std::size_t>(length - start) - m + 1;
    const void* hit = std::memchr(m_Buff + start, text[0], places);
    if (hit == nullptr) return length;
    const char* const p = static_cast<const char*>(hit);
    if (atr_SameBytes(p + 1, text + 1, m - 1)) return static_cast<int>(p - m_Buff);
    return FindBytes(text, m, static_cast<int>(p - m_Buff) + 1);
  }
  /// Position of the last occurrence of the textLength bytes of text starting at or before
  /// limit, or Length(); a limit or textLength of 0 finds nothing.
  int rfind(const char* text, int textLength, int limit) const;
  /// The number of bytes available from start, at most n.
  int Substr(int start, int n) const;
  /// ix may be Length(): gives the terminator.
  char operator[](int ix) const;

  // Editing; each gives the string itself.
  /// Copies the string's text first when it is shared, even if the caller only reads.
  char& operator[](int ix);
  /// Appends other's text (which may be this string's own).
  atr_StringBase& Append(const atr_StringBase& other) {
    return append(other.CStr(), other.Length(), 0, ATR_TO_END);
  }
  /// Appends exactly n bytes of text.
  atr_StringBase& Append(const char* text, int n) { return append(text, n, 0, n); }
  /// Appends at most n of the clen bytes of text that follow start. Inline for the common
  /// case of a sole owner whose size class still has room; everything else (growth, sharing,
  /// separate buffers, range checks) is done by AppendElsewhere.
  atr_StringBase& append(const char* text, int clen, int start, int n) {
    atr_StringRep* const rep = m_StringRep;
    if (rep != nullptr && text != nullptr && start >= 0 && start < clen && n > 0 &&
        rep->References() == 1 && m_Buff == rep->InlineText()) {
      const int count = clen - start < n ? clen - start : n;
      const int length = rep->Length();
      if (count < rep->Capacity() - length) {
        // The source may be this string's own text: it lies before the bytes written.
        char* const end = m_Buff + length;
        if (count == 1)
          *end = text[start];
        else
          std::memmove(end, text + start, static_cast<std::size_t>(count));
        end[count] = ATR_EOS;
        rep->SetLength(length + count);
        return *this;
      }
    }
    return AppendElsewhere(text, clen, start, n);
  }
  /// Inserts at start1 at most n of the slen bytes of text that follow start2.
  atr_StringBase& insert(int start1, const char* text, int slen, int start2, int n);
  /// Replaces at most count1 bytes at start1 by at most count2 of the slen bytes of text that
  /// follow start2.
  atr_StringBase& replace(int start1, int count1, const char* text, int slen, int start2,
                          int count2);
  /// Replaces at most n bytes at start by other's text.
  atr_StringBase& Replace(int start, int n, const atr_StringBase& other);
  /// Replaces at most n bytes at start by the len bytes of text.
  atr_StringBase& Replace(int start, int n, const char* text, int len);
  /// Removes at most n bytes at start (ATR_TO_END: the rest of the text).
  atr_StringBase& Erase(int start, int n);
  /// Removes the leading bytes that occur in set.
  atr_StringBase& LeftTrim(const char* set);
  /// Removes the trailing bytes that occur in set.
  atr_StringBase& RightTrim(const char* set);
  /// Removes every byte that occurs in set, wherever it is.
  atr_StringBase& Trim(const char* set);
  /// Case changes of single-byte characters of the process locale; a string with nothing to
  /// change keeps sharing its header.
  atr_StringBase& ToLower();
  /// Upper case; see ToLower.
  atr_StringBase& ToUpper();
  /// Upper-cases the first character when it is a single-byte lower-case letter.
  atr_StringBase& Capitalize();
  /// Lower-cases the first character when it is a single-byte upper-case letter.
  atr_StringBase& Uncapitalize();
  /// Reverses the bytes (not the characters).
  atr_StringBase& Reverse();
  /// Replaces the first occurrence of from by to, up to count times, each time searching from
  /// the beginning again.
  atr_StringBase& Substitute(const char* from, const char* to, int count);
  /// Sets the length after a caller wrote into GetBuffPtr(); the byte at len must be ATR_EOS.
  atr_StringBase& SetStringLength(int len);

  /// The index of the text that a reader attached with AttachIndex, or null. Only a header
  /// allocated alone (a text longer than a size class, adopted or borrowed) can hold one.
  const void* AttachedIndex() const;
  /// Attaches index, a block from mem_Malloc derived from the text, unless another reader was
  /// first; gives the index attached (null when this text cannot hold one). The block that is
  /// not attached is freed. Safe for readers of one shared header on several threads; any
  /// change of the text, and the release of the header, frees the index.
  const void* AttachIndex(void* index) const;

  /// Removes one zero of a three-digit exponent that starts with 0 ("1e+005" to "1e+05") in
  /// the len bytes of a formatted number; gives the new length.
  static int NormaliseExponent(char* text, int len);

  // Storage primitives.
  /// Texts of up to this many bytes live in one size-classed block with their header.
  static constexpr int kLongestInline = 238;
  /// A size-classed block for len bytes of text (0 to kLongestInline), with the header length
  /// set to length; the text starts at InlineText(). Inline, so that making a short string
  /// costs its allocation and little more.
  static atr_StringRep* NewBlock(int len, int length) {
    const int n = (len + 17) >> 5;
    void* const block = mem_OperatorNewThrowBuiltin(static_cast<std::size_t>(32 * n + 32));
    if (s_statistics) CountBlock(32 * n + 20);
    return ::new (block) atr_StringRep(32 * n + 20, length);
  }
  /// Copies n bytes that do not overlap. Texts of 16 to 64 bytes are moved in pieces of 16
  /// bytes (the last one overlapping the one before), which the compiler emits inline: for the
  /// short texts of the size classes a call costs more than the copy.
  static void CopyBytes(char* to, const char* from, std::size_t n) {
    if (n < 16 || n > 64) {
      std::memcpy(to, from, n);
      return;
    }
    const std::size_t last = n - 16;
    const std::size_t second = n > 32 ? 16 : last;
    const std::size_t third = n > 48 ? 32 : last;
    char a[16], b[16], c[16], d[16];
    std::memcpy(a, from, 16);
    std::memcpy(b, from + second, 16);
    std::memcpy(c, from + third, 16);
    std::memcpy(d, from + last, 16);
    std::memcpy(to, a, 16);
    std::memcpy(to + second, b, 16);
    std::memcpy(to + third, c, 16);
    std::memcpy(to + last, d, 16);
  }
  /// Gives the string a new header and storage for len bytes of text (size-classed up to 238
  /// bytes) and records length; the old header is not released. std::bad_alloc when memory
  /// runs out.
  void allocate(int len, int length);
  /// Makes room for n bytes of text that the string owns alone, without keeping the text (its
  /// length becomes 0): a string without a header or a shared one gets new storage and null
  /// comes back; storage of its own with room for more than n bytes is kept as it is (null).
  /// Otherwise new storage is allocated and the block that still holds the old text comes back,
  /// for the caller to read and then free with mem_Free.
  void* get(int n);
  /// Makes the text this string's own, with room for at least n bytes: a shared text is
  /// copied, a text without room is moved to larger storage. The text is kept.
  void isolate(int n);
  /// Would grow the storage in place; never can (false) and only counts the attempt.
  bool extend(int n);
  /// Gives the string new storage for n bytes (len when n is 0) holding a copy of the len bytes
  /// of text, terminated; the old header is not released.
  void replicate(const char* text, int len, int n);
  /// Frees the header and its storage (a borrowed text is not freed); the string becomes empty.
  /// Called when the last sharer lets go.
  void Delete();
  /// Frees the header rep, counting length and capacity in the string statistics.
  static void release(atr_StringRep* rep, int length, int capacity);

  /// The first byte of the text; null without a header.
  char* m_Buff = nullptr;
  /// The shared header; null for the empty string.
  atr_StringRep* m_StringRep = nullptr;

 private:
  friend class atr_String;
  friend class atr_StringBasePrv;

  static const char* EmptyText();
  /// Whether the statistics collector exists (between Initialize and Finalize with
  /// ATR_SUMMARY set): the inline paths leave every counted step to the library.
  static bool s_statistics;
  /// allocate, for the primitives of the library's own source.
  void NewStorage(int len, int length);
  /// Statistics Allocate of a size-classed block of that capacity.
  static void CountBlock(int capacity);
  bool IsInline() const { return m_Buff == m_StringRep->InlineText(); }
  /// Whether count bytes at text lie in storage that an edit of this string could overwrite
  /// or free (it is the sole owner of a buffer of its own).
  bool OwnsBytes(const char* text, int count) const;
  /// Takes the result of formatting a number into buf (snprintf's count).
  void FromFormatted(char* buf, int len, bool normalise);
  void DropHeader();
  /// Frees the attached index, if any: the text is about to change or go.
  void DropIndex();
  /// Replaces removed bytes at start by inserted bytes from source (which may lie anywhere,
  /// this string's own text included).
  atr_StringBase& Splice(int start, int removed, const char* source, int inserted);
  /// Find of the textLength bytes of text.
  int FindBytes(const char* text, std::size_t textLength, int start) const;
  /// append for every case the inline part does not take.
  atr_StringBase& AppendElsewhere(const char* text, int clen, int start, int n);
};

#endif  // ATR_STRINGBASE_H
