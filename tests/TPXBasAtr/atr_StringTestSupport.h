// atr_StringTestSupport.h: access to the byte string's protected operations, statistics
// capture and a scoped process locale, shared by the string suites.
#ifndef ATR_STRINGTESTSUPPORT_H
#define ATR_STRINGTESTSUPPORT_H

#include "KLDTPXBasCoreUtils.h"
#include "gtest/gtest.h"
#include "kld_TestSupport.h"

#include <clocale>
#include <cstdio>
#include <functional>
#include <string>

namespace atr_test {

/// The byte string with every protected operation public, and a look at its header.
class TestString : public atr_StringBase {
 public:
  TestString() = default;
  TestString(const TestString&) = default;
  TestString& operator=(const TestString&) = default;
  explicit TestString(const char* text) : atr_StringBase(text) {}
  TestString(const char* text, int len) : atr_StringBase(text, len) {}
  explicit TestString(const std::string& text)
      : atr_StringBase(text.data(), static_cast<int>(text.size())) {}
  explicit TestString(int value) : atr_StringBase(value) {}
  explicit TestString(unsigned int value) : atr_StringBase(value) {}
  explicit TestString(float value) : atr_StringBase(value) {}
  explicit TestString(double value) : atr_StringBase(value) {}
  TestString(char* buffer, int len, AdoptEnm tag) : atr_StringBase(buffer, len, tag) {}
  TestString(const char* text, int len, BorrowEnm tag) : atr_StringBase(text, len, tag) {}
  TestString(int n, PreSizeEnm tag) : atr_StringBase(n, tag) {}

  using atr_StringBase::operator=;
  using atr_StringBase::operator[];
  using atr_StringBase::Append;
  using atr_StringBase::append;
  using atr_StringBase::Capitalize;
  using atr_StringBase::Compare;
  using atr_StringBase::CStr;
  using atr_StringBase::Empty;
  using atr_StringBase::Erase;
  using atr_StringBase::Find;
  using atr_StringBase::GetBuffPtr;
  using atr_StringBase::insert;
  using atr_StringBase::LeftTrim;
  using atr_StringBase::Length;
  using atr_StringBase::NormaliseExponent;
  using atr_StringBase::replace;
  using atr_StringBase::Replace;
  using atr_StringBase::Reverse;
  using atr_StringBase::rfind;
  using atr_StringBase::RightTrim;
  using atr_StringBase::SetStringLength;
  using atr_StringBase::Substitute;
  using atr_StringBase::Substr;
  using atr_StringBase::ToLower;
  using atr_StringBase::ToUpper;
  using atr_StringBase::Trim;
  using atr_StringBase::Uncapitalize;

  /// -1 without a header.
  int Capacity() const { return m_StringRep != nullptr ? m_StringRep->Capacity() : -1; }
  int References() const { return m_StringRep != nullptr ? m_StringRep->References() : 0; }
  bool HasHeader() const { return m_StringRep != nullptr; }
  /// The text lives in one block with the header.
  bool Inline() const { return m_StringRep != nullptr && m_Buff == m_StringRep->InlineText(); }
  std::string Text() const { return std::string(CStr(), static_cast<std::size_t>(Length())); }
};

/// The eleven figures of the statistics report, as printed.
struct Statistics {
  int repsCreated = -1, stringsCreated = -1, extensionFailures = -1, active = -1, bytesInUse = -1,
      maximumActive = -1, maximumBytesInUse = -1;
  double meanLength = -1, sigmaLength = -1, meanSpare = -1, sigmaSpare = -1;
  std::string text;  // the report as written
};

/// Runs work with statistics on: the library is brought down, the string module alone is
/// brought up with ATR_SUMMARY set, and its report at the finalise is captured from stderr.
inline Statistics StatisticsOf(const std::function<void()>& work) {
  Statistics s;
  kld_test::FreshLibrary fresh;
  {
    kld_test::ScopedEnv summary("ATR_SUMMARY", "");
    int tally = 0;
    TPXBasAtr_initialize(tally);
    work();
    testing::internal::CaptureStderr();
    TPXBasAtr_finalize(tally);
    s.text = testing::internal::GetCapturedStderr();
  }
  std::sscanf(s.text.c_str(),
              "%d Reps Created\n%d Strings Created\n%d Extension Failures\n%d Active\n"
              "%d Bytes in use\n%d Maximum active\n%d Maximum bytes in use\n"
              "%lf Mean length\n%lf Sigma length\n%lf Mean spare\n%lf Sigma spare\n",
              &s.repsCreated, &s.stringsCreated, &s.extensionFailures, &s.active, &s.bytesInUse,
              &s.maximumActive, &s.maximumBytesInUse, &s.meanLength, &s.sigmaLength, &s.meanSpare,
              &s.sigmaSpare);
  return s;
}

/// Sets the character-type category of the process locale for the scope.
class ScopedCtype {
 public:
  explicit ScopedCtype(const char* name) : m_old(std::setlocale(LC_CTYPE, nullptr)) {
    m_ok = std::setlocale(LC_CTYPE, name) != nullptr;
  }
  ~ScopedCtype() { std::setlocale(LC_CTYPE, m_old.c_str()); }
  bool ok() const { return m_ok; }
  ScopedCtype(const ScopedCtype&) = delete;
  ScopedCtype& operator=(const ScopedCtype&) = delete;

 private:
  std::string m_old;
  bool m_ok = false;
};

}  // namespace atr_test

#endif  // ATR_STRINGTESTSUPPORT_H
