#include "book/BookIteratorWithFill.h"

#include "book/CellRecord.h"
#include "book/SharedCellTable.h"
#include "book/SheetBase.h"

CBookIteratorWithFill::CBookIteratorWithFill(CSheetBase* pSheet, const TRange& range)
    : CBookIterator(pSheet, range) {}

CBookIteratorWithFill::CBookIteratorWithFill(CSheetBase* pSheet, const TRegion& region,
                                             int bSkipHidden)
    : CBookIterator(pSheet, region, bSkipHidden) {}

void CBookIteratorWithFill::FillCell() {
  m_pRow = m_pSheet->InitRow(m_current.row);
  m_pCell = m_pRow->Cell(m_current.col);
  m_bFilled = m_pCell == nullptr;
  if (!m_bFilled) return;
  m_pCell = CSharedCellTable::Get().SetEmptyCell(m_pRow, m_current.col,
                                                 m_pSheet->NewFormat(m_current.row, m_current.col));
}

bool CBookIteratorWithFill::SeekInRow(int nCol) {
  for (; nCol <= m_range.Col2(); ++nCol) {
    if (!m_region.IsEmpty() && !m_region.Contains(TCell(m_current.row, nCol))) continue;
    if (m_bSkipHidden && !m_pSheet->IsColVisible(nCol)) continue;
    m_current.col = nCol;
    FillCell();
    return true;
  }
  return false;
}

int CBookIteratorWithFill::StartRow() {
  while (m_current.row <= m_range.Row2()) {
    if (!m_bSkipHidden || m_pSheet->IsRowVisible(m_current.row))
      if (SeekInRow(m_range.Col1())) return 1;
    ++m_current.row;
  }
  m_pRow = nullptr;
  m_pCell = nullptr;
  return 0;
}

int CBookIteratorWithFill::Start() {
  m_pRow = nullptr;
  m_pCell = nullptr;
  if (!m_region.IsEmpty()) m_range = m_region.GetBoundaryRange();
  if (!m_pSheet || !m_range.IsValid()) return 0;
  m_work = m_range;
  m_current.Set(m_range.Row1(), m_range.Col1());
  return StartRow();
}

int CBookIteratorWithFill::Next() {
  if (!m_pSheet || !m_range.IsValid() || m_current.row > m_range.Row2()) return 0;
  if (SeekInRow(m_current.col + 1)) return 1;
  ++m_current.row;
  return StartRow();
}
