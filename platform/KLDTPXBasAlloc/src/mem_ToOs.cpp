// mem_ToOs.cpp: keeps the registered OS-string converter.
#include "mem_ToOs.h"

#include <atomic>

namespace {
std::atomic<TPXToOsBase*> g_converter{nullptr};
}

void mem_ToOs::Register(TPXToOsBase* converter) {
  g_converter.store(converter, std::memory_order_release);
}

TPXToOsBase* mem_ToOs::Registered() { return g_converter.load(std::memory_order_acquire); }
