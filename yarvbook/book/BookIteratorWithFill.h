// CBookIteratorWithFill: visits every position of the range (or of the region's
// bounding range, filtered by the region), making the cells that are missing. A
// missing cell becomes the shared empty cell of the format a new cell there receives
// (CSheetBase::NewFormat); change it through the shared cell table.
#pragma once

#include "base/Export.h"
#include "book/BookIterator.h"

class YARVBOOK_API CBookIteratorWithFill : public CBookIterator {
 public:
  CBookIteratorWithFill(CSheetBase* pSheet, const TRange& range);
  CBookIteratorWithFill(CSheetBase* pSheet, const TRegion& region, int bSkipHidden);

  // Throw CZelException when memory is exhausted.
  int Start() override;
  int Next() override;
  // Moves to the first position of the current row.
  int StartRow();
  // Makes the cell of the current position when missing.
  void FillCell();
  // The cell of the current position was made by this walk.
  bool IsFilled() const { return m_bFilled; }

 private:
  // From column nCol of the current row on, the first accepted position; false at the
  // row's end.
  bool SeekInRow(int nCol);
  bool m_bFilled = false;
};
