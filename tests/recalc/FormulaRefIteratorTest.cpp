// The reference walk over token streams the parser writes: every rectangle read,
// the volatile and untrackable marks, and truncated streams.
#include <gtest/gtest.h>

#include <memory>
#include <random>
#include <string>
#include <vector>

#include "book/BookBase.h"
#include "book/SharedCellTable.h"
#include "book/SheetBase.h"
#include "eval/FuncTable.h"
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

// Every field of a report, for comparing walks.
std::string DescribeAll(const TRef& ref) {
  return std::to_string(ref.eKind) + ":" + std::to_string(ref.nExternSheet) + ":" +
         std::to_string(ref.nRow1) + "," + std::to_string(ref.nCol1) + ":" +
         std::to_string(ref.nRow2) + "," + std::to_string(ref.nCol2) + ":" +
         std::to_string(ref.nName);
}

// The walk token by token, each size from TPostfixPtr::SizeToken and each call looked
// up in the function table: what the iterator must report, however it steps.
std::vector<std::string> ModelWalk(const std::vector<unsigned char>& bytes, bool bOffset,
                                   const TCell& base) {
  std::vector<std::string> out;
  TRef ref;
  auto Untrackable = [&] {
    ref = TRef();
    ref.eKind = TRef::rkUntrackable;
    out.push_back(DescribeAll(ref));
  };
  auto Word = [&](size_t i) { return static_cast<unsigned short>(bytes[i] | bytes[i + 1] << 8); };
  auto Row = [&](unsigned short w, unsigned short wCol, bool bOff) {
    return bOff && (wCol & CFormulaBase::kRowRelative) ? (base.row + w) & kMaxRow : int{w};
  };
  auto Col = [&](unsigned short wCol, bool bOff) {
    return bOff && (wCol & CFormulaBase::kColRelative) ? (base.col + (wCol & 0xFF)) & kMaxCol
                                                       : wCol & 0xFF;
  };
  size_t i = 0;
  while (i < bytes.size()) {
    const unsigned char c = CFormulaBase::TokenBase(bytes[i++]);
    const size_t nLeft = bytes.size() - i;
    if (c == CFormulaBase::tInvalid || (c >= 0x30 && c <= 0x38) || c > CFormulaBase::tAreaErr3d ||
        ((c == CFormulaBase::tStr || c == CFormulaBase::tExtended) && nLeft < 1) ||
        (c == CFormulaBase::tAttr && nLeft < 3)) {
      Untrackable();
      return out;
    }
    std::vector<unsigned char> scratch(bytes.begin() + static_cast<long>(i), bytes.end());
    scratch.resize(scratch.size() + 3);  // SizeToken reads up to three operand bytes
    const size_t nSize =
        static_cast<size_t>(CFormulaBase::TPostfixPtr(scratch.data()).SizeToken(c));
    if (nSize > nLeft) {
      Untrackable();
      return out;
    }
    const size_t op = i;
    i += nSize;
    ref = TRef();
    const bool b3d = c == CFormulaBase::tRef3d || c == CFormulaBase::tArea3d;
    const size_t q = b3d ? op + 2 : op;
    if (b3d) ref.nExternSheet = static_cast<short>(Word(op));
    if (c == CFormulaBase::tRef || c == CFormulaBase::tRefN || c == CFormulaBase::tRef3d) {
      const bool bOff = bOffset || c == CFormulaBase::tRefN;
      ref.nRow1 = ref.nRow2 = Row(Word(q), Word(q + 2), bOff);
      ref.nCol1 = ref.nCol2 = Col(Word(q + 2), bOff);
    } else if (c == CFormulaBase::tArea || c == CFormulaBase::tAreaN || b3d) {
      const bool bOff = bOffset || c == CFormulaBase::tAreaN;
      const int r1 = Row(Word(q), Word(q + 4), bOff), r2 = Row(Word(q + 2), Word(q + 6), bOff);
      const int c1 = Col(Word(q + 4), bOff), c2 = Col(Word(q + 6), bOff);
      ref.nRow1 = std::min(r1, r2), ref.nRow2 = std::max(r1, r2);
      ref.nCol1 = std::min(c1, c2), ref.nCol2 = std::max(c1, c2);
    } else if (c == CFormulaBase::tName) {
      ref.eKind = TRef::rkName;
      ref.nName = Word(op);
    } else if (c == CFormulaBase::tNameX) {
      ref.eKind = TRef::rkNameX;
      ref.nExternSheet = static_cast<short>(Word(op));
      ref.nName = Word(op + 2);
    } else if (c == CFormulaBase::tAttr) {
      if (!(bytes[op] & CFormulaBase::kAttrVolatile)) continue;
      ref.eKind = TRef::rkVolatile;
    } else if (c == CFormulaBase::tFunc || c == CFormulaBase::tFuncVar) {
      const unsigned nFunc = Word(c == CFormulaBase::tFuncVar ? op + 1 : op) & 0x7FFF;
      const TFuncInfo* pInfo = GetFuncInfo(nFunc);
      if (nFunc == 78 || nFunc == 148 || nFunc == kFuncExtern || nFunc == kFuncAddIn)
        ref.eKind = TRef::rkUntrackable;
      else if (pInfo && pInfo->bVolatile)
        ref.eKind = TRef::rkVolatile;
      else
        continue;
    } else if (c == CFormulaBase::tExp || c == CFormulaBase::tTbl || c == CFormulaBase::tExtended) {
      ref.eKind = TRef::rkUntrackable;
    } else {
      continue;
    }
    out.push_back(DescribeAll(ref));
  }
  return out;
}

// Random streams, most tokens well formed, some codes no token has and some operands
// cut short, walked one report at a time and in batches of several sizes: the same
// reports as the model. Each stream is its own heap block, so the sanitizer sees any
// read past its end.
TEST_F(RefIteratorTest, RandomStreamsMatchTheModelWalk) {
  // Codes with their class variants, weighted toward references, calls and tAttr.
  const std::vector<unsigned char> kCodes = {
      0x24, 0x44, 0x64, 0x25, 0x45, 0x2C, 0x4C, 0x2D, 0x3A, 0x5A, 0x3B, 0x7B, 0x23, 0x43,
      0x39, 0x59, 0x21, 0x41, 0x22, 0x42, 0x62, 0x19, 0x19, 0x19, 0x17, 0x18, 0x01, 0x02,
      0x03, 0x05, 0x08, 0x15, 0x16, 0x1C, 0x1D, 0x1E, 0x1F, 0x20, 0x26, 0x29, 0x2A, 0x1A};
  // Function numbers: volatile, run-time references, external and plain ones.
  const unsigned short kFuncs[] = {74, 63, 78, 148, 255, 370, 4, 1, 400, 0x8004};
  std::mt19937 rng(11);
  for (int nTrial = 0; nTrial < 3000; nTrial++) {
    SCOPED_TRACE(nTrial);
    std::vector<unsigned char> bytes;
    const int nTokens = static_cast<int>(rng() % 40);
    for (int t = 0; t < nTokens; t++) {
      const unsigned char c =
          rng() % 50 == 0 ? static_cast<unsigned char>(rng()) : kCodes[rng() % kCodes.size()];
      bytes.push_back(c);
      const unsigned char cBase = CFormulaBase::TokenBase(c);
      size_t nOperands = rng() % 12;
      if (cBase == CFormulaBase::tFunc || cBase == CFormulaBase::tFuncVar) {
        if (cBase == CFormulaBase::tFuncVar) bytes.push_back(static_cast<unsigned char>(rng()));
        const unsigned short w = kFuncs[rng() % std::size(kFuncs)];
        bytes.push_back(static_cast<unsigned char>(w));
        bytes.push_back(static_cast<unsigned char>(w >> 8));
        nOperands = 0;
      } else if (cBase == CFormulaBase::tAttr) {
        bytes.push_back(static_cast<unsigned char>(rng() % 32));  // flags, sometimes choose
        bytes.push_back(static_cast<unsigned char>(rng() % 4));
        bytes.push_back(0);
        nOperands = rng() % 10;
      } else if (cBase == CFormulaBase::tStr) {
        bytes.push_back(static_cast<unsigned char>(rng() % 6));
        nOperands = rng() % 12;
      } else if (cBase < 0x3E && CFormulaBase::TPostfixPtr::m_bSizes[cBase] != 255 &&
                 rng() % 8 != 0) {
        nOperands = CFormulaBase::TPostfixPtr::m_bSizes[cBase];  // usually the exact size
      }
      for (size_t k = 0; k < nOperands; k++) bytes.push_back(static_cast<unsigned char>(rng()));
    }
    const bool bOffset = rng() % 2 == 0;
    const TCell base(static_cast<int>(rng() % 65536), static_cast<int>(rng() % 256));
    const auto type = bOffset ? CFormulaBase::ftShared : CFormulaBase::ftCell;
    const std::vector<std::string> expected = ModelWalk(bytes, bOffset, base);
    CFormula formula(bytes.data(), static_cast<int>(bytes.size()), nullptr, 0);
    for (const int nBatch : {1, 2, 3, 64}) {
      SCOPED_TRACE(nBatch);
      CFormulaRefIterator it(m_pBook.get(), m_pSheet, &formula, type, base);
      std::vector<TRef> refs(static_cast<size_t>(nBatch));
      std::vector<std::string> got;
      for (;;) {
        const int n = it.Next(refs.data(), nBatch);
        for (int k = 0; k < n; k++) got.push_back(DescribeAll(refs[static_cast<size_t>(k)]));
        if (n < nBatch) break;
      }
      EXPECT_EQ(expected, got);
    }
  }
}

}  // namespace
