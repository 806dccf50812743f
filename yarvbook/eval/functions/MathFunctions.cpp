// Arithmetic family: SUM, SUMSQ, SUMGENERAL, PRODUCT, SUMPRODUCT, ABS, SQRT, MOD,
// SIGN, EXP, LN, LOG10, LOG, POWER, FACT, RAND. The aggregates take lists (numbers of
// references and arrays, direct numbers and logicals); the others take one or two
// numbers and store a finite result or an error.
#include <cmath>

#include "eval/Func.h"
#include "eval/FuncListArgs.h"
#include "eval/Value.h"
#include "eval/functions/NumericHelpers.h"
#include "platform/Clock.h"
#include "platform/ResourceIds.h"

namespace {

// SUM and SUMGENERAL: the same fold; SUM also proposes the format of the first
// formatted cell it adds (TBase says which).
template <class TBase>
class TFuncSumOf final : public TBase {
 public:
  TFuncSumOf(unsigned nResId, const char16_t* pwszName, unsigned short nFunc,
             unsigned char nMinArgs)
      : TBase(nResId, pwszName, nFunc, nMinArgs, 30) {}

 protected:
  void StartEnum() override { TFuncRealListArgs::m_Real = 0; }
  void EnumReal(double r) override { TFuncRealListArgs::m_Real += r; }
  void FinishEnum() override { SetFinite(TFuncRealListArgs::m_pVal, TFuncRealListArgs::m_Real); }
};

class TFuncSumSq final : public TFuncRealListArgs {
 public:
  TFuncSumSq() : TFuncRealListArgs(IDS_FN_SUMSQ, u"SUMSQ", 321, 1, 30) {}

 protected:
  void StartEnum() override { m_Real = 0; }
  void EnumReal(double r) override { m_Real += r * r; }
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

// SUMPRODUCT pairs its arguments element by element: references become arrays of
// their values and a direct value is a 1 x 1 array. All must have the same rows and
// columns (#VALUE! otherwise); elements that are not numbers count as 0, an error
// element is the result.
class TFuncSumProduct final : public TFuncVarArgs {
 public:
  TFuncSumProduct() : TFuncVarArgs(IDS_FN_SUMPRODUCT, u"SUMPRODUCT", 228, 1, 30) {}
  using TFuncVarArgs::Evaluate;
  void Evaluate(TValue* pArgs, int nArgs) override {
    for (int i = 0; i < nArgs; ++i) {
      if (!pArgs[i].CheckArrayVal()) {  // an error, a region or a 3-D range
        pArgs->Pop(nArgs);
        return;
      }
    }
    const int nRows = RowsOf(pArgs[0]), nCols = ColsOf(pArgs[0]);
    for (int i = 1; i < nArgs; ++i) {
      if (RowsOf(pArgs[i]) != nRows || ColsOf(pArgs[i]) != nCols) {
        pArgs->SetError(TValue::errValue);
        return;
      }
    }
    double rSum = 0;
    for (int r = 0; r < nRows; ++r) {
      for (int c = 0; c < nCols; ++c) {
        double rProduct = 1;
        for (int i = 0; i < nArgs; ++i) {
          const TValue* pElem = ElementOf(pArgs[i], r, c);
          if (pElem->IsError()) {
            pArgs->SetError(pElem->GetError());
            return;
          }
          double x;
          pElem->GetValue(x);  // 0 for what is not a number
          rProduct *= x;
        }
        rSum += rProduct;
      }
    }
    SetFinite(pArgs, rSum);
  }

 private:
  static int RowsOf(const TValue& val) { return val.IsArrayVal() ? val.Rows() : 1; }
  static int ColsOf(const TValue& val) { return val.IsArrayVal() ? val.Cols() : 1; }
  static const TValue* ElementOf(const TValue& val, int nRow, int nCol) {
    return val.IsArrayVal() ? val.GetArrayValue(nRow, nCol) : &val;
  }
};

double Abs(double x) { return std::fabs(x); }
double Sqrt(double x) { return std::sqrt(x); }  // a negative x gives NaN, so #NUM!
double Sign(double x) { return x > 0 ? 1.0 : x < 0 ? -1.0 : 0.0; }

// MOD takes the divisor's sign, unlike fmod.
class TFuncMod final : public TFuncTwoArgs {
 public:
  TFuncMod() : TFuncTwoArgs(IDS_FN_MOD, u"MOD", 39) {}
  using TFuncTwoArgs::Evaluate;
  void Evaluate(TValue* pArgs) override {
    double a, b;
    if (!TakeTwoReals(pArgs, a, b)) return;
    if (b == 0) {
      pArgs[0].SetError(TValue::errDiv0);
      return;
    }
    double r = std::fmod(std::fabs(a), std::fabs(b));
    if (r != 0 && (a < 0) != (b < 0)) r = std::fabs(b) - r;
    SetFinite(pArgs, b < 0 ? -r : r);
  }
};

double Log10(double x) { return std::log10(x); }
double LogE(double x) { return std::log(x); }
double Exp(double x) { return std::exp(x); }

// LOG(x, base): base 10 when omitted. Both must be positive; base 1 divides by zero.
class TFuncLog final : public TFuncVarArgs {
 public:
  TFuncLog() : TFuncVarArgs(IDS_FN_LOG, u"LOG", 109, 1, 2) {}
  using TFuncVarArgs::Evaluate;
  void Evaluate(TValue* pArgs, int nArgs) override {
    if (!pArgs->CheckReals(nArgs)) {
      pArgs->Pop(nArgs);
      return;
    }
    double x, rBase = 10;
    pArgs[0].GetValue(x);
    if (nArgs == 2) {
      pArgs[1].GetValue(rBase);
      pArgs[1].Clear();
    }
    if (x <= 0 || rBase <= 0) {
      pArgs->SetError(TValue::errNum);
      return;
    }
    if (rBase == 1) {
      pArgs->SetError(TValue::errDiv0);
      return;
    }
    // log10 keeps powers of ten exact: LOG(0.001) is -3, not -2.9999999999999996.
    SetFinite(pArgs, rBase == 10 ? std::log10(x) : std::log(x) / std::log(rBase));
  }
};

// POWER stores whatever the library gives, unlike the ^ operator: an invalid result
// is a non-finite number, which the next conversion of the value (CheckNumber)
// turns into #NUM!.
class TFuncPower final : public TFuncTwoArgs {
 public:
  TFuncPower() : TFuncTwoArgs(IDS_FN_POWER, u"POWER", 337) {}
  using TFuncTwoArgs::Evaluate;
  void Evaluate(TValue* pArgs) override {
    double a, b;
    if (!TakeTwoReals(pArgs, a, b)) return;
    pArgs->SetValue(std::pow(a, b));
  }
};

// FACT of 0 to 170 (truncated); 171! is past the largest double.
class TFuncFact final : public TFuncOneArg {
 public:
  TFuncFact() : TFuncOneArg(IDS_FN_FACT, u"FACT", 184) {}
  using TFuncOneArg::Evaluate;
  void Evaluate(TValue* pArgs) override {
    unsigned short n;
    if (!pArgs->CheckWord(n)) return;
    if (n >= 171) {
      pArgs->SetError(TValue::errNum);
      return;
    }
    double r = 1;
    for (int i = n; i > 1; --i) r *= i;
    pArgs->SetValue(r);
  }
};

// RAND draws from one engine-wide generator, seeded once from the host's tick count
// when the function is registered and never again. Volatile (function table).
class TFuncRand final : public TFuncNoArgs {
 public:
  TFuncRand()
      : TFuncNoArgs(IDS_FN_RAND, u"RAND", 63),
        m_Random(static_cast<int>(GetTickCount() % 2147483647u)) {}
  using TFuncNoArgs::Evaluate;
  void Evaluate(TValue* pArgs) override { pArgs->SetValue(m_Random.Next()); }

 private:
  TMinStdRandom m_Random;  // the generator's state, engine-wide
};

// Constructing an object registers it; kept in number order, like the function table.
TFuncSumOf<TFuncRealListArgsWithValFormat> s_Sum(IDS_FN_SUM, u"SUM", 4, 0);
TFuncLibraryCall s_Sqrt(IDS_FN_SQRT, u"SQRT", 20, Sqrt);
TFuncLibraryCall s_Exp(IDS_FN_EXP, u"EXP", 21, Exp);
TFuncLibraryCall s_Ln(IDS_FN_LN, u"LN", 22, LogE);
TFuncLibraryCall s_Log10(IDS_FN_LOG10, u"LOG10", 23, Log10);
TFuncLibraryCall s_Abs(IDS_FN_ABS, u"ABS", 24, Abs);
TFuncLibraryCall s_Sign(IDS_FN_SIGN, u"SIGN", 26, Sign);
TFuncMod s_Mod;
TFuncRand s_Rand;
TFuncLog s_Log;
TFuncProduct s_Product;
TFuncFact s_Fact;
TFuncSumProduct s_SumProduct;
TFuncSumSq s_SumSq;
TFuncPower s_Power;
TFuncSumOf<TFuncRealListArgs> s_SumGeneral(IDS_FN_SUMGENERAL, u"SUMGENERAL", 369, 1);

}  // namespace
