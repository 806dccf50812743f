#include <gtest/gtest.h>

#include <string>

#include "GridModel.h"
#include "base/Cell3d.h"
#include "base/Range.h"
#include "base/Range3d.h"
#include "base/Region.h"

namespace {

TEST(Range, Text) {
  std::u16string text;
  EXPECT_TRUE(TRange(4, 2).GetText(text));
  EXPECT_EQ(u"C5", text);
  EXPECT_TRUE(TRange(0, 0, 65535, 255).GetText(text));
  EXPECT_EQ(u"A1:IV65536", text);
  EXPECT_FALSE(TRange(0, 0, 65536, 0).GetText(text));
  EXPECT_TRUE(text.empty());
}

// Inside the grid the model below covers the operations.
TEST(Range, IntersectFailsOutsideGrid) {
  EXPECT_FALSE(TRange::CheckIntersect(TRange(-5, 0, 2, 2), TRange(-5, 0, -1, 2)));
  EXPECT_FALSE(TRange::CheckIntersect(TRange(0, 250, 0, 300), TRange(0, 256, 0, 300)));
}

TEST(Range, SubtractPiecesInFixedOrder) {
  TRegion out;
  EXPECT_TRUE(TRange(0, 0, 2, 2).Subtract(TRange(1, 1), out));  // A1:C3 minus B2
  std::u16string text;
  out.GetText(text);
  EXPECT_EQ(u"A1:C1,A2,C2,A3:C3", text);

  EXPECT_TRUE(TRange(0, 0, 2, 2).Subtract(TRange(5, 5), out));  // disjoint: whole
  EXPECT_EQ(1, out.Ranges());
  EXPECT_FALSE(TRange(0, 0, 2, 2).SubtractEx(TRange(5, 5), out));
  EXPECT_EQ(0, out.Ranges());
  EXPECT_FALSE(TRange(1, 1).Subtract(TRange(0, 0, 2, 2), out));  // nothing left
  EXPECT_TRUE(TRange(1, 1).SubtractEx(TRange(0, 0, 2, 2), out));
}

TEST(Range, SafeInflateClampsToGrid) {
  TRange r(1, 1, 65534, 254);
  r.SafeInflate(3, 2);
  EXPECT_EQ(TRange(0, 0, 65535, 255), r);
  r.Set(10, 10, 20, 20);
  r.SafeInflate(1, 0);
  EXPECT_EQ(TRange(9, 10, 21, 20), r);
}

TEST(Range, OffsetAndMoveKeepWholeExtents) {
  TRange col(0, 0, 65535, 0);  // A:A
  col.OffsetRows(0, 70000, 5);
  EXPECT_EQ(TRange(0, 0, 65535, 0), col);
  TRange r(2, 0, 8, 0);
  r.OffsetRows(5, 10, 3);  // only the last row lies in the band
  EXPECT_EQ(TRange(2, 0, 11, 0), r);
  r.OffsetRows(2, 2, -1);
  EXPECT_EQ(TRange(1, 0, 11, 0), r);

  EXPECT_EQ(TRange(0, 3, 65535, 3), col + TCell(4, 3));                 // rows stay
  EXPECT_EQ(TRange(6, 0, 6, 255), TRange(2, 0, 2, 255) + TCell(4, 3));  // columns stay
  EXPECT_EQ(TRange(1, 1, 2, 2), TRange(3, 4, 4, 5) - TCell(2, 3));
  TRange3d r3(1, 2, TRange(0, 0, 65535, 0));
  r3 += TCell(4, 3);
  EXPECT_EQ(TRange3d(TCell3d(1, 0, 3), TCell3d(2, 65535, 3)), r3);
}

TEST(Range, WherePosCell) {
  const TRange big(1, 1, 3, 3), pair(1, 1, 1, 2), single(1, 1);
  struct TCase {
    const TRange* p;
    TCell cell;
    int nPos;
  };
  const TCase kCases[] = {
      {&single, TCell(1, 1), 3}, {&single, TCell(1, 2), 0}, {&pair, TCell(1, 1), 1},
      {&pair, TCell(1, 2), 3},   {&big, TCell(1, 1), 1},    {&big, TCell(3, 3), 3},
      {&big, TCell(2, 2), 2},    {&big, TCell(1, 3), 2},    {&big, TCell(0, 1), 0},
  };
  for (const TCase& c : kCases) EXPECT_EQ(c.nPos, c.p->WherePosCell(c.cell));
  EXPECT_EQ(0, big.CompareRange(nullptr));
}

// Every operation, on many random pairs near the top-left and the bottom-right
// corner of the grid, against plain set operations on the cells.
TEST(Range, AlgebraMatchesCellModel) {
  for (int nCorner = 0; nCorner < 2; ++nCorner) {
    TRandomRanges gen(1234 + nCorner, nCorner ? 65528 : 0, nCorner ? 248 : 0);
    for (int n = 0; n < 1500; ++n) {
      const TRange a = gen.Next(), b = gen.Next();
      const TCellSet ca = CellsOf(a), cb = CellsOf(b), both = Meet(ca, cb);
      TCellSet all = ca;
      all.insert(cb.begin(), cb.end());
      TRange bounds;
      bounds.Union(a, b);
      const bool bRectUnion = CellsOf(bounds) == all;

      TRange cut;
      ASSERT_EQ(!both.empty(), cut.Intersect(a, b));
      if (!both.empty()) {
        ASSERT_EQ(both, CellsOf(cut));
      }

      TRegion rest;
      a.Subtract(b, rest);
      ASSERT_EQ(Minus(ca, cb), CellsOf(rest));
      ASSERT_TRUE(IsDisjoint(rest));
      for (int i = 1; i < rest.Ranges(); ++i)  // above, left, right, below
        ASSERT_LT(TRange::CompareBottomRight(rest.Range(i - 1), rest.Range(i)), 0);

      const TRange* pPieces = nullptr;
      int nPieces = 0;
      a.Union(b, pPieces, nPieces);
      TRegion pieces;
      pieces.Add(nPieces, pPieces);
      ASSERT_GE(nPieces, 1);
      ASSERT_LE(nPieces, 3);
      ASSERT_EQ(all, CellsOf(pieces));
      ASSERT_TRUE(IsDisjoint(pieces));
      ASSERT_EQ(bRectUnion, nPieces == 1);

      TRange joined = a;  // left as it was when the two do not join
      ASSERT_EQ(both.empty() && bRectUnion, joined.Combine(b));
      ASSERT_EQ(both.empty() && bRectUnion ? bounds : a, joined);

      int nExpect = 2;
      if (both.empty())
        nExpect = 0;
      else if (both == cb)
        nExpect = ca == cb ? 4 : 1;
      else if (both == ca)
        nExpect = 5;
      ASSERT_EQ(nExpect, a.CompareRange(&b));
    }
  }
}

}  // namespace
