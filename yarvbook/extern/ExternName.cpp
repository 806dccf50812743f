#include "extern/ExternName.h"

#include "base/WideString.h"
#include "book/Name.h"

CExternName::CExternName() = default;

CExternName::CExternName(const char16_t* pwszName, int nLength, unsigned short wFlags)
    : m_wFlags(wFlags) {
  if (pwszName == nullptr) return;
  if (nLength < 0) {
    m_sName = pwszName;
  } else {
    m_sName.assign(pwszName, nLength);
  }
}

CExternName::~CExternName() = default;

CZelObject* CExternName::Clone() const {
  auto pClone = std::make_unique<CExternName>();
  pClone->Copy(this);
  return pClone.release();
}

void CExternName::Copy(const CZelObject* pSrc) {
  const auto* pName = static_cast<const CExternName*>(pSrc);
  if (pName == this) return;
  m_sName = pName->m_sName;
  m_wFlags = pName->m_wFlags;
  m_pDefinition.reset(pName->m_pDefinition != nullptr
                          ? static_cast<CName*>(pName->m_pDefinition->Clone())
                          : nullptr);
}

int CExternName::Compare(const CZelObject* pOther) const {
  const auto* pName = static_cast<const CExternName*>(pOther);
  if (!IsNamed(pName->m_sName.c_str(), pName->GetNameLength())) return 1;
  return m_wFlags == pName->m_wFlags ? 0 : 1;
}

bool CExternName::IsNamed(const char16_t* pwszName, int nLength) const {
  if (pwszName == nullptr) return m_sName.empty();
  if (nLength < 0) nLength = strlenW(pwszName);
  return nLength == GetNameLength() && EqualsNoCaseW(pwszName, nLength, m_sName.c_str());
}

void CExternName::SetDefinition(std::unique_ptr<CName> pDefinition) {
  m_pDefinition = std::move(pDefinition);
}
