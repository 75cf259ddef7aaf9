// Encoding table, UTF-8 stepping and coding, validation and conversion between encodings.
#include "KLDTPXBasCoreUtils.h"
#include "gtest/gtest.h"

#include <clocale>
#include <cstring>
#include <string>
#include <vector>

namespace {

using Bytes = std::vector<unsigned char>;

Bytes B(const std::string& s) { return Bytes(s.begin(), s.end()); }

std::string Hex(const Bytes& b) {
  std::string s;
  char buf[4];
  for (unsigned char c : b) {
    std::snprintf(buf, sizeof buf, "%02X ", c);
    s += buf;
  }
  return s;
}

constexpr int kNone = atr_EncodingNone;
constexpr int kLocale = atr_EncodingLocale;
constexpr int kUtf8 = atr_EncodingUtf8;
constexpr int kLatin1 = atr_EncodingLatin1;

// Switches LC_CTYPE for the scope; ok() is false when the system lacks the locale.
class ScopedCtype {
 public:
  explicit ScopedCtype(const char* name) : m_old(std::setlocale(LC_CTYPE, nullptr)) {
    m_ok = std::setlocale(LC_CTYPE, name) != nullptr;
  }
  ~ScopedCtype() { std::setlocale(LC_CTYPE, m_old.c_str()); }
  bool ok() const { return m_ok; }

 private:
  std::string m_old;
  bool m_ok = false;
};

// Input on the heap at its exact size, so that a read past its end is an AddressSanitizer
// report; the converter's output goes to a buffer of exactly the measured size (+1 when
// terminated) for the same reason, and both forms must agree.
struct Converted {
  int measured;
  int result;
  Bytes out;
};

Converted Convert(int to, int from, const Bytes& in, unsigned char replacement) {
  const Bytes input(in);  // a heap block of exactly in.size() bytes
  const int n = static_cast<int>(in.size());
  Converted c{};
  c.measured = atr_encoding_convert(to, nullptr, from, input.data(), n, replacement, true);
  if (c.measured < 0) {
    unsigned char scratch[64] = {};
    c.result = atr_encoding_convert(to, scratch, from, input.data(), n, replacement, true);
    return c;
  }
  // Terminated: exactly measured + 1 bytes.
  Bytes out(c.measured + 1, 0xAA);
  c.result = atr_encoding_convert(to, out.data(), from, input.data(), n, replacement, true);
  EXPECT_EQ(0, out[c.measured]) << "terminator";
  c.out.assign(out.begin(), out.begin() + c.measured);
  // Unterminated: exactly measured bytes, same text.
  Bytes bare(c.measured, 0xAA);
  EXPECT_EQ(c.measured,
            atr_encoding_convert(to, bare.data(), from, input.data(), n, replacement, false));
  EXPECT_EQ(c.out, bare);
  return c;
}

TEST(atr_utf8Validate, AcceptsWellFormedTextsOnly) {
  struct {
    int id;
    std::string text;
    bool valid;
  } const cases[] = {
      {kUtf8, "", true},
      {kUtf8, "abc", true},
      {kUtf8, "\xC3\xA9", true},
      {kUtf8, "\xE2\x82\xAC", true},
      {kUtf8, "\xF0\x9F\x98\x80", true},
      {kUtf8, "\xC0\x80", true},  // overlong forms are not checked
      {kUtf8, std::string("a\0b", 3), true},
      {kUtf8, "\xC3", false},  // cut short by the end
      {kUtf8, "\xE2\x82", false},
      {kUtf8, "\xF0\x9F\x98", false},
      {kUtf8, "\x80", false},  // continuation without lead
      {kUtf8, "\xBF", false},
      {kUtf8, "\xF8\x80\x80\x80\x80", false},
      {kUtf8, "\xFF", false},
      {kUtf8, "\xC3\x41", false},  // lead followed by a non-continuation
      {kUtf8, "\xE2\x82\x41", false},
      {kUtf8, "\xF0\x9F\x98\xC3", false},
      {kUtf8, "\xC3\xA9\xA9", false},  // one continuation too many
      {kLatin1, "", true},
      {kLatin1, "caf\xE9", true},
      {kLatin1, "\x7E\xA0\xFF", true},
      {kLatin1, std::string("\0", 1), true},
      {kLatin1, "a\x7F", false},
      {kLatin1, "a\x85", false},
      {kLatin1, "\x80", false},
      {kLatin1, "\x9F", false},
      {kNone, "", false},
      {kNone, "abc", false},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE("id " + std::to_string(c.id) + ": " + Hex(B(c.text)));
    Bytes exact = B(c.text);
    EXPECT_EQ(c.valid,
              atr_encoding_validate_sized(c.id, exact.data(), static_cast<int>(exact.size())));
    EXPECT_EQ(c.valid,
              atr_encoding_validate_sized(c.id, c.text.data(), static_cast<int>(c.text.size())));
    if (c.text.find('\0') == std::string::npos) {
      EXPECT_EQ(c.valid, atr_encoding_validate(c.id, c.text.c_str()));
    }
  }
  // The count limits the walk: a sequence cut by it is invalid even if the bytes follow.
  EXPECT_FALSE(atr_encoding_validate_sized(kUtf8, "\xC3\xA9", 1));
  EXPECT_TRUE(atr_encoding_validate_sized(kUtf8, "a\xC3\xA9", 1));
  EXPECT_FALSE(atr_encoding_validate_sized(kUtf8, "abc", -1));
  EXPECT_TRUE(atr_encoding_validate_sized(kUtf8, static_cast<const char*>(nullptr), 0));
  EXPECT_FALSE(atr_encoding_validate(kUtf8, static_cast<const char*>(nullptr)));
}

TEST(atr_utf8Validate, WordAtATimeScanAgreesAtEveryOffset) {
  // A bad or multibyte sequence at each position of a long ASCII text, so that it falls in
  // every byte of a word, at word boundaries and in the byte tail.
  struct {
    const char* insert;
    int id;
    bool valid;
  } const inserts[] = {{"\xC3\xA9", kUtf8, true},   {"\xE2\x82\xAC", kUtf8, true},
                       {"\x80", kUtf8, false},      {"\xC3", kUtf8, false},
                       {"\xE2\x82", kUtf8, false},  {"\xE9", kLatin1, true},
                       {"\x7F", kLatin1, false},    {"\x9F", kLatin1, false},
                       {"\xA0\xFF", kLatin1, true}, {"\xFF\x85", kLatin1, false}};
  for (const auto& ins : inserts) {
    for (int pos = 0; pos <= 40; ++pos) {
      std::string text = std::string(pos, 'x') + ins.insert + std::string(40 - pos, 'y');
      SCOPED_TRACE(Hex(B(ins.insert)) + "at " + std::to_string(pos));
      Bytes exact = B(text);
      EXPECT_EQ(ins.valid,
                atr_encoding_validate_sized(ins.id, exact.data(), static_cast<int>(exact.size())));
      // Cut just inside the inserted bytes: only the one-byte inserts stay valid.
      const int cut = pos + static_cast<int>(std::strlen(ins.insert)) - 1;
      if (ins.valid && ins.id == kUtf8) {
        EXPECT_FALSE(atr_encoding_validate_sized(ins.id, exact.data(), cut));
      }
    }
  }
}

TEST(atr_utf8Coding, LengthsAndCodePointsAtTheBoundaries) {
  struct {
    int codePoint;
    Bytes bytes;  // empty: cannot be encoded
  } const cases[] = {
      {0x00, {0x00}},
      {0x7F, {0x7F}},
      {0x80, {0xC2, 0x80}},
      {0xE9, {0xC3, 0xA9}},
      {0x7FF, {0xDF, 0xBF}},
      {0x800, {0xE0, 0xA0, 0x80}},
      {0x20AC, {0xE2, 0x82, 0xAC}},
      {0xFFFF, {0xEF, 0xBF, 0xBF}},
      {0x10000, {0xF0, 0x90, 0x80, 0x80}},
      {0x1F600, {0xF0, 0x9F, 0x98, 0x80}},
      {0x1FFFFF, {0xF7, 0xBF, 0xBF, 0xBF}},
      {0x200000, {}},
      {0x7FFFFFFF, {}},
      {-1, {}},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.codePoint);
    const int n = static_cast<int>(c.bytes.size());
    EXPECT_EQ(n, atr_utf8_len(c.codePoint));
    unsigned char out[8];
    std::memset(out, 0xAA, sizeof out);
    EXPECT_EQ(n, atr_utf8_from_ucs4(out, c.codePoint));
    EXPECT_EQ(c.bytes, Bytes(out, out + n));
    EXPECT_EQ(0xAA, out[n]) << "wrote past the sequence";
    if (n == 0) continue;
    // Back again, through both text types, with the terminator right behind.
    out[n] = 0;
    int length = -5;
    EXPECT_EQ(c.codePoint, atr_utf8_to_ucs4(out, &length));
    EXPECT_EQ(n, length);
    EXPECT_EQ(c.codePoint, atr_utf8_to_ucs4(reinterpret_cast<const char*>(out), nullptr));
    EXPECT_EQ(n, atr_utf8_len(out));
    EXPECT_EQ(out + n, atr_utf8_next(out));
  }
}

TEST(atr_utf8Coding, LeadBytesAndBrokenSequences) {
  struct {
    unsigned char lead;
    int length;
  } const leads[] = {{0x00, 1}, {0x41, 1}, {0x7F, 1}, {0x80, 0}, {0xBF, 0}, {0xC0, 2}, {0xDF, 2},
                     {0xE0, 3}, {0xEF, 3}, {0xF0, 4}, {0xF7, 4}, {0xF8, 0}, {0xFC, 0}, {0xFF, 0}};
  for (const auto& l : leads) {
    SCOPED_TRACE(l.lead);
    const unsigned char text[] = {l.lead, 0};
    EXPECT_EQ(l.length, atr_utf8_len(text));
    EXPECT_EQ(l.length, atr_utf8_len(reinterpret_cast<const char*>(text)));
    // next trusts the lead byte; non-leads advance by one.
    EXPECT_EQ(l.length ? l.length : 1, atr_utf8_next(text) - text);
  }
  // The announced length is reported even when the sequence is broken or the lead invalid.
  struct {
    std::string text;
    int length;
  } const broken[] = {{"\x80", 0},     {"\xF8\x80", 0}, {"\xC3", 2},
                      {"\xE2\x82", 3}, {"\xC3\x41", 2}, {"\xF0\x9F\x98\xC0", 4}};
  for (const auto& b : broken) {
    SCOPED_TRACE(Hex(B(b.text)));
    int length = -5;
    EXPECT_EQ(-1, atr_utf8_to_ucs4(b.text.c_str(), &length));
    EXPECT_EQ(b.length, length);
  }
}

TEST(atr_utf8Coding, PrevFindsTheStartOfTheCharacterBefore) {
  struct {
    std::string text;
    int from;      // position of the argument
    int expected;  // position of the answer, -1 for null
  } const cases[] = {
      {"a", 1, 0},
      {"\xC3\xA9", 2, 0},
      {"x\xE2\x82\xAC", 4, 1},
      {"\xF0\x9F\x98\x80", 4, 0},
      {"\x41\x82\xAC", 3, -1},          // lead missing
      {"\xE2\x82", 2, -1},              // lead announces more than there is
      {"\xC3\x82\xAC", 3, -1},          // lead announces fewer
      {"\xC3", 1, -1},                  // a lead byte alone
      {"\xF8\x80", 2, -1},              // invalid lead
      {"\xF0\x80\x80\x80\x80", 5, -1},  // four continuation bytes
      {"\x80\x80\x80\x80\x80\x80", 6, -1},
      {"a\xC3\xA9z", 3, 1},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(Hex(B(c.text)) + "from " + std::to_string(c.from));
    // Copy at the end of a larger buffer filled with continuation bytes before it, so that
    // an unbounded walk would see more of them; the bounded form must never go below begin.
    const char* text = c.text.data();
    const char* got = atr_utf8_prev(text + c.from);
    EXPECT_EQ(c.expected < 0 ? nullptr : text + c.expected, got);
    const unsigned char* u = reinterpret_cast<const unsigned char*>(text);
    EXPECT_EQ(c.expected < 0 ? nullptr : u + c.expected, atr_utf8_prev(u + c.from, u));
  }
  // With begin: nothing before begin counts, even if it would complete the character.
  const char* euro = "\xE2\x82\xAC";
  EXPECT_EQ(nullptr, atr_utf8_prev(euro + 3, euro + 1));
  EXPECT_EQ(nullptr, atr_utf8_prev(euro, euro));
  EXPECT_EQ(euro, atr_utf8_prev(euro + 3, euro));
}

TEST(atr_utf8Convert, ResultCodesMeasureAndOutput) {
  struct {
    const char* name;
    int to;
    int from;
    std::string in;
    unsigned char replacement;
    int expected;  // byte count, or -1 / -2
    std::string out;
  } const cases[] = {
      {"latin1 e-acute", kUtf8, kLatin1, "\xE9", 0, 2, "\xC3\xA9"},
      {"latin1 mixed", kUtf8, kLatin1, "caf\xE9 \xFF\xA0!", 0, 11, "caf\xC3\xA9 \xC3\xBF\xC2\xA0!"},
      {"latin1 control passes", kUtf8, kLatin1, "\x85", 0, 2, "\xC2\x85"},
      {"latin1 zero byte", kUtf8, kLatin1, std::string("a\0b", 3), 0, 3, std::string("a\0b", 3)},
      {"latin1 copy", kLatin1, kLatin1, "\xE9\x85", 0, 2, "\xE9\x85"},
      {"euro to latin1", kLatin1, kUtf8, "\xE2\x82\xAC", 0, -2, ""},
      {"euro replaced", kLatin1, kUtf8, "\xE2\x82\xAC", '?', 1, "?"},
      {"inner replaced", kLatin1, kUtf8, "a\xE2\x82\xAC\xF0\x9F\x98\x80z", '?', 4, "a??z"},
      {"utf8 to latin1", kLatin1, kUtf8, "caf\xC3\xA9", 0, 4, "caf\xE9"},
      {"U+FF fits", kLatin1, kUtf8, "\xC3\xBF", 0, 1, "\xFF"},
      {"U+100 does not", kLatin1, kUtf8, "\xC4\x80", 0, -2, ""},
      {"utf8 copy", kUtf8, kUtf8, "a\xC3\xA9\xF0\x9F\x98\x80", 0, 7, "a\xC3\xA9\xF0\x9F\x98\x80"},
      {"overlong canonicalised", kUtf8, kUtf8, "\xC1\x81", 0, 1, "A"},
      {"bad lead", kUtf8, kUtf8, "ab\x80", 0, -1, ""},
      {"bad lead with replacement", kLatin1, kUtf8, "\xF8", '?', -1, ""},
      {"lead then ascii", kLatin1, kUtf8, "\xC3\x41", '?', -1, ""},
      {"cut by the end", kLatin1, kUtf8, "ab\xE2\x82", '?', -1, ""},
      {"cut by the end, 4 bytes", kUtf8, kUtf8, "\xF0\x9F\x98", 0, -1, ""},
      {"from none", kUtf8, kNone, "a", 0, -1, ""},
      {"to none", kNone, kUtf8, "ab", 0, -2, ""},
      {"to none replaced", kNone, kUtf8, "ab", '#', 2, "##"},
      {"empty", kLatin1, kUtf8, "", 0, 0, ""},
      {"empty from none", kUtf8, kNone, "", 0, 0, ""},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    Converted got = Convert(c.to, c.from, B(c.in), c.replacement);
    EXPECT_EQ(c.expected, got.measured);
    EXPECT_EQ(c.expected, got.result);
    if (c.expected >= 0) {
      EXPECT_EQ(Hex(B(c.out)), Hex(got.out));
    }
  }
}

TEST(atr_utf8Convert, LongTextsAgreeWithCharacterByCharacterResults) {
  // High bytes at every position of a text long enough for the word paths.
  for (int pos = 0; pos <= 33; ++pos) {
    SCOPED_TRACE(pos);
    std::string latin = std::string(pos, 'x') + "\xE9" + std::string(33 - pos, 'y') + "\xA0";
    std::string utf8 = std::string(pos, 'x') + "\xC3\xA9" + std::string(33 - pos, 'y') + "\xC2\xA0";
    Converted up = Convert(kUtf8, kLatin1, B(latin), 0);
    EXPECT_EQ(static_cast<int>(utf8.size()), up.result);
    EXPECT_EQ(B(utf8), up.out);
    Converted down = Convert(kLatin1, kUtf8, B(utf8), 0);
    EXPECT_EQ(B(latin), down.out);
    // An unrepresentable character in the same places.
    std::string euro = std::string(pos, 'x') + "\xE2\x82\xAC" + std::string(33 - pos, 'y');
    EXPECT_EQ(-2, Convert(kLatin1, kUtf8, B(euro), 0).result);
    EXPECT_EQ(std::string(pos, 'x') + "?" + std::string(33 - pos, 'y'), [&] {
      Bytes o = Convert(kLatin1, kUtf8, B(euro), '?').out;
      return std::string(o.begin(), o.end());
    }());
  }
}

TEST(atr_utf8Convert, ZeroTerminatedAndCharForms) {
  char out[32];
  // from_encoding: stops at the terminator and terminates.
  std::memset(out, 0x55, sizeof out);
  EXPECT_EQ(2, atr_utf8_from_encoding(static_cast<char*>(nullptr), kLatin1, "\xE9"));
  EXPECT_EQ(2, atr_utf8_from_encoding(out, kLatin1, "\xE9"));
  EXPECT_STREQ("\xC3\xA9", out);
  // from_encoding_sized: terminates only when asked.
  std::memset(out, 0x55, sizeof out);
  EXPECT_EQ(3, atr_utf8_from_encoding_sized(out, kLatin1, "a\xE9", 2, false));
  EXPECT_EQ(0x55, static_cast<unsigned char>(out[3]));
  EXPECT_EQ(-1, atr_utf8_from_encoding_sized(out, kUtf8, "\xC3\xA9", 1, true));
  // to_encoding with and without replacement.
  EXPECT_EQ(-2, atr_utf8_to_encoding(kLatin1, out, "a\xE2\x82\xAC", '\0'));
  EXPECT_EQ(2, atr_utf8_to_encoding(kLatin1, out, "a\xE2\x82\xAC", '?'));
  EXPECT_STREQ("a?", out);
  std::memset(out, 0x55, sizeof out);
  EXPECT_EQ(1, atr_utf8_to_encoding_sized(kLatin1, out, "\xC3\xA9zz", 2, '?', false));
  EXPECT_EQ(0x55, static_cast<unsigned char>(out[1]));
  // The unsigned forms give the same.
  unsigned char uout[32];
  const unsigned char latin[] = {'a', 0xE9, 0};
  EXPECT_EQ(3, atr_utf8_from_encoding(uout, kLatin1, latin));
  EXPECT_EQ(3, atr_utf8_from_encoding_sized(uout, kLatin1, latin, 2, true));
  EXPECT_EQ(2, atr_utf8_to_encoding(kLatin1, uout, uout, static_cast<unsigned char>('?')));
  EXPECT_EQ(0, std::memcmp(latin, uout, 3));
  EXPECT_EQ(1, atr_utf8_to_encoding_sized(kLatin1, uout, latin, 1, 0, true));
  // Null input or a negative count is invalid input.
  EXPECT_EQ(-1, atr_utf8_from_encoding(out, kLatin1, nullptr));
  EXPECT_EQ(-1, atr_encoding_convert(kUtf8, out, kLatin1, "abc", -1, '\0', true));
  EXPECT_EQ(0, atr_encoding_convert(kUtf8, out, kLatin1, nullptr, 0, '\0', true));
  EXPECT_EQ('\0', out[0]);
}

TEST(atr_utf8Table, RowsFollowTheirEncodings) {
  unsigned char out[8] = {};
  int length = -5;
  // none
  EXPECT_FALSE(atr_encodings[kNone].m_validate(out, 0));
  EXPECT_EQ(-1,
            atr_encodings[kNone].m_toUcs4(reinterpret_cast<const unsigned char*>("a"), &length));
  EXPECT_EQ(-1, atr_encodings[kNone].m_fromUcs4(nullptr, 'a'));
  // UTF-8: measuring and writing agree; what UTF-8 cannot hold is refused, not dropped.
  EXPECT_EQ(3, atr_encodings[kUtf8].m_fromUcs4(nullptr, 0x20AC));
  EXPECT_EQ(3, atr_encodings[kUtf8].m_fromUcs4(out, 0x20AC));
  EXPECT_EQ(-1, atr_encodings[kUtf8].m_fromUcs4(nullptr, 0x200000));
  EXPECT_EQ(0x20AC, atr_encodings[kUtf8].m_toUcs4(out, &length));
  EXPECT_EQ(3, length);
  // Latin-1: one byte up to 0xFF; reading takes the byte whatever it is.
  EXPECT_EQ(1, atr_encodings[kLatin1].m_fromUcs4(out, 0xFF));
  EXPECT_EQ(0xFF, out[0]);
  EXPECT_EQ(-1, atr_encodings[kLatin1].m_fromUcs4(nullptr, 0x100));
  EXPECT_EQ(-1, atr_encodings[kLatin1].m_fromUcs4(nullptr, -1));
  out[0] = 0x85;
  EXPECT_EQ(0x85, atr_encodings[kLatin1].m_toUcs4(out, &length));
  EXPECT_EQ(1, length);
  EXPECT_FALSE(atr_encodings[kLatin1].m_validate(out, 1));
}

TEST(atr_utf8Locale, RoundTripsUnderUtf8Locale) {
  ScopedCtype ctype("C.UTF-8");
  if (!ctype.ok()) GTEST_SKIP() << "C.UTF-8 locale not installed";
  // The locale routines are widened: characters above U+FFFF convert.
  const std::string texts[] = {"",
                               "plain",
                               "caf\xC3\xA9",
                               "\xE2\x82\xAC 5",
                               "\xF0\x9F\x98\x80!",
                               "\xD0\x9F\xD1\x80\xD0\xB8"};
  for (const std::string& t : texts) {
    SCOPED_TRACE(t);
    Converted toLocale = Convert(kLocale, kUtf8, B(t), 0);
    ASSERT_EQ(static_cast<int>(t.size()), toLocale.result);
    Converted back = Convert(kUtf8, kLocale, toLocale.out, 0);
    EXPECT_EQ(B(t), back.out);
    EXPECT_TRUE(atr_encoding_validate(kLocale, t.c_str()));
  }
  int length = -5;
  EXPECT_EQ(0x1F600, atr_locale_to_ucs4("\xF0\x9F\x98\x80", &length));
  EXPECT_EQ(4, length);
  EXPECT_EQ(-1, atr_locale_to_ucs4("", &length));  // the zero byte is no character
  EXPECT_EQ(0, length);
  EXPECT_EQ(-1, atr_locale_to_ucs4("\xC3\x41", &length));
  EXPECT_EQ(2, atr_locale_from_ucs4(static_cast<char*>(nullptr), 0xE9));
  EXPECT_EQ(-1, atr_locale_from_ucs4(static_cast<char*>(nullptr), 0xD800));
  EXPECT_EQ(-1, atr_locale_from_ucs4(static_cast<char*>(nullptr), -1));
  // Invalid, cut short, or containing a zero byte.
  EXPECT_EQ(-1, Convert(kUtf8, kLocale, B("ab\xC3"), 0).result);
  EXPECT_EQ(-1, Convert(kUtf8, kLocale, B("\xE9t\xE9"), 0).result);
  EXPECT_EQ(-1, Convert(kUtf8, kLocale, B(std::string("a\0b", 3)), 0).result);
  EXPECT_FALSE(atr_encoding_validate_sized(kLocale, "a\0b", 3));
  EXPECT_FALSE(atr_encoding_validate_sized(kLocale, "\xC3\xA9", 1));
  EXPECT_FALSE(atr_encoding_validate(kLocale, "\xE9"));
  // Latin-1 through the locale and back.
  Converted viaLocale = Convert(kLocale, kLatin1, B("caf\xE9"), 0);
  EXPECT_EQ(B("caf\xC3\xA9"), viaLocale.out);
  EXPECT_EQ(B("caf\xE9"), Convert(kLatin1, kLocale, viaLocale.out, 0).out);
}

TEST(atr_utf8Locale, RoundTripsUnderCLocale) {
  ScopedCtype ctype("C");
  ASSERT_TRUE(ctype.ok());
  Converted ascii = Convert(kLocale, kUtf8, B("plain text 123"), 0);
  EXPECT_EQ(B("plain text 123"), ascii.out);
  EXPECT_EQ(B("plain text 123"), Convert(kUtf8, kLocale, ascii.out, 0).out);
  // Beyond ASCII the locale holds nothing: -2, or the replacement per character.
  EXPECT_EQ(-2, Convert(kLocale, kUtf8, B("caf\xC3\xA9"), 0).result);
  EXPECT_EQ(B("caf?"), Convert(kLocale, kUtf8, B("caf\xC3\xA9"), '?').out);
  EXPECT_EQ(B("??"), Convert(kLocale, kLatin1, B("\xE9\xFF"), '?').out);
  EXPECT_EQ(-1, Convert(kUtf8, kLocale, B("caf\xE9"), 0).result);
  EXPECT_TRUE(atr_encoding_validate(kLocale, "abc"));
  EXPECT_FALSE(atr_encoding_validate(kLocale, "caf\xE9"));
  EXPECT_EQ(-1, atr_locale_from_ucs4(static_cast<char*>(nullptr), 0xE9));
}

TEST(atr_utf8DeathTest, InvalidEncodingIdentifierIsFatal) {
  const char* report =
      "AssertionFailed:!\"atr_utf8: Invalid encoding value\" "
      "\\[TPXBase/TPXBasAtr.m/src/atr_utf8:[0-9]+\\]";
  EXPECT_DEATH(atr_encoding_validate(4, "a"), report);
  EXPECT_DEATH(atr_encoding_validate_sized(-1, "a", 1), report);
  EXPECT_DEATH(atr_encoding_convert(kUtf8, static_cast<char*>(nullptr), 7, "a", 1, '\0', true),
               report);
  EXPECT_DEATH(atr_utf8_to_encoding(9, static_cast<char*>(nullptr), "a", '?'), report);
}

}  // namespace
