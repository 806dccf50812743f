#include <gtest/gtest.h>

#include <limits>
#include <string>

#include "format/DateTime.h"
#include "platform/Clock.h"
#include "platform/Locale.h"

namespace {

// Days since 1 January 1970 of a proleptic Gregorian date (H. Hinnant's days_from_civil),
// an algorithm independent of the one under test.
long long DaysFromCivil(int y, int m, int d) {
  y -= m <= 2;
  const long long nEra = (y >= 0 ? y : y - 399) / 400;
  const long long nYearOfEra = y - nEra * 400;
  const long long nDayOfYear = (153 * (m > 2 ? m - 3 : m + 9) + 2) / 5 + d - 1;
  const long long nDayOfEra = nYearOfEra * 365 + nYearOfEra / 4 - nYearOfEra / 100 + nDayOfYear;
  return nEra * 146097 + nDayOfEra - 719468;
}

// The serial of a real calendar date: days since 31 December 1899, plus the 29 February
// 1900 that the serials count, from 1 March 1900 on.
double CivilSerial(int y, int m, int d) {
  const long long nDays = DaysFromCivil(y, m, d) - DaysFromCivil(1899, 12, 31);
  return static_cast<double>(nDays + (DaysFromCivil(y, m, d) >= DaysFromCivil(1900, 3, 1)));
}

// 1 = Sunday; before 1 March 1900 the serials run one weekday behind the real calendar.
int CivilWeekday(int y, int m, int d) {
  const long long nDays = DaysFromCivil(y, m, d);
  const int nReal = static_cast<int>(((nDays % 7) + 11) % 7);  // 0 = Sunday
  const bool bShifted = nDays < DaysFromCivil(1900, 3, 1);
  return (bShifted ? nReal + 6 : nReal) % 7 + 1;
}

// The same for any date the serials know, 29 February 1900 included (a Wednesday there).
bool IsFictitiousLeapDay(int y, int m, int d) { return y == 1900 && m == 2 && d == 29; }
double SerialOf(int y, int m, int d) {
  return IsFictitiousLeapDay(y, m, d) ? 60 : CivilSerial(y, m, d);
}
int WeekdayOf(int y, int m, int d) {
  return IsFictitiousLeapDay(y, m, d) ? 4 : CivilWeekday(y, m, d);
}

// "y-m-d" for the traces of the table-driven tests.
std::string Ymd(int y, int m, int d) {
  return std::to_string(y) + "-" + std::to_string(m) + "-" + std::to_string(d);
}

double TimeFraction(int h, int mi, int s, int ms) {
  return (((h * 60.0 + mi) * 60 + s) * 1000 + ms) / 86400000.0;
}

void SetYmd(CDateTime& dt, int nYear, int nMonth, int nDay) {
  dt.SetDate(static_cast<short>(nMonth), static_cast<short>(nDay), static_cast<short>(nYear));
}

class DateTimeTest : public ::testing::Test {
 protected:
  void SetUp() override { ASSERT_TRUE(SetLocale("en-US")); }
  void TearDown() override {
    SetClockOverride(nullptr);
    EXPECT_TRUE(SetLocale("en-US"));
  }
};

void ExpectDate(const CDateTime& dt, int nYear, int nMonth, int nDay) {
  EXPECT_EQ(nYear, dt.GetYear());
  EXPECT_EQ(nMonth, dt.GetMonth());
  EXPECT_EQ(nDay, dt.GetDay());
}

void ExpectTime(const CDateTime& dt, int nHour, int nMinute, int nSecond, int nMillisecond) {
  EXPECT_EQ(nHour, dt.GetHour());
  EXPECT_EQ(nMinute, dt.GetMinute());
  EXPECT_EQ(nSecond, dt.GetSecond());
  EXPECT_EQ(nMillisecond, dt.GetMillisecond());
}

// Every day of 1900-2100 both ways against the civil-date model; 29 February 1900, which
// the model lacks, is checked with the other edge cases.
TEST_F(DateTimeTest, EveryDayMatchesCivilCalendar) {
  for (int y = 1900; y <= 2100; ++y) {
    for (int m = 1; m <= 12; ++m) {
      const int nDays =
          static_cast<int>(DaysFromCivil(y + (m == 12), m % 12 + 1, 1) - DaysFromCivil(y, m, 1));
      ASSERT_EQ(nDays, CDateTime::GetDaysInMonth(m, y) - (y == 1900 && m == 2));
      for (int d = 1; d <= nDays; ++d) {
        const double rSerial = CivilSerial(y, m, d);
        CDateTime dt;
        SetYmd(dt, y, m, d);
        ASSERT_EQ(1, dt.DateToNumber()) << y << "-" << m << "-" << d;
        ASSERT_EQ(rSerial, dt.GetDateTime()) << y << "-" << m << "-" << d;
        CDateTime back;
        ASSERT_EQ(1, back.NumberToDate(rSerial + 0.75));
        ASSERT_EQ(y, back.GetYear()) << rSerial;
        ASSERT_EQ(m, back.GetMonth()) << rSerial;
        ASSERT_EQ(d, back.GetDay()) << rSerial;
        ASSERT_EQ(CivilWeekday(y, m, d), back.GetWeekday()) << rSerial;
      }
    }
  }
}

// clang-format off
struct TSerialCase { double rSerial; int nYear, nMonth, nDay, nWeekday; };
constexpr TSerialCase kSerialCases[] = {
    {0, 1900, 1, 0, 7},  // 0 January 1900, a Saturday
    {60, 1900, 2, 29, 4},  // the day that 1900 did not have
    {2958465, 9999, 12, 31, 6},  // the last valid day
};
// clang-format on

TEST_F(DateTimeTest, SerialEdgesReadAsCalendarFields) {
  for (const TSerialCase& c : kSerialCases) {
    SCOPED_TRACE(c.rSerial);
    CDateTime dt;
    ASSERT_EQ(1, dt.NumberToDateTime(c.rSerial));
    ExpectDate(dt, c.nYear, c.nMonth, c.nDay);
    EXPECT_EQ(c.nWeekday, dt.GetWeekday());
  }
}

TEST_F(DateTimeTest, ValidRange) {
  constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
  // clang-format off
  struct { double rSerial; bool bValid, bDateComponent, bTimeComponent; } const kCases[] = {
      {-1, false, false, false}, {-1e-12, false, false, false}, {0, true, false, false},
      {0.5, true, false, true}, {1 - 1e-9, true, false, false},  // rounds to midnight
      {1, true, true, false}, {1.25, true, true, true}, {2958465.5, true, true, true},
      {2958466, false, false, false}, {kNaN, false, false, false}, {1e300, false, false, false},
  };
  // clang-format on
  for (const auto& c : kCases) {
    SCOPED_TRACE(c.rSerial);
    EXPECT_EQ(c.bValid, CDateTime::IsValidDate(c.rSerial));
    EXPECT_EQ(c.bValid, CDateTime::IsValidTime(c.rSerial));
    EXPECT_EQ(c.bDateComponent, CDateTime::HasValidDateComponent(c.rSerial));
    EXPECT_EQ(c.bTimeComponent, CDateTime::HasValidTimeComponent(c.rSerial));
    CDateTime dt;
    EXPECT_EQ(c.bValid ? 1 : 0, dt.NumberToDateTime(c.rSerial));
    EXPECT_EQ(c.bValid, dt.IsValidDate());
  }
  const CDateTime outside(-1);
  ExpectDate(outside, 0, 0, 0);
}

TEST_F(DateTimeTest, FieldsToSerialNormalizeAndRefuse) {
  // clang-format off
  struct { int nYear, nMonth, nDay; int nResult; double rSerial; } const kCases[] = {
      {1999, 13, 1, 1, 36526},  // month 13 is January of the next year
      {2000, 0, 1, 1, CivilSerial(1999, 12, 1)},  // month 0 is December before
      {2000, -11, 1, 1, CivilSerial(1999, 1, 1)},
      {2001, 3, 0, 1, CivilSerial(2001, 2, 28)},  // day 0 is the previous month's end
      {2001, 2, 31, 1, CivilSerial(2001, 3, 3)},  // days count on
      {1900, 1, 0, 1, 0},  // serial 0
      {9999, 12, 31, 1, 2958465}, {9999, 12, 32, 0, 0},  // past the calendar
      {1900, 0, 1, 0, 0},  // moves into 1899
      {1899, 12, 31, 0, 0}, {10000, 1, 1, 0, 0}, {9999, 13, 1, 0, 0},  // moves into 10000
      {1900, 1, -1, 0, 0},  // before serial 0
  };
  // clang-format on
  for (const auto& c : kCases) {
    SCOPED_TRACE(Ymd(c.nYear, c.nMonth, c.nDay));
    CDateTime dt;
    SetYmd(dt, c.nYear, c.nMonth, c.nDay);
    EXPECT_EQ(c.nResult, dt.DateToNumber());
    if (c.nResult) {
      EXPECT_EQ(c.rSerial, dt.GetDateTime());
    }
  }
  CDateTime none;
  EXPECT_EQ(0, none.DateToNumber());  // no date at all
  EXPECT_EQ(0, none.GetDateTime());
}

TEST_F(DateTimeTest, TimeFieldsToSerial) {
  CDateTime dt;
  dt.SetTime(25, 30, 0);
  ASSERT_EQ(1, dt.DateTimeToNumber());  // no date: the time alone, elapsed hours allowed
  EXPECT_DOUBLE_EQ(25.5 / 24, dt.GetDateTime());
  dt.SetDate(1, 2, 2000);
  dt.SetTime(18, 0, 0, 0);
  ASSERT_EQ(1, dt.DateTimeToNumber());
  EXPECT_DOUBLE_EQ(CivilSerial(2000, 1, 2) + 0.75, dt.GetDateTime());
  dt.SetTime(0, -1, 0, 0);
  EXPECT_EQ(0, dt.DateTimeToNumber());
  dt.SetDate(12, 31, 9999);
  dt.SetTime(24, 0, 0, 0);
  EXPECT_EQ(0, dt.DateTimeToNumber());  // one day past the calendar
}

TEST_F(DateTimeTest, SerialToTime) {
  // clang-format off
  struct { double rSerial; int nHour, nHour12, nMinute, nSecond, nMillisecond; } const kCases[] = {
      {0, 0, 12, 0, 0, 0}, {0.5, 12, 12, 0, 0, 0}, {0.75, 18, 6, 0, 0, 0},
      {TimeFraction(13, 0, 0, 0), 13, 1, 0, 0, 0},
      {36526 + TimeFraction(12, 34, 56, 789), 12, 12, 34, 56, 789},
      {TimeFraction(23, 59, 59, 999), 23, 11, 59, 59, 999},
      {TimeFraction(23, 59, 59, 999) + 0.6 / 86400000, 0, 12, 0, 0, 0},  // rounds to the next day
  };
  // clang-format on
  for (const auto& c : kCases) {
    SCOPED_TRACE(c.rSerial);
    CDateTime dt;
    ASSERT_EQ(1, dt.NumberToTime(c.rSerial));
    ExpectTime(dt, c.nHour, c.nMinute, c.nSecond, c.nMillisecond);
    EXPECT_EQ(c.nHour12, dt.GetHour12());
  }
}

TEST_F(DateTimeTest, CalendarRules) {
  struct {
    int nYear;
    bool bLeap;
  } const kLeapCases[] = {{1900, true},  {1899, false}, {1904, true}, {2000, true},
                          {2100, false}, {1800, false}, {2400, true}, {2023, false}};
  for (const auto& c : kLeapCases) EXPECT_EQ(c.bLeap, CDateTime::IsLeapYear(c.nYear)) << c.nYear;
  EXPECT_TRUE(CDateTime::IsLeapCentury(19));
  EXPECT_TRUE(CDateTime::IsLeapCentury(20));
  EXPECT_FALSE(CDateTime::IsLeapCentury(21));
  EXPECT_EQ(0, CDateTime::GetDaysInMonth(13, 2000));  // the other months: the calendar test
  struct {
    int nIn, nOut;
  } const kFixCases[] = {{0, 2000},  {29, 2029},   {30, 1930}, {99, 1999},
                         {100, 100}, {1999, 1999}, {-1, -1}};
  for (const auto& c : kFixCases) EXPECT_EQ(c.nOut, CDateTime::FixYear(c.nIn)) << c.nIn;
}

TEST_F(DateTimeTest, AddDateKeepsWithinTargetMonth) {
  struct {
    int nYear, nMonth, nDay;
    int nAddYears, nAddMonths, nAddDays;
    int nResult, nOutYear, nOutMonth, nOutDay;
  } const kCases[] = {
      {2001, 1, 31, 0, 1, 0, 1, 2001, 2, 28},  // 0 March, the end of February
      {2000, 1, 31, 0, 1, 0, 1, 2000, 2, 29},  {2000, 2, 29, 1, 0, 0, 1, 2001, 2, 28},
      {2004, 2, 29, 4, 0, 0, 1, 2008, 2, 29},  {2008, 2, 29, 0, -24, 0, 1, 2006, 2, 28},
      {2001, 3, 31, 0, -1, 0, 1, 2001, 2, 28}, {2001, 1, 15, 0, 13, 0, 1, 2002, 2, 15},
      {2001, 12, 31, 0, 1, 0, 1, 2002, 1, 31},  // crossing the year
      {2001, 1, 31, 0, 1, 1, 1, 2001, 3, 4},    // a day amount carries through the serial
      {2000, 3, 1, 0, 0, -1, 1, 2000, 2, 29},  {2001, 1, 1, 0, 0, 365, 1, 2002, 1, 1},
      {9999, 12, 31, 0, 0, 1, 0, 0, 0, 0},  // past the calendar
      {1900, 1, 1, 0, -1, 0, 0, 0, 0, 0},   // before it
      {2000, 1, 1, 8000, 0, 0, 0, 0, 0, 0},
  };
  for (const auto& c : kCases) {
    SCOPED_TRACE(testing::Message() << Ymd(c.nYear, c.nMonth, c.nDay) << " + " << c.nAddYears << "/"
                                    << c.nAddMonths << "/" << c.nAddDays);
    CDateTime dt;
    SetYmd(dt, c.nYear, c.nMonth, c.nDay);
    dt.SetTime(6, 0, 0, 0);
    ASSERT_EQ(c.nResult, dt.AddDate(c.nAddYears, c.nAddMonths, c.nAddDays));
    if (!c.nResult) continue;
    ExpectDate(dt, c.nOutYear, c.nOutMonth, c.nOutDay);
    EXPECT_DOUBLE_EQ(CivilSerial(c.nOutYear, c.nOutMonth, c.nOutDay) + 0.25, dt.GetDateTime());
  }
}

// Carries of the rounded milliseconds, up to the year.
TEST_F(DateTimeTest, RoundSecondsCarries) {
  struct {
    int nYear, nMonth, nDay, nHour, nMinute, nSecond, nMillisecond;
    int nDecimals;
    int nOutYear, nOutMonth, nOutDay, nOutHour, nOutMinute, nOutSecond, nOutMillisecond;
  } const kCases[] = {
      {2001, 5, 5, 10, 20, 30, 499, 0, 2001, 5, 5, 10, 20, 30, 0},  // below half
      {2001, 5, 5, 10, 20, 30, 500, 0, 2001, 5, 5, 10, 20, 31, 0},  // half rounds up
      {2001, 5, 5, 10, 20, 30, 949, 1, 2001, 5, 5, 10, 20, 30, 900},
      {2001, 5, 5, 10, 20, 30, 950, 1, 2001, 5, 5, 10, 20, 31, 0},
      {2001, 5, 5, 10, 20, 30, 994, 2, 2001, 5, 5, 10, 20, 30, 990},
      {2001, 5, 5, 10, 20, 30, 995, 2, 2001, 5, 5, 10, 20, 31, 0},
      {2001, 5, 5, 10, 20, 30, 999, 3, 2001, 5, 5, 10, 20, 30, 999},  // 3 decimals: as is
      {2001, 5, 5, 10, 59, 59, 500, 0, 2001, 5, 5, 11, 0, 0, 0},      // into the hour
      {2001, 5, 5, 23, 59, 59, 500, 0, 2001, 5, 6, 0, 0, 0, 0},       // across midnight
      {2001, 4, 30, 23, 59, 59, 950, 1, 2001, 5, 1, 0, 0, 0, 0},      // month end
      {2001, 2, 28, 23, 59, 59, 999, 2, 2001, 3, 1, 0, 0, 0, 0},
      {2000, 2, 28, 23, 59, 59, 999, 2, 2000, 2, 29, 0, 0, 0, 0},  // leap year
      {1900, 2, 28, 23, 59, 59, 999, 2, 1900, 2, 29, 0, 0, 0, 0},  // and 1900
      {1999, 12, 31, 23, 59, 59, 500, 0, 2000, 1, 1, 0, 0, 0, 0},  // year end
  };
  for (const auto& c : kCases) {
    SCOPED_TRACE(testing::Message()
                 << Ymd(c.nYear, c.nMonth, c.nDay) << " " << c.nHour << ":" << c.nMinute << ":"
                 << c.nSecond << "." << c.nMillisecond << " to " << c.nDecimals);
    CDateTime dt;
    SetYmd(dt, c.nYear, c.nMonth, c.nDay);
    dt.SetTime(static_cast<short>(c.nHour), static_cast<short>(c.nMinute),
               static_cast<short>(c.nSecond), static_cast<short>(c.nMillisecond));
    ASSERT_EQ(1, dt.DateTimeToNumber());
    ASSERT_EQ(1, dt.NumberToDateTime());
    dt.RoundSeconds(c.nDecimals);
    ExpectDate(dt, c.nOutYear, c.nOutMonth, c.nOutDay);
    ExpectTime(dt, c.nOutHour, c.nOutMinute, c.nOutSecond, c.nOutMillisecond);
    EXPECT_EQ(c.nOutHour % 12 == 0 ? 12 : c.nOutHour % 12, dt.GetHour12());
    EXPECT_EQ(WeekdayOf(c.nOutYear, c.nOutMonth, c.nOutDay), dt.GetWeekday());
  }
}

TEST_F(DateTimeTest, TotalsCountFromSerialZero) {
  CDateTime dt(1.5);
  EXPECT_EQ(36, dt.TotalHours());
  EXPECT_EQ(36 * 60, dt.TotalMinutes());
  CDateTime late(TimeFraction(23, 59, 59, 700));
  late.RoundSeconds(0);  // the carry reaches the day: 24 hours
  EXPECT_EQ(24, late.TotalHours());
  EXPECT_EQ(86400, late.TotalSeconds());
  CDateTime leap(61 + TimeFraction(1, 2, 3, 0));  // 1 March 1900 counts 29 February
  EXPECT_EQ(61 * 86400 + 3723, leap.TotalSeconds());
}

// Expected values counted by hand on 30-day months.
// clang-format off
struct TDays360Case { int y1, m1, d1, y2, m2, d2; int nUs, nEuropean; };
constexpr TDays360Case kDays360Cases[] = {
    {2001, 1, 31, 2001, 3, 31, 60, 60},
    {2001, 2, 28, 2001, 3, 31, 30, 32},  // US: the last of February counts as the 30th
    {2000, 2, 29, 2000, 3, 31, 30, 31},
    {2000, 2, 28, 2000, 3, 31, 33, 32},  // not the last day of a leap February
    {2001, 1, 30, 2001, 3, 31, 60, 60},
    {2001, 1, 15, 2001, 3, 31, 76, 75},  // US: the 31st becomes the 1st of April
    {2001, 12, 15, 2001, 12, 31, 16, 15},  // ... and of January next year
    {2011, 1, 30, 2011, 12, 31, 330, 330}, {2011, 1, 1, 2011, 12, 31, 360, 359},
    {2001, 3, 31, 2001, 1, 31, -60, -60},  // backwards
    {2001, 1, 1, 2002, 1, 1, 360, 360},
};
// clang-format on

TEST_F(DateTimeTest, Days360UsAndEuropean) {
  for (const TDays360Case& c : kDays360Cases) {
    SCOPED_TRACE(Ymd(c.y1, c.m1, c.d1) + " to " + Ymd(c.y2, c.m2, c.d2));
    const CDateTime start(CivilSerial(c.y1, c.m1, c.d1)), end(CivilSerial(c.y2, c.m2, c.d2));
    EXPECT_EQ(c.nUs, CDateTime::Days360(start, end, false));
    EXPECT_EQ(c.nEuropean, CDateTime::Days360(start, end, true));
  }
}

TEST_F(DateTimeTest, YearPortionBases) {
  // clang-format off
  struct { int y1, m1, d1, y2, m2, d2, nBasis; double rExpected; } const kCases[] = {
      // 1 January to 30 July 2012, 211 days; 209 on 30-day months.
      {2012, 1, 1, 2012, 7, 30, 0, 209.0 / 360}, {2012, 1, 1, 2012, 7, 30, 1, 211.0 / 366},
      {2012, 1, 1, 2012, 7, 30, 2, 211.0 / 360}, {2012, 1, 1, 2012, 7, 30, 3, 211.0 / 365},
      {2012, 1, 1, 2012, 7, 30, 4, 209.0 / 360},
      // US 30/360: the last of February starts as the 30th; both ends on it count equal.
      {2001, 2, 28, 2001, 3, 31, 0, 31.0 / 360}, {2000, 2, 29, 2001, 2, 28, 0, 1.0},
      {2001, 1, 31, 2001, 3, 31, 0, 60.0 / 360}, {2001, 1, 30, 2001, 3, 31, 0, 60.0 / 360},
      {2001, 1, 15, 2001, 3, 31, 0, 76.0 / 360}, {2001, 1, 15, 2001, 3, 31, 4, 75.0 / 360},
      // Actual/actual: up to a year apart, 366 only when a 29 February lies within.
      {2003, 6, 1, 2004, 3, 1, 1, 274.0 / 366}, {2001, 6, 1, 2002, 3, 1, 1, 273.0 / 365},
      {2003, 6, 1, 2004, 2, 29, 1, 273.0 / 366},  // ends on the leap day
      {2001, 1, 1, 2001, 12, 31, 1, 364.0 / 365},
      // Longer spans: by the average of 2000, 2001 and 2002 (1096 days / 3).
      {2000, 1, 1, 2002, 1, 1, 1, 731.0 / (1096.0 / 3)},
      {2002, 1, 1, 2000, 1, 1, 1, 731.0 / (1096.0 / 3)},  // order does not matter
  };
  // clang-format on
  for (const auto& c : kCases) {
    SCOPED_TRACE(Ymd(c.y1, c.m1, c.d1) + " to " + Ymd(c.y2, c.m2, c.d2) + " basis " +
                 std::to_string(c.nBasis));
    EXPECT_NEAR(c.rExpected,
                CDateTime::YearPortion(CivilSerial(c.y1, c.m1, c.d1), CivilSerial(c.y2, c.m2, c.d2),
                                       c.nBasis),
                1e-14);
  }
  EXPECT_DOUBLE_EQ(1.0 / 365, CDateTime::YearPortion(1.9, 2.1, 3));  // whole days only
  EXPECT_EQ(-1, CDateTime::YearPortion(1, 2, 5));
  EXPECT_EQ(-1, CDateTime::YearPortion(1, 2, -1));
  EXPECT_EQ(-1, CDateTime::YearPortion(-1, 2, 0));
  EXPECT_EQ(-1, CDateTime::YearPortion(1, 2958466, 0));
}

TEST_F(DateTimeTest, JapaneseEras) {
  EXPECT_EQ(-1, CDateTime::GetEraIndex(1, 8, 1989));  // en-US has none
  ASSERT_TRUE(SetLocale("ja-JP"));
  struct {
    int nYear, nMonth, nDay;
    int nEra, nEraYear;
    const char16_t* pwszLong;
    const char16_t* pwszShort;
  } const kCases[] = {
      {1868, 9, 7, -1, 0, nullptr, nullptr}, {1868, 9, 8, 0, 1, u"明治", u"M"},
      {1912, 7, 29, 0, 45, u"明治", u"M"},   {1912, 7, 30, 1, 1, u"大正", u"T"},
      {1926, 12, 25, 2, 1, u"昭和", u"S"},   {1989, 1, 7, 2, 64, u"昭和", u"S"},
      {1989, 1, 8, 3, 1, u"平成", u"H"},     {2019, 4, 30, 3, 31, u"平成", u"H"},
      {2019, 5, 1, 4, 1, u"令和", u"R"},     {2024, 1, 1, 4, 6, u"令和", u"R"},
  };
  for (const auto& c : kCases) {
    SCOPED_TRACE(Ymd(c.nYear, c.nMonth, c.nDay));
    const int nEra = CDateTime::GetEraIndex(c.nMonth, c.nDay, c.nYear);
    EXPECT_EQ(c.nEra, nEra);
    EXPECT_EQ(c.nEraYear, CDateTime::GetEraYear(nEra, c.nYear));
    auto OrDash = [](const char16_t* p) { return std::u16string(p != nullptr ? p : u"-"); };
    EXPECT_EQ(OrDash(c.pwszLong), OrDash(CDateTime::GetEraLongName(nEra)));
    EXPECT_EQ(OrDash(c.pwszShort), OrDash(CDateTime::GetEraShortName(nEra)));
  }
  EXPECT_EQ(nullptr, CDateTime::GetEraLongName(5));
}

TEST_F(DateTimeTest, CurrentDateTimeFromClock) {
  SYSTEMTIME now = {2021, 6, 0, 15, 18, 30, 0, 0};
  SetClockOverride(&now);
  EXPECT_DOUBLE_EQ(CivilSerial(2021, 6, 15) + TimeFraction(18, 30, 0, 0),
                   CDateTime::GetCurrentDateTime());
  EXPECT_EQ(CivilSerial(2021, 6, 15), CDateTime::GetCurrentDate());
  now.wYear = 1899;
  SetClockOverride(&now);
  EXPECT_EQ(0, CDateTime::GetCurrentDateTime());
}

// ---------------------------------------------------------------------------
// Reading text. Each pattern has a text that it reads (in the locale's order) and a
// near miss that nothing reads. Year 0 stands for the current year; hours are on the
// 24-hour clock; elapsed times carry no date.

// clang-format off
struct TTextCase {
  int nPattern; const char16_t* pwszGood;
  int nYear, nMonth, nDay, nHour, nMinute, nSecond, nMillisecond; int nFormat; const char16_t* pwszBad;
};
// clang-format on

constexpr unsigned short kPinnedYear = 2021;

void CheckTextCases(const TTextCase* pCases, size_t nCount) {
  const SYSTEMTIME now = {kPinnedYear, 6, 0, 15, 0, 0, 0, 0};
  SetClockOverride(&now);
  for (size_t i = 0; i < nCount; ++i) {
    const TTextCase& c = pCases[i];
    SCOPED_TRACE(testing::Message() << "pattern " << c.nPattern << " case " << i);
    CDateTime dt;
    int nFormat = -1;
    ASSERT_EQ(1, dt.StringToDateTime(c.pwszGood, nFormat, 0));
    EXPECT_EQ(c.nFormat, nFormat);
    const int nYear = c.nYear == 0 && c.nMonth != 0 ? kPinnedYear : c.nYear;
    ExpectDate(dt, nYear, c.nMonth, c.nDay);
    ExpectTime(dt, c.nHour, c.nMinute, c.nSecond, c.nMillisecond);
    const double rTime = TimeFraction(c.nHour, c.nMinute, c.nSecond, c.nMillisecond);
    const double rDate = c.nMonth == 0 ? 0 : SerialOf(nYear, c.nMonth, c.nDay);
    EXPECT_NEAR(rDate + rTime, dt.GetDateTime(), 1e-9);
    if (c.nMonth != 0) {
      EXPECT_EQ(WeekdayOf(nYear, c.nMonth, c.nDay), dt.GetWeekday());
    }
    nFormat = -1;
    EXPECT_EQ(0, dt.StringToDateTime(c.pwszBad, nFormat, 0));
    EXPECT_EQ(-1, nFormat);
  }
}

constexpr TTextCase kEnglishCases[] = {
    {0, u"1/2/2000", 2000, 1, 2, 0, 0, 0, 0, 14, u"2/30/2000"},
    {0, u" 12-31-99 ", 1999, 12, 31, 0, 0, 0, 0, 14, u"12-31-1899"},
    {0, u"1.2.2000", 2000, 1, 2, 0, 0, 0, 0, 14, u"1 2 2000"},  // blanks only beside names
    {1, u"2-Jan-2000", 2000, 1, 2, 0, 0, 0, 0, 15, u"2-Jax-2000"},
    {1, u"29 feb 1900", 1900, 2, 29, 0, 0, 0, 0, 15, u"29 Feb 1901"},
    {2, u"2-January-2000", 2000, 1, 2, 0, 0, 0, 0, 15, u"32-January-2000"},
    {3, u"2-Jan", 0, 1, 2, 0, 0, 0, 0, 16, u"31-Feb"},
    {4, u"2 JANUARY", 0, 1, 2, 0, 0, 0, 0, 16, u"2 Januaryy"},
    {5, u"January-2000", 2000, 1, 1, 0, 0, 0, 0, 17, u"January-1899"},
    {6, u"Jan 2000", 2000, 1, 1, 0, 0, 0, 0, 17, u"Jan 10000"},
    {7, u"1:30 PM", 0, 0, 0, 13, 30, 0, 0, 18, u"13:30 PM"},
    {7, u"12:05a", 0, 0, 0, 0, 5, 0, 0, 18, u"0:05 a"},
    {8, u"1:30:15 am", 0, 0, 0, 1, 30, 15, 0, 19, u"1:30:60 AM"},
    {9, u"13:30", 0, 0, 0, 13, 30, 0, 0, 20, u"13:30:"},
    {10, u"13:30:15.25", 0, 0, 0, 13, 30, 15, 250, 21, u"13:30:15.1234"},
    {11, u"1/2/2000 13:30", 2000, 1, 2, 13, 30, 0, 0, 22, u"1/2/2000 13:3o"},
    {12, u"1/2/2000 13:30:15", 2000, 1, 2, 13, 30, 15, 0, 22, u"1/2/2000 24:00:00"},
    {13, u"1/2/2000 1:30 PM", 2000, 1, 2, 13, 30, 0, 0, 22, u"1/2/2000 0:30 AM"},
    {14, u"1/2/2000 1:30:15 P", 2000, 1, 2, 13, 30, 15, 0, 22, u"1/2/2000 1:30:15 XM"},
    {15, u"January 2, 2000", 2000, 1, 2, 0, 0, 0, 0, 15, u"January 2,, 2000"},
    {16, u"Jan 2,2000", 2000, 1, 2, 0, 0, 0, 0, 15, u"Jan 2, 1800"},
    {16, u"Jan 15 2020", 2020, 1, 15, 0, 0, 0, 0, 15, u"Jan 152020"},  // the comma is optional
    {17, u"1/2", 0, 1, 2, 0, 0, 0, 0, 58, u"2/30"},
    {18, u"3 PM", 0, 0, 0, 15, 0, 0, 0, 18, u"13 PM"},
    {19, u"25:30", 0, 0, 0, 25, 30, 0, 0, 46, u"25:30x"},
    {20, u"25:30:15", 0, 0, 0, 25, 30, 15, 0, 46, u"25:30:75"},
    {21, u"1:75", 0, 0, 0, 1, 75, 0, 0, 0, u"1:75 PM"},
    {22, u"1:30:75", 0, 0, 0, 1, 30, 75, 0, 0, u"1:75:75"},
    {23, u"75:30.5", 0, 0, 0, 0, 75, 30, 500, 47, u"75:60.5"},
    {24, u"30:75", 0, 0, 0, 0, 30, 75, 0, 47, u"60:75"},
};

TEST_F(DateTimeTest, ReadsEveryPatternInEnglishUs) {
  CheckTextCases(kEnglishCases, std::size(kEnglishCases));
}

// Day-month-year order and '.' as the date separator; the names are German or English.
// Patterns that read as in English (times, elapsed times) are left to that table.
constexpr TTextCase kGermanCases[] = {
    {0, u"2.1.2000", 2000, 1, 2, 0, 0, 0, 0, 14, u"30.2.2000"},
    {0, u"31.12.99.", 1999, 12, 31, 0, 0, 0, 0, 14, u"31.12.99.."},
    {1, u"2. Dez. 2000", 2000, 12, 2, 0, 0, 0, 0, 15, u"2. Dex. 2000"},
    {2, u"2. Dezember 2000", 2000, 12, 2, 0, 0, 0, 0, 15, u"2. Dezembers 2000"},
    {4, u"2. Oktober", 0, 10, 2, 0, 0, 0, 0, 16, u"32. Oktober"},
    {5, u"Oktober 2000", 2000, 10, 1, 0, 0, 0, 0, 17, u"Oktober-1899"},
    {10, u"13:30:15,25", 0, 0, 0, 13, 30, 15, 250, 21, u"13:30:15,1234"},
    {11, u"2.1.2000 13:30", 2000, 1, 2, 13, 30, 0, 0, 22, u"2.13.2000 13:30"},
    {15, u"Januar 2, 2000", 2000, 1, 2, 0, 0, 0, 0, 15, u"Januar 2,, 2000"},
    {17, u"2.1", 0, 1, 2, 0, 0, 0, 0, 58, u"30.2"},
    {23, u"75:30,5", 0, 0, 0, 0, 75, 30, 500, 47, u"75:60,5"},
};

TEST_F(DateTimeTest, ReadsEveryPatternInGerman) {
  ASSERT_TRUE(SetLocale("de-DE"));
  CheckTextCases(kGermanCases, std::size(kGermanCases));
}

// Year-month-day order; the AM/PM designator leads the time, and the English order
// is read too. Patterns that read as in English are left to that table.
constexpr TTextCase kKoreanCases[] = {
    {0, u"2000-1-2", 2000, 1, 2, 0, 0, 0, 0, 14, u"2000-2-30"},
    {0, u"2000. 1. 2.", 2000, 1, 2, 0, 0, 0, 0, 14, u"2000. 13. 2."},
    {0, u"2000년 1월 2일", 2000, 1, 2, 0, 0, 0, 0, 14, u"2000년 1월 2일일"},
    {7, u"오후 1:30", 0, 0, 0, 13, 30, 0, 0, 18, u"오후 13:30"},
    {7, u"1:30 PM", 0, 0, 0, 13, 30, 0, 0, 18, u"1:30 오후 PM"},
    {10, u"13시 30분 15초", 0, 0, 0, 13, 30, 15, 0, 21, u"13시 30분 15초초"},
    {11, u"2000-1-2 13:30", 2000, 1, 2, 13, 30, 0, 0, 22, u"2000-1-2 13:3o"},
    {13, u"2000-1-2 오후 1:30", 2000, 1, 2, 13, 30, 0, 0, 22, u"2000-1-2 오전 0:30"},
    {17, u"1/2", 0, 1, 2, 0, 0, 0, 0, 58, u"2/30"},
    {18, u"오후 3", 0, 0, 0, 15, 0, 0, 0, 18, u"오후 13"},
    {21, u"1:75", 0, 0, 0, 1, 75, 0, 0, 0, u"오후 1:75"},
};

TEST_F(DateTimeTest, ReadsEveryPatternInKorean) {
  ASSERT_TRUE(SetLocale("ko-KR"));
  CheckTextCases(kKoreanCases, std::size(kKoreanCases));
}

TEST_F(DateTimeTest, EnglishParseTypeIgnoresLocale) {
  ASSERT_TRUE(SetLocale("de-DE"));
  CDateTime dt;
  int nFormat = -1;
  ASSERT_EQ(1, dt.StringToDateTime(u"2.1.2000", nFormat, 2));  // month first
  ExpectDate(dt, 2000, 2, 1);
  EXPECT_EQ(0, dt.StringToDateTime(u"2. Dezember 2000", nFormat, 1));
  EXPECT_EQ(0, dt.StringToDateTime(u"1.2.2000.", nFormat, 2));  // no closing '.' in English
}

// A four-digit year in front is read year first, whatever the locale's order; the
// locale's own order still wins where it reads the text.
TEST_F(DateTimeTest, FourDigitYearFirstInEveryLocale) {
  struct TIsoCase {
    const char* pszLocale;
    int nParseType;
    const char16_t* pwszText;
    int nMonth, nDay, nHour, nMinute, nFormat;
  };
  // clang-format off
  constexpr TIsoCase kCases[] = {
      {"en-US", 1, u"2024-03-01", 3, 1, 0, 0, 14},
      {"en-US", 1, u"2024/3/1 12:30", 3, 1, 12, 30, 22},
      {"en-US", 0, u" 2024-12-31 ", 12, 31, 0, 0, 14}, {"de-DE", 0, u"2024-03-01", 3, 1, 0, 0, 14},
      {"de-DE", 2, u"2024-02-29", 2, 29, 0, 0, 14},  // leap day
  };
  // clang-format on
  for (const TIsoCase& c : kCases) {
    SCOPED_TRACE(testing::Message() << c.pszLocale << " " << c.nParseType);
    ASSERT_TRUE(SetLocale(c.pszLocale));
    CDateTime dt;
    int nFormat = -1;
    ASSERT_EQ(1, dt.StringToDateTime(c.pwszText, nFormat, c.nParseType));
    ExpectDate(dt, 2024, c.nMonth, c.nDay);
    ExpectTime(dt, c.nHour, c.nMinute, 0, 0);
    EXPECT_EQ(c.nFormat, nFormat);
  }
  ASSERT_TRUE(SetLocale("en-US"));
  CDateTime dt;
  int nFormat = -1;
  EXPECT_EQ(0, dt.StringToDateTime(u"2023-02-29", nFormat, 1));  // no leap day in 2023
  EXPECT_EQ(0, dt.StringToDateTime(u"2024-13-01", nFormat, 1));
  EXPECT_EQ(0, dt.StringToDateTime(u"202-03-01", nFormat, 1));  // three digits: month first
  EXPECT_EQ(0, dt.StringToDateTime(u"20240-3-1", nFormat, 1));
  EXPECT_EQ(-1, nFormat);
  ASSERT_EQ(1, dt.StringToDateTime(u"1-2-2024", nFormat, 1));  // the locale's order first
  ExpectDate(dt, 2024, 1, 2);
}
TEST_F(DateTimeTest, SeparatorsPerLocale) {
  EXPECT_FALSE(CDateTime::IsValidSeparator(u'.', false));
  EXPECT_FALSE(CDateTime::IsValidSeparator(u'/', false));
  ASSERT_TRUE(SetLocale("de-DE"));
  EXPECT_TRUE(CDateTime::IsValidSeparator(u'.', false));
  EXPECT_FALSE(CDateTime::IsValidSeparator(u'.', true));
  ASSERT_TRUE(SetLocale("ja-JP"));
  EXPECT_TRUE(CDateTime::IsValidSeparator(u'年', false));
  EXPECT_TRUE(CDateTime::IsValidSeparator(u'分', true));
  EXPECT_FALSE(CDateTime::IsValidSeparator(u'分', false));
  CDateTime dt;
  int nFormat = -1;
  ASSERT_EQ(1, dt.StringToDateTime(u"２０００年１月２日", nFormat, 0));  // full-width digits
  ExpectDate(dt, 2000, 1, 2);
  EXPECT_EQ(14, nFormat);
}

// Every prefix of every text must be read or refused without reading past its end
// (the sanitizer watches the copies).
TEST_F(DateTimeTest, TruncatedTextsNeverOverrun) {
  for (const TTextCase& c : kEnglishCases) {
    const std::u16string strFull = c.pwszGood;
    for (size_t n = 0; n <= strFull.size(); ++n) {
      const std::u16string strPrefix = strFull.substr(0, n);
      CDateTime dt;
      int nFormat = -1;
      const int nResult = dt.StringToDateTime(strPrefix.c_str(), nFormat, 0);
      EXPECT_EQ(nResult == 1, nFormat >= 0);
    }
  }
  CDateTime dt;
  int nFormat = -1;
  EXPECT_EQ(0, dt.StringToDateTime(u"", nFormat, 0));
  EXPECT_EQ(0, dt.StringToDateTime(nullptr, nFormat, 0));
  EXPECT_EQ(0, dt.StringToDateTime(u"1234567890/1/2000", nFormat, 0));
}

}  // namespace
