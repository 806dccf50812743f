#include "base/Range.h"

#include <algorithm>
#include <cassert>
#include <utility>

#include "base/Region.h"

namespace {

// Result of TRange::Union(other, pieces, count): at most three pieces.
TRange g_UnionPieces[3];

}  // namespace

void TRange::Normalize() {
  if (first.row > last.row) std::swap(first.row, last.row);
  if (first.col > last.col) std::swap(first.col, last.col);
}

bool TRange::GetText(std::u16string& text) const {
  text.clear();
  return AppendText(text);
}

bool TRange::AppendText(std::u16string& text) const {
  if (!first.IsValid() || !last.IsValid()) return false;
  first.AppendText(text);
  if (IsSingleCell()) return true;
  text += u':';
  last.AppendText(text);
  return true;
}

bool TRange::SerializeCB(CPelArchive& ar) {
  const bool bFirst = first.SerializeCB(ar);
  return last.SerializeCB(ar) && bFirst;
}

bool TRange::Intersect(const TRange& a, const TRange& b) {
  const TRange r(std::max(a.first.row, b.first.row), std::max(a.first.col, b.first.col),
                 std::min(a.last.row, b.last.row), std::min(a.last.col, b.last.col));
  *this = r;
  return r.IsValid();
}

bool TRange::CheckIntersect(const TRange& a, const TRange& b) {
  TRange r;
  return r.Intersect(a, b);
}

void TRange::Union(const TRange& a, const TRange& b) {
  Set(std::min(a.first.row, b.first.row), std::min(a.first.col, b.first.col),
      std::max(a.last.row, b.last.row), std::max(a.last.col, b.last.col));
}

void TRange::Union(const TRange& other, const TRange*& pPieces, int& nCount) const {
  pPieces = g_UnionPieces;
  TRange bounds;
  bounds.Union(*this, other);
  TRange overlap;
  const long long nOverlap = overlap.Intersect(*this, other) ? overlap.CellCount() : 0;
  if (bounds.CellCount() == CellCount() + other.CellCount() - nOverlap) {
    // Containment, or two ranges that together fill their bounding rectangle.
    g_UnionPieces[0] = bounds;
    nCount = 1;
    return;
  }
  // One range whole plus what is left of the other; whichever order leaves fewer
  // pieces. Neither can contain the other here, so one order always gives at most two
  // leftovers.
  TRegion restOfOther, restOfThis;
  other.Subtract(*this, restOfOther);
  Subtract(other, restOfThis);
  const bool bKeepThis = restOfOther.Ranges() <= restOfThis.Ranges();
  const TRegion& rest = bKeepThis ? restOfOther : restOfThis;
  assert(rest.Ranges() <= 2 && "one whole range plus at most two pieces");
  g_UnionPieces[0] = bKeepThis ? *this : other;
  nCount = 1;
  for (int i = 0; i < rest.Ranges() && nCount < 3; ++i) g_UnionPieces[nCount++] = rest.Range(i);
}

bool TRange::Combine(const TRange& a, const TRange& b) {
  if (a.first.col == b.first.col && a.last.col == b.last.col) {
    if (a.first.row - 1 == b.last.row) {
      Set(b.first, a.last);
      return true;
    }
    if (a.last.row + 1 == b.first.row) {
      Set(a.first, b.last);
      return true;
    }
    return false;
  }
  if (a.first.row == b.first.row && a.last.row == b.last.row) {
    if (a.first.col - 1 == b.last.col) {
      Set(b.first, a.last);
      return true;
    }
    if (a.last.col + 1 == b.first.col) {
      Set(a.first, b.last);
      return true;
    }
  }
  return false;
}

bool TRange::Subtract(const TRange& other, TRegion& out) const {
  out.Clear();
  TRange cut;
  if (!cut.Intersect(*this, other)) {
    out.Add(*this);
    return true;
  }
  TRange pieces[4];
  int n = 0;
  if (cut.first.row > first.row) pieces[n++].Set(first.row, first.col, cut.first.row - 1, last.col);
  if (cut.first.col > first.col)
    pieces[n++].Set(cut.first.row, first.col, cut.last.row, cut.first.col - 1);
  if (cut.last.col < last.col)
    pieces[n++].Set(cut.first.row, cut.last.col + 1, cut.last.row, last.col);
  if (cut.last.row < last.row) pieces[n++].Set(cut.last.row + 1, first.col, last.row, last.col);
  out.Add(n, pieces);
  return n > 0;
}

bool TRange::SubtractEx(const TRange& other, TRegion& out) const {
  if (!CheckIntersect(other)) {
    out.Clear();
    return false;
  }
  Subtract(other, out);
  return true;
}

void TRange::SafeInflate(int nRows, int nCols) {
  first.row = std::clamp(first.row - nRows, 0, kMaxRow);
  last.row = std::clamp(last.row + nRows, 0, kMaxRow);
  first.col = std::clamp(first.col - nCols, 0, kMaxCol);
  last.col = std::clamp(last.col + nCols, 0, kMaxCol);
}

void TRange::OffsetRows(int nFrom, int nTo, int nDelta) {
  if (WholeRows()) return;
  if (first.row >= nFrom && first.row <= nTo) first.row += nDelta;
  if (last.row >= nFrom && last.row <= nTo) last.row += nDelta;
}

TRange& TRange::operator+=(const TCell& cell) {
  if (!WholeRows()) {
    first.row += cell.row;
    last.row += cell.row;
  }
  if (!WholeColumns()) {
    first.col += cell.col;
    last.col += cell.col;
  }
  return *this;
}

TRange& TRange::operator-=(const TCell& cell) { return *this += TCell(-cell.row, -cell.col); }

TRange TRange::operator+(const TCell& cell) const {
  TRange r(*this);
  r += cell;
  return r;
}

TRange TRange::operator-(const TCell& cell) const {
  TRange r(*this);
  r -= cell;
  return r;
}

int TRange::WherePosCell(const TCell& cell) const {
  if (cell == last) return 3;
  if (cell == first) return 1;
  return Contains(cell) ? 2 : 0;
}

int TRange::CompareRange(const TRange* pOther) const {
  if (pOther == nullptr || !CheckIntersect(*pOther)) return 0;
  if (Contains(*pOther)) return CellCount() == pOther->CellCount() ? 4 : 1;
  if (pOther->Contains(*this)) return 5;
  return 2;
}

int TRange::CompareBottom(const TRange& a, const TRange& b) { return a.first.row - b.first.row; }

int TRange::CompareRight(const TRange& a, const TRange& b) { return a.first.col - b.first.col; }

int TRange::CompareBottomRight(const TRange& a, const TRange& b) {
  if (a.first.row != b.first.row) return a.first.row - b.first.row;
  return a.first.col - b.first.col;
}
