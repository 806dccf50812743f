// TPoint, TSize and TRect: screen geometry for the drawing side, laid out like the
// host platform's POINT, SIZE and RECT records. They carry no sheet logic.
#pragma once

#include "base/Export.h"

struct YARVBOOK_API TSize {
  TSize() = default;
  TSize(int nCx, int nCy) : cx(nCx), cy(nCy) {}
  bool operator==(const TSize& other) const { return cx == other.cx && cy == other.cy; }
  bool operator!=(const TSize& other) const { return !(*this == other); }

  int cx = 0;
  int cy = 0;
};

struct YARVBOOK_API TPoint {
  TPoint() = default;
  TPoint(int nX, int nY) : x(nX), y(nY) {}
  void Offset(int dx, int dy) {
    x += dx;
    y += dy;
  }
  TPoint& operator+=(const TPoint& other) {
    Offset(other.x, other.y);
    return *this;
  }
  TPoint& operator+=(const TSize& size) {
    Offset(size.cx, size.cy);
    return *this;
  }
  TPoint operator+(const TSize& size) const { return TPoint(x + size.cx, y + size.cy); }
  TPoint operator+(const TPoint& other) const { return TPoint(x + other.x, y + other.y); }
  bool operator==(const TPoint& other) const { return x == other.x && y == other.y; }
  bool operator!=(const TPoint& other) const { return !(*this == other); }

  int x = 0;
  int y = 0;
};

// Right and bottom are exclusive, as in RECT.
struct YARVBOOK_API TRect {
  TRect() = default;
  TRect(int nLeft, int nTop, int nRight, int nBottom)
      : left(nLeft), top(nTop), right(nRight), bottom(nBottom) {}
  TRect(const TPoint& pt, const TSize& size)
      : left(pt.x), top(pt.y), right(pt.x + size.cx), bottom(pt.y + size.cy) {}
  // From any record with left, top, right and bottom members (the host's RECT).
  template <class TRecord>
  explicit TRect(const TRecord& rc)
      : left(rc.left), top(rc.top), right(rc.right), bottom(rc.bottom) {}

  int Width() const { return right - left; }
  int Height() const { return bottom - top; }
  TSize Size() const { return TSize(Width(), Height()); }
  TPoint TopLeft() const { return TPoint(left, top); }
  TPoint BottomRight() const { return TPoint(right, bottom); }
  // Rounds toward zero, as the platform's CenterPoint does.
  TPoint CenterPoint() const { return TPoint((left + right) / 2, (top + bottom) / 2); }
  bool IsRectEmpty() const { return right <= left || bottom <= top; }

  void SetRect(int nLeft, int nTop, int nRight, int nBottom) {
    left = nLeft;
    top = nTop;
    right = nRight;
    bottom = nBottom;
  }
  void OffsetRect(int dx, int dy) {
    left += dx;
    right += dx;
    top += dy;
    bottom += dy;
  }
  // Grows each side outward by its own amount.
  void InflateRect(int l, int t, int r, int b) {
    left -= l;
    top -= t;
    right += r;
    bottom += b;
  }
  void InflateRect(int dx, int dy) { InflateRect(dx, dy, dx, dy); }
  // Moves each side inward by its own amount.
  void DeflateRect(int l, int t, int r, int b) { InflateRect(-l, -t, -r, -b); }
  void DeflateRect(int dx, int dy) { InflateRect(-dx, -dy, -dx, -dy); }
  // Swaps left/right and top/bottom where they are reversed.
  void NormalizeRect();

  TRect operator+(const TPoint& pt) const {
    return TRect(left + pt.x, top + pt.y, right + pt.x, bottom + pt.y);
  }
  TRect& operator+=(const TPoint& pt) {
    OffsetRect(pt.x, pt.y);
    return *this;
  }
  bool operator==(const TRect& other) const {
    return left == other.left && top == other.top && right == other.right && bottom == other.bottom;
  }
  bool operator!=(const TRect& other) const { return !(*this == other); }

  int left = 0;
  int top = 0;
  int right = 0;
  int bottom = 0;
};
