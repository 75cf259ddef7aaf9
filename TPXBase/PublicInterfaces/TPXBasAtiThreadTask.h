/// @file TPXBasAtiThreadTask.h
/// A unit of work for a thread the host starts.
#ifndef TPXBASATITHREADTASK_H
#define TPXBASATITHREADTASK_H

#include "KLDTPXBasExport.h"
#include "mem_AllocationOperators.h"

/// Work that a host (or its multi-threaded factory) runs in a thread of its own by calling
/// Run. The library starts no thread; it only implements tasks (the cache manager's purge).
class KLDTPXBAS_API TPXBasAtiThreadTask : public mem_AllocationOperators {
 public:
  virtual ~TPXBasAtiThreadTask();
  /// Does the work in the calling thread and returns when it is done; the argument's meaning
  /// belongs to the task.
  virtual void Run(int) = 0;

 protected:
  TPXBasAtiThreadTask() = default;
};

#endif  // TPXBASATITHREADTASK_H
