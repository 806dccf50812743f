#include "base/ZelMemFile.h"

#include <algorithm>
#include <cassert>
#include <cstring>

#include "base/ZelException.h"

CZelMemFile::~CZelMemFile() { Release(); }

void CZelMemFile::Release() {
  if (m_hMem) {
    if (m_pData) GlobalUnlock(m_hMem);
    GlobalFree(m_hMem);
  }
  m_hMem = nullptr;
  m_pData = nullptr;
  m_nCapacity = 0;
  m_nLength = 0;
}

void CZelMemFile::Init() {
  Release();
  HGLOBAL hMem = GlobalAlloc(GMEM_MOVEABLE | GMEM_ZEROINIT, kInitialSize);
  if (!hMem) CZelException::ThrowMemory();
  m_hMem = hMem;
  m_pData = static_cast<unsigned char*>(GlobalLock(hMem));
  if (!m_pData) {
    Release();
    CZelException::ThrowMemory();
  }
  m_nCapacity = kInitialSize;
}

void CZelMemFile::Write(const void* pData, std::size_t nBytes) {
  if (nBytes == 0) return;
  assert(m_hMem && "Init the memory file before writing");
  if (!m_hMem) return;
  if (m_nLength + nBytes > m_nCapacity) {
    const std::size_t nNewCapacity = std::max(m_nCapacity * 2, m_nLength + nBytes);
    GlobalUnlock(m_hMem);
    m_pData = nullptr;
    HGLOBAL hNew = GlobalReAlloc(m_hMem, nNewCapacity, GMEM_MOVEABLE | GMEM_ZEROINIT);
    if (hNew) {
      m_hMem = hNew;
      m_nCapacity = nNewCapacity;
    }
    // Lock again either way: on failure the old block is intact and stays usable.
    m_pData = static_cast<unsigned char*>(GlobalLock(m_hMem));
    if (!hNew || !m_pData) CZelException::ThrowMemory();
  }
  std::memcpy(m_pData + m_nLength, pData, nBytes);
  m_nLength += nBytes;
}

HGLOBAL CZelMemFile::Finish() {
  if (!m_hMem) return nullptr;
  const unsigned char cZero = 0;
  Write(&cZero, 1);
  GlobalUnlock(m_hMem);
  m_pData = nullptr;
  HGLOBAL hResult = GlobalReAlloc(m_hMem, m_nLength, GMEM_MOVEABLE);
  if (!hResult) {
    Release();
    return nullptr;
  }
  m_hMem = nullptr;
  m_nCapacity = 0;
  m_nLength = 0;
  return hResult;
}
