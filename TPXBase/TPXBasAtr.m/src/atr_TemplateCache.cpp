// atr_TemplateCache.cpp: a small set-associative cache of parsed templates per thread.
//
// Each thread has its own cache, so lookups take no lock and a template is never shared
// between threads. The cache is bounded (kSets * kWays templates, each key at most
// kLongestKey bytes) and freed when the thread ends. A template depends only on the bytes it
// was parsed from, so nothing (dictionary loads and releases among them) invalidates it.
#include "atr_TemplateCache.h"

#include "mem_Alloc.h"

#include <cstring>

namespace {

constexpr int kSets = 32;
constexpr int kWays = 2;

// Trivially destructible, so that they stay readable during the thread's own destructors.
thread_local atr_CachedTemplate* t_slots[kSets][kWays];
thread_local bool t_closed = false;

/// Frees this thread's templates when the thread ends; from then on nothing is cached, so
/// that messages built by later destructors leak nothing.
struct Reaper {
  bool armed = false;
  ~Reaper() {
    atr_TemplateCache::Clear();
    t_closed = true;
  }
};
thread_local Reaper t_reaper;

std::uint64_t Mix(std::uint64_t h, std::uint64_t word) {
  h ^= word;
  h *= 0x9E3779B97F4A7C15ull;
  return h ^ (h >> 29);
}

}  // namespace

atr_TemplateKey::atr_TemplateKey(const char* t, bool tr)
    : text(t), length(std::strlen(t)), hash(0), translated(tr) {
  std::uint64_t h = length * 0xC2B2AE3D27D4EB4Full + (tr ? 1 : 0);
  std::size_t i = 0;
  for (; i + 8 <= length; i += 8) {
    std::uint64_t word;
    std::memcpy(&word, t + i, 8);
    h = Mix(h, word);
  }
  if (i < length) {
    std::uint64_t word = 0;
    std::memcpy(&word, t + i, length - i);
    h = Mix(h, word);
  }
  hash = h;
}

const atr_CachedTemplate* atr_TemplateCache::Find(const atr_TemplateKey& key) {
  atr_CachedTemplate** set = t_slots[key.hash % kSets];
  for (int way = 0; way < kWays; ++way) {
    atr_CachedTemplate* entry = set[way];
    if (entry == nullptr || entry->hash != key.hash || entry->keyLength != key.length ||
        entry->translated != key.translated || std::memcmp(entry->Key(), key.text, key.length) != 0)
      continue;
    for (; way > 0; --way) set[way] = set[way - 1];  // most recently used first
    set[0] = entry;
    return entry;
  }
  return nullptr;
}

atr_CachedTemplate* atr_TemplateCache::Make(const atr_TemplateKey& key, int count,
                                            std::size_t templateBytes, std::size_t formatBytes) {
  if (t_closed || key.length > kLongestKey || count < 0 || count > static_cast<int>(kLongestKey))
    return nullptr;
  std::size_t size = sizeof(atr_CachedTemplate) +
                     2 * sizeof(int) * static_cast<std::size_t>(count) + key.length +
                     templateBytes + formatBytes;
  auto* entry = static_cast<atr_CachedTemplate*>(mem_Malloc(size));
  if (entry == nullptr) return nullptr;
  entry->hash = key.hash;
  entry->keyLength = static_cast<std::uint32_t>(key.length);
  entry->templateBytes = static_cast<std::uint32_t>(templateBytes);
  entry->formatBytes = static_cast<std::uint32_t>(formatBytes);
  entry->count = count;
  entry->translated = key.translated;
  std::memcpy(entry->Key(), key.text, key.length);
  return entry;
}

void atr_TemplateCache::Keep(atr_CachedTemplate* entry) {
  if (entry == nullptr) return;
  t_reaper.armed = true;  // the first use registers the thread-exit clean-up
  atr_CachedTemplate** set = t_slots[entry->hash % kSets];
  mem_Free(set[kWays - 1]);
  for (int way = kWays - 1; way > 0; --way) set[way] = set[way - 1];
  set[0] = entry;
}

void atr_TemplateCache::Clear() {
  for (auto& set : t_slots)
    for (atr_CachedTemplate*& entry : set) {
      mem_Free(entry);
      entry = nullptr;
    }
}
