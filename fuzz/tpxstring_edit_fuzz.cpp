// Fuzz target: random sequences of TPXString edits on random valid UTF-8 (encoded surrogates
// and codes up to 0x1FFFFF included) agree with a plain
// model over std::u32string; IsAscii() is never set while the text holds a multi-byte
// character; copies taken before an edit keep their text; every result converts to UTF-16 and
// back to itself.
#include "KLDTPXBasCoreUtils.h"

#include <cstdint>
#include <cstdlib>
#include <string>
#include <vector>

namespace {

void Check(bool ok) {
  if (!ok) std::abort();
}

// A small alphabet of every width, so that searches find something, with an encoded
// surrogate and the largest four-byte code: the string takes them as characters too.
const char32_t kAlphabet[] = {U'a',      U'b',          U' ',      U'A',   U'Z',    U'\u00E9',
                              U'\u20AC', U'\U0001F600', U'\u0100', 0xD800, 0x1FFFFF};

class Input {
 public:
  Input(const std::uint8_t* data, std::size_t size) : m_data(data), m_size(size) {}
  bool Empty() const { return m_pos >= m_size; }
  unsigned Byte() { return m_pos < m_size ? m_data[m_pos++] : 0; }
  int Small(int range) { return static_cast<int>(Byte() % static_cast<unsigned>(range)); }
  std::u32string Text(int maxLength) {
    std::u32string text;
    for (int n = Small(maxLength + 1); n > 0; --n)
      text += kAlphabet[Small(sizeof kAlphabet / sizeof kAlphabet[0])];
    return text;
  }

 private:
  const std::uint8_t* m_data;
  std::size_t m_size;
  std::size_t m_pos = 0;
};

std::string Utf8(const std::u32string& text) {
  std::string out;
  for (char32_t c : text) {
    char bytes[4];
    const int n = atr_utf8_from_ucs4(bytes, static_cast<int>(c));
    out.append(bytes, static_cast<std::size_t>(n));
  }
  return out;
}

TPXString Make(const std::u32string& text) {
  TPXString s;
  const std::string bytes = Utf8(text);
  Check(s.BuildFromUTF8(bytes.data(), static_cast<unsigned>(bytes.size())) == TPXString::Success);
  return s;
}

bool AllAscii(const std::u32string& text) {
  for (char32_t c : text)
    if (c >= 0x80) return false;
  return true;
}

void CheckSame(const TPXString& s, const std::u32string& model) {
  Check(!s.IsBAD());
  const std::string bytes = Utf8(model);
  Check(s.GetLengthInByte() == static_cast<int>(bytes.size()));
  Check(s.CastToCharPtr() == bytes);
  Check(s.GetLengthInChar() == static_cast<int>(model.size()));
  Check(!s.IsAscii() || AllAscii(model));
  // Walk forward and back.
  std::size_t i = 0;
  for (TPXStringiterator it = s.Begin(); it.NotDone(); ++it, ++i)
    Check(i < model.size() && static_cast<char32_t>(it.CodeAsUTF32()) == model[i]);
  Check(i == model.size());
  if (!model.empty()) {
    TPXStringiterator last = s.End() - 1;
    Check(static_cast<char32_t>(last.CodeAsUTF32()) == model.back());
    Check(last - s.Begin() == static_cast<int>(model.size()) - 1);
  }
  // UTF-16 and back, for text that UTF-16 can hold (no lone surrogate, nothing past U+10FFFF).
  for (char32_t c : model)
    if ((c >= 0xD800 && c <= 0xDFFF) || c > 0x10FFFF) return;
  unsigned count = 0;
  Check(s.ConvertToUTF16(nullptr, &count) == TPXString::Success);
  std::vector<unsigned short> units(count + 1);
  unsigned written = 0;
  Check(s.ConvertToUTF16(units.data(), &written) == TPXString::Success && written == count);
  TPXString back;
  Check(back.BuildFromUTF16(units.data(), count) == TPXString::Success);
  Check(back.Compare(s) == 0);
}

int Find(const std::u32string& model, const std::u32string& pattern, int start) {
  if (start < 0 || start >= static_cast<int>(model.size())) return -1;
  const std::size_t at = model.find(pattern, static_cast<std::size_t>(start));
  return at == std::u32string::npos ? -1 : static_cast<int>(at);
}

void Replace(std::u32string& model, int start, int count, const std::u32string& text) {
  const int n = static_cast<int>(model.size());
  if (n == 0 || start < 0 || start >= n || count < 0 || count > n - start) return;
  model.replace(static_cast<std::size_t>(start), static_cast<std::size_t>(count), text);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  Input in(data, size);
  std::u32string model = in.Text(24);
  TPXString s = Make(model);
  CheckSame(s, model);
  for (int step = 0; step < 24 && !in.Empty(); ++step) {
    if (model.size() > 256) {  // repeated replacements grow the text geometrically
      s.Resize(64, TPXChar(), 1);
      model.resize(64);
    }
    const TPXString before = s;  // shares: must keep its text whatever the edit does
    const std::u32string beforeModel = model;
    const int n = static_cast<int>(model.size());
    const int op = in.Small(13);
    const int a = in.Small(n + 3) - 1;
    const int b = in.Small(n + 3) - 1;
    switch (op) {
      case 0: {
        const std::u32string text = in.Text(4);
        s.ReplaceSubString(a, b, Make(text));
        Replace(model, a, b, text);
        break;
      }
      case 1: {
        const std::u32string text = in.Text(4);
        s.Insert(a, Make(text));
        Replace(model, a, 0, text);
        break;
      }
      case 2:
        s.Remove(a, b);
        Replace(model, a, b, std::u32string());
        break;
      case 3: {
        const std::u32string pattern = in.Text(2);
        const std::u32string with = in.Text(3);
        s.ReplaceAll(Make(pattern), Make(with));
        if (!pattern.empty())
          for (int at = Find(model, pattern, 0); at >= 0;
               at = Find(model, pattern, at + static_cast<int>(with.size())))
            Replace(model, at, static_cast<int>(pattern.size()), with);
        break;
      }
      case 4: {
        const int mode = 1 + in.Small(4);
        const char32_t c = kAlphabet[in.Small(sizeof kAlphabet / sizeof kAlphabet[0])];
        TPXChar strip;
        Check(strip.BuildFromUTF32(c) == TPXChar::Success);
        s = s.Strip(static_cast<TPXString::TPXStripMode>(mode), strip);
        if (mode == TPXString::TPXStripAll) {
          std::u32string kept;
          for (char32_t x : model)
            if (x != c) kept += x;
          model = kept;
        } else {
          std::size_t begin = 0;
          std::size_t end = model.size();
          if (mode & TPXString::TPXStripLeading)
            while (begin < end && model[begin] == c) ++begin;
          if (mode & TPXString::TPXStripTrailing)
            while (end > begin && model[end - 1] == c) --end;
          model = model.substr(begin, end - begin);
        }
        break;
      }
      case 5: {
        const int length = in.Small(n + 6) - 2;
        const char32_t c = kAlphabet[in.Small(sizeof kAlphabet / sizeof kAlphabet[0])];
        const int truncate = in.Small(2);
        TPXChar fill;
        Check(fill.BuildFromUTF32(c) == TPXChar::Success);
        s.Resize(length, fill, truncate);
        if (n < length)
          model.append(static_cast<std::size_t>(length - n), c);
        else if (n > length && truncate)
          model.resize(length < 0 ? 0 : static_cast<std::size_t>(length));
        break;
      }
      case 6: {
        const int start = a > n ? n : a;  // past the end is a broken invariant
        s = s.SubString(start, b);
        if (n == 0 || start < 0 || b < 0)
          model.clear();
        else
          model = model.substr(static_cast<std::size_t>(start), static_cast<std::size_t>(b));
        break;
      }
      case 7:
        s.ASCIIToLower();
        for (char32_t& c : model)
          if (c >= U'A' && c <= U'Z') c += 32;
        break;
      case 8:
        s.ASCIIToUpper();
        for (char32_t& c : model)
          if (c >= U'a' && c <= U'z') c -= 32;
        break;
      case 9: {
        const std::u32string pattern = in.Text(2);
        const std::u32string with = in.Text(3);
        const int at = s.ReplaceSubString(Make(pattern), Make(with));
        const int expected = Find(model, pattern, 0);
        Check(at == expected);
        if (expected >= 0) Replace(model, expected, static_cast<int>(pattern.size()), with);
        break;
      }
      case 10: {
        const std::u32string pattern = in.Text(2);
        const int expected = pattern.empty() ? (a >= 0 && a < n ? a : -1) : Find(model, pattern, a);
        Check(s.FindPosition(Make(pattern), a) == expected);
        break;
      }
      case 11: {
        const int i = a < 0 ? 0 : a > n ? n : a;
        const TPXChar c = s[static_cast<unsigned>(i)];
        Check(c.ConvertToUTF32() ==
              (i < n ? static_cast<unsigned>(model[static_cast<std::size_t>(i)]) : 0u));
        break;
      }
      default: {
        const std::u32string text = in.Text(3);
        s += Make(text);
        model += text;
        break;
      }
    }
    CheckSame(s, model);
    CheckSame(before, beforeModel);
  }
  return 0;
}
