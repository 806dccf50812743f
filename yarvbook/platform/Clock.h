// Milliseconds since start and the local date and time, with overrides so that
// tests and hosts can pin the clock.
#pragma once

#include "base/Export.h"

struct SYSTEMTIME {
  unsigned short wYear;
  unsigned short wMonth;  // 1..12
  unsigned short wDayOfWeek;  // 0 = Sunday
  unsigned short wDay;
  unsigned short wHour;
  unsigned short wMinute;
  unsigned short wSecond;
  unsigned short wMilliseconds;
};

// Milliseconds since an arbitrary start, wrapping at 2^32.
YARVBOOK_API unsigned GetTickCount();
YARVBOOK_API void GetLocalTime(SYSTEMTIME* pTime);

// While set, GetLocalTime returns *pTime (copied) and GetTickCount returns nTicks.
// Pass null to return to the real clock.
YARVBOOK_API void SetClockOverride(const SYSTEMTIME* pTime, unsigned nTicks = 0);
