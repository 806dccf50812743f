#include "formula/Formula.h"

#include <array>
#include <cstdlib>
#include <cstring>
#include <utility>

#include "base/ZelException.h"

namespace {

constexpr std::array<unsigned char, 128> MakeBases() {
  std::array<unsigned char, 128> a{};
  for (int i = 0; i < 128; i++) {
    if (i < 0x40)
      a[i] = static_cast<unsigned char>(i);
    else if (i < 0x60)
      a[i] = static_cast<unsigned char>(i - 0x20);
    else
      a[i] = static_cast<unsigned char>(i - 0x40);
  }
  return a;
}
constexpr std::array<unsigned char, 128> kBases = MakeBases();

// BIFF8 codes by value error 1..7; index 0 unused.
constexpr unsigned char kBiffErrors[] = {0x2A, 0x00, 0x07, 0x0F, 0x17, 0x1D, 0x24, 0x2A};

unsigned short ClampLen(int n) {
  return static_cast<unsigned short>(n < 0 ? 0 : n > 0xFFFF ? 0xFFFF : n);
}

}  // namespace

const unsigned char CFormulaBase::m_Bases[128] = {
#define B(i) kBases[i]
#define B8(i) B(i), B(i + 1), B(i + 2), B(i + 3), B(i + 4), B(i + 5), B(i + 6), B(i + 7)
    B8(0x00), B8(0x08), B8(0x10), B8(0x18), B8(0x20), B8(0x28), B8(0x30), B8(0x38),
    B8(0x40), B8(0x48), B8(0x50), B8(0x58), B8(0x60), B8(0x68), B8(0x70), B8(0x78),
#undef B8
#undef B
};

// Operand bytes behind the token byte, by base code. Keep in step with the token
// layouts in Formula.h.

unsigned char CFormulaBase::ErrorToBiff(int nError) {
  if (nError < 1 || nError > 7) return 0x2A;
  return kBiffErrors[nError];
}

int CFormulaBase::BiffToError(unsigned char cCode) {
  for (int i = 1; i <= 7; i++)
    if (kBiffErrors[i] == cCode) return i;
  return 7;
}

unsigned CFormulaBase::TPostfixPtr::GetDWord() {
  const unsigned n = static_cast<unsigned>(m_p[0]) | (static_cast<unsigned>(m_p[1]) << 8) |
                     (static_cast<unsigned>(m_p[2]) << 16) | (static_cast<unsigned>(m_p[3]) << 24);
  m_p += 4;
  return n;
}

double CFormulaBase::TPostfixPtr::GetReal() {
  double r;
  std::memcpy(&r, m_p, sizeof r);
  m_p += sizeof r;
  return r;
}

void CFormulaBase::TPostfixPtr::GetBytes(void* pDest, int nCount) {
  if (nCount <= 0) return;
  std::memcpy(pDest, m_p, static_cast<size_t>(nCount));
  m_p += nCount;
}

char16_t* CFormulaBase::TPostfixPtr::GetStr(char16_t* pDest, int nCount) {
  for (int i = 0; i < nCount; i++) {
    const char16_t c = static_cast<char16_t>(m_p[0] | (m_p[1] << 8));
    m_p += 2;
    *pDest++ = c;
    if (c == u'"') *pDest++ = c;
  }
  return pDest;
}

void CFormulaBase::TPostfixPtr::Put(unsigned int n) {
  for (int i = 0; i < 4; i++) m_p[i] = static_cast<unsigned char>(n >> (8 * i));
  m_p += 4;
}

void CFormulaBase::TPostfixPtr::Put(double r) {
  std::memcpy(m_p, &r, sizeof r);
  m_p += sizeof r;
}

void CFormulaBase::TPostfixPtr::Put(const void* pSrc, int nCount) {
  if (nCount <= 0) return;
  std::memcpy(m_p, pSrc, static_cast<size_t>(nCount));
  m_p += nCount;
}

int CFormulaBase::TPostfixPtr::PutStr(const char16_t* pSrc, int nCount) {
  int nStored = 0;
  for (int i = 0; i < nCount; i++) {
    const char16_t c = pSrc[i];
    if (c == u'"' && i + 1 < nCount && pSrc[i + 1] == u'"') i++;
    m_p[0] = static_cast<unsigned char>(c);
    m_p[1] = static_cast<unsigned char>(c >> 8);
    m_p += 2;
    nStored++;
  }
  return nStored;
}

void CFormulaBase::TPostfixPtr::Zero(int nCount) {
  if (nCount <= 0) return;
  std::memset(m_p, 0, static_cast<size_t>(nCount));
  m_p += nCount;
}

int CFormulaBase::TPostfixPtr::SizeVariableToken(unsigned char cBase) const {
  switch (cBase) {
    case tStr:
      return 1 + 2 * m_p[0];
    case tExtended:
      return (m_p[0] == 10 || m_p[0] == 11) ? 14 : 5;
    case tAttr:
      // flags, data word, and with the choice flag data + 1 jump offsets
      if (m_p[0] & kAttrChoose) return 5 + 2 * (m_p[1] | (m_p[2] << 8));
      return 3;
    default:
      return 0;
  }
}

void CFormulaBase::TPostfixPtr::SkipAddedData(unsigned char cToken, TPostfixPtr* pAdded) const {
  if (!pAdded) return;
  if (cToken & 0x40) cToken |= 0x20;
  cToken &= 0x3F;
  switch (cToken) {
    case tArray: {
      // columns - 1 (byte), rows - 1 (word), then the items row by row
      const long nCols = pAdded->GetByte() + 1L;
      const long nRows = pAdded->GetWord() + 1L;
      for (long i = nCols * nRows; i > 0; i--) {
        const unsigned char cType = pAdded->GetByte();
        if (cType == kItemString)
          pAdded->Skip(2 * pAdded->GetWord());
        else if (cType == kItemEmpty || cType == kItemNumber || cType == kItemBool ||
                 cType == kItemError || cType > kItemError)
          pAdded->Skip(8);
      }
      break;
    }
    case tMemArea:
      // range count, then row1, row2, col1, col2 per range
      pAdded->Skip(8 * pAdded->GetWord());
      break;
    case tExtended:
      if (m_p[0] >= 11 && m_p[0] <= 15) pAdded->Skip(static_cast<int>(4 * pAdded->GetDWord()));
      break;
    default:
      break;
  }
}

void CFormulaBase::TPostfixPtr::SkipTokens(unsigned short nCount, TPostfixPtr* pAdded) {
  for (unsigned i = 0; i < nCount; i++) {
    const unsigned char cToken = GetByte();
    SkipAddedData(cToken, pAdded);
    NextToken(TokenBase(cToken));
  }
}

CFormula::CFormula(const unsigned char* pPostfix, int nPostfixLen, const unsigned char* pAdded,
                   int nAddedLen) {
  Set(pPostfix, nPostfixLen, pAdded, nAddedLen);
}

CFormula::CFormula(const CFormula& other) {
  Set(other.GetPostfix(), other.m_nPostfixLen, other.GetAddedData(), other.m_nAddedLen);
}

CFormula& CFormula::operator=(const CFormula& other) {
  if (this != &other)
    Set(other.GetPostfix(), other.m_nPostfixLen, other.GetAddedData(), other.m_nAddedLen);
  return *this;
}

CFormula::~CFormula() { std::free(m_pBuffer); }

void CFormula::Set(const unsigned char* pPostfix, int nPostfixLen, const unsigned char* pAdded,
                   int nAddedLen) {
  const unsigned short nPost = ClampLen(nPostfixLen);
  const unsigned short nAdd = ClampLen(nAddedLen);
  const int nTotal = nPost + nAdd;
  if (nTotal == m_nPostfixLen + m_nAddedLen) {
    // memmove: the source may lie in this formula's own block
    if (nPost) std::memmove(m_pBuffer, pPostfix, nPost);
    if (nAdd) std::memmove(m_pBuffer + nPost, pAdded, nAdd);
  } else {
    unsigned char* pNew = nullptr;
    if (nTotal) {
      pNew = static_cast<unsigned char*>(std::malloc(static_cast<size_t>(nTotal)));
      if (!pNew) CZelException::ThrowMemory();
      if (nPost) std::memcpy(pNew, pPostfix, nPost);
      if (nAdd) std::memcpy(pNew + nPost, pAdded, nAdd);
    }
    std::free(m_pBuffer);
    m_pBuffer = pNew;
  }
  m_nPostfixLen = nPost;
  m_nAddedLen = nAdd;
}

void CFormula::Replace(const unsigned char* pPostfix, int nPostfixLen) {
  const unsigned short nPost = ClampLen(nPostfixLen);
  if (nPost == m_nPostfixLen) {
    if (nPost) std::memmove(m_pBuffer, pPostfix, nPost);
    return;
  }
  const int nTotal = nPost + m_nAddedLen;
  unsigned char* pNew = nullptr;
  if (nTotal) {
    pNew = static_cast<unsigned char*>(std::malloc(static_cast<size_t>(nTotal)));
    if (!pNew) CZelException::ThrowMemory();
    if (nPost) std::memcpy(pNew, pPostfix, nPost);
    if (m_nAddedLen) std::memcpy(pNew + nPost, m_pBuffer + m_nPostfixLen, m_nAddedLen);
  }
  std::free(m_pBuffer);
  m_pBuffer = pNew;
  m_nPostfixLen = nPost;
}

void CFormula::Clear() {
  std::free(m_pBuffer);
  m_pBuffer = nullptr;
  m_nPostfixLen = m_nAddedLen = 0;
}

void CFormula::Swap(CFormula& other) noexcept {
  std::swap(m_nPostfixLen, other.m_nPostfixLen);
  std::swap(m_nAddedLen, other.m_nAddedLen);
  std::swap(m_pBuffer, other.m_pBuffer);
}

bool CFormula::operator==(const CFormula& other) const {
  if (m_nPostfixLen != other.m_nPostfixLen || m_nAddedLen != other.m_nAddedLen) return false;
  const int nTotal = m_nPostfixLen + m_nAddedLen;
  return nTotal == 0 || std::memcmp(m_pBuffer, other.m_pBuffer, static_cast<size_t>(nTotal)) == 0;
}
