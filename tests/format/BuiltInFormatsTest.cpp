// Built-in formats adapted to the locale, the host's localized built-in texts, the
// quick local formats and a book's format list. Each test restores en-US and the
// English resources.
#include <gtest/gtest.h>

#include <string>

#include "format/BuiltInFormats.h"
#include "format/LocalBuiltInFormat.h"
#include "format/QuickLocalFormat.h"
#include "format/SSValFormat.h"
#include "format/ValFormat.h"
#include "format/ValFormatList.h"
#include "platform/Locale.h"
#include "platform/ResourceIds.h"
#include "platform/Resources.h"

namespace {

class BuiltInFormatsTest : public ::testing::Test {
 protected:
  void TearDown() override {
    SetResourceTable(nullptr, 0);
    ASSERT_TRUE(SetLocale("en-US"));
  }
  static std::u16string Show(const CValFormat& f, double r) {
    f.Format(r);
    return std::u16string(CSingleFormat::m_Buf, CSingleFormat::m_wFormattedLen);
  }
};

struct TLocaleCase {
  const char* pszLocale;
  int nIndex;
  double r;
  const char16_t* pwszShown;
};

// What the book's built-in formats show in each locale (the locale's own currency
// placement, negative form, date order and separator, AM/PM place).
// clang-format off
const TLocaleCase kLocaleCases[] = {
    {"en-US", 0, 1234.5, u"1234.5"}, {"en-US", 4, 1234.5, u"1,234.50"},
    {"en-US", 7, -1234.5, u"($1,234.50)"}, {"en-US", 7, 1234.5, u"$1,234.50 "},
    {"en-US", 14, 45000.75, u"3/15/2023"}, {"en-US", 18, 45000.75, u"6:00 PM"},
    {"en-US", 22, 45000.75, u"3/15/2023 18:00"}, {"en-US", 49, 12, u"12"},
    {"en-US", 62, 0.5, u".50"}, {"de-DE", 4, 1234.5, u"1.234,50"},
    {"de-DE", 7, -1234.5, u"-1.234,50 \u20AC"}, {"de-DE", 14, 45000.75, u"15.03.2023"},
    {"de-DE", 18, 45000.75, u"18:00"}, {"de-DE", 10, 0.125, u"12,50%"},
    {"ko-KR", 7, -1234.5, u"(\u20A91,234.50)"}, {"ko-KR", 14, 45000.75, u"2023.3.15"},
    {"ko-KR", 18, 45000.25, u"\uC624\uC804 6:00"},
};
// clang-format on

TEST_F(BuiltInFormatsTest, LocaleAdaptedFormatsShowTheLocale) {
  for (const TLocaleCase& c : kLocaleCases) {
    SCOPED_TRACE(std::string(c.pszLocale) + " #" + std::to_string(c.nIndex));
    ASSERT_TRUE(SetLocale(c.pszLocale));
    CValFormatList list;
    list.InitDefValFormats();
    EXPECT_EQ(std::u16string(c.pwszShown), Show(*list.GetValFormat(c.nIndex), c.r));
  }
}

TEST_F(BuiltInFormatsTest, EnglishTableAndAliases) {
  ASSERT_TRUE(SetLocale("en-US"));
  EXPECT_EQ(CBuiltInFormats::GetText(1), CBuiltInFormats::GetText(59));
  EXPECT_FALSE(CBuiltInFormats::IsAlias(59));
  EXPECT_FALSE(CBuiltInFormats::IsAlias(60));
  // Entries without a template take their link's text.
  for (int n : {27, 28, 29, 34, 35, 36}) EXPECT_EQ(u"General", CBuiltInFormats::GetText(n));
  EXPECT_EQ(CBuiltInFormats::GetText(14), CBuiltInFormats::GetText(31));
  EXPECT_EQ(CBuiltInFormats::GetText(20), CBuiltInFormats::GetText(32));
  // "\$#,##0_);\(\$#,##0\)" reads back as the dollar format of en-US, not of de-DE.
  EXPECT_TRUE(CBuiltInFormats::IsAlias(23));
  EXPECT_TRUE(CBuiltInFormats::IsAlias(26));
  ASSERT_TRUE(SetLocale("de-DE"));
  EXPECT_FALSE(CBuiltInFormats::IsAlias(23));
  EXPECT_FALSE(CBuiltInFormats::IsAlias(26));
  EXPECT_EQ(u"dd/mm/yyyy", CBuiltInFormats::GetText(14));
}

TEST_F(BuiltInFormatsTest, HostLocalizedTexts) {
  const TResourceEntry kEntries[] = {
      {IDS_LOCAL_BUILTIN_FORMAT_BASE + 14, u"5:[AUTO];m;d;-"},
      {IDS_LOCAL_BUILTIN_FORMAT_BASE + 15, u";"},  // no localized text
      {IDS_LOCAL_BUILTIN_FORMAT_BASE + 3, u"0:#,##0\" pcs\""},
  };
  SetResourceTable(kEntries, 3);
  ASSERT_TRUE(SetLocale("de-DE"));
  EXPECT_EQ(u"d-m-yyyy", CBuiltInFormats::GetText(14));
  EXPECT_EQ(u"d\\-mmm\\-yy", CBuiltInFormats::GetText(15));
  EXPECT_EQ(u"#,##0\" pcs\"", CBuiltInFormats::GetText(3));
  EXPECT_EQ(u"d-m-yyyy", CBuiltInFormats::GetText(31));  // the alias follows its link
}

TEST_F(BuiltInFormatsTest, KindPrefixedTexts) {
  ASSERT_TRUE(SetLocale("en-US"));
  CLocalBuiltInFormat local;
  ASSERT_TRUE(local.SetText(u"9:yyyy;mm;dd;/; %sh:mm:ss%s"));
  EXPECT_EQ(u"mm/dd/yyyy h:mm:ss AM/PM", local.GetFormatText());
  ASSERT_TRUE(local.SetText(u"7:\"a;b\";%s0%s"));
  EXPECT_EQ(u"\"a;b\"", local.GetSecondText());
  EXPECT_EQ(u"$0_)", local.GetFormatText());  // room for the parenthesis of negatives
  EXPECT_FALSE(local.SetText(u"5:yyyy;mm"));  // a date needs four parts
  EXPECT_FALSE(local.SetText(u"x:0"));
  EXPECT_FALSE(local.SetText(u"1"));
  const auto parts = CLocalBuiltInFormat::SplitParts(u"a\\;b;\"c;d\";e");
  ASSERT_EQ(3u, parts.size());
  EXPECT_EQ(u"a\\;b", parts[0]);
  EXPECT_EQ(u"\"c;d\"", parts[1]);
}

TEST_F(BuiltInFormatsTest, BookListAndQuickFormats) {
  ASSERT_TRUE(SetLocale("en-US"));
  CValFormatList list;
  list.InitDefValFormats();
  ASSERT_EQ(64, list.GetCount());
  EXPECT_EQ(CSingleFormat::ftGeneral, list.GetValFormatType(0));
  EXPECT_EQ(CSingleFormat::ftDate, list.GetValFormatType(14));
  EXPECT_EQ(CSingleFormat::ftText, list.GetValFormatType(49));
  EXPECT_EQ(CSingleFormat::ftGeneral, list.GetValFormatType(64));  // none: General
  // 59 and 60 show as 1 and 2 do but are formats of their own; 24 and 61 are aliases.
  for (int n : {24, 59, 60, 61}) {
    SCOPED_TRACE(n);
    const auto* pBuiltIn = dynamic_cast<const CSSValFormat*>(list.GetValFormat(n));
    ASSERT_NE(nullptr, pBuiltIn);
    EXPECT_EQ(n == 24 || n == 61, pBuiltIn->IsAlias());
  }
  EXPECT_EQ(24, static_cast<const CSSValFormat*>(list.GetValFormat(24))->GetCode());
  EXPECT_EQ(0, list.GetValFormat(59)->Compare(*list.GetValFormat(1)));
  EXPECT_EQ(0, list.GetValFormat(60)->Compare(*list.GetValFormat(2)));
  EXPECT_EQ(4, list.AddValFormat(u"#,##0.00", ptEnglish));  // equal to a built-in
  const int nUser = list.AddValFormat(u"0.000", ptEnglish);
  EXPECT_EQ(64, nUser);
  EXPECT_EQ(nUser, list.AddValFormat(u"0.000", ptEnglish));
  int nPos = -1;
  EXPECT_EQ(-1, list.AddValFormat(u"0;0;0;0", ptEnglish, &nPos));
  EXPECT_EQ(7, nPos);
  EXPECT_EQ(0, list.ValidateValFormats());
  EXPECT_EQ(7, CValFormatList::GetStandardFormat(CSingleFormat::ftCurrency, true));
  EXPECT_EQ(u"03/15/2023 6:00:00.5 PM",
            Show(list.GetQuickFormat(CValFormatList::qfDateTime), 45000.75 + 0.5 / 86400));
  EXPECT_EQ(u"03/15/2023", Show(list.GetQuickFormat(CValFormatList::qfDate), 45000.75));
  EXPECT_EQ(u"6:00:00 PM", Show(list.GetQuickFormat(CValFormatList::qfTime), 0.75));
}

}  // namespace
