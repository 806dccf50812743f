#include "book/BookIteratorWithMergedCells.h"

#include "book/CellRecord.h"

CBookIteratorWithMergedCells::CBookIteratorWithMergedCells(CSheetBase* pSheet, const TRange& range,
                                                           int bSkipHidden)
    : CBookIterator(pSheet, range) {
  m_bSkipHidden = bSkipHidden;
}

int CBookIteratorWithMergedCells::Start() {
  m_Seen.assign(CCell::kNoMergedCell, false);
  return CBookIterator::Start();
}

bool CBookIteratorWithMergedCells::IsCellAccepted(const CCell* pCell, int nRow, int nCol) const {
  if (!CBookIterator::IsCellAccepted(pCell, nRow, nCol)) return false;
  if (!pCell->IsMerged()) return true;
  const unsigned short wIndex = pCell->GetMergedCellIndex();
  if (m_Seen[wIndex]) return false;
  m_Seen[wIndex] = true;
  return true;
}
