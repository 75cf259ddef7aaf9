// Fuzz target: line breaking only ever turns blank bytes into line breaks (and may drop one
// trailing blank); it never reads outside the text, never hangs, and leaves a text that fits
// the width or that an author already broke as it was. The translation testing mode is on, so
// that its invisible markers are measured too.
#include "KLDTPXBasCoreUtils.h"

#include <cctype>
#include <clocale>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <string>

namespace {

void Check(bool ok) {
  if (!ok) std::abort();
}

bool Blank(char c) {
  const unsigned char byte = static_cast<unsigned char>(c);
  return byte < 0x80 && std::isspace(byte);
}

// out is in with some blanks replaced by "\n", and possibly its last byte, a blank other than
// "\n", dropped.
void CheckOnlyBlanksBecameBreaks(const std::string& in, const std::string& out) {
  Check(out.size() == in.size() ||
        (out.size() + 1 == in.size() && Blank(in.back()) && in.back() != '\n'));
  for (std::size_t i = 0; i < out.size(); ++i)
    Check(out[i] == in[i] || (Blank(in[i]) && out[i] == '\n'));
}

atr_String Make(const std::string& bytes) {
  const cow_String copy(bytes.data(), static_cast<int>(bytes.size()));
  return atr_MakeAtrString(atr_StringBasePrv(copy));
}

std::string Str(const atr_String& s) { return std::string(s.CStr(), s.Length()); }

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static const bool testingMode = [] {
    setenv("KALDER_LANG", "xx", 1);
    setenv("KLD_QA_PRINT", "1", 1);
    setenv("QFN_DICT_DIR", ".", 1);
    std::setlocale(LC_ALL, "C.UTF-8");
    return atr_i18nTesting();
  }();
  Check(testingMode);
  if (size < 2) return 0;
  const unsigned width = data[0] % 40;
  const bool keepBroken = (data[1] & 1) != 0;
  std::setlocale(LC_CTYPE, (data[1] & 2) != 0 ? "C" : "C.UTF-8");
  const std::string in(reinterpret_cast<const char*>(data + 2), size - 2);
  const atr_String text = Make(in);

  const atr_String line = atr_String::BreakLineString(text, width);
  CheckOnlyBlanksBecameBreaks(in, Str(line));
  if (in.size() <= width) Check(line.CStr() == text.CStr());

  const atr_String lines = atr_String::AddLineBreaks(text, width, keepBroken);
  CheckOnlyBlanksBecameBreaks(in, Str(lines));
  if (in.size() <= width || (keepBroken && in.find('\n') != std::string::npos))
    Check(lines.CStr() == text.CStr());
  if (in.find('\n') == std::string::npos && in.size() > width) Check(Str(lines) == Str(line));
  return 0;
}
