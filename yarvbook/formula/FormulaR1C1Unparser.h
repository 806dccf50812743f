// CFormulaR1C1Unparser: formula text in R1C1 notation. Absolute parts are written as
// one-based numbers ("R2C3"), relative parts as offsets from the base cell ("R[-1]C",
// "RC[2]"); a relative part on the base cell's own row or column is the letter alone.
#pragma once

#include "base/Export.h"
#include "formula/FormulaUnparserBase.h"

class YARVBOOK_API CFormulaR1C1Unparser : public CFormulaUnparserBase {
 public:
  using CFormulaUnparserBase::CFormulaUnparserBase;

 protected:
  void FormatCell(std::u16string& s, int nRow, int nCol, unsigned short wColWord) override;
  void FormatRange(std::u16string& s, int nRow1, int nCol1, unsigned short wColWord1, int nRow2,
                   int nCol2, unsigned short wColWord2) override;
};
