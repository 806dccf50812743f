// The reference walk over token streams the parser writes: every rectangle read,
// the volatile and untrackable marks, and truncated streams.
#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "book/BookBase.h"
#include "book/SharedCellTable.h"
#include "book/SheetBase.h"
#include "formula/FormulaParser.h"
#include "formula/FormulaRefIterator.h"

namespace {

using TRef = CFormulaRefIterator::TRef;

std::string Describe(const TRef& ref) {
  switch (ref.eKind) {
    case TRef::rkArea:
      return "area " + std::to_string(ref.nRow1) + "," + std::to_string(ref.nCol1) + ":" +
             std::to_string(ref.nRow2) + "," + std::to_string(ref.nCol2);
    case TRef::rkName:
      return "name " + std::to_string(ref.nName);
    case TRef::rkNameX:
      return "namex";
    case TRef::rkVolatile:
      return "volatile";
    case TRef::rkUntrackable:
      return "untrackable";
  }
  return "?";
}

class RefIteratorTest : public ::testing::Test {
 protected:
  void SetUp() override {
    m_pBook = std::make_unique<CBookBase>();
    m_pBook->AddToList();
    m_pSheet = m_pBook->NewSheet(u"S");
  }
  void TearDown() override {
    m_pBook.reset();
    CSharedCellTable::Get().RemoveAllSCT();
  }
  // The walk's reports for text parsed at base, one string each.
  std::vector<std::string> Walk(const char16_t* pwszText, const TCell& base,
                                CFormulaBase::EFormulaType type = CFormulaBase::ftCell) {
    CFormulaParser parser(m_pBook.get(), m_pSheet, base);
    CFormula* pParsed = nullptr;
    EXPECT_EQ(0, parser.Parse(pwszText, &pParsed, type));
    std::unique_ptr<CFormula> pFormula(pParsed);
    std::vector<std::string> out;
    if (!pFormula) return out;
    CFormulaRefIterator it(m_pBook.get(), m_pSheet, pFormula.get(), type, base);
    TRef ref;
    while (it.Next(ref)) out.push_back(Describe(ref));
    return out;
  }

  std::unique_ptr<CBookBase> m_pBook;
  CSheetBase* m_pSheet = nullptr;
};

struct TWalkCase {
  const char16_t* pwszText;
  std::vector<std::string> expected;
};

TEST_F(RefIteratorTest, ReportsWhatTheFormulaReads) {
  const TWalkCase kCases[] = {
      {u"1+2", {}},
      {u"A1+$B$2", {"area 0,0:0,0", "area 1,1:1,1"}},
      {u"SUM(B3:A1)", {"area 0,0:2,1"}},  // corners put in order
      {u"SUM(A:A)", {"area 0,0:65535,0"}},
      {u"IV65536", {"area 65535,255:65535,255"}},
      {u"NOW()+A1", {"volatile", "volatile", "area 0,0:0,0"}},  // attribute, then the call
      {u"SUM(OFFSET(A1,1,1))", {"volatile", "area 0,0:0,0", "untrackable"}},
      {u"INDIRECT(\"A1\")", {"volatile", "untrackable"}},
      {u"RAND()*TODAY()", {"volatile", "volatile", "volatile"}},
      {u"IF(A1>0,B1,C1)", {"area 0,0:0,0", "area 0,1:0,1", "area 0,2:0,2"}},
      {u"(A1:B2 B2:C3)", {"area 0,0:1,1", "area 1,1:2,2"}},  // intersection through a memory token
  };
  for (const TWalkCase& c : kCases) {
    SCOPED_TRACE(
        std::string(c.pwszText, c.pwszText + std::char_traits<char16_t>::length(c.pwszText)));
    EXPECT_EQ(c.expected, Walk(c.pwszText, TCell(5, 5)));
  }
}

// In offset formulas relative parts are offsets from the base cell and wrap round
// the grid; absolute parts stay.
TEST_F(RefIteratorTest, OffsetReferencesFollowTheBase) {
  EXPECT_EQ(std::vector<std::string>{"area 10,3:10,3"},
            Walk(u"D11", TCell(2, 2), CFormulaBase::ftShared));
  // The same text stored for base C3 and read at base B2 moves by one row and column.
  CFormulaParser parser(m_pBook.get(), m_pSheet, TCell(2, 2));
  CFormula* pParsed = nullptr;
  ASSERT_EQ(0, parser.Parse(u"D11+$A$1", &pParsed, CFormulaBase::ftShared));
  std::unique_ptr<CFormula> pFormula(pParsed);
  CFormulaRefIterator it(m_pBook.get(), m_pSheet, pFormula.get(), CFormulaBase::ftShared,
                         TCell(1, 1));
  TRef ref;
  ASSERT_TRUE(it.Next(ref));
  EXPECT_EQ("area 9,2:9,2", Describe(ref));
  ASSERT_TRUE(it.Next(ref));
  EXPECT_EQ("area 0,0:0,0", Describe(ref));
  EXPECT_FALSE(it.Next(ref));
  // Near the grid's edge the offset wraps.
  CFormulaRefIterator wrap(m_pBook.get(), m_pSheet, pFormula.get(), CFormulaBase::ftShared,
                           TCell(65535, 255));
  ASSERT_TRUE(wrap.Next(ref));
  EXPECT_EQ("area 7,0:7,0", Describe(ref));
}

// Every prefix of a stream is walked without reading past its end; a prefix that
// cuts a token reports untrackable.
TEST_F(RefIteratorTest, TruncatedStreamsStayInside) {
  CFormulaParser parser(m_pBook.get(), m_pSheet, TCell(0, 0));
  CFormula* pParsed = nullptr;
  ASSERT_EQ(0, parser.Parse(u"SUM(A1:B2,\"text\",C3,NOW())*D4", &pParsed, CFormulaBase::ftCell));
  std::unique_ptr<CFormula> pFormula(pParsed);
  const int nLen = pFormula->GetPostfixLen();
  bool bSawTruncated = false;
  for (int n = 0; n <= nLen; n++) {
    // A separate heap block of exactly n bytes, so the sanitizer sees any overread.
    std::unique_ptr<unsigned char[]> pBytes(new unsigned char[n > 0 ? n : 1]);
    std::copy(pFormula->GetPostfix(), pFormula->GetPostfix() + n, pBytes.get());
    CFormula cut(pBytes.get(), n, nullptr, 0);
    CFormulaRefIterator it(m_pBook.get(), m_pSheet, &cut, CFormulaBase::ftCell, TCell(0, 0));
    TRef ref;
    int nSteps = 0;
    while (it.Next(ref) && nSteps < 100) {
      nSteps++;
      if (ref.eKind == TRef::rkUntrackable) bSawTruncated = true;
    }
    EXPECT_LT(nSteps, 100);
  }
  EXPECT_TRUE(bSawTruncated);
}

}  // namespace
