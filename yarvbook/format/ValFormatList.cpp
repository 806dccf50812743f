#include "format/ValFormatList.h"

#include <utility>

#include "format/BuiltInFormats.h"
#include "format/SSValFormat.h"
#include "format/ValFormat.h"

CValFormatList::CValFormatList() = default;
CValFormatList::~CValFormatList() = default;

void CValFormatList::InitDefValFormats() {
  CBuiltInFormats::Init();
  if (m_Formats.size() < CBuiltInFormats::kCount) m_Formats.resize(CBuiltInFormats::kCount);
  for (int n = 0; n < CBuiltInFormats::kCount; ++n) {
    if (m_Formats[n]) continue;
    auto pFormat = std::make_unique<CSSValFormat>(CSSValFormat::GetCodeForIndex(n),
                                                  CBuiltInFormats::IsAlias(n));
    // The built-in texts are written for the parser; a host text that fails leaves
    // the entry General rather than without a format.
    if (!pFormat->Parse(CBuiltInFormats::GetText(n).c_str(), nullptr, ptEnglishFile))
      (void)pFormat->Parse(u"General", nullptr, ptEnglishFile);
    m_Formats[n] = std::move(pFormat);
  }
  const char16_t* apwszQuick[] = {CQuickLocalFormat::kDateTimeText, CQuickLocalFormat::kDateText,
                                  CQuickLocalFormat::kTimeText};
  for (int k = 0; k < 3; ++k) (void)m_aQuick[k].Create(apwszQuick[k]);
}

bool CValFormatList::HasValFormat(int nIndex) const {
  return nIndex >= 0 && nIndex < GetCount() && m_Formats[nIndex] != nullptr;
}

const CValFormat* CValFormatList::GetValFormat(int nIndex) const {
  if (HasValFormat(nIndex)) return m_Formats[nIndex].get();
  if (HasValFormat(0)) return m_Formats[0].get();
  static const CValFormat s_general = [] {
    CValFormat format;
    (void)format.Parse(u"General", nullptr, ptEnglishFile);
    return format;
  }();
  return &s_general;
}

CSingleFormat::EType CValFormatList::GetValFormatType(int nIndex) const {
  return GetValFormat(nIndex)->GetType();
}

int CValFormatList::GetStandardFormat(CSingleFormat::EType nType, bool bDecimals) {
  switch (nType) {
    case CSingleFormat::ftNumber:
      return bDecimals ? 4 : 3;
    case CSingleFormat::ftCurrency:
      return bDecimals ? 7 : 5;
    case CSingleFormat::ftPercent:
      return bDecimals ? 10 : 9;
    case CSingleFormat::ftFraction:
      return 12;
    case CSingleFormat::ftScientific:
      return 11;
    case CSingleFormat::ftDate:
      return 14;
    case CSingleFormat::ftTime:
      return 21;
    case CSingleFormat::ftText:
      return 49;
    default:
      return 0;
  }
}

int CValFormatList::FindValFormat(const CValFormat& format) const {
  for (int n = 0; n < GetCount(); ++n)
    if (m_Formats[n] && m_Formats[n]->Compare(format) == 0) return n;
  return -1;
}

int CValFormatList::AddValFormat(std::unique_ptr<CValFormat> pFormat) {
  if (!pFormat) return -1;
  const int nFound = FindValFormat(*pFormat);
  if (nFound >= 0) return nFound;
  if (m_Formats.size() < CBuiltInFormats::kCount) m_Formats.resize(CBuiltInFormats::kCount);
  m_Formats.push_back(std::move(pFormat));
  return GetCount() - 1;
}

int CValFormatList::AddValFormat(const char16_t* pwszText, int nParseType, int* pnErrorPos) {
  auto pFormat = std::make_unique<CValFormat>();
  if (!pFormat->Parse(pwszText, pnErrorPos, nParseType)) return -1;
  return AddValFormat(std::move(pFormat));
}

int CValFormatList::ValidateValFormats() {
  int nRepaired = 0;
  for (int n = 0; n < CBuiltInFormats::kCount; ++n)
    if (!HasValFormat(n)) ++nRepaired;
  InitDefValFormats();
  for (int n = CBuiltInFormats::kCount; n < GetCount(); ++n) {
    if (m_Formats[n]) continue;
    auto pFormat = std::make_unique<CValFormat>();
    (void)pFormat->Parse(u"General", nullptr, ptEnglishFile);
    m_Formats[n] = std::move(pFormat);
    ++nRepaired;
  }
  return nRepaired;
}
