// CONVERTK(number, category, from, to): converts a number between units of one
// category. The three codes are 1-based indexes: the category, then a unit of that
// category for each side. Factors are exact definitions where the unit has one (the
// international inch, pound and gallon).
#include <cmath>
#include <iterator>

#include "eval/ExternFunc.h"
#include "eval/Value.h"
#include "platform/ResourceIds.h"

namespace {

// Factors give each unit in the category's first unit.
constexpr double kLength[] = {1.0,    0.01,   0.001,  1000.0,         // m cm mm km
                              0.0254, 0.3048, 0.9144, 1609.344};      // in ft yd mi
constexpr double kMass[] = {1.0,        0.001,         1e-6, 1000.0,  // kg g mg t
                            0.45359237, 0.028349523125};              // lb oz
constexpr double kArea[] = {1.0,          1e-4,    1e6,
                            0.09290304,                                // m2 cm2 km2 ft2
                            4046.8564224, 10000.0, 3.30578512396694};  // acre ha pyeong
constexpr double kVolume[] = {0.001, 1e-6, 1.0,                        // l ml m3
                              0.003785411784, 0.000946352946};         // US gal, US qt

struct TCategory {
  const double* pFactors;
  int nUnits;
};

// Category 5 is temperature (C, F, K), converted through Celsius.
constexpr TCategory kCategories[] = {
    {kLength, static_cast<int>(std::size(kLength))},
    {kMass, static_cast<int>(std::size(kMass))},
    {kArea, static_cast<int>(std::size(kArea))},
    {kVolume, static_cast<int>(std::size(kVolume))},
};
constexpr int kTemperature = static_cast<int>(std::size(kCategories)) + 1;
constexpr int kTemperatureUnits = 3;

double ToCelsius(double r, int nUnit) {
  return nUnit == 1 ? r : nUnit == 2 ? (r - 32) * 5 / 9 : r - 273.15;
}

double FromCelsius(double r, int nUnit) {
  return nUnit == 1 ? r : nUnit == 2 ? r * 9 / 5 + 32 : r + 273.15;
}

class TFuncConvertK final : public TExternFunc {
 public:
  TFuncConvertK() : TExternFunc(IDS_FN_CONVERTK, u"CONVERTK") {}
  using TExternFunc::Evaluate;
  void Evaluate(TValue* pArgs, int nArgs) override;
};

void TFuncConvertK::Evaluate(TValue* pArgs, int nArgs) {
  if (nArgs != 4) {
    if (nArgs > 1) pArgs->Pop(nArgs);
    pArgs[0].SetError(TValue::errValue);
    return;
  }
  if (!pArgs->CheckReals(4)) {
    pArgs->Pop(4);
    return;
  }
  double r, rCategory, rFrom, rTo;
  pArgs[0].GetValue(r);
  pArgs[1].GetValue(rCategory);
  pArgs[2].GetValue(rFrom);
  pArgs[3].GetValue(rTo);
  pArgs->Pop(4);
  const int nCategory = static_cast<int>(std::trunc(rCategory));
  const int nFrom = static_cast<int>(std::trunc(rFrom));
  const int nTo = static_cast<int>(std::trunc(rTo));
  double rResult;
  if (nCategory == kTemperature) {
    if (nFrom < 1 || nFrom > kTemperatureUnits || nTo < 1 || nTo > kTemperatureUnits) {
      pArgs[0].SetError(TValue::errNA);
      return;
    }
    rResult = FromCelsius(ToCelsius(r, nFrom), nTo);
  } else {
    if (nCategory < 1 || nCategory >= kTemperature) {
      pArgs[0].SetError(TValue::errNA);
      return;
    }
    const TCategory& category = kCategories[nCategory - 1];
    if (nFrom < 1 || nFrom > category.nUnits || nTo < 1 || nTo > category.nUnits) {
      pArgs[0].SetError(TValue::errNA);
      return;
    }
    rResult = r * category.pFactors[nFrom - 1] / category.pFactors[nTo - 1];
  }
  if (!std::isfinite(rResult)) {
    pArgs[0].SetError(TValue::errNum);
    return;
  }
  pArgs[0].SetValue(rResult);
}

// Constructing the object registers it.
TFuncConvertK s_ConvertK;

}  // namespace
