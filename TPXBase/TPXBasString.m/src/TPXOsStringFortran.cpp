// TPXOsStringFortran.cpp: conversions of blank-padded character variables, and file opening,
// for Fortran callers.
#include "TPXBasOsStringC.h"
#include "TPXOsString.h"
#include "mem_AllocationOperators.h"

#include <cerrno>
#include <climits>
#include <cstring>
#include <fcntl.h>

namespace {

constexpr int kInvalid = -1;
constexpr int kTooShort = -2;

// A character variable's bytes end at its length or at a zero byte, whichever comes first:
// callers that build names for C often append char(0).
std::size_t TextLength(const char* text, std::size_t length) {
  if (text == nullptr) return 0;
  const void* zero = std::memchr(text, 0, length);
  return zero != nullptr ? static_cast<std::size_t>(static_cast<const char*>(zero) - text) : length;
}

// The n bytes at the start of out and blanks after them, as Fortran pads a character
// variable; -2 with out untouched when they do not fit.
int Deliver(const char* bytes, std::size_t n, char* out, std::size_t outLength) {
  if (out == nullptr) outLength = 0;
  if (n > outLength) return kTooShort;
  std::memcpy(out, bytes, n);
  std::memset(out + n, ' ', outLength - n);
  return static_cast<int>(n);
}

// The whole text as a TPXString built by BuildFromLocale, which reads up to a terminator.
bool BuildFromLocaleBytes(TPXString& result, const char* text, std::size_t length) {
  char small[256];
  char* copy = length < sizeof small ? small : new (mem_BuiltInAlloc{}) char[length + 1];
  if (length != 0) std::memcpy(copy, text, length);
  copy[length] = 0;
  bool ok = false;
  try {
    ok = result.BuildFromLocale(copy) == TPXString::Success;
  } catch (...) {
    if (copy != small) mem_deleteBuiltIn(copy);
    throw;
  }
  if (copy != small) mem_deleteBuiltIn(copy);
  return ok;
}

// Desired access and creation disposition in the values the callers pass, as open(2) flags;
// -1 for a disposition that does not exist.
constexpr unsigned kGenericRead = 0x80000000u;
constexpr unsigned kGenericWrite = 0x40000000u;
constexpr unsigned kGenericAll = 0x10000000u;

int OpenFlags(unsigned access, int creation) {
  if ((access & kGenericAll) != 0) access |= kGenericRead | kGenericWrite;
  const bool write = (access & kGenericWrite) != 0;
  int flags = O_CLOEXEC;
  if (write)
    flags |= (access & kGenericRead) != 0 ? O_RDWR : O_WRONLY;
  else
    flags |= O_RDONLY;
  switch (creation) {
    case 1:  // create new
      return flags | O_CREAT | O_EXCL;
    case 2:  // create always
      return flags | O_CREAT | O_TRUNC;
    case 3:  // open existing
      return flags;
    case 4:  // open always
      return flags | O_CREAT;
    case 5:  // truncate existing: needs write access
      return write ? flags | O_TRUNC : -1;
    default:
      return -1;
  }
}

}  // namespace

// None of these entry points lets an exception out: it cannot cross the caller's C or Fortran
// frames (the process would end). Every failure is one of the documented codes instead.

int tpxbasstrlocaletoutf8(const char* text, char* out, size_t textLength, size_t outLength) {
  try {
    const std::size_t length = TextLength(text, textLength);
    if (length > INT_MAX) return kInvalid;
    TPXString utf8;
    if (!BuildFromLocaleBytes(utf8, text, length)) return kInvalid;
    return Deliver(utf8.CastToCharPtr(), static_cast<std::size_t>(utf8.GetLengthInByte()), out,
                   outLength);
  } catch (...) {
    return kInvalid;  // memory ran out: nothing was converted
  }
}

int tpxbasstrutf8tolocale(const char* text, char* out, size_t textLength, size_t outLength) {
  try {
    const std::size_t length = TextLength(text, textLength);
    if (length > INT_MAX) return kInvalid;
    TPXString utf8;
    if (utf8.BuildFromUTF8(text, static_cast<unsigned int>(length)) != TPXString::Success)
      return kInvalid;
    const TPXOsString os(utf8, TPXOsString::OsLocale);
    // No locale form: a character the locale cannot represent, or text the OS-string layer
    // does not pass to the system (an overlong form, an encoded surrogate).
    if (os.GetType() != TPXOsString::OsLocale) return kTooShort;
    const char* local = os.ToLocale();
    return Deliver(local, std::strlen(local), out, outLength);
  } catch (...) {
    return kInvalid;  // memory ran out: nothing was converted
  }
}

int tpxbasstrutf8fortranopen(const char* name, const int* access, const int* /*share*/,
                             const void* /*security*/, const int* creation, const int* /*flags*/,
                             const void* /*attributes*/, const void* /*templ*/, size_t nameLength) {
  if (name == nullptr || access == nullptr || creation == nullptr || nameLength > INT_MAX ||
      std::memchr(name, 0, nameLength) != nullptr) {
    errno = EINVAL;
    return -1;
  }
  try {
    const int flags = OpenFlags(static_cast<unsigned>(*access), *creation);
    TPXString utf8;
    if (flags == -1 ||
        utf8.BuildFromUTF8(name, static_cast<unsigned int>(nameLength)) != TPXString::Success ||
        utf8.IsNull()) {
      errno = EINVAL;
      return -1;
    }
    // The system takes names in the locale's form; a name the locale cannot hold opens nothing.
    const TPXOsString os(utf8, TPXOsString::OsLocale);
    if (os.GetType() != TPXOsString::OsLocale) {
      errno = EILSEQ;
      return -1;
    }
    return ::open(os.ToLocale(), flags, 0666);
  } catch (...) {
    errno = ENOMEM;
    return -1;
  }
}

// gfortran appends an underscore to the names of external procedures.
int tpxbasstrlocaletoutf8_(const char* text, char* out, size_t textLength, size_t outLength) {
  return tpxbasstrlocaletoutf8(text, out, textLength, outLength);
}
int tpxbasstrutf8tolocale_(const char* text, char* out, size_t textLength, size_t outLength) {
  return tpxbasstrutf8tolocale(text, out, textLength, outLength);
}
int tpxbasstrutf8fortranopen_(const char* name, const int* access, const int* share,
                              const void* security, const int* creation, const int* flags,
                              const void* attributes, const void* templ, size_t nameLength) {
  return tpxbasstrutf8fortranopen(name, access, share, security, creation, flags, attributes, templ,
                                  nameLength);
}
