// The unsynchronised atomic template: arithmetic, dispatch of the operators, identifiers.
#include "KLDTPXBasCoreUtils.h"
#include "gtest/gtest.h"

namespace {

TEST(TPXBasAtiAtomicTemplate, OperatorsReturnTheValueAfterTheChange) {
  TPXBasAtiAtomicTemplate<unsigned int> u(5);
  EXPECT_EQ(6u, u++);
  EXPECT_EQ(7u, ++u);
  EXPECT_EQ(6u, u--);
  EXPECT_EQ(5u, --u);
  EXPECT_EQ(15u, u += 10);
  EXPECT_EQ(12u, u -= 3);
  EXPECT_EQ(12u, static_cast<unsigned int>(u));

  TPXBasAtiAtomicTemplate<unsigned int> zero(0);
  EXPECT_EQ(4294967295u, zero.Decrement(1)) << "unsigned wraps";

  TPXBasAtiAtomicTemplate<int> i(-1);
  EXPECT_EQ(0, ++i);
  EXPECT_EQ(-5, i -= 5);

  TPXBasAtiAtomicTemplate<double> d(0.5);
  EXPECT_DOUBLE_EQ(1.5, ++d);
  EXPECT_DOUBLE_EQ(-0.5, d -= 2.0);
  EXPECT_DOUBLE_EQ(0.5, d++);
}

// An override of Increment/Decrement alone must change every operator built on them.
class Doubling : public TPXBasAtiAtomicTemplate<int> {
 public:
  Doubling() : TPXBasAtiAtomicTemplate<int>(1) {}
  int Increment(int delta) override { return m_value += 2 * delta; }
  int Decrement(int delta) override { return m_value -= 2 * delta; }
};

TEST(TPXBasAtiAtomicTemplate, OperatorsDispatchToTheVirtualArithmetic) {
  Doubling d;
  TPXBasAtiAtomicTemplate<int>& a = d;
  EXPECT_EQ(3, a++);
  EXPECT_EQ(5, ++a);
  EXPECT_EQ(3, a--);
  EXPECT_EQ(1, --a);
  EXPECT_EQ(7, a += 3);
  EXPECT_EQ(1, a -= 3);
}

TEST(TPXBasAtiAtomicTemplate, AssignmentCopiesTheValueAndIdIs407Everywhere) {
  TPXBasAtiAtomicTemplate<unsigned int> a(1), b(42);
  TPXBasAtiAtomicTemplate<unsigned int>& ref = (a = b);
  EXPECT_EQ(&a, &ref);
  EXPECT_EQ(42u, static_cast<unsigned int>(a));

  TPXBasAtiAtomicTemplate<int> i(0);
  TPXBasAtiAtomicTemplate<double> d(0);
  EXPECT_EQ(407, a.id());
  EXPECT_EQ(407, i.id());
  EXPECT_EQ(407, d.id());
}

}  // namespace
