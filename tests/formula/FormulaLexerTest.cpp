// The lexer's short cuts against the general readers they stand in for: plain
// decimals against from_chars, plain addresses against CvtRange, and the operator
// and function-name caches against host texts that change after they were filled.
#include <gtest/gtest.h>

#include <charconv>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <random>
#include <string>

#include "base/A1Text.h"
#include "base/Range.h"
#include "book/BookBase.h"
#include "book/SheetBase.h"
#include "formula/Formula.h"
#include "formula/FormulaParser.h"
#include "formula/ParserModel.h"
#include "platform/Locale.h"
#include "platform/ResourceIds.h"
#include "platform/Resources.h"

namespace {

using FB = CFormulaBase;

std::string Tokens(CFormulaParser& parser, const std::u16string& text) {
  if (parser.Parse(text.c_str(), FB::ftCell) != 0)
    return "error " + std::to_string(parser.GetError()) + " at " +
           std::to_string(parser.GetErrorPos());
  return Hex(parser.GetPostfix(), parser.GetPostfixLen());
}

// The token of a number text the general way: from_chars, then tInt for a whole
// number up to 65535, else tNum.
std::string NumberToken(const std::string& sText) {
  double r = 0;
  const auto res = std::from_chars(sText.data(), sText.data() + sText.size(), r);
  EXPECT_EQ(sText.data() + sText.size(), res.ptr) << sText;
  unsigned char b[9];
  if (r >= 0 && r <= 65535 && r == std::floor(r)) {
    const unsigned w = static_cast<unsigned>(r);
    b[0] = FB::tInt;
    b[1] = static_cast<unsigned char>(w);
    b[2] = static_cast<unsigned char>(w >> 8);
    return Hex(b, 3);
  }
  b[0] = FB::tNum;
  std::memcpy(b + 1, &r, 8);  // little-endian, as the token stream stores it
  return Hex(b, 9);
}

// Around each limit of the plain-decimal path: 15 integer digits, 19 digits in all,
// the digits' integer below 2^53, 22 fraction digits, whole values up to 65535, and
// exponents (never on that path).
constexpr const char* kNumberTexts[] = {
    "0",
    "00",
    "0.0",
    "1.",
    ".5",
    "0.5",
    "3.0",
    "8.000",
    "65535",
    "65535.0",
    "65535.5",
    "65536",
    "65536.0",
    "65534.99999999999",
    "65535.00000000001",
    "100000000000000",
    "123456789012345",
    "1234567890123456",
    "999999999999999.9",
    "9007199254740991",
    "900719925474099.1",
    "900719925474099.2",
    "900719925474099.3",
    "0.0000000000000000000001",
    "0.00000000000000000000001",
    "1234567890.123456789",
    "12345678901234567890",
    "0000000000000000001.5",
    "0.1",
    "0.2",
    "0.3",
    "0.30000000000000004",
    "4.35",
    "1.005",
    "2.675",
    "61.104",
    "39.609",
    "8.857",
    "1.7976931348623157",
    "2.2250738585072014",
    "1E3",
    "1e-3",
    "1.5E+2",
    "123.456e1",
    "0.1e1",
};

TEST(FormulaLexer, PlainDecimalsMatchTheGeneralConversion) {
  CModelParser parser;
  for (const char* psz : kNumberTexts) {
    SCOPED_TRACE(psz);
    EXPECT_EQ(NumberToken(psz), Tokens(parser, U(psz)));
  }
}

// Random decimals with up to 12 integer and 24 fraction digits, leading zeros
// included, on both sides of every limit above.
TEST(FormulaLexer, RandomDecimalsMatchTheGeneralConversion) {
  CModelParser parser;
  std::mt19937 rng(20240611);
  for (int i = 0; i < 20000; i++) {
    std::string s;
    const int nInt = static_cast<int>(rng() % 13), nFrac = static_cast<int>(rng() % 25);
    for (int j = 0; j < nInt; j++) s += static_cast<char>('0' + rng() % 10);
    if (nFrac > 0 || nInt == 0) {
      s += '.';
      for (int j = 0; j < std::max(nFrac, 1); j++) s += static_cast<char>('0' + rng() % 10);
    }
    SCOPED_TRACE(s);
    ASSERT_EQ(NumberToken(s), Tokens(parser, U(s)));
  }
}

// Texts starting with a column letter that are no whole-column span: the parser's
// reading must be CvtRange's, including where the text runs on.
constexpr const char* kAddressTexts[] = {
    "A1",       "a1",      "$A$1",   "A$1",    "$a1",    "IV65536", "iv65536", "IW1",
    "AA1",      "ZZ1",     "IU9",    "A65536", "A65537", "A0",      "A00",     "A01",
    "A000001",  "A1+",     "A1)",    "A1,",    "A1 ",    "A1:",     "A1:B2",   "A1:$B$2",
    "B2:A1",    "$B2:A$1", "A1.B2",  "A1..B2", "A1._",   "A1_",     "A1.",     "A1\\",
    "A1?",      "A1x",     "A1$",    "A1!",    "ABC1",   "A$$1",    "A1%",     "A1:B",
    "A1:65536", "C3:A",    "A1:IW2", "A1(",    "A1'",    "A1\"",
};

TEST(FormulaLexer, PlainAddressesMatchCvtRange) {
  CFormulaParser parser(nullptr, nullptr, TCell());
  for (const char* psz : kAddressTexts) {
    SCOPED_TRACE(psz);
    const std::u16string text = U(psz);
    const char16_t* p = text.c_str();
    int nIsRange = -1;
    unsigned char cFlags1 = 0xFF, cFlags2 = 0xFF;
    TRange range;
    const int nGot = parser.NextRangeToken(&p, &nIsRange, &cFlags1, &cFlags2, &range);
    const char16_t* q = text.c_str();
    int nIsRange2 = -1, nFlags1 = 0xFF, nFlags2 = 0xFF;
    TRange range2;
    const int nWant = CvtRange(&q, &nIsRange2, &nFlags1, &nFlags2, &range2);
    ASSERT_EQ(nWant, nGot);
    EXPECT_EQ(q - text.c_str(), p - text.c_str());
    if (!nWant) continue;
    EXPECT_EQ(nIsRange2, nIsRange);
    EXPECT_EQ(nFlags1, cFlags1);
    EXPECT_EQ(nFlags2, cFlags2);
    EXPECT_TRUE(range2 == range);
  }
  // The same ends beyond ASCII: a letter or digit of another script continues the
  // text, so there is no address.
  for (const std::u16string& text : {std::u16string(u"A1\u00E9"), std::u16string(u"B2\u0661")}) {
    const char16_t* p = text.c_str();
    int nIsRange = 0;
    unsigned char cFlags1 = 0, cFlags2 = 0;
    TRange range;
    EXPECT_EQ(0, parser.NextRangeToken(&p, &nIsRange, &cFlags1, &cFlags2, &range));
    EXPECT_EQ(text.c_str(), p);
  }
}

// Puts the host's English table and the en-US locale back whatever a test did.
class FormulaLexerHost : public ::testing::Test {
 protected:
  void TearDown() override {
    SetResourceTable(nullptr, 0);
    SetLocale("en-US");
  }
};

// Operators found through the per-character start sets: texts of more than one
// unit, beyond ASCII, and letters in either case, replaced between two parses.
TEST_F(FormulaLexerHost, OperatorTextsFollowTheHost) {
  CModelParser parser;
  EXPECT_EQ("1E 02 00 1E 03 00 08", Tokens(parser, u"2&3"));
  const TResourceEntry ops[] = {{IDS_OP_CONCAT, u"&&"}, {IDS_OP_NE, u"\u2260"}, {IDS_OP_MUL, u"x"}};
  SetResourceTable(ops, 3);
  EXPECT_EQ("1E 02 00 1E 03 00 08", Tokens(parser, u"2&&3"));
  EXPECT_EQ("error 1 at 1", Tokens(parser, u"2&3"));
  EXPECT_EQ("1E 02 00 1E 03 00 0E", Tokens(parser, u"2\u22603"));
  EXPECT_EQ("error 1 at 2", Tokens(parser, u"2<>3"));  // "<>" is gone, ">" is no prefix
  EXPECT_EQ("1E 02 00 1E 03 00 05", Tokens(parser, u"2x3"));
  EXPECT_EQ("1E 02 00 1E 03 00 05", Tokens(parser, u"2 X 3"));
  EXPECT_EQ("1E 02 00 1E 03 00 09", Tokens(parser, u"2<3"));  // the longest text wins
  EXPECT_EQ("1E 02 00 1E 03 00 0A", Tokens(parser, u"2<=3"));
  SetResourceTable(nullptr, 0);
  EXPECT_EQ("1E 02 00 1E 03 00 0E", Tokens(parser, u"2<>3"));
  EXPECT_EQ("error 1 at 1", Tokens(parser, u"2x3"));
}

// Built-in function names through the parser's own lookup: any case, repeated so
// that later lookups come from the name cache, and local names that the host
// replaces after the cache was filled.
TEST_F(FormulaLexerHost, FunctionNamesFollowTheHost) {
  CBookBase book;
  CSheetBase* pSheet = book.NewSheet(u"First");
  CFormulaParser english(&book, pSheet, TCell(), true);
  CFormulaParser local(&book, pSheet, TCell(), false);
  const std::string sSum = "1E 01 00 19 10 00 00";  // one-argument SUM
  const std::string sRound = "1E 01 00 1E 02 00 41 1B 00";
  for (int i = 0; i < 2; i++) {
    EXPECT_EQ(sSum, Tokens(english, u"SUM(1)"));
    EXPECT_EQ(sSum, Tokens(english, u"sum(1)"));
    EXPECT_EQ(sRound, Tokens(english, u"rOuNd(1,2)"));
    EXPECT_EQ(sSum, Tokens(local, u"Sum(1)"));
  }
  EXPECT_EQ("error 3 at 0", Tokens(english, u"SUMX(1)"));
  EXPECT_EQ("error 3 at 0", Tokens(english, u"SU(1)"));
  EXPECT_EQ("error 3 at 0", Tokens(english, u"S\u00DCM(1)"));

  const TResourceEntry german[] = {{IDS_FN_SUM, u"Summe"}, {IDS_FN_ROUND, u"Runden"}};
  SetResourceTable(german, 2);
  EXPECT_EQ(sSum, Tokens(local, u"summe(1)"));
  EXPECT_EQ(sRound, Tokens(local, u"RUNDEN(1,2)"));
  EXPECT_EQ("error 3 at 0", Tokens(local, u"SUM(1)"));
  EXPECT_EQ(sSum, Tokens(english, u"SUM(1)"));
  EXPECT_EQ("error 3 at 0", Tokens(english, u"SUMME(1)"));

  SetResourceTable(nullptr, 0);
  EXPECT_EQ(sSum, Tokens(local, u"SUM(1)"));
  EXPECT_EQ("error 3 at 0", Tokens(local, u"SUMME(1)"));
}

// The locale's separators through the lexer's short cuts: "," as the decimal
// separator and ";" between arguments, where ";" outside an argument list is no
// operator.
TEST_F(FormulaLexerHost, LocalSeparatorsTakeTheGeneralReading) {
  ASSERT_TRUE(SetLocale("de-DE"));
  TFormulaModel model;
  CBookModelParser<CFormulaParser> parser(model, nullptr, nullptr, TCell(), false);
  EXPECT_EQ("1F 00 00 00 00 00 00 F8 3F 1E 00 00 41 1B 00", Tokens(parser, u"ROUND(1,5;0)"));
  EXPECT_EQ("1E 01 00 1E 02 00 42 02 04 00", Tokens(parser, u"SUM(1;2)"));
  EXPECT_EQ("1F 00 00 00 00 00 00 F8 3F 1E 02 00 03", Tokens(parser, u"1,5+2"));
  EXPECT_EQ("1F 00 00 00 00 00 00 E0 3F", Tokens(parser, u",5"));
  EXPECT_EQ("error 2 at 3", Tokens(parser, u"(A1;B1)"));
  EXPECT_EQ("error 1 at 2", Tokens(parser, u"A1,5"));
}

}  // namespace
