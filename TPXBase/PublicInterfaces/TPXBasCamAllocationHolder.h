/// @file TPXBasCamAllocationHolder.h
/// Sizes of live allocations by caller-given id.
#ifndef TPXBASCAMALLOCATIONHOLDER_H
#define TPXBASCAMALLOCATIONHOLDER_H

#include "KLDTPXBasExport.h"
#include "TPXBasAtiGlobalSingleton.h"
#include "mem_AllocationOperators.h"

#include <cstdio>

class TPXBasCamAllocationHolder;
extern template class KLDTPXBAS_API TPXBasAtiGlobalSingleton<TPXBasCamAllocationHolder>;

/// Remembers the size of each live allocation by an id the caller gives, warns when one is
/// freed with another size, and lists the live ones. The table grows in steps of 100 ids
/// until it covers the id given. A global singleton:
/// TPXBasAtiGlobalSingleton<TPXBasCamAllocationHolder>::Instance(). It locks nothing; callers
/// on several threads bracket their calls with the singleton's Lock()/Unlock().
class KLDTPXBAS_API TPXBasCamAllocationHolder
    : public TPXBasAtiGlobalSingleton<TPXBasCamAllocationHolder> {
 public:
  /// Marks an id with no live allocation.
  static constexpr unsigned int kFree = 4294967295u;

  /// Records a live allocation; std::bad_alloc when the table cannot grow (nothing changes).
  void Alloc(unsigned int id, unsigned int size);
  /// Warns on the standard error stream when size differs from the recorded one (or id was
  /// never recorded); the id is free afterwards either way.
  void Free(unsigned int id, unsigned int size);
  /// Lists the live allocations on the summary stream; nothing without one.
  void Summary();
  /// Where Summary writes (null: nowhere, the initial state). Not closed by the holder.
  void SetSummaryFile(FILE* file) { m_file = file; }

  /// Number of ids the table covers now (a multiple of 100).
  unsigned int Capacity() const { return m_capacity; }
  /// The recorded size, or kFree.
  unsigned int SizeOf(unsigned int id) const { return id < m_capacity ? m_sizes[id] : kFree; }

 private:
  friend class TPXBasAtiGlobalSingleton<TPXBasCamAllocationHolder>;
  TPXBasCamAllocationHolder();
  ~TPXBasCamAllocationHolder();
  void Resize(unsigned int id);

  unsigned int* m_sizes;
  unsigned int m_capacity;
  FILE* m_file;
};

#endif  // TPXBASCAMALLOCATIONHOLDER_H
