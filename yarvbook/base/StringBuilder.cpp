#include "base/StringBuilder.h"

#include <cassert>
#include <cstring>
#include <new>

#include "base/ZelException.h"
#include "platform/CodePage.h"

CStringBuilder::~CStringBuilder() {
  for (char16_t* pBuf : m_apBuf) delete[] pBuf;
}

char16_t* CStringBuilder::GetBufW(int nLength, int nSlot) {
  assert(nSlot >= 0 && nSlot < kSlotCount && "builder slot out of range");
  if (nLength < 0) nLength = 0;
  const long long nNeeded = static_cast<long long>(nLength) + 1;
  if (nNeeded > m_anCapacity[nSlot]) {
    if (m_apBuf[nSlot]) m_apBuf[nSlot][0] = 0;
    long long nCapacity = m_anCapacity[nSlot];
    while (nCapacity < nNeeded) nCapacity += nCapacity < 4096 ? 4096 : 512;
    delete[] m_apBuf[nSlot];
    m_apBuf[nSlot] = nullptr;
    m_anCapacity[nSlot] = 0;
    char16_t* pBuf = new (std::nothrow) char16_t[nCapacity];
    if (!pBuf) CZelException::ThrowMemory();
    pBuf[0] = 0;
    m_apBuf[nSlot] = pBuf;
    m_anCapacity[nSlot] = static_cast<int>(nCapacity);
  }
  return m_apBuf[nSlot];
}

char* CStringBuilder::GetBufA(int nLength, int nSlot) {
  if (nLength < 0) nLength = 0;
  // nLength bytes and a terminator in whole units.
  return reinterpret_cast<char*>(GetBufW(nLength / 2, nSlot));
}

const char16_t* CStringBuilder::_Convert(const char* psz, int nLength, unsigned nCodePage,
                                         int nSlot, int* pnOutLength) {
  if (!psz) psz = "";
  if (nLength < 0) nLength = static_cast<int>(std::strlen(psz));
  if (nLength == 0) {
    char16_t* pBuf = GetBufW(0, nSlot);
    if (pnOutLength) *pnOutLength = 0;
    return pBuf;
  }
  const int nNeeded = MultiByteToWideChar(nCodePage, psz, nLength, nullptr, 0);
  if (nNeeded <= 0) return nullptr;
  char16_t* pBuf = GetBufW(nNeeded, nSlot);
  const int nWritten = MultiByteToWideChar(nCodePage, psz, nLength, pBuf, nNeeded);
  if (nWritten <= 0) return nullptr;
  pBuf[nWritten] = 0;
  if (pnOutLength) *pnOutLength = nWritten;
  return pBuf;
}

const char* CStringBuilder::_Convert(const char16_t* pwsz, int nLength, unsigned nCodePage,
                                     int nSlot, int* pnOutLength) {
  if (!pwsz) pwsz = u"";
  if (nLength < 0) {
    nLength = 0;
    while (pwsz[nLength]) ++nLength;
  }
  if (nLength == 0) {
    char* pBuf = GetBufA(0, nSlot);
    pBuf[0] = 0;
    if (pnOutLength) *pnOutLength = 0;
    return pBuf;
  }
  const int nNeeded = WideCharToMultiByte(nCodePage, pwsz, nLength, nullptr, 0);
  if (nNeeded <= 0) return nullptr;
  char* pBuf = GetBufA(nNeeded, nSlot);
  const int nWritten = WideCharToMultiByte(nCodePage, pwsz, nLength, pBuf, nNeeded);
  if (nWritten <= 0) return nullptr;
  pBuf[nWritten] = 0;
  if (pnOutLength) *pnOutLength = nWritten;
  return pBuf;
}

const char16_t* CStringBuilder::ConvertSymbolChar(const char* psz, int nLength, int nSlot,
                                                  int* pnOutLength) {
  if (!psz) psz = "";
  if (nLength < 0) nLength = static_cast<int>(std::strlen(psz));
  char16_t* pBuf = GetBufW(nLength, nSlot);
  for (int i = 0; i < nLength; ++i) {
    pBuf[i] = static_cast<char16_t>(0xF000 + static_cast<unsigned char>(psz[i]));
  }
  pBuf[nLength] = 0;
  if (pnOutLength) *pnOutLength = nLength;
  return pBuf;
}

const char16_t* CStringBuilder::ConvertUnknowCode(const char* psz, int nLength, unsigned nCharSet,
                                                  int nSlot, int* pnOutLength) {
  if (nCharSet == SYMBOL_CHARSET) return ConvertSymbolChar(psz, nLength, nSlot, pnOutLength);
  const unsigned nCodePage = CharSetToCodePage(nCharSet);
  if (nCodePage == CP_ACP || IsCodePageSupported(nCodePage)) {
    const char16_t* pwsz = _Convert(psz, nLength, nCodePage, nSlot, pnOutLength);
    if (pwsz) return pwsz;
  }
  if (!psz) psz = "";
  if (nLength < 0) nLength = static_cast<int>(std::strlen(psz));
  char16_t* pBuf = GetBufW(nLength, nSlot);
  for (int i = 0; i < nLength; ++i) pBuf[i] = static_cast<unsigned char>(psz[i]);
  pBuf[nLength] = 0;
  if (pnOutLength) *pnOutLength = nLength;
  return pBuf;
}
