#include <gtest/gtest.h>

#include <string>

#include "base/A1Text.h"
#include "base/Cell.h"
#include "base/Range.h"
#include "formula/FormulaConverter.h"
#include "formula/FormulaModel.h"
#include "formula/FormulaR1C1Parser.h"
#include "formula/FormulaR1C1Unparser.h"
#include "formula/FormulaUnparser.h"
#include "formula/R1C1Text.h"
#include "formula/UnparserRCUtilBase.h"

namespace {

struct TReadCase {
  const char16_t* pwszText;
  int nBaseRow, nBaseCol;
  int nOk;
  int nRow1, nCol1, nRow2, nCol2;
  int nFlags1, nFlags2;
  int nConsumed;
};

// Rows and columns zero-based; flags kAbsCol 1, kAbsRow 2.
constexpr TReadCase kReadCases[] = {
    {u"R[-1]C", 5, 3, 1, 4, 3, 4, 3, 0, 0, 6},
    {u"R1C1", 5, 3, 1, 0, 0, 0, 0, 3, 3, 4},
    {u"r2c[1]", 5, 3, 1, 1, 4, 1, 4, 2, 2, 6},  // either case
    {u"RC", 5, 3, 1, 5, 3, 5, 3, 0, 0, 2},
    {u"R0C1", 5, 3, 0, 0, 0, 0, 0, 0, 0, 0},
    {u"R65536C256", 0, 0, 1, 65535, 255, 65535, 255, 3, 3, 10},
    {u"R65537C1", 0, 0, 0, 0, 0, 0, 0, 0, 0, 0},
    {u"R1C257", 0, 0, 0, 0, 0, 0, 0, 0, 0, 0},
    {u"R[1C", 0, 0, 0, 0, 0, 0, 0, 0, 0, 0},    // "[" without "]"
    {u"R3", 5, 3, 1, 2, 0, 2, 255, 3, 3, 2},    // whole row, columns absolute
    {u"C2", 5, 3, 1, 0, 1, 65535, 1, 3, 3, 2},  // whole column, rows absolute
    {u"R[2]", 5, 3, 1, 7, 0, 7, 255, 1, 1, 4},
    {u"R5C1:R2C3", 0, 0, 1, 1, 0, 4, 2, 3, 3, 9},
    {u"R5C[1]:R2C3", 0, 0, 1, 1, 1, 4, 2, 2, 3, 11},  // row flags swap with rows
    {u"RC[2]..R[1]C", 0, 0, 1, 0, 0, 1, 2, 0, 0, 12},
    {u"R1C1:R3", 0, 0, 1, 0, 0, 0, 0, 3, 3, 4},  // no range with a whole-row corner
    {u"R1C1:", 0, 0, 1, 0, 0, 0, 0, 3, 3, 4},
    {u"Rate", 0, 0, 0, 0, 0, 0, 0, 0, 0, 0},  // a name, not "R" and "ate"
    {u"R1C1x", 0, 0, 0, 0, 0, 0, 0, 0, 0, 0},
    {u"", 0, 0, 0, 0, 0, 0, 0, 0, 0, 0},
    // Relative parts wrap at the sheet's edges.
    {u"R[-1]C[-1]", 0, 0, 1, 65535, 255, 65535, 255, 0, 0, 10},
    {u"R[1]C[1]", 65535, 255, 1, 0, 0, 0, 0, 0, 0, 8},
    {u"R[-65536]C", 7, 0, 1, 7, 0, 7, 0, 0, 0, 10},
    {u"R[65537]C", 7, 0, 0, 0, 0, 0, 0, 0, 0, 0},
};

TEST(R1C1Reading, CellsRangesRowsAndColumns) {
  for (const TReadCase& c : kReadCases) {
    SCOPED_TRACE(Narrow(c.pwszText));
    const char16_t* p = c.pwszText;
    int nIsRange = -1, nFlags1 = -1, nFlags2 = -1;
    TRange range;
    ASSERT_EQ(c.nOk, CvtRangeR1C1(&p, TCell(c.nBaseRow, c.nBaseCol), &nIsRange, &nFlags1, &nFlags2,
                                  &range));
    EXPECT_EQ(c.nConsumed, p - c.pwszText);
    if (!c.nOk) continue;
    EXPECT_EQ(TRange(c.nRow1, c.nCol1, c.nRow2, c.nCol2), range);
    EXPECT_EQ(c.nFlags1, nFlags1);
    EXPECT_EQ(c.nFlags2, nFlags2);
  }
}

TEST(R1C1Reading, NumbersKeepTheirSignAndLimit) {
  struct TCase {
    const char16_t* pwszText;
    int nLimit, nOk, nValue;
  };
  const TCase kCases[] = {{u"256", 256, 1, 256},   {u"257", 256, 0, 0},
                          {u"-256", 256, 1, -256}, {u"+7", 256, 1, 7},
                          {u"-", 256, 0, 0},       {u"99999999999", 65536, 0, 0}};
  for (const TCase& c : kCases) {
    SCOPED_TRACE(Narrow(c.pwszText));
    const char16_t* p = c.pwszText;
    int nValue = 0;
    ASSERT_EQ(c.nOk, CvtR1C1Number(&p, c.nLimit, &nValue));
    if (c.nOk) {
      EXPECT_EQ(c.nValue, nValue);
    }
  }
}

// Every written cell, at bases on the sheet's edges, reads back as the same cell.
TEST(R1C1Writing, WrittenCellsReadBackAtTheEdges) {
  const int kRows[] = {0, 1, 32767, 65534, 65535};
  const int kCols[] = {0, 1, 127, 254, 255};
  for (int nBaseRow : kRows) {
    for (int nBaseCol : kCols) {
      const TCell base(nBaseRow, nBaseCol);
      for (int nRow : kRows) {
        for (int nCol : kCols) {
          for (unsigned short wFlags : {0x0000, 0x4000, 0x8000, 0xC000}) {
            std::u16string s;
            CUnparserRCUtilBase::FormatR1C1RCNr(s, nRow, nCol, wFlags, base);
            const char16_t* p = s.c_str();
            int nFlags = 0, nParts = 0, nReadRow = -1, nReadCol = -1;
            ASSERT_EQ(1, CvtR1C1Corner(&p, base, &nFlags, &nParts, &nReadRow, &nReadCol))
                << Narrow(s);
            EXPECT_EQ(0, *p);
            EXPECT_EQ(nRow, nReadRow) << Narrow(s);
            EXPECT_EQ(nCol, nReadCol) << Narrow(s);
            EXPECT_EQ((wFlags & 0x8000) ? 0 : kAbsRow, nFlags & kAbsRow);
            EXPECT_EQ((wFlags & 0x4000) ? 0 : kAbsCol, nFlags & kAbsCol);
          }
        }
      }
    }
  }
}

// A converter whose parsers and unparsers use the model book.
class CModelConverter : public CFormulaConverter {
 public:
  CModelConverter(TFormulaModel& model, const TCell& base,
                  CFormulaBase::EFormulaType type = CFormulaBase::ftCell)
      : CFormulaConverter(nullptr, nullptr, base, 1, type), m_Model(model) {}

 protected:
  std::unique_ptr<CFormulaParser> MakeParser(bool bR1C1) override {
    if (bR1C1) {
      return std::make_unique<CBookModelParser<CFormulaR1C1Parser>>(m_Model, nullptr, nullptr,
                                                                    m_Base, m_nType, m_nParseType);
    }
    return std::make_unique<CBookModelParser<CFormulaParser>>(m_Model, nullptr, nullptr, m_Base,
                                                              true);
  }
  std::unique_ptr<CFormulaUnparserBase> MakeUnparser(CFormula* pFormula, bool bR1C1) override {
    if (bR1C1) {
      return std::make_unique<CBookModelUnparser<CFormulaR1C1Unparser>>(
          m_Model, nullptr, nullptr, pFormula, m_nType, m_Base, m_nParseType);
    }
    return std::make_unique<CBookModelUnparser<CFormulaUnparser>>(
        m_Model, nullptr, nullptr, pFormula, m_nType, m_Base, m_nParseType);
  }

 private:
  TFormulaModel& m_Model;
};

TEST(R1C1Converter, BothDirections) {
  TFormulaModel model;
  struct TCase {
    int nBaseRow, nBaseCol;
    const char16_t* pwszA1;
    const char16_t* pwszR1C1;
  };
  const TCase kCases[] = {
      {0, 0, u"A1+B1", u"RC+RC[1]"},
      {5, 3, u"D5", u"R[-1]C"},
      {0, 0, u"$A$1", u"R1C1"},
      {2, 2, u"SUM($A1:C$3)", u"SUM(R[-2]C1:R3C)"},
      {0, 0, u"A65536", u"R[65535]C"},  // a relative row above the base wraps
      {0, 0, u"$3:$3", u"R3C1:R3C256"},
      {0, 0, u"Sheet2!B2*'Q1 Data'!$C$3", u"Sheet2!R[1]C[1]*'Q1 Data'!R3C3"},
      {0, 0, u"'R2C3'!A1", u"'R2C3'!RC"},
  };
  for (const TCase& c : kCases) {
    SCOPED_TRACE(Narrow(c.pwszA1));
    CModelConverter conv(model, TCell(c.nBaseRow, c.nBaseCol));
    EXPECT_EQ(std::u16string(c.pwszR1C1), conv.ToR1C1(c.pwszA1));
    EXPECT_EQ(std::u16string(c.pwszA1), conv.ToA1(c.pwszR1C1));
  }
}

TEST(R1C1Converter, R1C1ModeReadsA1AndTheOverlapTheR1C1Way) {
  TFormulaModel model;
  CModelConverter conv(model, TCell(5, 3));
  EXPECT_EQ(u"SUM(A1:B2)", conv.ToA1(u"SUM(A1:B2)"));  // A1 accepted in R1C1 mode
  EXPECT_EQ(u"$3:$3", conv.ToA1(u"R3"));               // whole row
  EXPECT_EQ(u"$B:$B", conv.ToA1(u"C2"));               // whole column
  EXPECT_EQ(u"C5:D6", conv.ToA1(u"C5:D6"));            // the longer A1 reading wins
  EXPECT_EQ(u"=R[-1]C", conv.ToR1C1(u"=D5"));          // the leading "=" is kept
}

TEST(R1C1Converter, TextThatDoesNotParseGivesNothing) {
  TFormulaModel model;
  CModelConverter conv(model, TCell());
  EXPECT_EQ(u"", conv.ToA1(u"=R0C1+"));
  EXPECT_NE(0, conv.GetResult());
  EXPECT_NE(0, conv.GetError());
  EXPECT_EQ(u"", conv.ToR1C1(u"SUM(1"));
  EXPECT_NE(0, conv.GetError());
  EXPECT_EQ(u"1", conv.ToR1C1(u"1"));
  EXPECT_EQ(0, conv.GetResult());
}

}  // namespace
