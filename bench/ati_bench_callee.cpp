// ati_bench_callee.cpp: the do-nothing locks of ati_bench, built as a shared library.
#include "ati_bench_callee.h"

namespace {

class EmptyLockA final : public AtiBenchEmptyLock {
 public:
  void Lock() override {}
  void Unlock() override {}
};

class EmptyLockB final : public AtiBenchEmptyLock {
 public:
  void Lock() override { asm volatile("" ::: "memory"); }
  void Unlock() override { asm volatile("" ::: "memory"); }
};

}  // namespace

AtiBenchEmptyLock::~AtiBenchEmptyLock() = default;

AtiBenchEmptyLock* AtiBenchNewEmptyLock(int kind) {
  if (kind == 0) return new EmptyLockA;
  return new EmptyLockB;
}
