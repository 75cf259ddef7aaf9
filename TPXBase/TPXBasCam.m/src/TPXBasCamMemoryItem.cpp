// TPXBasCamMemoryItem.cpp: the purgeable item base.
#include "TPXBasCamMemoryItem.h"

#include "TPXBasAtiMutex.h"
#include "TPXBasAtiThreadingModel.h"

#include <new>

TPXBasCamMemoryItem::TPXBasCamMemoryItem()
    : m_next(nullptr), m_prev(nullptr), m_mutex(TPXBasAtiThreadingModel::newMutex()), m_list(-1) {
  if (m_mutex == nullptr) throw std::bad_alloc();
}

TPXBasCamMemoryItem::~TPXBasCamMemoryItem() { delete m_mutex; }

unsigned int TPXBasCamMemoryItem::AllocSize() const { return 0; }
unsigned int TPXBasCamMemoryItem::BulkSize() const { return 0; }
unsigned int TPXBasCamMemoryItem::FreeBulkData() { return 0; }

void TPXBasCamMemoryItem::Lock() { m_mutex->Lock(); }
void TPXBasCamMemoryItem::Unlock() { m_mutex->Unlock(); }
int TPXBasCamMemoryItem::TryLock() { return m_mutex->TryLock(); }

void TPXBasCamMemoryItem::Link(TPXBasCamMemoryItem* first, TPXBasCamMemoryItem* second) {
  first->m_next = second;
  second->m_prev = first;
}

bool TPXBasCamMemoryItem::IsListed() {
  Lock();
  bool listed = m_next != nullptr;
  Unlock();
  return listed;
}
