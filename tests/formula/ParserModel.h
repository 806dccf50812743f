// A parser over a small model book: a handful of functions with their real numbers,
// arities and classes, three sheets, two defined names and an extern-sheet table
// that records what the parser asked for. Byte tests run against it without a
// workbook.
#pragma once

#include <string>
#include <vector>

#include "formula/FormulaParser.h"

// Function descriptors the tests rely on. Classes: 1 reference, 2 value.
inline const TParseFunc kModelFuncs[] = {
    // name, local, number, min, max, result class, argument classes, volatile, var args
    {u"SUM", nullptr, 4, 0, 30, 2, 0x5555, false, true},
    {u"IF", nullptr, 1, 2, 3, 2, 0xAAAA, false, true},
    {u"CHOOSE", nullptr, 100, 2, 30, 2, 0xAAAA, false, true},
    {u"ROUND", nullptr, 27, 2, 2, 2, 0xAAAA, false, false},
    {u"MID", nullptr, 31, 3, 3, 2, 0xAAAA, false, false},
    {u"ABS", nullptr, 24, 1, 1, 2, 0xAAAA, false, false},
    {u"PI", nullptr, 19, 0, 0, 2, 0, false, false},
    {u"NOW", nullptr, 74, 0, 0, 2, 0, true, false},
    {u"OFFSET", nullptr, 78, 3, 5, 1, 0xAAA9, true, true},
    {u"TRUE", nullptr, 34, 0, 0, 2, 0, false, false},
    {u"VLOOKUP", u"SVERWEIS", 102, 3, 4, 2, 0xAAAA, false, true},
};

class CModelParser : public CFormulaParser {
 public:
  struct TExtern {
    std::u16string sBook, sSheet1, sSheet2;
    bool bForName;
  };

  explicit CModelParser(const TCell& base = TCell(), bool bEnglish = true)
      : CFormulaParser(nullptr, nullptr, base, bEnglish) {
    for (const TParseFunc& f : kModelFuncs) m_English.Add(&f, false);
    for (const TParseFunc& f : kModelFuncs) m_Local.Add(&f, true);
    m_bEnglishMode = bEnglish;
  }

  std::vector<std::u16string> m_Sheets{u"Sheet1", u"Sheet2", u"My 'Sheet'"};
  std::vector<std::u16string> m_Names{u"Tax", u"Rate"};
  std::vector<TExtern> m_Externs;
  std::vector<std::u16string> m_ExternNames{u"Total"};

 protected:
  const TParseFunc* FindFunction(const char16_t* p, int nLen) override {
    return (m_bEnglishMode ? m_English : m_Local).Find(p, nLen);
  }
  int FindSheet(const char16_t* p, int nLen) override {
    for (size_t i = 0; i < m_Sheets.size(); i++)
      if (m_Sheets[i] == std::u16string(p, static_cast<size_t>(nLen))) return static_cast<int>(i);
    return -1;
  }
  int FindExternSheet(const TExternPrefix& x, bool bForName) override {
    TExtern e{std::u16string(x.pBook ? x.pBook : u"", static_cast<size_t>(x.nBookLen)),
              std::u16string(x.pSheet1 ? x.pSheet1 : u"", static_cast<size_t>(x.nSheet1Len)),
              std::u16string(x.pSheet2 ? x.pSheet2 : u"", static_cast<size_t>(x.nSheet2Len)),
              bForName};
    // in this book the sheets must exist
    if (e.sBook.empty() && (FindSheet(e.sSheet1.data(), static_cast<int>(e.sSheet1.size())) < 0 ||
                            (!e.sSheet2.empty() &&
                             FindSheet(e.sSheet2.data(), static_cast<int>(e.sSheet2.size())) < 0)))
      return -1;
    for (size_t i = 0; i < m_Externs.size(); i++) {
      const TExtern& o = m_Externs[i];
      if (o.sBook == e.sBook && o.sSheet1 == e.sSheet1 && o.sSheet2 == e.sSheet2 &&
          o.bForName == bForName)
        return static_cast<int>(i);
    }
    m_Externs.push_back(e);
    return static_cast<int>(m_Externs.size() - 1);
  }
  int FindOwnExternSheet(int nSheet) override {
    TExternPrefix x;
    x.pSheet1 = m_Sheets[static_cast<size_t>(nSheet)].data();
    x.nSheet1Len = static_cast<int>(m_Sheets[static_cast<size_t>(nSheet)].size());
    return FindExternSheet(x, false);
  }
  int FindName(const char16_t* p, int nLen, bool bCreate) override {
    const std::u16string s(p, static_cast<size_t>(nLen));
    for (size_t i = 0; i < m_Names.size(); i++)
      if (m_Names[i] == s) return static_cast<int>(i + 1);
    if (!bCreate) return 0;
    m_Names.push_back(s);
    return static_cast<int>(m_Names.size());
  }
  int FindExternName(int, const char16_t* p, int nLen, bool bCreate) override {
    const std::u16string s(p, static_cast<size_t>(nLen));
    for (size_t i = 0; i < m_ExternNames.size(); i++)
      if (m_ExternNames[i] == s) return static_cast<int>(i + 1);
    if (!bCreate) return 0;
    m_ExternNames.push_back(s);
    return static_cast<int>(m_ExternNames.size());
  }

 private:
  CParseFuncIndex m_English;
  CParseFuncIndex m_Local;
  bool m_bEnglishMode = true;
};
