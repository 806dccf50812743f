// Whole-format parsing with its implicit sections, the choice of a section for a value,
// and the stored layout of the four sections.
#include "format/ValFormat.h"

#include <cmath>
#include <iterator>

#include "format/FormatVocabulary.h"
#include "platform/Archive.h"

char16_t CValFormat::m_cFillChar = 0;
unsigned short CValFormat::m_wFillPos = 0;
bool CValFormat::m_bIsColorIndex = false;
unsigned short CValFormat::m_wColorIndex = 0;
bool CValFormat::m_bIsColorRef = false;
uint32_t CValFormat::m_ColorRef = 0;
unsigned short CValFormat::m_wSpaceChars = 0;
CValFormat::TSpaceChar CValFormat::m_SpaceChars[CSingleFormat::kMaxSpaceChars];

namespace {

// 0x00BBGGRR of the named colours, in the order of the colour list ("Color" last).
constexpr uint32_t kColorRefs[] = {0x000000, 0xFF0000, 0xFFFF00, 0x00FF00,
                                   0xFF00FF, 0x0000FF, 0xFFFFFF, 0x00FFFF};
static_assert(std::size(kColorRefs) == 8, "one colour per named entry of the colour list");

}  // namespace

CValFormat::CValFormat(const CValFormat& other) : CZelObject() { *this = other; }

CValFormat& CValFormat::operator=(const CValFormat& other) {
  for (int k = 0; k < kSections; ++k) m_aSections[k] = other.m_aSections[k];
  return *this;
}

CValFormat::~CValFormat() = default;

int CValFormat::Parse(const char16_t* pwszText, int* pnErrorPos, int nParseType) {
  Clear();
  if (!pwszText) pwszText = u"";
  const char16_t* p = pwszText;
  auto fail = [&](const char16_t* pAt) {
    if (pnErrorPos) *pnErrorPos = static_cast<int>(pAt - pwszText);
    return 0;
  };
  CSingleFormat* s = m_aSections;
  int n = 0;
  for (bool bMore = true; bMore;) {
    if (n == kSections) return fail(p - 1);  // the ';' that opens a fifth section
    if (!s[n].ParseSection(p, nParseType, n >= 2, &bMore)) return fail(p);
    if (bMore && s[n].m_nType == CSingleFormat::ftText) return fail(p - 1);
    ++n;
  }
  const char16_t* pEnd = p;
  auto hasCondition = [&](int k) { return (s[k].m_bFlags & CSingleFormat::fCondition) != 0; };
  auto setCondition = [&](int k, CSingleFormat::EOperator nOperator) {
    s[k].m_nOperator = nOperator;
    s[k].m_rCondition = 0;
  };
  int nAppend = -1;
  if (n == 1) {
    if (!hasCondition(0))
      setCondition(0, CSingleFormat::opOtherwise);
    else
      nAppend = 1;
  } else if (n == 2 || (n == 3 && s[2].m_nType == CSingleFormat::ftText)) {
    const bool bLastOtherwise = s[n - 1].m_nOperator == CSingleFormat::opOtherwise;
    if (!hasCondition(0) && !hasCondition(1)) {
      setCondition(0, CSingleFormat::opGreaterEqual);
      setCondition(1, CSingleFormat::opLess);
    } else if (!hasCondition(0)) {
      setCondition(0, CSingleFormat::opGreater);
      if (!bLastOtherwise) nAppend = n;
    } else if (!hasCondition(1)) {
      const bool bNonNegative =
          s[0].m_nOperator == CSingleFormat::opGreaterEqual && s[0].m_rCondition == 0;
      setCondition(1, bNonNegative ? CSingleFormat::opLess : CSingleFormat::opOtherwise);
    } else if (!bLastOtherwise) {
      nAppend = n;
    }
  } else {
    if (n == 4) {
      if (s[3].m_nType == CSingleFormat::ftUndetermined) s[3].m_nType = CSingleFormat::ftText;
      if (s[3].m_nType != CSingleFormat::ftText && s[3].m_nType != CSingleFormat::ftGeneral)
        return fail(pEnd);
    }
    if (!hasCondition(0)) setCondition(0, CSingleFormat::opGreater);
    if (!hasCondition(1)) setCondition(1, CSingleFormat::opLess);
  }
  if (nAppend >= 0 && nAppend < kSections) {
    const std::u16string strGeneral = GetFormatVocabulary(nParseType).strGeneral;
    const char16_t* pGeneral = strGeneral.c_str();
    if (!s[nAppend].ParseSection(pGeneral, nParseType, true, nullptr)) return fail(pEnd);
    ++n;
  }
  for (int k = 0; k < n && k < kSections; ++k)
    if (s[k].m_nType == CSingleFormat::ftUndetermined) s[k].m_nType = CSingleFormat::ftNumber;
  return 1;
}

int CValFormat::NewFormat(const std::u16string& strText) {
  return Parse(strText.c_str(), nullptr, ptLocal);
}

void CValFormat::Clear() {
  for (CSingleFormat& s : m_aSections) s.Clear();
}

CValFormat* CValFormat::Clone() const { return new CValFormat(*this); }

void CValFormat::Copy(const CZelObject* pSrc) {
  if (const auto* pFormat = dynamic_cast<const CValFormat*>(pSrc)) *this = *pFormat;
}

int CValFormat::Compare(const CZelObject* pOther) const {
  const auto* pFormat = dynamic_cast<const CValFormat*>(pOther);
  return pFormat ? Compare(*pFormat) : 1;
}

int CValFormat::Compare(const CValFormat& other) const {
  for (int k = 0; k < kSections; ++k) {
    const CSingleFormat& a = m_aSections[k];
    const CSingleFormat& b = other.m_aSections[k];
    if (a == b) continue;
    if (a.m_nType != b.m_nType) return a.m_nType < b.m_nType ? -1 : 1;
    if (a.m_wTokenCount != b.m_wTokenCount) return a.m_wTokenCount < b.m_wTokenCount ? -1 : 1;
    return &a < &b ? -1 : 1;
  }
  return 0;
}

void CValFormat::SetAutoMilliseconds(bool bOn) {
  for (CSingleFormat& s : m_aSections) {
    if (bOn)
      s.m_bFlags |= CSingleFormat::fAutoMilliseconds;
    else
      s.m_bFlags &= static_cast<unsigned char>(~CSingleFormat::fAutoMilliseconds);
  }
}

std::u16string CValFormat::Unparse(int nParseType) const {
  std::u16string str;
  std::u16string strSection(CSingleFormat::kMaxFormatted, u'\0');
  for (int k = 0; k < kSections && m_aSections[k].IsUsed(); ++k) {
    if (k > 0) str += u';';
    const int n =
        m_aSections[k].Unparse(strSection.data(), CSingleFormat::kMaxFormatted, nParseType);
    str.append(strSection.data(), n);
  }
  return str;
}

// A format: u32 section count (4 when written), then each section (see
// CSingleFormat::SerializeCB).
bool CValFormat::SerializeCB(CPelArchive& ar) {
  if (ar.IsStoring()) {
    ar << static_cast<uint32_t>(kSections);
    for (CSingleFormat& s : m_aSections)
      if (!s.SerializeCB(ar)) return false;
    return !ar.IsFailed();
  }
  Clear();
  uint32_t nCount = 0;
  ar >> nCount;
  if (ar.IsFailed() || nCount > kSections) return false;
  for (uint32_t k = 0; k < nCount; ++k) {
    if (!m_aSections[k].SerializeCB(ar)) {
      Clear();
      return false;
    }
  }
  return true;
}

bool CValFormat::IsDateOrTime() const {
  const CSingleFormat::EType nType = m_aSections[0].m_nType;
  return nType == CSingleFormat::ftDate || nType == CSingleFormat::ftTime;
}

int CValFormat::ChooseSection(double r) const {
  for (int k = 0; k < kSections; ++k) {
    const CSingleFormat& s = m_aSections[k];
    if (!s.IsUsed() || s.m_nType == CSingleFormat::ftText) return -1;
    if (s.MeetsCriteria(r)) return k;
  }
  return -1;
}

void CValFormat::SetResultColor(const CSingleFormat& s) const {
  if (!(s.m_bFlags & CSingleFormat::fColor)) return;
  if (s.m_nColorIndex >= std::size(kColorRefs)) {
    m_bIsColorIndex = true;
    m_wColorIndex = s.m_wColorNumber;
    return;
  }
  m_bIsColorRef = true;
  m_ColorRef = kColorRefs[s.m_nColorIndex];
}

void CValFormat::Format(double r, int nGeneralWidth) const {
  CSingleFormat::ResetResult();
  const CSingleFormat& s0 = m_aSections[0];
  // A number through a text-only format shows its own text.
  if (s0.m_nType == CSingleFormat::ftText || !std::isfinite(r)) {
    const CSingleFormat general;  // no tokens: the number alone
    general.FormatGeneral(r, nGeneralWidth, true);
    return;
  }
  const int k = ChooseSection(r);
  if (k < 0) return;
  const CSingleFormat& s = m_aSections[k];
  SetResultColor(s);
  s.FormatNumber(r, r < 0 && !s.IsNegativeSection(), nGeneralWidth);
}

void CValFormat::Format(const char16_t* pwszText, int nLen) const {
  CSingleFormat::ResetResult();
  if (!pwszText) nLen = 0;
  for (const CSingleFormat& s : m_aSections) {
    if (s.m_nType != CSingleFormat::ftText) continue;
    SetResultColor(s);
    s.FormatText(pwszText, nLen);
    return;
  }
  for (int k = 0; k < kSections; ++k) {
    const CSingleFormat& s = m_aSections[k];
    if (s.m_nType != CSingleFormat::ftGeneral) continue;
    if (k == kSections - 1 || !m_aSections[k + 1].IsUsed()) {
      SetResultColor(s);
      s.FormatText(pwszText, nLen);
      return;
    }
  }
  CSingleFormat::Append(pwszText, nLen);
}
