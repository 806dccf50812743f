#include "formula/FormulaR1C1Parser.h"

#include "base/Cell.h"
#include "base/Range.h"

CFormulaR1C1Parser::CFormulaR1C1Parser(CBookBase* pBook, CSheetBase* pSheet, const TCell& base,
                                       int nFormulaType, int nParseType)
    : CFormulaParser(pBook, pSheet, base, nParseType == 1 || nParseType == 2) {
  if (nFormulaType >= 0 && nFormulaType <= ftLast) {
    SetFormulaType(static_cast<EFormulaType>(nFormulaType));
  }
}

int CFormulaR1C1Parser::NextRangeToken(const char16_t** ppText, int* pIsRange,
                                       unsigned char* pFlags1, unsigned char* pFlags2,
                                       TRange* pRange) {
  // The two notations overlap only where a reference starts with "R<n>" or "C<n>": A1
  // reads a cell there, R1C1 a whole row or column. The longer reading wins ("C5:D6"
  // is an A1 range) and a tie goes to R1C1 ("C2" is the second column).
  const char16_t* pA1 = *ppText;
  int nIsRangeA1 = 0;
  unsigned char cFlagsA1 = 0, cFlags2A1 = 0;
  TRange rangeA1;
  const bool bA1 =
      CFormulaParser::NextRangeToken(&pA1, &nIsRangeA1, &cFlagsA1, &cFlags2A1, &rangeA1) != 0;
  const char16_t* pRC = *ppText;
  int nIsRangeRC = 0, nFlagsRC = 0, nFlags2RC = 0;
  TRange rangeRC;
  const bool bRC = CvtRangeR1C1(&pRC, &nIsRangeRC, &nFlagsRC, &nFlags2RC, &rangeRC) != 0;
  if (bRC && (!bA1 || pRC >= pA1)) {
    *ppText = pRC;
    *pIsRange = nIsRangeRC;
    *pFlags1 = static_cast<unsigned char>(nFlagsRC);
    *pFlags2 = static_cast<unsigned char>(nFlags2RC);
    *pRange = rangeRC;
    return 1;
  }
  if (!bA1) return 0;
  *ppText = pA1;
  *pIsRange = nIsRangeA1;
  *pFlags1 = cFlagsA1;
  *pFlags2 = cFlags2A1;
  *pRange = rangeA1;
  return 1;
}

int CFormulaR1C1Parser::CvtR1Nr(const char16_t** ppText, int* pRow, bool* pbRelative) const {
  return CvtR1C1Part(ppText, u'R', GetBaseCell().row, kRowCount, pRow, pbRelative);
}

int CFormulaR1C1Parser::CvtC1Nr(const char16_t** ppText, int* pCol, bool* pbRelative) const {
  return CvtR1C1Part(ppText, u'C', GetBaseCell().col, kMaxCol + 1, pCol, pbRelative);
}
