// atr_format_fuzz.cpp: arbitrary format texts with arbitrary argument lists of every type.
//
// Input: the format text up to the first zero byte, then the arguments, each a type byte and
// the bytes of its value. Formats in which "%" is directly followed by "$" are broken
// invariants of the calling program (fatal by design) and are skipped.
#include "KLDTPXBasCoreUtils.h"
#include "fuzz_Widths.h"

#include <cstdint>
#include <cstring>
#include <string>

namespace {

class Reader {
 public:
  Reader(const std::uint8_t* data, std::size_t size) : m_data(data), m_size(size) {}
  bool Done() const { return m_pos >= m_size; }
  template <class T>
  T Take() {
    T value{};
    std::size_t n = sizeof(T) < m_size - m_pos ? sizeof(T) : m_size - m_pos;
    std::memcpy(&value, m_data + m_pos, n);
    m_pos += n;
    return value;
  }
  std::string Text() {  // up to 16 bytes
    std::size_t n = Take<std::uint8_t>() % 17;
    if (n > m_size - m_pos) n = m_size - m_pos;
    std::string text(reinterpret_cast<const char*>(m_data + m_pos), n);
    m_pos += n;
    return text.c_str();  // up to its first zero byte
  }

 private:
  const std::uint8_t* m_data;
  std::size_t m_size;
  std::size_t m_pos = 0;
};

}  // namespace

namespace {

const TPXBasStringMode kUtf8(false);

/// The message of format with the arguments read from args, built step by step.
atr_String Build(const std::string& format, Reader args) {
  atr_translate message(format.c_str(), kUtf8);
  int n = 0;
  while (!args.Done() && n < 64) {
    std::uint8_t type = args.Take<std::uint8_t>();
    // Mostly the next argument; now and then a number out of range or a repeated one.
    int position = (type & 0x80) ? static_cast<int>(args.Take<std::int8_t>()) : ++n;
    switch (type % 11) {
      case 0:
        atr_SubstituteFormat(message, position, args.Take<int>(), kUtf8);
        break;
      case 1:
        atr_SubstituteFormat(message, position, args.Take<unsigned>(), kUtf8);
        break;
      case 2:
        atr_SubstituteFormat(message, position, args.Take<long long>(), kUtf8);
        break;
      case 3:
        atr_SubstituteFormat(message, position, args.Take<unsigned long long>(), kUtf8);
        break;
      case 4:
        atr_SubstituteFormat(message, position, args.Take<float>(), kUtf8);
        break;
      case 5:
        atr_SubstituteFormat(message, position, args.Take<double>(), kUtf8);
        break;
      case 6:
        atr_SubstituteFormat(message, position, args.Text().c_str(), kUtf8);
        break;
      case 7: {
        atr_String text = atr_MakeAtrString(args.Text().c_str());
        atr_SubstituteFormat(message, position, text, kUtf8);
        break;
      }
      case 8:
        atr_SubstituteFormat(message, position,
                             reinterpret_cast<const void*>(args.Take<std::uintptr_t>()), kUtf8);
        break;
      case 9: {
        std::string text = args.Text();
        message.AddSubstitution(position, text.c_str(), message.Format(args.Take<std::uint8_t>()));
        break;
      }
      default:
        atr_SubstituteFormat(message, position, static_cast<const char*>(nullptr), kUtf8);
    }
  }
  return message.Result(kUtf8);
}

/// The message of format with one argument, through the entry point and step by step.
template <class T>
void Agree(const std::string& format, T value) {
  atr_String direct = atr<T>(format.c_str(), value, kUtf8);
  atr_translate message(format.c_str(), kUtf8);
  atr_SubstituteFormat(message, 1, value, kUtf8);
  if (std::strcmp(direct.CStr(), message.Result(kUtf8).CStr()) != 0) __builtin_trap();
}

/// The message of format with texts and ints, through the entry point (whose one-pass form
/// serves the second call from what the first recorded) and step by step: the same bytes.
template <class... T>
void AgreeAll(const std::string& format, T... values) {
  atr_translate message(format.c_str(), kUtf8);
  int n = 0;
  (atr_SubstituteFormat(message, ++n, values, kUtf8), ...);
  const atr_String general = message.Result(kUtf8);
  for (int call = 0; call < 2; ++call)
    if (std::strcmp(atr<T...>(format.c_str(), values..., kUtf8).CStr(), general.CStr()) != 0)
      __builtin_trap();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const char* begin = reinterpret_cast<const char*>(data);
  const void* zero = std::memchr(data, 0, size);
  std::size_t formatLength = zero ? static_cast<const std::uint8_t*>(zero) - data : size;
  std::string format(begin, formatLength);
  if (format.find("%$") != std::string::npos) return 0;
  if (HasHugeField(format.data(), format.size())) return 0;
  Reader args(data + formatLength, size - formatLength);
  if (!args.Done()) args.Take<std::uint8_t>();  // the zero byte

  // The first build may parse the text, the second finds its template kept for this thread:
  // both must give the same message.
  atr_String result = Build(format, args);
  if (std::strlen(result.CStr()) != result.Length()) __builtin_trap();
  if (std::strcmp(result.CStr(), Build(format, args).CStr()) != 0) __builtin_trap();

  // The entry points on the same text, with every argument type.
  Reader values = args;
  const char* text = format.c_str();
  atr_String plain = atr(text, kUtf8);
  atr_String raw = atr_raw(text, kUtf8);
  atr_String mixed = atr<int, const char*, double>(text, 7, "text", 1.5, kUtf8);
  atr_String exported1 = atr<const char*>(text, "a", kUtf8);
  atr_String exported2 = atr<const char*, const char*, int>(text, "a", "b", -3, kUtf8);
  atr_String exported3 = atr<int>(text, values.Take<int>(), kUtf8);
  atr_String exported4 = atr<int, const char*>(text, 4, "d", kUtf8);
  Agree(format, values.Take<int>());
  Agree(format, values.Take<unsigned>());
  Agree(format, values.Take<long long>());
  Agree(format, values.Take<unsigned long long>());
  Agree(format, values.Take<long>());
  Agree(format, values.Take<unsigned long>());
  Agree(format, values.Take<float>());
  Agree(format, values.Take<double>());
  Agree(format, reinterpret_cast<const void*>(values.Take<std::uintptr_t>()));
  std::string word = values.Text();
  Agree(format, word.c_str());
  Agree(format, atr_MakeAtrString(word.c_str()));  // the atr_StringBase overload
  std::string other = values.Text();
  const int number = values.Take<int>();
  AgreeAll<const char*, const char*, int>(format, word.c_str(), other.c_str(), number);
  AgreeAll<int, const char*>(format, number, word.c_str());
  AgreeAll<int, int, int, const char*>(format, number, ~number, values.Take<int>(), "");
  AgreeAll<const char*>(format, static_cast<const char*>(nullptr));
  // With no conversion in the text, formatting only folds "%%" and drops a final "%".
  if (format.find('%') == std::string::npos && format.find("\\@") == std::string::npos &&
      format != plain.CStr())
    __builtin_trap();
  return 0;
}
