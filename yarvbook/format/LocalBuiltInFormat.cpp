#include "format/LocalBuiltInFormat.h"

#include "platform/Locale.h"
#include "platform/ResourceIds.h"
#include "platform/Resources.h"

namespace {

std::u16string ReplaceAuto(std::u16string str) {
  const std::u16string strYear = GetLocaleSettings().bFourDigitYear ? u"yyyy" : u"yy";
  for (std::size_t n = str.find(u"[AUTO]"); n != std::u16string::npos;
       n = str.find(u"[AUTO]", n + strYear.size()))
    str.replace(n, 6, strYear);
  return str;
}

// Year, month and day parts joined by the separator in the locale's order.
std::u16string OrderDate(const std::vector<std::u16string>& parts) {
  const std::u16string& y = parts[0];
  const std::u16string& m = parts[1];
  const std::u16string& d = parts[2];
  const std::u16string& s = parts[3];
  switch (GetLocaleSettings().nDateOrder) {
    case TLocaleSettings::doDayMonthYear:
      return d + s + m + s + y;
    case TLocaleSettings::doYearMonthDay:
      return y + s + m + s + d;
    default:
      return m + s + d + s + y;
  }
}

}  // namespace

std::vector<std::u16string> CLocalBuiltInFormat::SplitParts(const std::u16string& strBody) {
  std::vector<std::u16string> parts(1);
  bool bQuoted = false;
  for (std::size_t i = 0; i < strBody.size(); ++i) {
    const char16_t c = strBody[i];
    if (c == u'\\' && !bQuoted && i + 1 < strBody.size()) {
      parts.back() += c;
      parts.back() += strBody[++i];
      continue;
    }
    if (c == u'"') bQuoted = !bQuoted;
    if (c == u';' && !bQuoted) {
      parts.emplace_back();
      continue;
    }
    parts.back() += c;
  }
  return parts;
}

bool CLocalBuiltInFormat::Load(int nIndex) {
  if (nIndex < 0 || nIndex >= static_cast<int>(IDS_LOCAL_BUILTIN_FORMAT_COUNT)) return false;
  const char16_t* pwsz = LoadResourceString(IDS_LOCAL_BUILTIN_FORMAT_BASE + nIndex);
  if (!pwsz || !*pwsz || std::u16string(pwsz) == u";") return false;
  return SetText(pwsz);
}

bool CLocalBuiltInFormat::SetText(const std::u16string& strText) {
  if (strText.size() < 2 || strText[0] < u'0' || strText[0] > u'9' || strText[1] != u':')
    return false;
  const int nKind = strText[0] - u'0';
  std::u16string strBody = ReplaceAuto(strText.substr(2));
  const std::size_t nParts = SplitParts(strBody).size();
  if ((nKind == 5 && nParts < 4) || (nKind == 9 && nParts < 5) ||
      ((nKind == 7 || nKind == 8) && nParts < 2))
    return false;
  m_nKind = nKind;
  m_strSecond.clear();
  if (nKind == 7 || nKind == 8) {
    const std::u16string strSecond = SplitParts(strBody)[0];
    m_strSecond = strSecond;
    strBody = strBody.substr(strSecond.size() + 1);
  }
  m_strBody = strBody;
  return true;
}

TFormatSubstitution::ESource CLocalBuiltInFormat::GetSource() const {
  switch (m_nKind) {
    case 1:
    case 7:
      return TFormatSubstitution::srcCurrency;
    case 2:
      return TFormatSubstitution::srcCurrencyNoSymbol;
    case 3:
      return TFormatSubstitution::srcDateOrder;
    case 4:
      return TFormatSubstitution::srcCurrencySymbol;
    case 6:
    case 8:
    case 9:
      return TFormatSubstitution::srcAmPm;
    default:
      return TFormatSubstitution::srcNone;
  }
}

std::u16string CLocalBuiltInFormat::GetTemplate() const {
  if (m_nKind != 5 && m_nKind != 9) return m_strBody;
  std::vector<std::u16string> parts = SplitParts(m_strBody);
  std::u16string str = OrderDate(parts);
  if (m_nKind == 9) {
    // The time part is the rest of the body: it may itself hold ';'.
    std::size_t nAt = 0;
    for (int k = 0; k < 4; ++k) nAt += parts[k].size() + 1;
    str += m_strBody.substr(nAt);
  }
  return str;
}
