// Purge lists: order of policies, purge amounts over one or all lists, removal, statistics.
#include "cam_TestSupport.h"

namespace {

using TPXBasCamPurgeListTest = cam_test::FreshManager;
using cam_test::Log;
using cam_test::LoggingItem;

TEST_F(TPXBasCamPurgeListTest, PoliciesDecideThePurgeOrderAndRemovalTakesItemsOutOnce) {
  TPXBasCamCacheManager& cm = Make();
  int list = cm.AddPurgeList(1);
  Log log;
  LoggingItem p(&log, "P", 1, 1), q(&log, "Q", 1, 1), r(&log, "R", 1, 1), s(&log, "S", 1, 1),
      g1(&log, "G1", 1, 1), g2(&log, "G2", 1, 1), none(&log, "N", 1, 1), gone(&log, "X", 1, 1),
      last(&log, "L", 1, 1);
  for (LoggingItem* item : {&p, &gone, &q, &r, &last})
    cm.AddItem(list, TPXBasCamCacheAppend, item, item);
  cm.AddItem(list, TPXBasCamCachePrepend, &s, &s);
  TPXBasCamMemoryItem::Link(&g1, &g2);  // a group keeps its own order
  cm.AddItem(list, TPXBasCamCachePrepend, &g1, &g2);
  cm.AddItem(list, TPXBasCamCacheNone, &none, &none);
  EXPECT_TRUE(cm.RemoveItem(&gone));
  EXPECT_FALSE(cm.RemoveItem(&gone));
  EXPECT_FALSE(cm.RemoveItem(&none)) << "never entered";
  EXPECT_FALSE(cm.RemoveItem(nullptr));
  EXPECT_TRUE(cm.RemoveItem(&last)) << "the last item, next to the tail";
  EXPECT_EQ(6u, cm.Purge(-1, 100));
  EXPECT_EQ((Log{"G1", "G2", "S", "P", "Q", "R"}), log);
  EXPECT_FALSE(cm.RemoveItem(&p)) << "purged";
  cm.AddItem(list, TPXBasCamCacheAppend, &p, &p);  // a purged item can be entered again
  EXPECT_TRUE(cm.RemoveItem(&p));
}

TEST_F(TPXBasCamPurgeListTest, PurgeTakesItemsUntilEnoughIsFreedInTheListOrder) {
  TPXBasCamCacheManager& cm = Make();
  EXPECT_EQ(0, cm.AddPurgeList(2));
  Log log;
  LoggingItem e1(&log, "e1", 0, 0), e2(&log, "e2", 0, 0), a0(&log, "a0", 0, 10),
      b0(&log, "b0", 0, 10), a1(&log, "a1", 0, 10), b1(&log, "b1", 0, 10), c1(&log, "c1", 0, 10);
  for (LoggingItem* item : {&e1, &e2, &a0, &b0}) cm.AddItem(0, TPXBasCamCacheAppend, item, item);
  for (LoggingItem* item : {&a1, &b1, &c1}) cm.AddItem(1, TPXBasCamCacheAppend, item, item);
  EXPECT_EQ(10u, cm.Purge(-1, 1)) << "items freeing nothing are taken on the way";
  EXPECT_EQ((Log{"e1", "e2", "a0"}), log);
  EXPECT_EQ(10u, cm.Purge(1, 5)) << "list 1 only";
  cm.PurgeOrder()[0] = 1, cm.PurgeOrder()[1] = 0;
  EXPECT_EQ(30u, cm.Purge(0, 25)) << "list 0 means every list, in the order array's order";
  EXPECT_EQ((Log{"e1", "e2", "a0", "a1", "b1", "c1", "b0"}), log);
  EXPECT_EQ(0u, cm.Purge(-1, 100));
  EXPECT_EQ(2, cm.AddPurgeList(1)) << "later lists are appended to the order";
  EXPECT_EQ(3, cm.NumPurgeLists());
  EXPECT_EQ(2, cm.PurgeOrder()[2]);
}

TEST_F(TPXBasCamPurgeListTest, ListCountersFollowEntriesPurgesAndRemovals) {
  TPXBasCamCacheManager& cm = Make();
  cam_test::MemoryFile stats;
  cm.AddPurgeList(2);
  Log log;
  LoggingItem early(&log, "early", 40, 40);
  cm.AddItem(1, TPXBasCamCacheAppend, &early, &early);  // before the stream: not counted
  cm.SetDbFile(stats.get());
  LoggingItem a(&log, "a", 10, 7), b(&log, "b", 20, 8), c(&log, "c", 30, 9);
  TPXBasCamMemoryItem::Link(&a, &b), TPXBasCamMemoryItem::Link(&b, &c);
  cm.AddItem(0, TPXBasCamCacheAppend, &a, &c);
  auto counter = [&](int list) { return cam_test::Summary(cm).listCurrent[list]; };
  EXPECT_EQ(60u, counter(0));
  EXPECT_TRUE(cm.RemoveItem(&b));
  EXPECT_EQ(40u, counter(0)) << "removal lowers by the bulk size";
  EXPECT_EQ(56u, cm.Purge(-1, 100));
  EXPECT_EQ(24u, counter(0)) << "purging lowers by the bytes freed";
  EXPECT_EQ(0u, counter(1)) << "an item entered before the stream never goes below 0";
  cm.SetDbFile(nullptr);
}

}  // namespace
