// Counting and summary family: AVERAGE, MIN, MAX, COUNT, COUNTA. AVERAGE, MIN and
// MAX enumerate numbers like SUM (and propose the format of the first formatted
// cell); COUNT and COUNTA count what their lists hold and never fail.
#include <algorithm>

#include "book/CellRecord.h"
#include "eval/Func.h"
#include "eval/FuncListArgs.h"
#include "eval/Value.h"
#include "platform/ResourceIds.h"

namespace {

// AVERAGE of no numbers divides by zero.
class TFuncAverage final : public TFuncRealListArgsWithValFormat {
 public:
  TFuncAverage() : TFuncRealListArgsWithValFormat(IDS_FN_AVERAGE, u"AVERAGE", 5, 1, 30) {}

 protected:
  void StartEnum() override { m_Real = 0; }
  void EnumReal(double r) override { m_Real += r; }
  void FinishEnum() override {
    if (m_nCount == 0) {
      m_pVal->SetError(TValue::errDiv0);
      return;
    }
    m_pVal->SetValue(m_Real / m_nCount);
  }
};

// MIN and MAX differ by direction only; no numbers give 0.
class TFuncMinMax final : public TFuncRealListArgsWithValFormat {
 public:
  TFuncMinMax(unsigned nResId, const char16_t* pwszName, unsigned short nFunc, bool bMax)
      : TFuncRealListArgsWithValFormat(nResId, pwszName, nFunc, 1, 30), m_bMax(bMax) {}

 protected:
  void StartEnum() override { m_Real = 0; }
  // m_nCount already counts r.
  void EnumReal(double r) override {
    if (m_nCount == 1)
      m_Real = r;
    else
      m_Real = m_bMax ? std::max(m_Real, r) : std::min(m_Real, r);
  }
  void FinishEnum() override { m_pVal->SetValue(m_nCount == 0 ? 0.0 : m_Real); }

 private:
  const bool m_bMax;
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
TFuncAverage s_Average;
TFuncMinMax s_Min(IDS_FN_MIN, u"MIN", 6, /*bMax=*/false);
TFuncMinMax s_Max(IDS_FN_MAX, u"MAX", 7, /*bMax=*/true);
TFuncCountA s_CountA;

}  // namespace
