// Plain singletons: lazily created, registered under their type name, finalised on request.
#include "KLDTPXBasCoreUtils.h"
#include "gtest/gtest.h"
#include "kld_TestSupport.h"

#include <typeinfo>

namespace {

class Probe : public omi_Singleton<Probe> {
 public:
  static int alive;
  int value = 5;

 private:
  friend class omi_Singleton<Probe>;
  friend class omi_SingletonBase<Probe>;
  Probe() { ++alive; }
  ~Probe() { --alive; }
};
int Probe::alive = 0;

class Other : public omi_Singleton<Other> {};

const char* ProbeName() { return typeid(Probe).name(); }

TEST(omi_Singleton, SameObjectUntilFinalizeThenAFreshOne) {
  Probe& first = omi_Singleton<Probe>::Instance();
  first.value = 9;
  EXPECT_EQ(&first, &omi_Singleton<Probe>::Instance());
  EXPECT_EQ(1, Probe::alive);
  EXPECT_TRUE(mem_Testing::RegistryHas(ProbeName()));
  EXPECT_FALSE(mem_Testing::RegistryHas(typeid(Other).name())) << "names differ per type";

  omi_SingletonBase<Probe>::Finalize();
  EXPECT_EQ(0, Probe::alive);
  EXPECT_FALSE(mem_Testing::RegistryHas(ProbeName()));
  omi_SingletonBase<Probe>::Finalize();  // twice: harmless
  EXPECT_EQ(0, Probe::alive);

  mem_Testing::SetRegistryEnabled(false);  // works all the same without a registry
  Probe& second = omi_Singleton<Probe>::Instance();
  EXPECT_EQ(5, second.value) << "a new object, not the old one";
  EXPECT_EQ(&second, &omi_Singleton<Probe>::Instance());
  omi_SingletonBase<Probe>::Finalize();
  EXPECT_EQ(0, Probe::alive);
  mem_Testing::SetRegistryEnabled(true);
  EXPECT_FALSE(mem_Testing::RegistryHas(ProbeName()));
}

TEST(omi_Singleton, FailedCreationLeavesNoInstanceBehind) {
  {
    kld_test::AllocationFailureGuard failAll(0);
    EXPECT_THROW(omi_Singleton<Probe>::Instance(), std::bad_alloc);
  }
  EXPECT_EQ(0, Probe::alive);
  EXPECT_FALSE(mem_Testing::RegistryHas(ProbeName()));
  Probe& p = omi_Singleton<Probe>::Instance();
  EXPECT_EQ(1, Probe::alive);
  EXPECT_EQ(&p, &omi_Singleton<Probe>::Instance());
  omi_SingletonBase<Probe>::Finalize();
}

}  // namespace
