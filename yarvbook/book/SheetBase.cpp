#include "book/SheetBase.h"

#include <algorithm>
#include <memory>
#include <new>

#include "base/ZelException.h"
#include "book/BookBase.h"
#include "book/CellRecord.h"
#include "book/SharedCellTable.h"
#include "format/ValFormat.h"
#include "format/ValFormatList.h"

namespace {

// NewValueCell, then one clone-on-write value operation of the shared cell table.
template <class TFn>
int SetConstant(CSheetBase& sheet, const TCell& cell, TFn fn) {
  if (!cell.IsValid()) return -1;
  CCell* pCell = nullptr;
  if (sheet.NewValueCell(cell, &pCell) != CSheetBase::kOk) return CSheetBase::kErrMemory;
  try {
    fn(CSharedCellTable::Get(), sheet.Row(cell.row), cell.col, &pCell);
  } catch (const CZelException&) {
    return CSheetBase::kErrMemory;
  }
  return CSheetBase::kOk;
}

}  // namespace

CSheetBase::CSheetBase(CBookBase* pBook, int nSheetIndex)
    : m_pBook(pBook), m_nSheetIndex(static_cast<short>(nSheetIndex)) {
  m_RowInfo.Init(kMaxRow, kDefRowHeight, true, kDefRowHdrWidth, false);
  m_ColInfo.Init(kMaxCol, kDefColWidth, false, kDefColHdrHeight, false);
}

CSheetBase::~CSheetBase() = default;

CRow* CSheetBase::InitRow(int nRow) {
  if (nRow < 0 || nRow > kMaxRow) return nullptr;
  if (CRow* pRow = Row(nRow)) return pRow;
  auto pRow = std::make_unique<CRow>();
  SetAtGrow(nRow, pRow.get());
  return pRow.release();
}

CCell* CSheetBase::InitCell(int nRow, int nCol, unsigned short wFormat) {
  if (!TCell(nRow, nCol).IsValid()) return nullptr;
  CCell* pCell = InitRow(nRow)->InitCell(this, nCol, wFormat);
  SetNeedsRecalc(TCell(nRow, nCol));
  return pCell;
}

int CSheetBase::NewValueCell(const TCell& cell, CCell** ppNewCell, CCell** ppOldCell,
                             bool bMarkRecalc, bool bUpdateMerged) {
  if (!cell.IsValid()) return kErrMemory;
  CRow* pRow;
  try {
    pRow = InitRow(cell.row);
  } catch (const CZelException&) {
    return kErrMemory;
  }
  CCell* pOld = pRow->Cell(cell.col);
  CCell* pCell = pOld;
  if (!pOld || ppOldCell || pOld->IsFormula()) {
    // A new cell keeps the format of the one it replaces.
    const unsigned short wFormat = pOld ? pOld->GetFormat() : NewFormat(cell.row, cell.col);
    pCell = nullptr;
    try {
      pCell = new CCell(wFormat);
      pRow->SetCell(cell.col, pCell);
    } catch (const CZelException&) {
      CleanupAfterError(cell, pCell);
      if (pOld && pRow->Cell(cell.col) != pOld) pRow->SetAt(cell.col, pOld);
      return kErrMemory;
    }
    if (pOld && !ppOldCell) {
      if (pOld->IsFormula() && m_pBook) m_pBook->InvalidateFormulasOrder(0);
      if (!pOld->IsSCT()) delete pOld;
    }
  }
  if (ppOldCell) *ppOldCell = pOld;
  if (ppNewCell) *ppNewCell = pCell;
  if (bUpdateMerged) UpdateRow(cell.row);
  if (bMarkRecalc) SetNeedsRecalc(cell);
  return kOk;
}

void CSheetBase::CleanupAfterError(const TCell& cell, CCell* pNewCell) {
  if (!pNewCell) return;
  if (CRow* pRow = Row(cell.row); pRow && pRow->Cell(cell.col) == pNewCell)
    pRow->SetAt(cell.col, nullptr);
  if (!pNewCell->IsSCT()) delete pNewCell;
}

int CSheetBase::SetNumber(const TCell& cell, double r) {
  return SetConstant(*this, cell, [r](CSharedCellTable& t, CRow* pRow, int nCol, CCell** pp) {
    t.ValueSetValue(pRow, nCol, pp, r);
  });
}

int CSheetBase::SetLogical(const TCell& cell, int nLogical) {
  return SetConstant(*this, cell,
                     [nLogical](CSharedCellTable& t, CRow* pRow, int nCol, CCell** pp) {
                       t.ValueSetLogical(pRow, nCol, pp, nLogical);
                     });
}

int CSheetBase::SetText(const TCell& cell, const char16_t* pwszText, int nLength) {
  return SetConstant(
      *this, cell, [pwszText, nLength](CSharedCellTable& t, CRow* pRow, int nCol, CCell** pp) {
        t.ValueSetValue(pRow, nCol, pp, pwszText ? pwszText : u"", pwszText ? nLength : 0);
      });
}

int CSheetBase::SetValue(const TCell& cell, const TValue& value) {
  return SetConstant(*this, cell, [&value](CSharedCellTable& t, CRow* pRow, int nCol, CCell** pp) {
    t.ValueSetValue(pRow, nCol, pp, value);
  });
}

int CSheetBase::SetError(const TCell& cell, TValue::TError eError) {
  return SetConstant(*this, cell, [eError](CSharedCellTable& t, CRow* pRow, int nCol, CCell** pp) {
    t.ValueSetError(pRow, nCol, pp, eError);
  });
}

int CSheetBase::SetValueFromText(const TCell& cell, const char16_t* pwszText, int nParseType) {
  if (!cell.IsValid()) return -1;
  if (!pwszText || !*pwszText) return ClearValue(cell);
  TValue value;
  int nProposed = 0;
  if (!value.StringToReal(pwszText, &nProposed, GetValFormatType(cell), nParseType))
    return SetText(cell, pwszText);
  const unsigned short wOldFormat = GetFormatIndex(cell);
  const bool bPropose =
      m_pBook && nProposed > 0 && GetValFormatType(cell) == CSingleFormat::ftGeneral;
  if (bPropose) {
    if (const int nResult = SetCellFormat(cell, CBookBase::GetCellFormatForValFormat(nProposed));
        nResult != kOk)
      return nResult;
  }
  const int nResult = SetValue(cell, value);
  if (nResult != kOk && bPropose) (void)SetCellFormat(cell, wOldFormat);
  return nResult;
}

int CSheetBase::ClearValue(const TCell& cell) {
  if (!cell.IsValid()) return -1;
  CRow* pRow = Row(cell.row);
  CCell* pCell = pRow ? pRow->Cell(cell.col) : nullptr;
  if (!pCell) return kOk;
  if (pCell->IsFormula()) {
    // A formula without its value is no formula: a plain empty cell of its format.
    if (NewValueCell(cell, &pCell) != kOk) return kErrMemory;
  }
  try {
    CSharedCellTable::Get().ValueClear(pRow, cell.col, &pCell);
  } catch (const CZelException&) {
    return kErrMemory;
  }
  SetNeedsRecalc(cell);
  return kOk;
}

int CSheetBase::SetCellFormat(const TCell& cell, unsigned short wFormat) {
  if (!cell.IsValid()) return -1;
  try {
    CRow* pRow = InitRow(cell.row);
    CCell* pCell = pRow->Cell(cell.col);
    if (!pCell) {
      CSharedCellTable::Get().SetEmptyCell(pRow, cell.col, wFormat);
      return kOk;
    }
    CSharedCellTable::Get().SetCellFormat(pRow, cell.col, &pCell, wFormat);
  } catch (const CZelException&) {
    return kErrMemory;
  }
  return kOk;
}

int CSheetBase::SetCell(int nRow, int nCol, CCell* pCell) {
  if (!TCell(nRow, nCol).IsValid()) {
    if (pCell && !pCell->IsSCT()) delete pCell;
    return -1;
  }
  try {
    CRow* pRow = InitRow(nRow);
    CCell* pOld = pRow->Cell(nCol);
    if (pOld == pCell) return kOk;
    pRow->SetCell(nCol, pCell);
    if (pOld) {
      if (pOld->IsFormula() && m_pBook) m_pBook->InvalidateFormulasOrder(0);
      pRow->FreeObject(pOld);
    }
  } catch (const CZelException&) {
    if (pCell && !pCell->IsSCT()) delete pCell;
    return kErrMemory;
  }
  if (pCell && pCell->IsFormula() && m_pBook) m_pBook->InvalidateFormulasOrder(0);
  SetNeedsRecalc(TCell(nRow, nCol));
  return kOk;
}

int CSheetBase::SetCell(const TRegion& region, CCell* pCell) {
  try {
    pCell = CSharedCellTable::Get().AddCell(pCell);
  } catch (const CZelException&) {
    if (pCell && !pCell->IsSCT()) delete pCell;
    return kErrMemory;
  }
  for (int i = 0; i < region.Ranges(); ++i) {
    TRange range = region.Range(i);
    if (!range.Intersect(TRange(0, 0, kMaxRow, kMaxCol))) continue;
    for (int r = range.Row1(); r <= range.Row2(); ++r)
      for (int c = range.Col1(); c <= range.Col2(); ++c)
        if (int nResult = SetCell(r, c, pCell); nResult != kOk) return nResult;
  }
  return kOk;
}

unsigned short CSheetBase::NewFormat(int nRow, int nCol) const {
  const unsigned short wRowFormat = m_RowInfo.GetFormat(nRow);
  if (wRowFormat != CCell::kDefaultFormat) return wRowFormat;
  return m_ColInfo.GetFormat(nCol);
}

void CSheetBase::GetValue(int nRow, int nCol, TValue* pValue) const {
  if (const CCell* pCell = Cell(nRow, nCol))
    *pValue = pCell->GetValue();
  else
    pValue->Clear();
}

bool CSheetBase::GetNumber(int nRow, int nCol, double& r) const {
  const CCell* pCell = Cell(nRow, nCol);
  if (!pCell || !pCell->IsReal()) return false;
  r = pCell->GetReal();
  return true;
}

double CSheetBase::QuickGetNumber(int nRow, int nCol) const {
  const CCell* pCell = Cell(nRow, nCol);
  return pCell ? pCell->GetReal() : 0;
}

bool CSheetBase::GetLogical(int nRow, int nCol, int& nLogical) const {
  const CCell* pCell = Cell(nRow, nCol);
  if (!pCell || !pCell->IsLogical()) return false;
  nLogical = pCell->GetLogical();
  return true;
}

const char16_t* CSheetBase::GetText(int nRow, int nCol) const {
  const CCell* pCell = Cell(nRow, nCol);
  return pCell ? pCell->TextPtr() : nullptr;
}

bool CSheetBase::IsValue(int nRow, int nCol) const {
  const CCell* pCell = Cell(nRow, nCol);
  return pCell && pCell->IsValue();
}

bool CSheetBase::IsEmptyCell(int nRow, int nCol) const { return !IsValue(nRow, nCol); }

bool CSheetBase::IsEmpty(const TRange& range) const {
  TRange clipped = range;
  clipped.Normalize();
  if (!clipped.Intersect(TRange(0, 0, kMaxRow, kMaxCol))) return true;
  const int nRow2 = std::min(clipped.Row2(), Row2());
  for (int r = clipped.Row1(); r <= nRow2; ++r) {
    const CRow* pRow = Row(r);
    if (!pRow) continue;
    const int nCol2 = std::min(clipped.Col2(), pRow->Cell2());
    for (int c = clipped.Col1(); c <= nCol2; ++c)
      if (const CCell* pCell = pRow->Cell(c); pCell && pCell->IsValue()) return false;
  }
  return true;
}

unsigned short CSheetBase::GetFormatIndex(const TCell& cell) const {
  if (const CCell* pCell = Cell(cell)) return pCell->GetFormat();
  return NewFormat(cell.row, cell.col);
}

int CSheetBase::GetValFormatIndex(const TCell& cell) const {
  return CBookBase::GetCellValFormatIndex(GetFormatIndex(cell));
}

CSingleFormat::EType CSheetBase::GetValFormatType(const TCell& cell) const {
  return m_pBook ? m_pBook->GetValFormatType(GetValFormatIndex(cell)) : CSingleFormat::ftGeneral;
}

const char16_t* CSheetBase::GetFormattedText(int nRow, int nCol, int nGeneralWidth) const {
  // A sheet without a book borrows the General format of an empty list.
  static const CValFormatList s_NoFormats;
  CSingleFormat::ResetResult();
  const CCell* pCell = Cell(nRow, nCol);
  if (!pCell || pCell->IsEmpty()) return CSingleFormat::m_Buf;
  const int nValFormat = CBookBase::GetCellValFormatIndex(pCell->GetFormat());
  const CValFormat* pFormat =
      m_pBook ? m_pBook->GetValFormat(nValFormat) : s_NoFormats.GetValFormat(0);
  const char16_t* pwszPlain = nullptr;
  switch (pCell->GetValType()) {
    case TValue::vtReal:
      pFormat->Format(pCell->GetReal(), nGeneralWidth);
      return CSingleFormat::m_Buf;
    case TValue::vtText: {
      const char16_t* pwszText = pCell->TextPtr();
      int nLen = 0;
      while (pwszText && pwszText[nLen]) ++nLen;
      pFormat->Format(pwszText, nLen);
      return CSingleFormat::m_Buf;
    }
    // Cells show logicals and errors as they are: no format applies to them.
    case TValue::vtLogical:
      pwszPlain = TValue::GetLogicalText(pCell->GetLogical() != 0, false);
      break;
    case TValue::vtError:
      pwszPlain = TValue::GetErrorString(pCell->GetError());
      break;
    default:
      break;
  }
  int nLen = 0;
  while (pwszPlain && pwszPlain[nLen]) ++nLen;
  CSingleFormat::Append(pwszPlain, nLen);
  return CSingleFormat::m_Buf;
}

int CSheetBase::SetSheetName(const char16_t* pwszName, bool bSetModified, bool bFixReferences) {
  try {
    if (bFixReferences) CBookBase::CheckBooksOrder();
    std::u16string sName(pwszName ? pwszName : u"");
    if (sName.size() > static_cast<size_t>(kMaxSheetName)) {
      // Never keep half of a surrogate pair.
      size_t nKeep = kMaxSheetName;
      if (sName[nKeep - 1] >= 0xD800 && sName[nKeep - 1] <= 0xDBFF) --nKeep;
      sName.resize(nKeep);
    }
    if (m_pBook) {
      const CSheetBase* pOther = m_pBook->FindSheetBase(sName.c_str(), true);
      if (pOther && pOther != this) return kErrNameTaken;
    }
    m_sName = std::move(sName);
    if (bSetModified) SetModified();
    if (bFixReferences) CBookBase::InvalidateBooksOrder();
  } catch (const std::bad_alloc&) {
    return kErrMemory;
  } catch (const CZelException&) {
    return kErrMemory;
  }
  return kOk;
}

bool CSheetBase::operator==(const char16_t* pwszName) const {
  return pwszName && m_sName == pwszName;
}

int CSheetBase::SetRowColName(const char16_t* pwszText) {
  try {
    if (pwszText)
      m_sRowColName = pwszText;
    else
      m_sRowColName.clear();
  } catch (const std::bad_alloc&) {
    return kErrMemory;
  }
  UpdateAllCells();
  return kOk;
}

bool CSheetBase::GetActiveRange(TRange& range) const {
  int nRow1 = kMaxRow + 1, nCol1 = kMaxCol + 1, nRow2 = -1, nCol2 = -1;
  for (int r = 0; r < m_nSize; ++r) {
    const CRow* pRow = Row(r);
    if (!pRow) continue;
    const int nFirst = pRow->Cell1();
    const int nLast = pRow->Cell2();
    if (nFirst < 0 || nFirst > nLast) continue;
    nRow1 = std::min(nRow1, r);
    nRow2 = std::max(nRow2, r);
    nCol1 = std::min(nCol1, nFirst);
    nCol2 = std::max(nCol2, nLast);
  }
  range.Set(nRow1, nCol1, nRow2, nCol2);
  if (range.IsValid()) return true;
  range.Set(-1, -1, -1, -1);
  return false;
}

void CSheetBase::GetNextEdge(ENextEdgeDirection eDir, TCell& cell) const {
  if (!cell.IsValid()) return;
  const bool bRows = eDir == edUp || eDir == edDown;
  const int nStep = (eDir == edLeft || eDir == edUp) ? -1 : 1;
  const int nLimit = bRows ? kMaxRow : kMaxCol;
  const CRow* pRow = Row(cell.row);  // the row walked when stepping along columns
  auto isValue = [&](int nPos) {
    const CCell* pCell = bRows ? Cell(nPos, cell.col) : (pRow ? pRow->Cell(nPos) : nullptr);
    return pCell && pCell->IsValue();
  };
  auto isVisible = [&](int nPos) { return bRows ? IsRowVisible(nPos) : IsColVisible(nPos); };
  // Past the last row (or the row's last slot) nothing holds a value.
  const int nStored = bRows ? Rows() : (pRow ? pRow->Cells() : 0);
  // The next visible position after nPos, or -1 past the grid edge.
  auto nextVisible = [&](int nPos) {
    do {
      nPos += nStep;
      if (nPos < 0 || nPos > nLimit) return -1;
    } while (!isVisible(nPos));
    return nPos;
  };

  const int nStart = bRows ? cell.row : cell.col;
  const bool bStartValue = isValue(nStart);
  int nPos = nextVisible(nStart);
  if (nPos < 0) return;
  if (isValue(nPos)) {
    if (bStartValue) {
      for (int nNext = nextVisible(nPos); nNext >= 0 && isValue(nNext); nNext = nextVisible(nPos))
        nPos = nNext;
    }
  } else {
    for (;;) {
      nPos += nStep;
      if (nPos < 0 || nPos > nLimit || (nStep > 0 && nPos >= nStored)) {
        nPos = nStep < 0 ? 0 : nLimit;
        break;
      }
      if (isValue(nPos) && isVisible(nPos)) break;
    }
  }
  if (bRows)
    cell.row = nPos;
  else
    cell.col = nPos;
}

void CSheetBase::DeleteRow(int nRow) {
  if (nRow < 0 || nRow >= m_nSize || !m_pData[nRow]) return;
  // The recalculation chain points at the row's formula cells.
  if (m_pBook) m_pBook->InvalidateFormulasOrder(0);
  FreeObject(m_pData[nRow]);
  m_pData[nRow] = nullptr;
}

void CSheetBase::CleanUpRow(int nRow) {
  CRow* pRow = Row(nRow);
  if (!pRow) return;
  pRow->ShrinkArrayOfArrays();
  if (pRow->Cells() == 0) DeleteRow(nRow);
}

void CSheetBase::CleanUpSheet() { ShrinkRows(0, m_nSize - 1); }

void CSheetBase::ShrinkRows(int nFrom, int nTo) {
  nFrom = std::max(nFrom, 0);
  nTo = std::min(nTo, m_nSize - 1);
  for (int r = nFrom; r <= nTo; ++r) CleanUpRow(r);
}

void CSheetBase::ShrinkRowArray() {
  CZelObArray::Shrink();
  FreeExtra();
}

void CSheetBase::Shrink() {
  CleanUpSheet();
  ShrinkRowArray();
}

void CSheetBase::Optimize() { Shrink(); }

void CSheetBase::SetColWidth(int nCol1, int nCol2, unsigned short wWidth) {
  m_ColInfo.SetSize(nCol1, nCol2, wWidth);
}

void CSheetBase::SetRowHeight(int nRow1, int nRow2, unsigned short wHeight) {
  m_RowInfo.SetSize(nRow1, nRow2, wHeight);
  UpdateRows(nRow1, nRow2);
}

void CSheetBase::SetColHidden(int nCol1, int nCol2, bool bHidden) {
  m_ColInfo.SetHidden(nCol1, nCol2, bHidden);
}

void CSheetBase::SetRowHidden(int nRow1, int nRow2, bool bHidden) {
  m_RowInfo.SetHidden(nRow1, nRow2, bHidden);
  UpdateRows(nRow1, nRow2);
}

void CSheetBase::SetRowFiltered(int nRow1, int nRow2, bool bFiltered) {
  m_RowInfo.SetFiltered(nRow1, nRow2, bFiltered);
  UpdateRows(nRow1, nRow2);
}

void CSheetBase::SetColUserDefinedSize(int nCol1, int nCol2, bool bOn) {
  m_ColInfo.SetUserDefinedSize(nCol1, nCol2, bOn);
}

void CSheetBase::SetRowUserDefinedSize(int nRow1, int nRow2, bool bOn) {
  m_RowInfo.SetUserDefinedSize(nRow1, nRow2, bOn);
}

void CSheetBase::SetDefWidth(unsigned short wWidth) { m_ColInfo.ChangeDefSize(wWidth); }

void CSheetBase::SetColInfo(int nCol1, int nCol2, const CRCInfoItem& model) {
  m_ColInfo.SetInfo(nCol1, nCol2, model);
}

void CSheetBase::SetRowInfo(int nRow1, int nRow2, const CRCInfoItem& model) {
  m_RowInfo.SetInfo(nRow1, nRow2, model);
  UpdateRows(nRow1, nRow2);
}

void CSheetBase::IncLevelInfo(bool bRows, int nFirst, int nLast, int nDelta) {
  (bRows ? m_RowInfo : m_ColInfo).IncLevelInfo(nFirst, nLast, nDelta);
}

bool CSheetBase::GetHidden(const TCell& cell) const {
  return !IsRowVisible(cell.row) || !IsColVisible(cell.col);
}

bool CSheetBase::GetHidden(const TRange& range) const {
  return m_RowInfo.GetHidden(range.Row1(), range.Row2()) ||
         m_ColInfo.GetHidden(range.Col1(), range.Col2());
}

bool CSheetBase::GetHidden(const TRegion& region) const {
  for (int i = 0; i < region.Ranges(); ++i)
    if (!GetHidden(region.Range(i))) return false;
  return true;
}

void CSheetBase::SetNeedsAutoHeight(int nRow1, int nRow2) {
  m_RowInfo.SetNeedsAutoSize(nRow1, nRow2, true);
}

void CSheetBase::SetModified() {
  if (m_pBook) m_pBook->SetModified();
}

void CSheetBase::SetNeedsRecalc() { SetNeedsRecalc(TRange(0, 0, kMaxRow, kMaxCol)); }

void CSheetBase::SetNeedsRecalc(const TCell& cell) {
  if (!m_pBook) return;
  if (m_pBook->GetMinimalRecalc())
    m_ChangedRegion.Add(cell.row, cell.col, cell.row, cell.col, /*bCoalesce=*/true);
  m_pBook->SetNeedsRecalc();
}

void CSheetBase::SetNeedsRecalc(const TRange& range) {
  if (!m_pBook) return;
  if (m_pBook->GetMinimalRecalc())
    m_ChangedRegion.Add(range.Row1(), range.Col1(), range.Row2(), range.Col2(), /*bCoalesce=*/true);
  m_pBook->SetNeedsRecalc();
}

void CSheetBase::OnInvalidateRange(const TRange& range) {
  if (m_pBook) m_pBook->InvalidateRange(this, range, 0);
}

void CSheetBase::OnInvalidateRange(const TRegion& region) {
  if (m_pBook) m_pBook->InvalidateRange(this, region, 0);
}

void CSheetBase::UpdateRow(int nRow) { UpdateRows(nRow, nRow); }

void CSheetBase::UpdateRows(int nRow1, int nRow2) {
  if (m_pBook) m_pBook->UpdateRows(this, nRow1, nRow2);
}

void CSheetBase::UpdateRange(const TRange& range) { OnInvalidateRange(range); }

void CSheetBase::UpdateAllCells() { OnInvalidateRange(TRange(0, 0, kMaxRow, kMaxCol)); }

void CSheetBase::UpdateView() {
  if (m_pBook) m_pBook->UpdateView(this);
}

void CSheetBase::UpdateAllViews() {
  if (m_pBook) m_pBook->UpdateAllViews();
}
