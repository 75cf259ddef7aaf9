// The unsynchronised atomic template: arithmetic, dispatch of the operators, identifiers.
#include "KLDTPXBasCoreUtils.h"
#include "gtest/gtest.h"

namespace {

// Overriding Increment/Decrement alone must change every operator built on them.
class Doubling : public TPXBasAtiAtomicTemplate<int> {
 public:
  Doubling() : TPXBasAtiAtomicTemplate<int>(1) {}
  int Increment(int delta) override { return m_value += 2 * delta; }
  int Decrement(int delta) override { return m_value -= 2 * delta; }
};

TEST(TPXBasAtiAtomicTemplate, OperatorsReturnTheNewValueThroughTheVirtualArithmetic) {
  TPXBasAtiAtomicTemplate<unsigned int> u(5), zero(0);
  EXPECT_EQ(6u, u++);
  EXPECT_EQ(7u, ++u);
  EXPECT_EQ(6u, u--);
  EXPECT_EQ(16u, u += 10);
  EXPECT_EQ(4294967295u, zero.Decrement(1)) << "unsigned wraps";
  TPXBasAtiAtomicTemplate<double> d(0.5);
  EXPECT_DOUBLE_EQ(1.5, ++d);
  EXPECT_DOUBLE_EQ(-0.5, d -= 2.0);

  Doubling twice;
  TPXBasAtiAtomicTemplate<int>& a = twice;
  const int expected[] = {3, 5, 3, 1, 7, 1};
  const int got[] = {a++, ++a, a--, --a, a += 3, a -= 3};
  for (int i = 0; i < 6; ++i) EXPECT_EQ(expected[i], got[i]) << "operator " << i;

  u = zero;
  EXPECT_EQ(4294967295u, static_cast<unsigned int>(u));
  EXPECT_EQ(407, u.id());
  EXPECT_EQ(407, a.TPXBasAtiAtomicTemplate<int>::id());
  EXPECT_EQ(407, d.id());
}

}  // namespace
