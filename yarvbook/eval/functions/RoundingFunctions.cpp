// Rounding family: ROUND, ROUNDUP, ROUNDDOWN, TRUNC, INT, CEILING, FLOOR, EVEN, ODD.
// Each nudges by 1e-15 of the scaled value before floor or ceil (EVEN, ODD and INT
// excepted), so a number typed as a decimal rounds the way it reads: 2.675 is stored
// as 2.67499999999999982... and ROUND(2.675,2) still gives 2.68.
#include <cmath>

#include "eval/Func.h"
#include "eval/Value.h"
#include "eval/functions/NumericHelpers.h"
#include "platform/ResourceIds.h"

namespace {

// Reads the number and the digit count of a rounding call (a number of digits is
// truncated toward zero). On failure the first failing argument's error is left in
// pArgs[0] and false returned.
bool GetNumberAndDigits(TValue* pArgs, double& x, int& nDigits) {
  if (!pArgs[0].CheckReal() || !pArgs[1].CheckInt(nDigits)) {
    pArgs->Pop(2);
    return false;
  }
  pArgs[0].GetValue(x);
  pArgs[1].Clear();
  return true;
}

// Digits past the exponent range of a double: scaling would give infinity or zero.
constexpr int kMaxScaleDigits = 308;

// ROUNDUP, ROUNDDOWN and TRUNC: the number x scaled by 10^nDigits, moved toward or
// away from zero with the nudge, scaled back. Below -16 digits nothing is left;
// from 17 on nothing is cut.
double RoundToward(double x, int nDigits, bool bAway) {
  if (nDigits < -16) return 0;
  if (nDigits >= 17) return x;
  const double rScale = nDigits >= 0 ? PowerOfTen(nDigits) : 1 / PowerOfTen(-nDigits);
  const double y = std::fabs(x) * rScale;
  return std::copysign((bAway ? NudgedCeil(y) : NudgedFloor(y)) / rScale, x);
}

// Halves round away from zero; the result takes x's sign.
class TFuncRound final : public TFuncTwoArgs {
 public:
  TFuncRound() : TFuncTwoArgs(IDS_FN_ROUND, u"ROUND", 27) {}
  using TFuncTwoArgs::Evaluate;
  void Evaluate(TValue* pArgs) override {
    double x;
    int nDigits;
    if (!GetNumberAndDigits(pArgs, x, nDigits)) return;
    if (nDigits > kMaxScaleDigits) {
      SetFinite(pArgs, x);
      return;
    }
    if (nDigits < -kMaxScaleDigits) {
      SetFinite(pArgs, 0);
      return;
    }
    const double ax = std::fabs(x);
    double r;
    if (nDigits >= 1) {
      const double rScale = PowerOfTen(nDigits);
      r = NudgedFloor(ax * rScale + 0.5) / rScale;
    } else if (nDigits == 0) {
      r = NudgedFloor(ax + 0.5);
    } else {
      const double rScale = PowerOfTen(-nDigits);
      r = NudgedFloor(ax / rScale + 0.5) * rScale;
    }
    SetFinite(pArgs, std::copysign(r, x));
  }
};

// ROUNDUP moves away from zero, ROUNDDOWN toward it.
class TFuncRoundDir final : public TFuncTwoArgs {
 public:
  TFuncRoundDir(unsigned nResId, const char16_t* pwszName, unsigned short nFunc, bool bUp)
      : TFuncTwoArgs(nResId, pwszName, nFunc), m_bUp(bUp) {}
  using TFuncTwoArgs::Evaluate;
  void Evaluate(TValue* pArgs) override {
    double x;
    int nDigits;
    if (!GetNumberAndDigits(pArgs, x, nDigits)) return;
    SetFinite(pArgs, RoundToward(x, nDigits, m_bUp));
  }

 private:
  const bool m_bUp;
};

// TRUNC cuts toward zero; the digit count defaults to 0.
class TFuncTrunc final : public TFuncVarArgs {
 public:
  TFuncTrunc() : TFuncVarArgs(IDS_FN_TRUNC, u"TRUNC", 197, 1, 2) {}
  using TFuncVarArgs::Evaluate;
  void Evaluate(TValue* pArgs, int nArgs) override {
    double x;
    int nDigits = 0;
    if (nArgs == 2) {
      if (!GetNumberAndDigits(pArgs, x, nDigits)) return;
    } else {
      if (!pArgs->CheckReal()) return;
      pArgs->GetValue(x);
    }
    SetFinite(pArgs, RoundToward(x, nDigits, /*bAway=*/false));
  }
};

// INT rounds down, toward minus infinity, without a nudge: INT(0.9999999999999999)
// is 0 because the double lies below 1.
double Floor(double x) { return std::floor(x); }

// CEILING and FLOOR to a multiple of the significance m. A zero number gives 0 and
// the signs must agree; a zero significance gives 0 for CEILING but #DIV/0! for FLOOR.
class TFuncMultiple final : public TFuncTwoArgs {
 public:
  TFuncMultiple(unsigned nResId, const char16_t* pwszName, unsigned short nFunc, bool bCeiling)
      : TFuncTwoArgs(nResId, pwszName, nFunc), m_bCeiling(bCeiling) {}
  using TFuncTwoArgs::Evaluate;
  void Evaluate(TValue* pArgs) override {
    double x, m;
    if (!TakeTwoReals(pArgs, x, m)) return;
    if (x == 0 || (m_bCeiling && m == 0)) {
      pArgs->SetZero();
      return;
    }
    if (m == 0) {
      pArgs->SetError(TValue::errDiv0);
      return;
    }
    if ((x < 0) != (m < 0)) {
      pArgs->SetError(TValue::errNum);
      return;
    }
    const double q = x / m;  // positive
    SetFinite(pArgs, (m_bCeiling ? NudgedCeil(q) : NudgedFloor(q)) * m);
  }

 private:
  const bool m_bCeiling;
};

// EVEN and ODD round away from zero, to the next even or odd whole number; no nudge.
// ODD(0) is 1.
class TFuncEvenOdd final : public TFuncOneArg {
 public:
  TFuncEvenOdd(unsigned nResId, const char16_t* pwszName, unsigned short nFunc, bool bOdd)
      : TFuncOneArg(nResId, pwszName, nFunc), m_bOdd(bOdd) {}
  using TFuncOneArg::Evaluate;
  void Evaluate(TValue* pArgs) override {
    if (!pArgs->CheckReal()) return;
    double x;
    pArgs->GetValue(x);
    // Halving turns "next even" into "next whole"; the half offset does the same for odd.
    const double h = x < 0 ? -0.5 : 0.5;
    SetFinite(pArgs, m_bOdd ? (std::ceil(x * h + 0.5) - 0.5) / h : std::ceil(x * h) / h);
  }

 private:
  const bool m_bOdd;
};

// Constructing an object registers it; kept in number order, like the function table.
TFuncLibraryCall s_Int(IDS_FN_INT, u"INT", 25, Floor);
TFuncRound s_Round;
TFuncTrunc s_Trunc;
TFuncRoundDir s_RoundUp(IDS_FN_ROUNDUP, u"ROUNDUP", 212, /*bUp=*/true);
TFuncRoundDir s_RoundDown(IDS_FN_ROUNDDOWN, u"ROUNDDOWN", 213, /*bUp=*/false);
TFuncEvenOdd s_Even(IDS_FN_EVEN, u"EVEN", 279, /*bOdd=*/false);
TFuncMultiple s_Floor(IDS_FN_FLOOR, u"FLOOR", 285, /*bCeiling=*/false);
TFuncMultiple s_Ceiling(IDS_FN_CEILING, u"CEILING", 288, /*bCeiling=*/true);
TFuncEvenOdd s_Odd(IDS_FN_ODD, u"ODD", 298, /*bOdd=*/true);

}  // namespace
