#include "eval/ExternFunc.h"

#include "eval/FuncNames.h"
#include "platform/Resources.h"
#include "platform/TextServices.h"

constinit TExternFunc* TExternFunc::m_pFirstFunc = nullptr;

namespace {

// The resource generation the local names were loaded for, plus one (0: never).
constinit unsigned s_nNamesGeneration = 0;

}  // namespace

TExternFunc::TExternFunc(unsigned nResId, const char16_t* pwszName)
    : m_nResId(nResId), m_pwszName(pwszName) {
  if (nResId != 0) m_bFlags |= kFlagLocalName;
  m_pNextFunc = m_pFirstFunc;
  m_pFirstFunc = this;
}

TExternFunc::TExternFunc(const char16_t* pwszLocalName, const char16_t* pwszName)
    : m_nResId(0), m_pwszName(pwszName) {
  SetLocalName(pwszLocalName);
  m_pNextFunc = m_pFirstFunc;
  m_pFirstFunc = this;
}

TExternFunc::~TExternFunc() {
  for (TExternFunc** ppLink = &m_pFirstFunc; *ppLink != nullptr; ppLink = &(*ppLink)->m_pNextFunc) {
    if (*ppLink == this) {
      *ppLink = m_pNextFunc;
      break;
    }
  }
}

void TExternFunc::Evaluate(TValue* pArgs, int nArgs, CFormulaCell* /*pCell*/) {
  Evaluate(pArgs, nArgs);
}

void TExternFunc::SetLocalName(const char16_t* pwszLocalName) {
  m_sLocalName.clear();
  m_bFlags &= ~kFlagLocalName;
  if (pwszLocalName == nullptr || *pwszLocalName == 0) return;
  m_sLocalName = pwszLocalName;
  for (char16_t& c : m_sLocalName) c = ToUpperChar(c);
  m_bFlags |= kFlagLocalName;
}

const char16_t* TExternFunc::GetLocalName() const {
  return m_sLocalName.empty() ? m_pwszName : m_sLocalName.c_str();
}

const char16_t* TExternFunc::GetName(int nParseType) const {
  return IsEnglishParseType(nParseType) ? m_pwszName : GetLocalName();
}

void TExternFunc::_CLateInit::OnInit() {
  if (s_nNamesGeneration == GetResourceGeneration() + 1) return;
  s_nNamesGeneration = GetResourceGeneration() + 1;
  for (TExternFunc* pFunc = m_pFirstFunc; pFunc != nullptr; pFunc = pFunc->m_pNextFunc) {
    if (pFunc->m_nResId != 0) pFunc->SetLocalName(LoadResourceString(pFunc->m_nResId));
  }
}

TExternFunc* TExternFunc::GetFirstFunc() {
  _CLateInit::OnInit();
  return m_pFirstFunc;
}

TExternFunc* TExternFunc::MatchFunc(const char16_t* pwszText, int nParseType, int* pnLength) {
  if (pwszText == nullptr) return nullptr;
  for (TExternFunc* pFunc = GetFirstFunc(); pFunc != nullptr; pFunc = pFunc->m_pNextFunc) {
    const int nLen = MatchFuncNamePrefix(pwszText, pFunc->GetName(nParseType));
    if (nLen <= 0 || FindCallParen(pwszText + nLen) == nullptr) continue;
    if (pnLength != nullptr) *pnLength = nLen;
    return pFunc;
  }
  return nullptr;
}

TExternFunc* TExternFunc::FindFunc(const char16_t* pwszName, int nLength, int nParseType) {
  if (pwszName == nullptr || nLength <= 0) return nullptr;
  for (TExternFunc* pFunc = GetFirstFunc(); pFunc != nullptr; pFunc = pFunc->m_pNextFunc) {
    if (EqualsFuncName(pwszName, nLength, pFunc->GetName(nParseType))) return pFunc;
  }
  return nullptr;
}
