#include <gtest/gtest.h>

#include "base/Rect.h"

namespace {

TEST(Rect, GeometryFollowsPlatformRecords) {
  TRect rc(TPoint(10, 20), TSize(30, 40));
  EXPECT_EQ(TRect(10, 20, 40, 60), rc);
  EXPECT_EQ(TPoint(25, 40), rc.CenterPoint());
  rc.InflateRect(1, 2, 3, 4);
  EXPECT_EQ(TRect(9, 18, 43, 64), rc);
  rc.DeflateRect(1, 2, 3, 4);
  EXPECT_EQ(TRect(10, 20, 40, 60), rc);
  EXPECT_EQ(TRect(11, 18, 41, 58), rc + TPoint(1, -2));

  TRect reversed(5, 9, 1, 2);
  reversed.NormalizeRect();
  EXPECT_EQ(TRect(1, 2, 5, 9), reversed);
  EXPECT_EQ(TPoint(-1, -2), TRect(-3, -5, 0, 0).CenterPoint());  // rounds toward zero

  struct THostRect {
    int left, top, right, bottom;
  } host{1, 2, 3, 4};
  EXPECT_EQ(TRect(1, 2, 3, 4), TRect(host));
  TPoint pt(1, 1);
  pt += TSize(2, 3);
  EXPECT_EQ(TPoint(3, 4), pt);
}

}  // namespace
