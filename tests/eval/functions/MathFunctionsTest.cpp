// The rounding, elementary, trigonometric and product functions through formula
// text on a real book: the tolerance nudge against an integer model, the error
// rules, the random generator, and the arity edges of each function.
#include <cmath>
#include <string>

#include "../EvalFixture.h"
#include "eval/functions/NumericHelpers.h"

namespace {

using MathFunctionsTest = EvalTest;

// Rounding rules where direction, sign and the digit limits meet.
// clang-format off
constexpr TEvalCase kRounding[] = {
    {"=ROUNDUP(-1.21,1)", "-1.3"},  // away from zero on the negative side
    {"=ROUNDDOWN(-1.29,1)", "-1.2"},
    {"=ROUNDDOWN(0.57,2)", "0.57"},  // 0.57 * 100 is 56.99999999999999: the nudge lifts it
    {"=ROUNDUP(5,-16)", "1E+16"},  // the last digit count that still scales
    {"=ROUNDUP(5,-17)", "0"},  // one step past: nothing is left
    {"=ROUNDDOWN(1.5,17)", "1.5"},  // from 17 digits on nothing is cut
    {"=TRUNC(-8.9)", "-8"}, {"=TRUNC(5)", "5"}, {"=INT(-8.9)", "-9"},
    {"=CEILING(-2.5,1)", "#NUM!"},  // signs differ
    {"=FLOOR(2.5,-1)", "#NUM!"}, {"=CEILING(5,0)", "0"},  // a zero significance: 0 here ...
    {"=FLOOR(5,0)", "#DIV/0!"},  // ... but a division by zero here
    {"=FLOOR(0,-1)", "0"},  // a zero number gives 0 before the sign test
    {"=EVEN(-1)", "-2"}, {"=EVEN(-2)", "-2"}, {"=ODD(0)", "1"}, {"=ODD(-2)", "-3"},
    {"=ROUNDUP(\"x\",1/0)", "#VALUE!"},  // the first failing argument wins
    {"=TRUNC(1,1/0)", "#DIV/0!"},
};
// clang-format on

TEST_F(MathFunctionsTest, RoundingRules) { ExpectAll(kRounding); }

// Every two-decimal number from -9.99 to 9.99, typed as text, against an integer
// model. Scaled by 100 about one in seven lands beside its whole number (0.57 * 100
// is 56.99999999999999), so without the nudge these step to the wrong hundredth.
TEST_F(MathFunctionsTest, DirectedRoundingSweepMatchesIntegerModel) {
  for (int n = -999; n <= 999; ++n) {
    const int nAbs = std::abs(n);
    const std::string sX = (n < 0 ? "-" : "") + std::to_string(nAbs / 100) + "." +
                           std::to_string(nAbs / 10 % 10) + std::to_string(nAbs % 10);
    const std::string sStep = n < 0 ? "-0.01)" : "0.01)";
    const int nTenthsDown = n / 10;  // C division truncates toward zero
    const int nTenthsUp = nTenthsDown + (n % 10 == 0 ? 0 : (n < 0 ? -1 : 1));
    const struct {
      std::string sFormula;
      double rExpected;
    } checks[] = {
        {"=ROUNDDOWN(" + sX + ",2)", n / 100.0},
        {"=ROUNDUP(" + sX + ",2)", n / 100.0},
        {"=CEILING(" + sX + "," + sStep, n / 100.0},
        {"=FLOOR(" + sX + "," + sStep, n / 100.0},
        {"=ROUNDDOWN(" + sX + ",1)", nTenthsDown / 10.0},
        {"=ROUNDUP(" + sX + ",1)", nTenthsUp / 10.0},
    };
    for (const auto& check : checks) {
      SCOPED_TRACE(check.sFormula);
      EXPECT_NEAR(check.rExpected, EvalNumber(check.sFormula.c_str()), 1e-12);
    }
  }
}

// Domain errors and overflows of the library give #NUM!; an underflow gives 0.
// clang-format off
constexpr TEvalCase kElementary[] = {
    {"=ASIN(1.0000001)", "#NUM!"}, {"=ACOSH(0.5)", "#NUM!"}, {"=ATANH(1)", "#NUM!"},
    {"=COSH(1000)", "#NUM!"}, {"=EXP(-1000)", "0"}, {"=LOG(5,1)", "#DIV/0!"},
    {"=LOG(-1,1)", "#NUM!"},  // the domain is tested before the base of 1
    {"=ATAN2(1,0)", "0"},  // x first: the point (1, 0)
    {"=ATAN2(0,1)", "1.5707963267949"}, {"=DEGREES(PI())", "180"},
    {"=RADIANS(180)", "3.14159265358979"}, {"=SIGN(-0.001)", "-1"},
    {"=POWER(0,-1)", "#NUM!"},  // stored non-finite, read back as #NUM!
    {"=FACT(2.9)", "2"},  // truncated
    {"=FACT(170)<1E+307", "TRUE"},  // the largest that fits
    {"=FACT(171)", "#NUM!"}, {"=FACT(32767)", "#NUM!"},
    {"=FACT(32768)", "#VALUE!"},  // outside the word range
    {"=FACT(-1)", "#VALUE!"},
};
// clang-format on

TEST_F(MathFunctionsTest, ElementaryFunctionErrors) { ExpectAll(kElementary); }

// SUMPRODUCT pairs elements; sizes must agree and non-numbers count as 0.
TEST_F(MathFunctionsTest, SumProductPairsElements) {
  SetNumber("A1", 2);
  SetText("A2", u"x");
  SetNumber("B1", 3);
  SetNumber("B2", 4);
  ASSERT_EQ(0, m_pSheet->SetError(At("C1"), TValue::errNA));
  const TEvalCase cases[] = {
      {"=SUMPRODUCT(A1:A2,B1:B2)", "6"},  // text is 0
      {"=SUMPRODUCT(A1:A2,B1:C1)", "#VALUE!"},
      {"=SUMPRODUCT(A1:B1,B1:C1)", "#N/A"},
      {"=SUMPRODUCT(\"x\")", "0"},
      {"=SUMSQ(A1:B2,-1)", "30"},
  };
  ExpectAll(cases);
}

// The published check of the minimal-standard generator: from seed 1 the 10,000th
// state is 1043618065 (Park and Miller). A zero seed stays zero.
TEST(MinStdRandomTest, KnownSequenceAndZeroSeed) {
  TMinStdRandom random(1);
  EXPECT_DOUBLE_EQ(16807 * 4.656612875245797e-10, random.Next());
  for (int i = 1; i < 10000; ++i) random.Next();
  EXPECT_EQ(1043618065, random.GetState());
  TMinStdRandom zero(0);
  EXPECT_EQ(0.0, zero.Next());
  EXPECT_EQ(0.0, zero.Next());
}

// RAND is volatile: every recalculation draws again.
TEST_F(MathFunctionsTest, RandDrawsOnEveryRecalculation) {
  const double rFirst = EvalNumber("=RAND()");
  m_pBook->Recalc();
  double rSecond = -1;
  ASSERT_TRUE(m_pSheet->GetNumber(99, 25, rSecond));
  EXPECT_NE(rFirst, rSecond);
  EXPECT_GE(rSecond, 0);
  EXPECT_LT(rSecond, 1);
}

// The math and statistics families.
constexpr TArity kArity[] = {
    {"ROUNDUP", 2, 2},    {"ROUNDDOWN", 2, 2},   {"TRUNC", 1, 2},       {"INT", 1, 1},
    {"CEILING", 2, 2},    {"FLOOR", 2, 2},       {"EVEN", 1, 1},        {"ODD", 1, 1},
    {"SIGN", 1, 1},       {"PI", 0, 0},          {"EXP", 1, 1},         {"LN", 1, 1},
    {"LOG", 1, 2},        {"LOG10", 1, 1},       {"POWER", 2, 2},       {"FACT", 1, 1},
    {"SIN", 1, 1},        {"COS", 1, 1},         {"TAN", 1, 1},         {"ASIN", 1, 1},
    {"ACOS", 1, 1},       {"ATAN", 1, 1},        {"ATAN2", 2, 2},       {"SINH", 1, 1},
    {"COSH", 1, 1},       {"TANH", 1, 1},        {"ASINH", 1, 1},       {"ACOSH", 1, 1},
    {"ATANH", 1, 1},      {"DEGREES", 1, 1},     {"RADIANS", 1, 1},     {"RAND", 0, 0},
    {"SUMSQ", 1, 30},     {"SUMPRODUCT", 1, 30}, {"SUMGENERAL", 1, 30}, {"STDEV", 1, 30},
    {"STDEVP", 1, 30},    {"VAR", 1, 30},        {"VARP", 1, 30},       {"STDEVA", 1, 30},
    {"STDEVPA", 1, 30},   {"VARA", 1, 30},       {"VARPA", 1, 30},      {"AVERAGEA", 1, 30},
    {"MINA", 1, 30},      {"MAXA", 1, 30},       {"RANK", 1, 30},       {"SUBTOTAL", 1, 30},
    {"SUBTOTALA", 1, 30},
};

TEST_F(MathFunctionsTest, ArityEdges) { ExpectArity(kArity); }

}  // namespace
