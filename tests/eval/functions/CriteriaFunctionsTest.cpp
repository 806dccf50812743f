// Criteria: CValueCriteria directly (operators from text, blank rules, text
// operators on displayed text) and COUNTIF, SUMIF and COUNTBLANK through formulas.
#include "../EvalFixture.h"
#include "eval/ValueCriteria.h"

namespace {

class CriteriaFunctionsTest : public EvalTest {
 protected:
  void SetUp() override {
    EvalTest::SetUp();
    // A1 10, A2 the text 10, A3 abc, A4 the empty text, A5 TRUE, A6 #DIV/0!, A7 absent.
    SetNumber("A1", 10);
    SetText("A2", u"10");
    SetText("A3", u"abc");
    SetText("A4", u"");
    ASSERT_EQ(0, m_pSheet->SetLogical(At("A5"), 1));
    ASSERT_EQ(0, m_pSheet->SetError(At("A6"), TValue::errDiv0));
    for (int i = 0; i < 7; ++i) ASSERT_EQ(0, m_pSheet->SetNumber(TCell(i, 1), i + 1));
  }
  // Whether the criterion built as COUNTIF builds it meets the value.
  static bool Meets(const char16_t* pwszCriterion, const TValue& value) {
    TValue operand;
    operand.SetValue(pwszCriterion);
    const CValueCriteria crit(&operand, -1, CValueCriteria::opFromText, nullptr);
    return crit.MeetsCriteria(&value, 1, 0);
  }
};

TEST_F(CriteriaFunctionsTest, OperatorsFromText) {
  struct TCase {
    const char16_t* pwszText;
    CValueCriteria::EOperator eOp;
    TValue::TValType vt;
  };
  // clang-format off
  const TCase kCases[] = {
      {u"<>5", CValueCriteria::opNotEqual, TValue::vtReal},
      {u"<=5", CValueCriteria::opLessEqual, TValue::vtReal},
      {u"<5", CValueCriteria::opLess, TValue::vtReal},
      {u">=", CValueCriteria::opGreaterEqual, TValue::vtText},  // the empty text
      {u"><", CValueCriteria::opGreater, TValue::vtText},
      {u"=TRUE", CValueCriteria::opEqual, TValue::vtLogical},
      {u"#N/A", CValueCriteria::opEqual, TValue::vtError},
      {u"", CValueCriteria::opBlank, TValue::vtEmpty},
      {u"abc", CValueCriteria::opEqual, TValue::vtText},
  };
  // clang-format on
  for (const TCase& c : kCases) {
    SCOPED_TRACE(Narrow(c.pwszText));
    TValue operand;
    operand.SetValue(c.pwszText);
    const CValueCriteria crit(&operand, -1, CValueCriteria::opFromText, nullptr);
    EXPECT_EQ(c.eOp, crit.GetOperator());
    EXPECT_EQ(c.vt, crit.GetOperand().GetValType());
  }
}

// The kind rule, numeric text, blanks and wildcards on single values.
TEST_F(CriteriaFunctionsTest, MatchingValues) {
  TValue five, fiveText, blank, emptyText, apple;
  five.SetValue(5.0);
  fiveText.SetValue(u"5");
  emptyText.SetValue(u"");
  apple.SetValue(u"Apple");
  EXPECT_TRUE(Meets(u"5", fiveText));  // numeric text meets a number criterion
  EXPECT_TRUE(Meets(u">4.9999", five));
  EXPECT_FALSE(Meets(u"<>5", apple));  // different kinds never meet
  EXPECT_TRUE(Meets(u"a*", apple));
  EXPECT_FALSE(Meets(u"?pple?", apple));
  EXPECT_TRUE(Meets(u"", blank));
  EXPECT_TRUE(Meets(u"", emptyText));
  EXPECT_FALSE(Meets(u"", five));
  EXPECT_TRUE(Meets(u"<>", emptyText));  // the operand is the empty text
  EXPECT_TRUE(Meets(u">", apple));
}

// Text operators test the displayed text: 0.5 shown as 50% ends with "%".
TEST_F(CriteriaFunctionsTest, TextOperatorsOnCells) {
  SetText("C1", u"Hello World");
  ASSERT_EQ(0, m_pSheet->SetValueFromText(At("C2"), u"50%"));
  struct TCase {
    const char16_t* pwszOperand;
    const char16_t* pwszOperator;
    const char* pszCell;
    bool bMeets;
  };
  // clang-format off
  const TCase kCases[] = {
      {u"hello", u"begins with", "C1", true},
      {u"\"hello\"", u"begins with", "C1", true},  // enclosing quotes are dropped
      {u"world", u"begins with", "C1", false}, {u"world", u"does not begin with", "C1", true},
      {u"W?rld", u"ends with", "C1", true}, {u"Hello", u"ends with", "C1", false},
      {u"%", u"ends with", "C2", true}, {u"o w", u"contains", "C1", true},
      {u"xyz", u"does not contain", "C1", true},
      {u"xyz", u"contains", "C3", false},  // an absent cell shows the empty text
  };
  // clang-format on
  for (const TCase& c : kCases) {
    SCOPED_TRACE(Narrow(c.pwszOperand) + " " + Narrow(c.pwszOperator));
    const CValueCriteria crit(c.pwszOperand, m_pSheet, c.pwszOperator);
    EXPECT_EQ(c.bMeets, crit.MeetsCriteria(m_pSheet, At(c.pszCell)));
  }
  const CValueCriteria unknown(u">3", m_pSheet, u"is like");
  EXPECT_EQ(CValueCriteria::opGreater, unknown.GetOperator());  // read from the text
}

TEST_F(CriteriaFunctionsTest, SearchAndEndsWith) {
  EXPECT_EQ(2, CValueCriteria::Search(u"c", u"abcabc", 0));
  EXPECT_EQ(5, CValueCriteria::Search(u"c", u"abcabc", 3));
  EXPECT_EQ(-1, CValueCriteria::Search(u"c", u"abcabc", 6));  // start past the text
  EXPECT_EQ(-1, CValueCriteria::Search(u"c", u"abcabc", -1));
  EXPECT_TRUE(CValueCriteria::EndsWith(u"b?", u"abcabc"));
  EXPECT_FALSE(CValueCriteria::EndsWith(u"ab", u"abcabc"));
  EXPECT_TRUE(CValueCriteria::EndsWith(u"~*", u"a*"));
}

TEST_F(CriteriaFunctionsTest, RangeOverloadCoversAbsentCells) {
  const CValueCriteria positive(u">0", nullptr, CValueCriteria::opFromText);
  EXPECT_TRUE(positive.MeetsCriteria(m_pSheet, 0, 1, 6, 1));   // B1:B7, all present
  EXPECT_FALSE(positive.MeetsCriteria(m_pSheet, 0, 1, 7, 1));  // B8 is absent
  const CValueCriteria blank(u"", nullptr, CValueCriteria::opEqual);
  EXPECT_TRUE(blank.MeetsCriteria(m_pSheet, 100, 0, 65535, 255));
}

// clang-format off
constexpr TEvalCase kFunctionCases[] = {
    {"=COUNTIF(A1:A7,10)", "2"},  // the number and the numeric text
    {"=COUNTIF(A1:A7,\"<>10\")", "0"},
    {"=COUNTIF(A1:A7,\"\")", "1"},  // the empty text; the absent A7 is not visited
    {"=COUNTIF(A1:A7,\"*\")", "2"},  // texts; the empty one is blank
    {"=COUNTIF(A1:A7,\"#DIV/0!\")", "1"}, {"=COUNTIF(A1:A7,TRUE)", "#VALUE!"},
    {"=COUNTIF(A1:A7,1/0)", "#DIV/0!"}, {"=COUNTIF(5,5)", "#VALUE!"},
    {"=COUNTIF(A:A,\">=10\")", "2"}, {"=SUMIF(A1:A7,TRUE,B1:B7)", "5"},
    {"=SUMIF(A1:A7,10,B1)", "3"}, {"=SUMIF(B1:B7,\">5\")", "13"},
    {"=SUMIF(A1:A7,\"abc\",A4)", "#DIV/0!"},  // A3 matches; its sum cell A6 is an error
    {"=SUMIF(A1:A10,\">0\",C65527)", "0"},  // rows 65527 to 65536 fit
    {"=SUMIF(A1:A10,\">0\",C65528)", "#VALUE!"}, {"=SUMIF(A1:A2,\">0\",IV1)", "0"},
    {"=SUMIF(A1:B2,\">0\",IV1)", "#VALUE!"},
    {"=COUNTBLANK(A1:A8)", "3"},  // the empty text, A7 and A8
    {"=COUNTBLANK(A1:Y65536)", "1638388"},  // 25 x 65536 less 12 filled
    {"=COUNTBLANK({1})", "#VALUE!"},
};
// clang-format on

TEST_F(CriteriaFunctionsTest, Functions) { ExpectAll(kFunctionCases); }

TEST_F(CriteriaFunctionsTest, ArityEdges) {
  constexpr TArity kArity[] = {{"COUNTIF", 2, 2}, {"SUMIF", 2, 3}, {"COUNTBLANK", 1, 1}};
  ExpectArity(kArity);
}

}  // namespace
