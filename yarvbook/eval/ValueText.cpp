#include "eval/ValueText.h"

#include <charconv>
#include <cmath>
#include <string>
#include <string_view>

#include "base/WideString.h"
#include "format/DateTime.h"
#include "platform/Locale.h"

namespace {

// ---- TRUE and FALSE texts ----

struct TLogicalTexts {
  const char* pszLanguage;
  const char16_t* pwszTrue;
  const char16_t* pwszFalse;
};

// The words spreadsheets use for the logical values, by the locale's language.
// Languages not listed use the English words.
constexpr TLogicalTexts kLogicalTexts[] = {
    {"cs", u"PRAVDA", u"NEPRAVDA"}, {"da", u"SAND", u"FALSK"},   {"de", u"WAHR", u"FALSCH"},
    {"es", u"VERDADERO", u"FALSO"}, {"fi", u"TOSI", u"EPÄTOSI"}, {"fr", u"VRAI", u"FAUX"},
    {"hu", u"IGAZ", u"HAMIS"},      {"it", u"VERO", u"FALSO"},   {"nb", u"SANN", u"USANN"},
    {"nl", u"WAAR", u"ONWAAR"},     {"pl", u"PRAWDA", u"FAŁSZ"}, {"pt", u"VERDADEIRO", u"FALSO"},
    {"ru", u"ИСТИНА", u"ЛОЖЬ"},     {"sv", u"SANT", u"FALSKT"},  {"tr", u"DOĞRU", u"YANLIŞ"},
};

// Texts the host set; empty while it has set none. Function-local, so that a value
// formatted during static initialisation finds them constructed.
std::u16string& HostLogicalText(bool bValue) {
  static std::u16string s_strTrue, s_strFalse;
  return bValue ? s_strTrue : s_strFalse;
}

const TLogicalTexts* FindLocaleLogicalTexts() {
  const std::string& strName = GetLocaleSettings().strName;
  const size_t nLangLen = strName.find_first_of("-_");
  const std::string_view lang(strName.data(),
                              nLangLen == std::string::npos ? strName.size() : nLangLen);
  for (const TLogicalTexts& t : kLogicalTexts) {
    if (lang == t.pszLanguage) return &t;
  }
  return nullptr;
}

// ---- Symbols of the notation ----

struct TSymbols {
  char16_t cDecimal;
  char16_t cThousands;
  bool bBlankThousands;  // the locale groups with a space: a plain space groups too
  char16_t cFractionSlash;
  const char16_t* pCurrency;
  int nCurrencyLen;
  bool bBackslashCurrency;  // the fullwidth won sign is typed as a backslash
};

TSymbols GetSymbols(int nParseType) {
  const TLocaleSettings& loc = GetLocaleSettings();
  TSymbols sym;
  if (IsEnglishParseType(nParseType)) {
    sym.cDecimal = u'.';
    sym.cThousands = u',';
  } else {
    sym.cDecimal = loc.cDecimal;
    sym.cThousands = loc.cThousands;
  }
  sym.bBlankThousands =
      sym.cThousands == u' ' || sym.cThousands == 0x00A0 || sym.cThousands == 0x202F;
  sym.cFractionSlash = u'/';
  sym.pCurrency = loc.strCurrency.c_str();
  sym.nCurrencyLen = static_cast<int>(loc.strCurrency.size());
  sym.bBackslashCurrency = loc.strCurrency == u"\uFFE6";
  return sym;
}

// Full-width ASCII forms (typed through an East Asian input method) read as ASCII.
char16_t Narrow(char16_t c) {
  return c >= 0xFF01 && c <= 0xFF5E ? static_cast<char16_t>(c - 0xFEE0) : c;
}

bool IsDigit(char16_t c) {
  c = Narrow(c);
  return c >= u'0' && c <= u'9';
}

bool IsBlank(char16_t c) {
  return c == u' ' || c == u'\t' || c == u'\r' || c == u'\n' || c == 0x00A0 || c == 0x202F ||
         c == 0x3000;
}

const char16_t* SkipBlanks(const char16_t* p) {
  while (IsBlank(*p)) ++p;
  return p;
}

// Length of the currency symbol at p, 0 when there is none.
int MatchCurrency(const char16_t* p, const TSymbols& sym) {
  if (sym.nCurrencyLen > 0) {
    int i = 0;
    while (i < sym.nCurrencyLen && p[i] == sym.pCurrency[i]) ++i;
    if (i == sym.nCurrencyLen) return i;
  }
  if (sym.bBackslashCurrency && (*p == u'\\' || *p == 0xFF3C)) return 1;
  return 0;
}

bool IsThousands(char16_t c, const TSymbols& sym) {
  return c == sym.cThousands || (sym.bBlankThousands && (c == u' ' || c == 0x00A0 || c == 0x202F));
}

// The significant digits of a mantissa. Keeps 40 digits and a sticky digit for any
// non-zero digit beyond them, which is more than enough for a correctly rounded
// double, and never allocates however long the text is.
class TDigitCollector {
 public:
  void AddIntegerDigit(char c) {
    if (m_nDigits == 0 && c == '0') return;
    if (m_nDigits < kKept) {
      m_acDigits[m_nDigits++] = c;
    } else {
      ++m_nExp10;
      if (c != '0') m_bSticky = true;
    }
  }
  void AddFractionDigit(char c) {
    if (m_nDigits == 0 && c == '0') {
      --m_nExp10;
      return;
    }
    if (m_nDigits < kKept) {
      m_acDigits[m_nDigits++] = c;
      --m_nExp10;
    } else if (c != '0') {
      m_bSticky = true;
    }
  }
  // The number times 10^nExp10; false when it overflows a double.
  bool GetValue(int nExp10, double& r) {
    if (m_nDigits == 0) {
      r = 0;
      return true;
    }
    int nDigits = m_nDigits;
    long long nExp = static_cast<long long>(m_nExp10) + nExp10;
    if (m_bSticky) {
      m_acDigits[nDigits++] = '1';
      --nExp;
    }
    const long long nMagnitude = nExp + nDigits - 1;  // power of ten of the first digit
    if (nMagnitude > 400) return false;
    if (nMagnitude < -400) {
      r = 0;
      return true;
    }
    char acText[kKept + 16];
    int n = 0;
    for (int i = 0; i < nDigits; ++i) acText[n++] = m_acDigits[i];
    acText[n++] = 'e';
    const auto res = std::to_chars(acText + n, acText + sizeof(acText), nExp);
    const auto parsed = std::from_chars(acText, res.ptr, r);
    if (parsed.ec == std::errc::result_out_of_range) {
      if (nMagnitude > 0) return false;
      r = 0;
      return true;
    }
    return parsed.ec == std::errc() && std::isfinite(r);
  }

 private:
  static constexpr int kKept = 40;
  char m_acDigits[kKept + 1] = {};
  int m_nDigits = 0;
  int m_nExp10 = 0;
  bool m_bSticky = false;
};

// Steps 1-9: the number syntax with sign, parentheses, currency, grouping, decimals,
// exponent and percent.
bool ParseNumberSyntax(const char16_t* p, const TSymbols& sym, int nCellFormatType,
                       TParsedText& out) {
  p = SkipBlanks(p);
  bool bSignSeen = false, bNegative = false, bParen = false;
  auto takeSign = [&](char16_t c) {
    c = Narrow(c);
    if (c == u'+' || c == u'-') {
      bNegative = c == u'-';
      return true;
    }
    if (c == u'(') {
      bParen = true;
      return true;
    }
    return false;
  };
  if (takeSign(*p)) {
    bSignSeen = true;
    ++p;
  }
  bool bCurrency = false;
  if (const int nLen = MatchCurrency(p, sym)) {
    bCurrency = true;
    p = SkipBlanks(p + nLen);
  }
  if (*p != 0 && takeSign(*p)) {
    if (bSignSeen) return false;  // "-(5)", "((5))", "-$-5"
    bSignSeen = true;
    ++p;
  }

  // The mantissa: grouping only after a digit and before exactly three digits, and
  // never after the decimal separator.
  TDigitCollector digits;
  bool bAnyDigit = false, bDecimal = false, bGrouped = false, bPrevDigit = false;
  for (;;) {
    const char16_t c = *p;
    if (IsDigit(c)) {
      const char d = static_cast<char>(Narrow(c));
      if (bDecimal)
        digits.AddFractionDigit(d);
      else
        digits.AddIntegerDigit(d);
      bAnyDigit = bPrevDigit = true;
      ++p;
      continue;
    }
    if (c == sym.cDecimal && !bDecimal) {
      bDecimal = true;
      bPrevDigit = false;
      ++p;
      continue;
    }
    if (!bDecimal && bPrevDigit && c != 0 && IsThousands(c, sym) && IsDigit(p[1]) &&
        IsDigit(p[2]) && IsDigit(p[3]) && !IsDigit(p[4])) {
      bGrouped = true;
      bPrevDigit = false;
      ++p;
      continue;
    }
    break;
  }
  if (!bAnyDigit) return false;

  bool bExponent = false;
  int nExp10 = 0;
  if (Narrow(*p) == u'E' || Narrow(*p) == u'e') {
    const char16_t* q = p + 1;
    bool bExpNegative = false;
    if (Narrow(*q) == u'+' || Narrow(*q) == u'-') {
      bExpNegative = Narrow(*q) == u'-';
      ++q;
    }
    if (!IsDigit(*q)) return false;
    while (IsDigit(*q)) {
      if (nExp10 < 100000) nExp10 = nExp10 * 10 + (Narrow(*q) - u'0');
      ++q;
    }
    if (bExpNegative) nExp10 = -nExp10;
    bExponent = true;
    p = q;
  }

  // Closing parenthesis, percent sign and a trailing currency symbol, each once.
  bool bClosed = false, bPercent = false;
  for (;;) {
    p = SkipBlanks(p);
    if (bParen && !bClosed && Narrow(*p) == u')') {
      bClosed = true;
      ++p;
      continue;
    }
    if (!bPercent && Narrow(*p) == u'%') {
      bPercent = true;
      ++p;
      continue;
    }
    if (!bCurrency && *p != 0) {
      if (const int nLen = MatchCurrency(p, sym)) {
        bCurrency = true;
        p += nLen;
        continue;
      }
    }
    break;
  }
  if (*p != 0) return false;
  if (bParen && !bClosed) return false;

  double r;
  if (!digits.GetValue(nExp10, r)) return false;
  if (bNegative || bParen) r = -r;
  if (bPercent) {
    r /= 100;
  } else if (nCellFormatType == CSingleFormat::ftPercent && TValue::m_sbMakeAutoPercentValue) {
    r /= 100;
  }

  out.vt = TValue::vtReal;
  out.r = r;
  if (bPercent)
    out.nFormat = bDecimal ? kFmtPercentDec : kFmtPercent;
  else if (bCurrency)
    out.nFormat = bDecimal ? kFmtCurrencyDec : kFmtCurrency;
  else if (bExponent)
    out.nFormat = nCellFormatType == CSingleFormat::ftScientific ? 0 : kFmtScientific;
  else if (bGrouped)
    out.nFormat = bDecimal ? kFmtThousandsDec : kFmtThousands;
  else
    out.nFormat = 0;
  return true;
}

// Reads a run of digits as a number; false when there is none.
bool ReadDigits(const char16_t*& p, double& r) {
  if (!IsDigit(*p)) return false;
  r = 0;
  while (IsDigit(*p)) r = r * 10 + (Narrow(*p++) - u'0');
  return true;
}

// Step 12: "w n/d", or a bare "n/d" only where the slash cannot be a date separator
// or the cell is fraction-formatted. A minus sign negates the whole ("-0 1/2" too).
bool ParseFraction(const char16_t* p, const char16_t* pEnd, const TSymbols& sym,
                   int nCellFormatType, TParsedText& out) {
  bool bNegative = false;
  if (Narrow(*p) == u'+' || Narrow(*p) == u'-') {
    bNegative = Narrow(*p) == u'-';
    ++p;
  }
  double rFirst, rWhole = 0, rNum, rDen;
  if (!ReadDigits(p, rFirst)) return false;
  const char16_t* q = SkipBlanks(p);
  if (q != p && IsDigit(*q)) {
    rWhole = rFirst;
    p = q;
    ReadDigits(p, rNum);
  } else if (sym.cFractionSlash != u'/' || nCellFormatType == CSingleFormat::ftFraction) {
    rNum = rFirst;
  } else {
    return false;
  }
  p = SkipBlanks(p);
  if (*p != sym.cFractionSlash) return false;
  p = SkipBlanks(p + 1);
  if (!ReadDigits(p, rDen)) return false;
  p = SkipBlanks(p);
  if (p != pEnd || rDen == 0) return false;
  const double r = rWhole + rNum / rDen;
  if (!std::isfinite(r)) return false;
  out.vt = TValue::vtReal;
  out.r = bNegative ? -r : r;
  out.nFormat = rDen < 10 ? kFmtFraction : kFmtFractionTwoDigit;
  return true;
}

// Step 13: dates and times, with the built-in format that matches their shape.
bool ParseDateTime(const char16_t* pwszText, int nParseType, TParsedText& out) {
  CDateTime dt;
  int nFormat = 0;
  if (!dt.StringToDateTime(pwszText, nFormat, nParseType)) return false;
  out.vt = TValue::vtReal;
  out.r = dt.GetDateTime();
  out.nFormat = nFormat;
  return true;
}

}  // namespace

bool ParseValueText(const char16_t* pwszText, int nCellFormatType, int nParseType,
                    TParsedText& out) {
  out = TParsedText();
  const TSymbols sym = GetSymbols(nParseType);
  if (ParseNumberSyntax(pwszText, sym, nCellFormatType, out)) return true;

  // The remaining forms are matched on the text without surrounding blanks.
  const char16_t* p = SkipBlanks(pwszText);
  const char16_t* pEnd = p;
  while (*pEnd != 0) ++pEnd;
  while (pEnd > p && IsBlank(pEnd[-1])) --pEnd;
  const int nLen = static_cast<int>(pEnd - p);
  if (nLen == 0) return false;

  const bool bEnglish = IsEnglishParseType(nParseType);
  for (int bValue = 1; bValue >= 0; --bValue) {
    if (EqualsNoCaseW(p, nLen, TValue::GetLogicalText(bValue != 0, bEnglish))) {
      out.vt = TValue::vtLogical;
      out.nInt = bValue;
      return true;
    }
  }
  if (*p == u'#') {
    const TValue::TError err = TValue::GetErrorToken(p, nLen);
    if (err != TValue::errNone) {
      out.vt = TValue::vtError;
      out.nInt = err;
      return true;
    }
    return false;
  }
  if (ParseFraction(p, pEnd, sym, nCellFormatType, out)) return true;
  out = TParsedText();
  return ParseDateTime(pwszText, nParseType, out);
}

const char16_t* TValue::GetLogicalText(bool bValue, bool bEnglish) {
  if (bEnglish) return bValue ? u"TRUE" : u"FALSE";
  const std::u16string& strHost = HostLogicalText(bValue);
  if (!strHost.empty()) return strHost.c_str();
  if (const TLogicalTexts* pTexts = FindLocaleLogicalTexts())
    return bValue ? pTexts->pwszTrue : pTexts->pwszFalse;
  return bValue ? u"TRUE" : u"FALSE";
}

void TValue::SetLocalLogicalTexts(const char16_t* pwszTrue, const char16_t* pwszFalse) {
  if (pwszTrue == nullptr || pwszFalse == nullptr || *pwszTrue == 0 || *pwszFalse == 0) {
    HostLogicalText(true).clear();
    HostLogicalText(false).clear();
    return;
  }
  HostLogicalText(true) = pwszTrue;
  HostLogicalText(false) = pwszFalse;
}
