// Slot texts per source, from the current locale settings.
#include "format/FormatSubstitution.h"

#include <vector>

#include "platform/Locale.h"

namespace {

struct TNegativeForm {
  const char16_t* pwszPrefix;  // '$' marks the symbol, ' ' the symbol's separating blank
  const char16_t* pwszSuffix;
};
// Negative currency forms in the Windows numbering: 0 "($1)", 1 "-$1", ... 15 "(1 $)".
constexpr TNegativeForm kNegativeForms[16] = {
    {u"($", u")"}, {u"-$", u""},  {u"$-", u""},   {u"$", u"-"},   {u"(", u"$)"}, {u"-", u"$"},
    {u"", u"-$"},  {u"", u"$-"},  {u"-", u" $"},  {u"-$ ", u""},  {u"", u" $-"}, {u"$ ", u"-"},
    {u"$ -", u""}, {u"", u"- $"}, {u"($ ", u")"}, {u"(", u" $)"},
};

// Replaces '$' by the symbol text; without a symbol, blanks go too.
std::u16string Expand(const char16_t* pwsz, const std::u16string& strSymbol) {
  std::u16string str;
  for (; *pwsz; ++pwsz) {
    if (*pwsz == u'$')
      str += strSymbol;
    else if (*pwsz != u' ' || !strSymbol.empty())
      str += *pwsz;
  }
  return str;
}

std::vector<std::u16string> CurrencySlots(bool bSymbol) {
  const TLocaleSettings& locale = GetLocaleSettings();
  const std::u16string strSymbol = bSymbol ? TFormatSubstitution::CurrencyText() : u"";
  std::u16string strPrefix, strSuffix;
  switch (locale.nCurrencyPos) {
    case 1:
      strSuffix = strSymbol;
      break;
    case 2:
      strPrefix = bSymbol ? strSymbol + u" " : u"";
      break;
    case 3:
      strSuffix = bSymbol ? u" " + strSymbol : u"";
      break;
    default:
      strPrefix = strSymbol;
      break;
  }
  const int nForm = locale.nNegCurrency >= 0 && locale.nNegCurrency < 16 ? locale.nNegCurrency : 1;
  const TNegativeForm& neg = kNegativeForms[nForm];
  // Parentheses take a character's width on the right: positives leave room for it.
  const bool bParens = neg.pwszPrefix[0] == u'(';
  if (bParens) strSuffix += u"_)";
  const std::u16string strNegPrefix = Expand(neg.pwszPrefix, strSymbol);
  const std::u16string strNegSuffix = Expand(neg.pwszSuffix, strSymbol);
  if (bSymbol) return {strPrefix, strSuffix, strNegPrefix, strNegSuffix};
  return {strSuffix, strNegPrefix, strNegSuffix};
}

std::vector<std::u16string> DateOrderSlots() {
  const TLocaleSettings& locale = GetLocaleSettings();
  const std::u16string strMonth = locale.bMonthLeadingZero ? u"mm" : u"m";
  const std::u16string strDay = locale.bDayLeadingZero ? u"dd" : u"d";
  const std::u16string strYear = locale.bFourDigitYear ? u"yyyy" : u"yy";
  switch (locale.nDateOrder) {
    case TLocaleSettings::doDayMonthYear:
      return {strDay, strMonth, strYear};
    case TLocaleSettings::doYearMonthDay:
      return {strYear, strMonth, strDay};
    default:
      return {strMonth, strDay, strYear};
  }
}

// A 24-hour locale shows times without the marker.
std::vector<std::u16string> AmPmSlots() {
  const TLocaleSettings& locale = GetLocaleSettings();
  if (locale.b24Hour) return {u"", u""};
  if (locale.bAmPmFirst) return {u"AM/PM ", u""};
  return {u"", u" AM/PM"};
}

}  // namespace

std::u16string TFormatSubstitution::CurrencyText() {
  const std::u16string& strSymbol = GetLocaleSettings().strCurrency;
  bool bBare = !strSymbol.empty();
  for (char16_t c : strSymbol) {
    const bool bLetter = (c >= u'a' && c <= u'z') || (c >= u'A' && c <= u'Z');
    if (bLetter || c == u' ' || c == u'"' || c == u'\\' || c == u';' || c == u'[' || c == u'%' ||
        c == u'.' || c == u',' || c == u'_' || c == u'*' || c == u'@' || c == u'?' || c == u'#' ||
        (c >= u'0' && c <= u'9'))
      bBare = false;
  }
  if (bBare) return strSymbol;
  return u"\"" + strSymbol + u"\"";
}

std::u16string TFormatSubstitution::Render(ESource nSource, const std::u16string& strTemplate) {
  std::vector<std::u16string> slots;
  switch (nSource) {
    case srcCurrency:
      slots = CurrencySlots(true);
      break;
    case srcCurrencyNoSymbol:
      slots = CurrencySlots(false);
      break;
    case srcDateOrder:
      slots = DateOrderSlots();
      break;
    case srcAmPm:
      slots = AmPmSlots();
      break;
    case srcCurrencySymbol:
      slots.assign(8, CurrencyText());
      break;
    default:
      break;
  }
  std::u16string str;
  std::size_t nSlot = 0;
  for (std::size_t i = 0; i < strTemplate.size(); ++i) {
    if (strTemplate[i] == u'%' && i + 1 < strTemplate.size()) {
      if (strTemplate[i + 1] == u's') {
        if (nSlot < slots.size()) str += slots[nSlot];
        ++nSlot;
        ++i;
        continue;
      }
      if (strTemplate[i + 1] == u'%') {
        str += u'%';
        ++i;
        continue;
      }
    }
    str += strTemplate[i];
  }
  return str;
}
