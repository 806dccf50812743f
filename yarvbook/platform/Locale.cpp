// Locale settings read from ICU's CLDR data. CLDR and the Windows locale tables
// agree on separators and names; where they differ in shape (CLDR's short date
// writes two-digit years, Windows writes four) the settings follow what
// spreadsheet users see, as the comments below say case by case.
#include "platform/Locale.h"

#include <unicode/datefmt.h>
#include <unicode/dcfmtsym.h>
#include <unicode/decimfmt.h>
#include <unicode/dtfmtsym.h>
#include <unicode/dtptngen.h>
#include <unicode/locid.h>
#include <unicode/numfmt.h>
#include <unicode/smpdtfmt.h>
#include <unicode/uloc.h>

#include <algorithm>
#include <cstring>
#include <iterator>
#include <memory>
#include <string>
#include <string_view>

namespace {

std::u16string ToU16(const icu::UnicodeString& str) {
  return std::u16string(str.getBuffer(), static_cast<std::size_t>(str.length()));
}

// Reads a literal run of a date pattern from i: quoted text loses its quotes and ''
// stands for one quote. Stops at the next pattern letter.
std::u16string PatternLiteral(const std::u16string& strPattern, std::size_t& i) {
  std::u16string strText;
  while (i < strPattern.size()) {
    const char16_t c = strPattern[i];
    if (c == u'\'') {
      if (i + 1 < strPattern.size() && strPattern[i + 1] == u'\'') {
        strText += u'\'';
        i += 2;
        continue;
      }
      ++i;
      while (i < strPattern.size() && strPattern[i] != u'\'') strText += strPattern[i++];
      if (i < strPattern.size()) ++i;
      continue;
    }
    if ((c >= u'a' && c <= u'z') || (c >= u'A' && c <= u'Z')) break;
    strText += c;
    ++i;
  }
  return strText;
}

std::u16string Trim(const std::u16string& str) {
  // Spaces and the direction marks that right-to-left patterns put around literals.
  auto IsBlank = [](char16_t c) {
    return c == u' ' || c == 0x00A0 || c == 0x202F || c == 0x2009 || c == 0x200E || c == 0x200F ||
           c == 0x061C;
  };
  std::size_t nFirst = 0, nLast = str.size();
  while (nFirst < nLast && IsBlank(str[nFirst])) ++nFirst;
  while (nLast > nFirst && IsBlank(str[nLast - 1])) --nLast;
  return str.substr(nFirst, nLast - nFirst);
}

struct TPattern {
  struct TItem {
    char16_t cField;
    int nCount;
    std::u16string strText;
  };
  TItem aItems[32];
  int nItems = 0;
};

// Splits an ICU date pattern into fields and literal runs, at most 32 items (short
// date and time patterns have fewer than ten).
TPattern ParsePattern(const std::u16string& strPattern) {
  TPattern pattern;
  std::size_t i = 0;
  while (i < strPattern.size() && pattern.nItems < 32) {
    const char16_t c = strPattern[i];
    TPattern::TItem& item = pattern.aItems[pattern.nItems++];
    if ((c >= u'a' && c <= u'z') || (c >= u'A' && c <= u'Z')) {
      item.cField = c;
      item.nCount = 0;
      while (i < strPattern.size() && strPattern[i] == c) {
        ++item.nCount;
        ++i;
      }
    } else {
      item.cField = 0;
      item.nCount = 0;
      item.strText = PatternLiteral(strPattern, i);
    }
  }
  return pattern;
}

const TPattern::TItem* FindField(const TPattern& pattern, std::u16string_view fields) {
  for (int i = 0; i < pattern.nItems; ++i)
    if (pattern.aItems[i].cField != 0 && fields.find(pattern.aItems[i].cField) != fields.npos)
      return &pattern.aItems[i];
  return nullptr;
}

int FieldIndex(const TPattern& pattern, std::u16string_view fields) {
  const TPattern::TItem* pItem = FindField(pattern, fields);
  return pItem == nullptr ? -1 : static_cast<int>(pItem - pattern.aItems);
}

// The first literal between two fields, trimmed; empty when the fields touch.
std::u16string SeparatorAfter(const TPattern& pattern, int nField) {
  if (nField < 0) return {};
  for (int i = nField + 1; i < pattern.nItems; ++i) {
    if (pattern.aItems[i].cField != 0) break;
    std::u16string strSep = Trim(pattern.aItems[i].strText);
    if (!strSep.empty()) return strSep;
  }
  return {};
}

std::u16string GetPattern(icu::DateFormat* pFormat) {
  icu::UnicodeString strPattern;
  if (auto* pSimple = dynamic_cast<icu::SimpleDateFormat*>(pFormat)) pSimple->toPattern(strPattern);
  return ToU16(strPattern);
}

void ReadDateSettings(const icu::Locale& locale, TLocaleSettings& s) {
  std::unique_ptr<icu::DateFormat> pDate(
      icu::DateFormat::createDateInstance(icu::DateFormat::kShort, locale));
  const TPattern date = ParsePattern(pDate ? GetPattern(pDate.get()) : u"M/d/y");
  const int nYear = FieldIndex(date, u"yYu");
  const int nMonth = FieldIndex(date, u"ML");
  const int nDay = FieldIndex(date, u"d");
  s.nDateOrder = TLocaleSettings::doMonthDayYear;
  if (nYear >= 0 && nMonth >= 0 && nDay >= 0) {
    if (nYear < nMonth && nMonth < nDay)
      s.nDateOrder = TLocaleSettings::doYearMonthDay;
    else if (nDay < nMonth)
      s.nDateOrder = TLocaleSettings::doDayMonthYear;
  }
  const int nFirst = nYear < 0 ? nMonth : (nMonth < 0 ? nYear : std::min(nYear, nMonth));
  s.strDateSep = SeparatorAfter(date, std::min(nFirst, nDay < 0 ? nFirst : nDay));
  if (s.strDateSep.empty()) s.strDateSep = u"/";
  s.bDayLeadingZero = nDay >= 0 && date.aItems[nDay].nCount >= 2;
  s.bMonthLeadingZero = nMonth >= 0 && date.aItems[nMonth].nCount >= 2;

  // CLDR's short dates often write two-digit years where spreadsheets show four; the
  // numeric year-month-day skeleton tells whether the locale writes years in full.
  UErrorCode status = U_ZERO_ERROR;
  std::unique_ptr<icu::DateTimePatternGenerator> pGenerator(
      icu::DateTimePatternGenerator::createInstance(locale, status));
  s.bFourDigitYear = true;
  if (U_SUCCESS(status) && pGenerator) {
    const TPattern numeric = ParsePattern(ToU16(pGenerator->getBestPattern(u"yMd", status)));
    const TPattern::TItem* pYear = FindField(numeric, u"yYu");
    if (U_SUCCESS(status) && pYear != nullptr) s.bFourDigitYear = pYear->nCount != 2;
  }

  std::unique_ptr<icu::DateFormat> pTime(
      icu::DateFormat::createTimeInstance(icu::DateFormat::kShort, locale));
  const TPattern time = ParsePattern(pTime ? GetPattern(pTime.get()) : u"h:mm a");
  const int nHour = FieldIndex(time, u"hHkK");
  const int nAmPm = FieldIndex(time, u"abB");
  s.b24Hour = nAmPm < 0;
  s.bHourLeadingZero = nHour >= 0 && time.aItems[nHour].nCount >= 2;
  s.bAmPmFirst = nAmPm >= 0 && nHour >= 0 && nAmPm < nHour;
  s.strTimeSep = SeparatorAfter(time, nHour);
  if (s.strTimeSep.empty()) s.strTimeSep = u":";
}

void ReadNames(const icu::Locale& locale, TLocaleSettings& s) {
  UErrorCode status = U_ZERO_ERROR;
  icu::DateFormatSymbols symbols(locale, status);
  if (U_FAILURE(status)) return;
  int32_t nCount = 0;
  const icu::UnicodeString* pNames = symbols.getAmPmStrings(nCount);
  if (nCount >= 2) {
    s.strAm = ToU16(pNames[0]);
    s.strPm = ToU16(pNames[1]);
  }
  pNames = symbols.getMonths(nCount, icu::DateFormatSymbols::FORMAT, icu::DateFormatSymbols::WIDE);
  for (int i = 0; i < 12 && i < nCount; ++i) s.astrMonthNames[i] = ToU16(pNames[i]);
  pNames = symbols.getMonths(nCount, icu::DateFormatSymbols::FORMAT,
                             icu::DateFormatSymbols::ABBREVIATED);
  for (int i = 0; i < 12 && i < nCount; ++i) s.astrMonthAbbrev[i] = ToU16(pNames[i]);
  // ICU numbers weekdays from 1 = Sunday; slot 0 is empty.
  pNames =
      symbols.getWeekdays(nCount, icu::DateFormatSymbols::FORMAT, icu::DateFormatSymbols::WIDE);
  for (int i = 0; i < 7 && i + 1 < nCount; ++i) s.astrDayNames[i] = ToU16(pNames[i + 1]);
  pNames = symbols.getWeekdays(nCount, icu::DateFormatSymbols::FORMAT,
                               icu::DateFormatSymbols::ABBREVIATED);
  for (int i = 0; i < 7 && i + 1 < nCount; ++i) s.astrDayAbbrev[i] = ToU16(pNames[i + 1]);
}

// The Windows negative currency forms, written with '$' for the symbol, 'n' for the
// number and ' ' for any space; the index is the Windows number.
constexpr std::u16string_view kNegCurrencyForms[] = {
    u"($n)", u"-$n",  u"$-n",  u"$n-",  u"(n$)", u"-n$",  u"n-$",   u"n$-",
    u"-n $", u"-$ n", u"n $-", u"$ n-", u"$ -n", u"n- $", u"($ n)", u"(n $)"};

// Reduces one ICU number subpattern to the shape letters above.
std::u16string CurrencyShape(std::u16string_view pattern, bool bNegative) {
  std::u16string strShape;
  bool bNumber = false;
  for (const char16_t c : pattern) {
    if (c == u'#' || c == u'0' || c == u',' || c == u'.' || (c >= u'1' && c <= u'9')) {
      if (!bNumber) strShape += u'n';
      bNumber = true;
      continue;
    }
    if (c == 0x00A4)
      strShape += u'$';
    else if (c == u' ' || c == 0x00A0 || c == 0x202F)
      strShape += u' ';
    else if (c == u'-' || c == u'(' || c == u')')
      strShape += c;
  }
  // Without a negative subpattern ICU puts the minus sign before the positive form.
  if (bNegative && strShape.find_first_of(u"-(") == std::u16string::npos) strShape.insert(0, u"-");
  return strShape;
}

void ReadCurrency(const icu::Locale& locale, TLocaleSettings& s) {
  UErrorCode status = U_ZERO_ERROR;
  std::unique_ptr<icu::NumberFormat> pFormat(
      icu::NumberFormat::createCurrencyInstance(locale, status));
  auto* pDecimal = dynamic_cast<icu::DecimalFormat*>(pFormat.get());
  if (U_FAILURE(status) || pDecimal == nullptr) return;
  icu::UnicodeString strIcuPattern;
  pDecimal->toPattern(strIcuPattern);
  const std::u16string strPattern = ToU16(strIcuPattern);
  const std::size_t nSemicolon = strPattern.find(u';');
  const std::u16string_view positive = std::u16string_view(strPattern).substr(0, nSemicolon);
  const std::u16string_view negative = nSemicolon == std::u16string::npos
                                           ? positive
                                           : std::u16string_view(strPattern).substr(nSemicolon + 1);
  const std::u16string strPositive = CurrencyShape(positive, false);
  if (strPositive == u"n$")
    s.nCurrencyPos = 1;
  else if (strPositive == u"$ n")
    s.nCurrencyPos = 2;
  else if (strPositive == u"n $")
    s.nCurrencyPos = 3;
  else
    s.nCurrencyPos = 0;
  // Where the locale writes no negative form of its own, spreadsheet currency formats
  // show negatives the accounting way: "($1)" in en-US, which built-in formats 23-26
  // rely on to stay aliases of 5-8; "-1 €" in de-DE.
  std::u16string strNegative = CurrencyShape(negative, true);
  std::unique_ptr<icu::NumberFormat> pAccounting(
      icu::NumberFormat::createInstance(locale, UNUM_CURRENCY_ACCOUNTING, status));
  if (auto* pAcc = dynamic_cast<icu::DecimalFormat*>(pAccounting.get());
      nSemicolon == std::u16string::npos && U_SUCCESS(status) && pAcc != nullptr) {
    icu::UnicodeString strAccIcu;
    pAcc->toPattern(strAccIcu);
    const std::u16string strAcc = ToU16(strAccIcu);
    const std::size_t nAccSemicolon = strAcc.find(u';');
    strNegative = CurrencyShape(nAccSemicolon == std::u16string::npos
                                    ? std::u16string_view(strAcc)
                                    : std::u16string_view(strAcc).substr(nAccSemicolon + 1),
                                true);
  }
  s.nNegCurrency = s.nCurrencyPos == 0 ? 1 : s.nCurrencyPos == 1 ? 5 : s.nCurrencyPos == 2 ? 9 : 8;
  for (int i = 0; i < static_cast<int>(std::size(kNegCurrencyForms)); ++i)
    if (strNegative == kNegCurrencyForms[i]) s.nNegCurrency = i;
  s.nCurrencyDigits = pDecimal->getMaximumFractionDigits();
}

struct TCodePageRule {
  const char* pszLanguage;
  unsigned nCodePage;
};

// ANSI code pages by language; languages not listed use 1252.
constexpr TCodePageRule kCodePages[] = {
    {"ja", 932},  {"ko", 949},  {"th", 874},  {"vi", 1258}, {"el", 1253}, {"tr", 1254},
    {"az", 1254}, {"uz", 1254}, {"he", 1255}, {"yi", 1255}, {"ar", 1256}, {"fa", 1256},
    {"ur", 1256}, {"ps", 1256}, {"lt", 1257}, {"lv", 1257}, {"et", 1257}, {"cs", 1250},
    {"pl", 1250}, {"hu", 1250}, {"sk", 1250}, {"sl", 1250}, {"hr", 1250}, {"ro", 1250},
    {"sq", 1250}, {"bs", 1250}, {"ru", 1251}, {"uk", 1251}, {"be", 1251}, {"bg", 1251},
    {"mk", 1251}, {"kk", 1251}, {"ky", 1251}, {"tt", 1251}, {"mn", 1251}, {"tg", 1251},
    {"sr", 1251},
};

unsigned CodePageForLocale(const icu::Locale& locale) {
  const char* pszLanguage = locale.getLanguage();
  if (std::strcmp(pszLanguage, "zh") == 0) {
    // Traditional Chinese by script, or by region when the tag names no script.
    UErrorCode status = U_ZERO_ERROR;
    icu::Locale full(locale);
    full.addLikelySubtags(status);
    return std::strcmp(full.getScript(), "Hant") == 0 ? 950 : 936;
  }
  if (std::strcmp(pszLanguage, "sr") == 0 || std::strcmp(pszLanguage, "bs") == 0 ||
      std::strcmp(pszLanguage, "uz") == 0 || std::strcmp(pszLanguage, "az") == 0) {
    UErrorCode status = U_ZERO_ERROR;
    icu::Locale full(locale);
    full.addLikelySubtags(status);
    if (std::strcmp(full.getScript(), "Cyrl") == 0) return 1251;
    if (std::strcmp(pszLanguage, "sr") == 0 || std::strcmp(pszLanguage, "bs") == 0) return 1250;
  }
  for (const TCodePageRule& rule : kCodePages)
    if (std::strcmp(pszLanguage, rule.pszLanguage) == 0) return rule.nCodePage;
  return 1252;
}

// Windows and spreadsheets write the narrow no-break space that CLDR uses for
// grouping as a plain no-break space.
char16_t SeparatorChar(const icu::UnicodeString& str, char16_t cDefault) {
  if (str.length() != 1) return cDefault;
  const char16_t c = str.charAt(0);
  return c == 0x202F ? 0x00A0 : c;
}

bool BuildSettings(const char* pszName, const icu::Locale& locale, TLocaleSettings& s) {
  // Spreadsheets write numbers with ASCII digits in every locale, so separators and
  // currency patterns are those of the Latin numbering system (Arabic locales would
  // otherwise give U+066B as the decimal separator).
  UErrorCode status = U_ZERO_ERROR;
  icu::Locale latin(locale);
  latin.setKeywordValue("numbers", "latn", status);
  if (U_FAILURE(status)) latin = locale;
  status = U_ZERO_ERROR;
  icu::DecimalFormatSymbols symbols(latin, status);
  if (U_FAILURE(status)) return false;
  s.strName = pszName;
  s.strIcuName = locale.getName();
  s.nLcid = static_cast<unsigned short>(uloc_getLCID(locale.getName()));
  s.nCodePage = CodePageForLocale(locale);
  s.cDecimal =
      SeparatorChar(symbols.getSymbol(icu::DecimalFormatSymbols::kDecimalSeparatorSymbol), u'.');
  s.cThousands =
      SeparatorChar(symbols.getSymbol(icu::DecimalFormatSymbols::kGroupingSeparatorSymbol), u',');
  s.cList = s.cDecimal == u',' ? u';' : u',';
  s.strCurrency = ToU16(symbols.getSymbol(icu::DecimalFormatSymbols::kCurrencySymbol));
  s.nCurrencyPos = 0;
  s.nNegCurrency = 1;
  s.nCurrencyDigits = 2;
  s.strAm = u"AM";
  s.strPm = u"PM";
  ReadDateSettings(locale, s);
  ReadNames(locale, s);
  ReadCurrency(latin, s);
  return true;
}

// ICU falls back to root for languages it has no data for; those are refused.
bool IsKnownLanguage(const icu::Locale& locale) {
  const char* pszLanguage = locale.getLanguage();
  if (pszLanguage[0] == 0) return false;
  int32_t nCount = 0;
  const icu::Locale* pAvailable = icu::Locale::getAvailableLocales(nCount);
  for (int32_t i = 0; i < nCount; ++i)
    if (std::strcmp(pAvailable[i].getLanguage(), pszLanguage) == 0) return true;
  return false;
}

bool ToIcuLocale(const char* pszName, icu::Locale& locale) {
  if (pszName == nullptr || pszName[0] == 0) return false;
  if (std::strchr(pszName, '-') != nullptr) {
    UErrorCode status = U_ZERO_ERROR;
    char szId[ULOC_FULLNAME_CAPACITY];
    int32_t nParsed = 0;
    uloc_forLanguageTag(pszName, szId, sizeof(szId), &nParsed, &status);
    if (U_FAILURE(status) || status == U_STRING_NOT_TERMINATED_WARNING ||
        nParsed != static_cast<int32_t>(std::strlen(pszName)))
      return false;
    locale = icu::Locale(szId);
  } else {
    locale = icu::Locale(pszName);
  }
  return !locale.isBogus() && IsKnownLanguage(locale);
}

struct TLocaleState {
  std::unique_ptr<TLocaleSettings> pSettings;
  unsigned nGeneration = 0;
};

TLocaleState& State() {
  static TLocaleState s_State;
  if (!s_State.pSettings) {
    s_State.pSettings = std::make_unique<TLocaleSettings>();
    BuildSettings("en-US", icu::Locale("en", "US"), *s_State.pSettings);
  }
  return s_State;
}

}  // namespace

const TLocaleSettings& GetLocaleSettings() { return *State().pSettings; }

bool SetLocale(const char* pszName) {
  icu::Locale locale;
  if (!ToIcuLocale(pszName, locale)) return false;
  auto pSettings = std::make_unique<TLocaleSettings>();
  if (!BuildSettings(pszName, locale, *pSettings)) return false;
  TLocaleState& state = State();
  state.pSettings = std::move(pSettings);
  ++state.nGeneration;
  return true;
}

unsigned GetLocaleGeneration() { return State().nGeneration; }
