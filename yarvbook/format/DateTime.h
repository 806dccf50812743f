// CDateTime: a date and time serial and its calendar fields. A serial counts days
// since 0 January 1900 (serial 1 is 1 January 1900); the fraction is the time of day.
// 1900 is treated as a leap year, so serial 60 is 29 February 1900 and every serial
// from 61 on agrees with the proleptic Gregorian calendar shifted by that one day.
// Valid serials run from 0 to below 2958466 (31 December 9999 is 2958465).
//
// The object holds the fields and the serial side by side; the conversions move one
// into the other and report failure by returning 0, leaving whatever they had set.
// Text reading and era names follow the current locale (platform/Locale.h).
#pragma once

#include "base/Export.h"
#include "base/ZelObject.h"

class YARVBOOK_API CDateTime : public CZelObject {
 public:
  // Day-count bases of YearPortion, numbered as the YEARFRAC function numbers them.
  enum EBasis : int {
    bsUs30360 = 0,        // US (NASD) 30/360
    bsActualActual = 1,   // actual days over the actual length of the year(s)
    bsActual360 = 2,      // actual days over 360
    bsActual365 = 3,      // actual days over 365
    bsEuropean30360 = 4,  // European 30/360
  };

  // All fields and the serial zero.
  CDateTime();
  // Holds rSerial and fills the fields from it; when rSerial is not a valid serial
  // the fields stay zero.
  explicit CDateTime(double rSerial);
  // A date is a plain value: copies take the fields and the serial.
  CDateTime(const CDateTime& other);
  CDateTime& operator=(const CDateTime& other);
  // pSrc is a CDateTime.
  void Copy(const CZelObject* pSrc) override;

  // Field setters: no conversion, no range check. SetTime also sets the 12-hour field.
  void SetDate(short nMonth, short nDay, short nYear);
  void SetTime(short nHour, short nMinute, short nSecond, short nMillisecond = 0);
  void SetWeekday(short nWeekday) { m_nWeekday = nWeekday; }
  void GetDate(short& nMonth, short& nDay, short& nYear) const;
  void GetTime(short& nHour, short& nMinute, short& nSecond, short& nMillisecond) const;
  // The serial last converted to or from (date and time).
  double GetDateTime() const { return m_rSerial; }
  // 1 = Sunday .. 7 = Saturday, as the last date conversion set it.
  short GetWeekday() const { return m_nWeekday; }

  short GetYear() const { return m_nYear; }
  short GetMonth() const { return m_nMonth; }
  short GetDay() const { return m_nDay; }
  short GetHour() const { return m_nHour; }
  short GetHour12() const { return m_nHour12; }  // 1..12; hour 0 reads as 12
  short GetMinute() const { return m_nMinute; }
  short GetSecond() const { return m_nSecond; }
  short GetMillisecond() const { return m_nMillisecond; }

  // Fields to serial. DateToNumber converts the date fields alone: all three zero
  // gives serial 0 and returns 0 ("no date"); months outside 1..12 move whole years
  // (and are stored normalized); a day of 0 or past the month's end counts on into
  // the neighbouring month. TimeToNumber adds the time fields (all must be >= 0; hours
  // may exceed 23) to the serial held, or replaces it when bTimeOnly. DateTimeToNumber
  // converts the time alone when the date fields are all zero, else both. Each returns
  // 1 when the resulting serial is valid and stores it, else 0.
  [[nodiscard]] int DateToNumber();
  [[nodiscard]] int TimeToNumber(bool bTimeOnly);
  [[nodiscard]] int DateTimeToNumber();

  // Serial to fields: the held serial, or rSerial (which is stored first). Serial 0
  // reads as 0 January 1900, a Saturday. Times are read to the millisecond, rounding
  // to the nearest, so a serial within half a millisecond of midnight reads as the
  // next day at 00:00:00.000. Return 0, leaving the fields, when the serial is invalid.
  int NumberToDate();
  int NumberToDate(double rSerial);
  int NumberToTime();
  int NumberToTime(double rSerial);
  int NumberToDateTime();
  int NumberToDateTime(double rSerial);

  // Range tests on serials: 0 <= s < 2958466 (NaN fails). A date component also
  // needs s >= 1; a time component needs a time of day that is not midnight when
  // read to the millisecond.
  static bool IsValidDate(double rSerial);
  static bool IsValidTime(double rSerial);
  static bool HasValidDateComponent(double rSerial);
  static bool HasValidTimeComponent(double rSerial);
  // The same tests on the held serial.
  bool IsValidDate() const { return IsValidDate(m_rSerial); }
  bool IsValidTime() const { return IsValidTime(m_rSerial); }

  // Calendar rules. IsLeapYear keeps 1900 as a leap year; IsLeapCentury(c) tells
  // whether the century year c*100 is leap (c divisible by 4, or 19).
  static bool IsLeapYear(int nYear);
  static bool IsLeapCentury(int nCentury);
  // Days of nMonth (1..12) in nYear; 0 for a month outside 1..12.
  static int GetDaysInMonth(int nMonth, int nYear);
  // Two-digit years: 0..29 are 2000..2029, 30..99 are 1930..1999; others stay.
  static int FixYear(int nYear);

  // Date arithmetic on the fields. A nonzero day amount is counted through the serial,
  // so it carries across months and years. Without one, a day that the target month
  // lacks becomes the target month's last day (31 January + 1 month is 28 February).
  // On success the fields are normalized, the serial holds the new date with the time
  // fields added, and 1 is returned; 0 when the result leaves the valid range.
  [[nodiscard]] int AddDate(int nYears, int nMonths, int nDays);
  [[nodiscard]] int AddYear(int nYears) { return AddDate(nYears, 0, 0); }
  [[nodiscard]] int AddMonth(int nMonths) { return AddDate(0, nMonths, 0); }
  [[nodiscard]] int AddDay(int nDays) { return AddDate(0, 0, nDays); }

  // Days between two dates on a 360-day year, from the date fields. European: day 31
  // counts as 30 in both dates. US: a start on its month's last day counts as day 30,
  // and an end on day 31 counts as 30 when the start counts as 30 or more, else as
  // the 1st of the next month. Negative when rEnd precedes rStart.
  static int Days360(const CDateTime& start, const CDateTime& end, bool bEuropean);
  // The part of a year between two serials (fractions dropped, order ignored) on the
  // day-count basis nBasis (EBasis). Returns -1 when a serial is not a valid date or
  // the basis is outside 0..4.
  static double YearPortion(double rStart, double rEnd, int nBasis);

  // Rounds the millisecond field to nDecimals (0..2) decimals of a second, half up,
  // carrying into the seconds, minutes, hours, day, month and year fields as needed;
  // 3 or more leaves the fields alone. The serial is not changed.
  void RoundSeconds(int nDecimals);
  // Elapsed time of the fields, counted from serial 0: whole hours, minutes, seconds.
  double TotalHours() const;
  double TotalMinutes() const;
  double TotalSeconds() const;

  // Eras of the current locale's calendar (Japanese imperial eras in ja-JP, the
  // Republic era in zh-TW). GetEraIndex gives the era that contains the date, -1 when
  // the locale has no eras or the date precedes the first. GetEraYear gives the year
  // of the era (its first year is 1), 0 for a bad index. The names are null for a bad
  // index; they are static texts.
  static int GetEraIndex(int nMonth, int nDay, int nYear);
  static int GetEraYear(int nEraIndex, int nYear);
  static const char16_t* GetEraLongName(int nEraIndex);
  static const char16_t* GetEraShortName(int nEraIndex);

  // The local date and time now (platform/Clock.h), as a serial; GetCurrentDate
  // without the time. 0 when the clock's date is outside the valid range.
  static double GetCurrentDateTime();
  static double GetCurrentDate();

  // Reads a date, a time or both from pwszText (zero-terminated). nParseType 1 or 2
  // reads English conventions (month-day-year, English names and AM/PM); any other
  // value reads the current locale's (its date order, separators, month names and
  // AM/PM designators, English names being accepted too). On success fills the fields
  // and the serial (a date without a year takes the current year; a month and year
  // without a day take the 1st), stores the built-in number format index that matches
  // the text's shape in nFormatIndex (0 when none fits) and returns 1. Returns 0 when
  // the text is not a date or time; nFormatIndex is then left alone.
  [[nodiscard]] int StringToDateTime(const char16_t* pwszText, int& nFormatIndex, int nParseType);
  // Whether the current locale accepts c as a date separator (bTime false) or a time
  // separator (bTime true) beyond '-', '/', '.' and ':' and its own separators; such a
  // character may also follow the last element ("2000年1月2日", "1.2.2000.").
  static bool IsValidSeparator(char16_t c, bool bTime);

 private:
  short m_nMonth;    // 1..12
  short m_nDay;      // 1..31; 0 is the last day of the previous month
  short m_nWeekday;  // 1 = Sunday .. 7 = Saturday
  short m_nYear;     // 1900..9999
  short m_nHour;     // 0..23; more for elapsed time
  short m_nHour12;   // 1..12
  short m_nMinute;
  short m_nSecond;
  short m_nMillisecond;  // 0..999
  double m_rSerial;
};
