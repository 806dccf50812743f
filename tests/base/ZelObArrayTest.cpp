#include <gtest/gtest.h>

#include <memory>
#include <vector>

#include "TestObjects.h"
#include "base/ZelException.h"
#include "base/ZelObArray.h"

namespace {

class ZelObArrayTest : public CLiveCountTest {
 protected:
  // Fills slots 0..values.size()-1; -1 leaves a slot null.
  static void Fill(CZelObArray& array, const std::vector<int>& values) {
    array.SetSize(static_cast<int>(values.size()));
    for (int i = 0; i < static_cast<int>(values.size()); ++i) {
      if (values[i] >= 0) array.SetAt(i, new CTestObj(values[i]));
    }
  }
};

// Growth past the capacity with the step chosen from the size: size / 8 within 4..1024.
TEST_F(ZelObArrayTest, GrowthStepFollowsSize) {
  // Steps: 1 and 3 raised to 4, exactly 4, 5, 1023, 1024, 2000 capped at 1024.
  // clang-format off
  struct TCase { int nSize; int nExpectedCapacity; };
  constexpr TCase kCases[] = {
      {8, 12}, {31, 35}, {32, 36}, {40, 45}, {8191, 9214}, {8192, 9216}, {16000, 17024}};
  // clang-format on
  for (const TCase& c : kCases) {
    SCOPED_TRACE(c.nSize);
    CZelObArray array;
    array.SetSize(c.nSize);
    EXPECT_EQ(c.nSize, array.GetCapacity());  // first allocation is exact
    EXPECT_EQ(c.nSize, array.GrowSize());
    EXPECT_EQ(c.nExpectedCapacity, array.GetCapacity());
    EXPECT_EQ(c.nSize + 1, array.GetSize());
  }
}

TEST_F(ZelObArrayTest, StoredStepAndLargeRequests) {
  CZelObArray array;
  array.SetSize(10, 100);
  EXPECT_EQ(100, array.GetGrowBy());
  array.SetSize(11);
  EXPECT_EQ(110, array.GetCapacity());
  array.SetSize(500);  // beyond capacity + step: exactly the request
  EXPECT_EQ(500, array.GetCapacity());
  array.SetSize(20);  // shrinking keeps the storage
  EXPECT_EQ(500, array.GetCapacity());
  array.FreeExtra();
  EXPECT_EQ(20, array.GetCapacity());
}

TEST_F(ZelObArrayTest, ResizingZeroesSlotsAndSetAtGrowAllocatesExactly) {
  CZelObArray array;
  Fill(array, {1, 2, 3, 4});
  array.Clear(2, 2);
  array.SetSize(2);
  array.SetSize(4);  // within the capacity: the old pointers must not reappear
  EXPECT_EQ((std::vector<int>{1, 2, -1, -1}), Values(array));
  array.Clear(0, 2);
  array.SetSize(0);
  EXPECT_EQ(nullptr, array.GetData());
  EXPECT_EQ(0, array.GetCapacity());
  array.SetAtGrow(5, new CTestObj(7));
  EXPECT_EQ(6, array.GetSize());
  EXPECT_EQ(6, array.GetCapacity());
  EXPECT_EQ((std::vector<int>{-1, -1, -1, -1, -1, 7}), Values(array));
}

TEST_F(ZelObArrayTest, InsertRemoveAppend) {
  CZelObArray array;
  Fill(array, {1, 2, 3});
  array.InsertAt(1, new CTestObj(9));
  EXPECT_EQ((std::vector<int>{1, 9, 2, 3}), Values(array));
  array.InsertAt(6, new CTestObj(8));  // past the end: grows
  EXPECT_EQ((std::vector<int>{1, 9, 2, 3, -1, -1, 8}), Values(array));
  array.InsertAt(0, nullptr, 2);
  EXPECT_EQ((std::vector<int>{-1, -1, 1, 9, 2, 3, -1, -1, 8}), Values(array));

  CZelObject* pTaken = array.GetAt(3);
  array.RemoveAt(3);
  delete pTaken;
  array.Clear(4, 100);
  array.RemoveAt(4, 100);  // clipped to the size
  EXPECT_EQ((std::vector<int>{-1, -1, 1, 2}), Values(array));
  array.Clear(0, 4);
  array.SetSize(0);

  CZelObArray other;
  Fill(other, {5, -1, 6});
  Fill(array, {1});
  EXPECT_EQ(1, array.Append(&other));
  array.InsertAt(1, &other);
  EXPECT_EQ((std::vector<int>{1, 5, -1, 6, 5, -1, 6}), Values(array));
  EXPECT_NE(other.GetAt(0), array.GetAt(1));  // clones, not shared objects

  std::unique_ptr<CZelObject> pClone(array.Clone());
  EXPECT_EQ(Values(array), Values(*static_cast<CZelObArray*>(pClone.get())));
}

// Block moves as used for inserting and deleting rows.
TEST_F(ZelObArrayTest, MoveRules) {
  struct TCase {
    const char* pszName;
    std::vector<int> before;
    int nDest, nSrc, nCount;
    std::vector<int> after;
  };
  // clang-format off
  const TCase kCases[] = {
      {"down, overlapping", {0, 1, 2, 3, 4, 5}, 1, 3, 3, {0, 3, 4, 5, -1, -1}},
      {"up, overlapping", {0, 1, 2, 3, 4, 5}, 2, 1, 3, {0, -1, 1, 2, 3, 5}},
      {"up, grows the array", {0, 1, 2}, 4, 1, 2, {0, -1, -1, -1, 1, 2}},
      // the source runs past the size: destination slots without a source are cleared
      {"down, short source", {0, 1, 2, 3, 4, 5, 6, 7}, 0, 6, 5, {6, 7, -1, -1, -1, 5, -1, -1}},
      {"source past the size", {0, 1, 2}, 0, 5, 2, {-1, -1, 2}},
      {"same place", {0, 1, 2}, 1, 1, 2, {0, 1, 2}},
  };
  // clang-format on
  for (const TCase& c : kCases) {
    SCOPED_TRACE(c.pszName);
    CZelObArray array;
    Fill(array, c.before);
    array.Move(c.nDest, c.nSrc, c.nCount);
    EXPECT_EQ(c.after, Values(array));
  }
}

TEST_F(ZelObArrayTest, MovePastLastIndexLosesSlots) {
  CZelObArray array;
  array.SetSize(65536);
  for (int i = 65520; i < 65536; ++i) array.SetAt(i, new CTestObj(i));
  const int nLive = CTestObj::s_nLive;
  array.Move(65530, 65520, 16);  // only 6 slots fit below 65536
  EXPECT_EQ(65536, array.GetSize());
  for (int i = 65520; i < 65526; ++i) EXPECT_EQ(nullptr, array.GetAt(i)) << i;
  for (int i = 65526; i < 65530; ++i) EXPECT_EQ(i, ValueAt(array, i));  // not moved
  for (int i = 65530; i < 65536; ++i) EXPECT_EQ(i - 10, ValueAt(array, i));
  EXPECT_EQ(nLive - 6, CTestObj::s_nLive);  // the overwritten destinations are deleted
}

TEST_F(ZelObArrayTest, InsertAndDeleteSlots) {
  CZelObArray array;
  Fill(array, {0, 1, 2, 3});
  array.Insert(1, 2);
  EXPECT_EQ((std::vector<int>{0, -1, -1, 1, 2, 3}), Values(array));
  array.Insert(8, 2);  // past the end: grows only
  EXPECT_EQ(10, array.GetSize());
  array.Delete(0, 3);
  EXPECT_EQ((std::vector<int>{1, 2, 3, -1, -1, -1, -1, -1, -1, -1}), Values(array));
  array.Shrink();
  EXPECT_EQ((std::vector<int>{1, 2, 3}), Values(array));

  // Inserting near the last index drops what would pass it.
  CZelObArray big;
  big.SetSize(65536);
  for (int i : {1, 2, 3}) big.SetAt(i == 3 ? 65533 : 65533 + i, new CTestObj(i));
  big.Insert(65534, 1);
  EXPECT_EQ(nullptr, big.GetAt(65534));
  EXPECT_EQ(1, ValueAt(big, 65535));
  EXPECT_EQ(3, ValueAt(big, 65533));
}

TEST_F(ZelObArrayTest, ShrinkDeletesEmptyObjects) {
  CZelObArray array;
  Fill(array, {5, 0, -1, -7, 4, 0});  // -7 becomes 0 when shrunk
  array.ShrinkArrayOfArrays();
  EXPECT_EQ((std::vector<int>{5, -1, -1, -1, 4}), Values(array));
  array.Shrink(-1);
  EXPECT_EQ(5, array.GetSize());
  array.Clear();
  EXPECT_TRUE(array.IsEmpty());
  EXPECT_EQ(0, array.GetCapacity());
}

TEST_F(ZelObArrayTest, CleanupStackDeletesTopFirst) {
  ASSERT_EQ(0, CZelObject::m_nCleanupObjects);
  for (int i = 0; i < CZelObject::kMaxCleanupObjects; ++i)
    CZelObject::SaveCleanupObject(new CTestObj(i));
  CZelObject* pKept = CZelObject::m_pCleanupObjects[CZelObject::kMaxCleanupObjects - 1];
  CZelObject::PopCleanupObject();  // not deleted
  EXPECT_EQ(m_nLiveBefore + CZelObject::kMaxCleanupObjects, CTestObj::s_nLive);
  CZelObject::CleanupObjects();
  EXPECT_EQ(0, CZelObject::m_nCleanupObjects);
  EXPECT_EQ(m_nLiveBefore + 1, CTestObj::s_nLive);
  delete pKept;
}

TEST_F(ZelObArrayTest, CopyContextNestsAndRestores) {
  auto *pBook1 = reinterpret_cast<CBookBase*>(0x1000),
       *pBook2 = reinterpret_cast<CBookBase*>(0x2000);
  auto *pSheet1 = reinterpret_cast<CSheetBase*>(0x10),
       *pSheet2 = reinterpret_cast<CSheetBase*>(0x20);
  CZelObject::PrepareForCopy(pSheet2, pSheet1, pBook2, pBook1);
  CZelObject::IncNoCopyBetweenBooks();
  EXPECT_FALSE(CZelObject::IsCopyBetweenBooks());
  EXPECT_FALSE(CZelObject::IsCopyBetweenSheets());
  CZelObject::DecNoCopyBetweenBooks();
  EXPECT_TRUE(CZelObject::IsCopyBetweenBooks());

  CZelObject::TCopyInfo backup;
  CZelObject::BackupCopyInfo(&backup);
  CZelObject::PrepareForCopy(pSheet1, pSheet2, pBook1, pBook1);  // same book, other sheet
  EXPECT_FALSE(CZelObject::IsCopyBetweenBooks());
  EXPECT_TRUE(CZelObject::IsCopyBetweenSheets());
  CZelObject::RestoreCopyInfo(backup);
  EXPECT_EQ(pSheet2, CZelObject::m_pDstSheet);
  EXPECT_TRUE(CZelObject::IsCopyBetweenBooks());

  CZelObject::EndCopy();
  EXPECT_FALSE(CZelObject::IsCopyProcessActive());
  EXPECT_FALSE(CZelObject::IsCopyBetweenSheets());
}

}  // namespace
