#include <gtest/gtest.h>

#include <string>

#include "base/A1Text.h"
#include "base/Cell.h"
#include "base/Range.h"

namespace {

std::string Narrow(const std::u16string& s) { return std::string(s.begin(), s.end()); }

TEST(A1Text, FormatKeepsLowBitsOnly) {
  struct TCase {
    int n;
    const char16_t* pwszCol;
    const char16_t* pwszRow;
  };
  // 256 and 65536 wrap: columns keep 8 bits, rows 16.
  const TCase kCases[] = {
      {0, u"A", u"1"},       {25, u"Z", u"26"},        {26, u"AA", u"27"},  {51, u"AZ", u"52"},
      {52, u"BA", u"53"},    {255, u"IV", u"256"},     {256, u"A", u"257"}, {65536, u"A", u"1"},
      {-1, u"IV", u"65536"}, {65535, u"IV", u"65536"},
  };
  for (const TCase& c : kCases) {
    SCOPED_TRACE(c.n);
    EXPECT_EQ(std::u16string(c.pwszCol), FormatColNr(c.n));
    EXPECT_EQ(std::u16string(c.pwszRow), FormatRowNr(c.n));
  }
}

TEST(A1Text, CellTextRoundTripsThroughParser) {
  const int kRows[] = {0, 1, 8, 9, 98, 99, 9999, 65534, 65535};
  for (int col = 0; col <= kMaxCol; ++col) {
    for (int row : kRows) {
      std::u16string text;
      ASSERT_TRUE(TCell(row, col).GetText(text));
      EXPECT_EQ(std::u16string(FormatColNr(col)) + FormatRowNr(row), text);
      TCell parsed(-1, -1);
      ASSERT_EQ(1, CvtRCNr(text.c_str(), &parsed)) << Narrow(text);
      EXPECT_EQ(TCell(row, col), parsed) << Narrow(text);
    }
  }
  std::u16string text = u"old";
  EXPECT_FALSE(TCell(kRowCount, 0).GetText(text));  // one past the last row
  EXPECT_TRUE(text.empty());
  EXPECT_FALSE(TCell(0, kColCount).GetText(text));
  EXPECT_FALSE(TCell(-1, 0).GetText(text));
}

// Each parser returns 1 with the value and the number of units consumed, or 0 and
// leaves the position alone.
struct TParseCase {
  const char16_t* pwszText;
  int nResult;
  int nValue;  // column, row, or row * 1000 + column for addresses
  int nConsumed;
  int nFlags;
};

TEST(A1Text, ColumnAndRowParsers) {
  const TParseCase kColumns[] = {
      {u"A", 1, 0, 1, 0},    {u"a1", 1, 0, 1, 0},                           // case-insensitive
      {u"iv", 1, 255, 2, 0}, {u"IV1", 1, 255, 2, 0},  {u"IW", 0, 0, 0, 0},  // 257
      {u"ZZ", 0, 0, 0, 0},   {u"ABC", 0, 0, 0, 0},                          // a third letter
      {u"A$", 1, 0, 1, 0},   {u"", 0, 0, 0, 0},       {u"1", 0, 0, 0, 0},
      {u"$A", 0, 0, 0, 0},   {u"\u00c4", 0, 0, 0, 0},
  };
  const TParseCase kRows[] = {
      {u"1", 1, 0, 1, 0},          {u"65536", 1, 65535, 5, 0},
      {u"65535x", 1, 65534, 5, 0}, {u"007", 1, 6, 3, 0},
      {u"0", 0, 0, 0, 0},          {u"000", 0, 0, 0, 0},
      {u"65537", 0, 0, 0, 0},      {u"99999999999999", 0, 0, 0, 0},
      {u"", 0, 0, 0, 0},           {u"A1", 0, 0, 0, 0},
      {u"-1", 0, 0, 0, 0},
  };
  using TParser = int (*)(const char16_t**, int*);
  const auto Check = [](TParser pfnParse, const TParseCase& c) {
    SCOPED_TRACE(Narrow(c.pwszText));
    const char16_t* p = c.pwszText;
    int nValue = -7;
    EXPECT_EQ(c.nResult, pfnParse(&p, &nValue));
    EXPECT_EQ(c.nConsumed, p - c.pwszText);
    if (c.nResult) {
      EXPECT_EQ(c.nValue, nValue);
    }
  };
  for (const TParseCase& c : kColumns) Check(CvtCNr, c);
  for (const TParseCase& c : kRows) Check(CvtRNr, c);
}

TEST(A1Text, AddressParser) {
  // clang-format off
  const TParseCase kCases[] = {
      {u"A1", 1, 0, 2, 0}, {u"$A$1", 1, 0, 4, 3}, {u"$B7", 1, 6001, 3, 1}, {u"b$7", 1, 6001, 3, 2},
      {u"IV65536", 1, 65535255, 7, 0},
      {u"A1:", 1, 0, 2, 0},  // a colon or an operator ends the address
      {u"A1+B2", 1, 0, 2, 0}, {u"A1 ", 1, 0, 2, 0}, {u"A1)", 1, 0, 2, 0},
      {u"A1_", 0, 0, 0, 0},  // would continue a name
      {u"A1?", 0, 0, 0, 0}, {u"A1\\", 0, 0, 0, 0}, {u"A1x", 0, 0, 0, 0}, {u"A1\u00e9", 0, 0, 0, 0},
      {u"A1\u0663", 0, 0, 0, 0},  // an Arabic-Indic digit
      {u"A1\u3000", 1, 0, 2, 0},  // ideographic space
      {u"A65537", 0, 0, 0, 0}, {u"IW1", 0, 0, 0, 0}, {u"$$A1", 0, 0, 0, 0}, {u"A$$1", 0, 0, 0, 0},
      {u"A", 0, 0, 0, 0}, {u"$", 0, 0, 0, 0}, {u"", 0, 0, 0, 0},
  };
  // clang-format on
  for (const TParseCase& c : kCases) {
    SCOPED_TRACE(Narrow(c.pwszText));
    const char16_t* p = c.pwszText;
    int nFlags = -1, nRow = -1, nCol = -1;
    EXPECT_EQ(c.nResult, CvtRCNr(&p, &nFlags, &nRow, &nCol));
    EXPECT_EQ(c.nConsumed, p - c.pwszText);
    if (!c.nResult) continue;
    EXPECT_EQ(c.nValue, nRow * 1000 + nCol);
    EXPECT_EQ(c.nFlags, nFlags);
  }
}

TEST(A1Text, WholeTextAddressRejectsTrailingText) {
  TCell cell(5, 5);
  EXPECT_EQ(1, CvtRCNr(u"$C$4", &cell));
  EXPECT_EQ(TCell(3, 2), cell);
  EXPECT_EQ(0, CvtRCNr(u"C4 ", &cell));
  EXPECT_EQ(0, CvtRCNr(u"C4:D5", &cell));
  EXPECT_EQ(0, CvtRCNr(u"", &cell));
  EXPECT_EQ(TCell(3, 2), cell);  // untouched by the failures
}

TEST(A1Text, RangeParser) {
  struct TCase {
    const char16_t* pwszText;
    int nResult, nIsRange;
    TRange range;
    int nFlags1, nFlags2, nConsumed;
  };
  // clang-format off
  const TCase kCases[] = {
      {u"A1:B2", 1, 1, TRange(0, 0, 1, 1), 0, 0, 5},
      {u"$B$2:A1", 1, 1, TRange(0, 0, 1, 1), 0, 3, 7},  // the "$" signs follow the swap
      {u"B$3:$A1", 1, 1, TRange(0, 0, 2, 1), 1, 2, 7},  // rows and columns swap separately
      {u"C3:A1", 1, 1, TRange(0, 0, 2, 2), 0, 0, 5}, {u"B2..C3", 1, 1, TRange(1, 1, 2, 2), 0, 0, 6},
      {u"B2.C3", 1, 1, TRange(1, 1, 2, 2), 0, 0, 5},
      {u"B2:", 1, 0, TRange(1, 1), 0, 0, 2},  // stops at the separator
      {u"$B2:IW3", 1, 0, TRange(1, 1), 1, 1, 3}, {u"B2...C3", 1, 0, TRange(1, 1), 0, 0, 2},
      {u"B2", 1, 0, TRange(1, 1), 0, 0, 2}, {u"B2,C3", 1, 0, TRange(1, 1), 0, 0, 2},
      {u"A1:IV65536", 1, 1, TRange(0, 0, 65535, 255), 0, 0, 10},
      {u"B2_:C3", 0, 0, TRange(), 0, 0, 0}, {u":C3", 0, 0, TRange(), 0, 0, 0},
  };
  // clang-format on
  for (const TCase& c : kCases) {
    SCOPED_TRACE(Narrow(c.pwszText));
    const char16_t* p = c.pwszText;
    int nIsRange = -1, nFlags1 = -1, nFlags2 = -1;
    TRange range(9, 9);
    EXPECT_EQ(c.nResult, CvtRange(&p, &nIsRange, &nFlags1, &nFlags2, &range));
    EXPECT_EQ(c.nConsumed, p - c.pwszText);
    if (!c.nResult) continue;
    EXPECT_EQ(c.nIsRange, nIsRange);
    EXPECT_EQ(c.range, range);
    EXPECT_EQ(c.nFlags1, nFlags1);
    EXPECT_EQ(c.nFlags2, nFlags2);
  }
}

}  // namespace
