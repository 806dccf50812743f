#include "book/BookIterator.h"

#include <algorithm>

#include "book/Row.h"
#include "book/SheetBase.h"

CBookIterator::CBookIterator(CSheetBase* pSheet) : m_pSheet(pSheet) {
  m_range.Set(0, 0, kMaxRow, kMaxCol);
}

CBookIterator::CBookIterator(CSheetBase* pSheet, const TRange& range)
    : m_range(range), m_pSheet(pSheet) {}

CBookIterator::CBookIterator(CSheetBase* pSheet, const TRegion& region, int bSkipHidden) {
  Set(pSheet, region, bSkipHidden);
}

void CBookIterator::Set(CSheetBase* pSheet, const TRange& range) {
  m_pSheet = pSheet;
  m_range = range;
  m_region.Clear();
  m_bSkipHidden = 0;
}

void CBookIterator::Set(CSheetBase* pSheet, const TRegion& region, int bSkipHidden) {
  m_pSheet = pSheet;
  m_region = region;
  m_range = region.GetBoundaryRange();
  m_bSkipHidden = bSkipHidden;
}

int CBookIterator::Start() {
  m_pRow = nullptr;
  m_pCell = nullptr;
  if (!m_pSheet) return 0;
  m_work.SetRows(0, m_pSheet->Row2());
  if (!m_region.IsEmpty()) m_range = m_region.GetBoundaryRange();
  m_work.SetRow1(std::max(m_work.Row1(), m_range.Row1()));
  m_work.SetRow2(std::min(m_work.Row2(), m_range.Row2()));
  m_work.SetCols(m_range.Col1(), m_range.Col2());
  m_current.Set(m_work.Row1() - 1, m_work.Col1());
  return NextRow();
}

bool CBookIterator::IsRowAccepted(int nRow) const {
  return !m_bSkipHidden || m_pSheet->IsRowVisible(nRow);
}

bool CBookIterator::IsCellAccepted(const CCell* pCell, int nRow, int nCol) const {
  if (!pCell) return false;
  if (!m_region.IsEmpty() && !m_region.Contains(TCell(nRow, nCol))) return false;
  return !m_bSkipHidden || m_pSheet->IsColVisible(nCol);
}

bool CBookIterator::FindInRow(int nCol) {
  for (; nCol <= m_work.Col2(); ++nCol) {
    CCell* pCell = m_pRow->Cell(nCol);
    if (IsCellAccepted(pCell, m_current.row, nCol)) {
      m_current.col = nCol;
      m_pCell = pCell;
      return true;
    }
  }
  return false;
}

int CBookIterator::NextRow() {
  if (!m_range.IsValid() || !m_pSheet) return 0;
  while (m_current.row < m_work.Row2()) {
    ++m_current.row;
    if (!IsRowAccepted(m_current.row)) continue;
    m_pRow = m_pSheet->Row(m_current.row);
    if (!m_pRow) continue;
    m_work.SetCol2(std::min(m_pRow->Cell2(), m_range.Col2()));
    if (FindInRow(m_range.Col1())) return 1;
  }
  m_pRow = nullptr;
  m_pCell = nullptr;
  return 0;
}

int CBookIterator::Next() {
  if (!m_pSheet || !m_pRow || !m_range.IsValid()) return 0;
  if (FindInRow(m_current.col + 1)) return 1;
  return NextRow();
}
