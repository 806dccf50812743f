#include "base/ZelIndexObArray.h"

#include <memory>

#include "base/ZelException.h"

int CZelIndexObArray::FindIndex(const CZelObject* pObj) const {
  for (int i = 0; i < m_nSize; ++i) {
    if (m_pData[i] && m_pData[i]->Compare(pObj) == 0) return i;
  }
  return -1;
}

int CZelIndexObArray::MakeNewIndex(CZelIndexObject* pObj) {
  std::unique_ptr<CZelIndexObject> pOwned(pObj);
  const int nFound = FindIndex(pObj);
  if (nFound >= 0) return nFound;
  if (IsFull()) CZelException::ThrowMemory();
  const int nIndex = Add(pObj);  // may throw; pOwned still frees pObj then
  pOwned.release();
  return nIndex;
}

int CZelIndexObArray::MakeCopyIndex(CZelIndexObject* pObj) { return MakeNewIndex(pObj); }

int CZelIndexObArray::GetCopyIndex(const CZelIndexObArray* pSrcPool, int nIndex, int nDefIndex) {
  if (pSrcPool == this) return nIndex;
  if (!pSrcPool->IsValidIndex(nIndex) || !pSrcPool->GetAt(nIndex)) {
    return nDefIndex == -1 ? m_wDefIndex : nDefIndex;
  }
  const int nFound = FindIndex(pSrcPool->GetAt(nIndex));
  if (nFound >= 0) return nFound;
  CZelObject* pClone = pSrcPool->GetAt(nIndex)->Clone();
  if (!pClone) CZelException::ThrowMemory();
  return MakeCopyIndex(static_cast<CZelIndexObject*>(pClone));
}

void CZelIndexObArray::PrepareNewIndex(int nStart) {
  for (int i = nStart < 0 ? 0 : nStart; i < m_nSize; ++i) {
    if (m_pData[i]) m_pData[i]->SetDefNewIndex();
  }
}

bool CZelIndexObArray::NeedsCompacting(int nStart) {
  if (nStart < 0) nStart = 0;
  bool bDropsSome = false;
  int nNext = nStart;
  for (int i = nStart; i < m_nSize; ++i) {
    CZelObject* pEntry = m_pData[i];
    if (pEntry && pEntry->IsUsedNewIndex()) {
      pEntry->SetNewIndex(nNext++);
    } else {
      bDropsSome = true;
    }
  }
  if (!bDropsSome) return false;
  for (int i = 0; i < nStart && i < m_nSize; ++i) {
    if (m_pData[i]) m_pData[i]->SetNewIndex(i);
  }
  return true;
}

void CZelIndexObArray::Compact(int nStart) {
  if (nStart < 0) nStart = 0;
  int nNext = nStart;
  for (int i = nStart; i < m_nSize; ++i) {
    CZelObject* pEntry = m_pData[i];
    m_pData[i] = nullptr;
    if (pEntry && pEntry->IsUsedNewIndex()) {
      m_pData[nNext++] = pEntry;
    } else if (pEntry) {
      FreeObject(pEntry);
    }
  }
  if (nNext < m_nSize) SetSize(nNext);
  EndNewIndex();
}

void CZelIndexObArray::EndNewIndex() {
  for (int i = 0; i < m_nSize; ++i) {
    if (!m_pData[i]) continue;
    m_pData[i]->SetUsedNewIndex();
    m_pData[i]->SetNewIndex(i);
  }
}
