// Counting and summary family: AVERAGE, MIN, MAX, COUNT, COUNTA, the STDEV and VAR
// family, RANK, and the "A" forms AVERAGEA, MINA, MAXA, STDEVA, STDEVPA, VARA, VARPA.
// AVERAGE, MIN and MAX enumerate numbers like SUM (and propose the format of the
// first formatted cell); the "A" forms count text and logicals too; COUNT and COUNTA
// count what their lists hold and never fail.
#include <algorithm>
#include <cmath>

#include "book/CellRecord.h"
#include "eval/Func.h"
#include "eval/FuncListArgs.h"
#include "eval/Value.h"
#include "eval/functions/NumericHelpers.h"
#include "platform/ResourceIds.h"

namespace {

// The "A" forms count what the plain forms pass over: text (as 0) and logicals (as 1
// or 0), given directly, in references or in arrays.
class TFuncAList : public TFuncRTLListArgs {
 public:
  using TFuncRTLListArgs::TFuncRTLListArgs;

 protected:
  void EnumOther(const TValue* pVal) override {
    ++m_nCount;
    EnumReal(pVal->IsLogical() && pVal->GetLogical() ? 1.0 : 0.0);
  }
};

// AVERAGE and AVERAGEA; no values divide by zero.
template <class TBase>
class TFuncAverageOf final : public TBase {
 public:
  TFuncAverageOf(unsigned nResId, const char16_t* pwszName, unsigned short nFunc)
      : TBase(nResId, pwszName, nFunc, 1, 30) {}

 protected:
  void StartEnum() override { TFuncRealListArgs::m_Real = 0; }
  void EnumReal(double r) override { TFuncRealListArgs::m_Real += r; }
  void FinishEnum() override {
    const int nCount = TFuncRealListArgs::m_nCount;
    if (nCount == 0) {
      TFuncRealListArgs::m_pVal->SetError(TValue::errDiv0);
      return;
    }
    SetFinite(TFuncRealListArgs::m_pVal, TFuncRealListArgs::m_Real / nCount);
  }
};

// MIN, MAX, MINA and MAXA differ by direction and by what they count; no values
// give 0.
template <class TBase>
class TFuncMinMaxOf final : public TBase {
 public:
  TFuncMinMaxOf(unsigned nResId, const char16_t* pwszName, unsigned short nFunc, bool bMax)
      : TBase(nResId, pwszName, nFunc, 1, 30), m_bMax(bMax) {}

 protected:
  void StartEnum() override { TFuncRealListArgs::m_Real = 0; }
  // m_nCount already counts r.
  void EnumReal(double r) override {
    double& rBest = TFuncRealListArgs::m_Real;
    if (TFuncRealListArgs::m_nCount == 1)
      rBest = r;
    else
      rBest = m_bMax ? std::max(rBest, r) : std::min(rBest, r);
  }
  void FinishEnum() override {
    TFuncRealListArgs::m_pVal->SetValue(
        TFuncRealListArgs::m_nCount == 0 ? 0.0 : TFuncRealListArgs::m_Real);
  }

 private:
  const bool m_bMax;
};

// The spread of the values of one STDEV or VAR call, folded in one pass (Welford's
// update keeps the sum of squared deviations accurate where the sum of squares
// minus the squared sum would cancel). Class-wide, like the list cursor: list calls
// do not nest.
struct TSpread {
  static void Start() { s_rMean = s_rSquares = 0; }
  // nCount counts r already.
  static void Add(double r, int nCount) {
    const double rDelta = r - s_rMean;
    s_rMean += rDelta / nCount;
    s_rSquares += rDelta * (r - s_rMean);
  }
  // Divides by n - 1 for a sample, by n for a population; too few values divide by
  // zero. The deviation is the square root of the variance.
  static void Finish(TValue* pResult, int nCount, bool bSample, bool bVariance) {
    const int nDivisor = bSample ? nCount - 1 : nCount;
    if (nDivisor <= 0) {
      pResult->SetError(TValue::errDiv0);
      return;
    }
    const double rVariance = s_rSquares / nDivisor;
    SetFinite(pResult, bVariance ? rVariance : std::sqrt(rVariance));
  }

  static inline double s_rMean = 0;
  static inline double s_rSquares = 0;
};

// STDEV, STDEVP, VAR, VARP.
class TFuncStDevVar final : public TStDevVarBase {
 public:
  using TStDevVarBase::TStDevVarBase;

 protected:
  void StartEnum() override { TSpread::Start(); }
  void EnumReal(double r) override { TSpread::Add(r, m_nCount); }
  void FinishEnum() override { TSpread::Finish(m_pVal, m_nCount, m_bSample, m_bVariance); }
};

// STDEVA, STDEVPA, VARA, VARPA.
class TFuncStDevVarA final : public TFuncAList {
 public:
  TFuncStDevVarA(unsigned nResId, const char16_t* pwszName, unsigned short nFunc, bool bSample,
                 bool bVariance)
      : TFuncAList(nResId, pwszName, nFunc, 1, 30), m_bSample(bSample), m_bVariance(bVariance) {}

 protected:
  void StartEnum() override { TSpread::Start(); }
  void EnumReal(double r) override { TSpread::Add(r, m_nCount); }
  void FinishEnum() override { TSpread::Finish(m_pVal, m_nCount, m_bSample, m_bVariance); }

 private:
  const bool m_bSample;
  const bool m_bVariance;
};

// RANK(number, list, order): 1 plus the count of values of the list above the
// number (order 0 or omitted) or below it (any other order); equal values, compared
// with the engine's tolerance, share a rank. A number the list does not hold gets
// the rank it would have among them. Only the number, one list and the order are
// read: other counts are #VALUE!.
class TFuncRank final : public TFuncRealListArgs {
 public:
  TFuncRank() : TFuncRealListArgs(IDS_FN_RANK, u"RANK", 216, 1, 30) {}
  using TFuncRealListArgs::Evaluate;
  void Evaluate(TValue* pArgs, int nArgs) override {
    if (nArgs < 2 || nArgs > 3) {
      pArgs->SetError(TValue::errValue);
      return;
    }
    if (!pArgs[0].CheckReal() || (nArgs == 3 && !pArgs[2].CheckReal())) {
      pArgs->Pop(nArgs);
      return;
    }
    pArgs[0].GetValue(s_rNumber);
    double rOrder = 0;
    if (nArgs == 3) pArgs[2].GetValue(rOrder);
    s_bAscending = rOrder != 0;
    Evaluate(pArgs, 1, 2);
  }

 protected:
  void StartEnum() override { s_nBefore = 0; }
  void EnumReal(double r) override {
    TValue value, number;
    value.SetValue(r);
    number.SetValue(s_rNumber);
    const int nCompare = value.Compare(number);
    if (nCompare != 0 && (nCompare > 0) != s_bAscending) ++s_nBefore;
  }
  void FinishEnum() override { m_pVal->SetValue(s_nBefore + 1); }

 private:
  // The call in progress; list calls do not nest.
  static inline double s_rNumber = 0;
  static inline bool s_bAscending = false;
  static inline int s_nBefore = 0;
};

// The count of the call in progress; list calls do not nest.
constinit int s_nCount = 0;

// COUNT: numbers in references and arrays; direct numbers, logicals and text that
// reads as a number. Errors are not counted and do not stop the count.
class TFuncCount final : public TFuncListArgs {
 public:
  TFuncCount() : TFuncListArgs(IDS_FN_COUNT, u"COUNT", 0, true, true) {}

 protected:
  void StartEnum() override { s_nCount = 0; }
  void Enum(TValue* pVal) override {
    if (pVal->IsReal() || pVal->IsLogical()) {
      ++s_nCount;
    } else if (pVal->IsText()) {
      TValue number;
      if (number.StringToReal(pVal->TextPtr()) && number.IsReal()) ++s_nCount;
    }
  }
  void EnumValue(const TValue* pVal) override {
    if (pVal->IsReal()) ++s_nCount;
  }
  void EnumCell(CSheetBase* /*pSheet*/, CCell* pCell) override {
    if (pCell->IsReal()) ++s_nCount;
  }
  void FinishEnum(TValue* pResult) override { pResult->SetValue(s_nCount); }
};

// COUNTA: every value that is not empty, errors included; an omitted argument does
// not count.
class TFuncCountA final : public TFuncListArgs {
 public:
  TFuncCountA() : TFuncListArgs(IDS_FN_COUNTA, u"COUNTA", 169, true, true) {}

 protected:
  void StartEnum() override { s_nCount = 0; }
  void EnumValue(const TValue* pVal) override {
    if (!pVal->IsEmpty()) ++s_nCount;
  }
  void EnumCell(CSheetBase* /*pSheet*/, CCell* pCell) override {
    if (!pCell->IsEmpty()) ++s_nCount;
  }
  void FinishEnum(TValue* pResult) override { pResult->SetValue(s_nCount); }
};

// Constructing an object registers it; kept in number order, like the function table.
TFuncCount s_Count;
TFuncAverageOf<TFuncRealListArgsWithValFormat> s_Average(IDS_FN_AVERAGE, u"AVERAGE", 5);
TFuncMinMaxOf<TFuncRealListArgsWithValFormat> s_Min(IDS_FN_MIN, u"MIN", 6, /*bMax=*/false);
TFuncMinMaxOf<TFuncRealListArgsWithValFormat> s_Max(IDS_FN_MAX, u"MAX", 7, /*bMax=*/true);
TFuncStDevVar s_StDev(IDS_FN_STDEV, u"STDEV", 12, /*bSample=*/true, /*bVariance=*/false);
TFuncStDevVar s_Var(IDS_FN_VAR, u"VAR", 46, /*bSample=*/true, /*bVariance=*/true);
TFuncCountA s_CountA;
TFuncStDevVar s_StDevP(IDS_FN_STDEVP, u"STDEVP", 193, /*bSample=*/false, /*bVariance=*/false);
TFuncStDevVar s_VarP(IDS_FN_VARP, u"VARP", 194, /*bSample=*/false, /*bVariance=*/true);
TFuncRank s_Rank;
TFuncAverageOf<TFuncAList> s_AverageA(IDS_FN_AVERAGEA, u"AVERAGEA", 361);
TFuncMinMaxOf<TFuncAList> s_MaxA(IDS_FN_MAXA, u"MAXA", 362, /*bMax=*/true);
TFuncMinMaxOf<TFuncAList> s_MinA(IDS_FN_MINA, u"MINA", 363, /*bMax=*/false);
TFuncStDevVarA s_StDevPA(IDS_FN_STDEVPA, u"STDEVPA", 364, /*bSample=*/false, /*bVariance=*/false);
TFuncStDevVarA s_VarPA(IDS_FN_VARPA, u"VARPA", 365, /*bSample=*/false, /*bVariance=*/true);
TFuncStDevVarA s_StDevA(IDS_FN_STDEVA, u"STDEVA", 366, /*bSample=*/true, /*bVariance=*/false);
TFuncStDevVarA s_VarA(IDS_FN_VARA, u"VARA", 367, /*bSample=*/true, /*bVariance=*/true);

}  // namespace
