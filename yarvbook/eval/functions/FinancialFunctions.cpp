// Financial family: the annuity functions (PV, FV, PMT, NPER, RATE, IPMT, PPMT,
// ISPMT), depreciation (SLN, SYD, DDB, DB, VDB) and the cash-flow functions over
// lists (NPV, IRR, MIRR). Money paid out is negative, money received positive; a
// type argument other than 0 means payments at the start of each period. Results
// that are not finite numbers become #NUM!.
#include <cmath>
#include <vector>

#include "eval/Func.h"
#include "eval/FuncListArgs.h"
#include "eval/Value.h"
#include "platform/ResourceIds.h"

namespace {

// The iterative solvers (RATE, IRR) stop when a Newton step moves the rate by less
// than this fraction of it (of 1 near zero), and give #NUM! when that has not
// happened after kMaxIterations steps or the rate leaves the region above -100%.
constexpr int kMaxIterations = 100;
constexpr double kRateTolerance = 1e-10;
// Below this magnitude the annuity factor is taken from its series, because
// ((1 + r)^n - 1) / r loses every digit to cancellation.
constexpr double kSmallRate = 1e-8;

bool IsConverged(double rOld, double rNew) {
  return std::fabs(rNew - rOld) <= kRateTolerance * std::fmax(1.0, std::fabs(rNew));
}

// The annuity factor ((1 + r)^n - 1) / r and its derivative by r, with the growth
// factor (1 + r)^n and its derivative.
struct TAnnuity {
  double rGrowth, rGrowthSlope, rFactor, rFactorSlope;
};

TAnnuity Annuity(double rRate, double rPeriods) {
  TAnnuity a;
  a.rGrowth = std::pow(1 + rRate, rPeriods);
  a.rGrowthSlope = rPeriods * std::pow(1 + rRate, rPeriods - 1);
  if (std::fabs(rRate) < kSmallRate) {
    const double n = rPeriods;
    a.rFactor = n + n * (n - 1) / 2 * rRate;
    a.rFactorSlope = n * (n - 1) / 2 + n * (n - 1) * (n - 2) / 6 * rRate;
  } else {
    a.rFactor = (a.rGrowth - 1) / rRate;
    a.rFactorSlope = (a.rGrowthSlope * rRate - (a.rGrowth - 1)) / (rRate * rRate);
  }
  return a;
}

double TypeOf(double rType) { return rType != 0 ? 1 : 0; }

// The value after nPeriods of a present value and a payment at rRate.
double FutureValue(double rRate, double rPeriods, double rPmt, double rPv, double rType) {
  if (rRate == 0) return -(rPv + rPmt * rPeriods);
  const TAnnuity a = Annuity(rRate, rPeriods);
  return -(rPv * a.rGrowth + rPmt * (1 + rRate * rType) * a.rFactor);
}

double Payment(double rRate, double rPeriods, double rPv, double rFv, double rType) {
  if (rRate == 0) return -(rPv + rFv) / rPeriods;
  const TAnnuity a = Annuity(rRate, rPeriods);
  return -(rPv * a.rGrowth + rFv) / ((1 + rRate * rType) * a.rFactor);
}

// ---- The annuity and depreciation bodies: pIn holds every argument, omitted ones
// ---- replaced by their defaults; each stores its result or returns the error.

using TFinanceFn = TValue::TError (*)(const double* pIn, double& rOut);

// PV(rate, nper, pmt, fv, type)
TValue::TError CalcPv(const double* pIn, double& rOut) {
  const double r = pIn[0], n = pIn[1], pmt = pIn[2], fv = pIn[3], t = TypeOf(pIn[4]);
  if (r == 0) {
    rOut = -(fv + pmt * n);
    return TValue::errNone;
  }
  const TAnnuity a = Annuity(r, n);
  rOut = -(fv + pmt * (1 + r * t) * a.rFactor) / a.rGrowth;
  return TValue::errNone;
}

// FV(rate, nper, pmt, pv, type)
TValue::TError CalcFv(const double* pIn, double& rOut) {
  rOut = FutureValue(pIn[0], pIn[1], pIn[2], pIn[3], TypeOf(pIn[4]));
  return TValue::errNone;
}

// PMT(rate, nper, pv, fv, type): no periods, no payment.
TValue::TError CalcPmt(const double* pIn, double& rOut) {
  if (pIn[1] == 0) return TValue::errNum;
  rOut = Payment(pIn[0], pIn[1], pIn[2], pIn[3], TypeOf(pIn[4]));
  return TValue::errNone;
}

// NPER(rate, pmt, pv, fv, type): #NUM! when no number of periods reaches fv.
TValue::TError CalcNper(const double* pIn, double& rOut) {
  const double r = pIn[0], pmt = pIn[1], pv = pIn[2], fv = pIn[3], t = TypeOf(pIn[4]);
  if (r == 0) {
    if (pmt == 0) return TValue::errDiv0;
    rOut = -(pv + fv) / pmt;
    return TValue::errNone;
  }
  const double rNum = pmt * (1 + r * t) - fv * r;
  const double rDen = pmt * (1 + r * t) + pv * r;
  if (rDen == 0 || !(rNum / rDen > 0) || !(r > -1)) return TValue::errNum;
  rOut = std::log(rNum / rDen) / std::log1p(r);
  return TValue::errNone;
}

// RATE(nper, pmt, pv, fv, type, guess): Newton's method on the annuity equation
// pv (1+r)^n + pmt (1 + r type) ((1+r)^n - 1) / r + fv = 0, from the guess.
TValue::TError CalcRate(const double* pIn, double& rOut) {
  const double n = pIn[0], pmt = pIn[1], pv = pIn[2], fv = pIn[3], t = TypeOf(pIn[4]);
  double r = pIn[5];
  for (int i = 0; i < kMaxIterations; ++i) {
    const TAnnuity a = Annuity(r, n);
    const double f = pv * a.rGrowth + pmt * (1 + r * t) * a.rFactor + fv;
    const double rSlope =
        pv * a.rGrowthSlope + pmt * (t * a.rFactor + (1 + r * t) * a.rFactorSlope);
    if (rSlope == 0 || !std::isfinite(f) || !std::isfinite(rSlope)) return TValue::errNum;
    const double rNext = r - f / rSlope;
    if (!(rNext > -1)) return TValue::errNum;
    if (IsConverged(r, rNext)) {
      rOut = rNext;
      return TValue::errNone;
    }
    r = rNext;
  }
  return TValue::errNum;
}

// The interest part of payment number per (1 <= per <= nper). Paying in advance,
// the first payment carries no interest.
TValue::TError InterestPart(const double* pIn, double& rInterest, double& rPmt) {
  const double r = pIn[0], per = pIn[1], n = pIn[2], pv = pIn[3], fv = pIn[4];
  const double t = TypeOf(pIn[5]);
  if (per < 1 || per > n) return TValue::errNum;
  rPmt = Payment(r, n, pv, fv, t);
  if (t != 0 && per == 1)
    rInterest = 0;
  else if (t != 0)
    rInterest = (FutureValue(r, per - 2, rPmt, pv, 1) - rPmt) * r;
  else
    rInterest = FutureValue(r, per - 1, rPmt, pv, 0) * r;
  return TValue::errNone;
}

// IPMT(rate, per, nper, pv, fv, type)
TValue::TError CalcIpmt(const double* pIn, double& rOut) {
  double rPmt = 0;
  return InterestPart(pIn, rOut, rPmt);
}

// PPMT(rate, per, nper, pv, fv, type): the payment less its interest.
TValue::TError CalcPpmt(const double* pIn, double& rOut) {
  double rInterest = 0, rPmt = 0;
  const TValue::TError err = InterestPart(pIn, rInterest, rPmt);
  rOut = rPmt - rInterest;
  return err;
}

// ISPMT(rate, per, nper, pv): interest of period per under straight repayment; per
// is used as it stands, neither truncated nor checked against nper.
TValue::TError CalcIspmt(const double* pIn, double& rOut) {
  const double r = pIn[0], per = pIn[1], n = pIn[2], pv = pIn[3];
  if (n == 0) return TValue::errDiv0;
  rOut = pv * r * (per / n - 1);
  return TValue::errNone;
}

// SLN(cost, salvage, life)
TValue::TError CalcSln(const double* pIn, double& rOut) {
  if (pIn[2] == 0) return TValue::errDiv0;
  rOut = (pIn[0] - pIn[1]) / pIn[2];
  return TValue::errNone;
}

// SYD(cost, salvage, life, per): sum-of-years' digits; per runs from 0 to life.
TValue::TError CalcSyd(const double* pIn, double& rOut) {
  const double rCost = pIn[0], rSalvage = pIn[1], rLife = pIn[2], rPer = pIn[3];
  if (rLife <= 0 || rPer < 0 || rPer > rLife) return TValue::errNum;
  rOut = (rCost - rSalvage) * (rLife - rPer + 1) * 2 / (rLife * (rLife + 1));
  return TValue::errNone;
}

// Declining balance at rate factor/life (at most 100%) over a fractional period:
// the book value falls geometrically and never below the salvage value.
double DecliningPart(double rCost, double rSalvage, double rRate, double rPer) {
  const double rBefore = rCost * std::pow(1 - rRate, rPer - 1);
  const double rAfter = rCost * std::pow(1 - rRate, rPer);
  const double rPart = rAfter < rSalvage ? rBefore - rSalvage : rBefore - rAfter;
  return std::fmax(rPart, 0.0);
}

// DDB(cost, salvage, life, per, factor = 2); per may be fractional, from 1 to life.
TValue::TError CalcDdb(const double* pIn, double& rOut) {
  const double rCost = pIn[0], rSalvage = pIn[1], rLife = pIn[2], rPer = pIn[3];
  const double rFactor = pIn[4];
  if (rCost < 0 || rSalvage < 0 || rLife <= 0 || rFactor <= 0 || rPer < 1 || rPer > rLife)
    return TValue::errNum;
  const double rRate = std::fmin(rFactor / rLife, 1.0);
  // At a rate of 100% the whole value goes in the first period.
  if (rRate == 1) {
    rOut = rPer == 1 ? std::fmax(rCost - rSalvage, 0.0) : 0;
    return TValue::errNone;
  }
  rOut = DecliningPart(rCost, rSalvage, rRate, rPer);
  return TValue::errNone;
}

// DB(cost, salvage, life, per, month = 12): fixed declining balance at the rate
// 1 - (salvage/cost)^(1/life) rounded to three decimals. The first period covers
// month months; the period after life takes the rest of the last year. The period
// is truncated; each period's book value is taken in closed form.
TValue::TError CalcDb(const double* pIn, double& rOut) {
  const double rCost = pIn[0], rSalvage = pIn[1], rLife = pIn[2];
  const double rPer = std::trunc(pIn[3]), rMonth = std::trunc(pIn[4]);
  if (rCost < 0 || rSalvage < 0 || rLife <= 0 || rMonth < 1 || rMonth > 12 || rPer < 1 ||
      rPer > rLife + 1)
    return TValue::errNum;
  if (rCost == 0) {
    rOut = 0;
    return TValue::errNone;
  }
  const double rRate = std::round((1 - std::pow(rSalvage / rCost, 1 / rLife)) * 1000) / 1000;
  const double rFirst = rCost * rRate * rMonth / 12;
  if (rPer == 1) {
    rOut = rFirst;
    return TValue::errNone;
  }
  const double rBook = (rCost - rFirst) * std::pow(1 - rRate, rPer - 2);
  rOut = rPer > rLife ? rBook * rRate * (12 - rMonth) / 12 : rBook * rRate;
  return TValue::errNone;
}

// VDB(cost, salvage, life, start, end, factor = 2, no_switch = FALSE): the
// depreciation between two points in time (fractions of a period weighted by the
// part of it they cover). Each whole period takes the declining balance, or, unless
// no_switch, the straight line over the remaining life once that is larger, and
// from then on the same straight-line amount.
TValue::TError CalcVdb(const double* pIn, double& rOut) {
  const double rCost = pIn[0], rSalvage = pIn[1], rLife = pIn[2], rStart = pIn[3];
  const double rEnd = pIn[4], rFactor = pIn[5];
  const bool bSwitch = pIn[6] == 0;
  if (rCost < 0 || rSalvage < 0 || rLife <= 0 || rFactor <= 0 || rStart < 0 || rEnd < rStart ||
      rEnd > rLife)
    return TValue::errNum;
  const double rRate = std::fmin(rFactor / rLife, 1.0);
  const double rLastPeriod = std::ceil(rEnd);
  double rBook = rCost, rLine = 0, rSum = 0;
  bool bLine = false;
  for (double p = 1; p <= rLastPeriod; ++p) {
    double rAmount = rLine;
    if (!bLine) {
      rAmount = std::fmax(std::fmin(rBook * rRate, rBook - rSalvage), 0.0);
      if (bSwitch) {
        const double rLine1 = (rBook - rSalvage) / std::fmax(rLife - (p - 1), 1.0);
        if (rLine1 > rAmount) {
          bLine = true;
          rLine = rAmount = rLine1;
        }
      }
    }
    rBook -= rAmount;
    const double rCovered = std::fmin(p, rEnd) - std::fmax(p - 1, rStart);
    if (rCovered > 0) rSum += rAmount * rCovered;
  }
  rOut = rSum;
  return TValue::errNone;
}

// Up to seven arguments, each a number; omitted trailing arguments and arguments
// left empty take their default.
constexpr int kMaxFinanceArgs = 7;
struct TFinanceDefaults {
  double r[kMaxFinanceArgs];
};

class TFuncFinance final : public TFunc {
 public:
  TFuncFinance(unsigned nResId, const char16_t* pwszName, unsigned short nFunc,
               unsigned char nMinArgs, unsigned char nMaxArgs, TFinanceFn pfnCalc,
               TFinanceDefaults defaults = {})
      : TFunc(nResId, pwszName, nMinArgs != nMaxArgs, nFunc, nMinArgs, nMaxArgs),
        m_pfnCalc(pfnCalc),
        m_Defaults(defaults) {}
  using TFunc::Evaluate;
  void Evaluate(TValue* pArgs) override { Evaluate(pArgs, GetMinArgs()); }
  void Evaluate(TValue* pArgs, int nArgs) override {
    double rIn[kMaxFinanceArgs];
    for (int i = 0; i < kMaxFinanceArgs; ++i) rIn[i] = m_Defaults.r[i];
    for (int i = 0; i < nArgs && i < kMaxFinanceArgs; ++i) {
      if (pArgs[i].IsEmpty()) continue;
      if (!pArgs[i].CheckReal()) {
        pArgs->Pop(nArgs);
        return;
      }
      pArgs[i].GetValue(rIn[i]);
    }
    double rOut = 0;
    const TValue::TError err = m_pfnCalc(rIn, rOut);
    if (err != TValue::errNone || !std::isfinite(rOut)) {
      pArgs->SetError(err != TValue::errNone ? err : TValue::errNum);
      return;
    }
    pArgs->SetValue(rOut + 0.0);  // + 0.0 shows -0 as 0
  }

 private:
  const TFinanceFn m_pfnCalc;
  const TFinanceDefaults m_Defaults;
};

// ---- Cash flows over lists ----

// NPV(rate, value1, ...): each number met is discounted by one more period, the
// first by one period.
class TFuncNpv final : public TFuncRealListArgs {
 public:
  TFuncNpv() : TFuncRealListArgs(IDS_FN_NPV, u"NPV", 11, 1, 30) {}
  using TFuncRealListArgs::Evaluate;
  void Evaluate(TValue* pArgs, int nArgs) override {
    if (!pArgs->CheckReal()) {
      pArgs->Pop(nArgs);
      return;
    }
    pArgs->GetValue(m_rRate);
    Evaluate(pArgs, 1, nArgs);
  }

 protected:
  void StartEnum() override { m_Real = 0; }
  void EnumReal(double r) override { m_Real += r / std::pow(1 + m_rRate, m_nCount); }
  void FinishEnum() override {
    if (m_rRate == -1) {
      m_pVal->SetError(TValue::errDiv0);
      return;
    }
    if (!std::isfinite(m_Real)) {
      m_pVal->SetError(TValue::errNum);
      return;
    }
    m_pVal->SetValue(m_Real);
  }

 private:
  double m_rRate = 0;  // of the call in progress
};

// Both signs must occur, or no rate makes the flows' value zero.
bool HasBothSigns(const std::vector<double>& flows) {
  bool bPos = false, bNeg = false;
  for (double r : flows) {
    bPos = bPos || r > 0;
    bNeg = bNeg || r < 0;
  }
  return bPos && bNeg;
}

// IRR(values, guess = 0.1): the rate at which the values' net present value is zero,
// by Newton's method from the guess. Arguments past the guess are #VALUE!.
class TFuncIrr final : public TFuncRealListArgs {
 public:
  TFuncIrr() : TFuncRealListArgs(IDS_FN_IRR, u"IRR", 62, 1, 30) {}
  using TFuncRealListArgs::Evaluate;

  // Collects the numbers of the list in pArgs[0], in order, into Flows(). On failure
  // leaves the list's error in pArgs[0] and returns false. MIRR reads its list here.
  bool ReadFlows(TValue* pArgs) {
    Evaluate(pArgs, 0, 1);
    return !m_bFailed;
  }
  const std::vector<double>& Flows() const { return m_Flows; }

  void Evaluate(TValue* pArgs, int nArgs) override {
    if (!ReadFlows(pArgs)) return;
    double rRate = 0.1;
    if (nArgs > 1 && !pArgs[1].IsEmpty()) {
      if (!pArgs[1].CheckReal()) {
        pArgs->Pop(nArgs);
        return;
      }
      pArgs[1].GetValue(rRate);
    }
    if (nArgs > 2) {
      pArgs->SetError(TValue::errValue);
      return;
    }
    if (!HasBothSigns(m_Flows) || !Solve(rRate)) {
      pArgs->SetError(TValue::errNum);
      return;
    }
    pArgs->SetValue(rRate);
  }

 protected:
  void StartEnum() override { m_Flows.clear(); }
  void EnumReal(double r) override { m_Flows.push_back(r); }
  void FinishEnum() override {}

 private:
  bool Solve(double& rRate) const {
    double r = rRate;
    for (int i = 0; i < kMaxIterations; ++i) {
      double rValue = 0, rSlope = 0;
      for (size_t k = 0; k < m_Flows.size(); ++k) {
        const double rDiscount = std::pow(1 + r, -static_cast<double>(k));
        rValue += m_Flows[k] * rDiscount;
        rSlope -= static_cast<double>(k) * m_Flows[k] * rDiscount / (1 + r);
      }
      if (rSlope == 0 || !std::isfinite(rValue) || !std::isfinite(rSlope)) return false;
      const double rNext = r - rValue / rSlope;
      if (!(rNext > -1)) return false;
      if (IsConverged(r, rNext)) {
        rRate = rNext;
        return true;
      }
      r = rNext;
    }
    return false;
  }

  // The flows of the call in progress; list calls do not nest.
  std::vector<double> m_Flows;
};

// MIRR(values, finance_rate, reinvest_rate): payments discounted at the finance
// rate, receipts compounded at the reinvestment rate.
// The list is read through IRR's walk.
class TFuncMirr final : public TFuncThreeArgs {
 public:
  explicit TFuncMirr(TFuncIrr& irr) : TFuncThreeArgs(IDS_FN_MIRR, u"MIRR", 61), m_Irr(irr) {}
  using TFuncThreeArgs::Evaluate;
  void Evaluate(TValue* pArgs) override {
    if (!m_Irr.ReadFlows(pArgs)) return;
    if (!pArgs[1].CheckReal() || !pArgs[2].CheckReal()) {
      pArgs->Pop(3);
      return;
    }
    const std::vector<double>& flows = m_Irr.Flows();
    double rFinance, rReinvest;
    pArgs[1].GetValue(rFinance);
    pArgs[2].GetValue(rReinvest);
    const double n = static_cast<double>(flows.size());
    double rPaid = 0, rReceived = 0;
    for (size_t k = 0; k < flows.size(); ++k) {
      const double rPeriod = static_cast<double>(k);
      if (flows[k] < 0)
        rPaid += flows[k] / std::pow(1 + rFinance, rPeriod);
      else
        rReceived += flows[k] * std::pow(1 + rReinvest, n - 1 - rPeriod);
    }
    if (rPaid == 0 || rReceived == 0 || n < 2) {
      pArgs->SetError(TValue::errDiv0);
      return;
    }
    const double rResult = std::pow(-rReceived / rPaid, 1 / (n - 1)) - 1;
    if (!std::isfinite(rResult)) {
      pArgs->SetError(TValue::errNum);
      return;
    }
    pArgs->SetValue(rResult);
  }

 private:
  TFuncIrr& m_Irr;
};

// Defaults by argument position; a zero where the argument is required.
constexpr TFinanceDefaults kRateDefaults = {{0, 0, 0, 0, 0, 0.1, 0}};  // guess 10%
constexpr TFinanceDefaults kDdbDefaults = {{0, 0, 0, 0, 2, 0, 0}};     // double declining
constexpr TFinanceDefaults kDbDefaults = {{0, 0, 0, 0, 12, 0, 0}};     // a full first year
constexpr TFinanceDefaults kVdbDefaults = {{0, 0, 0, 0, 0, 2, 0}};     // double declining

// Constructing an object registers it; kept in number order, like the function table.
TFuncNpv s_Npv;
TFuncFinance s_Pv(IDS_FN_PV, u"PV", 56, 3, 5, CalcPv);
TFuncFinance s_Fv(IDS_FN_FV, u"FV", 57, 3, 5, CalcFv);
TFuncFinance s_Nper(IDS_FN_NPER, u"NPER", 58, 3, 5, CalcNper);
TFuncFinance s_Pmt(IDS_FN_PMT, u"PMT", 59, 3, 5, CalcPmt);
TFuncFinance s_Rate(IDS_FN_RATE, u"RATE", 60, 3, 6, CalcRate, kRateDefaults);
TFuncIrr s_Irr;  // before MIRR, which reads its list through it
TFuncMirr s_Mirr(s_Irr);
TFuncFinance s_Sln(IDS_FN_SLN, u"SLN", 142, 3, 3, CalcSln);
TFuncFinance s_Syd(IDS_FN_SYD, u"SYD", 143, 4, 4, CalcSyd);
TFuncFinance s_Ddb(IDS_FN_DDB, u"DDB", 144, 4, 5, CalcDdb, kDdbDefaults);
TFuncFinance s_Ipmt(IDS_FN_IPMT, u"IPMT", 167, 4, 6, CalcIpmt);
TFuncFinance s_Ppmt(IDS_FN_PPMT, u"PPMT", 168, 4, 6, CalcPpmt);
TFuncFinance s_Vdb(IDS_FN_VDB, u"VDB", 222, 5, 7, CalcVdb, kVdbDefaults);
TFuncFinance s_Db(IDS_FN_DB, u"DB", 247, 4, 5, CalcDb, kDbDefaults);
TFuncFinance s_Ispmt(IDS_FN_ISPMT, u"ISPMT", 350, 4, 4, CalcIspmt);

}  // namespace
