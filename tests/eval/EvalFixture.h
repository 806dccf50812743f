// A book with three sheets for the evaluator and function tests: formulas are set as
// text on a real book, the book recalculates, and the value is read back as text
// (numbers with 15 significant digits, TRUE/FALSE, error texts). The book joins the
// book list and leaves it again; TearDown checks that the list is empty and that
// the value stack is back at its bottom.
#pragma once

#include <gtest/gtest.h>

#include <memory>
#include <span>
#include <string>

#include "book/BookBase.h"
#include "book/SharedCellTable.h"
#include "book/SheetBase.h"
#include "eval/FormulaEvaluator.h"
#include "eval/Value.h"

inline std::u16string U16(const char* psz) {
  return std::u16string(psz, psz + std::char_traits<char>::length(psz));
}

inline std::string Narrow(const std::u16string& s) {
  std::string out;
  for (char16_t c : s) out += c < 128 ? static_cast<char>(c) : '?';
  return out;
}

// One row of a table of formulas and the text of their values.
struct TEvalCase {
  const char* pszFormula;
  const char* pszExpected;
};

// A function's argument counts for ExpectArity.
struct TArity {
  const char* pszName;
  int nMin, nMax;
};

class EvalTest : public ::testing::Test {
 protected:
  void SetUp() override {
    ASSERT_EQ(nullptr, CBookBase::GetFirstBook());
    m_pBook = std::make_unique<CBookBase>();
    m_pBook->SetTitle(u"Book1");
    m_pBook->AddToList();
    m_pSheet = m_pBook->NewSheet(u"Sheet1");
    m_pSheet2 = m_pBook->NewSheet(u"Sheet2");
    m_pSheet3 = m_pBook->NewSheet(u"Sheet3");
    ASSERT_NE(nullptr, m_pSheet3);
  }
  void TearDown() override {
    m_pBook.reset();
    EXPECT_EQ(nullptr, CBookBase::GetFirstBook());
    EXPECT_EQ(-1, CFormulaEvaluator::GetStackDepth());
    CSharedCellTable::Get().RemoveAllSCT();
  }

  // A1 text to a cell.
  static TCell At(const char* pszA1) {
    int nCol = 0, i = 0;
    while (pszA1[i] >= 'A' && pszA1[i] <= 'Z') nCol = nCol * 26 + (pszA1[i++] - 'A' + 1);
    return TCell(std::atoi(pszA1 + i) - 1, nCol - 1);
  }
  void SetNumber(const char* pszA1, double r, CSheetBase* pSheet = nullptr) {
    ASSERT_EQ(0, (pSheet ? pSheet : m_pSheet)->SetNumber(At(pszA1), r));
  }
  void SetText(const char* pszA1, const char16_t* pwsz, CSheetBase* pSheet = nullptr) {
    ASSERT_EQ(0, (pSheet ? pSheet : m_pSheet)->SetText(At(pszA1), pwsz));
  }
  // Sets a formula; returns the parser's result.
  int SetFormula(const char* pszA1, const char* pszFormula, CSheetBase* pSheet = nullptr,
                 int nType = CSheetBase::cftNormal) {
    return (pSheet ? pSheet : m_pSheet)->SetFormula(At(pszA1), U16(pszFormula).c_str(), nType);
  }
  // The value of a cell as text.
  std::string Text(const char* pszA1, CSheetBase* pSheet = nullptr) const {
    TValue val;
    (pSheet ? pSheet : m_pSheet)->GetValue(At(pszA1).row, At(pszA1).col, &val);
    std::u16string s;
    val.GetValue(s);
    return Narrow(s);
  }
  // Puts the formula in Z100 (or pszAt), recalculates and reads the value as text.
  // A formula that does not parse reads as "parse error N".
  std::string Eval(const char* pszFormula, const char* pszAt = "Z100") {
    const int nResult = SetFormula(pszAt, pszFormula);
    if (nResult != 0) return "parse error " + std::to_string(nResult);
    m_pBook->Recalc();
    return Text(pszAt);
  }
  double EvalNumber(const char* pszFormula) {
    EXPECT_EQ(0, SetFormula("Z100", pszFormula));
    m_pBook->Recalc();
    double r = -12345;
    EXPECT_TRUE(m_pSheet->GetNumber(99, 25, r)) << pszFormula;
    return r;
  }
  void ExpectAll(std::span<const TEvalCase> cases, const char* pszAt = "Z100") {
    for (const TEvalCase& c : cases) {
      SCOPED_TRACE(c.pszFormula);
      EXPECT_EQ(c.pszExpected, Eval(c.pszFormula, pszAt));
    }
  }
  // The parser refuses one argument too few (4) and one too many (114); at the minimum
  // and the maximum the call parses and runs a body (no #NAME?).
  void ExpectArity(std::span<const TArity> rows) {
    for (const TArity& a : rows) {
      SCOPED_TRACE(a.pszName);
      if (a.nMin > 0) {
        EXPECT_EQ(4, SetFormula("Z100", Call(a.pszName, a.nMin - 1).c_str()));
      }
      EXPECT_EQ(114, SetFormula("Z100", Call(a.pszName, a.nMax + 1).c_str()));
      for (int nArgs : {a.nMin, a.nMax}) {
        const std::string sValue = Eval(Call(a.pszName, nArgs).c_str());
        EXPECT_TRUE(sValue != "#NAME?" && sValue.rfind("parse error", 0) != 0) << sValue;
      }
    }
  }
  static std::string Call(const char* pszName, int nArgs) {
    std::string s = std::string("=") + pszName + "(";
    for (int i = 0; i < nArgs; ++i) s += i == 0 ? "1" : ",1";
    return s + ")";
  }

  std::unique_ptr<CBookBase> m_pBook;
  CSheetBase* m_pSheet = nullptr;
  CSheetBase* m_pSheet2 = nullptr;
  CSheetBase* m_pSheet3 = nullptr;
};
