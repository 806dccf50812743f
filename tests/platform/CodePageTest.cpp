// Lead bytes, byte counting and conversions under the double-byte code pages, with
// the Win32 size-query and failure rules.
#include <gtest/gtest.h>

#include <string>

#include "platform/CodePage.h"
#include "platform/Locale.h"

namespace {

struct TLeadCase {
  unsigned nCodePage;
  unsigned char c;
  bool bLead;
};

// Boundaries of the lead-byte ranges, one step each side.
constexpr TLeadCase kLeadBytes[] = {
    {932, 0x80, false},   {932, 0x81, true},  {932, 0x9F, true},  {932, 0xA0, false},
    {932, 0xA1, false},  // half-width katakana are single bytes
    {932, 0xDF, false},   {932, 0xE0, true},  {932, 0xFC, true},  {932, 0xFD, false},
    {949, 0x80, false},   {949, 0x81, true},  {949, 0xFE, true},  {949, 0xFF, false},
    {936, 0x81, true},    {950, 0x81, true},  {950, 0x80, false}, {1252, 0x81, false},
    {1252, 0xE0, false},  {949, 0x41, false}, {932, 0x41, false}, {CP_UTF8, 0xE3, false},
    {12345, 0x81, false},
};

TEST(CodePage, LeadBytes) {
  for (const TLeadCase& c : kLeadBytes) {
    SCOPED_TRACE(testing::Message() << c.nCodePage << " 0x" << std::hex << int{c.c});
    EXPECT_EQ(c.bLead, IsDBCSLeadByteEx(c.nCodePage, c.c));
  }
  for (unsigned nCodePage : {932u, 936u, 949u, 950u}) EXPECT_TRUE(IsDBCSCodePage(nCodePage));
  for (unsigned nCodePage : {1252u, 1251u, 874u, unsigned{CP_UTF8}})
    EXPECT_FALSE(IsDBCSCodePage(nCodePage));
}

TEST(CodePage, ActiveCodePageFollowsTheLocale) {
  ASSERT_TRUE(SetLocale("ko-KR"));  // LocaleTest checks GetACP
  EXPECT_TRUE(IsDBCSLeadByte(0xB0));
  EXPECT_TRUE(IsDBCSCodePage());
  ASSERT_TRUE(SetLocale("ja-JP"));
  EXPECT_TRUE(IsDBCSLeadByte(0x82));
  EXPECT_FALSE(IsDBCSLeadByte(0xB1));
  ASSERT_TRUE(SetLocale("en-US"));
  EXPECT_FALSE(IsDBCSLeadByte(0x82));
  EXPECT_FALSE(IsDBCSCodePage());
}

struct TConvertCase {
  unsigned nCodePage;
  const char16_t* pwszText;
  const char* pszBytes;
};

// Hand-checked against the code charts: "가" is B0 A1 in 949, "あ" 82 A0 in 932,
// "ｱ" (half-width) the single byte B1, "中" D6 D0 in 936 and A4 A4 in 950.
constexpr TConvertCase kConversions[] = {
    {949, u"A\uAC00b",
     "A\xB0\xA1"
     "b"},
    {932, u"\u3042\uFF71x", "\x82\xA0\xB1x"},
    {936, u"\u4E2D", "\xD6\xD0"},
    {950, u"\u4E2D", "\xA4\xA4"},
    {1252, u"\u20AC\u00E9", "\x80\xE9"},
    {1251, u"\u0416", "\xC6"},
    {CP_UTF8, u"\u20AC\U0001F600", "\xE2\x82\xAC\xF0\x9F\x98\x80"},
};

TEST(CodePage, RoundTripsAndByteCounts) {
  for (const TConvertCase& c : kConversions) {
    SCOPED_TRACE(c.nCodePage);
    const std::u16string strText = c.pwszText;
    const std::string strBytes = c.pszBytes;
    const int nUnits = static_cast<int>(strText.size());
    const int nBytes = static_cast<int>(strBytes.size());
    EXPECT_EQ(nBytes, WideCharToMultiByte(c.nCodePage, strText.data(), nUnits, nullptr, 0));
    std::string strOut(static_cast<std::size_t>(nBytes), '\0');
    ASSERT_EQ(nBytes,
              WideCharToMultiByte(c.nCodePage, strText.data(), nUnits, strOut.data(), nBytes));
    EXPECT_EQ(strBytes, strOut);
    EXPECT_EQ(nUnits, MultiByteToWideChar(c.nCodePage, strBytes.data(), nBytes, nullptr, 0));
    std::u16string strBack(static_cast<std::size_t>(nUnits), u'\0');
    ASSERT_EQ(nUnits,
              MultiByteToWideChar(c.nCodePage, strBytes.data(), nBytes, strBack.data(), nUnits));
    EXPECT_EQ(strText, strBack);
    // One unit or byte too few fails (a destination size of 0 would be a size query).
    if (nBytes > 1) {
      EXPECT_EQ(
          0, WideCharToMultiByte(c.nCodePage, strText.data(), nUnits, strOut.data(), nBytes - 1));
    }
    if (nUnits > 1) {
      EXPECT_EQ(
          0, MultiByteToWideChar(c.nCodePage, strBytes.data(), nBytes, strBack.data(), nUnits - 1));
    }
  }
}

TEST(CodePage, TerminatorIsCountedWithMinusOne) {
  const char* const pszKorean = "A\xB0\xA1\x62";  // "A", HANGUL GA, "b"
  EXPECT_EQ(4, MultiByteToWideChar(949, pszKorean, -1, nullptr, 0));
  char16_t buf[4];
  ASSERT_EQ(4, MultiByteToWideChar(949, pszKorean, -1, buf, 4));
  EXPECT_EQ(std::u16string(u"A\uAC00b"), buf);
  EXPECT_EQ(5, WideCharToMultiByte(949, u"A\uAC00b", -1, nullptr, 0));
  char bytes[5];
  ASSERT_EQ(5, WideCharToMultiByte(949, u"A\uAC00b", -1, bytes, 5));
  EXPECT_STREQ(pszKorean, bytes);
  EXPECT_EQ(1, MultiByteToWideChar(1252, "", -1, nullptr, 0));
}

TEST(CodePage, BadInputFailsOrSubstitutes) {
  char16_t buf[8];
  char bytes[8];
  EXPECT_EQ(0, MultiByteToWideChar(12345, "a", 1, buf, 8));  // unknown code page
  EXPECT_EQ(0, MultiByteToWideChar(949, "a", 0, buf, 8));
  EXPECT_EQ(0, MultiByteToWideChar(949, nullptr, 1, buf, 8));
  EXPECT_EQ(0, MultiByteToWideChar(949, "a", -2, buf, 8));
  EXPECT_EQ(0, WideCharToMultiByte(949, u"a", 1, nullptr, 8));
  // A lead byte cut off at the end still yields one unit, not a crash.
  EXPECT_EQ(2, MultiByteToWideChar(949, "A\xB0", 2, buf, 8));
  EXPECT_EQ(u'A', buf[0]);
  // Unmappable characters become '?'.
  ASSERT_EQ(2, WideCharToMultiByte(1252, u"\uAC00x", 2, bytes, 8));
  EXPECT_EQ('?', bytes[0]);
  ASSERT_EQ(1, WideCharToMultiByte(949, u"\u0E01", 1, bytes, 8));  // Thai in Korean
  EXPECT_EQ('?', bytes[0]);
}

TEST(CodePage, CharSets) {
  struct {
    unsigned nCharSet, nCodePage;
  } const kPairs[] = {{ANSI_CHARSET, 1252},       {SHIFTJIS_CHARSET, 932},
                      {HANGUL_CHARSET, 949},      {GB2312_CHARSET, 936},
                      {CHINESEBIG5_CHARSET, 950}, {RUSSIAN_CHARSET, 1251},
                      {EASTEUROPE_CHARSET, 1250}, {THAI_CHARSET, 874}};
  for (const auto& pair : kPairs) {
    SCOPED_TRACE(pair.nCharSet);
    EXPECT_EQ(pair.nCodePage, CharSetToCodePage(pair.nCharSet));
    EXPECT_EQ(pair.nCharSet, CodePageToCharSet(pair.nCodePage));
    EXPECT_TRUE(IsCodePageSupported(pair.nCodePage));
  }
  EXPECT_EQ(CP_ACP, CharSetToCodePage(DEFAULT_CHARSET));
  EXPECT_EQ(CP_ACP, CharSetToCodePage(SYMBOL_CHARSET));
  EXPECT_EQ(DEFAULT_CHARSET, CodePageToCharSet(CP_UTF8));
  EXPECT_EQ(ANSI_CHARSET, CodePageToCharSet(CP_ACP));  // en-US is active
  EXPECT_FALSE(IsCodePageSupported(CP_ACP));
  EXPECT_FALSE(IsCodePageSupported(437));
  EXPECT_EQ(15, SupportedCodePageCount());
}

}  // namespace
