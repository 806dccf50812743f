#include <gtest/gtest.h>

#include <string>

#include "base/SSString.h"
#include "base/WideString.h"
#include "platform/Resources.h"

namespace {

using std::u16string;

TEST(WideStringTest, AllocationAndTheSharedEmptyText) {
  StringDeleteW(g_wszEmpty);  // no-ops: the sanitizer would report a bad free
  StringFreeW(g_wszEmpty);
  StringDeleteW(nullptr);
  StringDelete(reinterpret_cast<char*>(g_wszEmpty));
  EXPECT_EQ(0, g_wszEmpty[0]);

  char16_t* p = StringNewW(u"abcdef", 3);
  EXPECT_EQ(u16string(u"abc"), p);
  StringRenewW(&p, p + 1);  // the source lies in the buffer being replaced
  EXPECT_EQ(u16string(u"bc"), p);
  StringRenewW(&p, 4);
  EXPECT_EQ(0, p[0]);
  EXPECT_EQ(0, p[4]);
  StringDeleteW(p);

  char16_t* pShort = StringNewW(u"ab", 5);  // the text ends first: the rest is zero
  EXPECT_EQ(u16string(u"ab"), pShort);
  EXPECT_EQ(0, pShort[5]);
  StringDeleteW(pShort);

  char16_t* pm = StringMallocW(nullptr);
  EXPECT_EQ(0, pm[0]);
  StringReallocW(&pm, u"xyz");
  EXPECT_EQ(u16string(u"xyz"), pm);
  StringFreeW(pm);

  char* psz = StringNew("hello", 4);
  EXPECT_STREQ("hell", psz);
  StringRenew(&psz, psz + 2);
  EXPECT_STREQ("ll", psz);
  StringDelete(psz);
}

TEST(WideStringTest, MeasuringAndCopying) {
  EXPECT_EQ(0, strlenW(nullptr));
  EXPECT_EQ(2, strsizeW(u""));
  char16_t buf[16];
  EXPECT_EQ(buf + 2, straddW(buf, u"ab"));  // the end, for chaining
  strcatW(buf, u"cb");
  EXPECT_EQ(buf + 4, strchrW(buf, u'\0'));
  EXPECT_EQ(buf + 3, strrchrW(buf, u'b'));
  EXPECT_EQ(nullptr, strchrW(buf, u'z'));
}

TEST(WideStringTest, Comparisons) {
  struct TCase {
    const char16_t* pA;
    const char16_t* pB;
    int nExact, nNoCase, nNoCaseWidth;  // signs
  };
  constexpr TCase kCases[] = {
      {u"abc", u"abc", 0, 0, 0},
      {u"abc", u"ABC", 1, 0, 0},
      {u"ab", u"abc", -1, -1, -1},  // a prefix is the smaller
      {u"abd", u"ABC", 1, 1, 1},
      {u"\uFF41b", u"AB", 1, 1, 0},     // full-width a
      {u"\u00E9", u"\u00C9", 1, 0, 0},  // beyond ASCII: e acute
      {u"", u"", 0, 0, 0},
  };
  const auto Sign = [](int n) { return n < 0 ? -1 : n > 0 ? 1 : 0; };
  for (const TCase& c : kCases) {
    SCOPED_TRACE(&c - kCases);
    EXPECT_EQ(c.nExact, Sign(strqcmpW(c.pA, c.pB)));
    EXPECT_EQ(-c.nExact, Sign(strqcmpW(c.pB, c.pA)));
    EXPECT_EQ(c.nNoCase, Sign(strcmpiW(c.pA, c.pB)));
    EXPECT_EQ(c.nNoCaseWidth, Sign(strxicmpW(c.pA, c.pB)));
  }
}

TEST(WideStringTest, CharactersAndWidth) {
  EXPECT_EQ(u'\u0411', toupperW(u'\u0431'));         // Cyrillic be
  EXPECT_TRUE(isctypeW(u'x', C1_UPPER | C1_LOWER));  // any of the classes
  EXPECT_FALSE(isctypeW(u'x', C1_UPPER | C1_DIGIT));
  EXPECT_TRUE(isctypeW(u'F', C1_XDIGIT));
  EXPECT_FALSE(isctypeW(u'G', C1_XDIGIT));
  char16_t buf[8] = u"\uFF21\uFF42\u3000c";
  EXPECT_EQ(4, full2halfW(buf, buf));
  EXPECT_EQ(u16string(u"Ab c"), buf);
  EXPECT_TRUE(IsAsciiString(u"abc~"));
  EXPECT_FALSE(IsAsciiString(u"ab\u0080"));
  EXPECT_TRUE(IsAsciiString(u"ab\u0080", 2));
}

TEST(WideStringTest, TokensIgnoreCaseOfDelimiters) {
  char16_t buf[] = u"xxoneXtwoxXthree";
  char16_t* pContext = nullptr;
  std::u16string joined;
  for (char16_t* p = cistrtokW(buf, u"x", &pContext); p; p = cistrtokW(nullptr, u"x", &pContext)) {
    joined += p;
    joined += u'|';
  }
  EXPECT_EQ(u16string(u"one|two|three|"), joined);
}

TEST(WideStringTest, Formatting) {
  struct TCase {
    u16string expected;
    int nResult;
  };
  char16_t buf[64];
  const auto Run = [&buf](auto... args) {
    const int n = sprintfW(buf, 64, args...);
    return TCase{u16string(buf), n};
  };
  const auto Check = [](const TCase& got, const u16string& expected) {
    EXPECT_EQ(expected, got.expected);
    EXPECT_EQ(static_cast<int>(expected.size()), got.nResult);
  };
  Check(Run(u"%d|%5d|%-5d|%05d", 42, -42, 7, -3), u"42|  -42|7    |-0003");
  Check(Run(u"%u %x %X %lld", 4000000000u, 255u, 255u, -9000000000LL),
        u"4000000000 ff FF -9000000000");
  Check(Run(u"[%s][%.2s][%6s][%-4s]", u"text", u"text", u"ab", u"ab"), u"[text][te][    ab][ab  ]");
  Check(Run(u"%hs and %s", "bytes", static_cast<const char16_t*>(nullptr)), u"bytes and (null)");
  Check(Run(u"%c%c 100%%", u'\u00E9', u'x'), u"\u00E9x 100%");
  Check(Run(u"%.2f %e %g", 2.5, 1500.0, 0.25), u"2.50 1.500000e+03 0.25");
  Check(Run(u"%*d|%.*f", 4, 1, 1, 0.25), u"   1|0.2");

  // Cut at the buffer: terminated, reported.
  char16_t small[4];
  EXPECT_EQ(-1, sprintfW(small, 4, u"%d", 12345));
  EXPECT_EQ(u16string(u"123"), small);
  EXPECT_EQ(3, sprintfW(small, 4, u"%d", 123));
  EXPECT_EQ(-1, sprintfW(buf, 64, u"bad %q"));
  EXPECT_EQ(-1, sprintfW(buf, 64, u"end %"));
}

TEST(WideStringTest, FileExtensions) {
  struct TCase {
    const char16_t* pwszPath;
    bool bFound;
    const char16_t* pwszExt;
  };
  constexpr TCase kCases[] = {
      {u"book.xls", true, u"xls"},
      {u"C:\\dir.d\\book", false, u""},  // the dot belongs to a folder
      {u"/a.b/c.tar.gz", true, u"gz"},
      {u"name.", false, u""},
      {u".profile", true, u"profile"},
      {u"book.verylongextension", true, u"verylon"},  // cut to the buffer
  };
  for (const TCase& c : kCases) {
    SCOPED_TRACE(&c - kCases);
    char16_t ext[8] = u"junk";
    EXPECT_EQ(c.bFound, GetFileExt(c.pwszPath, ext, 8));
    EXPECT_EQ(u16string(c.pwszExt), ext);
  }
}

TEST(WideStringTest, StringHolders) {
  CSSString s;
  EXPECT_EQ(g_wszEmpty, s.GetString());
  s.Set(u"abc");
  for (int i = 0; i < 1000; ++i) s.Append(u'x');
  EXPECT_EQ(1003, s.GetLength());
  s.Append(s.GetString(), 3);  // from its own text
  EXPECT_EQ(u16string(u"abc"), u16string(s.GetString() + 1003));
  s.Set(s.GetString() + 1, 2);
  EXPECT_EQ(u16string(u"bc"), s.GetString());
  CSSString copy(s);
  CSSString moved(std::move(copy));
  EXPECT_EQ(0, moved.Compare(u"bc"));
  EXPECT_EQ(0, moved.CompareNoCase(u"BC"));
  char16_t* p = s.GetBuffer(10);
  strcpyW(p, u"0123456789");
  s.ReleaseBuffer();
  EXPECT_EQ(10, s.GetLength());
  char16_t* pDetached = s.Detach();
  EXPECT_TRUE(s.IsEmpty());
  StringDeleteW(pDetached);

  char16_t buf[4];
  CLiteString lite(buf, 4);
  EXPECT_TRUE(lite.Set(u"ab"));
  EXPECT_FALSE(lite.Append(u"cd"));  // one unit of room left
  EXPECT_EQ(u16string(u"abc"), buf);
  EXPECT_EQ(3, lite.GetLength());

  CResourceString missing;
  EXPECT_FALSE(missing.Load(1));
  EXPECT_TRUE(missing.IsEmpty());
}

}  // namespace
