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
  explicit TPXBasAtiAtomicDefault(unsigned int initial);
  TPXBasAtiAtomicDefault(const TPXBasAtiAtomicDefault& other);
  /// Destroys the guard.
  ~TPXBasAtiAtomicDefault() override;

  /// Stores the other counter's value as read through its interface.
  TPXBasAtiAtomicTemplate<unsigned int>& operator=(
      const TPXBasAtiAtomicTemplate<unsigned int>& other) override;
  unsigned int Increment(unsigned int delta) override;
  unsigned int Decrement(unsigned int delta) override;
  operator unsigned int() const override;
  int id() const override;
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
  explicit TPXBasAtiAtomicIntDefault(int initial);
  TPXBasAtiAtomicIntDefault(const TPXBasAtiAtomicIntDefault& other);
  /// Destroys the guard and forgets it.
  ~TPXBasAtiAtomicIntDefault() override;

  /// Stores the other counter's value as read through its interface.
  TPXBasAtiAtomicTemplate<int>& operator=(const TPXBasAtiAtomicTemplate<int>& other) override;
  int Increment(int delta) override;
  int Decrement(int delta) override;
  operator int() const override;
  int id() const override;
  virtual void operator=(int value);
  /// Copies the value only; each counter keeps its own guard.
  virtual TPXBasAtiAtomicIntDefault& operator=(const TPXBasAtiAtomicIntDefault& other);

 private:
  int m_value;  // hides the template's field, which stays 0
  TPXBasAtiMutex* m_guard;
};

#endif  // TPXBASATIATOMICDEFAULT_H
