#include "base/SSString.h"

#include <algorithm>
#include <cassert>
#include <string>
#include <utility>

#include "base/WideString.h"
#include "base/ZelException.h"
#include "platform/Resources.h"

namespace {

int LengthOf(const char16_t* pwsz, int nLength) {
  if (!pwsz) return 0;
  if (nLength >= 0) return nLength;
  return strlenW(pwsz);
}

}  // namespace

CSSString::CSSString(const char16_t* pwsz, int nLength) : m_pwsz(g_wszEmpty) { Set(pwsz, nLength); }

CSSString::CSSString(const CSSString& other) : m_pwsz(g_wszEmpty) {
  Set(other.m_pwsz, other.m_nLength);
}

CSSString::CSSString(CSSString&& other) noexcept
    : m_pwsz(std::exchange(other.m_pwsz, g_wszEmpty)),
      m_nLength(std::exchange(other.m_nLength, 0)),
      m_nCapacity(std::exchange(other.m_nCapacity, 0)) {}

CSSString& CSSString::operator=(const CSSString& other) {
  if (this != &other) Set(other.m_pwsz, other.m_nLength);
  return *this;
}

CSSString& CSSString::operator=(CSSString&& other) noexcept {
  if (this != &other) {
    StringDeleteW(m_pwsz);
    m_pwsz = std::exchange(other.m_pwsz, g_wszEmpty);
    m_nLength = std::exchange(other.m_nLength, 0);
    m_nCapacity = std::exchange(other.m_nCapacity, 0);
  }
  return *this;
}

CSSString::~CSSString() { StringDeleteW(m_pwsz); }

void CSSString::Reserve(int nLength, bool bKeep) {
  if (nLength + 1 <= m_nCapacity) return;
  const int nCapacity = std::max(nLength + 1, m_nCapacity + m_nCapacity / 2);
  char16_t* pNew = StringNewW(nCapacity - 1);
  if (bKeep) std::copy_n(m_pwsz, m_nLength + 1, pNew);
  StringDeleteW(m_pwsz);
  m_pwsz = pNew;
  m_nCapacity = nCapacity;
}

void CSSString::Set(const char16_t* pwsz, int nLength) {
  nLength = LengthOf(pwsz, nLength);
  if (nLength == 0) {
    Empty();
    return;
  }
  if (pwsz >= m_pwsz && pwsz < m_pwsz + m_nCapacity) {  // a part of this text
    CSSString copy(pwsz, nLength);
    *this = std::move(copy);
    return;
  }
  Reserve(nLength, false);
  std::copy_n(pwsz, nLength, m_pwsz);
  m_pwsz[nLength] = 0;
  m_nLength = nLength;
}

void CSSString::Append(const char16_t* pwsz, int nLength) {
  nLength = LengthOf(pwsz, nLength);
  if (nLength == 0) return;
  if (pwsz >= m_pwsz && pwsz < m_pwsz + m_nCapacity) {
    CSSString copy(pwsz, nLength);
    Append(copy.m_pwsz, nLength);
    return;
  }
  Reserve(m_nLength + nLength, true);
  std::copy_n(pwsz, nLength, m_pwsz + m_nLength);
  m_nLength += nLength;
  m_pwsz[m_nLength] = 0;
}

void CSSString::Empty() {
  StringDeleteW(m_pwsz);
  m_pwsz = g_wszEmpty;
  m_nLength = 0;
  m_nCapacity = 0;
}

char16_t* CSSString::GetBuffer(int nMinLength) {
  Reserve(std::max(nMinLength, m_nLength), true);
  return m_pwsz;
}

void CSSString::ReleaseBuffer(int nNewLength) {
  if (m_nCapacity == 0) return;  // still the shared empty text
  if (nNewLength < 0) {
    nNewLength = 0;
    while (nNewLength < m_nCapacity - 1 && m_pwsz[nNewLength]) ++nNewLength;
  }
  m_nLength = std::min(nNewLength, m_nCapacity - 1);
  m_pwsz[m_nLength] = 0;
}

char16_t* CSSString::Detach() {
  char16_t* pwsz = m_pwsz;
  m_pwsz = g_wszEmpty;
  m_nLength = 0;
  m_nCapacity = 0;
  return pwsz;
}

int CSSString::Compare(const char16_t* pwsz) const { return strqcmpW(m_pwsz, pwsz); }
int CSSString::CompareNoCase(const char16_t* pwsz) const { return strcmpiW(m_pwsz, pwsz); }

CLiteString::CLiteString(char16_t* pBuf, int nBufChars) : m_pBuf(pBuf), m_nBufChars(nBufChars) {
  assert(nBufChars >= 1 && "a fixed buffer needs room for the terminator");
  m_pBuf[0] = 0;
}

bool CLiteString::Set(const char16_t* pwsz, int nLength) {
  m_nLength = 0;
  m_pBuf[0] = 0;
  return Append(pwsz, nLength);
}

bool CLiteString::Append(const char16_t* pwsz, int nLength) {
  nLength = LengthOf(pwsz, nLength);
  const int nRoom = m_nBufChars - 1 - m_nLength;
  const int nCopied = std::min(nLength, nRoom);
  if (nCopied > 0) std::char_traits<char16_t>::move(m_pBuf + m_nLength, pwsz, nCopied);
  m_nLength += nCopied;
  m_pBuf[m_nLength] = 0;
  return nCopied == nLength;
}

void CLiteString::Empty() {
  m_nLength = 0;
  m_pBuf[0] = 0;
}

bool CResourceString::Load(unsigned nId) {
  const char16_t* pwsz = LoadResourceString(nId);
  Set(pwsz);
  return pwsz != nullptr;
}
