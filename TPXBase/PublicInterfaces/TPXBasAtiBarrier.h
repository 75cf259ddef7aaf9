/// @file TPXBasAtiBarrier.h
/// The barrier interface of the threading abstraction.
#ifndef TPXBASATIBARRIER_H
#define TPXBASATIBARRIER_H

#include "KLDTPXBasExport.h"
#include "mem_AllocationOperators.h"

/// A meeting point of threads, issued by a thread factory; the caller owns it and destroys it
/// through this interface. What BarrierSync(n) waits for belongs to the issuing factory.
class KLDTPXBAS_API TPXBasAtiBarrier : public mem_AllocationOperators {
 public:
  virtual ~TPXBasAtiBarrier();
  /// Waits at the barrier for n threads; the standard factory's barrier returns once n
  /// threads have arrived in the current round.
  virtual void BarrierSync(unsigned int n) = 0;
  /// A fixed number per implementation; 301 unless overridden.
  virtual int id() const;

 protected:
  TPXBasAtiBarrier() = default;

 private:
  TPXBasAtiBarrier(const TPXBasAtiBarrier&) = delete;
  TPXBasAtiBarrier& operator=(const TPXBasAtiBarrier&) = delete;
};

#endif  // TPXBASATIBARRIER_H
