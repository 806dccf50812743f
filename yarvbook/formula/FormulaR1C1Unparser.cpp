#include "formula/FormulaR1C1Unparser.h"

void CFormulaR1C1Unparser::FormatCell(std::u16string& s, int nRow, int nCol,
                                      unsigned short wColWord) {
  FormatR1C1RCNr(s, nRow, nCol, wColWord, GetBaseCell());
}

void CFormulaR1C1Unparser::FormatRange(std::u16string& s, int nRow1, int nCol1,
                                       unsigned short wColWord1, int nRow2, int nCol2,
                                       unsigned short wColWord2) {
  FormatR1C1RangeNr(s, nRow1, nCol1, wColWord1, nRow2, nCol2, wColWord2, GetBaseCell());
}
