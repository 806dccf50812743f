#include <gtest/gtest.h>

#include <charconv>
#include <random>
#include <string>
#include <vector>

#include "formula/Formula.h"
#include "formula/FormulaModel.h"
#include "formula/FormulaUnparser.h"
#include "formula/UnparserRCUtilBase.h"
#include "platform/Locale.h"

namespace {

using U = CUnparserRCUtilBase;

TEST(UnparserQuotes, NeedsQuotes) {
  // clang-format off
  struct TCase { const char16_t* pwszName; bool bQuotes; };
  const TCase kCases[] = {
      {u"Sheet1", false},
      {u"Sales_2.v", false},  // letters, digits, "_" and "." only
      {u"\u00dcbersicht", false},  // a letter outside ASCII
      {u"Q1 Data", true}, {u"Bob's", true}, {u"a-b", true}, {u"a!b", true},
      {u"", true},  // "!A1" would not read
      {u"2024", true},  // would read as a number
      {u".5x", true},
      {u"B7", true},  // would read as a cell
      {u"IV65536", true},
      {u"IW1", false},  // past the last column: not a cell
      {u"A65537", false},
      {u"R2C3", true},  // R1C1 cells
      {u"rc", true}, {u"C12", true}, {u"R1C1x", false}, {u"true", true}, {u"FALSE", true},
      {u"TRUTH", false},
  };
  // clang-format on
  for (const TCase& c : kCases) {
    SCOPED_TRACE(Narrow(c.pwszName));
    EXPECT_EQ(c.bQuotes, U::NeedsQuotes(c.pwszName));
  }
}

TEST(UnparserQuotes, PrefixesQuoteTheWholePrefixAndDoubleApostrophes) {
  struct TCase {
    const char16_t* pwszBook;  // null: this book
    const char16_t* pwszSheet1;
    const char16_t* pwszSheet2;
    const char16_t* pwszExpected;
  };
  // clang-format off
  const TCase kCases[] = {
      {nullptr, u"Sheet1", nullptr, u"Sheet1!"}, {nullptr, u"Q1 Data", nullptr, u"'Q1 Data'!"},
      {nullptr, u"Sales_2.v", nullptr, u"Sales_2.v!"}, {nullptr, u"Bob's", nullptr, u"'Bob''s'!"},
      {nullptr, u"x\uFF07y", nullptr, u"'x\uFF07\uFF07y'!"},  // full-width apostrophe
      {nullptr, u"Sheet1", u"Sheet3", u"Sheet1:Sheet3!"},
      {nullptr, u"Sheet1", u"Q1 Data", u"'Sheet1:Q1 Data'!"},  // either sheet quotes all
      {u"Book2.xls", u"Sheet1", nullptr, u"[Book2.xls]Sheet1!"},
      {u"My Book.xls", u"Sheet1", nullptr, u"'[My Book.xls]Sheet1'!"},
      {u"Book2.xls", u"It's", u"Sheet9", u"'[Book2.xls]It''s:Sheet9'!"},
      {u"Book2.xls", nullptr, nullptr, u"Book2.xls!"},  // a book alone: no brackets
      {u"C:\\x\\a b.xls", nullptr, nullptr, u"'C:\\x\\a b.xls'!"},
  };
  // clang-format on
  for (const TCase& c : kCases) {
    SCOPED_TRACE(Narrow(c.pwszExpected));
    std::u16string s;
    U::Concat3dPart(s, c.pwszBook, c.pwszSheet1, c.pwszSheet2);
    EXPECT_EQ(std::u16string(c.pwszExpected), s);
  }
  std::u16string s = u"old";
  U::CopyStringWithQuotes(s, u"Bob's");
  EXPECT_EQ(u"'Bob''s'", s);
  U::ConcatStringWithQuotes(s, u"Plain");
  EXPECT_EQ(u"'Bob''s'Plain", s);
}

TEST(UnparserNumbers, FifteenDigitsUnlessTheValueNeedsMore) {
  // clang-format off
  struct TCase { double r; char16_t cDecimal; const char16_t* pwszExpected; };
  const TCase kCases[] = {
      {0.5, u'.', u"0.5"}, {0.5, u',', u"0,5"}, {1e20, u'.', u"1E+20"}, {1.5e-12, u'.', u"1.5E-12"},
      {123456789012345.0, u'.', u"123456789012345"},  // 15 digits, exact
      {1234567890123456.0, u'.', u"1234567890123456"},  // 16 digits needed
      {0.1 + 0.2, u'.', u"0.30000000000000004"},  // 17 digits needed
      {-2.25, u'.', u"-2.25"}, {-0.0, u'.', u"-0"}, {65536, u'.', u"65536"},
  };
  // clang-format on
  for (const TCase& c : kCases) {
    SCOPED_TRACE(Narrow(c.pwszExpected));
    std::u16string s;
    U::FormatNumber(s, c.r, c.cDecimal);
    EXPECT_EQ(std::u16string(c.pwszExpected), s);
  }
}

TEST(UnparserNumbers, EveryDoubleReadsBackExactly) {
  std::mt19937_64 rng(20240611);
  std::uniform_int_distribution<int> exponent(-300, 300);
  std::uniform_real_distribution<double> mantissa(1.0, 10.0);
  for (int i = 0; i < 3000; ++i) {
    const double r = mantissa(rng) * std::pow(10.0, exponent(rng));
    std::u16string s;
    U::FormatNumber(s, r, u'.');
    std::string sNarrow = Narrow(s);
    double rBack = 0;
    std::from_chars(sNarrow.data(), sNarrow.data() + sNarrow.size(), rBack);
    ASSERT_EQ(r, rBack) << sNarrow;
    ASSERT_LE(sNarrow.size(), 32u) << sNarrow;
  }
}

// Builds token streams by hand and unparses them in A1 at a base cell.
class UnparserStreams : public ::testing::Test {
 protected:
  std::u16string Unparse(const std::vector<unsigned char>& tokens,
                         const std::vector<unsigned char>& added = {},
                         CFormulaBase::EFormulaType type = CFormulaBase::ftCell,
                         TCell base = TCell(4, 2)) {
    CFormula f(tokens.data(), static_cast<int>(tokens.size()), added.data(),
               static_cast<int>(added.size()));
    CBookModelUnparser<CFormulaUnparser> u(m_Model, nullptr, nullptr, &f, type, base, 1);
    std::u16string s;
    m_bLastOk = u.Unparse(s);
    return s;
  }
  TFormulaModel m_Model;
  bool m_bLastOk = false;
};

TEST_F(UnparserStreams, ParenthesesOnlyWhereTheStreamKeepsThem) {
  // 1 2 + ( ) 3 *  and the same without tParen.
  EXPECT_EQ(u"(1+2)*3", Unparse({0x1E, 1, 0, 0x1E, 2, 0, 0x03, 0x15, 0x1E, 3, 0, 0x05}));
  EXPECT_EQ(u"1+2*3", Unparse({0x1E, 1, 0, 0x1E, 2, 0, 0x03, 0x1E, 3, 0, 0x05}));
  EXPECT_EQ(u"-2^2", Unparse({0x1E, 2, 0, 0x13, 0x1E, 2, 0, 0x07}));
  EXPECT_EQ(u"50%", Unparse({0x1E, 50, 0, 0x14}));
  // Cell, cell, range operator: "A1:C1" would read back as one rectangle.
  EXPECT_EQ(u"A1: C1", Unparse({0x24, 0, 0, 0, 0xC0, 0x24, 0, 0, 2, 0xC0, 0x11}));
  EXPECT_EQ(u"A1:C1:D1", Unparse({0x25, 0, 0, 0, 0, 0, 0xC0, 2, 0xC0, 0x24, 0, 0, 3, 0xC0, 0x11}));
}

TEST_F(UnparserStreams, ConstantsAndDeletedReferences) {
  // tStr "a"b" holds the quote once and writes it twice.
  EXPECT_EQ(u"\"a\"\"b\"", Unparse({0x17, 3, 'a', 0, '"', 0, 'b', 0}));
  EXPECT_EQ(u"\"\"", Unparse({0x17, 0}));
  EXPECT_EQ(u"TRUE", Unparse({0x1D, 7}));
  EXPECT_EQ(u"#DIV/0!", Unparse({0x1C, 0x07}));
  EXPECT_EQ(u"#N/A", Unparse({0x1C, 0x99}));  // unknown code reads as #N/A
  EXPECT_EQ(u"65535", Unparse({0x1E, 0xFF, 0xFF}));
  EXPECT_EQ(u"#REF!", Unparse({0x3C, 0, 0, 0, 0, 0, 0}));  // tRefErr3d: no prefix
  EXPECT_EQ(u"#REF!+#REF!", Unparse({0x2A, 0, 0, 0, 0, 0x2B, 0, 0, 0, 0, 0, 0, 0, 0, 0x03}));
  // An extern-sheet index the book does not have.
  EXPECT_EQ(u"#REF!", Unparse({0x3A, 9, 0, 0, 0, 0, 0}));
}

TEST_F(UnparserStreams, OffsetReferencesWrapAroundTheSheet) {
  // tRefN at base E5 (row 4, column 2) with offsets -5 rows and -3 columns.
  EXPECT_EQ(u"IV65536", Unparse({0x2C, 0xFB, 0xFF, 0xFD, 0xC0}));
  // tRef in a shared formula (offset type) holds offsets too; in a cell formula not.
  EXPECT_EQ(u"D6", Unparse({0x24, 1, 0, 1, 0xC0}, {}, CFormulaBase::ftShared));
  EXPECT_EQ(u"B2", Unparse({0x24, 1, 0, 1, 0xC0}, {}, CFormulaBase::ftCell));
  // Absolute parts ignore the base whatever the type.
  EXPECT_EQ(u"$B$2", Unparse({0x2C, 1, 0, 1, 0x00}));
}

TEST_F(UnparserStreams, ArraysUseFixedSeparatorsInEveryLocale) {
  ASSERT_TRUE(SetLocale("de-DE"));
  // 2 columns, 2 rows: 1.5, "x""y" ; TRUE, #N/A
  const std::vector<unsigned char> added = {
      1,    1,    0,                              // columns - 1, rows - 1
      0x01, 0,    0, 0,   0, 0,   0, 0xF8, 0x3F,  // 1.5
      0x02, 3,    0, 'x', 0, '"', 0, 'y',  0,     // "x"y"
      0x04, 1,    0, 0,   0, 0,   0, 0,    0,     // TRUE
      0x10, 0x2A, 0, 0,   0, 0,   0, 0,    0,     // #N/A
  };
  const std::u16string s = Unparse({0x60, 0, 0, 0, 0, 0, 0, 0}, added);
  EXPECT_EQ(u"{1.5,\"x\"\"y\";TRUE,#N/A}", s);
  // The local parse type writes the locale's argument separator between arguments.
  CFormula f;
  const unsigned char tokens[] = {0x1F, 0, 0, 0, 0, 0, 0, 0xF8, 0x3F, 0x1E, 2, 0, 0x05};
  f.Set(tokens, sizeof tokens, nullptr, 0);
  CBookModelUnparser<CFormulaUnparser> u(m_Model, nullptr, nullptr, &f, CFormulaBase::ftCell,
                                         TCell(), 0);
  EXPECT_EQ(u"1,5*2", u.Unparse());
  ASSERT_TRUE(SetLocale("en-US"));
}

TEST_F(UnparserStreams, FailuresReplaceTheWholeText) {
  // Function 400 does not exist.
  EXPECT_EQ(u"Unknown function 400", Unparse({0x1E, 1, 0, 0x41, 0x90, 0x01}));
  EXPECT_FALSE(m_bLastOk);
  const std::u16string sFailure = CFormulaUnparserBase::GetUnparserFailure();
  ASSERT_FALSE(sFailure.empty());
  // clang-format off
  struct TCase { std::vector<unsigned char> tokens; const char* pszWhy; };
  const TCase kCases[] = {
      {{0x01, 0, 0, 0, 0}, "tExp is no formula token"}, {{0x1E, 1}, "operand cut off"},
      {{0x03}, "operator without operands"}, {{0x1E, 1, 0, 0x1E, 2, 0}, "two operands left"},
      {{0x17, 9, 'a', 0}, "string longer than the stream"}, {{0x80}, "invalid code"},
      {{0x20, 0, 0, 0, 0, 0, 0, 0}, "array without added data"},
      {{0x42, 2, 4, 0}, "SUM with two arguments but none on the stack"},
  };
  // clang-format on
  for (const TCase& c : kCases) {
    SCOPED_TRACE(c.pszWhy);
    EXPECT_EQ(sFailure, Unparse(c.tokens));
    EXPECT_FALSE(m_bLastOk);
  }
  EXPECT_EQ(u"", Unparse({}));  // no formula: no text
  EXPECT_TRUE(m_bLastOk);
}

TEST_F(UnparserStreams, FunctionCalls) {
  // tAttr SUM over one argument; fixed and variable calls; an omitted argument.
  EXPECT_EQ(u"SUM(A1)", Unparse({0x24, 0, 0, 0, 0xC0, 0x19, 0x10, 0, 0}));
  EXPECT_EQ(u"PI()", Unparse({0x41, 19, 0}));
  EXPECT_EQ(u"ROUND(1,)", Unparse({0x1E, 1, 0, 0x16, 0x41, 27, 0}));
  EXPECT_EQ(u"MAX(1,2,3)", Unparse({0x1E, 1, 0, 0x1E, 2, 0, 0x1E, 3, 0, 0x42, 3, 7, 0}));
}

TEST_F(UnparserStreams, LongestStreamsUnparseInFull) {
  // 21,845 "1" operands joined by 21,844 "+": the longest a stream can hold, about
  // 43,700 characters of text.
  std::vector<unsigned char> tokens = {0x1E, 1, 0};
  while (tokens.size() + 4 <= 0xFFFF) {
    tokens.insert(tokens.end(), {0x1E, 1, 0, 0x03});
  }
  const std::u16string s = Unparse(tokens);
  ASSERT_TRUE(m_bLastOk);
  EXPECT_EQ(2 * ((tokens.size() - 3) / 4) + 1, s.size());
  // 65,000 nested unary minus signs in front of one operand.
  std::vector<unsigned char> minus = {0x1E, 1, 0};
  minus.insert(minus.end(), 65000, 0x13);
  EXPECT_EQ(65001u, Unparse(minus).size());
}

}  // namespace
