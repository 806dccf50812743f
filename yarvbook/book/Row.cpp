#include "book/Row.h"

#include <algorithm>
#include <memory>

#include "book/BookBase.h"
#include "book/SheetBase.h"

CRow::~CRow() {
  // The base destructor frees through its own FreeObject, which would delete shared
  // cells: empty every slot here.
  for (int i = 0; i < m_nSize; ++i) {
    FreeObject(m_pData[i]);
    m_pData[i] = nullptr;
  }
}

void CRow::FreeObject(CZelObject* pObj) {
  if (pObj && !static_cast<CCell*>(pObj)->IsSCT()) delete pObj;
}

int CRow::Cell1() const {
  for (int i = 0; i < m_nSize; ++i)
    if (m_pData[i]) return i;
  return -1;
}

int CRow::NextCell(const CCell* pCell, int nFrom) const {
  for (int i = std::max(nFrom + 1, 0); i < m_nSize; ++i)
    if (m_pData[i] == pCell) return i;
  return -1;
}

void CRow::_Delete(int nCol, int nCount) {
  if (nCol < 0 || nCount <= 0 || nCol >= m_nSize) return;
  Move(nCol, nCol + nCount, m_nSize - nCol);
}

CCell* CRow::InitCell(CSheetBase* pSheet, int nCol, unsigned short wFormat) {
  CCell* pOld = Cell(nCol);
  if (pOld && !pOld->IsFormula()) return pOld;
  if (pOld) {
    wFormat = pOld->GetFormat();
    if (pSheet && pSheet->GetBook()) pSheet->GetBook()->InvalidateFormulasOrder(0);
  }
  auto pCell = std::make_unique<CCell>(wFormat);
  if (pOld) {
    Clear(nCol);
    SetAt(nCol, pCell.get());
  } else {
    SetAtGrow(nCol, pCell.get());
  }
  return pCell.release();
}

void CRow::Shrink(int nCol) {
  if (nCol == -1) {
    CZelObArray::Shrink();
    return;
  }
  CCell* pCell = Cell(nCol);
  if (!pCell) return;
  if (!pCell->IsSCT()) pCell->Shrink();
  if (pCell->IsEmpty() && !pCell->IsFormula() && pCell->IsInitCell() &&
      pCell->GetFormat() == CCell::kDefaultFormat)
    Clear(nCol);
}

void CRow::ShrinkArrayOfArrays() {
  for (int i = 0; i < m_nSize; ++i) Shrink(i);
  CZelObArray::Shrink();
  FreeExtra();
}

CRow* CRow::Clone() const {
  auto pRow = std::make_unique<CRow>();
  pRow->Copy(this);
  return pRow.release();
}

void CRow::Copy(const CZelObject* pSrc) {
  const auto* pRow = static_cast<const CRow*>(pSrc);
  if (pRow == this) return;
  Clear(0, m_nSize);
  SetSize(0);
  if (pRow->m_nSize == 0) return;
  SetSize(pRow->m_nSize);
  for (int i = 0; i < pRow->m_nSize; ++i) {
    const CCell* pCell = pRow->Cell(i);
    if (!pCell) continue;
    m_pData[i] = pCell->IsSCT() ? const_cast<CCell*>(pCell) : pCell->Clone();
  }
}
