// The English table answers by identifier; a host table comes first, is copied, and
// goes away again.
#include <gtest/gtest.h>

#include <string>

#include "platform/ResourceIds.h"
#include "platform/Resources.h"

namespace {

std::u16string Load(unsigned nId) {
  const char16_t* p = LoadResourceString(nId);
  return p == nullptr ? u"<none>" : p;
}

struct TResourceCase {
  unsigned nId;
  const char16_t* pwszText;
};

// Texts that other parts of the engine parse: they must be exactly these.
// clang-format off
constexpr TResourceCase kEnglish[] = {
    {IDS_OP_RANGE, u":"}, {IDS_OP_INTERSECTION, u" "}, {IDS_OP_NE, u"<>"}, {IDS_OP_CONCAT, u"&"},
    {IDS_CRIT_NOT_CONTAINS, u"does not contain"}, {IDS_NEW_SHEET_NAME, u"Sheet%d"},
    {IdsForFunction(4), u"SUM"}, {IDS_FN_SUMGENERAL, u"SUMGENERAL"}, {IDS_FN_CONVERTK, u"CONVERTK"},
    {IDS_MONTH_NAME_BASE + 11, u"December"}, {IDS_DAY_ABBREV_BASE, u"Sun"},
    {IDS_FMT_GENERAL, u"General"}, {IDS_FMT_COLOR_BASE + 8, u"Color"},
};
// clang-format on

TEST(Resources, EnglishTable) {
  for (const TResourceCase& c : kEnglish) {
    SCOPED_TRACE(c.nId);
    EXPECT_EQ(std::u16string(c.pwszText), Load(c.nId));
  }
  // The unknown-function message takes exactly one number.
  const std::u16string strUnknown = Load(IDS_UNPARSE_UNKNOWN_FUNCTION);
  EXPECT_NE(std::u16string::npos, strUnknown.find(u"%d"));
  EXPECT_EQ(strUnknown.find(u'%'), strUnknown.rfind(u'%'));
  EXPECT_EQ(std::u16string::npos, Load(IDS_UNPARSE_FAILURE).find(u'%'));
  // No localized built-in formats in English, and nothing between known ranges.
  EXPECT_EQ(nullptr, LoadResourceString(IDS_LOCAL_BUILTIN_FORMAT_BASE + 14));
  EXPECT_EQ(nullptr, LoadResourceString(IdsForFunction(75)));
  EXPECT_EQ(nullptr, LoadResourceString(0));
}

TEST(Resources, LoadStringWTruncatesAndTerminates) {
  char16_t buf[8];
  EXPECT_EQ(7, LoadStringW(IDS_FN_CONCATENATE, buf, 8));  // 11 units, room for 7
  EXPECT_EQ(std::u16string(u"CONCATE"), buf);
  EXPECT_EQ(3, LoadStringW(IDS_FN_SUM, buf, 4));  // exactly fits
  EXPECT_EQ(std::u16string(u"SUM"), buf);
  EXPECT_EQ(0, LoadStringW(IDS_FN_SUM, buf, 1));
  EXPECT_EQ(0, buf[0]);
  EXPECT_EQ(0, LoadStringW(IdsForFunction(75), buf, 8));
  EXPECT_EQ(0, LoadStringW(IDS_FN_SUM, buf, 0));
}

TEST(Resources, HostTableOverridesAndIsCopied) {
  const unsigned nGeneration = GetResourceGeneration();
  {
    std::u16string strSum = u"SUMME";
    const TResourceEntry entries[] = {
        {IDS_FN_SUM, strSum.c_str()},
        {IDS_FN_SUM, u"SECOND"},  // the first of equal ids wins
        {IDS_FN_PI, u""},         // an empty text is a text, not a miss
        {IDS_LOCAL_BUILTIN_FORMAT_BASE + 14, u";"},
        {99999, u"host only"},
    };
    SetResourceTable(entries, static_cast<int>(std::size(entries)));
    strSum = u"changed";
  }
  EXPECT_EQ(nGeneration + 1, GetResourceGeneration());
  EXPECT_EQ(u"SUMME", Load(IDS_FN_SUM));
  EXPECT_EQ(u"", Load(IDS_FN_PI));
  EXPECT_EQ(u";", Load(IDS_LOCAL_BUILTIN_FORMAT_BASE + 14));
  EXPECT_EQ(u"host only", Load(99999));
  EXPECT_EQ(u"AVERAGE", Load(IDS_FN_AVERAGE));  // falls through to English
  char16_t buf[4] = {u'x'};
  EXPECT_EQ(0, LoadStringW(IDS_FN_PI, buf, 4));

  SetResourceTable(nullptr, 0);
  EXPECT_EQ(nGeneration + 2, GetResourceGeneration());
  EXPECT_EQ(u"SUM", Load(IDS_FN_SUM));
  EXPECT_EQ(u"PI", Load(IDS_FN_PI));
  EXPECT_EQ(u"<none>", Load(99999));
}

}  // namespace
