/// @file atr_StringBase.h
/// Storage and editing primitives of the copy-on-write byte string.
#ifndef ATR_STRINGBASE_H
#define ATR_STRINGBASE_H

#include "KLDTPXBasExport.h"
#include "mem_AllocationOperators.h"

#include <cstddef>

/// The end-of-string marker: every text of a string is followed by this byte.
constexpr char ATR_EOS = '\0';
/// A count that means "up to the end of the text" (the largest signed 32-bit value).
constexpr int ATR_TO_END = 2147483647;

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
    if (m_StringRep != nullptr && m_StringRep->Decrement()) Delete();
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
  int Find(const char* text, int start = 0) const;
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
  atr_StringBase& Append(const atr_StringBase& other);
  /// Appends exactly n bytes of text.
  atr_StringBase& Append(const char* text, int n);
  /// Appends at most n of the clen bytes of text that follow start.
  atr_StringBase& append(const char* text, int clen, int start, int n);
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

  /// Removes one zero of a three-digit exponent that starts with 0 ("1e+005" to "1e+05") in
  /// the len bytes of a formatted number; gives the new length.
  static int NormaliseExponent(char* text, int len);

  // Storage primitives.
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
  bool IsInline() const { return m_Buff == m_StringRep->InlineText(); }
  /// Whether count bytes at text lie in storage that an edit of this string could overwrite
  /// or free (it is the sole owner of a buffer of its own).
  bool OwnsBytes(const char* text, int count) const;
  /// Takes the result of formatting a number into buf (snprintf's count).
  void FromFormatted(char* buf, int len, bool normalise);
  void DropHeader();
  /// Replaces removed bytes at start by inserted bytes from source (which may lie anywhere,
  /// this string's own text included).
  atr_StringBase& Splice(int start, int removed, const char* source, int inserted);
};

#endif  // ATR_STRINGBASE_H
