// The clock override pins both the date and the tick count, and lets go again.
#include <gtest/gtest.h>

#include <cstring>

#include "platform/Clock.h"

namespace {

TEST(Clock, OverridePinsTimeAndTicks) {
  const SYSTEMTIME pinned{2024, 2, 4, 29, 23, 59, 58, 999};
  SetClockOverride(&pinned, 123456);
  SYSTEMTIME now{};
  GetLocalTime(&now);
  EXPECT_EQ(0, std::memcmp(&pinned, &now, sizeof now));  // every field, the weekday too
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
