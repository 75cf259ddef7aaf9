// TPXBasCamPurgeList.cpp: purge lists with a lock per item.
#include "TPXBasCamPurgeList.h"

#include "TPXBasAtiMutex.h"
#include "TPXBasAtiThreadingModel.h"

#include <cstring>
#include <new>

namespace {

// Grows a built-in array to n entries, copying the first old ones; the old array stays
// until the caller frees it, so a failure changes nothing.
template <class T>
T* Grown(T* old, int oldCount, int n) {
  T* made = new (mem_BuiltInAlloc{}) T[n];
  if (oldCount > 0) std::memcpy(made, old, sizeof(T) * static_cast<unsigned int>(oldCount));
  return made;
}

}  // namespace

TPXBasCamPurgeList::TPXBasCamPurgeList(int)
    : m_heads(nullptr),
      m_tails(nullptr),
      m_count(0),
      m_order(nullptr),
      m_dbFile(nullptr),
      m_mutex(TPXBasAtiThreadingModel::newMutex()),
      m_counters(nullptr) {
  if (m_mutex == nullptr) throw std::bad_alloc();
}

TPXBasCamPurgeList::~TPXBasCamPurgeList() {
  for (int i = 0; i < m_count; ++i) {
    delete m_heads[i];
    delete m_tails[i];
  }
  mem_deleteBuiltIn(m_heads);
  mem_deleteBuiltIn(m_tails);
  mem_deleteBuiltIn(m_order);
  mem_deleteBuiltIn(m_counters);
  delete m_mutex;
}

int TPXBasCamPurgeList::Add(int n) {
  int old = m_count;
  if (n < 1) return old;
  int total = old + n;
  // Everything is made before anything is replaced: a failure leaves the lists as they were.
  TPXBasCamMemoryItem** heads = nullptr;
  TPXBasCamMemoryItem** tails = nullptr;
  int* order = nullptr;
  unsigned int* counters = nullptr;
  bool sentinels = false;
  try {
    heads = Grown(m_heads, old, total);
    tails = Grown(m_tails, old, total);
    order = Grown(m_order, old, total);
    if (m_counters != nullptr) {
      counters = Grown(m_counters, old, total);
      for (int i = old; i < total; ++i) counters[i] = 0;
    }
    for (int i = old; i < total; ++i) heads[i] = tails[i] = nullptr;
    sentinels = true;
    for (int i = old; i < total; ++i) {
      heads[i] = new TPXBasCamMemoryItem;
      tails[i] = new TPXBasCamMemoryItem;
      TPXBasCamMemoryItem::Link(heads[i], tails[i]);
      order[i] = i;
    }
  } catch (...) {
    if (sentinels) {
      for (int i = old; i < total; ++i) {
        delete heads[i];
        delete tails[i];
      }
    }
    mem_deleteBuiltIn(heads);
    mem_deleteBuiltIn(tails);
    mem_deleteBuiltIn(order);
    mem_deleteBuiltIn(counters);
    throw;
  }
  mem_deleteBuiltIn(m_heads);
  mem_deleteBuiltIn(m_tails);
  mem_deleteBuiltIn(m_order);
  m_heads = heads;
  m_tails = tails;
  m_order = order;
  if (counters != nullptr) {
    mem_deleteBuiltIn(m_counters);
    m_counters = counters;
  }
  m_count = total;
  return old;
}

void TPXBasCamPurgeList::AddGroupedItem(int list, TPXBasCamCachePolicyEnm policy,
                                        TPXBasCamMemoryItem* first, TPXBasCamMemoryItem* last) {
  if (policy == TPXBasCamCacheNone || first == nullptr || last == nullptr) return;
  if (m_dbFile != nullptr && m_counters != nullptr) {
    m_mutex->Lock();
    for (TPXBasCamMemoryItem* item = first;; item = item->m_next) {
      item->m_list = list;
      m_counters[list] += item->BulkSize();
      if (item == last) break;
    }
    m_mutex->Unlock();
  }
  if (policy == TPXBasCamCacheAppend) {
    TPXBasCamMemoryItem* tail = m_tails[list];
    tail->Lock();
    TPXBasCamMemoryItem* before = tail->m_prev;  // towards the front: waiting is allowed
    before->Lock();
    before->m_next = first;
    first->m_prev = before;
    last->m_next = tail;
    tail->m_prev = last;
    before->Unlock();
    tail->Unlock();
    return;
  }
  TPXBasCamMemoryItem* head = m_heads[list];
  head->Lock();
  TPXBasCamMemoryItem* after = head->m_next;
  while (after->TryLock() == 0) {  // towards the end: only try, and start again
    head->Unlock();
    head->Lock();
    after = head->m_next;
  }
  head->m_next = first;
  first->m_prev = head;
  last->m_next = after;
  after->m_prev = last;
  after->Unlock();
  head->Unlock();
}

bool TPXBasCamPurgeList::RemoveItem(TPXBasCamMemoryItem* item) {
  if (item == nullptr) return false;
  item->Lock();
  TPXBasCamMemoryItem* next = item->m_next;
  for (;;) {
    if (next == nullptr) {
      item->Unlock();
      return false;
    }
    if (next->TryLock() != 0) break;
    item->Unlock();
    item->Lock();
    next = item->m_next;
  }
  TPXBasCamMemoryItem* prev = item->m_prev;  // stable: only a holder of item's lock changes it
  prev->Lock();
  prev->m_next = next;
  next->m_prev = prev;
  next->Unlock();
  prev->Unlock();
  if (m_dbFile != nullptr && m_counters != nullptr && item->m_list >= 0 && item->m_list < m_count) {
    unsigned int bulk = item->BulkSize();
    m_mutex->Lock();
    unsigned int& counter = m_counters[item->m_list];
    counter = counter > bulk ? counter - bulk : 0;
    m_mutex->Unlock();
  }
  item->m_next = nullptr;
  item->m_prev = nullptr;
  item->Unlock();
  return true;
}

unsigned int TPXBasCamPurgeList::PurgeOne(int list, unsigned int wanted) {
  TPXBasCamMemoryItem* head = m_heads[list];
  TPXBasCamMemoryItem* tail = m_tails[list];
  unsigned int freed = 0;
  while (freed < wanted) {
    head->Lock();
    TPXBasCamMemoryItem* item = head->m_next;
    if (item->TryLock() == 0) {
      head->Unlock();
      continue;
    }
    if (item == tail) {
      head->Unlock();
      tail->Unlock();
      break;
    }
    TPXBasCamMemoryItem* next = item->m_next;
    if (next->TryLock() == 0) {
      head->Unlock();
      item->Unlock();
      continue;
    }
    head->m_next = next;
    next->m_prev = head;
    head->Unlock();
    next->Unlock();
    freed += item->FreeBulkData();
    item->m_next = nullptr;
    item->m_prev = nullptr;
    item->Unlock();
  }
  return freed;
}

void TPXBasCamPurgeList::Lower(int list, unsigned int bytes) {
  if (m_dbFile == nullptr || m_counters == nullptr || bytes == 0) return;
  m_mutex->Lock();
  unsigned int& counter = m_counters[list];
  counter = counter > bytes ? counter - bytes : 0;
  m_mutex->Unlock();
}

unsigned int TPXBasCamPurgeList::Purge(int list, unsigned int bytes) {
  if (list > 0) {
    if (list >= m_count) return 0;
    unsigned int freed = PurgeOne(list, bytes);
    Lower(list, freed);
    return freed;
  }
  unsigned int total = 0;
  for (int i = 0; i < m_count && total < bytes; ++i) {
    int which = m_order[i];
    if (which < 0 || which >= m_count) continue;  // a rearranged order may hold anything
    unsigned int freed = PurgeOne(which, bytes - total);
    Lower(which, freed);
    total += freed;
  }
  return total;
}

void TPXBasCamPurgeList::MemoryCurrent(unsigned int* counters) {
  if (m_dbFile == nullptr || m_counters == nullptr || counters == nullptr) return;
  m_mutex->Lock();
  if (m_count > 0)
    std::memcpy(counters, m_counters, sizeof(unsigned int) * static_cast<unsigned int>(m_count));
  m_mutex->Unlock();
}

void TPXBasCamPurgeList::SetDbFile(FILE* file) {
  if (file != nullptr && m_counters == nullptr) {
    unsigned int* counters = new (mem_BuiltInAlloc{}) unsigned int[m_count > 0 ? m_count : 1];
    for (int i = 0; i < m_count; ++i) counters[i] = 0;
    m_counters = counters;
  }
  m_dbFile = file;
}
