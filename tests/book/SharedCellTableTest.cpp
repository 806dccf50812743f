// Clone on write: shared cells are never changed in place nor deleted by a row, and a
// cell left with only a format folds back into the shared empty cell of that format.
#include "BookFixture.h"
#include "book/CellRecord.h"
#include "book/Row.h"
#include "book/SharedCellTable.h"
#include "formula/FormulaCell.h"

namespace {

using CellTest = BookTest;

TEST_F(CellTest, FormattedEmptyPositionsShareOneCellPerFormat) {
  ASSERT_EQ(0, m_pSheet->SetCellFormat(TCell(0, 0), 20));
  ASSERT_EQ(0, m_pSheet->SetCellFormat(TCell(5, 3), 20));
  ASSERT_EQ(0, m_pSheet->SetCellFormat(TCell(7, 1), 21));
  CCell* p20 = m_pSheet->Cell(0, 0);
  ASSERT_NE(nullptr, p20);
  EXPECT_TRUE(p20->IsSCT());
  EXPECT_EQ(p20, m_pSheet->Cell(5, 3));
  EXPECT_EQ(p20, CSharedCellTable::Get().FindEmptyCell(20));
  EXPECT_NE(p20, m_pSheet->Cell(7, 1));
  EXPECT_EQ(21, m_pSheet->Cell(7, 1)->GetFormat());
}

TEST_F(CellTest, WritingIntoSharedCellClonesIt) {
  ASSERT_EQ(0, m_pSheet->SetCellFormat(TCell(0, 0), 20));
  ASSERT_EQ(0, m_pSheet->SetCellFormat(TCell(1, 0), 20));
  CCell* pShared = m_pSheet->Cell(0, 0);
  ASSERT_EQ(0, m_pSheet->SetNumber(TCell(0, 0), 42));
  CCell* pPrivate = m_pSheet->Cell(0, 0);
  EXPECT_NE(pShared, pPrivate);
  EXPECT_FALSE(pPrivate->IsSCT());
  EXPECT_DOUBLE_EQ(42, pPrivate->GetReal());
  EXPECT_EQ(20, pPrivate->GetFormat());
  // The shared cell and its other user are untouched.
  EXPECT_TRUE(pShared->IsEmpty());
  EXPECT_EQ(pShared, m_pSheet->Cell(1, 0));
}

TEST_F(CellTest, ClearingPlainCellFoldsBackToSharedEmptyCell) {
  ASSERT_EQ(0, m_pSheet->SetNumber(TCell(2, 2), 7));
  ASSERT_EQ(0, m_pSheet->SetCellFormat(TCell(2, 2), 30));
  ASSERT_FALSE(m_pSheet->Cell(2, 2)->IsSCT());
  ASSERT_EQ(0, m_pSheet->ClearValue(TCell(2, 2)));
  CCell* pCell = m_pSheet->Cell(2, 2);
  ASSERT_NE(nullptr, pCell);  // the format stays: not a hole
  EXPECT_TRUE(pCell->IsSCT());
  EXPECT_EQ(CSharedCellTable::Get().FindEmptyCell(30), pCell);
}

TEST_F(CellTest, MergedIndexKeepsPrivateCell) {
  CRow* pRow = m_pSheet->InitRow(4);
  ASSERT_EQ(0, m_pSheet->SetText(TCell(4, 1), u"title"));
  CCell* pCell = m_pSheet->Cell(4, 1);
  CSharedCellTable::Get().SetMergedCellIndex(pRow, 1, &pCell, 3);
  ASSERT_EQ(0, m_pSheet->ClearValue(TCell(4, 1)));
  pCell = m_pSheet->Cell(4, 1);
  ASSERT_NE(nullptr, pCell);
  EXPECT_FALSE(pCell->IsSCT());
  EXPECT_TRUE(pCell->IsEmpty());
  EXPECT_EQ(3, pCell->GetMergedCellIndex());
}

TEST_F(CellTest, FormatChangeOfSharedEmptyCellMovesToOtherSharedCell) {
  ASSERT_EQ(0, m_pSheet->SetCellFormat(TCell(0, 0), 20));
  CCell* pOld = m_pSheet->Cell(0, 0);
  ASSERT_EQ(0, m_pSheet->SetCellFormat(TCell(0, 0), 22));
  EXPECT_EQ(CSharedCellTable::Get().FindEmptyCell(22), m_pSheet->Cell(0, 0));
  EXPECT_EQ(20, pOld->GetFormat());
  EXPECT_TRUE(pOld->IsSCT());
}

TEST_F(CellTest, RowNeverDeletesSharedCells) {
  CCell* pShared = CSharedCellTable::Get().SetEmptyCell(25);
  CRow* pRow = m_pSheet->InitRow(0);
  for (int c = 0; c < 6; ++c) pRow->SetCell(c, pShared);
  ASSERT_EQ(0, m_pSheet->SetNumber(TCell(0, 6), 1));
  pRow->Move(0, 3, 4);  // overwrites shared slots, clears the vacated ones
  pRow->Delete(0, 1);   // deletes shared slots
  pRow->Clear(0, 10);   // clears the rest
  m_pSheet->DeleteRow(0);
  // Still alive and intact: ASan would report a freed cell here.
  EXPECT_TRUE(pShared->IsSCT());
  EXPECT_EQ(25, pShared->GetFormat());
  EXPECT_EQ(nullptr, m_pSheet->Row(0));
}

TEST_F(CellTest, AddCellFoldsEqualCellsAndKeepsCaseApart) {
  CSharedCellTable& table = CSharedCellTable::Get();
  auto* pA = new CCell(15);
  pA->SetValue(u"abc");
  auto* pB = new CCell(15);
  pB->SetValue(u"abc");
  auto* pUpper = new CCell(15);
  pUpper->SetValue(u"ABC");
  CCell* pSharedA = table.AddCell(pA);
  EXPECT_EQ(pSharedA, table.AddCell(pB));  // pB deleted, the match returned
  EXPECT_NE(pSharedA, table.AddCell(pUpper));
  EXPECT_EQ(2, table.GetSharedCount());
  EXPECT_EQ(nullptr, table.AddCell(nullptr));
}

TEST_F(CellTest, SetAttributeStopsBeforeStoringWhenCallbackRefuses) {
  // Shared cells: a refused change is made on a private copy that is then dropped.
  for (int r = 0; r < 3; ++r) ASSERT_EQ(0, m_pSheet->SetCellFormat(TCell(r, 0), 20));
  CCell* pShared = m_pSheet->Cell(0, 0);
  int nCalls = 0;
  const int nResult = CSharedCellTable::Get().SetAttribute(
      &nCalls, m_pSheet, TRange(0, 0, 2, 0),
      [](void* pContext, CSheetBase*, CCell* pCell, std::intptr_t a, std::intptr_t) {
        int& n = *static_cast<int*>(pContext);
        pCell->SetFormat(static_cast<unsigned short>(a));
        return ++n < 2 ? 1 : 0;
      },
      40, 0);
  EXPECT_EQ(0, nResult);
  EXPECT_EQ(2, nCalls);
  EXPECT_EQ(CSharedCellTable::Get().FindEmptyCell(40), m_pSheet->Cell(0, 0));
  EXPECT_EQ(pShared, m_pSheet->Cell(1, 0));  // refused: not stored
  EXPECT_EQ(pShared, m_pSheet->Cell(2, 0));
  EXPECT_EQ(20, pShared->GetFormat());
}

TEST_F(CellTest, NumberIntoFormulaPositionReplacesCell) {
  m_pBook->InvalidateFormulasOrder(0);
  m_pBook->CheckFormulasOrder();
  ASSERT_EQ(0, m_pSheet->SetCell(1, 1, new CFormulaCell(33)));
  m_pBook->CheckFormulasOrder();
  ASSERT_EQ(0, m_pSheet->SetNumber(TCell(1, 1), 5));
  const CCell* pCell = m_pSheet->Cell(1, 1);
  EXPECT_FALSE(pCell->IsFormula());
  EXPECT_EQ(33, pCell->GetFormat());
  EXPECT_TRUE(m_pBook->GetRecalcState() & CBookBase::kStOrderInvalid);
}

}  // namespace
