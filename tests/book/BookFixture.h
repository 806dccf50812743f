// A book with one sheet for the workbook-model tests. The book joins the book list
// and leaves it again; TearDown checks that the list is empty and gives back the
// shared cells, so each test starts from the process-wide state it found.
#pragma once

#include <gtest/gtest.h>

#include <memory>

#include "book/BookBase.h"
#include "book/SharedCellTable.h"
#include "book/SheetBase.h"

class BookTest : public ::testing::Test {
 protected:
  void SetUp() override {
    ASSERT_EQ(nullptr, CBookBase::GetFirstBook());
    m_pBook = std::make_unique<CBookBase>();
    m_pBook->AddToList();
    m_pSheet = m_pBook->NewSheet(u"Data");
    ASSERT_NE(nullptr, m_pSheet);
  }
  void TearDown() override {
    m_pBook.reset();
    EXPECT_EQ(nullptr, CBookBase::GetFirstBook());
    CSharedCellTable::Get().RemoveAllSCT();
  }

  std::unique_ptr<CBookBase> m_pBook;
  CSheetBase* m_pSheet = nullptr;
};
