// Helpers shared by the numeric function families: the 1e-15 tolerance that the
// rounding functions apply before floor and ceil, powers of ten by digit count, the
// store of a computed result, the reading of two numbers, the one-number function
// and the random generator.
#pragma once

#include <cmath>
#include <iterator>

#include "eval/Func.h"
#include "eval/Value.h"

// The nudge: 1e-15 of a value's size, toward or away from zero. A number typed as a
// decimal (2.675) is stored just beside it; nudging by this much before floor or
// ceil makes it round the way it reads.
inline double FudgeFP(double x) { return x * 1e-15; }
inline double FudgeFPNeg(double x) { return x * -1e-15; }

// floor and ceil of a non-negative scaled value, each nudged toward the next whole
// number.
inline double NudgedFloor(double y) { return std::floor(y + FudgeFP(y)); }
inline double NudgedCeil(double y) { return std::ceil(y + FudgeFPNeg(y)); }

// 10^n: exact doubles from a table for 0 to 16 digits, the C library beyond (and
// for negative n).
inline double PowerOfTen(int n) {
  static constexpr double kPowers[] = {1e0, 1e1,  1e2,  1e3,  1e4,  1e5,  1e6,  1e7, 1e8,
                                       1e9, 1e10, 1e11, 1e12, 1e13, 1e14, 1e15, 1e16};
  static_assert(std::size(kPowers) == 17, "10^0 to 10^16");
  if (n >= 0 && n < static_cast<int>(std::size(kPowers))) return kPowers[n];
  return std::pow(10.0, n);
}

// Stores r in *pResult when finite (a negative zero as 0), else #NUM!.
inline void SetFinite(TValue* pResult, double r) {
  if (!std::isfinite(r)) {
    pResult->SetError(TValue::errNum);
    return;
  }
  pResult->SetValue(r == 0 ? 0.0 : r);
}

// Reads the two numbers of a two-argument call into a and b and clears the second
// slot. On failure the first failing argument's error is left in pArgs[0] and false
// returned.
inline bool TakeTwoReals(TValue* pArgs, double& a, double& b) {
  if (!pArgs->Check2Reals()) {
    pArgs->Pop(2);
    return false;
  }
  pArgs[0].GetValue(a);
  pArgs[1].GetValue(b);
  pArgs[1].Clear();
  return true;
}

// A function of one number given as a plain double function (ABS, SQRT, SIGN, INT,
// EXP, LN, the trigonometric and hyperbolic functions, most from the C library). A
// domain error (a NaN) or an overflow (an infinity or a pole) gives #NUM!; an
// underflow gives the tiny result, as the user expects of EXP(-1000).
class TFuncLibraryCall final : public TFuncOneArg {
 public:
  TFuncLibraryCall(unsigned nResId, const char16_t* pwszName, unsigned short nFunc,
                   double (*pfnCompute)(double))
      : TFuncOneArg(nResId, pwszName, nFunc), m_pfnCompute(pfnCompute) {}
  using TFuncOneArg::Evaluate;
  void Evaluate(TValue* pArgs) override {
    if (!pArgs->CheckReal()) return;
    double x;
    pArgs->GetValue(x);
    SetFinite(pArgs, m_pfnCompute(x));
  }

 private:
  double (*const m_pfnCompute)(double);
};

// The minimal-standard generator: state = 16807 * state mod (2^31 - 1), by Schrage's
// method so that no step overflows 32 bits. A zero state stays zero.
class TMinStdRandom {
 public:
  explicit TMinStdRandom(int nSeed) : m_nState(nSeed) {}
  // The next state scaled into [0, 1).
  double Next() {
    constexpr int kA = 16807, kM = 2147483647, kQ = 127773, kR = 2836;  // kM = kA * kQ + kR
    const int nHigh = m_nState / kQ, nLow = m_nState % kQ;
    m_nState = kA * nLow - kR * nHigh;
    if (m_nState < 0) m_nState += kM;
    return m_nState * 4.656612875245797e-10;  // 1 / kM
  }
  int GetState() const { return m_nState; }

 private:
  int m_nState;
};
