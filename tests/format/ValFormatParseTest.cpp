// Parsing: section summaries and tokens of many formats, the implicit sections, every
// failure with its position, writing back, and the stored layout.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "format/SingleFormat.h"
#include "format/ValFormat.h"
#include "platform/Archive.h"

namespace {

using S = CSingleFormat;

std::string Narrow(const std::u16string& str) { return std::string(str.begin(), str.end()); }

struct TSectionCase {
  const char16_t* pwszFormat;
  S::EType nType;
  S::EOperator nOperator;
  int nScale;
  int anCounts[3];
  int anFlags[3];
  std::vector<unsigned short> tokens;  // without the end code; empty: not checked
};

// clang-format off
const TSectionCase kSectionCases[] = {
    {u"0.00", S::ftNumber, S::opOtherwise, 0, {1, 2, 0}, {0, 1, 0}, {1, 0, 4, 1, 1, 1, 1}},
    {u"#,##0", S::ftNumber, S::opOtherwise, 0, {4, 0, 0}, {2, 0, 0}, {2, 0, 2, 0, 2, 0, 1, 0}},
    {u"#,##0,", S::ftNumber, S::opOtherwise, 3, {4, 0, 0}, {2, 0, 0}, {}},
    {u"0.0,,", S::ftNumber, S::opOtherwise, 6, {1, 1, 0}, {0, 1, 0}, {}},
    {u"0%", S::ftPercent, S::opOtherwise, -2, {1, 0, 0}, {0, 0, 0}, {1, 0, 7}},
    {u"0%%", S::ftPercent, S::opOtherwise, -2, {1, 0, 0}, {0, 0, 0}, {1, 0, 7, 43, u'%'}},
    {u"0.00E+00", S::ftScientific, S::opOtherwise, 0, {1, 2, 2}, {0, 1, 0}, {}},
    {u"0.0e-0", S::ftScientific, S::opOtherwise, 0, {1, 1, 1}, {0, 1, 0}, {}},
    {u"# ?/16", S::ftFraction, S::opOtherwise, 0, {1, 1, 2}, {0, 0, 0}, {2, 0, 43, u' ', 3, 1, 8, 3, 2, 3, 2}},
    {u"# ?\?/?\?", S::ftFraction, S::opOtherwise, 0, {1, 2, 2}, {0, 0, 1}, {}},
    {u"h:mm", S::ftTime, S::opOtherwise, 0, {0, 0, 0}, {0, 0, 0}, {30, 0, 49, 31}},
    {u"mm/dd", S::ftDate, S::opOtherwise, 0, {0, 0, 0}, {0, 0, 0}, {12, 48, 18}},
    {u"mm:ss", S::ftTime, S::opOtherwise, 0, {0, 0, 0}, {0, 0, 0}, {31, 49, 33, 0}},
    {u"h:mm AM/PM", S::ftTime, S::opOtherwise, 0, {0, 0, 0}, {0, 0, 0}, {}},
    {u"[h]:mm:ss.00", S::ftTime, S::opOtherwise, 0, {0, 0, 0}, {0, 0, 0}, {}},
    {u"[ss].0", S::ftTime, S::opOtherwise, 0, {0, 0, 0}, {0, 0, 0}, {52, 2, 1}},
    {u"[$-F800]", S::ftDate, S::opOtherwise, 0, {0, 0, 0}, {0, 0, 0}, {53, 0, 0xF800, 0}},
    {u"[$\u20AC-407]#,##0.00", S::ftNumber, S::opOtherwise, 0, {4, 2, 0}, {2, 1, 0}, {}},
    {u"\"Total: \"0", S::ftNumber, S::opOtherwise, 0, {1, 0, 0}, {0, 0, 0}, {}},
    {u"$#,##0", S::ftCurrency, S::opOtherwise, 0, {4, 0, 0}, {2, 0, 0}, {}},
    {u"\\$0", S::ftNumber, S::opOtherwise, 0, {1, 0, 0}, {0, 0, 0}, {43, u'$', 1, 0}},
    {u"@", S::ftText, S::opOtherwise, 0, {0, 0, 0}, {0, 0, 0}, {45}},
    {u"General", S::ftGeneral, S::opOtherwise, 0, {0, 0, 0}, {0, 0, 0}, {0}},
    {u"0*-_)", S::ftNumber, S::opOtherwise, 0, {1, 0, 0}, {0, 0, 0}, {1, 0, 46, u'-', 47, u')'}},
    {u"yyyy", S::ftDate, S::opOtherwise, 0, {0, 0, 0}, {0, 0, 0}, {20}},
    {u"y", S::ftNumber, S::opOtherwise, 0, {0, 0, 0}, {0, 0, 0}, {21}},
    {u"dddd mmmm", S::ftDate, S::opOtherwise, 0, {0, 0, 0}, {0, 0, 0}, {15, 43, u' ', 10}},
    {u"", S::ftNumber, S::opOtherwise, 0, {0, 0, 0}, {0, 0, 0}, {}},
};
// clang-format on

TEST(ValFormatParse, SectionSummaryAndTokens) {
  for (const TSectionCase& c : kSectionCases) {
    SCOPED_TRACE(Narrow(c.pwszFormat));
    CValFormat f;
    int nPos = -1;
    ASSERT_EQ(1, f.Parse(c.pwszFormat, &nPos, ptEnglish));
    const S& s = f.m_aSections[0];
    EXPECT_EQ(c.nType, s.m_nType);
    EXPECT_EQ(c.nOperator, s.m_nOperator);
    EXPECT_EQ(c.nScale, s.m_nScale);
    for (int g = 0; g < 3; ++g) {
      EXPECT_EQ(c.anCounts[g], s.m_aGroups[g].nCount) << "group " << g;
      EXPECT_EQ(c.anFlags[g], s.m_aGroups[g].wFlags) << "group " << g;
    }
    if (!c.tokens.empty()) {
      std::vector<unsigned short> expected = c.tokens;
      expected.push_back(S::tkEnd);
      EXPECT_EQ(expected, std::vector<unsigned short>(s.m_pTokens, s.m_pTokens + s.m_wTokenCount));
    }
  }
}

TEST(ValFormatParse, ConditionsColoursAndFixedDenominator) {
  CValFormat f;
  ASSERT_EQ(1, f.Parse(u"[Color1]0", nullptr, ptEnglish));
  EXPECT_EQ(8u, f.m_aSections[0].m_nColorIndex);
  EXPECT_EQ(0, f.m_aSections[0].m_wColorNumber);
  ASSERT_EQ(1, f.Parse(u"[color56]0", nullptr, ptEnglish));
  EXPECT_EQ(55, f.m_aSections[0].m_wColorNumber);
  ASSERT_EQ(1, f.Parse(u"# ?/16", nullptr, ptEnglish));
  EXPECT_EQ(16u, f.m_aSections[0].m_nFixedDenominator);
  ASSERT_EQ(1, f.Parse(u"[<= -1.5]0", nullptr, ptEnglish));
  EXPECT_EQ(S::opLessEqual, f.m_aSections[0].m_nOperator);
  EXPECT_EQ(-1.5, f.m_aSections[0].m_rCondition);
  EXPECT_EQ(S::ftGeneral, f.m_aSections[1].m_nType);  // appended "otherwise"
  EXPECT_EQ(S::opOtherwise, f.m_aSections[1].m_nOperator);
}

// The implicit sections and conditions that a short format gets. Each section is
// written as operator and type: operators ">", ">=", "<", "=", "*" (otherwise) and "-"
// (none); types N (number), G (General), T (text) and U (undetermined).
struct TImplicitCase {
  const char16_t* pwszFormat;
  const char* pszSections[4];
};

// clang-format off
const TImplicitCase kImplicitCases[] = {
    {u"0", {"*N", "-U", "-U", "-U"}}, {u"0;-0", {">=N", "<N", "-U", "-U"}},
    {u"[>100]0", {">N", "*G", "-U", "-U"}}, {u"0;[<0]0", {">N", "<N", "*G", "-U"}},
    {u"[>=0]0;0", {">=N", "<N", "-U", "-U"}}, {u"[=0]0;0", {"=N", "*N", "-U", "-U"}},
    {u"[>1]0;[<-1]0", {">N", "<N", "*G", "-U"}}, {u"0;0;@", {">=N", "<N", "*T", "-U"}},
    {u"0;0;0", {">N", "<N", "*N", "-U"}}, {u"0;0;0;@", {">N", "<N", "*N", "*T"}},
    {u";;;", {">N", "<N", "*N", "*T"}},
};
// clang-format on

std::string Describe(const S& section) {
  static const char* const kOperators[] = {"<=", ">=", "<>", "<", "=", ">", "*", "-"};
  const int nOp = section.m_nOperator, nType = section.m_nType;
  return std::string(nOp >= 0 && nOp <= S::opNone ? kOperators[nOp] : "?") +
         (nType == S::ftNumber         ? 'N'
          : nType == S::ftGeneral      ? 'G'
          : nType == S::ftText         ? 'T'
          : nType == S::ftUndetermined ? 'U'
                                       : '?');
}

TEST(ValFormatParse, ImplicitSections) {
  for (const TImplicitCase& c : kImplicitCases) {
    SCOPED_TRACE(Narrow(c.pwszFormat));
    CValFormat f;
    ASSERT_EQ(1, f.Parse(c.pwszFormat, nullptr, ptEnglish));
    for (int k = 0; k < 4; ++k) EXPECT_EQ(c.pszSections[k], Describe(f.m_aSections[k])) << k;
  }
}

// Each bad format with the index of the character where parsing stops.
struct TFailureCase {
  const char16_t* pwszFormat;
  int nPos;
};

// clang-format off
const TFailureCase kFailureCases[] = {
    {u"@;0", 1},  // text must be the last section
    {u"0;0;0;0", 7},  // a fourth section that is neither text nor General
    {u"0;0;0;@;0", 7},  // a fifth section (the ';' after a text section)
    {u"[Color57]0", 6},  // colour numbers run 1..56
    {u"[Color0]0", 6},  {u"[Red][Blue]0", 5},  // a second colour
    {u"[>1][<5]0", 4},  // a second condition
    {u"[>]0", 2},  // a condition needs a number
    {u"[Purple]0", 0},  // unknown bracket content
    {u"[h", 2},  // missing ']'
    {u"# ?/", 4},  // a fraction without a denominator
    {u"# ?/16?", 6},  // a placeholder after a fixed denominator
    {u"# ?/?0", 5},  // '0' after a '?' in the denominator
    {u"0.0E0", 4},  // 'E' without '+' or '-'
    {u"\"abc", 0},  // unclosed quote
    {u"0\\", 1},  // trailing backslash
    {u"0*", 1},  // trailing fill
    {u"*-0*+", 3},  // a second fill
    {u"[>0]@", 4},  // '@' with a condition
    {u"0 General", 2},  // General after other codes
    {u"0 d", 2},  // a date code in a numeric section
    {u"yyyy 0", 5},  // a placeholder in a date section
    {u"0 h", 2},  // a time code in a numeric section
    {u"[$-G]0", 3},  // a locale id that is not hexadecimal
    {u"@ 0", 2},  // a placeholder in a text section
};
// clang-format on

TEST(ValFormatParse, FailuresReportTheirPosition) {
  for (const TFailureCase& c : kFailureCases) {
    SCOPED_TRACE(Narrow(c.pwszFormat));
    CValFormat f;
    int nPos = -1;
    EXPECT_EQ(0, f.Parse(c.pwszFormat, &nPos, ptEnglish));
    EXPECT_EQ(c.nPos, nPos);
  }
}

TEST(ValFormatParse, UnparseRoundTrip) {
  // clang-format off
  const char16_t* apwsz[] = {
      u"0.00", u"#,##0", u"#,##0.00_);[Red]\\(#,##0.00\\)", u"0.0,,", u"0%", u"0.00E+00",
      u"##0.0e-0", u"# ?/16", u"# ?\?/?\?", u"[h]:mm:ss.00", u"yyyy-mm-dd hh:mm:ss AM/PM",
      u"[$\u20AC-407]#,##0.00", u"[Color12][>=100]\"big\"* 0;[Blue]0", u"_-* #,##0_-;-@",
      u"dddd, mmmm d, yyyy", u"General;-General", u"mm:ss.0", u"0;0;0;\"t\"@"};
  // clang-format on
  for (const char16_t* pwsz : apwsz) {
    SCOPED_TRACE(Narrow(pwsz));
    CValFormat a, b;
    ASSERT_EQ(1, a.Parse(pwsz, nullptr, ptEnglish));
    const std::u16string strText = a.Unparse(ptEnglish);
    ASSERT_EQ(1, b.Parse(strText.c_str(), nullptr, ptEnglish));
    EXPECT_EQ(0, a.Compare(b));
    EXPECT_EQ(strText, b.Unparse(ptEnglish));
  }
}

TEST(ValFormatParse, StoredLayoutRoundTripAndCorruptRecords) {
  CValFormat f;
  ASSERT_EQ(1, f.Parse(u"[Red][>=1]#,##0.00\"x\";[h]:mm:ss.0;@", nullptr, ptEnglish));
  std::vector<unsigned char> bytes;
  {
    CPelArchive out(bytes);
    ASSERT_TRUE(f.SerializeCB(out));
  }
  CValFormat g;
  {
    CPelArchive in(bytes.data(), bytes.size());
    ASSERT_TRUE(g.SerializeCB(in));
    EXPECT_EQ(0u, in.Remaining());
  }
  EXPECT_EQ(0, f.Compare(g));
  EXPECT_EQ(f.m_aSections[1].m_nSecPrecision, g.m_aSections[1].m_nSecPrecision);
  // Every truncation fails without reading past the end.
  for (std::size_t n = 0; n < bytes.size(); ++n) {
    CPelArchive in(bytes.data(), n);
    CValFormat h;
    EXPECT_FALSE(h.SerializeCB(in)) << "truncated at " << n;
  }
  // The first section's token count sits after count(4) type(4) op(4) cond(8) flags(2)
  // colour(4) number(2) scale(2) denominator(4) = byte 34.
  auto corrupt = [&](std::size_t nAt, unsigned char b) {
    std::vector<unsigned char> bad = bytes;
    bad[nAt] = b;
    CPelArchive in(bad.data(), bad.size());
    CValFormat h;
    return h.SerializeCB(in);
  };
  EXPECT_FALSE(corrupt(0, 5));      // five sections
  EXPECT_FALSE(corrupt(34, 0xFF));  // token count past the record
  EXPECT_FALSE(corrupt(34, 0));     // no tokens, not even the end code
  EXPECT_FALSE(corrupt(36, 99));    // an unknown token code
  EXPECT_FALSE(corrupt(4, 9));      // type 9 is not a type
}

}  // namespace
