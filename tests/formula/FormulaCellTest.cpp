// Formula cells: the 8-byte result field, the changed marks of SetRecalcValue, and
// the formula text of a cell read back through the unparser.
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstring>
#include <initializer_list>
#include <memory>

#include "book/BookBase.h"
#include "book/SharedCellTable.h"
#include "book/SheetBase.h"
#include "formula/FormulaCell.h"

namespace {

double Field(std::initializer_list<unsigned char> bytes) {
  unsigned char a[8] = {};
  std::copy(bytes.begin(), bytes.end(), a);
  double r;
  std::memcpy(&r, a, sizeof r);
  return r;
}

TEST(FormulaCell, ResultFieldReads) {
  CFormulaCell cell;
  cell.SetExcelValue(Field({1, 0, 0, 0, 0, 0, 0xFF, 0xFF}));
  EXPECT_TRUE(cell.IsLogical());
  EXPECT_EQ(0, cell.GetLogical());  // byte 2 = 0 reads as FALSE
  cell.SetExcelValue(Field({2, 0, 7, 0, 0, 0, 0xFF, 0xFF}));
  EXPECT_EQ(TValue::errDiv0, cell.GetError());
  cell.SetExcelValue(Field({0, 0, 0, 0, 0, 0, 0xFF, 0xFF}));  // text: value kept
  EXPECT_EQ(TValue::errDiv0, cell.GetError());
  cell.SetExcelValue(Field({3, 0, 0, 0, 0, 0, 0xFF, 0xFF}));  // empty: value kept
  EXPECT_EQ(TValue::errDiv0, cell.GetError());
  EXPECT_FALSE(cell.GetNeedsRecompute());
  cell.SetExcelValue(Field({9, 0, 0, 0, 0, 0, 0xFF, 0xFF}));  // unknown kind
  EXPECT_TRUE(cell.GetNeedsRecompute());
  cell.SetExcelValue(2.5);
  EXPECT_FALSE(cell.GetNeedsRecompute());  // reading clears the mark first
  EXPECT_EQ(2.5, cell.GetReal());
  cell.SetExcelValue(Field({1, 0, 0, 0, 0, 0, 0xFF, 0xFE}));  // byte 7 is no marker
  EXPECT_TRUE(cell.IsReal());
}

TEST(FormulaCell, ResultFieldWrites) {
  CFormulaCell cell;
  double r = -1;
  cell.GetExcelValue(r);
  EXPECT_EQ(0.0, r);  // an empty value writes the number 0, not kind 3
  cell.SetLogical(1);
  cell.GetExcelValue(r);
  EXPECT_EQ(0,
            std::memcmp(&r, std::array<unsigned char, 8>{1, 0, 1, 0, 0, 0, 0xFF, 0xFF}.data(), 8));
  cell.SetError(TValue::errNA);
  cell.GetExcelValue(r);
  CFormulaCell back;
  back.SetExcelValue(r);
  EXPECT_EQ(TValue::errNA, back.GetError());
  cell.SetValue(-0.125);
  cell.GetExcelValue(r);
  EXPECT_EQ(-0.125, r);
}

TEST(FormulaCell, RecalcValueMarksOnlyVisibleChanges) {
  CFormulaCell cell;
  cell.SetOnScreen(true);
  TValue val;
  val.SetValue(5.0);
  cell.SetRecalcValue(val);
  EXPECT_TRUE(cell.HasState(CFormulaCell::stValueChanged));
  EXPECT_TRUE(cell.HasState(CFormulaCell::stTypeChanged));  // empty to number
  cell.SetState(CFormulaCell::stValueChanged | CFormulaCell::stTypeChanged, false);
  val.SetValue(5.0);
  cell.SetRecalcValue(val);  // the same number again
  EXPECT_FALSE(cell.HasState(CFormulaCell::stValueChanged));
  val.SetValue(u"5");
  cell.SetRecalcValue(val);
  EXPECT_TRUE(cell.HasState(CFormulaCell::stTypeChanged));
  EXPECT_TRUE(val.IsEmpty());  // the source is moved
  // The number-only store marks the same way.
  cell.SetState(CFormulaCell::stValueChanged | CFormulaCell::stTypeChanged, false);
  cell.SetRecalcNumber(5.0);  // text to number
  EXPECT_TRUE(cell.HasState(CFormulaCell::stTypeChanged));
  EXPECT_EQ(5.0, cell.GetReal());
  cell.SetState(CFormulaCell::stValueChanged | CFormulaCell::stTypeChanged, false);
  cell.SetRecalcNumber(5.0);
  EXPECT_FALSE(cell.HasState(CFormulaCell::stValueChanged));
  cell.SetRecalcNumber(6.0);
  EXPECT_TRUE(cell.HasState(CFormulaCell::stValueChanged));
  EXPECT_FALSE(cell.HasState(CFormulaCell::stTypeChanged));
  CFormulaCell hidden;
  val.SetValue(1.0);
  hidden.SetRecalcValue(val);
  EXPECT_FALSE(hidden.HasState(CFormulaCell::stValueChanged));
}

// The cell holds its token stream itself: SetFormula takes the tokens over, a copy
// gets its own block, and a cell without a formula reports none.
TEST(FormulaCell, HoldsItsTokenStream) {
  const unsigned char aTokens[] = {CFormulaBase::tInt, 7, 0};
  CFormulaCell cell;
  EXPECT_EQ(nullptr, cell.GetFormula());
  auto pFormula = std::make_unique<CFormula>(aTokens, 3, nullptr, 0);
  cell.SetFormula(std::move(pFormula), CFormulaBase::ftArray);
  ASSERT_NE(nullptr, cell.GetFormula());
  EXPECT_EQ(CFormulaBase::ftArray, cell.GetFormulaType());
  ASSERT_EQ(3, cell.GetFormula()->GetPostfixLen());
  EXPECT_EQ(0, std::memcmp(aTokens, cell.GetFormula()->GetPostfix(), 3));

  std::unique_ptr<CFormulaCell> pCopy(cell.Clone());
  ASSERT_NE(nullptr, pCopy->GetFormula());
  EXPECT_NE(cell.GetFormula()->GetPostfix(), pCopy->GetFormula()->GetPostfix());
  EXPECT_TRUE(*cell.GetFormula() == *pCopy->GetFormula());
  EXPECT_EQ(CFormulaBase::ftArray, pCopy->GetFormulaType());

  cell.SetFormula(nullptr, CFormulaBase::ftCell);
  EXPECT_EQ(nullptr, cell.GetFormula());
  ASSERT_NE(nullptr, pCopy->GetFormula());  // the copy keeps its own
  EXPECT_EQ(3, pCopy->GetFormula()->GetPostfixLen());
  pCopy->Copy(&cell);  // copying a cell without a formula leaves none
  EXPECT_EQ(nullptr, pCopy->GetFormula());
}

class FormulaTextTest : public ::testing::Test {
 protected:
  void SetUp() override {
    m_pBook = std::make_unique<CBookBase>();
    m_pBook->AddToList();
    m_pSheet = m_pBook->NewSheet(u"Sheet1");
    m_pBook->NewSheet(u"Other");
  }
  void TearDown() override {
    m_pBook.reset();
    EXPECT_EQ(nullptr, CBookBase::GetFirstBook());
    CSharedCellTable::Get().RemoveAllSCT();
  }
  std::unique_ptr<CBookBase> m_pBook;
  CSheetBase* m_pSheet = nullptr;
};

// Text set on a cell reads back the same, sheet prefixes and names included.
TEST_F(FormulaTextTest, RoundTrip) {
  const char16_t* const kTexts[] = {
      u"=SUM(A1:B2)*2",
      u"=Other!A1+1",
      u"=SUM(Sheet1:Other!$B$3)",
      u"=Rate*2",
      u"=IF(A1>0,\"yes\",\"no\")",
      u"={1,2;3,4}",
      u"=SUM(A1:A65536)",
  };
  for (const char16_t* pwsz : kTexts) {
    ASSERT_EQ(0, m_pSheet->SetFormula(TCell(4, 4), pwsz));
    std::u16string sText;
    ASSERT_TRUE(m_pSheet->GetFormulaText(4, 4, sText));
    EXPECT_EQ(std::u16string(pwsz), sText);
  }
  std::u16string sText;
  ASSERT_EQ(0, m_pSheet->SetFormula(TCell(5, 5), u"=SUM(A:A)"));
  ASSERT_TRUE(m_pSheet->GetFormulaText(5, 5, sText));
  EXPECT_EQ(u"=SUM(A:A)", sText);
  ASSERT_EQ(0, m_pSheet->SetFormula(TCell(6, 6), u"=A1", CSheetBase::cftArray));
  ASSERT_TRUE(m_pSheet->GetDispFormulaText(6, 6, sText));
  EXPECT_EQ(u"{=A1}", sText);
  EXPECT_FALSE(m_pSheet->GetFormulaText(9, 9, sText));
  ASSERT_EQ(0, m_pSheet->SetFormulaR1C1(TCell(7, 7), u"=R1C1+RC[-1]"));
  ASSERT_TRUE(m_pSheet->GetFormulaText(7, 7, sText));
  EXPECT_EQ(u"=$A$1+G8", sText);
}

}  // namespace
