// atr_TemplateCache.h: parsed message templates kept per thread, so that a format text used
// again is not parsed again (module only).
#ifndef ATR_TEMPLATECACHE_H
#define ATR_TEMPLATECACHE_H

#include <cstddef>
#include <cstdint>

/// The text a template is parsed from, with its length and hash (one pass over the text).
/// translated tells a dictionary translation from a program's own text: only the latter has
/// its "\@" note cut before parsing, so the same bytes parse differently.
struct atr_TemplateKey {
  atr_TemplateKey(const char* text, bool translated);

  const char* text;
  std::size_t length;
  std::uint64_t hash;
  bool translated;
};

/// One parsed template, in one block from mem_Malloc: this header, then the argument number of
/// each conversion, the conversion receiving argument n at index n-1, the key text, the
/// template (literal pieces with a zero byte per placeholder, terminated) and the conversion
/// texts one after the other, each terminated.
struct atr_CachedTemplate {
  std::uint64_t hash;
  std::uint32_t keyLength;
  std::uint32_t templateBytes;
  std::uint32_t formatBytes;
  int count;
  bool translated;

  int* Numbers() { return reinterpret_cast<int*>(this + 1); }
  const int* Numbers() const { return reinterpret_cast<const int*>(this + 1); }
  int* Order() { return Numbers() + count; }
  const int* Order() const { return Numbers() + count; }
  char* Key() { return reinterpret_cast<char*>(Order() + count); }
  const char* Key() const { return reinterpret_cast<const char*>(Order() + count); }
  /// The template, directly followed by the conversion texts.
  char* Text() { return Key() + keyLength; }
  const char* Text() const { return Key() + keyLength; }
};

namespace atr_TemplateCache {

/// Longest key text that is kept; longer texts are parsed every time.
constexpr std::size_t kLongestKey = 512;

/// The template parsed from key's text, or null. Valid until the next Keep on this thread.
const atr_CachedTemplate* Find(const atr_TemplateKey& key);

/// A new entry for key with room for count conversions, the header and the key filled in;
/// null when the key is too long, the cache of this thread is gone (thread exit) or memory
/// is short. The caller fills the rest and hands it to Keep.
atr_CachedTemplate* Make(const atr_TemplateKey& key, int count, std::size_t templateBytes,
                         std::size_t formatBytes);

/// Takes ownership of entry, evicting the least recently used template of its set.
void Keep(atr_CachedTemplate* entry);

/// Frees every template of the calling thread (tests; thread exit does it by itself).
void Clear();

}  // namespace atr_TemplateCache

#endif  // ATR_TEMPLATECACHE_H
