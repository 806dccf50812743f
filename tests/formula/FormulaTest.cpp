// The token stream: sizes of every layout, walking with the added-data cursor,
// string quoting, the BIFF8 error codes and CFormula's block handling.
#include <gtest/gtest.h>

#include <vector>

#include "formula/Formula.h"
#include "formula/FormulaIterator.h"

namespace {

using FB = CFormulaBase;
using Bytes = std::vector<unsigned char>;

// One stream holding every variable-size layout, walked token by token; the sizes
// are counted by hand from the layouts.
TEST(Formula, SizesOfVariableTokens) {
  struct TCase {
    Bytes operands;  // behind the token byte
    unsigned char cBase;
    int nSize;
  };
  const TCase kCases[] = {
      {{3, 'a', 0, 'b', 0, 'c', 0}, FB::tStr, 7},
      {{0}, FB::tStr, 1},
      {{2, 0, 0, 0, 0}, FB::tExtended, 5},
      {{10}, FB::tExtended, 14},
      {{11}, FB::tExtended, 14},
      {{12}, FB::tExtended, 5},
      {{0x02, 7, 0}, FB::tAttr, 3},
      {{0x04, 2, 0}, FB::tAttr, 9},    // choice over 2: three jump words
      {{0x04, 0, 1}, FB::tAttr, 517},  // the data word is little-endian
      {{}, 0x1A, 10},
      {{}, 0x1B, 4},
      {{}, 0x3E, 0},  // outside the table
      {{}, 0xFF, 0},
  };
  for (const TCase& c : kCases) {
    SCOPED_TRACE(c.nSize);
    Bytes b = c.operands;
    b.resize(16);
    FB::TPostfixPtr p(b.data());
    EXPECT_EQ(c.nSize, p.SizeToken(c.cBase));
  }
}

TEST(Formula, SkipTokensKeepsAddedDataInStep) {
  // tArray (2 x 1: a string "x\"" and an error), tMemArea with 2 ranges, tExtended
  // subtype 12 with a 3-entry list, then a tInt.
  const Bytes postfix = {0x60, 0,  0, 0, 0, 0, 0, 0,  // tArray
                         0x26, 0,  0, 0, 0, 0, 0,     // tMemArea
                         0x18, 12, 0, 0, 0, 0,        // tExtended 12
                         0x1E, 5,  0};                // tInt 5
  const Bytes added = {1, 0, 0, 2, 2, 0, 'x', 0, '"', 0, 0x10, 0x2A, 0, 0, 0,  0,  0, 0,
                       0, 2, 0, 0, 0, 0, 0,   0, 0,   0, 0,    1,    0, 1, 0,  1,  0, 1,
                       0, 3, 0, 0, 0, 1, 2,   3, 4,   5, 6,    7,    8, 9, 10, 11, 12};
  CFormula f(postfix.data(), static_cast<int>(postfix.size()), added.data(),
             static_cast<int>(added.size()));
  FB::TPostfixPtr p(f.GetPostfix()), a(f.GetAddedData());
  p.SkipTokens(3, &a);
  EXPECT_EQ(21, p - FB::TPostfixPtr(f.GetPostfix()));
  EXPECT_EQ(static_cast<int>(added.size()), a - FB::TPostfixPtr(f.GetAddedData()));
  EXPECT_EQ(FB::tInt, p.GetToken());
  EXPECT_EQ(5, p.GetWord());

  // the iterator walks the same stream to its end
  CFormulaIterator it(nullptr, nullptr, &f, FB::ftCell, TCell());
  int nTokens = 0;
  while (!it.AtEnd()) {
    it.GetToken();
    it.NextToken();
    nTokens++;
  }
  EXPECT_EQ(4, nTokens);
}

TEST(Formula, StringsQuoteAndUnquote) {
  unsigned char buf[32] = {};
  FB::TPostfixPtr w(buf);
  EXPECT_EQ(4, w.PutStr(u"a\"\"b\"", 5));  // a "" b " stores a " b "
  EXPECT_EQ(8, w - FB::TPostfixPtr(buf));
  char16_t out[16] = {};
  FB::TPostfixPtr r(buf);
  char16_t* pEnd = r.GetStr(out, 4);
  EXPECT_EQ(std::u16string(u"a\"\"b\"\""), std::u16string(out, static_cast<size_t>(pEnd - out)));
}

TEST(Formula, ReadsAndWritesLittleEndian) {
  unsigned char buf[32] = {};
  FB::TPostfixPtr w(buf);
  w.Put(static_cast<unsigned short>(0x1234));
  w.Put(0x89ABCDEFu);
  w.Put(-2.5);
  w.Zero(2);
  EXPECT_EQ(16, w - FB::TPostfixPtr(buf));
  EXPECT_EQ(0x34, buf[0]);
  EXPECT_EQ(0xEF, buf[2]);
  FB::TPostfixPtr r(buf);
  EXPECT_EQ(0x1234, r.GetWord());
  EXPECT_EQ(0x89ABCDEFu, r.GetDWord());
  EXPECT_EQ(-2.5, r.GetReal());
}

TEST(Formula, ErrorCodesMapBothWays) {
  for (int e = 1; e <= 7; e++) EXPECT_EQ(e, FB::BiffToError(FB::ErrorToBiff(e)));
  EXPECT_EQ(0x2A, FB::ErrorToBiff(8));  // #FORMULA! has no code
  EXPECT_EQ(0x2A, FB::ErrorToBiff(0));
  EXPECT_EQ(7, FB::BiffToError(0x01));  // unknown codes read as #N/A
  EXPECT_EQ(7, FB::BiffToError(0xFF));
}

TEST(Formula, SetReplaceAndCompare) {
  const unsigned char t1[] = {0x1E, 1, 0}, t2[] = {0x1E, 2, 0}, t3[] = {0x1D, 1};
  const unsigned char a1[] = {9, 9}, a2[] = {9, 8};
  CFormula f(t1, 3, a1, 2), g(t1, 3, a2, 2);
  EXPECT_FALSE(f == g);  // same tokens, different added data
  g.Set(t1, 3, a1, 2);
  EXPECT_TRUE(f == g);
  unsigned char* pBlock = f.GetPostfix();
  f.Replace(t2, 3);  // same length: in place
  EXPECT_EQ(pBlock, f.GetPostfix());
  EXPECT_EQ(2, f.GetPostfix()[1]);
  f.Replace(t3, 2);  // new length: the added data moves along
  EXPECT_EQ(2, f.GetPostfixLen());
  ASSERT_EQ(2, f.GetAddedDataLen());
  EXPECT_EQ(9, f.GetAddedData()[0]);
  EXPECT_EQ(9, f.GetAddedData()[1]);
  CFormula h(f);
  EXPECT_TRUE(h == f);
  f.Set(nullptr, 0, nullptr, 0);
  EXPECT_EQ(nullptr, f.GetPostfix());
  EXPECT_FALSE(h == f);
  h.Clear();
  EXPECT_TRUE(h == f);
}

TEST(FormulaIterator, OffsetsOnlyForOffsetTypes) {
  CFormulaIterator it(nullptr, nullptr, TCell(7, 3));
  for (int t = 0; t <= FB::ftLast; t++) {
    it.SetFormulaType(static_cast<FB::EFormulaType>(t));
    const bool bOffset = t == 3 || t == 5 || t == 6 || t == 7 || t == 8;
    EXPECT_EQ(bOffset, it.GetRelRCIsOffset()) << t;
    EXPECT_EQ(bOffset ? 7 : 0, it.GetRowOffset());
    EXPECT_EQ(bOffset ? 3 : 0, it.GetColOffset());
  }
}

}  // namespace
