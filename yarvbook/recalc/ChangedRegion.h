// CChangedRegion: the cells of one sheet whose values changed since the last
// recalculation, kept for minimal recalculation. It is a banded rectangle list:
// rectangles sorted by first row, grouped in bands that share first and last row,
// bands disjoint in rows, and inside a band rectangles sorted by column that neither
// overlap nor touch. Past kMaxRanges rectangles the region gives up precision and
// stands for the whole sheet (overflow), which keeps every operation cheap.
#pragma once

#include "base/Export.h"
#include "recalc/ChangedRangesArray.h"

class TRegion;

class YARVBOOK_API CChangedRegion : public CChangedRangesArray {
 public:
  static constexpr int kMaxRanges = 256;

  CChangedRegion() = default;

  // Adds rows nRow1..nRow2 by columns nCol1..nCol2 (corners in any order, clamped to
  // the grid). With bCoalesce, bands that follow each other directly with the same
  // columns are joined afterwards. Never throws: when memory runs out the region
  // overflows to the whole sheet, which only costs precision.
  void Add(int nRow1, int nCol1, int nRow2, int nCol2, bool bCoalesce);

  // True when overflowed; false when the row lies outside the lowest..highest row
  // added; otherwise whether a rectangle holds the cell.
  bool TestIntersect(int nRow, int nCol) const;
  // True when overflowed; false when empty; otherwise whether some range of the
  // region meets some rectangle.
  bool TestIntersect(const TRegion& region) const;
  // The same for one rectangle, corners in order.
  bool TestIntersect(int nRow1, int nCol1, int nRow2, int nCol2) const;

  // Replaces region with the changed cells: the whole sheet when overflowed, else
  // one range per rectangle in list order.
  void GetChangedRegion(TRegion& region) const;

  // No cell changed (not overflowed, no rectangle).
  bool IsEmpty() const { return !m_bOverflow && GetSize() == 0; }
  bool IsOverflow() const { return m_bOverflow; }
  int GetLowestRow() const { return m_nLowestRow; }
  int GetHighestRow() const { return m_nHighestRow; }
  // Empties the region, the overflow mark and the row bounds included.
  void Clear();

  // Number of rectangles in the band that starts at nIndex.
  int CountBandSize(int nIndex) const;
  // Inserts a copy of the band that starts at nIndex right behind it; returns the
  // band's size. The caller then gives the two copies their rows.
  int DuplicateBand(int nIndex);
  // Joins every band to the band before it when it starts on the row after that
  // band's last row and has exactly the same columns.
  void Coallesce();

 private:
  // Merges columns nCol1..nCol2 into the band of nCount rectangles at nIndex; returns
  // the band's new size.
  int AddToBand(int nIndex, int nCount, int nCol1, int nCol2);
  void SetOverflow();

  bool m_bOverflow = false;
  int m_nLowestRow = 0x7FFFFFFF;  // no row added yet: every row test fails
  int m_nHighestRow = -1;
};
