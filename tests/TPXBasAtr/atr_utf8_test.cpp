// Encoding table, UTF-8 stepping and coding, validation and conversion between encodings, and
// the scanner's bulk routines on each of their paths.
#include "../../TPXBase/TPXBasAtr.m/src/atr_utf8Simd.h"
#include "atr_TestSupport.h"

#include <cstring>
#include <optional>

namespace {

using atr_test::ScopedCtype;

using Bytes = std::vector<unsigned char>;
Bytes B(const std::string& s) { return Bytes(s.begin(), s.end()); }
constexpr int kNone = atr_EncodingNone, kLocale = atr_EncodingLocale, kUtf8 = atr_EncodingUtf8,
              kLatin1 = atr_EncodingLatin1;

std::string Hex(const std::string& s) {
  std::string h;
  char buf[4];
  for (unsigned char c : s) h += (std::snprintf(buf, sizeof buf, "%02X ", c), buf);
  return h;
}

// Input and output are heap blocks of exactly the size given or measured, so that reading
// past the input or writing past the measured size is an AddressSanitizer report. Gives the
// result (checked equal to the measurement) and the text, terminated and bare forms agreeing.
int Convert(int to, int from, const std::string& text, unsigned char replacement,
            std::string* produced = nullptr) {
  const Bytes in = B(text);
  const int n = static_cast<int>(in.size());
  const int measured = atr_encoding_convert(to, nullptr, from, in.data(), n, replacement, true);
  Bytes out(measured < 0 ? 64 : measured + 1, 0xAA);
  EXPECT_EQ(measured, atr_encoding_convert(to, out.data(), from, in.data(), n, replacement, true));
  if (measured < 0) return measured;
  EXPECT_EQ(0, out[measured]) << "terminator";
  Bytes bare(measured, 0xAA);
  EXPECT_EQ(measured,
            atr_encoding_convert(to, bare.data(), from, in.data(), n, replacement, false));
  EXPECT_EQ(Bytes(out.begin(), out.begin() + measured), bare);
  if (produced) produced->assign(bare.begin(), bare.end());
  return measured;
}

TEST(atr_utf8Validate, AcceptsWellFormedTextsOnly) {
  // clang-format off
  struct { int id; std::string text; bool valid; } const cases[] = {
      {kUtf8, "", true}, {kUtf8, "\xF0\x9F\x98\x80", true}, {kUtf8, "\xC0\x80", true},  // overlong is not checked
      {kUtf8, std::string("a\0b", 3), true}, {kUtf8, "\xF0\x9F\x98", false}, {kUtf8, "\x80", false},
      {kUtf8, "\xF8\x80\x80\x80\x80", false}, {kUtf8, "\xC3\x41", false}, {kUtf8, "\xE2\x82\x41", false}, {kUtf8, "\xC3\xA9\xA9", false},
      {kLatin1, "caf\xE9\x7E\xA0\xFF", true}, {kLatin1, "a\x7F", false}, {kLatin1, "\x9F", false},
      {kNone, "", false}, {kNone, "a", false},
      // clang-format on
  };
  for (const auto& c : cases) {
    SCOPED_TRACE("id " + std::to_string(c.id) + ": " + Hex(c.text));
    const Bytes exact = B(c.text);
    EXPECT_EQ(c.valid, atr_encoding_validate_sized(c.id, exact.data(), int(exact.size())));
    if (c.text.find('\0') == std::string::npos) {
      EXPECT_EQ(c.valid, atr_encoding_validate(c.id, c.text.c_str()));
    }
    // The same bytes in every place of a long ASCII text, across and inside words.
    for (int pos = 0; pos <= 20 && !c.text.empty() && c.id != kNone; ++pos) {
      const Bytes padded = B(std::string(pos, 'x') + c.text + std::string(20 - pos, 'y'));
      EXPECT_EQ(c.valid, atr_encoding_validate_sized(c.id, padded.data(), int(padded.size())));
    }
  }
  // The count bounds the walk: a sequence it cuts is invalid even if its bytes follow.
  EXPECT_FALSE(atr_encoding_validate_sized(kUtf8, "\xC3\xA9", 1));
  EXPECT_TRUE(atr_encoding_validate_sized(kUtf8, "a\xC3\xA9", 1));
  EXPECT_FALSE(atr_encoding_validate_sized(kUtf8, "abc", -1));
  EXPECT_FALSE(atr_encoding_validate(kUtf8, static_cast<const char*>(nullptr)));
}

TEST(atr_utf8Coding, CodePointsLeadBytesAndBrokenSequences) {
  // bytes: empty: cannot be encoded
  // clang-format off
  struct { int codePoint; Bytes bytes; } const points[] = {
      {0x00, {0x00}}, {0x7F, {0x7F}}, {0x80, {0xC2, 0x80}}, {0x7FF, {0xDF, 0xBF}},
      {0x800, {0xE0, 0xA0, 0x80}}, {0xFFFF, {0xEF, 0xBF, 0xBF}}, {0x10000, {0xF0, 0x90, 0x80, 0x80}},
      {0x1F600, {0xF0, 0x9F, 0x98, 0x80}}, {0x1FFFFF, {0xF7, 0xBF, 0xBF, 0xBF}}, {0x200000, {}},
      {-1, {}},
      // clang-format on
  };
  for (const auto& c : points) {
    SCOPED_TRACE(c.codePoint);
    const int n = static_cast<int>(c.bytes.size());
    unsigned char out[8];
    std::memset(out, 0xAA, sizeof out);
    EXPECT_EQ(n, atr_utf8_len(c.codePoint));
    EXPECT_EQ(n, atr_utf8_from_ucs4(out, c.codePoint));
    EXPECT_EQ(c.bytes, Bytes(out, out + n));
    EXPECT_EQ(0xAA, out[n]) << "wrote past the sequence";
    if (n == 0) continue;
    out[n] = 0;
    int length = -5;
    EXPECT_EQ(c.codePoint, atr_utf8_to_ucs4(reinterpret_cast<char*>(out), &length));
    EXPECT_EQ(n, length);
    EXPECT_EQ(out + n, atr_utf8_next(out));
  }
  // The table rows refuse what they cannot hold rather than dropping it.
  EXPECT_EQ(-1, atr_encodings[kUtf8].m_fromUcs4(nullptr, 0x200000));
  EXPECT_EQ(-1, atr_encodings[kNone].m_fromUcs4(nullptr, 'a'));
  // Lead bytes: the announced length; next advances over non-leads by one.
  const std::pair<unsigned char, int> leads[] = {{0x7F, 1}, {0x80, 0}, {0xBF, 0}, {0xC0, 2},
                                                 {0xDF, 2}, {0xE0, 3}, {0xEF, 3}, {0xF0, 4},
                                                 {0xF7, 4}, {0xF8, 0}, {0xFF, 0}};
  for (const auto& [lead, length] : leads) {
    const char text[] = {static_cast<char>(lead), 0};
    EXPECT_EQ(length, atr_utf8_len(text)) << int(lead);
    EXPECT_EQ(length ? length : 1, atr_utf8_next(text) - text) << int(lead);
  }
  // A broken sequence gives -1 and still reports the lead byte's length; a terminator where
  // a continuation is expected ends the read.
  const std::pair<const char*, int> broken[] = {
      {"\x80", 0}, {"\xF8\x80", 0}, {"\xC3", 2}, {"\xE2\x82", 3}, {"\xF0\x9F\x98\xC0", 4}};
  for (const auto& [text, announced] : broken) {
    int length = -5;
    EXPECT_EQ(-1, atr_utf8_to_ucs4(text, &length)) << Hex(text);
    EXPECT_EQ(announced, length) << Hex(text);
  }
}

TEST(atr_utf8Coding, PrevFindsTheStartOfTheCharacterBefore) {
  // expected: position of the answer for the end of text, -1 for null
  // clang-format off
  struct { std::string text; int expected; } const cases[] = {
      {"a", 0}, {"\xC3\xA9", 0}, {"x\xE2\x82\xAC", 1}, {"\xF0\x9F\x98\x80", 0},
      {"\x41\x82\xAC", -1},  // lead missing
      {"\xE2\x82", -1},      // the lead announces more
      {"\xC3\x82\xAC", -1},  // the lead announces fewer
      {"\xC3", -1}, {"\xF8\x80", -1}, {"\xF0\x80\x80\x80\x80", -1},
      // clang-format on
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(Hex(c.text));
    const char* t = c.text.data();
    const char* end = t + c.text.size();
    EXPECT_EQ(c.expected < 0 ? nullptr : t + c.expected, atr_utf8_prev(end));
    EXPECT_EQ(c.expected < 0 ? nullptr : t + c.expected, atr_utf8_prev(end, t));
  }
  // With begin, bytes before it never count, even when they would complete the character.
  const char* euro = "\xE2\x82\xAC";
  EXPECT_EQ(nullptr, atr_utf8_prev(euro + 3, euro + 1));
  EXPECT_EQ(nullptr, atr_utf8_prev(euro, euro));
}

TEST(atr_utf8Convert, ResultCodesMeasureAndOutput) {
  struct {
    int to, from;
    std::string in;
    unsigned char replacement;
    int expected;  // byte count, or -1 invalid input, -2 unrepresentable
    std::string out;
  } const cases[] = {
      // clang-format off
      {kUtf8, kLatin1, "caf\xE9 \xFF!", 0, 9, "caf\xC3\xA9 \xC3\xBF!"},
      {kUtf8, kLatin1, std::string("\x85\0", 2), 0, 3, std::string("\xC2\x85\0", 3)},  // any byte
      {kLatin1, kLatin1, "\xE9\x85", 0, 2, "\xE9\x85"},
      {kLatin1, kUtf8, "\xE2\x82\xAC", 0, -2, ""}, {kLatin1, kUtf8, "\xC4\x80", 0, -2, ""},
      {kLatin1, kUtf8, "a\xE2\x82\xAC\xF0\x9F\x98\x80z", '?', 4, "a??z"},
      {kLatin1, kUtf8, "\xC3\xBF", 0, 1, "\xFF"},
      {kUtf8, kUtf8, "\xC1\x81\xF0\x9F\x98\x80", 0, 5, "A\xF0\x9F\x98\x80"},  // canonical form
      {kUtf8, kUtf8, "ab\x80", 0, -1, ""},
      {kLatin1, kUtf8, "\xC3\x41", '?', -1, ""},  // no replacement for bad input
      {kLatin1, kUtf8, "ab\xE2\x82", '?', -1, ""},  // cut short by the end
      {kUtf8, kNone, "a", 0, -1, ""}, {kNone, kUtf8, "ab", '#', 2, "##"}, {kLatin1, kUtf8, "", 0, 0, ""},
      // clang-format on
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(std::to_string(c.from) + " to " + std::to_string(c.to) + ": " + Hex(c.in));
    std::string out;
    EXPECT_EQ(c.expected, Convert(c.to, c.from, c.in, c.replacement, &out));
    EXPECT_EQ(Hex(c.out), Hex(out));
  }
  // The word paths: a character beyond ASCII at each place of a long text.
  for (int pos = 0; pos <= 20; ++pos) {
    const std::string x(pos, 'x'), y(20 - pos, 'y');
    std::string out;
    EXPECT_EQ(24, Convert(kUtf8, kLatin1, x + "\xE9" + y + "\xA0", 0, &out));
    EXPECT_EQ(x + "\xC3\xA9" + y + "\xC2\xA0", out);
    EXPECT_EQ(21, Convert(kLatin1, kUtf8, x + "\xE2\x82\xAC" + y, '?', &out));
    EXPECT_EQ(x + "?" + y, out);
  }
}

TEST(atr_utf8Convert, ZeroTerminatedAndSizedForms) {
  char out[16];
  std::memset(out, 0x55, sizeof out);
  EXPECT_EQ(2, atr_utf8_from_encoding(static_cast<char*>(nullptr), kLatin1, "\xE9"));
  EXPECT_EQ(3, atr_utf8_from_encoding_sized(out, kLatin1, "a\xE9zz", 2, false));
  EXPECT_EQ(0x55, static_cast<unsigned char>(out[3])) << "terminated though not asked";
  EXPECT_EQ(-2, atr_utf8_to_encoding(kLatin1, out, "a\xE2\x82\xAC", '\0'));
  EXPECT_EQ(2, atr_utf8_to_encoding(kLatin1, out, "a\xE2\x82\xAC", '?'));
  EXPECT_STREQ("a?", out);
  EXPECT_EQ(-1, atr_utf8_to_encoding_sized(kLatin1, out, "\xC3\xA9", 1, '?', true));
  const unsigned char latin[] = {'a', 0xE9, 0};
  unsigned char uout[8];
  EXPECT_EQ(3, atr_utf8_from_encoding(uout, kLatin1, latin));
  EXPECT_EQ(2, atr_utf8_to_encoding(kLatin1, uout, uout, static_cast<unsigned char>('?')));
  EXPECT_EQ(0, std::memcmp(latin, uout, 3));
  // Missing input or a negative count is invalid input; an empty one is just terminated.
  EXPECT_EQ(-1, atr_utf8_from_encoding(out, kLatin1, nullptr));
  EXPECT_EQ(-1, atr_encoding_convert(kUtf8, out, kLatin1, "abc", -1, '\0', true));
  EXPECT_EQ(0, atr_encoding_convert(kUtf8, out, kLatin1, nullptr, 0, '\0', true));
  EXPECT_EQ('\0', out[0]);
}

TEST(atr_utf8Locale, RoundTripsUnderUtf8AndCLocales) {
  struct {
    const char* locale;
    std::string utf8;
    int toLocale;  // result of UTF-8 to locale without replacement
  } const cases[] = {{"C.UTF-8", "caf\xC3\xA9 \xF0\x9F\x98\x80", 10},
                     {"C", "plain 123", 9},
                     {"C", "caf\xC3\xA9", -2}};
  for (const auto& c : cases) {
    SCOPED_TRACE(std::string(c.locale) + ": " + Hex(c.utf8));
    ScopedCtype ctype(c.locale);
    ASSERT_TRUE(ctype.ok());
    std::string local, back;
    ASSERT_EQ(c.toLocale, Convert(kLocale, kUtf8, c.utf8, 0, &local));
    if (c.toLocale < 0) continue;
    EXPECT_EQ(static_cast<int>(c.utf8.size()), Convert(kUtf8, kLocale, local, 0, &back));
    EXPECT_EQ(c.utf8, back);
    EXPECT_TRUE(atr_encoding_validate(kLocale, local.c_str()));
  }
  ScopedCtype c("C");
  std::string out;
  EXPECT_EQ(4, Convert(kLocale, kUtf8, "caf\xC3\xA9", '?', &out));
  EXPECT_EQ("caf?", out);
  EXPECT_EQ(-1, Convert(kUtf8, kLocale, "caf\xE9", 0));
  EXPECT_EQ(-1, atr_locale_from_ucs4(static_cast<char*>(nullptr), 0xE9));
  ScopedCtype u("C.UTF-8");
  int length = -5;
  EXPECT_EQ(-1, atr_locale_to_ucs4("", &length));  // the zero byte is no character
  EXPECT_EQ(0, length);
  EXPECT_EQ(-1, atr_locale_from_ucs4(static_cast<char*>(nullptr), 0xD800));
  EXPECT_EQ(-1, Convert(kUtf8, kLocale, "ab\xC3", 0));
  EXPECT_EQ(-1, Convert(kUtf8, kLocale, std::string("a\0b", 3), 0));
  EXPECT_FALSE(atr_encoding_validate_sized(kLocale, "\xC3\xA9", 1));
}

// The paths this processor runs. Plain words and SSE2 run on every x86-64 processor.
std::vector<int> RunnablePaths() {
  std::vector<int> paths;
  for (int path : {atr_Utf8SimdPortable, atr_Utf8SimdSse2, atr_Utf8SimdAvx2})
    if (atr_utf8_simd_use(path)) paths.push_back(path);
  atr_utf8_simd_use(atr_Utf8SimdBest);
  return paths;
}

// Runs the bulk routines on one path for the life of the object.
struct ScopedPath {
  explicit ScopedPath(int path) { EXPECT_TRUE(atr_utf8_simd_use(path)); }
  ~ScopedPath() { atr_utf8_simd_use(atr_Utf8SimdBest); }
};

// Code points of a UTF-8 text by atr_utf8_to_ucs4_sized, measured first and decoded into a
// heap block of exactly that size (a store past it is an AddressSanitizer report); nullopt
// when the text is refused.
std::optional<std::vector<unsigned int>> Ucs4(const std::string& text) {
  const Bytes in = B(text);
  const int n = static_cast<int>(in.size());
  const int measured = atr_utf8_to_ucs4_sized(nullptr, in.data(), n);
  if (measured < 0) return std::nullopt;
  std::vector<unsigned int> out(static_cast<std::size_t>(measured));
  EXPECT_EQ(measured, atr_utf8_to_ucs4_sized(out.data(), in.data(), n));
  return out;
}

TEST(atr_utf8Paths, ChoiceAndRefusal) {
  const std::vector<int> paths = RunnablePaths();
  ASSERT_GE(paths.size(), 2u);
  EXPECT_EQ(atr_Utf8SimdPortable, paths[0]);
  EXPECT_EQ(atr_Utf8SimdSse2, paths[1]);
  // The best path is the last one the processor runs, and stays until another is asked for.
  EXPECT_EQ(paths.back(), atr_utf8_simd_path());
  EXPECT_FALSE(atr_utf8_simd_use(3));
  EXPECT_EQ(paths.back(), atr_utf8_simd_path());
  {
    ScopedPath portable(atr_Utf8SimdPortable);
    EXPECT_EQ(atr_Utf8SimdPortable, atr_utf8_simd_path());
  }
  EXPECT_EQ(paths.back(), atr_utf8_simd_path());
}

TEST(atr_utf8Paths, EveryPathValidatesAndDecodesAlike) {
  // codes: the code points of a valid text; empty for an invalid one
  // clang-format off
  struct { std::string text; bool valid; std::vector<unsigned int> codes; } const cases[] = {
      {"\xC3\xA9", true, {0xE9}}, {"\xE2\x82\xAC", true, {0x20AC}}, {"\xF0\x9F\x98\x80", true, {0x1F600}},
      // No overlong, surrogate or range checks.
      {"\xC0\x80", true, {0}}, {"\xED\xA0\x80", true, {0xD800}}, {"\xF7\xBF\xBF\xBF", true, {0x1FFFFF}},
      {"\xDF\xBF\xEF\xBF\xBF\xC2\x80", true, {0x7FF, 0xFFFF, 0x80}},
      {"\xC3", false, {}}, {"\xE2\x82", false, {}}, {"\xF0\x9F\x98", false, {}},  // cut by the end
      {"\x80", false, {}}, {"\xBF", false, {}}, {"\xF8\x80\x80\x80", false, {}}, {"\xFF", false, {}},
      {"\xC3\x41", false, {}}, {"\xE2\x41\xAC", false, {}}, {"\xF0\x9F\x98\x41", false, {}},
      {"\xC3\xA9\xA9", false, {}}, {"\xE2\xC3\xA9", false, {}},  // one continuation too many, a lead too early
      // clang-format on
  };
  const std::vector<int> paths = RunnablePaths();
  for (int path : paths) {
    ScopedPath use(path);
    for (const auto& c : cases) {
      // Before the sequence, ASCII that moves it through every place of a 64-byte block; after
      // it, nothing (it ends the text) or ASCII that keeps the vector loops going past it.
      for (int before = 0; before <= 70; ++before) {
        for (int after : {0, 1, 3, 40, 70}) {
          SCOPED_TRACE("path " + std::to_string(path) + ", " + Hex(c.text) + " after " +
                       std::to_string(before) + " and before " + std::to_string(after));
          const std::string text = std::string(before, 'x') + c.text + std::string(after, 'y');
          const Bytes exact = B(text);
          ASSERT_EQ(c.valid, atr_encoding_validate_sized(kUtf8, exact.data(), int(exact.size())));
          std::vector<unsigned int> codes(before, 'x');
          codes.insert(codes.end(), c.codes.begin(), c.codes.end());
          codes.insert(codes.end(), after, 'y');
          const auto decoded = Ucs4(text);
          ASSERT_EQ(c.valid, decoded.has_value());
          if (c.valid) {
            ASSERT_EQ(codes, *decoded);
          }
          // The character-indexed string takes the same verdict and knows when text is ASCII.
          TPXString s;
          s.BuildFromUTF8(text.data(), static_cast<unsigned int>(text.size()));
          ASSERT_EQ(!c.valid, s.IsBAD());
          if (c.valid) {
            ASSERT_FALSE(s.IsAscii());
          }
        }
      }
    }
    // Long texts: every valid case many times over, with and without ASCII between them, so
    // that the vector loops decode sequences at every offset; then ASCII alone.
    std::string many;
    std::vector<unsigned int> manyCodes;
    for (int round = 0; round < 40; ++round) {
      for (const auto& c : cases) {
        if (!c.valid) continue;
        many += c.text;
        manyCodes.insert(manyCodes.end(), c.codes.begin(), c.codes.end());
        if (round % 3 == 0) {
          many += std::string(round % 7, 'z');
          manyCodes.insert(manyCodes.end(), round % 7, 'z');
        }
      }
    }
    for (std::size_t skip = 0; skip < 2; ++skip) {
      SCOPED_TRACE("path " + std::to_string(path) + ", long text from " + std::to_string(skip));
      const auto decoded = Ucs4(many.substr(skip));
      // A cut through the first character leaves a continuation byte at the front.
      ASSERT_EQ(skip == 0, decoded.has_value());
      if (decoded) {
        EXPECT_EQ(manyCodes, *decoded);
      }
    }
    // The string's 16-bit conversion decodes through the same scanner.
    TPXString text;
    ASSERT_EQ(TPXString::Success,
              text.BuildFromUTF8(many.data(), static_cast<unsigned int>(many.size())));
    std::vector<unsigned short> wide(manyCodes.size() + 1, 0xAAAA);
    ASSERT_EQ(TPXString::Success, text.ConvertToWChar(wide.data()));
    for (std::size_t i = 0; i < manyCodes.size(); ++i) {
      ASSERT_EQ(manyCodes[i] > 0xFFFF ? '?' : manyCodes[i], wide[i]) << "character " << i;
    }
    EXPECT_EQ(0, wide.back());
    const std::string ascii(1000, 'q');
    TPXString s;
    s.BuildFromUTF8(ascii.data(), static_cast<unsigned int>(ascii.size()));
    EXPECT_TRUE(s.IsAscii());
    EXPECT_EQ(std::vector<unsigned int>(1000, 'q'),
              Ucs4(ascii).value_or(std::vector<unsigned int>{}));
  }
  EXPECT_EQ(0, atr_utf8_to_ucs4_sized(nullptr, nullptr, 0));
  EXPECT_EQ(-1, atr_utf8_to_ucs4_sized(nullptr, nullptr, 1));
  EXPECT_EQ(-1, atr_utf8_to_ucs4_sized(nullptr, B("abc").data(), -1));
}

TEST(atr_utf8Paths, EveryPathConvertsLatin1Alike) {
  // Every byte value, alone and in runs, at every place of a 64-byte block. The UTF-8 comes
  // back through the decoder as the bytes' own values, and through the UTF-8 to Latin-1
  // conversion (a separate reader) as the bytes themselves.
  std::string all;
  for (int b = 1; b < 256; ++b) all += static_cast<char>(b);
  std::string accents;
  for (int i = 0; i < 200; ++i) accents += (i % 5 == 0) ? "\xE9\xFF\x80" : "ab";
  for (int path : RunnablePaths()) {
    ScopedPath use(path);
    for (const std::string& body : {all, accents, std::string("\xFF"), std::string(100, 'a')}) {
      for (int before = 0; before <= 70; before += (body.size() > 10 ? 7 : 1)) {
        const std::string latin = std::string(before, 'x') + body;
        SCOPED_TRACE("path " + std::to_string(path) + ", " + std::to_string(before) + " before, " +
                     std::to_string(body.size()) + " bytes");
        std::string utf8;
        std::size_t high = 0;
        for (unsigned char c : latin) high += c >> 7;
        ASSERT_EQ(static_cast<int>(latin.size() + high), Convert(kUtf8, kLatin1, latin, 0, &utf8));
        const auto codes = Ucs4(utf8);
        ASSERT_TRUE(codes.has_value());
        const Bytes bytes = B(latin);
        ASSERT_EQ(std::vector<unsigned int>(bytes.begin(), bytes.end()), *codes);
        std::string back;
        ASSERT_EQ(static_cast<int>(latin.size()), Convert(kLatin1, kUtf8, utf8, 0, &back));
        ASSERT_EQ(latin, back);
      }
    }
  }
}

TEST(atr_utf8DeathTest, InvalidEncodingIdentifierIsFatal) {
  const char* report =
      "AssertionFailed:!\"atr_utf8: Invalid encoding value\" "
      "\\[TPXBase/TPXBasAtr.m/src/atr_utf8:[0-9]+\\]";
  EXPECT_DEATH(atr_encoding_validate(4, "a"), report);
  EXPECT_DEATH(atr_encoding_convert(kUtf8, static_cast<char*>(nullptr), -1, "a", 1, 0, true),
               report);
}

}  // namespace
