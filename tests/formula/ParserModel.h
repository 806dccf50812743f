// A parser over the model book of FormulaModel.h cut down to three sheets and two
// defined names, with a handful of functions of fixed numbers, arities and classes,
// so that byte tests do not move when the engine's function table does.
#pragma once

#include <cstdio>
#include <string>
#include <string_view>

#include "FormulaModel.h"  // beside this header: the fuzz targets include it too

// Latin-1 text as 16-bit units.
inline std::u16string U(std::string_view s) {
  std::u16string w;
  for (unsigned char c : s) w.push_back(c);
  return w;
}

// Bytes in hex, space-separated.
inline std::string Hex(const unsigned char* p, int n) {
  std::string s;
  char sz[4];
  for (int i = 0; i < n; i++) {
    std::snprintf(sz, sizeof sz, i ? " %02X" : "%02X", p[i]);
    s += sz;
  }
  return s;
}

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
    {u"INDEX", nullptr, 29, 1, 4, 1, 0xAAA9, false, true},
    {u"TRUE", nullptr, 34, 0, 0, 2, 0, false, false},
};

// Holds the model, so that it is built before the parser that refers to it.
struct TParserModelHolder {
  TParserModelHolder() {
    m_Book.m_Sheets = {u"Sheet1", u"Sheet2", u"My 'Sheet'"};
    m_Book.m_Names = {u"Tax", u"Rate"};
    for (const TParseFunc& f : kModelFuncs) m_Funcs.Add(&f, false);
  }
  TFormulaModel m_Book;
  CParseFuncIndex m_Funcs;
};

class CModelParser : private TParserModelHolder, public CBookModelParser<CFormulaParser> {
 public:
  explicit CModelParser(const TCell& base = TCell())
      : CBookModelParser<CFormulaParser>(m_Book, nullptr, nullptr, base, true) {}

  std::vector<std::u16string>& m_Names = m_Book.m_Names;
  std::vector<TFormulaModel::TExtern>& m_Externs = m_Book.m_Externs;

 protected:
  const TParseFunc* FindFunction(const char16_t* p, int nLen) override {
    return m_Funcs.Find(p, nLen);
  }
};
