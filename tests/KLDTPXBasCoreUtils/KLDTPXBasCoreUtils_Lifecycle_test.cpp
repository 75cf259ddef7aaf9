// Lifecycle of the library: nesting, tallies, the order-sensitive specific count, the loader and
// plain entry points, and module counts that outlive a library finalise.
#include "KLDTPXBasCoreUtils.h"
#include "gtest/gtest.h"
#include "kld_TestSupport.h"

#include <clocale>
#include <string>

namespace {

// Library + three sibling libraries + seven modules + the library-specific count.
constexpr int kUnitsOfAFreshInitialise = 1 + 3 + 7 + 1;

using Hook = void (*)(int&);

struct Module {
  const char* name;
  Hook initialize;
  Hook finalize;
};

const Module kModules[] = {
    {"TPXBasString", TPXBasString_initialize, TPXBasString_finalize},
    {"TPXBasPrf", TPXBasPrf_initialize, TPXBasPrf_finalize},
    {"TPXBasExceptions", TPXBasExceptions_initialize, TPXBasExceptions_finalize},
    {"TPXBasCam", TPXBasCam_initialize, TPXBasCam_finalize},
    {"TPXBasAtr", TPXBasAtr_initialize, TPXBasAtr_finalize},
    {"TPXBasAti", TPXBasAti_initialize, TPXBasAti_finalize},
    {"TPXBasAio", TPXBasAio_initialize, TPXBasAio_finalize},
};

// Whether a unit is initialised, asked without changing it: a hook that is already up only
// nests and leaves the probe's tally alone.
bool IsUp(Hook initialize, Hook finalize) {
  int probe = 0;
  initialize(probe);
  bool up = probe == 0;
  finalize(probe);
  return up;
}

int ModulesUp() {
  int up = 0;
  for (const Module& m : kModules) up += IsUp(m.initialize, m.finalize) ? 1 : 0;
  return up;
}

TEST(KLDTPXBasLifecycle, FreshInitialiseCountsEveryUnitNestsAndTheLastFinaliseTearsDown) {
  kld_test::FreshLibrary fresh;
  ASSERT_EQ(0, ModulesUp());
  for (int start : {0, 41, -3}) {
    int tally = start;
    TPXBasCoreUtils_initialize(tally);
    EXPECT_EQ(start + kUnitsOfAFreshInitialise, tally);
    EXPECT_EQ(7, ModulesUp());
    EXPECT_TRUE(IsUp(TPXBasAlloc_initialize, TPXBasAlloc_finalize));
    EXPECT_TRUE(IsUp(TPXBasGenericsLib_initialize, TPXBasGenericsLib_finalize));
    EXPECT_TRUE(IsUp(TPXBasPrfTrkLib_initialize, TPXBasPrfTrkLib_finalize));
    TPXBasCoreUtils_initialize(tally);  // nests: same tally
    TPXBasCoreUtils_finalize(tally);    // back to one level: nothing torn down
    EXPECT_EQ(start + kUnitsOfAFreshInitialise, tally);
    EXPECT_EQ(7, ModulesUp());
    TPXBasCoreUtils_finalize(tally);
    EXPECT_EQ(start, tally);
    EXPECT_EQ(0, ModulesUp());
    EXPECT_FALSE(IsUp(TPXBasAlloc_initialize, TPXBasAlloc_finalize));
  }
}

TEST(KLDTPXBasLifecycle, InitialiseAfterCompleteFinaliseSetsTheLocaleAgain) {
  kld_test::ScopedEnv lcAll("LC_ALL", "C.UTF-8");
  kld_test::FreshLibrary fresh;
  for (int round = 0; round < 2; ++round) {
    std::setlocale(LC_CTYPE, "C");
    int tally = 0;
    TPXBasCoreUtils_initialize(tally);
    const char* now = std::setlocale(LC_CTYPE, nullptr);
    ASSERT_NE(nullptr, now);
    EXPECT_NE(std::string("C"), now)
        << "round " << round << ": LC_CTYPE not taken from the environment";
    TPXBasCoreUtils_finalize(tally);
  }
}

TEST(KLDTPXBasLifecycle, SpecificCountRaisedFirstKeepsItsOwnTallyContribution) {
  kld_test::FreshLibrary fresh;
  int hostTally = 0;
  TPXBasCoreUtils_specific_initialize(hostTally);
  EXPECT_EQ(1, hostTally);

  int tally = 0;
  TPXBasCoreUtils_initialize(tally);
  EXPECT_EQ(kUnitsOfAFreshInitialise - 1, tally);  // the specific count was already 1
  TPXBasCoreUtils_finalize(tally);
  EXPECT_EQ(0, tally);  // the specific count stays up: the host still holds it
  EXPECT_EQ(0, ModulesUp());

  TPXBasCoreUtils_specific_finalize(hostTally);
  EXPECT_EQ(0, hostTally);
  TPXBasCoreUtils_specific_initialize(hostTally);  // really back at 0: the tally rises again
  EXPECT_EQ(1, hostTally);
  TPXBasCoreUtils_specific_finalize(hostTally);
}

TEST(KLDTPXBasLifecycle, PlainEntryPointsAndLoaderNestOnOneLibraryCount) {
  kld_test::FreshLibrary fresh;  // the loader's own initialise is undone here
  for (unsigned long thread : {2ul, 3ul}) {
    EXPECT_EQ(1, DllMain(nullptr, thread, nullptr));
    EXPECT_EQ(0, ModulesUp()) << "thread notification " << thread << " must not initialise";
  }
  TPXBasCoreUtils_initializeC();
  EXPECT_EQ(7, ModulesUp());
  EXPECT_EQ(1, DllMain(nullptr, 1, nullptr));  // nests on the plain entry's initialise
  TPXBasCoreUtils_finalizeC();
  EXPECT_EQ(1, DllMain(nullptr, 3, nullptr));
  EXPECT_EQ(7, ModulesUp()) << "the loader still holds the library";
  EXPECT_EQ(1, DllMain(nullptr, 0, nullptr));
  EXPECT_EQ(0, ModulesUp());

  // Each entry keeps its own tally: a host tally is not touched by either.
  int tally = 0;
  TPXBasCoreUtils_initializeC();
  TPXBasCoreUtils_initialize(tally);
  EXPECT_EQ(0, tally);
  TPXBasCoreUtils_finalize(tally);
  TPXBasCoreUtils_finalizeC();
  EXPECT_EQ(0, ModulesUp());
}

TEST(KLDTPXBasLifecycle, ModuleHeldByTheHostSurvivesLibraryFinalise) {
  kld_test::FreshLibrary fresh;
  for (const Module& m : kModules) {
    int tally = 0;
    TPXBasCoreUtils_initialize(tally);
    int hostTally = 0;
    m.initialize(hostTally);
    EXPECT_EQ(0, hostTally) << m.name << " only nests";
    TPXBasCoreUtils_finalize(tally);
    EXPECT_EQ(1, tally) << m.name << " kept its tally contribution";
    EXPECT_TRUE(IsUp(m.initialize, m.finalize)) << m.name;
    EXPECT_EQ(1, ModulesUp()) << m.name;
    m.finalize(tally);
    EXPECT_EQ(0, tally) << m.name;
    EXPECT_FALSE(IsUp(m.initialize, m.finalize)) << m.name;
  }
}

}  // namespace
