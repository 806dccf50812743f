// Logical family: IF, CHOOSE, AND, OR, NOT, TRUE, FALSE. IF and CHOOSE receive every
// argument computed (the evaluator does not jump) and hand on the chosen one as it
// is, a reference included, so =IF(c, A1:A3) can stand where a range is wanted.
#include "book/CellRecord.h"
#include "eval/Func.h"
#include "eval/FuncListArgs.h"
#include "eval/Value.h"
#include "platform/ResourceIds.h"

namespace {

// Moves argument nChosen into the result slot.
void TakeArg(TValue* pArgs, int nChosen) {
  if (nChosen != 0) pArgs[0].CopyAndClearSource(pArgs[nChosen]);
}

class TFuncIf final : public TFuncVarArgs {
 public:
  TFuncIf() : TFuncVarArgs(IDS_FN_IF, u"IF", 1, 2, 3) {}
  using TFuncVarArgs::Evaluate;
  void Evaluate(TValue* pArgs, int nArgs) override {
    int bCondition = 0;
    if (!pArgs[0].CheckLogical(bCondition)) return;
    if (bCondition) {
      TakeArg(pArgs, 1);
    } else if (nArgs == 3) {
      TakeArg(pArgs, 2);
    } else {
      pArgs[0].SetLogical(0);
    }
    // An omitted branch gives 0, as an empty cell would.
    if (pArgs[0].IsEmpty()) pArgs[0].SetZero();
  }
};

// The index is truncated; 1 picks the first choice.
class TFuncChoose final : public TFuncVarArgs {
 public:
  TFuncChoose() : TFuncVarArgs(IDS_FN_CHOOSE, u"CHOOSE", 100, 2, 30) {}
  using TFuncVarArgs::Evaluate;
  void Evaluate(TValue* pArgs, int nArgs) override {
    int nIndex = 0;
    if (!pArgs[0].CheckInt(nIndex)) return;
    if (nIndex < 1 || nIndex > nArgs - 1) {
      pArgs[0].SetError(TValue::errValue);
      return;
    }
    TakeArg(pArgs, nIndex);
    if (pArgs[0].IsEmpty()) pArgs[0].SetZero();
  }
};

// State of the AND or OR call in progress; list calls do not nest.
struct TLogicalFold {
  int nValues = 0;
  bool bResult = false;
  TValue::TError err = TValue::errNone;
};
constinit TLogicalFold s_Fold;

// AND and OR fold the truth values of numbers and logicals. Text and empty cells of
// references and text elements of arrays are passed over; the first error met is the
// result; nothing to fold is #VALUE!. Direct text must read as a truth value or a
// number (else #VALUE!) but, like text in a reference, adds no value of its own.
class TFuncAndOr final : public TFuncListArgs {
 public:
  TFuncAndOr(unsigned nResId, const char16_t* pwszName, unsigned short nFunc, bool bAnd)
      : TFuncListArgs(nResId, pwszName, nFunc, true, true), m_bAnd(bAnd) {}

 protected:
  void StartEnum() override {
    s_Fold = TLogicalFold{};
    s_Fold.bResult = m_bAnd;
  }
  void Enum(TValue* pVal) override {
    if (pVal->IsEmpty()) {
      Fold(false);
    } else if (pVal->IsText()) {
      int bIgnored = 0;
      TValue copy;
      copy.SetValue(pVal->TextPtr());
      if (!copy.CheckLogical(bIgnored)) SetError(TValue::errValue);
    } else {
      EnumValue(pVal);
    }
  }
  void EnumValue(const TValue* pVal) override {
    if (pVal->IsReal()) {
      double r;
      pVal->GetValue(r);
      Fold(r != 0);
    } else if (pVal->IsLogical()) {
      Fold(pVal->GetLogical() != 0);
    } else if (pVal->IsError()) {
      SetError(pVal->GetError());
    } else if (!pVal->IsText() && !pVal->IsEmpty()) {
      SetError(TValue::errValue);  // a reference where cells were not enumerated
    }
  }
  void EnumCell(CSheetBase* /*pSheet*/, CCell* pCell) override {
    if (pCell->IsReal()) {
      Fold(pCell->GetReal() != 0);
    } else if (pCell->IsLogical()) {
      Fold(pCell->GetLogical() != 0);
    } else if (pCell->IsError()) {
      SetError(pCell->GetError());
    }
  }
  void FinishEnum(TValue* pResult) override {
    if (s_Fold.err != TValue::errNone) {
      pResult->SetError(s_Fold.err);
    } else if (s_Fold.nValues == 0) {
      pResult->SetError(TValue::errValue);
    } else {
      pResult->SetLogical(s_Fold.bResult);
    }
  }

 private:
  void Fold(bool b) {
    ++s_Fold.nValues;
    s_Fold.bResult = m_bAnd ? s_Fold.bResult && b : s_Fold.bResult || b;
  }
  static void SetError(TValue::TError err) {
    if (s_Fold.err == TValue::errNone) s_Fold.err = err;
  }

  const bool m_bAnd;
};

class TFuncNot final : public TFuncOneArg {
 public:
  TFuncNot() : TFuncOneArg(IDS_FN_NOT, u"NOT", 38) {}
  using TFuncOneArg::Evaluate;
  void Evaluate(TValue* pArgs) override {
    int bValue = 0;
    if (!pArgs->CheckLogical(bValue)) return;
    pArgs->SetLogical(!bValue);
  }
};

// TRUE() and FALSE(): the constants as functions.
class TFuncLogicalConst final : public TFuncNoArgs {
 public:
  TFuncLogicalConst(unsigned nResId, const char16_t* pwszName, unsigned short nFunc, bool bValue)
      : TFuncNoArgs(nResId, pwszName, nFunc), m_bValue(bValue) {}
  using TFuncNoArgs::Evaluate;
  void Evaluate(TValue* pArgs) override { pArgs->SetLogical(m_bValue); }

 private:
  const bool m_bValue;
};

// Constructing an object registers it; kept in number order, like the function table.
TFuncIf s_If;
TFuncLogicalConst s_True(IDS_FN_TRUE, u"TRUE", 34, true);
TFuncLogicalConst s_False(IDS_FN_FALSE, u"FALSE", 35, false);
TFuncAndOr s_And(IDS_FN_AND, u"AND", 36, /*bAnd=*/true);
TFuncAndOr s_Or(IDS_FN_OR, u"OR", 37, /*bAnd=*/false);
TFuncNot s_Not;
TFuncChoose s_Choose;

}  // namespace
