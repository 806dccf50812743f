// CSharedStringTable: one buffer per distinct text, counted users, the empty text
// outside the count, and trailing-blank trimming.
#include <gtest/gtest.h>

#include <random>
#include <string>
#include <vector>

#include "base/WideString.h"
#include "book/SharedStringTable.h"

namespace {

// Sharing and counting as such: the model test at the end.
TEST(SharedStringTableTest, CountedLengthFindsTheEntry) {
  CSharedStringTable table;
  const char16_t* p = table.AddString(u"hello");
  EXPECT_EQ(p, table.AddString(u"hello world", 5));  // only the first five
  EXPECT_EQ(1, table.GetCount());
}

TEST(SharedStringTableTest, EmptyTextIsNeverCounted) {
  CSharedStringTable table;
  EXPECT_EQ(g_wszEmpty, table.AddString(u"abc", 0));
  EXPECT_EQ(g_wszEmpty, table.AddString(nullptr, 3));
  EXPECT_EQ(g_wszEmpty, table.AddString(u""));
  table.DecRefSST(g_wszEmpty);
  table.IncRefSST(g_wszEmpty);
  table.DecRefSST(nullptr);
  EXPECT_EQ(0, table.GetCount());
  EXPECT_TRUE(table.IsSSTString(g_wszEmpty));
  EXPECT_FALSE(table.IsSSTString(nullptr));
}

TEST(SharedStringTableTest, EqualContentsInAnotherBufferIsNoEntry) {
  CSharedStringTable table;
  const char16_t* p = table.AddString(u"same");
  const char16_t acOther[] = u"same";
  EXPECT_FALSE(table.IsSSTString(acOther));
  EXPECT_EQ(-1, table.GetRefCount(acOther));
  table.IncRefSST(p);
  EXPECT_EQ(1, table.GetRefCount(p));
  table.RemoveAllSST();  // frees the entry whatever its count
  EXPECT_EQ(0, table.GetCount());
}

TEST(SharedStringTableTest, MakeRTrimedLen) {
  struct TCase {
    const char16_t* pwszText;
    int nLen;
    int nExpected;
  };
  constexpr TCase kCases[] = {
      {u"   ", 3, 0},  {u"a \t", 3, 1}, {u"a\x01", 2, 1},  // control characters go
      {u"a!", 2, 2},                                       // code 33 stays
      {u"ab  ", 2, 2},                                     // only the given length is looked at
      {u"x", 0, 0},    {u"x", -4, -4},  // non-positive lengths come back unchanged
  };
  for (const TCase& c : kCases) {
    EXPECT_EQ(c.nExpected, CSharedStringTable::MakeRTrimedLen(c.pwszText, c.nLen)) << c.nLen;
  }
}

// A random mix of adds and releases against a plain count per text: every entry's
// count matches the model, and releasing every user empties the table.
TEST(SharedStringTableTest, CountsMatchAModel) {
  CSharedStringTable table;
  std::mt19937 rng(7);
  std::vector<std::u16string> texts;
  for (int i = 0; i < 20; ++i)
    texts.push_back(u"t" + std::u16string(static_cast<size_t>(i % 7), u'x') + char16_t(u'a' + i));
  std::vector<int> users(texts.size(), 0);
  std::vector<const char16_t*> ptrs(texts.size(), nullptr);
  for (int step = 0; step < 2000; ++step) {
    const size_t i = rng() % texts.size();
    if (users[i] == 0 || rng() % 2 == 0) {
      const char16_t* p = table.AddString(texts[i].c_str());
      if (users[i] > 0) {
        ASSERT_EQ(ptrs[i], p);
      }
      ptrs[i] = p;
      ++users[i];
    } else {
      table.DecRefSST(ptrs[i]);
      --users[i];
    }
    if (users[i] > 0) {
      ASSERT_EQ(users[i] - 1, table.GetRefCount(ptrs[i]));
    }
  }
  for (size_t i = 0; i < texts.size(); ++i) {
    while (users[i]-- > 0) table.DecRefSST(ptrs[i]);
  }
  EXPECT_EQ(0, table.GetCount());
}

}  // namespace
