#include "eval/FuncListArgs.h"

#include <algorithm>

#include "base/Range.h"
#include "base/Range3d.h"
#include "base/Region.h"
#include "book/BookBase.h"
#include "book/CellRecord.h"
#include "book/SheetBase.h"
#include "eval/FormulaEvaluator.h"
#include "eval/Value.h"
#include "formula/FormulaCell.h"

constinit TValue* TFuncRealListArgs::m_pVal = nullptr;
constinit double TFuncRealListArgs::m_Real = 0;
constinit int TFuncRealListArgs::m_nCount = 0;
constinit bool TFuncRealListArgs::m_bFailed = false;

namespace {

// Subtotal mode (a list function called by SUBTOTAL or SUBTOTALA) leaves out the
// rows a filter hid and, while the hidden-skip switch is on, hidden rows and columns.
bool IsRowSkipped(const CSheetBase* pSheet, int nRow) {
  return pSheet->RowInfo().IsFiltered(nRow) ||
         (CFormulaEvaluator::IsSubSkipHidden() && pSheet->GetRowHidden(nRow));
}
bool IsColSkipped(const CSheetBase* pSheet, int nCol) {
  return CFormulaEvaluator::IsSubSkipHidden() && pSheet->GetColHidden(nCol);
}
// A cell holding a subtotal is left out of a range always, so that nested subtotals
// are not counted twice; a single-cell argument naming one only with the hidden-skip
// switch.
bool IsSubtotalSkipped(const CCell* pCell, bool bSingleCell) {
  return pCell->IsFormula() &&
         static_cast<const CFormulaCell*>(pCell)->HasState(CFormulaCell::stSubtotal) &&
         (!bSingleCell || CFormulaEvaluator::IsSubSkipHidden());
}

// Calls fn(pCell) for every non-empty cell of range on pSheet, row by row, passing
// over what subtotal mode leaves out; only rows and cells that exist are visited, so
// a whole column costs what it holds. Stops when fn returns false.
// Rows between the levels of ForEachCell's fetching ahead: row object, slot array,
// cell.
constexpr int kRowsAhead = 16;

template <class TFn>
void ForEachCell(const CSheetBase* pSheet, const TRange& range, TFn fn) {
  const bool bSubtotal = CFormulaEvaluator::IsSubtotal();
  const bool bSingleCell = range.IsSingleCell();
  const int nRow2 = std::min(range.Row2(), pSheet->Rows() - 1);
  for (int r = range.Row1(); r <= nRow2; ++r) {
    // Each row is a row object, its slot array and the cells, each somewhere else in
    // memory: in a tall range fetch them rows ahead, one level per step.
    if (r + 3 * kRowsAhead <= nRow2) __builtin_prefetch(pSheet->Row(r + 3 * kRowsAhead));
    if (r + 2 * kRowsAhead <= nRow2) {
      const CRow* pAhead = pSheet->Row(r + 2 * kRowsAhead);
      if (pAhead != nullptr && range.Col1() < pAhead->Cells())
        __builtin_prefetch(pAhead->GetData() + range.Col1());
    }
    if (r + kRowsAhead <= nRow2) {
      const CRow* pAhead = pSheet->Row(r + kRowsAhead);
      if (pAhead != nullptr) __builtin_prefetch(pAhead->Cell(range.Col1()));
    }
    const CRow* pRow = pSheet->Row(r);
    if (pRow == nullptr || (bSubtotal && IsRowSkipped(pSheet, r))) continue;
    const int nCol2 = std::min(range.Col2(), pRow->Cells() - 1);
    for (int c = range.Col1(); c <= nCol2; ++c) {
      CCell* pCell = pRow->Cell(c);
      if (pCell == nullptr || pCell->IsEmpty()) continue;
      if (bSubtotal && (IsColSkipped(pSheet, c) || IsSubtotalSkipped(pCell, bSingleCell))) continue;
      if (!fn(pCell)) return;
    }
  }
}

// The sheets and the range of a 3-D reference, handed to fn(pSheet, range) in turn;
// sheets that no longer exist are passed over.
template <class TFn>
void ForEachSheet(const TValue& val, TFn fn) {
  CBookBase* pBook = nullptr;
  TRange3d range3d;
  val.GetValue(&pBook, &range3d);
  if (pBook == nullptr) return;
  const TRange range = range3d.GetRange();
  for (int s = range3d.Sheet1(); s <= range3d.Sheet2(); ++s) {
    if (CSheetBase* pSheet = pBook->SheetBase(s)) {
      if (!fn(pSheet, range)) return;
    }
  }
}

}  // namespace

// ---- TFuncListArgs ------------------------------------------------------------------

void TFuncListArgs::Evaluate(TValue* pArgs, int nFirst, int nArgs) {
  StartEnum();
  for (int i = nFirst; i < nArgs; ++i) {
    TValue& arg = pArgs[i];
    CSheetBase* pSheet = nullptr;
    TRange range;
    const TRegion* pRegion = nullptr;
    auto enumCell = [this, &pSheet](CCell* pCell) {
      EnumCell(pSheet, pCell);
      return true;
    };
    if (m_bRefCells && arg.GetValue(&pSheet, &range)) {
      if (pSheet == nullptr) {
        TValue err;
        err.SetError(TValue::errRef);
        EnumValue(&err);
        continue;
      }
      ForEachCell(pSheet, range, enumCell);
    } else if (m_bRefCells && arg.GetValue(&pSheet, &pRegion)) {
      for (int j = 0; pSheet != nullptr && j < pRegion->Ranges(); ++j)
        ForEachCell(pSheet, pRegion->Range(j), enumCell);
    } else if (m_bRefCells && arg.IsRange3d()) {
      ForEachSheet(arg, [&](CSheetBase* pOne, const TRange& r) {
        pSheet = pOne;
        ForEachCell(pOne, r, enumCell);
        return true;
      });
    } else if (m_bArrayItems && arg.IsArrayVal()) {
      for (int r = 0; r < arg.Rows(); ++r)
        for (int c = 0; c < arg.Cols(); ++c) EnumValue(arg.GetArrayValue(r, c));
    } else if (arg.IsRef() || arg.IsRegion() || arg.IsRange3d() || arg.IsArrayVal()) {
      EnumValue(&arg);
    } else {
      Enum(&arg);
    }
  }
  FinishEnum(pArgs);
}

void TFuncListArgs::Enum(TValue* pVal) { EnumValue(pVal); }

// ---- TFuncRealListArgs ----------------------------------------------------------------

void TFuncRealListArgs::SetResultError(int nError) {
  m_pVal->SetError(static_cast<TValue::TError>(nError));
  m_bFailed = true;
}

void TFuncRealListArgs::Evaluate(TValue* pArgs, int nFirst, int nArgs) {
  m_pVal = pArgs;
  m_bFailed = false;
  m_nCount = 0;
  StartEnum();
  for (int i = nFirst; i < nArgs && !m_bFailed; ++i) EvaluateOneArg(pArgs, i, nArgs);
  if (!m_bFailed) FinishEnum();
}

void TFuncRealListArgs::EvaluateOneArg(TValue* pArgs, int nIndex, int /*nArgs*/) {
  TValue& arg = pArgs[nIndex];
  CSheetBase* pSheet = nullptr;
  TRange range;
  const TRegion* pRegion = nullptr;
  switch (arg.GetValType()) {
    case TValue::vtCell:
    case TValue::vtRange:
      arg.GetValue(&pSheet, &range);
      if (pSheet == nullptr) {
        SetResultError(TValue::errRef);
        return;
      }
      if (range.IsSingleCell())
        OnMeetCell(pSheet, range.Row1(), range.Col1());
      else
        OnMeetRange(pSheet, range);
      return;
    case TValue::vtRegion:
      arg.GetValue(&pSheet, &pRegion);
      if (pSheet == nullptr) {
        SetResultError(TValue::errRef);
        return;
      }
      OnMeetRegion(pSheet, *pRegion);
      return;
    case TValue::vtRange3d:
      // Subtotals skip hidden rows sheet by sheet, which a span cannot say.
      if (CFormulaEvaluator::IsSubtotal()) {
        SetResultError(TValue::errValue);
        return;
      }
      ForEachSheet(arg, [this](CSheetBase* pOne, const TRange& r) {
        OnMeetRange(pOne, r);
        return !m_bFailed;
      });
      return;
    case TValue::vtArray:
      for (int r = 0; r < arg.Rows() && !m_bFailed; ++r)
        for (int c = 0; c < arg.Cols() && !m_bFailed; ++c)
          Enum(static_cast<const TValue*>(arg.GetArrayValue(r, c)));
      return;
    case TValue::vtAddInFunc:
      SetResultError(TValue::errValue);
      return;
    default:
      Enum(&arg);
      return;
  }
}

// A direct argument.
void TFuncRealListArgs::Enum(TValue* pVal) {
  switch (pVal->GetValType()) {
    case TValue::vtReal: {
      double r;
      pVal->GetValue(r);
      ++m_nCount;
      EnumReal(r);
      return;
    }
    case TValue::vtLogical:
      ++m_nCount;
      EnumReal(pVal->GetLogical() ? 1.0 : 0.0);
      return;
    case TValue::vtEmpty:
      ++m_nCount;
      EnumReal(0.0);
      return;
    case TValue::vtError:
      SetResultError(pVal->GetError());
      return;
    default:
      SetResultError(TValue::errValue);
      return;
  }
}

// An element of an array: numbers count, errors end the walk, the rest is passed over.
void TFuncRealListArgs::Enum(const TValue* pVal) {
  if (pVal->IsReal()) {
    double r;
    pVal->GetValue(r);
    ++m_nCount;
    EnumReal(r);
  } else if (pVal->IsError()) {
    SetResultError(pVal->GetError());
  }
}

void TFuncRealListArgs::EnumCell(CSheetBase* /*pSheet*/, CCell* pCell) {
  if (!pCell->IsReal()) return;
  ++m_nCount;
  EnumReal(pCell->GetReal());
}

void TFuncRealListArgs::OnMeetCell(CSheetBase* pSheet, int nRow, int nCol) {
  CCell* pCell = pSheet->Cell(nRow, nCol);
  if (pCell == nullptr || pCell->IsEmpty()) return;
  if (CFormulaEvaluator::IsSubtotal() &&
      (IsRowSkipped(pSheet, nRow) || IsColSkipped(pSheet, nCol) ||
       IsSubtotalSkipped(pCell, /*bSingleCell=*/true)))
    return;
  if (pCell->IsError()) {
    SetResultError(pCell->GetError());
    return;
  }
  EnumCell(pSheet, pCell);
}

void TFuncRealListArgs::OnMeetRange(CSheetBase* pSheet, const TRange& range) {
  ForEachCell(pSheet, range, [this, pSheet](CCell* pCell) {
    if (pCell->IsError()) {
      SetResultError(pCell->GetError());
      return false;
    }
    EnumCell(pSheet, pCell);
    return true;
  });
}

void TFuncRealListArgs::OnMeetRegion(CSheetBase* pSheet, const TRegion& region) {
  for (int i = 0; i < region.Ranges() && !m_bFailed; ++i) OnMeetRange(pSheet, region.Range(i));
}

// ---- TFuncRealListArgsWithValFormat ------------------------------------------------------

namespace {
// Set once the current call has found the cell that gives its value format.
constinit bool s_bValFormatFound = false;
}  // namespace

void TFuncRealListArgsWithValFormat::Evaluate(TValue* pArgs, int nFirst, int nArgs) {
  m_nValFormat = 0;
  s_bValFormatFound = false;
  TFuncRealListArgs::Evaluate(pArgs, nFirst, nArgs);
}

void TFuncRealListArgsWithValFormat::EnumCell(CSheetBase* pSheet, CCell* pCell) {
  if (!s_bValFormatFound && pSheet->GetBook() != nullptr &&
      pSheet->GetBook() == CFormulaEvaluator::GetLastBook()) {
    const unsigned short nFormat = pSheet->GetBook()->GetCellValFormat(pCell->GetFormat());
    if (nFormat != 0) {
      m_nValFormat = nFormat;
      s_bValFormatFound = true;
    }
  }
  TFuncRealListArgs::EnumCell(pSheet, pCell);
}

// ---- TFuncRTLListArgs --------------------------------------------------------------------

void TFuncRTLListArgs::EvaluateOneArg(TValue* pArgs, int nIndex, int nArgs) {
  TValue& arg = pArgs[nIndex];
  if (arg.IsReal() || arg.IsText() || arg.IsLogical()) {
    Enum(&arg);
    return;
  }
  TFuncRealListArgs::EvaluateOneArg(pArgs, nIndex, nArgs);
}

void TFuncRTLListArgs::Enum(TValue* pVal) {
  if (pVal->IsText() || pVal->IsLogical()) {
    EnumOther(pVal);
    return;
  }
  TFuncRealListArgs::Enum(pVal);
}

void TFuncRTLListArgs::Enum(const TValue* pVal) {
  if (pVal->IsText() || pVal->IsLogical()) {
    EnumOther(pVal);
    return;
  }
  TFuncRealListArgs::Enum(pVal);
}

void TFuncRTLListArgs::EnumCell(CSheetBase* pSheet, CCell* pCell) {
  if (pCell->IsText() || pCell->IsLogical()) {
    TValue val;
    pCell->GetValue(val);
    EnumOther(&val);
    return;
  }
  TFuncRealListArgs::EnumCell(pSheet, pCell);
}
