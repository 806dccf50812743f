#include "formula/FormulaConverter.h"

#include "formula/FormulaParser.h"
#include "formula/FormulaR1C1Parser.h"
#include "formula/FormulaR1C1Unparser.h"
#include "formula/FormulaUnparser.h"

CFormulaConverter::CFormulaConverter(CBookBase* pBook, CSheetBase* pSheet, const TCell& base,
                                     int nParseType, CFormulaBase::EFormulaType type)
    : m_pBook(pBook), m_pSheet(pSheet), m_Base(base), m_nParseType(nParseType), m_nType(type) {}

CFormulaConverter::~CFormulaConverter() = default;

std::unique_ptr<CFormulaParser> CFormulaConverter::MakeParser(bool bR1C1) {
  if (bR1C1) {
    return std::make_unique<CFormulaR1C1Parser>(m_pBook, m_pSheet, m_Base, m_nType, m_nParseType);
  }
  return std::make_unique<CFormulaParser>(m_pBook, m_pSheet, m_Base,
                                          m_nParseType == 1 || m_nParseType == 2);
}

std::unique_ptr<CFormulaUnparserBase> CFormulaConverter::MakeUnparser(CFormula* pFormula,
                                                                      bool bR1C1) {
  if (bR1C1) {
    return std::make_unique<CFormulaR1C1Unparser>(m_pBook, m_pSheet, pFormula, m_nType, m_Base,
                                                  m_nParseType);
  }
  return std::make_unique<CFormulaUnparser>(m_pBook, m_pSheet, pFormula, m_nType, m_Base,
                                            m_nParseType);
}

std::u16string CFormulaConverter::ToA1(const char16_t* pwszText) {
  return Convert(pwszText, true, false);
}

std::u16string CFormulaConverter::ToR1C1(const char16_t* pwszText) {
  return Convert(pwszText, false, true);
}

std::u16string CFormulaConverter::Convert(const char16_t* pwszText, bool bFromR1C1, bool bToR1C1) {
  if (pwszText == nullptr) pwszText = u"";
  const bool bEquals = pwszText[0] == u'=';
  std::unique_ptr<CFormulaParser> pParser = MakeParser(bFromR1C1);
  CFormula formula;
  m_nResult = pParser->Parse(pwszText + (bEquals ? 1 : 0), m_nType);
  m_nError = pParser->GetError();
  m_nErrorPos = pParser->GetErrorPos() + (bEquals ? 1 : 0);
  if (m_nResult != CFormulaParser::kResultOk) return std::u16string();
  pParser->GetParseResults(&formula);
  std::u16string sText;
  if (!MakeUnparser(&formula, bToR1C1)->Unparse(sText)) return std::u16string();
  if (bEquals) sText.insert(sText.begin(), u'=');
  return sText;
}
