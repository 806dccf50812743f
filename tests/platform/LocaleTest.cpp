// Locale settings read back for the locales users run most, compared with what
// those users see in their spreadsheets and system settings.
#include "platform/Locale.h"

#include <gtest/gtest.h>

#include <string>

#include "platform/CodePage.h"

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

}  // namespace
