#include "formula/UnparserRCUtilBase.h"

#include <charconv>
#include <cmath>

#include "base/A1Text.h"
#include "base/Cell.h"
#include "format/GeneralNumber.h"
#include "platform/ResourceIds.h"
#include "platform/Resources.h"
#include "platform/TextServices.h"

namespace {

// Relative flags of a column word.
constexpr unsigned short kColRelative = 0x4000;
constexpr unsigned short kRowRelative = 0x8000;

constexpr char16_t kApostrophe = u'\'';
constexpr char16_t kFullWidthApostrophe = u'\uFF07';

bool IsAsciiDigit(char16_t c) { return c >= u'0' && c <= u'9'; }

char16_t FoldAsciiUpper(char16_t c) { return (c >= u'a' && c <= u'z') ? char16_t(c - 32) : c; }

// Appends n in decimal with its sign.
void AppendInt(std::u16string& s, int n) {
  if (n < 0) s += u'-';
  unsigned nValue = n < 0 ? 0u - static_cast<unsigned>(n) : static_cast<unsigned>(n);
  char16_t acDigits[12];
  int nDigits = 0;
  do {
    acDigits[nDigits++] = static_cast<char16_t>(u'0' + nValue % 10);
    nValue /= 10;
  } while (nValue != 0);
  while (nDigits > 0) s += acDigits[--nDigits];
}

// "R", "R12", "C", "C7", "RC", "R1C1": a name the R1C1 reader would take for a cell.
bool ReadsAsR1C1(const char16_t* p, int nLen) {
  int i = 0;
  bool bAny = false;
  for (char16_t cLetter : {u'R', u'C'}) {
    if (i < nLen && FoldAsciiUpper(p[i]) == cLetter) {
      ++i;
      bAny = true;
      while (i < nLen && IsAsciiDigit(p[i])) ++i;
    }
  }
  return bAny && i == nLen;
}

bool EqualsNoCase(const char16_t* p, int nLen, const char16_t* pwszWord) {
  if (pwszWord == nullptr) return false;
  int i = 0;
  for (; i < nLen && pwszWord[i] != 0; ++i) {
    if (ToUpperChar(p[i]) != ToUpperChar(pwszWord[i])) return false;
  }
  return i == nLen && pwszWord[i] == 0;
}

// The General text of r at nPrecision digits, "." as the decimal separator; true when
// it reads back as r exactly.
bool WriteDigits(double r, int nPrecision, char16_t* pBuf, int nCapacity, int* pLen) {
  TGeneralNumber num;
  num.Set(r, nPrecision);
  const int nLen = num.Write(pBuf, nCapacity, u'.');
  *pLen = nLen;
  char szText[TGeneralNumber::kMaxText];
  for (int i = 0; i < nLen; ++i) szText[i] = static_cast<char>(pBuf[i]);
  double rBack = 0;
  const auto res = std::from_chars(szText, szText + nLen, rBack);
  return res.ec == std::errc() && res.ptr == szText + nLen && rBack == r;
}

}  // namespace

void CUnparserRCUtilBase::FormatRowNr(std::u16string& s, int nRow, bool bRelative) {
  if (!bRelative) s += u'$';
  s += ::FormatRowNr(nRow);
}

void CUnparserRCUtilBase::FormatColNr(std::u16string& s, int nCol, bool bRelative) {
  if (!bRelative) s += u'$';
  s += ::FormatColNr(nCol);
}

void CUnparserRCUtilBase::FormatRCNr(std::u16string& s, int nRow, int nCol,
                                     unsigned short wColWord) {
  FormatColNr(s, nCol, (wColWord & kColRelative) != 0);
  FormatRowNr(s, nRow, (wColWord & kRowRelative) != 0);
}

void CUnparserRCUtilBase::FormatRangeNr(std::u16string& s, int nRow1, int nCol1,
                                        unsigned short wColWord1, int nRow2, int nCol2,
                                        unsigned short wColWord2) {
  // Whole columns ("A:C") and whole rows ("2:3") with their spanning part fixed are
  // written without it; they read back as the same rectangle and flags.
  if (nRow1 == 0 && nRow2 == kMaxRow && ((wColWord1 | wColWord2) & kRowRelative) == 0) {
    FormatColNr(s, nCol1, (wColWord1 & kColRelative) != 0);
    s += u':';
    FormatColNr(s, nCol2, (wColWord2 & kColRelative) != 0);
    return;
  }
  if (nCol1 == 0 && nCol2 == kMaxCol && ((wColWord1 | wColWord2) & kColRelative) == 0) {
    FormatRowNr(s, nRow1, (wColWord1 & kRowRelative) != 0);
    s += u':';
    FormatRowNr(s, nRow2, (wColWord2 & kRowRelative) != 0);
    return;
  }
  FormatRCNr(s, nRow1, nCol1, wColWord1);
  s += u':';
  FormatRCNr(s, nRow2, nCol2, wColWord2);
}

void CUnparserRCUtilBase::GetR1C1RCNr(std::u16string& s, char16_t cLetter, int nValue, int nBase,
                                      bool bRelative) {
  s += cLetter;
  if (!bRelative) {
    AppendInt(s, nValue + 1);
    return;
  }
  if (nValue == nBase) return;
  s += u'[';
  AppendInt(s, nValue - nBase);
  s += u']';
}

void CUnparserRCUtilBase::FormatR1C1RowNr(std::u16string& s, int nRow, int nBaseRow,
                                          bool bRelative) {
  GetR1C1RCNr(s, u'R', nRow & 0xFFFF, nBaseRow, bRelative);
}

void CUnparserRCUtilBase::FormatR1C1ColNr(std::u16string& s, int nCol, int nBaseCol,
                                          bool bRelative) {
  GetR1C1RCNr(s, u'C', nCol & 0xFF, nBaseCol, bRelative);
}

void CUnparserRCUtilBase::FormatR1C1RCNr(std::u16string& s, int nRow, int nCol,
                                         unsigned short wColWord, const TCell& base) {
  FormatR1C1RowNr(s, nRow, base.row, (wColWord & kRowRelative) != 0);
  FormatR1C1ColNr(s, nCol, base.col, (wColWord & kColRelative) != 0);
}

void CUnparserRCUtilBase::FormatR1C1RangeNr(std::u16string& s, int nRow1, int nCol1,
                                            unsigned short wColWord1, int nRow2, int nCol2,
                                            unsigned short wColWord2, const TCell& base) {
  FormatR1C1RCNr(s, nRow1, nCol1, wColWord1, base);
  s += u':';
  FormatR1C1RCNr(s, nRow2, nCol2, wColWord2, base);
}

bool CUnparserRCUtilBase::NeedsQuotes(const char16_t* pwszName) {
  int nLen = 0;
  if (pwszName != nullptr) {
    while (pwszName[nLen] != 0) ++nLen;
  }
  return NeedsQuotes(pwszName, nLen);
}

bool CUnparserRCUtilBase::NeedsQuotes(const char16_t* pName, int nLen) {
  if (pName == nullptr || nLen <= 0) return true;
  for (int i = 0; i < nLen; ++i) {
    const char16_t c = pName[i];
    if (c == u'_' || c == u'.') continue;
    if (c < 0x80 ? !((c >= u'A' && c <= u'Z') || (c >= u'a' && c <= u'z') || IsAsciiDigit(c))
                 : !(IsLetterChar(c) || IsDigitChar(c))) {
      return true;
    }
  }
  // Unquoted, these would be read as a number, a cell or a logical constant.
  if (IsAsciiDigit(pName[0]) || IsDigitChar(pName[0]) || pName[0] == u'.') return true;
  if (ReadsAsR1C1(pName, nLen)) return true;
  std::u16string sName(pName, nLen);
  TCell cell;
  if (CvtRCNr(sName.c_str(), &cell)) return true;
  return EqualsNoCase(pName, nLen, u"TRUE") || EqualsNoCase(pName, nLen, u"FALSE") ||
         EqualsNoCase(pName, nLen, LoadResourceString(IDS_FN_TRUE)) ||
         EqualsNoCase(pName, nLen, LoadResourceString(IDS_FN_FALSE));
}

void CUnparserRCUtilBase::AppendDoubledQuotes(std::u16string& s, const char16_t* pName, int nLen) {
  for (int i = 0; i < nLen; ++i) {
    s += pName[i];
    if (pName[i] == kApostrophe || pName[i] == kFullWidthApostrophe) s += pName[i];
  }
}

void CUnparserRCUtilBase::CopyStringWithQuotes(std::u16string& s, const char16_t* pwszName) {
  s.clear();
  ConcatStringWithQuotes(s, pwszName);
}

void CUnparserRCUtilBase::ConcatStringWithQuotes(std::u16string& s, const char16_t* pwszName) {
  if (pwszName == nullptr) pwszName = u"";
  int nLen = 0;
  while (pwszName[nLen] != 0) ++nLen;
  if (!NeedsQuotes(pwszName, nLen)) {
    s.append(pwszName, nLen);
    return;
  }
  s += kApostrophe;
  AppendDoubledQuotes(s, pwszName, nLen);
  s += kApostrophe;
}

void CUnparserRCUtilBase::Concat3dPart(std::u16string& s, const char16_t* pwszBook,
                                       const char16_t* pwszSheet1, const char16_t* pwszSheet2) {
  // A book alone (the prefix of a name of that book) is written without brackets.
  const bool bBookOnly = pwszBook != nullptr && pwszSheet1 == nullptr;
  if (pwszSheet1 == nullptr) pwszSheet1 = u"";
  const bool bQuote = (pwszBook != nullptr && NeedsQuotes(pwszBook)) ||
                      (!bBookOnly && NeedsQuotes(pwszSheet1)) ||
                      (pwszSheet2 != nullptr && NeedsQuotes(pwszSheet2));
  auto append = [&](const char16_t* pwsz) {
    int nLen = 0;
    while (pwsz[nLen] != 0) ++nLen;
    if (bQuote) {
      AppendDoubledQuotes(s, pwsz, nLen);
    } else {
      s.append(pwsz, nLen);
    }
  };
  if (bQuote) s += kApostrophe;
  if (bBookOnly) {
    append(pwszBook);
  } else {
    if (pwszBook != nullptr) {
      s += u'[';
      append(pwszBook);
      s += u']';
    }
    append(pwszSheet1);
    if (pwszSheet2 != nullptr) {
      s += u':';
      append(pwszSheet2);
    }
  }
  if (bQuote) s += kApostrophe;
  s += u'!';
}

void CUnparserRCUtilBase::FormatNumber(std::u16string& s, double r, char16_t cDecimal) {
  if (!std::isfinite(r)) {
    s += u"#NUM!";
    return;
  }
  if (r == 0 && std::signbit(r)) {
    s += u"-0";  // an array item typed as -0 keeps its sign bit
    return;
  }
  char16_t acText[TGeneralNumber::kMaxText];
  int nLen = 0;
  for (int nPrecision = TGeneralNumber::kPrecision; nPrecision <= 17; ++nPrecision) {
    if (WriteDigits(r, nPrecision, acText, TGeneralNumber::kMaxText, &nLen)) break;
  }
  for (int i = 0; i < nLen; ++i) s += acText[i] == u'.' ? cDecimal : acText[i];
}

void CUnparserRCUtilBase::FormatString(std::u16string& s, const char16_t* p, int nLen) {
  s += u'"';
  for (int i = 0; i < nLen; ++i) {
    s += p[i];
    if (p[i] == u'"') s += u'"';
  }
  s += u'"';
}
