#include "platform/Archive.h"

#include <cstring>

CPelArchive::CPelArchive(std::vector<unsigned char>& buffer)
    : m_eMode(modeStore), m_pOut(&buffer) {}

CPelArchive::CPelArchive(const void* pData, std::size_t nSize)
    : m_eMode(modeLoad), m_pIn(static_cast<const unsigned char*>(pData)), m_nInSize(nSize) {
  if (m_pIn == nullptr) m_nInSize = 0;
}

CPelArchive::CPelArchive(const char* pszPath, EMode eMode) : m_eMode(eMode) {
  m_pFile = pszPath ? std::fopen(pszPath, eMode == modeStore ? "wb" : "rb") : nullptr;
  if (m_pFile == nullptr) {
    m_bFailed = true;
    return;
  }
  if (eMode == modeStore) return;
  // The size is taken once, so that a read past the end is refused before it is
  // attempted, exactly as for a memory archive.
  long nSize = -1;
  if (std::fseek(m_pFile, 0, SEEK_END) == 0) nSize = std::ftell(m_pFile);
  if (nSize < 0 || std::fseek(m_pFile, 0, SEEK_SET) != 0) {
    m_bFailed = true;
    return;
  }
  m_nInSize = static_cast<std::size_t>(nSize);
}

CPelArchive::~CPelArchive() { Close(); }

bool CPelArchive::Close() {
  if (m_pFile != nullptr) {
    if (std::fclose(m_pFile) != 0) m_bFailed = true;
    m_pFile = nullptr;
  }
  return !m_bFailed;
}

std::size_t CPelArchive::Remaining() const {
  if (m_bFailed || !IsLoading()) return 0;
  return m_nInSize - m_nInPos;
}

bool CPelArchive::Write(const void* pData, std::size_t nBytes) {
  if (m_bFailed || !IsStoring()) {
    m_bFailed = true;
    return false;
  }
  if (nBytes == 0) return true;
  if (m_pOut != nullptr) {
    const auto* p = static_cast<const unsigned char*>(pData);
    m_pOut->insert(m_pOut->end(), p, p + nBytes);
    return true;
  }
  if (m_pFile == nullptr || std::fwrite(pData, 1, nBytes, m_pFile) != nBytes) {
    m_bFailed = true;
    return false;
  }
  return true;
}

bool CPelArchive::Read(void* pData, std::size_t nBytes) {
  if (nBytes > Remaining() || !IsLoading() || m_bFailed) {
    if (nBytes > 0) std::memset(pData, 0, nBytes);
    m_bFailed = true;
    return false;
  }
  if (nBytes == 0) return true;
  if (m_pIn != nullptr) {
    std::memcpy(pData, m_pIn + m_nInPos, nBytes);
  } else if (m_pFile == nullptr || std::fread(pData, 1, nBytes, m_pFile) != nBytes) {
    // The file shrank under us or failed to read: the bytes are not trustworthy.
    std::memset(pData, 0, nBytes);
    m_bFailed = true;
    return false;
  }
  m_nInPos += nBytes;
  return true;
}

CPelArchive& CPelArchive::Put(std::uint32_t nValue, int nBytes) {
  unsigned char bytes[4];
  for (int i = 0; i < nBytes; ++i) bytes[i] = static_cast<unsigned char>(nValue >> (8 * i));
  Write(bytes, static_cast<std::size_t>(nBytes));
  return *this;
}

std::uint32_t CPelArchive::Get(int nBytes) {
  unsigned char bytes[4];
  if (!Read(bytes, static_cast<std::size_t>(nBytes))) return 0;
  std::uint32_t nValue = 0;
  for (int i = 0; i < nBytes; ++i) nValue |= static_cast<std::uint32_t>(bytes[i]) << (8 * i);
  return nValue;
}

CPelArchive& CPelArchive::operator<<(double r) {
  std::uint64_t nBits;
  static_assert(sizeof nBits == sizeof r, "doubles are stored as 8 bytes");
  std::memcpy(&nBits, &r, sizeof r);
  Put(static_cast<std::uint32_t>(nBits), 4);
  return Put(static_cast<std::uint32_t>(nBits >> 32), 4);
}

CPelArchive& CPelArchive::operator>>(std::uint8_t& n) {
  n = static_cast<std::uint8_t>(Get(1));
  return *this;
}

CPelArchive& CPelArchive::operator>>(std::int16_t& n) {
  n = static_cast<std::int16_t>(Get(2));
  return *this;
}

CPelArchive& CPelArchive::operator>>(std::uint16_t& n) {
  n = static_cast<std::uint16_t>(Get(2));
  return *this;
}

CPelArchive& CPelArchive::operator>>(char16_t& c) {
  c = static_cast<char16_t>(Get(2));
  return *this;
}

CPelArchive& CPelArchive::operator>>(std::int32_t& n) {
  n = static_cast<std::int32_t>(Get(4));
  return *this;
}

CPelArchive& CPelArchive::operator>>(std::uint32_t& n) {
  n = Get(4);
  return *this;
}

CPelArchive& CPelArchive::operator>>(double& r) {
  // Read as one 8-byte unit so that a short tail yields 0.0, not half a double.
  unsigned char bytes[8];
  std::uint64_t nBits = 0;
  if (Read(bytes, sizeof bytes)) {
    for (int i = 0; i < 8; ++i) nBits |= static_cast<std::uint64_t>(bytes[i]) << (8 * i);
  }
  std::memcpy(&r, &nBits, sizeof r);
  return *this;
}

bool CPelArchive::WriteText(const std::u16string& text) {
  if (text.size() > UINT32_MAX) {
    m_bFailed = true;
    return false;
  }
  *this << static_cast<std::uint32_t>(text.size());
  for (char16_t c : text) *this << c;
  return !m_bFailed;
}

bool CPelArchive::ReadText(std::u16string& text) {
  text.clear();
  std::uint32_t nUnits = 0;
  *this >> nUnits;
  if (m_bFailed) return false;
  if (nUnits > Remaining() / 2) {
    m_bFailed = true;
    return false;
  }
  text.resize(nUnits);
  for (char16_t& c : text) *this >> c;
  return !m_bFailed;
}
