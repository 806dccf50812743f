// CFormulaConverter: a whole formula text from one reference notation to the other,
// through the token stream: parsed in the one notation with the converter's book,
// sheet and base cell, unparsed in the other.
#pragma once

#include <memory>
#include <string>

#include "base/Cell.h"
#include "base/Export.h"
#include "formula/Formula.h"

class CBookBase;
class CFormulaParser;
class CFormulaUnparserBase;
class CSheetBase;

class YARVBOOK_API CFormulaConverter {
 public:
  // nParseType 1 and 2: English names and separators; other values the locale's.
  CFormulaConverter(CBookBase* pBook, CSheetBase* pSheet, const TCell& base, int nParseType = 1,
                    CFormulaBase::EFormulaType type = CFormulaBase::ftCell);
  virtual ~CFormulaConverter();
  CFormulaConverter(const CFormulaConverter&) = delete;
  CFormulaConverter& operator=(const CFormulaConverter&) = delete;

  // R1C1 (or A1) text to A1 text, and A1 (or R1C1) text to R1C1 text. A leading "=" is
  // kept. An empty string when the text does not parse; GetResult, GetError and
  // GetErrorPos then tell why and where.
  std::u16string ToA1(const char16_t* pwszText);
  std::u16string ToR1C1(const char16_t* pwszText);

  // The parser's result code of the last conversion (0 success, 4, 113, 114).
  int GetResult() const { return m_nResult; }
  // The parser's error code (0 none), and where in the text given it was found.
  int GetError() const { return m_nError; }
  int GetErrorPos() const { return m_nErrorPos; }

 protected:
  // The parser and unparser used; a host or a test with its own lookups overrides
  // these.
  virtual std::unique_ptr<CFormulaParser> MakeParser(bool bR1C1);
  virtual std::unique_ptr<CFormulaUnparserBase> MakeUnparser(CFormula* pFormula, bool bR1C1);

  CBookBase* m_pBook;
  CSheetBase* m_pSheet;
  TCell m_Base;
  int m_nParseType;
  CFormulaBase::EFormulaType m_nType;

 private:
  std::u16string Convert(const char16_t* pwszText, bool bFromR1C1, bool bToR1C1);

  int m_nResult = 0;
  int m_nError = 0;
  int m_nErrorPos = 0;
};
