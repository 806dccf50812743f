#include "book/BookBase.h"

#include <cstring>
#include <new>
#include <utility>

#include "base/WideString.h"
#include "base/ZelException.h"
#include "book/CellRecord.h"
#include "book/SheetBase.h"
#include "recalc/RecalcChain.h"
#include "platform/ResourceIds.h"
#include "platform/Resources.h"

namespace {

// Equal ignoring letter case, character by character: sheet names and titles clash
// when they differ in case only, not when a locale's collation finds them alike.
bool EqualNoCase(const char16_t* pA, const char16_t* pB) { return strcmpiW(pA, pB) == 0; }

// The pattern with its first "%d" replaced by nIndex.
std::u16string FormatPattern(const char16_t* pwszPattern, int nIndex) {
  std::u16string sResult(pwszPattern);
  std::string sDigits = std::to_string(nIndex);
  std::u16string sIndex(sDigits.begin(), sDigits.end());
  const size_t nAt = sResult.find(u"%d");
  if (nAt == std::u16string::npos)
    sResult += sIndex;
  else
    sResult.replace(nAt, 2, sIndex);
  return sResult;
}

}  // namespace

constinit CBookBase* CBookBase::m_pFirst = nullptr;
constinit bool CBookBase::m_bBooksOrderInvalid = false;

CBookBase::CBookBase() { InitDefValFormats(); }

int CBookBase::GetCellValFormatIndex(unsigned short wCellFormat) {
  if (wCellFormat == CCell::kDefaultFormat) return 0;
  if (wCellFormat == 0) return CCell::kDefaultFormat;
  return wCellFormat;
}

unsigned short CBookBase::GetCellFormatForValFormat(int nValFormat) {
  if (nValFormat <= 0 || nValFormat > 0xFFFF) return CCell::kDefaultFormat;
  if (nValFormat == CCell::kDefaultFormat) return 0;
  return static_cast<unsigned short>(nValFormat);
}

CBookBase::~CBookBase() {
  if (FindBook(this)) RemoveFromList();
}

void CBookBase::AddToList() {
  if (FindBook(this)) return;
  m_pNext = m_pFirst;
  m_pFirst = this;
  InvalidateBooksOrder();
}

void CBookBase::RemoveFromList() {
  for (CBookBase** ppLink = &m_pFirst; *ppLink; ppLink = &(*ppLink)->m_pNext) {
    if (*ppLink == this) {
      *ppLink = m_pNext;
      m_pNext = nullptr;
      InvalidateBooksOrder();
      return;
    }
  }
}

CBookBase* CBookBase::FindBook(const CBookBase* pBook) {
  for (CBookBase* p = m_pFirst; p; p = p->m_pNext)
    if (p == pBook) return p;
  return nullptr;
}

CBookBase* CBookBase::FindBook(const char16_t* pwszTitle) {
  for (CBookBase* p = m_pFirst; p; p = p->m_pNext)
    if (p->MatchTitle(pwszTitle)) return p;
  return nullptr;
}

bool CBookBase::MatchTitle(const char16_t* pwszTitle) const {
  if (!pwszTitle || !*pwszTitle) return false;
  return EqualNoCase(m_sTitle.c_str(), pwszTitle) || EqualNoCase(m_sPathName.c_str(), pwszTitle);
}

void CBookBase::UpdateBooksOrder() {
  // Books refer to each other only through supporting books; without those every
  // order of the list is fit for recalculation.
  m_bBooksOrderInvalid = false;
}

void CBookBase::CheckBooksOrder() {
  if (m_bBooksOrderInvalid) UpdateBooksOrder();
}

void CBookBase::SetPathName(const char16_t* pwszPath) { m_sPathName = pwszPath ? pwszPath : u""; }

void CBookBase::SetTitle(const char16_t* pwszTitle) { m_sTitle = pwszTitle ? pwszTitle : u""; }

void CBookBase::ChangeLongTitle(const char16_t* pwszLongTitle) {
  m_sLongTitle = pwszLongTitle ? pwszLongTitle : u"";
}

const char16_t* CBookBase::GetDefaultPathName() const {
  return m_sPathName.empty() ? m_sTitle.c_str() : m_sPathName.c_str();
}

CSheetBase* CBookBase::SheetBase(int nIndex) const {
  return IsValidIndex(nIndex) ? static_cast<CSheetBase*>(GetAt(nIndex)) : nullptr;
}

int CBookBase::AddSheet(std::unique_ptr<CSheetBase> pSheet) {
  const int nIndex = m_nSize;
  pSheet->SetBook(this);
  pSheet->SetSheetIndex(nIndex);
  SetAtGrow(nIndex, pSheet.get());
  pSheet.release();
  return nIndex;
}

CSheetBase* CBookBase::NewSheet(const char16_t* pwszName) {
  auto pSheet = std::make_unique<CSheetBase>(this, m_nSize);
  const int nResult = pSheet->SetSheetName(pwszName ? pwszName : GetNewSheetName(), false);
  if (nResult == CSheetBase::kErrMemory) CZelException::ThrowMemory();
  if (nResult != CSheetBase::kOk) return nullptr;
  CSheetBase* pResult = pSheet.get();
  AddSheet(std::move(pSheet));
  return pResult;
}

CSheetBase* CBookBase::FindSheetBase(const char16_t* pwszName, bool bIgnoreCase) const {
  if (!pwszName) return nullptr;
  for (int i = 0; i < m_nSize; ++i) {
    CSheetBase* pSheet = SheetBase(i);
    if (!pSheet) continue;
    if (bIgnoreCase ? EqualNoCase(pSheet->GetSheetName(), pwszName) : *pSheet == pwszName)
      return pSheet;
  }
  return nullptr;
}

int CBookBase::GetNextSheetIndex() {
  if (m_nNextSheetIndex > 256) m_nNextSheetIndex = 1;
  return m_nNextSheetIndex++;
}

const char16_t* CBookBase::GetNewSheetName() {
  const char16_t* pwszPattern = LoadResourceString(IDS_NEW_SHEET_NAME);
  if (!pwszPattern) pwszPattern = u"Sheet%d";
  // The counter cycles through 256 values: after as many tries every one is taken,
  // and the last name is handed out (SetSheetName will then refuse it).
  for (int nTry = 0; nTry < 256; ++nTry) {
    m_sNewSheetName = FormatPattern(pwszPattern, GetNextSheetIndex());
    if (!FindSheetBase(m_sNewSheetName.c_str(), true)) break;
  }
  return m_sNewSheetName.c_str();
}

const char16_t* CBookBase::MakeSheetName() {
  const char16_t* pwszName = GetNewSheetName();
  const size_t nLength = std::min<size_t>(m_sNewSheetName.size(), kMaxSheetNameBuffer - 1);
  auto pBuffer = std::make_unique<char16_t[]>(nLength + 1);
  std::memcpy(pBuffer.get(), pwszName, nLength * sizeof(char16_t));
  pBuffer[nLength] = 0;
  m_SheetNames.push_back(std::move(pBuffer));
  return m_SheetNames.back().get();
}

void CBookBase::FixSheetNumbers() {
  for (int i = 0; i < m_nSize; ++i)
    if (CSheetBase* pSheet = SheetBase(i)) pSheet->SetSheetIndex(i);
}

void CBookBase::SetModified() {
  if (m_bInited) m_cSettings |= kSetModified;
}

void CBookBase::InvalidateFormulasOrder(int nFull) {
  m_cRecalcState |= kStOrderInvalid;
  if (nFull) m_cRecalcState |= kStOrderInvalidFull;
  SetNeedsRecalc();
}

void CBookBase::SetAutomaticRecalc(int nOn) {
  OnSetAutomaticRecalc(nOn);
  SetSetting(kSetAutomatic, nOn != 0);
  CheckRecalc(1);
}

void CBookBase::SetMinimalRecalc(int nOn) {
  if (GetMinimalRecalc() == (nOn != 0)) return;
  SetSetting(kSetMinimal, nOn != 0);
  if (nOn) {
    if (GetNeedsRecalc()) SetNeedsRecalcAllFormulas();
    InvalidateFormulasOrder(1);
  }
}

void CBookBase::SetIteration(int nOn, unsigned nMaxIterations, double rMaxChange) {
  SetSetting(kSetIteration, nOn != 0);
  m_nMaxIterations = nMaxIterations;
  m_rMaxChange = rMaxChange;
}

void CBookBase::SetCircularRefs(bool b) {
  m_cRecalcState = b ? static_cast<unsigned char>(m_cRecalcState | kStCircular)
                     : static_cast<unsigned char>(m_cRecalcState & ~kStCircular);
}

int CBookBase::CheckRecalc(int nAutomaticOnly) {
  int nResult = 0;
  if (nAutomaticOnly && !GetAutomaticRecalc()) {
    m_cRecalcState &= static_cast<unsigned char>(~kStNeedsRecalc);
    return 0;
  }
  if (GetNeedsRecalc()) nResult = Recalc();
  m_cRecalcState &= static_cast<unsigned char>(~kStNeedsRecalc);
  return nResult;
}

int CBookBase::Recalc() {
  if (IsRecalculating()) return 0;
  StartRecalc();
  const int nResult = CheckFormulasOrder();
  if (nResult == 0 && m_pFormulaOrder) {
    RecalcAllFormulas();
  } else if (nResult == 0) {
    // Nothing to compute: the changes are seen.
    for (int s = 0; s < Sheets(); s++)
      if (CSheetBase* pSheet = SheetBase(s)) pSheet->ChangedRegion().Clear();
    m_cRecalcState &= static_cast<unsigned char>(~kStRecalcAll);
  }
  RecalcObjects();
  EndRecalc();
  m_cRecalcState &= static_cast<unsigned char>(~kStNeedsRecalc);
  return nResult;
}

void CBookBase::StartRecalc() {
  CheckBooksOrder();
  m_cRecalcState |= kStRecalculating;
}

void CBookBase::EndRecalc() {
  OnEndRecalc();
  // Told once per rebuild that found cycles, after their cells have their values.
  if (m_bNotifyCircular) {
    m_bNotifyCircular = false;
    NotifyCircularRefs();
  }
  m_Names.ResetChanged();
  // Books after this one in the list that read it recompute next; the list keeps
  // dependants behind the books they read.
  for (CBookBase* pBook = m_pNext; pBook; pBook = pBook->m_pNext)
    if (pBook->RefersTo(this)) pBook->SetNeedsRecalc();
  m_cRecalcState &= static_cast<unsigned char>(~kStRecalculating);
}

int CBookBase::CheckFormulasOrder() {
  if (!(m_cRecalcState & (kStOrderInvalid | kStOrderInvalidFull))) return 0;
  return UpdateFormulasOrder();
}
