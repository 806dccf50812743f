#include "recalc/ChangedRangesArray.h"

void CChangedRangesArray::Insert(int nIndex, int nCount) {
  assert(nIndex >= 0 && nIndex <= GetSize() && nCount >= 0 && "changed range insert");
  m_Ranges.insert(m_Ranges.begin() + nIndex, static_cast<std::size_t>(nCount), TChangedRange());
}

void CChangedRangesArray::Delete(int nIndex, int nCount) {
  assert(nIndex >= 0 && nCount >= 0 && nIndex + nCount <= GetSize() && "changed range delete");
  m_Ranges.erase(m_Ranges.begin() + nIndex, m_Ranges.begin() + nIndex + nCount);
}
