// atr_translate.cpp: parsing a (translated) format text into a message template and
// assembling the message.
#include "atr_translate.h"

#include "KLDTPXBasAssert.h"
#include "atr_TemplateCache.h"
#include "atr_dictionary.h"
#include "mem_Alloc.h"

#include <cstring>

static constexpr const char kAssertPath[] = "TPXBase/TPXBasAtr.m/src/atr_translate";

namespace {

constexpr int kUnnumbered = -10000;
// Argument numbers saturate here, so that differences of two numbers still fit an int.
constexpr int kLargestNumber = 1000000000;

bool IsDigit(char c) { return c >= '0' && c <= '9'; }

bool IsConversionLetter(char c) {
  switch (c) {
    case 'E':
    case 'X':
    case 'c':
    case 'd':
    case 'e':
    case 'f':
    case 'g':
    case 'o':
    case 's':
    case 'u':
    case 'x':
      return true;
    default:
      return false;
  }
}

bool IsAscii(const char* text) {
  for (; *text != '\0'; ++text)
    if (static_cast<unsigned char>(*text) >= 0x80) return false;
  return true;
}

/// Where a "\@" note starts, or null.
const char* FindNote(const char* text) {
  for (const char* p = std::strchr(text, '\\'); p != nullptr; p = std::strchr(p + 1, '\\'))
    if (p[1] == '@') return p;
  return nullptr;
}

/// A buffer on the stack for short texts, from the allocation service for long ones.
class TextBuffer {
 public:
  explicit TextBuffer(size_t size)
      : m_data(size <= sizeof(m_local) ? m_local : new (mem_BuiltInAlloc{}) char[size]) {}
  ~TextBuffer() {
    if (m_data != m_local) mem_deleteBuiltIn(m_data);
  }
  TextBuffer(const TextBuffer&) = delete;
  TextBuffer& operator=(const TextBuffer&) = delete;
  char* Data() { return m_data; }

 private:
  char m_local[512];
  char* m_data;
};

}  // namespace

// ---------------------------------------------------------------------------------------------
// Mode conversions.
// ---------------------------------------------------------------------------------------------

atr_String TPXBasAtrStringMode::ModalToUTF8(const atr_String& text, TPXBasStringMode mode) {
  return mode.IsLocale() ? text.LocaleToUTF8() : text;
}

atr_String TPXBasAtrStringMode::Utf8ToModal(const atr_String& text, TPXBasStringMode mode) {
  return mode.IsLocale() ? text.UTF8ToLocale() : text;
}

// ---------------------------------------------------------------------------------------------
// Construction: lookup, parsing, numbering, ordering.
// ---------------------------------------------------------------------------------------------

atr_translate::atr_translate(const char* text, TPXBasStringMode mode) {
  if (text == nullptr) return;
  try {
    Build(text, mode);
  } catch (...) {  // an allocation failed: give back what was taken before passing it on
    Clear();
    throw;
  }
}

void atr_translate::Build(const char* text, TPXBasStringMode mode) {
  // A text of ASCII bytes is the same in both encodings: it is used where it stands instead of
  // being copied into m_utf8.
  if (mode.IsLocale() && !IsAscii(text)) {
    m_utf8 = TPXBasAtrStringMode::ModalToUTF8(atr_MakeAtrString(text), mode);
    m_text = m_utf8.CStr();
  } else {
    m_text = text;
  }

  const char* translation = atr_dictionary::Lookup(text);
  if (translation != nullptr) {
    if (Prepare(translation, true)) return;
    // A translation is edited by users: one that the parser cannot take is ignored rather
    // than ending the process.
    Clear();
  }
  if (!Prepare(m_text, false)) {
    KLD_ASSERT(0);
    Clear();
  }
}

/// Makes the template of text: from this thread's cache when the same bytes were parsed
/// before, otherwise by parsing, numbering and ordering (and keeping the result). False when
/// the text holds "%$".
bool atr_translate::Prepare(const char* text, bool translated) {
  const atr_TemplateKey key(text, translated);
  if (Recall(key)) return true;
  const char* note = translated ? nullptr : FindNote(text);
  ParseResult result;
  if (note == nullptr) {
    result = Parse(text);
  } else {
    TextBuffer cut(static_cast<size_t>(note - text) + 1);
    std::memcpy(cut.Data(), text, static_cast<size_t>(note - text));
    cut.Data()[note - text] = '\0';
    result = Parse(cut.Data());
  }
  if (result != ParseResult::Ok) return false;
  Number();
  Order();
  Remember(key);
  return true;
}

atr_translate::~atr_translate() { Clear(); }

void atr_translate::Clear() {
  for (int i = 0; i < m_count; ++i)
    if (m_args[i].m_substitution != m_args[i].m_small) mem_Free(m_args[i].m_substitution);
  if (m_block != m_inlineBlock) mem_deleteBuiltIn(m_block);
  if (m_args != m_inlineArgs) delete[] m_args;
  m_byNumber = nullptr;
  m_args = nullptr;
  m_template = nullptr;
  m_formats = nullptr;
  m_block = nullptr;
  m_templateBytes = 0;
  m_formatBytes = 0;
  m_count = 0;
}

char* atr_translate::NewBlock(size_t size) {
  m_block = size <= sizeof(m_inlineBlock) ? m_inlineBlock : new (mem_BuiltInAlloc{}) char[size];
  return m_block;
}

atr_translate::StrArgs* atr_translate::NewArgs(int count) {
  m_args = count <= kInlineArgs ? m_inlineArgs : new StrArgs[static_cast<size_t>(count)];
  return m_args;
}

bool atr_translate::Recall(const atr_TemplateKey& key) {
  const atr_CachedTemplate* cached = atr_TemplateCache::Find(key);
  if (cached == nullptr) return false;
  const int count = cached->count;
  const size_t table = sizeof(StrArgs*) * static_cast<size_t>(count);
  char* block = NewBlock(table + cached->templateBytes + cached->formatBytes);
  m_byNumber = count > 0 ? reinterpret_cast<StrArgs**>(block) : nullptr;
  m_template = block + table;
  m_formats = m_template + cached->templateBytes;
  m_templateBytes = static_cast<int>(cached->templateBytes);
  m_formatBytes = static_cast<int>(cached->formatBytes);
  std::memcpy(m_template, cached->Text(), cached->templateBytes + cached->formatBytes);
  if (count == 0) return true;
  StrArgs* args = NewArgs(count);
  const int* numbers = cached->Numbers();
  const char* format = m_formats;
  for (int i = 0; i < count; ++i) {
    args[i].m_number = numbers[i];
    args[i].m_format = const_cast<char*>(format);
    args[i].m_substitution = nullptr;
    args[i].m_length = 0;
    format += std::strlen(format) + 1;
  }
  const int* order = cached->Order();
  for (int k = 0; k < count; ++k) m_byNumber[k] = &args[order[k]];
  m_count = count;
  return true;
}

void atr_translate::Remember(const atr_TemplateKey& key) const {
  atr_CachedTemplate* entry = atr_TemplateCache::Make(
      key, m_count, static_cast<size_t>(m_templateBytes), static_cast<size_t>(m_formatBytes));
  if (entry == nullptr) return;
  for (int i = 0; i < m_count; ++i) {
    entry->Numbers()[i] = m_args[i].m_number;
    entry->Order()[i] = static_cast<int>(m_byNumber[i] - m_args);
  }
  std::memcpy(entry->Text(), m_template, static_cast<size_t>(m_templateBytes));
  if (m_formatBytes > 0)
    std::memcpy(entry->Text() + m_templateBytes, m_formats, static_cast<size_t>(m_formatBytes));
  atr_TemplateCache::Keep(entry);
}

atr_translate::ParseResult atr_translate::Parse(const char* text) {
  const size_t length = std::strlen(text);

  // Candidate conversions: every "%" followed by a character other than "%".
  int candidates = 0;
  for (size_t i = 0; i + 1 < length; ++i) {
    if (text[i] != '%') continue;
    if (text[i + 1] == '%')
      ++i;
    else
      ++candidates;
  }

  if (candidates == 0) {
    m_template = NewBlock(length + 1);
    char* out = m_template;
    for (size_t i = 0; i < length; ++i) {
      if (text[i] == '%') {
        if (i + 1 == length) break;  // a "%" at the very end is dropped
        ++i;                         // "%%" is one "%"
      }
      *out++ = text[i];
    }
    *out = '\0';
    m_templateBytes = static_cast<int>(out + 1 - m_template);
    return ParseResult::Ok;
  }

  // One block: the conversions ordered by number, the template (never longer than the text),
  // then the conversion texts (each at most as long as its source plus a terminator).
  const size_t table = sizeof(StrArgs*) * static_cast<size_t>(candidates);
  char* block = NewBlock(table + 2 * length + static_cast<size_t>(candidates) + 2);
  m_byNumber = reinterpret_cast<StrArgs**>(block);
  m_template = block + table;
  m_formats = m_template + length + 1;
  NewArgs(candidates);
  char* out = m_template;
  char* formats = m_formats;

  size_t i = 0;
  while (i < length) {
    if (text[i] != '%') {
      const char* percent = std::strchr(text + i, '%');
      size_t run = (percent != nullptr ? static_cast<size_t>(percent - text) : length) - i;
      std::memcpy(out, text + i, run);
      out += run;
      i += run;
      continue;
    }
    if (i + 1 == length) break;  // a "%" at the very end is dropped
    if (text[i + 1] == '%') {
      *out++ = '%';
      i += 2;
      continue;
    }
    // Argument number: digits followed by "$".
    size_t j = i + 1;
    size_t k = j;
    while (k < length && IsDigit(text[k])) ++k;
    int number = kUnnumbered;
    if (k < length && text[k] == '$') {
      if (k == j) return ParseResult::DollarWithoutNumber;
      number = 0;
      for (size_t d = j; d < k; ++d)
        number = number >= kLargestNumber / 10 ? kLargestNumber : number * 10 + (text[d] - '0');
      j = k + 1;
    }
    // Flags, width and precision.
    size_t flags = j;
    while (j < length && (IsDigit(text[j]) || text[j] == 'l' || text[j] == '.' || text[j] == '-'))
      ++j;
    if (j == length) break;  // no letter: the conversion and the text end here
    if (!IsConversionLetter(text[j]) || m_count == candidates) {
      *out++ = text[j];  // the conversion vanishes; this character is text, even a "%"
      i = j + 1;
      continue;
    }
    *out++ = '\0';  // placeholder
    StrArgs& arg = m_args[m_count++];
    arg.m_number = number;
    arg.m_substitution = nullptr;
    arg.m_length = 0;
    arg.m_format = formats;
    *formats++ = '%';
    std::memcpy(formats, text + flags, j - flags);
    formats += j - flags;
    char before = j - flags > 0 ? text[j - 1] : '%';
    if (j - flags > 0 && (before == 'h' || before == 'l' || before == 'L')) --formats;
    *formats++ = text[j];
    *formats++ = '\0';
    i = j + 1;
  }
  *out = '\0';
  m_templateBytes = static_cast<int>(out + 1 - m_template);
  m_formatBytes = static_cast<int>(formats - m_formats);
  return ParseResult::Ok;
}

void atr_translate::Number() {
  bool anyUnnumbered = false;
  for (int i = 0; i < m_count && !anyUnnumbered; ++i) anyUnnumbered = m_args[i].m_number < 0;
  if (!anyUnnumbered) return;
  bool anyNumbered = false;
  for (int i = 0; i < m_count && !anyNumbered; ++i) anyNumbered = m_args[i].m_number >= 0;
  if (!anyNumbered) {  // the common case: numbers in order of appearance
    for (int i = 0; i < m_count; ++i) m_args[i].m_number = i + 1;
    return;
  }
  // taken[k]: some conversion carries the number k (1 to m_count).
  TextBuffer taken(static_cast<size_t>(m_count) + 1);
  std::memset(taken.Data(), 0, static_cast<size_t>(m_count) + 1);
  for (int i = 0; i < m_count; ++i)
    if (m_args[i].m_number >= 1 && m_args[i].m_number <= m_count)
      taken.Data()[m_args[i].m_number] = 1;
  int next = 0;  // the next unnumbered conversion in order of appearance
  for (int k = 1; k <= m_count; ++k) {
    if (taken.Data()[k]) continue;
    while (next < m_count && m_args[next].m_number != kUnnumbered) ++next;
    if (next == m_count) break;
    m_args[next++].m_number = k;
  }
}

int atr_translate::compare(const void* a, const void* b) {
  return (*static_cast<StrArgs* const*>(a))->m_number -
         (*static_cast<StrArgs* const*>(b))->m_number;
}

void atr_translate::Order() {
  if (m_count == 0) return;
  bool sorted = true;
  for (int i = 0; i < m_count; ++i) {
    m_byNumber[i] = &m_args[i];
    if (i > 0 && m_args[i - 1].m_number > m_args[i].m_number) sorted = false;
  }
  if (sorted) return;
  // Diminishing-gap sort: equal numbers end in the order this sort leaves them.
  for (int gap = m_count / 2; gap > 0; gap /= 2)
    for (int i = gap; i < m_count; ++i)
      for (int j = i - gap; j >= 0 && compare(&m_byNumber[j], &m_byNumber[j + gap]) > 0; j -= gap) {
        StrArgs* swap = m_byNumber[j];
        m_byNumber[j] = m_byNumber[j + gap];
        m_byNumber[j + gap] = swap;
      }
}

// ---------------------------------------------------------------------------------------------
// Queries and assembly.
// ---------------------------------------------------------------------------------------------

void atr_translate::ReportIllegalPosition(int) const {}

atr_translate::StrArgs* atr_translate::Receiver(int n) const {
  if (n < 1 || n > m_count) {
    ReportIllegalPosition(n);
    return nullptr;
  }
  return m_byNumber[n - 1];
}

const char* atr_translate::Format(int n) const {
  StrArgs* r = Receiver(n);
  return r != nullptr ? r->m_format : nullptr;
}

atr_String atr_translate::Result(TPXBasStringMode mode) const {
  if (m_template == nullptr) return atr_String();
  if (m_count == 0) {
    atr_String message = atr_MakeAtrString(m_template);
    return mode.IsLocale() ? message.UTF8ToLocale() : message;
  }

  // Placeholders are filled from the conversions in order of appearance; from the first one
  // without a substitution on, every placeholder shows as "%s".
  // The literal pieces are the runs between the placeholders' zero bytes.
  size_t size = static_cast<size_t>(m_templateBytes);
  for (int seen = 0; seen < m_count; ++seen) size += static_cast<size_t>(m_args[seen].m_length) + 2;
  TextBuffer buffer(size);
  char* out = buffer.Data();
  const char* p = m_template;
  int filling = 0;
  for (int seen = 0; seen <= m_count; ++seen) {
    size_t run = std::strlen(p);
    std::memcpy(out, p, run);
    out += run;
    p += run + 1;
    if (seen == m_count) break;
    if (filling < m_count && m_args[filling].m_substitution != nullptr) {
      std::memcpy(out, m_args[filling].m_substitution,
                  static_cast<size_t>(m_args[filling].m_length));
      out += m_args[filling].m_length;
      ++filling;
    } else {
      filling = m_count;
      *out++ = '%';
      *out++ = 's';
    }
  }
  *out = '\0';
  atr_String message = atr_MakeAtrString(buffer.Data());
  return mode.IsLocale() ? message.UTF8ToLocale() : message;
}

void atr_translate::FixExponent(char* text) {
  if (text == nullptr) return;
  char* e = std::strchr(text, 'e');
  if (e == nullptr || e[1] == '\0') return;
  char* digits = e + 2;
  if (std::strlen(digits) == 3 && digits[0] == '0') std::memmove(digits, digits + 1, 3);
}

// ---------------------------------------------------------------------------------------------
// Entry points.
// ---------------------------------------------------------------------------------------------

atr_String atr(const char* text, TPXBasStringMode mode) {
  atr_translate message(text, mode);
  return message.Result(mode);
}

atr_String atr_raw(const char* text, TPXBasStringMode mode) {
  if (text == nullptr) return atr_String();
  const char* translation = atr_dictionary::Lookup(text);
  if (translation != nullptr)
    return TPXBasAtrStringMode::Utf8ToModal(atr_MakeAtrString(translation), mode);
  // The untranslated text is taken as the library's own UTF-8 text, as a translation is: it
  // is converted once, on its way out.
  const char* note = FindNote(text);
  atr_String chosen = atr_MakeAtrString(text);
  if (note != nullptr) chosen = chosen.Substr(0, static_cast<unsigned>(note - text));
  return TPXBasAtrStringMode::Utf8ToModal(chosen, mode);
}
