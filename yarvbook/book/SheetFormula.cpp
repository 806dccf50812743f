// Formulas on a sheet: text to a formula cell and back.
#include <memory>
#include <string>

#include "base/ZelException.h"
#include "book/BookBase.h"
#include "book/SheetBase.h"
#include "formula/FormulaCell.h"
#include "formula/FormulaParser.h"
#include "formula/FormulaR1C1Parser.h"
#include "formula/FormulaUnparser.h"

namespace {

// Parses with parser and puts the formula cell in place; the body of SetFormula and
// SetFormulaR1C1.
int EnterFormula(CSheetBase& sheet, CFormulaParser& parser, const TCell& cell,
                 const char16_t* pwszText, bool bArray, int* pnErrorPos);

// SetFormula's parser, kept between calls so that its working buffers are made once
// rather than per formula. A SetFormula reached while it is in use makes its own.
class TSharedParser {
 public:
  TSharedParser(CBookBase* pBook, CSheetBase* pSheet, const TCell& cell, bool bEnglish) {
    static std::unique_ptr<CFormulaParser> s_pParser;
    static bool s_bInUse = false;
    if (s_bInUse) {
      m_pOwn = std::make_unique<CFormulaParser>(pBook, pSheet, cell, bEnglish);
      m_pParser = m_pOwn.get();
      return;
    }
    if (!s_pParser) s_pParser = std::make_unique<CFormulaParser>(pBook, pSheet, cell, bEnglish);
    s_pParser->SetContext(pBook, pSheet, cell);
    s_pParser->SetEnglish(bEnglish);
    m_pParser = s_pParser.get();
    m_pbInUse = &s_bInUse;
    s_bInUse = true;
  }
  ~TSharedParser() {
    if (m_pbInUse) *m_pbInUse = false;
  }
  TSharedParser(const TSharedParser&) = delete;
  TSharedParser& operator=(const TSharedParser&) = delete;

  CFormulaParser& Get() { return *m_pParser; }

 private:
  std::unique_ptr<CFormulaParser> m_pOwn;  // when the shared one is busy
  CFormulaParser* m_pParser = nullptr;
  bool* m_pbInUse = nullptr;  // the shared one's flag, when this holds it
};

}  // namespace

int CSheetBase::SetFormula(const TCell& cell, const char16_t* pwszText, int nFormulaType,
                           int nParseType, int /*nFlags*/, int* pnErrorPos) {
  if (pnErrorPos != nullptr) *pnErrorPos = 0;
  if (!cell.IsValid()) return -1;
  try {
    TSharedParser parser(m_pBook, this, cell, nParseType == 1 || nParseType == 2);
    return EnterFormula(*this, parser.Get(), cell, pwszText, nFormulaType == cftArray, pnErrorPos);
  } catch (const CZelException&) {
    return kErrMemory;
  }
}

int CSheetBase::SetFormulaR1C1(const TCell& cell, const char16_t* pwszText, int nFormulaType,
                               int nParseType, int /*nFlags*/, int* pnErrorPos) {
  if (pnErrorPos != nullptr) *pnErrorPos = 0;
  if (!cell.IsValid()) return -1;
  try {
    CFormulaR1C1Parser parser(m_pBook, this, cell, CFormulaBase::ftCell, nParseType);
    return EnterFormula(*this, parser, cell, pwszText, nFormulaType == cftArray, pnErrorPos);
  } catch (const CZelException&) {
    return kErrMemory;
  }
}

bool CSheetBase::GetFormulaText(int nRow, int nCol, std::u16string& text, int nParseType) const {
  text.clear();
  CCell* pCell = Cell(nRow, nCol);
  if (pCell == nullptr || !pCell->IsFormula()) return false;
  auto* pFormulaCell = static_cast<CFormulaCell*>(pCell);
  CFormulaUnparser unparser(m_pBook, const_cast<CSheetBase*>(this), pFormulaCell->GetFormula(),
                            pFormulaCell->GetFormulaType(), TCell(nRow, nCol), nParseType);
  std::u16string sBody;
  if (!unparser.Unparse(sBody)) return false;
  text = u"=" + sBody;
  return true;
}

bool CSheetBase::GetDispFormulaText(int nRow, int nCol, std::u16string& text,
                                    int nParseType) const {
  const CCell* pCell = Cell(nRow, nCol);
  if (pCell != nullptr && pCell->IsFormula()) {
    if (!GetFormulaText(nRow, nCol, text, nParseType)) return false;
    if (pCell->IsArrayCell()) text = u"{" + text + u"}";
    return true;
  }
  text.clear();
  if (pCell == nullptr || pCell->IsEmpty()) return false;
  pCell->GetValue().GetValue(text);
  return true;
}

namespace {

int EnterFormula(CSheetBase& sheet, CFormulaParser& parser, const TCell& cell,
                 const char16_t* pwszText, bool bArray, int* pnErrorPos) {
  if (pwszText == nullptr) pwszText = u"";
  // An unknown name is entered as an undefined name: the formula is kept and shows
  // #NAME? until the name is defined.
  parser.SetCreateNames(true);
  const int nSkipped = *pwszText == u'=' ? 1 : 0;
  const int nResult =
      parser.Parse(pwszText + nSkipped, bArray ? CFormulaBase::ftArray : CFormulaBase::ftCell);
  if (nResult != CFormulaParser::kResultOk) {
    if (pnErrorPos != nullptr) *pnErrorPos = parser.GetErrorPos() + nSkipped;
    return nResult;
  }
  const CCell* pOld = sheet.Cell(cell);
  const unsigned short wFormat = pOld ? pOld->GetFormat() : sheet.NewFormat(cell.row, cell.col);
  auto pCell = std::make_unique<CFormulaCell>(wFormat);
  parser.GetParseResults(pCell.get());  // the tokens go straight into the cell
  pCell->SetCell3D(&sheet, cell.row, cell.col);
  pCell->SetArrayCell(bArray);
  pCell->SetNeedsRecompute();
  // SetCell takes the cell over in every case, deleting it when it fails.
  return sheet.SetCell(cell, pCell.release());
}

}  // namespace
