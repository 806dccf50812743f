#include "base/ZelObArray.h"

#include <algorithm>
#include <cassert>
#include <new>

#include "base/ZelException.h"

namespace {

// nCount zeroed slots; throws CZelException (memory) on failure.
CZelObject** NewSlots(int nCount) {
  CZelObject** pSlots = new (std::nothrow) CZelObject*[nCount]();
  if (!pSlots) CZelException::ThrowMemory();
  return pSlots;
}

}  // namespace

CZelObArray::~CZelObArray() {
  // Virtual calls from here reach this class's versions only.
  for (int i = 0; i < m_nSize; ++i) delete m_pData[i];
  delete[] m_pData;
}

void CZelObArray::Clear() {
  Clear(0, m_nSize);
  SetSize(0);
}

CZelObject* CZelObArray::Clone() const {
  CZelObArray* pClone = new (std::nothrow) CZelObArray;
  if (!pClone) CZelException::ThrowMemory();
  try {
    pClone->Copy(this);
  } catch (...) {
    delete pClone;
    throw;
  }
  return pClone;
}

void CZelObArray::Copy(const CZelObject* pSrc) {
  if (pSrc == this) return;
  const CZelObArray* pArray = static_cast<const CZelObArray*>(pSrc);
  Clear();
  Append(pArray);
}

void CZelObArray::Shrink() {
  int nNewSize = m_nSize;
  while (nNewSize > 0 && !m_pData[nNewSize - 1]) --nNewSize;
  if (nNewSize != m_nSize) SetSize(nNewSize);
}

void CZelObArray::SetSize(int nNewSize, int nGrowBy) {
  assert(nNewSize >= 0 && "array size is never negative");
  if (nGrowBy != -1) m_nGrowBy = nGrowBy;
  if (nNewSize <= 0) {
    delete[] m_pData;
    m_pData = nullptr;
    m_nSize = m_nMaxSize = 0;
    return;
  }
  if (!m_pData) {
    m_pData = NewSlots(nNewSize);
    m_nSize = m_nMaxSize = nNewSize;
    return;
  }
  if (nNewSize > m_nMaxSize) {
    int nStep = m_nGrowBy;
    if (nStep == 0) nStep = std::clamp(m_nSize / 8, 4, 1024);
    const int nNewMax = std::max(m_nMaxSize + nStep, nNewSize);
    CZelObject** pNewData = NewSlots(nNewMax);
    std::copy(m_pData, m_pData + m_nSize, pNewData);
    delete[] m_pData;
    m_pData = pNewData;
    m_nMaxSize = nNewMax;
  } else if (nNewSize > m_nSize) {
    std::fill(m_pData + m_nSize, m_pData + nNewSize, nullptr);
  }
  m_nSize = nNewSize;
}

void CZelObArray::FreeObject(CZelObject* pObj) { delete pObj; }

void CZelObArray::GrowSize(int n) {
  if (m_nSize < n) SetSize(n, -1);
}

int CZelObArray::GrowSize() {
  SetSize(m_nSize + 1, -1);
  return m_nSize - 1;
}

void CZelObArray::SetAtGrow(int i, CZelObject* pObj) {
  assert(i >= 0 && "negative index");
  GrowSize(i + 1);
  m_pData[i] = pObj;
}

int CZelObArray::Add(CZelObject* pObj) {
  const int i = m_nSize;
  SetAtGrow(i, pObj);
  return i;
}

void CZelObArray::InsertAt(int i, CZelObject* pObj, int nCount) {
  assert(i >= 0 && nCount >= 0 && "negative index or count");
  assert((nCount <= 1 || !pObj) && "one object cannot fill several owning slots");
  if (nCount <= 0) return;
  if (i >= m_nSize) {
    SetSize(i + nCount, -1);
  } else {
    const int nOldSize = m_nSize;
    SetSize(m_nSize + nCount, -1);
    std::move_backward(m_pData + i, m_pData + nOldSize, m_pData + nOldSize + nCount);
  }
  std::fill(m_pData + i, m_pData + i + nCount, pObj);
}

void CZelObArray::InsertAt(int i, const CZelObArray* pArray) {
  const int nCount = pArray->GetSize();
  if (nCount == 0) return;
  // Clone into a scratch array first, so that a failed clone leaves this array whole
  // and the clones made so far are freed by the scratch array.
  CZelObArray clones;
  clones.Append(pArray);
  InsertAt(i, nullptr, nCount);  // opens the gap
  for (int k = 0; k < nCount; ++k) {
    m_pData[i + k] = clones.m_pData[k];
    clones.m_pData[k] = nullptr;
  }
}

void CZelObArray::RemoveAt(int i, int nCount) {
  if (i < 0 || i >= m_nSize || nCount <= 0) return;
  nCount = std::min(nCount, m_nSize - i);
  std::copy(m_pData + i + nCount, m_pData + m_nSize, m_pData + i);
  SetSize(m_nSize - nCount);
}

int CZelObArray::Append(const CZelObArray* pArray) {
  const int nFirst = m_nSize;
  const int nCount = pArray->GetSize();
  if (nCount == 0) return nFirst;
  SetSize(nFirst + nCount, -1);
  try {
    for (int k = 0; k < nCount; ++k) {
      const CZelObject* pSrc = pArray->GetAt(k);
      m_pData[nFirst + k] = pSrc ? pSrc->Clone() : nullptr;
    }
  } catch (...) {
    Clear(nFirst, nCount);
    SetSize(nFirst);
    throw;
  }
  return nFirst;
}

void CZelObArray::FreeExtra() {
  if (m_nSize == m_nMaxSize) return;
  if (m_nSize == 0) {
    SetSize(0);
    return;
  }
  CZelObject** pNewData = NewSlots(m_nSize);
  std::copy(m_pData, m_pData + m_nSize, pNewData);
  delete[] m_pData;
  m_pData = pNewData;
  m_nMaxSize = m_nSize;
}

void CZelObArray::Clear(int i, int nCount) {
  if (i < 0) {
    nCount += i;
    i = 0;
  }
  const int nEnd = std::min(m_nSize, i + std::max(nCount, 0));
  for (; i < nEnd; ++i) {
    CZelObject* pObj = m_pData[i];
    m_pData[i] = nullptr;
    if (pObj) FreeObject(pObj);
  }
}

void CZelObArray::Move(int nDest, int nSrc, int nCount) {
  if (nDest < 0 || nSrc < 0 || nCount <= 0 || nDest == nSrc) return;
  nCount = std::min(nCount, MaxIndex() + 1 - nDest);
  if (nCount <= 0) return;
  const int nMoved = std::clamp(m_nSize - nSrc, 0, nCount);
  if (nDest < nSrc) {
    for (int k = 0; k < nMoved; ++k) {
      CZelObject*& pDestSlot = m_pData[nDest + k];
      if (pDestSlot) FreeObject(pDestSlot);
      pDestSlot = m_pData[nSrc + k];
      m_pData[nSrc + k] = nullptr;
    }
  } else if (nMoved > 0) {
    GrowSize(nDest + nMoved);
    for (int k = nMoved - 1; k >= 0; --k) {
      CZelObject*& pDestSlot = m_pData[nDest + k];
      if (pDestSlot) FreeObject(pDestSlot);
      pDestSlot = m_pData[nSrc + k];
      m_pData[nSrc + k] = nullptr;
    }
  }
  Clear(nDest + nMoved, nCount - nMoved);
}

void CZelObArray::Insert(int i, int nCount) {
  if (i < 0 || nCount <= 0) return;
  if (i >= m_nSize) {
    GrowSize(i + nCount);
    return;
  }
  Move(i + nCount, i, m_nSize - i);
  // What could not move (it would have passed the last index) is dropped.
  Clear(i, nCount);
}

void CZelObArray::Delete(int i, int nCount) {
  if (i < 0 || nCount <= 0 || i >= m_nSize) return;
  Clear(i, nCount);
  if (i + nCount < m_nSize) Move(i, i + nCount, m_nSize - (i + nCount));
}

void CZelObArray::Shrink(int i) {
  if (i == -1) {
    Shrink();
    return;
  }
  if (!IsValidIndex(i) || !m_pData[i]) return;
  m_pData[i]->Shrink();
  if (m_pData[i]->IsEmpty()) Clear(i, 1);
}

void CZelObArray::ShrinkArrayOfArrays() {
  for (int i = 0; i < m_nSize; ++i) Shrink(i);
  Shrink();
}
