#include "book/Name.h"

#include <memory>

#include "base/A1Text.h"
#include "base/Cell.h"
#include "base/WideString.h"
#include "base/ZelException.h"
#include "book/BookBase.h"
#include "formula/Formula.h"
#include "formula/FormulaParser.h"
#include "platform/TextServices.h"

const char16_t* const CName::m_BuiltInNames[kNumBuiltInNames] = {
    u"Consolidate_Area", u"Auto_Open",       u"Auto_Close",   u"Extract",        u"Database",
    u"Criteria",         u"Print_Area",      u"Print_Titles", u"Recorder",       u"Data_Form",
    u"Auto_Activate",    u"Auto_Deactivate", u"Sheet_Title",  u"_FilterDatabase"};

const char16_t* const CName::m_pwszUnsupportedBuiltIn = u"UnsupportedBuiltinName";

namespace {

// The private-use blocks that hold the host's extra name characters.
bool IsPrivateNameStart(char16_t c) {
  return (c >= 0xE0BC && c <= 0xEFFF) || (c >= 0xF100 && c <= 0xF66E);
}

}  // namespace

CName::CName(const char16_t* pwszName, int nSheet) : m_nSheet(nSheet) { SetName(pwszName); }

CName::~CName() { delete m_pFormula; }

void CName::Clear() {
  delete m_pFormula;
  m_pFormula = nullptr;
  m_sName.clear();
  m_nSheet = kBookLevel;
  m_bBuiltIn = false;
  m_bChanged = false;
  m_bChangedSinceSave = false;
  m_bEvaluating = false;
}

CZelObject* CName::Clone() const {
  auto pClone = std::make_unique<CName>();
  pClone->Copy(this);
  return pClone.release();
}

void CName::Copy(const CZelObject* pSrc) {
  const auto* pName = static_cast<const CName*>(pSrc);
  if (pName == this) return;
  SetFormula(nullptr, pName->m_pFormula);
  m_sName = pName->m_sName;
  m_nSheet = pName->m_nSheet;
  m_bBuiltIn = pName->m_bBuiltIn;
}

int CName::Compare(const CZelObject* pOther) const {
  const auto* pName = static_cast<const CName*>(pOther);
  if (m_bBuiltIn != pName->m_bBuiltIn || m_nSheet != pName->m_nSheet) return 1;
  if (m_bBuiltIn ? m_sName != pName->m_sName : !(*this == pName->GetName())) return 1;
  if ((m_pFormula == nullptr) != (pName->m_pFormula == nullptr)) return 1;
  if (m_pFormula != nullptr && !(*m_pFormula == *pName->m_pFormula)) return 1;
  return 0;
}

int CName::FindBuiltInCode(const char16_t* pwszName) {
  if (pwszName == nullptr) return -1;
  for (int i = 0; i < kNumBuiltInNames; ++i) {
    if (strqcmpW(m_BuiltInNames[i], pwszName) == 0) return i;
  }
  return -1;
}

const char16_t* CName::GetBuiltInName(int nCode) {
  return nCode >= 0 && nCode < kNumBuiltInNames ? m_BuiltInNames[nCode] : m_pwszUnsupportedBuiltIn;
}

void CName::SetName(const char16_t* pwszName) {
  const int nCode = FindBuiltInCode(pwszName);
  m_bBuiltIn = nCode >= 0;
  if (m_bBuiltIn) {
    m_sName.assign(1, static_cast<char16_t>(nCode));
  } else {
    m_sName = pwszName != nullptr ? pwszName : u"";
  }
}

const char16_t* CName::GetName() const {
  return m_bBuiltIn ? GetBuiltInName(GetBuiltInCode()) : m_sName.c_str();
}

int CName::GetName(char16_t* pBuf, int nMax) const {
  if (pBuf == nullptr || nMax <= 0) return 0;
  const char16_t* pwszName = GetName();
  int i = 0;
  for (; i < nMax - 1 && pwszName[i] != 0; ++i) pBuf[i] = pwszName[i];
  pBuf[i] = 0;
  return i;
}

bool CName::operator==(const char16_t* pwszName) const { return IsNamed(pwszName, -1); }

bool CName::IsNamed(const char16_t* pwszName, int nLength) const {
  if (pwszName == nullptr) return false;
  if (nLength < 0) nLength = strlenW(pwszName);
  return EqualsNoCaseW(pwszName, nLength, GetName());
}

bool CName::ValidName(const char16_t* pwszName) {
  if (pwszName == nullptr || *pwszName == 0) return false;
  TCell cell;
  if (CvtRCNr(pwszName, &cell)) return false;
  const char16_t cFirst = FullToHalfWidthChar(pwszName[0]);
  if (!(IsLetterChar(cFirst) || cFirst == u'_' || cFirst == u'\\' || IsPrivateNameStart(cFirst))) {
    return false;
  }
  for (const char16_t* pwsz = pwszName + 1; *pwsz != 0; ++pwsz) {
    const char16_t c = FullToHalfWidthChar(*pwsz);
    if (!(IsLetterChar(c) || IsDigitChar(c) || c == u'_' || c == u'.' || c == u'\\' || c == u'?')) {
      return false;
    }
  }
  return true;
}

void CName::SetFormula(CBookBase* /*pBook*/, const CFormula* pFormula) {
  CFormula* pCopy = pFormula != nullptr ? pFormula->Copy() : nullptr;
  delete m_pFormula;
  m_pFormula = pCopy;
  SetChanged();
  CBookBase::InvalidateBooksOrder();
}

// A failed parse keeps the old definition: the result code tells the host, and a
// half-typed edit does not destroy what the name meant.
int CName::SetFormula(CBookBase* pBook, CSheetBase* pSheet, const TCell& base,
                      const char16_t* pwszText, int nParseType) {
  int nResult = CFormulaParser::kResultOk;
  if (pwszText == nullptr || *pwszText == 0) {
    delete m_pFormula;
    m_pFormula = nullptr;
  } else {
    try {
      CFormulaParser parser(pBook, pSheet, base, nParseType == 1 || nParseType == 2);
      parser.SetCreateNames(true);
      CFormula* pParsed = nullptr;
      nResult = parser.Parse(pwszText, &pParsed,
                             static_cast<CFormulaBase::EFormulaType>(GetFormulaType()));
      std::unique_ptr<CFormula> pOwned(pParsed);
      if (nResult == CFormulaParser::kResultOk) {
        delete m_pFormula;
        m_pFormula = pOwned.release();
      }
    } catch (const CZelException&) {
      nResult = kResultParseThrew;
    }
  }
  SetChanged();
  CBookBase::InvalidateBooksOrder();
  return nResult;
}
