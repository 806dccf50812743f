#include "formula/FormulaCell.h"

#include <cmath>
#include <cstring>

#include "eval/LookupCache.h"

// Formula cells come from their own cell pool, which hands out blocks of this size.
static_assert(sizeof(CFormulaCell) == CCell::kFormulaCellBytes,
              "CFormulaCell must keep the size of the formula cell pool's blocks");

CFormulaCell::CFormulaCell(unsigned short wFormat) : CCell(wFormat) { SetFlag(flFormula, true); }

CFormulaCell::CFormulaCell(std::unique_ptr<CFormula> pFormula, CFormulaBase::EFormulaType type,
                           unsigned short wFormat)
    : CFormulaCell(wFormat) {
  SetFormula(std::move(pFormula), type);
}

CFormulaCell::~CFormulaCell() = default;

CFormulaCell* CFormulaCell::Clone() const {
  auto pCell = std::make_unique<CFormulaCell>(GetFormat());
  pCell->Copy(this);
  return pCell.release();
}

void CFormulaCell::Copy(const CZelObject* pSrc) {
  const auto* pCell = static_cast<const CCell*>(pSrc);
  if (!pCell->IsFormula()) {
    CCell::Copy(pSrc);
    SetFlag(flFormula, true);
    return;
  }
  const auto* pFormulaCell = static_cast<const CFormulaCell*>(pCell);
  // Copy the formula first: when it throws, this cell is unchanged.
  CFormula formula(pFormulaCell->m_Formula);
  CCell::Copy(pSrc);
  m_Formula.Swap(formula);
  m_bHasFormula = pFormulaCell->m_bHasFormula;
  m_nFormulaType = pFormulaCell->m_nFormulaType;
  m_pSheet = pFormulaCell->m_pSheet;
  m_wRow = pFormulaCell->m_wRow;
  m_bCol = pFormulaCell->m_bCol;
  m_wState = pFormulaCell->m_wState & (stOnScreen | stSubtotal);
}

void CFormulaCell::SetFormula(std::unique_ptr<CFormula> pFormula, CFormulaBase::EFormulaType type) {
  m_Formula.Clear();
  if (pFormula) m_Formula.Swap(*pFormula);
  m_bHasFormula = pFormula != nullptr;
  m_nFormulaType = type;
}

CFormula& CFormulaCell::InitFormula(CFormulaBase::EFormulaType type) {
  m_Formula.Clear();
  m_bHasFormula = true;
  m_nFormulaType = type;
  return m_Formula;
}

void CFormulaCell::SetCell3D(CSheetBase* pSheet, int nRow, int nCol) {
  m_pSheet = pSheet;
  m_wRow = static_cast<unsigned short>(nRow < 0 ? 0 : nRow > kMaxRow ? kMaxRow : nRow);
  m_bCol = static_cast<unsigned char>(nCol < 0 ? 0 : nCol > kMaxCol ? kMaxCol : nCol);
}

void CFormulaCell::SetRecalcNumber(double r) {
  CLookupCache::CellChanged(m_pSheet, m_wRow, m_bCol);
  if (IsOnScreen()) {
    if (IsReal() && r == GetReal()) return;
    if (!IsReal()) SetTypeChanged();
    SetValueChanged();
  }
  CCell::SetValue(r);
}

void CFormulaCell::SetRecalcValue(TValue& value) {
  CLookupCache::CellChanged(m_pSheet, m_wRow, m_bCol);
  const bool bOnScreen = IsOnScreen();
  if (IsReal() && value.IsReal()) {
    double r;
    value.GetValue(r);
    value.Clear();
    if (bOnScreen && r == GetReal()) return;  // NaN never compares equal
    CCell::SetValue(r);
    if (bOnScreen) SetValueChanged();
    return;
  }
  if (bOnScreen) {
    const TValue old = CCell::GetValue();
    if (old.CompareExact(value) != 0) {
      if (old.GetValType() != value.GetValType()) SetTypeChanged();
      SetValueChanged();
    }
  }
  CopyAndClearSource(value);
}

// Result field, little-endian:
//   bytes 0..7 an IEEE double, or, when bytes 6 and 7 are 0xFF:
//   +------+---+-------+---+---+---+------+------+
//   | kind | 0 | value | 0 | 0 | 0 | 0xFF | 0xFF |
//   +------+---+-------+---+---+---+------+------+
namespace {
constexpr unsigned char kFieldText = 0, kFieldLogical = 1, kFieldError = 2, kFieldEmpty = 3;

double KindField(unsigned char cKind, unsigned char cValue) {
  const unsigned char aBytes[8] = {cKind, 0, cValue, 0, 0, 0, 0xFF, 0xFF};
  double r;
  std::memcpy(&r, aBytes, sizeof r);
  return r;
}
}  // namespace

void CFormulaCell::SetExcelValue(const double& rField) {
  SetNeedsRecompute(false);
  unsigned char aBytes[8];
  std::memcpy(aBytes, &rField, sizeof aBytes);
  if (aBytes[6] != 0xFF || aBytes[7] != 0xFF) {
    CCell::SetValue(rField);
    return;
  }
  switch (aBytes[0]) {
    case kFieldText:
    case kFieldEmpty:
      return;
    case kFieldLogical:
      SetLogical(aBytes[2] != 0);
      return;
    case kFieldError:
      SetExcelError(aBytes[2]);
      return;
    default:
      SetNeedsRecompute(true);
      return;
  }
}

void CFormulaCell::GetExcelValue(double& rField) const {
  switch (GetValType()) {
    case TValue::vtReal:
      rField = GetReal();
      return;
    case TValue::vtText:
      rField = KindField(kFieldText, 0);
      return;
    case TValue::vtLogical:
      rField = KindField(kFieldLogical, GetLogical() ? 1 : 0);
      return;
    case TValue::vtError:
      rField = KindField(kFieldError, TValue::ErrorToExcelError(GetError()));
      return;
    default:
      rField = 0.0;
      return;
  }
}
