#include "platform/File.h"

CPelFile::~CPelFile() { Close(); }

bool CPelFile::Open(const char* pszPath, EOpenMode eMode) {
  Close();
  m_bFailed = false;
  m_nWritten = 0;
  if (pszPath == nullptr) return false;
  m_pFile = std::fopen(pszPath, eMode == modeAppend ? "ab" : "wb");
  return m_pFile != nullptr;
}

bool CPelFile::Write(const void* pData, std::size_t nBytes) {
  if (!IsOpen()) return false;
  if (nBytes == 0) return true;
  if (m_pSink != nullptr) {
    const auto* p = static_cast<const unsigned char*>(pData);
    m_pSink->insert(m_pSink->end(), p, p + nBytes);
  } else if (std::fwrite(pData, 1, nBytes, m_pFile) != nBytes) {
    m_bFailed = true;
    return false;
  }
  m_nWritten += nBytes;
  return true;
}

bool CPelFile::Close() {
  bool bOk = !m_bFailed;
  if (m_pFile != nullptr && std::fclose(m_pFile) != 0) bOk = false;
  m_pFile = nullptr;
  m_pSink = nullptr;
  m_bFailed = false;
  return bOk;
}
