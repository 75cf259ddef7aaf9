// TPXBasMemCacheManager.cpp: remembers the live cache manager so the host can ask it to purge.
#include "TPXBasMemCacheManager.h"

#include <atomic>

namespace {
std::atomic<TPXBasMemCacheManager*> g_current{nullptr};
}

TPXBasMemCacheManager::TPXBasMemCacheManager() { g_current.store(this, std::memory_order_release); }

TPXBasMemCacheManager::~TPXBasMemCacheManager() {
  TPXBasMemCacheManager* self = this;
  g_current.compare_exchange_strong(self, nullptr, std::memory_order_acq_rel);
}

unsigned int TPXBasMemCacheManager::Purge(int, unsigned int) { return 0; }

TPXBasMemCacheManager* TPXBasMemCacheManager::Current() {
  return g_current.load(std::memory_order_acquire);
}
