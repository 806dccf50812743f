// The evaluator through formula text on a real book: operators across value kinds,
// reference operators, the abort rule on hand-made token streams, defined names,
// 3-D references and array mode (RecalcChainTest covers the recalculation order).
#include <memory>
#include <vector>

#include "EvalFixture.h"
#include "book/Name.h"
#include "eval/Op.h"
#include "formula/FormulaCell.h"
#include "formula/FormulaParser.h"

namespace {

class EvaluatorTest : public EvalTest {
 protected:
  void SetUp() override {
    EvalTest::SetUp();
    // A1:A3 numbers, B1 logical, B2 text, B3 error, C1 text holding a number.
    SetNumber("A1", 3);
    SetNumber("A2", 4);
    SetNumber("A3", 5);
    ASSERT_EQ(0, m_pSheet->SetLogical(At("B1"), 1));
    SetText("B2", u"abc");
    ASSERT_EQ(0, m_pSheet->SetError(At("B3"), TValue::errNA));
    SetText("C1", u"7");
  }
};

// The left operand's error wins; conversions follow CheckReal and CheckString.
constexpr TEvalCase kArithmetic[] = {
    {"=1/0", "#DIV/0!"},      {"=\"a\"+1", "#VALUE!"},
    {"=#N/A+1/0", "#N/A"},                                 // left error first
    {"=1/0+#N/A", "#DIV/0!"}, {"=\"a\"+#N/A", "#VALUE!"},  // the left conversion fails first
    {"=1+B3", "#N/A"},        {"=2^-1", "0.5"},
    {"=0^-1", "#NUM!"},       {"=(-8)^(1/3)", "#NUM!"},
    {"=2^1024", "#NUM!"},     {"=-2^2", "4"},   // prefix minus binds tighter than ^
    {"=2^3^2", "64"},         {"=A1+B1", "4"},  // a logical cell adds as 1
    {"=A1+C1", "10"},                           // numeric text converts
    {"=A1+B2", "#VALUE!"},    {"=Z1+1", "1"},   // an empty cell is 0
    {"=50%", "0.5"},          {"=-\"5\"", "-5"},
    {"=1E+308*10", "#NUM!"},  // an overflow is no number a cell can hold
};

TEST_F(EvaluatorTest, ArithmeticAndUnaryOperators) { ExpectAll(kArithmetic); }

// A value argument naming one cell reads that cell; an empty cell is not an omitted
// argument (ADDRESS takes 1 for a missing form, 0 is no form).
constexpr TEvalCase kCellArguments[] = {
    {"=ADDRESS(1,1,)", "$A$1"},
    {"=ADDRESS(1,1,Z1)", "#VALUE!"},
    {"=ADDRESS(1,1,D1)", "#VALUE!"},  // a formatted cell that holds nothing
    {"=ADDRESS(1,1,A1)", "$A1"},
    {"=ADDRESS(1,1,B2)", "#VALUE!"},
};

TEST_F(EvaluatorTest, CellArgumentsAreNotOmittedArguments) {
  ASSERT_NE(nullptr, m_pSheet->InitCell(0, 3, 1));
  ExpectAll(kCellArguments);
}

// Comparisons ignore case and order kinds Empty < numbers < text < logicals < errors.
constexpr TEvalCase kCompare[] = {
    {"=\"A\"=\"a\"", "TRUE"}, {"=\"a\"<>\"A\"", "FALSE"},
    {"=1=\"1\"", "FALSE"},    {"=1<\"1\"", "TRUE"},  // number before text
    {"=\"z\"<TRUE", "TRUE"},                         // text before logical
    {"=TRUE<1", "FALSE"},     {"=\"\"=Z1", "TRUE"},  // empty text equals an empty cell
    {"=0=Z1", "TRUE"},        {"=0<\"\"", "TRUE"},
    {"=0.1+0.2=0.3", "TRUE"},  // relative tolerance
    {"=1+1E-14=1", "FALSE"},  {"=B3=1", "#N/A"},
    {"=1=B3", "#N/A"},        {"=1/0=B3", "#DIV/0!"},  // left error first
    {"=B2=\"ABC\"", "TRUE"},
};

TEST_F(EvaluatorTest, ComparisonsAcrossKinds) { ExpectAll(kCompare); }

constexpr TEvalCase kConcat[] = {
    {"=\"a\"&\"b\"", "ab"},   {"=1&2", "12"},
    {"=TRUE&\"x\"", "TRUEx"}, {"=1/3&\"\"", "0.333333333333333"},
    {"=B3&\"x\"", "#N/A"},    {"=1/0&B3", "#DIV/0!"},
    {"=\"x\"&B3", "#N/A"},    {"=A1&B2", "3abc"},
};

TEST_F(EvaluatorTest, Concatenation) { ExpectAll(kConcat); }

// Range, intersection and union build references; an empty intersection is #NULL!.
constexpr TEvalCase kReferenceOps[] = {
    {"=SUM(A1:A3 A2:C2)", "4"},   {"=A1:A3 B1:B3", "#NULL!"},
    {"=SUM(A1:A2 A3)", "#NULL!"}, {"=SUM((A1:A2,A2:A3))", "16"},  // union keeps overlaps
    {"=SUM(A1:A2:A3)", "12"},                                     // range of a range and a cell
    {"=ROWS(A1:B2:C5)", "5"},     {"=ISERROR(A1 B1)", "TRUE"},
    {"=SUM(1 A1)", "#VALUE!"},   // a number is no reference
    {"=SUM(B3 A1:B3)", "#N/A"},  // the intersection is the error cell
    {"=COUNT((A1:A3,A1))", "4"},
};

TEST_F(EvaluatorTest, ReferenceOperators) { ExpectAll(kReferenceOps); }

// A reference where one value is wanted is read at the formula's row or column
// (ValueTest covers the misses).
TEST_F(EvaluatorTest, ImplicitIntersectionAtTheBaseCell) {
  EXPECT_EQ("4", Eval("=A1:A3", "D2"));
  EXPECT_EQ("5", Eval("=A1:A3*1", "E3"));
  EXPECT_EQ("-3", Eval("=-A1:C1", "A9"));  // a one-row range at column A
}

// Inside an array argument operators take references element-wise, even in a
// value formula; elsewhere they still read the cell at the formula's row.
constexpr TEvalCase kArrayArguments[] = {
    {"=SUMPRODUCT(A1:A3*1)", "12"},
    {"=SUMPRODUCT(A1:A3*{1;2;3})", "26"},
    {"=SUMPRODUCT(-A1:A3)", "-12"},
    {"=SUMPRODUCT((A1:A3>3)*A1:A3)", "9"},  // an element-wise result stays an array
    {"=SUMPRODUCT(A1:A3+A1)", "21"},
    {"=SUMPRODUCT({1,2,3}*2)", "12"},
    {"=SUMPRODUCT(A1:A2*A1:A3)", "#N/A"},  // no third row on the left
    {"=SUM(A1:A3*1)", "#VALUE!"},          // a value argument: row 9 misses the range
    {"=A1:A3*1+SUMPRODUCT(A1:A3*1)", "#VALUE!"},
};

TEST_F(EvaluatorTest, ArrayArgumentsComputeOperatorsElementWise) {
  ExpectAll(kArrayArguments, "D9");
  EXPECT_EQ("16", Eval("=A1:A3*1+SUMPRODUCT(A1:A3*1)", "D2"));
}

// Hand-made token streams: structural faults make the whole formula "#FORMULA!".
TEST_F(EvaluatorTest, AbortRule) {
  struct TStream {
    std::vector<unsigned char> bytes;
    const char* pszWhy;
  };
  const TStream kStreams[] = {
      {{0x1E, 1, 0, 0x21, 75, 0}, "function 75 has no entry"},
      {{0x1E, 1, 0, 0x1E, 2, 0, 0x30}, "0x30 is no token"},
      {{0x1E, 1, 0, 0x22, 1, 1, 0}, "IF with one argument"},
      {{0x1E, 1, 0, 0x22, 4, 1, 0}, "IF with more arguments than the stack holds"},
      {{0x03}, "an operator without operands"},
      {{0x1E, 1, 0, 0x01, 0, 0, 0, 0}, "tExp is not evaluated"},
      {{0x1E, 1, 0, 0x22, 1, 0x7B, 1}, "function 379 is past the table"},
  };
  for (const TStream& s : kStreams) {
    SCOPED_TRACE(s.pszWhy);
    CFormula formula(s.bytes.data(), static_cast<int>(s.bytes.size()), nullptr, 0);
    CFormulaEvaluator evaluator(m_pBook.get(), m_pSheet, TCell(0, 0));
    const TValue* pResult = evaluator.Evaluate(&formula, CFormulaBase::ftCell);
    ASSERT_NE(nullptr, pResult);
    EXPECT_EQ(TValue::errFormula, pResult->GetError());
    EXPECT_EQ(-1, CFormulaEvaluator::GetStackDepth());
  }
  // The sound variant of the first stream: 1 + 2.
  const unsigned char kSound[] = {0x1E, 1, 0, 0x1E, 2, 0, 0x03};
  CFormula formula(kSound, sizeof kSound, nullptr, 0);
  CFormulaEvaluator evaluator(m_pBook.get(), m_pSheet, TCell(0, 0));
  double r = 0;
  evaluator.Evaluate(&formula, CFormulaBase::ftCell)->GetValue(r);
  EXPECT_EQ(3, r);
}

// IF evaluates every argument but hands on only the chosen one.
TEST_F(EvaluatorTest, IfComputesBothBranches) {
  EXPECT_EQ("1", Eval("=IF(TRUE,1,1/0)"));
  EXPECT_EQ("#DIV/0!", Eval("=IF(FALSE,1,1/0)"));
  EXPECT_EQ("12", Eval("=SUM(IF(TRUE,A1:A3,0))"));  // the reference passes through
}

TEST_F(EvaluatorTest, NamesAndTheSelfReferenceGuard) {
  auto define = [&](const char16_t* pwszName, const char16_t* pwszText) {
    auto pName = std::make_unique<CName>(pwszName);
    CName* p = pName.get();
    m_pBook->AddName(pName.release());
    EXPECT_EQ(0, p->SetFormula(m_pBook.get(), m_pSheet, TCell(), pwszText, 1));
  };
  define(u"Data", u"Sheet1!$A$1:$A$3");
  define(u"Self", u"Self+1");
  define(u"Ping", u"Pong*2");
  define(u"Pong", u"Ping+1");
  define(u"Twice", u"Data*2");
  EXPECT_EQ("12", Eval("=SUM(Data)"));
  EXPECT_EQ("#NAME?", Eval("=Self"));
  EXPECT_EQ("#NAME?", Eval("=Ping"));       // a cycle through another name
  EXPECT_EQ("8", Eval("=Twice", "B2"));     // Data read at row 2, then doubled
  EXPECT_EQ("#NAME?", Eval("=Unknown+1"));  // made undefined by the parser
  EXPECT_NE(0, m_pBook->FindName(u"Unknown", -1, CName::kBookLevel));
  // A chain longer than the nesting bound stops with #NAME?, never overflowing.
  for (int i = 0; i < CFormulaEvaluator::kMaxNesting + 5; ++i) {
    const std::u16string sName = u"N" + std::u16string(1, u'A' + i / 26) + char16_t(u'A' + i % 26);
    const std::u16string sNext =
        u"N" + std::u16string(1, u'A' + (i + 1) / 26) + char16_t(u'A' + (i + 1) % 26);
    define(sName.c_str(), (sNext + u"+1").c_str());
  }
  EXPECT_EQ("#NAME?", Eval("=NAA"));
  EXPECT_EQ("#NAME?", Eval("=NAC+0"));
}

// A 3-D reference spans the sheets from the first to the last of its entry.
TEST_F(EvaluatorTest, ThreeDimensionalReferences) {
  SetNumber("A1", 10, m_pSheet2);
  SetNumber("A1", 100, m_pSheet3);
  SetNumber("A2", 1000, m_pSheet3);
  EXPECT_EQ("113", Eval("=SUM(Sheet1:Sheet3!A1)"));
  EXPECT_EQ("1122", Eval("=SUM(Sheet1:Sheet3!A1:A3)"));  // 12 + 10 + 1100
  EXPECT_EQ("110", Eval("=SUM(Sheet2:Sheet3!A1)"));
  EXPECT_EQ("110", Eval("=SUM(Sheet3:Sheet2!A1)"));  // written backwards
  EXPECT_EQ("3", Eval("=COUNT(Sheet1:Sheet3!A1)"));
  EXPECT_EQ("#VALUE!", Eval("=Sheet1:Sheet3!A1+1"));  // no single value
  EXPECT_EQ("parse error 4", Eval("=Sheet9!A1"));
}

// Array mode: element-wise operators with stretching and #N/A outside.
TEST_F(EvaluatorTest, ArrayModeShapes) {
  struct TShape {
    const char16_t* pwszFormula;
    int nRows, nCols;
    const char* pszLast;  // the element at the last row and column
  };
  const TShape kShapes[] = {
      {u"{1,2,3}+{10;20}", 2, 3, "23"},
      {u"{1,2}+{1,2,3}", 1, 3, "#N/A"},  // no third column on the left
      {u"-{1,2;3,4}", 2, 2, "-4"},
      {u"A1:A3*{1,10}", 3, 2, "50"},
      {u"ABS({-1,-2})", 1, 2, "2"},  // element-wise argument
      {u"IF({1,0},\"y\",\"n\")", 1, 2, "n"},
      {u"{1,2}&\"x\"", 1, 2, "2x"},
  };
  CFormulaEvaluator::SetCalcArray(true);
  for (const TShape& s : kShapes) {
    SCOPED_TRACE(Narrow(s.pwszFormula));
    CFormulaParser parser(m_pBook.get(), m_pSheet, TCell(0, 5));
    CFormula* pFormula = nullptr;
    ASSERT_EQ(0, parser.Parse(s.pwszFormula, &pFormula, CFormulaBase::ftArray));
    std::unique_ptr<CFormula> pOwned(pFormula);
    CFormulaEvaluator evaluator(m_pBook.get(), m_pSheet, TCell(0, 5));
    TValue result;
    result.CopyAndClearSource(*evaluator.Evaluate(pFormula, CFormulaBase::ftArray));
    ASSERT_TRUE(result.IsArrayVal());
    EXPECT_EQ(s.nRows, result.Rows());
    EXPECT_EQ(s.nCols, result.Cols());
    std::u16string sLast;
    result.GetArrayValue(s.nRows - 1, s.nCols - 1)->GetValue(sLast);
    EXPECT_EQ(s.pszLast, Narrow(sLast));
  }
  CFormulaEvaluator::SetCalcArray(false);
  // 1x1 with 1x1 stays a scalar; outside array mode an array gives its first element.
  EXPECT_EQ("11", Eval("={1}+{10}", "F1"));
  EXPECT_EQ("11", Eval("={1,2}+{10,20}", "F2"));
  // An array formula cell shows the first element of its result.
  ASSERT_EQ(0, SetFormula("F3", "=SUM(A1:A3*{1;10;100})", nullptr, CSheetBase::cftArray));
  m_pBook->Recalc();
  EXPECT_EQ("543", Text("F3"));
}

// Setting a formula that does not parse reports the parser's code and position and
// leaves the cell as it was.
TEST_F(EvaluatorTest, ParseFailureKeepsTheCell) {
  int nPos = -1;
  EXPECT_EQ(CFormulaParser::kResultError,
            m_pSheet->SetFormula(At("A1"), u"=1+(2", CSheetBase::cftNormal, 1, 0, &nPos));
  EXPECT_EQ(5, nPos);
  EXPECT_EQ("3", Text("A1"));
  EXPECT_NE(0, SetFormula("A1", "=IF(1)"));
  EXPECT_FALSE(m_pSheet->Cell(0, 0)->IsFormula());
}

}  // namespace
