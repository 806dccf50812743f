#include <gtest/gtest.h>

#include <random>
#include <string>
#include <vector>

#include "base/Wildcard.h"

namespace {

using std::u16string;

// ---- Reference matchers: slow, obviously right, independent of the platform --------

// Folding restricted to the alphabets below: ASCII letters and full-width forms.
char16_t RefFold(char16_t c, bool bCase, bool bWidth) {
  if (bWidth && c >= 0xFF01 && c <= 0xFF5E) c = static_cast<char16_t>(c - 0xFEE0);
  if (bCase && c >= u'a' && c <= u'z') c = static_cast<char16_t>(c - 0x20);
  if (bCase && c >= 0xFF41 && c <= 0xFF5A) c = static_cast<char16_t>(c - 0x20);
  return c;
}

struct TRefToken {
  enum EKind { kStar, kAny, kLiteral } nKind;
  char16_t c;
};

std::vector<TRefToken> RefTokens(const u16string& pattern) {
  std::vector<TRefToken> tokens;
  for (size_t i = 0; i < pattern.size(); ++i) {
    if (pattern[i] == u'~') {
      if (i + 1 == pattern.size()) break;  // a final "~" ends the pattern
      tokens.push_back({TRefToken::kLiteral, pattern[++i]});
    } else if (pattern[i] == u'*') {
      tokens.push_back({TRefToken::kStar, 0});
    } else if (pattern[i] == u'?') {
      tokens.push_back({TRefToken::kAny, 0});
    } else {
      tokens.push_back({TRefToken::kLiteral, pattern[i]});
    }
  }
  return tokens;
}

// Whole-text match of text[from, to) by dynamic programming.
bool RefMatch(const std::vector<TRefToken>& tokens, const u16string& text, size_t from, size_t to,
              bool bCase, bool bWidth) {
  const size_t n = to - from;
  // can[j]: the tokens so far match the first j characters.
  std::vector<bool> can(n + 1, false);
  can[0] = true;
  for (const TRefToken& tok : tokens) {
    std::vector<bool> next(n + 1, false);
    for (size_t j = 0; j <= n; ++j) {
      if (tok.nKind == TRefToken::kStar) {
        next[j] = can[j] || (j > 0 && next[j - 1]);
      } else if (j > 0 && can[j - 1]) {
        next[j] = tok.nKind == TRefToken::kAny ||
                  RefFold(tok.c, bCase, bWidth) == RefFold(text[from + j - 1], bCase, bWidth);
      }
    }
    can = next;
  }
  return can[n];
}

bool RefCompare(const u16string& text, const u16string& pattern, bool bSearch, bool bCase,
                bool bWidth) {
  const std::vector<TRefToken> tokens = RefTokens(pattern);
  for (size_t s = 0; s <= (bSearch ? text.size() : 0); ++s) {
    if (RefMatch(tokens, text, s, text.size(), bCase, bWidth)) return true;
  }
  return false;
}

// Leftmost start, then shortest run; a final star takes the rest. -1 when none.
int RefFind(const u16string& text, const u16string& pattern, bool bCase, bool bWidth,
            int* pnLength) {
  const std::vector<TRefToken> tokens = RefTokens(pattern);
  const bool bFinalStar = !tokens.empty() && tokens.back().nKind == TRefToken::kStar;
  for (size_t s = 0; s <= text.size(); ++s) {
    for (size_t e = s; e <= text.size(); ++e) {
      if (RefMatch(tokens, text, s, e, bCase, bWidth)) {
        *pnLength = static_cast<int>((bFinalStar ? text.size() : e) - s);
        return static_cast<int>(s);
      }
    }
  }
  return -1;
}

// StrMatch's own rule, written the way it reads: a star that is not last tries the
// rest only where a text character remains.
bool RefStrMatch(const u16string& pattern, size_t p, const u16string& text, size_t t) {
  if (p == pattern.size()) return t == text.size();
  if (pattern[p] == u'*') {
    if (p + 1 == pattern.size()) return true;
    for (size_t u = t; u < text.size(); ++u) {
      if (RefStrMatch(pattern, p + 1, text, u)) return true;
    }
    return false;
  }
  if (t == text.size()) return false;
  return (pattern[p] == u'?' ||
          RefFold(pattern[p], true, false) == RefFold(text[t], true, false)) &&
         RefStrMatch(pattern, p + 1, text, t + 1);
}

// ASCII texts for failure messages.
std::string Narrow(const u16string& s) { return std::string(s.begin(), s.end()); }

u16string RandomText(std::mt19937& rng, const u16string& alphabet, int nMaxLength) {
  u16string s(std::uniform_int_distribution<int>(0, nMaxLength)(rng), u' ');
  std::uniform_int_distribution<size_t> pick(0, alphabet.size() - 1);
  for (char16_t& c : s) c = alphabet[pick(rng)];
  return s;
}

// ---- StrMatch -------------------------------------------------------------------------

TEST(WildcardTest, StrMatchRules) {
  // clang-format off
  struct TCase { const char16_t* pwszPattern; const char16_t* pwszText; bool bMatch; };
  constexpr TCase kCases[] = {
      {u"A*", u"abc", true},
      {u"a*", u"a", true},  // a final star matches the rest at once, even nothing
      {u"a**", u"a", false},  // the second star finds no text left to try
      {u"?", u"", false},  // "?" never matches the end
      {u"", u"", true}, {u"*", u"", true}, {u"**", u"", false}, {u"*b", u"b", true},
      {u"a?c", u"ABC", true},
      {u"~*", u"~x", true},  // no escape character: "~" is literal
      {u"*a*b*", u"xxaxxbxx", true},
  };
  // clang-format on
  for (const TCase& c : kCases) {
    SCOPED_TRACE(Narrow(c.pwszPattern) + " / " + Narrow(c.pwszText));
    EXPECT_EQ(c.bMatch, StrMatch(c.pwszPattern, c.pwszText));
  }
}

TEST(WildcardTest, StrMatchAgreesWithReference) {
  std::mt19937 rng(20240611);
  for (int i = 0; i < 20000; ++i) {
    const u16string pattern = RandomText(rng, u"ab*?A", 7);
    const u16string text = RandomText(rng, u"abAB", 8);
    ASSERT_EQ(RefStrMatch(pattern, 0, text, 0), StrMatch(pattern.c_str(), text.c_str()))
        << "case " << i;
  }
}

// ---- Escaping comparisons -------------------------------------------------------------

TEST(WildcardTest, CmpWildcardRules) {
  // clang-format off
  struct TCase { const char16_t* pwszText; const char16_t* pwszPattern; int bSearch; bool bMatch; };
  constexpr TCase kCases[] = {
      {u"a", u"a**", 0, true},  // unlike StrMatch, runs of stars behave as one
      {u"abc", u"bc", 1, true},  // search mode: the match may start later
      {u"abc", u"b", 1, false},  // but it must still reach the end
      {u"a*c", u"a~*c", 0, true}, {u"a?", u"a~?", 0, true},
      {u"a~", u"a~~", 0, true}, {u"ab", u"ab~", 0, true},  // a final "~" ends the pattern there
      {u"ab~", u"ab~", 0, false}, {u"", u"*", 0, true},
      {u"x", u"", 1, true},  // restarted at the end, the empty pattern matches
  };
  // clang-format on
  for (const TCase& c : kCases) {
    EXPECT_EQ(c.bMatch, CmpWildcard(c.pwszText, c.pwszPattern, c.bSearch) == 0)
        << Narrow(c.pwszText) << " / " << Narrow(c.pwszPattern);
  }
  EXPECT_NE(0, CmpxiWildcard(u"abc", u"a\uFF0A"));  // a full-width star is no wildcard
}

// Every form, whole-text and search comparisons and the leftmost shortest find, against
// the reference matchers.
TEST(WildcardTest, ComparisonsAndFindAgreeWithReference) {
  std::mt19937 rng(987654321);
  using TCmp = int (*)(const char16_t*, const char16_t*, int);
  using TFind = const char16_t* (*)(const char16_t*, const char16_t*, int*);
  struct TForm {
    TCmp pfnCompare;
    TFind pfnFind;
    bool bCase, bWidth;
  };
  const TForm kForms[] = {{CmpWildcard, StrStrWildcard, false, false},
                          {CmpiWildcard, StrStriWildcard, true, false},
                          {CmpxWildcard, StrStrxWildcard, false, true},
                          {CmpxiWildcard, StrStrxiWildcard, true, true}};
  for (int i = 0; i < 6000; ++i) {
    const u16string pattern = RandomText(rng, u"ab*?~A\uFF41\uFF22", 7);
    const u16string text = RandomText(rng, u"abAB*?~\uFF41\uFF22", 8);
    for (const TForm& f : kForms) {
      SCOPED_TRACE(testing::Message() << "case " << i << " form " << (&f - kForms));
      for (int bSearch = 0; bSearch < 2; ++bSearch) {
        ASSERT_EQ(RefCompare(text, pattern, bSearch, f.bCase, f.bWidth),
                  f.pfnCompare(text.c_str(), pattern.c_str(), bSearch) == 0)
            << "search " << bSearch;
      }
      int nRefLength = -1, nLength = -1;
      const int nRefStart = RefFind(text, pattern, f.bCase, f.bWidth, &nRefLength);
      const char16_t* pFound = f.pfnFind(text.c_str(), pattern.c_str(), &nLength);
      ASSERT_EQ(nRefStart, pFound ? static_cast<int>(pFound - text.c_str()) : -1);
      if (pFound) {
        ASSERT_EQ(nRefLength, nLength);
      }
    }
  }
}

// Without wildcards the mismatch result orders text against pattern like a plain
// comparison: 1 when the text is the greater.
TEST(WildcardTest, MismatchOrdersLikeComparison) {
  std::mt19937 rng(4242);
  for (int i = 0; i < 5000; ++i) {
    const u16string pattern = RandomText(rng, u"abcAB", 5);
    const u16string text = RandomText(rng, u"abcAB", 5);
    u16string foldedText, foldedPattern;
    for (char16_t c : text) foldedText += RefFold(c, true, false);
    for (char16_t c : pattern) foldedPattern += RefFold(c, true, false);
    const int nExpected = foldedText == foldedPattern ? 0 : foldedText > foldedPattern ? 1 : -1;
    ASSERT_EQ(nExpected, CmpiWildcard(text.c_str(), pattern.c_str())) << "case " << i;
  }
}

TEST(WildcardTest, FindFromStart) {
  struct TCase {
    const char16_t* pwszText;
    const char16_t* pwszPattern;
    int nStart;
    int nExpected;
  };
  // clang-format off
  constexpr TCase kCases[] = {
      {u"abcabc", u"B?", 0, 1}, {u"abcabc", u"B?", 1, 1},
      {u"abcabc", u"B?", 2, 4}, {u"abcabc", u"B?", 5, -1},  // "c" left: no match
      {u"abcabc", u"c", 5, 5},  // the last character is a valid start
      {u"abcabc", u"c", 6, -1},  // the end is not
      {u"abcabc", u"a", -1, -1}, {u"", u"", 0, -1},  // an empty text has no valid start
      {u"x\uFF21y", u"a", 0, 1},  // width and case folded
  };
  // clang-format on
  for (const TCase& c : kCases) {
    EXPECT_EQ(c.nExpected, StrStrxiWildcardC(c.pwszText, c.pwszPattern, c.nStart))
        << "case " << (&c - kCases);
  }
  int nLength = 0;
  EXPECT_EQ(2, StrStrxiWildcardC(u"xxabcx", u"a*c", 0, &nLength));
  EXPECT_EQ(3, nLength);
}

}  // namespace
