// The first function bodies through formula text on a real book: values by family,
// what list functions count from references, direct arguments and arrays, and the
// arity edges of each function.
#include <cmath>
#include <string>

#include "../EvalFixture.h"
#include "formula/FormulaParser.h"

namespace {

class FirstFunctionsTest : public EvalTest {
 protected:
  void SetUp() override {
    EvalTest::SetUp();
    // A1:A4 numbers; B1 TRUE, B2 text, B3 #DIV/0!, B4 empty; C1 numeric text.
    for (int i = 0; i < 4; ++i) ASSERT_EQ(0, m_pSheet->SetNumber(TCell(i, 0), i + 1));
    ASSERT_EQ(0, m_pSheet->SetLogical(At("B1"), 1));
    SetText("B2", u"abc");
    ASSERT_EQ(0, m_pSheet->SetError(At("B3"), TValue::errDiv0));
    SetText("C1", u"4");
  }
};

// Reference cells count only numbers; direct logicals count; direct text is #VALUE!;
// an error anywhere is the result.
// clang-format off
constexpr TEvalCase kAggregates[] = {
    {"=SUM(A1:A4)", "10"}, {"=SUM()", "0"},
    {"=SUM(A1:B2)", "3"},  // TRUE and text in references are passed over
    {"=SUM(TRUE,2)", "3"}, {"=SUM(\"4\",1)", "#VALUE!"}, {"=SUM(A1:B3)", "#DIV/0!"},
    {"=SUM({1,2;3,4})", "10"},
    {"=SUM({1,\"a\",TRUE})", "1"},  // text and logical elements are passed over
    {"=SUM(C1)", "0"}, {"=SUM(A:A)", "10"}, {"=AVERAGE(A1:A4)", "2.5"},
    {"=AVERAGE(B1:B2)", "#DIV/0!"},  // no numbers
    {"=AVERAGE(A1:A4,,)", "1.66666666666667"},  // omitted arguments count as 0
    {"=MIN(A1:A4,0.5)", "0.5"}, {"=MIN(B1:B2)", "0"}, {"=MAX(A1:A4,-1)", "4"},
    {"=MAX(-5,-3)", "-3"}, {"=MAX({-1,-5})", "-1"}, {"=PRODUCT(A1:A4)", "24"},
    {"=PRODUCT(B2)", "0"}, {"=PRODUCT(-1,-2,-3)", "-6"}, {"=PRODUCT(1E+200,1E+200)", "#NUM!"},
    {"=COUNT(A1:C4)", "4"},
    {"=COUNT(TRUE,\"4\",\"x\",1)", "3"},  // direct logicals and numeric text count
    {"=COUNT({1,\"a\",TRUE,2})", "2"},
    {"=COUNT(B3,1/0,1)", "1"},  // errors are not counted and do not stop it
    {"=COUNTA(A1:C4)", "8"}, {"=COUNTA({1,\"a\",TRUE,2})", "4"}, {"=COUNTA(B4)", "0"},
};
// clang-format on

TEST_F(FirstFunctionsTest, ListAggregates) { ExpectAll(kAggregates); }

// clang-format off
constexpr TEvalCase kLogical[] = {
    {"=IF(1,\"y\",\"n\")", "y"}, {"=IF(0,\"y\")", "FALSE"}, {"=IF(\"abc\",1,2)", "#VALUE!"},
    {"=IF(B3,1,2)", "#DIV/0!"}, {"=IF(B4,1,2)", "2"}, {"=IF(1,,2)", "0"},  // an omitted branch is 0
    {"=CHOOSE(2,\"a\",\"b\")", "b"}, {"=CHOOSE(1.9,\"a\",\"b\")", "a"},
    {"=CHOOSE(0.5,\"a\")", "#VALUE!"}, {"=CHOOSE(3,\"a\",\"b\")", "#VALUE!"},
    {"=CHOOSE(TRUE,\"a\",\"b\")", "a"}, {"=CHOOSE(B3,\"a\")", "#DIV/0!"},
    {"=SUM(CHOOSE(2,A1,A1:A4))", "10"}, {"=AND(TRUE,1)", "TRUE"}, {"=AND(TRUE,0)", "FALSE"},
    {"=AND(B2)", "#VALUE!"},  // text only: nothing to fold
    {"=AND(A1:B2)", "TRUE"}, {"=AND(A1:B3)", "#DIV/0!"}, {"=AND(\"TRUE\",FALSE)", "FALSE"},
    {"=AND(\"TRUE\")", "#VALUE!"}, {"=AND(TRUE,\"x\")", "#VALUE!"}, {"=AND({\"a\",TRUE})", "TRUE"},
    {"=OR(0,0)", "FALSE"}, {"=OR(0,B1)", "TRUE"}, {"=OR(B4)", "#VALUE!"}, {"=NOT(0)", "TRUE"},
    {"=NOT(\"FALSE\")", "TRUE"}, {"=NOT(B2)", "#VALUE!"}, {"=TRUE()+TRUE", "2"},
    {"=FALSE()", "FALSE"},
};
// clang-format on

TEST_F(FirstFunctionsTest, LogicalFamily) { ExpectAll(kLogical); }

// clang-format off
constexpr TEvalCase kScalars[] = {
    {"=NA()", "#N/A"}, {"=ISNA(NA())", "TRUE"}, {"=ISNA(B3)", "FALSE"}, {"=ISERROR(B3)", "TRUE"},
    {"=ISERROR(B2)", "FALSE"},
    {"=ISERROR(A1:A4)", "TRUE"},  // no implicit intersection from column Z
    {"=ISERROR({#N/A,1})", "TRUE"}, {"=ROWS(A1:C5)", "5"}, {"=ROWS(A:A)", "65536"},
    {"=COLUMNS(A1:IV1)", "256"}, {"=COLUMNS({1,2;3,4})", "2"}, {"=ROWS(5)", "1"},
    {"=ROWS(Sheet1:Sheet2!A1:A7)", "7"}, {"=ROWS((A1,B2))", "#REF!"}, {"=ROUND(2.675,2)", "2.68"},
    {"=ROUND(-2.5,0)", "-3"}, {"=ROUND(1234.5,-2)", "1200"}, {"=ROUND(1.25,TRUE)", "1.3"},
    {"=ROUND(1234.56789,-0.9)", "1235"}, {"=ROUND(1.005,400)", "1.005"}, {"=ROUND(5,-400)", "0"},
    {"=ROUND(-0.0001,1)", "0"}, {"=ROUND(B3,\"x\")", "#DIV/0!"},  // the first failing argument wins
    {"=ROUND(1,\"x\")", "#VALUE!"}, {"=ABS(-2)", "2"}, {"=ABS(\"\")", "#VALUE!"},
    {"=SQRT(16)", "4"}, {"=SQRT(-1)", "#NUM!"}, {"=MOD(-3,2)", "1"}, {"=MOD(3,-2)", "-1"},
    {"=MOD(5,0)", "#DIV/0!"}, {"=MOD(-1E-20,1)", "1"}, {"=MOD(B3,0)", "#DIV/0!"},
};
// clang-format on

TEST_F(FirstFunctionsTest, ScalarFunctions) { ExpectAll(kScalars); }

// Halves round away from zero at every scale: x.5 / 10^d for d = 0..6.
TEST_F(FirstFunctionsTest, RoundSweepOfHalves) {
  for (int d = 0; d <= 6; ++d) {
    for (int n = 0; n < 20; ++n) {
      const std::string sX = std::to_string(n) + ".5";
      const std::string sText =
          "=ROUND(" + sX + "/1E" + std::to_string(d) + "," + std::to_string(d) + ")";
      SCOPED_TRACE(sText);
      const double rExpected = (n + 1) / std::pow(10.0, d);
      EXPECT_NEAR(rExpected, EvalNumber(sText.c_str()), rExpected * 1e-14);
    }
  }
}

constexpr TArity kArity[] = {
    {"SUM", 0, 30},    {"AVERAGE", 1, 30}, {"COUNT", 1, 30},  {"COUNTA", 1, 30}, {"IF", 2, 3},
    {"CHOOSE", 2, 30}, {"NOT", 1, 1},      {"NA", 0, 0},      {"TRUE", 0, 0},    {"ROUND", 2, 2},
    {"MOD", 2, 2},     {"ROWS", 1, 1},     {"COLUMNS", 1, 1}, {"ISNA", 1, 1},
};

TEST_F(FirstFunctionsTest, ArityEdges) { ExpectArity(kArity); }

// The dispatcher refuses what the parser would not write: below the minimum, above
// the maximum, and numbers without a function.
TEST_F(FirstFunctionsTest, DispatcherRefusesBadCalls) {
  CFormulaEvaluator evaluator(m_pBook.get(), m_pSheet, TCell(0, 0));
  EXPECT_FALSE(evaluator.EvaluateFunc(5, 0, false));    // AVERAGE()
  EXPECT_FALSE(evaluator.EvaluateFunc(75, 0, false));   // no function 75
  EXPECT_FALSE(evaluator.EvaluateFunc(371, 0, false));  // past the table
  EXPECT_FALSE(evaluator.EvaluateFunc(1, 4, false));    // IF with four
  EXPECT_TRUE(evaluator.EvaluateFunc(4, 0, false));     // SUM()
  EXPECT_EQ(-1, CFormulaEvaluator::GetStackDepth());
}

}  // namespace
