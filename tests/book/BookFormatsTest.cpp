// The book's number formats, a cell's display text through them, and typed text that
// proposes a format. Every test runs in en-US and leaves it so.
#include <string>

#include "BookFixture.h"
#include "book/CellRecord.h"
#include "format/ValFormat.h"
#include "platform/Locale.h"

namespace {

TValue Real(double r) {
  TValue value;
  value.SetValue(r);
  return value;
}

class BookFormatsTest : public BookTest {
 protected:
  void SetUp() override {
    ASSERT_TRUE(SetLocale("en-US"));
    BookTest::SetUp();
  }
  void TearDown() override {
    BookTest::TearDown();
    ASSERT_TRUE(SetLocale("en-US"));
  }
  std::u16string Shown(int nRow, int nCol, int nWidth = TGeneralNumber::kCellWidth) const {
    return m_pSheet->GetFormattedText(nRow, nCol, nWidth);
  }
  std::u16string ShowFormat(int nIndex, double r) const {
    m_pBook->GetValFormat(nIndex)->Format(r);
    return CSingleFormat::m_Buf;
  }
};

// The book only forwards to its format list (BuiltInFormatsTest covers the list): a
// new book holds the built-ins of the locale and the quick formats, user formats
// follow them.
TEST_F(BookFormatsTest, NewBookHoldsTheBuiltInFormats) {
  ASSERT_EQ(64, m_pBook->GetNumValFormats());
  EXPECT_EQ(u"3/15/2023", ShowFormat(14, 45000.75));
  m_pBook->GetQuickFormat(CValFormatList::qfDate).Format(45000.75);
  EXPECT_EQ(u"03/15/2023", std::u16string(CSingleFormat::m_Buf));
  EXPECT_EQ(64, m_pBook->AddValFormat(u"0.000", ptEnglish));
  EXPECT_EQ(65, m_pBook->GetNumValFormats());
  ASSERT_TRUE(SetLocale("de-DE"));
  CBookBase book;
  book.GetValFormat(14)->Format(45000.75);
  EXPECT_EQ(u"15.03.2023", std::u16string(CSingleFormat::m_Buf));
}

// Cell format 15 (the default) shows General, 0 shows "d-mmm-yy"; the rest map to the
// same index. The inverse gives back every cell index, and the default for indexes
// that no cell format can hold.
TEST_F(BookFormatsTest, CellFormatToNumberFormat) {
  constexpr struct {
    unsigned short wCell;
    int nValFormat;
  } kCases[] = {{15, 0}, {0, 15}, {1, 1}, {14, 14}, {16, 16}, {49, 49}, {64, 64}, {0xFFFF, 0xFFFF}};
  for (const auto& c : kCases) {
    SCOPED_TRACE(c.wCell);
    EXPECT_EQ(c.nValFormat, CBookBase::GetCellValFormatIndex(c.wCell));
    EXPECT_EQ(c.wCell, CBookBase::GetCellFormatForValFormat(c.nValFormat));
  }
  EXPECT_EQ(15, CBookBase::GetCellFormatForValFormat(-1));
  EXPECT_EQ(15, CBookBase::GetCellFormatForValFormat(0x10000));
}

TEST_F(BookFormatsTest, FormattedTextOfEachKind) {
  const int nQuoted = m_pBook->AddValFormat(u"\"x\"@", ptEnglish);
  const int nRed = m_pBook->AddValFormat(u"0.0;[Red]-0.0", ptEnglish);
  ASSERT_GT(nQuoted, 63);
  ASSERT_GT(nRed, 63);
  struct TCase {
    TValue value;
    int nValFormat;
    const char16_t* pwszShown;
  };
  TValue text, logical, error;
  text.SetValue(u"abc");
  logical.SetLogical(1);
  error.SetError(TValue::errDiv0);
  const TCase kCases[] = {
      {Real(2.0 / 3), 0, u"0.666666667"},  // General in a standard-width cell
      {Real(-1234.5), 4, u"-1,234.50"},
      {Real(-1234.5), nRed, u"-1234.5"},
      {Real(45352.0), 14, u"3/1/2024"},
      {Real(45352.5), 22, u"3/1/2024 12:00"},
      {Real(45352.0), 15, u"1-Mar-24"},  // number format 15 through cell format 0
      {Real(-1.0), 14, u""},             // no date before serial 0: fill only
      {text, 0, u"abc"},
      {text, nQuoted, u"xabc"},
      {Real(5.0), nQuoted, u"5"},
      {logical, nQuoted, u"TRUE"},  // no format applies to logicals and errors
      {error, 4, u"#DIV/0!"},
  };
  int nRow = 0;
  for (const TCase& c : kCases) {
    SCOPED_TRACE(nRow);
    const TCell cell(nRow++, 1);
    ASSERT_EQ(0, m_pSheet->SetValue(cell, c.value));
    ASSERT_EQ(0, m_pSheet->SetCellFormat(cell, CBookBase::GetCellFormatForValFormat(c.nValFormat)));
    EXPECT_EQ(c.nValFormat, m_pSheet->GetValFormatIndex(cell));
    EXPECT_EQ(c.pwszShown, Shown(cell.row, cell.col));
  }
  EXPECT_EQ(u"0.666666666666667", Shown(0, 1, 0));  // no width: 15 digits
  (void)Shown(2, 1);                                // the row of the red format
  EXPECT_TRUE(CValFormat::m_bIsColorRef);           // the colour is reported beside the text
  EXPECT_EQ(u"", Shown(200, 1));                    // no cell
  EXPECT_EQ(u"", Shown(-1, 0));                     // outside the grid
  CSheetBase loose(nullptr, 0);                     // no book: General
  ASSERT_EQ(0, loose.SetNumber(TCell(0, 0), 2.5));
  EXPECT_EQ(u"2.5", std::u16string(loose.GetFormattedText(0, 0)));
}

// Typed text stores the value it reads as and, in a General cell, the format its
// shape proposes; a cell with a format of its own keeps it.
TEST_F(BookFormatsTest, TypedTextProposesAFormat) {
  const int nTwoDecimals = 2;
  struct TCase {
    const char16_t* pwszTyped;
    int nPresetFormat;  // -1: the default cell format
    TValue::TValType vt;
    int nValFormat;
    const char16_t* pwszShown;
  };
  const TCase kCases[] = {
      {u"3/1/2024", -1, TValue::vtReal, 14, u"3/1/2024"},
      {u"1,234.5", -1, TValue::vtReal, 4, u"1,234.50"},
      {u"1.5E+3", -1, TValue::vtReal, 11, u"1.50E+03"},
      {u"12.5", -1, TValue::vtReal, 0, u"12.5"},
      {u"3/1/2024", nTwoDecimals, TValue::vtReal, nTwoDecimals, u"45352.00"},
      {u"true", -1, TValue::vtLogical, 0, u"TRUE"},
      {u"#n/a", -1, TValue::vtError, 0, u"#N/A"},
      {u"1,23", -1, TValue::vtText, 0, u"1,23"},  // a group needs three digits
  };
  int nRow = 0;
  for (const TCase& c : kCases) {
    SCOPED_TRACE(nRow);
    const TCell cell(nRow++, 0);
    if (c.nPresetFormat >= 0) {
      ASSERT_EQ(
          0, m_pSheet->SetCellFormat(cell, CBookBase::GetCellFormatForValFormat(c.nPresetFormat)));
    }
    ASSERT_EQ(0, m_pSheet->SetValueFromText(cell, c.pwszTyped));
    const CCell* pCell = m_pSheet->Cell(cell);
    ASSERT_NE(nullptr, pCell);
    EXPECT_EQ(c.vt, pCell->GetValType());
    EXPECT_EQ(c.nValFormat, m_pSheet->GetValFormatIndex(cell));
    EXPECT_EQ(c.pwszShown, Shown(cell.row, cell.col));
  }
  EXPECT_DOUBLE_EQ(45352, m_pSheet->QuickGetNumber(0, 0));
  // The German reading of the same texts.
  ASSERT_TRUE(SetLocale("de-DE"));
  ASSERT_EQ(0, m_pSheet->SetValueFromText(TCell(30, 0), u"1.234,5"));
  EXPECT_DOUBLE_EQ(1234.5, m_pSheet->QuickGetNumber(30, 0));
  ASSERT_EQ(0, m_pSheet->SetValueFromText(TCell(31, 0), u"3/1/2024", ptEnglish));
  EXPECT_DOUBLE_EQ(45352, m_pSheet->QuickGetNumber(31, 0));
  ASSERT_TRUE(SetLocale("en-US"));
  // An empty text clears the value; the position is refused outside the grid.
  ASSERT_EQ(0, m_pSheet->SetValueFromText(TCell(0, 0), u""));
  EXPECT_TRUE(m_pSheet->IsEmptyCell(0, 0));
  EXPECT_EQ(-1, m_pSheet->SetValueFromText(TCell(65536, 0), u"1"));
}

}  // namespace
