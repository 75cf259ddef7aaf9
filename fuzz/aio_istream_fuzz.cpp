// aio_istream_fuzz: the input stream's reads against a plain model of the same bytes.
//
// Input: one control byte per operation until a 0xFF byte (at most 32), then the file's
// content. Each operation's buffer has exactly the size it is told, so any write past it is
// caught by AddressSanitizer; results, positions and state bits are compared with the model.
#include "aio_istream.h"

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

namespace {

void Check(bool ok) {
  if (!ok) std::abort();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  std::size_t split = 0;
  while (split < size && split < 32 && data[split] != 0xFF) ++split;
  const std::vector<std::uint8_t> ops(data, data + split);
  const std::size_t start = split < size ? split + 1 : size;
  const std::string content(reinterpret_cast<const char*>(data) + start, size - start);

  FILE* f = std::tmpfile();
  if (f == nullptr) return 0;
  std::fwrite(content.data(), 1, content.size(), f);
  std::rewind(f);
  aio_istream in;
  in.attach(f, true);

  std::size_t pos = 0;  // the model's position
  for (std::uint8_t op : ops) {
    const int n = op >> 3;  // 0 to 31
    in.clear(0);
    switch (op & 7) {
      case 0: {  // getline
        std::vector<char> buf(n > 0 ? n : 1, '\n');
        in.getline(n > 0 ? buf.data() : nullptr, n);
        if (n < 1) {
          Check(in.rdstate() == aio_ios::failbit);
          break;
        }
        std::size_t len = 0;
        bool complete = false;
        while (len < static_cast<std::size_t>(n - 1) && pos + len < content.size()) {
          if (content[pos + len++] == '\n') {
            complete = true;
            break;
          }
        }
        const std::size_t kept = complete ? len - 1 : len;
        Check(std::memcmp(buf.data(), content.data() + pos, kept) == 0);
        Check(buf[kept] == '\0');
        Check(complete ? in.rdstate() == 0 : in.rdstate() == (aio_ios::failbit | aio_ios::eofbit));
        pos += len;
        break;
      }
      case 1: {  // read
        std::vector<char> buf(n > 0 ? n : 1);
        const int got = in.read(buf.data(), n);
        const std::size_t expected = std::min<std::size_t>(n, content.size() - pos);
        Check(got == static_cast<int>(expected));
        Check(std::memcmp(buf.data(), content.data() + pos, expected) == 0);
        Check(in.rdstate() ==
              (expected < static_cast<std::size_t>(n) ? aio_ios::failbit | aio_ios::eofbit : 0));
        pos += expected;
        break;
      }
      case 2: {  // get
        const int c = in.get();
        Check(pos < content.size() ? c == static_cast<unsigned char>(content[pos])
                                   : c == -1 && in.rdstate() == 3);
        if (pos < content.size()) ++pos;
        break;
      }
      case 3: {  // ignore up to n bytes through a newline
        in.ignore(n, '\n');
        bool hitEnd = false;
        for (int i = 0; i < n; ++i) {
          if (pos == content.size()) {
            hitEnd = true;
            break;
          }
          if (content[pos++] == '\n') break;
        }
        Check(in.rdstate() == (hitEnd ? aio_ios::eofbit : 0));
        break;
      }
      case 4: {  // bounded word
        std::vector<char> buf(n > 0 ? n : 1, '#');
        in.scan_string(n > 0 ? buf.data() : nullptr, n);
        if (n > 0) Check(std::memchr(buf.data(), '\0', n) != nullptr);
        Check((in.rdstate() & aio_ios::badbit) == 0);
        pos = static_cast<std::size_t>(std::ftell(f));
        break;
      }
      case 5: {  // integer scan in the base chosen by n
        in.setf((n << 2) & 0x70, aio_ios::basefield);
        const long long v = in.scan_int64();
        if (in.rdstate() != 0) Check(v == 0);
        pos = static_cast<std::size_t>(std::ftell(f));
        break;
      }
      case 6: {  // peek and put back
        const int c = in.peek();
        Check(pos < content.size() ? c == static_cast<unsigned char>(content[pos]) : c == -1);
        if (c != -1) {
          in.clear(0);
          in.get();
          in.putback(static_cast<char>(c));
          Check(in.rdstate() == 0);
        }
        break;
      }
      default: {  // scan a double
        const double d = in.scan_double();
        if (in.rdstate() != 0) Check(d == 0.0);
        pos = static_cast<std::size_t>(std::ftell(f));
        break;
      }
    }
    Check(static_cast<long>(pos) == std::ftell(f));
  }
  return 0;
}
