// The clock override pins both the date and the tick count, and lets go again.
#include <gtest/gtest.h>

#include "platform/Clock.h"

namespace {

TEST(Clock, OverridePinsTimeAndTicks) {
  const SYSTEMTIME pinned{2024, 2, 4, 29, 23, 59, 58, 999};
  SetClockOverride(&pinned, 123456);
  SYSTEMTIME now{};
  GetLocalTime(&now);
  EXPECT_EQ(2024, now.wYear);
  EXPECT_EQ(2, now.wMonth);
  EXPECT_EQ(29, now.wDay);
  EXPECT_EQ(4, now.wDayOfWeek);
  EXPECT_EQ(23, now.wHour);
  EXPECT_EQ(59, now.wMinute);
  EXPECT_EQ(58, now.wSecond);
  EXPECT_EQ(999, now.wMilliseconds);
  EXPECT_EQ(123456u, GetTickCount());
  SetClockOverride(nullptr);
}

TEST(Clock, RealClockIsPlausible) {
  SetClockOverride(nullptr);
  SYSTEMTIME now{};
  GetLocalTime(&now);
  EXPECT_GE(now.wYear, 2020);
  EXPECT_GE(now.wMonth, 1);
  EXPECT_LE(now.wMonth, 12);
  EXPECT_LE(now.wDayOfWeek, 6);
  const unsigned nFirst = GetTickCount();
  const unsigned nSecond = GetTickCount();
  EXPECT_LE(nSecond - nFirst, 1000u);  // steady: never runs backwards
}

}  // namespace
