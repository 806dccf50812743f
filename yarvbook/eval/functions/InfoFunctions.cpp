// Information family: NA, ISERROR, ISNA. The tests look at the argument's value: a
// reference is read at the formula's base cell, an array by its first element.
#include "eval/Func.h"
#include "eval/Value.h"
#include "platform/ResourceIds.h"

namespace {

class TFuncNA final : public TFuncNoArgs {
 public:
  TFuncNA() : TFuncNoArgs(IDS_FN_NA, u"NA", 10) {}
  using TFuncNoArgs::Evaluate;
  void Evaluate(TValue* pArgs) override { pArgs->SetError(TValue::errNA); }
};

// ISNA is true for #N/A only, ISERROR for every error.
class TFuncIsError final : public TFuncOneArg {
 public:
  TFuncIsError(unsigned nResId, const char16_t* pwszName, unsigned short nFunc, bool bNAOnly)
      : TFuncOneArg(nResId, pwszName, nFunc), m_bNAOnly(bNAOnly) {}
  using TFuncOneArg::Evaluate;
  void Evaluate(TValue* pArgs) override {
    pArgs->CheckValue();
    pArgs->SetLogical(m_bNAOnly ? pArgs->IsNAError() : pArgs->IsError());
  }

 private:
  const bool m_bNAOnly;
};

// Constructing an object registers it; kept in number order, like the function table.
TFuncIsError s_IsNA(IDS_FN_ISNA, u"ISNA", 2, /*bNAOnly=*/true);
TFuncIsError s_IsError(IDS_FN_ISERROR, u"ISERROR", 3, /*bNAOnly=*/false);
TFuncNA s_NA;

}  // namespace
