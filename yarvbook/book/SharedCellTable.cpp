#include "book/SharedCellTable.h"

#include <memory>
#include <new>

#include "base/Cell.h"
#include "base/Range.h"
#include "base/Region.h"
#include "base/ZelException.h"
#include "book/BookIterator.h"
#include "book/CellRecord.h"
#include "book/Row.h"
#include "book/SheetBase.h"

CSharedCellTable::~CSharedCellTable() { RemoveAllSCT(); }

CSharedCellTable& CSharedCellTable::Get() {
  static CSharedCellTable s_Table;
  return s_Table;
}

CCell* CSharedCellTable::FindEmptyCell(unsigned short wFormat) const {
  return wFormat < m_EmptyCells.size() ? m_EmptyCells[wFormat] : nullptr;
}

CCell* CSharedCellTable::SetEmptyCell(unsigned short wFormat) {
  if (CCell* pCell = FindEmptyCell(wFormat)) return pCell;
  try {
    if (wFormat >= m_EmptyCells.size()) m_EmptyCells.resize(wFormat + 1u, nullptr);
  } catch (const std::bad_alloc&) {
    CZelException::ThrowMemory();
  }
  auto* pCell = new CCell(wFormat);
  pCell->SetSCT(true);
  m_EmptyCells[wFormat] = pCell;
  return pCell;
}

CCell* CSharedCellTable::SetEmptyCell(CRow* pRow, int nCol, unsigned short wFormat) {
  CCell* pEmpty = SetEmptyCell(wFormat);
  pRow->GrowCells(nCol);
  pRow->Clear(nCol);
  pRow->SetAt(nCol, pEmpty);
  return pEmpty;
}

CCell* CSharedCellTable::SetEmptyCell(CSheetBase* pSheet, const TCell& cell,
                                      unsigned short wFormat) {
  if (!cell.IsValid()) return nullptr;
  return SetEmptyCell(pSheet->InitRow(cell.row), cell.col, wFormat);
}

CCell* CSharedCellTable::CloneCell(CCell* pCell) {
  if (pCell && pCell->IsSCT() && !pCell->IsFormula()) return pCell->LocalClone();
  return pCell;
}

CCell* CSharedCellTable::AddCell(CCell* pCell) {
  if (!pCell || pCell->IsSCT()) return pCell;
  if (pCell->IsEmptyInitCell()) {
    const unsigned short wFormat = pCell->GetFormat();
    if (CCell* pShared = FindEmptyCell(wFormat)) {
      delete pCell;
      return pShared;
    }
    try {
      if (wFormat >= m_EmptyCells.size()) m_EmptyCells.resize(wFormat + 1u, nullptr);
    } catch (const std::bad_alloc&) {
      CZelException::ThrowMemory();
    }
    pCell->SetSCT(true);
    m_EmptyCells[wFormat] = pCell;
    return pCell;
  }
  // Compare treats texts exactly, so "a" and "A" stay two cells.
  for (CCell* pShared : m_SharedCells) {
    if (*pShared == *pCell) {
      delete pCell;
      return pShared;
    }
  }
  try {
    m_SharedCells.push_back(pCell);
  } catch (const std::bad_alloc&) {
    CZelException::ThrowMemory();
  }
  pCell->SetSCT(true);
  return pCell;
}

CCell* CSharedCellTable::ModifyClonedCell(CRow* pRow, int nCol, CCell** ppSlotCell,
                                          CCell* pChanged) {
  CCell* pResult = pChanged;
  if (pChanged && !pChanged->IsSCT() && pChanged->IsEmptyInitCell()) {
    // AddCell deletes pChanged when the shared empty cell exists; a private cell
    // still in the slot must not be reached through it afterwards.
    if (*ppSlotCell == pChanged) *ppSlotCell = nullptr;
    pResult = AddCell(pChanged);
  }
  if (pResult != *ppSlotCell) {
    pRow->SetCell(nCol, pResult);
    *ppSlotCell = pResult;
  }
  return pResult;
}

template <class TFn>
CCell* CSharedCellTable::Modify(CRow* pRow, int nCol, CCell** ppCell, TFn fn) {
  CCell* pCell = CloneCell(*ppCell);
  if (!pCell) return nullptr;
  try {
    fn(*pCell);
  } catch (...) {
    if (pCell != *ppCell) delete pCell;
    throw;
  }
  return ModifyClonedCell(pRow, nCol, ppCell, pCell);
}

CCell* CSharedCellTable::ValueClear(CRow* pRow, int nCol, CCell** ppCell) {
  return Modify(pRow, nCol, ppCell, [](CCell& c) { c.Clear(); });
}

CCell* CSharedCellTable::ValueSetValue(CRow* pRow, int nCol, CCell** ppCell, double r) {
  return Modify(pRow, nCol, ppCell, [r](CCell& c) { c.SetValue(r); });
}

CCell* CSharedCellTable::ValueSetValue(CRow* pRow, int nCol, CCell** ppCell, int n) {
  return Modify(pRow, nCol, ppCell, [n](CCell& c) { c.SetValue(n); });
}

CCell* CSharedCellTable::ValueSetValue(CRow* pRow, int nCol, CCell** ppCell,
                                       const char16_t* pwszText, int nLength) {
  return Modify(pRow, nCol, ppCell,
                [pwszText, nLength](CCell& c) { c.SetValue(pwszText, nLength); });
}

CCell* CSharedCellTable::ValueSetValue(CRow* pRow, int nCol, CCell** ppCell, const TValue* pValue) {
  return Modify(pRow, nCol, ppCell, [pValue](CCell& c) {
    if (pValue)
      c.SetValue(*pValue);
    else
      c.Clear();
  });
}

CCell* CSharedCellTable::ValueSetValue(CRow* pRow, int nCol, CCell** ppCell, const TValue& value) {
  return ValueSetValue(pRow, nCol, ppCell, &value);
}

CCell* CSharedCellTable::ValueSetLogical(CRow* pRow, int nCol, CCell** ppCell, int nLogical) {
  return Modify(pRow, nCol, ppCell, [nLogical](CCell& c) { c.SetLogical(nLogical); });
}

CCell* CSharedCellTable::ValueSetError(CRow* pRow, int nCol, CCell** ppCell,
                                       TValue::TError eError) {
  return Modify(pRow, nCol, ppCell, [eError](CCell& c) { c.SetError(eError); });
}

CCell* CSharedCellTable::ValueSetExcelError(CRow* pRow, int nCol, CCell** ppCell,
                                            unsigned char cError) {
  return Modify(pRow, nCol, ppCell, [cError](CCell& c) { c.SetExcelError(cError); });
}

CCell* CSharedCellTable::ValueCopyAndClearSource(CRow* pRow, int nCol, CCell** ppCell,
                                                 TValue& src) {
  return Modify(pRow, nCol, ppCell, [&src](CCell& c) { c.CopyAndClearSource(src); });
}

CCell* CSharedCellTable::SetCellFormat(CRow* pRow, int nCol, CCell** ppCell,
                                       unsigned short wFormat) {
  return Modify(pRow, nCol, ppCell, [wFormat](CCell& c) { c.SetFormat(wFormat); });
}

CCell* CSharedCellTable::SetCellHasMemo(CRow* pRow, int nCol, CCell** ppCell, bool bHasMemo) {
  return Modify(pRow, nCol, ppCell, [bHasMemo](CCell& c) { c.SetHasMemo(bHasMemo); });
}

CCell* CSharedCellTable::SetCellBidir(CRow* pRow, int nCol, CCell** ppCell, bool bBidir) {
  return Modify(pRow, nCol, ppCell, [bBidir](CCell& c) { c.SetBidir(bBidir); });
}

CCell* CSharedCellTable::SetMergedCellIndex(CRow* pRow, int nCol, CCell** ppCell,
                                            unsigned short wIndex) {
  return Modify(pRow, nCol, ppCell, [wIndex](CCell& c) { c.SetMergedCellIndex(wIndex); });
}

int CSharedCellTable::SetAttributeIter(void* pContext, CBookIterator& it, TCellAttributeProc pfn,
                                       std::intptr_t a, std::intptr_t b) {
  for (int bMore = it.Start(); bMore; bMore = it.Next()) {
    CRow* pRow = it.GetRow();
    const int nCol = it.GetCurrent().col;
    CCell* pSlot = pRow->Cell(nCol);
    CCell* pCell = CloneCell(pSlot);
    if (!pCell) continue;
    int nGoOn;
    try {
      nGoOn = pfn(pContext, it.GetSheet(), pCell, a, b);
    } catch (...) {
      if (pCell != pSlot) delete pCell;
      throw;
    }
    if (!nGoOn) {
      if (pCell != pSlot) delete pCell;
      return 0;
    }
    ModifyClonedCell(pRow, nCol, &pSlot, pCell);
  }
  return 1;
}

int CSharedCellTable::SetAttribute(void* pContext, CSheetBase* pSheet, const TRange& range,
                                   TCellAttributeProc pfn, std::intptr_t a, std::intptr_t b) {
  CBookIterator it(pSheet, range);
  return SetAttributeIter(pContext, it, pfn, a, b);
}

int CSharedCellTable::SetAttribute(void* pContext, CSheetBase* pSheet, const TRegion& region,
                                   TCellAttributeProc pfn, std::intptr_t a, std::intptr_t b) {
  CBookIterator it(pSheet, region, false);
  return SetAttributeIter(pContext, it, pfn, a, b);
}

int CSharedCellTable::SetMergedCellIndex(void* pContext, CSheetBase* pSheet, const TRange& range,
                                         unsigned short wIndex) {
  return SetAttribute(
      pContext, pSheet, range,
      [](void*, CSheetBase*, CCell* pCell, std::intptr_t nIndex, std::intptr_t) {
        pCell->SetMergedCellIndex(static_cast<unsigned short>(nIndex));
        return 1;
      },
      wIndex, 0);
}

void CSharedCellTable::RemoveAllSCT() {
  for (auto it = m_SharedCells.rbegin(); it != m_SharedCells.rend(); ++it) delete *it;
  m_SharedCells.clear();
  for (auto it = m_EmptyCells.rbegin(); it != m_EmptyCells.rend(); ++it) delete *it;
  m_EmptyCells.clear();
}
