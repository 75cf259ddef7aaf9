// cam_TestSupport.h: fixtures and items shared by the cache-manager suites.
#ifndef CAM_TESTSUPPORT_H
#define CAM_TESTSUPPORT_H

#include "KLDTPXBasCoreUtils.h"
#include "gtest/gtest.h"
#include "kld_TestSupport.h"

#include <cstdio>
#include <cstdlib>
#include <string>
#include <utility>
#include <vector>

namespace cam_test {

using Manager = TPXBasAtiGlobalSingleton<TPXBasCamCacheManager>;
using Log = std::vector<std::string>;

/// Every test starts from no manager and leaves none behind; Make() creates one under the
/// environment given (null: the variable is unset).
class FreshManager : public ::testing::Test {
 protected:
  void SetUp() override { Manager::Finalize(); }
  void TearDown() override {
    mem_Testing::FailAllocationsAfter(-1);
    Manager::Finalize();
  }
  static TPXBasCamCacheManager& Make(const char* bins = nullptr, const char* alignment = nullptr,
                                     const char* tolerance = nullptr) {
    kld_test::ScopedEnv b("KAL_CAM_NUMBER_OF_BINS", bins), a("KAL_CAM_MEMORY_ALIGNMENT", alignment),
        t("KAL_CAM_TRACKINGTOL", tolerance);
    return Manager::Instance();
  }
  static TPXBasCamPool* OnePool(TPXBasCamCacheManager& cm) {
    const char* names[] = {"p"};
    return cm.GetPool(cm.AddPools(1, names));
  }
};

/// An item that logs its name when purged and reports chosen sizes.
struct LoggingItem : TPXBasCamMemoryItem {
  LoggingItem(Log* l, const char* n, unsigned int b, unsigned int f)
      : log(l), name(n), bulk(b), freed(f) {}
  unsigned int BulkSize() const override { return bulk; }
  unsigned int FreeBulkData() override { return log->push_back(name), freed; }
  Log* log;
  const char* name;
  unsigned int bulk, freed;
};

/// An item whose bulk data is a block of a pool; purging gives it back to the pool.
struct PoolItem : TPXBasCamMemoryItem {
  PoolItem(TPXBasCamPool* p, unsigned int size) : pool(p), data(p->Alloc(size)) {}
  ~PoolItem() override { pool->Free(data); }
  unsigned int BulkSize() const override { return pool->AllocSize(data); }
  unsigned int FreeBulkData() override {
    return ++purges, pool->Free(std::exchange(data, nullptr));
  }
  TPXBasCamPool* pool;
  void* data;
  int purges = 0;
};

/// Counts OutOfMemory calls instead of printing.
struct CountingHandler : TPXBasCamMemoryErrorHandler {
  explicit CountingHandler(int* c) : calls(c) {}
  void OutOfMemory() override { ++*calls; }
  int* calls;
};

/// A memory stream for statistics output.
struct MemoryFile {
  char* buffer = nullptr;
  std::size_t size = 0;
  FILE* file = open_memstream(&buffer, &size);
  ~MemoryFile() { std::fclose(file), std::free(buffer); }
  FILE* get() const { return file; }
  std::string text() { return std::fflush(file), std::string(buffer, size); }
};

/// The fourteen outputs of MemorySummary.
struct Summary {
  unsigned int current, freeList, *poolCurrent, *poolAtMax, *poolStaged, *poolMax, *listCurrent,
      *listAtMax, *binCurrent, *binAtMax, allocsAtMax;
  int pools, lists, bins;
  explicit Summary(TPXBasCamCacheManager& cm) {
    cm.MemorySummary(current, freeList, pools, poolCurrent, poolAtMax, poolStaged, poolMax, lists,
                     listCurrent, listAtMax, bins, binCurrent, binAtMax, allocsAtMax);
  }
};

}  // namespace cam_test

#endif  // CAM_TESTSUPPORT_H
