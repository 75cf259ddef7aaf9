// Purge lists: order of policies, purge amounts over one or all lists, removal, statistics.
#include "cam_TestSupport.h"

#include <string>
#include <vector>

namespace {

using TPXBasCamPurgeListTest = cam_test::FreshManager;

using cam_test::FreshManager;
using cam_test::LoggingItem;
using Log = std::vector<std::string>;

TEST_F(TPXBasCamPurgeListTest, PoliciesDecideThePurgeOrder) {
  TPXBasCamCacheManager& cm = Make();
  int list = cm.AddPurgeList(1);
  EXPECT_EQ(0, list);
  Log log;
  LoggingItem p(&log, "P", 1, 1), q(&log, "Q", 1, 1), r(&log, "R", 1, 1), s(&log, "S", 1, 1);
  LoggingItem g1(&log, "G1", 1, 1), g2(&log, "G2", 1, 1), none(&log, "N", 1, 1);
  cm.AddItem(list, TPXBasCamCacheAppend, &p, &p);
  cm.AddItem(list, TPXBasCamCacheAppend, &q, &q);
  cm.AddItem(list, TPXBasCamCacheAppend, &r, &r);
  cm.AddItem(list, TPXBasCamCachePrepend, &s, &s);
  TPXBasCamMemoryItem::Link(&g1, &g2);  // a group keeps its own order
  cm.AddItem(list, TPXBasCamCachePrepend, &g1, &g2);
  cm.AddItem(list, TPXBasCamCacheNone, &none, &none);
  EXPECT_FALSE(none.IsListed());
  EXPECT_EQ(6u, cm.Purge(-1, 100));
  EXPECT_EQ((Log{"G1", "G2", "S", "P", "Q", "R"}), log);
  for (LoggingItem* item : {&p, &q, &r, &s, &g1, &g2}) EXPECT_FALSE(item->IsListed());
  cm.AddItem(list, TPXBasCamCacheAppend, &p, &p);  // a purged item can be entered again
  EXPECT_TRUE(p.IsListed());
  EXPECT_TRUE(cm.RemoveItem(&p));
}

TEST_F(TPXBasCamPurgeListTest, PurgeTakesItemsUntilEnoughIsFreed) {
  TPXBasCamCacheManager& cm = Make();
  cm.AddPurgeList(2);
  Log log;
  LoggingItem empty1(&log, "e1", 0, 0), empty2(&log, "e2", 0, 0), full(&log, "f", 0, 5);
  LoggingItem rest(&log, "r", 0, 5);
  for (LoggingItem* item : {&empty1, &empty2, &full, &rest})
    cm.AddItem(0, TPXBasCamCacheAppend, item, item);
  EXPECT_EQ(5u, cm.Purge(-1, 1)) << "items freeing nothing are taken on the way";
  EXPECT_EQ((Log{"e1", "e2", "f"}), log);
  EXPECT_TRUE(rest.IsListed());
  EXPECT_EQ(0u, cm.Purge(1, 100)) << "list 1 is empty";
  EXPECT_EQ(5u, cm.Purge(0, 100)) << "list 0 means every list";
  EXPECT_EQ(0u, cm.Purge(-1, 100));
}

TEST_F(TPXBasCamPurgeListTest, PurgeVisitsListsInTheOrderArray) {
  TPXBasCamCacheManager& cm = Make();
  EXPECT_EQ(0, cm.AddPurgeList(2));
  EXPECT_EQ(2, cm.NumPurgeLists());
  Log log;
  LoggingItem a0(&log, "a0", 0, 10), b0(&log, "b0", 0, 10);
  LoggingItem a1(&log, "a1", 0, 10), b1(&log, "b1", 0, 10);
  cm.AddItem(0, TPXBasCamCacheAppend, &a0, &a0);
  cm.AddItem(0, TPXBasCamCacheAppend, &b0, &b0);
  cm.AddItem(1, TPXBasCamCacheAppend, &a1, &a1);
  cm.AddItem(1, TPXBasCamCacheAppend, &b1, &b1);
  EXPECT_EQ(10u, cm.Purge(1, 5)) << "list 1 only";
  EXPECT_EQ((Log{"a1"}), log);
  int* order = cm.PurgeOrder();
  order[0] = 1;
  order[1] = 0;
  EXPECT_EQ(30u, cm.Purge(-1, 25));
  EXPECT_EQ((Log{"a1", "b1", "a0", "b0"}), log) << "all of list 1, then list 0 from its front";
  EXPECT_EQ(2, cm.AddPurgeList(1)) << "later lists are appended to the order";
  EXPECT_EQ(2, cm.PurgeOrder()[2]);
}

TEST_F(TPXBasCamPurgeListTest, RemoveItemTakesAnItemOutOnce) {
  TPXBasCamCacheManager& cm = Make();
  cm.AddPurgeList(1);
  Log log;
  LoggingItem a(&log, "a", 0, 1), b(&log, "b", 0, 1), c(&log, "c", 0, 1), loose(&log, "l", 0, 1);
  for (LoggingItem* item : {&a, &b, &c}) cm.AddItem(0, TPXBasCamCacheAppend, item, item);
  EXPECT_TRUE(cm.RemoveItem(&b));
  EXPECT_FALSE(cm.RemoveItem(&b));
  EXPECT_FALSE(cm.RemoveItem(&loose));
  EXPECT_FALSE(cm.RemoveItem(nullptr));
  EXPECT_TRUE(cm.RemoveItem(&c)) << "the last item, next to the tail";
  EXPECT_EQ(1u, cm.Purge(-1, 10));
  EXPECT_EQ((Log{"a"}), log);
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
  TPXBasCamMemoryItem::Link(&a, &b);
  TPXBasCamMemoryItem::Link(&b, &c);
  cm.AddItem(0, TPXBasCamCacheAppend, &a, &c);
  unsigned int counters[2] = {99, 99};
  auto refresh = [&] {
    unsigned int mc, fl, *pc, *pm, *ps, *px, *lc, *lm, *bc, *bm, at;
    int np, nl, nb;
    cm.MemorySummary(mc, fl, np, pc, pm, ps, px, nl, lc, lm, nb, bc, bm, at);
    EXPECT_EQ(2, nl);
    counters[0] = lc[0];
    counters[1] = lc[1];
  };
  refresh();
  EXPECT_EQ(60u, counters[0]);
  EXPECT_EQ(0u, counters[1]);
  EXPECT_TRUE(cm.RemoveItem(&b));
  refresh();
  EXPECT_EQ(40u, counters[0]) << "removal lowers by the bulk size";
  EXPECT_EQ(16u, cm.Purge(-1, 100) - 40u);
  refresh();
  EXPECT_EQ(24u, counters[0]) << "purging lowers by the bytes freed";
  EXPECT_EQ(0u, counters[1]) << "an item entered before the stream never goes below 0";
  cm.SetDbFile(nullptr);
}

}  // namespace
