// TPXBasCamAllocationHolder.cpp: live allocations by id.
#include "TPXBasCamAllocationHolder.h"

template class TPXBasAtiGlobalSingleton<TPXBasCamAllocationHolder>;

TPXBasCamAllocationHolder::TPXBasCamAllocationHolder()
    : m_sizes(nullptr), m_capacity(0), m_file(nullptr) {}

TPXBasCamAllocationHolder::~TPXBasCamAllocationHolder() { mem_deleteBuiltIn(m_sizes); }

void TPXBasCamAllocationHolder::Resize(unsigned int id) {
  unsigned long long capacity = m_capacity;
  while (capacity <= id) capacity += 100;
  if (capacity > 0xFFFFFFFFull) capacity = 0xFFFFFFFFull;
  unsigned int* sizes = new (mem_BuiltInAlloc{}) unsigned int[capacity];
  for (unsigned int i = 0; i < m_capacity; ++i) sizes[i] = m_sizes[i];
  for (unsigned long long i = m_capacity; i < capacity; ++i) sizes[i] = kFree;
  mem_deleteBuiltIn(m_sizes);
  m_sizes = sizes;
  m_capacity = static_cast<unsigned int>(capacity);
}

void TPXBasCamAllocationHolder::Alloc(unsigned int id, unsigned int size) {
  if (id >= m_capacity) Resize(id);
  if (id < m_capacity) m_sizes[id] = size;
}

void TPXBasCamAllocationHolder::Free(unsigned int id, unsigned int size) {
  if (id >= m_capacity || m_sizes[id] != size) {
    std::fprintf(stderr, "allocation size doesn't match the free size\n");
    std::fflush(stderr);
  }
  if (id < m_capacity) m_sizes[id] = kFree;
}

void TPXBasCamAllocationHolder::Summary() {
  if (m_file == nullptr) return;
  unsigned int total = 0;
  for (unsigned int i = 0; i < m_capacity; ++i) {
    if (m_sizes[i] == kFree) continue;
    std::fprintf(m_file, "%d -- %d\n", static_cast<int>(i), static_cast<int>(m_sizes[i]));
    total += m_sizes[i];
  }
  std::fprintf(m_file, "total %f\n", total / 1024.0 / 1024.0);
  std::fflush(m_file);
}
