// The text functions through formula text on a real book: cutting at the edges of the
// text, search starts, argument errors and their order, the byte forms in a
// double-byte code page, REPT's storage limit, and the arity of every function.
#include <string>

#include "../EvalFixture.h"
#include "platform/Locale.h"

namespace {

class TextFunctionsTest : public EvalTest {
 protected:
  void SetUp() override {
    EvalTest::SetUp();
    // A1 text, A2 #DIV/0!, A3 empty, A4 a number.
    SetText("A1", u"abcdef");
    ASSERT_EQ(0, m_pSheet->SetError(At("A2"), TValue::errDiv0));
    SetNumber("A4", 2.5);
  }
  void TearDown() override {
    SetLocale("en-US");
    EvalTest::TearDown();
  }
  // The value of a formula as UTF-16 text.
  std::u16string U16Value(const char16_t* pwszFormula) {
    EXPECT_EQ(0, m_pSheet->SetFormula(At("Z100"), pwszFormula));
    m_pBook->Recalc();
    TValue val;
    m_pSheet->GetValue(99, 25, &val);
    std::u16string s;
    val.GetValue(s);
    return s;
  }
};

// Counts one step each side of the text's ends; positions below 1 fail.
// clang-format off
constexpr TEvalCase kCutting[] = {
    {"=LEFT(A1,5)", "abcde"}, {"=LEFT(A1,6)", "abcdef"}, {"=LEFT(A1,7)", "abcdef"},
    {"=LEFT(A1,)", ""},  // an omitted count is 0, not the default 1
    {"=RIGHT(A1,0)", ""}, {"=RIGHT(A1,7)", "abcdef"}, {"=RIGHT(A1,-1)", "#VALUE!"},
    {"=RIGHT(A1,1E+300)", "abcdef"}, {"=MID(A1,6,1)", "f"}, {"=MID(A1,7,1)", ""},
    {"=MID(A1,1,-1)", "#VALUE!"}, {"=MID(A1,0.9,1)", "#VALUE!"},  // truncated to 0
    {"=REPLACE(A1,6,1,\"X\")", "abcdeX"}, {"=REPLACE(A1,7,1,\"X\")", "abcdefX"},
    {"=REPLACE(A1,2,-1,\"X\")", "#VALUE!"}, {"=REPLACE(A1,1,1E+300,\"X\")", "X"}, {"=LEN(A4)", "3"},
    {"=LEN(A3)", "0"},
};
// clang-format on

TEST_F(TextFunctionsTest, CuttingAtTheEnds) { ExpectAll(kCutting); }

// A search may start one past the end, where only nothing can be found; SEARCH reads
// wildcards and ignores case, FIND neither.
// clang-format off
constexpr TEvalCase kSearching[] = {
    {"=FIND(\"f\",A1,6)", "6"}, {"=FIND(\"\",A1,6)", "6"}, {"=FIND(\"\",A1,7)", "#VALUE!"},
    {"=FIND(\"\",A1,8)", "#VALUE!"}, {"=FIND(\"\",\"\")", "#VALUE!"}, {"=FIND(\"cd\",A1,3)", "3"},
    {"=FIND(\"cd\",A1,4)", "#VALUE!"}, {"=FIND(\"CD\",A1)", "#VALUE!"}, {"=SEARCH(\"CD\",A1)", "3"},
    {"=SEARCH(\"c*f\",A1)", "3"}, {"=SEARCH(\"~?\",\"a?b\")", "2"},
    {"=SEARCH(\"?\",A1,7)", "#VALUE!"},
    {"=SUBSTITUTE(\"aaaa\",\"aa\",\"b\")", "bb"},  // no overlaps
    {"=SUBSTITUTE(\"abab\",\"ab\",\"x\",2)", "abx"},
    {"=SUBSTITUTE(\"abab\",\"ab\",\"x\",3)", "abab"}, {"=SUBSTITUTE(\"abab\",\"\",\"x\")", "abab"},
};
// clang-format on

TEST_F(TextFunctionsTest, SearchStartsAndWildcards) { ExpectAll(kSearching); }

// The first argument that fails gives the result, in argument order.
// clang-format off
constexpr TEvalCase kErrors[] = {
    {"=MID(A2,\"x\",1)", "#DIV/0!"}, {"=MID(\"abc\",\"x\",A2)", "#VALUE!"},
    {"=MID(\"abc\",1,A2)", "#DIV/0!"}, {"=REPLACE(\"abc\",0,1,A2)", "#VALUE!"},
    {"=FIND(A2,#N/A)", "#DIV/0!"}, {"=SUBSTITUTE(\"a\",\"a\",\"b\",A2)", "#DIV/0!"},
    {"=CONCATENATE(\"a\",#N/A,A2)", "#N/A"}, {"=EXACT(A2,#N/A)", "#DIV/0!"},
    {"=TEXT(A2,\"0\")", "#DIV/0!"},
    {"=TEXT(1,\"@;0\")", "#VALUE!"},  // a format that does not parse
    {"=FIXED(A2,\"x\")", "#DIV/0!"}, {"=FIXED(1,2,\"x\")", "#VALUE!"},
    {"=DOLLAR(\"x\",A2)", "#VALUE!"}, {"=REPT(\"a\",32768)", "#VALUE!"}, {"=CHAR(0)", "#VALUE!"},
    {"=CHAR(65535.5)", "#VALUE!"}, {"=CODE(A3)", "#VALUE!"}, {"=VALUE(TRUE)", "#VALUE!"},
    {"=VALUE(\"#N/A\")", "#VALUE!"}, {"=T(A2)", "#DIV/0!"},
};
// clang-format on

TEST_F(TextFunctionsTest, FirstFailingArgumentWins) { ExpectAll(kErrors); }

// Decimals: 127 is the most FIXED shows. Rounding goes by the stored binary value,
// halves away from zero, and a result of zero loses the sign.
TEST_F(TextFunctionsTest, FixedAndDollarRounding) {
  EXPECT_EQ("1." + std::string(127, '0'), Eval("=FIXED(1,127)"));
  EXPECT_EQ("#VALUE!", Eval("=FIXED(1,128)"));
  EXPECT_EQ("0.13", Eval("=FIXED(0.125,2)"));  // an exact half
  EXPECT_EQ("2.67", Eval("=FIXED(2.675,2)"));  // stored as 2.67499999999999982...
  EXPECT_EQ("1,200", Eval("=FIXED(1234.5,-2)"));
  EXPECT_EQ("10,000", Eval("=FIXED(9999.5,-1)"));  // the carry adds a digit
  EXPECT_EQ("0", Eval("=FIXED(-0.4,0)"));
  EXPECT_EQ("0", Eval("=FIXED(1234.5,-400)"));
  EXPECT_EQ("-1235", Eval("=FIXED(-1234.5,0,TRUE)"));
  EXPECT_EQ("#NUM!", Eval("=FIXED(1.7976931348623157E+308,-308)"));  // rounds past the top
  EXPECT_EQ("$0.00", Eval("=DOLLAR(-0.004)"));
}

// WON shows the locale's currency digits (none for the won), DOLLAR two.
TEST_F(TextFunctionsTest, WonTakesTheLocaleCurrency) {
  ASSERT_TRUE(SetLocale("ko-KR"));
  EXPECT_EQ(u"\u20A91,235", U16Value(u"=WON(1234.5)"));
  EXPECT_EQ(u"\u20A91,234.50", U16Value(u"=DOLLAR(1234.5)"));
}

// 10000 characters are 20000 bytes: the second copy crosses 32765 bytes and is kept,
// the third is not appended. One character short of the limit goes on.
TEST_F(TextFunctionsTest, ReptStopsPastTheStorageLimit) {
  SetFormula("A5", "=REPT(\"x\",10000)");
  EXPECT_EQ("20000", Eval("=LEN(REPT(A5,3))"));
  EXPECT_EQ("16383", Eval("=LEN(REPT(\"x\",32767))"));  // 16382 * 2 <= 32765 < 16383 * 2
  EXPECT_EQ("16382", Eval("=LEN(REPT(\"x\",16382))"));
  EXPECT_EQ("", Eval("=REPT(\"\",32767)"));
}

// In a double-byte code page a full-width character counts two bytes; a count that
// ends inside one cuts it and a space stands for the cut half. D is U+FF24.
struct TWideCase {
  const char16_t* pwszFormula;
  const char16_t* pwszExpected;
};
// clang-format off
constexpr TWideCase kBytes[] = {
    {u"=LENB(\"a\uFF24b\")", u"4"}, {u"=LEN(\"a\uFF24b\")", u"3"},
    {u"=LEFTB(\"a\uFF24b\",2)", u"a "}, {u"=LEFTB(\"a\uFF24b\",3)", u"a\uFF24"},
    {u"=RIGHTB(\"a\uFF24b\",2)", u" b"}, {u"=MIDB(\"a\uFF24b\",3,2)", u" b"},
    {u"=MIDB(\"a\uFF24b\",2,1)", u" "}, {u"=MIDB(\"a\uFF24b\",3,0)", u""},
    {u"=MIDB(\"a\uFF24b\",0,1)", u"#VALUE!"}, {u"=REPLACEB(\"a\uFF24b\",3,1,\"X\")", u"a Xb"},
    {u"=FINDB(\"b\",\"a\uFF24b\")", u"4"},
    {u"=FINDB(\"b\",\"a\uFF24b\",3)", u"4"},  // starts past the cut character
    {u"=FINDB(\"b\",\"a\uFF24b\",0)", u"#VALUE!"}, {u"=FINDB(\"\",\"a\uFF24b\",5)", u"#VALUE!"},
    {u"=FINDB(\"c\",\"a\uFF24b\")", u"#VALUE!"}, {u"=SEARCHB(\"B\",\"\uFF24\uFF24b\")", u"5"},
    {u"=CODE(\"\u3042\")", u"33440"},  // 0x82A0 in code page 932
    {u"=CHAR(33440)", u"\u3042"}, {u"=CHAR(129)", u"#VALUE!"},  // a lead byte alone is no character
    {u"=ASC(\"\uFF21\u30AC\")", u"A\uFF76\uFF9E"},  // a voiced katakana splits
    {u"=DBCS(\"A1\")", u"\uFF21\uFF11"},
};
// clang-format on

TEST_F(TextFunctionsTest, ByteFormsInADoubleByteCodePage) {
  ASSERT_TRUE(SetLocale("ja-JP"));
  for (const TWideCase& c : kBytes) {
    SCOPED_TRACE(Narrow(c.pwszFormula));
    const std::u16string s = U16Value(c.pwszFormula);
    EXPECT_EQ(std::u16string(c.pwszExpected), s) << Narrow(s);
  }
}

constexpr TArity kArity[] = {
    {"WON", 1, 2},     {"FIXED", 1, 3},    {"REPT", 2, 2},
    {"MID", 3, 3},     {"LEN", 1, 1},      {"VALUE", 1, 1},
    {"TEXT", 2, 2},    {"SEARCH", 2, 3},   {"CHAR", 1, 1},
    {"LOWER", 1, 1},   {"UPPER", 1, 1},    {"PROPER", 1, 1},
    {"LEFT", 1, 2},    {"RIGHT", 1, 2},    {"EXACT", 2, 2},
    {"TRIM", 1, 1},    {"REPLACE", 4, 4},  {"SUBSTITUTE", 3, 4},
    {"CODE", 1, 1},    {"FIND", 2, 3},     {"T", 1, 1},
    {"CLEAN", 1, 1},   {"DOLLAR", 1, 2},   {"FINDB", 2, 3},
    {"SEARCHB", 2, 3}, {"REPLACEB", 4, 4}, {"LEFTB", 1, 2},
    {"RIGHTB", 1, 2},  {"MIDB", 3, 3},     {"LENB", 1, 1},
    {"ASC", 1, 1},     {"DBCS", 1, 1},     {"CONCATENATE", 1, 30},
};

TEST_F(TextFunctionsTest, ArityEdges) { ExpectArity(kArity); }

}  // namespace
