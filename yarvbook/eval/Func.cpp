#include "eval/Func.h"

#include <cassert>
#include <vector>

#include "base/WideString.h"
#include "eval/FuncNames.h"
#include "eval/FuncPending.h"
#include "platform/Resources.h"
#include "platform/TextServices.h"

// Constant-initialised: family files register from their static initialisers, in
// whatever order the translation units start.
constinit TFunc* TFunc::m_pFunc[kNumFuncSlots] = {};
constinit TFunc* TFunc::m_pFirstFunc = nullptr;
constinit int TFunc::m_nDuplicates = 0;

namespace {

constinit bool s_bRegistryComplete = false;
// The resource generation the local names were loaded for, plus one (0: never).
constinit unsigned s_nNamesGeneration = 0;
// Counts changes of the list of functions and of their local names; the name
// indexes below are rebuilt when it has moved since they were built.
constinit unsigned s_nRegistryGeneration = 1;

// FindFunc's lookup: an open-addressed hash over the names of one kind (English or
// local), built from the list so that the first entry with a name wins, as a walk
// of the list would find it.
struct TNameIndex {
  std::vector<TFunc*> slots;  // a power of two in size; null: free
  unsigned nGeneration = 0;   // s_nRegistryGeneration when built; 0: never
};
constinit TNameIndex s_aNameIndex[2];  // local, English

// FNV-1a over the upper-cased units, so that input text and stored (upper-case)
// names hash alike.
unsigned HashFuncName(const char16_t* pwsz, int nLength) {
  unsigned h = 2166136261u;
  for (int i = 0; i < nLength; ++i) h = (h ^ ToUpperChar(pwsz[i])) * 16777619u;
  return h;
}

int NameLength(const char16_t* pwsz) {
  int n = 0;
  while (pwsz[n] != 0) ++n;
  return n;
}

TFunc* FindInIndex(const TNameIndex& index, const char16_t* pwszName, int nLength, int nParseType) {
  const size_t nMask = index.slots.size() - 1;
  for (size_t j = HashFuncName(pwszName, nLength) & nMask;; j = (j + 1) & nMask) {
    TFunc* pFunc = index.slots[j];
    if (pFunc == nullptr) return nullptr;
    if (EqualsFuncName(pwszName, nLength, pFunc->GetName(nParseType))) return pFunc;
  }
}

void BuildIndex(TNameIndex& index, int nParseType) {
  size_t nCount = 0;
  for (TFunc* pFunc = TFunc::m_pFirstFunc; pFunc != nullptr; pFunc = pFunc->GetNextFunc()) ++nCount;
  size_t nSize = 16;
  while (nSize < 2 * nCount) nSize *= 2;
  index.slots.assign(nSize, nullptr);
  const size_t nMask = nSize - 1;
  for (TFunc* pFunc = TFunc::m_pFirstFunc; pFunc != nullptr; pFunc = pFunc->GetNextFunc()) {
    if (pFunc->GetFuncNumber() == kFuncExtern) continue;
    const char16_t* pwszName = pFunc->GetName(nParseType);
    const int nLength = NameLength(pwszName);
    if (nLength == 0 || FindInIndex(index, pwszName, nLength, nParseType) != nullptr) continue;
    size_t j = HashFuncName(pwszName, nLength) & nMask;
    while (index.slots[j] != nullptr) j = (j + 1) & nMask;
    index.slots[j] = pFunc;
  }
  index.nGeneration = s_nRegistryGeneration;
}

}  // namespace

bool IsFuncNameChar(char16_t c) {
  return c == u'_' || c == u'.' || IsLetterChar(c) || IsDigitChar(c);
}

int MatchFuncNamePrefix(const char16_t* pwszText, const char16_t* pwszName) {
  int i = 0;
  for (; pwszName[i] != 0; ++i) {
    if (pwszText[i] == 0 || ToUpperChar(pwszText[i]) != pwszName[i]) return -1;
  }
  return i;
}

bool EqualsFuncName(const char16_t* pwszText, int nLength, const char16_t* pwszName) {
  int i = 0;
  for (; i < nLength; ++i) {
    if (pwszName[i] == 0 || ToUpperChar(pwszText[i]) != pwszName[i]) return false;
  }
  return pwszName[i] == 0;
}

const char16_t* FindCallParen(const char16_t* pwsz) {
  while (*pwsz != 0 && IsSpaceChar(*pwsz)) ++pwsz;
  return *pwsz == u'(' ? pwsz : nullptr;
}

TFunc::TFunc(unsigned nResId, const char16_t* pwszName, int bVarArgs, unsigned short nFunc,
             unsigned char nMinArgs, unsigned char nMaxArgs)
    : m_nResId(nResId),
      m_pwszName(pwszName),
      m_nFunc(nFunc),
      m_nMinArgs(nMinArgs),
      m_nMaxArgs(nMaxArgs) {
  if (bVarArgs) m_bFlags |= kFlagVarArgs;
  if (nResId != 0) m_bFlags |= kFlagLocalName;
  [[maybe_unused]] const TFuncInfo* pInfo = GetFuncInfo(nFunc);
  assert(pInfo != nullptr && strqcmpW(pInfo->pwszName, pwszName) == 0 &&
         pInfo->nMinArgs == nMinArgs && pInfo->nMaxArgs == nMaxArgs &&
         pInfo->IsVarArgs() == (bVarArgs != 0) && pInfo->GetResourceId() == nResId &&
         "a function body registers with its row of the function table");
  ApplyTableRow();
  Register();
}

TFunc::TFunc(const TFuncInfo& info)
    : m_nResId(info.GetResourceId()),
      m_pwszName(info.pwszName),
      m_nFunc(info.nFunc),
      m_nMinArgs(info.nMinArgs),
      m_nMaxArgs(info.nMaxArgs) {
  m_bFlags = kFlagPending;
  if (info.IsVarArgs()) m_bFlags |= kFlagVarArgs;
  if (m_nResId != 0) m_bFlags |= kFlagLocalName;
  ApplyTableRow();
  Register();
}

TFunc::~TFunc() { Unregister(); }

void TFunc::ApplyTableRow() {
  const TFuncInfo* pInfo = GetFuncInfo(m_nFunc);
  if (pInfo == nullptr) return;
  m_wArgsClass = pInfo->wArgsClass;
  SetResultClass(static_cast<ETokenClass>(pInfo->nResultClass));
  if (pInfo->bVolatile) m_bFlags |= kFlagVolatile;
  m_nValFormat = pInfo->nValFormat;
}

void TFunc::Register() {
  if (m_nFunc < kNumFuncSlots) {
    TFunc* pOld = m_pFunc[m_nFunc];
    if (pOld != nullptr) {
      if (IsPending()) return;  // a body was first: nothing to hold the place for
      if (!pOld->IsPending()) {
        ++m_nDuplicates;
        return;
      }
      pOld->Unregister();
    }
    m_pFunc[m_nFunc] = this;
  }
  m_pNextFunc = m_pFirstFunc;
  m_pFirstFunc = this;
  ++s_nRegistryGeneration;
}

// The list is walked to find the predecessor; it has at most one entry per number,
// and this runs only when a pending entry is displaced or at process exit.
void TFunc::Unregister() {
  if (m_nFunc < kNumFuncSlots && m_pFunc[m_nFunc] == this) m_pFunc[m_nFunc] = nullptr;
  for (TFunc** ppLink = &m_pFirstFunc; *ppLink != nullptr; ppLink = &(*ppLink)->m_pNextFunc) {
    if (*ppLink == this) {
      *ppLink = m_pNextFunc;
      break;
    }
  }
  m_pNextFunc = nullptr;
  ++s_nRegistryGeneration;
}

void TFunc::Evaluate(TValue* pArgs, CFormulaCell* /*pCell*/) { Evaluate(pArgs); }

void TFunc::Evaluate(TValue* pArgs, int /*nArgs*/) { Evaluate(pArgs); }

void TFunc::Evaluate(TValue* pArgs, int nArgs, CFormulaCell* /*pCell*/) { Evaluate(pArgs, nArgs); }

char16_t* TFunc::Unparse(char16_t* pDst, int /*nArgs*/, int nParseType) const {
  for (const char16_t* pwsz = GetName(nParseType); *pwsz != 0; ++pwsz) *pDst++ = *pwsz;
  return pDst;
}

const char16_t* TFunc::GetLocalName() const {
  return m_sLocalName.empty() ? m_pwszName : m_sLocalName.c_str();
}

const char16_t* TFunc::GetName(int nParseType) const {
  return IsEnglishParseType(nParseType) ? m_pwszName : GetLocalName();
}

void TFunc::InitArgsClass(ETokenClass cls) {
  unsigned nWord = 0;
  for (int i = 0; i < 8; ++i) nWord |= static_cast<unsigned>(cls & 3) << (2 * i);
  m_wArgsClass = static_cast<unsigned short>(nWord);
}

void TFunc::SetArgClass(int nArg, ETokenClass cls) {
  if (nArg < 0 || nArg >= 7) return;
  const int nShift = 2 * nArg;
  m_wArgsClass = static_cast<unsigned short>((m_wArgsClass & ~(3u << nShift)) |
                                             (static_cast<unsigned>(cls & 3) << nShift));
}

TFunc::ETokenClass TFunc::GetArgClass(int nArg) const {
  const int nShift = (nArg >= 0 && nArg < 7) ? 2 * nArg : 14;
  return static_cast<ETokenClass>((m_wArgsClass >> nShift) & 3);
}

void TFunc::SetArgsClass(ETokenClass c0, ETokenClass c1, ETokenClass c2, ETokenClass c3,
                         ETokenClass c4, ETokenClass c5, ETokenClass c6) {
  const ETokenClass aClasses[] = {c0, c1, c2, c3, c4, c5, c6};
  for (int i = 0; i < 7; ++i) SetArgClass(i, aClasses[i]);
}

void TFunc::SetResultClass(ETokenClass cls) {
  m_bFlags = static_cast<unsigned char>((m_bFlags & ~kFlagResultClass) | (cls & 3));
}

void TFunc::CompleteRegistry() {
  if (!s_bRegistryComplete) {
    s_bRegistryComplete = true;
    for (const TFuncInfo& info : g_FuncTable) {
      if (m_pFunc[info.nFunc] == nullptr) RegisterPendingFunc(info);
    }
  }
  _CLateInit::OnInit();
}

void TFunc::_CLateInit::OnInit() {
  if (s_nNamesGeneration == GetResourceGeneration() + 1) return;
  s_nNamesGeneration = GetResourceGeneration() + 1;
  LoadLocalNames();
}

// An empty (or missing) text leaves the English name to serve in local mode as well
// and clears the local-name flag.
void TFunc::LoadLocalNames() {
  for (TFunc* pFunc = m_pFirstFunc; pFunc != nullptr; pFunc = pFunc->m_pNextFunc) {
    if (pFunc->m_nResId == 0) continue;
    const char16_t* pwszText = LoadResourceString(pFunc->m_nResId);
    if (pwszText == nullptr || *pwszText == 0) {
      pFunc->m_sLocalName.clear();
      pFunc->m_bFlags &= ~kFlagLocalName;
      continue;
    }
    pFunc->m_sLocalName = pwszText;
    for (char16_t& c : pFunc->m_sLocalName) c = ToUpperChar(c);
    pFunc->m_bFlags |= kFlagLocalName;
  }
  ++s_nRegistryGeneration;
}

TFunc* TFunc::GetFunc(unsigned nFunc) {
  CompleteRegistry();
  return nFunc < kNumFuncSlots ? m_pFunc[nFunc] : nullptr;
}

TFunc* TFunc::GetFuncToEvaluate(unsigned nFunc) {
  if (!s_bRegistryComplete) CompleteRegistry();
  return nFunc < kNumFuncSlots ? m_pFunc[nFunc] : nullptr;
}

TFunc* TFunc::GetFirstFunc() {
  CompleteRegistry();
  return m_pFirstFunc;
}

TFunc* TFunc::MatchFunc(const char16_t* pwszText, int nParseType, int* pnLength, bool* pbCall) {
  CompleteRegistry();
  if (pwszText == nullptr) return nullptr;
  for (TFunc* pFunc = m_pFirstFunc; pFunc != nullptr; pFunc = pFunc->m_pNextFunc) {
    if (pFunc->m_nFunc == kFuncExtern) continue;
    const int nLen = MatchFuncNamePrefix(pwszText, pFunc->GetName(nParseType));
    if (nLen <= 0) continue;
    const bool bCall = FindCallParen(pwszText + nLen) != nullptr;
    if (!bCall) {
      const bool bConstant = pFunc->m_nFunc == 34 || pFunc->m_nFunc == 35;  // TRUE, FALSE
      if (!bConstant || IsFuncNameChar(pwszText[nLen])) continue;
    }
    if (pnLength != nullptr) *pnLength = nLen;
    if (pbCall != nullptr) *pbCall = bCall;
    return pFunc;
  }
  return nullptr;
}

TFunc* TFunc::FindFunc(const char16_t* pwszName, int nLength, int nParseType) {
  CompleteRegistry();
  if (pwszName == nullptr || nLength <= 0) return nullptr;
  TNameIndex& index = s_aNameIndex[IsEnglishParseType(nParseType) ? 1 : 0];
  if (index.nGeneration != s_nRegistryGeneration) BuildIndex(index, nParseType);
  return FindInIndex(index, pwszName, nLength, nParseType);
}

int TFunc::GetNumPending() {
  CompleteRegistry();
  int nCount = 0;
  for (const TFunc* pFunc = m_pFirstFunc; pFunc != nullptr; pFunc = pFunc->m_pNextFunc) {
    if (pFunc->IsPending()) ++nCount;
  }
  return nCount;
}
