/// @file TPXBasAtiGlobalSingleton.h
/// Process-wide objects created safely from any thread.
#ifndef TPXBASATIGLOBALSINGLETON_H
#define TPXBASATIGLOBALSINGLETON_H

#include "KLDTPXBasAssert.h"
#include "KLDTPXBasExport.h"
#include "TPXBasAtiGlobalLock.h"
#include "TPXBasAtiMutex.h"
#include "TPXBasAtiThreadingModel.h"
#include "mem_AllocationOperators.h"
#include "omi_SingletonRegistry.h"

#include <typeinfo>

/// A class Class derives from TPXBasAtiGlobalSingleton<Class> to exist once per process:
/// Instance() creates it on first use, from whichever thread gets there first, under the
/// global lock with a double-checked test, and registers it with the allocation library's
/// singleton registry under Class's run-time type name. Each instantiation also owns a mutex
/// from the threading model that Class's own operations take with Lock() and Unlock(); made
/// before the host switches the threading model, it excludes nothing until then.
///
/// Class's constructor and destructor are private, with this template a friend. The template
/// gives Class the library's allocation operators (mem_AllocationOperators), so the instance
/// is drawn from the host allocation service; Class needs no such base of its own, and a
/// second base that also leads to mem_AllocationOperators (as the cache manager has) keeps
/// one unambiguous operator new and delete, the static members of that one class.
template <class Class>
class KLDTPXBAS_API TPXBasAtiGlobalSingleton : public mem_AllocationOperators {
 public:
  /// The instance, created on first use. If Class's constructor throws, nothing is created
  /// and the exception reaches the caller.
  static Class& Instance();
  /// Destroys the instance and Class's mutex, if they exist; harmless when repeated. The
  /// next Instance() creates both afresh.
  static void Finalize();

  /// Takes Class's mutex (a placeholder that excludes nothing until the host installs its
  /// thread factory).
  void Lock() volatile { m_lock->Lock(); }
  /// Releases Class's mutex.
  void Unlock() volatile { m_lock->Unlock(); }

 protected:
  TPXBasAtiGlobalSingleton();
  ~TPXBasAtiGlobalSingleton() {}

 private:
  TPXBasAtiGlobalSingleton(const TPXBasAtiGlobalSingleton&) = delete;
  TPXBasAtiGlobalSingleton& operator=(const TPXBasAtiGlobalSingleton&) = delete;

  static void CreateLocks();

  static Class* volatile m_instance;
  static TPXBasAtiMutex* volatile m_lock;
  static constexpr const char kAssertPath[] =
      "TPXBase/ProtectedInterfaces/TPXBasAtiGlobalSingleton";
};

// Implementation details.

template <class Class>
Class* volatile TPXBasAtiGlobalSingleton<Class>::m_instance = nullptr;
template <class Class>
TPXBasAtiMutex* volatile TPXBasAtiGlobalSingleton<Class>::m_lock = nullptr;

template <class Class>
TPXBasAtiGlobalSingleton<Class>::TPXBasAtiGlobalSingleton() {
  if (omi_SingletonRegistry* registry = omi_SingletonRegistry::Instance())
    registry->Add(typeid(Class).name(), this);
}

template <class Class>
Class& TPXBasAtiGlobalSingleton<Class>::Instance() {
  // The pointer is published with release ordering only once the object is complete, so a
  // reader that sees it with acquire ordering also sees the finished object.
  if (__atomic_load_n(&m_instance, __ATOMIC_ACQUIRE) == nullptr) {
    TPXBasAtiGlobalLock guard;
    CreateLocks();
    if (Class* other = __atomic_load_n(&m_instance, __ATOMIC_RELAXED)) return *other;
    Class* inst2 = nullptr;
    try {
      inst2 = new Class;
    } catch (...) {
      // The constructor of this base may have registered the name before Class's threw.
      if (omi_SingletonRegistry* registry = omi_SingletonRegistry::Instance())
        registry->Remove(typeid(Class).name());
      throw;
    }
    KLD_ASSERT(inst2 != 0);
    __atomic_store_n(&m_instance, inst2, __ATOMIC_RELEASE);
  }
  // clang-format off
  KLD_ASSERT(static_cast<volatile Class* volatile>(m_instance) != 0);
  // clang-format on
  return *m_instance;
}

template <class Class>
void TPXBasAtiGlobalSingleton<Class>::Finalize() {
  TPXBasAtiGlobalLock guard;
  if (Class* inst = m_instance) {
    if (omi_SingletonRegistry* registry = omi_SingletonRegistry::Instance())
      registry->Remove(typeid(Class).name());
    delete inst;
  }
  __atomic_store_n(&m_instance, nullptr, __ATOMIC_RELEASE);
  if (TPXBasAtiMutex* lock = m_lock) {
    m_lock = nullptr;
    delete lock;
  }
}

template <class Class>
void TPXBasAtiGlobalSingleton<Class>::CreateLocks() {
  TPXBasAtiMutex* made = TPXBasAtiThreadingModel::newMutex();
  if (m_lock == nullptr) {
    m_lock = made;
    KLD_ASSERT(m_lock != 0);
  } else {
    delete made;  // a creation raced this one, or an earlier one failed: keep the first
  }
}

#endif  // TPXBASATIGLOBALSINGLETON_H
