// A small book model shared by a parser and an unparser: sheets, defined names, an
// extern-sheet table and external names, and every function of the built-in table.
// The parser side records what it asks for; the unparser reads the same tables back,
// so text -> tokens -> text -> tokens can be checked byte for byte without a workbook.
#pragma once

#include <cstdio>
#include <string>
#include <utility>
#include <vector>

#include "eval/FuncTable.h"
#include "formula/Formula.h"
#include "formula/FormulaParser.h"
#include "formula/FormulaR1C1Parser.h"
#include "formula/FormulaR1C1Unparser.h"
#include "formula/FormulaUnparser.h"
#include "formula/FormulaUnparserBase.h"

struct TFormulaModel {
  struct TExtern {
    std::u16string sBook, sSheet1, sSheet2;
    bool bForName = false;
  };

  std::vector<std::u16string> m_Sheets{u"Sheet1",    u"Sheet2", u"Q1 Data", u"Bob's",
                                       u"Sales_2.v", u"2024",   u"R2C3",    u"C12"};
  std::vector<std::u16string> m_Names{u"Tax", u"Rate", u"Cost_2"};
  std::vector<TExtern> m_Externs;
  std::vector<std::u16string> m_ExternNames{u"Total"};
  std::vector<TParseFunc> m_Funcs;
  CParseFuncIndex m_FuncIndex;

  TFormulaModel() {
    m_Funcs.reserve(kNumBuiltinFuncs);
    for (const TFuncInfo& f : g_FuncTable) {
      TParseFunc pf;
      pf.pwszName = f.pwszName;
      pf.nFunc = f.nFunc;
      pf.nMinArgs = f.nMinArgs;
      pf.nMaxArgs = f.nMaxArgs;
      pf.nResultClass = f.nResultClass;
      pf.wArgClasses = f.wArgsClass;
      pf.bVolatile = f.bVolatile;
      pf.bVarArgs = f.IsVarArgs();
      m_Funcs.push_back(pf);
    }
    // The two external-call numbers are reached through names, not typed.
    for (const TParseFunc& f : m_Funcs) {
      if (f.nFunc != kFuncExtern && f.nFunc != kFuncAddIn) m_FuncIndex.Add(&f, false);
    }
  }
  TFormulaModel(const TFormulaModel&) = delete;
  TFormulaModel& operator=(const TFormulaModel&) = delete;

  int FindSheet(const std::u16string& s) const {
    for (size_t i = 0; i < m_Sheets.size(); i++)
      if (m_Sheets[i] == s) return static_cast<int>(i);
    return -1;
  }
  int FindExtern(const TExtern& e) {
    if (e.sBook.empty() &&
        (FindSheet(e.sSheet1) < 0 || (!e.sSheet2.empty() && FindSheet(e.sSheet2) < 0)))
      return -1;
    for (size_t i = 0; i < m_Externs.size(); i++) {
      const TExtern& o = m_Externs[i];
      if (o.sBook == e.sBook && o.sSheet1 == e.sSheet1 && o.sSheet2 == e.sSheet2 &&
          o.bForName == e.bForName)
        return static_cast<int>(i);
    }
    m_Externs.push_back(e);
    return static_cast<int>(m_Externs.size() - 1);
  }
  static int FindIn(std::vector<std::u16string>& list, const char16_t* p, int nLen, bool bCreate) {
    const std::u16string s(p, static_cast<size_t>(nLen));
    for (size_t i = 0; i < list.size(); i++)
      if (list[i] == s) return static_cast<int>(i + 1);
    if (!bCreate) return 0;
    list.push_back(s);
    return static_cast<int>(list.size());
  }
};

// A parser (A1 or R1C1) whose lookups go to the model.
template <class TParser>
class CBookModelParser : public TParser {
 public:
  template <class... TArgs>
  explicit CBookModelParser(TFormulaModel& model, TArgs&&... args)
      : TParser(std::forward<TArgs>(args)...), m_Model(model) {}

 protected:
  using TExternPrefix = CFormulaParser::TExternPrefix;
  const TParseFunc* FindFunction(const char16_t* p, int nLen) override {
    return m_Model.m_FuncIndex.Find(p, nLen);
  }
  int FindSheet(const char16_t* p, int nLen) override {
    return m_Model.FindSheet(std::u16string(p, static_cast<size_t>(nLen)));
  }
  int FindExternSheet(const TExternPrefix& x, bool bForName) override {
    TFormulaModel::TExtern e;
    e.sBook.assign(x.pBook ? x.pBook : u"", static_cast<size_t>(x.nBookLen));
    e.sSheet1.assign(x.pSheet1 ? x.pSheet1 : u"", static_cast<size_t>(x.nSheet1Len));
    e.sSheet2.assign(x.pSheet2 ? x.pSheet2 : u"", static_cast<size_t>(x.nSheet2Len));
    e.bForName = bForName;
    return m_Model.FindExtern(e);
  }
  int FindOwnExternSheet(int nSheet) override {
    TFormulaModel::TExtern e;
    e.sSheet1 = m_Model.m_Sheets[static_cast<size_t>(nSheet)];
    return m_Model.FindExtern(e);
  }
  int FindName(const char16_t* p, int nLen, bool bCreate) override {
    return TFormulaModel::FindIn(m_Model.m_Names, p, nLen, bCreate);
  }
  int FindExternName(int, const char16_t* p, int nLen, bool bCreate) override {
    return TFormulaModel::FindIn(m_Model.m_ExternNames, p, nLen, bCreate);
  }

 private:
  TFormulaModel& m_Model;
};

// An unparser (A1 or R1C1) that reads names and prefixes from the model; function
// names come from the engine's function registry.
template <class TUnparser>
class CBookModelUnparser : public TUnparser {
 public:
  template <class... TArgs>
  explicit CBookModelUnparser(TFormulaModel& model, TArgs&&... args)
      : TUnparser(std::forward<TArgs>(args)...), m_Model(model) {}

 protected:
  using TExternPrefix = CFormulaUnparserBase::TExternPrefix;
  bool GetSheetName(int nSheet, std::u16string* pName) override {
    if (nSheet < 0 || nSheet >= static_cast<int>(m_Model.m_Sheets.size())) return false;
    *pName = m_Model.m_Sheets[static_cast<size_t>(nSheet)];
    return true;
  }
  bool GetExternSheet(int nIndex, TExternPrefix* p) override {
    if (nIndex < 0 || nIndex >= static_cast<int>(m_Model.m_Externs.size())) return false;
    const TFormulaModel::TExtern& e = m_Model.m_Externs[static_cast<size_t>(nIndex)];
    p->bOtherBook = !e.sBook.empty();
    p->bBookOnly = e.bForName && e.sSheet1.empty();
    p->sBook = e.sBook;
    p->sSheet1 = e.sSheet1;
    p->sSheet2 = e.sSheet2;
    return true;
  }
  bool GetNameText(int nIndex, std::u16string* pName, std::u16string* pSheet) override {
    if (nIndex < 1 || nIndex > static_cast<int>(m_Model.m_Names.size())) return false;
    *pName = m_Model.m_Names[static_cast<size_t>(nIndex - 1)];
    pSheet->clear();
    return true;
  }
  bool GetExternNameText(int, int nName, std::u16string* pName) override {
    if (nName < 1 || nName > static_cast<int>(m_Model.m_ExternNames.size())) return false;
    *pName = m_Model.m_ExternNames[static_cast<size_t>(nName - 1)];
    return true;
  }

 private:
  TFormulaModel& m_Model;
};

// One notation's half of a round trip: the unparsed text and its parse back.
struct TRoundTrip {
  std::u16string sBack;
  bool bUnparsed = false;
  int nReparse = -1;  // the second parse's result, 0 on success
  CFormula second;
};

// Text -> tokens -> text -> tokens at base, in A1 (back[0]) and R1C1 (back[1]).
// Returns false, filling nothing, when the A1 parser refuses the text.
inline bool RoundTrip(TFormulaModel& model, const std::u16string& sText,
                      CFormulaBase::EFormulaType type, const TCell& base, CFormula& first,
                      TRoundTrip (&back)[2]) {
  {
    CBookModelParser<CFormulaParser> parser(model, nullptr, nullptr, base, true);
    if (parser.Parse(sText.c_str(), type) != 0) return false;
    parser.GetParseResults(&first);
  }
  {
    CBookModelUnparser<CFormulaUnparser> u(model, nullptr, nullptr, &first, type, base, 1);
    back[0].bUnparsed = u.Unparse(back[0].sBack);
    CBookModelParser<CFormulaParser> parser(model, nullptr, nullptr, base, true);
    back[0].nReparse = parser.Parse(back[0].sBack.c_str(), type);
    if (back[0].nReparse == 0) parser.GetParseResults(&back[0].second);
  }
  CBookModelUnparser<CFormulaR1C1Unparser> u(model, nullptr, nullptr, &first, type, base, 1);
  back[1].bUnparsed = u.Unparse(back[1].sBack);
  CBookModelParser<CFormulaR1C1Parser> parser(model, nullptr, nullptr, base, type, 1);
  back[1].nReparse = parser.Parse(back[1].sBack.c_str(), type);
  if (back[1].nReparse == 0) parser.GetParseResults(&back[1].second);
  return true;
}

// The postfix and the added data in hex, for failure messages.
inline std::string FormulaHex(const CFormula& f) {
  std::string s;
  char sz[4];
  for (int i = 0; i < f.GetPostfixLen(); i++) {
    std::snprintf(sz, sizeof sz, "%02X ", f.GetPostfix()[i]);
    s += sz;
  }
  s += "| ";
  for (int i = 0; i < f.GetAddedDataLen(); i++) {
    std::snprintf(sz, sizeof sz, "%02X ", f.GetAddedData()[i]);
    s += sz;
  }
  return s;
}

inline std::string Narrow(const std::u16string& s) {
  std::string r;
  for (char16_t c : s) r += c < 0x80 ? static_cast<char>(c) : '?';
  return r;
}
