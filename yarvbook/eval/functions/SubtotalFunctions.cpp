// Subtotal family: SUBTOTAL and SUBTOTALA. Both call one of eleven list functions,
// chosen by a code, on their remaining arguments while the evaluator's subtotal mode
// is on, so that the walk leaves out cells holding subtotals and, with the
// hidden-skip switch, hidden rows and columns (eval/FuncListArgs.cpp).
#include <iterator>

#include "eval/FormulaEvaluator.h"
#include "eval/Func.h"
#include "eval/FuncListArgs.h"
#include "eval/Value.h"
#include "platform/ResourceIds.h"

namespace {

// The function for each code 1 to 11 (the code mod 100), by function number:
// AVERAGE, COUNT, COUNTA, MAX, MIN, PRODUCT, STDEV, STDEVP, SUM, VAR, VARP.
constexpr unsigned short kSubtotalFuncs[] = {5, 0, 169, 7, 6, 183, 12, 193, 4, 46, 194};
static_assert(std::size(kSubtotalFuncs) == 11, "one function per code 1 to 11");

// SUBTOTAL skips hidden rows and columns for the codes 101 to 111; SUBTOTALA the
// other way round, for 1 to 11.
class TFuncSubtotal final : public TFuncVarArgs {
 public:
  TFuncSubtotal(unsigned nResId, const char16_t* pwszName, unsigned short nFunc, bool bA)
      : TFuncVarArgs(nResId, pwszName, nFunc, 1, 30), m_bA(bA) {}
  using TFuncVarArgs::Evaluate;
  void Evaluate(TValue* pArgs, int nArgs) override {
    int nCode;
    if (!pArgs->CheckInt(nCode)) {
      pArgs->Pop(nArgs);
      return;
    }
    // C's remainder keeps the sign: a negative code never selects a function.
    const int nIndex = nCode % 100;
    if (nCode < -99 || nCode > 199 || nIndex < 1 || nIndex > 11) {
      pArgs->SetError(TValue::errValue);
      return;
    }
    // Hidden rows are skipped sheet by sheet, which a 3-D reference cannot say.
    for (int i = 1; i < nArgs; ++i) {
      if (pArgs[i].IsRange3d()) {
        pArgs->SetError(TValue::errValue);
        return;
      }
    }
    const bool bOldSkipHidden = CFormulaEvaluator::IsSubSkipHidden();
    CFormulaEvaluator::SetSubSkipHidden(m_bA ? nCode <= 99 : nCode > 99);
    TFunc* pFunc = TFunc::GetFunc(kSubtotalFuncs[nIndex - 1]);
    if (auto* pReal = dynamic_cast<TFuncRealListArgs*>(pFunc)) {
      pReal->Evaluate(pArgs, 1, nArgs);
    } else if (auto* pList = dynamic_cast<TFuncListArgs*>(pFunc)) {
      pList->Evaluate(pArgs, 1, nArgs);
    } else {
      pArgs->SetError(TValue::errValue);
    }
    CFormulaEvaluator::SetSubSkipHidden(bOldSkipHidden);
  }

 private:
  const bool m_bA;
};

// Constructing an object registers it; kept in number order, like the function table.
TFuncSubtotal s_Subtotal(IDS_FN_SUBTOTAL, u"SUBTOTAL", 344, /*bA=*/false);
TFuncSubtotal s_SubtotalA(IDS_FN_SUBTOTALA, u"SUBTOTALA", 368, /*bA=*/true);

}  // namespace
