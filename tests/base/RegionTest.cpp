#include <gtest/gtest.h>

#include <string>

#include "GridModel.h"
#include "base/RangeIterator.h"
#include "base/Region.h"

namespace {

std::u16string TextOf(const TRegion& region) {
  std::u16string text;
  region.GetText(text);
  return text;
}

TRegion RegionOf(std::initializer_list<TRange> ranges) {
  TRegion region;
  for (const TRange& r : ranges) region.Add(r);
  return region;
}

TEST(Region, AddRemoveAndText) {
  TRegion region = RegionOf({TRange(0, 0), TRange(1, 1, 2, 2), TRange(5, 5)});
  EXPECT_EQ(u"A1,B2:C3,F6", TextOf(region));
  region.Add(2, region.RangesPt());  // from its own array
  EXPECT_EQ(u"A1,B2:C3,F6,A1,B2:C3", TextOf(region));
  region.RemoveAt(5);
  region.RemoveAt(-1);
  EXPECT_EQ(5, region.Ranges());
  region.RemoveAt(0);
  EXPECT_EQ(u"B2:C3,F6,A1,B2:C3", TextOf(region));
  region.Clear();
  EXPECT_EQ(nullptr, region.RangesPt());
  std::u16string text = u"x";
  EXPECT_FALSE(region.GetText(text));
  EXPECT_TRUE(text.empty());
}

TEST(Region, ContainsNeedsOneRangeButExactAcceptsPieces) {
  const TRegion region = RegionOf({TRange(0, 0), TRange(0, 1)});  // A1, B1
  EXPECT_FALSE(region.Contains(TRange(0, 0, 0, 1)));
  EXPECT_TRUE(region.ContainsExact(TRange(0, 0, 0, 1)));
  EXPECT_FALSE(region.ContainsExact(TRange(0, 0, 0, 2)));
  EXPECT_FALSE(region.ContainsExact(TRange(4, 4)));
  EXPECT_TRUE(region.Contains(RegionOf({TRange(0, 1)})));
  EXPECT_TRUE(region.ContainsExact(RegionOf({TRange(0, 0, 0, 1), TRange(0, 0)})));
}

TEST(Region, WholeRowAndColumnShapes) {
  const TRange row(3, 0, 4, 255), col(0, 2, 65535, 2), box(1, 1, 2, 2);
  struct TCase {
    TRegion region;
    bool bRow, bCol, bHasRow, bHasCol, bMixed;
  };
  const TCase kCases[] = {
      {RegionOf({row}), true, false, true, false, false},
      {RegionOf({row, row}), true, false, true, false, false},
      {RegionOf({col, col}), false, true, false, true, false},
      {RegionOf({row, box}), false, false, true, false, true},
      {RegionOf({box, col}), false, false, false, true, true},
      {RegionOf({row, col}), false, false, true, true, true},
      {RegionOf({box, box}), false, false, false, false, false},
      {TRegion(), false, false, false, false, false},
  };
  for (size_t i = 0; i < std::size(kCases); ++i) {
    const TCase& c = kCases[i];
    SCOPED_TRACE(i);
    EXPECT_EQ(c.bRow, c.region.IsRow());
    EXPECT_EQ(c.bCol, c.region.IsColumn());
    EXPECT_EQ(c.bHasRow, c.region.ContainsRow());
    EXPECT_EQ(c.bHasCol, c.region.ContainsColumn());
    EXPECT_EQ(c.bMixed, c.region.IsRangesMixed());
  }
  const TRegion region = RegionOf({box, TRange(7, 9)});
  EXPECT_EQ(u"A2:IV3,A8:IV8", TextOf(region.GetEntireRow()));
  EXPECT_EQ(u"B1:C65536,J1:J65536", TextOf(region.GetEntireColumn()));
  EXPECT_EQ(TRange(1, 1, 7, 9), region.GetBoundaryRange());
}

TEST(Region, OperationsMayAliasTheirOperands) {
  TRegion region = RegionOf({TRange(0, 0, 3, 3), TRange(5, 5, 6, 6)});
  EXPECT_TRUE(region.Intersect(region, TRange(2, 2, 5, 5)));
  EXPECT_EQ(u"C3:D4,F6", TextOf(region));
  EXPECT_TRUE(region.Subtract(region, region.Range(1)));
  EXPECT_EQ(u"C3:D4", TextOf(region));
  EXPECT_FALSE(region.Subtract(region, region));
  EXPECT_EQ(0, region.Ranges());
}

TEST(Region, SortOffsetAndMove) {
  TRegion region = RegionOf({TRange(5, 1), TRange(2, 7), TRange(2, 3), TRange(0, 9)});
  region.Sort(TRange::CompareBottomRight);
  EXPECT_EQ(u"J1,D3,H3,B6", TextOf(region));
  region.Sort(TRange::CompareRight);
  EXPECT_EQ(u"B6,D3,H3,J1", TextOf(region));
  region.Sort(TRange::CompareBottom);
  EXPECT_EQ(u"J1,D3,H3,B6", TextOf(region));
  region.OffsetRows(2, 4, 10);
  EXPECT_EQ(u"J1,D13,H13,B6", TextOf(region));
  EXPECT_EQ(u"K2,E14,I14,C7", TextOf(region + TCell(1, 1)));
  region -= TCell(0, 1);
  EXPECT_EQ(u"I1,C13,G13,A6", TextOf(region));
}

TEST(Region, AlgebraMatchesCellModel) {
  TRandomRanges gen(77);
  for (int n = 0; n < 600; ++n) {
    const TRegion a = gen.NextRegion(5), b = gen.NextRegion(4);
    const TRange r = gen.Next();
    const TCellSet ca = CellsOf(a), cb = CellsOf(b), cr = CellsOf(r);

    TRegion out;
    ASSERT_EQ(!Minus(ca, cb).empty(), out.Subtract(a, b));
    ASSERT_EQ(Minus(ca, cb), CellsOf(out));
    ASSERT_EQ(!Meet(ca, cb).empty(), out.Intersect(a, b));
    ASSERT_EQ(Meet(ca, cb), CellsOf(out));
    ASSERT_EQ(!Meet(ca, cb).empty(), a.CheckIntersect(b));
    ASSERT_EQ(!Meet(ca, cr).empty(), a.CheckIntersect(r));

    // ContainsExact is sound, and at least as generous as Contains.
    if (a.ContainsExact(r)) {
      ASSERT_TRUE(Minus(cr, ca).empty());
    }
    if (a.Contains(r)) {
      ASSERT_TRUE(a.ContainsExact(r));
    }
    ASSERT_EQ(!IsDisjoint(a), a.IsRangesIntersect());

    TRegion combined(a);
    combined.Combine();
    ASSERT_EQ(ca, CellsOf(combined));
    for (int i = 0; i < combined.Ranges(); ++i)  // nothing left to join
      for (int j = 0; j < combined.Ranges(); ++j) {
        TRange probe;
        ASSERT_FALSE(i != j && probe.Combine(combined.Range(i), combined.Range(j)));
      }

    TRegion compressed(a);
    compressed.CompressRanges();
    ASSERT_EQ(ca, CellsOf(compressed));
    ASSERT_TRUE(IsDisjoint(compressed));
    for (int i = 1; i < compressed.Ranges(); ++i)
      ASSERT_LE(TRange::CompareBottomRight(compressed.Range(i - 1), compressed.Range(i)), 0);

    TRegion merged(a);
    merged.Compress();
    ASSERT_EQ(ca, CellsOf(merged));
    ASSERT_LE(merged.Ranges(), a.Ranges());

    TSize size(-1, -1);
    const TRange bounds = a.GetBoundaryRange();
    const bool bSquare = CellsOf(bounds) == ca;
    ASSERT_EQ(bSquare, a.IsSquare(size));
    if (bSquare) {
      ASSERT_EQ(TSize(bounds.Cols(), bounds.Rows()), size);
    }
  }
}

TEST(Region, CellByCellStaysCompact) {
  TRegion region;
  for (int row = 0; row < 4; ++row)
    for (int col = 0; col < 3; ++col) region.AddIteratingCell(TCell(row, col));
  EXPECT_EQ(u"A1:C4", TextOf(region));

  TRandomRanges gen(5);
  TRegion random;
  TCellSet cells;
  for (int n = 0; n < 300; ++n) {
    const TCell cell = gen.NextCell();
    random.AddIteratingCell(cell);
    cells.emplace(cell.row, cell.col);
    ASSERT_EQ(cells, CellsOf(random));
    ASSERT_FALSE(random.IsRangesIntersect());
  }
}

TEST(Region, CompressRangesFindsFewPieces) {
  TRegion checker, block;
  for (int row = 0; row < 6; ++row)
    for (int col = 0; col < 6; ++col) {
      block.Add(TRange(row, col));
      if ((row + col) % 2 == 0) checker.Add(TRange(row, col));
    }
  block.CompressRanges();
  EXPECT_EQ(u"A1:F6", TextOf(block));
  checker.CompressRanges();
  EXPECT_EQ(18, checker.Ranges());
  TRegion ell = RegionOf({TRange(0, 0, 9, 0), TRange(5, 1), TRange(0, 0, 0, 3)});
  ell.CompressRanges();
  EXPECT_EQ(3, ell.Ranges());
  EXPECT_TRUE(IsDisjoint(ell));

  // A few hundred ranges, overlapping heavily: one pass of each sweep.
  TRandomRanges gen(9);
  TRegion many;
  for (int n = 0; n < 400; ++n) many.Add(gen.Next() + TCell(n / 20 * 4, n % 20 * 4));
  const TCellSet before = CellsOf(many);
  many.CompressRanges();
  EXPECT_EQ(before, CellsOf(many));
  EXPECT_TRUE(IsDisjoint(many));
  many.Combine();
  EXPECT_EQ(before, CellsOf(many));
}

TEST(RangeIterator, WalksInOrderAndFilters) {
  const TRegion region = RegionOf({TRange(1, 1, 2, 2), TRange(0, 3)});  // B2:C3, D1
  struct TCase {
    int bByRow;
    const char16_t* pwszCells;
  };
  const TCase kCases[] = {{1, u"D1,B2,C2,B3,C3"}, {0, u"B2,B3,C2,C3,D1"}};
  for (const TCase& c : kCases) {
    TRangeIterator it(region, c.bByRow);
    ASSERT_EQ(1, it.Start());
    std::u16string seen;
    while (it.Next()) {
      if (!seen.empty()) seen += u',';
      it.Current().AppendText(seen);
    }
    EXPECT_EQ(c.pwszCells, seen);
    EXPECT_EQ(0, it.Next());  // stays finished
  }
  TRangeIterator it(TRange(65535, 254, 65535, 255), 0);
  int n = 0;
  while (it.Next()) ++n;
  EXPECT_EQ(2, n);
  EXPECT_EQ(0, it.Start(TRange(0, 0, 65536, 0), 1));
  EXPECT_EQ(0, it.Next());
  EXPECT_EQ(0, it.Start(TRange(3, 0, 2, 0), 1));  // reversed
}

}  // namespace
