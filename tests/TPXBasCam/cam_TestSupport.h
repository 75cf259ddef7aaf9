// cam_TestSupport.h: fixtures and items shared by the cache-manager suites.
#ifndef CAM_TESTSUPPORT_H
#define CAM_TESTSUPPORT_H

#include "KLDTPXBasCoreUtils.h"
#include "gtest/gtest.h"
#include "kld_TestSupport.h"

#include <cstdio>
#include <cstdlib>
#include <string>
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
    kld_test::ScopedEnv b("KAL_CAM_NUMBER_OF_BINS", bins);
    kld_test::ScopedEnv a("KAL_CAM_MEMORY_ALIGNMENT", alignment);
    kld_test::ScopedEnv t("KAL_CAM_TRACKINGTOL", tolerance);
    return Manager::Instance();
  }
  static TPXBasCamPool* OnePool(TPXBasCamCacheManager& cm) {
    const char* names[] = {"p"};
    return cm.GetPool(cm.AddPools(1, names));
  }
};

/// An item that logs its purge and reports chosen sizes.
class LoggingItem : public TPXBasCamMemoryItem {
 public:
  LoggingItem(Log* log, std::string name, unsigned int bulk, unsigned int freed)
      : m_log(log), m_name(std::move(name)), m_bulk(bulk), m_freed(freed) {}
  unsigned int BulkSize() const override { return m_bulk; }
  unsigned int FreeBulkData() override {
    m_log->push_back(m_name);
    return m_freed;
  }

 private:
  Log* m_log;
  std::string m_name;
  unsigned int m_bulk, m_freed;
};

/// An item whose bulk data is a block of a pool; purging gives it back to the pool.
class PoolItem : public TPXBasCamMemoryItem {
 public:
  PoolItem(TPXBasCamPool* pool, unsigned int size) : m_pool(pool), m_data(pool->Alloc(size)) {}
  ~PoolItem() override { m_pool->Free(m_data); }
  unsigned int BulkSize() const override { return m_pool->AllocSize(m_data); }
  unsigned int FreeBulkData() override {
    unsigned int freed = m_pool->Free(m_data);
    m_data = nullptr;
    ++purges;
    return freed;
  }
  int purges = 0;

 private:
  TPXBasCamPool* m_pool;
  void* m_data;
};

/// Counts OutOfMemory calls instead of printing.
class CountingHandler : public TPXBasCamMemoryErrorHandler {
 public:
  explicit CountingHandler(int* calls) : m_calls(calls) {}
  void OutOfMemory() override { ++*m_calls; }

 private:
  int* m_calls;
};

/// A memory stream for statistics output.
class MemoryFile {
 public:
  MemoryFile() : m_file(open_memstream(&m_buffer, &m_size)) {}
  ~MemoryFile() {
    std::fclose(m_file);
    std::free(m_buffer);
  }
  FILE* get() const { return m_file; }
  std::string text() {
    std::fflush(m_file);
    return std::string(m_buffer, m_size);
  }

 private:
  char* m_buffer = nullptr;
  std::size_t m_size = 0;
  FILE* m_file;
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
