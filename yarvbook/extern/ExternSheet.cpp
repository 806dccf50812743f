#include "extern/ExternSheet.h"

CZelObject* CExternSheet::Clone() const {
  return new CExternSheet(m_nSupBook, m_nFirstSheet, m_nLastSheet);
}

void CExternSheet::Copy(const CZelObject* pSrc) {
  const auto* pSheet = static_cast<const CExternSheet*>(pSrc);
  Set(pSheet->m_nSupBook, pSheet->m_nFirstSheet, pSheet->m_nLastSheet);
}

int CExternSheet::Compare(const CZelObject* pOther) const {
  const auto* pSheet = static_cast<const CExternSheet*>(pOther);
  if (m_nSupBook != pSheet->m_nSupBook) return m_nSupBook < pSheet->m_nSupBook ? -1 : 1;
  if (m_nFirstSheet != pSheet->m_nFirstSheet) return m_nFirstSheet < pSheet->m_nFirstSheet ? -1 : 1;
  if (m_nLastSheet != pSheet->m_nLastSheet) return m_nLastSheet < pSheet->m_nLastSheet ? -1 : 1;
  return 0;
}
