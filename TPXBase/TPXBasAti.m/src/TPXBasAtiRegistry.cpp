// TPXBasAtiRegistry.cpp: the registry of issued placeholders, its iterator and links.
#include "TPXBasAtiRegistry.h"

#include "KLDTPXBasAssert.h"
#include "TPXBasAtiAtomicTemplate.h"
#include "TPXBasAtiBarrier.h"
#include "TPXBasAtiCondVar.h"
#include "TPXBasAtiMutex.h"
#include "mem_Alloc.h"

#include <cstdint>
#include <cstring>
#include <new>

static constexpr const char kAssertPath[] = "TPXBase/TPXBasAti.m/src/TPXBasAtiRegistry";

namespace {

constexpr unsigned long long kGrowth = 128;

// A zero-filled array of n pointers from the built-in allocation. A count whose size does not
// fit fails as an allocation failure instead of wrapping to a small block.
template <class P>
P** NewPointerArray(unsigned long long n) {
  if (n > 0xFFFFFFFFull || n > SIZE_MAX / sizeof(P*)) throw std::bad_alloc();
  const std::size_t bytes = static_cast<std::size_t>(n) * sizeof(P*);
  void* block = mem_OperatorNewThrowBuiltin(bytes);
  std::memset(block, 0, bytes);
  return static_cast<P**>(block);
}

// The primitive p is part of is reached through the interface it was issued as; each of them
// has a virtual destructor, whereas TPXBasAtiUpgradable has none.
void DestroyPrimitive(TPXBasAtiUpgradable* p) {
  if (auto* mutex = dynamic_cast<TPXBasAtiMutex*>(p))
    delete mutex;
  else if (auto* condVar = dynamic_cast<TPXBasAtiCondVar*>(p))
    delete condVar;
  else if (auto* barrier = dynamic_cast<TPXBasAtiBarrier*>(p))
    delete barrier;
  else if (auto* atomicU = dynamic_cast<TPXBasAtiAtomicTemplate<unsigned int>*>(p))
    delete atomicU;
  else if (auto* atomicI = dynamic_cast<TPXBasAtiAtomicTemplate<int>*>(p))
    delete atomicI;
  else if (auto* atomicD = dynamic_cast<TPXBasAtiAtomicTemplate<double>*>(p))
    delete atomicD;
}

}  // namespace

void TPXBasAtiRegistryLink::Leave(TPXBasAtiUpgradable* self) {
  if (TPXBasAtiRegistry* registry = m_registry) {
    if (m_slot < registry->m_count && registry->m_entries[m_slot] == self) registry->Clear(m_slot);
  }
  m_registry = nullptr;
}

TPXBasAtiRegistry::TPXBasAtiRegistry()
    : m_entries(NewPointerArray<TPXBasAtiUpgradable>(kGrowth)),
      m_capacity(static_cast<unsigned int>(kGrowth)),
      m_count(0),
      m_links(nullptr) {
  try {
    m_links = NewPointerArray<TPXBasAtiRegistryLink>(kGrowth);
  } catch (...) {
    mem_deleteBuiltIn(m_entries);
    throw;
  }
}

TPXBasAtiRegistry::~TPXBasAtiRegistry() {
  for (unsigned int i = 0; i < m_count; ++i)
    if (m_links[i] != nullptr) m_links[i]->m_registry = nullptr;
  mem_deleteBuiltIn(m_entries);
  mem_deleteBuiltIn(m_links);
  m_entries = nullptr;
  m_links = nullptr;
  m_capacity = 0;
  m_count = 0;
}

void TPXBasAtiRegistry::Grow() {
  const unsigned long long capacity = m_capacity + kGrowth;
  // Both arrays are made before either is replaced: a failure leaves the registry as it was.
  TPXBasAtiUpgradable** entries = NewPointerArray<TPXBasAtiUpgradable>(capacity);
  TPXBasAtiRegistryLink** links = nullptr;
  try {
    links = NewPointerArray<TPXBasAtiRegistryLink>(capacity);
  } catch (...) {
    mem_deleteBuiltIn(entries);
    throw;
  }
  std::memcpy(entries, m_entries, m_count * sizeof(*entries));
  std::memcpy(links, m_links, m_count * sizeof(*links));
  mem_deleteBuiltIn(m_entries);
  mem_deleteBuiltIn(m_links);
  m_entries = entries;
  m_links = links;
  m_capacity = static_cast<unsigned int>(capacity);
}

void TPXBasAtiRegistry::Register(TPXBasAtiUpgradable* p) {
  if (m_count == m_capacity) Grow();
  m_entries[m_count] = p;
  ++m_count;
}

void TPXBasAtiRegistry::Register(TPXBasAtiUpgradable* p, TPXBasAtiRegistryLink& link) {
  link.Leave(p);
  if (m_count == m_capacity) Grow();
  m_entries[m_count] = p;
  m_links[m_count] = &link;
  link.m_registry = this;
  link.m_slot = m_count;
  ++m_count;
}

void TPXBasAtiRegistry::Clear(unsigned int slot) {
  m_entries[slot] = nullptr;
  if (TPXBasAtiRegistryLink* link = m_links[slot]) {
    link->m_registry = nullptr;
    m_links[slot] = nullptr;
  }
}

void TPXBasAtiRegistry::Expunge(TPXBasAtiUpgradable* p) {
  if (p == nullptr) return;
  for (unsigned int i = 0; i < m_count; ++i)
    if (m_entries[i] == p) Clear(i);
}

void TPXBasAtiRegistry::Delete(TPXBasAtiUpgradable* p) {
  if (p == nullptr) return;
  Expunge(p);
  DestroyPrimitive(p);
}

TPXBasAtiRegistryIterator::TPXBasAtiRegistryIterator(const TPXBasAtiRegistry& registry)
    : m_current(-1), m_count(registry.Count()), m_registry(&registry) {}

void TPXBasAtiRegistryIterator::First() {
  m_count = m_registry->Count();
  m_current = 0;
}

bool TPXBasAtiRegistryIterator::IsDone() const {
  return static_cast<unsigned int>(m_current) >= m_count;
}

TPXBasAtiUpgradable* TPXBasAtiRegistryIterator::CurrentValue() {
  // The left test makes the mixed-sign comparison on the right exact.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wsign-compare"
  KLD_ASSERT(-1 < m_current && m_current <= m_count);
#pragma GCC diagnostic pop
  if (static_cast<unsigned int>(m_current) == m_count) return nullptr;
  return m_registry->Get(m_current);
}
