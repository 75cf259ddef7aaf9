// atr_dictionary.cpp: reading the dictionary file into a sorted table, lookups and release.
#include "atr_dictionary.h"

#include "KLDTPXBasAssert.h"
#include "atr_tr.h"
#include "atr_utf8.h"
#include "mem_Alloc.h"

#include <climits>
#include <cstdio>
#include <cstdlib>
#include <cstring>

static constexpr const char kAssertPath[] = "TPXBase/TPXBasAtr.m/src/atr_translate";

namespace {

/// One translation: both texts live in one block from mem_Malloc (key, NUL, translation, NUL).
struct atr_DictEntry {
  char* key;
  char* translation;
};

// 0: not loaded; above 0: entries in g_entries; -1: a load found nothing (not retried until
// the next release).
int g_count = 0;
atr_DictEntry* g_entries = nullptr;

constexpr char kMarker[] = "'] = r'";
constexpr int kMarkerLength = sizeof(kMarker) - 1;
constexpr int kLineBuffer = 8192;
constexpr long kMaxEntries = INT_MAX / static_cast<long>(sizeof(atr_DictEntry));

// ---------------------------------------------------------------------------------------------
// Lines.
// ---------------------------------------------------------------------------------------------

/// Reads the file line by line into a buffer of kLineBuffer bytes. A line longer than
/// kLineBuffer - 1 bytes is consumed whole and flagged: its entry could not be cut correctly.
class LineReader {
 public:
  explicit LineReader(std::FILE* file) : m_file(file) {}

  /// The next line without its newline, or false at the end of the file.
  bool Next(const char*& line, int& length, bool& overLong) {
    int n = 0;
    int c;
    overLong = false;
    while ((c = getc_unlocked(m_file)) != EOF && c != '\n') {
      if (n < kLineBuffer - 1)
        m_line[n++] = static_cast<char>(c);
      else
        overLong = true;
    }
    if (c == EOF && n == 0) return false;
    m_line[n] = '\0';
    line = m_line;
    length = n;
    return true;
  }

 private:
  std::FILE* m_file;
  char m_line[kLineBuffer];
};

enum class LineKind { Other, InvalidUtf8, Unused, Entry };

struct ParsedLine {
  const char* key;
  int keyLength;
  const char* translation;
  int translationLength;
};

/// Cuts key and translation out of one line (see the file format in the module's docs).
LineKind ParseLine(const char* line, int length, ParsedLine& out) {
  if (std::memchr(line, '\0', static_cast<std::size_t>(length)) != nullptr) return LineKind::Other;
  const char* marker = static_cast<const char*>(
      memmem(line, static_cast<std::size_t>(length), kMarker, kMarkerLength));
  if (marker == nullptr) return LineKind::Other;
  const char* firstQuote = static_cast<const char*>(std::memchr(line, '\'', marker + 1 - line));
  if (firstQuote == marker) return LineKind::Other;  // no key before the assignment
  out.key = firstQuote + 1;
  out.keyLength = static_cast<int>(marker - out.key);

  // The translation ends at the closing quote; a carriage return and blanks after it are part
  // of the line end.
  const char* rest = marker + kMarkerLength;
  const char* end = line + length;
  while (end > rest && (end[-1] == '\r' || end[-1] == ' ' || end[-1] == '\t')) --end;
  if (end == rest || end[-1] != '\'') return LineKind::Unused;  // no closing quote
  out.translation = rest;
  out.translationLength = static_cast<int>(end - 1 - rest);
  if (!atr_encoding_validate_sized(atr_EncodingUtf8, out.translation, out.translationLength))
    return LineKind::InvalidUtf8;
  if (out.translationLength == 0) return LineKind::Unused;
  if (out.translationLength == out.keyLength &&
      std::memcmp(out.translation, out.key, static_cast<std::size_t>(out.keyLength)) == 0)
    return LineKind::Unused;  // the text stands for itself either way
  return LineKind::Entry;
}

void WarnInvalidUtf8(const ParsedLine& parsed) {
  std::fprintf(stderr, "WARNING: atr: Invalid UTF-8 string.\n");
  std::fprintf(stderr, "\"%.*s\"\n\n", parsed.keyLength, parsed.key);
}

// ---------------------------------------------------------------------------------------------
// Order.
// ---------------------------------------------------------------------------------------------

int CompareEntries(const void* arg1, const void* arg2) {
  KLD_ASSERT(arg1);
  KLD_ASSERT(arg2);
  return std::strcmp(static_cast<const atr_DictEntry*>(arg1)->key,
                     static_cast<const atr_DictEntry*>(arg2)->key);
}

/// Sorts by key keeping the file order of equal keys, so that the later definition of a key
/// is found, as it would be by the script that the file is written in.
void SortEntries(atr_DictEntry* entries, int count) {
  auto* scratch =
      static_cast<atr_DictEntry*>(mem_Malloc(sizeof(atr_DictEntry) * static_cast<size_t>(count)));
  if (scratch == nullptr) {  // no room for a stable sort: equal keys end in any order
    std::qsort(entries, static_cast<size_t>(count), sizeof(atr_DictEntry), CompareEntries);
    return;
  }
  // Bottom-up merge sort: runs of width w are merged into runs of 2w, ping-ponging between
  // the table and the scratch array.
  atr_DictEntry* from = entries;
  atr_DictEntry* to = scratch;
  for (int width = 1; width < count; width *= 2) {
    for (int lo = 0; lo < count; lo += 2 * width) {
      int mid = lo + width < count ? lo + width : count;
      int hi = mid + width < count ? mid + width : count;
      int i = lo, j = mid, k = lo;
      while (i < mid && j < hi)
        to[k++] = CompareEntries(&from[j], &from[i]) < 0 ? from[j++] : from[i++];
      while (i < mid) to[k++] = from[i++];
      while (j < hi) to[k++] = from[j++];
    }
    atr_DictEntry* swap = from;
    from = to;
    to = swap;
  }
  if (from != entries)
    std::memcpy(entries, from, sizeof(atr_DictEntry) * static_cast<size_t>(count));
  mem_Free(scratch);
}

void FreeEntries(atr_DictEntry* entries, int count) {
  for (int i = 0; i < count; ++i) mem_Free(entries[i].key);  // the translation shares the block
  mem_Free(entries);
}

}  // namespace

// ---------------------------------------------------------------------------------------------
// Reading.
// ---------------------------------------------------------------------------------------------

int atr_dictionary::Unescape(char* text, int len) {
  int out = 0;
  int i = 0;
  auto octal = [](char c) { return c >= '0' && c <= '7'; };
  auto hex = [](char c) -> int {
    if (c >= '0' && c <= '9') return c - '0';
    if (c >= 'a' && c <= 'f') return c - 'a' + 10;
    if (c >= 'A' && c <= 'F') return c - 'A' + 10;
    return -1;
  };
  while (i < len) {
    char c = text[i];
    if (c != '\\' || i + 1 == len) {  // a backslash at the very end is kept
      text[out++] = c;
      ++i;
      continue;
    }
    char next = text[i + 1];
    int produced = -1;
    int consumed = 2;
    switch (next) {
      case '"':
        produced = '"';
        break;
      case '\'':
        produced = '\'';
        break;
      case '\\':
        produced = '\\';
        break;
      case 'a':
        produced = 7;
        break;
      case 'b':
        produced = 8;
        break;
      case 'f':
        produced = 12;
        break;
      case 'n':
        produced = 10;
        break;
      case 'r':
        produced = 13;
        break;
      case 't':
        produced = 9;
        break;
      case 'v':
        produced = 11;
        break;
      case 'x': {
        unsigned value = 0;
        int j = i + 2;
        while (j < len && hex(text[j]) >= 0) value = ((value << 4) | hex(text[j++])) & 0xFFu;
        if (j > i + 2) {
          produced = static_cast<int>(value);
          consumed = j - i;
        }
        break;
      }
      default:
        if (octal(next)) {
          unsigned value = 0;
          int j = i + 1;
          while (j < len && j < i + 4 && octal(text[j])) value = value * 8 + (text[j++] - '0');
          produced = static_cast<int>(value & 0xFFu);
          consumed = j - i;
        }
        break;
    }
    if (produced < 0) {  // not an escape: both characters stay
      text[out++] = c;
      text[out++] = next;
    } else {
      text[out++] = static_cast<char>(produced);
    }
    i += consumed;
  }
  if (out < len) text[out] = '\0';
  return out;
}

int atr_dictionary::ReadDictionary(std::FILE* file) {
  LineReader reader(file);
  const char* line;
  int length;
  bool overLong;
  ParsedLine parsed;

  // Counting pass: size the table. Lines that are not valid UTF-8 are reported here, once.
  long count = 0;
  while (reader.Next(line, length, overLong)) {
    if (overLong) continue;
    LineKind kind = ParseLine(line, length, parsed);
    if (kind == LineKind::Entry) {
      if (count < kMaxEntries) ++count;
    } else if (kind == LineKind::InvalidUtf8)
      WarnInvalidUtf8(parsed);
  }
  if (count == 0) return 0;
  auto* entries =
      static_cast<atr_DictEntry*>(mem_Calloc(static_cast<size_t>(count), sizeof(atr_DictEntry)));
  if (entries == nullptr) return 0;
  std::rewind(file);

  // Storing pass. The file may have changed since the first pass: never store more entries
  // than were counted.
  LineReader again(file);
  int stored = 0;
  while (stored < count && again.Next(line, length, overLong)) {
    if (overLong || ParseLine(line, length, parsed) != LineKind::Entry) continue;
    atr_DictEntry* pEntry = &entries[stored];
    KLD_ASSERT(pEntry);
    auto* block = static_cast<char*>(
        mem_Malloc(static_cast<size_t>(parsed.keyLength) + parsed.translationLength + 2));
    if (block == nullptr) continue;  // this entry is lost; the others still load
    std::memcpy(block, parsed.key, static_cast<size_t>(parsed.keyLength));
    block[parsed.keyLength] = '\0';
    int keyLength = Unescape(block, parsed.keyLength);
    char* translation = block + parsed.keyLength + 1;
    std::memcpy(translation, parsed.translation, static_cast<size_t>(parsed.translationLength));
    translation[parsed.translationLength] = '\0';
    int translationLength = Unescape(translation, parsed.translationLength);
    // A zero byte produced by an escape would cut a text short: such a key could never equal a
    // message text, and such a translation would lose its end. Empty texts are not stored
    // either (see ParseLine).
    if (keyLength == 0 || translationLength == 0 ||
        std::strlen(block) != static_cast<size_t>(keyLength) ||
        std::strlen(translation) != static_cast<size_t>(translationLength)) {
      mem_Free(block);
      continue;
    }
    pEntry->key = block;
    pEntry->translation = translation;
    ++stored;
  }
  if (stored == 0) {
    mem_Free(entries);
    return 0;
  }
  SortEntries(entries, stored);
  g_entries = entries;
  return stored;
}

// ---------------------------------------------------------------------------------------------
// The table.
// ---------------------------------------------------------------------------------------------

const char* atr_dictionary::Lookup(const char* text) {
  if (g_count <= 0 || text == nullptr) return nullptr;
  // The last entry whose key is not above text: with equal keys, the one defined last.
  int lo = 0, hi = g_count;
  while (lo < hi) {
    int mid = lo + (hi - lo) / 2;
    if (std::strcmp(g_entries[mid].key, text) <= 0)
      lo = mid + 1;
    else
      hi = mid;
  }
  if (lo == 0 || std::strcmp(g_entries[lo - 1].key, text) != 0) return nullptr;
  return g_entries[lo - 1].translation;
}

void atr_tr_enable(bool on) {
  if (!on) {
    atr_trReleaseDB();
    return;
  }
  if (g_count != 0) return;
  g_count = -1;
  char* path = atr_dictionary::FindDictionaryFile();
  if (path == nullptr) return;
  std::FILE* file = std::fopen(path, "r");
  mem_Free(path);
  if (file == nullptr) return;
  int stored = atr_dictionary::ReadDictionary(file);
  std::fclose(file);
  if (stored > 0) g_count = stored;
}

void atr_trReleaseDB() {
  if (g_entries != nullptr) FreeEntries(g_entries, g_count);
  g_entries = nullptr;
  g_count = 0;
}
