// The evaluation steps of the operators: conversions of the operands, then the pure
// arithmetic, comparison, text or reference step. Kept apart from the operator table
// so that the table (texts, codes, precedences) needs no values.
#include <cerrno>
#include <cfenv>
#include <cmath>
#include <string>

#include "base/Range.h"
#include "base/Region.h"
#include "eval/Op.h"
#include "eval/Value.h"

namespace {

// Converts both operands of a binary operator through check, the left first. On a
// failure the first failing operand's error is left in the left slot, the right
// operand is dropped and false returned.
bool CheckOperands(TValue* pLeft, int (TValue::*check)()) {
  TValue& right = pLeft[1];
  if (!(pLeft->*check)()) {
    right.Clear();
    return false;
  }
  if (!(right.*check)()) {
    pLeft->SetError(right.GetError());
    right.Clear();
    return false;
  }
  return true;
}

// The pieces of a reference operand: a Cell or Range gives one range, a Region its
// ranges. False for every other kind.
bool GetRefRanges(const TValue& val, CSheetBase** ppSheet, TRegion* pRanges) {
  TRange range;
  if (val.GetValue(ppSheet, &range)) {
    *pRanges = range;
    return true;
  }
  const TRegion* pRegion = nullptr;
  if (!val.GetValue(ppSheet, &pRegion)) return false;
  *pRanges = *pRegion;
  return true;
}

// Unpacks both operands of a reference operator. On failure pLeft[0] holds the
// result (the left error, the right error, or #VALUE!) and false is returned.
bool GetRefOperands(TValue* pLeft, CSheetBase** ppSheet1, TRegion* pRanges1, CSheetBase** ppSheet2,
                    TRegion* pRanges2) {
  if (pLeft[0].GetError() != TValue::errNone) return false;
  if (pLeft[1].GetError() != TValue::errNone) {
    pLeft[0].SetError(pLeft[1].GetError());
    return false;
  }
  if (!GetRefRanges(pLeft[0], ppSheet1, pRanges1) || !GetRefRanges(pLeft[1], ppSheet2, pRanges2)) {
    pLeft[0].SetError(TValue::errValue);
    return false;
  }
  if (*ppSheet1 == nullptr || *ppSheet2 == nullptr) {
    pLeft[0].SetError(TValue::errRef);
    return false;
  }
  return true;
}

// Stores a reference result: one range as a Cell or Range, more as a Region.
void SetRefResult(TValue& result, CSheetBase* pSheet, const TRegion& ranges) {
  if (ranges.Ranges() == 1) {
    const TRange& range = ranges.Range(0);
    if (range.IsSingleCell()) {
      result.SetCell(pSheet, range.Row1(), range.Col1());
    } else {
      result.SetRange(pSheet, range.Row1(), range.Col1(), range.Row2(), range.Col2());
    }
    return;
  }
  result.Clear();
  result.AddRanges(pSheet, ranges.Ranges(), ranges.RangesPt());
}

}  // namespace

void TOpUnaryReal::Evaluate(TValue* pArg) const {
  if (!pArg->CheckReal()) return;
  double r;
  pArg->GetValue(r);
  pArg->SetValue(Calc(r));
}

void TOpBinaryReal::Evaluate(TValue* pLeft) const {
  TValue& right = pLeft[1];
  // Two numbers need no conversion: the common case goes straight to the arithmetic.
  if ((pLeft->GetValType() != TValue::vtReal || right.GetValType() != TValue::vtReal) &&
      !CheckOperands(pLeft, &TValue::CheckReal))
    return;
  double a, b, r = 0;
  pLeft->GetValue(a);
  right.GetValue(b);
  right.Clear();
  const int nError = Calc(a, b, &r);
  if (nError != 0) {
    pLeft->SetError(static_cast<TValue::TError>(nError));
    return;
  }
  pLeft->SetValue(r);
}

int TOpAdd::Calc(double a, double b, double* pResult) const {
  *pResult = a + b;
  return 0;
}

int TOpSub::Calc(double a, double b, double* pResult) const {
  *pResult = a - b;
  return 0;
}

int TOpMul::Calc(double a, double b, double* pResult) const {
  *pResult = a * b;
  return 0;
}

int TOpDiv::Calc(double a, double b, double* pResult) const {
  if (b == 0) return TValue::errDiv0;
  *pResult = a / b;
  return 0;
}

// Both error channels of the C library are read: errno where math_errhandling has
// MATH_ERRNO, the floating-point flags where it has MATH_ERREXCEPT.
int TOpPower::Calc(double a, double b, double* pResult) const {
  errno = 0;
  std::feclearexcept(FE_ALL_EXCEPT);
  const double r = std::pow(a, b);
  if (errno != 0 || std::fetestexcept(FE_INVALID | FE_DIVBYZERO | FE_OVERFLOW) != 0 ||
      !std::isfinite(r)) {
    return TValue::errNum;
  }
  *pResult = r;
  return 0;
}

void TOpConcat::Evaluate(TValue* pLeft) const {
  if (!CheckOperands(pLeft, &TValue::CheckString)) return;
  TValue& right = pLeft[1];
  std::u16string text = pLeft->TextPtr();
  text += right.TextPtr();
  right.Clear();
  pLeft->SetValue(text.c_str(), static_cast<int>(text.size()));
}

void TOpBinaryCompare::Evaluate(TValue* pLeft) const {
  if (!CheckOperands(pLeft, &TValue::CheckValue)) return;
  TValue& right = pLeft[1];
  const bool bResult = Test(pLeft->Compare(right));
  right.Clear();
  pLeft->SetLogical(bResult);
}

void TOpRange::Evaluate(TValue* pLeft) const {
  CSheetBase *pSheet1 = nullptr, *pSheet2 = nullptr;
  TRegion ranges1, ranges2;
  if (GetRefOperands(pLeft, &pSheet1, &ranges1, &pSheet2, &ranges2)) {
    if (pSheet1 != pSheet2) {
      pLeft->SetError(TValue::errValue);
    } else {
      TRange cover = ranges1.Range(0);
      for (int i = 1; i < ranges1.Ranges(); ++i) cover.Union(cover, ranges1.Range(i));
      for (int i = 0; i < ranges2.Ranges(); ++i) cover.Union(cover, ranges2.Range(i));
      SetRefResult(*pLeft, pSheet1, TRegion(cover));
    }
  }
  pLeft[1].Clear();
}

void TOpIntersection::Evaluate(TValue* pLeft) const {
  CSheetBase *pSheet1 = nullptr, *pSheet2 = nullptr;
  TRegion ranges1, ranges2;
  if (GetRefOperands(pLeft, &pSheet1, &ranges1, &pSheet2, &ranges2)) {
    TRegion pieces;
    if (pSheet1 == pSheet2) {
      for (int i = 0; i < ranges1.Ranges(); ++i) {
        for (int j = 0; j < ranges2.Ranges(); ++j) {
          TRange piece;
          if (piece.Intersect(ranges1.Range(i), ranges2.Range(j))) pieces.Add(piece);
        }
      }
    }
    if (pieces.IsEmpty()) {
      pLeft->SetError(TValue::errNull);
    } else {
      SetRefResult(*pLeft, pSheet1, pieces);
    }
  }
  pLeft[1].Clear();
}

void TOpUnion::Evaluate(TValue* pLeft) const {
  CSheetBase *pSheet1 = nullptr, *pSheet2 = nullptr;
  TRegion ranges1, ranges2;
  if (GetRefOperands(pLeft, &pSheet1, &ranges1, &pSheet2, &ranges2)) {
    if (pSheet1 != pSheet2) {
      pLeft->SetError(TValue::errValue);
    } else {
      ranges1.Add(ranges2);
      pLeft->Clear();
      pLeft->AddRanges(pSheet1, ranges1.Ranges(), ranges1.RangesPt());
    }
  }
  pLeft[1].Clear();
}
