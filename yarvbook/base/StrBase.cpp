#include "base/StrBase.h"

#include <cstring>

bool CStrBase::DBCSMode() { return IsDBCSCodePage(CP_ACP); }

bool CStrBase::IsDBCSLeadByte(unsigned char c) {
  return c >= 0x80 && DBCSMode() && ::IsDBCSLeadByte(c);
}

bool CStrBase::IsPtrToAnyLeadByte(const char* pszStart, const char* p) {
  if (!DBCSMode()) return false;
  const char* q = pszStart;
  while (q < p && *q) q = _dbstrinc(q);
  return q == p && *p && IsDBCSLeadByte(static_cast<unsigned char>(*p)) && p[1];
}

const char* CStrBase::_dbstrinc(const char* p) {
  if (!*p) return p;
  if (IsDBCSLeadByte(static_cast<unsigned char>(*p)) && p[1]) return p + 2;
  return p + 1;
}

int CStrBase::_sbstrlen(const char* psz) { return psz ? static_cast<int>(std::strlen(psz)) : 0; }

int CStrBase::_dbstrlen(const char* psz) {
  int n = 0;
  if (psz) {
    for (const char* p = psz; *p; p = _dbstrinc(p)) ++n;
  }
  return n;
}

unsigned CStrBase::MBCHAR2Code(const char* p) {
  const unsigned char cFirst = static_cast<unsigned char>(p[0]);
  if (cFirst && p[1] && IsDBCSLeadByte(cFirst)) {
    return (cFirst << 8) | static_cast<unsigned char>(p[1]);
  }
  return cFirst;
}

bool CStrBase::IsValidCode(unsigned nCode) {
  if (nCode == 0 || nCode > 0xFFFF) return false;
  char ach[2];
  int nBytes = 1;
  if (nCode > 0xFF) {
    ach[0] = static_cast<char>(nCode >> 8);
    ach[1] = static_cast<char>(nCode & 0xFF);
    if (!IsDBCSLeadByte(static_cast<unsigned char>(ach[0])) || ach[1] == 0) return false;
    nBytes = 2;
  } else {
    ach[0] = static_cast<char>(nCode);
    if (IsDBCSLeadByte(static_cast<unsigned char>(ach[0]))) return false;  // half a character
  }
  char16_t awc[2];
  if (MultiByteToWideChar(CP_ACP, ach, nBytes, awc, 2) != 1) return false;
  // Undefined codes come back as a substitution character.
  return awc[0] != 0xFFFD && (awc[0] != 0x1A || nCode == 0x1A);
}

int CStrBase::charbytes(char16_t c) {
  if (c < 0x80 || !DBCSMode()) return 1;
  char ach[8];
  return WideCharToMultiByte(CP_ACP, &c, 1, ach, sizeof ach) == 2 ? 2 : 1;
}

int CStrBase::strbytes(const char16_t* pwsz, int nLength) {
  if (!pwsz) return 0;
  if (nLength < 0) nLength = strlenW(pwsz);
  if (!DBCSMode()) return nLength;
  int nBytes = 0;
  for (int i = 0; i < nLength; ++i) nBytes += charbytes(pwsz[i]);
  return nBytes;
}

const char16_t* CStrBase::safestrnincbytesC(const char16_t* pwsz, int nBytes, bool* pbHalf) {
  *pbHalf = false;
  const char16_t* p = pwsz;
  while (nBytes > 0 && *p) {
    const int nCharBytes = charbytes(*p);
    if (nCharBytes > nBytes) {
      *pbHalf = true;
      break;
    }
    nBytes -= nCharBytes;
    ++p;
  }
  return p;
}

char16_t MAKEWCHAR(unsigned nCode) {
  if (!CStrBase::IsValidCode(nCode)) return 0;
  char ach[2];
  int nBytes = 1;
  if (nCode > 0xFF) {
    ach[0] = static_cast<char>(nCode >> 8);
    ach[1] = static_cast<char>(nCode & 0xFF);
    nBytes = 2;
  } else {
    ach[0] = static_cast<char>(nCode);
  }
  char16_t awc[2];
  return MultiByteToWideChar(CP_ACP, ach, nBytes, awc, 2) == 1 ? awc[0] : 0;
}

unsigned MAKECHAR(char16_t c) {
  if (c == 0) return 0;
  char ach[8];
  const int nBytes = WideCharToMultiByte(CP_ACP, &c, 1, ach, sizeof ach);
  // The conversion writes "?" for what the code page lacks.
  if (nBytes == 1) return (ach[0] == '?' && c != u'?') ? 0 : static_cast<unsigned char>(ach[0]);
  if (nBytes == 2)
    return (static_cast<unsigned char>(ach[0]) << 8) | static_cast<unsigned char>(ach[1]);
  return 0;
}

char16_t* _MakeWSTR(const char* psz, int nLength, unsigned nCodePage) {
  if (!psz) return StringNewW(0);
  if (nLength < 0) nLength = static_cast<int>(std::strlen(psz));
  if (nLength == 0) return StringNewW(0);
  const int nNeeded = MultiByteToWideChar(nCodePage, psz, nLength, nullptr, 0);
  if (nNeeded <= 0) return StringNewW(0);
  char16_t* pwsz = StringNewW(nNeeded);
  const int nWritten = MultiByteToWideChar(nCodePage, psz, nLength, pwsz, nNeeded);
  pwsz[nWritten > 0 ? nWritten : 0] = 0;
  return pwsz;
}

char* _MakeSTR(const char16_t* pwsz, int nLength, unsigned nCodePage) {
  if (!pwsz) return StringNew(0);
  if (nLength < 0) nLength = strlenW(pwsz);
  if (nLength == 0) return StringNew(0);
  const int nNeeded = WideCharToMultiByte(nCodePage, pwsz, nLength, nullptr, 0);
  if (nNeeded <= 0) return StringNew(0);
  char* psz = StringNew(nNeeded);
  const int nWritten = WideCharToMultiByte(nCodePage, pwsz, nLength, psz, nNeeded);
  psz[nWritten > 0 ? nWritten : 0] = 0;
  return psz;
}

unsigned CPCTSTR::getat(int nChars) const {
  const char* p = m_p;
  for (int i = 0; i < nChars && *p; ++i) p = CStrBase::strinc(p);
  return CStrBase::getchar(p);
}

int CPCTSTR::strsize() const { return static_cast<int>(std::strlen(m_p)) + 1; }

void CPTSTR::strcpy(const char* psz) const { std::strcpy(const_cast<char*>(m_p), psz); }
