#include "book/BookIteratorForEvaluate.h"

#include "book/CellRecord.h"
#include "book/SheetBase.h"

CBookIteratorForEvaluate::CBookIteratorForEvaluate(CSheetBase* pSheet, const TRange& range,
                                                   int nFlags)
    : CBookIterator(pSheet, range), m_nFlags(nFlags) {}

bool CBookIteratorForEvaluate::IsRowAccepted(int nRow) const {
  return !(m_nFlags & flSkipHiddenRows) || m_pSheet->IsRowVisible(nRow);
}

bool CBookIteratorForEvaluate::IsCellAccepted(const CCell* pCell, int nRow, int nCol) const {
  if (!CBookIterator::IsCellAccepted(pCell, nRow, nCol)) return false;
  return !(m_nFlags & flValuesOnly) || pCell->IsValue();
}
