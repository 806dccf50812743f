// Rendering: each token family with its rounding edges, section choice, the result
// state (fill, colour, spacing, General marks). Expected texts are what the reference
// spreadsheets show for the same format and value.
#include <gtest/gtest.h>

#include <cstdio>
#include <string>

#include "format/SingleFormat.h"
#include "format/ValFormat.h"

namespace {

std::u16string Render(const char16_t* pwszFormat, double r) {
  CValFormat f;
  EXPECT_EQ(1, f.Parse(pwszFormat, nullptr, ptEnglish));
  f.Format(r);
  return std::u16string(CSingleFormat::m_Buf, CSingleFormat::m_wFormattedLen);
}

std::string Narrow(const std::u16string& str) { return std::string(str.begin(), str.end()); }

struct TRenderCase {
  const char16_t* pwszFormat;
  double r;
  const char16_t* pwszExpected;
};

// clang-format off
const TRenderCase kRenderCases[] = {
    // Digit placeholders and rounding to the shown digits, half away from zero.
    {u"0.00", 9.995, u"10.00"}, {u"0.00", 2.675, u"2.68"}, {u"0.00", 0.005, u"0.01"},
    {u"0.00", 0.00499999999, u"0.00"}, {u"0", -0.5, u"-1"}, {u"0", 2.5, u"3"},
    {u"0.00", -0.0001, u"0.00"},  // rounds to zero: no sign
    {u"0.00", -0.0, u"0.00"}, {u"#", 0, u""}, {u"#.#", 0, u"."}, {u"#.##", 123, u"123."},
    {u"?.??", 0.5, u" .5 "}, {u".00", 1234.567, u"1234.57"}, {u"#0.0#", 123, u"123.0"},
    {u"00000", 1.5, u"00002"}, {u"000-00-0000", 1234.567, u"000-00-1235"},
    {u"0.00", 1e20, u"100000000000000000000.00"},
    {u"0.00000000000000000", 0.1 + 0.2, u"0.30000000000000000"},
    {u"0.000000000000000", 2.0 / 3, u"0.666666666666667"},
    // Grouping and scaling.
    {u"#,##0", 1234567.891, u"1,234,568"}, {u"#,##0.00", -1234.567, u"-1,234.57"},
    {u"0,000", 0.5, u"0,001"}, {u"#,###", 0, u""}, {u"#,##0,", 1234.567, u"1"},
    {u"0.0,,", 99.995, u"0.0"}, {u"0%", 0.125, u"13%"}, {u"0.0%", -1234.567, u"-123456.7%"},
    {u"0%%", 0.125, u"13%%"},
    // Scientific and engineering forms.
    {u"0.00E+00", 99.995, u"1.00E+02"}, {u"0.00E+00", 0.00012, u"1.20E-04"},
    {u"0.00E+000", 123456789, u"1.23E+008"}, {u"0.0E-0", -1234.567, u"-1.2E3"},
    {u"0E+0", -0.5, u"-5E-1"}, {u"##0.0E+0", 1234.567, u"1.2E+3"},
    {u"##0.0E+0", 0.00001, u"10.0E-6"}, {u"00.00E+00", 1e-10, u"01.00E-10"},
    // Fractions.
    {u"# ?/?", 1234.567, u"1234 4/7"}, {u"# ?\?/?\?", 1234.567, u"1234 55/97"},
    {u"# ?/8", -1234.567, u"-1234 5/8"}, {u"?/4", 1234.567, u"4938/4"},
    {u"# ?/16", 12.5, u"12 8/16"}, {u"0 ?/?", -0.5, u"-0 1/2"}, {u"# ?/?", 0, u"0    "},
    {u"# ?/?", 0.99, u"1    "}, {u"# ?/?", 0.5, u" 1/2"}, {u"?/?", 0.3333333333, u"1/3"},
    // Literals, quoted text, spacing, fill, currency, locale blocks, sections.
    {u"\"Total: \"0", -1234.567, u"-Total: 1235"}, {u"0.00_)", 0, u"0.00 "},
    {u"_(0_)", 123, u" 123 "}, {u"0*-", 1234.567, u"1235"},
    {u"$#,##0.00", -1234.567, u"-$1,234.57"}, {u"\\$0.00", -0.5, u"-$0.50"},
    {u"[$\u20AC-407]#,##0.00", 1234.5, u"\u20AC1,234.50"},
    {u"0.00;(0.00)", -1234.567, u"(1234.57)"}, {u"0;(0);zero", -0.4, u"(0)"},
    {u"0.0%;-0.0%", -0.0001, u"-0.0%"}, {u"[=0]\"nil\";0.0", -1234.567, u"-1234.6"},
    {u"[=0]\"nil\";0.0", 0, u"nil"}, {u"[>100]\"big\";[<0]\"neg\";0", -5, u"neg"},
    {u"[<=99]0;\"many\"", 1e20, u"many"}, {u"0;;", -3, u""}, {u";;;", 3, u""},
    {u"\"x\"@\"y\"", -1234.567, u"-1234.567"}, {u"General", 1234.567, u"1234.567"},
    {u"General;-General", -1234.567, u"-1234.567"},
    // Dates and times.
    {u"yyyy-mm-dd", 43831, u"2020-01-01"},
    {u"dddd, mmmm d, yyyy", 59, u"Tuesday, February 28, 1900"}, {u"d", 60, u"29"},
    {u"mm/dd/yyyy", 61, u"03/01/1900"}, {u"mmm d, yyyy", 0, u"Jan 0, 1900"},
    {u"mmmmm ddd yy", 45000.123456, u"M Wed 23"}, {u"h:mm:ss A/P", 0.75, u"6:00:00 P"},
    {u"am/pm h", 43831.5, u"PM 12"}, {u"hh:mm:ss AM/PM", 36526.0416666667, u"01:00:00 AM"},
    {u"h:m", 0.5, u"12:0"},
    {u"mm:ss", 45000.123456, u"57:47"},  // seconds round to the shown precision
    {u"h:mm:ss.00", 45000.123456, u"2:57:46.60"}, {u"h:mm:ss.000", 45000.123456, u"2:57:46.598"},
    {u"hh:mm", 2958465.99999, u"23:59"},  // no seconds shown: no rounding
    {u"hh:mm:ss", 0.999999, u"00:00:00"},  // carries into the next day
    {u"yyyy-mm-dd hh:mm:ss", 43830.9999999, u"2020-01-01 00:00:00"},
    {u"[h]:mm:ss", 59, u"1416:00:00"}, {u"[mm]:ss", 60, u"86400:00"},
    {u"[ss]", 45000.123456, u"3888010667"}, {u"h:mm:ss.00", 0.000011574, u"0:00:01.00"},
};
// clang-format on

TEST(ValFormatRender, TokenFamilies) {
  for (const TRenderCase& c : kRenderCases) {
    SCOPED_TRACE(Narrow(c.pwszFormat) + " with " + std::to_string(c.r));
    EXPECT_EQ(Narrow(c.pwszExpected), Narrow(Render(c.pwszFormat, c.r)));
  }
}

// Sweep: "0.0" applied to k + 0.05 for k = 0..0.9 (step 0.1) rounds up, as typed.
TEST(ValFormatRender, HalvesRoundAwayFromZero) {
  for (int i = 0; i < 200; ++i) {
    const double r = i / 10.0 + 0.05;
    char sz[32];
    std::snprintf(sz, sizeof sz, "%.1f", (i + 1) / 10.0);
    SCOPED_TRACE(r);
    EXPECT_EQ(std::string(sz), Narrow(Render(u"0.0", r)));
    EXPECT_EQ("-" + std::string(sz), Narrow(Render(u"0.0", -r)));
  }
}

TEST(ValFormatRender, TextValues) {
  CValFormat f;
  ASSERT_EQ(1, f.Parse(u"0;0;0;\"text:\"@", nullptr, ptEnglish));
  f.Format(u"abc", 3);
  EXPECT_EQ(u"text:abc", std::u16string(CSingleFormat::m_Buf));
  ASSERT_EQ(1, f.Parse(u"0.00", nullptr, ptEnglish));
  f.Format(u"abc", 3);
  EXPECT_EQ(u"abc", std::u16string(CSingleFormat::m_Buf));
  ASSERT_EQ(1, f.Parse(u"\"[\" @ \"]\"", nullptr, ptEnglish));
  f.Format(u"", 0);
  EXPECT_EQ(u"[  ]", std::u16string(CSingleFormat::m_Buf));
}

TEST(ValFormatRender, ResultState) {
  CValFormat f;
  ASSERT_EQ(1, f.Parse(u"[Red]_(0* ;[Color10]0", nullptr, ptEnglish));
  f.Format(5);
  EXPECT_EQ(u" 5", std::u16string(CSingleFormat::m_Buf));
  EXPECT_EQ(u' ', CValFormat::m_cFillChar);
  EXPECT_EQ(2, CValFormat::m_wFillPos);
  EXPECT_TRUE(CValFormat::m_bIsColorRef);
  EXPECT_EQ(0x0000FFu, CValFormat::m_ColorRef);
  ASSERT_EQ(1, CValFormat::m_wSpaceChars);
  EXPECT_EQ(0, CValFormat::m_SpaceChars[0].wPos);
  EXPECT_EQ(u'(', CValFormat::m_SpaceChars[0].cChar);
  f.Format(-5);  // every call starts from a reset result
  EXPECT_EQ(u"5", std::u16string(CSingleFormat::m_Buf));
  EXPECT_EQ(0, CValFormat::m_cFillChar);
  EXPECT_FALSE(CValFormat::m_bIsColorRef);
  EXPECT_TRUE(CValFormat::m_bIsColorIndex);
  EXPECT_EQ(9, CValFormat::m_wColorIndex);
  EXPECT_EQ(0, CValFormat::m_wSpaceChars);
  // Out of the date range the cell fills with '#'.
  ASSERT_EQ(1, f.Parse(u"yyyy", nullptr, ptEnglish));
  f.Format(-1);
  EXPECT_EQ(0, CSingleFormat::m_wFormattedLen);
  EXPECT_EQ(u'#', CValFormat::m_cFillChar);
}

TEST(ValFormatRender, GeneralMarksAndWidth) {
  CValFormat f;
  ASSERT_EQ(1, f.Parse(u"\"v=\"General", nullptr, ptEnglish));
  f.Format(-2.5);
  EXPECT_EQ(u"v=-2.5", std::u16string(CSingleFormat::m_Buf));
  EXPECT_TRUE(CSingleFormat::m_bIsGeneral);
  EXPECT_EQ(2, CSingleFormat::m_wGeneralStart);
  EXPECT_EQ(6, CSingleFormat::m_wGeneralEnd);
  EXPECT_EQ(-2.5, CSingleFormat::m_rGeneralValue);
  // The width reaches the General rule (GeneralNumberTest covers its switch points).
  ASSERT_EQ(1, f.Parse(u"General", nullptr, ptEnglish));
  f.Format(2.0 / 3, 11);
  EXPECT_EQ(u"0.666666667", std::u16string(CSingleFormat::m_Buf));
  f.Format(123456789012.0, 11);
  EXPECT_EQ(u"1.23457E+11", std::u16string(CSingleFormat::m_Buf));
}

TEST(ValFormatRender, AutomaticMilliseconds) {
  CValFormat f;
  ASSERT_EQ(1, f.Parse(u"h:mm:ss", nullptr, ptEnglish));
  f.SetAutoMilliseconds(true);
  f.Format(0.5 + 1.25 / 86400);
  EXPECT_EQ(u"12:00:01.25", std::u16string(CSingleFormat::m_Buf));
  f.Format(0.5);
  EXPECT_EQ(u"12:00:00", std::u16string(CSingleFormat::m_Buf));
  f.SetAutoMilliseconds(false);
  f.Format(0.5 + 1.25 / 86400);
  EXPECT_EQ(u"12:00:01", std::u16string(CSingleFormat::m_Buf));
}

}  // namespace
