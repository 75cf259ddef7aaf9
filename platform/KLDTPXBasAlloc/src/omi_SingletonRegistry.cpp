// omi_SingletonRegistry.cpp: a real registry of singletons by type name.
#include "omi_SingletonRegistry.h"

#include "mem_Testing.h"

#include <atomic>
#include <map>
#include <mutex>
#include <string>

namespace {

struct RegistryState {
  std::mutex lock;
  std::map<std::string, void*> objects;
};

// Never destroyed: singletons finalised by the library's unload hook run after the static
// destructors of this library and must still find the registry.
RegistryState& State() {
  static RegistryState* state = new RegistryState;
  return *state;
}

std::atomic<bool> g_enabled{true};

}  // namespace

omi_SingletonRegistry* omi_SingletonRegistry::Instance() {
  static omi_SingletonRegistry registry;
  return g_enabled.load(std::memory_order_acquire) ? &registry : nullptr;
}

int omi_SingletonRegistry::Add(const char* name, void* object) {
  if (name == nullptr) return -1;
  RegistryState& state = State();
  std::lock_guard<std::mutex> guard(state.lock);
  state.objects[name] = object;
  return 0;
}

int omi_SingletonRegistry::Remove(const char* name) {
  if (name == nullptr) return -1;
  RegistryState& state = State();
  std::lock_guard<std::mutex> guard(state.lock);
  return state.objects.erase(name) == 1 ? 0 : -1;
}

void* omi_SingletonRegistry::Find(const char* name) const {
  if (name == nullptr) return nullptr;
  RegistryState& state = State();
  std::lock_guard<std::mutex> guard(state.lock);
  auto found = state.objects.find(name);
  return found == state.objects.end() ? nullptr : found->second;
}

void mem_Testing::SetRegistryEnabled(bool enabled) {
  g_enabled.store(enabled, std::memory_order_release);
}

bool mem_Testing::RegistryHas(const char* name) {
  if (name == nullptr) return false;
  RegistryState& state = State();
  std::lock_guard<std::mutex> guard(state.lock);
  return state.objects.count(name) != 0;
}
