#include "CellIo.h"

#include <charconv>
#include <cmath>

#include "yarvbook.h"

bool CheckFormula(CSheetBase& sheet, const TCell& cell, const std::u16string& strText,
                  TFormulaFault* pFault) {
  CFormulaParser parser(sheet.GetBook(), &sheet, cell, /*bEnglish=*/true);
  parser.SetCreateNames(true);  // as formula entry does: an unknown name is #NAME?, no fault
  if (parser.Parse(strText.c_str() + 1, CFormulaBase::ftCell) == CFormulaParser::kResultOk)
    return true;
  pFault->nError = parser.GetError();
  pFault->nPos = parser.GetErrorPos() + 1;
  return false;
}

bool EnterCellText(CSheetBase& sheet, const TCell& cell, const std::u16string& strText,
                   TFormulaFault* pFault) {
  if (strText.empty()) return true;
  if (strText[0] == u'=') {
    const int nResult = sheet.SetFormula(cell, strText.c_str(), CSheetBase::cftNormal, ptEnglish);
    if (nResult == CSheetBase::kOk) return true;
    if (nResult == CSheetBase::kErrMemory) CZelException::ThrowMemory();
    // Formula entry reports only the parser's result code (4, 113 or 114); the error
    // code itself comes from parsing once more, which only failing formulas pay for.
    if (CheckFormula(sheet, cell, strText, pFault)) {
      pFault->nError = CFormulaParser::perUnexpected;
      pFault->nPos = 0;
    }
    if (sheet.SetText(cell, strText.c_str(), static_cast<int>(strText.size())) ==
        CSheetBase::kErrMemory)
      CZelException::ThrowMemory();
    return false;
  }
  if (sheet.SetValueFromText(cell, strText.c_str(), ptEnglish) == CSheetBase::kErrMemory)
    CZelException::ThrowMemory();
  return true;
}

void GetRawValueText(const TValue& value, std::u16string& str) {
  str.clear();
  switch (value.GetValType()) {
    case TValue::vtReal: {
      double r = 0;
      value.GetValue(r);
      if (r == 0) r = 0;  // no "-0"
      // Shortest round-trip digits; plain notation for magnitudes people write that
      // way (100000, not the shorter 1e+05), exponent notation beyond.
      char sz[400];
      const double rAbs = std::fabs(r);
      const bool bPlain = r == 0 || (rAbs >= 1e-5 && rAbs < 1e15);
      const auto result = bPlain ? std::to_chars(sz, sz + sizeof sz, r, std::chars_format::fixed)
                                 : std::to_chars(sz, sz + sizeof sz, r);
      str.assign(sz, result.ptr);
      return;
    }
    case TValue::vtLogical:
      str = TValue::GetLogicalText(value.GetLogical() != 0, /*bEnglish=*/true);
      return;
    case TValue::vtError: {
      const char16_t* pwsz = TValue::GetErrorString(value.GetError());
      if (pwsz) str = pwsz;
      return;
    }
    case TValue::vtText:
      str = value.TextPtr();
      return;
    default:
      return;
  }
}

void GetCellOutputText(const CSheetBase& sheet, int nRow, int nCol, bool bRaw,
                       std::u16string& str) {
  if (bRaw) {
    TValue value;
    sheet.GetValue(nRow, nCol, &value);
    GetRawValueText(value, str);
    return;
  }
  // Full precision: a CSV field has no column width to fit.
  str = sheet.GetFormattedText(nRow, nCol, /*nGeneralWidth=*/0);
  // The spaces a format's "_x" leaves to line up columns in a view are no part of the
  // value's text; they go, last first so that earlier positions stay put.
  for (int i = CValFormat::m_wSpaceChars - 1; i >= 0; --i) {
    const unsigned nPos = CValFormat::m_SpaceChars[i].wPos;
    if (nPos < str.size() && str[nPos] == u' ') str.erase(nPos, 1);
  }
}
