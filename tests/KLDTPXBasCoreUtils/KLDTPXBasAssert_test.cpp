// The assertion report: message text as written, null extra texts, source path and line.
#include "KLDTPXBasCoreUtils.h"
#include "gtest/gtest.h"

#include <string>
#include <vector>

namespace {

static constexpr const char kAssertPath[] = "tests/KLDTPXBasCoreUtils/KLDTPXBasAssert_test";

template <class A, class B>
bool Same(A, B) {
  return std::is_same<A, B>::value;
}

TEST(KLDTPXBasAssert, PassingAssertionEvaluatesItsConditionOnce) {
  int evaluated = 0;
  KLD_ASSERT(++evaluated == 1);
  EXPECT_EQ(1, evaluated);
}

TEST(KLDTPXBasAssertDeathTest, ReportCarriesExpressionPathAndLine) {
  int ix = 7;
  std::vector<int> v(3);
  // Expression text as written, the fatal-error line format, and this file's path and line.
  const int line = __LINE__ + 1;
  EXPECT_DEATH(KLD_ASSERT(ix < static_cast<int>(v.size())),
               "^AssertionFailed:ix < static_cast<int>\\(v.size\\(\\)\\) "
               "\\[tests/KLDTPXBasCoreUtils/KLDTPXBasAssert_test:" +
                   std::to_string(line) + "\\]\n$");
  // A negated string literal keeps its quotes and exclamation mark; template commas survive.
  EXPECT_DEATH(KLD_ASSERT(!"atr_utf8: Invalid encoding value"),
               "AssertionFailed:!\"atr_utf8: Invalid encoding value\" \\[");
  EXPECT_DEATH(KLD_ASSERT(Same(1, 2L) && ix == 0),
               "AssertionFailed:Same\\(1, 2L\\) && ix == 0 \\[");
}

}  // namespace
