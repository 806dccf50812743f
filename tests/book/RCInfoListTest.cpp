// Row and column information lists, cross-checked against a plain per-index model.
#include <gtest/gtest.h>

#include <random>
#include <vector>

#include "book/RCInfoList.h"

namespace {

// One record per index: the fields a run carries.
struct TModelEntry {
  unsigned short wSize;
  unsigned short wFormat;
  bool bHidden;
  int nLevel;
  bool operator==(const TModelEntry&) const = default;
};

void ExpectSameAsModel(const CRCInfoList& list, const std::vector<TModelEntry>& model) {
  ASSERT_TRUE(list.Verify());
  int nRuns = 0;
  const CRCInfoItem* pPrev = nullptr;
  for (const CRCInfoItem* p = list.GetFirstInfo(); p; p = p->GetNext(), ++nRuns) {
    // Equal neighbours are joined: a list never holds two equal runs side by side.
    if (pPrev) {
      EXPECT_FALSE(pPrev->HasSameFields(*p)) << "runs at " << p->GetFirst();
    }
    pPrev = p;
  }
  int nModelRuns = 1;
  for (size_t i = 0; i < model.size(); ++i) {
    const TModelEntry got{list.GetSize(static_cast<int>(i)), list.GetFormat(static_cast<int>(i)),
                          list.IsHidden(static_cast<int>(i)), list.GetLevel(static_cast<int>(i))};
    ASSERT_EQ(model[i], got) << "index " << i;
    if (i > 0 && !(model[i] == model[i - 1])) ++nModelRuns;
  }
  // Joined runs can still differ in marks the model does not track (default size).
  EXPECT_GE(nRuns, nModelRuns);
}

TEST(RCInfoList, FreshListIsOneDefaultRun) {
  CRCInfoList list;
  list.Init(65535, 255, true, 300, false);
  EXPECT_EQ(1, list.GetItems());
  EXPECT_EQ(0, list.GetFirstInfo()->GetFirst());
  EXPECT_EQ(65535, list.GetFirstInfo()->GetLast());
  EXPECT_EQ(255, list.GetSize(65535));
  EXPECT_EQ(0, list.GetSize(65536));
  EXPECT_EQ(nullptr, list.GetInfo(-1));
  EXPECT_EQ(255, list.GetMostOftenSize());
}

TEST(RCInfoList, RandomEditsMatchPerIndexModel) {
  constexpr int kLast = 299;
  CRCInfoList list;
  list.Init(kLast, 100, false, 10, false);
  std::vector<TModelEntry> model(kLast + 1, TModelEntry{100, 15, false, 0});
  std::mt19937 rng(20240601);
  auto pick = [&](int nMax) { return std::uniform_int_distribution<int>(0, nMax)(rng); };
  for (int nStep = 0; nStep < 2000; ++nStep) {
    // Spans may reach past the axis on either side: they are clipped.
    int a = pick(kLast + 20) - 10, b = a + pick(40);
    const int nFirst = std::max(a, 0), nLast = std::min(b, kLast);
    auto each = [&](auto fnSet) {
      for (int i = nFirst; i <= nLast; ++i) fnSet(model[i]);
    };
    const int nOp = pick(5);
    if (nOp == 0) {
      const auto w = static_cast<unsigned short>(90 + pick(3) * 10);
      list.SetSize(a, b, w);
      each([w](TModelEntry& e) { e.wSize = w; });
    } else if (nOp == 1) {
      const bool bHidden = pick(1) != 0;
      list.SetHidden(a, b, bHidden);
      each([bHidden](TModelEntry& e) { e.bHidden = bHidden; });
    } else if (nOp == 2) {
      const auto w = static_cast<unsigned short>(15 + pick(2));
      list.SetFormat(a, b, w);
      each([w](TModelEntry& e) { e.wFormat = w; });
    } else if (nOp == 3) {
      const int nDelta = pick(4) - 2;
      list.IncLevelInfo(a, b, nDelta);
      each([nDelta](TModelEntry& e) { e.nLevel = std::clamp(e.nLevel + nDelta, 0, 7); });
    } else if (nOp == 4) {
      list.SetDefSize(a, b);
      each([](TModelEntry& e) { e.wSize = 100; });
    } else {
      const int nTo = pick(kLast), nFrom = pick(kLast), nCount = pick(30) + 1;
      list.Move(nTo, nFrom, nCount);
      const int n = std::min({nCount, kLast - nTo + 1, kLast - nFrom + 1});
      if (nTo != nFrom && n > 0) {
        std::vector<TModelEntry> moved(model.begin() + nFrom, model.begin() + nFrom + n);
        for (int i = nFrom; i < nFrom + n; ++i)
          if (i < nTo || i >= nTo + n) model[i] = TModelEntry{100, 15, false, 0};
        std::copy(moved.begin(), moved.end(), model.begin() + nTo);
      }
    }
    if (nStep % 50 == 0 || nStep == 1999) {
      SCOPED_TRACE(nStep);
      ExpectSameAsModel(list, model);
      if (HasFailure()) return;
    }
  }
}

TEST(RCInfoList, HiddenAndZeroSizeAreBothInvisible) {
  CRCInfoList list;
  list.Init(99, 20, false, 10, false);
  list.SetHidden(10, 10, true);
  list.SetSize(11, 11, 0);
  EXPECT_FALSE(list.IsVisible(10));
  EXPECT_FALSE(list.IsVisible(11));
  EXPECT_TRUE(list.IsVisible(12));
  EXPECT_TRUE(list.GetHidden(10, 11));
  EXPECT_FALSE(list.GetHidden(9, 11));
  EXPECT_FALSE(list.GetHidden(10, 12));
  EXPECT_TRUE(list.HasHidden(9, 10));
  EXPECT_FALSE(list.HasHidden(12, 99));
}

TEST(RCInfoList, MostOftenSizeNeedsRunLongerThan32767) {
  CRCInfoList rows;
  rows.Init(65535, 255, true, 300, false);
  rows.SetSize(0, 32767, 400);  // last - first == 32767: not enough
  EXPECT_EQ(255, rows.GetMostOftenSize());
  rows.SetSize(0, 32768, 400);  // 32768 beyond its first
  EXPECT_EQ(400, rows.GetMostOftenSize());
  CRCInfoList cols;
  cols.Init(255, 2304, false, 255, false);
  cols.SetSize(0, 255, 1000);
  EXPECT_EQ(2304, cols.GetMostOftenSize());
}

TEST(RCInfoList, ChangeDefSizeMovesMarksNotSizes) {
  CRCInfoList list;
  list.Init(99, 20, false, 10, false);
  list.SetSize(10, 19, 30);
  ASSERT_FALSE(list.GetInfo(10)->IsDefSize());
  list.ChangeDefSize(30);
  EXPECT_TRUE(list.GetInfo(10)->IsDefSize());
  EXPECT_FALSE(list.GetInfo(0)->IsDefSize());
  EXPECT_EQ(20, list.GetSize(0));
  EXPECT_EQ(30, list.GetDefSize());
}

TEST(RCInfoList, OutlineParentsAndChildren) {
  CRCInfoList list;
  list.Init(99, 20, false, 10, false);
  list.IncLevelInfo(10, 19, 1);        // children of summary 20
  list.IncLevelInfo(12, 14, 1);        // children of summary 15
  EXPECT_EQ(-1, list.FindParent(20));  // level 0
  EXPECT_EQ(20, list.FindParent(10));
  EXPECT_EQ(15, list.FindParent(12));
  EXPECT_EQ(10, list.FindFirstChild(20));
  EXPECT_EQ(12, list.FindFirstChild(15));
  EXPECT_EQ(5, list.FindFirstChild(5));  // no children
  EXPECT_EQ(-1, list.FindParent(-1));
  list.DoCollaps(15, true);
  list.DoCollaps(20, true);
  EXPECT_TRUE(list.GetHidden(10, 19));
  list.DoCollaps(20, false);
  // The nested summary stays collapsed: its children stay hidden, the rest shows.
  EXPECT_TRUE(list.GetHidden(12, 14));
  EXPECT_TRUE(list.IsVisible(11));
  EXPECT_TRUE(list.IsVisible(15));
  EXPECT_TRUE(list.Verify());
}

}  // namespace
