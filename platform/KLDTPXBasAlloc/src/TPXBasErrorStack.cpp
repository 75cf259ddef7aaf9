// TPXBasErrorStack.cpp: error-text stack and call-stack capture with glibc's backtrace.
#include "TPXBasErrorStack.h"

#include "mem_Testing.h"

#include <atomic>
#include <cstdio>
#include <cstring>
#include <dlfcn.h>
#include <execinfo.h>
#include <mutex>
#include <string>
#include <vector>

namespace {

struct StackState {
  std::mutex lock;
  std::vector<std::string> texts;
};

StackState& State() {
  static StackState* state = new StackState;  // outlives the unload hook, see the registry
  return *state;
}

std::atomic<bool> g_active{false};

constexpr int kMostFrames = 64;

}  // namespace

bool TPXBasErrorStack::Active() { return g_active.load(std::memory_order_acquire); }

void TPXBasErrorStack::Push(const char* text) {
  if (text == nullptr) return;
  StackState& state = State();
  std::lock_guard<std::mutex> guard(state.lock);
  state.texts.emplace_back(text);
}

void mem_Testing::SetErrorStackActive(bool active) {
  g_active.store(active, std::memory_order_release);
}

int mem_Testing::ErrorStackDepth() {
  StackState& state = State();
  std::lock_guard<std::mutex> guard(state.lock);
  return static_cast<int>(state.texts.size());
}

TPXBasCallStack::TPXBasCallStack(int maxFrames, void* /*context*/) : m_frames(0), m_complete(0) {
  m_text[0] = '\0';
  if (maxFrames <= 0) return;
  void* frames[kMostFrames + 1];
  int wanted = maxFrames < kMostFrames ? maxFrames : kMostFrames;
  int got = backtrace(frames, wanted + 1);  // frame 0 is this constructor
  std::size_t used = 0;
  for (int i = 1; i < got; ++i) {
    Dl_info info;
    const char* symbol = "?";
    const char* object = "?";
    std::size_t offset = 0;
    if (dladdr(frames[i], &info) != 0) {
      if (info.dli_sname != nullptr) {
        symbol = info.dli_sname;
        offset = static_cast<const char*>(frames[i]) - static_cast<const char*>(info.dli_saddr);
      }
      if (info.dli_fname != nullptr) object = info.dli_fname;
    }
    int n = std::snprintf(m_text + used, sizeof(m_text) - used, "#%d %p %s+0x%zx (%s)\n", i - 1,
                          frames[i], symbol, offset, object);
    if (n < 0) break;
    if (static_cast<std::size_t>(n) >= sizeof(m_text) - used) {  // truncated: keep what fits
      used = sizeof(m_text) - 1;
      ++m_frames;
      break;
    }
    used += static_cast<std::size_t>(n);
    ++m_frames;
  }
  m_text[used] = '\0';
  m_complete = 1;
}

TPXBasCallStack::~TPXBasCallStack() = default;
