// Trigonometric family: PI, SIN, COS, TAN, ASIN, ACOS, ATAN, ATAN2, the hyperbolic
// functions and their inverses, DEGREES and RADIANS. Angles are in radians; each
// function is the C library's, with a domain error or an overflow giving #NUM!.
#include <cmath>
#include <numbers>

#include "eval/Func.h"
#include "eval/Value.h"
#include "eval/functions/NumericHelpers.h"
#include "platform/ResourceIds.h"

namespace {

// The library's functions are overloaded; these pick the double one for the table.
double Sin(double x) { return std::sin(x); }
double Cos(double x) { return std::cos(x); }
double Tan(double x) { return std::tan(x); }
double Asin(double x) { return std::asin(x); }
double Acos(double x) { return std::acos(x); }
double Atan(double x) { return std::atan(x); }
double Sinh(double x) { return std::sinh(x); }
double Cosh(double x) { return std::cosh(x); }
double Tanh(double x) { return std::tanh(x); }
double Asinh(double x) { return std::asinh(x); }
double Acosh(double x) { return std::acosh(x); }
double Atanh(double x) { return std::atanh(x); }
double Degrees(double x) { return x * 180 / std::numbers::pi; }
double Radians(double x) { return x * std::numbers::pi / 180; }

class TFuncPi final : public TFuncNoArgs {
 public:
  TFuncPi() : TFuncNoArgs(IDS_FN_PI, u"PI", 19) {}
  using TFuncNoArgs::Evaluate;
  void Evaluate(TValue* pArgs) override { pArgs->SetValue(std::numbers::pi); }
};

// ATAN2(x, y): the angle of the point (x, y), x first as spreadsheets have it (the
// library's atan2 takes y first). The origin gives 0, as the library does.
class TFuncAtan2 final : public TFuncTwoArgs {
 public:
  TFuncAtan2() : TFuncTwoArgs(IDS_FN_ATAN2, u"ATAN2", 97) {}
  using TFuncTwoArgs::Evaluate;
  void Evaluate(TValue* pArgs) override {
    double x, y;
    if (!TakeTwoReals(pArgs, x, y)) return;
    SetFinite(pArgs, std::atan2(y, x));
  }
};

// Constructing an object registers it; kept in number order, like the function table.
TFuncLibraryCall s_Sin(IDS_FN_SIN, u"SIN", 15, Sin);
TFuncLibraryCall s_Cos(IDS_FN_COS, u"COS", 16, Cos);
TFuncLibraryCall s_Tan(IDS_FN_TAN, u"TAN", 17, Tan);
TFuncLibraryCall s_Atan(IDS_FN_ATAN, u"ATAN", 18, Atan);
TFuncPi s_Pi;
TFuncAtan2 s_Atan2;
TFuncLibraryCall s_Asin(IDS_FN_ASIN, u"ASIN", 98, Asin);
TFuncLibraryCall s_Acos(IDS_FN_ACOS, u"ACOS", 99, Acos);
TFuncLibraryCall s_Sinh(IDS_FN_SINH, u"SINH", 229, Sinh);
TFuncLibraryCall s_Cosh(IDS_FN_COSH, u"COSH", 230, Cosh);
TFuncLibraryCall s_Tanh(IDS_FN_TANH, u"TANH", 231, Tanh);
TFuncLibraryCall s_Asinh(IDS_FN_ASINH, u"ASINH", 232, Asinh);
TFuncLibraryCall s_Acosh(IDS_FN_ACOSH, u"ACOSH", 233, Acosh);
TFuncLibraryCall s_Atanh(IDS_FN_ATANH, u"ATANH", 234, Atanh);
TFuncLibraryCall s_Radians(IDS_FN_RADIANS, u"RADIANS", 342, Radians);
TFuncLibraryCall s_Degrees(IDS_FN_DEGREES, u"DEGREES", 343, Degrees);

}  // namespace
