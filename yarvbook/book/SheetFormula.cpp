// Formula entry on a sheet: text to a formula cell.
#include <memory>

#include "base/ZelException.h"
#include "book/BookBase.h"
#include "book/SheetBase.h"
#include "formula/FormulaCell.h"
#include "formula/FormulaParser.h"

int CSheetBase::SetFormula(const TCell& cell, const char16_t* pwszText, int nFormulaType,
                           int nParseType, int /*nFlags*/, int* pnErrorPos) {
  if (pnErrorPos != nullptr) *pnErrorPos = 0;
  if (!cell.IsValid()) return -1;
  if (pwszText == nullptr) pwszText = u"";
  const int nSkipped = *pwszText == u'=' ? 1 : 0;
  const bool bArray = nFormulaType == cftArray;
  try {
    CFormulaParser parser(m_pBook, this, cell, nParseType == 1 || nParseType == 2);
    CFormula* pParsed = nullptr;
    const int nResult = parser.Parse(pwszText + nSkipped, &pParsed,
                                     bArray ? CFormulaBase::ftArray : CFormulaBase::ftCell);
    std::unique_ptr<CFormula> pFormula(pParsed);
    if (nResult != CFormulaParser::kResultOk) {
      if (pnErrorPos != nullptr) *pnErrorPos = parser.GetErrorPos() + nSkipped;
      return nResult;
    }
    const CCell* pOld = Cell(cell);
    const unsigned short wFormat = pOld ? pOld->GetFormat() : NewFormat(cell.row, cell.col);
    auto pCell = std::make_unique<CFormulaCell>(
        std::move(pFormula), bArray ? CFormulaBase::ftArray : CFormulaBase::ftCell, wFormat);
    pCell->SetCell3D(this, cell.row, cell.col);
    pCell->SetArrayCell(bArray);
    pCell->SetNeedsRecompute();
    // SetCell takes the cell over in every case, deleting it when it fails.
    return SetCell(cell, pCell.release());
  } catch (const CZelException&) {
    return kErrMemory;
  }
}
