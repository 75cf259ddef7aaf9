/// @file omi_Singleton.h
/// Lock-free lazily created process-wide objects.
#ifndef OMI_SINGLETON_H
#define OMI_SINGLETON_H

#include "mem_AllocationOperators.h"
#include "omi_SingletonRegistry.h"

#include <cstdlib>
#include <typeinfo>

/// Holds the one instance of T and registers it with the allocation library's singleton
/// registry under T's run-time type name. Nothing is locked: the first Instance() and
/// Finalize() happen while the process is single-threaded (initialise and finalise).
template <class T>
class omi_SingletonBase : public mem_AllocationOperators {
 public:
  /// Unregisters T's name and destroys the instance if there is one; harmless when repeated.
  static void Finalize() {
    if (omi_SingletonRegistry* registry = omi_SingletonRegistry::Instance())
      registry->Remove(typeid(T).name());
    if (instance != nullptr) {
      T* doomed = static_cast<T*>(instance);
      instance = nullptr;
      delete doomed;
    }
  }

 protected:
  omi_SingletonBase() {
    instance = this;
    if (omi_SingletonRegistry* registry = omi_SingletonRegistry::Instance())
      registry->Add(typeid(T).name(), this);
  }
  ~omi_SingletonBase() = default;

  /// The instance, or null when there is none.
  static T* Instance() { return instance != nullptr ? static_cast<T*>(instance) : nullptr; }

  /// The instance, or null. Kept as a pointer to this base, set by the base constructor, and
  /// turned into a T* only once T is fully built.
  static omi_SingletonBase* instance;

  template <class U>
  friend class omi_Singleton;
};

template <class T>
omi_SingletonBase<T>* omi_SingletonBase<T>::instance = nullptr;

/// T derives from omi_Singleton<T>; omi_Singleton<T>::Instance() creates T on first use.
template <class T>
class omi_Singleton : public omi_SingletonBase<T> {
 public:
  /// The instance, created on first use (std::bad_alloc propagates from the allocation).
  static T& Instance() {
    if (omi_SingletonBase<T>::instance != nullptr)
      return *static_cast<T*>(omi_SingletonBase<T>::instance);
    T* made = new T;
    if (static_cast<omi_SingletonBase<T>*>(made) != omi_SingletonBase<T>::instance) std::abort();
    return *made;
  }

 protected:
  omi_Singleton() = default;
  ~omi_Singleton() = default;
};

#endif  // OMI_SINGLETON_H
