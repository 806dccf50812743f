// Date and time family: DATE, TIME, the field readers (DAY, MONTH, YEAR, HOUR,
// MINUTE, SECOND), WEEKDAY, NOW, TODAY, DATEVALUE, TIMEVALUE and DAYS360. Every move
// between a serial and calendar fields goes through CDateTime, so the functions share
// its 1900 leap day and its valid range (serials 0 to below 2958466); a serial
// outside that range gives #NUM!.
#include <cmath>

#include "eval/Func.h"
#include "eval/Value.h"
#include "format/DateTime.h"
#include "platform/ResourceIds.h"

namespace {

constexpr double kSecondsPerDay = 86400;

// The largest hour count TIME takes; minutes and seconds are limited only by the
// total.
constexpr double kMaxHours = 32767;

// Reads pArgs as a serial into date; false with the error in pArgs when the
// argument is not a number (its error) or not a valid serial (#NUM!).
bool ReadSerial(TValue* pArgs, CDateTime& date) {
  if (!pArgs->CheckReal()) return false;
  double rSerial;
  pArgs->GetValue(rSerial);
  if (!date.NumberToDateTime(rSerial)) {
    pArgs->SetError(TValue::errNum);
    return false;
  }
  return true;
}

// DATE: years 0 to 1899 are counted from 1900 (DATE(99,1,1) is 1 January 1999);
// months and days outside their range carry into the neighbouring ones.
class TFuncDate final : public TFuncThreeArgs {
 public:
  TFuncDate() : TFuncThreeArgs(IDS_FN_DATE, u"DATE", 65) {}
  using TFuncThreeArgs::Evaluate;
  void Evaluate(TValue* pArgs) override {
    short nYear = 0, nMonth = 0, nDay = 0;
    if (!pArgs[0].CheckShort(nYear) || !pArgs[1].CheckShort(nMonth) || !pArgs[2].CheckShort(nDay)) {
      pArgs->Pop(3);
      return;
    }
    if (nYear >= 0 && nYear <= 1899) nYear = static_cast<short>(nYear + 1900);
    CDateTime date;
    date.SetDate(nMonth, nDay, nYear);
    if (!date.DateToNumber()) {
      pArgs->SetError(TValue::errNum);
      return;
    }
    pArgs->SetValue(date.GetDateTime());
  }
};

// TIME: the time of day of hours, minutes and seconds counted together, whole days
// dropped (TIME(25,0,0) is 1:00). Fractions are kept, not truncated. The hours must
// lie below 32768 and the total must not be negative; else #NUM!.
class TFuncTime final : public TFuncThreeArgs {
 public:
  TFuncTime() : TFuncThreeArgs(IDS_FN_TIME, u"TIME", 66) {}
  using TFuncThreeArgs::Evaluate;
  void Evaluate(TValue* pArgs) override {
    if (!pArgs->CheckReals(3)) {
      pArgs->Pop(3);
      return;
    }
    double rHour, rMinute, rSecond;
    pArgs[0].GetValue(rHour);
    pArgs[1].GetValue(rMinute);
    pArgs[2].GetValue(rSecond);
    const double rTotal = rHour * 3600 + rMinute * 60 + rSecond;
    if (rHour > kMaxHours || !(rTotal >= 0) || !std::isfinite(rTotal)) {
      pArgs->SetError(TValue::errNum);
      return;
    }
    pArgs->SetValue(std::fmod(rTotal, kSecondsPerDay) / kSecondsPerDay);
  }
};

enum class EDateField { dfYear, dfMonth, dfDay, dfHour, dfMinute, dfSecond };

// DAY, MONTH, YEAR, HOUR, MINUTE, SECOND: one field of the serial. Serial 0 reads as
// 0 January 1900. The time fields are read rounded to the whole second, so a time
// half a second before the next minute reads as that minute.
class TFuncDateField final : public TFuncOneArg {
 public:
  TFuncDateField(unsigned nResId, const char16_t* pwszName, unsigned short nFunc, EDateField field)
      : TFuncOneArg(nResId, pwszName, nFunc), m_Field(field) {}
  using TFuncOneArg::Evaluate;
  void Evaluate(TValue* pArgs) override {
    CDateTime date;
    if (!ReadSerial(pArgs, date)) return;
    int nValue = 0;
    switch (m_Field) {
      case EDateField::dfYear:
        nValue = date.GetYear();
        break;
      case EDateField::dfMonth:
        nValue = date.GetMonth();
        break;
      case EDateField::dfDay:
        nValue = date.GetDay();
        break;
      case EDateField::dfHour:
      case EDateField::dfMinute:
      case EDateField::dfSecond:
        date.RoundSeconds(0);
        nValue = m_Field == EDateField::dfHour     ? date.GetHour()
                 : m_Field == EDateField::dfMinute ? date.GetMinute()
                                                   : date.GetSecond();
        break;
    }
    pArgs->SetValue(nValue);
  }

 private:
  const EDateField m_Field;
};

// WEEKDAY: type 1 counts Sunday 1 to Saturday 7, type 2 Monday 1 to Sunday 7, type 3
// Monday 0 to Sunday 6; any other type is #NUM!.
class TFuncWeekday final : public TFuncVarArgs {
 public:
  TFuncWeekday() : TFuncVarArgs(IDS_FN_WEEKDAY, u"WEEKDAY", 70, 1, 2) {}
  using TFuncVarArgs::Evaluate;
  void Evaluate(TValue* pArgs, int nArgs) override {
    int nType = 1;
    if (!pArgs[0].CheckReal() || (nArgs > 1 && !pArgs[1].CheckIntWithDefault(nType))) {
      pArgs->Pop(nArgs);
      return;
    }
    double rSerial;
    pArgs[0].GetValue(rSerial);
    CDateTime date;
    if (!date.NumberToDate(rSerial) || nType < 1 || nType > 3) {
      pArgs->SetError(TValue::errNum);
      return;
    }
    const int nSundayFirst = date.GetWeekday();
    int nResult = nSundayFirst;
    if (nType == 2) nResult = (nSundayFirst + 5) % 7 + 1;
    if (nType == 3) nResult = (nSundayFirst + 5) % 7;
    pArgs->SetValue(nResult);
  }
};

// NOW and TODAY: the clock's local date, with or without the time. Both are
// volatile and propose a date format; the function table carries both marks.
class TFuncNow final : public TFuncNoArgs {
 public:
  TFuncNow(unsigned nResId, const char16_t* pwszName, unsigned short nFunc, bool bWithTime)
      : TFuncNoArgs(nResId, pwszName, nFunc), m_bWithTime(bWithTime) {}
  using TFuncNoArgs::Evaluate;
  void Evaluate(TValue* pArgs) override {
    pArgs->SetValue(m_bWithTime ? CDateTime::GetCurrentDateTime() : CDateTime::GetCurrentDate());
  }

 private:
  const bool m_bWithTime;
};

// DATEVALUE and TIMEVALUE: text read as a date or time in the user's locale; the
// whole days or the time of day of the result. Anything but text is #VALUE!, even a
// number (an error stays as it is).
class TFuncDateTimeValue final : public TFuncOneArg {
 public:
  TFuncDateTimeValue(unsigned nResId, const char16_t* pwszName, unsigned short nFunc,
                     bool bTimePart)
      : TFuncOneArg(nResId, pwszName, nFunc), m_bTimePart(bTimePart) {}
  using TFuncOneArg::Evaluate;
  void Evaluate(TValue* pArgs) override {
    if (!pArgs->CheckValue()) return;
    CDateTime date;
    int nFormat = 0;
    if (!pArgs->IsText() || !date.StringToDateTime(pArgs->TextPtr(), nFormat, 0)) {
      pArgs->SetError(TValue::errValue);
      return;
    }
    const double rSerial = date.GetDateTime();
    const double rDays = std::floor(rSerial);
    pArgs->SetValue(m_bTimePart ? rSerial - rDays : rDays);
  }

 private:
  const bool m_bTimePart;
};

// DAYS360(start, end, European): days between the two dates on a 360-day year, US
// rule unless the third argument is TRUE.
class TFuncDays360 final : public TFuncVarArgs {
 public:
  TFuncDays360() : TFuncVarArgs(IDS_FN_DAYS360, u"DAYS360", 220, 2, 3) {}
  using TFuncVarArgs::Evaluate;
  void Evaluate(TValue* pArgs, int nArgs) override {
    int bEuropean = 0;
    if (!pArgs[0].CheckReal() || !pArgs[1].CheckReal() ||
        (nArgs > 2 && !pArgs[2].CheckLogicalWithDefault(bEuropean))) {
      pArgs->Pop(nArgs);
      return;
    }
    double rStart, rEnd;
    pArgs[0].GetValue(rStart);
    pArgs[1].GetValue(rEnd);
    CDateTime start, end;
    if (!start.NumberToDate(rStart) || !end.NumberToDate(rEnd)) {
      pArgs->SetError(TValue::errNum);
      return;
    }
    // Serial 0 is "0 January 1900", the day before the 1st: counted as 31 December
    // 1899, which the 30-day months read as day 30.
    for (CDateTime* pDate : {&start, &end})
      if (pDate->GetDay() == 0) pDate->SetDate(12, 31, 1899);
    pArgs->SetValue(CDateTime::Days360(start, end, bEuropean != 0));
  }
};

// Constructing an object registers it; kept in number order, like the function table.
TFuncDate s_Date;
TFuncTime s_Time;
TFuncDateField s_Day(IDS_FN_DAY, u"DAY", 67, EDateField::dfDay);
TFuncDateField s_Month(IDS_FN_MONTH, u"MONTH", 68, EDateField::dfMonth);
TFuncDateField s_Year(IDS_FN_YEAR, u"YEAR", 69, EDateField::dfYear);
TFuncWeekday s_Weekday;
TFuncDateField s_Hour(IDS_FN_HOUR, u"HOUR", 71, EDateField::dfHour);
TFuncDateField s_Minute(IDS_FN_MINUTE, u"MINUTE", 72, EDateField::dfMinute);
TFuncDateField s_Second(IDS_FN_SECOND, u"SECOND", 73, EDateField::dfSecond);
TFuncNow s_Now(IDS_FN_NOW, u"NOW", 74, /*bWithTime=*/true);
TFuncDateTimeValue s_DateValue(IDS_FN_DATEVALUE, u"DATEVALUE", 140, /*bTimePart=*/false);
TFuncDateTimeValue s_TimeValue(IDS_FN_TIMEVALUE, u"TIMEVALUE", 141, /*bTimePart=*/true);
TFuncDays360 s_Days360;
TFuncNow s_Today(IDS_FN_TODAY, u"TODAY", 221, /*bWithTime=*/false);

}  // namespace
