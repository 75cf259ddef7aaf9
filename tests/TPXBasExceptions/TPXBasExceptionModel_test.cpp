// TPXBasExceptionModel_test.cpp: the default factory, replacing factories and the module's
// ownership of the model.
#include "KLDTPXBasCoreUtils.h"
#include "kld_TestSupport.h"

#include <gtest/gtest.h>
#include <string>
#include <typeinfo>

namespace {

/// A host's factory: throws its own type (a plain int) and counts its destruction.
class HostFactory : public TPXBasExceptionFactory {
 public:
  explicit HostFactory(int* destroyed) : m_destroyed(destroyed) {}
  ~HostFactory() override { ++*m_destroyed; }
  void throwPatternException(int offset, const char*) const override { throw offset; }
  void throwExecException(int count) const override { throw count; }

 private:
  int* m_destroyed;
};

/// Puts a fresh default factory back however a test ends.
struct RestoreDefault {
  ~RestoreDefault() { TPXBasExceptionModel::setBehavior(new TPXBasExcDefaultFactory); }
};

}  // namespace

TEST(TPXBasExceptionModelDefault, ThrowsNamingTheFactorysSourceFile) {
  try {
    TPXBasExceptionModel::throwExecException(5);
    FAIL() << "nothing thrown";
  } catch (const TPXBasExecException& e) {
    EXPECT_EQ(5, e.GetCount());
    EXPECT_STREQ("TPXBase/TPXBasExceptions.m/src/TPXBasExcDefaultFactory", e.GetFile());
  }
  try {
    TPXBasExceptionModel::throwPatternException(3, "missing )");
    FAIL() << "nothing thrown";
  } catch (const TPXBasPatternException& e) {
    EXPECT_EQ(3, e.GetOffset());
    EXPECT_STREQ("missing )", e.GetMsg());
    EXPECT_GT(e.GetLine(), 0);
  }
}

TEST(TPXBasExceptionModelFactory, ReplacingDeletesThePreviousExactlyOnce) {
  RestoreDefault restore;
  int firstDestroyed = 0;
  int secondDestroyed = 0;
  EXPECT_TRUE(TPXBasExceptionModel::setBehavior(new HostFactory(&firstDestroyed)));
  EXPECT_EQ(0, firstDestroyed);
  EXPECT_TRUE(TPXBasExceptionModel::setBehavior(new HostFactory(&secondDestroyed)));
  EXPECT_EQ(1, firstDestroyed);
  EXPECT_EQ(0, secondDestroyed);
  // The host's own type passes through the model untouched.
  EXPECT_THROW(TPXBasExceptionModel::throwExecException(11), int);
  EXPECT_THROW(TPXBasExceptionModel::throwPatternException(2, "x"), int);
  EXPECT_TRUE(TPXBasExceptionModel::setBehavior(nullptr));
  EXPECT_EQ(1, firstDestroyed);
  EXPECT_EQ(1, secondDestroyed);
  // With no factory the call is reported, not a null dereference.
  EXPECT_THROW(TPXBasExceptionModel::throwExecException(1), TPXBasAssertException);
}

TEST(TPXBasExceptionModelLifecycle, ModuleInstallsOwnsAndReleasesTheModel) {
  const char* name = typeid(TPXBasExceptionModelSingleton).name();
  int destroyed = 0;
  TPXBasExceptionModel::setBehavior(new HostFactory(&destroyed));
  EXPECT_TRUE(mem_Testing::RegistryHas(name));
  {
    kld_test::FreshLibrary fresh;  // last finalise: factory deleted, model unregistered
    EXPECT_EQ(1, destroyed);
    EXPECT_FALSE(mem_Testing::RegistryHas(name));
  }
  // The next first initialise installs a default factory again.
  EXPECT_THROW(TPXBasExceptionModel::throwExecException(1), TPXBasExecException);
  EXPECT_TRUE(mem_Testing::RegistryHas(name));
}
