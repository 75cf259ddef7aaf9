// kld_TestSupport.h: helpers shared by the test suites.
#ifndef KLD_TESTSUPPORT_H
#define KLD_TESTSUPPORT_H

#include <cstdlib>
#include <optional>
#include <string>

namespace kld_test {

/// Sets (or, with nullptr, unsets) an environment variable for the scope, then restores it.
class ScopedEnv {
 public:
  ScopedEnv(const char* name, const char* value) : m_name(name) {
    if (const char* old = std::getenv(name)) m_old = old;
    if (value != nullptr)
      setenv(name, value, 1);
    else
      unsetenv(name);
  }
  ~ScopedEnv() {
    if (m_old)
      setenv(m_name.c_str(), m_old->c_str(), 1);
    else
      unsetenv(m_name.c_str());
  }
  ScopedEnv(const ScopedEnv&) = delete;
  ScopedEnv& operator=(const ScopedEnv&) = delete;

 private:
  std::string m_name;
  std::optional<std::string> m_old;
};

/// Brings the library down from its load-time initialisation for the scope (the loader's
/// detach notification) and back up afterwards, so that a test sees a fresh library.
class FreshLibrary {
 public:
  FreshLibrary();
  ~FreshLibrary();
  FreshLibrary(const FreshLibrary&) = delete;
  FreshLibrary& operator=(const FreshLibrary&) = delete;
};

/// Turns failing allocations off again however the scope ends.
class AllocationFailureGuard {
 public:
  explicit AllocationFailureGuard(long succeedFirst);
  ~AllocationFailureGuard();
};

}  // namespace kld_test

// Implementation details.

#include "KLDTPXBasCoreUtils.h"

inline kld_test::FreshLibrary::FreshLibrary() { DllMain(nullptr, 0, nullptr); }
inline kld_test::FreshLibrary::~FreshLibrary() { DllMain(nullptr, 1, nullptr); }

inline kld_test::AllocationFailureGuard::AllocationFailureGuard(long succeedFirst) {
  mem_Testing::FailAllocationsAfter(succeedFirst);
}
inline kld_test::AllocationFailureGuard::~AllocationFailureGuard() {
  mem_Testing::FailAllocationsAfter(-1);
}

#endif  // KLD_TESTSUPPORT_H
