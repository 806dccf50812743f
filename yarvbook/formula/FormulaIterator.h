// CFormulaIterator: the common walker over one token stream. The parser, the
// unparser, the fixup and the reference iterator derive from it and take from it the
// book, the sheet, the formula type and the base cell that offset-relative
// references are measured from.
#pragma once

#include "base/Cell.h"
#include "base/Export.h"
#include "formula/Formula.h"

class CBookBase;
class CSheetBase;

class YARVBOOK_API CFormulaIterator : public CFormulaBase {
 public:
  explicit CFormulaIterator(CBookBase* pBook);
  CFormulaIterator(CBookBase* pBook, CSheetBase* pSheet, const TCell& base);
  CFormulaIterator(CBookBase* pBook, CSheetBase* pSheet, int nRow, int nCol);
  // The formula must outlive the walk; the iterator does not own it.
  CFormulaIterator(CBookBase* pBook, CSheetBase* pSheet, CFormula* pFormula, EFormulaType type,
                   const TCell& base);
  CFormulaIterator(CBookBase* pBook, CSheetBase* pSheet, CFormula* pFormula, EFormulaType type,
                   int nRow, int nCol);
  virtual ~CFormulaIterator() = default;
  CFormulaIterator(const CFormulaIterator&) = delete;
  CFormulaIterator& operator=(const CFormulaIterator&) = delete;

  // Points the walker at a token stream: current at its start, end behind its
  // postfix; the added-data cursor at the formula's added data (null for raw bytes).
  void Set(CSheetBase* pSheet, CFormula* pFormula, EFormulaType type, const TCell& base);
  void Set(CSheetBase* pSheet, unsigned char* pBytes, int nLength, EFormulaType type,
           const TCell& base);
  void Set(CSheetBase* pSheet, unsigned char* pBytes, int nLength, bool bRelIsOffset, int nRow,
           int nCol);

  // Relative-is-offset is set for the offset types (3, 5, 6, 7, 8), else cleared.
  virtual void SetFormulaType(EFormulaType type);
  EFormulaType GetFormulaType() const { return m_nFormulaType; }
  bool GetRelRCIsOffset() const { return m_bRelRCIsOffset; }

  bool AtEnd() const { return !(m_Cur < m_End); }
  // Reads the next token byte, keeps its base code as the current token and returns
  // it. The caller checks AtEnd first.
  unsigned char GetToken();
  unsigned char GetCurrentToken() const { return m_cToken; }
  // Steps over the operands of the current token (and its added data).
  void NextToken();

  const TCell& GetBaseCell() const { return m_Base; }
  void SetBaseCell(const TCell& base) { m_Base = base; }
  // The base cell's row and column in offset mode, else 0. Stored and absolute
  // coordinates differ by these, modulo 65,536 rows and 256 columns.
  int GetRowOffset() const { return m_bRelRCIsOffset ? m_Base.row : 0; }
  int GetColOffset() const { return m_bRelRCIsOffset ? m_Base.col : 0; }

  CBookBase* GetBook() const { return m_pBook; }
  CSheetBase* GetSheet() const { return m_pSheet; }
  CFormula* GetFormula() const { return m_pFormula; }

 protected:
  CBookBase* m_pBook = nullptr;
  CSheetBase* m_pSheet = nullptr;  // may be null
  CFormula* m_pFormula = nullptr;  // not owned; null for raw streams
  EFormulaType m_nFormulaType = ftCell;
  bool m_bRelRCIsOffset = false;
  TCell m_Base;
  TPostfixPtr m_Cur;
  TPostfixPtr m_End;
  TPostfixPtr m_Added;  // in step with m_Cur; null when there is no added data
  unsigned char m_cToken = 0;
  unsigned char m_cTokenCode = 0;  // the current token with its class bits
};
