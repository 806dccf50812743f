// CBookIteratorWithMergedCells: a walk that treats each merged block as one cell.
// Cells of a block carry the block's merged index; the walk returns the first cell of
// each index it meets (the block's top-left cell within the range, since the walk
// goes row by row, left to right) and passes the block's other cells over. Cells that
// are not merged are returned as by CBookIterator.
#pragma once

#include <vector>

#include "base/Export.h"
#include "book/BookIterator.h"

class YARVBOOK_API CBookIteratorWithMergedCells : public CBookIterator {
 public:
  CBookIteratorWithMergedCells(CSheetBase* pSheet, const TRange& range, int bSkipHidden = 0);

  int Start() override;

 protected:
  bool IsCellAccepted(const CCell* pCell, int nRow, int nCol) const override;

 private:
  // Merged indexes already returned; marked when accepted (a cache of the walk).
  mutable std::vector<bool> m_Seen;
};
