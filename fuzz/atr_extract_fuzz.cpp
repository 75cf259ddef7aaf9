// Fuzz target: both forms of field extraction give what splitting the text at every separator
// gives (the quote form with doubled quotes undoubled and lone quotes dropped), for any bytes,
// zero bytes included, and never read outside the text.
#include "KLDTPXBasCoreUtils.h"

#include <cstdint>
#include <cstdlib>
#include <string>
#include <vector>

namespace {

void Check(bool ok) {
  if (!ok) std::abort();
}

std::string Field(const std::string& text, unsigned n, char separator) {
  std::vector<std::string> fields(1);
  for (char c : text) {
    if (c == separator)
      fields.emplace_back();
    else
      fields.back() += c;
  }
  return n < fields.size() ? fields[n] : std::string();
}

std::string Unquoted(const std::string& field, char quote) {
  std::string out;
  for (std::size_t i = 0; i < field.size(); ++i) {
    if (field[i] == quote) {
      if (i + 1 == field.size() || field[i + 1] != quote) continue;
      ++i;
    }
    out += field[i];
  }
  return out;
}

std::string Str(const atr_String& s) { return std::string(s.CStr(), s.Length()); }

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size < 3) return 0;
  const unsigned n = data[0] % 32;
  const char separator = static_cast<char>(data[1]);
  const char quote = static_cast<char>(data[2]);
  const std::string in(reinterpret_cast<const char*>(data + 3), size - 3);
  const cow_String copy(in.data(), static_cast<int>(in.size()));
  const atr_String text = atr_MakeAtrString(atr_StringBasePrv(copy));

  const std::string expected = Field(in, n, separator);
  const atr_String plain = text.extract(n, separator);
  Check(Str(plain) == expected);
  Check(plain.CStr()[plain.Length()] == '\0');
  const atr_String quoted = text.extract(n, separator, quote);
  Check(Str(quoted) == Unquoted(expected, quote));
  Check(quoted.CStr()[quoted.Length()] == '\0');
  return 0;
}
