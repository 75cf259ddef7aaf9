/// @file TPXBasAtiRegistry.h
/// The list of placeholder primitives a default thread factory issued.
#ifndef TPXBASATIREGISTRY_H
#define TPXBASATIREGISTRY_H

#include "KLDTPXBasExport.h"
#include "TPXBasAtiUpgradable.h"
#include "mem_AllocationOperators.h"

class TPXBasAtiRegistry;

/// Kept inside a placeholder primitive: which registry lists it, and where. The primitive's
/// destructor calls Leave, so a destroyed primitive is never visited by an upgrade pass,
/// whoever destroys it. A registry that goes away first (or expunges the primitive) unlinks
/// it, so Leave never reaches a destroyed registry.
class KLDTPXBAS_API TPXBasAtiRegistryLink {
 public:
  TPXBasAtiRegistryLink() = default;
  /// Takes self out of the registry that lists it, if any; afterwards the link is empty.
  void Leave(TPXBasAtiUpgradable* self);
  /// The registry that lists the primitive now, or null.
  const TPXBasAtiRegistry* Registry() const { return m_registry; }

 private:
  friend class TPXBasAtiRegistry;
  TPXBasAtiRegistryLink(const TPXBasAtiRegistryLink&) = delete;
  TPXBasAtiRegistryLink& operator=(const TPXBasAtiRegistryLink&) = delete;

  TPXBasAtiRegistry* m_registry = nullptr;
  unsigned int m_slot = 0;
};

/// Upgradable primitives in the order they were registered. The registry owns its arrays,
/// not the primitives. Positions are never reused: a primitive taken out leaves a null
/// entry. Not locked: it is used while the process is single-threaded.
class KLDTPXBAS_API TPXBasAtiRegistry : public mem_AllocationOperators {
 public:
  /// Room for 128 entries, all null.
  TPXBasAtiRegistry();
  /// Frees the arrays and unlinks the primitives still listed; they are not destroyed.
  ~TPXBasAtiRegistry();

  /// Appends p, growing by 128 entries when full (std::bad_alloc when that fails; the
  /// registry is then unchanged).
  void Register(TPXBasAtiUpgradable* p);
  /// Appends p and records its position in link, so that the primitive leaves on its own.
  void Register(TPXBasAtiUpgradable* p, TPXBasAtiRegistryLink& link);
  /// Every entry equal to p becomes null; the count stays.
  void Expunge(TPXBasAtiUpgradable* p);
  /// As Expunge, and destroys the primitive p is part of, once, through the virtual
  /// destructor of its interface (mutex, condition variable, barrier or atomic). A p that is
  /// none of these is only expunged.
  void Delete(TPXBasAtiUpgradable* p);
  /// Entry i; i must be below Count() (not checked).
  TPXBasAtiUpgradable* Get(int i) const { return m_entries[i]; }
  /// Number of entries appended so far, taken-out ones included.
  unsigned int Count() const { return m_count; }
  /// Number of entries the arrays hold before they grow.
  unsigned int Capacity() const { return m_capacity; }

 private:
  friend class TPXBasAtiRegistryLink;
  TPXBasAtiRegistry(const TPXBasAtiRegistry&) = delete;
  TPXBasAtiRegistry& operator=(const TPXBasAtiRegistry&) = delete;

  void Grow();
  void Clear(unsigned int slot);

  TPXBasAtiUpgradable** m_entries;
  unsigned int m_capacity;
  unsigned int m_count;
  TPXBasAtiRegistryLink** m_links;  // parallel to m_entries; null where nothing is linked
};

/// Walks a registry in registration order: First(), then while (!IsDone()) { CurrentValue();
/// Next(); }. Entries registered after First() are not visited. Not started, it is done.
class KLDTPXBAS_API TPXBasAtiRegistryIterator : public mem_AllocationOperators {
 public:
  /// An iterator over registry, which must outlive it; not started.
  explicit TPXBasAtiRegistryIterator(const TPXBasAtiRegistry& registry);
  /// Starts at the first entry and fixes the end at the registry's count now.
  void First();
  /// Whether the position is past the last entry to visit.
  bool IsDone() const;
  /// Moves to the next entry.
  void Next() { ++m_current; }
  /// The entry at the position (null for a taken-out one, and at the end). A position
  /// outside [0, count] is a broken invariant (fatal).
  TPXBasAtiUpgradable* CurrentValue();

 private:
  int m_current;
  unsigned int m_count;
  const TPXBasAtiRegistry* m_registry;
};

#endif  // TPXBASATIREGISTRY_H
