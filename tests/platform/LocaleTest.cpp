// Locale settings read back for the locales users run most, compared with what
// those users see in their spreadsheets and system settings.
#include <gtest/gtest.h>

#include <string>

#include "platform/CodePage.h"
#include "platform/Locale.h"

namespace {

// Restores en-US whatever a test selected.
class LocaleTest : public ::testing::Test {
 protected:
  void TearDown() override { ASSERT_TRUE(SetLocale("en-US")); }
};

struct TLocaleCase {
  const char* pszName;
  unsigned short nLcid;
  unsigned nCodePage;
  char16_t cDecimal, cThousands, cList;
  TLocaleSettings::EDateOrder nDateOrder;
  const char16_t* pwszDateSep;
  bool bFourDigitYear, b24Hour, bAmPmFirst;
  const char16_t* pwszAm;
  const char16_t* pwszCurrency;
  int nCurrencyPos, nCurrencyDigits;
  const char16_t* pwszJanuary;
  const char16_t* pwszSunday;
};

constexpr TLocaleCase kLocales[] = {
    {"en-US", 0x0409, 1252, u'.', u',', u',', TLocaleSettings::doMonthDayYear, u"/", true, false,
     false, u"AM", u"$", 0, 2, u"January", u"Sunday"},
    {"de-DE", 0x0407, 1252, u',', u'.', u';', TLocaleSettings::doDayMonthYear, u".", true, true,
     false, u"AM", u"\u20AC", 3, 2, u"Januar", u"Sonntag"},
    {"ko-KR", 0x0412, 949, u'.', u',', u',', TLocaleSettings::doYearMonthDay, u".", true, false,
     true, u"\uC624\uC804", u"\u20A9", 0, 0, u"1\uC6D4", u"\uC77C\uC694\uC77C"},
    {"ja-JP", 0x0411, 932, u'.', u',', u',', TLocaleSettings::doYearMonthDay, u"/", true, true,
     false, u"\u5348\u524D", u"\uFFE5", 0, 0, u"1\u6708", u"\u65E5\u66DC\u65E5"},
};

TEST_F(LocaleTest, ReadBack) {
  for (const TLocaleCase& c : kLocales) {
    SCOPED_TRACE(c.pszName);
    ASSERT_TRUE(SetLocale(c.pszName));
    const TLocaleSettings& s = GetLocaleSettings();
    EXPECT_EQ(c.pszName, s.strName);
    EXPECT_EQ(c.nLcid, s.nLcid);
    EXPECT_EQ(c.nCodePage, s.nCodePage);
    EXPECT_EQ(c.nCodePage, GetACP());
    EXPECT_EQ(c.cDecimal, s.cDecimal);
    EXPECT_EQ(c.cThousands, s.cThousands);
    EXPECT_EQ(c.cList, s.cList);
    EXPECT_EQ(c.nDateOrder, s.nDateOrder);
    EXPECT_EQ(std::u16string(c.pwszDateSep), s.strDateSep);
    EXPECT_EQ(u":", s.strTimeSep);
    EXPECT_EQ(c.bFourDigitYear, s.bFourDigitYear);
    EXPECT_EQ(c.b24Hour, s.b24Hour);
    EXPECT_EQ(c.bAmPmFirst, s.bAmPmFirst);
    EXPECT_EQ(std::u16string(c.pwszAm), s.strAm);
    EXPECT_EQ(std::u16string(c.pwszCurrency), s.strCurrency);
    EXPECT_EQ(c.nCurrencyPos, s.nCurrencyPos);
    EXPECT_EQ(c.nCurrencyDigits, s.nCurrencyDigits);
    EXPECT_EQ(std::u16string(c.pwszJanuary), s.astrMonthNames[0]);
    EXPECT_EQ(std::u16string(c.pwszSunday), s.astrDayNames[0]);
  }
}

// The negative currency form and the placement, with the Windows numbers. en-US shows
// negative amounts in parentheses, as its currency formats always have.
TEST_F(LocaleTest, CurrencyForms) {
  struct {
    const char* pszName;
    int nPos, nNeg;
  } const kCases[] = {{"en-US", 0, 0}, {"de-DE", 3, 8}, {"nl-NL", 2, 12}, {"pt-BR", 2, 9}};
  for (const auto& c : kCases) {
    SCOPED_TRACE(c.pszName);
    ASSERT_TRUE(SetLocale(c.pszName));
    EXPECT_EQ(c.nPos, GetLocaleSettings().nCurrencyPos);
    EXPECT_EQ(c.nNeg, GetLocaleSettings().nNegCurrency);
  }
}

TEST_F(LocaleTest, TimeAndDateDetails) {
  ASSERT_TRUE(SetLocale("de-DE"));
  EXPECT_TRUE(GetLocaleSettings().bDayLeadingZero);
  EXPECT_TRUE(GetLocaleSettings().bMonthLeadingZero);
  EXPECT_TRUE(GetLocaleSettings().bHourLeadingZero);
  EXPECT_EQ(u"Dezember", GetLocaleSettings().astrMonthNames[11]);
  EXPECT_EQ(u"Samstag", GetLocaleSettings().astrDayNames[6]);
  ASSERT_TRUE(SetLocale("en-US"));
  const TLocaleSettings& s = GetLocaleSettings();
  EXPECT_FALSE(s.bDayLeadingZero);
  EXPECT_FALSE(s.bMonthLeadingZero);
  EXPECT_FALSE(s.bHourLeadingZero);
  EXPECT_EQ(u"PM", s.strPm);
  EXPECT_EQ(u"Dec", s.astrMonthAbbrev[11]);
  EXPECT_EQ(u"Sat", s.astrDayAbbrev[6]);
  ASSERT_TRUE(SetLocale("fr-FR"));
  EXPECT_EQ(char16_t{0x00A0}, GetLocaleSettings().cThousands);  // not CLDR's narrow space
  EXPECT_EQ(u';', GetLocaleSettings().cList);
  ASSERT_TRUE(SetLocale("ar-SA"));
  EXPECT_EQ(u'.', GetLocaleSettings().cDecimal);  // Latin digits, Latin separators
}

TEST_F(LocaleTest, CodePageByLanguage) {
  struct {
    const char* pszName;
    unsigned nCodePage;
  } const kCases[] = {{"zh-CN", 936},       {"zh-TW", 950},       {"zh-HK", 950},  {"zh-Hant", 950},
                      {"zh-SG", 936},       {"ru-RU", 1251},      {"uk-UA", 1251}, {"pl-PL", 1250},
                      {"cs-CZ", 1250},      {"el-GR", 1253},      {"tr-TR", 1254}, {"he-IL", 1255},
                      {"ar-EG", 1256},      {"lt-LT", 1257},      {"vi-VN", 1258}, {"th-TH", 874},
                      {"sr-Cyrl-RS", 1251}, {"sr-Latn-RS", 1250}, {"fr-CA", 1252}, {"ja", 932}};
  for (const auto& c : kCases) {
    SCOPED_TRACE(c.pszName);
    ASSERT_TRUE(SetLocale(c.pszName));
    EXPECT_EQ(c.nCodePage, GetLocaleSettings().nCodePage);
  }
}

TEST_F(LocaleTest, UnknownNamesKeepTheSettings) {
  ASSERT_TRUE(SetLocale("de-DE"));
  const unsigned nGeneration = GetLocaleGeneration();
  for (const char* pszName : {"xx-YY", "", "en-US-!!", "zz", "-", "root"}) {
    SCOPED_TRACE(pszName);
    EXPECT_FALSE(SetLocale(pszName));
  }
  EXPECT_FALSE(SetLocale(nullptr));
  EXPECT_EQ(nGeneration, GetLocaleGeneration());
  EXPECT_EQ("de-DE", GetLocaleSettings().strName);
  EXPECT_EQ(u',', GetLocaleSettings().cDecimal);
  // ICU's own spelling is accepted too, and every success is a new generation.
  ASSERT_TRUE(SetLocale("ko_KR"));
  EXPECT_EQ(nGeneration + 1, GetLocaleGeneration());
  EXPECT_EQ(0x0412, GetLocaleSettings().nLcid);
  ASSERT_TRUE(SetLocale("ko_KR"));
  EXPECT_EQ(nGeneration + 2, GetLocaleGeneration());
}

}  // namespace
