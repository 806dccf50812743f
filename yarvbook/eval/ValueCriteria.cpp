#include "eval/ValueCriteria.h"

#include <iterator>
#include <string_view>

#include "base/Wildcard.h"
#include "book/BookBase.h"
#include "book/BookIterator.h"
#include "book/CellRecord.h"
#include "book/SheetBase.h"
#include "eval/FormulaEvaluator.h"
#include "format/SingleFormat.h"
#include "format/ValFormat.h"
#include "formula/Formula.h"
#include "platform/ResourceIds.h"
#include "platform/Resources.h"
#include "platform/TextServices.h"

namespace {

// The comparison texts, indexed by operator code 0 to 5.
constexpr const char16_t* kComparisonTexts[] = {u"=", u">", u">=", u"<", u"<=", u"<>"};
static_assert(std::size(kComparisonTexts) == CValueCriteria::opNotEqual + 1,
              "one text per comparison operator");

// Operators as prefixes of a criterion text, longest first so that "<>" is not read
// as "<" followed by the operand ">".
struct TPrefix {
  const char16_t* pwszText;
  int nLength;
  CValueCriteria::EOperator eOp;
};
constexpr TPrefix kPrefixes[] = {
    {u"<>", 2, CValueCriteria::opNotEqual}, {u"<=", 2, CValueCriteria::opLessEqual},
    {u"<", 1, CValueCriteria::opLess},      {u">=", 2, CValueCriteria::opGreaterEqual},
    {u">", 1, CValueCriteria::opGreater},   {u"=", 1, CValueCriteria::opEqual},
};

// Host string ids of the text operators, in the order of codes 6 to 11.
constexpr unsigned kTextOpIds[] = {IDS_CRIT_BEGINS_WITH, IDS_CRIT_NOT_BEGINS_WITH,
                                   IDS_CRIT_ENDS_WITH,   IDS_CRIT_NOT_ENDS_WITH,
                                   IDS_CRIT_CONTAINS,    IDS_CRIT_NOT_CONTAINS};
constexpr int kNumTextOps = CValueCriteria::opNotContains - CValueCriteria::opBeginsWith + 1;
static_assert(std::size(kTextOpIds) == kNumTextOps, "one resource per text operator");

// The loaded names of the text operators and the resource table they came from.
struct TTextOpNames {
  std::u16string names[kNumTextOps];
  unsigned nGeneration = 0;
  bool bLoaded = false;
};
TTextOpNames& TextOpNames() {
  static TTextOpNames s_Names;
  return s_Names;
}

// The cell's displayed text is cut to this many characters for the text operators.
constexpr int kMaxCellText = 32768;

bool IsTextOperator(CValueCriteria::EOperator eOp) {
  return eOp >= CValueCriteria::opBeginsWith && eOp <= CValueCriteria::opNotContains;
}

bool IsEmptyText(const TValue& val) { return val.IsText() && val.TextPtr()[0] == 0; }

bool IsBlank(const TValue* pVal) { return !pVal || pVal->IsEmpty() || IsEmptyText(*pVal); }

bool StartsWith(const char16_t* pwszText, const char16_t* pwszPrefix, int nLength) {
  for (int i = 0; i < nLength; ++i)
    if (pwszText[i] != pwszPrefix[i]) return false;
  return true;
}

}  // namespace

void CValueCriteria::_CLateInit::OnInit() {
  TTextOpNames& names = TextOpNames();
  if (names.bLoaded && names.nGeneration == GetResourceGeneration()) return;
  for (int i = 0; i < kNumTextOps; ++i) {
    const char16_t* pwsz = LoadResourceString(kTextOpIds[i]);
    names.names[i] = pwsz ? pwsz : u"";
  }
  names.nGeneration = GetResourceGeneration();
  names.bLoaded = true;
}

const char16_t* CValueCriteria::GetOperatorText(EOperator eOp) {
  if (eOp >= opEqual && eOp <= opNotEqual) return kComparisonTexts[eOp];
  if (!IsTextOperator(eOp)) return nullptr;
  _CLateInit::OnInit();
  return TextOpNames().names[eOp - opBeginsWith].c_str();
}

// ---- Construction -------------------------------------------------------------------

CValueCriteria::CValueCriteria() = default;

CValueCriteria::CValueCriteria(const TValue* pOperand, int nFormat, EOperator eOp,
                               CSheetBase* pSheet) {
  InitFromValue(pOperand, nFormat, eOp, pSheet);
}

CValueCriteria::CValueCriteria(const char16_t* pwszText, CSheetBase* pSheet, EOperator eOp) {
  TValue text;
  text.SetValue(pwszText);
  InitFromValue(&text, -1, eOp, pSheet);
}

CValueCriteria::CValueCriteria(const char16_t* pwszText, CSheetBase* pSheet,
                               const char16_t* pwszOperator) {
  EOperator eOp = opFromText;
  if (pwszOperator) {
    for (int i = opEqual; i <= opNotContains && eOp == opFromText; ++i) {
      const char16_t* pwszName = GetOperatorText(static_cast<EOperator>(i));
      if (pwszName && std::u16string_view(pwszName) == std::u16string_view(pwszOperator))
        eOp = static_cast<EOperator>(i);
    }
  }
  TValue text;
  text.SetValue(pwszText);
  InitFromValue(&text, -1, eOp, pSheet);
}

CValueCriteria::CValueCriteria(const CFormula* pFormula, EOperator eOp)
    : m_eOperator(eOp), m_pFormula(pFormula ? std::make_unique<CFormula>(*pFormula) : nullptr) {}

CValueCriteria::CValueCriteria(const CValueCriteria& other) : CZelObject() { *this = other; }

CValueCriteria& CValueCriteria::operator=(const CValueCriteria& other) {
  if (this == &other) return *this;
  m_eOperator = other.m_eOperator;
  m_Operand = other.m_Operand;
  m_nValFormat = other.m_nValFormat;
  m_bFormatClass = other.m_bFormatClass;
  m_pFormula = other.m_pFormula ? std::make_unique<CFormula>(*other.m_pFormula) : nullptr;
  return *this;
}

CValueCriteria::~CValueCriteria() = default;

void CValueCriteria::Clear() {
  m_eOperator = opAlways;
  m_Operand.Clear();
  m_nValFormat = -1;
  m_bFormatClass = 0;
  m_pFormula.reset();
}

CValueCriteria* CValueCriteria::Clone() const { return new CValueCriteria(*this); }

void CValueCriteria::Copy(const CZelObject* pSrc) {
  *this = *static_cast<const CValueCriteria*>(pSrc);
}

int CValueCriteria::Compare(const CZelObject* pOther) const {
  const auto* p = static_cast<const CValueCriteria*>(pOther);
  if (m_eOperator != p->m_eOperator || m_nValFormat != p->m_nValFormat) return 1;
  if (m_Operand.CompareExact(p->m_Operand) != 0) return 1;
  if (!m_pFormula != !p->m_pFormula) return 1;
  return m_pFormula && !(*m_pFormula == *p->m_pFormula) ? 1 : 0;
}

void CValueCriteria::InitFromValue(const TValue* pOperand, int nFormat, EOperator eOp,
                                   CSheetBase* pSheet) {
  m_Operand.Clear();
  m_nValFormat = -1;
  m_bFormatClass = 0;
  const bool bFromText = eOp == opFromText;
  if (bFromText) eOp = opEqual;
  if (IsBlank(pOperand)) {
    // The operand of "is blank" and "is not blank" is Empty: a blank value then
    // meets the one and not the other.
    if (eOp == opEqual) eOp = opBlank;
    if (eOp == opNotEqual) eOp = opNotBlank;
  }
  m_eOperator = eOp;
  if (eOp == opBlank || eOp == opNotBlank || eOp == opAlways || !pOperand) return;

  if (pOperand->IsReal()) {
    const CBookBase* pBook = pSheet ? pSheet->GetBook() : nullptr;
    const CValFormat* pFormat =
        IsTextOperator(eOp) && pBook && nFormat >= 0 ? pBook->GetValFormat(nFormat) : nullptr;
    if (!pFormat) {
      m_Operand = *pOperand;
      return;
    }
    double r = 0;
    pOperand->GetValue(r);
    pFormat->Format(r);
    m_Operand.SetValue(CSingleFormat::m_Buf);
    m_nValFormat = nFormat;
    m_bFormatClass = static_cast<unsigned char>(pFormat->GetType());
    return;
  }
  std::u16string text;
  pOperand->GetValue(text);
  if (static_cast<int>(text.size()) > kMaxOperandText) text.resize(kMaxOperandText);
  if (IsTextOperator(eOp)) {
    m_Operand.SetValue(text.c_str(), static_cast<int>(text.size()));
    return;
  }
  // Only a criterion that was given as text parses its operator from it.
  InitFromText(text.c_str(), bFromText ? nullptr : pSheet, bFromText);
  if (!bFromText) m_eOperator = eOp;
}

void CValueCriteria::InitFromText(const char16_t* pwszText, CSheetBase* pSheet,
                                  bool bParseOperator) {
  const char16_t* pwsz = pwszText ? pwszText : u"";
  if (bParseOperator) {
    m_eOperator = opEqual;
    for (const TPrefix& prefix : kPrefixes) {
      if (StartsWith(pwsz, prefix.pwszText, prefix.nLength)) {
        m_eOperator = prefix.eOp;
        pwsz += prefix.nLength;
        break;
      }
    }
  }
  m_Operand.Clear();
  m_nValFormat = -1;
  m_bFormatClass = 0;
  if (*pwsz != 0 && m_Operand.StringToReal(pwsz) == 1) {
    // A sheet's filter matches what the user sees: "1.50" is the number only where a
    // format of the book shows it so.
    if (!(pSheet && m_eOperator == opEqual && m_Operand.IsReal() && !InitValFormat(pwsz, pSheet)))
      return;
  }
  m_Operand.SetValue(pwsz);
}

bool CValueCriteria::InitValFormat(const char16_t* pwszText, CSheetBase* pSheet) {
  const CBookBase* pBook = pSheet ? pSheet->GetBook() : nullptr;
  if (!pBook || !m_Operand.IsReal() || !pwszText) return false;
  double r = 0;
  m_Operand.GetValue(r);
  const int nFormats = pBook->GetNumValFormats();
  for (int i = 0; i < nFormats; ++i) {
    const CValFormat* pFormat = pBook->GetValFormat(i);
    if (!pFormat || pFormat->IsEmpty()) continue;
    pFormat->Format(r);
    if (CompareStringNoCase(CSingleFormat::m_Buf, pwszText) == 0) {
      m_nValFormat = i;
      m_bFormatClass = static_cast<unsigned char>(pFormat->GetType());
      return true;
    }
  }
  return false;
}

// ---- Matching -----------------------------------------------------------------------

bool CValueCriteria::ApplyOperator(int nCompare) const {
  switch (m_eOperator) {
    case opEqual:
      return nCompare == 0;
    case opGreaterEqual:
      return nCompare >= 0;
    case opLess:
      return nCompare < 0;
    case opLessEqual:
      return nCompare <= 0;
    case opNotEqual:
      return nCompare != 0;
    default:
      return nCompare > 0;
  }
}

bool CValueCriteria::MeetsCriteria(const TValue* pValue, int bSameKind, int bExactText) const {
  if (m_eOperator == opAlways) return true;
  if (IsBlank(pValue))
    return (m_eOperator != opNotBlank && m_Operand.IsEmpty()) || IsEmptyText(m_Operand);
  if (m_eOperator == opNotBlank) return true;
  if (m_eOperator == opBlank) return false;

  // A number criterion also meets text that reads as that number.
  TValue converted;
  const TValue* pTest = pValue;
  if (m_Operand.IsReal() && pValue->IsText() && converted.StringToReal(pValue->TextPtr()) == 1 &&
      converted.IsReal())
    pTest = &converted;
  if (bSameKind && pTest->GetValType() != m_Operand.GetValType()) return false;

  const bool bValueText = pTest->IsText();
  const bool bOperandText = m_Operand.IsText();
  int nCompare;
  if (bExactText) {
    if (!bValueText || !bOperandText) return false;
    nCompare = CompareStringNoCase(pTest->TextPtr(), m_Operand.TextPtr());
  } else if (bValueText && bOperandText) {
    nCompare = CmpxiWildcard(pTest->TextPtr(), m_Operand.TextPtr());
  } else if (bValueText || bOperandText) {
    return false;
  } else {
    nCompare = pTest->Compare(m_Operand);
  }
  return ApplyOperator(nCompare);
}

bool CValueCriteria::MeetsText(const char16_t* pwszText) const {
  std::u16string pattern;
  m_Operand.GetValue(pattern);
  if ((m_eOperator == opBeginsWith || m_eOperator == opNotBeginsWith) && pattern.size() >= 2 &&
      pattern.front() == u'"' && pattern.back() == u'"')
    pattern = pattern.substr(1, pattern.size() - 2);
  switch (m_eOperator) {
    case opBeginsWith:
      return Search(pattern.c_str(), pwszText, 0) == 0;
    case opNotBeginsWith:
      return Search(pattern.c_str(), pwszText, 0) != 0;
    case opEndsWith:
      return EndsWith(pattern.c_str(), pwszText);
    case opNotEndsWith:
      return !EndsWith(pattern.c_str(), pwszText);
    case opContains:
      return Search(pattern.c_str(), pwszText, 0) >= 0;
    default:
      return Search(pattern.c_str(), pwszText, 0) < 0;
  }
}

bool CValueCriteria::MeetsCriteria(CSheetBase* pSheet, const TCell& cell, int bSameKind,
                                   int bExactText) const {
  if (!pSheet) return false;
  if (m_pFormula) {
    TValue result;
    {
      CFormulaEvaluator eval(pSheet->GetBook(), pSheet, cell);
      TValue* pResult = eval.Evaluate(m_pFormula.get(), CFormulaBase::ftCondFormat);
      if (pResult) result.CopyAndClearSource(*pResult);
    }
    if (!result.CheckValue()) return false;
    if (m_eOperator == opFromText || m_eOperator == opAlways) {
      int bTrue = 0;
      return result.CheckLogical(bTrue) && bTrue;
    }
    const CValueCriteria byValue(&result, -1, m_eOperator, pSheet);
    return byValue.MeetsCriteria(pSheet, cell, bSameKind, bExactText);
  }
  if (IsTextOperator(m_eOperator)) {
    std::u16string text(pSheet->GetFormattedText(cell.row, cell.col));
    if (static_cast<int>(text.size()) > kMaxCellText) text.resize(kMaxCellText);
    return MeetsText(text.c_str());
  }
  TValue value;
  pSheet->GetValue(cell.row, cell.col, &value);
  return MeetsCriteria(&value, bSameKind, bExactText);
}

bool CValueCriteria::MeetsCriteria(CSheetBase* pSheet, int nRow1, int nCol1, int nRow2, int nCol2,
                                   int bSameKind, int bExactText) const {
  if (!pSheet || nRow1 > nRow2 || nCol1 > nCol2) return false;
  // Walk the cells that exist; the positions without one all read alike, so one test
  // settles them.
  const TRange range(nRow1, nCol1, nRow2, nCol2);
  long long nSeen = 0;
  CBookIterator it(pSheet, range);
  for (int b = it.Start(); b; b = it.Next()) {
    if (!MeetsCriteria(pSheet, it.GetCurrent(), bSameKind, bExactText)) return false;
    ++nSeen;
  }
  const long long nArea =
      static_cast<long long>(nRow2 - nRow1 + 1) * static_cast<long long>(nCol2 - nCol1 + 1);
  if (nSeen == nArea) return true;
  if (m_pFormula) {
    // A formula reads its own position: test every position without a cell.
    for (int nRow = nRow1; nRow <= nRow2; ++nRow)
      for (int nCol = nCol1; nCol <= nCol2; ++nCol)
        if (!pSheet->Cell(nRow, nCol) &&
            !MeetsCriteria(pSheet, TCell(nRow, nCol), bSameKind, bExactText))
          return false;
    return true;
  }
  if (IsTextOperator(m_eOperator)) return MeetsText(u"");
  return MeetsCriteria(nullptr, bSameKind, bExactText);
}

int CValueCriteria::Search(const char16_t* pwszPattern, const char16_t* pwszText, int nStart) {
  if (!pwszPattern || !pwszText) return -1;
  return StrStrxiWildcardC(pwszText, pwszPattern, nStart);
}

bool CValueCriteria::EndsWith(const char16_t* pwszPattern, const char16_t* pwszText) {
  if (!pwszPattern || !pwszText) return false;
  // Some match runs to the end exactly when the pattern behind a leading "*" matches
  // the whole text: one pass instead of a search from every hit.
  std::u16string anchored(u"*");
  anchored += pwszPattern;
  return CmpxiWildcard(pwszText, anchored.c_str()) == 0;
}
