#include "eval/FuncPending.h"

#include <memory>
#include <vector>

#include "eval/Func.h"
#include "eval/Value.h"

namespace {

class TFuncPending final : public TFunc {
 public:
  explicit TFuncPending(const TFuncInfo& info) : TFunc(info) {}
  using TFunc::Evaluate;
  void Evaluate(TValue* pArgs) override { Evaluate(pArgs, GetMinArgs()); }
  // A call with no arguments still has its result slot at pArgs.
  void Evaluate(TValue* pArgs, int nArgs) override {
    pArgs[0].SetError(TValue::errName);
    if (nArgs > 1) pArgs->Pop(nArgs);
  }
};

// Owner of the pending entries; entries displaced by a late body stay here too.
std::vector<std::unique_ptr<TFuncPending>>& PendingFuncs() {
  static std::vector<std::unique_ptr<TFuncPending>> s_Funcs;
  return s_Funcs;
}

}  // namespace

void RegisterPendingFunc(const TFuncInfo& info) {
  auto& funcs = PendingFuncs();
  funcs.reserve(kNumBuiltinFuncs);
  funcs.push_back(std::make_unique<TFuncPending>(info));
}
