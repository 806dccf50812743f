// Arithmetic family: SUM, PRODUCT, ROUND, ABS, SQRT, MOD. The aggregates take lists
// (numbers of references and arrays, direct numbers and logicals); the others take
// one or two numbers and store a finite result or an error.
#include <cmath>

#include "eval/Func.h"
#include "eval/FuncListArgs.h"
#include "eval/Value.h"
#include "platform/ResourceIds.h"

namespace {

// Stores r in *pResult when finite, else #NUM!.
void SetFinite(TValue* pResult, double r) {
  if (!std::isfinite(r)) {
    pResult->SetError(TValue::errNum);
    return;
  }
  pResult->SetValue(r == 0 ? 0.0 : r);  // no negative zero
}

// SUM proposes the format of the first formatted cell it adds.
class TFuncSum final : public TFuncRealListArgsWithValFormat {
 public:
  TFuncSum() : TFuncRealListArgsWithValFormat(IDS_FN_SUM, u"SUM", 4, 0, 30) {}

 protected:
  void StartEnum() override { m_Real = 0; }
  void EnumReal(double r) override { m_Real += r; }
  void FinishEnum() override { SetFinite(m_pVal, m_Real); }
};

// PRODUCT of nothing is 0, not the empty product 1.
class TFuncProduct final : public TFuncRealListArgs {
 public:
  TFuncProduct() : TFuncRealListArgs(IDS_FN_PRODUCT, u"PRODUCT", 183, 1, 30) {}

 protected:
  void StartEnum() override { m_Real = 1; }
  void EnumReal(double r) override { m_Real *= r; }
  void FinishEnum() override { SetFinite(m_pVal, m_nCount == 0 ? 0.0 : m_Real); }
};

// Halves round away from zero. Each step nudges by 1e-15 of the scaled value before
// the floor, so a number typed as a decimal (2.675, stored just below) rounds the way
// it reads. Digits are truncated toward zero; past the precision of a double the
// number is returned as it is.
class TFuncRound final : public TFuncTwoArgs {
 public:
  TFuncRound() : TFuncTwoArgs(IDS_FN_ROUND, u"ROUND", 27) {}
  using TFuncTwoArgs::Evaluate;
  void Evaluate(TValue* pArgs) override {
    if (!pArgs->Check2Reals()) {
      pArgs->Pop(2);
      return;
    }
    double x, rDigits;
    pArgs[0].GetValue(x);
    pArgs[1].GetValue(rDigits);
    pArgs[1].Clear();
    const double rDigitsInt = std::trunc(rDigits);
    // Past 10^308 the scale is no number: every digit is kept, or none is.
    if (std::fabs(rDigitsInt) > 308) {
      SetFinite(pArgs, rDigitsInt > 0 ? x : 0.0);
      return;
    }
    const int nDigits = static_cast<int>(rDigitsInt);
    const double ax = std::fabs(x);
    double r;
    if (nDigits >= 0) {
      const double rScale = std::pow(10.0, nDigits);
      const double y = ax * rScale;
      if (!std::isfinite(y) || y >= 4503599627370496.0) {  // 2^52: no fraction left
        SetFinite(pArgs, x);
        return;
      }
      const double z = y + 0.5;
      r = std::floor(z + z * 1e-15) / rScale;
    } else {
      const double rScale = std::pow(10.0, -nDigits);
      const double z = ax / rScale + 0.5;
      r = std::floor(z + z * 1e-15) * rScale;
    }
    SetFinite(pArgs, std::copysign(r, x));
  }
};

class TFuncAbs final : public TFuncOneArg {
 public:
  TFuncAbs() : TFuncOneArg(IDS_FN_ABS, u"ABS", 24) {}
  using TFuncOneArg::Evaluate;
  void Evaluate(TValue* pArgs) override {
    if (!pArgs->CheckReal()) return;
    double x;
    pArgs->GetValue(x);
    SetFinite(pArgs, std::fabs(x));
  }
};

class TFuncSqrt final : public TFuncOneArg {
 public:
  TFuncSqrt() : TFuncOneArg(IDS_FN_SQRT, u"SQRT", 20) {}
  using TFuncOneArg::Evaluate;
  void Evaluate(TValue* pArgs) override {
    if (!pArgs->CheckReal()) return;
    double x;
    pArgs->GetValue(x);
    if (x < 0) {
      pArgs->SetError(TValue::errNum);
      return;
    }
    SetFinite(pArgs, std::sqrt(x));
  }
};

// MOD takes the divisor's sign, unlike fmod.
class TFuncMod final : public TFuncTwoArgs {
 public:
  TFuncMod() : TFuncTwoArgs(IDS_FN_MOD, u"MOD", 39) {}
  using TFuncTwoArgs::Evaluate;
  void Evaluate(TValue* pArgs) override {
    if (!pArgs->Check2Reals()) {  // the first failing argument's error becomes the result
      pArgs->Pop(2);
      return;
    }
    double a, b;
    pArgs[0].GetValue(a);
    pArgs[1].GetValue(b);
    pArgs[1].Clear();
    if (b == 0) {
      pArgs[0].SetError(TValue::errDiv0);
      return;
    }
    double r = std::fmod(std::fabs(a), std::fabs(b));
    if (r != 0 && (a < 0) != (b < 0)) r = std::fabs(b) - r;
    SetFinite(pArgs, b < 0 ? -r : r);
  }
};

// Constructing an object registers it; kept in number order, like the function table.
TFuncSum s_Sum;
TFuncSqrt s_Sqrt;
TFuncAbs s_Abs;
TFuncRound s_Round;
TFuncMod s_Mod;
TFuncProduct s_Product;

}  // namespace
