// The allocation stand-in: failure injection reaches every allocating entry point, counts.
#include "KLDTPXBasCoreUtils.h"
#include "gtest/gtest.h"
#include "kld_TestSupport.h"

#include <cstring>
#include <new>

namespace {

// Whether one allocation succeeded; the block goes back.
bool Freed(void* p) {
  mem_Free(p);
  return p != nullptr;
}

// Whether one allocation through a throwing entry point succeeds.
template <void* (*Allocate)(std::size_t)>
bool Throwing(TPXBasMemAllocator&) {
  try {
    return Freed(Allocate(8));
  } catch (const std::bad_alloc&) {
    return false;
  }
}

TEST(mem_Alloc, FailureInjectionAllowsExactlyNThenFailsEveryEntryPoint) {
  TPXBasMemAllocator allocator;
  using A = TPXBasMemAllocator;
  const struct EntryPoint {
    const char* name;
    bool (*succeeds)(TPXBasMemAllocator&);
  } entries[] = {
      {"mem_Malloc", [](A&) { return Freed(mem_Malloc(8)); }},
      {"mem_Calloc", [](A&) { return Freed(mem_Calloc(2, 8)); }},
      {"mem_OperatorNewThrow", Throwing<mem_OperatorNewThrow>},
      {"mem_OperatorNewTinyThrow", Throwing<mem_OperatorNewTinyThrow>},
      {"mem_OperatorNewThrowBuiltin", Throwing<mem_OperatorNewThrowBuiltin>},
      {"Alloc", [](A& a) { return Freed(a.Alloc(8u)); }},
      {"allocate", [](A& a) { return Freed(a.allocate(8u, nullptr)); }},
      {"AllocDouble", [](A& a) { return Freed(a.AllocDouble(3)); }},
      {"AllocInt", [](A& a) { return Freed(a.AllocInt(3)); }},
  };
  for (const EntryPoint& e : entries) {
    kld_test::AllocationFailureGuard failAfterTwo(2);
    EXPECT_TRUE(e.succeeds(allocator)) << e.name << " first";
    EXPECT_TRUE(e.succeeds(allocator)) << e.name << " second";
    EXPECT_FALSE(e.succeeds(allocator)) << e.name << " third";
    EXPECT_FALSE(e.succeeds(allocator)) << e.name << " stays failed";
    mem_Testing::FailAllocationsAfter(-1);
    EXPECT_TRUE(e.succeeds(allocator)) << e.name << " after failing was turned off";
  }
}

TEST(mem_Alloc, AllocatorResultsAndEdgeArguments) {
  TPXBasMemAllocator allocator;
  unsigned int allocated = 99;
  void* block = allocator.Alloc(40u, allocated);
  ASSERT_NE(nullptr, block);
  EXPECT_EQ(40u, allocated);
  allocator.Free(block);
  {
    kld_test::AllocationFailureGuard failAll(0);
    EXPECT_EQ(nullptr, allocator.Alloc(40u, allocated));
    EXPECT_EQ(40u, allocated) << "left alone on failure";
  }
  EXPECT_EQ(nullptr, allocator.AllocInt(-1));
  EXPECT_EQ(nullptr, mem_Calloc(static_cast<std::size_t>(-1) / 2, 4)) << "overflowing product";
  TPXBasAllocator fallback;
  EXPECT_EQ(&fallback, &allocator.LargeBlockAllocator(fallback));
  void* zero = mem_OperatorNewThrow(0);  // a unique block, as operator new gives
  EXPECT_NE(nullptr, zero);
  mem_Free(zero);
  mem_Free(nullptr);
}

TEST(mem_Alloc, AcquireAndReleaseAreCounted) {
  long acquired = mem_Testing::AcquireCount();
  long released = mem_Testing::ReleaseCount();
  int block = 0;
  mem_Release(&block);
  mem_Acquire(&block);
  mem_Release(&block);
  EXPECT_EQ(acquired + 1, mem_Testing::AcquireCount());
  EXPECT_EQ(released + 2, mem_Testing::ReleaseCount());
}

TEST(mem_Alloc, SiblingLibrariesFollowTheTallyRule) {
  using Hook = void (*)(int&);
  const Hook pairs[][2] = {{TPXBasAlloc_initialize, TPXBasAlloc_finalize},
                           {TPXBasGenericsLib_initialize, TPXBasGenericsLib_finalize},
                           {TPXBasPrfTrkLib_initialize, TPXBasPrfTrkLib_finalize}};
  kld_test::FreshLibrary fresh;
  for (const auto& hooks : pairs) {
    int tally = 10;
    hooks[0](tally);
    hooks[0](tally);
    EXPECT_EQ(11, tally);
    hooks[1](tally);
    EXPECT_EQ(11, tally);
    hooks[1](tally);
    EXPECT_EQ(10, tally);
  }
}

}  // namespace
