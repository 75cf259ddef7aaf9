// TPXBasAllocator.cpp: the shared-ownership allocator handle.
#include "TPXBasAllocator.h"

TPXBasAllocator::TPXBasAllocator(TPXBasAllocatorBase* allocator) : m_allocator(allocator) {
  if (m_allocator != nullptr) ++m_allocator->m_word;
}

TPXBasAllocator::TPXBasAllocator(const TPXBasAllocator& other) : m_allocator(other.m_allocator) {
  if (m_allocator != nullptr) ++m_allocator->m_word;
}

TPXBasAllocator& TPXBasAllocator::operator=(const TPXBasAllocator& other) {
  // Take the new reference first so that self-assignment never drops the last one.
  TPXBasAllocatorBase* taken = other.m_allocator;
  if (taken != nullptr) ++taken->m_word;
  Drop();
  m_allocator = taken;
  return *this;
}

TPXBasAllocator::~TPXBasAllocator() { Drop(); }

void TPXBasAllocator::Drop() {
  if (m_allocator != nullptr && --m_allocator->m_word == 0) delete m_allocator;
  m_allocator = nullptr;
}

void* TPXBasAllocator::Alloc(unsigned int size) const {
  return m_allocator != nullptr ? m_allocator->Alloc(size) : nullptr;
}

void TPXBasAllocator::Free(void* block) const {
  if (m_allocator != nullptr) m_allocator->Free(block);
}
