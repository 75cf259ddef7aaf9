// ati_bench_callee.h: a do-nothing lock that lives in a shared library of its own.
//
// ati_bench compares a placeholder mutex, whose Lock and Unlock are virtual functions in
// libKLDTPXBasCoreUtils.so, with a pair of virtual calls that do nothing. For the comparison
// to be fair the empty callees must be reached the same way: through a vtable in another
// shared object, on an object allocated by the same allocation service.
#ifndef ATI_BENCH_CALLEE_H
#define ATI_BENCH_CALLEE_H

#include "mem_AllocationOperators.h"

#define ATI_BENCH_CALLEE_API __attribute__((visibility("default")))

class ATI_BENCH_CALLEE_API AtiBenchEmptyLock : public mem_AllocationOperators {
 public:
  virtual ~AtiBenchEmptyLock();
  virtual void Lock() = 0;
  virtual void Unlock() = 0;
};

/// A new empty lock of one of two classes (kind 0 or 1), so that no caller can tell which
/// override it reaches.
ATI_BENCH_CALLEE_API AtiBenchEmptyLock* AtiBenchNewEmptyLock(int kind);

#endif  // ATI_BENCH_CALLEE_H
