// CFormulaUnparser: formula text in A1 notation ("$A$1", "B2:C3").
#pragma once

#include "base/Export.h"
#include "formula/FormulaUnparserBase.h"

class YARVBOOK_API CFormulaUnparser : public CFormulaUnparserBase {
 public:
  using CFormulaUnparserBase::CFormulaUnparserBase;

 protected:
  void FormatCell(std::u16string& s, int nRow, int nCol, unsigned short wColWord) override;
  void FormatRange(std::u16string& s, int nRow1, int nCol1, unsigned short wColWord1, int nRow2,
                   int nCol2, unsigned short wColWord2) override;
};
