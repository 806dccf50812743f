// Text -> tokens -> text -> tokens gives the same bytes, in A1 and R1C1 and in every
// formula type, over a corpus of generated formulas: references of every shape and
// prefix, every operator, constants, arrays, and nested calls of every function of the
// built-in table with a valid number of arguments.
#include <gtest/gtest.h>

#include <random>
#include <string>

#include "base/A1Text.h"
#include "eval/FuncTable.h"
#include "formula/Formula.h"
#include "formula/FormulaModel.h"

namespace {

// A deterministic generator of formula texts that the parser accepts (mostly: a
// reference operator over constants is still accepted, a 3-D reference is refused by
// some formula types).
class CFormulaGenerator {
 public:
  explicit CFormulaGenerator(unsigned nSeed) : m_Rng(nSeed) {}

  std::u16string Next(int nFunc) {
    m_nCalls = 0;
    std::u16string s;
    if (nFunc >= 0 && IsTyped(g_FuncTable[nFunc])) {
      Call(s, g_FuncTable[nFunc], 2);
    } else {
      Expr(s, 3);
    }
    return s;
  }

 private:
  // The external-call numbers are reached through names, never typed.
  static bool IsTyped(const TFuncInfo& f) {
    return f.nFunc != kFuncExtern && f.nFunc != kFuncAddIn;
  }

  int Pick(int n) { return std::uniform_int_distribution<int>(0, n - 1)(m_Rng); }

  void Expr(std::u16string& s, int nDepth) {
    int nFunc = 0;
    const int nKind = nDepth <= 0 ? 0 : Pick(7);
    switch (nKind) {
      case 0:
      case 1:
        Operand(s);
        return;
      case 2: {
        static const char16_t* const kOps[] = {u"+", u"-",  u"*", u"/",  u"^", u"&",
                                               u"<", u"<=", u"=", u">=", u">", u"<>"};
        Expr(s, nDepth - 1);
        s += kOps[Pick(12)];
        Expr(s, nDepth - 1);
        return;
      }
      case 3:
        s += Pick(2) ? u"-" : u"+";
        Expr(s, nDepth - 1);
        if (Pick(3) == 0) s += u"%";
        return;
      case 4:
        s += u"(";
        Expr(s, nDepth - 1);
        s += u")";
        return;
      case 5: {
        // Reference operators: range, intersection, union (in parentheses).
        const int nOp = Pick(3);
        if (nOp == 2) s += u"(";
        Reference(s, false);
        s += nOp == 0 ? u":" : nOp == 1 ? u" " : u",";
        Reference(s, false);
        if (nOp == 2) s += u")";
        return;
      }
      default:
        if (m_nCalls < 6 && IsTyped(g_FuncTable[nFunc = Pick(kNumBuiltinFuncs)])) {
          Call(s, g_FuncTable[nFunc], nDepth - 1);
        } else {
          Operand(s);
        }
        return;
    }
  }

  void Call(std::u16string& s, const TFuncInfo& f, int nDepth) {
    ++m_nCalls;
    s += f.pwszName;
    s += u"(";
    const int nMax = f.nMaxArgs > f.nMinArgs + 3 ? f.nMinArgs + 3 : f.nMaxArgs;
    const int nArgs = f.nMinArgs + Pick(nMax - f.nMinArgs + 1);
    for (int i = 0; i < nArgs; ++i) {
      if (i > 0) s += u",";
      // An omitted argument now and then, never the last of a minimal call.
      if (i + 1 < nArgs && Pick(8) == 0) continue;
      Expr(s, nDepth);
    }
    s += u")";
  }

  void Operand(std::u16string& s) {
    switch (Pick(8)) {
      case 0:
        Number(s);
        return;
      case 1: {
        static const char16_t* const kStrings[] = {u"\"\"", u"\"abc\"", u"\"say \"\"hi\"\"\"",
                                                   u"\"\u00e4\u4e2d\""};
        s += kStrings[Pick(4)];
        return;
      }
      case 2: {
        static const char16_t* const kConsts[] = {u"TRUE",    u"FALSE",   u"#NULL!",
                                                  u"#DIV/0!", u"#VALUE!", u"#REF!",
                                                  u"#NAME?",  u"#NUM!",   u"#N/A"};
        s += kConsts[Pick(9)];
        return;
      }
      case 3:
        Array(s);
        return;
      case 4: {
        static const char16_t* const kNames[] = {u"Tax", u"Rate", u"Cost_2",
                                                 u"[Book2.xls]Sheet1!Total", u"Book2.xls!Total"};
        s += kNames[Pick(5)];
        return;
      }
      default:
        Reference(s);
        return;
    }
  }

  void Number(std::u16string& s) {
    static const char16_t* const kNumbers[] = {u"0",   u"65535", u"65536",   u"1.5",
                                               u"0.1", u"1E+20", u"2.5e-7",  u"123456789012345678",
                                               u".25", u"3.",    u"1E308",   u"0.30000000000000004",
                                               u"7",   u"1e-9",  u"99999.99"};
    s += kNumbers[Pick(15)];
  }

  void Array(std::u16string& s) {
    const int nRows = 1 + Pick(3), nCols = 1 + Pick(3);
    static const char16_t* const kItems[] = {u"1",    u"-2.5",   u"\"x\"\"y\"", u"TRUE",
                                             u"#N/A", u"1E+100", u"FALSE",      u"\"\""};
    s += u"{";
    for (int r = 0; r < nRows; ++r) {
      if (r > 0) s += u";";
      for (int c = 0; c < nCols; ++c) {
        if (c > 0) s += u",";
        s += kItems[Pick(8)];
      }
    }
    s += u"}";
  }

  void Cell(std::u16string& s) {
    if (Pick(2)) s += u"$";
    const int nCol = Pick(4) == 0 ? 255 * Pick(2) : Pick(256);
    s += FormatColNr(nCol);
    if (Pick(2)) s += u"$";
    const int nRow = Pick(4) == 0 ? 65535 * Pick(2) : Pick(65536);
    s += FormatRowNr(nRow);
  }

  // bDots: the range may be written "A1..B2", which cannot stand next to ":".
  void Reference(std::u16string& s, bool bDots = true) {
    static const char16_t* const kPrefixes[] = {
        u"Sheet2!",   u"'Q1 Data'!",         u"Sales_2.v!",
        u"'Bob''s'!", u"Sheet1:Sheet2!",     u"'2024'!",
        u"'R2C3'!",   u"[Book2.xls]Sheet1!", u"'[My Book.xls]Jan:Feb'!",
        u"'C12'!",    u"'It\uFF07\uFF07s'!"};
    if (Pick(4) == 0) s += kPrefixes[Pick(static_cast<int>(std::size(kPrefixes)))];
    if (Pick(6) == 0) {
      // Whole columns "$A:C" or whole rows "1:$65536".
      const bool bColumns = Pick(2) != 0;
      for (int i = 0; i < 2; ++i) {
        if (i > 0) s += u":";
        if (Pick(2)) s += u"$";
        s += bColumns ? FormatColNr(Pick(4) == 0 ? 255 * Pick(2) : Pick(256))
                      : FormatRowNr(Pick(4) == 0 ? 65535 * Pick(2) : Pick(65536));
      }
      return;
    }
    Cell(s);
    if (Pick(2)) {
      s += bDots && Pick(3) == 0 ? u".." : u":";
      Cell(s);
    }
  }

  std::mt19937 m_Rng;
  int m_nCalls = 0;
};

// One text, one type, both notations. Returns false when the first parse fails.
bool CheckRoundTrip(TFormulaModel& model, const std::u16string& sText,
                    CFormulaBase::EFormulaType type, const TCell& base) {
  CFormula first;
  TRoundTrip back[2];
  if (!RoundTrip(model, sText, type, base, first, back)) return false;
  for (const TRoundTrip& b : back) {
    const char* pszNotation = &b == back ? "A1" : "R1C1";
    SCOPED_TRACE(Narrow(sText) + "  ->  " + Narrow(b.sBack));
    EXPECT_TRUE(b.bUnparsed) << pszNotation;
    EXPECT_EQ(0, b.nReparse) << pszNotation;
    EXPECT_TRUE(first == b.second) << pszNotation << "\n  first:  " << FormulaHex(first)
                                   << "\n  second: " << FormulaHex(b.second);
  }
  return true;
}

TEST(FormulaRoundTrip, GeneratedCorpusInEveryTypeAndBothNotations) {
  TFormulaModel model;
  CFormulaGenerator gen(0x5EED);
  const TCell kBases[] = {TCell(0, 0), TCell(4, 2), TCell(65535, 255), TCell(1000, 100)};
  int nParsed = 0, nTried = 0;
  for (int i = 0; i < 3000; ++i) {
    // Every function of the table is the outermost call once; the rest is free.
    const std::u16string sText = gen.Next(i < kNumBuiltinFuncs ? i : -1);
    const auto type = static_cast<CFormulaBase::EFormulaType>(i % (CFormulaBase::ftLast + 1));
    ++nTried;
    if (CheckRoundTrip(model, sText, type, kBases[i % 4])) {
      ++nParsed;
    } else if (type != CFormulaBase::ftShared && type != CFormulaBase::ftCondFormat &&
               type != CFormulaBase::ftDataValid) {
      ADD_FAILURE() << "does not parse: " << Narrow(sText);
    }
    if (::testing::Test::HasFailure()) break;
  }
  // 3-D references are refused by three types; everything else must parse.
  EXPECT_GT(nParsed, nTried * 3 / 4);
}

// Texts whose tokens differ from those of the same text without its spaces.
TEST(FormulaRoundTrip, SpacesTheTokensDependOn) {
  TFormulaModel model;
  const char16_t* const kTexts[] = {
      u"A1:   C1",          // a cell, the range operator and a cell: not one rectangle
      u"A1:B2: C3",         // a rectangle and a cell joined by the operator
      u"Sheet2!A1: C1:D2",  // a 3-D cell before the operator
      u"1:   1",            // two numbers and the operator: not the whole row 1:1
      u"Tax:R5",            // written 3-D in 3-D types: "Tax:Sheet1!R5" is no sheet span
      u"-A1: (C1)",
      u"A1 B1",  // intersection
      u"SUM( A1 , B1 )",
  };
  for (const char16_t* pwsz : kTexts) {
    SCOPED_TRACE(Narrow(pwsz));
    for (int nType = 0; nType <= CFormulaBase::ftLast; ++nType) {
      const auto type = static_cast<CFormulaBase::EFormulaType>(nType);
      const bool bParsed = CheckRoundTrip(model, pwsz, type, TCell(2, 2));
      EXPECT_TRUE(bParsed || type == CFormulaBase::ftShared || type == CFormulaBase::ftCondFormat ||
                  type == CFormulaBase::ftDataValid);
    }
  }
}

TEST(FormulaRoundTrip, EveryFunctionWithMinimumAndMaximumArguments) {
  TFormulaModel model;
  for (const TFuncInfo& f : g_FuncTable) {
    if (f.nFunc == kFuncExtern || f.nFunc == kFuncAddIn) continue;
    for (const int nArgs : {static_cast<int>(f.nMinArgs), static_cast<int>(f.nMaxArgs)}) {
      std::u16string s = f.pwszName;
      s += u"(";
      for (int i = 0; i < nArgs; ++i) s += i ? u",A1" : u"A1";
      s += u")";
      SCOPED_TRACE(Narrow(s));
      EXPECT_TRUE(CheckRoundTrip(model, s, CFormulaBase::ftCell, TCell(3, 3)));
    }
  }
}

}  // namespace
