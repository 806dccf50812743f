// Computing a defined name: the evaluator's side of CName.
#include "base/Range.h"
#include "base/Region.h"
#include "book/Name.h"
#include "book/SheetBase.h"
#include "eval/FormulaEvaluator.h"
#include "eval/Value.h"
#include "formula/Formula.h"

TValue* CName::Evaluate(CFormulaEvaluator& evaluator) {
  if (m_pFormula == nullptr || m_bEvaluating) return evaluator.Evaluate(TValue::errName);
  m_bEvaluating = true;
  TValue* pResult;
  try {
    pResult =
        evaluator.Evaluate(m_pFormula, static_cast<CFormulaBase::EFormulaType>(GetFormulaType()));
  } catch (...) {
    m_bEvaluating = false;
    throw;
  }
  m_bEvaluating = false;
  return pResult;
}

void CName::Evaluate(CSheetBase* pSheet, TRegion& region) {
  region.Clear();
  if (pSheet == nullptr) return;
  CFormulaEvaluator evaluator(pSheet->GetBook(), pSheet);
  TValue* pResult = Evaluate(evaluator);
  if (pResult == nullptr) return;
  TValue result;
  result.CopyAndClearSource(*pResult);
  CSheetBase* pRefSheet = nullptr;
  TRange range;
  const TRegion* pRegion = nullptr;
  if (result.GetValue(&pRefSheet, &range)) {
    if (pRefSheet == pSheet) region.Add(range);
  } else if (result.GetValue(&pRefSheet, &pRegion)) {
    if (pRefSheet == pSheet) region.Add(*pRegion);
  }
}
