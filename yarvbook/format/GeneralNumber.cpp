#include "format/GeneralNumber.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdlib>

namespace {

// Appends the exponent part "E+05" / "E-123": at least two digits, as spreadsheets
// show it.
int WriteExponent(char16_t* p, int nExponent) {
  int n = 0;
  p[n++] = u'E';
  p[n++] = nExponent < 0 ? u'-' : u'+';
  int nAbs = std::abs(nExponent);
  char16_t acDigits[4];
  int nDigits = 0;
  do {
    acDigits[nDigits++] = static_cast<char16_t>(u'0' + nAbs % 10);
    nAbs /= 10;
  } while (nAbs != 0);
  if (nDigits < 2) acDigits[nDigits++] = u'0';
  while (nDigits > 0) p[n++] = acDigits[--nDigits];
  return n;
}

// Copies the scratch text out when it fits with its terminator.
int CopyOut(const char16_t* pText, int nLen, char16_t* pBuf, int nCapacity) {
  if (pBuf == nullptr || nLen + 1 > nCapacity) return 0;
  for (int i = 0; i < nLen; ++i) pBuf[i] = pText[i];
  pBuf[nLen] = 0;
  return nLen;
}

}  // namespace

bool TGeneralNumber::Set(double r, int nPrecision) {
  if (nPrecision < 1) nPrecision = 1;
  if (nPrecision > 17) nPrecision = 17;
  m_bNegative = false;
  m_bScientific = false;
  m_szDigits[0] = '0';
  m_szDigits[1] = 0;
  m_nDigits = 1;
  m_nExponent = 0;
  if (!std::isfinite(r)) return false;
  if (r == 0) return true;  // -0 shows as 0

  // to_chars rounds the exact binary value correctly: 0.1 + 0.2 (0.30000000000000004)
  // becomes "3.00000000000000e-01" at 15 digits.
  char szSci[40];
  const auto res = std::to_chars(szSci, szSci + sizeof(szSci), std::fabs(r),
                                 std::chars_format::scientific, nPrecision - 1);
  if (res.ec != std::errc()) return false;
  const char* pEnd = res.ptr;
  const char* p = szSci;
  int nDigits = 0;
  for (; p < pEnd && *p != 'e'; ++p) {
    if (*p >= '0' && *p <= '9') m_szDigits[nDigits++] = *p;
  }
  int nExponent = 0;
  std::from_chars(p + 1 + (p[1] == '+' ? 1 : 0), pEnd, nExponent);
  while (nDigits > 1 && m_szDigits[nDigits - 1] == '0') --nDigits;
  m_szDigits[nDigits] = 0;
  m_nDigits = nDigits;
  m_nExponent = nExponent;
  m_bNegative = r < 0;
  m_bScientific = m_nExponent < kMinFixedExponent || m_nExponent >= nPrecision;
  return true;
}

void TGeneralNumber::RoundDigits(int nKeep) {
  if (nKeep >= m_nDigits) return;
  const bool bUp = nKeep >= 0 && m_szDigits[nKeep] >= '5';
  int nDigits = nKeep < 0 ? 0 : nKeep;
  if (bUp) {
    int k = nDigits - 1;
    while (k >= 0 && m_szDigits[k] == '9') --k;
    if (k < 0) {  // 9.99 -> 10: one digit, one power up
      m_szDigits[0] = '1';
      nDigits = 1;
      ++m_nExponent;
    } else {
      ++m_szDigits[k];
      nDigits = k + 1;
    }
  }
  while (nDigits > 0 && m_szDigits[nDigits - 1] == '0') --nDigits;
  if (nDigits == 0) {  // rounded away: zero, which shows without a sign
    m_szDigits[0] = '0';
    nDigits = 1;
    m_nExponent = 0;
    m_bNegative = false;
  }
  m_szDigits[nDigits] = 0;
  m_nDigits = nDigits;
}

bool TGeneralNumber::SetWidth(double r, int nWidth) {
  if (!Set(r)) return false;
  if (nWidth <= 0 || IsZero()) return true;
  const int nRoom = std::max(1, nWidth - (m_bNegative ? 1 : 0));
  const int nExponent = m_nExponent;
  if (nExponent >= kMinCellFixedExponent && nExponent < nRoom && nExponent < kPrecision) {
    // Fixed: the integer digits, then a point and as many decimals as are left.
    const int nDecimals = std::max(0, nExponent >= 0 ? nRoom - (nExponent + 1) - 1 : nRoom - 2);
    TGeneralNumber fixed = *this;
    fixed.RoundDigits(nExponent + 1 + nDecimals);
    if (!fixed.IsZero() && fixed.m_nExponent < nRoom) {
      *this = fixed;
      m_bScientific = false;
      return true;
    }
  }
  // Exponent: "d.dddE+xx" keeps nRoom - 5 digits, one fewer with a third exponent digit.
  const int nExponentDigits = std::abs(nExponent) >= 100 ? 3 : 2;
  RoundDigits(std::max(1, nRoom - 3 - nExponentDigits));
  m_bScientific = true;
  return true;
}

int TGeneralNumber::WriteScientific(char16_t* pBuf, int nCapacity, char16_t cDecimal) const {
  char16_t acText[kMaxText];
  int n = 0;
  if (m_bNegative) acText[n++] = u'-';
  acText[n++] = static_cast<char16_t>(m_szDigits[0]);
  if (m_nDigits > 1) {
    acText[n++] = cDecimal;
    for (int i = 1; i < m_nDigits; ++i) acText[n++] = static_cast<char16_t>(m_szDigits[i]);
  }
  n += WriteExponent(acText + n, m_nExponent);
  return CopyOut(acText, n, pBuf, nCapacity);
}

int TGeneralNumber::Write(char16_t* pBuf, int nCapacity, char16_t cDecimal) const {
  if (IsScientific()) return WriteScientific(pBuf, nCapacity, cDecimal);
  // Fixed notation: the exponent lies in kMinFixedExponent .. precision - 1, so the
  // text is at most a sign, "0." and eight zeros, and 17 digits.
  char16_t acText[kMaxText];
  int n = 0;
  if (m_bNegative) acText[n++] = u'-';
  if (m_nExponent < 0) {
    acText[n++] = u'0';
    acText[n++] = cDecimal;
    for (int i = -1; i > m_nExponent; --i) acText[n++] = u'0';
    for (int i = 0; i < m_nDigits; ++i) acText[n++] = static_cast<char16_t>(m_szDigits[i]);
    return CopyOut(acText, n, pBuf, nCapacity);
  }
  const int nIntDigits = m_nExponent + 1;
  for (int i = 0; i < nIntDigits; ++i) {
    acText[n++] = i < m_nDigits ? static_cast<char16_t>(m_szDigits[i]) : u'0';
  }
  if (m_nDigits > nIntDigits) {
    acText[n++] = cDecimal;
    for (int i = nIntDigits; i < m_nDigits; ++i) {
      acText[n++] = static_cast<char16_t>(m_szDigits[i]);
    }
  }
  return CopyOut(acText, n, pBuf, nCapacity);
}

int FormatGeneralNumber(double r, char16_t* pBuf, int nCapacity, char16_t cDecimal) {
  TGeneralNumber num;
  if (!num.Set(r)) return 0;
  return num.Write(pBuf, nCapacity, cDecimal);
}
