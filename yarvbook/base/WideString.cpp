#include "base/WideString.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <new>

#include "base/ZelException.h"
#include "platform/TextServices.h"

constinit char16_t g_wszEmpty[1] = {0};

namespace {

template <typename TChar>
int Length(const TChar* p) {
  if (!p) return 0;
  const TChar* q = p;
  while (*q) ++q;
  return static_cast<int>(q - p);
}

// Units of p up to nMax, stopping at a terminator.
template <typename TChar>
int BoundedLength(const TChar* p, int nMax) {
  int n = 0;
  if (p) {
    while (n < nMax && p[n]) ++n;
  }
  return n;
}

template <typename TChar>
TChar* NewBuffer(int nLength) {
  if (nLength < 0) nLength = 0;
  TChar* p = new (std::nothrow) TChar[static_cast<std::size_t>(nLength) + 1]();
  if (!p) CZelException::ThrowMemory();
  return p;
}

template <typename TChar>
TChar* MallocBuffer(int nLength) {
  if (nLength < 0) nLength = 0;
  const std::size_t nUnits = static_cast<std::size_t>(nLength) + 1;
  TChar* p = static_cast<TChar*>(std::calloc(nUnits, sizeof(TChar)));
  if (!p) CZelException::ThrowMemory();
  return p;
}

template <typename TChar>
TChar* NewCopy(const TChar* p, int nLength) {
  if (nLength < 0) nLength = 0;
  TChar* pNew = NewBuffer<TChar>(nLength);
  std::copy_n(p ? p : pNew, BoundedLength(p, nLength), pNew);
  return pNew;
}

template <typename TChar>
TChar* MallocCopy(const TChar* p) {
  const int nLength = Length(p);
  TChar* pNew = MallocBuffer<TChar>(nLength);
  if (p) std::copy_n(p, nLength, pNew);
  return pNew;
}

template <typename TChar>
void DeleteBuffer(TChar* p) {
  if (p && static_cast<const void*>(p) != static_cast<const void*>(g_wszEmpty)) delete[] p;
}

template <typename TChar>
void FreeBuffer(TChar* p) {
  if (p && static_cast<const void*>(p) != static_cast<const void*>(g_wszEmpty)) std::free(p);
}

template <typename TFold>
int CompareFolded(const char16_t* pA, const char16_t* pB, TFold fold) {
  if (!pA) pA = g_wszEmpty;
  if (!pB) pB = g_wszEmpty;
  for (;; ++pA, ++pB) {
    const char16_t a = fold(*pA);
    const char16_t b = fold(*pB);
    if (a != b) return a < b ? -1 : 1;
    if (a == 0) return 0;
  }
}

}  // namespace

// ---- Allocation ---------------------------------------------------------------------

char16_t* StringNewW(int nLength) { return NewBuffer<char16_t>(nLength); }
char16_t* StringNewW(const char16_t* pwsz, int nLength) { return NewCopy(pwsz, nLength); }
char16_t* StringNewW(const char16_t* pwsz) { return NewCopy(pwsz, Length(pwsz)); }
char16_t* StringMallocW(const char16_t* pwsz) { return MallocCopy(pwsz); }

void StringRenewW(char16_t** ppwsz, int nLength) {
  char16_t* pNew = StringNewW(nLength);
  StringDeleteW(*ppwsz);
  *ppwsz = pNew;
}

void StringRenewW(char16_t** ppwsz, const char16_t* pwsz) {
  char16_t* pNew = StringNewW(pwsz);  // before freeing: pwsz may point into *ppwsz
  StringDeleteW(*ppwsz);
  *ppwsz = pNew;
}

void StringReallocW(char16_t** ppwsz, const char16_t* pwsz) {
  char16_t* pNew = StringMallocW(pwsz);
  StringFreeW(*ppwsz);
  *ppwsz = pNew;
}

void StringDeleteW(char16_t* pwsz) { DeleteBuffer(pwsz); }
void StringFreeW(char16_t* pwsz) { FreeBuffer(pwsz); }

char* StringNew(int nLength) { return NewBuffer<char>(nLength); }
char* StringNew(const char* psz, int nLength) { return NewCopy(psz, nLength); }
char* StringNew(const char* psz) { return NewCopy(psz, Length(psz)); }
char* StringMalloc(const char* psz) { return MallocCopy(psz); }

void StringRenew(char** ppsz, int nLength) {
  char* pNew = StringNew(nLength);
  StringDelete(*ppsz);
  *ppsz = pNew;
}

void StringRenew(char** ppsz, const char* psz) {
  char* pNew = StringNew(psz);
  StringDelete(*ppsz);
  *ppsz = pNew;
}

void StringRealloc(char** ppsz, const char* psz) {
  char* pNew = StringMalloc(psz);
  StringFree(*ppsz);
  *ppsz = pNew;
}

void StringDelete(char* psz) { DeleteBuffer(psz); }
void StringFree(char* psz) { FreeBuffer(psz); }

// ---- Measuring, copying, searching ----------------------------------------------------

int strlenW(const char16_t* pwsz) { return Length(pwsz); }
int strsizeW(const char16_t* pwsz) {
  return (Length(pwsz) + 1) * static_cast<int>(sizeof(char16_t));
}

char16_t* strcpyW(char16_t* pDst, const char16_t* pSrc) {
  straddW(pDst, pSrc);
  return pDst;
}

char16_t* strcatW(char16_t* pDst, const char16_t* pSrc) {
  straddW(pDst + Length(pDst), pSrc);
  return pDst;
}

char16_t* straddW(char16_t* pDst, const char16_t* pSrc) {
  while ((*pDst = *pSrc) != 0) {
    ++pDst;
    ++pSrc;
  }
  return pDst;
}

const char16_t* strchrW(const char16_t* pwsz, char16_t c) {
  for (;; ++pwsz) {
    if (*pwsz == c) return pwsz;
    if (*pwsz == 0) return nullptr;
  }
}

const char16_t* strrchrW(const char16_t* pwsz, char16_t c) {
  const char16_t* pFound = nullptr;
  for (;; ++pwsz) {
    if (*pwsz == c) pFound = pwsz;
    if (*pwsz == 0) return pFound;
  }
}

// ---- Comparison ---------------------------------------------------------------------

int strqcmpW(const char16_t* pA, const char16_t* pB) {
  return CompareFolded(pA, pB, [](char16_t c) { return c; });
}

int strcmpiW(const char16_t* pA, const char16_t* pB) { return CompareFolded(pA, pB, toupperW); }

int strxicmpW(const char16_t* pA, const char16_t* pB) {
  return CompareFolded(pA, pB, FoldWidthCaseW);
}

bool EqualsNoCaseW(const char16_t* p, int nLen, const char16_t* pwszWord) {
  int i = 0;
  for (; i < nLen; ++i) {
    if (pwszWord[i] == 0 || toupperW(p[i]) != toupperW(pwszWord[i])) return false;
  }
  return pwszWord[i] == 0;
}

// ---- Characters -----------------------------------------------------------------------

char16_t toupperW(char16_t c) {
  if (c < 0x80) return (c >= u'a' && c <= u'z') ? static_cast<char16_t>(c - 0x20) : c;
  return ToUpperChar(c);
}

bool isctypeW(char16_t c, unsigned nMask) {
  if ((nMask & C1_UPPER) && IsUpperChar(c)) return true;
  if ((nMask & C1_LOWER) && IsLowerChar(c)) return true;
  if ((nMask & C1_DIGIT) && IsDigitChar(c)) return true;
  if ((nMask & C1_SPACE) && IsSpaceChar(c)) return true;
  if ((nMask & C1_PUNCT) && IsPunctChar(c)) return true;
  if ((nMask & C1_CNTRL) && (c < 0x20 || (c >= 0x7F && c < 0xA0))) return true;
  if ((nMask & C1_BLANK) && (c == u' ' || c == u'\t' || c == 0x3000 || c == 0xA0)) return true;
  if ((nMask & C1_XDIGIT) &&
      ((c >= u'0' && c <= u'9') || (c >= u'a' && c <= u'f') || (c >= u'A' && c <= u'F'))) {
    return true;
  }
  return (nMask & C1_ALPHA) && IsLetterChar(c);
}

char16_t FoldWidthCaseW(char16_t c) {
  if (c < 0x80) return toupperW(c);
  return toupperW(FullToHalfWidthChar(c));
}

int full2halfW(char16_t* pDst, const char16_t* pSrc) {
  int n = 0;
  for (; pSrc[n]; ++n) pDst[n] = FullToHalfWidthChar(pSrc[n]);
  pDst[n] = 0;
  return n;
}

char16_t* cistrtokW(char16_t* pwsz, const char16_t* pwszDelims, char16_t** ppContext) {
  char16_t* p = pwsz ? pwsz : *ppContext;
  if (!p) return nullptr;
  const auto IsDelim = [pwszDelims](char16_t c) {
    const char16_t cKey = toupperW(c);
    for (const char16_t* d = pwszDelims; *d; ++d) {
      if (toupperW(*d) == cKey) return true;
    }
    return false;
  };
  while (*p && IsDelim(*p)) ++p;
  if (!*p) {
    *ppContext = p;
    return nullptr;
  }
  char16_t* pToken = p;
  while (*p && !IsDelim(*p)) ++p;
  if (*p) *p++ = 0;
  *ppContext = p;
  return pToken;
}

// ---- Formatting -------------------------------------------------------------------------

namespace {

// Output cursor that never writes past the buffer and remembers a cut.
class TOutBuf {
 public:
  TOutBuf(char16_t* pBuf, int nBufChars)
      : m_pBuf(pBuf), m_nMax(nBufChars > 0 ? nBufChars - 1 : 0) {}
  void Put(char16_t c) {
    if (m_nLen < m_nMax) {
      m_pBuf[m_nLen++] = c;
    } else {
      m_bCut = true;
    }
  }
  void Repeat(char16_t c, int n) {
    for (int i = 0; i < n; ++i) Put(c);
  }
  int Finish(bool bBad, int nBufChars) {
    if (nBufChars > 0) m_pBuf[m_nLen] = 0;
    return (m_bCut || bBad) ? -1 : m_nLen;
  }

 private:
  char16_t* m_pBuf;
  int m_nMax;
  int m_nLen = 0;
  bool m_bCut = false;
};

// Writes a field of nLen units produced by get(i), padded to nWidth.
template <typename TGet>
void PutField(TOutBuf& out, int nLen, int nWidth, bool bLeft, char16_t cPad, TGet get) {
  const int nPad = nWidth > nLen ? nWidth - nLen : 0;
  if (!bLeft) out.Repeat(cPad, nPad);
  for (int i = 0; i < nLen; ++i) out.Put(get(i));
  if (bLeft) out.Repeat(u' ', nPad);
}

// A converted number: zero padding goes between the sign and the digits.
void PutNumber(TOutBuf& out, const char* pszNum, int nLen, int nWidth, bool bLeft, char16_t cPad) {
  if (nLen < 0) return;
  const bool bSign = pszNum[0] == '-' || pszNum[0] == '+';
  if (cPad == u'0' && bSign) {
    out.Put(static_cast<char16_t>(pszNum[0]));
    ++pszNum;
    --nLen;
    --nWidth;
  }
  PutField(out, nLen, nWidth, bLeft, cPad, [pszNum](int i) { return char16_t(pszNum[i]); });
}

}  // namespace

int sprintfW(char16_t* pBuf, int nBufChars, const char16_t* pwszFormat, ...) {
  va_list args;
  va_start(args, pwszFormat);
  const int n = vsprintfW(pBuf, nBufChars, pwszFormat, args);
  va_end(args);
  return n;
}

int vsprintfW(char16_t* pBuf, int nBufChars, const char16_t* pwszFormat, va_list args) {
  TOutBuf out(pBuf, nBufChars);
  bool bBad = false;
  for (const char16_t* p = pwszFormat; *p && !bBad; ++p) {
    if (*p != u'%') {
      out.Put(*p);
      continue;
    }
    ++p;
    bool bLeft = false, bZero = false;
    for (;; ++p) {
      if (*p == u'-') {
        bLeft = true;
      } else if (*p == u'0') {
        bZero = true;
      } else {
        break;
      }
    }
    int nWidth = 0;
    if (*p == u'*') {
      nWidth = va_arg(args, int);
      if (nWidth < 0) {
        bLeft = true;
        nWidth = -nWidth;
      }
      ++p;
    } else {
      while (*p >= u'0' && *p <= u'9' && nWidth < 100000) nWidth = nWidth * 10 + (*p++ - u'0');
    }
    int nPrecision = -1;
    if (*p == u'.') {
      ++p;
      nPrecision = 0;
      if (*p == u'*') {
        nPrecision = va_arg(args, int);
        ++p;
      } else {
        while (*p >= u'0' && *p <= u'9' && nPrecision < 100000) {
          nPrecision = nPrecision * 10 + (*p++ - u'0');
        }
      }
    }
    int nLongs = 0;
    bool bShort = false;
    while (*p == u'l') {
      ++nLongs;
      ++p;
    }
    if (*p == u'h') {
      bShort = true;
      ++p;
    }
    const char16_t cPad = (bZero && !bLeft) ? u'0' : u' ';
    char szNum[400];  // DBL_MAX in %f with 40 decimals fits
    switch (*p) {
      case u'%':
        out.Put(u'%');
        break;
      case u'c': {
        const char16_t c = static_cast<char16_t>(va_arg(args, int));
        PutField(out, 1, nWidth, bLeft, u' ', [c](int) { return c; });
        break;
      }
      case u's': {
        if (bShort) {
          const char* psz = va_arg(args, const char*);
          if (!psz) psz = "(null)";
          int nLen = static_cast<int>(std::strlen(psz));
          if (nPrecision >= 0 && nPrecision < nLen) nLen = nPrecision;
          PutField(out, nLen, nWidth, bLeft, u' ', [psz](int i) {
            return static_cast<char16_t>(static_cast<unsigned char>(psz[i]));
          });
        } else {
          const char16_t* pwsz = va_arg(args, const char16_t*);
          if (!pwsz) pwsz = u"(null)";
          const int nLen = BoundedLength(pwsz, nPrecision >= 0 ? nPrecision : 0x7FFFFFFF);
          PutField(out, nLen, nWidth, bLeft, u' ', [pwsz](int i) { return pwsz[i]; });
        }
        break;
      }
      case u'd':
      case u'i':
      case u'u':
      case u'x':
      case u'X': {
        const bool bSigned = *p == u'd' || *p == u'i';
        const char* pszConversion = *p == u'x'   ? "%llx"
                                    : *p == u'X' ? "%llX"
                                    : bSigned    ? "%lld"
                                                 : "%llu";
        int nLen;
        if (bSigned) {
          const long long n = nLongs >= 2   ? va_arg(args, long long)
                              : nLongs == 1 ? va_arg(args, long)
                                            : va_arg(args, int);
          nLen = std::snprintf(szNum, sizeof szNum, pszConversion, n);
        } else {
          const unsigned long long n = nLongs >= 2   ? va_arg(args, unsigned long long)
                                       : nLongs == 1 ? va_arg(args, unsigned long)
                                                     : va_arg(args, unsigned);
          nLen = std::snprintf(szNum, sizeof szNum, pszConversion, n);
        }
        PutNumber(out, szNum, nLen, nWidth, bLeft, cPad);
        break;
      }
      case u'f':
      case u'e':
      case u'g': {
        const double r = va_arg(args, double);
        const char szConversion[] = {'%', '.', '*', static_cast<char>(*p), 0};
        const int nDigits = std::min(nPrecision < 0 ? 6 : nPrecision, 40);
        const int nLen = std::snprintf(szNum, sizeof szNum, szConversion, nDigits, r);
        PutNumber(out, szNum, nLen, nWidth, bLeft, cPad);
        break;
      }
      default:  // an unknown conversion or the format ending after "%"
        bBad = true;
        break;
    }
    if (!*p) break;
  }
  return out.Finish(bBad, nBufChars);
}

bool IsAsciiString(const char16_t* pwsz, int nLength) {
  if (!pwsz) return true;
  for (int i = 0; nLength < 0 ? pwsz[i] != 0 : i < nLength; ++i) {
    if (pwsz[i] >= 0x80) return false;
  }
  return true;
}

bool GetFileExt(const char16_t* pwszPath, char16_t* pwszExt, int nExtMax) {
  if (nExtMax <= 0) return false;
  pwszExt[0] = 0;
  if (!pwszPath) return false;
  const char16_t* pDot = nullptr;
  for (const char16_t* p = pwszPath; *p; ++p) {
    if (*p == u'.') {
      pDot = p;
    } else if (*p == u'/' || *p == u'\\') {
      pDot = nullptr;
    }
  }
  if (!pDot || !pDot[1]) return false;
  const int nLen = BoundedLength(pDot + 1, nExtMax - 1);
  std::copy_n(pDot + 1, nLen, pwszExt);
  pwszExt[nLen] = 0;
  return true;
}
