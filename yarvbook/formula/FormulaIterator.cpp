#include "formula/FormulaIterator.h"

CFormulaIterator::CFormulaIterator(CBookBase* pBook) : m_pBook(pBook) {}

CFormulaIterator::CFormulaIterator(CBookBase* pBook, CSheetBase* pSheet, const TCell& base)
    : m_pBook(pBook), m_pSheet(pSheet), m_Base(base) {}

CFormulaIterator::CFormulaIterator(CBookBase* pBook, CSheetBase* pSheet, int nRow, int nCol)
    : m_pBook(pBook), m_pSheet(pSheet), m_Base(nRow, nCol) {}

CFormulaIterator::CFormulaIterator(CBookBase* pBook, CSheetBase* pSheet, CFormula* pFormula,
                                   EFormulaType type, const TCell& base)
    : m_pBook(pBook) {
  Set(pSheet, pFormula, type, base);
}

CFormulaIterator::CFormulaIterator(CBookBase* pBook, CSheetBase* pSheet, CFormula* pFormula,
                                   EFormulaType type, int nRow, int nCol)
    : m_pBook(pBook) {
  Set(pSheet, pFormula, type, TCell(nRow, nCol));
}

void CFormulaIterator::Set(CSheetBase* pSheet, CFormula* pFormula, EFormulaType type,
                           const TCell& base) {
  Set(pSheet, pFormula ? pFormula->GetPostfix() : nullptr, pFormula ? pFormula->GetPostfixLen() : 0,
      type, base);
  m_pFormula = pFormula;
  m_Added = pFormula ? pFormula->GetAddedData() : nullptr;
}

void CFormulaIterator::Set(CSheetBase* pSheet, unsigned char* pBytes, int nLength,
                           EFormulaType type, const TCell& base) {
  m_pSheet = pSheet;
  m_pFormula = nullptr;
  SetFormulaType(type);
  m_Base = base;
  m_Cur = pBytes;
  m_End = pBytes ? pBytes + nLength : nullptr;
  m_Added = nullptr;
  m_cToken = m_cTokenCode = 0;
}

void CFormulaIterator::Set(CSheetBase* pSheet, unsigned char* pBytes, int nLength,
                           bool bRelIsOffset, int nRow, int nCol) {
  Set(pSheet, pBytes, nLength, ftCell, TCell(nRow, nCol));
  m_bRelRCIsOffset = bRelIsOffset;
}

void CFormulaIterator::SetFormulaType(EFormulaType type) {
  m_nFormulaType = type;
  m_bRelRCIsOffset = IsOffsetType(type);
}

unsigned char CFormulaIterator::GetToken() {
  m_cTokenCode = m_Cur.GetByte();
  m_cToken = TokenBase(m_cTokenCode);
  return m_cToken;
}

void CFormulaIterator::NextToken() {
  if (m_Added.Get()) m_Cur.SkipAddedData(m_cTokenCode, &m_Added);
  m_Cur.NextToken(m_cToken);
}
