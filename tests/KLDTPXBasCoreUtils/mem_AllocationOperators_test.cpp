// The allocation operator families route through the host allocation service.
#include "KLDTPXBasCoreUtils.h"
#include "gtest/gtest.h"
#include "kld_TestSupport.h"

#include <cstring>
#include <new>

namespace {

struct HeapThing : mem_AllocationOperators {
  explicit HeapThing(int v) : value(v) {}
  int value;
};

struct TinyThing : mem_AllocationOperatorsTiny {
  char c = 'x';
};

TEST(mem_AllocationOperators, EveryFamilyDrawsFromTheService) {
  // With the service refusing, each family's allocation fails with std::bad_alloc: proof
  // that none of them goes to the standard heap behind its back.
  kld_test::AllocationFailureGuard failAll(0);
  EXPECT_THROW(delete new HeapThing(1), std::bad_alloc);
  EXPECT_THROW(delete new TinyThing, std::bad_alloc);
  EXPECT_THROW(delete[] new TinyThing[3], std::bad_alloc);
  EXPECT_THROW(mem_deleteBuiltIn(new (mem_BuiltInAlloc{}) int[4]), std::bad_alloc);
}

TEST(mem_AllocationOperators, PlacementZeroedArraysAndNullsStayStandard) {
  alignas(HeapThing) unsigned char storage[sizeof(HeapThing)];
  HeapThing* placed = new (storage) HeapThing(7);  // placement stays available
  EXPECT_EQ(static_cast<void*>(storage), static_cast<void*>(placed));
  HeapThing** table = new (mem_BuiltInAlloc{}) HeapThing*[3]();
  EXPECT_EQ(nullptr, table[2]);
  mem_deleteBuiltIn(table);
  mem_deleteBuiltIn(static_cast<char*>(nullptr));  // null is passed on and ignored
  delete static_cast<HeapThing*>(nullptr);
}

int g_handlerCalls = 0;
void CountingHandlerThatGivesUp() {
  ++g_handlerCalls;
  std::set_new_handler(nullptr);  // next round throws
}

TEST(mem_AllocationOperators, GlobalFormWithFileAndLineBehavesAsPlainNew) {
  void* block = operator new(64, 1, __FILE__, __LINE__);
  std::memset(block, 0xAB, 64);
  operator delete(block, 1, __FILE__, __LINE__);

  // Beyond any heap: the new-handler is consulted, and once it gives up, std::bad_alloc.
  g_handlerCalls = 0;
  std::new_handler previous = std::set_new_handler(CountingHandlerThatGivesUp);
  EXPECT_THROW(operator new[](static_cast<std::size_t>(-1) / 2, 1, "f", 1), std::bad_alloc);
  std::set_new_handler(previous);
  EXPECT_EQ(1, g_handlerCalls);
}

}  // namespace
