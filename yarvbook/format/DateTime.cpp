#include "format/DateTime.h"

#include <cmath>
#include <cstring>
#include <iterator>
#include <string>
#include <string_view>
#include <utility>

#include "platform/Clock.h"
#include "platform/Locale.h"
#include "platform/ResourceIds.h"
#include "platform/Resources.h"
#include "platform/TextServices.h"

namespace {

// Entry 0 is unused so that a month indexes directly.
constexpr short kDaysInMonth[13] = {0, 31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
// Days of a common year before month m + 1 (index m = 0..12).
constexpr short kDaysBeforeMonth[13] = {0, 31, 59, 90, 120, 151, 181, 212, 243, 273, 304, 334, 365};
// Half a millisecond in days: serials are read to the nearest millisecond.
constexpr double kHalfMillisecond = 5.787037037037037e-09;
constexpr double kMillisecondsPerDay = 86400000.0;
// Millisecond steps for showing 0, 1 and 2 decimals of a second.
constexpr short kRoundSteps[3] = {1000, 100, 10};
// 1 January 10000: the first serial past the calendar.
constexpr double kFirstInvalidSerial = 2958466.0;
// The day count below of 0 January 1900.
constexpr long long kDayCountOfSerialZero = 693956;

// The serial of a date, with no range check: the day count of year, month (1..12)
// and day, less the count of 0 January 1900. The century terms count the leap days
// of the Gregorian rule, and the term for years after 1900 puts in the leap day
// that 1900 is given. A day of 0 or past the month's end counts on.
long long SerialFromFields(long long nYear, int nMonth, long long nDay) {
  const long long c = nYear / 100;
  const long long r = nYear % 100;
  long long nDays = 36524 * c + (c - 16) / 4 + (nYear > 1900 ? 1 : 0) -
                    (r == 0 && c % 4 == 0 ? 1 : 0) + 365 * r + (r - 1) / 4 +
                    kDaysBeforeMonth[nMonth - 1] +
                    (CDateTime::IsLeapYear(static_cast<int>(nYear)) && nMonth > 2 ? 1 : 0) + nDay;
  return nDays - kDayCountOfSerialZero;
}

// Milliseconds into the day of a valid serial, rounded to the nearest.
long long MillisecondsOfDay(double rSerial) {
  const double r = rSerial + kHalfMillisecond;
  return static_cast<long long>((r - std::floor(r)) * kMillisecondsPerDay);
}

short Hour12(int nHour) {
  const int nOnClock = nHour % 24;
  if (nOnClock == 0) return 12;
  return static_cast<short>(nOnClock > 12 ? nOnClock - 12 : nOnClock);
}

long long FloorDiv(long long a, long long b) {
  const long long q = a / b;
  return (a % b != 0 && (a < 0) != (b < 0)) ? q - 1 : q;
}

// ---------------------------------------------------------------------------
// Eras and locale extras

struct TEra {
  short nYear, nMonth, nDay;  // first day of the era
  const char16_t* pwszLongName;
  const char16_t* pwszShortName;
};

constexpr TEra kJapaneseEras[] = {
    {1868, 9, 8, u"明治", u"M"}, {1912, 7, 30, u"大正", u"T"}, {1926, 12, 25, u"昭和", u"S"},
    {1989, 1, 8, u"平成", u"H"}, {2019, 5, 1, u"令和", u"R"},
};
constexpr TEra kRepublicOfChinaEras[] = {
    {1912, 1, 1, u"中華民國", u"民國"},
};

// What the locale data lacks: the CJK characters that close a year, month or day
// (and an hour, minute or second) when dates are written with them, and the eras.
struct TLocaleExtras {
  const char* pszLanguage;
  const char* pszRegion;  // null: any region
  const char16_t* pwszDateMarks;
  const char16_t* pwszTimeMarks;
  const TEra* pEras;
  int nEras;
};

constexpr TLocaleExtras kLocaleExtras[] = {
    {"ja", nullptr, u"年月日", u"時分秒", kJapaneseEras, std::size(kJapaneseEras)},
    {"zh", "TW", u"年月日", u"時分秒", kRepublicOfChinaEras, std::size(kRepublicOfChinaEras)},
    {"zh", nullptr, u"年月日", u"时分秒", nullptr, 0},
    {"ko", nullptr, u"년월일.", u"시분초", nullptr, 0},
};

// The extras of a BCP 47 or ICU locale name ("ja-JP", "zh_TW", "zh-Hant-TW"), or null.
const TLocaleExtras* FindLocaleExtras(std::string_view strName) {
  const size_t nLanguageEnd = strName.find_first_of("-_");
  const std::string_view strLanguage = strName.substr(0, nLanguageEnd);
  for (const TLocaleExtras& extras : kLocaleExtras) {
    if (strLanguage != extras.pszLanguage) continue;
    if (extras.pszRegion == nullptr) return &extras;
    if (nLanguageEnd == std::string_view::npos) continue;
    if (strName.substr(nLanguageEnd).find(extras.pszRegion) != std::string_view::npos)
      return &extras;
  }
  return nullptr;
}

const TLocaleExtras* CurrentLocaleExtras() { return FindLocaleExtras(GetLocaleSettings().strName); }

bool Contains(const char16_t* pwsz, char16_t c) {
  for (; *pwsz != 0; ++pwsz) {
    if (*pwsz == c) return true;
  }
  return false;
}

// ---------------------------------------------------------------------------
// Reading text

constexpr const char16_t* kEnglishMonthAbbrevs[12] = {
    u"Jan", u"Feb", u"Mar", u"Apr", u"May", u"Jun", u"Jul", u"Aug", u"Sep", u"Oct", u"Nov", u"Dec"};
constexpr const char16_t* kEnglishMonthNames[12] = {
    u"January", u"February", u"March",     u"April",   u"May",      u"June",
    u"July",    u"August",   u"September", u"October", u"November", u"December"};
// The longer abbreviations some writers use.
constexpr const char16_t* kEnglishMonthAbbrevs2[12] = {u"Jan",  u"Feb",  u"Mar",  u"Apr",
                                                       u"May",  u"June", u"July", u"Aug",
                                                       u"Sept", u"Oct",  u"Nov",  u"Dec"};

// Element codes of the text patterns. Keep in step with kPatterns.
enum EElement : unsigned char {
  elMonthNumber = 0,
  elMonthAbbrev = 1,
  elMonthName = 2,
  elMonthAbbrev2 = 3,
  elDay = 4,
  elYear = 5,
  elElapsedHours = 6,
  elHours = 7,
  elElapsedMinutes = 8,
  elMinutes = 9,
  elElapsedSeconds = 10,
  elSeconds = 11,
  elAmPm = 12,
  elDateSep = 13,
  elTimeSep = 14,
  elComma = 15,
  elEnd = 16,
};

constexpr int kMaxElements = 13;

struct TDatePattern {
  unsigned char nFormat;  // built-in number format proposed for the text; 0 for none
  unsigned char aElements[kMaxElements];
};

// Tried in this order; the first that the whole text satisfies wins. Patterns 0, 11-14
// and 17 are written month first and reordered for the locale before use.
constexpr TDatePattern kPatterns[] = {
    {14, {elMonthNumber, elDateSep, elDay, elDateSep, elYear, elEnd}},
    {15, {elDay, elDateSep, elMonthAbbrev, elDateSep, elYear, elEnd}},
    {15, {elDay, elDateSep, elMonthName, elDateSep, elYear, elEnd}},
    {16, {elDay, elDateSep, elMonthAbbrev, elEnd}},
    {16, {elDay, elDateSep, elMonthName, elEnd}},
    {17, {elMonthName, elDateSep, elYear, elEnd}},
    {17, {elMonthAbbrev, elDateSep, elYear, elEnd}},
    {18, {elHours, elTimeSep, elMinutes, elAmPm, elEnd}},
    {19, {elHours, elTimeSep, elMinutes, elTimeSep, elSeconds, elAmPm, elEnd}},
    {20, {elHours, elTimeSep, elMinutes, elEnd}},
    {21, {elHours, elTimeSep, elMinutes, elTimeSep, elSeconds, elEnd}},
    {22,
     {elMonthNumber, elDateSep, elDay, elDateSep, elYear, elHours, elTimeSep, elMinutes, elEnd}},
    {22,
     {elMonthNumber, elDateSep, elDay, elDateSep, elYear, elHours, elTimeSep, elMinutes, elTimeSep,
      elSeconds, elEnd}},
    {22,
     {elMonthNumber, elDateSep, elDay, elDateSep, elYear, elHours, elTimeSep, elMinutes, elAmPm,
      elEnd}},
    {22,
     {elMonthNumber, elDateSep, elDay, elDateSep, elYear, elHours, elTimeSep, elMinutes, elTimeSep,
      elSeconds, elAmPm, elEnd}},
    {15, {elMonthName, elDay, elComma, elYear, elEnd}},
    {15, {elMonthAbbrev, elDay, elComma, elYear, elEnd}},
    {58, {elMonthNumber, elDateSep, elDay, elEnd}},
    {18, {elHours, elAmPm, elEnd}},
    {46, {elElapsedHours, elTimeSep, elMinutes, elEnd}},
    {46, {elElapsedHours, elTimeSep, elMinutes, elTimeSep, elSeconds, elEnd}},
    {0, {elHours, elTimeSep, elElapsedMinutes, elEnd}},
    {0, {elHours, elTimeSep, elMinutes, elTimeSep, elElapsedSeconds, elEnd}},
    {47, {elElapsedMinutes, elTimeSep, elSeconds, elEnd}},
    {47, {elMinutes, elTimeSep, elElapsedSeconds, elEnd}},
};
static_assert(std::size(kPatterns) == 25, "25 text patterns");

// How the text is to be read: English conventions, or the current locale's.
struct TConventions {
  bool bEnglish = true;
  TLocaleSettings::EDateOrder nDateOrder = TLocaleSettings::doMonthDayYear;
  bool bAmPmFirst = false;
  char16_t cDecimal = u'.';
  std::u16string strDateSep;  // the locale's separators without blanks; empty in English
  std::u16string strTimeSep;
  const TLocaleSettings* pLocale = nullptr;  // null in English
  const TLocaleExtras* pExtras = nullptr;
  const char16_t* apwszAm[4] = {};  // null entries are skipped
  const char16_t* apwszPm[4] = {};
};

// What a pattern read; -1 where the text gave nothing.
struct TReadFields {
  int nMonth = -1, nDay = -1, nYear = -1;
  int nHour = -1, nMinute = -1, nSecond = -1, nMillisecond = 0;
  int nAmPm = -1;  // 0 AM, 1 PM
};

bool IsBlank(char16_t c) {
  return c == u' ' || c == u'\t' || c == 0x00A0 || c == 0x2009 || c == 0x202F || c == 0x3000;
}

const char16_t* SkipBlanks(const char16_t* p) {
  while (IsBlank(*p)) ++p;
  return p;
}

// Full-width digits and punctuation read as their ASCII forms.
char16_t Fold(char16_t c) { return c < 0x80 ? c : FullToHalfWidthChar(c); }

std::u16string WithoutBlanks(const std::u16string& str) {
  std::u16string strOut;
  for (char16_t c : str) {
    if (!IsBlank(c)) strOut += c;
  }
  return strOut;
}

// Whether p starts with the nLen units of pWord, ignoring case, and the word is not
// followed by a letter. Stops at the first difference, so it never reads past the
// text's terminator.
bool MatchWord(const char16_t* p, const char16_t* pWord, size_t nLen) {
  if (nLen == 0) return false;
  for (size_t i = 0; i < nLen; ++i) {
    if (ToUpperChar(Fold(p[i])) != ToUpperChar(pWord[i])) return false;
  }
  return !IsLetterChar(p[nLen]);
}

// Reads 1 to 9 digits. nDigits receives how many there were.
bool ReadNumber(const char16_t*& p, int& nValue, int& nDigits) {
  nValue = 0;
  nDigits = 0;
  for (char16_t c = Fold(*p); c >= u'0' && c <= u'9'; c = Fold(*p)) {
    if (++nDigits > 9) return false;
    nValue = nValue * 10 + (c - u'0');
    ++p;
  }
  return nDigits > 0;
}

// Reads a month name from one of the lists; the locale's abbreviations are compared
// without a closing '.', which the separator after them then takes.
bool ReadMonthName(const char16_t*& p, EElement nElement, const TConventions& conv, int& nMonth) {
  const char16_t* const* apwszEnglish = nElement == elMonthName     ? kEnglishMonthNames
                                        : nElement == elMonthAbbrev ? kEnglishMonthAbbrevs
                                                                    : kEnglishMonthAbbrevs2;
  size_t nBest = 0;
  for (int i = 0; i < 12; ++i) {
    const size_t nLen = std::char_traits<char16_t>::length(apwszEnglish[i]);
    if (nLen > nBest && MatchWord(p, apwszEnglish[i], nLen)) {
      nBest = nLen;
      nMonth = i + 1;
    }
    if (conv.pLocale == nullptr || nElement == elMonthAbbrev2) continue;
    const std::u16string& strLocal = nElement == elMonthName ? conv.pLocale->astrMonthNames[i]
                                                             : conv.pLocale->astrMonthAbbrev[i];
    size_t nLocalLen = strLocal.size();
    if (nLocalLen > 1 && strLocal[nLocalLen - 1] == u'.') --nLocalLen;
    if (nLocalLen > nBest && MatchWord(p, strLocal.data(), nLocalLen)) {
      nBest = nLocalLen;
      nMonth = i + 1;
    }
  }
  p += nBest;
  return nBest > 0;
}

bool ReadAmPm(const char16_t*& p, const TConventions& conv, int& nAmPm) {
  size_t nBest = 0;
  for (int i = 0; i < 4; ++i) {
    for (int nPm = 0; nPm < 2; ++nPm) {
      const char16_t* pwsz = nPm ? conv.apwszPm[i] : conv.apwszAm[i];
      if (pwsz == nullptr) continue;
      const size_t nLen = std::char_traits<char16_t>::length(pwsz);
      if (nLen > nBest && MatchWord(p, pwsz, nLen)) {
        nBest = nLen;
        nAmPm = nPm;
      }
    }
  }
  p += nBest;
  return nBest > 0;
}

// Seconds, with up to three decimals after '.' or the locale's decimal separator.
bool ReadSeconds(const char16_t*& p, const TConventions& conv, int& nSecond, int& nMillisecond) {
  int nDigits;
  if (!ReadNumber(p, nSecond, nDigits)) return false;
  nMillisecond = 0;
  const char16_t c = Fold(*p);
  if (c != u'.' && c != conv.cDecimal) return true;
  const char16_t cNext = Fold(p[1]);
  if (cNext < u'0' || cNext > u'9') return true;  // not a fraction: the point is left for the end
  ++p;
  int nFraction;
  if (!ReadNumber(p, nFraction, nDigits) || nDigits > 3) return false;
  static constexpr int kScale[4] = {1, 100, 10, 1};
  nMillisecond = nFraction * kScale[nDigits];
  return true;
}

bool StartsWith(const char16_t* p, const std::u16string& str) {
  if (str.empty()) return false;
  for (size_t i = 0; i < str.size(); ++i) {
    if (Fold(p[i]) != Fold(str[i])) return false;
  }
  return true;
}

// The locale's own punctuation, where it is not a universal separator, may also close
// the text ("1.2.2000." in German), and so may the CJK marks of its extras.
bool IsSeparatorOf(const TLocaleSettings& locale, const TLocaleExtras* pExtras, char16_t c,
                   bool bTime) {
  if (c == 0 || IsBlank(c)) return false;
  const std::u16string& strSep = bTime ? locale.strTimeSep : locale.strDateSep;
  if (c != u'/' && c != u'-' && c != u':' && strSep.find(c) != std::u16string::npos) return true;
  return pExtras != nullptr && Contains(bTime ? pExtras->pwszTimeMarks : pExtras->pwszDateMarks, c);
}

bool IsLocaleSeparator(const TConventions& conv, char16_t c, bool bTime) {
  return conv.pLocale != nullptr && IsSeparatorOf(*conv.pLocale, conv.pExtras, c, bTime);
}

bool IsMonthNameElement(unsigned char nElement) {
  return nElement == elMonthAbbrev || nElement == elMonthName || nElement == elMonthAbbrev2;
}

// Matches the whole text against one pattern. Blanks may stand before an element
// except right after a time separator; a date separator may be blanks alone only
// next to a month name ("5 Jan 2000"), so that "1 2 2000" is not a date.
bool MatchPattern(const unsigned char* aElements, const char16_t* p, const TConventions& conv,
                  TReadFields& fields) {
  fields = TReadFields();
  int nDigits;
  for (int i = 0; i < kMaxElements; ++i) {
    const unsigned char nElement = aElements[i];
    const bool bAfterTimeSep = i > 0 && aElements[i - 1] == elTimeSep;
    if (nElement <= elAmPm && !bAfterTimeSep) p = SkipBlanks(p);
    switch (nElement) {
      case elMonthNumber:
        if (!ReadNumber(p, fields.nMonth, nDigits) || fields.nMonth < 1 || fields.nMonth > 12)
          return false;
        break;
      case elMonthAbbrev:
      case elMonthName:
      case elMonthAbbrev2:
        if (!ReadMonthName(p, static_cast<EElement>(nElement), conv, fields.nMonth)) return false;
        break;
      case elDay:
        if (!ReadNumber(p, fields.nDay, nDigits) || fields.nDay < 1 || fields.nDay > 31)
          return false;
        break;
      case elYear:
        if (!ReadNumber(p, fields.nYear, nDigits)) return false;
        if (nDigits <= 2) fields.nYear = CDateTime::FixYear(fields.nYear);
        if (fields.nYear < 1900 || fields.nYear > 9999) return false;
        break;
      case elElapsedHours:
      case elHours:
        if (!ReadNumber(p, fields.nHour, nDigits) || fields.nHour > 32767) return false;
        if (nElement == elHours && fields.nHour > 23) return false;
        break;
      case elElapsedMinutes:
      case elMinutes:
        if (!ReadNumber(p, fields.nMinute, nDigits) || fields.nMinute > 32767) return false;
        if (nElement == elMinutes && fields.nMinute > 59) return false;
        break;
      case elElapsedSeconds:
      case elSeconds:
        if (!ReadSeconds(p, conv, fields.nSecond, fields.nMillisecond) || fields.nSecond > 32767)
          return false;
        if (nElement == elSeconds && fields.nSecond > 59) return false;
        break;
      case elAmPm:
        if (!ReadAmPm(p, conv, fields.nAmPm)) return false;
        break;
      case elDateSep: {
        const char16_t* q = SkipBlanks(p);
        const bool bBlanks = q != p;
        const char16_t c = Fold(*q);
        if (c == u'-' || c == u'/' || c == u'.' || IsLocaleSeparator(conv, c, false)) {
          ++q;
        } else if (StartsWith(q, conv.strDateSep)) {
          q += conv.strDateSep.size();
        } else if (!bBlanks || !((i > 0 && IsMonthNameElement(aElements[i - 1])) ||
                                 (i + 1 < kMaxElements && IsMonthNameElement(aElements[i + 1])))) {
          return false;
        }
        p = SkipBlanks(q);
        break;
      }
      case elTimeSep: {
        const char16_t c = Fold(*p);
        if (c == u':') {
          ++p;
        } else if (IsLocaleSeparator(conv, c, true)) {
          p = SkipBlanks(p + 1);  // "13시 30분": a closing mark may be followed by a blank
        } else if (StartsWith(p, conv.strTimeSep)) {
          p += conv.strTimeSep.size();
        } else {
          return false;
        }
        break;
      }
      case elComma: {
        // "Jan 15, 2020" or "Jan 15 2020": a comma, or blanks alone.
        const char16_t* q = SkipBlanks(p);
        if (Fold(*q) == u',') {
          q = SkipBlanks(q + 1);
        } else if (q == p) {
          return false;
        }
        p = q;
        break;
      }
      case elEnd: {
        p = SkipBlanks(p);
        const char16_t c = Fold(*p);
        if (c != 0 && (IsLocaleSeparator(conv, c, false) || IsLocaleSeparator(conv, c, true)))
          p = SkipBlanks(p + 1);
        if (*p != 0) return false;
        // An AM/PM designator goes with an hour on the 12-hour clock.
        if (fields.nAmPm >= 0 && (fields.nHour < 1 || fields.nHour > 12)) return false;
        return true;
      }
      default:
        return false;
    }
  }
  return false;
}

// The pattern as the conventions order it: the numeric date elements in the date
// order, and the AM/PM designator before the hour when bAmPmFirst.
void AdjustPattern(int nPattern, const TConventions& conv, bool bAmPmFirst,
                   unsigned char* aElements) {
  std::memcpy(aElements, kPatterns[nPattern].aElements, kMaxElements);
  const bool bFullDate = nPattern == 0 || (nPattern >= 11 && nPattern <= 14);
  if (bFullDate && conv.nDateOrder == TLocaleSettings::doDayMonthYear) {
    aElements[0] = elDay;
    aElements[2] = elMonthNumber;
  } else if (bFullDate && conv.nDateOrder == TLocaleSettings::doYearMonthDay) {
    aElements[0] = elYear;
    aElements[2] = elMonthNumber;
    aElements[4] = elDay;
  } else if (nPattern == 17 && conv.nDateOrder == TLocaleSettings::doDayMonthYear) {
    aElements[0] = elDay;
    aElements[2] = elMonthNumber;
  }
  if (!bAmPmFirst) return;
  int nAmPm = -1, nHour = -1;
  for (int i = 0; i < kMaxElements && aElements[i] != elEnd; ++i) {
    if (aElements[i] == elAmPm) nAmPm = i;
    if (aElements[i] == elHours && nHour < 0) nHour = i;
  }
  if (nAmPm < 0 || nHour < 0 || nAmPm < nHour) return;
  std::memmove(aElements + nHour + 1, aElements + nHour, nAmPm - nHour);
  aElements[nHour] = elAmPm;
}

TConventions MakeConventions(int nParseType) {
  TConventions conv;
  conv.apwszAm[0] = u"AM";
  conv.apwszPm[0] = u"PM";
  conv.apwszAm[1] = u"A";
  conv.apwszPm[1] = u"P";
  if (nParseType == 1 || nParseType == 2) return conv;
  const TLocaleSettings& locale = GetLocaleSettings();
  conv.bEnglish = false;
  conv.pLocale = &locale;
  conv.pExtras = FindLocaleExtras(locale.strName);
  conv.nDateOrder = locale.nDateOrder;
  conv.bAmPmFirst = locale.bAmPmFirst;
  conv.cDecimal = locale.cDecimal;
  conv.strDateSep = WithoutBlanks(locale.strDateSep);
  conv.strTimeSep = WithoutBlanks(locale.strTimeSep);
  if (!locale.strAm.empty() && !locale.strPm.empty()) {
    conv.apwszAm[2] = locale.strAm.c_str();
    conv.apwszPm[2] = locale.strPm.c_str();
  }
  // The host's localized designators, where its resources have them.
  conv.apwszAm[3] = LoadResourceString(IDS_AM);
  conv.apwszPm[3] = LoadResourceString(IDS_PM);
  return conv;
}

int CurrentYear() {
  SYSTEMTIME now;
  GetLocalTime(&now);
  return now.wYear;
}

}  // namespace

// ---------------------------------------------------------------------------

CDateTime::CDateTime()
    : m_nMonth(0),
      m_nDay(0),
      m_nWeekday(0),
      m_nYear(0),
      m_nHour(0),
      m_nHour12(0),
      m_nMinute(0),
      m_nSecond(0),
      m_nMillisecond(0),
      m_rSerial(0) {}

CDateTime::CDateTime(double rSerial) : CDateTime() { NumberToDateTime(rSerial); }

CDateTime::CDateTime(const CDateTime& other) : CZelObject() { *this = other; }

CDateTime& CDateTime::operator=(const CDateTime& other) {
  m_nMonth = other.m_nMonth;
  m_nDay = other.m_nDay;
  m_nWeekday = other.m_nWeekday;
  m_nYear = other.m_nYear;
  m_nHour = other.m_nHour;
  m_nHour12 = other.m_nHour12;
  m_nMinute = other.m_nMinute;
  m_nSecond = other.m_nSecond;
  m_nMillisecond = other.m_nMillisecond;
  m_rSerial = other.m_rSerial;
  return *this;
}

void CDateTime::Copy(const CZelObject* pSrc) { *this = *static_cast<const CDateTime*>(pSrc); }

void CDateTime::SetDate(short nMonth, short nDay, short nYear) {
  m_nMonth = nMonth;
  m_nDay = nDay;
  m_nYear = nYear;
}

void CDateTime::SetTime(short nHour, short nMinute, short nSecond, short nMillisecond) {
  m_nHour = nHour;
  m_nHour12 = nHour >= 0 ? Hour12(nHour) : 0;
  m_nMinute = nMinute;
  m_nSecond = nSecond;
  m_nMillisecond = nMillisecond;
}

void CDateTime::GetDate(short& nMonth, short& nDay, short& nYear) const {
  nMonth = m_nMonth;
  nDay = m_nDay;
  nYear = m_nYear;
}

void CDateTime::GetTime(short& nHour, short& nMinute, short& nSecond, short& nMillisecond) const {
  nHour = m_nHour;
  nMinute = m_nMinute;
  nSecond = m_nSecond;
  nMillisecond = m_nMillisecond;
}

int CDateTime::DateToNumber() {
  if (m_nYear == 0 && m_nMonth == 0 && m_nDay == 0) {
    m_rSerial = 0;
    return 0;
  }
  if (m_nYear > 9999) return 0;
  const int nMonthIndex = m_nYear * 12 + (m_nMonth - 1);
  const int nYear = static_cast<int>(FloorDiv(nMonthIndex, 12));
  if (nYear < 1900 || nYear > 9999) return 0;
  m_nYear = static_cast<short>(nYear);
  m_nMonth = static_cast<short>(nMonthIndex - nYear * 12 + 1);
  const double rSerial = static_cast<double>(SerialFromFields(m_nYear, m_nMonth, m_nDay));
  if (!IsValidDate(rSerial)) return 0;
  m_rSerial = rSerial;
  return 1;
}

int CDateTime::TimeToNumber(bool bTimeOnly) {
  if (m_nHour < 0 || m_nMinute < 0 || m_nSecond < 0 || m_nMillisecond < 0) return 0;
  const long long nMilliseconds =
      ((static_cast<long long>(m_nHour) * 60 + m_nMinute) * 60 + m_nSecond) * 1000 + m_nMillisecond;
  double rSerial = static_cast<double>(nMilliseconds) / kMillisecondsPerDay;
  if (!bTimeOnly) rSerial += m_rSerial;
  if (!IsValidTime(rSerial)) return 0;
  m_rSerial = rSerial;
  return 1;
}

int CDateTime::DateTimeToNumber() {
  if (m_nYear == 0 && m_nMonth == 0 && m_nDay == 0) return TimeToNumber(true);
  return DateToNumber() && TimeToNumber(false) ? 1 : 0;
}

int CDateTime::NumberToDate() {
  if (!IsValidDate(m_rSerial)) return 0;
  long long d = static_cast<long long>(m_rSerial + kHalfMillisecond);
  if (d <= 0) {
    m_nWeekday = 7;
    m_nYear = 1900;
    m_nMonth = 1;
    m_nDay = 0;
    return 1;
  }
  m_nWeekday = static_cast<short>((d - 1) % 7 + 1);
  const long long c = d < 36526 ? 19 : (4 * d - 146104) / 146097 + 20;
  if (c > 19) d = d - 36524 * c - (c - 17) / 4 + 693955;
  const int nLeapCentury = IsLeapCentury(static_cast<int>(c)) ? 1 : 0;
  const long long nYearsIn = 4 * (d - nLeapCentury) / 1461;
  const int nYear = static_cast<int>(100 * c + nYearsIn);
  if (nYearsIn > 0) d -= nLeapCentury + 365 * nYearsIn + (nYearsIn - 1) / 4;
  const int nLeap = IsLeapYear(nYear) ? 1 : 0;
  int m = 12;
  while (m > 0 && kDaysBeforeMonth[m] + (m > 1 ? nLeap : 0) >= d) --m;
  m_nYear = static_cast<short>(nYear);
  m_nMonth = static_cast<short>(m + 1);
  m_nDay = static_cast<short>(d - kDaysBeforeMonth[m] - (m > 1 ? nLeap : 0));
  return 1;
}

int CDateTime::NumberToDate(double rSerial) {
  m_rSerial = rSerial;
  return NumberToDate();
}

int CDateTime::NumberToTime() {
  if (!IsValidTime(m_rSerial)) return 0;
  const long long nMs = MillisecondsOfDay(m_rSerial);
  m_nHour = static_cast<short>(nMs / 3600000);
  m_nHour12 = Hour12(m_nHour);
  m_nMinute = static_cast<short>(nMs / 60000 % 60);
  m_nSecond = static_cast<short>(nMs / 1000 % 60);
  m_nMillisecond = static_cast<short>(nMs % 1000);
  return 1;
}

int CDateTime::NumberToTime(double rSerial) {
  m_rSerial = rSerial;
  return NumberToTime();
}

int CDateTime::NumberToDateTime() { return NumberToDate() && NumberToTime() ? 1 : 0; }

int CDateTime::NumberToDateTime(double rSerial) {
  m_rSerial = rSerial;
  return NumberToDateTime();
}

bool CDateTime::IsValidDate(double rSerial) {
  return rSerial >= 0 && rSerial < kFirstInvalidSerial;
}

bool CDateTime::IsValidTime(double rSerial) {
  return rSerial >= 0 && rSerial < kFirstInvalidSerial;
}

bool CDateTime::HasValidDateComponent(double rSerial) {
  return IsValidDate(rSerial) && rSerial >= 1;
}

bool CDateTime::HasValidTimeComponent(double rSerial) {
  return IsValidTime(rSerial) && MillisecondsOfDay(rSerial) != 0;
}

bool CDateTime::IsLeapYear(int nYear) {
  if (nYear % 4 != 0) return false;
  if (nYear % 100 != 0) return true;
  if (nYear % 400 == 0) return true;
  return nYear == 1900;
}

bool CDateTime::IsLeapCentury(int nCentury) { return nCentury % 4 == 0 || nCentury == 19; }

int CDateTime::GetDaysInMonth(int nMonth, int nYear) {
  if (nMonth < 1 || nMonth > 12) return 0;
  if (nMonth == 2 && IsLeapYear(nYear)) return 29;
  return kDaysInMonth[nMonth];
}

int CDateTime::FixYear(int nYear) {
  if (nYear < 0 || nYear > 99) return nYear;
  return nYear < 30 ? 2000 + nYear : 1900 + nYear;
}

int CDateTime::AddDate(int nYears, int nMonths, int nDays) {
  const long long nMonthIndex = (static_cast<long long>(m_nYear) + nYears) * 12 + (m_nMonth - 1) +
                                static_cast<long long>(nMonths);
  const long long nYear = FloorDiv(nMonthIndex, 12);
  if (nYear < 1900 || nYear > 9999) return 0;
  m_nYear = static_cast<short>(nYear);
  m_nMonth = static_cast<short>(nMonthIndex - nYear * 12 + 1);
  if (!DateToNumber()) return 0;
  if (nDays != 0) {
    const double rSerial = m_rSerial + nDays;
    if (!IsValidDate(rSerial)) return 0;
    NumberToDate(rSerial);
    return TimeToNumber(false);
  }
  NumberToDate();
  if (static_cast<long long>(m_nYear) * 12 + (m_nMonth - 1) > nMonthIndex) {
    // The day does not exist in the target month: day 0 of the month after it is the
    // target month's last day.
    m_nDay = 0;
    if (!DateToNumber()) return 0;
    NumberToDate();
  }
  return TimeToNumber(false);
}

int CDateTime::Days360(const CDateTime& start, const CDateTime& end, bool bEuropean) {
  int nDay1 = start.m_nDay, nMonth1 = start.m_nMonth, nYear1 = start.m_nYear;
  int nDay2 = end.m_nDay, nMonth2 = end.m_nMonth, nYear2 = end.m_nYear;
  if (bEuropean) {
    if (nDay1 == 31) nDay1 = 30;
    if (nDay2 == 31) nDay2 = 30;
  } else {
    // The US rule takes February's end from the year divisible by four alone.
    const int nFebruaryEnd = nYear1 % 4 == 0 ? 29 : 28;
    if (nDay1 == 31 || (nMonth1 == 2 && nDay1 == nFebruaryEnd)) nDay1 = 30;
    if (nDay2 == 31 && nDay1 < 30) {
      nDay2 = 1;
      if (++nMonth2 > 12) {
        nMonth2 = 1;
        ++nYear2;
      }
    } else if (nDay2 == 31) {
      nDay2 = 30;
    }
  }
  return (360 * (nYear2 - 1900) + 30 * (nMonth2 - 1) + (nDay2 - 1)) -
         (360 * (nYear1 - 1900) + 30 * (nMonth1 - 1) + (nDay1 - 1));
}

// The bases follow the YEARFRAC rules of the major spreadsheets (also written down in
// OpenFormula): dates are whole days, taken in order.
double CDateTime::YearPortion(double rStart, double rEnd, int nBasis) {
  if (!IsValidDate(rStart) || !IsValidDate(rEnd) || nBasis < 0 || nBasis > 4) return -1;
  double r1 = std::floor(rStart), r2 = std::floor(rEnd);
  if (r1 > r2) std::swap(r1, r2);
  CDateTime d1(r1), d2(r2);
  int nDay1 = d1.m_nDay, nDay2 = d2.m_nDay;
  const int nMonth1 = d1.m_nMonth, nMonth2 = d2.m_nMonth;
  const int nYear1 = d1.m_nYear, nYear2 = d2.m_nYear;
  const double rDays = r2 - r1;
  switch (nBasis) {
    case bsUs30360: {
      const bool bLastOfFeb1 = nMonth1 == 2 && nDay1 == GetDaysInMonth(2, nYear1);
      const bool bLastOfFeb2 = nMonth2 == 2 && nDay2 == GetDaysInMonth(2, nYear2);
      if (nDay1 == 31 && nDay2 == 31) {
        nDay1 = nDay2 = 30;
      } else if (nDay1 == 31) {
        nDay1 = 30;
      } else if (nDay1 == 30 && nDay2 == 31) {
        nDay2 = 30;
      } else if (bLastOfFeb1 && bLastOfFeb2) {
        nDay1 = nDay2 = 30;
      } else if (bLastOfFeb1) {
        nDay1 = 30;
      }
      break;
    }
    case bsEuropean30360:
      if (nDay1 == 31) nDay1 = 30;
      if (nDay2 == 31) nDay2 = 30;
      break;
    case bsActual360:
      return rDays / 360;
    case bsActual365:
      return rDays / 365;
    case bsActualActual: {
      // Up to a year apart: divide by 366 when the span holds a 29 February (or ends
      // on one), else 365. Longer: by the average length of the years touched.
      const bool bWithinYear =
          nYear1 == nYear2 ||
          (nYear1 + 1 == nYear2 && (nMonth1 > nMonth2 || (nMonth1 == nMonth2 && nDay1 >= nDay2)));
      if (!bWithinYear) {
        const double rYearDays = static_cast<double>(SerialFromFields(nYear2 + 1, 1, 1) -
                                                     SerialFromFields(nYear1, 1, 1));
        return rDays / (rYearDays / (nYear2 - nYear1 + 1));
      }
      bool bLeapDay = (nYear1 == nYear2 && IsLeapYear(nYear1)) || (nMonth2 == 2 && nDay2 == 29);
      const double rMarch1 = static_cast<double>(SerialFromFields(nYear1, 3, 1));
      if (IsLeapYear(nYear1) && r1 < rMarch1 && r2 >= rMarch1) bLeapDay = true;
      const double rMarch2 = static_cast<double>(SerialFromFields(nYear2, 3, 1));
      if (IsLeapYear(nYear2) && r2 >= rMarch2 && r1 < rMarch2) bLeapDay = true;
      return rDays / (bLeapDay ? 366 : 365);
    }
  }
  return ((nDay2 + 30 * nMonth2 + 360 * nYear2) - (nDay1 + 30 * nMonth1 + 360 * nYear1)) / 360.0;
}

void CDateTime::RoundSeconds(int nDecimals) {
  if (nDecimals >= 3) return;
  const int nStep = kRoundSteps[nDecimals < 0 ? 0 : nDecimals];
  const int nMs = (m_nMillisecond + nStep / 2) / nStep * nStep;
  if (nMs < 1000) {
    m_nMillisecond = static_cast<short>(nMs);
    return;
  }
  // Carry only where a field reaches its limit exactly: an elapsed-time field that
  // already stands above it keeps counting.
  m_nMillisecond = 0;
  if (++m_nSecond != 60) return;
  m_nSecond = 0;
  if (++m_nMinute != 60) return;
  m_nMinute = 0;
  ++m_nHour;
  m_nHour12 = Hour12(m_nHour);
  if (m_nHour != 24) return;
  m_nHour = 0;
  if (m_nWeekday >= 1 && m_nWeekday <= 7) m_nWeekday = static_cast<short>(m_nWeekday % 7 + 1);
  ++m_nDay;
  if (m_nMonth < 1 || m_nMonth > 12 || m_nDay <= GetDaysInMonth(m_nMonth, m_nYear)) return;
  m_nDay = 1;
  if (++m_nMonth <= 12) return;
  m_nMonth = 1;
  ++m_nYear;
}

double CDateTime::TotalHours() const {
  double rDays = 0;
  if (m_nMonth >= 1 && m_nMonth <= 12)
    rDays = static_cast<double>(SerialFromFields(m_nYear, m_nMonth, m_nDay));
  return rDays * 24 + m_nHour;
}

double CDateTime::TotalMinutes() const { return TotalHours() * 60 + m_nMinute; }

double CDateTime::TotalSeconds() const { return TotalMinutes() * 60 + m_nSecond; }

int CDateTime::GetEraIndex(int nMonth, int nDay, int nYear) {
  const TLocaleExtras* pExtras = CurrentLocaleExtras();
  if (pExtras == nullptr) return -1;
  const long long nDate = (static_cast<long long>(nYear) * 12 + nMonth) * 32 + nDay;
  for (int i = pExtras->nEras - 1; i >= 0; --i) {
    const TEra& era = pExtras->pEras[i];
    if ((static_cast<long long>(era.nYear) * 12 + era.nMonth) * 32 + era.nDay <= nDate) return i;
  }
  return -1;
}

int CDateTime::GetEraYear(int nEraIndex, int nYear) {
  const TLocaleExtras* pExtras = CurrentLocaleExtras();
  if (pExtras == nullptr || nEraIndex < 0 || nEraIndex >= pExtras->nEras) return 0;
  return nYear - pExtras->pEras[nEraIndex].nYear + 1;
}

const char16_t* CDateTime::GetEraLongName(int nEraIndex) {
  const TLocaleExtras* pExtras = CurrentLocaleExtras();
  if (pExtras == nullptr || nEraIndex < 0 || nEraIndex >= pExtras->nEras) return nullptr;
  return pExtras->pEras[nEraIndex].pwszLongName;
}

const char16_t* CDateTime::GetEraShortName(int nEraIndex) {
  const TLocaleExtras* pExtras = CurrentLocaleExtras();
  if (pExtras == nullptr || nEraIndex < 0 || nEraIndex >= pExtras->nEras) return nullptr;
  return pExtras->pEras[nEraIndex].pwszShortName;
}

double CDateTime::GetCurrentDateTime() {
  SYSTEMTIME now;
  GetLocalTime(&now);
  if (now.wYear < 1900 || now.wYear > 9999) return 0;
  CDateTime dt;
  dt.SetDate(static_cast<short>(now.wMonth), static_cast<short>(now.wDay),
             static_cast<short>(now.wYear));
  dt.SetTime(static_cast<short>(now.wHour), static_cast<short>(now.wMinute),
             static_cast<short>(now.wSecond), static_cast<short>(now.wMilliseconds));
  return dt.DateTimeToNumber() ? dt.GetDateTime() : 0;
}

double CDateTime::GetCurrentDate() { return std::floor(GetCurrentDateTime()); }

bool CDateTime::IsValidSeparator(char16_t c, bool bTime) {
  return IsSeparatorOf(GetLocaleSettings(), CurrentLocaleExtras(), c, bTime);
}

int CDateTime::StringToDateTime(const char16_t* pwszText, int& nFormatIndex, int nParseType) {
  if (pwszText == nullptr) return 0;
  TConventions conv = MakeConventions(nParseType);
  const char16_t* const pStart = SkipBlanks(pwszText);
  // A four-digit year in front ("2024-03-01", "2024/3/1 12:30") is read year first in
  // every locale, once the locale's own order has failed.
  const bool bIsoYear = pStart[0] >= u'0' && pStart[0] <= u'9' && pStart[1] >= u'0' &&
                        pStart[1] <= u'9' && pStart[2] >= u'0' && pStart[2] <= u'9' &&
                        pStart[3] >= u'0' && pStart[3] <= u'9' &&
                        (pStart[4] == u'-' || pStart[4] == u'/');
  TReadFields fields;
  int nPattern = 0;
  bool bMatched = false;
  for (int nPass = 0; nPass < 2 && !bMatched; ++nPass) {
    if (nPass == 1) {
      if (!bIsoYear || conv.nDateOrder == TLocaleSettings::doYearMonthDay) break;
      conv.nDateOrder = TLocaleSettings::doYearMonthDay;
    }
    for (nPattern = 0; nPattern < static_cast<int>(std::size(kPatterns)) && !bMatched; ++nPattern) {
      unsigned char aElements[kMaxElements];
      AdjustPattern(nPattern, conv, conv.bAmPmFirst, aElements);
      bMatched = MatchPattern(aElements, pStart, conv, fields);
      if (!bMatched && conv.bAmPmFirst) {
        // Where the designator leads, the English order ("1:30 PM") is read as well.
        AdjustPattern(nPattern, conv, false, aElements);
        bMatched = MatchPattern(aElements, pStart, conv, fields);
      }
    }
  }
  if (!bMatched) return 0;
  const int nFormat = kPatterns[nPattern - 1].nFormat;

  const bool bDate = fields.nMonth > 0;
  if (bDate) {
    if (fields.nYear < 0) fields.nYear = CurrentYear();
    if (fields.nDay < 0) fields.nDay = 1;
    if (fields.nDay > GetDaysInMonth(fields.nMonth, fields.nYear)) return 0;
    SetDate(static_cast<short>(fields.nMonth), static_cast<short>(fields.nDay),
            static_cast<short>(fields.nYear));
  } else {
    SetDate(0, 0, 0);
  }
  int nHour = fields.nHour < 0 ? 0 : fields.nHour;
  if (fields.nAmPm == 0 && nHour == 12) nHour = 0;
  if (fields.nAmPm == 1 && nHour < 12) nHour += 12;
  SetTime(static_cast<short>(nHour), static_cast<short>(fields.nMinute < 0 ? 0 : fields.nMinute),
          static_cast<short>(fields.nSecond < 0 ? 0 : fields.nSecond),
          static_cast<short>(fields.nMillisecond));
  if (!DateTimeToNumber()) return 0;
  if (bDate) m_nWeekday = static_cast<short>((static_cast<long long>(m_rSerial) - 1) % 7 + 1);
  nFormatIndex = nFormat;
  return 1;
}
