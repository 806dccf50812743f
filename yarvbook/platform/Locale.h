// The locale settings the engine formats and reads text with: separators, date and
// time conventions, currency, month and day names. Values come from ICU's CLDR data
// for the selected locale; the host chooses the locale at run time.
#pragma once

#include <string>

#include "base/Export.h"

struct YARVBOOK_API TLocaleSettings {
  enum EDateOrder : int { doMonthDayYear = 0, doDayMonthYear = 1, doYearMonthDay = 2 };

  std::string strName;      // BCP 47 tag as selected, e.g. "en-US"
  std::string strIcuName;   // the same locale as ICU names it, e.g. "en_US"
  unsigned short nLcid;     // Windows locale id, e.g. 0x0409
  unsigned nCodePage;       // active ANSI code page: 1252, 949, 932, ...
  char16_t cDecimal;        // "." or ","
  char16_t cThousands;      // ",", ".", U+00A0, ...
  char16_t cList;           // ";" where the decimal separator is ",", else ","
  EDateOrder nDateOrder;    // order of the short date
  std::u16string strDateSep;  // "/", ".", "-"
  std::u16string strTimeSep;  // ":"
  bool bFourDigitYear;      // short date shows yyyy
  bool bDayLeadingZero;     // short date shows dd
  bool bMonthLeadingZero;   // short date shows mm
  bool b24Hour;             // short time has no AM/PM
  bool bHourLeadingZero;    // short time shows hh
  bool bAmPmFirst;          // the AM/PM designator precedes the time (ko-KR, ja-JP)
  std::u16string strAm;     // "AM"
  std::u16string strPm;     // "PM"
  std::u16string strCurrency;  // "$", "€", "₩"
  // Currency placement as Windows numbers it: 0 "$1", 1 "1$", 2 "$ 1", 3 "1 $".
  int nCurrencyPos;
  // Negative currency form as Windows numbers it (0 "($1)", 1 "-$1", 5 "-1$", 8 "-1 $", ...).
  int nNegCurrency;
  int nCurrencyDigits;      // digits after the decimal separator in currency amounts
  std::u16string astrMonthNames[12];
  std::u16string astrMonthAbbrev[12];
  std::u16string astrDayNames[7];   // [0] = Sunday
  std::u16string astrDayAbbrev[7];
};

// The current settings; en-US until SetLocale picks another. The reference stays
// valid until the next SetLocale.
YARVBOOK_API const TLocaleSettings& GetLocaleSettings();

// Selects a locale by BCP 47 tag ("en-US", "de-DE", "ko-KR", "ja-JP") or ICU name.
// Returns false, keeping the current settings, when ICU does not know it.
YARVBOOK_API bool SetLocale(const char* pszName);

// Incremented by every successful SetLocale, so caches of locale-derived text can tell
// that they are stale.
YARVBOOK_API unsigned GetLocaleGeneration();
