#include "formula/FormulaUnparser.h"

void CFormulaUnparser::FormatCell(std::u16string& s, int nRow, int nCol, unsigned short wColWord) {
  FormatRCNr(s, nRow, nCol, wColWord);
}

void CFormulaUnparser::FormatRange(std::u16string& s, int nRow1, int nCol1,
                                   unsigned short wColWord1, int nRow2, int nCol2,
                                   unsigned short wColWord2) {
  FormatRangeNr(s, nRow1, nCol1, wColWord1, nRow2, nCol2, wColWord2);
}
