// atr_dictionary.cpp: reading the dictionary file into a sorted table with a hash index,
// lookups and release.
#include "atr_dictionary.h"

#include "KLDTPXBasAssert.h"
#include "atr_inspect.h"
#include "atr_tr.h"
#include "atr_utf8.h"
#include "mem_Alloc.h"

#include <climits>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

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

/// One slot of the index: the key's hash and its entry's position in g_entries plus one
/// (0: an empty slot).
struct atr_DictSlot {
  std::uint32_t hash;
  std::int32_t entry;
};
// Open-addressing index over g_entries, at most half full, so that a lookup hashes the text
// once and compares it with one key (two on a rare hash collision) instead of searching the
// sorted table. Null when it could not be allocated: lookups then search the table.
atr_DictSlot* g_index = nullptr;
std::uint32_t g_indexMask = 0;
unsigned g_generation = 0;

constexpr char kMarker[] = "'] = r'";
constexpr int kMarkerLength = sizeof(kMarker) - 1;
constexpr int kLineBuffer = atr_DictScanner::MaxLine + 1;
constexpr long kMaxEntries = INT_MAX / static_cast<long>(sizeof(atr_DictEntry));

void WarnInvalidUtf8(const atr_DictLine& line) {
  std::fprintf(stderr, "WARNING: atr: Invalid UTF-8 string.\n");
  std::fprintf(stderr, "\"%.*s\"\n\n", line.m_rawKeyLength, line.m_rawKey);
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

/// Hash of the length bytes at text, eight at a time.
std::uint64_t HashKey(const char* text, std::size_t length) {
  constexpr std::uint64_t kMultiplier = 0x9E3779B97F4A7C15ull;
  std::uint64_t h = length * kMultiplier;
  std::size_t i = 0;
  for (; i + 8 <= length; i += 8) {
    std::uint64_t w;
    std::memcpy(&w, text + i, 8);
    h = (h ^ w) * kMultiplier;
    h ^= h >> 29;
  }
  if (i < length) {
    std::uint64_t w = 0;
    std::memcpy(&w, text + i, length - i);
    h = (h ^ w) * kMultiplier;
    h ^= h >> 29;
  }
  h *= kMultiplier;
  return h ^ (h >> 32);
}

/// Builds g_index over the count sorted entries. With equal keys the last of them, the later
/// definition in the file, owns the slot, as the search of the sorted table finds it.
void BuildIndex(const atr_DictEntry* entries, int count) {
  std::uint32_t slots = 16;
  while (slots < 2u * static_cast<std::uint32_t>(count)) slots *= 2;
  auto* index = static_cast<atr_DictSlot*>(mem_Calloc(slots, sizeof(atr_DictSlot)));
  if (index == nullptr) return;
  const std::uint32_t mask = slots - 1;
  for (int e = 0; e < count; ++e) {
    const char* key = entries[e].key;
    const auto hash = static_cast<std::uint32_t>(HashKey(key, std::strlen(key)));
    std::uint32_t i = hash & mask;
    while (index[i].entry != 0 &&
           (index[i].hash != hash || std::strcmp(entries[index[i].entry - 1].key, key) != 0))
      i = (i + 1) & mask;
    index[i].hash = hash;
    index[i].entry = e + 1;
  }
  g_index = index;
  g_indexMask = mask;
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

// ---------------------------------------------------------------------------------------------
// Writing: the reverse of Unescape, for tools that write dictionaries.
// ---------------------------------------------------------------------------------------------

namespace {

/// Appends the escaped form of n bytes to out (which has room for 4 bytes per byte): what
/// Unescape turns back into them. In a key every "]" becomes "\\135" (three octal digits end
/// the escape whatever follows): the assignment "'] = r'" needs one, so the first assignment
/// the reader finds is the one written after the key, whatever quotes the key holds. False
/// for a zero byte, which would end the text.
bool Escape(const char* text, int n, bool brackets, char* out, int& length) {
  length = 0;
  for (int i = 0; i < n; ++i) {
    const char c = text[i];
    const char* escaped = c == '\\'              ? "\\\\"
                          : c == '\n'            ? "\\n"
                          : c == '\r'            ? "\\r"
                          : c == ']' && brackets ? "\\135"
                                                 : nullptr;
    if (c == '\0') return false;
    if (escaped == nullptr) {
      out[length++] = c;
    } else {
      for (; *escaped != '\0'; ++escaped) out[length++] = *escaped;
    }
  }
  return true;
}

}  // namespace

bool atr_DictWriteEntry(std::FILE* out, const char* key, int keyLength, const char* text,
                        int textLength) {
  if (out == nullptr || key == nullptr || text == nullptr || keyLength < 0 || textLength < 0 ||
      keyLength > kLineBuffer || textLength > kLineBuffer)
    return false;
  char* buffer =
      static_cast<char*>(mem_Malloc(4 * static_cast<std::size_t>(keyLength + textLength) + 1));
  if (buffer == nullptr) return false;
  int rawKey = 0, rawText = 0;
  // A text equal to its key is written exactly as the key, so that the line is an identity
  // line to the reader too.
  const bool identity =
      keyLength == textLength && std::memcmp(key, text, static_cast<std::size_t>(keyLength)) == 0;
  bool ok = Escape(key, keyLength, true, buffer, rawKey) &&
            Escape(text, textLength, identity, buffer + rawKey, rawText) &&
            // The reader validates the translation as written, and reads at most MaxLine
            // bytes of a line at once.
            atr_encoding_validate_sized(atr_EncodingUtf8, buffer + rawKey, rawText) &&
            rawKey + rawText + 11 <= atr_DictScanner::MaxLine;
  if (ok)
    ok = std::fprintf(out, "d['%.*s'] = r'%.*s'\n", rawKey, buffer, rawText, buffer + rawKey) > 0;
  mem_Free(buffer);
  return ok;
}

int atr_DictKeyCompare(const char* a, int aLength, const char* b, int bLength) {
  const int common = aLength < bLength ? aLength : bLength;
  const int c = common > 0 ? std::memcmp(a, b, static_cast<std::size_t>(common)) : 0;
  if (c != 0) return c;
  return aLength < bLength ? -1 : aLength > bLength ? 1 : 0;
}

// ---------------------------------------------------------------------------------------------
// Scanning: the one place where lines are cut into key and translation.
// ---------------------------------------------------------------------------------------------

atr_DictScanner::atr_DictScanner(std::FILE* file)
    // The line, then the unescaped key and translation, each with its terminator: unescaping
    // never makes a text longer.
    : m_file(file), m_buffer(static_cast<char*>(mem_Malloc(2 * kLineBuffer + 2))) {}

atr_DictScanner::~atr_DictScanner() { mem_Free(m_buffer); }

// A line is read up to its newline, but never more than MaxLine bytes at once: the rest of a
// longer line is read as the next line(s), each a piece parsed on its own. A line of exactly
// MaxLine bytes ends at its newline and is not split.
bool atr_DictScanner::ReadLine(int& length) {
  int n = 0;
  int c = EOF;
  while (n < MaxLine && (c = getc_unlocked(m_file)) != EOF && c != '\n')
    m_buffer[n++] = static_cast<char>(c);
  const bool continued = m_continues;
  m_continues = false;
  if (n == MaxLine) {
    int next = getc_unlocked(m_file);
    if (next != '\n' && next != EOF) {
      ungetc(next, m_file);
      m_continues = true;
    }
  } else if (c == EOF && n == 0 && !continued) {
    return false;
  }
  m_buffer[n] = '\0';
  length = n;
  if (continued) {
    ++m_piece;
  } else {
    ++m_number;
    m_piece = m_continues ? 1 : 0;
  }
  return true;
}

bool atr_DictScanner::Next(atr_DictLine& out) {
  if (m_buffer == nullptr || m_file == nullptr) return false;
  int length;
  while (ReadLine(length)) {
    const char* line = m_buffer;
    out = atr_DictLine{m_number, atr_DictLineOverLong, "", 0, "", 0, "", 0, "", 0, m_piece};
    const char* marker = static_cast<const char*>(
        memmem(line, static_cast<std::size_t>(length), kMarker, kMarkerLength));
    if (marker == nullptr) {
      if (m_piece > 0) return true;  // a piece of a long line is shown, even without an entry
      continue;                      // comments, headers, blank lines
    }
    const char* firstQuote = static_cast<const char*>(std::memchr(line, '\'', marker + 1 - line));
    if (firstQuote == marker) continue;  // no key before the assignment
    out.m_rawKey = firstQuote + 1;
    out.m_rawKeyLength = static_cast<int>(marker - out.m_rawKey);
    // A zero byte in the line itself leaves the reading rule without a line end to count
    // back from (the line as a text ends before its newline): such a line is not read.
    if (std::memchr(line, '\0', static_cast<std::size_t>(length)) != nullptr) {
      out.m_kind = atr_DictLineUnusable;
      return true;
    }

    // The translation is what follows the assignment up to the line's last character, which
    // stands for the closing quote whatever it is (a "\r\n" line end counts as the "\n" it
    // is in the text files the dictionaries come from). A piece of a long line, which ends
    // without a newline, gives up its last two characters, as a line with its newline does.
    const char* rest = marker + kMarkerLength;
    const char* end = line + length;
    if (m_continues) {
      --end;
    } else if (end > rest && end[-1] == '\r') {
      --end;
    }
    if (end <= rest) {
      out.m_kind = atr_DictLineNoTranslation;
      return true;
    }
    out.m_rawText = rest;
    out.m_rawTextLength = static_cast<int>(end - 1 - rest);
    // An empty translation is an entry like any other: it replaces the message with the
    // empty text.
    if (!atr_encoding_validate_sized(atr_EncodingUtf8, out.m_rawText, out.m_rawTextLength))
      out.m_kind = atr_DictLineInvalidUtf8;
    else if (out.m_rawTextLength == out.m_rawKeyLength &&
             std::memcmp(out.m_rawText, out.m_rawKey,
                         static_cast<std::size_t>(out.m_rawKeyLength)) == 0)
      out.m_kind = atr_DictLineIdentity;  // the text stands for itself either way
    else
      out.m_kind = atr_DictLineEntry;
    if (out.m_kind != atr_DictLineEntry) return true;

    char* key = m_buffer + kLineBuffer;
    std::memcpy(key, out.m_rawKey, static_cast<std::size_t>(out.m_rawKeyLength));
    int keyLength = atr_dictionary::Unescape(key, out.m_rawKeyLength);
    key[keyLength] = '\0';
    char* text = key + keyLength + 1;
    std::memcpy(text, out.m_rawText, static_cast<std::size_t>(out.m_rawTextLength));
    int textLength = atr_dictionary::Unescape(text, out.m_rawTextLength);
    text[textLength] = '\0';
    // Keys and translations are zero-terminated texts: a zero byte made by an escape ends
    // them there. An empty key is a key like any other.
    out.m_key = key;
    out.m_keyLength = static_cast<int>(std::strlen(key));
    out.m_text = text;
    out.m_textLength = static_cast<int>(std::strlen(text));
    return true;
  }
  return false;
}

// ---------------------------------------------------------------------------------------------
// Loading.
// ---------------------------------------------------------------------------------------------

int atr_dictionary::ReadDictionary(std::FILE* file) {
  atr_DictLine line;

  // Counting pass: size the table. Lines that are not valid UTF-8 are reported here, once.
  long count = 0;
  {
    atr_DictScanner scanner(file);
    while (scanner.Next(line)) {
      if (line.m_kind == atr_DictLineEntry) {
        if (count < kMaxEntries) ++count;
      } else if (line.m_kind == atr_DictLineInvalidUtf8) {
        WarnInvalidUtf8(line);
      }
    }
  }
  if (count == 0) return 0;
  auto* entries =
      static_cast<atr_DictEntry*>(mem_Calloc(static_cast<size_t>(count), sizeof(atr_DictEntry)));
  if (entries == nullptr) return 0;
  std::rewind(file);

  // Storing pass. The file may have changed since the first pass: never store more entries
  // than were counted.
  atr_DictScanner scanner(file);
  int stored = 0;
  while (stored < count && scanner.Next(line)) {
    if (line.m_kind != atr_DictLineEntry) continue;
    atr_DictEntry* pEntry = &entries[stored];
    KLD_ASSERT(pEntry);
    auto* block = static_cast<char*>(
        mem_Malloc(static_cast<size_t>(line.m_keyLength) + line.m_textLength + 2));
    if (block == nullptr) continue;  // this entry is lost; the others still load
    std::memcpy(block, line.m_key, static_cast<size_t>(line.m_keyLength) + 1);
    std::memcpy(block + line.m_keyLength + 1, line.m_text,
                static_cast<size_t>(line.m_textLength) + 1);
    pEntry->key = block;
    pEntry->translation = block + line.m_keyLength + 1;
    ++stored;
  }
  if (stored == 0) {
    mem_Free(entries);
    return 0;
  }
  SortEntries(entries, stored);
  g_entries = entries;
  BuildIndex(entries, stored);
  return stored;
}

// ---------------------------------------------------------------------------------------------
// The table.
// ---------------------------------------------------------------------------------------------

unsigned atr_dictionary::Generation() { return g_generation; }

const char* atr_dictionary::Lookup(const char* text) {
  if (g_count <= 0 || text == nullptr) return nullptr;
  if (g_index != nullptr) {
    const auto hash = static_cast<std::uint32_t>(HashKey(text, std::strlen(text)));
    for (std::uint32_t i = hash & g_indexMask; g_index[i].entry != 0; i = (i + 1) & g_indexMask) {
      const atr_DictEntry& entry = g_entries[g_index[i].entry - 1];
      if (g_index[i].hash == hash && std::strcmp(entry.key, text) == 0) return entry.translation;
    }
    return nullptr;
  }
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

namespace {

/// Loads the file at path into the empty table; a file that cannot be read, that is not a
/// regular file (a directory, or a FIFO that would wait for a writer), or that gives no entry,
/// leaves the count at -1.
void LoadFrom(const char* path) {
  ++g_generation;
  g_count = -1;
  int fd = ::open(path, O_RDONLY | O_NONBLOCK | O_CLOEXEC);
  if (fd < 0) return;
  struct stat info;
  if (::fstat(fd, &info) != 0 || !S_ISREG(info.st_mode)) {
    ::close(fd);
    return;
  }
  ::fcntl(fd, F_SETFL, ::fcntl(fd, F_GETFL) & ~O_NONBLOCK);
  std::FILE* file = ::fdopen(fd, "r");
  if (file == nullptr) {
    ::close(fd);
    return;
  }
  int stored = atr_dictionary::ReadDictionary(file);
  std::fclose(file);
  if (stored > 0) g_count = stored;
}

}  // namespace

void atr_tr_enable(bool on) {
  if (!on) {
    atr_trReleaseDB();
    return;
  }
  if (g_count != 0) return;
  ++g_generation;
  g_count = -1;
  char* path = atr_dictionary::FindDictionaryFile();
  if (path == nullptr) return;
  LoadFrom(path);
  mem_Free(path);
}

int atr_trLoadFile(const char* path) {
  if (g_count == 0) {
    if (path == nullptr) {
      ++g_generation;
      g_count = -1;
      return 0;
    }
    LoadFrom(path);
  }
  return g_count > 0 ? g_count : 0;
}

const char* atr_trLookup(const char* text) { return atr_dictionary::Lookup(text); }

void atr_trReleaseDB() {
  if (g_entries != nullptr) FreeEntries(g_entries, g_count);
  ++g_generation;
  mem_Free(g_index);
  g_index = nullptr;
  g_indexMask = 0;
  g_entries = nullptr;
  g_count = 0;
}
