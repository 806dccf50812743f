// Width folding, kana mapping, case and the case-insensitive comparison.
#include <gtest/gtest.h>

#include <string>

#include "platform/Locale.h"
#include "platform/TextServices.h"

namespace {

std::u16string Map(unsigned nFlags, const std::u16string& strSrc) {
  const int nSrc = static_cast<int>(strSrc.size());
  const int nNeeded = MapString(nFlags, strSrc.data(), nSrc, nullptr, 0);
  if (nNeeded == 0) return u"<fail>";
  std::u16string strOut(static_cast<std::size_t>(nNeeded), u'\0');
  if (MapString(nFlags, strSrc.data(), nSrc, strOut.data(), nNeeded) != nNeeded) return u"<short>";
  return strOut;
}

TEST(TextServices, WidthFoldingOfSingleUnits) {
  // Both ends of the full-width ASCII block and one step outside it.
  struct {
    char16_t cFull, cHalf;
  } const kPairs[] = {{0xFF01, u'!'},   {0xFF21, u'A'},   {0xFF5E, u'~'},   {0x3000, u' '},
                      {0x30A2, 0xFF71}, {0x30F2, 0xFF66}, {0x30F3, 0xFF9D}, {0x3002, 0xFF61},
                      {0x309B, 0xFF9E}, {0x309C, 0xFF9F}, {0x30FC, 0xFF70}, {0xFFE5, 0x00A5}};
  for (const auto& pair : kPairs) {
    SCOPED_TRACE(static_cast<int>(pair.cFull));
    EXPECT_EQ(pair.cHalf, FullToHalfWidthChar(pair.cFull));
    EXPECT_EQ(pair.cFull, HalfToFullWidthChar(pair.cHalf));
  }
  for (char16_t c : {char16_t{0xFF00}, char16_t{0xFF5F}, char16_t{0x30AC}, char16_t{0xAC00}})
    EXPECT_EQ(c, FullToHalfWidthChar(c));  // outside the tables, or voiced: stays
  for (char16_t c : {char16_t{0x7F}, char16_t{0x1F}, char16_t{0xFFA0}})
    EXPECT_EQ(c, HalfToFullWidthChar(c));
  // Every full-width ASCII unit comes back to itself.
  for (char16_t c = 0xFF01; c <= 0xFF5E; ++c)
    EXPECT_EQ(c, HalfToFullWidthChar(FullToHalfWidthChar(c)));
}

struct TMapCase {
  unsigned nFlags;
  const char16_t* pwszSrc;
  const char16_t* pwszExpected;
};

constexpr TMapCase kMaps[] = {
    {LCMAP_HALFWIDTH, u"\uFF21\uFF42\u3000\uFF11", u"Ab 1"},
    {LCMAP_FULLWIDTH, u"Ab 1", u"\uFF21\uFF42\u3000\uFF11"},
    // Voiced katakana split into base plus sound mark, and join again.
    {LCMAP_HALFWIDTH, u"\u30AC\u30D1\u30F4", u"\uFF76\uFF9E\uFF8A\uFF9F\uFF73\uFF9E"},
    {LCMAP_FULLWIDTH, u"\uFF76\uFF9E\uFF8A\uFF9F\uFF73\uFF9E", u"\u30AC\u30D1\u30F4"},
    // A sound mark after a base that takes none stays a separate mark.
    {LCMAP_FULLWIDTH, u"\uFF71\uFF9E", u"\u30A2\u309B"},
    {LCMAP_FULLWIDTH, u"\uFF76\uFF9F", u"\u30AB\u309C"},
    {LCMAP_KATAKANA, u"\u3042\u304C", u"\u30A2\u30AC"},
    {LCMAP_HIRAGANA, u"\u30A2\u30AC\u30F5", u"\u3042\u304C\u3095"},
    {LCMAP_HIRAGANA | LCMAP_FULLWIDTH, u"\uFF76\uFF9E", u"\u304C"},
    {LCMAP_KATAKANA | LCMAP_HALFWIDTH, u"\u304C", u"\uFF76\uFF9E"},
    {LCMAP_UPPERCASE, u"stra\u00DFe \u00E9", u"STRA\u00DFE \u00C9"},  // simple mapping only
    {LCMAP_LOWERCASE, u"ABC\u0130", u"abci"},
    {LCMAP_UPPERCASE | LCMAP_HALFWIDTH, u"\uFF41b", u"AB"},
    {LCMAP_UPPERCASE | LCMAP_LOWERCASE, u"a", u"<fail>"},
    {LCMAP_HALFWIDTH | LCMAP_FULLWIDTH, u"a", u"<fail>"},
    {0x1, u"a", u"<fail>"},
};

TEST(TextServices, MapString) {
  for (const TMapCase& c : kMaps) {
    SCOPED_TRACE(testing::Message() << std::hex << c.nFlags);
    EXPECT_EQ(std::u16string(c.pwszExpected), Map(c.nFlags, c.pwszSrc));
  }
}

TEST(TextServices, MapStringSizesAndTerminator) {
  char16_t buf[8];
  EXPECT_EQ(3, MapString(LCMAP_UPPERCASE, u"ab", -1, nullptr, 0));  // with terminator
  ASSERT_EQ(3, MapString(LCMAP_UPPERCASE, u"ab", -1, buf, 3));
  EXPECT_EQ(std::u16string(u"AB"), buf);
  EXPECT_EQ(0, MapString(LCMAP_UPPERCASE, u"ab", -1, buf, 2));     // one too few
  EXPECT_EQ(0, MapString(LCMAP_HALFWIDTH, u"\u30AC", 1, buf, 1));  // the split needs two
  EXPECT_EQ(0, MapString(LCMAP_UPPERCASE, u"ab", 0, buf, 8));
  EXPECT_EQ(0, MapString(LCMAP_UPPERCASE, nullptr, 2, buf, 8));
}

TEST(TextServices, CaseAndClasses) {
  EXPECT_EQ(u'A', ToUpperChar(u'a'));
  EXPECT_EQ(u'\u00C9', ToUpperChar(u'\u00E9'));
  EXPECT_EQ(u'\u00DF', ToUpperChar(u'\u00DF'));                // no one-unit upper case
  EXPECT_EQ(char16_t{0xD801}, ToUpperChar(char16_t{0xD801}));  // surrogates stay
  EXPECT_EQ(u'\u0434', ToLowerChar(u'\u0414'));
  EXPECT_TRUE(IsLetterChar(u'\uAC00'));
  EXPECT_FALSE(IsLetterChar(u'1'));
  EXPECT_TRUE(IsDigitChar(u'\uFF19'));
  EXPECT_TRUE(IsDigitChar(u'\u0669'));
  EXPECT_FALSE(IsDigitChar(u'\u00B2'));  // a superscript is not a decimal digit
  EXPECT_TRUE(IsSpaceChar(u'\u3000'));
  EXPECT_FALSE(IsSpaceChar(u'x'));
  EXPECT_FALSE(IsUpperChar(u'q'));
  EXPECT_TRUE(IsLowerChar(u'q'));
  EXPECT_TRUE(IsPunctChar(u'\u3002'));
  EXPECT_FALSE(IsPunctChar(u'a'));
}

int Sign(int n) { return (n > 0) - (n < 0); }

struct TCompareCase {
  const char16_t* pwszA;
  const char16_t* pwszB;
  int nSign;
};

constexpr TCompareCase kCompares[] = {
    {u"abc", u"ABC", 0},       {u"\u00E9t\u00E9", u"\u00C9T\u00C9", 0},
    {u"a", u"B", -1},  // case-insensitive: not code-unit order
    {u"B", u"a", 1},           {u"", u"", 0},
    {u"", u"a", -1},           {u"ab", u"abc", -1},
    {u"a\u0001", u"a", 1},      // collation ignores the control; equality must not
    {u"A", u"\uFF21", -1},      // width matters
    {u"e", u"\u00E9", -1},      // accents matter
    {u"10", u"9", -1},          // text, not numbers
    {u"\u00DF", u"SS", 1},      // simple folding: sharp s is not "ss"
    {u"\u00DF", u"\u1E9E", 0},  // but equals its capital
    {u"\u03A3", u"\u03C2", 0},  // final sigma folds with capital sigma
};

TEST(TextServices, CompareStringNoCase) {
  for (const TCompareCase& c : kCompares) {
    SCOPED_TRACE(testing::Message() << "row " << (&c - kCompares));
    EXPECT_EQ(c.nSign, Sign(CompareStringNoCase(c.pwszA, c.pwszB)));
    EXPECT_EQ(-c.nSign, Sign(CompareStringNoCase(c.pwszB, c.pwszA)));
  }
  EXPECT_EQ(0, CompareStringNoCase(u"abX", 2, u"ABY", 2));  // counted texts
  EXPECT_EQ(0, CompareStringNoCase(nullptr, u""));
}

// Every pair from a small alphabet orders consistently: antisymmetric, and
// transitive over every triple, as a sort needs.
TEST(TextServices, CompareStringNoCaseIsAnOrder) {
  const std::u16string kTexts[] = {u"a",  u"A",       u"\uFF41", u"\uFF21", u"\u00E1", u"b",
                                   u"ab", u"a\u0001", u"-a",     u"a-",     u"",       u"\u00C1"};
  for (const char* pszLocale : {"en-US", "de-DE", "ko-KR"}) {
    SCOPED_TRACE(pszLocale);
    ASSERT_TRUE(SetLocale(pszLocale));
    for (const auto& a : kTexts)
      for (const auto& b : kTexts) {
        const int nAB = Sign(CompareStringNoCase(a.c_str(), b.c_str()));
        ASSERT_EQ(-nAB, Sign(CompareStringNoCase(b.c_str(), a.c_str())));
        for (const auto& c : kTexts) {
          const int nBC = Sign(CompareStringNoCase(b.c_str(), c.c_str()));
          if (nAB <= 0 && nBC <= 0) {
            ASSERT_LE(CompareStringNoCase(a.c_str(), c.c_str()), 0);
          }
        }
      }
  }
  ASSERT_TRUE(SetLocale("en-US"));
}

}  // namespace
