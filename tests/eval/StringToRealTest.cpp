// Reading typed text as a value: numbers in the locale's notation, the shapes that
// propose a number format, TRUE/FALSE, error texts and fractions; and what fails.
#include <gtest/gtest.h>

#include <string>

#include "eval/Value.h"
#include "format/SingleFormat.h"
#include "platform/Locale.h"

namespace {

// Built-in formats proposed by the text's shape (format table indexes).
constexpr int kNone = 0, kThou = 3, kThouDec = 4, kCur = 5, kCurDec = 7, kPct = 9, kPctDec = 10,
              kSci = 11, kFrac = 12, kFrac2 = 13;
// Cell format types that change the reading.
constexpr int kTypePercent = CSingleFormat::ftPercent, kTypeFraction = CSingleFormat::ftFraction,
              kTypeScientific = CSingleFormat::ftScientific;

struct TNumberCase {
  const char16_t* pwszText;
  double rExpected;
  int nFormat;
  int nCellType = 0;
};

std::string Narrow(const char16_t* p) {
  std::string s;
  for (; *p != 0; ++p) s += *p < 128 ? static_cast<char>(*p) : '?';
  return s;
}

void ExpectNumbers(const TNumberCase* pCases, size_t nCases, int nParseType) {
  for (size_t i = 0; i < nCases; ++i) {
    const TNumberCase& c = pCases[i];
    SCOPED_TRACE(Narrow(c.pwszText));
    TValue v;
    int nFormat = -1;
    ASSERT_TRUE(v.StringToReal(c.pwszText, &nFormat, c.nCellType, nParseType));
    ASSERT_TRUE(v.IsReal());
    double r;
    v.GetValue(r);
    EXPECT_DOUBLE_EQ(c.rExpected, r);
    EXPECT_EQ(c.nFormat, nFormat);
  }
}

void ExpectFailures(const char16_t* const* ppTexts, size_t nTexts, int nParseType,
                    int nCellType = 0) {
  for (size_t i = 0; i < nTexts; ++i) {
    SCOPED_TRACE(Narrow(ppTexts[i]));
    TValue v;
    v.SetValue(u"untouched");
    int nFormat = -1;
    EXPECT_FALSE(v.StringToReal(ppTexts[i], &nFormat, nCellType, nParseType));
    EXPECT_EQ(0, nFormat);
    EXPECT_EQ(u"untouched", std::u16string(v.TextPtr()));
  }
}

class StringToRealTest : public ::testing::Test {
 protected:
  void SetUp() override { ASSERT_TRUE(SetLocale("en-US")); }
  void TearDown() override {
    SetLocale("en-US");
    TValue::m_sbMakeAutoPercentValue = true;
  }
};

TEST_F(StringToRealTest, EnglishNumberShapes) {
  // clang-format off
  const TNumberCase kCases[] = {
      {u"42", 42, kNone}, {u"  -3.25  ", -3.25, kNone}, {u"+.5", 0.5, kNone},
      {u"1,234.5", 1234.5, kThouDec}, {u"1,234,567", 1234567, kThou},
      {u"1234,567", 1234567, kThou},  // grouping need not be regular
      {u"(5)", -5, kNone}, {u"$5", 5, kCur}, {u"5$", 5, kCur}, {u"-$5.50", -5.5, kCurDec},
      {u"$-5", -5, kCur}, {u"($1,000)", -1000, kCur}, {u"5%", 0.05, kPct},
      {u"12.5%", 0.125, kPctDec}, {u"(5%)", -0.05, kPct}, {u"1e3", 1000, kSci},
      {u"1.5E-2", 0.015, kSci},
      {u"2E+3", 2000, kNone, kTypeScientific},  // already scientific: nothing to propose
      {u"5", 0.05, kNone, kTypePercent},  // typed into a percent cell
      {u"5%", 0.05, kPct, kTypePercent},  // no second division
      {u"0.1", 0.1, kNone}, {u"00012", 12, kNone},
      {u"123456789012345678901234567890", 1.2345678901234568e29, kNone},
      {u"0.000000000000000000000000000001", 1e-30, kNone},
      {u"1e-400", 0, kSci},  // below the smallest double: zero
      {u"\uFF11\uFF12", 12, kNone},  // full-width digits
  };
  // clang-format on
  ExpectNumbers(kCases, std::size(kCases), 0);

  // English parse type reads the same notation.
  ExpectNumbers(kCases, 3, 1);
  // Without the automatic percent a percent cell takes the number as typed.
  TValue::m_sbMakeAutoPercentValue = false;
  const TNumberCase kNoAutoPercent[] = {{u"5", 5, kNone, kTypePercent}};
  ExpectNumbers(kNoAutoPercent, 1, 0);
}

TEST_F(StringToRealTest, EnglishFailures) {
  const char16_t* const kTexts[] = {
      u"",       u"   ",  u"abc",       u"1,23",  // a group must be three digits
      u"1,2345", u",123", u"1.234,567",           // grouping after the decimal separator
      u"1..2",   u"-(5)", u"((5))",     u"--5",   u"-$-5",      u"(5",     u"5)",
      u"$5$",    u"5%%",  u"1e",        u"1e+",   u"1e5e5",     u"1E400",  u"$",
      u".",      u"-",    u"5 5",       u"1 1/0", u"#FORMULA!", u"#bogus", u"TRUE1",
  };
  ExpectFailures(kTexts, std::size(kTexts), 0);
}

TEST_F(StringToRealTest, LogicalAndErrorTexts) {
  // clang-format off
  struct TCase { const char16_t* pwszText; int nParseType; TValue::TValType vt; int nValue; };
  const TCase kCases[] = {
      {u"true", 0, TValue::vtLogical, 1}, {u" False ", 0, TValue::vtLogical, 0},
      {u"TRUE", 1, TValue::vtLogical, 1}, {u"#n/a", 0, TValue::vtError, TValue::errNA},
      {u"#DIV/0!", 0, TValue::vtError, TValue::errDiv0},
      {u"#null!", 0, TValue::vtError, TValue::errNull},
  };
  // clang-format on
  for (const TCase& c : kCases) {
    SCOPED_TRACE(Narrow(c.pwszText));
    TValue v;
    ASSERT_TRUE(v.StringToReal(c.pwszText, nullptr, 0, c.nParseType));
    EXPECT_EQ(c.vt, v.GetValType());
    EXPECT_EQ(c.nValue, c.vt == TValue::vtLogical ? v.GetLogical() : v.GetError());
  }
}

TEST_F(StringToRealTest, Fractions) {
  // clang-format off
  const TNumberCase kCases[] = {
      {u"1 1/2", 1.5, kFrac}, {u"-1 1/2", -1.5, kFrac}, {u"0 3/4", 0.75, kFrac},
      {u"2 3 / 16", 2.1875, kFrac2},
      {u"1/2", 0.5, kFrac, kTypeFraction},  // bare only in a fraction cell
      {u"-3/4", -0.75, kFrac, kTypeFraction},
      {u"1 / 2", 0.5, kFrac, kTypeFraction},  // blanks around the slash
  };
  // clang-format on
  ExpectNumbers(kCases, std::size(kCases), 0);
  const char16_t* const kTexts[] = {u"1 1/0", u"1 1/", u"1 1/2 x", u"1 a/2", u"1/0"};
  ExpectFailures(kTexts, std::size(kTexts), 0, kTypeFraction);

  // Outside a fraction cell a bare "1/2" is no fraction but a month and day.
  TValue v;
  int nFormat = -1;
  ASSERT_TRUE(v.StringToReal(u"1/2", &nFormat, 0, 0));
  EXPECT_EQ(58, nFormat);
}

// Dates and times come last, after every number form failed (DateTimeTest covers their
// patterns); serials by hand: 1 January 2020 is 43831.
TEST_F(StringToRealTest, DatesAndTimes) {
  const TNumberCase kCases[] = {
      {u"1/2/2020 6:00", 43832.25, 22},
  };
  ExpectNumbers(kCases, std::size(kCases), 0);
  const char16_t* const kTexts[] = {u"13/13/2020", u"10:30 x"};
  ExpectFailures(kTexts, std::size(kTexts), 0);

  ASSERT_TRUE(SetLocale("de-DE"));
  const TNumberCase kGerman[] = {{u"2.1.2020", 43832, 14}};
  ExpectNumbers(kGerman, std::size(kGerman), 0);
}

TEST_F(StringToRealTest, GermanNotation) {
  ASSERT_TRUE(SetLocale("de-DE"));
  // clang-format off
  const TNumberCase kCases[] = {
      {u"1.234,5", 1234.5, kThouDec}, {u"1.234.567", 1234567, kThou}, {u"3,25", 3.25, kNone},
      {u"(5)", -5, kNone}, {u"5 €", 5, kCur}, {u"1.234,50 €", 1234.5, kCurDec}, {u"€5", 5, kCur},
      {u"-5 €", -5, kCur}, {u"5%", 0.05, kPct}, {u"12,5 %", 0.125, kPctDec}, {u"1,5E3", 1500, kSci},
      {u"1 1/2", 1.5, kFrac},
  };
  // clang-format on
  ExpectNumbers(kCases, std::size(kCases), 0);

  const char16_t* const kTexts[] = {
      u"1,234.5",  // English grouping in German text
      u"1.23",     // a group of two
      u"5$",       // not this locale's currency
      u"1,2,3",
  };
  ExpectFailures(kTexts, std::size(kTexts), 0);

  // The English parse type keeps reading English notation.
  const TNumberCase kEnglish[] = {{u"1,234.5", 1234.5, kThouDec}};
  ExpectNumbers(kEnglish, std::size(kEnglish), 1);

  // TRUE/FALSE: the local words in local text, the English ones for parse type 1.
  TValue v;
  ASSERT_TRUE(v.StringToReal(u"wahr", nullptr, 0, 0));
  EXPECT_EQ(1, v.GetLogical());
  ASSERT_TRUE(v.StringToReal(u"Falsch", nullptr, 0, 0));
  EXPECT_TRUE(v.IsLogical());
  EXPECT_EQ(0, v.GetLogical());
  EXPECT_FALSE(v.StringToReal(u"wahr", nullptr, 0, 1));
  ASSERT_TRUE(v.StringToReal(u"true", nullptr, 0, 1));
  EXPECT_EQ(1, v.GetLogical());

  // Number text uses the local decimal separator and logical words.
  v.SetValue(1.5);
  std::u16string str;
  v.GetValue(str);
  EXPECT_EQ(u"1,5", str);
  v.SetLogical(1);
  v.GetValue(str);
  EXPECT_EQ(u"WAHR", str);
}

TEST_F(StringToRealTest, HostLogicalTextsOverrideTheLocale) {
  TValue::SetLocalLogicalTexts(u"JA", u"NEIN");
  TValue v;
  EXPECT_TRUE(v.StringToReal(u"ja", nullptr, 0, 0));
  EXPECT_EQ(1, v.GetLogical());
  EXPECT_TRUE(v.StringToReal(u"TRUE", nullptr, 0, 1));
  EXPECT_EQ(std::u16string(u"NEIN"), TValue::GetLogicalText(false, false));
  TValue::SetLocalLogicalTexts(nullptr, nullptr);
  EXPECT_EQ(std::u16string(u"FALSE"), TValue::GetLogicalText(false, false));
}

TEST_F(StringToRealTest, CheckRealReadsLocalText) {
  ASSERT_TRUE(SetLocale("de-DE"));
  TValue v;
  v.SetValue(u"1.234,5");
  ASSERT_TRUE(v.CheckReal());
  double r;
  v.GetValue(r);
  EXPECT_DOUBLE_EQ(1234.5, r);
  v.SetValue(u"1,234.5");
  EXPECT_FALSE(v.CheckReal());
  EXPECT_EQ(TValue::errValue, v.GetError());
}

}  // namespace
