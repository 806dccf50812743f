// The statistical functions through formula text on a real book: the spread against
// a two-pass model, what the "A" forms count, RANK's order and ties, and the cells
// SUBTOTAL and SUBTOTALA leave out.
#include <cmath>
#include <string>
#include <vector>

#include "../EvalFixture.h"

namespace {

using StatFunctionsTest = EvalTest;

// Values around 1e6 with a small spread: a sum-of-squares formula cancels there, a
// one-pass update must not. The model is the two-pass formula in long double.
TEST_F(StatFunctionsTest, SpreadMatchesTwoPassModel) {
  std::vector<double> values;
  for (int i = 0; i < 40; ++i) values.push_back(1e6 + (i * 37 % 11) * 0.25);
  for (int i = 0; i < 40; ++i) SetNumber(("A" + std::to_string(i + 1)).c_str(), values[i]);
  long double rMean = 0, rSquares = 0;
  for (double x : values) rMean += x;
  rMean /= values.size();
  for (double x : values) rSquares += (x - rMean) * (x - rMean);
  const double rVar = static_cast<double>(rSquares / (values.size() - 1));
  const double rVarP = static_cast<double>(rSquares / values.size());
  EXPECT_NEAR(rVar, EvalNumber("=VAR(A1:A40)"), rVar * 1e-8);
  EXPECT_NEAR(rVarP, EvalNumber("=VARP(A1:A40)"), rVarP * 1e-8);
  EXPECT_NEAR(std::sqrt(rVar), EvalNumber("=STDEV(A1:A40)"), std::sqrt(rVar) * 1e-8);
  EXPECT_NEAR(std::sqrt(rVarP), EvalNumber("=STDEVPA(A1:A40)"), std::sqrt(rVarP) * 1e-8);
}

// The "A" forms count text cells as 0 and logical cells as 1 or 0; the plain forms
// pass both over. A sample needs two values, a population one.
TEST_F(StatFunctionsTest, AFormsCountTextAndLogicals) {
  SetNumber("D1", 2);
  ASSERT_EQ(0, m_pSheet->SetLogical(At("D2"), 1));
  SetText("D3", u"txt");
  // clang-format off
  const TEvalCase cases[] = {
      {"=AVERAGEA(D1:D4)", "1"},  // (2 + 1 + 0) / 3; the empty D4 is not counted
      {"=AVERAGE(D1:D4)", "2"}, {"=MINA(D1:D3)", "0"}, {"=MAXA(D2:D3)", "1"}, {"=MAX(D2:D3)", "0"},
      {"=VARPA(D1:D3)", "0.666666666666667"}, {"=STDEVA(D1:D2)", "0.707106781186548"},
      {"=STDEV(D1:D2)", "#DIV/0!"},  // one number only
      {"=STDEVP(D1)", "0"}, {"=VARA(D4)", "#DIV/0!"},
      {"=AVERAGEA(D1,\"9\",FALSE)", "0.666666666666667"},  // direct text counts 0 too
  };
  // clang-format on
  ExpectAll(cases);
}

// Ties share the best rank; order 0 ranks from the largest, any other from the
// smallest; a number not in the list gets the rank it would have.
TEST_F(StatFunctionsTest, RankOrderAndTies) {
  const double kValues[] = {5, 3, 5, 1, 2};
  for (int i = 0; i < 5; ++i) SetNumber(("E" + std::to_string(i + 1)).c_str(), kValues[i]);
  // clang-format off
  const TEvalCase cases[] = {
      {"=RANK(5,E1:E5)", "1"}, {"=RANK(3,E1:E5)", "3"}, {"=RANK(3,E1:E5,1)", "3"},
      {"=RANK(5,E1:E5,-1)", "4"}, {"=RANK(4,E1:E5)", "3"}, {"=RANK(1/0,E1:E5)", "#DIV/0!"},
      {"=RANK(5)", "#VALUE!"}, {"=RANK(5,E1:E5,0,0)", "#VALUE!"},
      {"=RANK(5,E1:E5,\"x\")", "#VALUE!"},
  };
  // clang-format on
  ExpectAll(cases);
}

// A1:A6 hold 1, 2, 4 (row hidden), 8, a subtotal of A1:A4 and 16 (row filtered);
// column C is hidden and C1 holds 100.
class SubtotalTest : public StatFunctionsTest {
 protected:
  void SetUp() override {
    StatFunctionsTest::SetUp();
    const double kValues[] = {1, 2, 4, 8};
    for (int i = 0; i < 4; ++i) SetNumber(("A" + std::to_string(i + 1)).c_str(), kValues[i]);
    ASSERT_EQ(0, SetFormula("A5", "=SUBTOTAL(9,A1:A4)"));
    SetNumber("A6", 16);
    SetNumber("C1", 100);
    m_pSheet->SetRowHidden(2, 2, true);
    m_pSheet->SetRowFiltered(5, 5, true);
    m_pSheet->SetColHidden(2, 2, true);
  }
};

TEST_F(SubtotalTest, SkipRules) {
  // clang-format off
  const TEvalCase cases[] = {
      {"=SUM(A1:A6)", "46"},  // outside subtotal mode nothing is skipped
      {"=SUBTOTAL(9,A1:A6)", "15"},  // the subtotal cell and the filtered row
      {"=SUBTOTAL(109,A1:A6)", "11"},  // and the hidden row
      {"=SUBTOTALA(9,A1:A6)", "11"},  // the A form inverts the switch
      {"=SUBTOTALA(109,A1:A6)", "15"}, {"=SUBTOTAL(2,A1:A6)", "4"},  // COUNT takes the same rules
      {"=SUBTOTAL(102,A1:A6)", "3"},
      {"=SUBTOTAL(9,A5)", "15"},  // a single subtotal cell counts ...
      {"=SUBTOTAL(109,A5)", "0"},  // ... unless hidden cells are skipped
      {"=SUBTOTAL(9,A3)", "4"}, {"=SUBTOTAL(109,A3)", "0"},
      {"=SUBTOTAL(9,A6)", "0"},  // a filtered row is always left out
      {"=SUBTOTAL(9,C1:C2)", "100"}, {"=SUBTOTAL(109,C1:C2)", "0"},  // hidden columns too
      {"=SUBTOTAL(9,Sheet1:Sheet2!A1)", "#VALUE!"}, {"=SUBTOTAL(2,Sheet1:Sheet2!A1)", "#VALUE!"},
  };
  // clang-format on
  ExpectAll(cases);
}

// The code's remainder by 100 must lie in 1 to 11 and the code in -99 to 199.
TEST_F(SubtotalTest, FunctionCodes) {
  // clang-format off
  const TEvalCase cases[] = {
      {"=SUBTOTAL(0,A1:A2)", "#VALUE!"},   {"=SUBTOTAL(1,A1:A2)", "1.5"},
      {"=SUBTOTAL(11,A1:A2)", "0.25"},     {"=SUBTOTAL(12,A1:A2)", "#VALUE!"},
      {"=SUBTOTAL(100,A1:A2)", "#VALUE!"}, {"=SUBTOTAL(101,A1:A2)", "1.5"},
      {"=SUBTOTAL(111,A1:A2)", "0.25"},    {"=SUBTOTAL(112,A1:A2)", "#VALUE!"},
      {"=SUBTOTAL(200,A1:A2)", "#VALUE!"}, {"=SUBTOTAL(-1,A1:A2)", "#VALUE!"},
      {"=SUBTOTAL(1/0,A1:A2)", "#DIV/0!"}, {"=SUBTOTALA(3,A1:A2)", "2"},
  };
  // clang-format on
  ExpectAll(cases);
}

}  // namespace
