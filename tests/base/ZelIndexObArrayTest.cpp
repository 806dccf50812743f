#include <gtest/gtest.h>

#include <vector>

#include "TestObjects.h"
#include "base/ZelException.h"
#include "base/ZelIndexObArray.h"

namespace {

using ZelIndexObArrayTest = CLiveCountTest;

TEST_F(ZelIndexObArrayTest, EqualRecordsAreStoredOnce) {
  CZelIndexObArray pool;
  for (int v : {10, 11, 12, 13}) pool.MakeNewIndex(new CTestObj(v));
  const int nLive = CTestObj::s_nLive;
  EXPECT_EQ(3, pool.MakeNewIndex(new CTestObj(13)));
  EXPECT_EQ(nLive, CTestObj::s_nLive);  // the duplicate was deleted
  EXPECT_EQ(4, pool.GetSize());
  EXPECT_EQ(4, pool.MakeNewIndex(new CTestObj(14)));
  CTestObj probe(12);
  EXPECT_EQ(2, pool.FindIndex(&probe));
  CTestObj missing(99);
  EXPECT_EQ(-1, pool.FindIndex(&missing));
}

// A pool of maxIndex + 1 entries is full: a new record is deleted and error 3 thrown,
// an equal record still finds its entry.
TEST_F(ZelIndexObArrayTest, FullPoolThrows) {
  CZelIndexObArray pool(3);
  for (int v = 0; v < 4; ++v) EXPECT_EQ(v, pool.MakeNewIndex(new CTestObj(v)));
  EXPECT_TRUE(pool.IsFull());
  EXPECT_EQ(2, pool.MakeNewIndex(new CTestObj(2)));
  try {
    pool.MakeNewIndex(new CTestObj(4));
    ADD_FAILURE() << "no exception";
  } catch (const CZelException& e) {
    EXPECT_EQ(CZelException::errMemory, e.get_ErrorNum());
  }
  EXPECT_EQ(4, pool.GetSize());
  EXPECT_EQ(m_nLiveBefore + 4, CTestObj::s_nLive);
}

TEST_F(ZelIndexObArrayTest, CopyIndexBetweenPools) {
  CZelIndexObArray src, dst(65535, 15);
  for (int v : {1, 2, 3}) src.MakeNewIndex(new CTestObj(v));
  dst.MakeNewIndex(new CTestObj(3));
  EXPECT_EQ(1, src.GetCopyIndex(&src, 1));  // same pool: unchanged
  EXPECT_EQ(0, dst.GetCopyIndex(&src, 2));  // equal entry exists
  EXPECT_EQ(1, dst.GetCopyIndex(&src, 0));  // cloned in
  EXPECT_NE(src.GetAt(0), dst.GetAt(1));
  EXPECT_EQ(15, dst.GetCopyIndex(&src, 3));     // not held: the pool's default
  EXPECT_EQ(7, dst.GetCopyIndex(&src, -1, 7));  // or the caller's
  EXPECT_EQ(2, dst.GetSize());
}

// Renumbering: unclaimed entries from start on go, claimed ones move down in order,
// and owners rewrite their indexes through GetNewIndex in between.
TEST_F(ZelIndexObArrayTest, CompactionRenumbers) {
  CZelIndexObArray pool;
  for (int v = 0; v < 8; ++v) pool.MakeNewIndex(new CTestObj(100 + v));
  std::vector<int> refs = {0, 6, 2, 6, 7, 1};  // indexes stored by "cells"

  pool.PrepareNewIndex(2);
  for (int r : refs) pool.GetAt(r)->SetUsedNewIndex();
  ASSERT_TRUE(pool.NeedsCompacting(2));
  for (int& r : refs) r = pool.GetAt(r)->GetNewIndex();
  pool.Compact(2);

  // 0 and 1 lie before start and keep their places; 3, 4 and 5 were unclaimed.
  EXPECT_EQ((std::vector<int>{100, 101, 102, 106, 107}), Values(pool));
  EXPECT_EQ((std::vector<int>{0, 3, 2, 3, 4, 1}), refs);
  for (int i = 0; i < pool.GetSize(); ++i) {
    EXPECT_TRUE(pool.GetAt(i)->IsUsedNewIndex());
    EXPECT_EQ(i, pool.GetAt(i)->GetNewIndex());
  }
}

TEST_F(ZelIndexObArrayTest, NoCompactionWhenAllClaimed) {
  CZelIndexObArray pool;
  for (int v = 0; v < 4; ++v) pool.MakeNewIndex(new CTestObj(v));
  pool.PrepareNewIndex(1);
  EXPECT_TRUE(pool.GetAt(3)->IsDefNewIndex());
  EXPECT_FALSE(pool.GetAt(0)->IsDefNewIndex());  // before start: untouched
  for (int i = 1; i < 4; ++i) pool.GetAt(i)->SetUsedNewIndex();
  EXPECT_FALSE(pool.NeedsCompacting(1));

  // Everything from start on unclaimed: compaction empties that part.
  pool.PrepareNewIndex(1);
  EXPECT_TRUE(pool.NeedsCompacting(1));
  pool.Compact(1);
  EXPECT_EQ((std::vector<int>{0}), Values(pool));
  pool.PrepareNewIndex(0);
  pool.Compact(0);
  EXPECT_EQ(0, pool.GetSize());
}

}  // namespace
