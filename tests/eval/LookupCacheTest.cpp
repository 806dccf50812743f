// The lookup index against a scan of the line on random tables, and the exact
// lookups through formulas when cells of the searched line change during a
// recalculation or between two.
#include <cmath>
#include <random>
#include <string>

#include "EvalFixture.h"
#include "book/CellRecord.h"
#include "eval/LookupCache.h"

namespace {

// The first usable element v compares equal to, in line order: the scan the index
// replaces.
int ScanLine(const TSheetLine& line, const TValue& v) {
  for (int i = line.nFirst; i <= line.nLast; ++i) {
    const CCell* pCell =
        line.bHorizontal ? line.pSheet->Cell(line.nLine, i) : line.pSheet->Cell(i, line.nLine);
    if (pCell == nullptr) continue;
    TValue elem;
    pCell->GetValue(elem);
    if (!elem.IsEmpty() && !elem.IsError() && v.Compare(elem) == 0) return i - line.nFirst;
  }
  return -1;
}

// Values that sit at the edges of Compare: a few bases, one or two steps of the last
// bit away, or just inside and outside the 1e-15 relative tolerance.
constexpr double kBases[] = {0.0,    -0.0,     1.0,       0.1 + 0.2, 0.3,  -2.5,
                             1e-300, 4.9e-324, 1234567.0, 1e300,     -1e15};
// Case variants, the simple folds of sharp s and sigma, and the empty text.
const char16_t* const kTexts[] = {u"",       u"a",      u"A",  u"abc",    u"ABC",    u"aBc",
                                  u"\u00DF", u"\u1E9E", u"ss", u"\u03A3", u"\u03C3", u"\u03C2"};

double RandomNumber(std::mt19937& rng) {
  double r = kBases[rng() % std::size(kBases)];
  switch (rng() % 6) {
    case 0:
      return std::nextafter(r, 1e308);
    case 1:
      return std::nextafter(std::nextafter(r, -1e308), -1e308);
    case 2:
      return r * (1 + 0.9e-15);
    case 3:
      return r * (1 - 1.1e-15);
    default:
      return r;
  }
}

class LookupCacheTest : public EvalTest {
 protected:
  // Fills the line's cells from a small pool, so that duplicates and near
  // duplicates are common; some positions stay without a cell or hold an empty one.
  void FillLine(const TSheetLine& line, std::mt19937& rng) {
    CSheetBase* pSheet = const_cast<CSheetBase*>(line.pSheet);
    for (int i = line.nFirst; i <= line.nLast; ++i) {
      const TCell at = line.bHorizontal ? TCell(line.nLine, i) : TCell(i, line.nLine);
      switch (rng() % 10) {
        case 0:
          break;  // no cell
        case 1:
          ASSERT_EQ(0, pSheet->SetCellFormat(at, 20));  // an empty cell
          break;
        case 2:
          ASSERT_EQ(0, pSheet->SetError(at, rng() % 2 ? TValue::errNA : TValue::errDiv0));
          break;
        case 3:
          ASSERT_EQ(0, pSheet->SetLogical(at, static_cast<int>(rng() % 2)));
          break;
        case 4:
        case 5:
          ASSERT_EQ(0, pSheet->SetText(at, kTexts[rng() % std::size(kTexts)]));
          break;
        default:
          ASSERT_EQ(0, pSheet->SetNumber(at, RandomNumber(rng)));
      }
    }
  }
};

// Random lines down columns and along rows, some reaching past the sheet's last
// row, each probed with numbers, texts and logicals from the same pools.
TEST_F(LookupCacheTest, IndexAgreesWithScan) {
  std::mt19937 rng(20240611);
  for (int t = 0; t < 16; ++t) {
    SCOPED_TRACE("table " + std::to_string(t));
    TSheetLine line;
    line.bHorizontal = t % 2 == 1;
    line.pSheet = line.bHorizontal ? m_pSheet2 : m_pSheet;
    line.nLine = t;
    line.nFirst = static_cast<int>(rng() % 8);
    line.nLast = line.nFirst + CLookupCache::kMinLineSize + static_cast<int>(rng() % 160);
    FillLine(line, rng);
    if (!line.bHorizontal) line.nLast += 20;  // rows the sheet does not have
    CLookupCache::TIndex index;
    index.Build(line);
    for (int p = 0; p < 200; ++p) {
      TValue v;
      if (p % 4 == 0) {
        v.SetValue(kTexts[rng() % std::size(kTexts)]);
      } else if (p % 20 == 1) {
        v.SetLogical(static_cast<int>(rng() % 2));
      } else {
        v.SetValue(RandomNumber(rng));
      }
      std::u16string text;
      v.GetValue(text);
      SCOPED_TRACE(Narrow(text));
      ASSERT_EQ(ScanLine(line, v), index.Find(v));
    }
  }
}

// Constants of a line without formulas changed by the host between recalculations,
// in both recalculation modes: each recalculation starts without indexes. Column E
// searches the line often enough for it to be indexed.
TEST_F(LookupCacheTest, HostEditsBetweenRecalcs) {
  for (int i = 0; i < 40; ++i) {
    ASSERT_EQ(0, m_pSheet3->SetNumber(TCell(i, 0), i + 1));
    ASSERT_EQ(0, m_pSheet3->SetNumber(TCell(i, 1), 10 * (i + 1)));
  }
  for (int i = 1; i <= CLookupCache::kScansBeforeIndex; ++i)
    ASSERT_EQ(0, SetFormula(("E" + std::to_string(i)).c_str(), "=MATCH(1,A1:A40,0)", m_pSheet3));
  ASSERT_EQ(0, SetFormula("D1", "=MATCH(3,A1:A40,0)", m_pSheet3));
  ASSERT_EQ(0, SetFormula("D2", "=VLOOKUP(4,A1:B40,2,FALSE)", m_pSheet3));
  ASSERT_EQ(0, SetFormula("D3", "=MATCH(1000,A1:A40,0)", m_pSheet3));
  ASSERT_EQ(0, SetFormula("D4", "=VLOOKUP(\"KEY\",A1:B40,2,FALSE)", m_pSheet3));
  for (int nMinimal : {0, 1}) {
    SCOPED_TRACE(nMinimal);
    m_pBook->SetMinimalRecalc(nMinimal);
    SetNumber("A7", 7, m_pSheet3);
    SetNumber("A8", 8, m_pSheet3);
    m_pBook->Recalc();
    EXPECT_EQ("#N/A", Text("D3", m_pSheet3));
    EXPECT_EQ("#N/A", Text("D4", m_pSheet3));
    SetNumber("A7", 1000, m_pSheet3);
    SetText("A8", u"Key", m_pSheet3);
    m_pBook->Recalc();
    EXPECT_EQ("3", Text("D1", m_pSheet3));
    EXPECT_EQ("40", Text("D2", m_pSheet3));
    EXPECT_EQ("7", Text("D3", m_pSheet3));
    EXPECT_EQ("80", Text("D4", m_pSheet3));
  }
}

// Sheet1 A1:B40 and Sheet2 A1:AN2 hold keys 1..40 with values ten times the key; the
// twentieth key is a formula whose value follows Sheet1!C1. Column D (from row 5 on
// Sheet2, below its table) searches the line through INDIRECT, which the order
// cannot see, often enough for it to be indexed, and feeds the key formula: it
// searches before the key is stored, the direct lookups in column E after.
class LookupCacheRecalcTest : public LookupCacheTest {
 protected:
  static constexpr int kEarlySearches = CLookupCache::kScansBeforeIndex + 1;
  static std::string At(const char* pszCol, int nRow) { return pszCol + std::to_string(nRow); }

  void SetUp() override {
    LookupCacheTest::SetUp();
    for (int i = 0; i < 40; ++i) {
      ASSERT_EQ(0, m_pSheet->SetNumber(TCell(i, 0), i + 1));
      ASSERT_EQ(0, m_pSheet->SetNumber(TCell(i, 1), 10 * (i + 1)));
      ASSERT_EQ(0, m_pSheet2->SetNumber(TCell(0, i), i + 1));
      ASSERT_EQ(0, m_pSheet2->SetNumber(TCell(1, i), 10 * (i + 1)));
    }
    SetNumber("C1", 100);
    for (int i = 1; i <= kEarlySearches; ++i) {
      const std::string key = std::to_string(i);
      ASSERT_EQ(0, SetFormula(At("D", i).c_str(),
                              i % 2 ? ("=MATCH(" + key + ",INDIRECT(\"A1:A40\"),0)").c_str()
                                    : ("=VLOOKUP(" + key + ",INDIRECT(\"A1:B40\"),2,0)").c_str()));
      ASSERT_EQ(0, SetFormula(At("D", i + 4).c_str(),
                              i % 2 ? ("=MATCH(" + key + ",INDIRECT(\"A1:AN1\"),0)").c_str()
                                    : ("=HLOOKUP(" + key + ",INDIRECT(\"A1:AN2\"),2,0)").c_str(),
                              m_pSheet2));
    }
    ASSERT_EQ(0, SetFormula("A20", ("=C1+SUM(D1:" + At("D", kEarlySearches) + ")*0").c_str()));
    ASSERT_EQ(0,
              SetFormula("T1", ("=Sheet1!C1+SUM(D5:" + At("D", kEarlySearches + 4) + ")*0").c_str(),
                         m_pSheet2));
    ASSERT_EQ(0, SetFormula("E1", "=MATCH(C1,A1:A40,0)"));
    ASSERT_EQ(0, SetFormula("E2", "=VLOOKUP(C1,A1:B40,2,0)"));
    ASSERT_EQ(0, SetFormula("E5", "=MATCH(Sheet1!C1,A1:AN1,0)", m_pSheet2));
    ASSERT_EQ(0, SetFormula("E6", "=HLOOKUP(Sheet1!C1,A1:AN2,2,0)", m_pSheet2));
    m_pBook->Recalc();
  }
  void ExpectKeyFound() {
    for (CSheetBase* pSheet : {m_pSheet, m_pSheet2}) {
      SCOPED_TRACE(pSheet == m_pSheet ? "down" : "across");
      const int nRow1 = pSheet == m_pSheet ? 1 : 5;  // the first row of the formulas
      for (int i = 1; i <= kEarlySearches; ++i)
        EXPECT_EQ(std::to_string(i % 2 ? i : 10 * i), Text(At("D", nRow1 + i - 1).c_str(), pSheet));
      EXPECT_EQ("20", Text(At("E", nRow1).c_str(), pSheet));
      EXPECT_EQ("200", Text(At("E", nRow1 + 1).c_str(), pSheet));
    }
  }
};

// The key formulas change after column D searched their line: the later lookups see
// the new key, not the one the line held when it was first searched.
TEST_F(LookupCacheRecalcTest, StoresDuringRecalcReachLaterSearches) {
  for (double rKey : {100.0, 300.0, -7.5}) {
    SCOPED_TRACE(rKey);
    SetNumber("C1", rKey);
    m_pBook->Recalc();
    ExpectKeyFound();
  }
}

}  // namespace
