// Iterators: holes skipped, rows cut at their last cell, region filters, filling.
#include <utility>
#include <vector>

#include "BookFixture.h"
#include "book/BookIterator.h"
#include "book/BookIteratorForEvaluate.h"
#include "book/BookIteratorSheets.h"
#include "book/BookIteratorWithFill.h"
#include "book/BookIteratorWithMergedCells.h"
#include "book/CellRecord.h"

namespace {

using Walk = std::vector<std::pair<int, int>>;

Walk Collect(CBookIterator& it) {
  Walk cells;
  for (int b = it.Start(); b; b = it.Next())
    cells.emplace_back(it.GetCurrent().row, it.GetCurrent().col);
  return cells;
}

using IteratorTest = BookTest;

TEST_F(IteratorTest, EmptySheetYieldsNothing) {
  CBookIterator it(m_pSheet, TRange(0, 0, 10, 10));
  EXPECT_EQ(0, it.Start());
  CBookIterator reversed(m_pSheet, TRange(5, 0, 1, 0));
  ASSERT_EQ(0, m_pSheet->SetNumber(TCell(2, 0), 1));
  EXPECT_EQ(0, reversed.Start());
}

TEST_F(IteratorTest, WalksRowsLeftToRightSkippingHoles) {
  ASSERT_EQ(0, m_pSheet->SetNumber(TCell(0, 3), 1));
  ASSERT_EQ(0, m_pSheet->SetNumber(TCell(0, 1), 1));
  ASSERT_EQ(0, m_pSheet->SetNumber(TCell(2, 0), 1));
  ASSERT_EQ(0, m_pSheet->SetNumber(TCell(2, 9), 1));  // outside the columns walked
  CBookIterator it(m_pSheet, TRange(0, 0, 100, 5));
  EXPECT_EQ((Walk{{0, 1}, {0, 3}, {2, 0}}), Collect(it));
}

TEST_F(IteratorTest, RegionFiltersAndHiddenColumnsAreSkipped) {
  for (int r = 0; r < 2; ++r)
    for (int c = 0; c < 3; ++c) ASSERT_EQ(0, m_pSheet->SetNumber(TCell(r, c), 1));
  TRegion region;
  region.Add(TRange(0, 0, 1, 0));
  region.Add(TRange(0, 2, 1, 2));
  CBookIterator it(m_pSheet, region, 0);
  EXPECT_EQ((Walk{{0, 0}, {0, 2}, {1, 0}, {1, 2}}), Collect(it));
  m_pSheet->SetColHidden(2, 2, true);
  CBookIterator skipping(m_pSheet, region, 1);
  EXPECT_EQ((Walk{{0, 0}, {1, 0}}), Collect(skipping));
}

TEST_F(IteratorTest, FillMakesMissingCellsWithPositionFormat) {
  m_pSheet->ColInfo().SetFormat(1, 1, 44);
  CBookIteratorWithFill it(m_pSheet, TRange(0, 0, 0, 1));
  EXPECT_EQ((Walk{{0, 0}, {0, 1}}), Collect(it));
  ASSERT_NE(nullptr, m_pSheet->Cell(0, 0));
  EXPECT_EQ(15, m_pSheet->Cell(0, 0)->GetFormat());
  EXPECT_EQ(44, m_pSheet->Cell(0, 1)->GetFormat());
}

TEST_F(IteratorTest, EvaluateWalkSkipsHiddenRowsAndEmptyCells) {
  ASSERT_EQ(0, m_pSheet->SetNumber(TCell(0, 0), 1));
  ASSERT_EQ(0, m_pSheet->SetNumber(TCell(1, 0), 2));
  ASSERT_EQ(0, m_pSheet->SetCellFormat(TCell(2, 0), 20));
  m_pSheet->SetRowHidden(1, 1, true);
  CBookIteratorForEvaluate all(m_pSheet, TRange(0, 0, 5, 0), 0);
  EXPECT_EQ(3u, Collect(all).size());
  CBookIteratorForEvaluate values(
      m_pSheet, TRange(0, 0, 5, 0),
      CBookIteratorForEvaluate::flSkipHiddenRows | CBookIteratorForEvaluate::flValuesOnly);
  EXPECT_EQ((Walk{{0, 0}}), Collect(values));
}

TEST_F(IteratorTest, MergedBlockCountsOnce) {
  for (int r = 0; r < 2; ++r)
    for (int c = 0; c < 3; ++c) ASSERT_EQ(0, m_pSheet->SetNumber(TCell(r, c), 1));
  CSharedCellTable::Get().SetMergedCellIndex(nullptr, m_pSheet, TRange(0, 1, 1, 2), 0);
  CBookIteratorWithMergedCells it(m_pSheet, TRange(0, 0, 1, 2));
  EXPECT_EQ((Walk{{0, 0}, {0, 1}, {1, 0}}), Collect(it));
}

TEST_F(IteratorTest, SheetSpanWalksEachSheet) {
  CSheetBase* pSecond = m_pBook->NewSheet(u"Second");
  m_pBook->NewSheet(u"Empty");
  CSheetBase* pFourth = m_pBook->NewSheet(u"Fourth");
  ASSERT_EQ(0, m_pSheet->SetNumber(TCell(0, 0), 1));
  ASSERT_EQ(0, pSecond->SetNumber(TCell(1, 1), 2));
  ASSERT_EQ(0, pFourth->SetNumber(TCell(0, 1), 3));
  CBookIteratorSheets it(m_pBook.get(), 0, 3);
  it.SetRanges(1, 3, TRange(0, 0, 5, 5));
  std::vector<int> sheets;
  for (int b = it.Start(); b; b = it.Next()) sheets.push_back(it.GetSheetIndex());
  EXPECT_EQ((std::vector<int>{1, 3}), sheets);
}

}  // namespace
