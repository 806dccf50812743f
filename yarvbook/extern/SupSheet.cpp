#include "extern/SupSheet.h"

#include <new>

#include "base/WideString.h"
#include "base/ZelException.h"

CZelObject* CSupSheet::Clone() const { return new CSupSheet(m_sName.c_str()); }

void CSupSheet::Copy(const CZelObject* pSrc) {
  SetSheetNameWithException(static_cast<const CSupSheet*>(pSrc)->m_sName.c_str());
}

int CSupSheet::Compare(const CZelObject* pOther) const {
  return strcmpiW(m_sName.c_str(), static_cast<const CSupSheet*>(pOther)->m_sName.c_str());
}

bool CSupSheet::SetSheetName(const char16_t* pwszName) {
  try {
    m_sName = pwszName != nullptr ? pwszName : u"";
  } catch (const std::bad_alloc&) {
    return false;
  }
  return true;
}

void CSupSheet::SetSheetNameWithException(const char16_t* pwszName) {
  if (!SetSheetName(pwszName)) CZelException::ThrowMemory();
}
