/// @file TPXBasAtiAtomicDefault.h
/// Atomic counters guarded by a mutex of the threading model.
#ifndef TPXBASATIATOMICDEFAULT_H
#define TPXBASATIATOMICDEFAULT_H

#include "KLDTPXBasExport.h"
#include "TPXBasAtiAtomicTemplate.h"
#include "TPXBasAtiMutex.h"
#include "TPXBasAtiUpgradable.h"

/// The unsigned counter the default thread factory issues (id() 405). Increment and
/// Decrement run under a guard mutex taken from TPXBasAtiThreadingModel when the counter is
/// built: a placeholder before the host installs its factory, a real lock after the switch,
/// without the counter being replaced. Reading and storing the value take no lock (single
/// indivisible 32-bit accesses). The template's own value field stays 0 and is never read.
///
/// A copy gets a guard of its own from the threading model; it never shares the source's.
class KLDTPXBAS_API TPXBasAtiAtomicDefault : public TPXBasAtiAtomicTemplate<unsigned int> {
 public:
  /// A counter holding initial, with a guard mutex from the threading model (std::bad_alloc
  /// when none can be had).
  explicit TPXBasAtiAtomicDefault(unsigned int initial);
  /// A counter holding other's value, with a guard of its own.
  TPXBasAtiAtomicDefault(const TPXBasAtiAtomicDefault& other);
  /// Destroys the guard.
  ~TPXBasAtiAtomicDefault() override;

  /// Stores the other counter's value as read through its interface.
  TPXBasAtiAtomicTemplate<unsigned int>& operator=(
      const TPXBasAtiAtomicTemplate<unsigned int>& other) override;
  /// Adds delta under the guard; returns the value after the change.
  unsigned int Increment(unsigned int delta) override;
  /// Subtracts delta under the guard; returns the value after the change.
  unsigned int Decrement(unsigned int delta) override;
  /// The current value, read without the guard.
  operator unsigned int() const override;
  int id() const override;
  /// Stores value, without the guard.
  virtual void operator=(unsigned int value);
  /// Copies the value only; each counter keeps its own guard.
  virtual TPXBasAtiAtomicDefault& operator=(const TPXBasAtiAtomicDefault& other);

 private:
  unsigned int m_value;  // hides the template's field, which stays 0
  TPXBasAtiMutex* m_guard;
};

/// The same design for int (id() 406), also upgradable. It leaves UpgradeYourself to a
/// derived class, so it is only a base; no factory of the library issues it.
class KLDTPXBAS_API TPXBasAtiAtomicIntDefault : public TPXBasAtiAtomicTemplate<int>,
                                                public TPXBasAtiUpgradable {
 public:
  /// A counter holding initial, with a guard mutex from the threading model (std::bad_alloc
  /// when none can be had).
  explicit TPXBasAtiAtomicIntDefault(int initial);
  /// A counter holding other's value, with a guard of its own.
  TPXBasAtiAtomicIntDefault(const TPXBasAtiAtomicIntDefault& other);
  /// Destroys the guard and forgets it.
  ~TPXBasAtiAtomicIntDefault() override;

  /// Stores the other counter's value as read through its interface.
  TPXBasAtiAtomicTemplate<int>& operator=(const TPXBasAtiAtomicTemplate<int>& other) override;
  /// Adds delta under the guard; returns the value after the change.
  int Increment(int delta) override;
  /// Subtracts delta under the guard; returns the value after the change.
  int Decrement(int delta) override;
  /// The current value, read without the guard.
  operator int() const override;
  int id() const override;
  /// Stores value, without the guard.
  virtual void operator=(int value);
  /// Copies the value only; each counter keeps its own guard.
  virtual TPXBasAtiAtomicIntDefault& operator=(const TPXBasAtiAtomicIntDefault& other);

 private:
  int m_value;  // hides the template's field, which stays 0
  TPXBasAtiMutex* m_guard;
};

#endif  // TPXBASATIATOMICDEFAULT_H
