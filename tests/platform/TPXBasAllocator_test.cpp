// The allocator handle shares ownership: the last handle deletes the allocator exactly once.
#include "KLDTPXBasCoreUtils.h"
#include "gtest/gtest.h"

namespace {

class CountingAllocator : public TPXBasMemAllocator {
 public:
  explicit CountingAllocator(int* deletions) : m_deletions(deletions) {}
  ~CountingAllocator() override { ++*m_deletions; }
  void* Alloc(unsigned int size) override {
    ++calls;
    return TPXBasMemAllocator::Alloc(size);
  }
  using TPXBasMemAllocator::Alloc;
  int calls = 0;

 private:
  int* m_deletions;
};

TEST(TPXBasAllocator, CopiesShareTheLastOneDeletesAndEmptyHandlesGiveNothing) {
  int deletions = 0;
  auto* allocator = new CountingAllocator(&deletions);
  {
    TPXBasAllocator first(allocator);
    {
      TPXBasAllocator copy(first);
      TPXBasAllocator assigned;
      assigned = copy;
      TPXBasAllocator& alias = assigned;  // through an alias: compilers flag a literal one
      assigned = alias;                   // self-assignment keeps the reference
      void* block = assigned.Alloc(16);
      ASSERT_NE(nullptr, block);
      assigned.Free(block);
      EXPECT_EQ(1, allocator->calls);
      EXPECT_EQ(allocator, copy.Get());
    }
    EXPECT_EQ(0, deletions) << "first still holds it";
    TPXBasAllocator other(new CountingAllocator(&deletions));
    other = first;  // drops the only reference to the second allocator
    EXPECT_EQ(1, deletions);
  }
  EXPECT_EQ(2, deletions);

  TPXBasAllocator empty;  // holds nothing: gives nothing, ignores frees
  EXPECT_EQ(nullptr, empty.Alloc(8));
  empty.Free(nullptr);
}

}  // namespace
