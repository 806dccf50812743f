#include "book/NameList.h"

#include "book/Name.h"

CName* CNameList::GetName(int nIndex) const {
  return m_Names.IsValidIndex(nIndex - 1) ? static_cast<CName*>(m_Names.GetAt(nIndex - 1))
                                          : nullptr;
}

int CNameList::AddName(CName* pName) { return m_Names.Add(pName) + 1; }

bool CNameList::DeleteName(int nIndex) {
  if (!m_Names.IsValidIndex(nIndex - 1)) return false;
  delete m_Names.GetAt(nIndex - 1);
  m_Names.SetAt(nIndex - 1, nullptr);
  m_Names.RemoveAt(nIndex - 1);
  return true;
}

int CNameList::FindName(const char16_t* pwszName, int nLength, int nSheet) const {
  if (pwszName == nullptr) return 0;
  int nBookLevel = 0;
  for (int i = 0; i < m_Names.GetSize(); ++i) {
    const auto* pName = static_cast<const CName*>(m_Names.GetAt(i));
    if (!pName->IsNamed(pwszName, nLength)) continue;
    if (pName->GetSheet() == nSheet && nSheet != CName::kBookLevel) return i + 1;
    if (pName->GetSheet() == CName::kBookLevel && nBookLevel == 0) nBookLevel = i + 1;
  }
  return nBookLevel;
}

void CNameList::ResetChanged() {
  for (int i = 0; i < m_Names.GetSize(); ++i) static_cast<CName*>(m_Names.GetAt(i))->ResetChanged();
}
