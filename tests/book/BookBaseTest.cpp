// The book list, sheet naming and the recalculation flags as seen from the book.
#include <gtest/gtest.h>

#include <string>

#include "BookFixture.h"
#include "book/BookBase.h"

namespace {

using BookBaseTest = BookTest;

TEST_F(BookBaseTest, BookListMembership) {
  CBookBase second;
  EXPECT_EQ(nullptr, CBookBase::FindBook(&second));
  second.AddToList();
  second.AddToList();  // already in: stays once
  EXPECT_EQ(&second, CBookBase::GetFirstBook());
  EXPECT_EQ(m_pBook.get(), second.GetNextBook());
  EXPECT_EQ(nullptr, m_pBook->GetNextBook());
  second.SetTitle(u"Budget.xls");
  EXPECT_EQ(&second, CBookBase::FindBook(u"BUDGET.XLS"));
  second.RemoveFromList();
  EXPECT_EQ(nullptr, CBookBase::FindBook(&second));
  EXPECT_EQ(m_pBook.get(), CBookBase::GetFirstBook());
  {
    CBookBase third;
    third.AddToList();
  }  // the destructor leaves the list
  EXPECT_EQ(m_pBook.get(), CBookBase::GetFirstBook());
  EXPECT_EQ(nullptr, m_pBook->GetNextBook());
}

TEST_F(BookBaseTest, NewSheetNamesSkipTakenNames) {
  ASSERT_NE(nullptr, m_pBook->NewSheet());  // Sheet1
  ASSERT_NE(nullptr, m_pBook->NewSheet());  // Sheet2
  ASSERT_NE(nullptr, m_pBook->NewSheet());  // Sheet3
  EXPECT_EQ(std::u16string(u"Sheet3"), m_pBook->SheetBase(3)->GetSheetName());
  ASSERT_NE(nullptr, m_pBook->NewSheet(u"SHEET4"));
  EXPECT_EQ(std::u16string(u"Sheet5"), m_pBook->GetNewSheetName());
  const char16_t* pMade = m_pBook->MakeSheetName();
  EXPECT_EQ(std::u16string(u"Sheet6"), pMade);
  EXPECT_EQ(4, m_pBook->SheetBase(4)->GetSheetIndex());
}

TEST_F(BookBaseTest, SheetCounterWrapsAfter256) {
  for (int i = 1; i <= 256; ++i) ASSERT_EQ(i, m_pBook->GetNextSheetIndex());
  EXPECT_EQ(1, m_pBook->GetNextSheetIndex());
}

TEST_F(BookBaseTest, ModifiedOnlyOnceInited) {
  m_pBook->SetModified();
  EXPECT_FALSE(m_pBook->IsModified());
  m_pBook->SetInited(true);
  m_pSheet->SetModified();
  EXPECT_TRUE(m_pBook->IsModified());
}

// Counts Recalc calls and can re-enter it from the hook.
class CCountingBook : public CBookBase {
 public:
  int Recalc() override {
    ++m_nRecalcs;
    return CBookBase::Recalc();
  }
  void RecalcObjects() override {
    ++m_nObjects;
    if (m_bReenter) m_nInner = Recalc();
  }
  int m_nRecalcs = 0;
  int m_nObjects = 0;
  int m_nInner = -1;
  bool m_bReenter = false;
};

TEST(BookRecalc, CheckRecalcFollowsAutomaticSetting) {
  CCountingBook book;
  book.SetNeedsRecalc();
  EXPECT_EQ(0, book.CheckRecalc(1));  // automatic off: only the mark goes
  EXPECT_EQ(0, book.m_nRecalcs);
  EXPECT_FALSE(book.GetNeedsRecalc());
  book.SetNeedsRecalc();
  book.SetAutomaticRecalc(1);  // runs CheckRecalc(1)
  EXPECT_EQ(1, book.m_nRecalcs);
  EXPECT_FALSE(book.GetNeedsRecalc());
  book.CheckRecalc(0);  // nothing pending
  EXPECT_EQ(1, book.m_nRecalcs);
}

TEST(BookRecalc, ReentryReturnsZeroAndChangesNothing) {
  CCountingBook book;
  book.m_bReenter = true;
  book.InvalidateFormulasOrder(1);
  EXPECT_EQ(0, book.Recalc());
  EXPECT_EQ(0, book.m_nInner);
  EXPECT_EQ(1, book.m_nObjects);  // the inner call ran no cycle
  EXPECT_FALSE(book.IsRecalculating());
  EXPECT_EQ(0,
            book.GetRecalcState() & (CBookBase::kStOrderInvalid | CBookBase::kStOrderInvalidFull |
                                     CBookBase::kStNeedsRecalc));
}

TEST(BookRecalc, MinimalRecalcSwitch) {
  CBookBase book;
  book.SetMinimalRecalc(0);  // unchanged: nothing
  EXPECT_EQ(0, book.GetRecalcState());
  book.SetNeedsRecalc();
  book.SetMinimalRecalc(1);
  EXPECT_EQ(CBookBase::kStNeedsRecalc | CBookBase::kStRecalcAll | CBookBase::kStOrderInvalid |
                CBookBase::kStOrderInvalidFull,
            book.GetRecalcState());
  EXPECT_EQ(0, book.CheckFormulasOrder());
  EXPECT_EQ(0,
            book.GetRecalcState() & (CBookBase::kStOrderInvalid | CBookBase::kStOrderInvalidFull));
  book.InvalidateFormulasOrder(1);
  book.InvalidateFormulasOrder(0);  // a pending full request stays
  EXPECT_TRUE(book.GetRecalcState() & CBookBase::kStOrderInvalidFull);
}

}  // namespace
