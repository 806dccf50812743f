// The recalculation chain on real books: dependency order against naive repeated
// evaluation, circular references with and without iteration, minimal
// recalculation, and chains far deeper than the machine stack would allow.
#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <random>
#include <string>
#include <vector>

#include "book/BookBase.h"
#include "book/Row.h"
#include "book/SharedCellTable.h"
#include "book/SheetBase.h"
#include "eval/FormulaEvaluator.h"
#include "formula/FormulaCell.h"
#include "recalc/RecalcChain.h"

namespace {

// A book that counts its circular-reference notices.
class CCountingBook : public CBookBase {
 public:
  void NotifyCircularRefs() override { m_nNotices++; }
  int m_nNotices = 0;
};

std::u16string U(const std::string& s) { return std::u16string(s.begin(), s.end()); }

std::string A1(int nRow, int nCol) {
  return std::string(1, static_cast<char>('A' + nCol)) + std::to_string(nRow + 1);
}

class RecalcTest : public ::testing::Test {
 protected:
  void SetUp() override { ASSERT_EQ(nullptr, CBookBase::GetFirstBook()); }
  void TearDown() override {
    m_Books.clear();
    EXPECT_EQ(nullptr, CBookBase::GetFirstBook());
    CSharedCellTable::Get().RemoveAllSCT();
  }
  CCountingBook* NewBook() {
    m_Books.push_back(std::make_unique<CCountingBook>());
    CCountingBook* pBook = m_Books.back().get();
    pBook->AddToList();
    pBook->NewSheet(u"S");
    return pBook;
  }
  static CSheetBase* Sheet(CBookBase* pBook) { return pBook->SheetBase(0); }
  static void Set(CBookBase* pBook, const std::string& cell, const std::string& text) {
    const int nRow = std::stoi(cell.substr(1)) - 1;
    const TCell at(nRow, cell[0] - 'A');
    if (text[0] == '=')
      ASSERT_EQ(0, Sheet(pBook)->SetFormula(at, U(text).c_str())) << cell << " " << text;
    else
      ASSERT_EQ(0, Sheet(pBook)->SetNumber(at, std::stod(text)));
  }
  static void Set(CBookBase* pBook,
                  std::initializer_list<std::pair<const char*, const char*>> cells) {
    for (const auto& [pszCell, pszText] : cells) Set(pBook, pszCell, pszText);
  }
  static double Num(CBookBase* pBook, int nRow, int nCol) {
    TValue value;
    Sheet(pBook)->GetValue(nRow, nCol, &value);
    double r = -12345;
    if (value.GetValType() == TValue::vtReal) value.GetValue(r);
    return r;
  }
  // The numbers in row nRow, columns A onwards.
  static std::vector<double> Nums(CBookBase* pBook, int nRow, int nCols) {
    std::vector<double> values;
    for (int c = 0; c < nCols; c++) values.push_back(Num(pBook, nRow, c));
    return values;
  }
  // The reference: every formula evaluated again and again, in position order and
  // without any chain, until a whole pass changes nothing.
  static void NaiveRecalc(CBookBase* pBook) {
    CSheetBase* pSheet = Sheet(pBook);
    for (int nPass = 0; nPass < 1000; nPass++) {
      bool bChanged = false;
      for (int r = 0; r < pSheet->Rows(); r++) {
        CRow* pRow = pSheet->Row(r);
        for (int c = 0; pRow && c < pRow->Cells(); c++) {
          CCell* pCell = pRow->Cell(c);
          if (!pCell || !pCell->IsFormula()) continue;
          auto* pFormula = static_cast<CFormulaCell*>(pCell);
          TValue before;
          pFormula->GetValue(before);
          CFormulaEvaluator evaluator(pBook, pSheet, pFormula, TCell(r, c));
          evaluator.Evaluate(pFormula);
          TValue after;
          pFormula->GetValue(after);
          if (before.GetValType() != after.GetValType() || before.Compare(after) != 0)
            bChanged = true;
        }
      }
      if (!bChanged) return;
    }
    FAIL() << "naive evaluation did not settle";
  }

  std::vector<std::unique_ptr<CCountingBook>> m_Books;
};

// Random acyclic books: column c's formulas read cells and ranges of columns left of
// it, entered in a random order. The chain must give what naive repetition gives,
// after a full recalculation and after minimal recalculations of random edits.
TEST_F(RecalcTest, OrderMatchesNaiveEvaluation) {
  std::mt19937 rng(7);
  constexpr int kRows = 12, kCols = 6;
  for (int nTrial = 0; nTrial < 20; nTrial++) {
    SCOPED_TRACE(nTrial);
    std::vector<std::pair<std::string, std::string>> entries;
    for (int r = 0; r < kRows; r++) entries.push_back({A1(r, 0), std::to_string(rng() % 100)});
    for (int c = 1; c < kCols; c++)
      for (int r = 0; r < kRows; r++) {
        if (rng() % 5 == 0) continue;  // holes
        auto Ref = [&] { return A1(static_cast<int>(rng() % kRows), static_cast<int>(rng() % c)); };
        const unsigned nShape = rng() % 4;
        std::string f;
        if (nShape == 0) f = "=" + Ref() + "+" + Ref();
        if (nShape == 1) f = "=" + Ref() + "*2-" + Ref();
        if (nShape == 3) f = "=MAX(" + Ref() + "," + Ref() + ")-" + Ref();
        if (nShape == 2) {
          const int nCol = static_cast<int>(rng() % c);
          const int r1 = static_cast<int>(rng() % kRows), r2 = static_cast<int>(rng() % kRows);
          f = "=SUM(" + A1(std::min(r1, r2), nCol) + ":" + A1(std::max(r1, r2), nCol) + ")+1";
        }
        entries.push_back({A1(r, c), f});
      }
    std::shuffle(entries.begin(), entries.end(), rng);
    CBookBase* pChain = NewBook();
    CBookBase* pNaive = NewBook();
    pChain->SetMinimalRecalc(1);
    for (const auto& e : entries) {
      Set(pChain, e.first, e.second);
      Set(pNaive, e.first, e.second);
    }
    ASSERT_EQ(0, pChain->Recalc());
    EXPECT_FALSE(pChain->HasCircularRefs());
    for (int nEdit = 0; nEdit <= 5; nEdit++) {
      if (nEdit > 0) {
        const std::string cell = A1(static_cast<int>(rng() % kRows), 0);
        const std::string value = std::to_string(rng() % 1000);
        Set(pChain, cell, value);
        Set(pNaive, cell, value);
        ASSERT_EQ(0, pChain->Recalc());
      }
      NaiveRecalc(pNaive);
      for (int r = 0; r < kRows; r++)
        for (int c = 0; c < kCols; c++)
          ASSERT_EQ(Num(pNaive, r, c), Num(pChain, r, c)) << A1(r, c) << " after edit " << nEdit;
    }
    m_Books.clear();
  }
}

// Without iteration both cells of a cycle hold 0 and the book reports it once per
// rebuild that finds it; a cell that only reads the cycle is circular as well.
TEST_F(RecalcTest, CycleWithoutIteration) {
  CCountingBook* pBook = NewBook();
  Set(pBook, {{"A1", "=B1+1"}, {"B1", "=A1+1"}, {"C1", "=A1*10"}, {"D1", "=5"}});  // D1 outside
  EXPECT_EQ(0, pBook->Recalc());
  EXPECT_TRUE(pBook->HasCircularRefs());
  EXPECT_EQ(1, pBook->m_nNotices);
  EXPECT_EQ((std::vector<double>{0, 0, 0, 5}), Nums(pBook, 0, 4));
  auto* pC1 = static_cast<CFormulaCell*>(Sheet(pBook)->Cell(0, 2));
  auto* pD1 = static_cast<CFormulaCell*>(Sheet(pBook)->Cell(0, 3));
  EXPECT_TRUE(pC1->IsCircular());
  EXPECT_FALSE(pD1->IsCircular());
  // Breaking the cycle clears the report at the next rebuild.
  Set(pBook, "B1", "7");
  EXPECT_EQ(0, pBook->Recalc());
  EXPECT_FALSE(pBook->HasCircularRefs());
  EXPECT_EQ(8, Num(pBook, 0, 0));
  EXPECT_EQ(80, Num(pBook, 0, 2));
}

// A self-reference, directly and through a range that holds the cell.
TEST_F(RecalcTest, SelfReferenceIsCircular) {
  CCountingBook* pBook = NewBook();
  Set(pBook, {{"A1", "=A1+1"}, {"B5", "=SUM(B1:B9)"}});
  pBook->Recalc();
  EXPECT_TRUE(static_cast<CFormulaCell*>(Sheet(pBook)->Cell(0, 0))->IsCircular());
  EXPECT_TRUE(static_cast<CFormulaCell*>(Sheet(pBook)->Cell(4, 1))->IsCircular());
}

// Iteration runs passes until the largest change falls to the threshold or the
// maximum number of passes is reached.
TEST_F(RecalcTest, CycleWithIteration) {
  CCountingBook* pBook = NewBook();
  pBook->SetIteration(1, 100, 0.001);
  Set(pBook, {{"A1", "=B1+1"}, {"B1", "=A1+1"}});
  pBook->Recalc();
  // Each pass adds 2 to both cells: the change never falls, 100 passes run.
  EXPECT_EQ(100u, pBook->GetLastRecalcPasses());
  EXPECT_EQ(199, Num(pBook, 0, 0));  // A1 comes first in the chain
  EXPECT_EQ(200, Num(pBook, 0, 1));
  // A converging cycle stops early: A1 = B1/2 + 1, B1 = A1/2 settles at 4/3, 2/3.
  Set(pBook, {{"A1", "=B1/2+1"}, {"B1", "=A1/2"}});
  pBook->Recalc();
  EXPECT_LT(pBook->GetLastRecalcPasses(), 100u);
  EXPECT_GT(pBook->GetLastRecalcPasses(), 1u);
  EXPECT_NEAR(4.0 / 3, Num(pBook, 0, 0), 0.002);
  EXPECT_NEAR(2.0 / 3, Num(pBook, 0, 1), 0.002);
  // A maximum of one pass means no repetition.
  pBook->SetIteration(1, 1, 0.001);
  Set(pBook, "A1", "=B1+1");
  pBook->Recalc();
  EXPECT_EQ(1u, pBook->GetLastRecalcPasses());
}

// In minimal mode an edit recomputes exactly the formulas it reaches, and a cell no
// formula reads recomputes nothing.
TEST_F(RecalcTest, MinimalRecalcRecomputesOnlyDependants) {
  CCountingBook* pBook = NewBook();
  pBook->SetMinimalRecalc(1);
  Set(pBook, {{"A1", "1"}, {"A2", "2"}, {"B1", "=A1*2"}, {"B2", "=B1+A2"}});
  Set(pBook, {{"C1", "=SUM(B1:B2)"}, {"C2", "=A2"}});
  pBook->Recalc();
  const CRecalcChain* pChain = pBook->GetRecalcChain();
  ASSERT_NE(nullptr, pChain);
  EXPECT_EQ(6, Num(pBook, 0, 2));
  // clang-format off
  struct TEditCase { const char* pszCell; const char* pszValue; unsigned nRecomputed; };
  const TEditCase kEdits[] = {
      {"Z100", "5", 0},  // read by nothing
      {"A3", "5", 0},    // beside the ranges, read by nothing
      {"A1", "10", 3},   // B1, B2 through B1, C1 through the range
      {"A2", "3", 3},    // B2, C2 and C1 through B2
  };
  // clang-format on
  for (const TEditCase& e : kEdits) {
    SCOPED_TRACE(e.pszCell);
    Set(pBook, e.pszCell, e.pszValue);
    pBook->Recalc();
    EXPECT_EQ(e.nRecomputed, pChain->GetLastRecomputed());
  }
  EXPECT_EQ((std::vector<double>{10, 20, 43}), Nums(pBook, 0, 3));
  EXPECT_EQ((std::vector<double>{3, 23, 3}), Nums(pBook, 1, 3));
}

// A chain built outside minimal mode has no index of readers yet; the first minimal
// recomputation builds it and reaches the same cells.
TEST_F(RecalcTest, ReadersIndexedWhenFirstNeeded) {
  CCountingBook* pBook = NewBook();
  Set(pBook, {{"A1", "1"}, {"A2", "2"}, {"B1", "=A1*2"}, {"B2", "=B1+A2"}});
  Set(pBook, {{"C1", "=SUM(B1:B2)"}, {"C2", "=A2"}});
  CRecalcChain chain;
  int nCircular = -1;
  ASSERT_NE(nullptr, chain.Build(pBook, true, &nCircular));
  chain.Recompute(pBook, true);
  EXPECT_EQ(4u, chain.GetLastRecomputed());
  // Built again with nothing marked for recomputation.
  ASSERT_NE(nullptr, chain.Build(pBook, false, &nCircular));
  EXPECT_FALSE(chain.Graph().HasDependants());
  pBook->SetMinimalRecalc(1);  // from here on, edits are recorded as changed regions
  Set(pBook, "A1", "10");
  chain.Recompute(pBook, false);
  EXPECT_TRUE(chain.Graph().HasDependants());
  EXPECT_EQ(3u, chain.GetLastRecomputed());  // B1, B2 through B1, C1 through the range
  EXPECT_EQ((std::vector<double>{10, 20, 42}), Nums(pBook, 0, 3));
}

// Volatile formulas are recomputed by every recalculation, in minimal mode too.
TEST_F(RecalcTest, VolatileFormulasAlwaysRecompute) {
  CCountingBook* pBook = NewBook();
  pBook->SetMinimalRecalc(1);
  Set(pBook, {{"A1", "=RAND()"}, {"B1", "=A1*0"}});
  pBook->Recalc();
  Set(pBook, "Z9", "1");
  pBook->Recalc();
  EXPECT_EQ(2u, pBook->GetRecalcChain()->GetLastRecomputed());  // RAND and its reader
}

// A formula entered later that reads a cell computed later in the old chain is
// ordered after it once the order is rebuilt.
TEST_F(RecalcTest, NewFormulaIsOrderedAfterItsPrecedent) {
  CCountingBook* pBook = NewBook();
  Set(pBook, {{"A1", "=B9*2"}, {"B9", "=C1+1"}, {"C1", "4"}});
  pBook->Recalc();
  EXPECT_EQ(10, Num(pBook, 0, 0));
  Set(pBook, {{"C1", "=D1+1"}, {"D1", "1"}});  // C1 becomes a formula on which the others wait
  pBook->Recalc();
  EXPECT_EQ(6, Num(pBook, 0, 0));
}

// A column of 65,535 formulas, each reading the cell above, entered top down and
// bottom up: the order walk must not use the machine stack per link.
TEST_F(RecalcTest, LongChainsInBothEntryOrders) {
  for (int nReverse = 0; nReverse < 2; nReverse++) {
    SCOPED_TRACE(nReverse ? "bottom up" : "top down");
    CCountingBook* pBook = NewBook();
    pBook->SetMinimalRecalc(nReverse);
    CSheetBase* pSheet = Sheet(pBook);
    ASSERT_EQ(0, pSheet->SetNumber(TCell(0, 0), 1));
    for (int i = 1; i <= kMaxRow; i++) {
      const int nRow = nReverse ? kMaxRow + 1 - i : i;
      const std::u16string text = U("=A" + std::to_string(nRow) + "+1");
      ASSERT_EQ(0, pSheet->SetFormula(TCell(nRow, 0), text.c_str()));
    }
    ASSERT_EQ(0, pBook->Recalc());
    EXPECT_FALSE(pBook->HasCircularRefs());
    EXPECT_EQ(65536, Num(pBook, kMaxRow, 0));
    ASSERT_EQ(0, pSheet->SetNumber(TCell(0, 0), -1));
    pBook->Recalc();
    EXPECT_EQ(65534, Num(pBook, kMaxRow, 0));
    m_Books.clear();
  }
}

}  // namespace
