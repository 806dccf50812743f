#include <gtest/gtest.h>

#include <string>

#include "base/StringBuilder.h"
#include "platform/CodePage.h"
#include "platform/Locale.h"

namespace {

// Capacity after each request on one slot: steps of 4096 below 4096, 512 from there.
TEST(StringBuilderTest, GrowthSteps) {
  struct TCase {
    int nLength;
    int nCapacityAfter;
  };
  constexpr TCase kSteps[] = {
      {0, 4096},     // a new slot gets one big step
      {4095, 4096},  // length + terminator fits exactly
      {4096, 4608},  // one unit more: one small step
      {5000, 5120},  // 4608 + 512
      {100, 5120},   // never shrinks
      {8200, 8704},  // six more small steps
      {8703, 8704}, {8704, 9216},
  };
  CStringBuilder builder;
  for (const TCase& c : kSteps) {
    char16_t* pBuf = builder.GetBufW(c.nLength, 0);
    ASSERT_NE(nullptr, pBuf);
    EXPECT_EQ(c.nCapacityAfter, builder.GetCapacity(0)) << "length " << c.nLength;
    pBuf[c.nLength] = 0;  // the terminator's place is there (the sanitizer checks)
  }
  EXPECT_EQ(0, builder.GetCapacity(1));  // slots are independent
  builder.GetBufW(5000, 2);              // a fresh slot's first big request
  EXPECT_EQ(5120, builder.GetCapacity(2));
}

// Growth drops the contents: the old first unit is cleared, and the new buffer starts
// empty; a request that fits keeps them.
TEST(StringBuilderTest, GrowthDropsContents) {
  CStringBuilder builder;
  char16_t* pBuf = builder.GetBufW(3, 0);
  pBuf[0] = u'x';
  EXPECT_EQ(u'x', builder.GetBufW(10, 0)[0]);
  EXPECT_EQ(0, builder.GetBufW(5000, 0)[0]);
}

TEST(StringBuilderTest, ByteBufferSharesSlot) {
  CStringBuilder builder;
  char* psz = builder.GetBufA(8191, 1);  // 8192 bytes = 4096 units
  EXPECT_EQ(4096, builder.GetCapacity(1));
  psz[8191] = 0;
  builder.GetBufA(8192, 1);
  EXPECT_EQ(4608, builder.GetCapacity(1));
}

class StringBuilderCodePageTest : public ::testing::Test {
 protected:
  void TearDown() override { SetLocale("en-US"); }
};

TEST_F(StringBuilderCodePageTest, ConvertsBothWays) {
  CStringBuilder builder;
  const char szKorean[] =
      "a\xB0\xA1"
      "b";  // "a", HANGUL GA in code page 949, "b"
  int nLength = 0;
  const char16_t* pwsz = builder._Convert(szKorean, -1, 949, 0, &nLength);
  ASSERT_NE(nullptr, pwsz);
  EXPECT_EQ(std::u16string(u"a\uAC00b"), std::u16string(pwsz));
  EXPECT_EQ(3, nLength);

  const char* psz = builder._Convert(u"x\u3042y", -1, 932, 1, &nLength);  // HIRAGANA A
  ASSERT_NE(nullptr, psz);
  EXPECT_STREQ("x\x82\xA0y", psz);
  EXPECT_EQ(4, nLength);

  EXPECT_EQ(nullptr, builder._Convert("abc", 3, 12345, 0));  // no such code page
}

TEST_F(StringBuilderCodePageTest, CharacterSetsAndSymbols) {
  CStringBuilder builder;
  EXPECT_EQ(std::u16string(u"\uF041\uF0FF"), std::u16string(builder.ConvertSymbolChar("A\xFF", 2)));
  EXPECT_EQ(std::u16string(u"\uF041"),
            std::u16string(builder.ConvertUnknowCode("A", 1, SYMBOL_CHARSET)));
  EXPECT_EQ(std::u16string(u"\uAC00"),
            std::u16string(builder.ConvertUnknowCode("\xB0\xA1", 2, HANGUL_CHARSET)));
  EXPECT_EQ(std::u16string(u"\u3042"),
            std::u16string(builder.ConvertUnknowCode("\x82\xA0", 2, SHIFTJIS_CHARSET)));
  // The default set follows the active code page.
  ASSERT_TRUE(SetLocale("ko-KR"));
  EXPECT_EQ(std::u16string(u"\uAC00"),
            std::u16string(builder.ConvertUnknowCode("\xB0\xA1", 2, DEFAULT_CHARSET)));
}

}  // namespace
