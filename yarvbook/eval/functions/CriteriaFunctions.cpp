// Criteria family: COUNTIF, SUMIF, COUNTBLANK. COUNTIF and SUMIF test the cells of a
// range against one criterion (CValueCriteria) with the kind rule on: numbers meet
// only number criteria and texts only text ones. They visit the cells that exist, so
// a whole column costs its filled cells, not its 65,536 positions.
#include <cmath>

#include "base/Range.h"
#include "book/BookIteratorForEvaluate.h"
#include "book/CellRecord.h"
#include "book/SheetBase.h"
#include "eval/Func.h"
#include "eval/Value.h"
#include "eval/ValueCriteria.h"
#include "platform/ResourceIds.h"

namespace {

// Settles a failed call: the first argument's error, else the first later one, else
// #VALUE!.
void FailArgs(TValue* pArgs, int nArgs) {
  TValue::TError err = TValue::errNone;
  for (int i = 0; i < nArgs && err == TValue::errNone; ++i) err = pArgs[i].GetError();
  pArgs[0].SetError(err != TValue::errNone ? err : TValue::errValue);
}

// Reads the criterion argument: dereferenced, Empty as 0. False when it fails or is of
// a kind the function does not take (a logical unless bLogical, anything but a
// number or text).
bool ReadCriterion(TValue& crit, bool bLogical) {
  if (!crit.CheckValue()) return false;
  if (crit.IsEmpty()) crit.SetZero();
  return crit.IsReal() || crit.IsText() || (bLogical && crit.IsLogical());
}

// The sheet and range of a Cell or Range argument; false for anything else or a
// deleted sheet.
bool ReadRange(const TValue& arg, CSheetBase** ppSheet, TRange* pRange) {
  return arg.IsRef() && arg.GetValue(ppSheet, pRange) && *ppSheet;
}

// Calls fn(row, col) for each cell of the range that holds a value and meets crit.
// fn returns false to stop the walk.
template <typename TFn>
void ForEachMatch(CSheetBase* pSheet, const TRange& range, const CValueCriteria& crit, TFn fn) {
  TValue value;
  value.SetSST(true);  // texts share their string-table entry instead of being copied
  CBookIteratorForEvaluate it(pSheet, range, CBookIteratorForEvaluate::flValuesOnly);
  for (int b = it.Start(); b; b = it.Next()) {
    it.GetCell()->GetValue(value);
    if (crit.MeetsCriteria(&value, /*bSameKind=*/1, /*bExactText=*/0) &&
        !fn(it.GetCurrent().row, it.GetCurrent().col))
      return;
  }
}

class TFuncCountIf final : public TFuncTwoArgs {
 public:
  TFuncCountIf() : TFuncTwoArgs(IDS_FN_COUNTIF, u"COUNTIF", 346) {}
  using TFuncTwoArgs::Evaluate;
  void Evaluate(TValue* pArgs) override {
    CSheetBase* pSheet = nullptr;
    TRange range;
    if (!ReadCriterion(pArgs[1], /*bLogical=*/false) || !ReadRange(pArgs[0], &pSheet, &range))
      return FailArgs(pArgs, 2);
    const CValueCriteria crit(&pArgs[1], -1, CValueCriteria::opFromText, nullptr);
    int nCount = 0;
    ForEachMatch(pSheet, range, crit, [&nCount](int, int) {
      ++nCount;
      return true;
    });
    pArgs[0].SetValue(nCount);
  }
};

// SUMIF(range, criterion, sum range): only the sum range's top-left cell counts; the
// cells summed lie at the same offsets from it as the matching cells from the range.
class TFuncSumIf final : public TFuncVarArgs {
 public:
  TFuncSumIf() : TFuncVarArgs(IDS_FN_SUMIF, u"SUMIF", 345, 2, 3) {}
  using TFuncVarArgs::Evaluate;
  void Evaluate(TValue* pArgs, int nArgs) override {
    CSheetBase* pSheet = nullptr;
    TRange range;
    if (!ReadCriterion(pArgs[1], /*bLogical=*/true) || !ReadRange(pArgs[0], &pSheet, &range))
      return FailArgs(pArgs, 2);
    CSheetBase* pSumSheet = pSheet;
    TRange sumRange = range;
    if (nArgs > 2 && !pArgs[2].IsEmpty()) {
      if (!ReadRange(pArgs[2], &pSumSheet, &sumRange)) return FailArgs(pArgs, 3);
      if (sumRange.first.row + range.Rows() > kMaxRow + 1 ||
          sumRange.first.col + range.Cols() > kMaxCol + 1)
        return pArgs[0].SetError(TValue::errValue);
    }
    const CValueCriteria crit(&pArgs[1], -1, CValueCriteria::opFromText, nullptr);
    const int nRowShift = sumRange.first.row - range.first.row;
    const int nColShift = sumRange.first.col - range.first.col;
    double rSum = 0;
    TValue::TError err = TValue::errNone;
    ForEachMatch(pSheet, range, crit, [&](int nRow, int nCol) {
      const CCell* pCell = pSumSheet->Cell(nRow + nRowShift, nCol + nColShift);
      if (pCell && pCell->IsReal()) rSum += pCell->GetReal();
      if (pCell && pCell->IsError()) err = pCell->GetError();
      return err == TValue::errNone;
    });
    if (err != TValue::errNone) return pArgs[0].SetError(err);
    if (!std::isfinite(rSum)) return pArgs[0].SetError(TValue::errNum);
    pArgs[0].SetValue(rSum);
  }
};

// COUNTBLANK: positions without a value or holding the empty text.
class TFuncCountBlank final : public TFuncOneArg {
 public:
  TFuncCountBlank() : TFuncOneArg(IDS_FN_COUNTBLANK, u"COUNTBLANK", 347) {}
  using TFuncOneArg::Evaluate;
  void Evaluate(TValue* pArgs) override {
    if (pArgs->IsError()) return;
    CSheetBase* pSheet = nullptr;
    TRange range;
    if (!ReadRange(*pArgs, &pSheet, &range))
      return pArgs->SetError(pArgs->IsRef() ? TValue::errRef : TValue::errValue);
    long long nFilled = 0;
    CBookIteratorForEvaluate it(pSheet, range, CBookIteratorForEvaluate::flValuesOnly);
    for (int b = it.Start(); b; b = it.Next()) {
      const CCell* pCell = it.GetCell();
      if (!pCell->IsText() || pCell->TextPtr()[0] != 0) ++nFilled;
    }
    const long long nArea = static_cast<long long>(range.Rows()) * range.Cols();
    pArgs->SetValue(static_cast<double>(nArea - nFilled));
  }
};

// Constructing an object registers it; kept in number order, like the function table.
TFuncSumIf s_SumIf;
TFuncCountIf s_CountIf;
TFuncCountBlank s_CountBlank;

}  // namespace
