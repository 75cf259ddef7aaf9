// mem_FailureInjection.h: the failure-injection counter shared by the stand-in's allocators.
#ifndef MEM_FAILUREINJECTION_H
#define MEM_FAILUREINJECTION_H

namespace mem_Internal {
/// Whether the next allocation may succeed; consumes one allowance while failing is armed.
bool AllocationAllowed();
}  // namespace mem_Internal

#endif  // MEM_FAILUREINJECTION_H
