#include "base/A1Text.h"

#include <iterator>
#include <utility>

#include "base/Cell.h"
#include "base/Range.h"
#include "platform/TextServices.h"

namespace {

// Scratch results of FormatRowNr and FormatColNr: "65536" and "IV" plus terminators.
char16_t g_wszRowText[8];
char16_t g_wszColText[4];

bool IsAsciiLetter(char16_t c) { return (c >= u'A' && c <= u'Z') || (c >= u'a' && c <= u'z'); }

bool IsAsciiDigit(char16_t c) { return c >= u'0' && c <= u'9'; }

char16_t FoldUpper(char16_t c) { return (c >= u'a' && c <= u'z') ? char16_t(c - 32) : c; }

// Characters that may continue a name, so that "A1x" or "A1\u00e9" is not read as an
// address followed by junk: letters and digits of any script, and "_".
bool IsIdentChar(char16_t c) {
  if (c < 0x80) return IsAsciiLetter(c) || IsAsciiDigit(c) || c == u'_';
  return IsLetterChar(c) || IsDigitChar(c);
}

}  // namespace

const char16_t* FormatRowNr(int nRow) {
  unsigned nValue = (static_cast<unsigned>(nRow) & 0xFFFFu) + 1;
  char16_t* p = g_wszRowText + std::size(g_wszRowText) - 1;
  *p = 0;
  do {
    *--p = static_cast<char16_t>(u'0' + nValue % 10);
    nValue /= 10;
  } while (nValue != 0);
  return p;
}

const char16_t* FormatColNr(int nCol) {
  unsigned nValue = static_cast<unsigned>(nCol) & 0xFFu;
  char16_t* p = g_wszColText + std::size(g_wszColText) - 1;
  *p = 0;
  *--p = static_cast<char16_t>(u'A' + nValue % 26);
  while (nValue / 26 != 0) {
    *--p = static_cast<char16_t>(u'A' + (nValue / 26 - 1) % 26);
    nValue /= 26;
  }
  return p;
}

int CvtCNr(const char16_t** ppText, int* pCol) {
  const char16_t* p = *ppText;
  if (!IsAsciiLetter(p[0])) return 0;
  const int nFirst = FoldUpper(p[0]) - 64;  // 'A' is 1
  if (!IsAsciiLetter(p[1])) {
    *pCol = nFirst - 1;
    *ppText = p + 1;
    return 1;
  }
  const int nValue = nFirst * 26 + (FoldUpper(p[1]) - 64);
  if (nValue >= 257 || IsAsciiLetter(p[2])) return 0;  // past "IV", or a third letter
  *pCol = nValue - 1;
  *ppText = p + 2;
  return 1;
}

int CvtRNr(const char16_t** ppText, int* pRow) {
  const char16_t* p = *ppText;
  if (!IsAsciiDigit(*p)) return 0;
  int nValue = 0;
  for (; IsAsciiDigit(*p); ++p) {
    nValue = nValue * 10 + (*p - u'0');
    if (nValue > kRowCount) return 0;  // checked per digit, so it cannot overflow
  }
  if (nValue < 1) return 0;
  *pRow = nValue - 1;
  *ppText = p;
  return 1;
}

int CvtRCNr(const char16_t** ppText, int* pFlags, int* pRow, int* pCol) {
  *pFlags = 0;
  const char16_t* p = *ppText;
  int nFlags = 0;
  if (*p == u'$') {
    nFlags |= kAbsCol;
    ++p;
  }
  int nCol;
  if (!CvtCNr(&p, &nCol)) return 0;
  if (*p == u'$') {
    nFlags |= kAbsRow;
    ++p;
  }
  int nRow;
  if (!CvtRNr(&p, &nRow)) return 0;
  if (IsIdentChar(*p) || *p == u'\\' || *p == u'?') return 0;
  *pFlags = nFlags;
  *pRow = nRow;
  *pCol = nCol;
  *ppText = p;
  return 1;
}

int CvtRCNr(const char16_t* pwszText, TCell* pCell) {
  if (pwszText == nullptr) return 0;
  const char16_t* p = pwszText;
  int nFlags, nRow, nCol;
  if (!CvtRCNr(&p, &nFlags, &nRow, &nCol) || *p != 0) return 0;
  pCell->Set(nRow, nCol);
  return 1;
}

int CvtRange(const char16_t** ppText, int* pIsRange, int* pFlags1, int* pFlags2, TRange* pRange) {
  const char16_t* p = *ppText;
  int nFlags1, nRow1, nCol1;
  if (!CvtRCNr(&p, &nFlags1, &nRow1, &nCol1)) return 0;
  int nFlags2 = nFlags1;
  int nRow2 = nRow1, nCol2 = nCol1;
  int bIsRange = 0;
  if (*p == u':' || *p == u'.') {
    const char16_t* pSeparator = p;
    ++p;
    if (*pSeparator == u'.' && *p == u'.') ++p;
    int nFlags, nRow, nCol;
    if (CvtRCNr(&p, &nFlags, &nRow, &nCol)) {
      nFlags2 = nFlags;
      nRow2 = nRow;
      nCol2 = nCol;
      bIsRange = 1;
      // Each "$" belongs to its row or column, so it moves with it when the corners
      // are put in order.
      auto swapBit = [&](int nBit) {
        const int nDiff = (nFlags1 ^ nFlags2) & nBit;
        nFlags1 ^= nDiff;
        nFlags2 ^= nDiff;
      };
      if (nRow1 > nRow2) {
        std::swap(nRow1, nRow2);
        swapBit(kAbsRow);
      }
      if (nCol1 > nCol2) {
        std::swap(nCol1, nCol2);
        swapBit(kAbsCol);
      }
    } else {
      p = pSeparator;
    }
  }
  *pIsRange = bIsRange;
  *pFlags1 = nFlags1;
  *pFlags2 = nFlags2;
  pRange->Set(nRow1, nCol1, nRow2, nCol2);
  *ppText = p;
  return 1;
}
