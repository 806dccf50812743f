#include "formula/R1C1Text.h"

#include <utility>

#include "base/A1Text.h"
#include "base/Cell.h"
#include "base/Range.h"
#include "platform/TextServices.h"

namespace {

constexpr int kRows = kMaxRow + 1;
constexpr int kCols = kMaxCol + 1;

bool IsAsciiDigit(char16_t c) { return c >= u'0' && c <= u'9'; }

char16_t FoldUpper(char16_t c) { return (c >= u'a' && c <= u'z') ? char16_t(c - 32) : c; }

// Characters that may not follow a reference: they would make it part of a name.
bool ContinuesName(char16_t c) {
  if (c < 0x80) {
    return (c >= u'A' && c <= u'Z') || (c >= u'a' && c <= u'z') || IsAsciiDigit(c) || c == u'_' ||
           c == u'\\' || c == u'?' || c == u'[';
  }
  return IsLetterChar(c) || IsDigitChar(c);
}

// Unsigned decimal digits, at most nLimit; 0 when there are none or too many.
int ReadDigits(const char16_t** ppText, int nLimit, int* pValue) {
  const char16_t* p = *ppText;
  if (!IsAsciiDigit(*p)) return 0;
  long long nValue = 0;
  while (IsAsciiDigit(*p)) {
    nValue = nValue * 10 + (*p - u'0');
    if (nValue > nLimit) return 0;
    ++p;
  }
  *pValue = static_cast<int>(nValue);
  *ppText = p;
  return 1;
}

int Wrap(int nValue, int nSize) { return ((nValue % nSize) + nSize) % nSize; }

}  // namespace

int CvtR1C1Number(const char16_t** ppText, int nLimit, int* pValue) {
  const char16_t* p = *ppText;
  bool bNegative = false;
  if (*p == u'+' || *p == u'-') bNegative = *p++ == u'-';
  int nValue = 0;
  if (!ReadDigits(&p, nLimit, &nValue)) return 0;
  *pValue = bNegative ? -nValue : nValue;
  *ppText = p;
  return 1;
}

int CvtR1C1Part(const char16_t** ppText, char16_t cLetter, int nBase, int nSize, int* pValue,
                bool* pbRelative) {
  const char16_t* p = *ppText;
  if (FoldUpper(*p) != cLetter) return 0;
  ++p;
  if (*p == u'[') {
    ++p;
    int nOffset = 0;
    if (!CvtR1C1Number(&p, nSize, &nOffset) || *p != u']') return 0;
    *pValue = Wrap(nBase + nOffset, nSize);
    *pbRelative = true;
    *ppText = p + 1;
    return 1;
  }
  if (IsAsciiDigit(*p)) {
    // "R0" and numbers past the grid fail the part rather than leaving the digits.
    int nNumber = 0;
    if (!ReadDigits(&p, nSize, &nNumber) || nNumber < 1) return 0;
    *pValue = nNumber - 1;
    *pbRelative = false;
    *ppText = p;
    return 1;
  }
  *pValue = Wrap(nBase, nSize);
  *pbRelative = true;
  *ppText = p;
  return 1;
}

int CvtR1C1Corner(const char16_t** ppText, const TCell& base, int* pFlags, int* pParts, int* pRow,
                  int* pCol) {
  const char16_t* p = *ppText;
  int nFlags = 0, nParts = 0, nRow = 0, nCol = 0;
  bool bRelative = false;
  if (FoldUpper(*p) == u'R') {
    if (!CvtR1C1Part(&p, u'R', base.row, kRows, &nRow, &bRelative)) return 0;
    nParts |= kR1C1HasRow;
    if (!bRelative) nFlags |= kAbsRow;
  }
  if (FoldUpper(*p) == u'C') {
    if (!CvtR1C1Part(&p, u'C', base.col, kCols, &nCol, &bRelative)) return 0;
    nParts |= kR1C1HasCol;
    if (!bRelative) nFlags |= kAbsCol;
  }
  if (nParts == 0 || ContinuesName(*p)) return 0;
  *pFlags = nFlags;
  *pParts = nParts;
  *pRow = nRow;
  *pCol = nCol;
  *ppText = p;
  return 1;
}

int CvtRangeR1C1(const char16_t** ppText, const TCell& base, int* pIsRange, int* pFlags1,
                 int* pFlags2, TRange* pRange) {
  const char16_t* p = *ppText;
  int nFlags1 = 0, nParts1 = 0, nRow1 = 0, nCol1 = 0;
  if (!CvtR1C1Corner(&p, base, &nFlags1, &nParts1, &nRow1, &nCol1)) return 0;
  constexpr int kBoth = kR1C1HasRow | kR1C1HasCol;

  if (nParts1 == kBoth) {
    const char16_t* q = p;
    if (*q == u':') {
      ++q;
    } else if (*q == u'.') {
      q += q[1] == u'.' ? 2 : 1;
    }
    int nFlags2 = 0, nParts2 = 0, nRow2 = 0, nCol2 = 0;
    if (q != p && CvtR1C1Corner(&q, base, &nFlags2, &nParts2, &nRow2, &nCol2) && nParts2 == kBoth) {
      // Each "absolute" mark travels with its coordinate when the corners swap.
      if (nRow1 > nRow2) {
        std::swap(nRow1, nRow2);
        const int nRowFlags1 = nFlags1 & kAbsRow;
        nFlags1 = (nFlags1 & ~kAbsRow) | (nFlags2 & kAbsRow);
        nFlags2 = (nFlags2 & ~kAbsRow) | nRowFlags1;
      }
      if (nCol1 > nCol2) {
        std::swap(nCol1, nCol2);
        const int nColFlags1 = nFlags1 & kAbsCol;
        nFlags1 = (nFlags1 & ~kAbsCol) | (nFlags2 & kAbsCol);
        nFlags2 = (nFlags2 & ~kAbsCol) | nColFlags1;
      }
      pRange->Set(nRow1, nCol1, nRow2, nCol2);
      *pIsRange = 1;
      *pFlags1 = nFlags1;
      *pFlags2 = nFlags2;
      *ppText = q;
      return 1;
    }
    pRange->Set(nRow1, nCol1);
    *pIsRange = 0;
    *pFlags1 = *pFlags2 = nFlags1;
    *ppText = p;
    return 1;
  }
  // A whole row or column: the missing part spans the grid and is absolute.
  if (nParts1 == kR1C1HasRow) {
    pRange->Set(nRow1, 0, nRow1, kMaxCol);
    *pFlags1 = *pFlags2 = nFlags1 | kAbsCol;
  } else {
    pRange->Set(0, nCol1, kMaxRow, nCol1);
    *pFlags1 = *pFlags2 = nFlags1 | kAbsRow;
  }
  *pIsRange = 1;
  *ppText = p;
  return 1;
}
