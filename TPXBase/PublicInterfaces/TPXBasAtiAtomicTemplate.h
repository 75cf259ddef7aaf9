/// @file TPXBasAtiAtomicTemplate.h
/// The atomic-counter interface, also its unsynchronised form.
#ifndef TPXBASATIATOMICTEMPLATE_H
#define TPXBASATIATOMICTEMPLATE_H

#include "KLDTPXBasExport.h"
#include "mem_AllocationOperators.h"

/// A counter of int, unsigned int or double. As an interface it is what
/// TPXBasAtiThreadingModel::newAtomic gives; as a class it is a plain value with no
/// synchronisation at all (the single-threaded factory issues it as it is).
///
/// The increment and decrement operators and += / -= always go through the virtual
/// Increment and Decrement, so an implementation overrides Increment, Decrement, the
/// conversion and id() to change the arithmetic. Prefix and postfix forms both return the
/// value after the change. Unsigned arithmetic wraps modulo 2^32.
template <class T>
class KLDTPXBAS_API TPXBasAtiAtomicTemplate : public mem_AllocationOperators {
 public:
  /// A counter holding initial.
  explicit TPXBasAtiAtomicTemplate(T initial) : m_value(initial) {}
  /// A counter holding other's value.
  TPXBasAtiAtomicTemplate(const TPXBasAtiAtomicTemplate& other) : m_value(other.m_value) {}
  virtual ~TPXBasAtiAtomicTemplate() {}

  /// Copies the other object's value; returns this object.
  virtual TPXBasAtiAtomicTemplate& operator=(const TPXBasAtiAtomicTemplate& other);
  /// Adds delta and returns the value after the change.
  virtual T Increment(T delta);
  /// Subtracts delta and returns the value after the change.
  virtual T Decrement(T delta);
  /// Increment(1); returns the value after the change, as the prefix form does.
  virtual T operator++(int);
  /// Increment(1); returns the value after the change.
  virtual T operator++();
  /// Decrement(1); returns the value after the change, as the prefix form does.
  virtual T operator--(int);
  /// Decrement(1); returns the value after the change.
  virtual T operator--();
  /// Increment(delta); returns the value after the change.
  virtual T operator+=(T delta);
  /// Decrement(delta); returns the value after the change.
  virtual T operator-=(T delta);
  /// The current value.
  virtual operator T() const;
  /// 407 for all three instantiations.
  virtual int id() const;

 protected:
  /// The value of the plain counter; implementations that keep their own leave it alone.
  T m_value;
};

// Implementation details.

template <class T>
TPXBasAtiAtomicTemplate<T>& TPXBasAtiAtomicTemplate<T>::operator=(
    const TPXBasAtiAtomicTemplate& other) {
  m_value = other.m_value;
  return *this;
}

template <class T>
T TPXBasAtiAtomicTemplate<T>::Increment(T delta) {
  m_value += delta;
  return m_value;
}

template <class T>
T TPXBasAtiAtomicTemplate<T>::Decrement(T delta) {
  m_value -= delta;
  return m_value;
}

template <class T>
T TPXBasAtiAtomicTemplate<T>::operator++(int) {
  return Increment(static_cast<T>(1));
}

template <class T>
T TPXBasAtiAtomicTemplate<T>::operator++() {
  return Increment(static_cast<T>(1));
}

template <class T>
T TPXBasAtiAtomicTemplate<T>::operator--(int) {
  return Decrement(static_cast<T>(1));
}

template <class T>
T TPXBasAtiAtomicTemplate<T>::operator--() {
  return Decrement(static_cast<T>(1));
}

template <class T>
T TPXBasAtiAtomicTemplate<T>::operator+=(T delta) {
  return Increment(delta);
}

template <class T>
T TPXBasAtiAtomicTemplate<T>::operator-=(T delta) {
  return Decrement(delta);
}

template <class T>
TPXBasAtiAtomicTemplate<T>::operator T() const {
  return m_value;
}

template <class T>
int TPXBasAtiAtomicTemplate<T>::id() const {
  return 407;
}

// The three instantiations live in the library, so that every client shares one vtable and
// one type identity with it.
extern template class TPXBasAtiAtomicTemplate<int>;
extern template class TPXBasAtiAtomicTemplate<unsigned int>;
extern template class TPXBasAtiAtomicTemplate<double>;

#endif  // TPXBASATIATOMICTEMPLATE_H
