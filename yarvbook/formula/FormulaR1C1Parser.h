// CFormulaR1C1Parser: the formula parser with references read in R1C1 notation as
// well as A1, so "SUM(A1:B2)" parses in this mode too. Where a text reads both ways
// the longer reading wins, and of two equally long ones R1C1 ("R3", "C2": a cell in
// A1, a whole row or column in R1C1), as a user typing in this notation means it.
#pragma once

#include "base/Export.h"
#include "formula/FormulaParser.h"
#include "formula/R1C1Text.h"

class YARVBOOK_API CFormulaR1C1Parser : public CFormulaParser {
 public:
  // nFormulaType is the type the iterator starts with (Parse sets it again);
  // nParseType 1 and 2 read English names and separators, other values the locale's.
  CFormulaR1C1Parser(CBookBase* pBook, CSheetBase* pSheet, const TCell& base, int nFormulaType,
                     int nParseType);

  // Relative parts are offsets from the parser's base cell and wrap around the sheet.
  int NextRangeToken(const char16_t** ppText, int* pIsRange, unsigned char* pFlags1,
                     unsigned char* pFlags2, TRange* pRange) override;

  // The pieces of the R1C1 grammar (R1C1Text.h) at this parser's base cell.
  int CvtRangeR1C1(const char16_t** ppText, int* pIsRange, int* pFlags1, int* pFlags2,
                   TRange* pRange) const {
    return ::CvtRangeR1C1(ppText, GetBaseCell(), pIsRange, pFlags1, pFlags2, pRange);
  }
  int CvtR1C1Nr(const char16_t** ppText, int* pFlags, int* pParts, int* pRow, int* pCol) const {
    return CvtR1C1Corner(ppText, GetBaseCell(), pFlags, pParts, pRow, pCol);
  }
  int CvtR1Nr(const char16_t** ppText, int* pRow, bool* pbRelative) const;
  int CvtC1Nr(const char16_t** ppText, int* pCol, bool* pbRelative) const;
  static int CvtNumber(const char16_t** ppText, int nLimit, int* pValue) {
    return CvtR1C1Number(ppText, nLimit, pValue);
  }
};
