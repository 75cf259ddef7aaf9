// The profiling interface answers every call; its only effect is the singleton's creation.
#include "KLDTPXBasCoreUtils.h"
#include "gtest/gtest.h"

#include <typeinfo>

namespace {

TEST(TPXBasPrfParamList, ChainedAddsStoreNothingAndReadsAreNeutral) {
  TPXBasPrfParamList list;
  char text[] = "phase";
  TPXBasPrfParamList& same = list.add(3).add(2.5).add(text).clear().add(7);
  EXPECT_EQ(&list, &same);
  EXPECT_EQ(0, list.intListLength());
  EXPECT_EQ(0, list.doubleListLength());
  EXPECT_EQ(0, list.stringListLength());
  EXPECT_EQ(0, list.getInt(7));
  EXPECT_EQ(0.0, list.getDouble(0));
  EXPECT_STREQ("N/A", list.getString(0));
  EXPECT_EQ(list.getString(0), TPXBasPrfParamList().getString(5)) << "one constant text";
}

TEST(TPXBasPrfAnalysis, FirstEntryPointCallCreatesTheRegisteredSingletonOnce) {
  const char* name = typeid(TPXBasPrfAnalysis).name();
  TPXBasAtiGlobalSingleton<TPXBasPrfAnalysis>::Finalize();
  EXPECT_FALSE(mem_Testing::RegistryHas(name));

  int a = 1, b = 2, c = 3, d = 4;
  tpxbasprfiterbegin(&a, &b, &c, &d);
  EXPECT_TRUE(mem_Testing::RegistryHas(name));
  TPXBasPrfAnalysis* first = &TPXBasAtiGlobalSingleton<TPXBasPrfAnalysis>::Instance();
  tpxbasprfiterend_(&a, &b, &c, &d);
  tpxbasprfiterbegin_(&a, &b, &c, &d);
  tpxbasprfiterend(&a, &b, &c, &d);
  EXPECT_EQ(first, &TPXBasAtiGlobalSingleton<TPXBasPrfAnalysis>::Instance());
  EXPECT_TRUE(a == 1 && b == 2 && c == 3 && d == 4) << "the arguments are only read";

  TPXBasAtiGlobalSingleton<TPXBasPrfAnalysis>::Finalize();
  EXPECT_FALSE(mem_Testing::RegistryHas(name));
  TPXBasAtiGlobalSingleton<TPXBasPrfAnalysis>::Finalize();  // twice: harmless

  // A Fortran caller never sees an exception: without memory for the singleton, or without
  // arguments, the calls record nothing, as they always do.
  mem_Testing::FailAllocationsAfter(0);
  tpxbasprfiterbegin(&a, &b, &c, &d);
  tpxbasprfiterend_(&a, &b, &c, &d);
  mem_Testing::FailAllocationsAfter(-1);
  EXPECT_FALSE(mem_Testing::RegistryHas(name));
  tpxbasprfiterbegin(nullptr, &b, &c, &d);
  tpxbasprfiterend(&a, &b, &c, nullptr);
  EXPECT_FALSE(mem_Testing::RegistryHas(name));

  VANTERA::ProfilingDomains::Initialize();
  EXPECT_EQ(nullptr, VANTERA::ProfilingDomains::Solver);
  EXPECT_EQ(nullptr, VANTERA::ProfilingDomains::Eloop);
  EXPECT_EQ(nullptr, VANTERA::ProfilingDomains::Output);
}

}  // namespace
