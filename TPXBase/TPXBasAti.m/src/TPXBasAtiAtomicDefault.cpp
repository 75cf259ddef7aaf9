// TPXBasAtiAtomicDefault.cpp: atomic counters guarded by a mutex of the threading model.
#include "TPXBasAtiAtomicDefault.h"

#include "TPXBasAtiThreadingModel.h"

// The value is read and stored without the guard, as one indivisible 32-bit access; relaxed
// atomic accesses say exactly that, also to the compiler and to race detectors.
namespace {

template <class T>
T Load(const T& value) {
  return __atomic_load_n(&value, __ATOMIC_RELAXED);
}

template <class T>
void Store(T& value, T v) {
  __atomic_store_n(&value, v, __ATOMIC_RELAXED);
}

// Wrap-around arithmetic for both classes: unsigned modulo 2^32, int two's complement.
unsigned int Add(unsigned int a, unsigned int b) { return a + b; }
unsigned int Sub(unsigned int a, unsigned int b) { return a - b; }
int Add(int a, int b) {
  return static_cast<int>(static_cast<unsigned int>(a) + static_cast<unsigned int>(b));
}
int Sub(int a, int b) {
  return static_cast<int>(static_cast<unsigned int>(a) - static_cast<unsigned int>(b));
}

template <class T, class Op>
T Change(T& value, TPXBasAtiMutex* guard, T delta, Op op) {
  if (guard == nullptr) {
    const T result = op(Load(value), delta);
    Store(value, result);
    return result;
  }
  guard->Lock();
  const T result = op(Load(value), delta);  // copied under the lock: this call's own result
  Store(value, result);
  guard->Unlock();
  return result;
}

}  // namespace

TPXBasAtiAtomicDefault::TPXBasAtiAtomicDefault(unsigned int initial)
    : TPXBasAtiAtomicTemplate<unsigned int>(0),
      m_value(initial),
      m_guard(TPXBasAtiThreadingModel::newMutex()) {}

TPXBasAtiAtomicDefault::TPXBasAtiAtomicDefault(const TPXBasAtiAtomicDefault& other)
    : TPXBasAtiAtomicTemplate<unsigned int>(0),
      m_value(Load(other.m_value)),
      m_guard(TPXBasAtiThreadingModel::newMutex()) {}

TPXBasAtiAtomicDefault::~TPXBasAtiAtomicDefault() {
  delete m_guard;
  m_guard = nullptr;
}

TPXBasAtiAtomicTemplate<unsigned int>& TPXBasAtiAtomicDefault::operator=(
    const TPXBasAtiAtomicTemplate<unsigned int>& other) {
  Store(m_value, static_cast<unsigned int>(other));
  return *this;
}

unsigned int TPXBasAtiAtomicDefault::Increment(unsigned int delta) {
  return Change(m_value, m_guard, delta, [](unsigned int a, unsigned int b) { return Add(a, b); });
}

unsigned int TPXBasAtiAtomicDefault::Decrement(unsigned int delta) {
  return Change(m_value, m_guard, delta, [](unsigned int a, unsigned int b) { return Sub(a, b); });
}

TPXBasAtiAtomicDefault::operator unsigned int() const { return Load(m_value); }

int TPXBasAtiAtomicDefault::id() const { return 405; }

void TPXBasAtiAtomicDefault::operator=(unsigned int value) { Store(m_value, value); }

TPXBasAtiAtomicDefault& TPXBasAtiAtomicDefault::operator=(const TPXBasAtiAtomicDefault& other) {
  Store(m_value, Load(other.m_value));
  return *this;
}

TPXBasAtiAtomicIntDefault::TPXBasAtiAtomicIntDefault(int initial)
    : TPXBasAtiAtomicTemplate<int>(0),
      m_value(initial),
      m_guard(TPXBasAtiThreadingModel::newMutex()) {}

TPXBasAtiAtomicIntDefault::TPXBasAtiAtomicIntDefault(const TPXBasAtiAtomicIntDefault& other)
    : TPXBasAtiAtomicTemplate<int>(0),
      TPXBasAtiUpgradable(),
      m_value(Load(other.m_value)),
      m_guard(TPXBasAtiThreadingModel::newMutex()) {}

TPXBasAtiAtomicIntDefault::~TPXBasAtiAtomicIntDefault() {
  delete m_guard;
  m_guard = nullptr;
}

TPXBasAtiAtomicTemplate<int>& TPXBasAtiAtomicIntDefault::operator=(
    const TPXBasAtiAtomicTemplate<int>& other) {
  Store(m_value, static_cast<int>(other));
  return *this;
}

int TPXBasAtiAtomicIntDefault::Increment(int delta) {
  return Change(m_value, m_guard, delta, [](int a, int b) { return Add(a, b); });
}

int TPXBasAtiAtomicIntDefault::Decrement(int delta) {
  return Change(m_value, m_guard, delta, [](int a, int b) { return Sub(a, b); });
}

TPXBasAtiAtomicIntDefault::operator int() const { return Load(m_value); }

int TPXBasAtiAtomicIntDefault::id() const { return 406; }

void TPXBasAtiAtomicIntDefault::operator=(int value) { Store(m_value, value); }

TPXBasAtiAtomicIntDefault& TPXBasAtiAtomicIntDefault::operator=(
    const TPXBasAtiAtomicIntDefault& other) {
  Store(m_value, Load(other.m_value));
  return *this;
}
