// Registry, error stack and call-stack capture of the allocation stand-in.
#include "KLDTPXBasCoreUtils.h"
#include "gtest/gtest.h"

#include <cstring>
#include <string>

namespace {

TEST(omi_SingletonRegistry, AddReplaceRemoveAndDisable) {
  omi_SingletonRegistry* registry = omi_SingletonRegistry::Instance();
  ASSERT_NE(nullptr, registry);
  int a = 0, b = 0;
  EXPECT_EQ(0, registry->Add("test.registry", &a));
  EXPECT_EQ(0, registry->Add("test.registry", &b));  // replaces
  EXPECT_EQ(&b, registry->Find("test.registry"));
  EXPECT_TRUE(mem_Testing::RegistryHas("test.registry"));
  EXPECT_EQ(0, registry->Remove("test.registry"));
  EXPECT_EQ(-1, registry->Remove("test.registry"));
  EXPECT_FALSE(mem_Testing::RegistryHas("test.registry"));
  EXPECT_EQ(-1, registry->Add(nullptr, &a));
  EXPECT_FALSE(mem_Testing::RegistryHas(nullptr));

  mem_Testing::SetRegistryEnabled(false);
  EXPECT_EQ(nullptr, omi_SingletonRegistry::Instance());
  mem_Testing::SetRegistryEnabled(true);
  EXPECT_EQ(registry, omi_SingletonRegistry::Instance());
}

TEST(TPXBasErrorStack, PushKeepsTextsWhileActiveIsOnlyAFlag) {
  EXPECT_FALSE(TPXBasErrorStack::Active()) << "off until switched on";
  mem_Testing::SetErrorStackActive(true);
  EXPECT_TRUE(TPXBasErrorStack::Active());
  int depth = mem_Testing::ErrorStackDepth();
  TPXBasErrorStack::Push("one");
  TPXBasErrorStack::Push(nullptr);
  EXPECT_EQ(depth + 1, mem_Testing::ErrorStackDepth());
  mem_Testing::SetErrorStackActive(false);
}

TEST(TPXBasCallStack, CapturesBoundedTerminatedText) {
  TPXBasCallStack stack(10, nullptr);
  ASSERT_TRUE(stack.Available());
  std::string text = stack.CStr();
  EXPECT_EQ(0u, text.rfind("#0 0x", 0)) << text;
  int lines = 0;
  for (char c : text) lines += c == '\n';
  EXPECT_GE(lines, 1);
  EXPECT_LE(lines, 10);
  EXPECT_LT(text.size(), 4096u);

  TPXBasCallStack none(0, nullptr);
  EXPECT_FALSE(none.Available());
  EXPECT_STREQ("", none.CStr());
}

}  // namespace
