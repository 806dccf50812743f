// Sheet storage: edge navigation, the used range, naming, row removal and bounds.
#include <string>

#include "BookFixture.h"
#include "book/CellRecord.h"
#include "book/Row.h"
#include "book/SheetBase.h"

namespace {

using SheetTest = BookTest;

TEST_F(SheetTest, BoundsYieldNull) {
  ASSERT_EQ(0, m_pSheet->SetNumber(TCell(0, 255), 1));
  CRow* pRow = m_pSheet->Row(0);
  EXPECT_NE(nullptr, pRow->Cell(255));
  EXPECT_EQ(nullptr, pRow->Cell(256));
  EXPECT_EQ(nullptr, pRow->Cell(-1));
  EXPECT_EQ(255, pRow->MaxIndex());
  EXPECT_EQ(65535, m_pSheet->MaxIndex());
  EXPECT_EQ(-1, m_pSheet->SetNumber(TCell(65536, 0), 1));
  EXPECT_EQ(-1, m_pSheet->SetNumber(TCell(0, 256), 1));
  EXPECT_EQ(0, m_pSheet->SetNumber(TCell(65535, 0), 1));
  EXPECT_EQ(nullptr, m_pSheet->Row(65536));
}

struct TEdgeCase {
  int nStartRow;
  CSheetBase::ENextEdgeDirection eDir;
  int nExpectedRow;
};

TEST_F(SheetTest, EdgeNavigationDown) {
  // Values in A1:A5 and A10; row 7 hidden holds a value that is passed over.
  for (int r = 0; r < 5; ++r) ASSERT_EQ(0, m_pSheet->SetNumber(TCell(r, 0), r));
  ASSERT_EQ(0, m_pSheet->SetNumber(TCell(9, 0), 9));
  ASSERT_EQ(0, m_pSheet->SetNumber(TCell(6, 0), 6));
  m_pSheet->SetRowHidden(6, 6, true);
  const TEdgeCase kCases[] = {
      {0, CSheetBase::edDown, 4},      // A1 -> end of the block
      {4, CSheetBase::edDown, 9},      // A5 -> start of the next block, past hidden A7
      {9, CSheetBase::edDown, 65535},  // nothing below: the grid edge
      {9, CSheetBase::edUp, 4},       {4, CSheetBase::edUp, 0},
      {0, CSheetBase::edUp, 0},  // at the edge: unchanged
      {7, CSheetBase::edUp, 4},  // empty start: next value upward
  };
  for (const TEdgeCase& c : kCases) {
    SCOPED_TRACE(c.nStartRow * 10 + c.eDir);
    TCell cell(c.nStartRow, 0);
    m_pSheet->GetNextEdge(c.eDir, cell);
    EXPECT_EQ(c.nExpectedRow, cell.row);
    EXPECT_EQ(0, cell.col);
  }
}

TEST_F(SheetTest, EdgeNavigationSkipsHiddenRowsInsideBlock) {
  for (int r = 0; r < 6; ++r) ASSERT_EQ(0, m_pSheet->SetNumber(TCell(r, 0), r));
  m_pSheet->SetRowHidden(5, 5, true);  // the block's last row is hidden
  TCell cell(0, 0);
  m_pSheet->GetNextEdge(CSheetBase::edDown, cell);
  EXPECT_EQ(4, cell.row);
  // Hidden rows between two values do not end the block.
  m_pSheet->SetRowHidden(2, 2, true);
  ASSERT_EQ(0, m_pSheet->ClearValue(TCell(2, 0)));
  cell.Set(0, 0);
  m_pSheet->GetNextEdge(CSheetBase::edDown, cell);
  EXPECT_EQ(4, cell.row);
}

TEST_F(SheetTest, EdgeNavigationAcrossColumns) {
  for (int c = 2; c <= 4; ++c) ASSERT_EQ(0, m_pSheet->SetNumber(TCell(0, c), c));
  m_pSheet->SetColHidden(1, 1, true);
  TCell cell(0, 0);
  m_pSheet->GetNextEdge(CSheetBase::edRight, cell);
  EXPECT_EQ(2, cell.col);
  m_pSheet->GetNextEdge(CSheetBase::edRight, cell);
  EXPECT_EQ(4, cell.col);
  m_pSheet->GetNextEdge(CSheetBase::edRight, cell);
  EXPECT_EQ(255, cell.col);
  TCell outside(-1, 3);
  m_pSheet->GetNextEdge(CSheetBase::edLeft, outside);
  EXPECT_EQ(TCell(-1, 3), outside);
  // With every row above hidden, stepping up finds no visible row: unchanged.
  m_pSheet->SetRowHidden(0, 9, true);
  TCell below(10, 0);
  m_pSheet->GetNextEdge(CSheetBase::edUp, below);
  EXPECT_EQ(10, below.row);
}

TEST_F(SheetTest, UsedRange) {
  TRange range;
  EXPECT_FALSE(m_pSheet->GetActiveRange(range));
  EXPECT_EQ(TRange(-1, -1, -1, -1), range);
  ASSERT_EQ(0, m_pSheet->SetCellFormat(TCell(4, 2), 20));  // formatted empty C5
  EXPECT_TRUE(m_pSheet->GetActiveRange(range));
  EXPECT_EQ(TRange(4, 2, 4, 2), range);
  ASSERT_EQ(0, m_pSheet->SetNumber(TCell(1, 5), 1));
  ASSERT_EQ(0, m_pSheet->SetText(TCell(9, 0), u"x"));
  EXPECT_TRUE(m_pSheet->GetActiveRange(range));
  EXPECT_EQ(TRange(1, 0, 9, 5), range);
  // Deleting the rows leaves them missing, and the range shrinks with them.
  m_pSheet->DeleteRow(9);
  m_pSheet->DeleteRow(1);
  m_pSheet->DeleteRow(1);  // already gone: nothing happens
  EXPECT_TRUE(m_pSheet->GetActiveRange(range));
  EXPECT_EQ(TRange(4, 2, 4, 2), range);
  EXPECT_NE(nullptr, m_pSheet->Row(4));  // later rows never shift
}

TEST_F(SheetTest, OptimizeDropsEmptyCellsAndRows) {
  ASSERT_EQ(0, m_pSheet->SetNumber(TCell(3, 3), 1));
  ASSERT_EQ(0, m_pSheet->SetCellFormat(TCell(3, 4), 20));
  ASSERT_EQ(0, m_pSheet->SetNumber(TCell(100, 0), 1));
  ASSERT_EQ(0, m_pSheet->ClearValue(TCell(100, 0)));  // shared empty cell of format 15
  ASSERT_EQ(0, m_pSheet->ClearValue(TCell(3, 3)));
  m_pSheet->Optimize();
  EXPECT_EQ(nullptr, m_pSheet->Row(100));
  EXPECT_EQ(4, m_pSheet->Rows());
  EXPECT_EQ(nullptr, m_pSheet->Cell(3, 3));
  EXPECT_NE(nullptr, m_pSheet->Cell(3, 4));  // the format is kept
}

TEST_F(SheetTest, SheetNames) {
  CSheetBase* pOther = m_pBook->NewSheet(u"Other");
  ASSERT_NE(nullptr, pOther);
  const std::u16string s40(40, u'n');
  EXPECT_EQ(0, pOther->SetSheetName(s40.c_str()));
  EXPECT_EQ(std::u16string(31, u'n'), pOther->GetSheetName());
  const std::u16string s31(31, u'm');
  EXPECT_EQ(0, pOther->SetSheetName(s31.c_str()));
  EXPECT_EQ(s31, pOther->GetSheetName());
  EXPECT_EQ(91, pOther->SetSheetName(u"DATA"));  // another sheet's name in other case
  EXPECT_EQ(s31, pOther->GetSheetName());
  EXPECT_EQ(0, m_pSheet->SetSheetName(u"data"));  // its own name in another case
  EXPECT_EQ(std::u16string(u"data"), m_pSheet->GetSheetName());
  EXPECT_EQ(pOther, m_pBook->FindSheetBase(std::u16string(31, u'M').c_str(), true));
  EXPECT_EQ(nullptr, m_pBook->FindSheetBase(std::u16string(31, u'M').c_str(), false));
  // Cutting a name to 31 may make it clash.
  EXPECT_EQ(91, m_pSheet->SetSheetName((s31 + u"xyz").c_str()));
}

TEST_F(SheetTest, NewValueCellHandsOldCellToCaller) {
  ASSERT_EQ(0, m_pSheet->SetNumber(TCell(0, 0), 3));
  CCell* pOld = nullptr;
  CCell* pNew = nullptr;
  ASSERT_EQ(0, m_pSheet->NewValueCell(TCell(0, 0), &pNew, &pOld));
  ASSERT_NE(nullptr, pOld);
  EXPECT_NE(pOld, pNew);
  EXPECT_DOUBLE_EQ(3, pOld->GetReal());
  EXPECT_TRUE(pNew->IsEmpty());
  EXPECT_EQ(pNew, m_pSheet->Cell(0, 0));
  delete pOld;
}

TEST_F(SheetTest, RecalcMarksFollowMode) {
  m_pBook->SetMinimalRecalc(1);
  m_pBook->CheckRecalc(0);
  m_pSheet->ChangedRegion().Clear();
  ASSERT_EQ(0, m_pSheet->SetNumber(TCell(2, 2), 1));
  EXPECT_TRUE(m_pBook->GetNeedsRecalc());
  EXPECT_TRUE(m_pSheet->ChangedRegion().TestIntersect(2, 2));
  m_pBook->SetMinimalRecalc(0);
  m_pSheet->ChangedRegion().Clear();
  ASSERT_EQ(0, m_pSheet->SetNumber(TCell(3, 3), 1));
  EXPECT_FALSE(m_pSheet->ChangedRegion().TestIntersect(3, 3));
}

}  // namespace
