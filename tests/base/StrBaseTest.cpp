#include <gtest/gtest.h>

#include "base/StrBase.h"
#include "platform/Locale.h"

namespace {

class StrBaseTest : public ::testing::Test {
 protected:
  void TearDown() override { SetLocale("en-US"); }
};

// One wide character that is double-byte in the locale's code page, with its bytes.
struct TDbcsLocale {
  const char* pszLocale;
  char16_t cWide;
  const char* pszBytes;
  unsigned nCode;
};
constexpr TDbcsLocale kDbcsLocales[] = {
    {"ko-KR", u'\uAC00', "\xB0\xA1", 0xB0A1},  // HANGUL SYLLABLE GA, code page 949
    {"ja-JP", u'\u3042', "\x82\xA0", 0x82A0},  // HIRAGANA A, code page 932
};

TEST_F(StrBaseTest, SingleByteCodePageCountsOneEach) {
  ASSERT_TRUE(SetLocale("en-US"));
  EXPECT_FALSE(CStrBase::DBCSMode());
  EXPECT_EQ(3, CStrBase::strbytes(u"a\uAC00b"));
  bool bHalf = true;
  const char16_t* pwsz = u"a\uAC00b";
  EXPECT_EQ(pwsz + 2, CStrBase::safestrnincbytesC(pwsz, 2, &bHalf));
  EXPECT_FALSE(bHalf);
  EXPECT_EQ(0xB0u, CStrBase::MBCHAR2Code("\xB0\xA1"));
  EXPECT_EQ(2, CStrBase::strlen("\xB0\xA1"));
}

TEST_F(StrBaseTest, DoubleByteCounting) {
  for (const TDbcsLocale& loc : kDbcsLocales) {
    SCOPED_TRACE(loc.pszLocale);
    ASSERT_TRUE(SetLocale(loc.pszLocale));
    EXPECT_TRUE(CStrBase::DBCSMode());
    const char16_t awszText[] = {u'a', loc.cWide, u'b', 0};  // "aDb"
    EXPECT_EQ(4, CStrBase::strbytes(awszText));
    EXPECT_EQ(3, CStrBase::strbytes(awszText, 2));
    EXPECT_EQ(2, CStrBase::charbytes(loc.cWide));
    EXPECT_EQ(1, CStrBase::charbytes(u'a'));

    // Advancing by bytes, one step each side of the double-byte character.
    struct TStep {
      int nBytes;
      int nChars;
      bool bHalf;
    };
    constexpr TStep kSteps[] = {{0, 0, false}, {1, 1, false}, {2, 1, true},
                                {3, 2, false}, {4, 3, false}, {9, 3, false}};
    for (const TStep& s : kSteps) {
      bool bHalf = !s.bHalf;
      const char16_t* p = CStrBase::safestrnincbytesC(awszText, s.nBytes, &bHalf);
      EXPECT_EQ(s.nChars, p - awszText) << s.nBytes << " bytes";
      EXPECT_EQ(s.bHalf, bHalf) << s.nBytes << " bytes";
    }

    const std::string text = std::string("a") + loc.pszBytes + "b";
    EXPECT_EQ(3, CStrBase::strlen(text.c_str()));
    EXPECT_EQ(loc.nCode, CStrBase::MBCHAR2Code(text.c_str() + 1));
    EXPECT_EQ(unsigned('a'), CStrBase::MBCHAR2Code(text.c_str()));
    EXPECT_TRUE(CStrBase::IsPtrToAnyLeadByte(text.c_str(), text.c_str() + 1));
    EXPECT_FALSE(CStrBase::IsPtrToAnyLeadByte(text.c_str(), text.c_str() + 2));  // the trail
    EXPECT_FALSE(CStrBase::IsPtrToAnyLeadByte(text.c_str(), text.c_str()));

    CPCTSTR cursor(text.c_str());
    EXPECT_EQ(loc.nCode, cursor.getat(1));
    EXPECT_EQ(unsigned('b'), cursor.getat(2));
    EXPECT_EQ(0u, cursor.getat(5));  // stops at the end
    cursor.preinc().preinc();
    EXPECT_EQ(unsigned('b'), cursor.getfirst());
    EXPECT_EQ(static_cast<unsigned char>(loc.pszBytes[1]), CPCTSTR(text.c_str()).gethalfat(2));

    // A lead byte right before the terminator is one byte.
    const char szCut[] = {loc.pszBytes[0], 0};
    EXPECT_EQ(szCut + 1, CStrBase::strinc(szCut));

    EXPECT_TRUE(CStrBase::IsValidCode(loc.nCode));
    EXPECT_FALSE(
        CStrBase::IsValidCode(static_cast<unsigned char>(loc.pszBytes[0])));  // a lone lead
    EXPECT_FALSE(CStrBase::IsValidCode(0));
    EXPECT_FALSE(CStrBase::IsValidCode(0x10000));
    EXPECT_EQ(loc.cWide, MAKEWCHAR(loc.nCode));
    EXPECT_EQ(loc.nCode, MAKECHAR(loc.cWide));
    EXPECT_EQ(unsigned('A'), MAKECHAR(u'A'));

    char16_t* pwsz = _MakeWSTR(text.c_str());
    EXPECT_EQ(std::u16string(awszText), std::u16string(pwsz));
    char* psz = _MakeSTR(pwsz);
    EXPECT_EQ(text, std::string(psz));
    StringDelete(psz);
    StringDeleteW(pwsz);
  }
}

TEST_F(StrBaseTest, UnrepresentableCharacters) {
  ASSERT_TRUE(SetLocale("ko-KR"));
  EXPECT_EQ(0u, MAKECHAR(u'\u0E01'));  // Thai: not in code page 949
  EXPECT_EQ(unsigned('?'), MAKECHAR(u'?'));
  EXPECT_EQ(1, CStrBase::charbytes(u'\u0E01'));  // written as "?"
}

}  // namespace
