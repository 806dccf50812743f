// The banded changed region against a plain set of cells: every sequence of adds
// must keep the band invariants and cover exactly the union of what was added.
#include <gtest/gtest.h>

#include <random>
#include <string>
#include <vector>

#include "base/Cell.h"
#include "base/Region.h"
#include "recalc/ChangedRegion.h"

namespace {

// Rows and columns the random adds stay in, so that rectangles overlap often.
constexpr int kModelRows = 40;
constexpr int kModelCols = 24;

struct TCellModel {
  std::vector<bool> cells = std::vector<bool>(kModelRows * kModelCols, false);
  void Add(int nRow1, int nCol1, int nRow2, int nCol2) {
    for (int r = nRow1; r <= nRow2; r++)
      for (int c = nCol1; c <= nCol2; c++) cells[r * kModelCols + c] = true;
  }
  bool Has(int nRow, int nCol) const { return cells[nRow * kModelCols + nCol]; }
};

std::string Describe(const CChangedRegion& region) {
  std::string s;
  for (int i = 0; i < region.GetSize(); i++) {
    const TChangedRange& r = region[i];
    s += "[" + std::to_string(r.Row1()) + "-" + std::to_string(r.Row2()) + " x " +
         std::to_string(r.Col1()) + "-" + std::to_string(r.Col2()) + "]";
  }
  return s;
}

// Sorted by first row; a band shares its rows; bands are disjoint in rows; inside a
// band rectangles are ordered by column and neither overlap nor touch.
void ExpectBandInvariants(const CChangedRegion& region) {
  SCOPED_TRACE(Describe(region));
  int nPrevRow2 = -1;
  for (int i = 0; i < region.GetSize();) {
    const int nCount = region.CountBandSize(i);
    ASSERT_GE(nCount, 1);
    const TChangedRange& first = region[i];
    EXPECT_LE(first.Row1(), first.Row2());
    EXPECT_GT(first.Row1(), nPrevRow2) << "bands overlap or are out of order at " << i;
    for (int k = 0; k < nCount; k++) {
      const TChangedRange& r = region[i + k];
      EXPECT_EQ(first.Row1(), r.Row1());
      EXPECT_EQ(first.Row2(), r.Row2());
      EXPECT_LE(r.Col1(), r.Col2());
      if (k > 0) {
        EXPECT_GT(r.Col1(), region[i + k - 1].Col2() + 1) << "touching at " << i + k;
      }
    }
    nPrevRow2 = first.Row2();
    i += nCount;
  }
}

void ExpectSameCells(const CChangedRegion& region, const TCellModel& model) {
  std::vector<int> covered(kModelRows * kModelCols, 0);
  for (int i = 0; i < region.GetSize(); i++) {
    const TChangedRange& r = region[i];
    ASSERT_LT(r.Row2(), kModelRows);
    ASSERT_LT(r.Col2(), kModelCols);
    for (int row = r.Row1(); row <= r.Row2(); row++)
      for (int col = r.Col1(); col <= r.Col2(); col++) covered[row * kModelCols + col]++;
  }
  for (int row = 0; row < kModelRows; row++)
    for (int col = 0; col < kModelCols; col++) {
      ASSERT_EQ(model.Has(row, col) ? 1 : 0, covered[row * kModelCols + col])
          << "cell " << row << "," << col << " in " << Describe(region);
      ASSERT_EQ(model.Has(row, col), region.TestIntersect(row, col)) << row << "," << col;
    }
}

TEST(ChangedRegion, RandomAddsMatchSetOfCells) {
  std::mt19937 rng(12345);
  for (int nTrial = 0; nTrial < 300; nTrial++) {
    SCOPED_TRACE(nTrial);
    CChangedRegion region;
    TCellModel model;
    const bool bCoalesce = nTrial % 2 == 0;
    const int nAdds = 1 + static_cast<int>(rng() % 25);
    for (int n = 0; n < nAdds; n++) {
      // Mostly small rectangles, some tall or wide ones that cross many bands.
      const int nRow1 = static_cast<int>(rng() % kModelRows);
      const int nCol1 = static_cast<int>(rng() % kModelCols);
      const int nRows =
          rng() % 4 == 0 ? static_cast<int>(rng() % kModelRows) : static_cast<int>(rng() % 3);
      const int nCols =
          rng() % 4 == 0 ? static_cast<int>(rng() % kModelCols) : static_cast<int>(rng() % 3);
      const int nRow2 = std::min(kModelRows - 1, nRow1 + nRows);
      const int nCol2 = std::min(kModelCols - 1, nCol1 + nCols);
      // Corners are given in either order.
      if (n % 3 == 1)
        region.Add(nRow2, nCol2, nRow1, nCol1, bCoalesce);
      else
        region.Add(nRow1, nCol1, nRow2, nCol2, bCoalesce);
      model.Add(nRow1, nCol1, nRow2, nCol2);
      ASSERT_FALSE(region.IsOverflow());
      ExpectBandInvariants(region);
      ExpectSameCells(region, model);
      if (HasFatalFailure()) return;
    }
  }
}

// The same union of cells gives the same list however the adds are ordered, once
// coalesced: a vertical strip added cell by cell ends as one rectangle.
TEST(ChangedRegion, CoalesceJoinsStackedBands) {
  CChangedRegion region;
  for (int nRow = 9; nRow >= 0; nRow -= 2) region.Add(nRow, 3, nRow, 4, true);
  for (int nRow = 0; nRow < 10; nRow += 2) region.Add(nRow, 3, nRow, 4, true);
  ASSERT_EQ(1, region.GetSize()) << Describe(region);
  EXPECT_EQ(0, region[0].Row1());
  EXPECT_EQ(9, region[0].Row2());
}

struct TAddCase {
  const char* pszName;
  std::vector<std::vector<int>> adds;      // row1, col1, row2, col2, coalesce
  std::vector<std::vector<int>> expected;  // row1, col1, row2, col2 in list order
};

// Hand-drawn cases of merging and splitting.
const TAddCase kAddCases[] = {
    {"TouchingColumnsMerge", {{0, 0, 1, 1, 0}, {0, 2, 1, 2, 0}}, {{0, 0, 1, 2}}},
    {"GapOfOneColumnStays", {{0, 0, 1, 1, 0}, {0, 3, 1, 3, 0}}, {{0, 0, 1, 1}, {0, 3, 1, 3}}},
    {"StackedCellsCoalesce", {{0, 0, 0, 0, 1}, {1, 0, 1, 0, 1}}, {{0, 0, 1, 0}}},
    {"StackedCellsWithoutCoalesce",
     {{0, 0, 0, 0, 0}, {1, 0, 1, 0, 0}},
     {{0, 0, 0, 0}, {1, 0, 1, 0}}},
    {"TallThroughWideSplitsIntoThreeBands",
     {{1, 0, 2, 2, 0}, {0, 1, 3, 1, 0}},
     {{0, 1, 0, 1}, {1, 0, 2, 2}, {3, 1, 3, 1}}},
    {"CoveredAddChangesNothing", {{0, 0, 9, 9, 1}, {3, 3, 4, 4, 1}}, {{0, 0, 9, 9}}},
    {"BridgeAbsorbsBothNeighbours",
     {{5, 0, 5, 1, 0}, {5, 5, 5, 6, 0}, {5, 2, 5, 4, 0}},
     {{5, 0, 5, 6}}},
    {"InsertBeforeFirstOfBand", {{5, 8, 5, 9, 0}, {5, 1, 5, 2, 0}}, {{5, 1, 5, 2}, {5, 8, 5, 9}}},
    {"SpansGapBetweenBands",
     {{0, 0, 0, 0, 0}, {4, 0, 4, 0, 0}, {0, 5, 4, 5, 0}},
     {{0, 0, 0, 0}, {0, 5, 0, 5}, {1, 5, 3, 5}, {4, 0, 4, 0}, {4, 5, 4, 5}}},
    {"ClampedToGrid", {{-3, -1, 70000, 300, 0}}, {{0, 0, kMaxRow, kMaxCol}}},
};

TEST(ChangedRegion, HandDrawnCases) {
  for (const TAddCase& c : kAddCases) {
    SCOPED_TRACE(c.pszName);
    CChangedRegion region;
    for (const auto& a : c.adds) region.Add(a[0], a[1], a[2], a[3], a[4] != 0);
    ASSERT_EQ(static_cast<int>(c.expected.size()), region.GetSize()) << Describe(region);
    for (size_t i = 0; i < c.expected.size(); i++) {
      const TChangedRange& r = region[static_cast<int>(i)];
      EXPECT_EQ(c.expected[i], (std::vector<int>{r.Row1(), r.Col1(), r.Row2(), r.Col2()}))
          << "rectangle " << i << " of " << Describe(region);
    }
  }
}

// 256 rectangles are kept; the 257th turns the region into the whole sheet.
TEST(ChangedRegion, OverflowPastLimit) {
  CChangedRegion region;
  for (int i = 0; i < CChangedRegion::kMaxRanges; i++) region.Add(2 * i, 0, 2 * i, 0, true);
  EXPECT_FALSE(region.IsOverflow());
  EXPECT_EQ(CChangedRegion::kMaxRanges, region.GetSize());
  EXPECT_FALSE(region.TestIntersect(1, 0));
  region.Add(2 * CChangedRegion::kMaxRanges, 0, 2 * CChangedRegion::kMaxRanges, 0, true);
  EXPECT_TRUE(region.IsOverflow());
  EXPECT_EQ(0, region.GetSize());
  EXPECT_TRUE(region.TestIntersect(1, 0));
  EXPECT_TRUE(region.TestIntersect(TRegion(TRange(kMaxRow, kMaxCol))));
  TRegion whole;
  region.GetChangedRegion(whole);
  ASSERT_EQ(1, whole.Ranges());
  EXPECT_EQ(0, whole.Range(0).Row1());
  EXPECT_EQ(kMaxRow, whole.Range(0).Row2());
  EXPECT_EQ(0, whole.Range(0).Col1());
  EXPECT_EQ(kMaxCol, whole.Range(0).Col2());
  region.Clear();
  EXPECT_TRUE(region.IsEmpty());
  EXPECT_FALSE(region.TestIntersect(1, 0));
}

TEST(ChangedRegion, RegionTests) {
  CChangedRegion region;
  EXPECT_FALSE(region.TestIntersect(TRegion(TRange(0, 0, kMaxRow, kMaxCol))));
  region.Add(5, 5, 6, 6, true);
  TRegion probe;
  probe.Add(TRange(0, 0, 4, 255));
  probe.Add(TRange(7, 0, 9, 255));
  EXPECT_FALSE(region.TestIntersect(probe));
  probe.Add(TRange(6, 6, 3, 3));  // corners out of order still meet 5..6 x 5..6
  EXPECT_TRUE(region.TestIntersect(probe));
  TRegion out;
  region.GetChangedRegion(out);
  ASSERT_EQ(1, out.Ranges());
  EXPECT_TRUE(out.Range(0).Contains(TRange(5, 5, 6, 6)));
  EXPECT_EQ(4, out.Range(0).CellCount());
}

}  // namespace
