#include "recalc/RefIndex.h"

#include <algorithm>

void CRefIndex::Clear() {
  std::vector<std::uint32_t>().swap(m_NodeStart);
  m_Ids.Release();
  m_Cols.Release();
  m_nLevelMask = 0;
}

void CRefIndex::Build(const std::vector<TEntry>& entries) {
  StartCount();
  for (const TEntry& e : entries) Count(e.wRow1, e.wRow2);
  StartPlace();
  for (const TEntry& e : entries) Place(e.nId, e.wRow1, e.wRow2, e.cCol1, e.cCol2);
  EndPlace();
}

void CRefIndex::StartCount() { Clear(); }

void CRefIndex::AllocateNodes() { m_NodeStart.assign(2 * kLeaves + 1, 0); }

void CRefIndex::StartPlace() {
  if (m_NodeStart.empty()) return;
  // Counts to starts: node k's entries begin behind those of the nodes before it.
  // Node k's count is at k + 1, and the nodes of level l are 2^l..2^(l+1)-1.
  std::uint32_t nSum = 0;
  for (int nLevel = 0; nLevel < kLevels; nLevel++) {
    const int nFirst = 1 << nLevel;
    const std::uint32_t nBefore = nSum;
    for (int k = nFirst; k < 2 * nFirst; k++) {
      const std::uint32_t nCount = m_NodeStart[static_cast<size_t>(k) + 1];
      m_NodeStart[static_cast<size_t>(k) + 1] = nSum;
      nSum += nCount;
    }
    if (nSum != nBefore) m_nLevelMask |= 1u << nLevel;
  }
  // Now node k's start is at k + 1; move it to k.
  std::copy(m_NodeStart.begin() + 1, m_NodeStart.end(), m_NodeStart.begin());
  m_NodeStart[2 * kLeaves] = nSum;
  m_Ids.SetSize(nSum);  // every place is filled by Place
  m_Cols.SetSize(nSum);
}

void CRefIndex::EndPlace() {
  if (m_NodeStart.empty()) return;
  // Each node's place has moved on to the start of the next node: shift back.
  std::copy_backward(m_NodeStart.begin(), m_NodeStart.end() - 2, m_NodeStart.end() - 1);
  m_NodeStart[0] = 0;
}
